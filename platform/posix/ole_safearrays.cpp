// Safe arrays: a header with the bounds (last dimension first) and one block of elements. The element
// type is kept in front of the header, as Windows does with FADF_HAVEVARTYPE.
#include <cstdlib>
#include <cstring>

#include "platform/win32.h"

namespace {

constexpr size_t kTypeSlot = 16;  // keeps the header aligned behind the stored type

size_t ElementSize(VARTYPE vt) {
    switch (vt) {
        case VT_I1:
        case VT_UI1:
            return 1;
        case VT_I2:
        case VT_UI2:
        case VT_BOOL:
            return 2;
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
        case VT_R4:
        case VT_ERROR:
            return 4;
        case VT_I8:
        case VT_UI8:
        case VT_R8:
            return 8;
        case VT_BSTR:
            return sizeof(BSTR);
        case VT_UNKNOWN:
        case VT_DISPATCH:
            return sizeof(IUnknown*);
        case VT_VARIANT:
            return sizeof(VARIANT);
        default:
            return 0;
    }
}

USHORT FeaturesOf(VARTYPE vt) {
    switch (vt) {
        case VT_BSTR:
            return FADF_HAVEVARTYPE | FADF_BSTR;
        case VT_UNKNOWN:
        case VT_DISPATCH:
            return FADF_HAVEVARTYPE | FADF_UNKNOWN;
        case VT_VARIANT:
            return FADF_HAVEVARTYPE | FADF_VARIANT;
        default:
            return FADF_HAVEVARTYPE;
    }
}

VARTYPE& StoredType(SAFEARRAY* array) {
    return *reinterpret_cast<VARTYPE*>(reinterpret_cast<BYTE*>(array) - kTypeSlot);
}

// Elements in the whole array, or 0 with `ok` false when the count does not fit.
size_t ElementCount(const SAFEARRAY* array, bool& ok) {
    ok = true;
    size_t count = 1;
    for (USHORT i = 0; i < array->cDims; ++i) {
        const size_t n = array->rgsabound[i].cElements;
        if (n != 0 && count > SIZE_MAX / n) {
            ok = false;
            return 0;
        }
        count *= n;
    }
    return count;
}

void ReleaseElements(SAFEARRAY* array) {
    bool ok = false;
    const size_t count = ElementCount(array, ok);
    if (array->pvData == nullptr || !ok) return;
    for (size_t i = 0; i < count; ++i) {
        BYTE* element = static_cast<BYTE*>(array->pvData) + i * array->cbElements;
        if (array->fFeatures & FADF_BSTR) {
            SysFreeString(*reinterpret_cast<BSTR*>(element));
        } else if (array->fFeatures & FADF_UNKNOWN) {
            IUnknown* object = *reinterpret_cast<IUnknown**>(element);
            if (object != nullptr) object->Release();
        } else if (array->fFeatures & FADF_VARIANT) {
            VariantClear(reinterpret_cast<VARIANT*>(element));
        }
    }
}

void FreeArray(SAFEARRAY* array) {
    std::free(array->pvData);
    std::free(reinterpret_cast<BYTE*>(array) - kTypeSlot);
}

}  // namespace

SAFEARRAY* SafeArrayCreate(VARTYPE vt, UINT dims, SAFEARRAYBOUND* bounds) {
    const size_t size = ElementSize(vt);
    if (size == 0 || dims == 0 || dims > 0xFFFF || bounds == nullptr) return nullptr;
    const size_t header = offsetof(SAFEARRAY, rgsabound) + dims * sizeof(SAFEARRAYBOUND);
    BYTE* block = static_cast<BYTE*>(std::calloc(1, kTypeSlot + header));
    if (block == nullptr) return nullptr;
    SAFEARRAY* array = reinterpret_cast<SAFEARRAY*>(block + kTypeSlot);
    StoredType(array) = vt;
    array->cDims = static_cast<USHORT>(dims);
    array->fFeatures = FeaturesOf(vt);
    array->cbElements = static_cast<ULONG>(size);
    for (UINT i = 0; i < dims; ++i) array->rgsabound[dims - 1 - i] = bounds[i];
    bool ok = false;
    const size_t count = ElementCount(array, ok);
    if (!ok || count > SIZE_MAX / size) {
        FreeArray(array);
        return nullptr;
    }
    array->pvData = std::calloc(count != 0 ? count : 1, size);
    if (array->pvData == nullptr) {
        FreeArray(array);
        return nullptr;
    }
    return array;
}

SAFEARRAY* SafeArrayCreateVector(VARTYPE vt, LONG lowerBound, ULONG elements) {
    SAFEARRAYBOUND bound = {elements, lowerBound};
    return SafeArrayCreate(vt, 1, &bound);
}

HRESULT SafeArrayDestroy(SAFEARRAY* array) {
    if (array == nullptr) return S_OK;
    if (array->cLocks != 0) return DISP_E_ARRAYISLOCKED;
    ReleaseElements(array);
    FreeArray(array);
    return S_OK;
}

HRESULT SafeArrayCopy(SAFEARRAY* source, SAFEARRAY** copy) {
    if (copy == nullptr) return E_INVALIDARG;
    *copy = nullptr;
    if (source == nullptr) return S_OK;
    SAFEARRAYBOUND bounds[64];
    const UINT dims = source->cDims;
    if (dims > 64) return E_INVALIDARG;
    for (UINT i = 0; i < dims; ++i) bounds[i] = source->rgsabound[dims - 1 - i];
    SAFEARRAY* result = SafeArrayCreate(StoredType(source), dims, bounds);
    if (result == nullptr) return E_OUTOFMEMORY;
    bool ok = false;
    const size_t count = ElementCount(source, ok);
    for (size_t i = 0; i < count; ++i) {
        const BYTE* from = static_cast<const BYTE*>(source->pvData) + i * source->cbElements;
        BYTE* to = static_cast<BYTE*>(result->pvData) + i * result->cbElements;
        if (source->fFeatures & FADF_BSTR) {
            BSTR text = *reinterpret_cast<const BSTR*>(from);
            if (text == nullptr) continue;
            BSTR duplicate = SysAllocStringLen(text, SysStringLen(text));
            if (duplicate == nullptr) {
                SafeArrayDestroy(result);
                return E_OUTOFMEMORY;
            }
            *reinterpret_cast<BSTR*>(to) = duplicate;
        } else if (source->fFeatures & FADF_UNKNOWN) {
            IUnknown* object = *reinterpret_cast<IUnknown* const*>(from);
            if (object != nullptr) object->AddRef();
            *reinterpret_cast<IUnknown**>(to) = object;
        } else if (source->fFeatures & FADF_VARIANT) {
            const HRESULT hr = VariantCopy(reinterpret_cast<VARIANT*>(to), reinterpret_cast<const VARIANT*>(from));
            if (FAILED(hr)) {
                SafeArrayDestroy(result);
                return hr;
            }
        } else {
            std::memcpy(to, from, source->cbElements);
        }
    }
    *copy = result;
    return S_OK;
}

HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data) {
    if (array == nullptr || data == nullptr) return E_INVALIDARG;
    ++array->cLocks;
    *data = array->pvData;
    return S_OK;
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* array) {
    if (array == nullptr) return E_INVALIDARG;
    if (array->cLocks == 0) return E_UNEXPECTED;
    --array->cLocks;
    return S_OK;
}

HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dim, LONG* bound) {
    if (array == nullptr || bound == nullptr) return E_INVALIDARG;
    if (dim == 0 || dim > array->cDims) return DISP_E_BADINDEX;
    *bound = array->rgsabound[array->cDims - dim].lLbound;
    return S_OK;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dim, LONG* bound) {
    if (array == nullptr || bound == nullptr) return E_INVALIDARG;
    if (dim == 0 || dim > array->cDims) return DISP_E_BADINDEX;
    const SAFEARRAYBOUND& b = array->rgsabound[array->cDims - dim];
    *bound = static_cast<LONG>(static_cast<int64_t>(b.lLbound) + static_cast<int64_t>(b.cElements) - 1);
    return S_OK;
}

UINT SafeArrayGetDim(SAFEARRAY* array) { return array != nullptr ? array->cDims : 0; }

UINT SafeArrayGetElemsize(SAFEARRAY* array) { return array != nullptr ? array->cbElements : 0; }

HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* vt) {
    if (array == nullptr || vt == nullptr) return E_INVALIDARG;
    *vt = StoredType(array);
    return S_OK;
}

// VARIANT lifetime: what a variant owns (a BSTR, an interface reference, a safe array) is freed by
// VariantClear and duplicated by VariantCopy.
#include "platform/win32.h"

namespace {

bool KnownScalar(VARTYPE base) {
    switch (base) {
        case VT_EMPTY:
        case VT_NULL:
        case VT_I1:
        case VT_UI1:
        case VT_I2:
        case VT_UI2:
        case VT_BOOL:
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
        case VT_R4:
        case VT_R8:
        case VT_ERROR:
        case VT_I8:
        case VT_UI8:
            return true;
        default:
            return false;
    }
}

bool KnownType(VARTYPE vt) {
    if (vt & ~(VT_ARRAY | VT_BYREF | VT_TYPEMASK)) return false;
    const VARTYPE base = vt & VT_TYPEMASK;
    if ((vt & VT_ARRAY) && (base == VT_EMPTY || base == VT_NULL)) return false;
    return KnownScalar(base) || base == VT_BSTR || base == VT_UNKNOWN || base == VT_DISPATCH ||
           (base == VT_VARIANT && (vt & (VT_ARRAY | VT_BYREF)));
}

}  // namespace

void VariantInit(VARIANTARG* variant) {
    if (variant == nullptr) return;
    variant->vt = VT_EMPTY;
    variant->wReserved1 = variant->wReserved2 = variant->wReserved3 = 0;
}

HRESULT VariantClear(VARIANTARG* variant) {
    if (variant == nullptr) return E_INVALIDARG;
    const VARTYPE vt = variant->vt;
    if (!KnownType(vt)) return DISP_E_BADVARTYPE;
    if (vt & VT_BYREF) {
        // Borrowed: nothing to free.
    } else if (vt & VT_ARRAY) {
        const HRESULT hr = SafeArrayDestroy(variant->parray);
        if (FAILED(hr)) return hr;
    } else if (vt == VT_BSTR) {
        SysFreeString(variant->bstrVal);
    } else if ((vt == VT_UNKNOWN || vt == VT_DISPATCH) && variant->punkVal != nullptr) {
        variant->punkVal->Release();
    }
    variant->vt = VT_EMPTY;
    return S_OK;
}

HRESULT VariantCopy(VARIANTARG* destination, const VARIANTARG* source) {
    if (destination == nullptr || source == nullptr) return E_INVALIDARG;
    if (destination == source) return S_OK;
    if (!KnownType(source->vt)) return DISP_E_BADVARTYPE;
    HRESULT hr = VariantClear(destination);
    if (FAILED(hr)) return hr;
    VARIANT copy = *source;
    const VARTYPE vt = source->vt;
    if (vt & VT_BYREF) {
        // A reference is copied as a reference.
    } else if (vt & VT_ARRAY) {
        hr = SafeArrayCopy(source->parray, &copy.parray);
        if (FAILED(hr)) return hr;
    } else if (vt == VT_BSTR && source->bstrVal != nullptr) {
        copy.bstrVal = SysAllocStringLen(source->bstrVal, SysStringLen(source->bstrVal));
        if (copy.bstrVal == nullptr) return E_OUTOFMEMORY;
    } else if ((vt == VT_UNKNOWN || vt == VT_DISPATCH) && source->punkVal != nullptr) {
        source->punkVal->AddRef();
    }
    *destination = copy;
    return S_OK;
}

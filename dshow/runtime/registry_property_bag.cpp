// IPropertyBag over a registry key.
#include "dshow/runtime/registry_property_bag.h"

#include <cstring>
#include <vector>

#include "dshow/runtime/registry_access.h"

namespace ze_dsrt {

namespace {

class RegistryPropertyBag final : public ComObject<RegistryPropertyBag, IPropertyBag> {
public:
    explicit RegistryPropertyBag(std::string keyPath) : keyPath_(std::move(keyPath)) {}

    void* FindInterface(REFIID iid) {
        return IsEqualIID(iid, IID_IPropertyBag) ? static_cast<IPropertyBag*>(this) : nullptr;
    }

    HRESULT STDMETHODCALLTYPE Read(LPCOLESTR propertyName, VARIANT* value, IErrorLog*) override {
        if (propertyName == nullptr || value == nullptr) return E_POINTER;
        return Guarded([&]() -> HRESULT {
            const std::string name = Utf8FromOle(propertyName);
            RegKey key;
            LONG err = key.Open(HKEY_CLASSES_ROOT, keyPath_);
            std::vector<BYTE> data;
            DWORD type = REG_NONE;
            if (err == ERROR_SUCCESS) err = key.ReadBinary(name.c_str(), &data, &type);
            if (err != ERROR_SUCCESS) return HRESULT_FROM_WIN32(err);
            return ToVariant(type, data, value);
        });
    }

    HRESULT STDMETHODCALLTYPE Write(LPCOLESTR propertyName, VARIANT* value) override {
        if (propertyName == nullptr || value == nullptr) return E_POINTER;
        return Guarded([&]() -> HRESULT {
            const std::string name = Utf8FromOle(propertyName);
            RegKey key;
            LONG err = key.Create(HKEY_CLASSES_ROOT, keyPath_);
            if (err != ERROR_SUCCESS) return HRESULT_FROM_WIN32(err);
            switch (value->vt) {
            case VT_BSTR:
                err = key.WriteString(name.c_str(), Utf8FromOle(value->bstrVal));
                break;
            case VT_I4:
                err = key.WriteDword(name.c_str(), static_cast<DWORD>(value->lVal));
                break;
            case VT_ARRAY | VT_UI1: {
                std::vector<BYTE> bytes;
                const HRESULT hr = FromByteArray(value->parray, &bytes);
                if (FAILED(hr)) return hr;
                err = key.WriteBinary(name.c_str(), bytes.data(), static_cast<DWORD>(bytes.size()));
                break;
            }
            default:
                return E_INVALIDARG;
            }
            return HRESULT_FROM_WIN32(err);
        });
    }

private:
    static HRESULT ToVariant(DWORD type, const std::vector<BYTE>& data, VARIANT* value) {
        switch (type) {
        case REG_SZ:
        case REG_EXPAND_SZ: {
            size_t length = 0;
            while (length < data.size() && data[length] != 0) ++length;
            const std::basic_string<OLECHAR> text =
                OleFromUtf8(std::string(reinterpret_cast<const char*>(data.data()), length));
            BSTR bstr = SysAllocString(text.c_str());
            if (bstr == nullptr) return E_OUTOFMEMORY;
            VariantClear(value);
            value->vt = VT_BSTR;
            value->bstrVal = bstr;
            return S_OK;
        }
        case REG_DWORD: {
            if (data.size() != 4) return E_UNEXPECTED;
            LONG number = 0;
            std::memcpy(&number, data.data(), 4);
            VariantClear(value);
            value->vt = VT_I4;
            value->lVal = number;
            return S_OK;
        }
        case REG_BINARY: {
            SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(data.size()));
            if (array == nullptr) return E_OUTOFMEMORY;
            void* bytes = nullptr;
            SafeArrayAccessData(array, &bytes);
            if (!data.empty()) std::memcpy(bytes, data.data(), data.size());
            SafeArrayUnaccessData(array);
            VariantClear(value);
            value->vt = VT_ARRAY | VT_UI1;
            value->parray = array;
            return S_OK;
        }
        default:
            return E_UNEXPECTED;
        }
    }

    static HRESULT FromByteArray(SAFEARRAY* array, std::vector<BYTE>* bytes) {
        if (array == nullptr || SafeArrayGetDim(array) != 1) return E_INVALIDARG;
        LONG low = 0, high = -1;
        SafeArrayGetLBound(array, 1, &low);
        SafeArrayGetUBound(array, 1, &high);
        void* data = nullptr;
        const HRESULT hr = SafeArrayAccessData(array, &data);
        if (FAILED(hr)) return hr;
        const BYTE* first = static_cast<const BYTE*>(data);
        bytes->assign(first, first + (high - low + 1));
        SafeArrayUnaccessData(array);
        return S_OK;
    }

    std::string keyPath_;
};

}  // namespace

ComPtr<IPropertyBag> NewRegistryPropertyBag(const std::string& keyPath) {
    return ComPtr<IPropertyBag>::Attach(new RegistryPropertyBag(keyPath));
}

}  // namespace ze_dsrt

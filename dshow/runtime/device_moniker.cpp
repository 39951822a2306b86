// Device monikers and the enumerator that hands them out.
#include "dshow/runtime/device_moniker.h"

#include <functional>

#include "dshow/runtime/registry_access.h"
#include "dshow/runtime/registry_property_bag.h"

namespace ze_dsrt {

namespace {

class DeviceMoniker final : public ComObject<DeviceMoniker, IMoniker> {
public:
    DeviceMoniker(REFCLSID category, std::string name) : category_(category), name_(std::move(name)) {}

    void* FindInterface(REFIID iid) {
        if (IsEqualIID(iid, IID_IMoniker) || IsEqualIID(iid, IID_IPersistStream) || IsEqualIID(iid, IID_IPersist))
            return static_cast<IMoniker*>(this);
        return nullptr;
    }

    // IPersist / IPersistStream: the moniker is not saved anywhere.
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* clsid) override {
        if (clsid == nullptr) return E_POINTER;
        *clsid = kCLSID_CDeviceMoniker;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE IsDirty() override { return S_FALSE; }
    HRESULT STDMETHODCALLTYPE Load(IStream*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Save(IStream*, BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetSizeMax(ULARGE_INTEGER*) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE BindToObject(IBindCtx*, IMoniker*, REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        return Guarded([&]() -> HRESULT {
            ComPtr<IPropertyBag> bag;
            HRESULT hr = OpenBag(&bag);
            if (FAILED(hr)) return hr;
            CLSID clsid{};
            hr = ReadClsid(bag.Get(), &clsid);
            if (FAILED(hr)) return hr;
            ComPtr<IUnknown> created;
            hr = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, created.OutVoid());
            if (FAILED(hr)) return hr;
            ComPtr<IPersistPropertyBag> persist;
            if (SUCCEEDED(created.As(kIID_IPersistPropertyBag, &persist))) {
                hr = persist->Load(bag.Get(), nullptr);
                if (FAILED(hr)) return hr;
            }
            return created->QueryInterface(iid, object);
        });
    }

    HRESULT STDMETHODCALLTYPE BindToStorage(IBindCtx*, IMoniker*, REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        return Guarded([&]() -> HRESULT {
            ComPtr<IPropertyBag> bag;
            const HRESULT hr = OpenBag(&bag);
            return FAILED(hr) ? hr : bag->QueryInterface(iid, object);
        });
    }

    HRESULT STDMETHODCALLTYPE GetDisplayName(IBindCtx*, IMoniker*, LPOLESTR* displayName) override {
        if (displayName == nullptr) return E_POINTER;
        *displayName = nullptr;
        return Guarded([&]() -> HRESULT {
            const std::basic_string<OLECHAR> text = OleFromUtf8(DisplayName());
            const size_t bytes = (text.size() + 1) * sizeof(OLECHAR);
            auto* copy = static_cast<OLECHAR*>(CoTaskMemAlloc(bytes));
            if (copy == nullptr) return E_OUTOFMEMORY;
            std::memcpy(copy, text.c_str(), bytes);
            *displayName = copy;
            return S_OK;
        });
    }

    HRESULT STDMETHODCALLTYPE IsEqual(IMoniker* other) override {
        if (other == nullptr) return E_INVALIDARG;
        return Guarded([&]() -> HRESULT {
            LPOLESTR text = nullptr;
            if (FAILED(other->GetDisplayName(nullptr, nullptr, &text))) return S_FALSE;
            const bool same = Utf8FromOle(text) == DisplayName();
            CoTaskMemFree(text);
            return same ? S_OK : S_FALSE;
        });
    }
    HRESULT STDMETHODCALLTYPE Hash(DWORD* hash) override {
        if (hash == nullptr) return E_POINTER;
        return Guarded([&] {
            *hash = static_cast<DWORD>(std::hash<std::string>()(DisplayName()));
            return S_OK;
        });
    }
    HRESULT STDMETHODCALLTYPE IsSystemMoniker(DWORD* kind) override {
        if (kind == nullptr) return E_POINTER;
        *kind = 0;  // MKSYS_NONE
        return S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Enum(BOOL, IEnumMoniker** monikers) override {
        if (monikers == nullptr) return E_POINTER;
        *monikers = nullptr;  // a simple moniker has no parts
        return S_OK;
    }

    // Composition, reduction and the running object table do not apply to these monikers.
    HRESULT STDMETHODCALLTYPE Reduce(IBindCtx*, DWORD, IMoniker**, IMoniker**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ComposeWith(IMoniker*, BOOL, IMoniker**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsRunning(IBindCtx*, IMoniker*, IMoniker*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTimeOfLastChange(IBindCtx*, IMoniker*, FILETIME*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Inverse(IMoniker**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CommonPrefixWith(IMoniker*, IMoniker**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE RelativePathTo(IMoniker*, IMoniker**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ParseDisplayName(IBindCtx*, IMoniker*, LPOLESTR, ULONG*, IMoniker**) override {
        return E_NOTIMPL;
    }

private:
    std::string DisplayName() const { return "@device:sw:" + GuidString(category_) + "\\" + name_; }

    // The bag of the moniker's key; the key must exist.
    HRESULT OpenBag(ComPtr<IPropertyBag>* bag) const {
        const std::string path = InstanceKeyPath(category_, name_);
        RegKey key;
        const LONG err = key.Open(HKEY_CLASSES_ROOT, path);
        if (err != ERROR_SUCCESS) return HRESULT_FROM_WIN32(err);
        *bag = NewRegistryPropertyBag(path);
        return S_OK;
    }

    static HRESULT ReadClsid(IPropertyBag* bag, CLSID* clsid) {
        static const OLECHAR kName[] = {'C', 'L', 'S', 'I', 'D', 0};
        VARIANT value;
        VariantInit(&value);
        HRESULT hr = bag->Read(kName, &value, nullptr);
        if (SUCCEEDED(hr)) hr = value.vt == VT_BSTR ? CLSIDFromString(value.bstrVal, clsid) : E_UNEXPECTED;
        VariantClear(&value);
        return hr;
    }

    CLSID category_;
    std::string name_;
};

class MonikerEnumerator final : public ComObject<MonikerEnumerator, IEnumMoniker> {
public:
    MonikerEnumerator(std::shared_ptr<const MonikerList> list, size_t position)
        : list_(std::move(list)), position_(position) {}

    void* FindInterface(REFIID iid) {
        return IsEqualIID(iid, IID_IEnumMoniker) ? static_cast<IEnumMoniker*>(this) : nullptr;
    }

    HRESULT STDMETHODCALLTYPE Next(ULONG count, IMoniker** monikers, ULONG* fetched) override {
        if (monikers == nullptr) return E_POINTER;
        if (fetched == nullptr && count != 1) return E_INVALIDARG;
        ULONG given = 0;
        for (; given < count && position_ < list_->size(); ++given, ++position_) {
            IMoniker* moniker = (*list_)[position_].Get();
            moniker->AddRef();
            monikers[given] = moniker;
        }
        if (fetched != nullptr) *fetched = given;
        return given == count ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
        const size_t left = list_->size() - position_;
        position_ += count < left ? count : left;
        return count <= left ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Reset() override {
        position_ = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Clone(IEnumMoniker** copy) override {
        if (copy == nullptr) return E_POINTER;
        *copy = nullptr;
        return Guarded([&] {
            *copy = new MonikerEnumerator(list_, position_);
            return S_OK;
        });
    }

private:
    std::shared_ptr<const MonikerList> list_;
    size_t position_;
};

}  // namespace

ComPtr<IMoniker> NewDeviceMoniker(REFCLSID category, const std::string& name) {
    return ComPtr<IMoniker>::Attach(new DeviceMoniker(category, name));
}

ComPtr<IEnumMoniker> NewMonikerEnumerator(std::shared_ptr<const MonikerList> monikers) {
    return ComPtr<IEnumMoniker>::Attach(new MonikerEnumerator(std::move(monikers), 0));
}

}  // namespace ze_dsrt

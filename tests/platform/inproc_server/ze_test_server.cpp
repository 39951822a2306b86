// The test server: DllGetClassObject for CLSID_ZeTestAdder and DllCanUnloadNow.
#include "tests/platform/inproc_server/ze_test_server.h"

namespace {

LONG volatile g_live = 0;  // objects, factory references and locks

class Adder final : public IZeTestAdder {
public:
    Adder() { InterlockedIncrement(&g_live); }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IZeTestAdder)) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        *object = static_cast<IZeTestAdder*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&m_refs)); }
    ULONG STDMETHODCALLTYPE Release() override {
        const LONG left = InterlockedDecrement(&m_refs);
        if (left == 0) delete this;
        return static_cast<ULONG>(left);
    }
    HRESULT STDMETHODCALLTYPE Add(LONG a, LONG b, LONG* sum) override {
        if (sum == nullptr) return E_POINTER;
        *sum = a + b;
        return S_OK;
    }
    LONG STDMETHODCALLTYPE LiveObjects() override { return g_live; }

private:
    ~Adder() { InterlockedDecrement(&g_live); }
    LONG volatile m_refs = 0;
};

class AdderFactory final : public IClassFactory {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IClassFactory)) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        *object = static_cast<IClassFactory*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override {
        InterlockedIncrement(&g_live);
        return 2;
    }
    ULONG STDMETHODCALLTYPE Release() override {
        InterlockedDecrement(&g_live);
        return 1;
    }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (outer != nullptr) return CLASS_E_NOAGGREGATION;
        Adder* adder = new Adder;
        adder->AddRef();
        const HRESULT hr = adder->QueryInterface(iid, object);
        adder->Release();
        return hr;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
        if (lock)
            InterlockedIncrement(&g_live);
        else
            InterlockedDecrement(&g_live);
        return S_OK;
    }
};

AdderFactory g_factory;

}  // namespace

extern "C" __attribute__((visibility("default"))) HRESULT DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (!IsEqualCLSID(clsid, CLSID_ZeTestAdder)) return CLASS_E_CLASSNOTAVAILABLE;
    return g_factory.QueryInterface(iid, object);
}

extern "C" __attribute__((visibility("default"))) HRESULT DllCanUnloadNow() { return g_live == 0 ? S_OK : S_FALSE; }

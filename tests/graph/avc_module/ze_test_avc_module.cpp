// A decoder module as a vendor ships one, for the direct-loading tests: a library named
// mc_dec_avc_ds.ax whose DllGetClassObject hands out a class factory for one class, a filter with no
// pins. It is never registered; the tests place it where the module looks for it.
#include <new>

#include "dshow/baseclasses/base_filter.h"
#include "dshow/baseclasses/critical_section.h"

namespace {

// {96B9D0ED-8D13-4171-A983-B84D88D627BE}
const CLSID kAvcDecoderClass = {0x96b9d0ed, 0x8d13, 0x4171, {0xa9, 0x83, 0xb8, 0x4d, 0x88, 0xd6, 0x27, 0xbe}};

struct FilterLock {
    CCritSec lock;
};

class AvcDecoder final : private FilterLock, public CBaseFilter {
public:
    explicit AvcDecoder(HRESULT* hr) : CBaseFilter("AVC test decoder", nullptr, &lock, kAvcDecoderClass, hr) {}
    int GetPinCount() override { return 0; }
    CBasePin* GetPin(int) override { return nullptr; }
};

class AvcFactory final : public IClassFactory {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IClassFactory)) return E_NOINTERFACE;
        *object = static_cast<IClassFactory*>(this);
        return S_OK;
    }
    // Static: the counts do not decide its life.
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override
    {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (outer != nullptr) return CLASS_E_NOAGGREGATION;
        HRESULT hr = S_OK;
        AvcDecoder* filter = new (std::nothrow) AvcDecoder(&hr);
        if (filter == nullptr) return E_OUTOFMEMORY;
        filter->NonDelegatingAddRef();
        if (SUCCEEDED(hr)) hr = filter->NonDelegatingQueryInterface(iid, object);
        filter->NonDelegatingRelease();
        return hr;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

AvcFactory g_factory;

}  // namespace

extern "C" HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID clsid, REFIID iid, void** object)
{
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (!IsEqualCLSID(clsid, kAvcDecoderClass)) return CLASS_E_CLASSNOTAVAILABLE;
    return g_factory.QueryInterface(iid, object);
}

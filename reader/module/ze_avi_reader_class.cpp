#include "reader/module/ze_avi_reader_class.h"

#include <cstdio>
#include <new>

#include "graph/ze_graph_create.h"
#include "reader/ze_module_state.h"
#include "reader/module/ze_reader_creation.h"
#include "reader/module/ze_module_report.h"
#include "reader/api/ze_host_interfaces.h"

namespace {

const char* const kClass = "CZEAviReaderClass";
const char* const kModule = "ZEAviReaderModule";  // the exports belong to no class

// The factory lives in static storage; a plain flag says whether it has been built.
alignas(CZEAviReaderClass) unsigned char g_factoryStorage[sizeof(CZEAviReaderClass)];
bool g_factoryBuilt = false;

struct FactoryTeardown {
    ~FactoryTeardown() {
        if (g_factoryBuilt) {
            reinterpret_cast<CZEAviReaderClass*>(g_factoryStorage)->~CZEAviReaderClass();
            g_factoryBuilt = false;
        }
    }
} g_factoryTeardown;

// Hands out `created` as `iid`: one reference is taken for the query and dropped again, so an
// object that does not have the interface is destroyed here.
HRESULT QueryNewObject(IUnknown* created, REFIID iid, void** object) {
    created->AddRef();
    const HRESULT hr = created->QueryInterface(iid, object);
    created->Release();
    return hr;
}

}  // namespace

CZEAviReaderClass& ZeClassFactory() {
    if (!g_factoryBuilt) {
        new (g_factoryStorage) CZEAviReaderClass();
        g_factoryBuilt = true;
    }
    return *reinterpret_cast<CZEAviReaderClass*>(g_factoryStorage);
}

HRESULT STDMETHODCALLTYPE CZEAviReaderClass::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) return E_POINTER;
    if (!IsEqualIID(iid, IID_IClassFactory) && !IsEqualIID(iid, IID_IUnknown)) return E_NOINTERFACE;
    *object = static_cast<IClassFactory*>(this);
    AddRef();
    return S_OK;
}

ULONG STDMETHODCALLTYPE CZEAviReaderClass::AddRef() {
    const LONG count = InterlockedIncrement(&m_refCount);
    if (count == 1) ZeModuleAddRef();
    return static_cast<ULONG>(count);
}

ULONG STDMETHODCALLTYPE CZEAviReaderClass::Release() {
    const LONG count = InterlockedDecrement(&m_refCount);
    if (count == 0) ZeModuleRelease();  // static: never freed here
    return static_cast<ULONG>(count);
}

HRESULT STDMETHODCALLTYPE CZEAviReaderClass::LockServer(BOOL lock) {
    if (lock)
        ZeModuleAddRef();
    else
        ZeModuleRelease();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CZEAviReaderClass::CreateInstance(IUnknown* outer, REFIID iid, void** object) {
    if (object == nullptr) return ZeModuleReport(kClass, "CreateInstance", E_POINTER);
    *object = nullptr;
    const LONG number = InterlockedIncrement(&m_instanceCounter) - 1;
    char name[100];
    std::snprintf(name, sizeof name, "Instance_%d", static_cast<int>(number));
    HRESULT hr = E_FAIL;
    if (outer != nullptr) return ZeModuleReport(kClass, "CreateInstance", CLASS_E_NOAGGREGATION);

    if (IsEqualCLSID(m_currentClass, CLSID_ZEAviReaderModule)) {
        // The construction result is deliberately not checked: an object whose COM initialisation
        // failed has reported that itself and is handed out all the same.
        IUnknown* reader = ZeNewAviReader(&hr, name);
        if (reader == nullptr) return ZeModuleReport(kClass, "CreateInstance", E_OUTOFMEMORY);
        hr = QueryNewObject(reader, iid, object);
    } else if (IsEqualCLSID(m_currentClass, CLSID_ZEVideoSourceFilter)) {
        // The filters' creation reports its own failures under the filter's class; the factory
        // passes the result on as it stands.
        return CreateZEVideoSourceFilter(nullptr, iid, object);
    } else if (IsEqualCLSID(m_currentClass, CLSID_ZEVideoRenderFilter)) {
        return CreateZEVideoRenderFilter(nullptr, iid, object);
    }
    return FAILED(hr) ? ZeModuleReport(kClass, "CreateInstance", hr) : hr;
}

HRESULT ZeGetClassObject(const CLSID* clsid, const IID* iid, void** object) {
    CZEAviReaderClass& factory = ZeClassFactory();
    if (object == nullptr) return ZeModuleReport(kModule, "DllGetClassObject", E_POINTER);
    *object = nullptr;
    if (clsid == nullptr) return ZeModuleReport(kModule, "DllGetClassObject", E_FAIL);
    // Every outstanding pointer to the one factory creates the class asked for last.
    factory.SetCurrentClass(*clsid);
    const HRESULT hr = iid != nullptr ? factory.QueryInterface(*iid, object) : E_POINTER;
    if (FAILED(hr)) {
        *object = nullptr;
        return ZeModuleReport(kModule, "DllGetClassObject", hr);
    }
    return hr;
}

HRESULT ZeCanUnloadNow() { return ZeModuleLiveCount() == 0 ? S_OK : S_FALSE; }

// CZEAviReaderClass: the module's one class factory. It creates the class whose id the latest
// DllGetClassObject asked for: the import module (CZEAviReader, CLSID_ZEAviReaderModule in
// reader/api/ze_host_interfaces.h), the DV source filter (CLSID_ZEVideoSourceFilter) or the DV render
// filter (CLSID_ZEVideoRenderFilter, both in graph/ze_graph_interfaces.h).
#pragma once

#include "graph/ze_graph_interfaces.h"
#include "platform/win32.h"

class CZEAviReaderClass final : public IClassFactory {
public:
    CZEAviReaderClass() = default;
    CZEAviReaderClass(const CZEAviReaderClass&) = delete;
    CZEAviReaderClass& operator=(const CZEAviReaderClass&) = delete;
    ~CZEAviReaderClass() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override;

    void SetCurrentClass(REFCLSID clsid) { m_currentClass = clsid; }
    const CLSID& CurrentClass() const { return m_currentClass; }
    LONG InstanceCount() const { return m_instanceCounter; }

private:
    LONG volatile m_refCount = 0;
    LONG volatile m_instanceCounter = 0;  // numbers the created objects' names, across all classes
    CLSID m_currentClass{};
};

// The module's factory, built on first use and destroyed when the module unloads.
CZEAviReaderClass& ZeClassFactory();

// The work of the module's four exports. The class and interface ids come as pointers so that a
// caller passing none gets an answer instead of undefined behaviour.
HRESULT ZeGetClassObject(const CLSID* clsid, const IID* iid, void** object);
HRESULT ZeCanUnloadNow();

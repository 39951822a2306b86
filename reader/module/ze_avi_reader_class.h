// CZEAviReaderClass: the module's one class factory. It creates the class whose id the latest
// DllGetClassObject asked for: the import module (CZEAviReader); the DV source and render filters are
// known ids that this build cannot create.
#pragma once

#include "platform/win32.h"

// The import module's class id is CLSID_ZEAviReaderModule (reader/api/ze_host_interfaces.h).
// {4B9E6A07-D2C8-4E1F-93A5-7F0C1B2D6E84}
inline constexpr CLSID CLSID_ZEDVSourceFilter = {
    0x4b9e6a07, 0xd2c8, 0x4e1f, {0x93, 0xa5, 0x7f, 0x0c, 0x1b, 0x2d, 0x6e, 0x84}};
// {7D3A51C2-9E4B-4F08-A6D1-2C5B8E90F143}
inline constexpr CLSID CLSID_ZEDVRenderFilter = {
    0x7d3a51c2, 0x9e4b, 0x4f08, {0xa6, 0xd1, 0x2c, 0x5b, 0x8e, 0x90, 0xf1, 0x43}};

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

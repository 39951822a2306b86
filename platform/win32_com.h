// COM runtime subset (ole32): IUnknown, class factories, apartments, task memory, CLSID strings,
// activation; and the UTF-16 conversions (kernel32) that OLE strings need.
//
// OLECHAR is WCHAR, a 16-bit UTF-16 unit, as on Windows, so OLE strings have the same width on every
// platform. Code pages: CP_ACP and CP_UTF8 both mean UTF-8 on POSIX.
//
// Activation on POSIX: CoGetClassObject first asks the table of built-in classes that the process
// registers with ZeRegisterBuiltinClass, then reads the default value of
// HKEY_CLASSES_ROOT\CLSID\{...}\InprocServer32 (REG_SZ, or REG_EXPAND_SZ with its %VARIABLES%
// filled in from the environment), loads that module and calls its DllGetClassObject.
// Modules loaded this way stay loaded until CoFreeUnusedLibraries finds that they can unload.
#pragma once

#include "platform/win32_types.h"

#define interface struct
#define STDMETHOD(method) virtual HRESULT STDMETHODCALLTYPE method
#define STDMETHOD_(type, method) virtual type STDMETHODCALLTYPE method
#define STDMETHODIMP HRESULT STDMETHODCALLTYPE
#define STDMETHODIMP_(type) type STDMETHODCALLTYPE
#define PURE = 0
#define STDAPICALLTYPE

extern "C" const IID IID_IUnknown;
extern "C" const IID IID_IClassFactory;
extern "C" const GUID GUID_NULL;
#define CLSID_NULL GUID_NULL
#define IID_NULL GUID_NULL

struct IUnknown {
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;
protected:
    ~IUnknown() = default;
};
typedef IUnknown* LPUNKNOWN;

struct IClassFactory : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) = 0;
    virtual HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) = 0;
protected:
    ~IClassFactory() = default;
};
typedef IClassFactory* LPCLASSFACTORY;

typedef WCHAR OLECHAR;
typedef OLECHAR* LPOLESTR;
typedef const OLECHAR* LPCOLESTR;

// The exports of an in-process server.
typedef HRESULT(STDAPICALLTYPE* LPFNGETCLASSOBJECT)(REFCLSID clsid, REFIID iid, LPVOID* object);
typedef HRESULT(STDAPICALLTYPE* LPFNCANUNLOADNOW)();

constexpr HRESULT CO_E_DLLNOTFOUND = static_cast<HRESULT>(0x800401F8u);
constexpr HRESULT CO_E_ERRORINDLL = static_cast<HRESULT>(0x800401F9u);
constexpr HRESULT CO_E_IIDSTRING = static_cast<HRESULT>(0x800401F4u);
constexpr HRESULT CO_S_NOTALLINTERFACES = static_cast<HRESULT>(0x00080012);

// Apartments.
constexpr DWORD COINIT_MULTITHREADED = 0x0;
constexpr DWORD COINIT_APARTMENTTHREADED = 0x2;
constexpr DWORD COINIT_DISABLE_OLE1DDE = 0x4;
constexpr DWORD COINIT_SPEED_OVER_MEMORY = 0x8;

// Class contexts; only in-process servers exist here.
constexpr DWORD CLSCTX_INPROC_SERVER = 0x1;
constexpr DWORD CLSCTX_INPROC_HANDLER = 0x2;
constexpr DWORD CLSCTX_LOCAL_SERVER = 0x4;
constexpr DWORD CLSCTX_REMOTE_SERVER = 0x10;
constexpr DWORD CLSCTX_INPROC = CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER;
constexpr DWORD CLSCTX_ALL = CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER;

// Per thread, counted. The first call of a thread returns S_OK, later calls with the same model S_FALSE,
// a call with the other model RPC_E_CHANGED_MODE (not counted). Each successful call (S_OK or S_FALSE)
// needs one CoUninitialize.
HRESULT CoInitialize(LPVOID reserved);
HRESULT CoInitializeEx(LPVOID reserved, DWORD coInit);
void CoUninitialize();

LPVOID CoTaskMemAlloc(SIZE_T size);
LPVOID CoTaskMemRealloc(LPVOID block, SIZE_T size);
void CoTaskMemFree(LPVOID block);

// "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}", upper-case hex, 38 characters and a zero.
HRESULT StringFromCLSID(REFCLSID clsid, LPOLESTR* text);  // text from CoTaskMemAlloc
HRESULT StringFromIID(REFIID iid, LPOLESTR* text);
int StringFromGUID2(REFGUID guid, LPOLESTR text, int maxChars);  // 39, or 0 when the buffer is too small
// Accepts exactly the braced form (hex digits of either case); anything else is CO_E_CLASSSTRING.
HRESULT CLSIDFromString(LPCOLESTR text, LPCLSID clsid);
HRESULT IIDFromString(LPCOLESTR text, LPGUID iid);  // CO_E_IIDSTRING for bad text

// Fails with CO_E_NOTINITIALIZED when neither the calling thread nor (for the multithreaded apartment)
// any thread has initialised COM; REGDB_E_CLASSNOTREG for a class that is neither built in nor registered
// (or a context without in-process servers); the server's own answer otherwise, such as
// CLASS_E_CLASSNOTAVAILABLE.
HRESULT CoGetClassObject(REFCLSID clsid, DWORD context, LPVOID serverInfo, REFIID iid, LPVOID* object);
HRESULT CoCreateInstance(REFCLSID clsid, LPUNKNOWN outer, DWORD context, REFIID iid, LPVOID* object);
// Unloads the in-process servers loaded by activation whose DllCanUnloadNow returns S_OK.
void CoFreeUnusedLibraries();

// Built-in classes (POSIX only): `getClassObject` answers like a module's DllGetClassObject. A class
// registered again replaces the earlier entry; a null function removes it.
void ZeRegisterBuiltinClass(REFCLSID clsid, LPFNGETCLASSOBJECT getClassObject);

// Code pages for the conversions.
constexpr UINT CP_ACP = 0;
constexpr UINT CP_UTF8 = 65001;

// Windows semantics: a length of -1 means zero-terminated (the zero is converted and counted); an output
// size of 0 asks for the size needed; a buffer too small gives 0 with ERROR_INSUFFICIENT_BUFFER.
// Ill-formed input becomes U+FFFD; the default-character arguments are ignored, as for CP_UTF8.
int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR text, int bytes, WCHAR* wide, int wideChars);
int WideCharToMultiByte(UINT codePage, DWORD flags, const WCHAR* wide, int wideChars, LPSTR text, int bytes,
                        LPCSTR defaultChar, LPBOOL usedDefault);

// Automation types and monikers build on the declarations above.
#include "platform/win32_ole.h"

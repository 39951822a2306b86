#include "host/host_module.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "host/exchange_client.h"

namespace {

typedef HRESULT(STDAPICALLTYPE* GetClassObjectFn)(REFCLSID, REFIID, void**);
typedef HRESULT(STDAPICALLTYPE* RegisterFn)();

#ifdef _WIN32
constexpr const char* kModuleFileName = "ZEAviReader.dll";
#else
constexpr const char* kModuleFileName = "libzeavireader.so";
#endif

template <class Fn>
Fn Export(HMODULE module, const char* name) {
    // The generic function pointer is cast to the export's real type.
    return reinterpret_cast<Fn>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

HMODULE LoadModule(const std::string& path) {
    HMODULE module = LoadLibraryA(path.c_str());
    if (!module)
        throw HostError(HRESULT_FROM_WIN32(GetLastError()), "loading the module " + path);
    return module;
}

}  // namespace

HRESULT STDMETHODCALLTYPE HostLog::QueryInterface(REFIID iid, void** object) {
    if (!object) return E_POINTER;
    if (!IsEqualIID(iid, IID_IUnknown)) return E_NOINTERFACE;
    *object = this;
    AddRef();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE HostLog::WriteLogLine(const char* line, LONG) {
    if (!line) return E_POINTER;
    std::string text(line);
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
    if (m_echo) std::fprintf(stderr, "%s\n", text.c_str());
    m_lines.push_back(std::move(text));
    return S_OK;
}

std::string HostLog::LastReport() const { return m_lines.empty() ? std::string() : ReportSummary(m_lines.back()); }

HRESULT HostLog::LastCode() const {
    if (m_lines.empty()) return E_FAIL;
    const std::string& line = m_lines.back();
    const size_t open = line.find('[');
    if (open == std::string::npos) return E_FAIL;
    return static_cast<HRESULT>(std::strtoul(line.c_str() + open + 1, nullptr, 16));
}

std::string ReportSummary(const std::string& line) {
    // "AVI Reader :: [80040012] no valid avi file ### CZeAviFileParser::Parse ### context"
    const size_t open = line.find('[');
    const size_t close = line.find("] ", open == std::string::npos ? 0 : open);
    const size_t first = line.find(" ### ", close == std::string::npos ? 0 : close);
    if (open == std::string::npos || close == std::string::npos || first == std::string::npos) return {};
    const std::string message = line.substr(close + 2, first - close - 2);
    const size_t second = line.find(" ### ", first + 5);
    const std::string where = line.substr(first + 5, second == std::string::npos ? std::string::npos : second - first - 5);
    return "\"" + message + "\" in " + where;
}

const char* StatusName(HRESULT code) {
    const ZeStatusCode* row = FindStatusCode(code);
    return row ? row->name : "";
}

std::string DefaultModulePath() {
    char self[MAX_PATH + 1] = {};
    const DWORD length = GetModuleFileNameA(GetModuleHandleA(nullptr), self, MAX_PATH);
    std::string path(self, length);
    const size_t slash = path.find_last_of("/\\");
    return (slash == std::string::npos ? std::string() : path.substr(0, slash + 1)) + kModuleFileName;
}

ModuleSession::ModuleSession(const ModuleOptions& options) {
    m_log.SetEcho(options.verbose);
    const HRESULT started = CoInitialize(nullptr);
    if (FAILED(started)) throw HostError(started, "initialising COM");
    m_com.started = true;

    ComPtr<IUnknown> object;
    if (options.byClassId) {
        const HRESULT hr = CoCreateInstance(CLSID_ZEAviReaderModule, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown,
                                            object.Out());
        if (FAILED(hr))
            throw HostError(hr, "creating the module's object by its class id (run `avihost register` first)");
    } else {
        const std::string path = options.modulePath.empty() ? DefaultModulePath() : options.modulePath;
        m_library.handle = LoadModule(path);
        auto getClassObject = Export<GetClassObjectFn>(m_library.handle, "DllGetClassObject");
        if (!getClassObject) throw HostError(HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND), "finding DllGetClassObject in " + path);
        ComPtr<IClassFactory> factory;
        HRESULT hr = getClassObject(CLSID_ZEAviReaderModule, IID_IClassFactory, factory.Out());
        if (FAILED(hr)) throw HostError(hr, "getting the module's class factory");
        hr = factory->CreateInstance(nullptr, IID_IUnknown, object.Out());
        if (FAILED(hr)) throw HostError(hr, "creating the module's object");
    }
    const struct {
        REFIID iid;
        void** slot;
        const char* name;
    } wanted[] = {
        {IID_IZEVideoStream, m_video.Out(), "IZEVideoStream"},
        {IID_IZEClientServerExchange2, m_exchange.Out(), "IZEClientServerExchange2"},
        {IID_IZEVideoImportPlugIn, m_plugIn.Out(), "IZEVideoImportPlugIn"},
        {IID_IZEStatus, m_status.Out(), "IZEStatus"},
        {IID_IZEBasicAudioReader, m_audio.Out(), "IZEBasicAudioReader"},
        {IID_IZERawStream, m_raw.Out(), "IZERawStream"},
    };
    for (const auto& w : wanted) {
        const HRESULT hr = object->QueryInterface(w.iid, w.slot);
        if (FAILED(hr)) throw HostError(hr, std::string("asking the module's object for ") + w.name);
    }
    ZeHostParams params{};
    params.flags = ZE_HOSTPARAM_USE_LOG;
    params.hostLog = &m_log;
    Check(m_status->SetHostParams(&params), "handing the host log to the module");
}

void ModuleSession::Check(HRESULT code, const std::string& what) const {
    if (FAILED(code)) throw HostError(code, what, m_log.LastReport());
}

namespace {

// The module's own registration stores two bytes of every value, so the server path it leaves is not
// one the COM runtime can load. The host writes the full path of the import module's class afterwards.
HRESULT WriteServerPath(HMODULE module) {
    char path[MAX_PATH + 1] = {};
    const DWORD length = GetModuleFileNameA(module, path, MAX_PATH);
    if (length == 0) return HRESULT_FROM_WIN32(GetLastError());
    const std::string key = "CLSID\\" + GuidText(CLSID_ZEAviReaderModule) + "\\InprocServer32";
    HKEY handle = nullptr;
    LONG status = RegCreateKeyExA(HKEY_CLASSES_ROOT, key.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &handle,
                                  nullptr);
    if (status != ERROR_SUCCESS) return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
    status = RegSetValueExA(handle, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(path), length + 1);
    RegCloseKey(handle);
    return status == ERROR_SUCCESS ? S_OK : HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

}  // namespace

HRESULT RunRegistration(const ModuleOptions& options, bool registerServer) {
    const std::string path = options.modulePath.empty() ? DefaultModulePath() : options.modulePath;
    HMODULE module = LoadModule(path);
    auto run = Export<RegisterFn>(module, registerServer ? "DllRegisterServer" : "DllUnregisterServer");
    HRESULT hr = run ? run() : HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND);
    if (registerServer && SUCCEEDED(hr)) hr = WriteServerPath(module);
    FreeLibrary(module);
    return hr;
}

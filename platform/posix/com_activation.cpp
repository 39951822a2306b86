// Activation: built-in classes first, then in-process servers registered under
// HKEY_CLASSES_ROOT\CLSID\{...}\InprocServer32.
#include <cstdlib>
#include <mutex>
#include <new>
#include <string>
#include <vector>

#include "platform/posix/com_apartment.h"
#include "platform/win32.h"

namespace {

struct BuiltinClass {
    CLSID clsid;
    LPFNGETCLASSOBJECT getClassObject;
};

struct BuiltinTable {
    std::mutex mutex;
    std::vector<BuiltinClass> classes;
};

BuiltinTable& Builtins() {
    // Released when the module holding it unloads, so a host that unloads us loses no memory.
    static BuiltinTable table;
    return table;
}

LPFNGETCLASSOBJECT FindBuiltin(REFCLSID clsid) {
    BuiltinTable& t = Builtins();
    std::lock_guard<std::mutex> lock(t.mutex);
    for (const BuiltinClass& c : t.classes)
        if (IsEqualCLSID(c.clsid, clsid)) return c.getClassObject;
    return nullptr;
}

struct LoadedServer {
    std::string path;
    HMODULE module;
    LPFNGETCLASSOBJECT getClassObject;
    LPFNCANUNLOADNOW canUnloadNow;  // may be null
};

struct ServerCache {
    std::mutex mutex;
    std::vector<LoadedServer> servers;
};

ServerCache& Servers() {
    static ServerCache cache;
    return cache;
}

// Closes a registry key on every path.
class RegKeyHolder {
public:
    RegKeyHolder() = default;
    ~RegKeyHolder() {
        if (key_ != nullptr) RegCloseKey(key_);
    }
    RegKeyHolder(const RegKeyHolder&) = delete;
    RegKeyHolder& operator=(const RegKeyHolder&) = delete;
    HKEY* out() { return &key_; }
    HKEY get() const { return key_; }

private:
    HKEY key_ = nullptr;
};

std::string GuidText(REFGUID guid) {
    OLECHAR wide[39];
    StringFromGUID2(guid, wide, 39);
    return std::string(wide, wide + 38);  // the text is ASCII
}

// %NAME% replaced by the environment variable's value; unknown names and a lone % stay as written.
std::string ExpandVariables(const std::string& text) {
    std::string out;
    size_t pos = 0;
    while (pos < text.size()) {
        const size_t open = text.find('%', pos);
        const size_t close = open == std::string::npos ? std::string::npos : text.find('%', open + 1);
        if (close == std::string::npos) break;
        out.append(text, pos, open - pos);
        const std::string name = text.substr(open + 1, close - open - 1);
        const char* value = name.empty() ? nullptr : std::getenv(name.c_str());
        if (value != nullptr) {
            out += value;
            pos = close + 1;
        } else {
            out.push_back('%');  // not a variable: keep it and look again from the second %
            pos = open + 1;
        }
    }
    out.append(text, pos, std::string::npos);
    return out;
}

// The module path registered for the class, or REGDB_E_CLASSNOTREG.
HRESULT InprocServerPath(REFCLSID clsid, std::string& path) {
    const std::string keyName = "CLSID\\" + GuidText(clsid) + "\\InprocServer32";
    RegKeyHolder key;
    if (RegOpenKeyExA(HKEY_CLASSES_ROOT, keyName.c_str(), 0, KEY_QUERY_VALUE, key.out()) != ERROR_SUCCESS)
        return REGDB_E_CLASSNOTREG;
    DWORD type = 0, size = 0;
    if (RegQueryValueExA(key.get(), nullptr, nullptr, &type, nullptr, &size) != ERROR_SUCCESS ||
        (type != REG_SZ && type != REG_EXPAND_SZ) || size == 0) {
        return REGDB_E_CLASSNOTREG;
    }
    std::vector<BYTE> data(size);
    if (RegQueryValueExA(key.get(), nullptr, nullptr, &type, data.data(), &size) != ERROR_SUCCESS)
        return REGDB_E_CLASSNOTREG;
    path.assign(reinterpret_cast<const char*>(data.data()), size);
    path = path.c_str();  // up to the first zero, when there is one
    if (type == REG_EXPAND_SZ) path = ExpandVariables(path);
    return path.empty() ? REGDB_E_CLASSNOTREG : S_OK;
}

// The server's class-object function, loading the module on first use.
HRESULT LoadServer(const std::string& path, LPFNGETCLASSOBJECT& getClassObject) {
    ServerCache& cache = Servers();
    std::lock_guard<std::mutex> lock(cache.mutex);
    for (const LoadedServer& s : cache.servers) {
        if (s.path == path) {
            getClassObject = s.getClassObject;
            return S_OK;
        }
    }
    HMODULE module = LoadLibraryExA(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (module == nullptr) return HRESULT_FROM_WIN32(GetLastError());
    auto get = reinterpret_cast<LPFNGETCLASSOBJECT>(GetProcAddress(module, "DllGetClassObject"));
    if (get == nullptr) {
        FreeLibrary(module);
        return CO_E_ERRORINDLL;
    }
    auto canUnload = reinterpret_cast<LPFNCANUNLOADNOW>(GetProcAddress(module, "DllCanUnloadNow"));
    cache.servers.push_back(LoadedServer{path, module, get, canUnload});
    getClassObject = get;
    return S_OK;
}

HRESULT GetClassObjectUnguarded(REFCLSID clsid, DWORD context, REFIID iid, LPVOID* object) {
    if (!ze_posix::ComUsableOnThisThread()) return CO_E_NOTINITIALIZED;
    if ((context & CLSCTX_INPROC) == 0) return REGDB_E_CLASSNOTREG;
    LPFNGETCLASSOBJECT get = FindBuiltin(clsid);
    if (get == nullptr) {
        std::string path;
        HRESULT hr = InprocServerPath(clsid, path);
        if (FAILED(hr)) return hr;
        hr = LoadServer(path, get);
        if (FAILED(hr)) return hr;
    }
    return get(clsid, iid, object);
}

}  // namespace

void ZeRegisterBuiltinClass(REFCLSID clsid, LPFNGETCLASSOBJECT getClassObject) {
    BuiltinTable& t = Builtins();
    std::lock_guard<std::mutex> lock(t.mutex);
    for (auto it = t.classes.begin(); it != t.classes.end(); ++it) {
        if (IsEqualCLSID(it->clsid, clsid)) {
            t.classes.erase(it);
            break;
        }
    }
    if (getClassObject == nullptr) return;
    try {
        t.classes.push_back(BuiltinClass{clsid, getClassObject});
    } catch (const std::bad_alloc&) {
        // Out of memory: the class stays unknown, and activating it says so.
    }
}

HRESULT CoGetClassObject(REFCLSID clsid, DWORD context, LPVOID, REFIID iid, LPVOID* object) {
    if (object == nullptr) return E_INVALIDARG;
    *object = nullptr;
    try {
        return GetClassObjectUnguarded(clsid, context, iid, object);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

HRESULT CoCreateInstance(REFCLSID clsid, LPUNKNOWN outer, DWORD context, REFIID iid, LPVOID* object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    IClassFactory* factory = nullptr;
    HRESULT hr = CoGetClassObject(clsid, context, nullptr, IID_IClassFactory, reinterpret_cast<void**>(&factory));
    if (FAILED(hr)) return hr;
    if (factory == nullptr) return E_FAIL;
    hr = factory->CreateInstance(outer, iid, object);
    factory->Release();
    return hr;
}

void CoFreeUnusedLibraries() {
    ServerCache& cache = Servers();
    std::lock_guard<std::mutex> lock(cache.mutex);
    for (auto it = cache.servers.begin(); it != cache.servers.end();) {
        if (it->canUnloadNow != nullptr && it->canUnloadNow() == S_OK) {
            FreeLibrary(it->module);
            it = cache.servers.erase(it);
        } else {
            ++it;
        }
    }
}

#include "graph/ze_class_registry.h"

#include <algorithm>
#include <cctype>
#include <memory>
#include <new>
#include <type_traits>

namespace {

struct TaskMemText {
    void operator()(LPOLESTR text) const { CoTaskMemFree(text); }
};

struct KeyClose {
    void operator()(HKEY key) const { RegCloseKey(key); }
};
typedef std::unique_ptr<std::remove_pointer<HKEY>::type, KeyClose> ScopedKey;

ScopedKey OpenKey(HKEY parent, const char* subKey, REGSAM access)
{
    HKEY key = nullptr;
    if (RegOpenKeyExA(parent, subKey, 0, access, &key) != ERROR_SUCCESS) return ScopedKey();
    return ScopedKey(key);
}

bool SameTextIgnoringCase(const std::string& a, const std::string& b)
{
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

// The default value of `key`\InprocServer32 as text; empty when missing or not a string.
std::string ServerPath(HKEY classKey)
{
    const ScopedKey server = OpenKey(classKey, "InprocServer32", KEY_READ);
    if (!server) return std::string();
    DWORD type = 0;
    DWORD size = 0;
    if (RegQueryValueExA(server.get(), nullptr, nullptr, &type, nullptr, &size) != ERROR_SUCCESS ||
        (type != REG_SZ && type != REG_EXPAND_SZ) || size == 0)
        return std::string();
    std::string text(size, '\0');
    if (RegQueryValueExA(server.get(), nullptr, nullptr, &type, reinterpret_cast<BYTE*>(&text[0]), &size) !=
        ERROR_SUCCESS)
        return std::string();
    text.resize(std::min<size_t>(size, text.size()));
    // The stored bytes need not end in a zero; the text ends at the first one there is.
    const size_t zero = text.find('\0');
    if (zero != std::string::npos) text.resize(zero);
    return text;
}

HRESULT FindServerPath(const std::string& clsidText, std::string* path)
{
    const ScopedKey classes = OpenKey(HKEY_LOCAL_MACHINE, "SOFTWARE\\Classes\\CLSID", KEY_ENUMERATE_SUB_KEYS | KEY_READ);
    if (!classes) return S_FALSE;
    char name[ZE_REG_MAX_KEY_NAME + 1];
    for (DWORD index = 0;; ++index) {
        DWORD chars = sizeof name;
        if (RegEnumKeyExA(classes.get(), index, name, &chars, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
            return S_FALSE;
        if (!SameTextIgnoringCase(std::string(name, chars), clsidText)) continue;
        const ScopedKey classKey = OpenKey(classes.get(), name, KEY_READ);
        if (classKey) *path = ServerPath(classKey.get());
        return path->empty() ? S_FALSE : S_OK;
    }
}

}  // namespace

HRESULT GetClassRegistryPath(IBaseFilter* filter, std::string* path)
{
    if (filter == nullptr || path == nullptr) return E_POINTER;
    try {
        path->clear();
        CLSID clsid{};
        HRESULT hr = filter->GetClassID(&clsid);
        if (FAILED(hr)) return hr;
        LPOLESTR rawText = nullptr;
        hr = StringFromCLSID(clsid, &rawText);
        if (FAILED(hr)) return hr;
        const std::unique_ptr<OLECHAR, TaskMemText> text(rawText);
        std::string clsidText;
        for (const OLECHAR* c = text.get(); *c != 0; ++c) clsidText.push_back(static_cast<char>(*c));
        return FindServerPath(clsidText, path);
    } catch (const std::bad_alloc&) {
        path->clear();
        return E_OUTOFMEMORY;
    }
}

// A private registry file for one test: ZE_REGISTRY_FILE points into a fresh temporary folder while the
// sandbox lives, and the earlier setting comes back afterwards. With it, the few registry calls the
// platform tests repeat.
#pragma once

#include <cstdlib>
#include <string>
#include <vector>

#include "platform/win32.h"
#include "tests/support/temp_dir.h"

namespace zetest {

class RegistrySandbox {
public:
    RegistrySandbox() : path_(folder_.Path() + "/registry.reg") {
        const char* old = std::getenv("ZE_REGISTRY_FILE");
        hadOld_ = old != nullptr;
        if (hadOld_) old_ = old;
        ::setenv("ZE_REGISTRY_FILE", path_.c_str(), 1);
    }
    ~RegistrySandbox() {
        if (hadOld_)
            ::setenv("ZE_REGISTRY_FILE", old_.c_str(), 1);
        else
            ::unsetenv("ZE_REGISTRY_FILE");
    }
    RegistrySandbox(const RegistrySandbox&) = delete;
    RegistrySandbox& operator=(const RegistrySandbox&) = delete;

    const std::string& Folder() const { return folder_.Path(); }
    const std::string& Path() const { return path_; }
    std::string FileText() const { return zetest::FileText(path_); }
    void WriteFileText(const std::string& text) const { folder_.Put("registry.reg", text); }

private:
    TempDir folder_;
    std::string path_;
    std::string old_;
    bool hadOld_ = false;
};

// Closes the key when the test is done with it.
class Key {
public:
    Key() = default;
    ~Key() {
        if (key_ != nullptr) RegCloseKey(key_);
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    HKEY* out() { return &key_; }
    HKEY get() const { return key_; }

private:
    HKEY key_ = nullptr;
};

inline LONG CreateKey(HKEY root, const std::string& path, Key& key, DWORD* disposition = nullptr) {
    return RegCreateKeyExA(root, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.out(), disposition);
}

inline LONG SetString(HKEY key, const char* name, const std::string& text) {
    return RegSetValueExA(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                          static_cast<DWORD>(text.size() + 1));
}

// Creates the key when needed and sets one value; ERROR_SUCCESS or the first failure.
inline LONG WriteValue(HKEY root, const std::string& path, const char* name, DWORD type, const void* data,
                       DWORD size) {
    Key key;
    const LONG err = CreateKey(root, path, key);
    return err != ERROR_SUCCESS ? err : RegSetValueExA(key.get(), name, 0, type, static_cast<const BYTE*>(data), size);
}
inline LONG WriteNumber(HKEY root, const std::string& path, const std::string& name, DWORD number) {
    return WriteValue(root, path, name.c_str(), REG_DWORD, &number, 4);
}

// The data of a value, empty when key or value is missing; its type in *type.
inline std::vector<BYTE> QueryValue(HKEY root, const std::string& path, const char* name, DWORD* type = nullptr) {
    Key key;
    std::vector<BYTE> data;
    if (RegOpenKeyExA(root, path.c_str(), 0, KEY_READ, key.out()) != ERROR_SUCCESS) return data;
    DWORD size = 0;
    if (RegQueryValueExA(key.get(), name, nullptr, type, nullptr, &size) == ERROR_SUCCESS) {
        data.resize(size);
        RegQueryValueExA(key.get(), name, nullptr, type, data.data(), &size);
    }
    return data;
}
inline DWORD QueryNumber(HKEY root, const std::string& path, const std::string& name) {
    const std::vector<BYTE> data = QueryValue(root, path, name.c_str());
    return data.size() == 4 ? data[0] | data[1] << 8 | data[2] << 16 | static_cast<DWORD>(data[3]) << 24 : 0xFFFFFFFF;
}

// Subkeys and values of a key; zeros when it is missing.
inline void CountEntries(HKEY root, const std::string& path, DWORD* subKeys, DWORD* values) {
    Key key;
    *subKeys = *values = 0;
    if (RegOpenKeyExA(root, path.c_str(), 0, KEY_READ, key.out()) != ERROR_SUCCESS) return;
    RegQueryInfoKeyA(key.get(), nullptr, nullptr, nullptr, subKeys, nullptr, nullptr, values, nullptr, nullptr,
                     nullptr, nullptr);
}

inline bool KeyExists(HKEY root, const std::string& path) {
    Key key;
    return RegOpenKeyExA(root, path.c_str(), 0, KEY_READ, key.out()) == ERROR_SUCCESS;
}

inline std::string GuidText(REFCLSID clsid) {
    OLECHAR text[39];
    StringFromGUID2(clsid, text, 39);
    return std::string(text, text + 38);
}

// The InprocServer32 default value of a class, written with its terminating zero.
inline LONG RegisterServer(REFCLSID clsid, const std::string& path, DWORD type = REG_SZ) {
    return WriteValue(HKEY_CLASSES_ROOT, "CLSID\\" + GuidText(clsid) + "\\InprocServer32", nullptr, type,
                      path.c_str(), static_cast<DWORD>(path.size() + 1));
}

}  // namespace zetest

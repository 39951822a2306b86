// The registry as the mapper and the device enumerator see it: a key that closes itself, the values
// they read and write (UTF-8 strings in the store, OLECHAR text at the interfaces), sub-key
// enumeration, and the names of the keys that describe filters and categories.
#pragma once

#include <string>
#include <vector>

#include "platform/win32.h"

namespace ze_dsrt {

// An open registry key, closed when the object goes.
class RegKey {
public:
    RegKey() = default;
    ~RegKey() { Close(); }
    RegKey(const RegKey&) = delete;
    RegKey& operator=(const RegKey&) = delete;
    RegKey(RegKey&& other) noexcept : key_(other.key_) { other.key_ = nullptr; }

    // Win32 error numbers, as the registry functions return them.
    LONG Open(HKEY root, const std::string& path, REGSAM access = KEY_READ);
    LONG Create(HKEY root, const std::string& path);
    void Close();
    HKEY Get() const { return key_; }

    LONG ReadString(const char* name, std::string* text) const;  // REG_SZ or REG_EXPAND_SZ, UTF-8
    LONG ReadBinary(const char* name, std::vector<BYTE>* data, DWORD* type = nullptr) const;
    LONG WriteString(const char* name, const std::string& text) const;
    LONG WriteBinary(const char* name, const void* data, DWORD size) const;
    LONG WriteDword(const char* name, DWORD value) const;
    // The names of the direct sub-keys, in the store's order.
    std::vector<std::string> SubKeyNames() const;

private:
    HKEY key_ = nullptr;
};

// Text conversions between OLE strings and the UTF-8 of the store.
std::string Utf8FromOle(const OLECHAR* text);
std::basic_string<OLECHAR> OleFromUtf8(const std::string& text);
std::string GuidString(REFGUID guid);  // "{XXXXXXXX-...}"
bool GuidFromString(const std::string& text, GUID* guid);

// Key paths under HKEY_CLASSES_ROOT.
std::string ClassKeyPath(REFCLSID clsid);                                 // CLSID\{clsid}
std::string InstanceFolderPath(REFCLSID category);                        // CLSID\{category}\Instance
std::string InstanceKeyPath(REFCLSID category, const std::string& name);  // ...\Instance\name

// Value names of a filter's or category's instance key.
constexpr const char* kFriendlyNameValue = "FriendlyName";
constexpr const char* kClsidValue = "CLSID";
constexpr const char* kFilterDataValue = "FilterData";
constexpr const char* kMeritValue = "Merit";

}  // namespace ze_dsrt

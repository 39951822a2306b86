// Registry keys and values for the mapper and the device enumerator.
#include "dshow/runtime/registry_access.h"

namespace ze_dsrt {

LONG RegKey::Open(HKEY root, const std::string& path, REGSAM access) {
    Close();
    return RegOpenKeyExA(root, path.c_str(), 0, access, &key_);
}

LONG RegKey::Create(HKEY root, const std::string& path) {
    Close();
    return RegCreateKeyExA(root, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr, &key_,
                           nullptr);
}

void RegKey::Close() {
    if (key_ != nullptr) RegCloseKey(key_);
    key_ = nullptr;
}

LONG RegKey::ReadBinary(const char* name, std::vector<BYTE>* data, DWORD* type) const {
    // Every registry call reads the whole store, so a first guess at the size usually saves the call
    // that would only ask for it.
    DWORD kind = REG_NONE;
    data->resize(512);
    DWORD size = static_cast<DWORD>(data->size());
    LONG err = RegQueryValueExA(key_, name, nullptr, &kind, data->data(), &size);
    if (err == ERROR_MORE_DATA) {
        data->resize(size);
        err = RegQueryValueExA(key_, name, nullptr, &kind, data->data(), &size);
    }
    if (err != ERROR_SUCCESS) {
        data->clear();
        return err;
    }
    data->resize(size);
    if (type != nullptr) *type = kind;
    return ERROR_SUCCESS;
}

LONG RegKey::ReadString(const char* name, std::string* text) const {
    std::vector<BYTE> data;
    DWORD type = REG_NONE;
    const LONG err = ReadBinary(name, &data, &type);
    if (err != ERROR_SUCCESS) return err;
    if (type != REG_SZ && type != REG_EXPAND_SZ) return ERROR_FILE_NOT_FOUND;
    // The stored text may or may not carry its terminating zero.
    size_t length = 0;
    while (length < data.size() && data[length] != 0) ++length;
    text->assign(reinterpret_cast<const char*>(data.data()), length);
    return ERROR_SUCCESS;
}

LONG RegKey::WriteString(const char* name, const std::string& text) const {
    return RegSetValueExA(key_, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                          static_cast<DWORD>(text.size() + 1));
}

LONG RegKey::WriteBinary(const char* name, const void* data, DWORD size) const {
    return RegSetValueExA(key_, name, 0, REG_BINARY, static_cast<const BYTE*>(data), size);
}

LONG RegKey::WriteDword(const char* name, DWORD value) const {
    return RegSetValueExA(key_, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof value);
}

std::vector<std::string> RegKey::SubKeyNames() const {
    std::vector<std::string> names;
    char name[ZE_REG_MAX_KEY_NAME + 1];
    for (DWORD index = 0;; ++index) {
        DWORD chars = sizeof name;
        if (RegEnumKeyExA(key_, index, name, &chars, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
        names.emplace_back(name, chars);
    }
    return names;
}

std::string Utf8FromOle(const OLECHAR* text) {
    if (text == nullptr) return std::string();
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    if (bytes <= 1) return std::string();
    std::string out(static_cast<size_t>(bytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, out.data(), bytes, nullptr, nullptr);
    out.resize(static_cast<size_t>(bytes) - 1);
    return out;
}

std::basic_string<OLECHAR> OleFromUtf8(const std::string& text) {
    const int chars = MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, nullptr, 0);
    if (chars <= 1) return std::basic_string<OLECHAR>();
    std::basic_string<OLECHAR> out(static_cast<size_t>(chars), 0);
    MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, out.data(), chars);
    out.resize(static_cast<size_t>(chars) - 1);
    return out;
}

std::string GuidString(REFGUID guid) {
    OLECHAR wide[39];
    StringFromGUID2(guid, wide, 39);
    return std::string(wide, wide + 38);  // the text is ASCII
}

bool GuidFromString(const std::string& text, GUID* guid) {
    const std::basic_string<OLECHAR> wide = OleFromUtf8(text);
    return SUCCEEDED(CLSIDFromString(wide.c_str(), guid));
}

std::string ClassKeyPath(REFCLSID clsid) { return "CLSID\\" + GuidString(clsid); }

std::string InstanceFolderPath(REFCLSID category) { return ClassKeyPath(category) + "\\Instance"; }

std::string InstanceKeyPath(REFCLSID category, const std::string& name) {
    return InstanceFolderPath(category) + "\\" + name;
}

}  // namespace ze_dsrt

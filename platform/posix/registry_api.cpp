// The advapi32 registry functions over the file-backed store.
#include <algorithm>
#include <cstring>
#include <new>

#include "platform/posix/registry_keys.h"
#include "platform/posix/registry_store.h"
#include "platform/win32_registry.h"

using namespace ze_posix;

namespace {

// Value names: null and "" are the default value; at most 16383 characters, no control characters.
DWORD CheckValueName(LPCSTR valueName, std::string& name) {
    name = valueName != nullptr ? valueName : "";
    if (name.size() > ZE_REG_MAX_VALUE_NAME) return ERROR_INVALID_PARAMETER;
    for (char c : name)
        if (static_cast<unsigned char>(c) < 0x20) return ERROR_INVALID_PARAMETER;
    return ERROR_SUCCESS;
}

// The open key's node in a freshly loaded tree. A key deleted behind an open handle gives ERROR_KEY_DELETED.
template <typename Key>
DWORD OpenNode(Key& root, const OpenRegKey& key, Key*& node) {
    node = FindKey(root, key.path);
    return node != nullptr ? ERROR_SUCCESS : ERROR_KEY_DELETED;
}

// Loads the store and finds the key behind `key` for a read that needs the access `needed`.
DWORD ReadNode(HKEY key, REGSAM needed, std::shared_ptr<const RegKey>& root, const RegKey*& node) {
    OpenRegKey open;
    DWORD err = LookupRegKey(key, open);
    if (err != ERROR_SUCCESS) return err;
    if ((open.access & needed) != needed) return ERROR_ACCESS_DENIED;
    err = ReadRegistry(root);
    if (err != ERROR_SUCCESS) return err;
    return OpenNode(*root, open, node);
}

bool SamePath(const RegPath& a, const RegPath& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (FoldRegName(a[i]) != FoldRegName(b[i])) return false;
    return true;
}

// Copies a name into a caller's character buffer of `*chars` characters, zero included.
DWORD CopyName(const std::string& name, LPSTR buffer, LPDWORD chars) {
    if (*chars <= name.size()) return ERROR_MORE_DATA;
    std::memcpy(buffer, name.c_str(), name.size() + 1);
    *chars = static_cast<DWORD>(name.size());
    return ERROR_SUCCESS;
}

// The ERROR_MORE_DATA rule shared by the query and the enumeration of values: with no buffer only the
// size is reported; a buffer that is too small gets the size needed and ERROR_MORE_DATA.
DWORD CopyData(const RegValue& value, BYTE* data, LPDWORD dataSize) {
    const DWORD size = static_cast<DWORD>(value.data.size());
    if (dataSize == nullptr) return ERROR_SUCCESS;
    if (data != nullptr) {
        if (*dataSize < size) {
            *dataSize = size;
            return ERROR_MORE_DATA;
        }
        if (size) std::memcpy(data, value.data.data(), size);
    }
    *dataSize = size;
    return ERROR_SUCCESS;
}

// The open key behind `key` and the parts of `subKey` below it.
DWORD ResolveSubKey(HKEY key, LPCSTR subKey, OpenRegKey& parent, RegPath& parts) {
    const DWORD err = LookupRegKey(key, parent);
    if (err != ERROR_SUCCESS) return err;
    return SplitSubKey(subKey, parts);
}

LONG DoCreateKeyExA(HKEY key, LPCSTR subKey, DWORD, LPSTR, DWORD, REGSAM desired, LPSECURITY_ATTRIBUTES, PHKEY result,
                    LPDWORD disposition) {
    if (result == nullptr) return ERROR_INVALID_PARAMETER;
    OpenRegKey parent;
    RegPath parts;
    DWORD err = ResolveSubKey(key, subKey, parent, parts);
    if (err != ERROR_SUCCESS) return static_cast<LONG>(err);
    bool createdAny = false;
    err = UpdateRegistry([&](RegKey& root, bool& modified) -> DWORD {
        RegKey* node = nullptr;
        DWORD e = OpenNode(root, parent, node);
        if (e != ERROR_SUCCESS) return e;
        for (const std::string& part : parts) {
            bool created = false;
            if (node->FindChild(part) == nullptr && (parent.access & KEY_CREATE_SUB_KEY) == 0)
                return ERROR_ACCESS_DENIED;
            node = &node->EnsureChild(part, &created);
            createdAny = createdAny || created;
        }
        modified = createdAny;
        return ERROR_SUCCESS;
    });
    if (err != ERROR_SUCCESS) return static_cast<LONG>(err);
    OpenRegKey opened;
    opened.path = parent.path;
    opened.path.insert(opened.path.end(), parts.begin(), parts.end());
    opened.access = desired;
    *result = NewRegKeyHandle(opened);
    if (disposition != nullptr) *disposition = createdAny ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    return ERROR_SUCCESS;
}

LONG DoOpenKeyExA(HKEY key, LPCSTR subKey, DWORD, REGSAM desired, PHKEY result) {
    if (result == nullptr) return ERROR_INVALID_PARAMETER;
    OpenRegKey parent;
    RegPath parts;
    DWORD err = ResolveSubKey(key, subKey, parent, parts);
    if (err != ERROR_SUCCESS) return static_cast<LONG>(err);
    std::shared_ptr<const RegKey> root;
    err = ReadRegistry(root);
    if (err != ERROR_SUCCESS) return static_cast<LONG>(err);
    const RegKey* node = nullptr;
    err = OpenNode(*root, parent, node);
    if (err != ERROR_SUCCESS) return static_cast<LONG>(err);
    OpenRegKey opened;
    opened.path = parent.path;
    opened.path.insert(opened.path.end(), parts.begin(), parts.end());
    opened.access = desired;
    if (FindKey(*root, opened.path) == nullptr) return ERROR_FILE_NOT_FOUND;
    *result = NewRegKeyHandle(opened);
    return ERROR_SUCCESS;
}

// The open key behind `key`, which must allow value changes, and the checked value name.
DWORD OpenForValueChange(HKEY key, LPCSTR valueName, OpenRegKey& open, std::string& name) {
    const DWORD err = LookupRegKey(key, open);
    if (err != ERROR_SUCCESS) return err;
    if ((open.access & KEY_SET_VALUE) == 0) return ERROR_ACCESS_DENIED;
    return CheckValueName(valueName, name);
}

LONG DoSetValueExA(HKEY key, LPCSTR valueName, DWORD, DWORD type, const BYTE* data, DWORD dataSize) {
    OpenRegKey open;
    std::string name;
    DWORD err = OpenForValueChange(key, valueName, open, name);
    if (err != ERROR_SUCCESS) return static_cast<LONG>(err);
    if (data == nullptr && dataSize != 0) return ERROR_NOACCESS;
    // Exactly the bytes given are stored: a string passed without its zero stays without it.
    std::vector<BYTE> bytes(data, data + (data != nullptr ? dataSize : 0));
    err = UpdateRegistry([&](RegKey& root, bool& modified) -> DWORD {
        RegKey* node = nullptr;
        DWORD e = OpenNode(root, open, node);
        if (e != ERROR_SUCCESS) return e;
        node->SetValue(name, type, std::move(bytes));
        modified = true;
        return ERROR_SUCCESS;
    });
    return static_cast<LONG>(err);
}

LONG DoQueryValueExA(HKEY key, LPCSTR valueName, LPDWORD reserved, LPDWORD type, BYTE* data, LPDWORD dataSize) {
    if (reserved != nullptr || (data != nullptr && dataSize == nullptr)) return ERROR_INVALID_PARAMETER;
    std::string name;
    DWORD err = CheckValueName(valueName, name);
    if (err != ERROR_SUCCESS) return static_cast<LONG>(err);
    std::shared_ptr<const RegKey> root;
    const RegKey* node = nullptr;
    err = ReadNode(key, KEY_QUERY_VALUE, root, node);
    if (err != ERROR_SUCCESS) return static_cast<LONG>(err);
    const RegValue* value = node->FindValue(name);
    if (value == nullptr) return ERROR_FILE_NOT_FOUND;
    if (type != nullptr) *type = value->type;
    return static_cast<LONG>(CopyData(*value, data, dataSize));
}

LONG DoEnumKeyExA(HKEY key, DWORD index, LPSTR name, LPDWORD nameChars, LPDWORD reserved, LPSTR keyClass,
                  LPDWORD classChars, FILETIME* lastWrite) {
    if (name == nullptr || nameChars == nullptr || reserved != nullptr) return ERROR_INVALID_PARAMETER;
    std::shared_ptr<const RegKey> root;
    const RegKey* node = nullptr;
    DWORD err = ReadNode(key, KEY_ENUMERATE_SUB_KEYS, root, node);
    if (err != ERROR_SUCCESS) return static_cast<LONG>(err);
    if (index >= node->subkeys.size()) return ERROR_NO_MORE_ITEMS;
    auto it = node->subkeys.begin();
    std::advance(it, index);
    err = CopyName(it->second->name, name, nameChars);
    if (err != ERROR_SUCCESS) return static_cast<LONG>(err);
    // Keys carry no class and no write time in this store.
    if (keyClass != nullptr && classChars != nullptr && *classChars > 0) keyClass[0] = '\0';
    if (classChars != nullptr) *classChars = 0;
    if (lastWrite != nullptr) *lastWrite = FILETIME{0, 0};
    return ERROR_SUCCESS;
}

LONG DoEnumValueA(HKEY key, DWORD index, LPSTR valueName, LPDWORD valueNameChars, LPDWORD reserved, LPDWORD type,
                  BYTE* data, LPDWORD dataSize) {
    if (valueName == nullptr || valueNameChars == nullptr || reserved != nullptr ||
        (data != nullptr && dataSize == nullptr)) {
        return ERROR_INVALID_PARAMETER;
    }
    std::shared_ptr<const RegKey> root;
    const RegKey* node = nullptr;
    DWORD err = ReadNode(key, KEY_QUERY_VALUE, root, node);
    if (err != ERROR_SUCCESS) return static_cast<LONG>(err);
    if (index >= node->values.size()) return ERROR_NO_MORE_ITEMS;
    const RegValue& value = node->values[index];
    err = CopyName(value.name, valueName, valueNameChars);
    if (err != ERROR_SUCCESS) return static_cast<LONG>(err);
    if (type != nullptr) *type = value.type;
    return static_cast<LONG>(CopyData(value, data, dataSize));
}

LONG DoQueryInfoKeyA(HKEY key, LPSTR keyClass, LPDWORD classChars, LPDWORD reserved, LPDWORD subKeys,
                     LPDWORD maxSubKeyChars, LPDWORD maxClassChars, LPDWORD values, LPDWORD maxValueNameChars,
                     LPDWORD maxValueSize, LPDWORD securityDescriptorSize, FILETIME* lastWrite) {
    if (reserved != nullptr) return ERROR_INVALID_PARAMETER;
    std::shared_ptr<const RegKey> root;
    const RegKey* node = nullptr;
    DWORD err = ReadNode(key, KEY_QUERY_VALUE, root, node);
    if (err != ERROR_SUCCESS) return static_cast<LONG>(err);
    size_t longestKey = 0, longestName = 0, largestData = 0;
    for (const auto& child : node->subkeys) longestKey = std::max(longestKey, child.second->name.size());
    for (const RegValue& v : node->values) {
        longestName = std::max(longestName, v.name.size());
        largestData = std::max(largestData, v.data.size());
    }
    if (keyClass != nullptr && classChars != nullptr && *classChars > 0) keyClass[0] = '\0';
    if (classChars != nullptr) *classChars = 0;
    if (subKeys != nullptr) *subKeys = static_cast<DWORD>(node->subkeys.size());
    if (maxSubKeyChars != nullptr) *maxSubKeyChars = static_cast<DWORD>(longestKey);
    if (maxClassChars != nullptr) *maxClassChars = 0;
    if (values != nullptr) *values = static_cast<DWORD>(node->values.size());
    if (maxValueNameChars != nullptr) *maxValueNameChars = static_cast<DWORD>(longestName);
    if (maxValueSize != nullptr) *maxValueSize = static_cast<DWORD>(largestData);
    if (securityDescriptorSize != nullptr) *securityDescriptorSize = 0;
    if (lastWrite != nullptr) *lastWrite = FILETIME{0, 0};
    return ERROR_SUCCESS;
}

LONG DoDeleteKeyA(HKEY key, LPCSTR subKey) {
    if (subKey == nullptr) return ERROR_INVALID_PARAMETER;
    OpenRegKey parent;
    RegPath parts;
    DWORD err = ResolveSubKey(key, subKey, parent, parts);
    if (err != ERROR_SUCCESS) return static_cast<LONG>(err);
    RegPath target = parent.path;
    target.insert(target.end(), parts.begin(), parts.end());
    // The hives and the classes root cannot be deleted.
    if (target.size() <= 1 || SamePath(target, ClassesRootPath())) return ERROR_ACCESS_DENIED;
    err = UpdateRegistry([&](RegKey& root, bool& modified) -> DWORD {
        RegKey* parentNode = nullptr;
        DWORD e = OpenNode(root, parent, parentNode);
        if (e != ERROR_SUCCESS) return e;
        RegPath above(target.begin(), target.end() - 1);
        RegKey* holder = FindKey(root, above);
        RegKey* victim = holder != nullptr ? holder->FindChild(target.back()) : nullptr;
        if (victim == nullptr) return ERROR_FILE_NOT_FOUND;
        if (!victim->subkeys.empty()) return ERROR_ACCESS_DENIED;  // only leaf keys can be deleted
        holder->subkeys.erase(FoldRegName(target.back()));
        modified = true;
        return ERROR_SUCCESS;
    });
    return static_cast<LONG>(err);
}

LONG DoDeleteValueA(HKEY key, LPCSTR valueName) {
    OpenRegKey open;
    std::string name;
    DWORD err = OpenForValueChange(key, valueName, open, name);
    if (err != ERROR_SUCCESS) return static_cast<LONG>(err);
    err = UpdateRegistry([&](RegKey& root, bool& modified) -> DWORD {
        RegKey* node = nullptr;
        DWORD e = OpenNode(root, open, node);
        if (e != ERROR_SUCCESS) return e;
        if (!node->RemoveValue(name)) return ERROR_FILE_NOT_FOUND;
        modified = true;
        return ERROR_SUCCESS;
    });
    return static_cast<LONG>(err);
}

// The store works with the standard containers; their allocation failures end here as the Windows
// error number instead of leaving through a C interface.
template <typename Work>
LONG Guarded(Work work) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    } catch (...) {
        return ERROR_REGISTRY_CORRUPT;
    }
}

}  // namespace

LONG RegCreateKeyExA(HKEY key, LPCSTR subKey, DWORD reserved, LPSTR keyClass, DWORD options, REGSAM desired,
                     LPSECURITY_ATTRIBUTES security, PHKEY result, LPDWORD disposition) {
    return Guarded([&] {
        return DoCreateKeyExA(key, subKey, reserved, keyClass, options, desired, security, result, disposition);
    });
}

LONG RegOpenKeyExA(HKEY key, LPCSTR subKey, DWORD options, REGSAM desired, PHKEY result) {
    return Guarded([&] { return DoOpenKeyExA(key, subKey, options, desired, result); });
}

LONG RegCloseKey(HKEY key) {
    return Guarded([&] { return static_cast<LONG>(CloseRegKeyHandle(key)); });
}

LONG RegSetValueExA(HKEY key, LPCSTR valueName, DWORD reserved, DWORD type, const BYTE* data, DWORD dataSize) {
    return Guarded([&] { return DoSetValueExA(key, valueName, reserved, type, data, dataSize); });
}

LONG RegQueryValueExA(HKEY key, LPCSTR valueName, LPDWORD reserved, LPDWORD type, BYTE* data, LPDWORD dataSize) {
    return Guarded([&] { return DoQueryValueExA(key, valueName, reserved, type, data, dataSize); });
}

LONG RegEnumKeyExA(HKEY key, DWORD index, LPSTR name, LPDWORD nameChars, LPDWORD reserved, LPSTR keyClass,
                   LPDWORD classChars, FILETIME* lastWrite) {
    return Guarded(
        [&] { return DoEnumKeyExA(key, index, name, nameChars, reserved, keyClass, classChars, lastWrite); });
}

LONG RegEnumValueA(HKEY key, DWORD index, LPSTR valueName, LPDWORD valueNameChars, LPDWORD reserved, LPDWORD type,
                   BYTE* data, LPDWORD dataSize) {
    return Guarded([&] { return DoEnumValueA(key, index, valueName, valueNameChars, reserved, type, data, dataSize); });
}

LONG RegQueryInfoKeyA(HKEY key, LPSTR keyClass, LPDWORD classChars, LPDWORD reserved, LPDWORD subKeys,
                      LPDWORD maxSubKeyChars, LPDWORD maxClassChars, LPDWORD values, LPDWORD maxValueNameChars,
                      LPDWORD maxValueSize, LPDWORD securityDescriptorSize, FILETIME* lastWrite) {
    return Guarded([&] {
        return DoQueryInfoKeyA(key, keyClass, classChars, reserved, subKeys, maxSubKeyChars, maxClassChars, values,
                               maxValueNameChars, maxValueSize, securityDescriptorSize, lastWrite);
    });
}

LONG RegDeleteKeyA(HKEY key, LPCSTR subKey) {
    return Guarded([&] { return DoDeleteKeyA(key, subKey); });
}

LONG RegDeleteValueA(HKEY key, LPCSTR valueName) {
    return Guarded([&] { return DoDeleteValueA(key, valueName); });
}

#include "platform/posix/registry_keys.h"

#include <mutex>
#include <unordered_map>

namespace ze_posix {

namespace {

struct KeyTable {
    std::mutex mutex;
    std::unordered_map<uintptr_t, OpenRegKey> open;
    uintptr_t next = 0x100;  // small multiples of 4, as Windows hands out; never a predefined value
};

KeyTable& Keys() {
    // Released when the module holding it unloads, so a host that unloads us loses no memory.
    static KeyTable table;
    return table;
}

bool PredefinedKey(HKEY key, OpenRegKey& out) {
    RegPath path;
    if (key == HKEY_CLASSES_ROOT) {
        path = ClassesRootPath();
    } else if (key == HKEY_LOCAL_MACHINE) {
        path = RegPath{kHiveLocalMachine};
    } else if (key == HKEY_CURRENT_USER) {
        path = RegPath{kHiveCurrentUser};
    } else if (key == HKEY_USERS) {
        path = RegPath{kHiveUsers};
    } else {
        return false;
    }
    out.path = path;
    out.access = KEY_ALL_ACCESS;
    out.predefined = true;
    return true;
}

}  // namespace

DWORD LookupRegKey(HKEY key, OpenRegKey& out) {
    if (PredefinedKey(key, out)) return ERROR_SUCCESS;
    KeyTable& t = Keys();
    std::lock_guard<std::mutex> lock(t.mutex);
    auto it = t.open.find(reinterpret_cast<uintptr_t>(key));
    if (it == t.open.end()) return ERROR_INVALID_HANDLE;
    out = it->second;
    return ERROR_SUCCESS;
}

HKEY NewRegKeyHandle(const OpenRegKey& key) {
    KeyTable& t = Keys();
    std::lock_guard<std::mutex> lock(t.mutex);
    const uintptr_t value = t.next;
    t.next += 4;
    OpenRegKey stored = key;
    stored.predefined = false;
    t.open.emplace(value, std::move(stored));
    return reinterpret_cast<HKEY>(value);
}

DWORD CloseRegKeyHandle(HKEY key) {
    OpenRegKey ignored;
    if (PredefinedKey(key, ignored)) return ERROR_SUCCESS;
    KeyTable& t = Keys();
    std::lock_guard<std::mutex> lock(t.mutex);
    return t.open.erase(reinterpret_cast<uintptr_t>(key)) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

DWORD SplitSubKey(LPCSTR subKey, RegPath& parts) {
    parts.clear();
    if (subKey == nullptr || subKey[0] == '\0') return ERROR_SUCCESS;
    if (subKey[0] == '\\') return ERROR_BAD_PATHNAME;
    std::string current;
    for (const char* p = subKey;; ++p) {
        if (*p == '\\' || *p == '\0') {
            if (current.empty()) {
                if (*p == '\0') break;  // one trailing backslash
                return ERROR_BAD_PATHNAME;
            }
            if (current.size() > ZE_REG_MAX_KEY_NAME) return ERROR_INVALID_PARAMETER;
            parts.push_back(current);
            current.clear();
            if (*p == '\0') break;
            continue;
        }
        if (static_cast<unsigned char>(*p) < 0x20) return ERROR_INVALID_PARAMETER;
        current.push_back(*p);
    }
    return ERROR_SUCCESS;
}

}  // namespace ze_posix

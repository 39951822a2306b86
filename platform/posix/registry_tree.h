// The registry held in memory: a tree of keys, each with its values in the order they were first
// written and its subkeys in the order the registry enumerates them (by upper-cased name).
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/win32_types.h"

namespace ze_posix {

struct RegValue {
    std::string name;  // empty: the key's default value
    DWORD type = 0;
    std::vector<BYTE> data;
};

struct RegKey {
    std::string name;  // as first created
    std::vector<RegValue> values;
    std::map<std::string, std::unique_ptr<RegKey>> subkeys;  // by FoldRegName(name)

    RegValue* FindValue(const std::string& valueName);
    const RegValue* FindValue(const std::string& valueName) const;
    // Replaces the value of that name or appends a new one.
    void SetValue(const std::string& valueName, DWORD type, std::vector<BYTE> data);
    bool RemoveValue(const std::string& valueName);

    RegKey* FindChild(const std::string& childName);
    const RegKey* FindChild(const std::string& childName) const;
    // The child of that name, created when missing; `created` tells which.
    RegKey& EnsureChild(const std::string& childName, bool* created = nullptr);
};

// A deep copy of a key with all its values and subkeys.
RegKey CopyRegKey(const RegKey& key);

// Names compare without regard to ASCII case, as the registry does.
std::string FoldRegName(const std::string& name);

// Top-level names of the tree: one node per hive.
extern const char* const kHiveLocalMachine;  // "HKEY_LOCAL_MACHINE"
extern const char* const kHiveCurrentUser;   // "HKEY_CURRENT_USER"
extern const char* const kHiveUsers;         // "HKEY_USERS"

typedef std::vector<std::string> RegPath;  // components from the tree root; the first is a hive

// Where the classes root lives: HKEY_LOCAL_MACHINE\SOFTWARE\Classes.
RegPath ClassesRootPath();

// Maps a hive name as written in a .reg file (including HKEY_CLASSES_ROOT) to its path in the tree.
// Returns false for names that are not hives.
bool HivePath(const std::string& hiveName, RegPath& path);

// Every store has the hives and the classes root, even when empty.
void EnsureStandardKeys(RegKey& root);

RegKey* FindKey(RegKey& root, const RegPath& path);
const RegKey* FindKey(const RegKey& root, const RegPath& path);

}  // namespace ze_posix

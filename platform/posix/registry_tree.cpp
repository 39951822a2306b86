#include "platform/posix/registry_tree.h"

#include <algorithm>

namespace ze_posix {

const char* const kHiveLocalMachine = "HKEY_LOCAL_MACHINE";
const char* const kHiveCurrentUser = "HKEY_CURRENT_USER";
const char* const kHiveUsers = "HKEY_USERS";

std::string FoldRegName(const std::string& name) {
    std::string folded = name;
    for (char& c : folded)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return folded;
}

RegValue* RegKey::FindValue(const std::string& valueName) {
    const std::string folded = FoldRegName(valueName);
    for (RegValue& v : values)
        if (FoldRegName(v.name) == folded) return &v;
    return nullptr;
}

const RegValue* RegKey::FindValue(const std::string& valueName) const {
    return const_cast<RegKey*>(this)->FindValue(valueName);
}

void RegKey::SetValue(const std::string& valueName, DWORD type, std::vector<BYTE> data) {
    RegValue* existing = FindValue(valueName);
    if (existing == nullptr) {
        values.push_back(RegValue{valueName, type, std::move(data)});
        return;
    }
    existing->type = type;
    existing->data = std::move(data);
}

bool RegKey::RemoveValue(const std::string& valueName) {
    const std::string folded = FoldRegName(valueName);
    auto it =
        std::find_if(values.begin(), values.end(), [&](const RegValue& v) { return FoldRegName(v.name) == folded; });
    if (it == values.end()) return false;
    values.erase(it);
    return true;
}

RegKey* RegKey::FindChild(const std::string& childName) {
    auto it = subkeys.find(FoldRegName(childName));
    return it == subkeys.end() ? nullptr : it->second.get();
}

const RegKey* RegKey::FindChild(const std::string& childName) const {
    return const_cast<RegKey*>(this)->FindChild(childName);
}

RegKey& RegKey::EnsureChild(const std::string& childName, bool* created) {
    std::unique_ptr<RegKey>& slot = subkeys[FoldRegName(childName)];
    if (created) *created = !slot;
    if (!slot) {
        slot = std::make_unique<RegKey>();
        slot->name = childName;
    }
    return *slot;
}

RegPath ClassesRootPath() { return RegPath{kHiveLocalMachine, "SOFTWARE", "Classes"}; }

bool HivePath(const std::string& hiveName, RegPath& path) {
    const std::string folded = FoldRegName(hiveName);
    if (folded == "HKEY_CLASSES_ROOT") {
        path = ClassesRootPath();
        return true;
    }
    for (const char* hive : {kHiveLocalMachine, kHiveCurrentUser, kHiveUsers}) {
        if (folded == hive) {
            path = RegPath{hive};
            return true;
        }
    }
    return false;
}

void EnsureStandardKeys(RegKey& root) {
    root.EnsureChild(kHiveCurrentUser);
    root.EnsureChild(kHiveUsers);
    RegKey* node = &root;
    for (const std::string& part : ClassesRootPath()) node = &node->EnsureChild(part);
}

RegKey* FindKey(RegKey& root, const RegPath& path) {
    RegKey* node = &root;
    for (const std::string& part : path) {
        node = node->FindChild(part);
        if (node == nullptr) return nullptr;
    }
    return node;
}

const RegKey* FindKey(const RegKey& root, const RegPath& path) { return FindKey(const_cast<RegKey&>(root), path); }

RegKey CopyRegKey(const RegKey& key) {
    RegKey copy;
    copy.name = key.name;
    copy.values = key.values;
    for (const auto& child : key.subkeys)
        copy.subkeys.emplace(child.first, std::make_unique<RegKey>(CopyRegKey(*child.second)));
    return copy;
}

}  // namespace ze_posix

// Reading categories and instances, and keeping them while the registry's store stays the same version.
#include "dshow/runtime/registration_cache.h"

#include <cstring>
#include <map>
#include <mutex>

#include "dshow/runtime/registry_access.h"

namespace ze_dsrt {

namespace {

struct GuidLess {
    bool operator()(const GUID& a, const GUID& b) const { return std::memcmp(&a, &b, sizeof(GUID)) < 0; }
};

struct Cache {
    std::mutex mutex;
    std::string version;  // the registry's store version the lists were read from
    std::shared_ptr<const CategoryList> categories;
    std::map<GUID, std::shared_ptr<const InstanceList>, GuidLess> instances;

    // Forgets everything read from an earlier version of the store.
    void Follow(const std::string& current) {
        if (current == version) return;
        version = current;
        categories.reset();
        instances.clear();
    }
};

Cache& TheCache() {
    static Cache cache;
    return cache;
}

InstanceList ReadInstances(REFCLSID category) {
    InstanceList list;
    RegKey folder;
    if (folder.Open(HKEY_CLASSES_ROOT, InstanceFolderPath(category)) != ERROR_SUCCESS) return list;
    for (const std::string& name : folder.SubKeyNames()) {
        RegKey key;
        if (key.Open(folder.Get(), name) != ERROR_SUCCESS) continue;
        InstanceRecord record;
        record.name = name;
        key.ReadString(kFriendlyNameValue, &record.friendlyName);
        key.ReadString(kClsidValue, &record.clsid);
        DWORD type = REG_NONE;
        record.hasFilterData = key.ReadBinary(kFilterDataValue, &record.filterData, &type) == ERROR_SUCCESS;
        list.push_back(std::move(record));
    }
    return list;
}

CategoryList ReadCategories() {
    CategoryList list;
    for (const InstanceRecord& entry : ReadInstances(CLSID_ActiveMovieCategories)) {
        CategoryRecord record{};
        if (!GuidFromString(entry.clsid, &record.clsid) && !GuidFromString(entry.name, &record.clsid)) continue;
        RegKey key;
        std::vector<BYTE> merit;
        DWORD type = REG_NONE;
        if (key.Open(HKEY_CLASSES_ROOT, InstanceKeyPath(CLSID_ActiveMovieCategories, entry.name)) == ERROR_SUCCESS &&
            key.ReadBinary(kMeritValue, &merit, &type) == ERROR_SUCCESS && type == REG_DWORD && merit.size() == 4)
            record.merit = merit[0] | merit[1] << 8 | merit[2] << 16 | static_cast<DWORD>(merit[3]) << 24;
        list.push_back(record);
    }
    return list;
}

}  // namespace

std::shared_ptr<const InstanceList> CachedInstances(REFCLSID category) {
    Cache& cache = TheCache();
    std::lock_guard<std::mutex> lock(cache.mutex);
    cache.Follow(ZeRegistryStoreVersion());
    auto found = cache.instances.find(category);
    if (found != cache.instances.end()) return found->second;
    auto list = std::make_shared<const InstanceList>(ReadInstances(category));
    cache.instances.emplace(category, list);
    return list;
}

std::shared_ptr<const CategoryList> CachedCategories() {
    Cache& cache = TheCache();
    std::lock_guard<std::mutex> lock(cache.mutex);
    cache.Follow(ZeRegistryStoreVersion());
    if (!cache.categories) cache.categories = std::make_shared<const CategoryList>(ReadCategories());
    return cache.categories;
}

}  // namespace ze_dsrt

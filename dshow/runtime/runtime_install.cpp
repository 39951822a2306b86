// Installation of the runtime's classes in the COM runtime, and the system filters: their classes and
// their registration in each registry store this process uses.
#include <algorithm>
#include <cctype>
#include <mutex>
#include <string>
#include <vector>

#include "dshow/runtime/com_object.h"
#include "dshow/runtime/filter_data.h"
#include "dshow/runtime/filter_matching.h"
#include "dshow/runtime/registration_cache.h"
#include "dshow/runtime/registry_access.h"
#include "dshow/runtime/runtime_classes.h"
#include "dshow/runtime/ze_dshow_runtime.h"

namespace ze_dsrt {

namespace {

struct RuntimeClass {
    const CLSID* clsid;
    StaticClassFactory factory;
};

RuntimeClass g_classes[] = {
    {&CLSID_FilterGraph, StaticClassFactory(CreateFilterGraph)},
    {&CLSID_FilterMapper2, StaticClassFactory(CreateFilterMapper)},
    {&CLSID_SystemDeviceEnum, StaticClassFactory(CreateDeviceEnumerator)},
    {&CLSID_SystemClock, StaticClassFactory(CreateSystemClock)},
};

HRESULT STDAPICALLTYPE RuntimeClassObject(REFCLSID clsid, REFIID iid, LPVOID* object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    for (RuntimeClass& c : g_classes)
        if (IsEqualCLSID(*c.clsid, clsid)) return c.factory.QueryInterface(iid, object);
    return CLASS_E_CLASSNOTAVAILABLE;
}

// The category the system filters are listed in, as a Windows installation has it.
constexpr DWORD kLegacyCategoryMerit = MERIT_NORMAL;
constexpr const char* kLegacyCategoryName = "DirectShow Filters";

// The system filters added so far, and the registry store last brought up to date with them.
struct SystemFilters {
    std::mutex mutex;
    std::vector<ZeSystemFilter> rows;
    bool checked = false;
    std::string checkedStore;
};

SystemFilters& Filters() {
    static SystemFilters filters;
    return filters;
}

REGFILTER2 Description(const ZeSystemFilter& row) {
    REGFILTER2 description{};
    description.dwVersion = 2;
    description.dwMerit = row.merit;
    description.cPins2 = row.pinCount;
    description.rgPins2 = row.pins;
    return description;
}

bool SameName(const std::string& a, const std::string& b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
           });
}

const InstanceRecord* FindInstance(const InstanceList& instances, const std::string& name) {
    for (const InstanceRecord& instance : instances)
        if (SameName(instance.name, name)) return &instance;
    return nullptr;
}

// Does the store hold the row's instance exactly as RegisterFilter writes it? (The class key's name
// is written together with the instance, so an instance found complete stands for both.)
bool Registered(const ZeSystemFilter& row, const InstanceList& legacy) {
    FilterRecord record;
    if (FAILED(RecordFromRegFilter(Description(row), &record))) return false;
    const std::string clsid = GuidString(*row.clsid);
    const InstanceRecord* instance = FindInstance(legacy, clsid);
    return instance != nullptr && instance->friendlyName == row.friendlyName && SameName(instance->clsid, clsid) &&
           instance->hasFilterData && instance->filterData == WriteFilterData(record);
}

bool CategoryListed() {
    const std::string name = GuidString(CLSID_LegacyAmFilterCategory);
    const InstanceRecord* entry = FindInstance(*CachedInstances(CLSID_ActiveMovieCategories), name);
    if (entry == nullptr || entry->friendlyName != kLegacyCategoryName || !SameName(entry->clsid, name)) return false;
    for (const CategoryRecord& category : *CachedCategories())
        if (category.clsid == CLSID_LegacyAmFilterCategory) return category.merit == kLegacyCategoryMerit;
    return false;
}

// Writes what is missing or different through the mapper, as an installation would. A store that
// cannot be written stays as it is; the mapper then finds what it holds.
void RegisterAll(const std::vector<ZeSystemFilter>& rows) {
    ComPtr<IFilterMapper2> mapper;
    if (FAILED(CreateFilterMapper(nullptr, IID_IFilterMapper2, mapper.OutVoid()))) return;
    if (!CategoryListed())
        mapper->CreateCategory(CLSID_LegacyAmFilterCategory, kLegacyCategoryMerit,
                               OleFromUtf8(kLegacyCategoryName).c_str());
    const std::shared_ptr<const InstanceList> legacy = CachedInstances(CLSID_LegacyAmFilterCategory);
    for (const ZeSystemFilter& row : rows) {
        if (Registered(row, *legacy)) continue;
        const REGFILTER2 description = Description(row);
        mapper->RegisterFilter(*row.clsid, OleFromUtf8(row.friendlyName).c_str(), nullptr,
                               &CLSID_LegacyAmFilterCategory, nullptr, &description);
    }
}

}  // namespace

void EnsureSystemFiltersRegistered() {
    SystemFilters& filters = Filters();
    std::lock_guard<std::mutex> lock(filters.mutex);
    const std::string store = ZeRegistryStorePath();
    if (filters.checked && filters.checkedStore == store) return;
    RegisterAll(filters.rows);
    filters.checked = true;
    filters.checkedStore = store;
}

}  // namespace ze_dsrt

void ZeDShowRuntimeInstall() {
    static std::mutex mutex;
    std::lock_guard<std::mutex> lock(mutex);
    for (const ze_dsrt::RuntimeClass& c : ze_dsrt::g_classes) ZeRegisterBuiltinClass(*c.clsid, ze_dsrt::RuntimeClassObject);
}

void ZeAddSystemFilters(const ZeSystemFilter* rows, size_t count) {
    using namespace ze_dsrt;
    ZeDShowRuntimeInstall();
    SystemFilters& filters = Filters();
    {
        std::lock_guard<std::mutex> lock(filters.mutex);
        try {
            for (size_t i = 0; rows != nullptr && i < count; ++i) {
                const ZeSystemFilter& row = rows[i];
                if (row.clsid == nullptr || row.friendlyName == nullptr || row.getClassObject == nullptr) continue;
                ZeRegisterBuiltinClass(*row.clsid, row.getClassObject);
                bool replaced = false;
                for (ZeSystemFilter& known : filters.rows)
                    if (IsEqualCLSID(*known.clsid, *row.clsid)) replaced = true, known = row;
                if (!replaced) filters.rows.push_back(row);
            }
        } catch (const std::bad_alloc&) {
            // The classes registered so far stay; the registry check below covers the rows kept.
        }
        filters.checked = false;
    }
    EnsureSystemFiltersRegistered();
}

// CLSID_FilterMapper2: filter registration in the registry and the search for matching filters.
//
// Registry layout under HKEY_CLASSES_ROOT:
//   CLSID\{category}\Instance\{instance}   FriendlyName (REG_SZ), CLSID (REG_SZ), FilterData (REG_BINARY)
//   CLSID\{ActiveMovieCategories}\Instance\{category}   FriendlyName, CLSID, Merit (REG_DWORD)
//   CLSID\{clsid}                          default value: the friendly name (filters of the legacy
//                                          category, the way a filter DLL's own registration leaves it)
// The instance name defaults to the filter's CLSID text, the category to CLSID_LegacyAmFilterCategory.
#include <algorithm>
#include <string>
#include <vector>

#include "dshow/runtime/com_object.h"
#include "dshow/runtime/device_moniker.h"
#include "dshow/runtime/filter_data.h"
#include "dshow/runtime/filter_matching.h"
#include "dshow/runtime/registration_cache.h"
#include "dshow/runtime/registry_access.h"
#include "dshow/runtime/runtime_classes.h"

namespace ze_dsrt {

namespace {

HRESULT FromWin32(LONG err) { return HRESULT_FROM_WIN32(static_cast<DWORD>(err)); }

// A matching filter on its way into the sorted result.
struct Candidate {
    DWORD merit;
    ComPtr<IMoniker> moniker;
};

// The instances of `category` whose FilterData matches, in the store's order.
void CollectMatches(REFCLSID category, const FilterQuery& query, std::vector<Candidate>* found) {
    for (const InstanceRecord& instance : *CachedInstances(category)) {
        FilterRecord record;
        if (!instance.hasFilterData ||
            !ReadFilterData(instance.filterData.data(), instance.filterData.size(), &record) ||
            !FilterMatches(record, query))
            continue;
        found->push_back(Candidate{record.merit, NewDeviceMoniker(category, instance.name)});
    }
}

class FilterMapper final : public ComObject<FilterMapper, IFilterMapper2> {
public:
    void* FindInterface(REFIID iid) {
        return IsEqualIID(iid, IID_IFilterMapper2) ? static_cast<IFilterMapper2*>(this) : nullptr;
    }

    HRESULT STDMETHODCALLTYPE CreateCategory(REFCLSID clsidCategory, DWORD dwCategoryMerit,
                                             LPCWSTR Description) override {
        if (Description == nullptr) return E_POINTER;
        return Guarded([&]() -> HRESULT {
            RegKey key;
            LONG err = key.Create(HKEY_CLASSES_ROOT,
                                  InstanceKeyPath(CLSID_ActiveMovieCategories, GuidString(clsidCategory)));
            if (err == ERROR_SUCCESS) err = key.WriteString(kFriendlyNameValue, Utf8FromOle(Description));
            if (err == ERROR_SUCCESS) err = key.WriteString(kClsidValue, GuidString(clsidCategory));
            if (err == ERROR_SUCCESS) err = key.WriteDword(kMeritValue, dwCategoryMerit);
            return FromWin32(err);
        });
    }

    HRESULT STDMETHODCALLTYPE UnregisterFilter(const CLSID* pclsidCategory, LPCOLESTR szInstance,
                                               REFCLSID Filter) override {
        return Guarded([&]() -> HRESULT {
            const std::string path = InstanceKeyPath(Category(pclsidCategory), InstanceName(szInstance, Filter));
            return FromWin32(RegDeleteKeyA(HKEY_CLASSES_ROOT, path.c_str()));
        });
    }

    HRESULT STDMETHODCALLTYPE RegisterFilter(REFCLSID clsidFilter, LPCWSTR Name, IMoniker** ppMoniker,
                                             const CLSID* pclsidCategory, LPCOLESTR szInstance,
                                             const REGFILTER2* prf2) override {
        if (Name == nullptr || prf2 == nullptr) return E_POINTER;
        // Registering at a place named by a moniker the caller brings is not offered.
        if (ppMoniker != nullptr && *ppMoniker != nullptr) return E_NOTIMPL;
        return Guarded([&]() -> HRESULT {
            FilterRecord record;
            HRESULT hr = RecordFromRegFilter(*prf2, &record);
            if (FAILED(hr)) return hr;
            const std::vector<BYTE> data = WriteFilterData(record);
            const CLSID category = Category(pclsidCategory);
            const std::string instance = InstanceName(szInstance, clsidFilter);
            const std::string name = Utf8FromOle(Name);

            RegKey key;
            LONG err = key.Create(HKEY_CLASSES_ROOT, InstanceKeyPath(category, instance));
            if (err == ERROR_SUCCESS) err = key.WriteString(kFriendlyNameValue, name);
            if (err == ERROR_SUCCESS) err = key.WriteString(kClsidValue, GuidString(clsidFilter));
            if (err == ERROR_SUCCESS) err = key.WriteBinary(kFilterDataValue, data.data(), static_cast<DWORD>(data.size()));
            if (err == ERROR_SUCCESS && category == CLSID_LegacyAmFilterCategory) {
                RegKey own;
                err = own.Create(HKEY_CLASSES_ROOT, ClassKeyPath(clsidFilter));
                if (err == ERROR_SUCCESS) err = own.WriteString(nullptr, name);
            }
            if (err != ERROR_SUCCESS) return FromWin32(err);
            if (ppMoniker != nullptr) *ppMoniker = NewDeviceMoniker(category, instance).Detach();
            return S_OK;
        });
    }

    HRESULT STDMETHODCALLTYPE EnumMatchingFilters(IEnumMoniker** ppEnum, DWORD, BOOL bExactMatch, DWORD dwMerit,
                                                  BOOL bInputNeeded, DWORD cInputTypes, const GUID* pInputTypes,
                                                  const REGPINMEDIUM* pMedIn, const CLSID* pPinCategoryIn,
                                                  BOOL bRender, BOOL bOutputNeeded, DWORD cOutputTypes,
                                                  const GUID* pOutputTypes, const REGPINMEDIUM* pMedOut,
                                                  const CLSID* pPinCategoryOut) override {
        if (ppEnum == nullptr) return E_POINTER;
        *ppEnum = nullptr;
        if ((cInputTypes != 0 && pInputTypes == nullptr) || (cOutputTypes != 0 && pOutputTypes == nullptr))
            return E_POINTER;
        return Guarded([&]() -> HRESULT {
            FilterQuery query;
            query.exactMatch = bExactMatch != FALSE;
            query.merit = dwMerit;
            query.render = bRender != FALSE;
            query.input = PinQuery{bInputNeeded != FALSE, TypePairs(cInputTypes, pInputTypes), pMedIn, pPinCategoryIn};
            query.output =
                PinQuery{bOutputNeeded != FALSE, TypePairs(cOutputTypes, pOutputTypes), pMedOut, pPinCategoryOut};

            EnsureSystemFiltersRegistered();
            std::vector<Candidate> found;
            for (const CLSID& category : CategoriesFrom(dwMerit)) CollectMatches(category, query, &found);
            // Highest merit first; filters of equal merit keep the order of categories and instances.
            std::stable_sort(found.begin(), found.end(),
                             [](const Candidate& a, const Candidate& b) { return a.merit > b.merit; });
            auto list = std::make_shared<MonikerList>();
            for (Candidate& candidate : found) list->push_back(std::move(candidate.moniker));
            *ppEnum = NewMonikerEnumerator(std::move(list)).Detach();
            return S_OK;
        });
    }

private:
    static CLSID Category(const CLSID* category) {
        return category != nullptr ? *category : CLSID_LegacyAmFilterCategory;
    }
    static std::string InstanceName(LPCOLESTR instance, REFCLSID filter) {
        return instance != nullptr ? Utf8FromOle(instance) : GuidString(filter);
    }

    // The categories listed under CLSID_ActiveMovieCategories whose merit reaches `merit` (a category
    // without a Merit value counts as merit 0).
    static std::vector<CLSID> CategoriesFrom(DWORD merit) {
        std::vector<CLSID> categories;
        for (const CategoryRecord& category : *CachedCategories())
            if (category.merit >= merit) categories.push_back(category.clsid);
        return categories;
    }
};

}  // namespace

HRESULT CreateFilterMapper(IUnknown* outer, REFIID iid, void** object) {
    return CreateObject<FilterMapper>(outer, iid, object);
}

}  // namespace ze_dsrt

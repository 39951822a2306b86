// The filter registrations as the mapper, the device enumerator and the system filter check read
// them: the categories listed under CLSID_ActiveMovieCategories and the instances of a category, each
// read once and kept until the registry's store changes, so a query costs no registry calls.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/win32_dshow.h"

namespace ze_dsrt {

struct InstanceRecord {
    std::string name;          // the instance key's name
    std::string friendlyName;  // empty when the value is missing
    std::string clsid;         // the CLSID value's text; empty when missing
    bool hasFilterData = false;
    std::vector<BYTE> filterData;
};
using InstanceList = std::vector<InstanceRecord>;

struct CategoryRecord {
    CLSID clsid;
    DWORD merit;  // 0 when the category has no Merit value
};
using CategoryList = std::vector<CategoryRecord>;

// The instances of `category` in the store's order; empty when it has none.
std::shared_ptr<const InstanceList> CachedInstances(REFCLSID category);
// The categories listed under CLSID_ActiveMovieCategories, in the store's order.
std::shared_ptr<const CategoryList> CachedCategories();

}  // namespace ze_dsrt

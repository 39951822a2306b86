// The rules by which IFilterMapper2::EnumMatchingFilters decides whether a registered filter fits a
// query, and the conversion of a REGFILTER2 description into the record the mapper stores.
#pragma once

#include <vector>

#include "dshow/runtime/filter_data.h"
#include "platform/win32_dshow.h"

namespace ze_dsrt {

// One side (input or output) of a query. `needed` false ignores the side.
struct PinQuery {
    bool needed = false;
    std::vector<TypePair> types;           // none: any pin that registers at least one type
    const REGPINMEDIUM* medium = nullptr;  // null: any medium
    const CLSID* category = nullptr;       // null: any pin category
};

struct FilterQuery {
    bool exactMatch = false;  // GUID_NULL in the registration stops being a wildcard
    DWORD merit = 0;          // the lowest merit accepted
    bool render = false;      // the matching input pin must be flagged as rendered
    PinQuery input;
    PinQuery output;
};

// The (major, minor) pairs of `count` types given as 2 * count GUIDs.
std::vector<TypePair> TypePairs(DWORD count, const GUID* guids);

// Does the filter's registration fit the query? Its merit must reach the query's, and each needed
// side must find a pin of that direction whose types, medium and category fit.
bool FilterMatches(const FilterRecord& filter, const FilterQuery& query);

// The record of a REGFILTER2 of version 1 or 2; version 1 pins get the flags their BOOLs stand for.
// E_INVALIDARG for another version; a null type GUID pointer stands for GUID_NULL.
HRESULT RecordFromRegFilter(const REGFILTER2& description, FilterRecord* record);

}  // namespace ze_dsrt

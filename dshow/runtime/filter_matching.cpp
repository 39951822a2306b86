// Matching registered filters against a query.
#include "dshow/runtime/filter_matching.h"

#include <algorithm>

namespace ze_dsrt {

namespace {

// GUID_NULL asked for matches anything; GUID_NULL registered matches anything unless the query
// wants exact matches.
bool GuidFits(REFGUID asked, REFGUID registered, bool exact) {
    return asked == GUID_NULL || (!exact && registered == GUID_NULL) || asked == registered;
}

bool TypesFit(const PinRecord& pin, const std::vector<TypePair>& asked, bool exact) {
    if (asked.empty()) return !pin.types.empty();
    for (const TypePair& registered : pin.types)
        for (const TypePair& wanted : asked)
            if (GuidFits(wanted.major, registered.major, exact) && GuidFits(wanted.minor, registered.minor, exact))
                return true;
    return false;
}

bool MediumFits(const PinRecord& pin, const REGPINMEDIUM* asked) {
    if (asked == nullptr) return true;
    return std::any_of(pin.mediums.begin(), pin.mediums.end(), [&](const PinMedium& m) {
        return m.clsMedium == asked->clsMedium && m.dw1 == asked->dw1 && m.dw2 == asked->dw2;
    });
}

bool PinFits(const PinRecord& pin, const PinQuery& side, bool output, const FilterQuery& query) {
    if (((pin.flags & REG_PINFLAG_B_OUTPUT) != 0) != output) return false;
    if (!output && query.render && (pin.flags & REG_PINFLAG_B_RENDERER) == 0) return false;
    if (side.category != nullptr && !(pin.hasCategory && pin.category == *side.category)) return false;
    return MediumFits(pin, side.medium) && TypesFit(pin, side.types, query.exactMatch);
}

bool SideFits(const FilterRecord& filter, const PinQuery& side, bool output, const FilterQuery& query) {
    if (!side.needed) return true;
    return std::any_of(filter.pins.begin(), filter.pins.end(),
                       [&](const PinRecord& pin) { return PinFits(pin, side, output, query); });
}

void AddPinTypes(UINT count, const REGPINTYPES* types, PinRecord* pin) {
    for (UINT i = 0; types != nullptr && i < count; ++i) {
        const CLSID* major = types[i].clsMajorType;
        const CLSID* minor = types[i].clsMinorType;
        pin->types.push_back(TypePair{major != nullptr ? *major : GUID_NULL, minor != nullptr ? *minor : GUID_NULL});
    }
}

}  // namespace

std::vector<TypePair> TypePairs(DWORD count, const GUID* guids) {
    std::vector<TypePair> pairs;
    for (DWORD i = 0; guids != nullptr && i < count; ++i) pairs.push_back(TypePair{guids[2 * i], guids[2 * i + 1]});
    return pairs;
}

bool FilterMatches(const FilterRecord& filter, const FilterQuery& query) {
    return filter.merit >= query.merit && SideFits(filter, query.input, false, query) &&
           SideFits(filter, query.output, true, query);
}

HRESULT RecordFromRegFilter(const REGFILTER2& description, FilterRecord* record) {
    FilterRecord result;
    result.merit = description.dwMerit;
    if (description.dwVersion == 1) {
        for (ULONG i = 0; description.rgPins != nullptr && i < description.cPins; ++i) {
            const REGFILTERPINS& in = description.rgPins[i];
            PinRecord pin;
            pin.flags = (in.bRendered ? REG_PINFLAG_B_RENDERER : 0) | (in.bOutput ? REG_PINFLAG_B_OUTPUT : 0) |
                        (in.bZero ? REG_PINFLAG_B_ZERO : 0) | (in.bMany ? REG_PINFLAG_B_MANY : 0);
            AddPinTypes(in.nMediaTypes, in.lpMediaType, &pin);
            result.pins.push_back(std::move(pin));
        }
    } else if (description.dwVersion == 2) {
        for (ULONG i = 0; description.rgPins2 != nullptr && i < description.cPins2; ++i) {
            const REGFILTERPINS2& in = description.rgPins2[i];
            PinRecord pin;
            pin.flags = in.dwFlags;
            pin.instances = in.cInstances;
            AddPinTypes(in.nMediaTypes, in.lpMediaType, &pin);
            for (UINT m = 0; in.lpMedium != nullptr && m < in.nMediums; ++m)
                pin.mediums.push_back(PinMedium{in.lpMedium[m].clsMedium, in.lpMedium[m].dw1, in.lpMedium[m].dw2});
            if (in.clsPinCategory != nullptr) {
                pin.hasCategory = true;
                pin.category = *in.clsPinCategory;
            }
            result.pins.push_back(std::move(pin));
        }
    } else {
        return E_INVALIDARG;
    }
    *record = std::move(result);
    return S_OK;
}

}  // namespace ze_dsrt

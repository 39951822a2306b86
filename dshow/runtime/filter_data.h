// A filter's registration as the mapper keeps it: the merit and, per pin, its flags, instance count,
// media types (major, minor), mediums and category; and the "FilterData" bytes it is stored as.
//
// FilterData layout (little-endian DWORDs; offsets count from the first byte of the value):
//   header      version (2), merit, pin count, 0
//   per pin     tag '0'+i 'p' 'i' '3', flags, instances, type count, medium count,
//               category offset (0 when the pin has no category)
//     per type  tag '0'+j 't' 'y' '3', 0, major type offset, minor type offset
//     per medium  medium offset
//   pool        the GUIDs (16 bytes each, every distinct GUID once, in order of first use), then the
//               mediums (GUID, dw1, dw2: 24 bytes each)
#pragma once

#include <string>
#include <vector>

#include "platform/win32.h"

namespace ze_dsrt {

struct TypePair {
    GUID major;
    GUID minor;
};

struct PinMedium {
    GUID clsMedium;
    DWORD dw1;
    DWORD dw2;
};

struct PinRecord {
    DWORD flags = 0;  // REG_PINFLAG_B_* bits
    DWORD instances = 0;
    std::vector<TypePair> types;
    std::vector<PinMedium> mediums;
    bool hasCategory = false;
    GUID category{};
};

struct FilterRecord {
    DWORD merit = 0;
    std::vector<PinRecord> pins;
};

// The FilterData bytes of a record.
std::vector<BYTE> WriteFilterData(const FilterRecord& record);
// Reads FilterData bytes back; false when they are not a well-formed version 2 value (short, a wrong
// tag, an offset outside the value).
bool ReadFilterData(const BYTE* data, size_t size, FilterRecord* record);

}  // namespace ze_dsrt

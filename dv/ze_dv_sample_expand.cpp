#include "dv/ze_dv_sample_expand.h"

namespace ZeDV {
namespace {

// One segment: codes first..last map to (code - origin) * scale. Tried in this order.
struct Segment {
    uint16_t first;
    uint16_t last;
    int32_t origin;
    int32_t scale;
};

constexpr Segment kSegments[] = {
    {0x700, 0x7FF, 0x600, 64},
    {0x600, 0x6FF, 0x500, 32},
    {0x500, 0x5FF, 0x400, 16},
    {0x400, 0x4FF, 0x300, 8},
    {0x300, 0x3FF, 0x200, 4},
    {0x200, 0x2FF, 0x100, 2},
    {0x800, 0x8FF, 0xA00, 64},
    {0x900, 0x9FF, 0xB00, 32},
    {0xA00, 0xAFF, 0xC00, 16},
    {0xB00, 0xBFF, 0xD00, 8},
    {0xC00, 0xCFF, 0xDFF, 4},
    {0xD00, 0xDFF, 0xF00, 2},
    {0xE00, 0xFFF, 0x1000, 1},
};

}  // namespace

int16_t Expand12BitSample(uint16_t code) {
    for (const Segment& s : kSegments) {
        if (code >= s.first && code <= s.last) {
            return static_cast<int16_t>((static_cast<int32_t>(code) - s.origin) * s.scale);
        }
    }
    return static_cast<int16_t>(code);  // 0x000-0x1FF: linear already
}

}  // namespace ZeDV

// Little-endian field decoding for the parser: RIFF data is little-endian whatever the host is.
#pragma once

#include <cstdint>

namespace ZeAvi {

inline uint16_t LoadLE16(const uint8_t* p) { return static_cast<uint16_t>(p[0] | (p[1] << 8)); }

inline uint32_t LoadLE32(const uint8_t* p) {
    return static_cast<uint32_t>(p[0]) | (static_cast<uint32_t>(p[1]) << 8) | (static_cast<uint32_t>(p[2]) << 16) |
           (static_cast<uint32_t>(p[3]) << 24);
}

inline uint64_t LoadLE64(const uint8_t* p) {
    return static_cast<uint64_t>(LoadLE32(p)) | (static_cast<uint64_t>(LoadLE32(p + 4)) << 32);
}

}  // namespace ZeAvi

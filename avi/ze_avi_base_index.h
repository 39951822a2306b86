// CZeAviBaseIndex: the common header of an OpenDML 'indx' super index or 'ix##' standard index
// chunk, as the parser reads it. For a super index entry, `cb` holds the entry's size and
// `qwOffset` the file position of the 'ix##' chunk it points to.
#pragma once

#include <cstdint>

#include "platform/win32.h"

struct ze_avi_baseindex {
    uint32_t fcc = 0;
    uint32_t cb = 0;
    uint16_t wLongsPerEntry = 0;
    uint8_t bIndexSubType = 0;
    uint8_t bIndexType = 0;
    uint32_t nEntriesInUse = 0;
    uint32_t dwChunkId = 0;
    uint32_t dwReserved[3] = {0, 0, 0};
    uint64_t qwOffset = 0;
};

// (type, field, accessor name); dwReserved has accessors by index.
#define ZE_AVI_BASEINDEX_FIELDS(X)               \
    X(uint32_t, fcc, Fcc)                        \
    X(uint32_t, cb, Cb)                          \
    X(uint16_t, wLongsPerEntry, LongsPerEntry)   \
    X(uint8_t, bIndexSubType, IndexSubType)      \
    X(uint8_t, bIndexType, IndexType)            \
    X(uint32_t, nEntriesInUse, EntriesInUse)     \
    X(uint32_t, dwChunkId, ChunkId)              \
    X(uint64_t, qwOffset, Offset)

class CZeAviBaseIndex : public ze_avi_baseindex {
public:
    CZeAviBaseIndex() = default;
    CZeAviBaseIndex(const CZeAviBaseIndex&) = default;
    CZeAviBaseIndex& operator=(const CZeAviBaseIndex&) = default;
    virtual ~CZeAviBaseIndex() = default;

    // Every field 0; returns 0.
    virtual HRESULT Reset();

#define ZE_ACCESSORS(type, field, name)           \
    type Get##name() const { return field; }      \
    void Set##name(type value) { field = value; }
    ZE_AVI_BASEINDEX_FIELDS(ZE_ACCESSORS)
#undef ZE_ACCESSORS

    // Index 0..2; another index reads 0 and is ignored by the setter.
    uint32_t GetReserved(int32_t index) const { return (index >= 0 && index < 3) ? dwReserved[index] : 0; }
    void SetReserved(int32_t index, uint32_t value) {
        if (index >= 0 && index < 3) dwReserved[index] = value;
    }
};

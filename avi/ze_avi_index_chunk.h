// CZeAviIndexChunk: one entry of a stream's flat index, whichever index of the file it came from:
// the chunk's identifier, its flags (0x10 key frame), the offset as the index gives it, the size of
// its data and the absolute file position of its data.
#pragma once

#include <cstdint>

#include "platform/win32.h"

struct ze_avi_indexchunk {
    uint32_t ckid = 0;
    uint32_t dwFlags = 0;
    uint64_t qwOffset = 0;
    uint32_t dwSize = 0;
    uint64_t qwPosition = 0;
};

// (type, field, accessor name)
#define ZE_AVI_INDEXCHUNK_FIELDS(X)   \
    X(uint32_t, ckid, ChunkId)        \
    X(uint32_t, dwFlags, Flags)       \
    X(uint64_t, qwOffset, Offset)     \
    X(uint32_t, dwSize, Size)         \
    X(uint64_t, qwPosition, Position)

class CZeAviIndexChunk : private ze_avi_indexchunk {
public:
    static constexpr uint32_t kKeyFrame = 0x10;  // AVIIF_KEYFRAME

    CZeAviIndexChunk() = default;
    CZeAviIndexChunk(const CZeAviIndexChunk& other) { CopyFrom(other); }
    CZeAviIndexChunk& operator=(const CZeAviIndexChunk& other) {
        CopyFrom(other);
        return *this;
    }
    virtual ~CZeAviIndexChunk() = default;

    // All five fields 0; returns 0.
    virtual HRESULT Reset();

#define ZE_ACCESSORS(type, field, name)           \
    type Get##name() const { return field; }      \
    void Set##name(type value) { field = value; }
    ZE_AVI_INDEXCHUNK_FIELDS(ZE_ACCESSORS)
#undef ZE_ACCESSORS

    bool IsKeyFrame() const { return (dwFlags & kKeyFrame) != 0; }

private:
    void CopyFrom(const CZeAviIndexChunk& other);
};

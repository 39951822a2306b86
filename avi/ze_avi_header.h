// CZeAviHeader: the main AVI header, the 56-byte body of the 'avih' chunk.
#pragma once

#include <cstdint>

#include "avi/ze_avi_form_types.h"

// The 'avih' body in file order; every field is 32 bits on disk and in memory.
struct ze_avi_mainheader {
    uint32_t dwMicroSecPerFrame = 0;
    uint32_t dwMaxBytesPerSec = 0;
    uint32_t dwPaddingGranularity = 0;
    uint32_t dwFlags = 0;
    uint32_t dwTotalFrames = 0;
    uint32_t dwInitialFrames = 0;
    uint32_t dwStreams = 0;
    uint32_t dwSuggestedBufferSize = 0;
    uint32_t dwWidth = 0;
    uint32_t dwHeight = 0;
    uint32_t dwReserved[4] = {0, 0, 0, 0};
};

// The ten scalar fields: (field, accessor name, dump format). dwReserved has its own accessors.
#define ZE_AVI_MAINHEADER_FIELDS(X)                                     \
    X(dwMicroSecPerFrame, MicroSecPerFrame, "dwMicroSecPerFrame: %ld")  \
    X(dwMaxBytesPerSec, MaxBytesPerSec, "dwMaxBytesPerSec: %ld")        \
    X(dwPaddingGranularity, PaddingGranularity, "dwPaddingGranularity: %ld") \
    X(dwFlags, Flags, "dwFlags: %ld")                                   \
    X(dwTotalFrames, TotalFrames, "dwTotalFrames: %ld")                 \
    X(dwInitialFrames, InitialFrames, "dwInitialFrames: %ld")           \
    X(dwStreams, Streams, "dwStreams: %ld")                             \
    X(dwSuggestedBufferSize, SuggestedBufferSize, "dwSuggestedBufferSize: %ld") \
    X(dwWidth, Width, "dwWidth: %ld")                                   \
    X(dwHeight, Height, "dwHeight: %ld")

class CZeAviHeader : public CZeAviFormTypes, public ze_avi_mainheader {
public:
    HRESULT Reset() override;
    std::string Dump() const override;

#define ZE_ACCESSORS(field, name, format)                  \
    uint32_t Get##name() const { return field; }           \
    void Set##name(uint32_t value) { field = value; }
    ZE_AVI_MAINHEADER_FIELDS(ZE_ACCESSORS)
#undef ZE_ACCESSORS

    // Index 0..3; any other index is ignored by the setter and reads as 0.
    uint32_t GetReserved(int32_t index) const;
    void SetReserved(int32_t index, uint32_t value);

    // The 'avih' body with its 14 words in file order (used by the parser, which reads them in turn).
    static constexpr int kWordCount = 14;
    uint32_t* Word(int index);
};

// The two header records: the main AVI header (CZeAviHeader, the 56-byte body of the 'avih'
// chunk) and a stream's header (CZeAviStreamHeader, the body of a 'strh' chunk).
#pragma once

#include <cstdint>
#include <string>

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

class CZeAviHeader : public CZeAviFormTypes, protected ze_avi_mainheader {
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

    // The 'avih' body's 14 words by their place in file order (the ten fields, then the reserved
    // words); another index is ignored.
    static constexpr int kWordCount = 14;
    void SetWord(int index, uint32_t value);
};

// CZeAviStreamHeader: one stream's header, the body of a 'strh' chunk. The length is kept in 64
// bits (32 on disk) and the frame rectangle as four signed 32-bit edges (16-bit on disk).
struct ze_avi_rect {
    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;
    int32_t bottom = 0;
};

struct ze_avi_streamheader {
    uint32_t fccType = 0;
    uint32_t fccHandler = 0;
    uint32_t dwFlags = 0;
    uint16_t wPriority = 0;
    uint16_t wLanguage = 0;
    uint32_t dwInitialFrames = 0;
    uint32_t dwScale = 0;
    uint32_t dwRate = 0;
    uint32_t dwStart = 0;
    uint64_t dwLength = 0;
    uint32_t dwSuggestedBufferSize = 0;
    uint32_t dwQuality = 0;
    uint32_t dwSampleSize = 0;
    ze_avi_rect rcFrame;
};

// The scalar fields in order: (type, field, accessor name, dump format).
#define ZE_AVI_STREAMHEADER_FIELDS(X)                                              \
    X(uint32_t, fccType, FccType, "fccType: %ld")                                  \
    X(uint32_t, fccHandler, FccHandler, "fccHandler: %ld")                         \
    X(uint32_t, dwFlags, Flags, "dwFlags: %ld")                                    \
    X(uint16_t, wPriority, Priority, "wPriority: %ld")                             \
    X(uint16_t, wLanguage, Language, "wLanguage: %ld")                             \
    X(uint32_t, dwInitialFrames, InitialFrames, "dwInitialFrames: %ld")            \
    X(uint32_t, dwScale, Scale, "dwScale: %ld")                                    \
    X(uint32_t, dwRate, Rate, "dwRate: %ld")                                       \
    X(uint32_t, dwStart, Start, "dwStart: %ld")                                    \
    X(uint64_t, dwLength, Length, "dwLength: %ld")                                 \
    X(uint32_t, dwSuggestedBufferSize, SuggestedBufferSize, "dwSuggestedBufferSize: %ld") \
    X(uint32_t, dwQuality, Quality, "dwQuality: %ld")                              \
    X(uint32_t, dwSampleSize, SampleSize, "dwSampleSize: %ld")

class CZeAviStreamHeader : public CZeAviFormTypes, protected ze_avi_streamheader {
public:
    HRESULT Reset() override;
    // The length line shows the low 32 bits; the rectangle is printed left, right, top, bottom.
    std::string Dump() const override;

#define ZE_ACCESSORS(type, field, name, format)     \
    type Get##name() const { return field; }        \
    void Set##name(type value) { field = value; }
    ZE_AVI_STREAMHEADER_FIELDS(ZE_ACCESSORS)
#undef ZE_ACCESSORS

    const ze_avi_rect& GetFrame() const { return rcFrame; }
    void SetFrame(const ze_avi_rect& rect) { rcFrame = rect; }
    void SetFrame(int32_t left, int32_t top, int32_t right, int32_t bottom) {
        rcFrame.left = left;
        rcFrame.top = top;
        rcFrame.right = right;
        rcFrame.bottom = bottom;
    }
};

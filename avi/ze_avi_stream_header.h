// CZeAviStreamHeader: one stream's header, the body of a 'strh' chunk. The length is kept in 64
// bits (32 on disk) and the frame rectangle as four signed 32-bit edges (16-bit on disk).
#pragma once

#include <cstdint>

#include "avi/ze_avi_form_types.h"

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

class CZeAviStreamHeader : public CZeAviFormTypes, public ze_avi_streamheader {
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

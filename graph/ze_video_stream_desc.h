// The 80-byte description of a video stream that the source filter keeps beside its format block: the
// fields of an AVI stream header, with a 64-bit length and a rectangle of four 32-bit values. The
// source filter reads only scale and rate; the rest travels along for whoever asks.
//
// The graph folder does not see the parser's records, so the frame service fills this description
// from the parser's stream header, field by field, before it hands the stream to the source filter.
#pragma once

#include <cstddef>
#include <cstdint>

struct ze_video_stream_desc {
    uint32_t ckid = 0;          // chunk identifier of the stream header
    uint32_t cb = 0;            // chunk size
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
    int32_t rcFrameLeft = 0;
    int32_t rcFrameTop = 0;
    int32_t rcFrameRight = 0;
    int32_t rcFrameBottom = 0;
    uint32_t dwReserved = 0;    // always zero
};

static_assert(sizeof(ze_video_stream_desc) == 80, "the stream description is 80 bytes");
static_assert(offsetof(ze_video_stream_desc, wPriority) == 20, "priority at 20");
static_assert(offsetof(ze_video_stream_desc, dwScale) == 28, "scale at 28");
static_assert(offsetof(ze_video_stream_desc, dwRate) == 32, "rate at 32");
static_assert(offsetof(ze_video_stream_desc, dwLength) == 40, "length at 40");
static_assert(offsetof(ze_video_stream_desc, dwSuggestedBufferSize) == 48, "buffer size at 48");
static_assert(offsetof(ze_video_stream_desc, rcFrameLeft) == 60, "frame rectangle at 60");
static_assert(offsetof(ze_video_stream_desc, dwReserved) == 76, "reserved bytes at 76");

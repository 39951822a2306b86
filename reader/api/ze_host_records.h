// Records that the host and the import module exchange through the host interfaces.
//
// Every record is owned by the host; the module only fills it. The layouts are the host's and are
// fixed for the 32-bit build: the static_asserts below pin every offset there. In a 64-bit build a
// pointer field is 8 bytes and the record is laid out as a C compiler lays out the same struct
// (natural alignment), so offsets behind a pointer move; the asserts for that build say where.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/win32.h"

// Answer of IZEVideoImportPlugIn::GetModuleInfo. 36 bytes in the 32-bit build, 48 in the 64-bit one.
// The two strings are allocated with CoTaskMemAlloc and freed by the host with CoTaskMemFree; a
// string whose allocation failed stays null.
struct ZeModuleInfo {
    uint32_t cbSize;        // size of the record: 36 (sizeof this record)
    CLSID clsid;            // the module's class identifier
    uint32_t version;       // 1
    uint32_t reserved;      // 0
    char* fileType;         // "AVI"
    char* description;      // "AVI Import Module"
};

// Answer of IZEVideoStream::GetStreamInfo: 608 bytes on every build, little-endian.
struct ZeStreamInfo {
    uint32_t cbSize;          // 608
    uint32_t capabilities;    // 0x55F, plus 0x200 when a display aspect ratio is known
    uint32_t streamKinds;     // 8 when the file has audio, else 1
    uint32_t formatFlags;     // 0x01000000 for H.264 video
    uint8_t reserved16[8];
    int32_t displayWidth;     // width / scale divisor
    int32_t displayHeight;    // height / scale divisor
    uint8_t reserved32[8];
    int32_t width;            // biWidth
    int32_t height;           // biHeight
    double frameRate;         // dwRate / dwScale of the video stream header, 0.0 for scale 0
    double aspectRatio;       // display aspect ratio width : height, 0.0 when unknown
    uint32_t frameCount;      // number of video frames
    char text[512];           // empty
    char fileType[4];         // "AVI" and its terminator
    uint16_t reserved584;
    uint16_t wFormatTag;      // audio WAVEFORMATEX fields, 0 without audio
    uint16_t nChannels;
    uint16_t reserved590;
    uint32_t nSamplesPerSec;
    uint32_t nAvgBytesPerSec;
    uint16_t nBlockAlign;
    uint16_t wBitsPerSample;
    uint32_t reserved604;
};

// Answer of IZEBasicAudioReader::GetReaderInfo. Only the fields with a value below are written.
struct ZeReaderInfo {
    uint32_t cbSize;          // the host's; not written
    uint32_t kind;            // 158
    uint32_t version;         // 4
    uint32_t streamFlags;     // dwFlags of the audio stream header
    uint32_t sampleKind;      // 2
    uint32_t reserved20;
    uint64_t length;          // dwLength of the audio stream header
    uint32_t bitRatePerChannel;  // wBitsPerSample * (dwRate / dwScale), scale 0 counting as 1
    uint8_t reserved36[24];
    uint16_t wFormatTag;
    uint16_t nChannels;
    uint32_t nSamplesPerSec;
    uint32_t nAvgBytesPerSec;
    uint16_t nBlockAlign;
    uint16_t wBitsPerSample;
    uint16_t cbExtra;         // cbSize of the WAVEFORMATEX
    uint16_t reserved78;
};

// Short answer of IZERawStream::GetRawSampleProperties (record size 16): how the host should size
// the buffers for raw samples.
struct ZeRawSampleProperties {
    uint32_t buffers;         // 1
    uint32_t bufferSize;      // video: dwScale of the stream header; audio: the raw audio buffer size
    uint32_t alignment;       // video: 1; audio: nBlockAlign
    uint32_t prefix;          // 0
};

// Full answer of GetRawSampleProperties: a DirectShow media type (AM_MEDIA_TYPE layout). 72 bytes
// in the 32-bit build, 88 in the 64-bit one; the host passes sizeof(ZeRawMediaType) as the size.
// The format block it points to belongs to the module and lives as long as the object.
struct ZeRawMediaType {
    GUID majortype;
    GUID subtype;
    BOOL bFixedSizeSamples;
    BOOL bTemporalCompression;
    uint32_t lSampleSize;
    GUID formattype;
    IUnknown* pUnk;
    uint32_t cbFormat;
    uint8_t* pbFormat;
};

// Format block of raw video: the DirectShow VIDEOINFOHEADER layout, 88 bytes.
struct ZeRawVideoInfo {
    RECT rcSource;
    RECT rcTarget;
    uint32_t dwBitRate;
    uint32_t dwBitErrorRate;
    int64_t AvgTimePerFrame;
    BITMAPINFOHEADER bmiHeader;
};

struct IZEHostLog;

// The host's parameters (IZEStatus::SetHostParams). Only the flags and the log pointer are read.
struct ZeHostParams {
    uint32_t flags;           // bit 2 (value 4): hostLog is valid and should receive the module's reports
    uint32_t reserved[12];
    IZEHostLog* hostLog;      // offset 52 (56 in the 64-bit build)
};

constexpr uint32_t ZE_HOSTPARAM_USE_LOG = 0x4;

// Time formats of raw sample requests and sample kinds.
constexpr uint32_t ZE_TIME_SECONDS = 1;
constexpr uint32_t ZE_TIME_MILLISECONDS = 2;
constexpr uint32_t ZE_TIME_100KTH_SECONDS = 3;
constexpr uint32_t ZE_RAW_VIDEO = 0;
constexpr uint32_t ZE_RAW_AUDIO = 1;

namespace ze_records_layout {
constexpr bool k32 = sizeof(void*) == 4;

static_assert(offsetof(ZeModuleInfo, clsid) == 4, "module info layout");
static_assert(offsetof(ZeModuleInfo, version) == 20, "module info layout");
static_assert(offsetof(ZeModuleInfo, reserved) == 24, "module info layout");
static_assert(offsetof(ZeModuleInfo, fileType) == (k32 ? 28 : 32), "module info layout");
static_assert(offsetof(ZeModuleInfo, description) == (k32 ? 32 : 40), "module info layout");
static_assert(sizeof(ZeModuleInfo) == (k32 ? 36 : 48), "module info size");

static_assert(offsetof(ZeStreamInfo, capabilities) == 4, "stream info layout");
static_assert(offsetof(ZeStreamInfo, streamKinds) == 8, "stream info layout");
static_assert(offsetof(ZeStreamInfo, formatFlags) == 12, "stream info layout");
static_assert(offsetof(ZeStreamInfo, displayWidth) == 24, "stream info layout");
static_assert(offsetof(ZeStreamInfo, displayHeight) == 28, "stream info layout");
static_assert(offsetof(ZeStreamInfo, width) == 40, "stream info layout");
static_assert(offsetof(ZeStreamInfo, height) == 44, "stream info layout");
static_assert(offsetof(ZeStreamInfo, frameRate) == 48, "stream info layout");
static_assert(offsetof(ZeStreamInfo, aspectRatio) == 56, "stream info layout");
static_assert(offsetof(ZeStreamInfo, frameCount) == 64, "stream info layout");
static_assert(offsetof(ZeStreamInfo, text) == 68, "stream info layout");
static_assert(offsetof(ZeStreamInfo, fileType) == 580, "stream info layout");
static_assert(offsetof(ZeStreamInfo, wFormatTag) == 586, "stream info layout");
static_assert(offsetof(ZeStreamInfo, nChannels) == 588, "stream info layout");
static_assert(offsetof(ZeStreamInfo, nSamplesPerSec) == 592, "stream info layout");
static_assert(offsetof(ZeStreamInfo, nAvgBytesPerSec) == 596, "stream info layout");
static_assert(offsetof(ZeStreamInfo, nBlockAlign) == 600, "stream info layout");
static_assert(offsetof(ZeStreamInfo, wBitsPerSample) == 602, "stream info layout");
static_assert(sizeof(ZeStreamInfo) == 608, "stream info size");

static_assert(offsetof(ZeReaderInfo, kind) == 4, "reader info layout");
static_assert(offsetof(ZeReaderInfo, version) == 8, "reader info layout");
static_assert(offsetof(ZeReaderInfo, streamFlags) == 12, "reader info layout");
static_assert(offsetof(ZeReaderInfo, sampleKind) == 16, "reader info layout");
static_assert(offsetof(ZeReaderInfo, length) == 24, "reader info layout");
static_assert(offsetof(ZeReaderInfo, bitRatePerChannel) == 32, "reader info layout");
static_assert(offsetof(ZeReaderInfo, wFormatTag) == 60, "reader info layout");
static_assert(offsetof(ZeReaderInfo, nChannels) == 62, "reader info layout");
static_assert(offsetof(ZeReaderInfo, nSamplesPerSec) == 64, "reader info layout");
static_assert(offsetof(ZeReaderInfo, nAvgBytesPerSec) == 68, "reader info layout");
static_assert(offsetof(ZeReaderInfo, nBlockAlign) == 72, "reader info layout");
static_assert(offsetof(ZeReaderInfo, wBitsPerSample) == 74, "reader info layout");
static_assert(offsetof(ZeReaderInfo, cbExtra) == 76, "reader info layout");
static_assert(sizeof(ZeReaderInfo) == 80, "reader info size");

static_assert(sizeof(ZeRawSampleProperties) == 16, "raw sample properties size");

static_assert(offsetof(ZeRawMediaType, bFixedSizeSamples) == 32, "media type layout");
static_assert(offsetof(ZeRawMediaType, lSampleSize) == 40, "media type layout");
static_assert(offsetof(ZeRawMediaType, formattype) == 44, "media type layout");
static_assert(offsetof(ZeRawMediaType, pUnk) == (k32 ? 60 : 64), "media type layout");
static_assert(offsetof(ZeRawMediaType, cbFormat) == (k32 ? 64 : 72), "media type layout");
static_assert(offsetof(ZeRawMediaType, pbFormat) == (k32 ? 68 : 80), "media type layout");
static_assert(sizeof(ZeRawMediaType) == (k32 ? 72 : 88), "media type size");

static_assert(offsetof(ZeRawVideoInfo, dwBitRate) == 32, "video info layout");
static_assert(offsetof(ZeRawVideoInfo, AvgTimePerFrame) == 40, "video info layout");
static_assert(offsetof(ZeRawVideoInfo, bmiHeader) == 48, "video info layout");
static_assert(sizeof(ZeRawVideoInfo) == 88, "video info size");

static_assert(offsetof(ZeHostParams, hostLog) == (k32 ? 52 : 56), "host params layout");
}  // namespace ze_records_layout

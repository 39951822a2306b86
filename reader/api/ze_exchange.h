// The parameter exchange of the import module (IZEClientServerExchange2): identifiers, value types,
// the value descriptor and the records handed out.
//
// The host names what it wants with a parameter identifier, a stream number and an item number
// (a frame, an index entry, a table row), and passes a value descriptor pointing at its buffer:
//
//   Check(id, stream, item, &available, &type, &bytes, &count, &name, nullptr)
//       says whether the value exists for the open file, its type, the buffer size that Get needs,
//       how many items there are (streams, index entries, frames, table rows) and the value's name
//       (a CoTaskMemAlloc string the host frees). Every output is optional.
//   Get(id, stream, item, &descriptor)
//       fills the host's buffer. The descriptor's cbValue must be the size Check gave (for text and
//       byte blocks: at least that size; for index entries: a multiple of the entry record).
//   Set(id, stream, item, type, bytes, value, 0, nullptr)
//       opens a file for inspection or changes a colour format choice.
//
// Camera values of a DV frame are read through the module's camera accessors: the identifier
// ZE_XP_CAMERA_FIRST + row selects the accessor (rows in the order of the list below), item is the
// frame. On success the descriptor's paramId holds the accessor's own parameter identifier (5 for
// Iris, ..., 77 for ShutterSpeedConsumer); several accessors share an identifier (the lens focus
// mode, focus and iris report those of the consumer values; the detail modes share 50), which is
// why the host selects by row and reads the identifier back. A frame without the camera pack gives
// E_ABORT, unreported, with the descriptor zeroed, as the accessors do.
//
// The exchange takes no object lock: a host must not call it while another thread works on the same
// object. Failures are reported with the class "CZEAviReader" and the method names
// "IZEClientServerExchange2::Set", "::Get" and "::Check".
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/win32.h"

// Value descriptor. Words 1, 2, 3 and 5 have the meaning the camera accessors give them; word 0 is
// the host's size of the descriptor, word 4 receives the number of items written.
struct ZeExchangeValue {
    uint32_t cbStruct;    // word 0: sizeof(ZeExchangeValue), set by the host
    uint32_t cbValue;     // word 1: size of the buffer at pValue in bytes, set by the host
    uint32_t valueType;   // word 2: ZE_XT_* of the value written
    uint32_t paramId;     // word 3: identifier of the value written
    uint32_t itemCount;   // word 4: number of items written (index entries), 1 for a single value
    void* pValue;         // word 5: the host's buffer
};
static_assert(offsetof(ZeExchangeValue, paramId) == 12, "descriptor layout");
static_assert(offsetof(ZeExchangeValue, itemCount) == 16, "descriptor layout");
static_assert(offsetof(ZeExchangeValue, pValue) == 20 || (sizeof(void*) == 8 && offsetof(ZeExchangeValue, pValue) == 24),
              "descriptor layout: word 5 at 20 (32-bit), at 24 in the 64-bit build");

// Value types (word 2).
constexpr uint32_t ZE_XT_NONE = 0;
constexpr uint32_t ZE_XT_TEXT = 1;      // zero-terminated narrow text
constexpr uint32_t ZE_XT_DOUBLE = 2;    // IEEE double
constexpr uint32_t ZE_XT_UINT32 = 3;    // 32-bit unsigned value (what the camera accessors return)
constexpr uint32_t ZE_XT_RECORD = 4;    // one of the ZeXp* records below
constexpr uint32_t ZE_XT_GUID = 5;      // a 16-byte GUID
constexpr uint32_t ZE_XT_BYTES = 6;     // a block of bytes as stored in the file

// Parameter identifiers. "stream" and "item" name the arguments of Check/Get/Set that they use.
enum ZeExchangeParam : uint32_t {
    ZE_XP_FILE_PATH = 0x0001,         // text. Set: open and parse this file. Get: the open file's path
    ZE_XP_STREAM_COUNT = 0x0002,      // uint32: streams kept by the parser
    ZE_XP_MAIN_HEADER = 0x0003,       // ZeXpMainHeader ('avih')
    ZE_XP_STREAM_HEADER = 0x0004,     // ZeXpStreamHeader of `stream` ('strh')
    ZE_XP_STREAM_FORMAT = 0x0005,     // bytes: format block of `stream` ('strf': BITMAPINFOHEADER..., WAVEFORMATEX)
    ZE_XP_STREAM_FORMAT_TYPE = 0x0006,  // uint32 of `stream`: 0 none, 1 video, 2 audio, 3 interleaved DV
    ZE_XP_STREAM_NAME = 0x0007,       // text of `stream` ('strn'), may be empty
    ZE_XP_INDEX_COUNT = 0x0008,       // uint32: index entries of `stream`
    ZE_XP_INDEX_ENTRIES = 0x0009,     // ZeXpIndexEntry records of `stream` from entry `item`, as many as fit
    ZE_XP_STREAM_ROLES = 0x000A,      // ZeXpStreamRoles
    ZE_XP_FRAME_COUNT = 0x000B,       // uint32: frames of the first video stream

    ZE_XP_DV_VIDEO_PARAMS = 0x0100,   // ZeXpDVVideoParams, decoded when the file was opened
    ZE_XP_DV_AUDIO_PARAMS = 0x0101,   // ZeXpDVAudioParams (interleaved DV files)
    ZE_XP_DV_RECORDING_TEXT = 0x0102, // text "d.m.yyyy h:m:s" of frame `item`; E_ABORT when it has no date
    ZE_XP_DV_TIMESTAMP = 0x0103,      // ZeXpDVTimestamp of frame `item`; E_ABORT when it has no date

    ZE_XP_COLOR_FORMAT_COUNT = 0x0200,   // uint32: colour formats the module delivers
    ZE_XP_COLOR_FORMAT_NAME = 0x0201,    // text of format `item`: "RGB24", "YUY2", "RGB32"
    ZE_XP_COLOR_FORMAT_SUBTYPE = 0x0202, // GUID of format `item` (DirectShow media subtype)
    ZE_XP_PREFERRED_COLOR_FORMAT = 0x0203,  // GUID, Get and Set: the preferred output subtype
    ZE_XP_YUV_COLOR_FORMAT = 0x0204,     // GUID, Get and Set: the packed YUV subtype

    ZE_XP_CAMERA_FIRST = 0x1000,      // + row: uint32 camera value of DV frame `item`
};

// Rows of the camera values (ZE_XP_CAMERA_FIRST + row). Check on a row gives its name (the accessor's
// name without "Get") and, in `count`, the number of rows; ZE_XP_FRAME_COUNT gives the frames.
//   0 Iris            1 AEMode          2 AGC             3 WBMode          4 WhiteBalance
//   5 FCM             6 Focus           7 VPD             8 VPanningSpeed   9 IS
//  10 HPD            11 HPanningSpeed  12 FocalLength    13 ZEN            14 UnitsOfEZoom
//  15 LensFCM        16 LensFocus      17 LensIris       18 LensZoom       19 LensExtender
//  20 LensIrisCont   21 GainGM         22 GainMasterGain 23 GainRGain      24 GainBGain
//  25 GainNDFilter   26 GainCCFilter   27 PedestalG      28 PedestalR      29 PedestalB
//  30 PedestalQF     31 PedestalBP     32 PedestalRP     33 PedestalGP     34 GammaG
//  35 GammaR         36 GammaB         37 GammaQF        38 GammaBG        39 GammaRG
//  40 GammaGG        41 MasterDetail   42 HorizontalDetail 43 VerticalDetail 44 DetailQF
//  45 DetailVD       46 DetailHD       47 DetailMD       48 FlareG         49 FlareR
//  50 FlareB         51 FlareQF        52 FlareBF        53 FlareRF        54 FlareGF
//  55 KneePoint      56 KneeSlope      57 ShutterSpeedConsumer
constexpr uint32_t ZE_XP_CAMERA_ROWS = 58;

// 'avih' body.
struct ZeXpMainHeader {
    uint32_t dwMicroSecPerFrame;
    uint32_t dwMaxBytesPerSec;
    uint32_t dwPaddingGranularity;
    uint32_t dwFlags;
    uint32_t dwTotalFrames;
    uint32_t dwInitialFrames;
    uint32_t dwStreams;
    uint32_t dwSuggestedBufferSize;
    uint32_t dwWidth;
    uint32_t dwHeight;
    uint32_t dwReserved[4];
};
static_assert(sizeof(ZeXpMainHeader) == 56, "main header record");

// 'strh' as the parser keeps it: dwLength widened to 64 bits, the frame rectangle to 32-bit values.
struct ZeXpStreamHeader {
    uint32_t fccType;
    uint32_t fccHandler;
    uint32_t dwFlags;
    uint16_t wPriority;
    uint16_t wLanguage;
    uint32_t dwInitialFrames;
    uint32_t dwScale;
    uint32_t dwRate;
    uint32_t dwStart;
    uint64_t dwLength;
    uint32_t dwSuggestedBufferSize;
    uint32_t dwQuality;
    uint32_t dwSampleSize;
    int32_t rcFrameLeft;
    int32_t rcFrameTop;
    int32_t rcFrameRight;
    int32_t rcFrameBottom;
    uint32_t reserved;
};
static_assert(offsetof(ZeXpStreamHeader, dwLength) == 32, "stream header record");
static_assert(offsetof(ZeXpStreamHeader, rcFrameLeft) == 52, "stream header record");
static_assert(sizeof(ZeXpStreamHeader) == 72, "stream header record");

// One index entry of a stream.
struct ZeXpIndexEntry {
    uint32_t ckid;        // chunk identifier, e.g. "00dc"
    uint32_t dwFlags;     // 0x10: key frame
    uint64_t qwOffset;    // offset as the index gives it
    uint32_t dwSize;      // bytes of chunk data
    uint32_t reserved;
    uint64_t qwPosition;  // absolute file position of the chunk data
};
static_assert(offsetof(ZeXpIndexEntry, qwOffset) == 8, "index entry record");
static_assert(offsetof(ZeXpIndexEntry, qwPosition) == 24, "index entry record");
static_assert(sizeof(ZeXpIndexEntry) == 32, "index entry record");
constexpr uint32_t ZE_AVIIF_KEYFRAME = 0x10;

// Which stream numbers play which part; -1 when absent.
struct ZeXpStreamRoles {
    int32_t firstVideo;
    int32_t secondVideo;
    int32_t firstAudio;
    uint32_t skippedStreams;  // streams of the file the parser left out (non-PCM audio and the like)
};
static_assert(sizeof(ZeXpStreamRoles) == 16, "stream roles record");

struct ZeXpDVVideoParams {
    uint32_t sixtyFields;         // 1: 525/60 system, 0: 625/50
    uint32_t displayCode;         // 0, 1, 2
    uint32_t interlaceCode;       // 0 progressive, 1 interlaced, 2 interlaced with field order bit set
    uint32_t compressionCode;     // 0, 1, 2 (two or more)
    uint32_t recordingStartCode;  // 1 at a recording start
    uint32_t reserved;
    double aspectRatio;           // 4/3, 14/9, 16/9; 0.0 when unknown
    char recordingDateTime[128];  // "d.m.yyyy h:m:s" of the frame read at open, empty without date
};
static_assert(offsetof(ZeXpDVVideoParams, aspectRatio) == 24, "DV video record");
static_assert(sizeof(ZeXpDVVideoParams) == 160, "DV video record");

struct ZeXpDVAudioParams {
    uint32_t sampleRate;     // 48000, 44100, 32000
    uint32_t bitsPerSample;  // 16 or 20
    uint32_t audioModeCode;  // 0 not decoded, 1 or 2
    uint8_t firstChannel;
    uint8_t secondChannel;
    uint16_t reserved;
};
static_assert(sizeof(ZeXpDVAudioParams) == 16, "DV audio record");

// Recording time stamp of a DV frame, in the order the decoder gives it.
struct ZeXpDVTimestamp {
    uint32_t seconds;
    uint32_t minutes;
    uint32_t hours;
    uint32_t dayOfMonth;
    uint32_t month;          // 0 = January
    uint32_t yearsSince1900;
};
static_assert(sizeof(ZeXpDVTimestamp) == 24, "DV time stamp record");

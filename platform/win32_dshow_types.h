// DirectShow records, constants, status codes and media-type identifiers (strmif.h, amvideo.h,
// dvdmedia.h, uuids.h, vfwmsgs.h, evcode.h subset) for non-Windows builds.
//
// Records have the Windows layout: the 32-bit build matches Windows byte for byte; in a 64-bit build
// pointer fields are 8 bytes and the compiler's natural alignment applies, as with the SDK.
#pragma once

#include "platform/win32_com.h"

typedef WCHAR* LPWSTR;
typedef const WCHAR* LPCWSTR;
typedef double REFTIME;
typedef DWORD_PTR HSEMAPHORE;
typedef DWORD_PTR HEVENT;

// The timeout that never ends (IMediaFilter::GetState, waits); a macro, as in the SDK.
#ifndef INFINITE
#define INFINITE 0xFFFFFFFFu
#endif

// ---- media types ----

typedef struct _AMMediaType {
    GUID majortype;
    GUID subtype;
    BOOL bFixedSizeSamples;
    BOOL bTemporalCompression;
    ULONG lSampleSize;
    GUID formattype;
    IUnknown* pUnk;
    ULONG cbFormat;
    BYTE* pbFormat;
} AM_MEDIA_TYPE;

typedef struct tagVIDEOINFOHEADER {
    RECT rcSource;
    RECT rcTarget;
    DWORD dwBitRate;
    DWORD dwBitErrorRate;
    REFERENCE_TIME AvgTimePerFrame;
    BITMAPINFOHEADER bmiHeader;
} VIDEOINFOHEADER;

typedef struct tagVIDEOINFOHEADER2 {
    RECT rcSource;
    RECT rcTarget;
    DWORD dwBitRate;
    DWORD dwBitErrorRate;
    REFERENCE_TIME AvgTimePerFrame;
    DWORD dwInterlaceFlags;
    DWORD dwCopyProtectFlags;
    DWORD dwPictAspectRatioX;
    DWORD dwPictAspectRatioY;
    union {
        DWORD dwControlFlags;
        DWORD dwReserved1;
    };
    DWORD dwReserved2;
    BITMAPINFOHEADER bmiHeader;
} VIDEOINFOHEADER2;

// The format block of FORMAT_DvInfo: the six DV packs of the stream, as stored.
typedef struct tagDVINFO {
    DWORD dwDVAAuxSrc;
    DWORD dwDVAAuxCtl;
    DWORD dwDVAAuxSrc1;
    DWORD dwDVAAuxCtl1;
    DWORD dwDVVAuxSrc;
    DWORD dwDVVAuxCtl;
    DWORD dwDVReserved[2];
} DVINFO;

constexpr DWORD BI_BITFIELDS = 3;

// VIDEOINFOHEADER2 interlace and control flags.
constexpr DWORD AMINTERLACE_IsInterlaced = 0x0001;
constexpr DWORD AMINTERLACE_1FieldPerSample = 0x0002;
constexpr DWORD AMINTERLACE_Field1First = 0x0004;
constexpr DWORD AMCONTROL_USED = 0x0001;

// ---- pins, filters, samples ----

constexpr int MAX_PIN_NAME = 128;
constexpr int MAX_FILTER_NAME = 128;

typedef enum _PinDirection { PINDIR_INPUT = 0, PINDIR_OUTPUT = 1 } PIN_DIRECTION;
typedef enum _FilterState { State_Stopped = 0, State_Paused = 1, State_Running = 2 } FILTER_STATE;

struct IBaseFilter;
struct IFilterGraph;

typedef struct _PinInfo {
    IBaseFilter* pFilter;
    PIN_DIRECTION dir;
    WCHAR achName[MAX_PIN_NAME];
} PIN_INFO;

typedef struct _FilterInfo {
    WCHAR achName[MAX_FILTER_NAME];
    IFilterGraph* pGraph;
} FILTER_INFO;

typedef struct _AllocatorProperties {
    LONG cBuffers;
    LONG cbBuffer;
    LONG cbAlign;
    LONG cbPrefix;
} ALLOCATOR_PROPERTIES;

typedef struct tagAM_SAMPLE2_PROPERTIES {
    DWORD cbData;
    DWORD dwTypeSpecificFlags;
    DWORD dwSampleFlags;
    LONG lActual;
    REFERENCE_TIME tStart;
    REFERENCE_TIME tStop;
    DWORD dwStreamId;
    AM_MEDIA_TYPE* pMediaType;
    BYTE* pbBuffer;
    LONG cbBuffer;
} AM_SAMPLE2_PROPERTIES;

// AM_SAMPLE2_PROPERTIES::dwSampleFlags.
constexpr DWORD AM_SAMPLE_SPLICEPOINT = 0x1;
constexpr DWORD AM_SAMPLE_PREROLL = 0x2;
constexpr DWORD AM_SAMPLE_DATADISCONTINUITY = 0x4;
constexpr DWORD AM_SAMPLE_TYPECHANGED = 0x8;
constexpr DWORD AM_SAMPLE_TIMEVALID = 0x10;
constexpr DWORD AM_SAMPLE_TIMEDISCONTINUITY = 0x40;
constexpr DWORD AM_SAMPLE_FLUSH_ON_PAUSE = 0x80;
constexpr DWORD AM_SAMPLE_STOPVALID = 0x100;
constexpr DWORD AM_SAMPLE_ENDOFSTREAM = 0x200;
constexpr DWORD AM_STREAM_MEDIA = 0;
constexpr DWORD AM_STREAM_CONTROL = 1;

// IMemAllocator::GetBuffer flags.
constexpr DWORD AM_GBF_PREVFRAMESKIPPED = 1;
constexpr DWORD AM_GBF_NOTASYNCPOINT = 2;
constexpr DWORD AM_GBF_NOWAIT = 4;
constexpr DWORD AM_GBF_NODDSURFACELOCK = 8;

typedef enum tagQualityMessageType { Famine = 0, Flood = 1 } QualityMessageType;

typedef struct tagQuality {
    QualityMessageType Type;
    LONG Proportion;
    REFERENCE_TIME Late;
    REFERENCE_TIME TimeStamp;
} Quality;

// ---- filter registration ----

typedef struct {
    const CLSID* clsMajorType;
    const CLSID* clsMinorType;
} REGPINTYPES;

typedef struct {
    LPWSTR strName;
    BOOL bRendered;
    BOOL bOutput;
    BOOL bZero;
    BOOL bMany;
    const CLSID* clsConnectsToFilter;
    const WCHAR* strConnectsToPin;
    UINT nMediaTypes;
    const REGPINTYPES* lpMediaType;
} REGFILTERPINS;

typedef struct {
    CLSID clsMedium;
    DWORD dw1;
    DWORD dw2;
} REGPINMEDIUM;

typedef struct {
    DWORD dwFlags;
    UINT cInstances;
    UINT nMediaTypes;
    const REGPINTYPES* lpMediaType;
    UINT nMediums;
    const REGPINMEDIUM* lpMedium;
    const CLSID* clsPinCategory;
} REGFILTERPINS2;

// Version 1 describes its pins with REGFILTERPINS, version 2 with REGFILTERPINS2.
typedef struct {
    DWORD dwVersion;
    DWORD dwMerit;
    union {
        struct {
            ULONG cPins;
            const REGFILTERPINS* rgPins;
        };
        struct {
            ULONG cPins2;
            const REGFILTERPINS2* rgPins2;
        };
    };
} REGFILTER2;

constexpr DWORD REG_PINFLAG_B_ZERO = 0x1;
constexpr DWORD REG_PINFLAG_B_RENDERER = 0x2;
constexpr DWORD REG_PINFLAG_B_MANY = 0x4;
constexpr DWORD REG_PINFLAG_B_OUTPUT = 0x8;

constexpr DWORD MERIT_PREFERRED = 0x800000;
constexpr DWORD MERIT_NORMAL = 0x600000;
constexpr DWORD MERIT_UNLIKELY = 0x400000;
constexpr DWORD MERIT_DO_NOT_USE = 0x200000;
constexpr DWORD MERIT_SW_COMPRESSOR = 0x100000;
constexpr DWORD MERIT_HW_COMPRESSOR = 0x100050;

// ICreateDevEnum::CreateClassEnumerator flags.
constexpr DWORD CDEF_CLASS_DEFAULT = 0x1;
constexpr DWORD CDEF_BYPASS_CLASS_MANAGER = 0x2;
constexpr DWORD CDEF_MERIT_ABOVE_DO_NOT_USE = 0x8;
constexpr DWORD CDEF_DEVMON_CMGR_DEVICE = 0x10;
constexpr DWORD CDEF_DEVMON_DMO = 0x20;
constexpr DWORD CDEF_DEVMON_PNP_DEVICE = 0x40;
constexpr DWORD CDEF_DEVMON_FILTER = 0x80;
constexpr DWORD CDEF_DEVMON_SELECTIVE_MASK = 0xf0;

// IIPDVDec::put_IPDisplay values.
enum _DVRESOLUTION {
    DVRESOLUTION_FULL = 1000,
    DVRESOLUTION_HALF = 1001,
    DVRESOLUTION_QUARTER = 1002,
    DVRESOLUTION_DC = 1003
};
enum _DVDECODERRESOLUTION {
    DVDECODERRESOLUTION_720x480 = 1000,
    DVDECODERRESOLUTION_360x240 = 1001,
    DVDECODERRESOLUTION_180x120 = 1002,
    DVDECODERRESOLUTION_88x60 = 1003
};

// ---- status codes (vfwmsgs.h) ----

constexpr HRESULT VFW_S_NO_MORE_ITEMS = 0x00040103;
constexpr HRESULT VFW_S_DUPLICATE_NAME = 0x0004022D;
constexpr HRESULT VFW_S_STATE_INTERMEDIATE = 0x00040237;
constexpr HRESULT VFW_S_PARTIAL_RENDER = 0x00040242;
constexpr HRESULT VFW_S_SOME_DATA_IGNORED = 0x00040245;
constexpr HRESULT VFW_S_CONNECTIONS_DEFERRED = 0x00040246;
constexpr HRESULT VFW_S_RESOURCE_NOT_NEEDED = 0x00040250;
constexpr HRESULT VFW_S_MEDIA_TYPE_IGNORED = 0x00040254;
constexpr HRESULT VFW_S_VIDEO_NOT_RENDERED = 0x00040257;
constexpr HRESULT VFW_S_AUDIO_NOT_RENDERED = 0x00040258;
constexpr HRESULT VFW_S_ESTIMATED = 0x00040260;
constexpr HRESULT VFW_S_STREAM_OFF = 0x00040267;
constexpr HRESULT VFW_S_CANT_CUE = 0x00040268;
constexpr HRESULT VFW_S_NO_STOP_TIME = 0x00040270;

#define ZE_VFW_E(code) static_cast<HRESULT>(0x80040000u | (code))
constexpr HRESULT VFW_E_INVALIDMEDIATYPE = ZE_VFW_E(0x200);
constexpr HRESULT VFW_E_INVALIDSUBTYPE = ZE_VFW_E(0x201);
constexpr HRESULT VFW_E_NEED_OWNER = ZE_VFW_E(0x202);
constexpr HRESULT VFW_E_ENUM_OUT_OF_SYNC = ZE_VFW_E(0x203);
constexpr HRESULT VFW_E_ALREADY_CONNECTED = ZE_VFW_E(0x204);
constexpr HRESULT VFW_E_FILTER_ACTIVE = ZE_VFW_E(0x205);
constexpr HRESULT VFW_E_NO_TYPES = ZE_VFW_E(0x206);
constexpr HRESULT VFW_E_NO_ACCEPTABLE_TYPES = ZE_VFW_E(0x207);
constexpr HRESULT VFW_E_INVALID_DIRECTION = ZE_VFW_E(0x208);
constexpr HRESULT VFW_E_NOT_CONNECTED = ZE_VFW_E(0x209);
constexpr HRESULT VFW_E_NO_ALLOCATOR = ZE_VFW_E(0x20A);
constexpr HRESULT VFW_E_RUNTIME_ERROR = ZE_VFW_E(0x20B);
constexpr HRESULT VFW_E_BUFFER_NOTSET = ZE_VFW_E(0x20C);
constexpr HRESULT VFW_E_BUFFER_OVERFLOW = ZE_VFW_E(0x20D);
constexpr HRESULT VFW_E_BADALIGN = ZE_VFW_E(0x20E);
constexpr HRESULT VFW_E_ALREADY_COMMITTED = ZE_VFW_E(0x20F);
constexpr HRESULT VFW_E_BUFFERS_OUTSTANDING = ZE_VFW_E(0x210);
constexpr HRESULT VFW_E_NOT_COMMITTED = ZE_VFW_E(0x211);
constexpr HRESULT VFW_E_SIZENOTSET = ZE_VFW_E(0x212);
constexpr HRESULT VFW_E_NO_CLOCK = ZE_VFW_E(0x213);
constexpr HRESULT VFW_E_NO_SINK = ZE_VFW_E(0x214);
constexpr HRESULT VFW_E_NO_INTERFACE = ZE_VFW_E(0x215);
constexpr HRESULT VFW_E_NOT_FOUND = ZE_VFW_E(0x216);
constexpr HRESULT VFW_E_CANNOT_CONNECT = ZE_VFW_E(0x217);
constexpr HRESULT VFW_E_CANNOT_RENDER = ZE_VFW_E(0x218);
constexpr HRESULT VFW_E_CHANGING_FORMAT = ZE_VFW_E(0x219);
constexpr HRESULT VFW_E_STATE_CHANGED = ZE_VFW_E(0x223);
constexpr HRESULT VFW_E_NOT_STOPPED = ZE_VFW_E(0x224);
constexpr HRESULT VFW_E_NOT_PAUSED = ZE_VFW_E(0x225);
constexpr HRESULT VFW_E_NOT_RUNNING = ZE_VFW_E(0x226);
constexpr HRESULT VFW_E_WRONG_STATE = ZE_VFW_E(0x227);
constexpr HRESULT VFW_E_START_TIME_AFTER_END = ZE_VFW_E(0x228);
constexpr HRESULT VFW_E_INVALID_RECT = ZE_VFW_E(0x229);
constexpr HRESULT VFW_E_TYPE_NOT_ACCEPTED = ZE_VFW_E(0x22A);
constexpr HRESULT VFW_E_SAMPLE_REJECTED = ZE_VFW_E(0x22B);
constexpr HRESULT VFW_E_SAMPLE_REJECTED_EOS = ZE_VFW_E(0x22C);
constexpr HRESULT VFW_E_DUPLICATE_NAME = ZE_VFW_E(0x22D);
constexpr HRESULT VFW_E_TIMEOUT = ZE_VFW_E(0x22E);
constexpr HRESULT VFW_E_INVALID_FILE_FORMAT = ZE_VFW_E(0x22F);
constexpr HRESULT VFW_E_ENUM_OUT_OF_RANGE = ZE_VFW_E(0x230);
constexpr HRESULT VFW_E_CIRCULAR_GRAPH = ZE_VFW_E(0x231);
constexpr HRESULT VFW_E_NOT_ALLOWED_TO_SAVE = ZE_VFW_E(0x232);
constexpr HRESULT VFW_E_TIME_ALREADY_PASSED = ZE_VFW_E(0x233);
constexpr HRESULT VFW_E_ALREADY_CANCELLED = ZE_VFW_E(0x234);
constexpr HRESULT VFW_E_CORRUPT_GRAPH_FILE = ZE_VFW_E(0x235);
constexpr HRESULT VFW_E_ADVISE_ALREADY_SET = ZE_VFW_E(0x236);
constexpr HRESULT VFW_E_NO_ADVISE_SET = ZE_VFW_E(0x239);
constexpr HRESULT VFW_E_UNKNOWN_FILE_TYPE = ZE_VFW_E(0x240);
constexpr HRESULT VFW_E_CANNOT_LOAD_SOURCE_FILTER = ZE_VFW_E(0x241);
constexpr HRESULT VFW_E_FILE_TOO_SHORT = ZE_VFW_E(0x243);
constexpr HRESULT VFW_E_INVALID_FILE_VERSION = ZE_VFW_E(0x244);
constexpr HRESULT VFW_E_INVALID_CLSID = ZE_VFW_E(0x247);
constexpr HRESULT VFW_E_INVALID_MEDIA_TYPE = ZE_VFW_E(0x248);
constexpr HRESULT VFW_E_SAMPLE_TIME_NOT_SET = ZE_VFW_E(0x249);
constexpr HRESULT VFW_E_MEDIA_TIME_NOT_SET = ZE_VFW_E(0x251);
constexpr HRESULT VFW_E_NO_TIME_FORMAT_SET = ZE_VFW_E(0x252);
constexpr HRESULT VFW_E_NO_AUDIO_HARDWARE = ZE_VFW_E(0x256);
constexpr HRESULT VFW_E_UNSUPPORTED_AUDIO = ZE_VFW_E(0x25C);
constexpr HRESULT VFW_E_UNSUPPORTED_VIDEO = ZE_VFW_E(0x25D);
constexpr HRESULT VFW_E_NOT_IN_GRAPH = ZE_VFW_E(0x25F);
constexpr HRESULT VFW_E_NO_TIME_FORMAT = ZE_VFW_E(0x261);
constexpr HRESULT VFW_E_READ_ONLY = ZE_VFW_E(0x262);
constexpr HRESULT VFW_E_BUFFER_UNDERFLOW = ZE_VFW_E(0x264);
constexpr HRESULT VFW_E_UNSUPPORTED_STREAM = ZE_VFW_E(0x265);
#undef ZE_VFW_E

// ---- event codes (evcode.h) ----

constexpr LONG EC_SYSTEMBASE = 0x00;
constexpr LONG EC_USER = 0x8000;
constexpr LONG EC_COMPLETE = 0x01;
constexpr LONG EC_USERABORT = 0x02;
constexpr LONG EC_ERRORABORT = 0x03;
constexpr LONG EC_TIME = 0x04;
constexpr LONG EC_REPAINT = 0x05;
constexpr LONG EC_STREAM_ERROR_STOPPED = 0x06;
constexpr LONG EC_STREAM_ERROR_STILLPLAYING = 0x07;
constexpr LONG EC_ERROR_STILLPLAYING = 0x08;
constexpr LONG EC_PALETTE_CHANGED = 0x09;
constexpr LONG EC_VIDEO_SIZE_CHANGED = 0x0A;
constexpr LONG EC_QUALITY_CHANGE = 0x0B;
constexpr LONG EC_SHUTTING_DOWN = 0x0C;
constexpr LONG EC_CLOCK_CHANGED = 0x0D;
constexpr LONG EC_PAUSED = 0x0E;
constexpr LONG EC_OPENING_FILE = 0x10;
constexpr LONG EC_BUFFERING_DATA = 0x11;
constexpr LONG EC_FULLSCREEN_LOST = 0x12;
constexpr LONG EC_ACTIVATE = 0x13;
constexpr LONG EC_NEED_RESTART = 0x14;
constexpr LONG EC_WINDOW_DESTROYED = 0x15;
constexpr LONG EC_DISPLAY_CHANGED = 0x16;
constexpr LONG EC_STARVATION = 0x17;
constexpr LONG EC_NOTIFY_WINDOW = 0x19;
constexpr LONG EC_END_OF_SEGMENT = 0x1C;
constexpr LONG EC_SEGMENT_STARTED = 0x1D;
constexpr LONG EC_LENGTH_CHANGED = 0x1E;
constexpr LONG EC_STEP_COMPLETE = 0x24;
constexpr LONG EC_STATE_CHANGE = 0x32;
constexpr LONG EC_ERRORABORTEX = 0x45;
constexpr LONG EC_GRAPH_CHANGED = 0x50;
constexpr LONG EC_CLOCK_UNSET = 0x51;

// ---- identifiers (published values in platform/posix/dshow_guids.cpp) ----

extern "C" const GUID MEDIATYPE_Video;
extern "C" const GUID MEDIATYPE_Audio;
extern "C" const GUID MEDIATYPE_Interleaved;
extern "C" const GUID MEDIATYPE_Stream;

#define MEDIASUBTYPE_NULL GUID_NULL
extern "C" const GUID MEDIASUBTYPE_RGB8;
extern "C" const GUID MEDIASUBTYPE_RGB565;
extern "C" const GUID MEDIASUBTYPE_RGB555;
extern "C" const GUID MEDIASUBTYPE_RGB24;
extern "C" const GUID MEDIASUBTYPE_RGB32;
extern "C" const GUID MEDIASUBTYPE_ARGB32;
extern "C" const GUID MEDIASUBTYPE_YUY2;
extern "C" const GUID MEDIASUBTYPE_UYVY;
extern "C" const GUID MEDIASUBTYPE_YV12;
extern "C" const GUID MEDIASUBTYPE_Y41P;
extern "C" const GUID MEDIASUBTYPE_dvsd;
extern "C" const GUID MEDIASUBTYPE_dvhd;
extern "C" const GUID MEDIASUBTYPE_dvsl;
extern "C" const GUID MEDIASUBTYPE_MJPG;
extern "C" const GUID MEDIASUBTYPE_PCM;

extern "C" const GUID FORMAT_None;
extern "C" const GUID FORMAT_VideoInfo;
extern "C" const GUID FORMAT_VideoInfo2;
extern "C" const GUID FORMAT_WaveFormatEx;
extern "C" const GUID FORMAT_DvInfo;

extern "C" const CLSID CLSID_FilterGraph;
extern "C" const CLSID CLSID_FilterMapper2;
extern "C" const CLSID CLSID_SystemDeviceEnum;
extern "C" const CLSID CLSID_SystemClock;
extern "C" const CLSID CLSID_DVVideoCodec;
extern "C" const CLSID CLSID_DVSplitter;
extern "C" const CLSID CLSID_MjpegDec;
extern "C" const CLSID CLSID_AVIDec;
extern "C" const CLSID CLSID_LegacyAmFilterCategory;
extern "C" const CLSID CLSID_ActiveMovieCategories;
extern "C" const CLSID CLSID_VideoCompressorCategory;

// Published identifiers of the DirectShow interfaces, media types, formats and system classes.
#include "platform/win32_dshow.h"

// Most DirectShow interfaces share one family of identifiers that differ only in the first field.
#define ZE_QUARTZ_IID(first) {first, 0x0ad4, 0x11ce, {0xb0, 0x3a, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}}
// Media types and subtypes named by a FOURCC.
#define ZE_FOURCC_GUID(first) {first, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xaa, 0x00, 0x38, 0x9b, 0x71}}
// Uncompressed RGB subtypes, the stream type and the system classes of quartz.
#define ZE_QUARTZ_TYPE(first) {first, 0x524f, 0x11ce, {0x9f, 0x53, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}}
// Format blocks.
#define ZE_FORMAT_GUID(first) {first, 0xc356, 0x11ce, {0xbf, 0x01, 0x00, 0xaa, 0x00, 0x55, 0x59, 0x5a}}
// Device categories and the mapper.
#define ZE_DEVENUM_GUID(first, second, third, b1) {first, second, third, {0xbd, b1, 0x00, 0xa0, 0xc9, 0x11, 0xce, 0x86}}

// ---- interfaces ----
extern "C" const IID IID_IPin = ZE_QUARTZ_IID(0x56a86891);
extern "C" const IID IID_IEnumPins = ZE_QUARTZ_IID(0x56a86892);
extern "C" const IID IID_IEnumFilters = ZE_QUARTZ_IID(0x56a86893);
extern "C" const IID IID_IBaseFilter = ZE_QUARTZ_IID(0x56a86895);
extern "C" const IID IID_IReferenceClock = ZE_QUARTZ_IID(0x56a86897);
extern "C" const IID IID_IMediaFilter = ZE_QUARTZ_IID(0x56a86899);
extern "C" const IID IID_IMediaSample = ZE_QUARTZ_IID(0x56a8689a);
extern "C" const IID IID_IMemAllocator = ZE_QUARTZ_IID(0x56a8689c);
extern "C" const IID IID_IMemInputPin = ZE_QUARTZ_IID(0x56a8689d);
extern "C" const IID IID_IFilterGraph = ZE_QUARTZ_IID(0x56a8689f);
extern "C" const IID IID_IMediaEventSink = ZE_QUARTZ_IID(0x56a868a2);
extern "C" const IID IID_IQualityControl = ZE_QUARTZ_IID(0x56a868a5);
extern "C" const IID IID_IGraphBuilder = ZE_QUARTZ_IID(0x56a868a9);
extern "C" const IID IID_IMediaControl = ZE_QUARTZ_IID(0x56a868b1);
extern "C" const IID IID_IMediaEvent = ZE_QUARTZ_IID(0x56a868b6);
extern "C" const IID IID_IMediaEventEx = ZE_QUARTZ_IID(0x56a868c0);
extern "C" const IID IID_IEnumMediaTypes = {0x89c31040, 0x846b, 0x11ce, {0x97, 0xd3, 0x00, 0xaa, 0x00, 0x55, 0x59, 0x5a}};
extern "C" const IID IID_IMediaSample2 = {0x36b73884, 0xc2c8, 0x11cf, {0x8b, 0x46, 0x00, 0x80, 0x5f, 0x6c, 0xef, 0x60}};
extern "C" const IID IID_IFilterGraph2 = {0x36b73882, 0xc2c8, 0x11cf, {0x8b, 0x46, 0x00, 0x80, 0x5f, 0x6c, 0xef, 0x60}};
extern "C" const IID IID_IFilterMapper2 = {0xb79bb0b0, 0x33c1, 0x11d1, {0xab, 0xe1, 0x00, 0xa0, 0xc9, 0x05, 0xf3, 0x75}};
extern "C" const IID IID_ICreateDevEnum = ZE_DEVENUM_GUID(0x29840822, 0x5b84, 0x11d0, 0x3b);
extern "C" const IID IID_IAMGraphBuilderCallback = {0x4995f511, 0x9ddb, 0x4f12, {0xbd, 0x3b, 0xf0, 0x46, 0x11, 0x80, 0x7b, 0x79}};
extern "C" const IID IID_IIPDVDec = {0xb8e8bd60, 0x0bfe, 0x11d0, {0xaf, 0x91, 0x00, 0xaa, 0x00, 0xb6, 0x7a, 0x42}};
extern "C" const IID IID_IDispatch = {0x00020400, 0x0000, 0x0000, {0xc0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

// ---- major types ----
extern "C" const GUID MEDIATYPE_Video = ZE_FOURCC_GUID(0x73646976);        // 'vids'
extern "C" const GUID MEDIATYPE_Audio = ZE_FOURCC_GUID(0x73647561);        // 'auds'
extern "C" const GUID MEDIATYPE_Interleaved = ZE_FOURCC_GUID(0x73766169);  // 'iavs'
extern "C" const GUID MEDIATYPE_Stream = ZE_QUARTZ_TYPE(0xe436eb83);

// ---- subtypes ----
extern "C" const GUID MEDIASUBTYPE_RGB8 = ZE_QUARTZ_TYPE(0xe436eb7a);
extern "C" const GUID MEDIASUBTYPE_RGB565 = ZE_QUARTZ_TYPE(0xe436eb7b);
extern "C" const GUID MEDIASUBTYPE_RGB555 = ZE_QUARTZ_TYPE(0xe436eb7c);
extern "C" const GUID MEDIASUBTYPE_RGB24 = ZE_QUARTZ_TYPE(0xe436eb7d);
extern "C" const GUID MEDIASUBTYPE_RGB32 = ZE_QUARTZ_TYPE(0xe436eb7e);
extern "C" const GUID MEDIASUBTYPE_ARGB32 = {0x773c9ac0, 0x3274, 0x11d0, {0xb7, 0x24, 0x00, 0xaa, 0x00, 0x6c, 0x1a, 0x01}};
extern "C" const GUID MEDIASUBTYPE_YUY2 = ZE_FOURCC_GUID(0x32595559);  // 'YUY2'
extern "C" const GUID MEDIASUBTYPE_UYVY = ZE_FOURCC_GUID(0x59565955);  // 'UYVY'
extern "C" const GUID MEDIASUBTYPE_YV12 = ZE_FOURCC_GUID(0x32315659);  // 'YV12'
extern "C" const GUID MEDIASUBTYPE_Y41P = ZE_FOURCC_GUID(0x50313459);  // 'Y41P'
extern "C" const GUID MEDIASUBTYPE_dvsd = ZE_FOURCC_GUID(0x64737664);  // 'dvsd'
extern "C" const GUID MEDIASUBTYPE_dvhd = ZE_FOURCC_GUID(0x64687664);  // 'dvhd'
extern "C" const GUID MEDIASUBTYPE_dvsl = ZE_FOURCC_GUID(0x6c737664);  // 'dvsl'
extern "C" const GUID MEDIASUBTYPE_MJPG = ZE_FOURCC_GUID(0x47504a4d);  // 'MJPG'
extern "C" const GUID MEDIASUBTYPE_PCM = ZE_FOURCC_GUID(0x00000001);   // WAVE_FORMAT_PCM

// ---- formats ----
extern "C" const GUID FORMAT_None = {0x0f6417d6, 0xc318, 0x11d0, {0xa4, 0x3f, 0x00, 0xa0, 0xc9, 0x22, 0x31, 0x96}};
extern "C" const GUID FORMAT_VideoInfo = ZE_FORMAT_GUID(0x05589f80);
extern "C" const GUID FORMAT_WaveFormatEx = ZE_FORMAT_GUID(0x05589f81);
extern "C" const GUID FORMAT_DvInfo = ZE_FORMAT_GUID(0x05589f84);
extern "C" const GUID FORMAT_VideoInfo2 = {0xf72a76a0, 0xeb0a, 0x11d0, {0xac, 0xe4, 0x00, 0x00, 0xc0, 0xcc, 0x16, 0xba}};

// ---- system classes and categories ----
extern "C" const CLSID CLSID_SystemClock = ZE_QUARTZ_TYPE(0xe436ebb1);
extern "C" const CLSID CLSID_FilterGraph = ZE_QUARTZ_TYPE(0xe436ebb3);
extern "C" const CLSID CLSID_AVIDec = {0xcf49d4e0, 0x1115, 0x11ce, {0xb0, 0x3a, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
extern "C" const CLSID CLSID_DVVideoCodec = {0xb1b77c00, 0xc3e4, 0x11cf, {0xaf, 0x79, 0x00, 0xaa, 0x00, 0xb6, 0x7a, 0x42}};
extern "C" const CLSID CLSID_DVSplitter = {0x4eb31670, 0x9fc6, 0x11cf, {0xaf, 0x6e, 0x00, 0xaa, 0x00, 0xb6, 0x7a, 0x42}};
extern "C" const CLSID CLSID_MjpegDec = {0x301056d0, 0x6dff, 0x11d2, {0x9e, 0xeb, 0x00, 0x60, 0x08, 0x03, 0x9e, 0x37}};
extern "C" const CLSID CLSID_SystemDeviceEnum = ZE_DEVENUM_GUID(0x62be5d10, 0x60eb, 0x11d0, 0x3b);
extern "C" const CLSID CLSID_LegacyAmFilterCategory = ZE_DEVENUM_GUID(0x083863f1, 0x70de, 0x11d0, 0x40);
extern "C" const CLSID CLSID_VideoCompressorCategory = ZE_DEVENUM_GUID(0x33d9a760, 0x90c8, 0x11d0, 0x43);
extern "C" const CLSID CLSID_ActiveMovieCategories = ZE_DEVENUM_GUID(0xda4e3da0, 0xd07d, 0x11d0, 0x50);
extern "C" const CLSID CLSID_FilterMapper2 = ZE_DEVENUM_GUID(0xcda42200, 0xbd88, 0x11d0, 0x4e);

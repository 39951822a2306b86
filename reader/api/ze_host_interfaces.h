// The host interfaces of the AVI import module. A host includes this header, which brings the whole
// contract (records, parameter exchange, status codes), loads the module, gets its class factory and
// talks to the one object through these seven interfaces; the module writes into the host's log.
//
// Slot order is part of the contract: after the three IUnknown slots every method keeps its place.
// Paths are narrow zero-terminated strings. All results are status codes (HRESULT); the module's own
// codes are in reader/api/ze_status_codes.h.
//
// Frame delivery (InitVideoStream, GetVideoFrame, GetSpecialStreamPos, HandleColorFormat) is not
// available in this build of the module: those methods report E_NOTIMPL under their own names.
// CloseVideoStream succeeds, having nothing to close.
#pragma once

#include "platform/win32.h"
#include "reader/api/ze_exchange.h"
#include "reader/api/ze_host_records.h"
#include "reader/api/ze_status_codes.h"

// Interface identifiers.
// {57DE6811-5659-45F0-B785-83997025730E}
inline constexpr IID IID_IZEVideoStream = {0x57de6811, 0x5659, 0x45f0, {0xb7, 0x85, 0x83, 0x99, 0x70, 0x25, 0x73, 0x0e}};
// {88274433-9941-42A5-B824-A79DDD99B235}
inline constexpr IID IID_IZEClientServerExchange2 = {0x88274433, 0x9941, 0x42a5, {0xb8, 0x24, 0xa7, 0x9d, 0xdd, 0x99, 0xb2, 0x35}};
// {3B07686B-8A79-46B5-9873-7AC4FDCD587B}
inline constexpr IID IID_IZEVideoImportPlugIn = {0x3b07686b, 0x8a79, 0x46b5, {0x98, 0x73, 0x7a, 0xc4, 0xfd, 0xcd, 0x58, 0x7b}};
// {683C8BA5-739E-4A7C-9CEB-0928953FB0C5}
inline constexpr IID IID_IZEStatus = {0x683c8ba5, 0x739e, 0x4a7c, {0x9c, 0xeb, 0x09, 0x28, 0x95, 0x3f, 0xb0, 0xc5}};
// {CB2960C0-634D-4BC3-BC64-89773731C41A}
inline constexpr IID IID_IZEBasicAudioReader = {0xcb2960c0, 0x634d, 0x4bc3, {0xbc, 0x64, 0x89, 0x77, 0x37, 0x31, 0xc4, 0x1a}};
// {F1CB78F6-AB91-49B3-8873-7A2A40C6436C}
inline constexpr IID IID_IZERawStream = {0xf1cb78f6, 0xab91, 0x49b3, {0x88, 0x73, 0x7a, 0x2a, 0x40, 0xc6, 0x43, 0x6c}};
// {DD3D2D64-B934-4D5E-A233-51F17ACCAC8F}
inline constexpr IID IID_IZEColorFormatSupport = {0xdd3d2d64, 0xb934, 0x4d5e, {0xa2, 0x33, 0x51, 0xf1, 0x7a, 0xcc, 0xac, 0x8f}};

// Class identifier of the import module.
// {C3A8E5D1-6F2B-4A97-B0E4-19D7C5A3F260}
inline constexpr CLSID CLSID_ZEAviReaderModule = {0xc3a8e5d1, 0x6f2b, 0x4a97, {0xb0, 0xe4, 0x19, 0xd7, 0xc5, 0xa3, 0xf2, 0x60}};

// DirectShow media types and subtypes used in the colour format choice and the raw media types.
namespace ZeMediaGuid {
inline constexpr GUID Video = {0x73646976, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xaa, 0x00, 0x38, 0x9b, 0x71}};
inline constexpr GUID Audio = {0x73647561, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xaa, 0x00, 0x38, 0x9b, 0x71}};
inline constexpr GUID Pcm = {0x00000001, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xaa, 0x00, 0x38, 0x9b, 0x71}};
inline constexpr GUID Dvsd = {0x64737664, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xaa, 0x00, 0x38, 0x9b, 0x71}};
inline constexpr GUID Yuy2 = {0x32595559, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xaa, 0x00, 0x38, 0x9b, 0x71}};
inline constexpr GUID Rgb24 = {0xe436eb7d, 0x524f, 0x11ce, {0x9f, 0x53, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
inline constexpr GUID Rgb32 = {0xe436eb7e, 0x524f, 0x11ce, {0x9f, 0x53, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
inline constexpr GUID FormatVideoInfo = {0x05589f80, 0xc356, 0x11ce, {0xbf, 0x01, 0x00, 0xaa, 0x00, 0x55, 0x59, 0x5a}};
inline constexpr GUID FormatWaveFormatEx = {0x05589f81, 0xc356, 0x11ce, {0xbf, 0x01, 0x00, 0xaa, 0x00, 0x55, 0x59, 0x5a}};
}  // namespace ZeMediaGuid

// Slots 3-11: file check, video stream and stream description.
struct IZEVideoStream : public IUnknown {
    // flags (optional) receives 0, value (optional) 45; the result is the file check's.
    virtual HRESULT STDMETHODCALLTYPE CheckFile(LPCSTR path, DWORD* flags, DWORD* value) = 0;
    // hostSubtype: RGB24, YUY2 or RGB32; decodeFlags: scale bits of DV decoding.
    virtual HRESULT STDMETHODCALLTYPE InitVideoStream(LPCSTR path, const GUID* hostSubtype, DWORD decodeFlags,
                                                      DWORD reserved1, DWORD reserved2, void* reserved3) = 0;
    virtual HRESULT STDMETHODCALLTYPE CloseVideoStream() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetStreamInfo(ZeStreamInfo* info) = 0;
    virtual HRESULT STDMETHODCALLTYPE VideoReserved7(DWORD reserved1, DWORD reserved2, void* reserved3) = 0;
    virtual HRESULT STDMETHODCALLTYPE VideoReserved8() = 0;
    // timeFormat 2 (milliseconds); target receives the picture pointer; flags bit 7 selects the second graph.
    virtual HRESULT STDMETHODCALLTYPE GetVideoFrame(DWORD timeFormat, const LONGLONG* time, void* reserved,
                                                    void** target, void* reserved2, DWORD flags) = 0;
    virtual HRESULT STDMETHODCALLTYPE VideoReserved10(DWORD reserved1, DWORD reserved2, void* reserved3,
                                                      void* reserved4) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetSpecialStreamPos(DWORD kind, LONGLONG* position, DWORD reserved) = 0;
protected:
    ~IZEVideoStream() = default;
};

// Slots 3-6: the parameter exchange (reader/api/ze_exchange.h).
struct IZEClientServerExchange2 : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Set(DWORD paramId, DWORD stream, DWORD item, DWORD valueType, DWORD cbValue,
                                          const void* value, DWORD reserved1, void* reserved2) = 0;
    virtual HRESULT STDMETHODCALLTYPE Get(DWORD paramId, DWORD stream, DWORD item, ZeExchangeValue* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE Check(DWORD paramId, DWORD stream, DWORD item, DWORD* available,
                                            DWORD* valueType, DWORD* cbValue, DWORD* count, char** name,
                                            void* reserved) = 0;
    // Not supported: E_NOTIMPL.
    virtual HRESULT STDMETHODCALLTYPE ExchangeReserved6(DWORD reserved1, DWORD reserved2, DWORD reserved3,
                                                        void* reserved4, void* reserved5, void* reserved6) = 0;
protected:
    ~IZEClientServerExchange2() = default;
};

// Slot 3: who the module is.
struct IZEVideoImportPlugIn : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetModuleInfo(ZeModuleInfo* info) = 0;
protected:
    ~IZEVideoImportPlugIn() = default;
};

// Slots 3-5: state after a failure, and the host's parameters.
struct IZEStatus : public IUnknown {
    // kind 1: value receives the FOURCC of video that could not be decoded (S_OK when
    // there is one); kinds 2-7: the state value. value null: S_OK when kind equals the state value,
    // detail (two words) then 4 and 0 for state 1.
    virtual HRESULT STDMETHODCALLTYPE GetState(DWORD* value, DWORD* detail, DWORD kind) = 0;
    virtual HRESULT STDMETHODCALLTYPE StatusReserved4(DWORD reserved1, DWORD reserved2, void* reserved3,
                                                      void* reserved4) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetHostParams(const ZeHostParams* params) = 0;
protected:
    ~IZEStatus() = default;
};

// Slots 3-10: PCM audio by sample position.
struct IZEBasicAudioReader : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE CheckFile(LPCSTR path) = 0;
    virtual HRESULT STDMETHODCALLTYPE InitAudioReader(LPCSTR path, DWORD reserved1, DWORD reserved2,
                                                      void* reserved3) = 0;
    virtual HRESULT STDMETHODCALLTYPE CloseAudioReader() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetReaderInfo(ZeReaderInfo* info, void* reserved) = 0;
    virtual HRESULT STDMETHODCALLTYPE AudioReserved7(DWORD reserved1, void* reserved2) = 0;
    virtual HRESULT STDMETHODCALLTYPE AudioReserved8() = 0;
    // Reads count sample frames from the 64-bit sample position (low, high) into buffer. Read failures
    // go to the log only; the call answers S_OK.
    virtual HRESULT STDMETHODCALLTYPE GetAudioBuffer(DWORD positionLow, DWORD positionHigh, void* buffer,
                                                     LONG count, void* reserved) = 0;
    // Not supported: E_NOTIMPL.
    virtual HRESULT STDMETHODCALLTYPE GetFormatInfo(void* format) = 0;
protected:
    ~IZEBasicAudioReader() = default;
};

// Slots 3-5: DV frames and stored audio chunks, undecoded.
struct IZERawStream : public IUnknown {
    // Opens the file when none is open and prepares raw access. selectedSubtype (optional) receives the
    // colour format chosen for raw work (YUY2). Raw access needs DV video ('dvsd'): other files give
    // E_INVALIDARG, with the file left open for the other interfaces.
    virtual HRESULT STDMETHODCALLTYPE InitRawStream(LPCSTR path, GUID* selectedSubtype, DWORD reserved) = 0;
    // kind ZE_RAW_VIDEO/ZE_RAW_AUDIO; *size 16 (ZeRawSampleProperties) or sizeof(ZeRawMediaType).
    virtual HRESULT STDMETHODCALLTYPE GetRawSampleProperties(DWORD kind, const DWORD* size, void* out,
                                                             void* reserved) = 0;
    // out receives a pointer to the module's buffer; outSize (optional) its byte count.
    virtual HRESULT STDMETHODCALLTYPE GetRawSample(DWORD kind, DWORD timeFormat, const LONGLONG* time, BYTE** out,
                                                   void* reserved, DWORD* outSize) = 0;
protected:
    ~IZERawStream() = default;
};

// Slot 3: colour format changes during video delivery.
struct IZEColorFormatSupport : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE HandleColorFormat(DWORD operation, const GUID* subtype, DWORD index,
                                                        DWORD reserved1, void* reserved2, void* reserved3) = 0;
protected:
    ~IZEColorFormatSupport() = default;
};

// The host's log, handed over with IZEStatus::SetHostParams. Only slot 9 (after IUnknown's three) is
// used: it receives each report line, zero-terminated, with the number 2; its answer is ignored.
struct IZEHostLog : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Reserved3() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved4() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved5() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved6() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved7() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved8() = 0;
    virtual HRESULT STDMETHODCALLTYPE WriteLogLine(const char* line, LONG kind) = 0;
protected:
    ~IZEHostLog() = default;
};

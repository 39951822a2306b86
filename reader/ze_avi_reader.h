// CZEAviReader: the import module's one COM object. It implements the seven host interfaces on one
// reference count, owns the AVI parser for the file it serves and serialises its work on its own
// re-entrant lock.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/win32.h"
#include "reader/api/ze_host_interfaces.h"

class CZeReaderSource;

class CZEAviReader final : public IZEVideoStream,
                           public IZEClientServerExchange2,
                           public IZEVideoImportPlugIn,
                           public IZEStatus,
                           public IZEBasicAudioReader,
                           public IZERawStream,
                           public IZEColorFormatSupport {
public:
    // result (optional) receives the outcome of COM initialisation for the creating thread; name
    // (optional) names the object in diagnostics ("ZEAviReader" without one). The object starts with
    // no references: the creator takes the first.
    CZEAviReader(HRESULT* result, const char* name);
    CZEAviReader(const CZEAviReader&) = delete;
    CZEAviReader& operator=(const CZEAviReader&) = delete;

    // IUnknown, shared by all seven interfaces.
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    // IZEVideoStream
    HRESULT STDMETHODCALLTYPE CheckFile(LPCSTR path, DWORD* flags, DWORD* value) override;
    HRESULT STDMETHODCALLTYPE InitVideoStream(LPCSTR path, const GUID* hostSubtype, DWORD decodeFlags,
                                              DWORD reserved1, DWORD reserved2, void* reserved3) override;
    HRESULT STDMETHODCALLTYPE CloseVideoStream() override;
    HRESULT STDMETHODCALLTYPE GetStreamInfo(ZeStreamInfo* info) override;
    HRESULT STDMETHODCALLTYPE VideoReserved7(DWORD reserved1, DWORD reserved2, void* reserved3) override;
    HRESULT STDMETHODCALLTYPE VideoReserved8() override;
    HRESULT STDMETHODCALLTYPE GetVideoFrame(DWORD timeFormat, const LONGLONG* time, void* reserved, void** target,
                                            void* reserved2, DWORD flags) override;
    HRESULT STDMETHODCALLTYPE VideoReserved10(DWORD reserved1, DWORD reserved2, void* reserved3,
                                              void* reserved4) override;
    HRESULT STDMETHODCALLTYPE GetSpecialStreamPos(DWORD kind, LONGLONG* position, DWORD reserved) override;

    // IZEClientServerExchange2
    HRESULT STDMETHODCALLTYPE Set(DWORD paramId, DWORD stream, DWORD item, DWORD valueType, DWORD cbValue,
                                  const void* value, DWORD reserved1, void* reserved2) override;
    HRESULT STDMETHODCALLTYPE Get(DWORD paramId, DWORD stream, DWORD item, ZeExchangeValue* value) override;
    HRESULT STDMETHODCALLTYPE Check(DWORD paramId, DWORD stream, DWORD item, DWORD* available, DWORD* valueType,
                                    DWORD* cbValue, DWORD* count, char** name, void* reserved) override;
    HRESULT STDMETHODCALLTYPE ExchangeReserved6(DWORD reserved1, DWORD reserved2, DWORD reserved3, void* reserved4,
                                                void* reserved5, void* reserved6) override;

    // IZEVideoImportPlugIn
    HRESULT STDMETHODCALLTYPE GetModuleInfo(ZeModuleInfo* info) override;

    // IZEStatus
    HRESULT STDMETHODCALLTYPE GetState(DWORD* value, DWORD* detail, DWORD kind) override;
    HRESULT STDMETHODCALLTYPE StatusReserved4(DWORD reserved1, DWORD reserved2, void* reserved3,
                                              void* reserved4) override;
    HRESULT STDMETHODCALLTYPE SetHostParams(const ZeHostParams* params) override;

    // IZEBasicAudioReader
    HRESULT STDMETHODCALLTYPE CheckFile(LPCSTR path) override;
    HRESULT STDMETHODCALLTYPE InitAudioReader(LPCSTR path, DWORD reserved1, DWORD reserved2,
                                              void* reserved3) override;
    HRESULT STDMETHODCALLTYPE CloseAudioReader() override;
    HRESULT STDMETHODCALLTYPE GetReaderInfo(ZeReaderInfo* info, void* reserved) override;
    HRESULT STDMETHODCALLTYPE AudioReserved7(DWORD reserved1, void* reserved2) override;
    HRESULT STDMETHODCALLTYPE AudioReserved8() override;
    HRESULT STDMETHODCALLTYPE GetAudioBuffer(DWORD positionLow, DWORD positionHigh, void* buffer, LONG count,
                                             void* reserved) override;
    HRESULT STDMETHODCALLTYPE GetFormatInfo(void* format) override;

    // IZERawStream
    HRESULT STDMETHODCALLTYPE InitRawStream(LPCSTR path, GUID* selectedSubtype, DWORD reserved) override;
    HRESULT STDMETHODCALLTYPE GetRawSampleProperties(DWORD kind, const DWORD* size, void* out,
                                                     void* reserved) override;
    HRESULT STDMETHODCALLTYPE GetRawSample(DWORD kind, DWORD timeFormat, const LONGLONG* time, BYTE** out,
                                           void* reserved, DWORD* outSize) override;

    // IZEColorFormatSupport
    HRESULT STDMETHODCALLTYPE HandleColorFormat(DWORD operation, const GUID* subtype, DWORD index, DWORD reserved1,
                                                void* reserved2, void* reserved3) override;

    const std::string& GetName() const { return m_name; }

private:
    class LockGuard;
    friend class LockGuard;

    ~CZEAviReader();

    // Work of the methods above once arguments are checked and the lock is held; they may throw
    // (allocation), the interface methods catch.
    HRESULT CheckFileLocked(LPCSTR path, DWORD* flags, DWORD* value);
    HRESULT GetStreamInfoLocked(ZeStreamInfo* info);
    double DisplayAspectRatio();
    HRESULT InitAudioReaderLocked(LPCSTR path);
    void CloseAudioReaderLocked();
    HRESULT InitRawStreamLocked(LPCSTR path, GUID* selectedSubtype);
    HRESULT PrepareRawBuffers();
    HRESULT GetRawSamplePropertiesLocked(DWORD kind, DWORD size, void* out);
    HRESULT GetRawSampleLocked(DWORD kind, DWORD timeFormat, LONGLONG time, BYTE** out, DWORD* outSize);
    HRESULT ExchangeGet(DWORD paramId, DWORD stream, DWORD item, ZeExchangeValue* value);
    HRESULT ExchangeSet(DWORD paramId, DWORD valueType, DWORD cbValue, const void* value);
    HRESULT ExchangeFrame(DWORD frame, const uint8_t** data, uint64_t* bytes);
    // The parser; throws std::bad_alloc when it could not be created with the object.
    CZeReaderSource& Src();

    std::unique_ptr<CZeReaderSource> m_source;  // the parser of the file this object serves

    CRITICAL_SECTION m_lock{};
    bool m_lockReady = false;     // false when COM initialisation failed: the object then runs unlocked
    bool m_comInitialized = false;
    IZEHostLog* m_hostLog = nullptr;  // counted
    LONG volatile m_refCount = 0;
    std::string m_name;
    uint32_t m_statusCode = 0;    // FOURCC of video that could not be decoded
    uint32_t m_statusValue = 0;   // 1 together with m_statusCode
    GUID m_preferredSubtype{};    // colour format handed out by default
    GUID m_yuvSubtype{};          // packed YUV colour format
    int32_t m_scaleDivisor = 1;   // display size divisor of the stream description

    // Audio reader.
    bool m_audioOpen = false;
    bool m_keepErrorContext = false;  // while set, InitAudioReader keeps the report context
    uint32_t m_audioWork[2] = {0, 0};  // per-open working values, cleared by every open and close

    // Stream number chosen for the raw path; -1 when none.
    int32_t m_rawStream = -1;

    // Raw access.
    int32_t m_rawFrameBufferSize = 0;
    std::vector<uint8_t> m_rawFrameBuffer;
    std::unique_ptr<ZeRawVideoInfo> m_rawVideoInfo;
    uint32_t m_rawAudioBufferSize = 0;
    std::vector<uint8_t> m_rawAudioBuffer;
    uint64_t m_rawAudioBlock = 0;
    ZeRawMediaType m_rawMediaType{};

    // One DV frame kept for camera value queries of the parameter exchange.
    std::vector<uint8_t> m_exchangeFrame;
    uint64_t m_exchangeFrameNumber = UINT64_MAX;
    uint64_t m_exchangeFrameBytes = 0;
};

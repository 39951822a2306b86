// CMediaSample: one buffer of an allocator with its times, flags and optional media type.
//
// A sample is owned by its allocator. Its reference count belongs to whoever got it from GetBuffer;
// the final Release clears the per-use properties (flags, attached type, stream id) and hands the
// sample back to the allocator's free list instead of deleting it.
#pragma once

#include "dshow/baseclasses/unknown.h"

class CBaseAllocator;

class CMediaSample : public IMediaSample2, public CBaseObject {
public:
    // `buffer` (of `length` bytes) stays owned by the allocator.
    CMediaSample(const char* name, CBaseAllocator* allocator, HRESULT* phr, BYTE* buffer = nullptr, LONG length = 0);
    ~CMediaSample() override;

    // Points the sample at another buffer (used by allocators that place buffers after creating samples).
    HRESULT SetPointer(BYTE* buffer, LONG length);

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    // IMediaSample
    HRESULT STDMETHODCALLTYPE GetPointer(BYTE** buffer) override;
    LONG STDMETHODCALLTYPE GetSize() override;
    HRESULT STDMETHODCALLTYPE GetTime(REFERENCE_TIME* start, REFERENCE_TIME* end) override;
    HRESULT STDMETHODCALLTYPE SetTime(REFERENCE_TIME* start, REFERENCE_TIME* end) override;
    HRESULT STDMETHODCALLTYPE IsSyncPoint() override;
    HRESULT STDMETHODCALLTYPE SetSyncPoint(BOOL syncPoint) override;
    HRESULT STDMETHODCALLTYPE IsPreroll() override;
    HRESULT STDMETHODCALLTYPE SetPreroll(BOOL preroll) override;
    LONG STDMETHODCALLTYPE GetActualDataLength() override;
    HRESULT STDMETHODCALLTYPE SetActualDataLength(LONG length) override;
    HRESULT STDMETHODCALLTYPE GetMediaType(AM_MEDIA_TYPE** type) override;
    HRESULT STDMETHODCALLTYPE SetMediaType(AM_MEDIA_TYPE* type) override;
    HRESULT STDMETHODCALLTYPE IsDiscontinuity() override;
    HRESULT STDMETHODCALLTYPE SetDiscontinuity(BOOL discontinuity) override;
    HRESULT STDMETHODCALLTYPE GetMediaTime(LONGLONG* start, LONGLONG* end) override;
    HRESULT STDMETHODCALLTYPE SetMediaTime(LONGLONG* start, LONGLONG* end) override;

    // IMediaSample2: the properties as one AM_SAMPLE2_PROPERTIES record, of which `size` bytes are used.
    HRESULT STDMETHODCALLTYPE GetProperties(DWORD size, BYTE* properties) override;
    HRESULT STDMETHODCALLTYPE SetProperties(DWORD size, const BYTE* properties) override;

protected:
    // Flag bits: the AM_SAMPLE_* values, plus one for the media times.
    static constexpr DWORD kMediaTimeValid = 0x20;

    friend class CBaseAllocator;

    DWORD m_dwFlags = 0;
    DWORD m_dwTypeSpecificFlags = 0;
    BYTE* m_pBuffer;
    LONG m_lActual;
    LONG m_cbBuffer;
    CBaseAllocator* const m_pAllocator;
    REFERENCE_TIME m_Start = 0;
    REFERENCE_TIME m_End = 0;
    LONGLONG m_MediaStart = 0;
    LONGLONG m_MediaEnd = 0;
    AM_MEDIA_TYPE* m_pMediaType = nullptr;
    DWORD m_dwStreamId = AM_STREAM_MEDIA;
    std::atomic<LONG> m_cRef{0};
};

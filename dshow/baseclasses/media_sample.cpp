// Sample properties and the return of a sample to its allocator.
#include "dshow/baseclasses/media_sample.h"

#include <cstddef>
#include <cstring>

#include "dshow/baseclasses/allocator.h"
#include "dshow/baseclasses/media_type.h"

namespace {

HRESULT FlagAnswer(DWORD flags, DWORD bit) { return (flags & bit) ? S_OK : S_FALSE; }

void SetFlag(DWORD& flags, DWORD bit, BOOL on)
{
    if (on)
        flags |= bit;
    else
        flags &= ~bit;
}

}  // namespace

CMediaSample::CMediaSample(const char* name, CBaseAllocator* allocator, HRESULT* phr, BYTE* buffer, LONG length)
    : CBaseObject(name), m_pBuffer(buffer), m_lActual(length), m_cbBuffer(length), m_pAllocator(allocator)
{
    if (allocator == nullptr && phr != nullptr)
        *phr = E_POINTER;
}

CMediaSample::~CMediaSample() { DeleteMediaType(m_pMediaType); }

HRESULT CMediaSample::SetPointer(BYTE* buffer, LONG length)
{
    if (length < 0)
        return VFW_E_BUFFER_OVERFLOW;
    m_pBuffer = buffer;
    m_cbBuffer = length;
    m_lActual = length;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CMediaSample::QueryInterface(REFIID iid, void** object)
{
    if (object == nullptr)
        return E_POINTER;
    if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IMediaSample) || IsEqualIID(iid, IID_IMediaSample2)) {
        *object = static_cast<IMediaSample2*>(this);
        AddRef();
        return S_OK;
    }
    *object = nullptr;
    return E_NOINTERFACE;
}

ULONG STDMETHODCALLTYPE CMediaSample::AddRef() { return static_cast<ULONG>(++m_cRef); }

ULONG STDMETHODCALLTYPE CMediaSample::Release()
{
    const LONG left = --m_cRef;
    if (left == 0) {
        // What the last user set does not carry over to the next use of the buffer.
        DeleteMediaType(m_pMediaType);
        m_pMediaType = nullptr;
        m_dwFlags = 0;
        m_dwTypeSpecificFlags = 0;
        m_dwStreamId = AM_STREAM_MEDIA;
        // The allocator may go away inside this call; nothing of this object is touched afterwards.
        m_pAllocator->ReleaseBuffer(this);
    }
    return static_cast<ULONG>(left);
}

HRESULT STDMETHODCALLTYPE CMediaSample::GetPointer(BYTE** buffer)
{
    if (buffer == nullptr)
        return E_POINTER;
    *buffer = m_pBuffer;
    return S_OK;
}

LONG STDMETHODCALLTYPE CMediaSample::GetSize() { return m_cbBuffer; }

HRESULT STDMETHODCALLTYPE CMediaSample::GetTime(REFERENCE_TIME* start, REFERENCE_TIME* end)
{
    if (!(m_dwFlags & AM_SAMPLE_TIMEVALID))
        return VFW_E_SAMPLE_TIME_NOT_SET;
    if (start == nullptr || end == nullptr)
        return E_POINTER;
    *start = m_Start;
    if (m_dwFlags & AM_SAMPLE_STOPVALID) {
        *end = m_End;
        return S_OK;
    }
    *end = m_Start + 1;
    return VFW_S_NO_STOP_TIME;
}

HRESULT STDMETHODCALLTYPE CMediaSample::SetTime(REFERENCE_TIME* start, REFERENCE_TIME* end)
{
    if (start == nullptr) {
        if (end != nullptr)
            return E_POINTER;
        m_dwFlags &= ~(AM_SAMPLE_TIMEVALID | AM_SAMPLE_STOPVALID);
        return S_OK;
    }
    m_Start = *start;
    m_dwFlags |= AM_SAMPLE_TIMEVALID;
    if (end != nullptr) {
        m_End = *end;
        m_dwFlags |= AM_SAMPLE_STOPVALID;
    } else {
        m_dwFlags &= ~AM_SAMPLE_STOPVALID;
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CMediaSample::IsSyncPoint() { return FlagAnswer(m_dwFlags, AM_SAMPLE_SPLICEPOINT); }
HRESULT STDMETHODCALLTYPE CMediaSample::SetSyncPoint(BOOL syncPoint)
{
    SetFlag(m_dwFlags, AM_SAMPLE_SPLICEPOINT, syncPoint);
    return S_OK;
}
HRESULT STDMETHODCALLTYPE CMediaSample::IsPreroll() { return FlagAnswer(m_dwFlags, AM_SAMPLE_PREROLL); }
HRESULT STDMETHODCALLTYPE CMediaSample::SetPreroll(BOOL preroll)
{
    SetFlag(m_dwFlags, AM_SAMPLE_PREROLL, preroll);
    return S_OK;
}
HRESULT STDMETHODCALLTYPE CMediaSample::IsDiscontinuity() { return FlagAnswer(m_dwFlags, AM_SAMPLE_DATADISCONTINUITY); }
HRESULT STDMETHODCALLTYPE CMediaSample::SetDiscontinuity(BOOL discontinuity)
{
    SetFlag(m_dwFlags, AM_SAMPLE_DATADISCONTINUITY, discontinuity);
    return S_OK;
}

LONG STDMETHODCALLTYPE CMediaSample::GetActualDataLength() { return m_lActual; }

HRESULT STDMETHODCALLTYPE CMediaSample::SetActualDataLength(LONG length)
{
    if (length < 0 || length > m_cbBuffer)
        return VFW_E_BUFFER_OVERFLOW;
    m_lActual = length;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CMediaSample::GetMediaType(AM_MEDIA_TYPE** type)
{
    if (type == nullptr)
        return E_POINTER;
    if (!(m_dwFlags & AM_SAMPLE_TYPECHANGED) || m_pMediaType == nullptr) {
        *type = nullptr;
        return S_FALSE;
    }
    *type = CreateMediaType(m_pMediaType);
    return *type ? S_OK : E_OUTOFMEMORY;
}

HRESULT STDMETHODCALLTYPE CMediaSample::SetMediaType(AM_MEDIA_TYPE* type)
{
    DeleteMediaType(m_pMediaType);
    m_pMediaType = nullptr;
    if (type == nullptr) {
        m_dwFlags &= ~AM_SAMPLE_TYPECHANGED;
        return S_OK;
    }
    m_pMediaType = CreateMediaType(type);
    if (m_pMediaType == nullptr) {
        m_dwFlags &= ~AM_SAMPLE_TYPECHANGED;
        return E_OUTOFMEMORY;
    }
    m_dwFlags |= AM_SAMPLE_TYPECHANGED;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CMediaSample::GetMediaTime(LONGLONG* start, LONGLONG* end)
{
    if (!(m_dwFlags & kMediaTimeValid))
        return VFW_E_MEDIA_TIME_NOT_SET;
    if (start == nullptr || end == nullptr)
        return E_POINTER;
    *start = m_MediaStart;
    *end = m_MediaEnd;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CMediaSample::SetMediaTime(LONGLONG* start, LONGLONG* end)
{
    if (start == nullptr && end == nullptr) {
        m_dwFlags &= ~kMediaTimeValid;
        return S_OK;
    }
    if (start == nullptr || end == nullptr)
        return E_POINTER;
    m_MediaStart = *start;
    m_MediaEnd = *end;
    m_dwFlags |= kMediaTimeValid;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CMediaSample::GetProperties(DWORD size, BYTE* properties)
{
    if (size == 0)
        return S_OK;
    if (properties == nullptr)
        return E_POINTER;
    AM_SAMPLE2_PROPERTIES all{};
    all.cbData = size < sizeof all ? size : static_cast<DWORD>(sizeof all);
    all.dwTypeSpecificFlags = m_dwTypeSpecificFlags;
    all.dwSampleFlags = m_dwFlags & ~kMediaTimeValid;
    all.lActual = m_lActual;
    all.tStart = m_Start;
    all.tStop = m_End;
    all.dwStreamId = m_dwStreamId;
    all.pMediaType = (m_dwFlags & AM_SAMPLE_TYPECHANGED) ? m_pMediaType : nullptr;
    all.pbBuffer = m_pBuffer;
    all.cbBuffer = m_cbBuffer;
    std::memcpy(properties, &all, all.cbData);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CMediaSample::SetProperties(DWORD size, const BYTE* properties)
{
    // The record must reach at least to the stream id; fields after it are used when present.
    if (size < offsetof(AM_SAMPLE2_PROPERTIES, dwStreamId) || size > sizeof(AM_SAMPLE2_PROPERTIES))
        return E_INVALIDARG;
    if (properties == nullptr)
        return E_POINTER;
    AM_SAMPLE2_PROPERTIES given{};
    std::memcpy(&given, properties, size);
    if (given.cbData != 0 && given.cbData < size)
        size = given.cbData;
    if (given.lActual < 0 || given.lActual > m_cbBuffer)
        return VFW_E_BUFFER_OVERFLOW;
    const auto reaches = [size](size_t offset, size_t bytes) { return size >= offset + bytes; };
    if (reaches(offsetof(AM_SAMPLE2_PROPERTIES, pbBuffer), sizeof given.pbBuffer) && given.pbBuffer != nullptr &&
        given.pbBuffer != m_pBuffer)
        return E_INVALIDARG;
    // The attached type follows the type-changed flag: a record that reaches the type pointer brings
    // the type, a shorter one keeps the type already attached, and a cleared flag drops it.
    if (!(given.dwSampleFlags & AM_SAMPLE_TYPECHANGED)) {
        SetMediaType(nullptr);
    } else if (reaches(offsetof(AM_SAMPLE2_PROPERTIES, pMediaType), sizeof given.pMediaType) &&
               given.pMediaType != m_pMediaType) {
        const HRESULT hr = SetMediaType(given.pMediaType);
        if (FAILED(hr))
            return hr;
    } else if (m_pMediaType == nullptr) {
        return E_INVALIDARG;
    }
    if (reaches(offsetof(AM_SAMPLE2_PROPERTIES, dwStreamId), sizeof given.dwStreamId))
        m_dwStreamId = given.dwStreamId;
    m_dwTypeSpecificFlags = given.dwTypeSpecificFlags;
    m_dwFlags = (m_dwFlags & kMediaTimeValid) | (given.dwSampleFlags & ~kMediaTimeValid);
    m_lActual = given.lActual;
    m_Start = given.tStart;
    m_End = given.tStop;
    return S_OK;
}

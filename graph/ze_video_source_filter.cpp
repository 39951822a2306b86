// The source filter: its COM identity, its one pin, the stream format it keeps, and the calls through
// which the frame service fills and sends samples.
#include "graph/ze_video_source_filter.h"

#include <new>

#include "graph/ze_filter_creation.h"
#include "graph/ze_graph_create.h"
#include "graph/ze_video_source_output_pin.h"
#include "reader/status/ze_error_report.h"

namespace {
constexpr const char* kClass = "CZEVideoSourceFilter";
constexpr const char* kPinClass = "CZEVideoSourceOutputPin";
}  // namespace

CZEVideoSourceFilter::CZEVideoSourceFilter(LPUNKNOWN outer, HRESULT* phr)
    : CBaseFilter(nullptr, outer, &m_filterLock, CLSID_ZEVideoSourceFilter)
{
    HRESULT hr = S_OK;
    try {
        m_ownedPin.reset(new CZEVideoSourceOutputPin(this, &m_filterLock, &hr));
        if (FAILED(hr)) hr = ReportError(kPinClass, kPinClass, hr);
    } catch (const std::bad_alloc&) {
        hr = ReportError(kClass, kClass, E_OUTOFMEMORY);
    }
    if (phr != nullptr && FAILED(hr)) *phr = hr;
}

// The pin goes before the lock it shares; the format block and the description go with the object.
CZEVideoSourceFilter::~CZEVideoSourceFilter() = default;

HRESULT STDMETHODCALLTYPE CZEVideoSourceFilter::NonDelegatingQueryInterface(REFIID iid, void** object)
{
    if (object == nullptr) return ReportError(kClass, "NonDelegatingQueryInterface", E_POINTER);
    if (iid == IID_IZEVideoSourceFilter) return GetInterface(static_cast<IZEVideoSourceFilter*>(this), object);
    return CBaseFilter::NonDelegatingQueryInterface(iid, object);
}

int CZEVideoSourceFilter::GetPinCount() { return 1; }

CBasePin* CZEVideoSourceFilter::GetPin(int n) { return n == 0 ? m_outputPin : nullptr; }

HRESULT CZEVideoSourceFilter::AddPin(CZEVideoSourceOutputPin* pin)
{
    if (pin == nullptr) return ReportError(kClass, "AddPin", E_POINTER);
    m_outputPin = pin;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CZEVideoSourceFilter::GetSampleProps(ALLOCATOR_PROPERTIES* props, AM_MEDIA_TYPE* type)
{
    if (props == nullptr || type == nullptr || m_outputPin == nullptr)
        return ReportError(kClass, "GetSampleProps", E_POINTER);
    *props = m_outputPin->ActualProps();
    // A flat copy: the format block stays the pin's.
    *type = static_cast<const AM_MEDIA_TYPE&>(m_outputPin->ConnectionType());
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CZEVideoSourceFilter::GetSampleBuffer(BYTE** data)
{
    if (data == nullptr || m_outputPin == nullptr) return ReportError(kClass, "GetSampleBuffer", E_POINTER);
    *data = nullptr;
    const HRESULT hr = m_outputPin->GetSampleBuffer(data);
    if (FAILED(hr) || *data == nullptr) return ReportError(kClass, "GetSampleBuffer", E_POINTER);
    return hr;
}

HRESULT STDMETHODCALLTYPE CZEVideoSourceFilter::SetStreamInfo(const BITMAPINFOHEADER* header,
                                                              const ze_video_stream_desc* streamHeader)
{
    if (streamHeader == nullptr) return ReportError(kClass, "SetStreamInfo", E_POINTER);
    // Field by field, so the reserved tail is zero whatever the caller's record held there.
    ze_video_stream_desc desc;
    desc.ckid = streamHeader->ckid;
    desc.cb = streamHeader->cb;
    desc.fccType = streamHeader->fccType;
    desc.fccHandler = streamHeader->fccHandler;
    desc.dwFlags = streamHeader->dwFlags;
    desc.wPriority = streamHeader->wPriority;
    desc.wLanguage = streamHeader->wLanguage;
    desc.dwInitialFrames = streamHeader->dwInitialFrames;
    desc.dwScale = streamHeader->dwScale;
    desc.dwRate = streamHeader->dwRate;
    desc.dwStart = streamHeader->dwStart;
    desc.dwLength = streamHeader->dwLength;
    desc.dwSuggestedBufferSize = streamHeader->dwSuggestedBufferSize;
    desc.dwQuality = streamHeader->dwQuality;
    desc.dwSampleSize = streamHeader->dwSampleSize;
    desc.rcFrameLeft = streamHeader->rcFrameLeft;
    desc.rcFrameTop = streamHeader->rcFrameTop;
    desc.rcFrameRight = streamHeader->rcFrameRight;
    desc.rcFrameBottom = streamHeader->rcFrameBottom;
    return SetMediaInfo(header, &desc);
}

HRESULT STDMETHODCALLTYPE CZEVideoSourceFilter::SetMediaInfo(const BITMAPINFOHEADER* header,
                                                             const ze_video_stream_desc* desc)
{
    if (header == nullptr || desc == nullptr) return ReportError(kClass, "SetMediaInfo", E_POINTER);
    CAutoLock lock(&m_filterLock);
    if (FAILED(m_format.Set(*header, desc->dwRate, desc->dwScale)))
        return ReportError(kClass, "SetMediaInfo", E_OUTOFMEMORY);
    m_streamHeader = *desc;
    if (m_streamHeader.dwScale == 0) m_streamHeader.dwScale = 1;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CZEVideoSourceFilter::Decode()
{
    if (m_outputPin == nullptr) return ReportError(kClass, "Decode", E_POINTER);
    const HRESULT hr = m_outputPin->Deliver();
    if (FAILED(hr)) return ReportError(kClass, "Decode", hr);
    return hr;
}

HRESULT STDMETHODCALLTYPE CZEVideoSourceFilter::SetDiscontinuity(BOOL discontinuity)
{
    if (m_outputPin == nullptr) return ReportError(kClass, "SetDiscontinuity", E_POINTER);
    return m_outputPin->SetDiscontinuity(discontinuity);
}

HRESULT STDMETHODCALLTYPE CZEVideoSourceFilter::SetSyncPoint(BOOL syncPoint)
{
    if (m_outputPin == nullptr) return ReportError(kClass, "SetSyncPoint", E_POINTER);
    return m_outputPin->SetSyncPoint(syncPoint);
}

HRESULT CreateZEVideoSourceFilter(IUnknown* outer, REFIID iid, void** object)
{
    return ZeCreateFilter<CZEVideoSourceFilter>(kClass, "CreateZEVideoSourceFilter", outer, iid, object);
}

// The render filter: COM identity, the media types it takes, and the calls through which the frame
// service sets up the target picture and takes rendered pictures. The pictures themselves live in
// ZeRenderTarget; everything here that touches them holds the renderer's lock.
#include "graph/ze_video_render_filter.h"

#include <new>

#include "graph/ze_filter_creation.h"
#include "graph/ze_graph_create.h"
#include "graph/ze_video_render_input_pin.h"
#include "reader/status/ze_error_report.h"

namespace {
constexpr const char* kClass = "CZEVideoRenderFilter";
constexpr const char* kPinClass = "CZEVideoRenderInputPin";
}  // namespace

CZEVideoRenderFilter::CZEVideoRenderFilter(LPUNKNOWN outer, HRESULT* phr)
    : CBaseRenderer(CLSID_ZEVideoRenderFilter, nullptr, outer, phr)
{
    if (phr != nullptr && FAILED(*phr)) {
        ReportError(kClass, kClass, *phr);
        return;
    }
    HRESULT hr = S_OK;
    try {
        // Our pin takes the place of the base renderer's plain one; the base renderer owns it.
        m_pInputPin.reset(new CZEVideoRenderInputPin(this, &hr));
        if (FAILED(hr)) hr = ReportError(kPinClass, kPinClass, hr);
    } catch (const std::bad_alloc&) {
        hr = ReportError(kClass, kClass, E_OUTOFMEMORY);
    }
    if (phr != nullptr && FAILED(hr)) *phr = hr;
}

// The queue and the target buffer go with the object; the base renderer deletes the pin.
CZEVideoRenderFilter::~CZEVideoRenderFilter() = default;

HRESULT STDMETHODCALLTYPE CZEVideoRenderFilter::NonDelegatingQueryInterface(REFIID iid, void** object)
{
    if (object == nullptr) return ReportError(kClass, "NonDelegatingQueryInterface", E_POINTER);
    if (iid == IID_IZEVideoRenderFilter) return GetInterface(static_cast<IZEVideoRenderFilter*>(this), object);
    if (iid == IID_IZEBaseFilterEx) return GetInterface(static_cast<IZEBaseFilterEx*>(this), object);
    return CBaseRenderer::NonDelegatingQueryInterface(iid, object);
}

HRESULT STDMETHODCALLTYPE CZEVideoRenderFilter::GetClassID(CLSID* clsid) { return CBaseRenderer::GetClassID(clsid); }
HRESULT STDMETHODCALLTYPE CZEVideoRenderFilter::Stop() { return CBaseRenderer::Stop(); }
HRESULT STDMETHODCALLTYPE CZEVideoRenderFilter::Pause() { return CBaseRenderer::Pause(); }
HRESULT STDMETHODCALLTYPE CZEVideoRenderFilter::Run(REFERENCE_TIME start) { return CBaseRenderer::Run(start); }
HRESULT STDMETHODCALLTYPE CZEVideoRenderFilter::GetState(DWORD milliseconds, FILTER_STATE* state)
{
    return CBaseRenderer::GetState(milliseconds, state);
}
HRESULT STDMETHODCALLTYPE CZEVideoRenderFilter::SetSyncSource(IReferenceClock* clock)
{
    return CBaseRenderer::SetSyncSource(clock);
}
HRESULT STDMETHODCALLTYPE CZEVideoRenderFilter::GetSyncSource(IReferenceClock** clock)
{
    return CBaseRenderer::GetSyncSource(clock);
}
HRESULT STDMETHODCALLTYPE CZEVideoRenderFilter::EnumPins(IEnumPins** pins) { return CBaseRenderer::EnumPins(pins); }
HRESULT STDMETHODCALLTYPE CZEVideoRenderFilter::FindPin(LPCWSTR id, IPin** pin)
{
    return CBaseRenderer::FindPin(id, pin);
}
HRESULT STDMETHODCALLTYPE CZEVideoRenderFilter::QueryFilterInfo(FILTER_INFO* info)
{
    return CBaseRenderer::QueryFilterInfo(info);
}
HRESULT STDMETHODCALLTYPE CZEVideoRenderFilter::JoinFilterGraph(IFilterGraph* graph, LPCWSTR name)
{
    return CBaseRenderer::JoinFilterGraph(graph, name);
}
HRESULT STDMETHODCALLTYPE CZEVideoRenderFilter::QueryVendorInfo(LPWSTR* vendorInfo)
{
    return CBaseRenderer::QueryVendorInfo(vendorInfo);
}

HRESULT STDMETHODCALLTYPE CZEVideoRenderFilter::GetPin(IPin** pin)
{
    if (pin == nullptr) return ReportError(kClass, "GetPin", E_POINTER);
    *pin = CBaseRenderer::GetPin(0);
    if (*pin == nullptr) return ReportError(kClass, "GetPin", E_FAIL);
    return S_OK;
}

HRESULT CZEVideoRenderFilter::CheckMediaType(const CMediaType* type)
{
    if (type == nullptr) return ReportError(kClass, "CheckMediaType", E_POINTER);
    CAutoLock lock(&m_RendererLock);
    if (type->majortype != MEDIATYPE_Video || type->subtype != m_target.Subtype())
        return ReportError(kClass, "CheckMediaType", E_INVALIDARG);
    const bool videoInfo = type->formattype == FORMAT_VideoInfo;
    if (!videoInfo && type->formattype != FORMAT_VideoInfo2)
        return ReportError(kClass, "CheckMediaType", E_INVALIDARG);
    // Only the width has to match the target; height, bit count and stride are the decoder's.
    // Without a target buffer there is no width to match.
    const ULONG blockBytes = videoInfo ? sizeof(VIDEOINFOHEADER) : sizeof(VIDEOINFOHEADER2);
    if (type->pbFormat == nullptr || type->cbFormat != blockBytes || !m_target.HasBuffer())
        return ReportError(kClass, "CheckMediaType", E_FAIL);
    const LONG width = videoInfo ? reinterpret_cast<const VIDEOINFOHEADER*>(type->pbFormat)->bmiHeader.biWidth
                                 : reinterpret_cast<const VIDEOINFOHEADER2*>(type->pbFormat)->bmiHeader.biWidth;
    if (width != m_target.Header()->biWidth) return ReportError(kClass, "CheckMediaType", E_INVALIDARG);
    return S_OK;
}

HRESULT CZEVideoRenderFilter::DoRenderSample(IMediaSample* sample)
{
    if (sample == nullptr) return ReportError(kClass, "DoRenderSample", E_POINTER);
    CAutoLock lock(&m_RendererLock);
    BYTE* data = nullptr;
    HRESULT hr = sample->GetPointer(&data);
    if (FAILED(hr)) return ReportError(kClass, "DoRenderSample", hr);
    // The picture size decides how much is copied; the sample's buffer size only bounds it.
    const LONG sampleBytes = sample->GetSize();
    hr = m_target.Render(data, sampleBytes);
    if (FAILED(hr)) return ReportError(kClass, "DoRenderSample", hr);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CZEVideoRenderFilter::InitTargetBuffer(const BITMAPINFOHEADER* format, LONG width,
                                                                  LONG height)
{
    if (format == nullptr) return ReportError(kClass, "InitTargetBuffer", E_POINTER);
    if (format->biBitCount == 0 || format->biHeight == 0 || format->biWidth == 0)
        return ReportError(kClass, "InitTargetBuffer", E_INVALIDARG);
    GUID subtype;
    uint32_t bitsPerPixel = 0;
    if (FAILED(ZeRenderTarget::ChooseSubtype(*format, &subtype, &bitsPerPixel)))
        return ReportError(kClass, "InitTargetBuffer", E_INVALIDARG);
    CAutoLock lock(&m_RendererLock);
    if (FAILED(m_target.Init(*format, subtype, bitsPerPixel, width, height)))
        return ReportError(kClass, "InitTargetBuffer", E_OUTOFMEMORY);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CZEVideoRenderFilter::GetTargetBuffer(BYTE** buffer, BOOL takeQueued)
{
    if (buffer == nullptr) return ReportError(kClass, "GetTargetBuffer", E_POINTER);
    CAutoLock lock(&m_RendererLock);
    if (!m_target.HasBuffer()) {
        *buffer = nullptr;
        return ReportError(kClass, "GetTargetBuffer", E_POINTER);
    }
    return m_target.Take(takeQueued != FALSE, buffer);
}

HRESULT STDMETHODCALLTYPE CZEVideoRenderFilter::GetMediaInfo(void*)
{
    CAutoLock lock(&m_RendererLock);
    if (!m_target.HasBuffer()) return ReportError(kClass, "GetMediaInfo", E_POINTER);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CZEVideoRenderFilter::ClearFrameQueue()
{
    CAutoLock lock(&m_RendererLock);
    m_target.ClearQueue();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CZEVideoRenderFilter::ResetTargetBuffer()
{
    CAutoLock lock(&m_RendererLock);
    m_target.Reset();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CZEVideoRenderFilter::IsFrameMissing()
{
    CAutoLock lock(&m_RendererLock);
    return m_target.FrameReady() ? S_OK : S_FALSE;
}

HRESULT STDMETHODCALLTYPE CZEVideoRenderFilter::SetTargetBuffer(BYTE* buffer)
{
    if (buffer == nullptr) return ReportError(kClass, "SetTargetBuffer", E_POINTER);
    CAutoLock lock(&m_RendererLock);
    m_target.Adopt(buffer);
    return S_OK;
}

bool CZEVideoRenderFilter::TargetFormat(BITMAPINFOHEADER* header, LONG* width, LONG* height, GUID* subtype)
{
    CAutoLock lock(&m_RendererLock);
    if (!m_target.HasBuffer()) return false;
    *header = *m_target.Header();
    *width = m_target.Width();
    *height = m_target.Height();
    *subtype = m_target.Subtype();
    return true;
}

size_t CZEVideoRenderFilter::QueuedPictures()
{
    CAutoLock lock(&m_RendererLock);
    return m_target.QueuedCount();
}

int32_t CZEVideoRenderFilter::RenderedCount()
{
    CAutoLock lock(&m_RendererLock);
    return m_target.RenderedCount();
}

HRESULT CreateZEVideoRenderFilter(IUnknown* outer, REFIID iid, void** object)
{
    return ZeCreateFilter<CZEVideoRenderFilter>(kClass, "CreateZEVideoRenderFilter", outer, iid, object);
}

// The sink of the decoding graph. It fixes the uncompressed picture format the decoder must produce
// (RGB32, RGB24 or YUY2), copies each picture it is given into a target buffer it owns, queues copies
// once pictures come faster than they are taken, and hands the buffer to the frame service.
#pragma once

#include "dshow/baseclasses/renderer.h"
#include "graph/ze_graph_interfaces.h"
#include "graph/ze_render_target.h"

class CZEVideoRenderFilter : public CBaseRenderer, public IZEBaseFilterEx, public IZEVideoRenderFilter {
public:
    CZEVideoRenderFilter(LPUNKNOWN outer, HRESULT* phr);
    ~CZEVideoRenderFilter() override;

    DECLARE_IUNKNOWN
    HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override;

    // IBaseFilter through IZEBaseFilterEx: the base classes answer.
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* clsid) override;
    HRESULT STDMETHODCALLTYPE Stop() override;
    HRESULT STDMETHODCALLTYPE Pause() override;
    HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME start) override;
    HRESULT STDMETHODCALLTYPE GetState(DWORD milliseconds, FILTER_STATE* state) override;
    HRESULT STDMETHODCALLTYPE SetSyncSource(IReferenceClock* clock) override;
    HRESULT STDMETHODCALLTYPE GetSyncSource(IReferenceClock** clock) override;
    HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** pins) override;
    HRESULT STDMETHODCALLTYPE FindPin(LPCWSTR id, IPin** pin) override;
    HRESULT STDMETHODCALLTYPE QueryFilterInfo(FILTER_INFO* info) override;
    HRESULT STDMETHODCALLTYPE JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) override;
    HRESULT STDMETHODCALLTYPE QueryVendorInfo(LPWSTR* vendorInfo) override;
    // IZEBaseFilterEx's own: the input pin without a new reference.
    HRESULT STDMETHODCALLTYPE GetPin(IPin** pin) override;
    using CBaseRenderer::GetPin;

    // CBaseRenderer
    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT DoRenderSample(IMediaSample* sample) override;

    // IZEVideoRenderFilter
    HRESULT STDMETHODCALLTYPE InitTargetBuffer(const BITMAPINFOHEADER* format, LONG width, LONG height) override;
    HRESULT STDMETHODCALLTYPE GetTargetBuffer(BYTE** buffer, BOOL takeQueued) override;
    HRESULT STDMETHODCALLTYPE GetMediaInfo(void* unused) override;
    HRESULT STDMETHODCALLTYPE ClearFrameQueue() override;
    HRESULT STDMETHODCALLTYPE ResetTargetBuffer() override;
    HRESULT STDMETHODCALLTYPE IsFrameMissing() override;
    HRESULT STDMETHODCALLTYPE SetTargetBuffer(BYTE* buffer) override;

    // What the input pin proposes, read under the filter lock: the target header, the picture
    // rectangle and the subtype. False while there is no target buffer.
    bool TargetFormat(BITMAPINFOHEADER* header, LONG* width, LONG* height, GUID* subtype);
    // For inspection: pictures queued, and rendered minus taken.
    size_t QueuedPictures();
    int32_t RenderedCount();

private:
    ZeRenderTarget m_target;
};

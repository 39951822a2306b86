// The push source of the decoding graph. It keeps the video stream's format and description, has
// one output pin and no thread: the frame service asks it for a sample buffer, copies a compressed
// frame into it and calls Decode, which delivers the sample downstream on the caller's thread.
#pragma once

#include <memory>

#include "dshow/baseclasses/base_filter.h"
#include "dshow/baseclasses/critical_section.h"
#include "graph/ze_graph_interfaces.h"
#include "graph/ze_source_format.h"

class CZEVideoSourceOutputPin;

// The filter's lock, in a base of its own so that it exists before CBaseFilter is handed it and
// outlives everything that uses it.
struct ZeSourceFilterLock {
    CCritSec m_filterLock;
};

class CZEVideoSourceFilter : private ZeSourceFilterLock, public CBaseFilter, public IZEVideoSourceFilter {
public:
    CZEVideoSourceFilter(LPUNKNOWN outer, HRESULT* phr);
    ~CZEVideoSourceFilter() override;

    DECLARE_IUNKNOWN
    HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override;

    int GetPinCount() override;
    CBasePin* GetPin(int n) override;
    // Called by the pin when it is made: the filter's one pin.
    HRESULT AddPin(CZEVideoSourceOutputPin* pin);

    // IZEVideoSourceFilter
    HRESULT STDMETHODCALLTYPE GetSampleProps(ALLOCATOR_PROPERTIES* props, AM_MEDIA_TYPE* type) override;
    HRESULT STDMETHODCALLTYPE GetSampleBuffer(BYTE** data) override;
    HRESULT STDMETHODCALLTYPE SetStreamInfo(const BITMAPINFOHEADER* header,
                                            const ze_video_stream_desc* streamHeader) override;
    HRESULT STDMETHODCALLTYPE SetMediaInfo(const BITMAPINFOHEADER* header, const ze_video_stream_desc* desc) override;
    HRESULT STDMETHODCALLTYPE Decode() override;
    HRESULT STDMETHODCALLTYPE SetDiscontinuity(BOOL discontinuity) override;
    HRESULT STDMETHODCALLTYPE SetSyncPoint(BOOL syncPoint) override;

    // For the pin, under the filter lock.
    const ZeSourceFormat& Format() const { return m_format; }
    const ze_video_stream_desc& StreamHeader() const { return m_streamHeader; }

private:
    ZeSourceFormat m_format;
    ze_video_stream_desc m_streamHeader;
    std::unique_ptr<CZEVideoSourceOutputPin> m_ownedPin;
    CZEVideoSourceOutputPin* m_outputPin = nullptr;
};

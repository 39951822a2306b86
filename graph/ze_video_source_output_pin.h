// The one output pin of the source filter. It offers the stream's compressed format, takes the
// buffer size of one picture from the connection type, and hands out one sample at a time: the
// frame service fills it and Deliver sends it to the decoder on the caller's thread.
#pragma once

#include "dshow/baseclasses/output_pin.h"
#include "graph/ze_com_ref.h"

class CZEVideoSourceFilter;

class CZEVideoSourceOutputPin : public CBaseOutputPin {
public:
    // Registers itself with the filter. Shares the filter's lock.
    CZEVideoSourceOutputPin(CZEVideoSourceFilter* filter, CCritSec* lock, HRESULT* phr);
    ~CZEVideoSourceOutputPin() override;

    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT GetMediaType(int position, CMediaType* type) override;
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override;

    // Drops any sample still held and takes a new one from the allocator; *data is its buffer.
    HRESULT GetSampleBuffer(BYTE** data);
    HRESULT SetDiscontinuity(BOOL discontinuity);
    HRESULT SetSyncPoint(BOOL syncPoint);
    // Sends the held sample on, stamped 0 to 40 ms, and lets go of it whatever the answer.
    HRESULT Deliver();
    using CBaseOutputPin::Deliver;

    // What the allocator granted at connection.
    const ALLOCATOR_PROPERTIES& ActualProps() const { return m_actualProps; }
    // The type of the current connection (zeroed while unconnected).
    const CMediaType& ConnectionType() const { return m_mt; }

private:
    CZEVideoSourceFilter* const m_filter;
    ZeComRef<IMediaSample> m_currentSample;
    ALLOCATOR_PROPERTIES m_actualProps{};
};

// CBaseOutputPin: an output pin that delivers samples into the connected pin's IMemInputPin.
#pragma once

#include "dshow/baseclasses/base_pin.h"

// Connection: CheckConnect requires IMemInputPin on the peer; CompleteConnect chooses the allocator
// (DecideAllocator): the input pin's own first, sized by DecideBufferSize and announced with
// NotifyAllocator; failing that a CMemAllocator of this pin's. BreakConnect decommits and drops both.
// Streaming: Active commits the allocator and Inactive decommits it, so GetDeliveryBuffer fails with
// VFW_E_NOT_COMMITTED while the filter is stopped. Deliver and the Deliver* forwards check no state:
// they answer VFW_E_NOT_CONNECTED without a peer and otherwise pass the peer's answer on unchanged.
class CBaseOutputPin : public CBasePin {
public:
    CBaseOutputPin(const char* objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* phr, const char* pinName);
    ~CBaseOutputPin() override;

    HRESULT CompleteConnect(IPin* receivePin) override;
    HRESULT CheckConnect(IPin* pin) override;
    HRESULT BreakConnect() override;
    HRESULT Active() override;
    HRESULT Inactive() override;

    // Chooses and sizes the allocator for `pin`; `allocator` receives it with a reference.
    virtual HRESULT DecideAllocator(IMemInputPin* pin, IMemAllocator** allocator);
    // Sets the allocator's properties for this connection; `request` holds the input pin's wishes.
    virtual HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) = 0;
    // This pin's own allocator, used when the input pin offers none that works.
    virtual HRESULT InitAllocator(IMemAllocator** allocator);

    virtual HRESULT GetDeliveryBuffer(IMediaSample** sample, REFERENCE_TIME* start, REFERENCE_TIME* end,
                                      DWORD flags);
    virtual HRESULT Deliver(IMediaSample* sample);
    virtual HRESULT DeliverEndOfStream();
    virtual HRESULT DeliverBeginFlush();
    virtual HRESULT DeliverEndFlush();
    virtual HRESULT DeliverNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate);

    // Calls that only an input pin takes.
    HRESULT STDMETHODCALLTYPE EndOfStream() override;
    HRESULT STDMETHODCALLTYPE BeginFlush() override;
    HRESULT STDMETHODCALLTYPE EndFlush() override;

    IMemAllocator* Allocator() const { return m_pAllocator.Get(); }
    IMemInputPin* InputPin() const { return m_pInputPin.Get(); }

protected:
    CInterfacePtr<IMemAllocator> m_pAllocator;
    CInterfacePtr<IMemInputPin> m_pInputPin;
};

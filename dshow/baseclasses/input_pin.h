// CBaseInputPin: an input pin that takes samples through IMemInputPin.
#pragma once

#include "dshow/baseclasses/base_pin.h"

// Streaming checks (CheckStreaming, the first step of Receive), in this order:
//   filter stopped -> VFW_E_WRONG_STATE; flushing -> S_FALSE; after a runtime error -> VFW_E_RUNTIME_ERROR;
//   otherwise S_OK.
// Flags: BeginFlush sets flushing; EndFlush clears flushing and the runtime error; Inactive clears
// both too and decommits the allocator.
// Receive caches the sample's properties (SampleProps) for the derived class. A sample that brings a
// media type this pin does not accept is an error at run time: the pin remembers it, sends EC_ERRORABORT
// and answers VFW_E_INVALIDMEDIATYPE, and refuses further samples until a flush or a stop.
// Locking: the allocator members are guarded by the filter lock (m_pLock); Receive takes no lock of
// its own, derived classes serialise it (CTransformFilter with its receive lock, the renderer with its
// interface lock).
class CBaseInputPin : public CBasePin, public IMemInputPin {
public:
    CBaseInputPin(const char* objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* phr, const char* pinName);
    ~CBaseInputPin() override;

    DECLARE_IUNKNOWN
    HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override;

    // IMemInputPin
    HRESULT STDMETHODCALLTYPE GetAllocator(IMemAllocator** allocator) override;
    HRESULT STDMETHODCALLTYPE NotifyAllocator(IMemAllocator* allocator, BOOL readOnly) override;
    HRESULT STDMETHODCALLTYPE GetAllocatorRequirements(ALLOCATOR_PROPERTIES* properties) override;
    HRESULT STDMETHODCALLTYPE Receive(IMediaSample* sample) override;
    HRESULT STDMETHODCALLTYPE ReceiveMultiple(IMediaSample** samples, LONG count, LONG* processed) override;
    HRESULT STDMETHODCALLTYPE ReceiveCanBlock() override;

    // IPin
    HRESULT STDMETHODCALLTYPE BeginFlush() override;
    HRESULT STDMETHODCALLTYPE EndFlush() override;

    // IQualityControl: input pins pass quality messages upstream through PassNotify.
    HRESULT STDMETHODCALLTYPE Notify(IBaseFilter* self, Quality q) override;

    HRESULT BreakConnect() override;
    HRESULT Inactive() override;
    virtual HRESULT CheckStreaming();
    // Hands a quality message to the sink set with SetSink, or else to the upstream pin.
    HRESULT PassNotify(Quality& q);

    BOOL IsReadOnly() const { return m_bReadOnly; }
    BOOL IsFlushing() const { return m_bFlushing; }
    AM_SAMPLE2_PROPERTIES* SampleProps() { return &m_SampleProps; }
    IMemAllocator* Allocator() const { return m_pAllocator.Get(); }

protected:
    CInterfacePtr<IMemAllocator> m_pAllocator;
    BOOL m_bReadOnly = FALSE;
    std::atomic<BOOL> m_bFlushing{FALSE};
    AM_SAMPLE2_PROPERTIES m_SampleProps{};
};

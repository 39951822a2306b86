// CBasePin: IPin with connection negotiation, and IQualityControl.
#pragma once

#include "dshow/baseclasses/base_filter.h"
#include "dshow/baseclasses/media_type.h"
#include "dshow/baseclasses/ref_time.h"
#include "dshow/baseclasses/wide_name.h"

// Lifetime: a pin lives as long as its filter and counts its references on the filter.
// Connection (under the filter lock, m_pLock): the connecting pin (Connect) and the receiving pin
// (ReceiveConnection) both refuse when already connected (VFW_E_ALREADY_CONNECTED) or when the filter is
// not stopped (VFW_E_NOT_STOPPED). Connect agrees a type in AgreeMediaType:
//   - a fully specified type is tried alone;
//   - otherwise the receiving pin's types are tried first, then this pin's own (the other way round
//     with m_bTryMyTypesFirst), each only if it matches the given partial type;
//   - each candidate: CheckConnect, CheckMediaType (anything but S_OK: VFW_E_TYPE_NOT_ACCEPTED),
//     SetMediaType, the peer's ReceiveConnection, then CompleteConnect; a failure undoes the step
//     with BreakConnect;
//   - nothing accepted: VFW_E_NO_ACCEPTABLE_TYPES, or the first telling error of a candidate.
// Disconnect: VFW_E_NOT_STOPPED unless stopped; S_FALSE when not connected.
class CBasePin : public CUnknown, public IPin, public IQualityControl {
public:
    CBasePin(const char* objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* phr, const char* pinName,
             PIN_DIRECTION direction);
    ~CBasePin() override;

    DECLARE_IUNKNOWN
    HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override;
    // References on a pin are references on its filter.
    ULONG STDMETHODCALLTYPE NonDelegatingAddRef() override;
    ULONG STDMETHODCALLTYPE NonDelegatingRelease() override;

    // IPin
    HRESULT STDMETHODCALLTYPE Connect(IPin* receivePin, const AM_MEDIA_TYPE* type) override;
    HRESULT STDMETHODCALLTYPE ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) override;
    HRESULT STDMETHODCALLTYPE Disconnect() override;
    HRESULT STDMETHODCALLTYPE ConnectedTo(IPin** pin) override;
    HRESULT STDMETHODCALLTYPE ConnectionMediaType(AM_MEDIA_TYPE* type) override;
    HRESULT STDMETHODCALLTYPE QueryPinInfo(PIN_INFO* info) override;
    HRESULT STDMETHODCALLTYPE QueryDirection(PIN_DIRECTION* direction) override;
    HRESULT STDMETHODCALLTYPE QueryId(LPWSTR* id) override;
    HRESULT STDMETHODCALLTYPE QueryAccept(const AM_MEDIA_TYPE* type) override;
    HRESULT STDMETHODCALLTYPE EnumMediaTypes(IEnumMediaTypes** types) override;
    HRESULT STDMETHODCALLTYPE QueryInternalConnections(IPin** pins, ULONG* count) override;
    HRESULT STDMETHODCALLTYPE EndOfStream() override;
    HRESULT STDMETHODCALLTYPE BeginFlush() override = 0;
    HRESULT STDMETHODCALLTYPE EndFlush() override = 0;
    // Stores the segment (start, stop, rate) for CurrentStartTime and friends.
    HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;

    // IQualityControl: the base pin keeps the sink and handles no messages.
    HRESULT STDMETHODCALLTYPE Notify(IBaseFilter* self, Quality q) override;
    HRESULT STDMETHODCALLTYPE SetSink(IQualityControl* sink) override;

    // What a derived pin decides.
    virtual HRESULT CheckMediaType(const CMediaType* type) = 0;
    virtual HRESULT SetMediaType(const CMediaType* type);
    virtual HRESULT CheckConnect(IPin* pin);
    virtual HRESULT BreakConnect();
    virtual HRESULT CompleteConnect(IPin* receivePin);
    // The preferred types, from 0; VFW_S_NO_MORE_ITEMS past the last. The base pin offers none.
    virtual HRESULT GetMediaType(int position, CMediaType* type);
    virtual LONG GetMediaTypeVersion();
    void IncrementTypeVersion();
    // Streaming hooks the filter calls on connected pins when it starts, stops and runs.
    virtual HRESULT Active();
    virtual HRESULT Inactive();
    virtual HRESULT Run(REFERENCE_TIME start);

    BOOL IsConnected() const { return m_Connected ? TRUE : FALSE; }
    IPin* GetConnected() const { return m_Connected.Get(); }
    BOOL IsStopped() const { return m_pFilter->IsStopped(); }
    // Whether a connection may be made now, from either end: VFW_E_ALREADY_CONNECTED or
    // VFW_E_NOT_STOPPED (unless the pin reconnects while active), else S_OK. Call under the pin's lock.
    HRESULT CanConnectNow() const
    {
        if (m_Connected)
            return VFW_E_ALREADY_CONNECTED;
        return !IsStopped() && !m_bCanReconnectWhenActive ? VFW_E_NOT_STOPPED : S_OK;
    }
    const WCHAR* Name() const { return m_name.c_str(); }
    CMediaType& CurrentMediaType() { return m_mt; }
    REFERENCE_TIME CurrentStartTime() const { return m_tStart; }
    REFERENCE_TIME CurrentStopTime() const { return m_tStop; }
    double CurrentRate() const { return m_dRate; }
    CBaseFilter* Filter() const { return m_pFilter; }

protected:
    virtual HRESULT AgreeMediaType(IPin* receivePin, const CMediaType* type);
    HRESULT AttemptConnection(IPin* receivePin, const CMediaType* type);
    HRESULT TryMediaTypes(IPin* receivePin, const CMediaType* type, IEnumMediaTypes* candidates);
    HRESULT DisconnectInternal();
    void ClearConnection();

    CWideName m_name;
    CInterfacePtr<IPin> m_Connected;
    const PIN_DIRECTION m_dir;
    CCritSec* const m_pLock;
    CBaseFilter* const m_pFilter;
    IQualityControl* m_pQSink = nullptr;
    std::atomic<LONG> m_TypeVersion{1};
    CMediaType m_mt;
    REFERENCE_TIME m_tStart = 0;
    REFERENCE_TIME m_tStop = MAX_TIME;
    double m_dRate = 1.0;
    std::atomic<bool> m_bRunTimeError{false};
    bool m_bCanReconnectWhenActive = false;
    bool m_bTryMyTypesFirst = false;
};

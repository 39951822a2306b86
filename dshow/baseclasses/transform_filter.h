// CTransformFilter with CTransformInputPin and CTransformOutputPin: a filter with one input and one
// output that turns each input sample into output samples on the delivering thread.
#pragma once

#include <memory>

#include "dshow/baseclasses/input_pin.h"
#include "dshow/baseclasses/output_pin.h"

class CTransformFilter;

// Receive runs the base checks first and reaches the filter only when they answer S_OK; so a
// delivering source sees S_FALSE while the filter flushes and VFW_E_WRONG_STATE while it is stopped.
class CTransformInputPin : public CBaseInputPin {
public:
    CTransformInputPin(const char* objectName, CTransformFilter* filter, HRESULT* phr, const char* pinName);

    HRESULT STDMETHODCALLTYPE Receive(IMediaSample* sample) override;
    HRESULT STDMETHODCALLTYPE EndOfStream() override;
    HRESULT STDMETHODCALLTYPE BeginFlush() override;
    HRESULT STDMETHODCALLTYPE EndFlush() override;
    HRESULT STDMETHODCALLTYPE NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;

    HRESULT CheckConnect(IPin* pin) override;
    HRESULT BreakConnect() override;
    HRESULT CompleteConnect(IPin* receivePin) override;
    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT SetMediaType(const CMediaType* type) override;
    // VFW_E_NOT_CONNECTED while the output is unconnected, then the base checks.
    HRESULT CheckStreaming() override;

protected:
    CTransformFilter* const m_pTransformFilter;
};

class CTransformOutputPin : public CBaseOutputPin {
public:
    CTransformOutputPin(const char* objectName, CTransformFilter* filter, HRESULT* phr, const char* pinName);

    HRESULT CheckConnect(IPin* pin) override;
    HRESULT BreakConnect() override;
    HRESULT CompleteConnect(IPin* receivePin) override;
    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT SetMediaType(const CMediaType* type) override;
    HRESULT GetMediaType(int position, CMediaType* type) override;
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override;
    HRESULT STDMETHODCALLTYPE Notify(IBaseFilter* self, Quality q) override;

protected:
    CTransformFilter* const m_pTransformFilter;
};

// One output per input by default: Receive takes an output buffer (InitializeOutputSample copies the
// input's times, sync point, discontinuity and preroll), calls Transform and delivers the result;
// S_FALSE from Transform means "nothing to deliver". A filter that makes zero or several outputs per
// input (a decoder with delay) overrides Receive instead and uses InitializeOutputSample and
// DeliverOutput; EndOfStream, BeginFlush, EndFlush and NewSegment are its hooks for draining and
// resetting, each forwarding downstream when the base version is called.
// States: the base filter's. Pause from Stopped calls StartStreaming (under the receive lock), Stop
// calls StopStreaming after the input pin has gone inactive. A filter whose input is not connected
// delivers end of stream downstream on Pause.
// Locks, in this order: m_csFilter (states, connection; the filter lock of the base classes), then
// m_csReceive (held for the whole of Receive and EndOfStream on the delivering thread).
class CTransformFilter : public CBaseFilter {
public:
    CTransformFilter(const char* name, LPUNKNOWN outer, REFCLSID clsid, HRESULT* phr = nullptr);
    ~CTransformFilter() override;

    int GetPinCount() override;
    CBasePin* GetPin(int n) override;
    HRESULT STDMETHODCALLTYPE FindPin(LPCWSTR id, IPin** pin) override;

    HRESULT STDMETHODCALLTYPE Stop() override;
    HRESULT STDMETHODCALLTYPE Pause() override;

    // What a derived filter must say.
    virtual HRESULT Transform(IMediaSample* in, IMediaSample* out) = 0;
    virtual HRESULT CheckInputType(const CMediaType* in) = 0;
    virtual HRESULT CheckTransform(const CMediaType* in, const CMediaType* out) = 0;
    virtual HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) = 0;
    virtual HRESULT GetMediaType(int position, CMediaType* type) = 0;

    // Hooks with default behaviour.
    virtual HRESULT StartStreaming();
    virtual HRESULT StopStreaming();
    virtual HRESULT AlterQuality(Quality q);
    virtual HRESULT SetMediaType(PIN_DIRECTION direction, const CMediaType* type);
    virtual HRESULT CheckConnect(PIN_DIRECTION direction, IPin* pin);
    virtual HRESULT BreakConnect(PIN_DIRECTION direction);
    virtual HRESULT CompleteConnect(PIN_DIRECTION direction, IPin* receivePin);
    virtual HRESULT Receive(IMediaSample* sample);
    virtual HRESULT EndOfStream();
    virtual HRESULT BeginFlush();
    virtual HRESULT EndFlush();
    virtual HRESULT NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate);

    // An output buffer carrying the properties of the input sample being received.
    virtual HRESULT InitializeOutputSample(IMediaSample* in, IMediaSample** out);
    // Sends one output sample downstream; the downstream answer, unchanged.
    HRESULT DeliverOutput(IMediaSample* out);

    CTransformInputPin* Input() const { return m_pInput.get(); }
    CTransformOutputPin* Output() const { return m_pOutput.get(); }

    CCritSec m_csFilter;
    CCritSec m_csReceive;

protected:
    friend class CTransformInputPin;
    friend class CTransformOutputPin;

    bool m_bEOSDelivered = false;
    bool m_bSampleSkipped = false;
    bool m_bQualityChanged = false;
    std::unique_ptr<CTransformInputPin> m_pInput;
    std::unique_ptr<CTransformOutputPin> m_pOutput;
};

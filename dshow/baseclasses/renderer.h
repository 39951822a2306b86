// CBaseRenderer and its input pin CRendererInputPin: a filter at the end of a stream that shows each
// sample (DoRenderSample) at its time.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>

#include "dshow/baseclasses/am_event.h"
#include "dshow/baseclasses/input_pin.h"

class CBaseRenderer;

// Forwards to the renderer and reports failed receives to the graph (EC_ERRORABORT) when the failure
// is not just the stopped or flushing state.
class CRendererInputPin : public CBaseInputPin {
public:
    CRendererInputPin(CBaseRenderer* renderer, HRESULT* phr, const char* pinName);

    HRESULT STDMETHODCALLTYPE Receive(IMediaSample* sample) override;
    HRESULT STDMETHODCALLTYPE EndOfStream() override;
    HRESULT STDMETHODCALLTYPE BeginFlush() override;
    HRESULT STDMETHODCALLTYPE EndFlush() override;

    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT SetMediaType(const CMediaType* type) override;
    HRESULT CompleteConnect(IPin* receivePin) override;
    HRESULT BreakConnect() override;
    HRESULT Active() override;
    HRESULT Inactive() override;

private:
    CBaseRenderer* const m_pRenderer;
};

// Sample flow. Receive runs on the delivering thread:
//   1. Under the interface lock the input pin's checks run; any answer but S_OK becomes E_FAIL
//      (stopped, flushing, after a runtime error). A second sample while one is pending, or a sample
//      after end of stream or abort, gets E_UNEXPECTED. The sample becomes the pending sample.
//   2. Running: the sample is scheduled. Without a clock, or without a time, it is due at once;
//      with both it is due at stream time (IReferenceClock::AdviseTime(m_tStart, start)). A stop time
//      before the start time drops it silently.
//      Paused: OnReceiveFirstSample, then the pause completes (Ready); the sample is scheduled when Run
//      starts streaming.
//   3. The thread waits for the sample's time. Stop and BeginFlush release it without rendering.
//   4. DoRenderSample runs on the delivering thread, under both locks; Receive then returns S_OK.
// States: Pause of a connected renderer without a pending sample or end of stream answers S_FALSE, and
// GetState answers VFW_S_STATE_INTERMEDIATE until a sample or end of stream completes the pause. Run
// schedules the pending sample. Stop decommits the allocator, releases a waiting thread, forgets end of
// stream and waits for a Receive in progress to leave. End of stream sends EC_COMPLETE once the renderer
// is running and has nothing pending.
// Locks, in this order: m_InterfaceLock (the filter lock: states, connection, receive checks), then
// m_RendererLock (pending sample, end of stream, advise). A receiving thread holds neither while it
// waits for its render time, and marks itself out of Receive before taking them again, so Stop and
// BeginFlush may wait for it while holding both.
class CBaseRenderer : public CBaseFilter {
public:
    CBaseRenderer(REFCLSID clsid, const char* name, LPUNKNOWN outer, HRESULT* phr);
    ~CBaseRenderer() override;

    // IMediaFilter
    HRESULT STDMETHODCALLTYPE Stop() override;
    HRESULT STDMETHODCALLTYPE Pause() override;
    HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME start) override;
    HRESULT STDMETHODCALLTYPE GetState(DWORD milliseconds, FILTER_STATE* state) override;

    int GetPinCount() override;
    CBasePin* GetPin(int n) override;

    // What a derived renderer decides and does.
    virtual HRESULT CheckMediaType(const CMediaType* type) = 0;
    virtual HRESULT DoRenderSample(IMediaSample* sample) = 0;
    virtual HRESULT SetMediaType(const CMediaType* type);
    virtual HRESULT CompleteConnect(IPin* receivePin);
    virtual HRESULT BreakConnect();
    virtual void OnReceiveFirstSample(IMediaSample* sample);
    virtual void OnRenderStart(IMediaSample* sample);
    virtual void OnRenderEnd(IMediaSample* sample);
    virtual HRESULT OnStartStreaming();
    virtual HRESULT OnStopStreaming();
    virtual void OnWaitStart();
    virtual void OnWaitEnd();
    // S_OK: draw now; S_FALSE: wait for the sample's time on the clock; a failure drops the sample.
    virtual HRESULT ShouldDrawSampleNow(IMediaSample* sample, REFERENCE_TIME* start, REFERENCE_TIME* end);

    // Steps of the sample flow, called by the input pin.
    virtual HRESULT Receive(IMediaSample* sample);
    virtual HRESULT EndOfStream();
    virtual HRESULT BeginFlush();
    virtual HRESULT EndFlush();
    virtual HRESULT Active();
    virtual HRESULT Inactive();

    HRESULT NotifyEndOfStream();
    HRESULT ResetEndOfStream();
    BOOL IsEndOfStream() { return m_bEOS; }
    BOOL IsEndOfStreamDelivered() { return m_bEOSDelivered; }
    BOOL IsStreaming() { return m_bStreaming; }
    BOOL IsAborting() { return m_bAbort; }
    BOOL HaveCurrentSample();
    CRendererInputPin* InputPin() const { return m_pInputPin.get(); }

    CCritSec m_InterfaceLock;
    CCritSec m_RendererLock;

protected:
    // Completes a pause (and every other state change) for GetState, or marks it incomplete.
    void Ready() { m_evComplete.Set(); }
    void NotReady() { m_evComplete.Reset(); }
    HRESULT CompleteStateChange(FILTER_STATE oldState);
    HRESULT StartStreaming();
    HRESULT StopStreaming();
    HRESULT SendEndOfStream();
    // Lets the delivering thread wait for its render time, or (false) releases it and keeps it from
    // waiting until allowed again.
    void SourceThreadCanWait(bool canWait);
    bool ScheduleSample(IMediaSample* sample);
    HRESULT GetSampleTimes(IMediaSample* sample, REFERENCE_TIME* start, REFERENCE_TIME* end);
    HRESULT WaitForRenderTime();
    HRESULT Render(IMediaSample* sample);
    HRESULT CancelNotification();
    void ClearPendingSample();
    HRESULT PrepareReceive(IMediaSample* sample, bool* paused);
    void SetInReceive(bool inReceive);
    void WaitForReceiveToComplete();

    std::unique_ptr<CRendererInputPin> m_pInputPin;
    CInterfacePtr<IMediaSample> m_pMediaSample;
    bool m_bEOS = false;
    bool m_bEOSDelivered = false;
    bool m_bAbort = false;
    bool m_bStreaming = false;
    DWORD_PTR m_dwAdvise = 0;
    CAMEvent m_RenderEvent{true};
    CAMEvent m_evComplete{true};
    std::atomic<bool> m_bThreadCanWait{true};

private:
    std::mutex m_receiveMutex;
    std::condition_variable m_receiveLeft;
    bool m_bInReceive = false;
};

// The renderer's states, scheduling and sample flow.
#include "dshow/baseclasses/renderer.h"

#include <new>

CBaseRenderer::CBaseRenderer(REFCLSID clsid, const char* name, LPUNKNOWN outer, HRESULT* phr)
    : CBaseFilter(name, outer, &m_InterfaceLock, clsid, phr)
{
    m_pInputPin = std::make_unique<CRendererInputPin>(this, phr, "In");
    Ready();
}

CBaseRenderer::~CBaseRenderer() = default;

int CBaseRenderer::GetPinCount() { return 1; }

CBasePin* CBaseRenderer::GetPin(int n) { return n == 0 ? m_pInputPin.get() : nullptr; }

HRESULT CBaseRenderer::SetMediaType(const CMediaType* /*type*/) { return S_OK; }
HRESULT CBaseRenderer::CompleteConnect(IPin* /*receivePin*/) { return S_OK; }
void CBaseRenderer::OnReceiveFirstSample(IMediaSample* /*sample*/) {}
void CBaseRenderer::OnRenderStart(IMediaSample* /*sample*/) {}
void CBaseRenderer::OnRenderEnd(IMediaSample* /*sample*/) {}
HRESULT CBaseRenderer::OnStartStreaming() { return S_OK; }
HRESULT CBaseRenderer::OnStopStreaming() { return S_OK; }
void CBaseRenderer::OnWaitStart() {}
void CBaseRenderer::OnWaitEnd() {}
HRESULT CBaseRenderer::Active() { return S_OK; }

HRESULT CBaseRenderer::ShouldDrawSampleNow(IMediaSample* /*sample*/, REFERENCE_TIME* /*start*/,
                                           REFERENCE_TIME* /*end*/)
{
    return S_FALSE;
}

HRESULT CBaseRenderer::BreakConnect()
{
    CAutoLock hold(&m_RendererLock);
    if (!m_pInputPin->IsConnected())
        return S_FALSE;
    if (m_State != State_Stopped)
        return VFW_E_NOT_STOPPED;
    m_bEOS = false;
    m_bEOSDelivered = false;
    m_bAbort = false;
    m_pMediaSample.Reset();
    return S_OK;
}

HRESULT CBaseRenderer::Inactive()
{
    ClearPendingSample();
    return S_OK;
}

BOOL CBaseRenderer::HaveCurrentSample()
{
    CAutoLock hold(&m_RendererLock);
    return m_pMediaSample ? TRUE : FALSE;
}

// ---- states ----

HRESULT CBaseRenderer::CompleteStateChange(FILTER_STATE oldState)
{
    if (!m_pInputPin->IsConnected() || IsEndOfStream() || (HaveCurrentSample() && oldState != State_Stopped)) {
        Ready();
        return S_OK;
    }
    NotReady();
    return S_FALSE;
}

HRESULT STDMETHODCALLTYPE CBaseRenderer::Stop()
{
    CAutoLock hold(&m_InterfaceLock);
    if (m_State == State_Stopped)
        return S_OK;
    if (!m_pInputPin->IsConnected()) {
        m_State = State_Stopped;
        return S_OK;
    }
    // Inactive on the pin decommits the allocator (waking a source blocked for a buffer) and drops
    // the pending sample.
    const HRESULT hr = CBaseFilter::Stop();
    StopStreaming();
    SourceThreadCanWait(false);
    ResetEndOfStream();
    CancelNotification();
    Ready();
    WaitForReceiveToComplete();
    m_bAbort = false;
    return hr;
}

HRESULT STDMETHODCALLTYPE CBaseRenderer::Pause()
{
    CAutoLock hold(&m_InterfaceLock);
    const FILTER_STATE oldState = m_State;
    if (oldState == State_Paused)
        return CompleteStateChange(State_Paused);
    if (!m_pInputPin->IsConnected()) {
        m_State = State_Paused;
        return CompleteStateChange(State_Paused);
    }
    if (oldState == State_Stopped) {
        m_bAbort = false;
        ClearPendingSample();
    }
    const HRESULT hr = CBaseFilter::Pause();
    if (FAILED(hr))
        return hr;
    StopStreaming();
    SourceThreadCanWait(true);
    CancelNotification();
    if (IMemAllocator* allocator = m_pInputPin->Allocator())
        allocator->Commit();
    return CompleteStateChange(oldState);
}

HRESULT STDMETHODCALLTYPE CBaseRenderer::Run(REFERENCE_TIME start)
{
    CAutoLock hold(&m_InterfaceLock);
    if (m_State == State_Running)
        return S_OK;
    if (!m_pInputPin->IsConnected()) {
        // Nothing will ever arrive: the stream is complete as soon as it runs.
        NotifyEvent(EC_COMPLETE, S_OK, 0);
        m_State = State_Running;
        Ready();
        return S_OK;
    }
    HRESULT hr = CBaseFilter::Run(start);
    if (FAILED(hr))
        return hr;
    Ready();
    SourceThreadCanWait(true);
    return StartStreaming();
}

HRESULT STDMETHODCALLTYPE CBaseRenderer::GetState(DWORD milliseconds, FILTER_STATE* state)
{
    if (state == nullptr)
        return E_POINTER;
    const bool complete = m_evComplete.Wait(milliseconds);
    CAutoLock hold(&m_InterfaceLock);
    *state = m_State;
    return complete ? S_OK : VFW_S_STATE_INTERMEDIATE;
}

HRESULT CBaseRenderer::StartStreaming()
{
    CAutoLock hold(&m_RendererLock);
    if (m_bStreaming)
        return S_OK;
    m_bStreaming = true;
    OnStartStreaming();
    if (m_pMediaSample) {
        if (!ScheduleSample(m_pMediaSample.Get())) {
            // The held sample cannot be shown; its waiting thread returns without rendering it.
            ClearPendingSample();
            m_RenderEvent.Set();
            return SendEndOfStream();
        }
        return S_OK;
    }
    return SendEndOfStream();
}

HRESULT CBaseRenderer::StopStreaming()
{
    CAutoLock hold(&m_RendererLock);
    if (m_bStreaming) {
        m_bStreaming = false;
        OnStopStreaming();
    }
    return S_OK;
}

void CBaseRenderer::SourceThreadCanWait(bool canWait)
{
    m_bThreadCanWait = canWait;
    if (!canWait)
        m_RenderEvent.Set();
}

// ---- end of stream ----

HRESULT CBaseRenderer::EndOfStream()
{
    if (m_State == State_Stopped)
        return S_OK;
    m_bEOS = true;
    Ready();
    if (m_pMediaSample)
        return S_OK;
    return SendEndOfStream();
}

HRESULT CBaseRenderer::SendEndOfStream()
{
    if (!m_bEOS || m_bEOSDelivered || !m_bStreaming)
        return S_OK;
    return NotifyEndOfStream();
}

HRESULT CBaseRenderer::NotifyEndOfStream()
{
    CAutoLock hold(&m_RendererLock);
    m_bEOSDelivered = true;
    return NotifyEvent(EC_COMPLETE, S_OK, 0);
}

HRESULT CBaseRenderer::ResetEndOfStream()
{
    CAutoLock hold(&m_RendererLock);
    m_bEOS = false;
    m_bEOSDelivered = false;
    return S_OK;
}

// ---- flushing ----

HRESULT CBaseRenderer::BeginFlush()
{
    if (m_State == State_Paused)
        NotReady();
    SourceThreadCanWait(false);
    CancelNotification();
    ClearPendingSample();
    WaitForReceiveToComplete();
    return S_OK;
}

HRESULT CBaseRenderer::EndFlush()
{
    SourceThreadCanWait(true);
    return S_OK;
}

// ---- scheduling ----

HRESULT CBaseRenderer::GetSampleTimes(IMediaSample* sample, REFERENCE_TIME* start, REFERENCE_TIME* end)
{
    if (FAILED(sample->GetTime(start, end)))
        return S_OK;
    if (*end < *start)
        return VFW_E_START_TIME_AFTER_END;
    if (!m_pClock)
        return S_OK;
    return ShouldDrawSampleNow(sample, start, end);
}

bool CBaseRenderer::ScheduleSample(IMediaSample* sample)
{
    REFERENCE_TIME start = 0;
    REFERENCE_TIME end = 0;
    HRESULT hr = GetSampleTimes(sample, &start, &end);
    if (FAILED(hr))
        return false;
    if (hr == S_OK) {
        m_RenderEvent.Set();
        return true;
    }
    m_dwAdvise = 0;
    hr = m_pClock->AdviseTime(m_tStart, start, m_RenderEvent.Handle(), &m_dwAdvise);
    return SUCCEEDED(hr);
}

HRESULT CBaseRenderer::CancelNotification()
{
    CAutoLock hold(&m_RendererLock);
    const DWORD_PTR advise = m_dwAdvise;
    if (advise != 0) {
        m_dwAdvise = 0;
        if (m_pClock)
            m_pClock->Unadvise(advise);
    }
    // A released thread must stay released; otherwise the next sample starts from a cleared event.
    if (m_bThreadCanWait)
        m_RenderEvent.Reset();
    return advise != 0 ? S_OK : S_FALSE;
}

void CBaseRenderer::ClearPendingSample()
{
    CAutoLock hold(&m_RendererLock);
    m_pMediaSample.Reset();
}

HRESULT CBaseRenderer::WaitForRenderTime()
{
    OnWaitStart();
    m_RenderEvent.Wait(INFINITE);
    OnWaitEnd();
    return m_bThreadCanWait ? S_OK : VFW_E_STATE_CHANGED;
}

HRESULT CBaseRenderer::Render(IMediaSample* sample)
{
    OnRenderStart(sample);
    HRESULT hr = E_OUTOFMEMORY;
    try {
        hr = DoRenderSample(sample);
    } catch (const std::bad_alloc&) {
        // The derived renderer ran out of memory; Receive must still return normally.
    }
    OnRenderEnd(sample);
    return hr;
}

// ---- receiving ----

void CBaseRenderer::SetInReceive(bool inReceive)
{
    {
        std::lock_guard<std::mutex> hold(m_receiveMutex);
        m_bInReceive = inReceive;
    }
    if (!inReceive)
        m_receiveLeft.notify_all();
}

void CBaseRenderer::WaitForReceiveToComplete()
{
    std::unique_lock<std::mutex> hold(m_receiveMutex);
    m_receiveLeft.wait(hold, [this] { return !m_bInReceive; });
}

HRESULT CBaseRenderer::PrepareReceive(IMediaSample* sample, bool* paused)
{
    CAutoLock hold(&m_InterfaceLock);
    SetInReceive(true);
    HRESULT hr = m_pInputPin->CBaseInputPin::Receive(sample);
    if (hr != S_OK) {
        SetInReceive(false);
        return E_FAIL;
    }
    if (const AM_MEDIA_TYPE* brought = m_pInputPin->SampleProps()->pMediaType) {
        try {
            const CMediaType type(*brought);
            hr = m_pInputPin->SetMediaType(&type);
        } catch (const std::bad_alloc&) {
            hr = E_OUTOFMEMORY;
        }
        if (FAILED(hr)) {
            SetInReceive(false);
            return hr;
        }
    }
    CAutoLock holdSample(&m_RendererLock);
    if (m_pMediaSample || m_bEOS || m_bAbort) {
        Ready();
        SetInReceive(false);
        return E_UNEXPECTED;
    }
    m_RenderEvent.Reset();
    if (m_bStreaming && !ScheduleSample(sample)) {
        SetInReceive(false);
        return VFW_E_SAMPLE_REJECTED;
    }
    m_pMediaSample.Assign(sample);
    *paused = m_State == State_Paused;
    return S_OK;
}

HRESULT CBaseRenderer::Receive(IMediaSample* sample)
{
    bool paused = false;
    HRESULT hr = PrepareReceive(sample, &paused);
    if (FAILED(hr))
        return hr == VFW_E_SAMPLE_REJECTED ? S_OK : hr;

    if (paused) {
        // Out of Receive while re-taking the locks, so a Stop that holds them can finish.
        SetInReceive(false);
        {
            CAutoLock hold(&m_InterfaceLock);
            if (m_State == State_Stopped)
                return S_OK;
            SetInReceive(true);
            CAutoLock holdSample(&m_RendererLock);
            OnReceiveFirstSample(sample);
        }
        Ready();
    }

    hr = WaitForRenderTime();
    if (FAILED(hr)) {
        SetInReceive(false);
        return S_OK;
    }
    SetInReceive(false);

    CAutoLock hold(&m_InterfaceLock);
    if (m_State == State_Stopped)
        return S_OK;
    CAutoLock holdSample(&m_RendererLock);
    if (!m_pMediaSample)
        return S_OK;
    Render(m_pMediaSample.Get());
    ClearPendingSample();
    SendEndOfStream();
    CancelNotification();
    return S_OK;
}

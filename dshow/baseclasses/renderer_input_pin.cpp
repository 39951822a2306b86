// The renderer's input pin: locking around the renderer's steps and the abort report.
#include "dshow/baseclasses/renderer.h"

CRendererInputPin::CRendererInputPin(CBaseRenderer* renderer, HRESULT* phr, const char* pinName)
    : CBaseInputPin("CRendererInputPin", renderer, &renderer->m_InterfaceLock, phr, pinName), m_pRenderer(renderer)
{
}

HRESULT STDMETHODCALLTYPE CRendererInputPin::Receive(IMediaSample* sample)
{
    const HRESULT hr = m_pRenderer->Receive(sample);
    if (FAILED(hr)) {
        // Stopped and flushing are expected refusals; a real failure stops the stream once.
        CAutoLock hold(&m_pRenderer->m_InterfaceLock);
        if (!IsStopped() && !IsFlushing() && !m_pRenderer->IsAborting() && !m_bRunTimeError) {
            m_pRenderer->NotifyEvent(EC_ERRORABORT, hr, 0);
            {
                CAutoLock holdSample(&m_pRenderer->m_RendererLock);
                if (m_pRenderer->IsStreaming() && !m_pRenderer->IsEndOfStreamDelivered())
                    m_pRenderer->NotifyEndOfStream();
            }
            m_bRunTimeError = true;
        }
    }
    return hr;
}

HRESULT STDMETHODCALLTYPE CRendererInputPin::EndOfStream()
{
    CAutoLock hold(&m_pRenderer->m_InterfaceLock);
    CAutoLock holdSample(&m_pRenderer->m_RendererLock);
    HRESULT hr = CheckStreaming();
    if (hr != S_OK)
        return hr;
    hr = m_pRenderer->EndOfStream();
    return SUCCEEDED(hr) ? CBaseInputPin::EndOfStream() : hr;
}

HRESULT STDMETHODCALLTYPE CRendererInputPin::BeginFlush()
{
    CAutoLock hold(&m_pRenderer->m_InterfaceLock);
    {
        CAutoLock holdSample(&m_pRenderer->m_RendererLock);
        CBaseInputPin::BeginFlush();
        m_pRenderer->BeginFlush();
    }
    return m_pRenderer->ResetEndOfStream();
}

HRESULT STDMETHODCALLTYPE CRendererInputPin::EndFlush()
{
    CAutoLock hold(&m_pRenderer->m_InterfaceLock);
    CAutoLock holdSample(&m_pRenderer->m_RendererLock);
    const HRESULT hr = m_pRenderer->EndFlush();
    return SUCCEEDED(hr) ? CBaseInputPin::EndFlush() : hr;
}

HRESULT CRendererInputPin::CheckMediaType(const CMediaType* type) { return m_pRenderer->CheckMediaType(type); }

HRESULT CRendererInputPin::SetMediaType(const CMediaType* type)
{
    const HRESULT hr = CBaseInputPin::SetMediaType(type);
    return FAILED(hr) ? hr : m_pRenderer->SetMediaType(type);
}

HRESULT CRendererInputPin::CompleteConnect(IPin* receivePin)
{
    const HRESULT hr = m_pRenderer->CompleteConnect(receivePin);
    return FAILED(hr) ? hr : CBaseInputPin::CompleteConnect(receivePin);
}

HRESULT CRendererInputPin::BreakConnect()
{
    const HRESULT hr = m_pRenderer->BreakConnect();
    return FAILED(hr) ? hr : CBaseInputPin::BreakConnect();
}

HRESULT CRendererInputPin::Active()
{
    const HRESULT hr = m_pRenderer->Active();
    return FAILED(hr) ? hr : CBaseInputPin::Active();
}

HRESULT CRendererInputPin::Inactive()
{
    m_pRenderer->Inactive();
    return CBaseInputPin::Inactive();
}

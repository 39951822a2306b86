// The transform filter's pins: each asks the filter and adds the pin's own checks.
#include "dshow/baseclasses/transform_filter.h"

#include <new>

// ---- input ----

CTransformInputPin::CTransformInputPin(const char* objectName, CTransformFilter* filter, HRESULT* phr,
                                       const char* pinName)
    : CBaseInputPin(objectName, filter, &filter->m_csFilter, phr, pinName), m_pTransformFilter(filter)
{
}

HRESULT CTransformInputPin::CheckStreaming()
{
    if (!m_pTransformFilter->m_pOutput->IsConnected())
        return VFW_E_NOT_CONNECTED;
    return CBaseInputPin::CheckStreaming();
}

HRESULT STDMETHODCALLTYPE CTransformInputPin::Receive(IMediaSample* sample)
{
    CAutoLock hold(&m_pTransformFilter->m_csReceive);
    HRESULT hr = CBaseInputPin::Receive(sample);
    if (hr != S_OK)
        return hr;
    // The filter's own work may allocate; a failure stays on this side of the interface.
    try {
        return m_pTransformFilter->Receive(sample);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

HRESULT STDMETHODCALLTYPE CTransformInputPin::EndOfStream()
{
    CAutoLock hold(&m_pTransformFilter->m_csReceive);
    const HRESULT hr = CheckStreaming();
    if (hr != S_OK)
        return hr;
    try {
        return m_pTransformFilter->EndOfStream();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

HRESULT STDMETHODCALLTYPE CTransformInputPin::BeginFlush()
{
    CAutoLock hold(&m_pTransformFilter->m_csFilter);
    if (!IsConnected() || !m_pTransformFilter->m_pOutput->IsConnected())
        return VFW_E_NOT_CONNECTED;
    const HRESULT hr = CBaseInputPin::BeginFlush();
    if (FAILED(hr))
        return hr;
    return m_pTransformFilter->BeginFlush();
}

HRESULT STDMETHODCALLTYPE CTransformInputPin::EndFlush()
{
    CAutoLock hold(&m_pTransformFilter->m_csFilter);
    if (!IsConnected() || !m_pTransformFilter->m_pOutput->IsConnected())
        return VFW_E_NOT_CONNECTED;
    const HRESULT hr = m_pTransformFilter->EndFlush();
    if (FAILED(hr))
        return hr;
    return CBaseInputPin::EndFlush();
}

HRESULT STDMETHODCALLTYPE CTransformInputPin::NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate)
{
    CBasePin::NewSegment(start, stop, rate);
    return m_pTransformFilter->NewSegment(start, stop, rate);
}

HRESULT CTransformInputPin::CheckConnect(IPin* pin)
{
    const HRESULT hr = m_pTransformFilter->CheckConnect(PINDIR_INPUT, pin);
    return FAILED(hr) ? hr : CBaseInputPin::CheckConnect(pin);
}

HRESULT CTransformInputPin::BreakConnect()
{
    m_pTransformFilter->BreakConnect(PINDIR_INPUT);
    return CBaseInputPin::BreakConnect();
}

HRESULT CTransformInputPin::CompleteConnect(IPin* receivePin)
{
    const HRESULT hr = m_pTransformFilter->CompleteConnect(PINDIR_INPUT, receivePin);
    return FAILED(hr) ? hr : CBaseInputPin::CompleteConnect(receivePin);
}

HRESULT CTransformInputPin::CheckMediaType(const CMediaType* type)
{
    HRESULT hr = m_pTransformFilter->CheckInputType(type);
    if (hr != S_OK)
        return hr;
    // A new input type must still be convertible to the output type already agreed.
    if (m_pTransformFilter->m_pOutput->IsConnected())
        return m_pTransformFilter->CheckTransform(type, &m_pTransformFilter->m_pOutput->CurrentMediaType());
    return S_OK;
}

HRESULT CTransformInputPin::SetMediaType(const CMediaType* type)
{
    const HRESULT hr = CBaseInputPin::SetMediaType(type);
    return FAILED(hr) ? hr : m_pTransformFilter->SetMediaType(PINDIR_INPUT, type);
}

// ---- output ----

CTransformOutputPin::CTransformOutputPin(const char* objectName, CTransformFilter* filter, HRESULT* phr,
                                         const char* pinName)
    : CBaseOutputPin(objectName, filter, &filter->m_csFilter, phr, pinName), m_pTransformFilter(filter)
{
}

HRESULT CTransformOutputPin::CheckConnect(IPin* pin)
{
    // The output types depend on the input type, so the input connects first.
    if (!m_pTransformFilter->m_pInput->IsConnected())
        return E_UNEXPECTED;
    const HRESULT hr = m_pTransformFilter->CheckConnect(PINDIR_OUTPUT, pin);
    return FAILED(hr) ? hr : CBaseOutputPin::CheckConnect(pin);
}

HRESULT CTransformOutputPin::BreakConnect()
{
    m_pTransformFilter->BreakConnect(PINDIR_OUTPUT);
    return CBaseOutputPin::BreakConnect();
}

HRESULT CTransformOutputPin::CompleteConnect(IPin* receivePin)
{
    const HRESULT hr = m_pTransformFilter->CompleteConnect(PINDIR_OUTPUT, receivePin);
    return FAILED(hr) ? hr : CBaseOutputPin::CompleteConnect(receivePin);
}

HRESULT CTransformOutputPin::CheckMediaType(const CMediaType* type)
{
    if (!m_pTransformFilter->m_pInput->IsConnected())
        return E_INVALIDARG;
    return m_pTransformFilter->CheckTransform(&m_pTransformFilter->m_pInput->CurrentMediaType(), type);
}

HRESULT CTransformOutputPin::SetMediaType(const CMediaType* type)
{
    const HRESULT hr = CBaseOutputPin::SetMediaType(type);
    return FAILED(hr) ? hr : m_pTransformFilter->SetMediaType(PINDIR_OUTPUT, type);
}

HRESULT CTransformOutputPin::GetMediaType(int position, CMediaType* type)
{
    if (!m_pTransformFilter->m_pInput->IsConnected())
        return E_UNEXPECTED;
    return m_pTransformFilter->GetMediaType(position, type);
}

HRESULT CTransformOutputPin::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request)
{
    return m_pTransformFilter->DecideBufferSize(allocator, request);
}

HRESULT STDMETHODCALLTYPE CTransformOutputPin::Notify(IBaseFilter* /*self*/, Quality q)
{
    // The filter may act on it; otherwise it travels further upstream.
    const HRESULT hr = m_pTransformFilter->AlterQuality(q);
    if (hr != S_FALSE)
        return hr;
    return m_pTransformFilter->m_pInput->PassNotify(q);
}

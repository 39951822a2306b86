// Allocator choice and delivery of an output pin.
#include "dshow/baseclasses/output_pin.h"

#include "dshow/baseclasses/allocator.h"

CBaseOutputPin::CBaseOutputPin(const char* objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* phr,
                               const char* pinName)
    : CBasePin(objectName, filter, lock, phr, pinName, PINDIR_OUTPUT)
{
}

CBaseOutputPin::~CBaseOutputPin() = default;

HRESULT CBaseOutputPin::CompleteConnect(IPin* /*receivePin*/)
{
    CInterfacePtr<IMemAllocator> chosen;
    const HRESULT hr = DecideAllocator(m_pInputPin.Get(), chosen.Out());
    if (SUCCEEDED(hr))
        m_pAllocator = chosen;
    return hr;
}

HRESULT CBaseOutputPin::CheckConnect(IPin* pin)
{
    HRESULT hr = CBasePin::CheckConnect(pin);
    if (FAILED(hr))
        return hr;
    hr = pin->QueryInterface(IID_IMemInputPin, m_pInputPin.OutVoid());
    return FAILED(hr) ? hr : (m_pInputPin ? S_OK : E_NOINTERFACE);
}

HRESULT CBaseOutputPin::BreakConnect()
{
    if (m_pAllocator) {
        m_pAllocator->Decommit();
        m_pAllocator.Reset();
    }
    m_pInputPin.Reset();
    return S_OK;
}

HRESULT CBaseOutputPin::DecideAllocator(IMemInputPin* pin, IMemAllocator** allocator)
{
    if (pin == nullptr || allocator == nullptr)
        return E_POINTER;
    *allocator = nullptr;
    ALLOCATOR_PROPERTIES wishes{};
    pin->GetAllocatorRequirements(&wishes);
    if (wishes.cbAlign == 0)
        wishes.cbAlign = 1;

    CInterfacePtr<IMemAllocator> candidate;
    HRESULT hr = pin->GetAllocator(candidate.Out());
    if (SUCCEEDED(hr) && candidate) {
        ALLOCATOR_PROPERTIES request = wishes;
        hr = DecideBufferSize(candidate.Get(), &request);
        if (SUCCEEDED(hr)) {
            hr = pin->NotifyAllocator(candidate.Get(), FALSE);
            if (SUCCEEDED(hr)) {
                *allocator = candidate.Detach();
                return S_OK;
            }
        }
    }

    hr = InitAllocator(candidate.Out());
    if (FAILED(hr))
        return hr;
    ALLOCATOR_PROPERTIES request = wishes;
    hr = DecideBufferSize(candidate.Get(), &request);
    if (FAILED(hr))
        return hr;
    hr = pin->NotifyAllocator(candidate.Get(), FALSE);
    if (FAILED(hr))
        return hr;
    *allocator = candidate.Detach();
    return S_OK;
}

HRESULT CBaseOutputPin::InitAllocator(IMemAllocator** allocator) { return CMemAllocator::CreateInstance(allocator); }

HRESULT CBaseOutputPin::Active()
{
    if (!m_pAllocator)
        return VFW_E_NO_ALLOCATOR;
    return m_pAllocator->Commit();
}

HRESULT CBaseOutputPin::Inactive()
{
    if (!m_pAllocator)
        return VFW_E_NO_ALLOCATOR;
    return m_pAllocator->Decommit();
}

HRESULT CBaseOutputPin::GetDeliveryBuffer(IMediaSample** sample, REFERENCE_TIME* start, REFERENCE_TIME* end,
                                          DWORD flags)
{
    if (!m_pAllocator)
        return E_NOINTERFACE;
    return m_pAllocator->GetBuffer(sample, start, end, flags);
}

HRESULT CBaseOutputPin::Deliver(IMediaSample* sample)
{
    if (!m_pInputPin)
        return VFW_E_NOT_CONNECTED;
    return m_pInputPin->Receive(sample);
}

HRESULT CBaseOutputPin::DeliverEndOfStream()
{
    if (!m_Connected)
        return VFW_E_NOT_CONNECTED;
    return m_Connected->EndOfStream();
}

HRESULT CBaseOutputPin::DeliverBeginFlush()
{
    if (!m_Connected)
        return VFW_E_NOT_CONNECTED;
    return m_Connected->BeginFlush();
}

HRESULT CBaseOutputPin::DeliverEndFlush()
{
    if (!m_Connected)
        return VFW_E_NOT_CONNECTED;
    return m_Connected->EndFlush();
}

HRESULT CBaseOutputPin::DeliverNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate)
{
    if (!m_Connected)
        return VFW_E_NOT_CONNECTED;
    return m_Connected->NewSegment(start, stop, rate);
}

HRESULT STDMETHODCALLTYPE CBaseOutputPin::EndOfStream() { return E_UNEXPECTED; }
HRESULT STDMETHODCALLTYPE CBaseOutputPin::BeginFlush() { return E_UNEXPECTED; }
HRESULT STDMETHODCALLTYPE CBaseOutputPin::EndFlush() { return E_UNEXPECTED; }

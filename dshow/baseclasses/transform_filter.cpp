// The transform filter's states, sample flow and stream-control forwarding.
#include "dshow/baseclasses/transform_filter.h"

#include <cstddef>

CTransformFilter::CTransformFilter(const char* name, LPUNKNOWN outer, REFCLSID clsid, HRESULT* phr)
    : CBaseFilter(name, outer, &m_csFilter, clsid, phr)
{
    m_pInput = std::make_unique<CTransformInputPin>("Transform input pin", this, phr, "XForm In");
    m_pOutput = std::make_unique<CTransformOutputPin>("Transform output pin", this, phr, "XForm Out");
}

CTransformFilter::~CTransformFilter() = default;

int CTransformFilter::GetPinCount() { return 2; }

CBasePin* CTransformFilter::GetPin(int n)
{
    if (n == 0)
        return m_pInput.get();
    if (n == 1)
        return m_pOutput.get();
    return nullptr;
}

HRESULT STDMETHODCALLTYPE CTransformFilter::FindPin(LPCWSTR id, IPin** pin)
{
    // The names every transform answers to, whatever its pins are called.
    static const WCHAR kIn[] = {'I', 'n', 0};
    static const WCHAR kOut[] = {'O', 'u', 't', 0};
    if (id != nullptr && pin != nullptr) {
        CBasePin* named = WideNameEquals(id, kIn) ? static_cast<CBasePin*>(m_pInput.get())
                          : WideNameEquals(id, kOut) ? static_cast<CBasePin*>(m_pOutput.get())
                                                     : nullptr;
        if (named != nullptr) {
            *pin = named;
            named->AddRef();
            return S_OK;
        }
    }
    return CBaseFilter::FindPin(id, pin);
}

HRESULT STDMETHODCALLTYPE CTransformFilter::Stop()
{
    CAutoLock holdFilter(&m_csFilter);
    if (m_State == State_Stopped)
        return S_OK;
    if (!m_pInput->IsConnected() || !m_pOutput->IsConnected()) {
        m_State = State_Stopped;
        m_bEOSDelivered = false;
        return S_OK;
    }
    // Decommitting the input's allocator first makes a source blocked for a buffer give up, so the
    // delivering thread leaves Receive and the receive lock can be taken.
    m_pInput->Inactive();
    CAutoLock holdReceive(&m_csReceive);
    m_pOutput->Inactive();
    const HRESULT hr = StopStreaming();
    if (SUCCEEDED(hr)) {
        m_State = State_Stopped;
        m_bEOSDelivered = false;
    }
    return hr;
}

HRESULT STDMETHODCALLTYPE CTransformFilter::Pause()
{
    CAutoLock holdFilter(&m_csFilter);
    HRESULT hr = S_OK;
    if (m_State == State_Paused) {
        // already there
    } else if (!m_pInput->IsConnected()) {
        // Without input there is no stream; tell downstream it is complete.
        if (m_pOutput->IsConnected() && !m_bEOSDelivered) {
            m_pOutput->DeliverEndOfStream();
            m_bEOSDelivered = true;
        }
        m_State = State_Paused;
    } else if (!m_pOutput->IsConnected()) {
        m_State = State_Paused;
    } else {
        if (m_State == State_Stopped) {
            CAutoLock holdReceive(&m_csReceive);
            hr = StartStreaming();
        }
        if (SUCCEEDED(hr))
            hr = CBaseFilter::Pause();
    }
    m_bSampleSkipped = false;
    m_bQualityChanged = false;
    return hr;
}

HRESULT CTransformFilter::StartStreaming() { return S_OK; }
HRESULT CTransformFilter::StopStreaming() { return S_OK; }
HRESULT CTransformFilter::AlterQuality(Quality /*q*/) { return S_FALSE; }
HRESULT CTransformFilter::SetMediaType(PIN_DIRECTION /*direction*/, const CMediaType* /*type*/) { return S_OK; }
HRESULT CTransformFilter::CheckConnect(PIN_DIRECTION /*direction*/, IPin* /*pin*/) { return S_OK; }
HRESULT CTransformFilter::BreakConnect(PIN_DIRECTION /*direction*/) { return S_OK; }
HRESULT CTransformFilter::CompleteConnect(PIN_DIRECTION /*direction*/, IPin* /*receivePin*/) { return S_OK; }

HRESULT CTransformFilter::InitializeOutputSample(IMediaSample* in, IMediaSample** out)
{
    if (out == nullptr)
        return E_POINTER;
    *out = nullptr;
    AM_SAMPLE2_PROPERTIES* const props = m_pInput->SampleProps();
    DWORD flags = m_bSampleSkipped ? AM_GBF_PREVFRAMESKIPPED : 0;
    if (!(props->dwSampleFlags & AM_SAMPLE_SPLICEPOINT))
        flags |= AM_GBF_NOTASYNCPOINT;
    CInterfacePtr<IMediaSample> made;
    HRESULT hr = m_pOutput->GetDeliveryBuffer(made.Out(),
                                              (props->dwSampleFlags & AM_SAMPLE_TIMEVALID) ? &props->tStart : nullptr,
                                              (props->dwSampleFlags & AM_SAMPLE_STOPVALID) ? &props->tStop : nullptr,
                                              flags);
    if (FAILED(hr))
        return hr;

    CInterfacePtr<IMediaSample2> made2;
    if (SUCCEEDED(made->QueryInterface(IID_IMediaSample2, made2.OutVoid())) && made2) {
        // The times and flags of the input, keeping a type the output buffer already carries.
        AM_SAMPLE2_PROPERTIES outProps{};
        const DWORD size = static_cast<DWORD>(offsetof(AM_SAMPLE2_PROPERTIES, dwStreamId));
        hr = made2->GetProperties(size, reinterpret_cast<BYTE*>(&outProps));
        if (FAILED(hr))
            return hr;
        outProps.dwTypeSpecificFlags = props->dwTypeSpecificFlags;
        outProps.dwSampleFlags =
            (outProps.dwSampleFlags & AM_SAMPLE_TYPECHANGED) | (props->dwSampleFlags & ~AM_SAMPLE_TYPECHANGED);
        outProps.tStart = props->tStart;
        outProps.tStop = props->tStop;
        outProps.cbData = size;
        hr = made2->SetProperties(size, reinterpret_cast<const BYTE*>(&outProps));
        if (FAILED(hr))
            return hr;
    } else {
        if (props->dwSampleFlags & AM_SAMPLE_TIMEVALID)
            made->SetTime(&props->tStart, (props->dwSampleFlags & AM_SAMPLE_STOPVALID) ? &props->tStop : nullptr);
        made->SetSyncPoint((props->dwSampleFlags & AM_SAMPLE_SPLICEPOINT) ? TRUE : FALSE);
        made->SetDiscontinuity((props->dwSampleFlags & AM_SAMPLE_DATADISCONTINUITY) ? TRUE : FALSE);
        made->SetPreroll((props->dwSampleFlags & AM_SAMPLE_PREROLL) ? TRUE : FALSE);
    }
    if (props->dwSampleFlags & AM_SAMPLE_DATADISCONTINUITY)
        m_bSampleSkipped = false;
    LONGLONG mediaStart = 0;
    LONGLONG mediaEnd = 0;
    if (in->GetMediaTime(&mediaStart, &mediaEnd) == S_OK)
        made->SetMediaTime(&mediaStart, &mediaEnd);
    *out = made.Detach();
    return S_OK;
}

HRESULT CTransformFilter::DeliverOutput(IMediaSample* out) { return m_pOutput->Deliver(out); }

HRESULT CTransformFilter::Receive(IMediaSample* sample)
{
    AM_SAMPLE2_PROPERTIES* const props = m_pInput->SampleProps();
    if (props->dwStreamId != AM_STREAM_MEDIA)
        return DeliverOutput(sample);

    CInterfacePtr<IMediaSample> out;
    HRESULT hr = InitializeOutputSample(sample, out.Out());
    if (FAILED(hr))
        return hr;
    hr = Transform(sample, out.Get());
    if (hr == S_FALSE) {
        // Skipped on purpose: nothing goes downstream, and the graph hears once that quality changed.
        m_bSampleSkipped = true;
        if (!m_bQualityChanged) {
            NotifyEvent(EC_QUALITY_CHANGE, 0, 0);
            m_bQualityChanged = true;
        }
        return S_OK;
    }
    if (FAILED(hr))
        return hr;
    m_bSampleSkipped = false;
    return DeliverOutput(out.Get());
}

HRESULT CTransformFilter::EndOfStream() { return m_pOutput->DeliverEndOfStream(); }
HRESULT CTransformFilter::BeginFlush() { return m_pOutput->DeliverBeginFlush(); }
HRESULT CTransformFilter::EndFlush() { return m_pOutput->DeliverEndFlush(); }

HRESULT CTransformFilter::NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate)
{
    return m_pOutput->DeliverNewSegment(start, stop, rate);
}

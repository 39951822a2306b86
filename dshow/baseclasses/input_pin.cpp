// Sample reception, flushing and allocator handling of an input pin.
#include "dshow/baseclasses/input_pin.h"

#include <new>

#include "dshow/baseclasses/allocator.h"

CBaseInputPin::CBaseInputPin(const char* objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* phr,
                             const char* pinName)
    : CBasePin(objectName, filter, lock, phr, pinName, PINDIR_INPUT)
{
}

CBaseInputPin::~CBaseInputPin() = default;

HRESULT STDMETHODCALLTYPE CBaseInputPin::NonDelegatingQueryInterface(REFIID iid, void** object)
{
    if (object == nullptr)
        return E_POINTER;
    if (IsEqualIID(iid, IID_IMemInputPin))
        return GetInterface(static_cast<IMemInputPin*>(this), object);
    return CBasePin::NonDelegatingQueryInterface(iid, object);
}

HRESULT STDMETHODCALLTYPE CBaseInputPin::GetAllocator(IMemAllocator** allocator)
{
    if (allocator == nullptr)
        return E_POINTER;
    CAutoLock hold(m_pLock);
    if (!m_pAllocator) {
        const HRESULT hr = CMemAllocator::CreateInstance(m_pAllocator.Out());
        if (FAILED(hr)) {
            *allocator = nullptr;
            return hr;
        }
    }
    *allocator = m_pAllocator.Copy();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseInputPin::NotifyAllocator(IMemAllocator* allocator, BOOL readOnly)
{
    if (allocator == nullptr)
        return E_POINTER;
    CAutoLock hold(m_pLock);
    m_pAllocator.Assign(allocator);
    m_bReadOnly = readOnly;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseInputPin::GetAllocatorRequirements(ALLOCATOR_PROPERTIES* /*properties*/)
{
    return E_NOTIMPL;
}

HRESULT CBaseInputPin::CheckStreaming()
{
    if (IsStopped())
        return VFW_E_WRONG_STATE;
    if (m_bFlushing)
        return S_FALSE;
    if (m_bRunTimeError)
        return VFW_E_RUNTIME_ERROR;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseInputPin::Receive(IMediaSample* sample)
{
    if (sample == nullptr)
        return E_POINTER;
    HRESULT hr = CheckStreaming();
    if (hr != S_OK)
        return hr;

    CInterfacePtr<IMediaSample2> sample2;
    if (SUCCEEDED(sample->QueryInterface(IID_IMediaSample2, sample2.OutVoid())) && sample2) {
        hr = sample2->GetProperties(sizeof m_SampleProps, reinterpret_cast<BYTE*>(&m_SampleProps));
        if (FAILED(hr))
            return hr;
    } else {
        // Samples without IMediaSample2: the same record from the IMediaSample answers.
        AM_SAMPLE2_PROPERTIES& p = m_SampleProps;
        p = AM_SAMPLE2_PROPERTIES{};
        p.cbData = sizeof p;
        hr = sample->GetTime(&p.tStart, &p.tStop);
        if (SUCCEEDED(hr)) {
            p.dwSampleFlags |= AM_SAMPLE_TIMEVALID;
            if (hr == S_OK)
                p.dwSampleFlags |= AM_SAMPLE_STOPVALID;
        }
        AM_MEDIA_TYPE* attached = nullptr;
        if (sample->GetMediaType(&attached) == S_OK && attached != nullptr) {
            // The record points at the type only while the sample is being received; it is freed
            // below once the check is done.
            p.pMediaType = attached;
            p.dwSampleFlags |= AM_SAMPLE_TYPECHANGED;
        }
        if (sample->IsSyncPoint() == S_OK)
            p.dwSampleFlags |= AM_SAMPLE_SPLICEPOINT;
        if (sample->IsPreroll() == S_OK)
            p.dwSampleFlags |= AM_SAMPLE_PREROLL;
        if (sample->IsDiscontinuity() == S_OK)
            p.dwSampleFlags |= AM_SAMPLE_DATADISCONTINUITY;
        p.lActual = sample->GetActualDataLength();
        p.cbBuffer = sample->GetSize();
        sample->GetPointer(&p.pbBuffer);
        p.dwStreamId = AM_STREAM_MEDIA;
    }

    if (m_SampleProps.dwSampleFlags & AM_SAMPLE_TYPECHANGED) {
        HRESULT accepted = E_INVALIDARG;
        if (m_SampleProps.pMediaType != nullptr) {
            try {
                const CMediaType brought(*m_SampleProps.pMediaType);
                accepted = CheckMediaType(&brought);
            } catch (const std::bad_alloc&) {
                accepted = E_OUTOFMEMORY;
            }
        }
        if (!sample2) {
            DeleteMediaType(m_SampleProps.pMediaType);
            m_SampleProps.pMediaType = nullptr;
        }
        if (accepted != S_OK) {
            m_bRunTimeError = true;
            EndOfStream();
            m_pFilter->NotifyEvent(EC_ERRORABORT, VFW_E_TYPE_NOT_ACCEPTED, 0);
            return VFW_E_INVALIDMEDIATYPE;
        }
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseInputPin::ReceiveMultiple(IMediaSample** samples, LONG count, LONG* processed)
{
    if (samples == nullptr || processed == nullptr)
        return E_POINTER;
    HRESULT hr = S_OK;
    *processed = 0;
    while (*processed < count) {
        hr = Receive(samples[*processed]);
        if (hr != S_OK)
            break;
        ++*processed;
    }
    return hr;
}

HRESULT STDMETHODCALLTYPE CBaseInputPin::ReceiveCanBlock()
{
    // A filter without outputs may block; otherwise it blocks if one of the pins it delivers to does.
    int outputs = 0;
    const int count = m_pFilter->GetPinCount();
    for (int i = 0; i < count; ++i) {
        CBasePin* pin = m_pFilter->GetPin(i);
        PIN_DIRECTION direction;
        if (pin == nullptr || FAILED(pin->QueryDirection(&direction)) || direction != PINDIR_OUTPUT)
            continue;
        ++outputs;
        IPin* peer = pin->GetConnected();
        if (peer == nullptr)
            continue;
        CInterfacePtr<IMemInputPin> input;
        if (SUCCEEDED(peer->QueryInterface(IID_IMemInputPin, input.OutVoid())) && input &&
            input->ReceiveCanBlock() != S_FALSE)
            return S_OK;
    }
    return outputs == 0 ? S_OK : S_FALSE;
}

HRESULT STDMETHODCALLTYPE CBaseInputPin::BeginFlush()
{
    CAutoLock hold(m_pLock);
    m_bFlushing = TRUE;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseInputPin::EndFlush()
{
    CAutoLock hold(m_pLock);
    m_bFlushing = FALSE;
    m_bRunTimeError = false;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseInputPin::Notify(IBaseFilter* /*self*/, Quality /*q*/) { return E_NOTIMPL; }

HRESULT CBaseInputPin::PassNotify(Quality& q)
{
    if (m_pQSink != nullptr)
        return m_pQSink->Notify(m_pFilter, q);
    if (!m_Connected)
        return VFW_E_NOT_FOUND;
    CInterfacePtr<IQualityControl> upstream;
    if (FAILED(m_Connected->QueryInterface(IID_IQualityControl, upstream.OutVoid())) || !upstream)
        return VFW_E_NOT_FOUND;
    return upstream->Notify(m_pFilter, q);
}

HRESULT CBaseInputPin::BreakConnect()
{
    if (m_pAllocator) {
        m_pAllocator->Decommit();
        m_pAllocator.Reset();
    }
    return S_OK;
}

HRESULT CBaseInputPin::Inactive()
{
    m_bRunTimeError = false;
    m_bFlushing = FALSE;
    if (!m_pAllocator)
        return VFW_E_NO_ALLOCATOR;
    return m_pAllocator->Decommit();
}

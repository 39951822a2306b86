// Pin connection and media type negotiation.
#include "dshow/baseclasses/base_pin.h"

#include <cstring>
#include <new>

#include "dshow/baseclasses/pin_enumerators.h"

namespace {

// Failures that only say "not this type", which do not outrank the final VFW_E_NO_ACCEPTABLE_TYPES.
bool IsPlainRefusal(HRESULT hr) { return hr == E_FAIL || hr == E_INVALIDARG || hr == VFW_E_TYPE_NOT_ACCEPTED; }

}  // namespace

CBasePin::CBasePin(const char* objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* phr, const char* pinName,
                   PIN_DIRECTION direction)
    : CUnknown(objectName, nullptr, phr), m_name(MakeWideName(pinName)), m_dir(direction), m_pLock(lock),
      m_pFilter(filter)
{
}

CBasePin::~CBasePin() = default;

HRESULT STDMETHODCALLTYPE CBasePin::NonDelegatingQueryInterface(REFIID iid, void** object)
{
    if (object == nullptr)
        return E_POINTER;
    if (IsEqualIID(iid, IID_IPin))
        return GetInterface(static_cast<IPin*>(this), object);
    if (IsEqualIID(iid, IID_IQualityControl))
        return GetInterface(static_cast<IQualityControl*>(this), object);
    return CUnknown::NonDelegatingQueryInterface(iid, object);
}

ULONG STDMETHODCALLTYPE CBasePin::NonDelegatingAddRef() { return m_pFilter->AddRef(); }
ULONG STDMETHODCALLTYPE CBasePin::NonDelegatingRelease() { return m_pFilter->Release(); }

HRESULT STDMETHODCALLTYPE CBasePin::Connect(IPin* receivePin, const AM_MEDIA_TYPE* type)
{
    if (receivePin == nullptr)
        return E_POINTER;
    try {
        CAutoLock hold(m_pLock);
        const HRESULT allowed = CanConnectNow();
        if (allowed != S_OK)
            return allowed;
        if (type == nullptr)
            return AgreeMediaType(receivePin, nullptr);
        const CMediaType wanted(*type);
        return AgreeMediaType(receivePin, &wanted);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

HRESULT CBasePin::AgreeMediaType(IPin* receivePin, const CMediaType* type)
{
    if (type != nullptr && !type->IsPartiallySpecified())
        return AttemptConnection(receivePin, type);

    HRESULT failure = VFW_E_NO_ACCEPTABLE_TYPES;
    for (int round = 0; round < 2; ++round) {
        // Round 0 asks the receiving pin's types unless this pin is to try its own first.
        const bool askPeer = (round == 0) != m_bTryMyTypesFirst;
        CInterfacePtr<IEnumMediaTypes> candidates;
        const HRESULT made =
            askPeer ? receivePin->EnumMediaTypes(candidates.Out()) : EnumMediaTypes(candidates.Out());
        if (FAILED(made) || !candidates)
            continue;
        const HRESULT hr = TryMediaTypes(receivePin, type, candidates.Get());
        if (SUCCEEDED(hr))
            return S_OK;
        if (hr != VFW_E_NO_ACCEPTABLE_TYPES && failure == VFW_E_NO_ACCEPTABLE_TYPES)
            failure = hr;
    }
    return failure;
}

HRESULT CBasePin::TryMediaTypes(IPin* receivePin, const CMediaType* type, IEnumMediaTypes* candidates)
{
    HRESULT failure = VFW_E_NO_ACCEPTABLE_TYPES;
    candidates->Reset();
    for (;;) {
        AM_MEDIA_TYPE* next = nullptr;
        ULONG fetched = 0;
        if (candidates->Next(1, &next, &fetched) != S_OK || fetched != 1 || next == nullptr)
            break;
        CMediaType candidate(*next);
        DeleteMediaType(next);
        if (type != nullptr && !candidate.MatchesPartial(type))
            continue;
        const HRESULT hr = AttemptConnection(receivePin, &candidate);
        if (SUCCEEDED(hr))
            return hr;
        if (!IsPlainRefusal(hr) && failure == VFW_E_NO_ACCEPTABLE_TYPES)
            failure = hr;
    }
    return failure;
}

HRESULT CBasePin::AttemptConnection(IPin* receivePin, const CMediaType* type)
{
    HRESULT hr = CheckConnect(receivePin);
    if (FAILED(hr)) {
        BreakConnect();
        return hr;
    }
    hr = CheckMediaType(type);
    if (hr != S_OK) {
        BreakConnect();
        return (SUCCEEDED(hr) || IsPlainRefusal(hr)) ? VFW_E_TYPE_NOT_ACCEPTED : hr;
    }
    m_Connected.Assign(receivePin);
    hr = SetMediaType(type);
    if (SUCCEEDED(hr)) {
        hr = receivePin->ReceiveConnection(static_cast<IPin*>(this), type);
        if (SUCCEEDED(hr)) {
            hr = CompleteConnect(receivePin);
            if (SUCCEEDED(hr))
                return hr;
            receivePin->Disconnect();
        }
    }
    ClearConnection();
    BreakConnect();
    return hr == E_FAIL ? VFW_E_TYPE_NOT_ACCEPTED : hr;
}

HRESULT STDMETHODCALLTYPE CBasePin::ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type)
{
    if (connector == nullptr || type == nullptr)
        return E_POINTER;
    try {
        CAutoLock hold(m_pLock);
        const HRESULT allowed = CanConnectNow();
        if (allowed != S_OK)
            return allowed;
        HRESULT hr = CheckConnect(connector);
        if (FAILED(hr)) {
            BreakConnect();
            return hr;
        }
        const CMediaType offered(*type);
        hr = CheckMediaType(&offered);
        if (hr != S_OK) {
            BreakConnect();
            return (SUCCEEDED(hr) || IsPlainRefusal(hr)) ? VFW_E_TYPE_NOT_ACCEPTED : hr;
        }
        m_Connected.Assign(connector);
        hr = SetMediaType(&offered);
        if (SUCCEEDED(hr)) {
            hr = CompleteConnect(connector);
            if (SUCCEEDED(hr))
                return S_OK;
        }
        ClearConnection();
        BreakConnect();
        return hr;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

HRESULT STDMETHODCALLTYPE CBasePin::Disconnect()
{
    CAutoLock hold(m_pLock);
    if (!IsStopped())
        return VFW_E_NOT_STOPPED;
    return DisconnectInternal();
}

HRESULT CBasePin::DisconnectInternal()
{
    if (!m_Connected)
        return S_FALSE;
    const HRESULT hr = BreakConnect();
    if (FAILED(hr))
        return hr;
    ClearConnection();
    return S_OK;
}

void CBasePin::ClearConnection()
{
    m_Connected.Reset();
    m_mt.InitMediaType();
}

HRESULT STDMETHODCALLTYPE CBasePin::ConnectedTo(IPin** pin)
{
    if (pin == nullptr)
        return E_POINTER;
    CAutoLock hold(m_pLock);
    *pin = m_Connected.Copy();
    return *pin ? S_OK : VFW_E_NOT_CONNECTED;
}

HRESULT STDMETHODCALLTYPE CBasePin::ConnectionMediaType(AM_MEDIA_TYPE* type)
{
    if (type == nullptr)
        return E_POINTER;
    CAutoLock hold(m_pLock);
    if (!m_Connected) {
        std::memset(type, 0, sizeof *type);
        type->bFixedSizeSamples = TRUE;
        type->lSampleSize = 1;
        return VFW_E_NOT_CONNECTED;
    }
    return CopyMediaType(type, &m_mt);
}

HRESULT STDMETHODCALLTYPE CBasePin::QueryPinInfo(PIN_INFO* info)
{
    if (info == nullptr)
        return E_POINTER;
    info->pFilter = m_pFilter;
    if (m_pFilter != nullptr)
        m_pFilter->AddRef();
    info->dir = m_dir;
    CopyWideName(info->achName, MAX_PIN_NAME, m_name.c_str());
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CBasePin::QueryDirection(PIN_DIRECTION* direction)
{
    if (direction == nullptr)
        return E_POINTER;
    *direction = m_dir;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CBasePin::QueryId(LPWSTR* id) { return TaskMemWideName(m_name.c_str(), id); }

HRESULT STDMETHODCALLTYPE CBasePin::QueryAccept(const AM_MEDIA_TYPE* type)
{
    if (type == nullptr)
        return E_POINTER;
    try {
        const CMediaType asked(*type);
        const HRESULT hr = CheckMediaType(&asked);
        return FAILED(hr) ? S_FALSE : hr;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

HRESULT STDMETHODCALLTYPE CBasePin::EnumMediaTypes(IEnumMediaTypes** types)
{
    if (types == nullptr)
        return E_POINTER;
    *types = nullptr;
    try {
        auto* created = new CEnumMediaTypes(this, nullptr);
        return created->NonDelegatingQueryInterface(IID_IEnumMediaTypes, reinterpret_cast<void**>(types));
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

HRESULT STDMETHODCALLTYPE CBasePin::QueryInternalConnections(IPin** /*pins*/, ULONG* /*count*/) { return E_NOTIMPL; }

HRESULT STDMETHODCALLTYPE CBasePin::EndOfStream() { return S_OK; }

HRESULT STDMETHODCALLTYPE CBasePin::NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate)
{
    CAutoLock hold(m_pLock);
    m_tStart = start;
    m_tStop = stop;
    m_dRate = rate;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CBasePin::Notify(IBaseFilter* /*self*/, Quality /*q*/) { return E_NOTIMPL; }

HRESULT STDMETHODCALLTYPE CBasePin::SetSink(IQualityControl* sink)
{
    CAutoLock hold(m_pLock);
    m_pQSink = sink;
    return S_OK;
}

HRESULT CBasePin::SetMediaType(const CMediaType* type) { return m_mt.Set(*type); }

HRESULT CBasePin::CheckConnect(IPin* pin)
{
    PIN_DIRECTION other;
    const HRESULT hr = pin->QueryDirection(&other);
    if (FAILED(hr))
        return hr;
    return other == m_dir ? VFW_E_INVALID_DIRECTION : S_OK;
}

HRESULT CBasePin::BreakConnect() { return S_OK; }
HRESULT CBasePin::CompleteConnect(IPin* /*receivePin*/) { return S_OK; }
HRESULT CBasePin::GetMediaType(int /*position*/, CMediaType* /*type*/) { return E_UNEXPECTED; }
LONG CBasePin::GetMediaTypeVersion() { return m_TypeVersion.load(); }
void CBasePin::IncrementTypeVersion() { ++m_TypeVersion; }
HRESULT CBasePin::Active() { return S_OK; }
HRESULT CBasePin::Inactive() { return S_OK; }
HRESULT CBasePin::Run(REFERENCE_TIME /*start*/) { return S_OK; }

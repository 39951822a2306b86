// Filter state changes, clock, graph membership and pin lookup.
#include "dshow/baseclasses/base_filter.h"

#include "dshow/baseclasses/base_pin.h"
#include "dshow/baseclasses/pin_enumerators.h"
#include "dshow/baseclasses/wide_name.h"

#include <new>

CBaseFilter::CBaseFilter(const char* name, LPUNKNOWN outer, CCritSec* lock, REFCLSID clsid, HRESULT* phr)
    : CUnknown(name, outer, phr), m_clsid(clsid), m_pLock(lock)
{
}

CBaseFilter::~CBaseFilter() = default;

HRESULT STDMETHODCALLTYPE CBaseFilter::NonDelegatingQueryInterface(REFIID iid, void** object)
{
    if (object == nullptr)
        return E_POINTER;
    if (IsEqualIID(iid, IID_IBaseFilter) || IsEqualIID(iid, IID_IMediaFilter) || IsEqualIID(iid, IID_IPersist))
        return GetInterface(static_cast<IBaseFilter*>(this), object);
    return CUnknown::NonDelegatingQueryInterface(iid, object);
}

HRESULT STDMETHODCALLTYPE CBaseFilter::GetClassID(CLSID* clsid)
{
    if (clsid == nullptr)
        return E_POINTER;
    *clsid = m_clsid;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseFilter::Stop()
{
    CAutoLock hold(m_pLock);
    HRESULT result = S_OK;
    if (m_State != State_Stopped) {
        const int count = GetPinCount();
        for (int i = 0; i < count; ++i) {
            CBasePin* pin = GetPin(i);
            if (pin == nullptr || !pin->IsConnected())
                continue;
            const HRESULT hr = pin->Inactive();
            if (FAILED(hr) && SUCCEEDED(result))
                result = hr;
        }
    }
    m_State = State_Stopped;
    return result;
}

HRESULT STDMETHODCALLTYPE CBaseFilter::Pause()
{
    CAutoLock hold(m_pLock);
    if (m_State == State_Stopped) {
        const int count = GetPinCount();
        for (int i = 0; i < count; ++i) {
            CBasePin* pin = GetPin(i);
            if (pin == nullptr || !pin->IsConnected())
                continue;
            const HRESULT hr = pin->Active();
            if (FAILED(hr))
                return hr;
        }
    }
    m_State = State_Paused;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseFilter::Run(REFERENCE_TIME start)
{
    CAutoLock hold(m_pLock);
    m_tStart = start;
    if (m_State == State_Stopped) {
        const HRESULT hr = Pause();
        if (FAILED(hr))
            return hr;
    }
    if (m_State != State_Running) {
        const int count = GetPinCount();
        for (int i = 0; i < count; ++i) {
            CBasePin* pin = GetPin(i);
            if (pin == nullptr || !pin->IsConnected())
                continue;
            const HRESULT hr = pin->Run(start);
            if (FAILED(hr))
                return hr;
        }
    }
    m_State = State_Running;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseFilter::GetState(DWORD /*milliseconds*/, FILTER_STATE* state)
{
    if (state == nullptr)
        return E_POINTER;
    CAutoLock hold(m_pLock);
    *state = m_State;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseFilter::SetSyncSource(IReferenceClock* clock)
{
    CAutoLock hold(m_pLock);
    m_pClock.Assign(clock);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseFilter::GetSyncSource(IReferenceClock** clock)
{
    if (clock == nullptr)
        return E_POINTER;
    CAutoLock hold(m_pLock);
    *clock = m_pClock.Copy();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseFilter::EnumPins(IEnumPins** pins)
{
    if (pins == nullptr)
        return E_POINTER;
    *pins = nullptr;
    try {
        auto* created = new CEnumPins(this, nullptr);
        return created->NonDelegatingQueryInterface(IID_IEnumPins, reinterpret_cast<void**>(pins));
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

HRESULT STDMETHODCALLTYPE CBaseFilter::FindPin(LPCWSTR id, IPin** pin)
{
    if (id == nullptr || pin == nullptr)
        return E_POINTER;
    CAutoLock hold(m_pLock);
    const int count = GetPinCount();
    for (int i = 0; i < count; ++i) {
        CBasePin* candidate = GetPin(i);
        if (candidate != nullptr && WideNameEquals(candidate->Name(), id)) {
            *pin = candidate;
            candidate->AddRef();
            return S_OK;
        }
    }
    *pin = nullptr;
    return VFW_E_NOT_FOUND;
}

HRESULT STDMETHODCALLTYPE CBaseFilter::QueryFilterInfo(FILTER_INFO* info)
{
    if (info == nullptr)
        return E_POINTER;
    CAutoLock hold(m_pLock);
    CopyWideName(info->achName, MAX_FILTER_NAME, m_name);
    info->pGraph = m_pGraph;
    if (m_pGraph != nullptr)
        m_pGraph->AddRef();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseFilter::JoinFilterGraph(IFilterGraph* graph, LPCWSTR name)
{
    CAutoLock hold(m_pLock);
    m_pGraph = graph;
    m_pSink = nullptr;
    if (graph != nullptr) {
        // The sink lives as long as the graph, which outlives the filter's membership; no reference
        // is kept, as the graph holds the filter.
        IMediaEventSink* sink = nullptr;
        if (SUCCEEDED(graph->QueryInterface(IID_IMediaEventSink, reinterpret_cast<void**>(&sink))) && sink) {
            m_pSink = sink;
            sink->Release();
        }
    }
    CopyWideName(m_name, MAX_FILTER_NAME, graph != nullptr ? name : nullptr);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseFilter::QueryVendorInfo(LPWSTR* /*vendorInfo*/) { return E_NOTIMPL; }

HRESULT CBaseFilter::NotifyEvent(LONG code, LONG_PTR param1, LONG_PTR param2)
{
    IMediaEventSink* sink = m_pSink;
    if (sink == nullptr)
        return E_NOTIMPL;
    if (code == EC_COMPLETE)
        param2 = reinterpret_cast<LONG_PTR>(static_cast<IBaseFilter*>(this));
    return sink->Notify(code, param1, param2);
}

HRESULT CBaseFilter::StreamTime(REFERENCE_TIME* time)
{
    if (time == nullptr)
        return E_POINTER;
    CAutoLock hold(m_pLock);
    if (!m_pClock)
        return VFW_E_NO_CLOCK;
    const HRESULT hr = m_pClock->GetTime(time);
    if (FAILED(hr))
        return hr;
    *time -= m_tStart;
    return S_OK;
}

HRESULT CBaseFilter::ReconnectPin(IPin* pin, const AM_MEDIA_TYPE* type)
{
    CAutoLock hold(m_pLock);
    if (m_pGraph == nullptr)
        return E_NOINTERFACE;
    CInterfacePtr<IFilterGraph2> graph2;
    if (SUCCEEDED(m_pGraph->QueryInterface(IID_IFilterGraph2, graph2.OutVoid())) && graph2)
        return graph2->ReconnectEx(pin, type);
    return m_pGraph->Reconnect(pin);
}

BOOL CBaseFilter::IsActive()
{
    CAutoLock hold(m_pLock);
    return m_State != State_Stopped;
}

BOOL CBaseFilter::IsStopped() { return m_State == State_Stopped; }

LONG CBaseFilter::GetPinVersion() { return m_PinVersion.load(); }

void CBaseFilter::IncrementPinVersion() { ++m_PinVersion; }

// CBaseFilter: IBaseFilter over the pins a derived class provides through GetPinCount/GetPin.
#pragma once

#include "dshow/baseclasses/critical_section.h"
#include "dshow/baseclasses/interface_ptr.h"
#include "dshow/baseclasses/unknown.h"

class CBasePin;

// States and transitions (all under the filter lock, *m_pLock):
//   Stopped --Pause--> Paused: Active() on every connected pin first; the first failure aborts the
//                              change and is returned, the filter stays Stopped.
//   Paused/Running --Stop--> Stopped: Inactive() on every connected pin; failures are collected and the
//                              first returned, but the filter is Stopped regardless.
//   Stopped --Run--> Running: Pause() first (through the virtual, so a derived Pause runs), then Run on
//                              every connected pin; Paused --Run--> Running: Run on the pins.
//   Running --Pause--> Paused: the state only.
// The graph is not referenced (it owns the filters); its IMediaEventSink is kept as a plain pointer
// for NotifyEvent while the filter is in the graph. The clock is referenced.
class CBaseFilter : public CUnknown, public IBaseFilter {
public:
    CBaseFilter(const char* name, LPUNKNOWN outer, CCritSec* lock, REFCLSID clsid, HRESULT* phr = nullptr);
    ~CBaseFilter() override;

    DECLARE_IUNKNOWN
    HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override;

    // IPersist
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* clsid) override;

    // IMediaFilter
    HRESULT STDMETHODCALLTYPE Stop() override;
    HRESULT STDMETHODCALLTYPE Pause() override;
    HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME start) override;
    HRESULT STDMETHODCALLTYPE GetState(DWORD milliseconds, FILTER_STATE* state) override;
    HRESULT STDMETHODCALLTYPE SetSyncSource(IReferenceClock* clock) override;
    HRESULT STDMETHODCALLTYPE GetSyncSource(IReferenceClock** clock) override;

    // IBaseFilter
    HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** pins) override;
    HRESULT STDMETHODCALLTYPE FindPin(LPCWSTR id, IPin** pin) override;
    HRESULT STDMETHODCALLTYPE QueryFilterInfo(FILTER_INFO* info) override;
    HRESULT STDMETHODCALLTYPE JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) override;
    HRESULT STDMETHODCALLTYPE QueryVendorInfo(LPWSTR* vendorInfo) override;

    // The pins, numbered from 0. GetPin gives no reference.
    virtual int GetPinCount() = 0;
    virtual CBasePin* GetPin(int n) = 0;

    // Sends an event to the graph's event sink; E_NOTIMPL outside a graph. EC_COMPLETE carries this
    // filter as its second parameter.
    HRESULT NotifyEvent(LONG code, LONG_PTR param1, LONG_PTR param2);
    // The current stream time (clock time minus the start time); VFW_E_NO_CLOCK without a clock.
    HRESULT StreamTime(REFERENCE_TIME* time);
    // Asks the graph to reconnect `pin`, with `type` when given.
    HRESULT ReconnectPin(IPin* pin, const AM_MEDIA_TYPE* type);

    BOOL IsActive();
    BOOL IsStopped();
    // Changes whenever the set of pins changes, so pin enumerators can tell they are out of date.
    virtual LONG GetPinVersion();
    void IncrementPinVersion();

    CCritSec* FilterLock() const { return m_pLock; }
    IFilterGraph* Graph() const { return m_pGraph; }

protected:
    // Written under the filter lock; read without it by delivering threads (CheckStreaming).
    std::atomic<FILTER_STATE> m_State{State_Stopped};
    CInterfacePtr<IReferenceClock> m_pClock;
    REFERENCE_TIME m_tStart = 0;
    CLSID m_clsid;
    CCritSec* const m_pLock;
    WCHAR m_name[MAX_FILTER_NAME] = {};
    IFilterGraph* m_pGraph = nullptr;
    IMediaEventSink* m_pSink = nullptr;
    std::atomic<LONG> m_PinVersion{1};
};

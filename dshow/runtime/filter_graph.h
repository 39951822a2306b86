// CLSID_FilterGraph: the filter graph manager. It holds the filters and their names, connects pins
// (directly, or through filters already in the graph and filters the mapper offers), moves the
// filters through their states, picks and distributes the reference clock, and collects the events
// the filters send.
//
// Locks, always taken in this order:
//   1. controlLock_  serialises the state methods (Run, Pause, Stop, SetSyncSource, ...) and owns
//                    the worker thread: it is held while the worker is joined.
//   2. graphLock_    (recursive) the filter list, the state, the clock and every call into filters
//                    that changes connections or states. The worker takes only this lock.
//   3. the filters' own locks, taken inside the filters' methods.
//   4. eventLock_    a leaf: Notify arrives on streaming threads that may hold filter locks, so
//                    nothing is called while it is held.
// Streaming threads never take controlLock_ or graphLock_ (Notify takes only eventLock_), so the graph
// may call filter methods that wait for a streaming thread (Stop) with graphLock_ held. GetState with
// a timeout is called without any graph lock, so that waiting for a pause holds nobody up.
//
// States (IMediaControl and IMediaFilter):
//   Stopped --Pause--> Paused   the default clock is chosen first (when the application has not
//                               set one), then the filters pause, renderers first
//   Paused  --Run-->   Running  when every filter has finished pausing, the filters run at once
//   Paused  --Run-->   Running* when a filter's pause is still incomplete (a renderer without its
//                               first sample): Run answers S_FALSE, GetState answers
//                               VFW_S_STATE_INTERMEDIATE with State_Running, and a worker thread
//                               runs the filters once all of them have finished pausing
//   Stopped --Run-->   first Pause, then as from Paused
//   any     --Stop-->  Stopped  a running graph pauses its filters first; a pending run is
//                               cancelled; no pause needs to be complete
//   any     --Pause--> Paused   cancels a pending run
// IMediaFilter::Run(tStart) runs the filters at once with the caller's start time.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "dshow/runtime/com_object.h"
#include "platform/win32_dshow.h"

namespace ze_dsrt {

using OleText = std::basic_string<OLECHAR>;

class FilterGraph final : public ComObject<FilterGraph, IFilterGraph2, IMediaControl, IMediaFilter, IMediaEventEx,
                                           IMediaEventSink> {
public:
    FilterGraph() = default;
    ~FilterGraph() override;

    void* FindInterface(REFIID iid);

    // IFilterGraph
    HRESULT STDMETHODCALLTYPE AddFilter(IBaseFilter* pFilter, LPCWSTR pName) override;
    HRESULT STDMETHODCALLTYPE RemoveFilter(IBaseFilter* pFilter) override;
    HRESULT STDMETHODCALLTYPE EnumFilters(IEnumFilters** ppEnum) override;
    HRESULT STDMETHODCALLTYPE FindFilterByName(LPCWSTR pName, IBaseFilter** ppFilter) override;
    HRESULT STDMETHODCALLTYPE ConnectDirect(IPin* ppinOut, IPin* ppinIn, const AM_MEDIA_TYPE* pmt) override;
    HRESULT STDMETHODCALLTYPE Reconnect(IPin* ppin) override;
    HRESULT STDMETHODCALLTYPE Disconnect(IPin* ppin) override;
    HRESULT STDMETHODCALLTYPE SetDefaultSyncSource() override;
    // IGraphBuilder
    HRESULT STDMETHODCALLTYPE Connect(IPin* ppinOut, IPin* ppinIn) override;
    HRESULT STDMETHODCALLTYPE Render(IPin* ppinOut) override;
    HRESULT STDMETHODCALLTYPE RenderFile(LPCWSTR, LPCWSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE AddSourceFilter(LPCWSTR, LPCWSTR, IBaseFilter**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetLogFile(DWORD_PTR) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Abort() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE ShouldOperationContinue() override { return S_OK; }
    // IFilterGraph2
    HRESULT STDMETHODCALLTYPE AddSourceFilterForMoniker(IMoniker*, IBindCtx*, LPCWSTR, IBaseFilter**) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE ReconnectEx(IPin* ppin, const AM_MEDIA_TYPE* pmt) override;
    HRESULT STDMETHODCALLTYPE RenderEx(IPin*, DWORD, DWORD*) override { return E_NOTIMPL; }

    // IDispatch (of IMediaControl and IMediaEvent): no type information is offered.
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* pctinfo) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return E_NOTIMPL;
    }

    // IMediaControl (Pause and Stop serve IMediaFilter too)
    HRESULT STDMETHODCALLTYPE Run() override;
    HRESULT STDMETHODCALLTYPE Pause() override;
    HRESULT STDMETHODCALLTYPE Stop() override;
    HRESULT STDMETHODCALLTYPE GetState(LONG msTimeout, OAFilterState* pfs) override;
    HRESULT STDMETHODCALLTYPE RenderFile(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE AddSourceFilter(BSTR, IDispatch**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_FilterCollection(IDispatch**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_RegFilterCollection(IDispatch**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE StopWhenReady() override;

    // IMediaFilter
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* clsid) override;
    HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME tStart) override;
    HRESULT STDMETHODCALLTYPE GetState(DWORD dwMilliSecsTimeout, FILTER_STATE* State) override;
    HRESULT STDMETHODCALLTYPE SetSyncSource(IReferenceClock* pClock) override;
    HRESULT STDMETHODCALLTYPE GetSyncSource(IReferenceClock** pClock) override;

    // IMediaEvent / IMediaEventEx
    HRESULT STDMETHODCALLTYPE GetEventHandle(OAEVENT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetEvent(LONG* lEventCode, LONG_PTR* lParam1, LONG_PTR* lParam2,
                                       LONG msTimeout) override;
    HRESULT STDMETHODCALLTYPE WaitForCompletion(LONG msTimeout, LONG* pEvCode) override;
    HRESULT STDMETHODCALLTYPE CancelDefaultHandling(LONG lEvCode) override;
    HRESULT STDMETHODCALLTYPE RestoreDefaultHandling(LONG lEvCode) override;
    HRESULT STDMETHODCALLTYPE FreeEventParams(LONG, LONG_PTR, LONG_PTR) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE SetNotifyWindow(OAHWND, LONG, LONG_PTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetNotifyFlags(LONG lNoNotifyFlags) override;
    HRESULT STDMETHODCALLTYPE GetNotifyFlags(LONG* lplNoNotifyFlags) override;

    // IMediaEventSink
    HRESULT STDMETHODCALLTYPE Notify(LONG EventCode, LONG_PTR EventParam1, LONG_PTR EventParam2) override;

private:
    struct Entry {
        ComPtr<IBaseFilter> filter;
        OleText name;
    };
    struct Event {
        LONG code;
        LONG_PTR param1;
        LONG_PTR param2;
    };

    // Filters (filter_graph.cpp).
    IFilterGraph* Self() { return static_cast<IFilterGraph*>(static_cast<IFilterGraph2*>(this)); }
    bool Contains(IBaseFilter* filter) const;
    bool PinInGraph(IPin* pin) const;
    HRESULT UniqueName(LPCWSTR wanted, OleText* name) const;
    std::vector<ComPtr<IBaseFilter>> Filters() const;
    // The filters with every filter after all filters downstream of it (renderers first).
    std::vector<ComPtr<IBaseFilter>> DownstreamFirst() const;

    // Connections (filter_graph_connect.cpp).
    HRESULT ConnectThrough(IPin* source, IPin* sink, int depth);
    HRESULT ConnectViaFilter(IPin* source, IBaseFilter* middle, IPin* sink, int depth);
    HRESULT ConnectViaMapper(IPin* source, IPin* sink, int depth);
    template <class TryFilter>
    bool TryCandidates(IEnumMoniker* candidates, TryFilter&& tryFilter);
    HRESULT RenderThrough(IPin* source, int depth);
    HRESULT ReconnectPin(IPin* pin, const AM_MEDIA_TYPE* pmt);

    // States and clock (filter_graph_state.cpp).
    HRESULT PauseLocked();
    HRESULT StopLocked();
    HRESULT RunFiltersLocked(REFERENCE_TIME start);
    REFERENCE_TIME StartTimeLocked();
    void ChooseDefaultClockLocked();
    void DistributeClockLocked();
    void CancelPendingRun();
    void RunWhenPaused(uint64_t generation);
    HRESULT FilterStates(DWORD timeout);
    HRESULT SetClockLocked(IReferenceClock* clock);

    // Events (filter_graph_events.cpp).
    void ResetCompletion();
    void Post(LONG code, LONG_PTR param1, LONG_PTR param2);
    int RendererCount() const;

    std::mutex controlLock_;
    mutable std::recursive_mutex graphLock_;

    // Guarded by graphLock_.
    std::vector<Entry> filters_;  // most recently added first, as EnumFilters lists them
    unsigned nextNameNumber_ = 1;
    FILTER_STATE state_ = State_Stopped;
    bool runPending_ = false;
    ComPtr<IReferenceClock> clock_;
    bool defaultClock_ = true;  // cleared by SetSyncSource, set by SetDefaultSyncSource
    REFERENCE_TIME start_ = 0;   // stream time 0 on the clock while running
    REFERENCE_TIME elapsed_ = 0;  // stream time reached when the graph paused

    // The worker that runs the filters once their pause completes; owned under controlLock_.
    std::thread worker_;
    std::atomic<uint64_t> generation_{0};

    // Guarded by eventLock_.
    std::mutex eventLock_;
    std::condition_variable eventPosted_;
    std::deque<Event> events_;
    std::set<LONG> ownHandling_;  // codes whose default handling the application cancelled
    LONG notifyFlags_ = 0;
    int completesSeen_ = 0;
    int renderersExpected_ = 0;
    bool completed_ = false;
    LONG completionCode_ = 0;
};

}  // namespace ze_dsrt

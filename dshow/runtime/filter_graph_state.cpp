// The graph's states (IMediaControl, IMediaFilter), the worker that finishes an asynchronous Run, and
// the reference clock. The transitions and the lock order are described in filter_graph.h.
#include <chrono>

#include "dshow/runtime/filter_graph.h"
#include "dshow/runtime/runtime_classes.h"

namespace ze_dsrt {

namespace {

// Stream time 0 lies this far after the moment the filters are told to run, so that they can start
// before their first sample is due.
constexpr REFERENCE_TIME kStartDelay = 200 * 10000;
// How long the worker waits on one filter's pause before it looks whether it has been cancelled.
constexpr DWORD kPollMilliseconds = 10;

// The first failure wins; otherwise S_FALSE once any filter answered it.
void Combine(HRESULT hr, HRESULT* result) {
    if (FAILED(*result)) return;
    if (FAILED(hr) || (hr == S_FALSE && *result == S_OK)) *result = hr;
}

}  // namespace

// ---- transitions (graphLock_ held) ----

HRESULT FilterGraph::PauseLocked() {
    if (state_ == State_Stopped) {
        ResetCompletion();
        if (defaultClock_ && !clock_) ChooseDefaultClockLocked();
    }
    if (state_ == State_Running && clock_) {
        REFERENCE_TIME now = 0;
        clock_->GetTime(&now);
        elapsed_ = now - start_;
    }
    HRESULT result = S_OK;
    for (const ComPtr<IBaseFilter>& filter : DownstreamFirst()) Combine(filter->Pause(), &result);
    state_ = State_Paused;
    return result;
}

HRESULT FilterGraph::StopLocked() {
    const std::vector<ComPtr<IBaseFilter>> order = DownstreamFirst();
    if (state_ == State_Running)
        for (const ComPtr<IBaseFilter>& filter : order) filter->Pause();
    HRESULT result = S_OK;
    for (const ComPtr<IBaseFilter>& filter : order) Combine(filter->Stop(), &result);
    state_ = State_Stopped;
    runPending_ = false;
    elapsed_ = 0;
    return FAILED(result) ? result : S_OK;
}

HRESULT FilterGraph::RunFiltersLocked(REFERENCE_TIME start) {
    start_ = start;
    {
        const int renderers = RendererCount();
        std::lock_guard<std::mutex> events(eventLock_);
        renderersExpected_ = renderers;
    }
    HRESULT result = S_OK;
    for (const ComPtr<IBaseFilter>& filter : DownstreamFirst()) Combine(filter->Run(start), &result);
    state_ = State_Running;
    runPending_ = false;
    return FAILED(result) ? result : S_OK;
}

REFERENCE_TIME FilterGraph::StartTimeLocked() {
    REFERENCE_TIME now = 0;
    if (!clock_ || FAILED(clock_->GetTime(&now))) return 0;
    return now - elapsed_ + kStartDelay;
}

// ---- the asynchronous part of Run ----

// Called with controlLock_ held and graphLock_ not held: the worker may be waiting for graphLock_.
void FilterGraph::CancelPendingRun() {
    ++generation_;
    if (worker_.joinable()) worker_.join();
    std::lock_guard<std::recursive_mutex> lock(graphLock_);
    runPending_ = false;
}

// Waits, without any lock, until every filter has finished pausing, then runs them unless a later
// Run, Pause or Stop took over.
void FilterGraph::RunWhenPaused(uint64_t generation) {
    try {
        for (const ComPtr<IBaseFilter>& filter : Filters()) {
            FILTER_STATE state = State_Paused;
            while (filter->GetState(kPollMilliseconds, &state) == VFW_S_STATE_INTERMEDIATE)
                if (generation_ != generation) return;
        }
        std::lock_guard<std::recursive_mutex> lock(graphLock_);
        if (generation_ == generation && runPending_) RunFiltersLocked(StartTimeLocked());
    } catch (...) {
        // Out of memory for the filter list: the graph stays paused, which GetState reports.
    }
}

// ---- IMediaControl / IMediaFilter ----

HRESULT FilterGraph::Run() {
    return Guarded([&]() -> HRESULT {
        std::lock_guard<std::mutex> control(controlLock_);
        {
            std::lock_guard<std::recursive_mutex> lock(graphLock_);
            if (state_ == State_Running) return runPending_ ? S_FALSE : S_OK;
        }
        CancelPendingRun();
        std::lock_guard<std::recursive_mutex> lock(graphLock_);
        HRESULT paused = S_OK;
        if (state_ == State_Stopped) {
            paused = PauseLocked();
            if (FAILED(paused)) return paused;
        }
        bool incomplete = paused == S_FALSE;
        for (const ComPtr<IBaseFilter>& filter : Filters()) {
            FILTER_STATE state = State_Paused;
            if (filter->GetState(0, &state) == VFW_S_STATE_INTERMEDIATE) incomplete = true;
        }
        if (!incomplete) return RunFiltersLocked(StartTimeLocked());
        state_ = State_Running;
        runPending_ = true;
        try {
            worker_ = std::thread(&FilterGraph::RunWhenPaused, this, generation_.load());
        } catch (const std::system_error&) {
            return RunFiltersLocked(StartTimeLocked());  // no thread to wait with: run at once
        }
        return S_FALSE;
    });
}

HRESULT FilterGraph::Run(REFERENCE_TIME tStart) {
    return Guarded([&]() -> HRESULT {
        std::lock_guard<std::mutex> control(controlLock_);
        CancelPendingRun();
        std::lock_guard<std::recursive_mutex> lock(graphLock_);
        if (state_ == State_Stopped) {
            const HRESULT paused = PauseLocked();
            if (FAILED(paused)) return paused;
        }
        return RunFiltersLocked(tStart);
    });
}

HRESULT FilterGraph::Pause() {
    return Guarded([&]() -> HRESULT {
        std::lock_guard<std::mutex> control(controlLock_);
        CancelPendingRun();
        std::lock_guard<std::recursive_mutex> lock(graphLock_);
        return PauseLocked();
    });
}

HRESULT FilterGraph::Stop() {
    return Guarded([&]() -> HRESULT {
        std::lock_guard<std::mutex> control(controlLock_);
        CancelPendingRun();
        std::lock_guard<std::recursive_mutex> lock(graphLock_);
        return StopLocked();
    });
}

HRESULT FilterGraph::StopWhenReady() {
    const HRESULT paused = Pause();
    return FAILED(paused) ? paused : Stop();
}

HRESULT FilterGraph::GetState(DWORD dwMilliSecsTimeout, FILTER_STATE* State) {
    if (State == nullptr) return E_POINTER;
    return Guarded([&]() -> HRESULT {
        {
            std::lock_guard<std::recursive_mutex> lock(graphLock_);
            *State = state_;
            // Until the worker has run the filters the graph is on its way to running.
            if (runPending_) return VFW_S_STATE_INTERMEDIATE;
        }
        return FilterStates(dwMilliSecsTimeout);
    });
}

HRESULT FilterGraph::GetState(LONG msTimeout, OAFilterState* pfs) {
    if (pfs == nullptr) return E_POINTER;
    FILTER_STATE state = State_Stopped;
    const HRESULT hr = GetState(static_cast<DWORD>(msTimeout), &state);
    *pfs = state;
    return hr;
}

// Asks every filter within one shared timeout: an incomplete transition wins, then VFW_S_CANT_CUE.
HRESULT FilterGraph::FilterStates(DWORD timeout) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeout == INFINITE ? 0 : timeout);
    HRESULT result = S_OK;
    for (const ComPtr<IBaseFilter>& filter : Filters()) {
        DWORD left = INFINITE;
        if (timeout != INFINITE) {
            const auto remaining = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
            left = remaining > 0 ? static_cast<DWORD>(remaining) : 0;
        }
        FILTER_STATE state = State_Stopped;
        const HRESULT hr = filter->GetState(left, &state);
        if (FAILED(hr) || hr == VFW_S_STATE_INTERMEDIATE) return hr;
        if (hr == VFW_S_CANT_CUE) result = hr;
    }
    return result;
}

// ---- clock ----

HRESULT FilterGraph::SetClockLocked(IReferenceClock* clock) {
    clock_ = ComPtr<IReferenceClock>(clock);
    HRESULT result = S_OK;
    for (const Entry& e : filters_) Combine(e.filter->SetSyncSource(clock), &result);
    return FAILED(result) ? result : S_OK;
}

// The first filter that is a clock, renderers first; otherwise the system clock.
void FilterGraph::ChooseDefaultClockLocked() {
    for (const ComPtr<IBaseFilter>& filter : DownstreamFirst()) {
        ComPtr<IReferenceClock> clock;
        if (SUCCEEDED(filter.As(IID_IReferenceClock, &clock))) {
            SetClockLocked(clock.Get());
            return;
        }
    }
    ComPtr<IReferenceClock> system;
    if (SUCCEEDED(CreateSystemClock(nullptr, IID_IReferenceClock, system.OutVoid()))) SetClockLocked(system.Get());
}

HRESULT FilterGraph::SetSyncSource(IReferenceClock* pClock) {
    return Guarded([&]() -> HRESULT {
        std::lock_guard<std::mutex> control(controlLock_);
        std::lock_guard<std::recursive_mutex> lock(graphLock_);
        // An explicit choice, a null clock included, holds until SetDefaultSyncSource.
        defaultClock_ = false;
        return SetClockLocked(pClock);
    });
}

HRESULT FilterGraph::GetSyncSource(IReferenceClock** pClock) {
    if (pClock == nullptr) return E_POINTER;
    std::lock_guard<std::recursive_mutex> lock(graphLock_);
    *pClock = ComPtr<IReferenceClock>(clock_).Detach();
    return S_OK;
}

HRESULT FilterGraph::SetDefaultSyncSource() {
    return Guarded([&]() -> HRESULT {
        std::lock_guard<std::mutex> control(controlLock_);
        std::lock_guard<std::recursive_mutex> lock(graphLock_);
        if (state_ != State_Stopped) return VFW_E_NOT_STOPPED;
        defaultClock_ = true;
        ChooseDefaultClockLocked();
        return S_OK;
    });
}

}  // namespace ze_dsrt

// The graph's events: IMediaEventSink for the filters, IMediaEvent(Ex) for the application.
//
// EC_COMPLETE has default handling: the graph passes on one EC_COMPLETE (S_OK, 0) once every
// renderer (a filter without output pins) of the running graph has sent its own; after
// CancelDefaultHandling(EC_COMPLETE) each one is passed on as it comes. EC_COMPLETE, EC_ERRORABORT
// and EC_USERABORT end WaitForCompletion. With AM_MEDIAEVENT_NONOTIFY set nothing is queued.
#include "dshow/runtime/filter_graph.h"
#include "dshow/runtime/graph_pins.h"

namespace ze_dsrt {

namespace {

constexpr LONG kNoNotify = 1;  // AM_MEDIAEVENT_NONOTIFY
// A queue nobody reads stops growing here; later events are dropped.
constexpr size_t kMaxQueuedEvents = 4096;

bool EndsCompletion(LONG code) { return code == EC_COMPLETE || code == EC_ERRORABORT || code == EC_USERABORT; }

template <class Predicate>
bool WaitFor(std::condition_variable& changed, std::unique_lock<std::mutex>& lock, LONG timeout, Predicate ready) {
    if (timeout < 0) {
        changed.wait(lock, ready);
        return true;
    }
    return changed.wait_for(lock, std::chrono::milliseconds(timeout), ready);
}

}  // namespace

int FilterGraph::RendererCount() const {
    int renderers = 0;
    for (const Entry& e : filters_)
        if (FilterPins(e.filter.Get(), PINDIR_OUTPUT).empty()) ++renderers;
    return renderers;
}

void FilterGraph::ResetCompletion() {
    std::lock_guard<std::mutex> lock(eventLock_);
    completed_ = false;
    completionCode_ = 0;
    completesSeen_ = 0;
}

// eventLock_ held.
void FilterGraph::Post(LONG code, LONG_PTR param1, LONG_PTR param2) {
    if (EndsCompletion(code)) {
        completed_ = true;
        completionCode_ = code;
    }
    if ((notifyFlags_ & kNoNotify) == 0 && events_.size() < kMaxQueuedEvents)
        events_.push_back(Event{code, param1, param2});
    eventPosted_.notify_all();
}

HRESULT FilterGraph::Notify(LONG EventCode, LONG_PTR EventParam1, LONG_PTR EventParam2) {
    return Guarded([&]() -> HRESULT {
        std::lock_guard<std::mutex> lock(eventLock_);
        if (EventCode == EC_COMPLETE && ownHandling_.count(EC_COMPLETE) == 0) {
            if (++completesSeen_ < renderersExpected_) return S_OK;
            completesSeen_ = 0;
            Post(EC_COMPLETE, S_OK, 0);
            return S_OK;
        }
        Post(EventCode, EventParam1, EventParam2);
        return S_OK;
    });
}

HRESULT FilterGraph::GetEvent(LONG* lEventCode, LONG_PTR* lParam1, LONG_PTR* lParam2, LONG msTimeout) {
    if (lEventCode == nullptr || lParam1 == nullptr || lParam2 == nullptr) return E_POINTER;
    std::unique_lock<std::mutex> lock(eventLock_);
    if (!WaitFor(eventPosted_, lock, msTimeout, [&] { return !events_.empty(); })) {
        *lEventCode = 0;
        *lParam1 = *lParam2 = 0;
        return E_ABORT;
    }
    const Event event = events_.front();
    events_.pop_front();
    *lEventCode = event.code;
    *lParam1 = event.param1;
    *lParam2 = event.param2;
    return S_OK;
}

HRESULT FilterGraph::WaitForCompletion(LONG msTimeout, LONG* pEvCode) {
    if (pEvCode == nullptr) return E_POINTER;
    *pEvCode = 0;
    {
        std::lock_guard<std::recursive_mutex> lock(graphLock_);
        if (state_ != State_Running) return VFW_E_WRONG_STATE;
    }
    std::unique_lock<std::mutex> lock(eventLock_);
    if (!WaitFor(eventPosted_, lock, msTimeout, [&] { return completed_; })) return E_ABORT;
    *pEvCode = completionCode_;
    return S_OK;
}

HRESULT FilterGraph::CancelDefaultHandling(LONG lEvCode) {
    return Guarded([&] {
        std::lock_guard<std::mutex> lock(eventLock_);
        ownHandling_.insert(lEvCode);
        return S_OK;
    });
}

HRESULT FilterGraph::RestoreDefaultHandling(LONG lEvCode) {
    std::lock_guard<std::mutex> lock(eventLock_);
    ownHandling_.erase(lEvCode);
    return S_OK;
}

HRESULT FilterGraph::SetNotifyFlags(LONG lNoNotifyFlags) {
    if (lNoNotifyFlags != 0 && lNoNotifyFlags != kNoNotify) return E_INVALIDARG;
    std::lock_guard<std::mutex> lock(eventLock_);
    notifyFlags_ = lNoNotifyFlags;
    if (notifyFlags_ != 0) events_.clear();
    return S_OK;
}

HRESULT FilterGraph::GetNotifyFlags(LONG* lplNoNotifyFlags) {
    if (lplNoNotifyFlags == nullptr) return E_POINTER;
    std::lock_guard<std::mutex> lock(eventLock_);
    *lplNoNotifyFlags = notifyFlags_;
    return S_OK;
}

}  // namespace ze_dsrt

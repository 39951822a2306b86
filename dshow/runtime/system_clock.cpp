// CLSID_SystemClock: a reference clock on the system's monotonic time, in 100 ns units.
//
// Advise requests are kept in a list that one timer thread per clock serves; it starts with the
// first request and ends with the clock. A one-shot request signals its event once its time has come
// and is dropped; a periodic one signals once per period from its start time until Unadvise. Handles
// are waitable events of the base classes (CAMEvent), signalled with CAMEvent::Signal; the
// semaphore of AdvisePeriodic is such an event too, so periods that pass before a waiter wakes merge
// into one wake-up.
#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

#include "dshow/baseclasses/am_event.h"
#include "dshow/runtime/com_object.h"
#include "dshow/runtime/runtime_classes.h"

namespace ze_dsrt {

namespace {

using SteadyClock = std::chrono::steady_clock;
using Units = std::chrono::duration<int64_t, std::ratio<1, 10000000>>;  // 100 ns

REFERENCE_TIME Now() { return std::chrono::duration_cast<Units>(SteadyClock::now().time_since_epoch()).count(); }

// Later than any request.
constexpr REFERENCE_TIME kNever = INT64_MAX;
// The timer sleeps at most this long at a time, which keeps far-off times clear of overflow.
constexpr REFERENCE_TIME kLongestSleep = 1000LL * 10000000;

class SystemClock final : public ComObject<SystemClock, IReferenceClock> {
public:
    SystemClock() = default;
    ~SystemClock() override {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            stopping_ = true;
        }
        changed_.notify_all();
        if (timer_.joinable()) timer_.join();
    }

    void* FindInterface(REFIID iid) {
        return IsEqualIID(iid, IID_IReferenceClock) ? static_cast<IReferenceClock*>(this) : nullptr;
    }

    // S_FALSE when the time is the one given last, as the clock has not moved since.
    HRESULT STDMETHODCALLTYPE GetTime(REFERENCE_TIME* pTime) override {
        if (pTime == nullptr) return E_POINTER;
        std::lock_guard<std::mutex> lock(mutex_);
        REFERENCE_TIME now = Now();
        if (now < lastTime_) now = lastTime_;
        const bool same = now == lastTime_;
        lastTime_ = now;
        *pTime = now;
        return same ? S_FALSE : S_OK;
    }

    HRESULT STDMETHODCALLTYPE AdviseTime(REFERENCE_TIME baseTime, REFERENCE_TIME streamTime, HEVENT hEvent,
                                         DWORD_PTR* pdwAdviseCookie) override {
        if (pdwAdviseCookie == nullptr) return E_POINTER;
        *pdwAdviseCookie = 0;
        if (hEvent == 0 || baseTime < 0 || streamTime < 0 || baseTime > kNever - streamTime) return E_INVALIDARG;
        return Add(Advise{0, baseTime + streamTime, 0, hEvent}, pdwAdviseCookie);
    }

    HRESULT STDMETHODCALLTYPE AdvisePeriodic(REFERENCE_TIME startTime, REFERENCE_TIME periodTime,
                                             HSEMAPHORE hSemaphore, DWORD_PTR* pdwAdviseCookie) override {
        if (pdwAdviseCookie == nullptr) return E_POINTER;
        *pdwAdviseCookie = 0;
        if (hSemaphore == 0 || startTime < 0 || periodTime <= 0) return E_INVALIDARG;
        return Add(Advise{0, startTime, periodTime, hSemaphore}, pdwAdviseCookie);
    }

    HRESULT STDMETHODCALLTYPE Unadvise(DWORD_PTR dwAdviseCookie) override {
        std::lock_guard<std::mutex> lock(mutex_);
        for (auto it = advises_.begin(); it != advises_.end(); ++it) {
            if (it->cookie == dwAdviseCookie) {
                advises_.erase(it);
                return S_OK;
            }
        }
        return S_FALSE;
    }

private:
    struct Advise {
        DWORD_PTR cookie;
        REFERENCE_TIME due;
        REFERENCE_TIME period;  // 0: one-shot
        DWORD_PTR handle;
    };

    HRESULT Add(Advise advise, DWORD_PTR* cookie) {
        return Guarded([&]() -> HRESULT {
            std::lock_guard<std::mutex> lock(mutex_);
            if (!timer_.joinable()) timer_ = std::thread(&SystemClock::Serve, this);
            advise.cookie = nextCookie_++;
            advises_.push_back(advise);
            *cookie = advise.cookie;
            changed_.notify_all();
            return S_OK;
        });
    }

    // The timer thread: signals what is due, then sleeps until the next request is due or the list
    // changes.
    void Serve() {
        std::unique_lock<std::mutex> lock(mutex_);
        while (!stopping_) {
            const REFERENCE_TIME now = Now();
            REFERENCE_TIME next = kNever;
            for (size_t i = 0; i < advises_.size();) {
                Advise& a = advises_[i];
                if (a.due <= now) {
                    CAMEvent::Signal(static_cast<HEVENT>(a.handle));
                    if (a.period == 0) {
                        advises_.erase(advises_.begin() + static_cast<std::ptrdiff_t>(i));
                        continue;
                    }
                    // Periods already over are skipped rather than signalled one after another.
                    a.due += ((now - a.due) / a.period + 1) * a.period;
                }
                if (a.due < next) next = a.due;
                ++i;
            }
            if (next == kNever)
                changed_.wait(lock);
            else
                changed_.wait_for(lock, Units(std::min(next - now, kLongestSleep)));
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::thread timer_;
    bool stopping_ = false;
    std::vector<Advise> advises_;
    DWORD_PTR nextCookie_ = 1;
    REFERENCE_TIME lastTime_ = 0;
};

}  // namespace

HRESULT CreateSystemClock(IUnknown* outer, REFIID iid, void** object) {
    return CreateObject<SystemClock>(outer, iid, object);
}

}  // namespace ze_dsrt

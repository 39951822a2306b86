// A reference clock whose time the test sets. AdviseTime requests fire (their event is signalled)
// once the clock has been set at or past base + stream time.
#pragma once

#include <atomic>
#include <map>
#include <mutex>

#include "dshow/baseclasses/streams.h"

namespace zetest {

class ManualClock : public IReferenceClock {
public:
    explicit ManualClock(REFERENCE_TIME now = 0) : m_now(now) {}
    virtual ~ManualClock() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        if (object == nullptr)
            return E_POINTER;
        if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IReferenceClock)) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        *object = static_cast<IReferenceClock*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++m_refs); }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const LONG left = --m_refs;
        if (left == 0)
            delete this;
        return static_cast<ULONG>(left);
    }

    HRESULT STDMETHODCALLTYPE GetTime(REFERENCE_TIME* time) override
    {
        if (time == nullptr)
            return E_POINTER;
        std::lock_guard<std::mutex> hold(m_lock);
        *time = m_now;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE AdviseTime(REFERENCE_TIME base, REFERENCE_TIME stream, HEVENT event,
                                         DWORD_PTR* cookie) override
    {
        if (cookie == nullptr)
            return E_POINTER;
        std::lock_guard<std::mutex> hold(m_lock);
        const REFERENCE_TIME due = base + stream;
        if (due <= m_now) {
            CAMEvent::Signal(event);
            *cookie = 0;
            ++m_advisesFired;
            return S_OK;
        }
        *cookie = ++m_lastCookie;
        m_pending[*cookie] = {due, event};
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE AdvisePeriodic(REFERENCE_TIME, REFERENCE_TIME, HSEMAPHORE, DWORD_PTR*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD_PTR cookie) override
    {
        std::lock_guard<std::mutex> hold(m_lock);
        return m_pending.erase(cookie) ? S_OK : S_FALSE;
    }

    // Moves the clock to `now` and fires every advise that is due.
    void SetTime(REFERENCE_TIME now)
    {
        std::lock_guard<std::mutex> hold(m_lock);
        m_now = now;
        for (auto it = m_pending.begin(); it != m_pending.end();) {
            if (it->second.due <= now) {
                CAMEvent::Signal(it->second.event);
                ++m_advisesFired;
                it = m_pending.erase(it);
            } else {
                ++it;
            }
        }
    }
    // Advises requested and not yet fired or cancelled.
    size_t PendingAdvises()
    {
        std::lock_guard<std::mutex> hold(m_lock);
        return m_pending.size();
    }
    int AdvisesFired()
    {
        std::lock_guard<std::mutex> hold(m_lock);
        return m_advisesFired;
    }

private:
    struct Advise {
        REFERENCE_TIME due;
        HEVENT event;
    };

    std::atomic<LONG> m_refs{0};
    std::mutex m_lock;
    REFERENCE_TIME m_now;
    DWORD_PTR m_lastCookie = 0;
    std::map<DWORD_PTR, Advise> m_pending;
    int m_advisesFired = 0;
};

}  // namespace zetest

// The graph side of filters under test: filters joined to an EventLog find their IMediaEventSink
// there, and every event they send is recorded. It manages no filters; the IFilterGraph calls a
// filter could make on its graph answer E_NOTIMPL.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

#include "dshow/baseclasses/streams.h"

namespace zetest {

struct LoggedEvent {
    LONG code;
    LONG_PTR param1;
    LONG_PTR param2;
};

class EventLog : public IFilterGraph, public IMediaEventSink {
public:
    EventLog() = default;
    virtual ~EventLog() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        if (object == nullptr)
            return E_POINTER;
        if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IFilterGraph))
            *object = static_cast<IFilterGraph*>(this);
        else if (IsEqualIID(iid, IID_IMediaEventSink))
            *object = static_cast<IMediaEventSink*>(this);
        else {
            *object = nullptr;
            return E_NOINTERFACE;
        }
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

    HRESULT STDMETHODCALLTYPE AddFilter(IBaseFilter*, LPCWSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE RemoveFilter(IBaseFilter*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE EnumFilters(IEnumFilters**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE FindFilterByName(LPCWSTR, IBaseFilter**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ConnectDirect(IPin*, IPin*, const AM_MEDIA_TYPE*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Reconnect(IPin*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Disconnect(IPin*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetDefaultSyncSource() override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE Notify(LONG code, LONG_PTR param1, LONG_PTR param2) override
    {
        {
            std::lock_guard<std::mutex> hold(m_lock);
            m_events.push_back({code, param1, param2});
        }
        m_changed.notify_all();
        return S_OK;
    }

    std::vector<LoggedEvent> Events()
    {
        std::lock_guard<std::mutex> hold(m_lock);
        return m_events;
    }
    int Count(LONG code)
    {
        std::lock_guard<std::mutex> hold(m_lock);
        int n = 0;
        for (const LoggedEvent& e : m_events)
            n += e.code == code ? 1 : 0;
        return n;
    }
    // Waits until an event with `code` has been logged; false after `timeout`.
    bool WaitFor(LONG code, std::chrono::milliseconds timeout = std::chrono::seconds(10))
    {
        std::unique_lock<std::mutex> hold(m_lock);
        return m_changed.wait_for(hold, timeout, [&] {
            for (const LoggedEvent& e : m_events)
                if (e.code == code)
                    return true;
            return false;
        });
    }
    void Clear()
    {
        std::lock_guard<std::mutex> hold(m_lock);
        m_events.clear();
    }

private:
    std::atomic<LONG> m_refs{0};
    std::mutex m_lock;
    std::condition_variable m_changed;
    std::vector<LoggedEvent> m_events;
};

}  // namespace zetest

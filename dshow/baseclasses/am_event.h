// A waitable event in the manner of a Win32 event: manual-reset events stay set until Reset, auto-reset
// events let one waiter through and clear themselves. Its handle can be given to
// IReferenceClock::AdviseTime: on Windows it is the Win32 event handle; elsewhere it names this object,
// and a clock signals it with CAMEvent::Signal(handle).
#pragma once

#include "platform/win32_dshow.h"

#ifndef _WIN32
#include <condition_variable>
#include <mutex>
#endif

class CAMEvent {
public:
    explicit CAMEvent(bool manualReset = false);
    ~CAMEvent();
    CAMEvent(const CAMEvent&) = delete;
    CAMEvent& operator=(const CAMEvent&) = delete;

    void Set();
    void Reset();
    // True when the event was (or became) set within `milliseconds` (INFINITE waits for ever).
    bool Wait(DWORD milliseconds = INFINITE);
    // Whether the event is set, without waiting or clearing an auto-reset event.
    bool IsSet();

    HEVENT Handle() const;
    // Sets the event behind a handle from Handle().
    static void Signal(HEVENT handle);

private:
#ifdef _WIN32
    HANDLE m_handle;
#else
    const bool m_manualReset;
    bool m_set = false;
    std::mutex m_mutex;
    std::condition_variable m_changed;
#endif
};

// Waitable events: the Win32 event itself on Windows, a flag under a condition variable elsewhere.
#include "dshow/baseclasses/am_event.h"

#include <chrono>

#ifdef _WIN32

CAMEvent::CAMEvent(bool manualReset) : m_handle(CreateEventW(nullptr, manualReset ? TRUE : FALSE, FALSE, nullptr)) {}
CAMEvent::~CAMEvent()
{
    if (m_handle)
        CloseHandle(m_handle);
}
void CAMEvent::Set() { SetEvent(m_handle); }
void CAMEvent::Reset() { ResetEvent(m_handle); }
bool CAMEvent::Wait(DWORD milliseconds) { return WaitForSingleObject(m_handle, milliseconds) == WAIT_OBJECT_0; }
bool CAMEvent::IsSet()
{
    // Waiting would clear an auto-reset event; every event here that is asked this is manual-reset.
    return WaitForSingleObject(m_handle, 0) == WAIT_OBJECT_0;
}
HEVENT CAMEvent::Handle() const { return reinterpret_cast<HEVENT>(m_handle); }
void CAMEvent::Signal(HEVENT handle) { SetEvent(reinterpret_cast<HANDLE>(handle)); }

#else

CAMEvent::CAMEvent(bool manualReset) : m_manualReset(manualReset) {}
CAMEvent::~CAMEvent() = default;

void CAMEvent::Set()
{
    {
        std::lock_guard<std::mutex> hold(m_mutex);
        m_set = true;
    }
    if (m_manualReset)
        m_changed.notify_all();
    else
        m_changed.notify_one();
}

void CAMEvent::Reset()
{
    std::lock_guard<std::mutex> hold(m_mutex);
    m_set = false;
}

bool CAMEvent::Wait(DWORD milliseconds)
{
    std::unique_lock<std::mutex> hold(m_mutex);
    auto isSet = [this] { return m_set; };
    if (milliseconds == INFINITE)
        m_changed.wait(hold, isSet);
    else if (!m_changed.wait_for(hold, std::chrono::milliseconds(milliseconds), isSet))
        return false;
    if (!m_manualReset)
        m_set = false;
    return true;
}

bool CAMEvent::IsSet()
{
    std::lock_guard<std::mutex> hold(m_mutex);
    return m_set;
}

HEVENT CAMEvent::Handle() const { return reinterpret_cast<HEVENT>(this); }
void CAMEvent::Signal(HEVENT handle) { reinterpret_cast<CAMEvent*>(handle)->Set(); }

#endif

// Critical sections (re-entrant, as on Windows) and interlocked counters.
#include <mutex>

#include "platform/win32_sync.h"

void InitializeCriticalSection(LPCRITICAL_SECTION section) {
    if (section) section->impl = new std::recursive_mutex;
}

void DeleteCriticalSection(LPCRITICAL_SECTION section) {
    if (!section) return;
    delete static_cast<std::recursive_mutex*>(section->impl);
    section->impl = nullptr;
}

void EnterCriticalSection(LPCRITICAL_SECTION section) {
    if (section && section->impl) static_cast<std::recursive_mutex*>(section->impl)->lock();
}

void LeaveCriticalSection(LPCRITICAL_SECTION section) {
    if (section && section->impl) static_cast<std::recursive_mutex*>(section->impl)->unlock();
}

LONG InterlockedIncrement(LONG volatile* value) { return __atomic_add_fetch(value, 1, __ATOMIC_SEQ_CST); }

LONG InterlockedDecrement(LONG volatile* value) { return __atomic_sub_fetch(value, 1, __ATOMIC_SEQ_CST); }

LONG InterlockedExchange(LONG volatile* target, LONG value) {
    return __atomic_exchange_n(target, value, __ATOMIC_SEQ_CST);
}

// Critical sections and interlocked counters (kernel32 subset).
#pragma once

#include "platform/win32_types.h"

// Re-entrant for its owning thread, as on Windows. The mutex lives behind a pointer so that
// the structure can be copied around as a plain record before initialisation.
typedef struct _CRITICAL_SECTION {
    void* impl;
} CRITICAL_SECTION, *LPCRITICAL_SECTION;

void InitializeCriticalSection(LPCRITICAL_SECTION section);
void DeleteCriticalSection(LPCRITICAL_SECTION section);
void EnterCriticalSection(LPCRITICAL_SECTION section);
void LeaveCriticalSection(LPCRITICAL_SECTION section);

LONG InterlockedIncrement(LONG volatile* value);
LONG InterlockedDecrement(LONG volatile* value);
LONG InterlockedExchange(LONG volatile* target, LONG value);

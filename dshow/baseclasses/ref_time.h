// Stream time helpers of the base classes: the 100-nanosecond units of REFERENCE_TIME, the time that
// never comes, and CRefTime, a REFERENCE_TIME with millisecond conversions.
#pragma once

#include "platform/win32_dshow.h"

constexpr LONGLONG MILLISECONDS = 1000;                 // milliseconds per second
constexpr LONGLONG UNITS = 10000000;                    // REFERENCE_TIME units (100 ns) per second
constexpr REFERENCE_TIME MAX_TIME = 0x7FFFFFFFFFFFFFFFLL;

class CRefTime {
public:
    CRefTime() = default;
    CRefTime(REFERENCE_TIME time) : m_time(time) {}
    static CRefTime FromMillisecs(LONG milliseconds)
    {
        return CRefTime(static_cast<REFERENCE_TIME>(milliseconds) * (UNITS / MILLISECONDS));
    }

    operator REFERENCE_TIME() const { return m_time; }
    CRefTime& operator+=(const CRefTime& other)
    {
        m_time += other.m_time;
        return *this;
    }
    CRefTime& operator-=(const CRefTime& other)
    {
        m_time -= other.m_time;
        return *this;
    }
    // Whole milliseconds, rounded towards zero.
    LONG Millisecs() const { return static_cast<LONG>(m_time / (UNITS / MILLISECONDS)); }
    LONGLONG GetUnits() const { return m_time; }

    REFERENCE_TIME m_time = 0;
};

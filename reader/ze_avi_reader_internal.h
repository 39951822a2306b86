// Helpers shared by the source files of CZEAviReader: the object lock guard, the exception barrier
// every interface method runs its work behind, and small conversions.
#pragma once

#include <cmath>
#include <cstdint>
#include <new>

#include "reader/status/ze_error_report.h"
#include "reader/ze_avi_reader.h"
#include "reader/ze_reader_source.h"

namespace ze_reader {

constexpr const char* kClass = "CZEAviReader";

inline HRESULT Report(const char* method, HRESULT code) { return ReportError(kClass, method, code); }

// Runs work and turns any exception into one report under the method's name, so that nothing
// escapes through a COM interface.
template <class Work>
HRESULT Guarded(const char* method, Work&& work) noexcept {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return Report(method, E_OUTOFMEMORY);
    } catch (...) {
        return Report(method, E_FAIL);
    }
}

// A time as a frame or sample number: truncation toward zero. A negative, non-finite or too large
// value gives UINT64_MAX, which every caller treats as "beyond the end".
inline uint64_t TruncateToIndex(double value) {
    if (!(value >= 0.0) || value >= 18446744073709551615.0) return UINT64_MAX;
    return static_cast<uint64_t>(value);
}

// The six WAVEFORMATEX fields that the host records (stream and reader information) repeat.
template <class Record>
void CopyWaveFields(const WAVEFORMATEX& format, Record* record) {
    record->wFormatTag = format.wFormatTag;
    record->nChannels = format.nChannels;
    record->nSamplesPerSec = format.nSamplesPerSec;
    record->nAvgBytesPerSec = format.nAvgBytesPerSec;
    record->nBlockAlign = format.nBlockAlign;
    record->wBitsPerSample = format.wBitsPerSample;
}

}  // namespace ze_reader

// Holds the object lock for a scope. An object whose COM initialisation failed has no lock; it
// then runs unlocked rather than touch an uninitialised critical section.
class CZEAviReader::LockGuard {
public:
    explicit LockGuard(CZEAviReader& reader) : m_reader(reader) {
        if (m_reader.m_lockReady) EnterCriticalSection(&m_reader.m_lock);
    }
    ~LockGuard() {
        if (m_reader.m_lockReady) LeaveCriticalSection(&m_reader.m_lock);
    }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;

private:
    CZEAviReader& m_reader;
};

// Locks of the base classes. CCritSec is re-entrant for its owning thread, as a Windows critical
// section is; CAutoLock holds one for the length of a scope.
#pragma once

#include <mutex>

class CCritSec {
public:
    CCritSec() = default;
    CCritSec(const CCritSec&) = delete;
    CCritSec& operator=(const CCritSec&) = delete;

    void Lock() { m_mutex.lock(); }
    void Unlock() { m_mutex.unlock(); }

private:
    std::recursive_mutex m_mutex;
};

class CAutoLock {
public:
    explicit CAutoLock(CCritSec* lock) : m_lock(lock) { m_lock->Lock(); }
    ~CAutoLock() { m_lock->Unlock(); }
    CAutoLock(const CAutoLock&) = delete;
    CAutoLock& operator=(const CAutoLock&) = delete;

private:
    CCritSec* m_lock;
};

// Sample allocators: CBaseAllocator keeps the free list, the commit state and the waiting of
// GetBuffer; CMemAllocator places the buffers in one block of process memory.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

#include "dshow/baseclasses/media_sample.h"
#include "dshow/baseclasses/unknown.h"

// States: decommitted (the initial state) and committed.
//   Commit      decommitted -> committed; allocates the samples, unless a decommit is still waiting
//               for samples to come back, which it then simply cancels. VFW_E_SIZENOTSET before any
//               SetProperties.
//   Decommit    committed -> decommitted; frees the samples at once when all are home, otherwise when
//               the last one comes back. Wakes every GetBuffer waiter, which then fails.
//   GetBuffer   decommitted: VFW_E_NOT_COMMITTED. Committed: a free sample, or a wait for one
//               (AM_GBF_NOWAIT: VFW_E_TIMEOUT instead of waiting).
//   SetProperties  VFW_E_ALREADY_COMMITTED while committed, VFW_E_BUFFERS_OUTSTANDING while samples are out.
// Every sample handed out holds a reference on the allocator until its final Release brings it back.
// Locking: m_lock guards the state and the sample lists; no call leaves the allocator while it is held
// other than into its own samples.
class CBaseAllocator : public CUnknown, public IMemAllocator {
public:
    CBaseAllocator(const char* name, LPUNKNOWN outer, HRESULT* phr);
    ~CBaseAllocator() override;

    DECLARE_IUNKNOWN
    HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override;

    HRESULT STDMETHODCALLTYPE SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) override;
    HRESULT STDMETHODCALLTYPE GetProperties(ALLOCATOR_PROPERTIES* properties) override;
    HRESULT STDMETHODCALLTYPE Commit() override;
    HRESULT STDMETHODCALLTYPE Decommit() override;
    HRESULT STDMETHODCALLTYPE GetBuffer(IMediaSample** sample, REFERENCE_TIME* start, REFERENCE_TIME* end,
                                        DWORD flags) override;
    HRESULT STDMETHODCALLTYPE ReleaseBuffer(IMediaSample* sample) override;

protected:
    // Called under m_lock: create m_lCount samples of m_lSize bytes into m_samples (and m_free).
    virtual HRESULT Alloc() = 0;
    // Called under m_lock with every sample home: delete the samples and their memory.
    virtual void Free() = 0;
    // The checks and bookkeeping of SetProperties, under m_lock; `actual` gets what was stored.
    HRESULT StoreProperties(const ALLOCATOR_PROPERTIES& request, ALLOCATOR_PROPERTIES* actual);

    std::mutex m_lock;
    std::condition_variable m_sampleFreed;
    std::vector<std::unique_ptr<CMediaSample>> m_samples;
    std::vector<CMediaSample*> m_free;
    LONG m_lCount = 0;
    LONG m_lSize = 0;
    LONG m_lAlignment = 1;
    LONG m_lPrefix = 0;
    bool m_bCommitted = false;
    bool m_bDecommitInProgress = false;
    bool m_bChanged = false;  // properties set since the samples were made
};

// Buffers of cbBuffer bytes after cbPrefix bytes of prefix, each prefix start aligned to cbAlign (a
// power of two). The buffer size is rounded up so that prefix plus buffer is a multiple of the alignment.
class CMemAllocator : public CBaseAllocator {
public:
    CMemAllocator(const char* name, LPUNKNOWN outer, HRESULT* phr);
    ~CMemAllocator() override;

    // A new allocator with one reference for the caller.
    static HRESULT CreateInstance(IMemAllocator** allocator);

    HRESULT STDMETHODCALLTYPE SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) override;

protected:
    HRESULT Alloc() override;
    void Free() override;

private:
    std::unique_ptr<BYTE[]> m_memory;
};

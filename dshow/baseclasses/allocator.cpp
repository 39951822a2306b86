// Commit, decommit and the free list of sample allocators; CMemAllocator's memory.
#include "dshow/baseclasses/allocator.h"

#include <algorithm>
#include <cstdint>
#include <new>

CBaseAllocator::CBaseAllocator(const char* name, LPUNKNOWN outer, HRESULT* phr) : CUnknown(name, outer, phr) {}

CBaseAllocator::~CBaseAllocator() = default;

HRESULT STDMETHODCALLTYPE CBaseAllocator::NonDelegatingQueryInterface(REFIID iid, void** object)
{
    if (object == nullptr)
        return E_POINTER;
    if (IsEqualIID(iid, IID_IMemAllocator))
        return GetInterface(static_cast<IMemAllocator*>(this), object);
    return CUnknown::NonDelegatingQueryInterface(iid, object);
}

HRESULT CBaseAllocator::StoreProperties(const ALLOCATOR_PROPERTIES& request, ALLOCATOR_PROPERTIES* actual)
{
    if (m_bCommitted)
        return VFW_E_ALREADY_COMMITTED;
    if (m_free.size() != m_samples.size())
        return VFW_E_BUFFERS_OUTSTANDING;
    m_lCount = request.cBuffers;
    m_lSize = request.cbBuffer;
    m_lAlignment = request.cbAlign;
    m_lPrefix = request.cbPrefix;
    m_bChanged = true;
    actual->cBuffers = m_lCount;
    actual->cbBuffer = m_lSize;
    actual->cbAlign = m_lAlignment;
    actual->cbPrefix = m_lPrefix;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseAllocator::SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual)
{
    if (request == nullptr || actual == nullptr)
        return E_POINTER;
    std::lock_guard<std::mutex> hold(m_lock);
    return StoreProperties(*request, actual);
}

HRESULT STDMETHODCALLTYPE CBaseAllocator::GetProperties(ALLOCATOR_PROPERTIES* properties)
{
    if (properties == nullptr)
        return E_POINTER;
    std::lock_guard<std::mutex> hold(m_lock);
    properties->cBuffers = m_lCount;
    properties->cbBuffer = m_lSize;
    properties->cbAlign = m_lAlignment;
    properties->cbPrefix = m_lPrefix;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseAllocator::Commit()
{
    std::lock_guard<std::mutex> hold(m_lock);
    if (m_bCommitted)
        return S_OK;
    if (m_bDecommitInProgress) {
        m_bDecommitInProgress = false;
        m_bCommitted = true;
        return S_OK;
    }
    if (m_lCount <= 0 || m_lSize <= 0)
        return VFW_E_SIZENOTSET;
    HRESULT hr = S_OK;
    if (m_samples.empty() || m_bChanged) {
        Free();
        hr = Alloc();
        if (FAILED(hr)) {
            Free();
            return hr;
        }
        m_bChanged = false;
    }
    m_bCommitted = true;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseAllocator::Decommit()
{
    {
        std::lock_guard<std::mutex> hold(m_lock);
        if (!m_bCommitted)
            return S_OK;
        m_bCommitted = false;
        if (m_free.size() == m_samples.size())
            Free();
        else
            m_bDecommitInProgress = true;
    }
    m_sampleFreed.notify_all();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseAllocator::GetBuffer(IMediaSample** sample, REFERENCE_TIME* /*start*/,
                                                    REFERENCE_TIME* /*end*/, DWORD flags)
{
    if (sample == nullptr)
        return E_POINTER;
    *sample = nullptr;
    CMediaSample* taken = nullptr;
    {
        std::unique_lock<std::mutex> hold(m_lock);
        for (;;) {
            if (!m_bCommitted)
                return VFW_E_NOT_COMMITTED;
            if (!m_free.empty())
                break;
            if (flags & AM_GBF_NOWAIT)
                return VFW_E_TIMEOUT;
            m_sampleFreed.wait(hold);
        }
        taken = m_free.back();
        m_free.pop_back();
        taken->m_cRef = 1;
    }
    // The sample keeps its allocator alive until it comes back.
    AddRef();
    *sample = taken;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CBaseAllocator::ReleaseBuffer(IMediaSample* sample)
{
    if (sample == nullptr)
        return E_POINTER;
    {
        std::lock_guard<std::mutex> hold(m_lock);
        m_free.push_back(static_cast<CMediaSample*>(sample));
        if (m_bDecommitInProgress && m_free.size() == m_samples.size()) {
            Free();
            m_bDecommitInProgress = false;
        }
    }
    m_sampleFreed.notify_one();
    Release();
    return S_OK;
}

CMemAllocator::CMemAllocator(const char* name, LPUNKNOWN outer, HRESULT* phr) : CBaseAllocator(name, outer, phr) {}

CMemAllocator::~CMemAllocator()
{
    std::lock_guard<std::mutex> hold(m_lock);
    Free();
}

HRESULT CMemAllocator::CreateInstance(IMemAllocator** allocator)
{
    if (allocator == nullptr)
        return E_POINTER;
    *allocator = nullptr;
    try {
        auto* created = new CMemAllocator("CMemAllocator", nullptr, nullptr);
        return created->NonDelegatingQueryInterface(IID_IMemAllocator, reinterpret_cast<void**>(allocator));
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

HRESULT STDMETHODCALLTYPE CMemAllocator::SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual)
{
    if (request == nullptr || actual == nullptr)
        return E_POINTER;
    const LONG align = request->cbAlign;
    if (align <= 0 || (align & (align - 1)) != 0)
        return VFW_E_BADALIGN;
    if (request->cbBuffer < 0 || request->cbPrefix < 0)
        return E_INVALIDARG;
    ALLOCATOR_PROPERTIES rounded = *request;
    const int64_t span = static_cast<int64_t>(request->cbBuffer) + request->cbPrefix;
    const int64_t alignedSpan = (span + align - 1) / align * align;
    if (alignedSpan > INT32_MAX)
        return E_OUTOFMEMORY;
    rounded.cbBuffer = static_cast<LONG>(alignedSpan - request->cbPrefix);
    std::lock_guard<std::mutex> hold(m_lock);
    return StoreProperties(rounded, actual);
}

HRESULT CMemAllocator::Alloc()
{
    const size_t stride = static_cast<size_t>(m_lSize) + static_cast<size_t>(m_lPrefix);
    const size_t align = static_cast<size_t>(m_lAlignment);
    try {
        m_memory = std::make_unique<BYTE[]>(stride * static_cast<size_t>(m_lCount) + align - 1);
        const auto base = reinterpret_cast<uintptr_t>(m_memory.get());
        BYTE* first = m_memory.get() + ((align - base % align) % align);
        m_samples.reserve(static_cast<size_t>(m_lCount));
        m_free.reserve(static_cast<size_t>(m_lCount));
        for (LONG i = 0; i < m_lCount; ++i) {
            BYTE* buffer = first + stride * static_cast<size_t>(i) + static_cast<size_t>(m_lPrefix);
            m_samples.push_back(std::make_unique<CMediaSample>("CMediaSample", this, nullptr, buffer, m_lSize));
            m_free.push_back(m_samples.back().get());
        }
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
    return S_OK;
}

void CMemAllocator::Free()
{
    m_free.clear();
    m_samples.clear();
    m_memory.reset();
}

// A source filter for tests: its one output pin offers the media types the test gives, and pushes the
// samples the test hands it into the connected pin, on the calling thread.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "dshow/baseclasses/streams.h"

namespace zetest {

// One sample to push. Untimed unless `timed`; a sync point unless told otherwise.
struct PushedSample {
    std::vector<uint8_t> bytes;
    bool timed = false;
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    bool syncPoint = true;
    bool discontinuity = false;
    bool preroll = false;
    const AM_MEDIA_TYPE* mediaType = nullptr;  // attached to the sample: a type change in the stream

    static PushedSample Untimed(std::vector<uint8_t> bytes)
    {
        PushedSample s;
        s.bytes = std::move(bytes);
        return s;
    }
    static PushedSample Timed(std::vector<uint8_t> bytes, REFERENCE_TIME start, REFERENCE_TIME stop,
                              bool syncPoint = true)
    {
        PushedSample s;
        s.bytes = std::move(bytes);
        s.timed = true;
        s.start = start;
        s.stop = stop;
        s.syncPoint = syncPoint;
        return s;
    }
};

class TestSourcePin : public CBaseOutputPin {
public:
    TestSourcePin(CBaseFilter* filter, CCritSec* lock, HRESULT* phr, std::vector<CMediaType> types,
                  LONG bufferSize, LONG bufferCount)
        : CBaseOutputPin("TestSourcePin", filter, lock, phr, "Out"),
          m_types(std::move(types)), m_bufferSize(bufferSize), m_bufferCount(bufferCount)
    {
    }

    // Accepts exactly the offered types.
    HRESULT CheckMediaType(const CMediaType* type) override
    {
        for (const CMediaType& offered : m_types)
            if (offered == *type)
                return S_OK;
        return S_FALSE;
    }
    HRESULT GetMediaType(int position, CMediaType* type) override
    {
        if (position < 0)
            return E_INVALIDARG;
        if (static_cast<size_t>(position) >= m_types.size())
            return VFW_S_NO_MORE_ITEMS;
        return type->Set(m_types[static_cast<size_t>(position)]);
    }
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override
    {
        request->cBuffers = request->cBuffers > m_bufferCount ? request->cBuffers : m_bufferCount;
        request->cbBuffer = request->cbBuffer > m_bufferSize ? request->cbBuffer : m_bufferSize;
        ALLOCATOR_PROPERTIES actual{};
        const HRESULT hr = allocator->SetProperties(request, &actual);
        if (FAILED(hr))
            return hr;
        return actual.cbBuffer < request->cbBuffer || actual.cBuffers < request->cBuffers ? E_FAIL : S_OK;
    }

private:
    std::vector<CMediaType> m_types;
    LONG m_bufferSize;
    LONG m_bufferCount;
};

class TestSourceFilter : public CBaseFilter {
public:
    // Offers `types` in this order; its allocator has `bufferCount` buffers of at least `bufferSize` bytes.
    TestSourceFilter(std::vector<CMediaType> types, LONG bufferSize = 1 << 16, LONG bufferCount = 2)
        : CBaseFilter("TestSourceFilter", nullptr, &m_lock, GUID_NULL)
    {
        m_pin = std::make_unique<TestSourcePin>(this, &m_lock, nullptr, std::move(types), bufferSize, bufferCount);
    }

    int GetPinCount() override { return 1; }
    CBasePin* GetPin(int n) override { return n == 0 ? m_pin.get() : nullptr; }
    TestSourcePin* OutputPin() const { return m_pin.get(); }

    // Fills a buffer from the allocator with `sample` and delivers it. The answer is the allocator's
    // failure, or else the downstream pin's answer to Receive.
    HRESULT Push(const PushedSample& sample)
    {
        CInterfacePtr<IMediaSample> buffer;
        HRESULT hr = m_pin->GetDeliveryBuffer(buffer.Out(), nullptr, nullptr, 0);
        if (FAILED(hr))
            return hr;
        if (static_cast<LONG>(sample.bytes.size()) > buffer->GetSize())
            return VFW_E_BUFFER_OVERFLOW;
        BYTE* data = nullptr;
        buffer->GetPointer(&data);
        if (!sample.bytes.empty())
            std::memcpy(data, sample.bytes.data(), sample.bytes.size());
        buffer->SetActualDataLength(static_cast<LONG>(sample.bytes.size()));
        REFERENCE_TIME start = sample.start;
        REFERENCE_TIME stop = sample.stop;
        buffer->SetTime(sample.timed ? &start : nullptr, sample.timed ? &stop : nullptr);
        buffer->SetSyncPoint(sample.syncPoint ? TRUE : FALSE);
        buffer->SetDiscontinuity(sample.discontinuity ? TRUE : FALSE);
        buffer->SetPreroll(sample.preroll ? TRUE : FALSE);
        if (sample.mediaType != nullptr) {
            hr = buffer->SetMediaType(const_cast<AM_MEDIA_TYPE*>(sample.mediaType));
            if (FAILED(hr))
                return hr;
        }
        return m_pin->Deliver(buffer.Get());
    }
    HRESULT PushBytes(std::vector<uint8_t> bytes) { return Push(PushedSample::Untimed(std::move(bytes))); }

    HRESULT DeliverEndOfStream() { return m_pin->DeliverEndOfStream(); }
    HRESULT DeliverBeginFlush() { return m_pin->DeliverBeginFlush(); }
    HRESULT DeliverEndFlush() { return m_pin->DeliverEndFlush(); }
    HRESULT DeliverNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate = 1.0)
    {
        return m_pin->DeliverNewSegment(start, stop, rate);
    }

private:
    CCritSec m_lock;
    std::unique_ptr<TestSourcePin> m_pin;
};

}  // namespace zetest

// Filters that exist only to observe the base classes: a sink whose input pin offers, accepts and logs
// chosen types and can be told to fail its streaming hooks, and a pass-through transform.
#pragma once

#include <optional>
#include <vector>

#include "dshow/baseclasses/streams.h"

namespace basetest {

class ProbeSink;

class ProbeSinkPin : public CBaseInputPin {
public:
    ProbeSinkPin(CBaseFilter* filter, CCritSec* lock) : CBaseInputPin("ProbeSinkPin", filter, lock, nullptr, "In") {}

    HRESULT CheckMediaType(const CMediaType* type) override
    {
        checked.push_back(*type);
        for (const CMediaType& ok : accepted)
            if (ok == *type)
                return S_OK;
        return S_FALSE;
    }
    // An empty entry answers S_FALSE at its position, as a pin with a hole in its list would.
    HRESULT GetMediaType(int position, CMediaType* type) override
    {
        if (position < 0 || static_cast<size_t>(position) >= offered.size())
            return VFW_S_NO_MORE_ITEMS;
        const auto& entry = offered[static_cast<size_t>(position)];
        if (!entry)
            return S_FALSE;
        return type->Set(*entry);
    }
    HRESULT STDMETHODCALLTYPE Receive(IMediaSample* sample) override
    {
        const HRESULT hr = CBaseInputPin::Receive(sample);
        if (hr == S_OK)
            ++received;
        return hr;
    }
    // Without an allocator of its own to offer, the output pin must bring one.
    HRESULT STDMETHODCALLTYPE GetAllocator(IMemAllocator** allocator) override
    {
        if (!offersAllocator) {
            *allocator = nullptr;
            return VFW_E_NO_ALLOCATOR;
        }
        return CBaseInputPin::GetAllocator(allocator);
    }
    HRESULT Active() override { return activeResult; }
    HRESULT Inactive() override
    {
        const HRESULT hr = CBaseInputPin::Inactive();
        return FAILED(inactiveResult) ? inactiveResult : hr;
    }

    std::vector<std::optional<CMediaType>> offered;
    std::vector<CMediaType> accepted;
    std::vector<CMediaType> checked;
    int received = 0;
    bool offersAllocator = true;
    HRESULT activeResult = S_OK;
    HRESULT inactiveResult = S_OK;
};

class ProbeSink : public CBaseFilter {
public:
    ProbeSink() : CBaseFilter("ProbeSink", nullptr, &m_lock, GUID_NULL), m_pin(this, &m_lock) {}
    int GetPinCount() override { return 1; }
    CBasePin* GetPin(int n) override { return n == 0 ? &m_pin : nullptr; }
    ProbeSinkPin& Pin() { return m_pin; }

private:
    CCritSec m_lock;
    ProbeSinkPin m_pin;
};

// Copies each input into an output of the same type. Inputs whose first byte is `skipMarker` are
// skipped (Transform answers S_FALSE).
class PassThrough : public CTransformFilter {
public:
    static constexpr BYTE skipMarker = 0xEE;

    PassThrough() : CTransformFilter("PassThrough", nullptr, GUID_NULL) {}

    HRESULT CheckInputType(const CMediaType* in) override { return in->IsValid() ? S_OK : S_FALSE; }
    HRESULT CheckTransform(const CMediaType* in, const CMediaType* out) override { return *in == *out ? S_OK : S_FALSE; }
    HRESULT GetMediaType(int position, CMediaType* type) override
    {
        if (position != 0)
            return VFW_S_NO_MORE_ITEMS;
        return type->Set(m_pInput->CurrentMediaType());
    }
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override
    {
        request->cBuffers = request->cBuffers > 1 ? request->cBuffers : 1;
        request->cbBuffer = request->cbBuffer > 256 ? request->cbBuffer : 256;
        ALLOCATOR_PROPERTIES actual{};
        return allocator->SetProperties(request, &actual);
    }
    HRESULT Transform(IMediaSample* in, IMediaSample* out) override
    {
        BYTE* from = nullptr;
        BYTE* to = nullptr;
        in->GetPointer(&from);
        out->GetPointer(&to);
        const LONG length = in->GetActualDataLength();
        if (length > 0 && from[0] == skipMarker)
            return S_FALSE;
        if (length > out->GetSize())
            return VFW_E_BUFFER_OVERFLOW;
        std::memcpy(to, from, static_cast<size_t>(length));
        return out->SetActualDataLength(length);
    }
};

}  // namespace basetest

// A renderer for tests, built on CBaseRenderer: it keeps every rendered sample's bytes, media type,
// times and flags, and the thread that rendered it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "dshow/baseclasses/streams.h"

namespace zetest {

struct RenderedSample {
    std::vector<uint8_t> bytes;
    CMediaType type;  // the connection type, or the latest type a sample brought
    bool timed = false;
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    bool syncPoint = false;
    bool discontinuity = false;
    bool preroll = false;
    std::thread::id thread;
};

class CollectingRenderer : public CBaseRenderer {
public:
    // Decides which types the input pin accepts (S_OK accepts); without it every type is accepted.
    using TypeCheck = std::function<HRESULT(const CMediaType*)>;

    explicit CollectingRenderer(TypeCheck accept = {})
        : CBaseRenderer(GUID_NULL, "CollectingRenderer", nullptr, nullptr), m_accept(std::move(accept))
    {
    }

    HRESULT CheckMediaType(const CMediaType* type) override { return m_accept ? m_accept(type) : S_OK; }
    // Replaces the type check; call it while no sample is being delivered.
    void SetAccept(TypeCheck accept) { m_accept = std::move(accept); }

    HRESULT DoRenderSample(IMediaSample* sample) override
    {
        RenderedSample kept;
        BYTE* data = nullptr;
        sample->GetPointer(&data);
        const LONG length = sample->GetActualDataLength();
        if (data != nullptr && length > 0)
            kept.bytes.assign(data, data + length);
        kept.type = m_pInputPin->CurrentMediaType();
        kept.timed = SUCCEEDED(sample->GetTime(&kept.start, &kept.stop));
        kept.syncPoint = sample->IsSyncPoint() == S_OK;
        kept.discontinuity = sample->IsDiscontinuity() == S_OK;
        kept.preroll = sample->IsPreroll() == S_OK;
        kept.thread = std::this_thread::get_id();
        {
            std::lock_guard<std::mutex> hold(m_samplesLock);
            m_samples.push_back(std::move(kept));
        }
        m_samplesChanged.notify_all();
        return S_OK;
    }

    HRESULT EndOfStream() override
    {
        {
            std::lock_guard<std::mutex> hold(m_samplesLock);
            ++m_endOfStreams;
        }
        m_samplesChanged.notify_all();
        return CBaseRenderer::EndOfStream();
    }

    std::vector<RenderedSample> Samples()
    {
        std::lock_guard<std::mutex> hold(m_samplesLock);
        return m_samples;
    }
    size_t Count()
    {
        std::lock_guard<std::mutex> hold(m_samplesLock);
        return m_samples.size();
    }
    // End-of-stream calls that passed the input pin's streaming checks.
    int EndOfStreamCount()
    {
        std::lock_guard<std::mutex> hold(m_samplesLock);
        return m_endOfStreams;
    }
    void Clear()
    {
        std::lock_guard<std::mutex> hold(m_samplesLock);
        m_samples.clear();
        m_endOfStreams = 0;
    }
    // Waits until `count` samples have been rendered; false after `timeout`.
    bool WaitForCount(size_t count, std::chrono::milliseconds timeout = std::chrono::seconds(10))
    {
        std::unique_lock<std::mutex> hold(m_samplesLock);
        return m_samplesChanged.wait_for(hold, timeout, [&] { return m_samples.size() >= count; });
    }
    // The type the input pin was connected with.
    CMediaType ConnectedType() { return m_pInputPin->CurrentMediaType(); }

private:
    TypeCheck m_accept;
    std::mutex m_samplesLock;
    std::condition_variable m_samplesChanged;
    std::vector<RenderedSample> m_samples;
    int m_endOfStreams = 0;
};

}  // namespace zetest

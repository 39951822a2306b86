// Wiring for tests without a graph manager: filters in a line, source first, connected pin to pin and
// moved through their states in the order a graph uses (downstream first), all joined to one EventLog.
#pragma once

#include <vector>

#include "dshow/baseclasses/streams.h"
#include "dshow/baseclasses/wide_name.h"
#include "tests/dshow/support/event_log.h"

namespace zetest {

// The `index`-th pin of `filter` with `direction`, with a reference; null when there is none.
inline CInterfacePtr<IPin> FindPin(IBaseFilter* filter, PIN_DIRECTION direction, int index = 0)
{
    CInterfacePtr<IEnumPins> pins;
    if (FAILED(filter->EnumPins(pins.Out())))
        return {};
    for (;;) {
        CInterfacePtr<IPin> pin;
        ULONG fetched = 0;
        if (pins->Next(1, pin.Out(), &fetched) != S_OK || fetched != 1)
            return {};
        PIN_DIRECTION found;
        if (SUCCEEDED(pin->QueryDirection(&found)) && found == direction && index-- == 0)
            return pin;
    }
}

class FilterChain {
public:
    FilterChain() { m_log.Assign(new EventLog); }
    ~FilterChain() { Teardown(); }
    FilterChain(const FilterChain&) = delete;
    FilterChain& operator=(const FilterChain&) = delete;

    // Appends `filter` downstream of those already added and joins it to the event log.
    void Add(IBaseFilter* filter, const char* name = "filter")
    {
        m_filters.emplace_back(filter);
        filter->JoinFilterGraph(m_log.Get(), MakeWideName(name).c_str());
    }

    // Connects filter `upstream`'s first output pin to the next filter's first input pin, asking for
    // `type` when given. The answer is the output pin's IPin::Connect answer.
    HRESULT Connect(size_t upstream, const AM_MEDIA_TYPE* type = nullptr)
    {
        if (upstream + 1 >= m_filters.size())
            return E_INVALIDARG;
        CInterfacePtr<IPin> out = FindPin(m_filters[upstream].Get(), PINDIR_OUTPUT);
        CInterfacePtr<IPin> in = FindPin(m_filters[upstream + 1].Get(), PINDIR_INPUT);
        if (!out || !in)
            return VFW_E_NOT_FOUND;
        return out->Connect(in.Get(), type);
    }
    // Connects every neighbouring pair, upstream first; the first failure stops it.
    HRESULT ConnectAll()
    {
        for (size_t i = 0; i + 1 < m_filters.size(); ++i) {
            const HRESULT hr = Connect(i);
            if (FAILED(hr))
                return hr;
        }
        return S_OK;
    }

    HRESULT SetSyncSource(IReferenceClock* clock)
    {
        return EachDownstreamFirst([clock](IBaseFilter* f) { return f->SetSyncSource(clock); });
    }
    // S_FALSE when some filter's pause is not complete (a renderer waiting for its first sample).
    HRESULT Pause()
    {
        return EachDownstreamFirst([](IBaseFilter* f) { return f->Pause(); });
    }
    HRESULT Run(REFERENCE_TIME start = 0)
    {
        return EachDownstreamFirst([start](IBaseFilter* f) { return f->Run(start); });
    }
    // Downstream first, so a renderer releases a delivering thread it holds before upstream filters stop.
    HRESULT Stop()
    {
        return EachDownstreamFirst([](IBaseFilter* f) { return f->Stop(); });
    }

    EventLog& Events() { return *m_log.Get(); }
    IBaseFilter* Filter(size_t i) const { return m_filters[i].Get(); }

    // Stops, disconnects every pin and leaves the log; the chain holds no filter afterwards.
    void Teardown()
    {
        Stop();
        for (auto& filter : m_filters) {
            CInterfacePtr<IEnumPins> pins;
            if (FAILED(filter->EnumPins(pins.Out())))
                continue;
            for (;;) {
                CInterfacePtr<IPin> pin;
                ULONG fetched = 0;
                if (pins->Next(1, pin.Out(), &fetched) != S_OK || fetched != 1)
                    break;
                CInterfacePtr<IPin> peer;
                if (pin->ConnectedTo(peer.Out()) == S_OK) {
                    pin->Disconnect();
                    peer->Disconnect();
                }
            }
            filter->JoinFilterGraph(nullptr, nullptr);
        }
        m_filters.clear();
    }

private:
    template <class Step>
    HRESULT EachDownstreamFirst(Step step)
    {
        HRESULT result = S_OK;
        for (auto it = m_filters.rbegin(); it != m_filters.rend(); ++it) {
            const HRESULT hr = step(it->Get());
            if (FAILED(hr))
                return hr;
            if (hr != S_OK)
                result = hr;
        }
        return result;
    }

    CInterfacePtr<EventLog> m_log;
    std::vector<CInterfacePtr<IBaseFilter>> m_filters;
};

}  // namespace zetest

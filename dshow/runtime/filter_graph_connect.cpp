// Connections: ConnectDirect, intelligent Connect, Render, Disconnect and Reconnect.
//
// Connect(out, in) tries, in this order, and stops at the first that succeeds:
//   1. out straight to in;
//   2. through a filter already in the graph: out to one of its free input pins, then one of its free
//      outputs (not those named "~...") onwards to in, by the same rules, at most kMaxDepth filters
//      deep;
//   3. through a filter the mapper offers for out's media types (merit above MERIT_DO_NOT_USE,
//      highest merit first): it is created from its moniker, added under its friendly name, tried as
//      in 2, and removed again when it does not lead to in.
// Otherwise VFW_E_CANNOT_CONNECT.
#include <string>

#include "dshow/runtime/filter_graph.h"
#include "dshow/runtime/graph_pins.h"
#include "dshow/runtime/runtime_classes.h"

namespace ze_dsrt {

namespace {

constexpr int kMaxDepth = 5;
// Intelligent connect leaves out filters that ask not to be used.
constexpr DWORD kLowestMerit = MERIT_DO_NOT_USE + 1;

// The friendly name stored with a moniker, or none.
OleText FriendlyName(IMoniker* moniker) {
    static const OLECHAR kName[] = {'F', 'r', 'i', 'e', 'n', 'd', 'l', 'y', 'N', 'a', 'm', 'e', 0};
    OleText name;
    ComPtr<IPropertyBag> bag;
    if (FAILED(moniker->BindToStorage(nullptr, nullptr, IID_IPropertyBag, bag.OutVoid()))) return name;
    VARIANT value;
    VariantInit(&value);
    if (SUCCEEDED(bag->Read(kName, &value, nullptr)) && value.vt == VT_BSTR && value.bstrVal != nullptr)
        name.assign(value.bstrVal, SysStringLen(value.bstrVal));
    VariantClear(&value);
    return name;
}

// Breaks the connection of `pin` at both ends.
void Unplug(IPin* pin) {
    ComPtr<IPin> peer;
    if (SUCCEEDED(pin->ConnectedTo(peer.Out())) && peer) peer->Disconnect();
    pin->Disconnect();
}

}  // namespace

HRESULT FilterGraph::ConnectDirect(IPin* ppinOut, IPin* ppinIn, const AM_MEDIA_TYPE* pmt) {
    if (ppinOut == nullptr || ppinIn == nullptr) return E_POINTER;
    return Guarded([&]() -> HRESULT {
        std::lock_guard<std::recursive_mutex> lock(graphLock_);
        if (!PinInGraph(ppinOut) || !PinInGraph(ppinIn)) return VFW_E_NOT_IN_GRAPH;
        if (!PinDirectionIs(ppinOut, PINDIR_OUTPUT) || !PinDirectionIs(ppinIn, PINDIR_INPUT))
            return VFW_E_INVALID_DIRECTION;
        if (state_ != State_Stopped) return VFW_E_NOT_STOPPED;
        return ppinOut->Connect(ppinIn, pmt);
    });
}

HRESULT FilterGraph::Connect(IPin* ppinOut, IPin* ppinIn) {
    if (ppinOut == nullptr || ppinIn == nullptr) return E_POINTER;
    return Guarded([&]() -> HRESULT {
        std::lock_guard<std::recursive_mutex> lock(graphLock_);
        if (!PinInGraph(ppinOut) || !PinInGraph(ppinIn)) return VFW_E_NOT_IN_GRAPH;
        if (state_ != State_Stopped) return VFW_E_NOT_STOPPED;
        // Pins given the other way round are taken the right way round.
        if (PinDirectionIs(ppinOut, PINDIR_INPUT) && PinDirectionIs(ppinIn, PINDIR_OUTPUT)) std::swap(ppinOut, ppinIn);
        if (!PinDirectionIs(ppinOut, PINDIR_OUTPUT) || !PinDirectionIs(ppinIn, PINDIR_INPUT))
            return VFW_E_INVALID_DIRECTION;
        if (PinConnected(ppinOut) || PinConnected(ppinIn)) return VFW_E_ALREADY_CONNECTED;
        return ConnectThrough(ppinOut, ppinIn, 0);
    });
}

HRESULT FilterGraph::ConnectThrough(IPin* source, IPin* sink, int depth) {
    const HRESULT direct = source->Connect(sink, nullptr);
    if (SUCCEEDED(direct)) return direct;
    if (depth >= kMaxDepth) return VFW_E_CANNOT_CONNECT;

    const ComPtr<IBaseFilter> sourceOwner = PinOwner(source);
    const ComPtr<IBaseFilter> sinkOwner = PinOwner(sink);
    for (const ComPtr<IBaseFilter>& middle : Filters()) {
        if (middle.Get() == sourceOwner.Get() || middle.Get() == sinkOwner.Get()) continue;
        if (SUCCEEDED(ConnectViaFilter(source, middle.Get(), sink, depth))) return S_OK;
    }
    return ConnectViaMapper(source, sink, depth);
}

// Connects source to a free input of `middle` and one of middle's free outputs on to sink; on
// failure every connection made here is undone.
HRESULT FilterGraph::ConnectViaFilter(IPin* source, IBaseFilter* middle, IPin* sink, int depth) {
    for (const ComPtr<IPin>& input : FilterPins(middle, PINDIR_INPUT, true)) {
        if (FAILED(source->Connect(input.Get(), nullptr))) continue;
        for (const ComPtr<IPin>& output : FilterPins(middle, PINDIR_OUTPUT, true)) {
            if (PinNotRendered(output.Get())) continue;
            if (SUCCEEDED(ConnectThrough(output.Get(), sink, depth + 1))) return S_OK;
        }
        Unplug(source);
    }
    return VFW_E_CANNOT_CONNECT;
}

// The filters the mapper offers for what `source` carries, highest merit first; with `outputNeeded`
// only those with an output pin.
static ComPtr<IEnumMoniker> MapperCandidates(IPin* source, bool outputNeeded) {
    ComPtr<IFilterMapper2> mapper;
    ComPtr<IEnumMoniker> candidates;
    if (FAILED(CreateFilterMapper(nullptr, IID_IFilterMapper2, mapper.OutVoid()))) return candidates;
    std::vector<GUID> pairs;
    for (const TypePair& pair : PinTypePairs(source)) {
        pairs.push_back(pair.major);
        pairs.push_back(pair.minor);
    }
    mapper->EnumMatchingFilters(candidates.Out(), 0, FALSE, kLowestMerit, TRUE, static_cast<DWORD>(pairs.size() / 2),
                                pairs.data(), nullptr, nullptr, FALSE, outputNeeded ? TRUE : FALSE, 0, nullptr,
                                nullptr, nullptr);
    return candidates;
}

// Each candidate is created, added under its friendly name and handed to `tryFilter`; a candidate
// that does not lead anywhere is removed again.
template <class TryFilter>
bool FilterGraph::TryCandidates(IEnumMoniker* candidates, TryFilter&& tryFilter) {
    ComPtr<IMoniker> moniker;
    while (candidates != nullptr && candidates->Next(1, moniker.Out(), nullptr) == S_OK) {
        ComPtr<IBaseFilter> filter;
        if (FAILED(moniker->BindToObject(nullptr, nullptr, IID_IBaseFilter, filter.OutVoid()))) continue;
        const OleText name = FriendlyName(moniker.Get());
        if (FAILED(AddFilter(filter.Get(), name.empty() ? nullptr : name.c_str()))) continue;
        if (tryFilter(filter.Get())) return true;
        RemoveFilter(filter.Get());
    }
    return false;
}

HRESULT FilterGraph::ConnectViaMapper(IPin* source, IPin* sink, int depth) {
    const ComPtr<IEnumMoniker> candidates = MapperCandidates(source, true);
    const bool connected = TryCandidates(candidates.Get(), [&](IBaseFilter* filter) {
        return SUCCEEDED(ConnectViaFilter(source, filter, sink, depth));
    });
    return connected ? S_OK : VFW_E_CANNOT_CONNECT;
}

// Render: the output is connected onwards until every branch ends in a filter without outputs,
// through filters in the graph first and then through the mapper's.
HRESULT FilterGraph::Render(IPin* ppinOut) {
    if (ppinOut == nullptr) return E_POINTER;
    return Guarded([&]() -> HRESULT {
        std::lock_guard<std::recursive_mutex> lock(graphLock_);
        if (!PinInGraph(ppinOut)) return VFW_E_NOT_IN_GRAPH;
        if (!PinDirectionIs(ppinOut, PINDIR_OUTPUT)) return VFW_E_INVALID_DIRECTION;
        if (PinConnected(ppinOut)) return VFW_E_ALREADY_CONNECTED;
        if (state_ != State_Stopped) return VFW_E_NOT_STOPPED;
        return RenderThrough(ppinOut, 0);
    });
}

HRESULT FilterGraph::RenderThrough(IPin* source, int depth) {
    if (depth >= kMaxDepth) return VFW_E_CANNOT_RENDER;
    // A filter is a way on when source connects to it and every free output it has renders in turn.
    auto renderVia = [&](IBaseFilter* filter) {
        for (const ComPtr<IPin>& input : FilterPins(filter, PINDIR_INPUT, true)) {
            if (FAILED(source->Connect(input.Get(), nullptr))) continue;
            bool rendered = true;
            for (const ComPtr<IPin>& output : FilterPins(filter, PINDIR_OUTPUT, true))
                if (!PinNotRendered(output.Get()) && FAILED(RenderThrough(output.Get(), depth + 1))) rendered = false;
            if (rendered) return true;
            for (const ComPtr<IPin>& output : FilterPins(filter, PINDIR_OUTPUT)) Unplug(output.Get());
            Unplug(source);
        }
        return false;
    };
    const ComPtr<IBaseFilter> sourceOwner = PinOwner(source);
    for (const ComPtr<IBaseFilter>& filter : Filters())
        if (filter.Get() != sourceOwner.Get() && renderVia(filter.Get())) return S_OK;

    const ComPtr<IEnumMoniker> candidates = MapperCandidates(source, false);
    return TryCandidates(candidates.Get(), renderVia) ? S_OK : VFW_E_CANNOT_RENDER;
}

HRESULT FilterGraph::Disconnect(IPin* ppin) {
    if (ppin == nullptr) return E_POINTER;
    return Guarded([&]() -> HRESULT {
        std::lock_guard<std::recursive_mutex> lock(graphLock_);
        if (state_ != State_Stopped) return VFW_E_NOT_STOPPED;
        return ppin->Disconnect();
    });
}

HRESULT FilterGraph::Reconnect(IPin* ppin) { return ReconnectPin(ppin, nullptr); }

HRESULT FilterGraph::ReconnectEx(IPin* ppin, const AM_MEDIA_TYPE* pmt) { return ReconnectPin(ppin, pmt); }

// Done at once on the calling thread: both ends are disconnected and connected again directly, with
// `pmt` when given.
HRESULT FilterGraph::ReconnectPin(IPin* pin, const AM_MEDIA_TYPE* pmt) {
    if (pin == nullptr) return E_POINTER;
    return Guarded([&]() -> HRESULT {
        std::lock_guard<std::recursive_mutex> lock(graphLock_);
        ComPtr<IPin> peer;
        if (FAILED(pin->ConnectedTo(peer.Out())) || !peer) return VFW_E_NOT_CONNECTED;
        if (!PinInGraph(pin) || !PinInGraph(peer.Get())) return VFW_E_NOT_IN_GRAPH;
        if (state_ != State_Stopped) return VFW_E_NOT_STOPPED;
        IPin* output = PinDirectionIs(pin, PINDIR_OUTPUT) ? pin : peer.Get();
        IPin* input = output == pin ? peer.Get() : pin;
        output->Disconnect();
        input->Disconnect();
        return output->Connect(input, pmt);
    });
}

}  // namespace ze_dsrt

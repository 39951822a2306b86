// The filter graph manager's filter list: adding under unique names, removing, enumerating, finding
// by name, and the downstream-first order in which states change.
#include "dshow/runtime/filter_graph.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>

#include "dshow/runtime/graph_pins.h"
#include "dshow/runtime/runtime_classes.h"

namespace ze_dsrt {

namespace {

// A snapshot of the graph's filters; EnumFilters hands out one of these.
class FilterEnumerator final : public ComObject<FilterEnumerator, IEnumFilters> {
public:
    FilterEnumerator(std::shared_ptr<const std::vector<ComPtr<IBaseFilter>>> filters, size_t position)
        : filters_(std::move(filters)), position_(position) {}

    void* FindInterface(REFIID iid) {
        return IsEqualIID(iid, IID_IEnumFilters) ? static_cast<IEnumFilters*>(this) : nullptr;
    }
    HRESULT STDMETHODCALLTYPE Next(ULONG count, IBaseFilter** filters, ULONG* fetched) override {
        if (filters == nullptr) return E_POINTER;
        if (fetched == nullptr && count != 1) return E_INVALIDARG;
        ULONG given = 0;
        for (; given < count && position_ < filters_->size(); ++given, ++position_) {
            filters[given] = (*filters_)[position_].Get();
            filters[given]->AddRef();
        }
        if (fetched != nullptr) *fetched = given;
        return given == count ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
        const size_t left = filters_->size() - position_;
        position_ += std::min<size_t>(count, left);
        return count <= left ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Reset() override {
        position_ = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Clone(IEnumFilters** copy) override {
        if (copy == nullptr) return E_POINTER;
        *copy = nullptr;
        return Guarded([&] {
            *copy = new FilterEnumerator(filters_, position_);
            return S_OK;
        });
    }

private:
    std::shared_ptr<const std::vector<ComPtr<IBaseFilter>>> filters_;
    size_t position_;
};

size_t TextLength(LPCWSTR text) {
    size_t n = 0;
    while (text[n] != 0) ++n;
    return n;
}

}  // namespace

FilterGraph::~FilterGraph() {
    // Stop, then remove every filter: that breaks the filters' connections and their clock
    // references, which would otherwise keep filters alive in cycles.
    Stop();
    std::lock_guard<std::recursive_mutex> lock(graphLock_);
    while (!filters_.empty()) RemoveFilter(filters_.front().filter.Get());
    clock_.Reset();
}

void* FilterGraph::FindInterface(REFIID iid) {
    if (IsEqualIID(iid, IID_IFilterGraph) || IsEqualIID(iid, IID_IGraphBuilder) || IsEqualIID(iid, IID_IFilterGraph2))
        return static_cast<IFilterGraph2*>(this);
    if (IsEqualIID(iid, IID_IMediaControl) || IsEqualIID(iid, IID_IDispatch)) return static_cast<IMediaControl*>(this);
    if (IsEqualIID(iid, IID_IMediaFilter) || IsEqualIID(iid, IID_IPersist)) return static_cast<IMediaFilter*>(this);
    if (IsEqualIID(iid, IID_IMediaEvent) || IsEqualIID(iid, IID_IMediaEventEx)) return static_cast<IMediaEventEx*>(this);
    if (IsEqualIID(iid, IID_IMediaEventSink)) return static_cast<IMediaEventSink*>(this);
    return nullptr;
}

bool FilterGraph::Contains(IBaseFilter* filter) const {
    return std::any_of(filters_.begin(), filters_.end(), [&](const Entry& e) { return e.filter.Get() == filter; });
}

bool FilterGraph::PinInGraph(IPin* pin) const {
    ComPtr<IBaseFilter> owner = PinOwner(pin);
    return owner && Contains(owner.Get());
}

std::vector<ComPtr<IBaseFilter>> FilterGraph::Filters() const {
    std::lock_guard<std::recursive_mutex> lock(graphLock_);
    std::vector<ComPtr<IBaseFilter>> filters;
    for (const Entry& e : filters_) filters.push_back(e.filter);
    return filters;
}

// The wanted name when it is free, else the name followed by " 0001", " 0002", ... (cut so that the
// whole fits a FILTER_INFO); a null name becomes a number of its own.
HRESULT FilterGraph::UniqueName(LPCWSTR wanted, OleText* name) const {
    constexpr size_t kMaxChars = MAX_FILTER_NAME - 1;
    auto taken = [&](const OleText& candidate) {
        return std::any_of(filters_.begin(), filters_.end(), [&](const Entry& e) { return e.name == candidate; });
    };
    OleText base = wanted != nullptr ? OleText(wanted, std::min(TextLength(wanted), kMaxChars)) : OleText();
    if (wanted != nullptr && !taken(base)) {
        *name = base;
        return S_OK;
    }
    for (unsigned n = wanted != nullptr ? 1 : nextNameNumber_; n < 10000; ++n) {
        char digits[8];
        std::snprintf(digits, sizeof digits, wanted != nullptr ? " %04u" : "%04u", n);
        OleText suffix(digits, digits + std::strlen(digits));
        OleText candidate = base.substr(0, kMaxChars - suffix.size()) + suffix;
        if (!taken(candidate)) {
            *name = candidate;
            return wanted != nullptr ? VFW_S_DUPLICATE_NAME : S_OK;
        }
    }
    return VFW_E_DUPLICATE_NAME;
}

HRESULT FilterGraph::AddFilter(IBaseFilter* pFilter, LPCWSTR pName) {
    if (pFilter == nullptr) return E_POINTER;
    return Guarded([&]() -> HRESULT {
        std::lock_guard<std::recursive_mutex> lock(graphLock_);
        if (Contains(pFilter)) return E_INVALIDARG;
        OleText name;
        const HRESULT named = UniqueName(pName, &name);
        if (FAILED(named)) return named;
        filters_.insert(filters_.begin(), Entry{ComPtr<IBaseFilter>(pFilter), name});
        const HRESULT joined = pFilter->JoinFilterGraph(Self(), name.c_str());
        if (FAILED(joined)) {
            filters_.erase(filters_.begin());
            return joined;
        }
        if (pName == nullptr) ++nextNameNumber_;
        if (clock_) pFilter->SetSyncSource(clock_.Get());
        return named;
    });
}

HRESULT FilterGraph::RemoveFilter(IBaseFilter* pFilter) {
    if (pFilter == nullptr) return E_POINTER;
    return Guarded([&]() -> HRESULT {
        std::lock_guard<std::recursive_mutex> lock(graphLock_);
        auto it = std::find_if(filters_.begin(), filters_.end(), [&](const Entry& e) { return e.filter.Get() == pFilter; });
        if (it == filters_.end()) return E_FAIL;
        const ComPtr<IBaseFilter> filter = it->filter;
        if (state_ != State_Stopped) filter->Stop();
        for (const ComPtr<IPin>& pin : FilterPins(filter.Get())) {
            ComPtr<IPin> peer;
            if (SUCCEEDED(pin->ConnectedTo(peer.Out())) && peer) {
                peer->Disconnect();
                pin->Disconnect();
            }
        }
        // A clock the filter provides leaves with it.
        ComPtr<IReferenceClock> ownClock;
        if (clock_ && SUCCEEDED(filter.As(IID_IReferenceClock, &ownClock)) && ownClock.Get() == clock_.Get()) {
            for (const Entry& e : filters_) e.filter->SetSyncSource(nullptr);
            clock_.Reset();
        }
        filter->SetSyncSource(nullptr);
        filters_.erase(it);
        filter->JoinFilterGraph(nullptr, nullptr);
        return S_OK;
    });
}

HRESULT FilterGraph::EnumFilters(IEnumFilters** ppEnum) {
    if (ppEnum == nullptr) return E_POINTER;
    *ppEnum = nullptr;
    return Guarded([&] {
        auto snapshot = std::make_shared<const std::vector<ComPtr<IBaseFilter>>>(Filters());
        *ppEnum = new FilterEnumerator(std::move(snapshot), 0);
        return S_OK;
    });
}

HRESULT FilterGraph::FindFilterByName(LPCWSTR pName, IBaseFilter** ppFilter) {
    if (pName == nullptr || ppFilter == nullptr) return E_POINTER;
    *ppFilter = nullptr;
    return Guarded([&]() -> HRESULT {
        std::lock_guard<std::recursive_mutex> lock(graphLock_);
        const OleText name(pName, TextLength(pName));
        for (const Entry& e : filters_) {
            if (e.name == name) {
                *ppFilter = ComPtr<IBaseFilter>(e.filter).Detach();
                return S_OK;
            }
        }
        return VFW_E_NOT_FOUND;
    });
}

std::vector<ComPtr<IBaseFilter>> FilterGraph::DownstreamFirst() const {
    std::lock_guard<std::recursive_mutex> lock(graphLock_);
    std::vector<ComPtr<IBaseFilter>> order;
    std::vector<IBaseFilter*> visited;
    std::function<void(IBaseFilter*)> visit = [&](IBaseFilter* filter) {
        if (std::find(visited.begin(), visited.end(), filter) != visited.end() || !Contains(filter)) return;
        visited.push_back(filter);
        for (const ComPtr<IPin>& pin : FilterPins(filter, PINDIR_OUTPUT)) {
            ComPtr<IPin> peer;
            if (SUCCEEDED(pin->ConnectedTo(peer.Out())) && peer) {
                ComPtr<IBaseFilter> downstream = PinOwner(peer.Get());
                if (downstream) visit(downstream.Get());
            }
        }
        order.push_back(ComPtr<IBaseFilter>(filter));
    };
    for (const Entry& e : filters_) visit(e.filter.Get());
    return order;
}

HRESULT FilterGraph::GetClassID(CLSID* clsid) {
    if (clsid == nullptr) return E_POINTER;
    *clsid = CLSID_FilterGraph;
    return S_OK;
}

HRESULT FilterGraph::GetTypeInfoCount(UINT* pctinfo) {
    if (pctinfo == nullptr) return E_POINTER;
    *pctinfo = 0;
    return S_OK;
}

HRESULT CreateFilterGraph(IUnknown* outer, REFIID iid, void** object) {
    return CreateObject<FilterGraph>(outer, iid, object);
}

}  // namespace ze_dsrt

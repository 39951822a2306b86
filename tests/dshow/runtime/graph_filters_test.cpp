// The graph's filter list: AddFilter (JoinFilterGraph, names made unique), RemoveFilter, EnumFilters,
// FindFilterByName, and a graph's release handing every filter back disconnected and unreferenced.
#include "tests/dshow/runtime/graph_test_filters.h"

namespace zetest {
namespace {

class GraphFiltersTest : public RuntimeTest {
protected:
    void SetUp() override {
        RuntimeTest::SetUp();
        graph_ = Create<IFilterGraph2>(CLSID_FilterGraph, IID_IFilterGraph2);
        ASSERT_TRUE(graph_);
    }
    // A filter held by the test.
    static ComPtr<IBaseFilter> NewRenderer() { return ComPtr<IBaseFilter>(new CollectingRenderer()); }

    static std::string NameOf(IBaseFilter* filter, IFilterGraph** graph = nullptr) {
        FILTER_INFO info{};
        filter->QueryFilterInfo(&info);
        if (graph != nullptr)
            *graph = info.pGraph;
        else if (info.pGraph != nullptr)
            info.pGraph->Release();
        return Narrow(info.achName);
    }
    std::vector<IBaseFilter*> Enumerated() {
        std::vector<IBaseFilter*> found;
        ComPtr<IEnumFilters> filters;
        EXPECT_EQ(graph_->EnumFilters(filters.Out()), S_OK);
        IBaseFilter* filter = nullptr;
        while (filters->Next(1, &filter, nullptr) == S_OK) {
            found.push_back(filter);
            filter->Release();  // the test holds its own references
        }
        return found;
    }

    ComPtr<IFilterGraph2> graph_;
};

TEST_F(GraphFiltersTest, AddedFiltersJoinUnderUniqueNamesAndAreFoundByThem) {
    const ComPtr<IBaseFilter> first = NewRenderer(), second = NewRenderer(), third = NewRenderer();
    ASSERT_EQ(graph_->AddFilter(first.Get(), Ole("Renderer").c_str()), S_OK);
    ASSERT_EQ(graph_->AddFilter(second.Get(), Ole("Renderer").c_str()), VFW_S_DUPLICATE_NAME);
    ASSERT_EQ(graph_->AddFilter(third.Get(), nullptr), S_OK);

    IFilterGraph* joined = nullptr;
    EXPECT_EQ(NameOf(first.Get(), &joined), "Renderer");
    EXPECT_EQ(joined, static_cast<IFilterGraph*>(graph_.Get()));
    if (joined != nullptr) joined->Release();
    const std::string secondName = NameOf(second.Get());
    const std::string thirdName = NameOf(third.Get());
    EXPECT_NE(secondName, "Renderer");
    EXPECT_FALSE(thirdName.empty());
    EXPECT_NE(thirdName, secondName);

    const struct {
        std::string name;
        IBaseFilter* expected;
    } lookups[] = {{"Renderer", first.Get()}, {secondName, second.Get()}, {thirdName, third.Get()}};
    for (const auto& lookup : lookups) {
        ComPtr<IBaseFilter> found;
        EXPECT_EQ(graph_->FindFilterByName(Ole(lookup.name).c_str(), found.Out()), S_OK) << lookup.name;
        EXPECT_EQ(found.Get(), lookup.expected) << lookup.name;
    }
    IBaseFilter* missing = reinterpret_cast<IBaseFilter*>(1);
    EXPECT_EQ(graph_->FindFilterByName(Ole("renderer").c_str(), &missing), VFW_E_NOT_FOUND);
    EXPECT_EQ(missing, nullptr);

    // The most recently added filter comes first.
    EXPECT_EQ(Enumerated(), (std::vector<IBaseFilter*>{third.Get(), second.Get(), first.Get()}));
}

TEST_F(GraphFiltersTest, RemovedFiltersLeaveTheGraphAndItsEnumeration) {
    const ComPtr<IBaseFilter> kept = NewRenderer(), removed = NewRenderer();
    ASSERT_EQ(graph_->AddFilter(kept.Get(), Ole("kept").c_str()), S_OK);
    ASSERT_EQ(graph_->AddFilter(removed.Get(), Ole("removed").c_str()), S_OK);
    ASSERT_EQ(graph_->RemoveFilter(removed.Get()), S_OK);

    IFilterGraph* joined = reinterpret_cast<IFilterGraph*>(1);
    NameOf(removed.Get(), &joined);
    EXPECT_EQ(joined, nullptr);
    EXPECT_EQ(Enumerated(), std::vector<IBaseFilter*>{kept.Get()});
    EXPECT_EQ(graph_->RemoveFilter(removed.Get()), E_FAIL);
    EXPECT_EQ(OtherReferences(removed.Get()), 0u);
    // The name is free again.
    EXPECT_EQ(graph_->AddFilter(removed.Get(), Ole("removed").c_str()), S_OK);
}

TEST_F(GraphFiltersTest, ReleasingTheGraphDisconnectsAndReleasesEveryFilter) {
    const int convertersBefore = Converter::live;
    auto* source = new TestSourceFilter({PlainType(MEDIATYPE_Video, kSubtypeA)});
    const ComPtr<IBaseFilter> sourceFilter(source), converter(new Converter(GUID_NULL, kSubtypeA, kSubtypeB, 1)),
        renderer(new CollectingRenderer(AcceptOnly(kSubtypeB)));
    ASSERT_EQ(graph_->AddFilter(sourceFilter.Get(), Ole("source").c_str()), S_OK);
    ASSERT_EQ(graph_->AddFilter(converter.Get(), Ole("converter").c_str()), S_OK);
    ASSERT_EQ(graph_->AddFilter(renderer.Get(), Ole("renderer").c_str()), S_OK);
    ASSERT_EQ(graph_->Connect(source->OutputPin(), FindPin(renderer.Get(), PINDIR_INPUT).Get()), S_OK);
    ComPtr<IMediaControl> control;
    ASSERT_EQ(graph_.As(IID_IMediaControl, &control), S_OK);
    ASSERT_EQ(control->Pause(), S_FALSE);  // the renderer waits for a sample; releasing stops it
    control.Reset();

    graph_.Reset();
    for (IBaseFilter* filter : {sourceFilter.Get(), converter.Get(), renderer.Get()}) {
        EXPECT_EQ(OtherReferences(filter), 0u) << NameOf(filter);
        FILTER_STATE state = State_Running;
        EXPECT_EQ(filter->GetState(0, &state), S_OK);
        EXPECT_EQ(state, State_Stopped);
    }
    IPin* peer = nullptr;
    EXPECT_EQ(source->OutputPin()->ConnectedTo(&peer), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(Converter::live, convertersBefore + 1);  // only the test's own converter is still alive
}

}  // namespace
}  // namespace zetest

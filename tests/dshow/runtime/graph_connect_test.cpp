// Connections made by the graph: ConnectDirect and its checks, intelligent Connect through filters in
// the graph and through the mapper's (merit order, candidates removed when they lead nowhere, "~"
// outputs left alone, chains of two), Render, Disconnect, and Reconnect done at once.
#include "tests/dshow/runtime/graph_test_filters.h"

namespace zetest {
namespace {

class GraphConnectTest : public RuntimeTest {
protected:
    void SetUp() override {
        RuntimeTest::SetUp();
        RegisterConverterClasses();
        mapper_ = Create<IFilterMapper2>(CLSID_FilterMapper2, IID_IFilterMapper2);
        ASSERT_TRUE(mapper_);
        NewGraph();
    }
    // A fresh graph holding only a source of subtype A.
    void NewGraph() {
        graph_ = Create<IFilterGraph2>(CLSID_FilterGraph, IID_IFilterGraph2);
        ASSERT_TRUE(graph_);
        source_ = new TestSourceFilter({PlainType(MEDIATYPE_Video, kSubtypeA)});
        sourceFilter_ = ComPtr<IBaseFilter>(source_);
        ASSERT_EQ(graph_->AddFilter(source_, Ole("source").c_str()), S_OK);
    }
    void TearDown() override {
        graph_.Reset();
        RuntimeTest::TearDown();
    }

    // A renderer in the graph that takes `subtype` only.
    CollectingRenderer* AddRenderer(const GUID& subtype) {
        auto* renderer = new CollectingRenderer(AcceptOnly(subtype));
        renderers_.emplace_back(static_cast<IBaseFilter*>(renderer));
        EXPECT_EQ(graph_->AddFilter(renderer, Ole("renderer").c_str()), S_OK);
        return renderer;
    }
    IPin* SourceOut() { return source_->OutputPin(); }
    static CInterfacePtr<IPin> In(IBaseFilter* filter) { return FindPin(filter, PINDIR_INPUT); }

    // The names of the graph's filters, most recently added first.
    std::vector<std::string> FilterNames() {
        std::vector<std::string> names;
        ComPtr<IEnumFilters> filters;
        graph_->EnumFilters(filters.Out());
        ComPtr<IBaseFilter> filter;
        while (filters->Next(1, filter.Out(), nullptr) == S_OK) {
            FILTER_INFO info{};
            filter->QueryFilterInfo(&info);
            if (info.pGraph != nullptr) info.pGraph->Release();
            names.push_back(Narrow(info.achName));
        }
        return names;
    }
    // Runs the graph without a clock, pushes one byte and answers what the renderer got.
    std::vector<uint8_t> PushThrough(CollectingRenderer* renderer) {
        ComPtr<IMediaFilter> filter;
        ComPtr<IMediaControl> control;
        EXPECT_EQ(graph_.As(IID_IMediaFilter, &filter), S_OK);
        EXPECT_EQ(graph_.As(IID_IMediaControl, &control), S_OK);
        filter->SetSyncSource(nullptr);
        EXPECT_EQ(control->Run(), S_FALSE);  // the renderer has no sample yet
        EXPECT_EQ(source_->PushBytes({0x11}), S_OK);
        EXPECT_TRUE(renderer->WaitForCount(1));
        control->Stop();
        const std::vector<RenderedSample> samples = renderer->Samples();
        return samples.empty() ? std::vector<uint8_t>() : samples[0].bytes;
    }

    ComPtr<IFilterGraph2> graph_;
    ComPtr<IFilterMapper2> mapper_;
    TestSourceFilter* source_ = nullptr;
    ComPtr<IBaseFilter> sourceFilter_;
    std::vector<ComPtr<IBaseFilter>> renderers_;
};

TEST_F(GraphConnectTest, ConnectDirectChecksPinsThenLeavesTheChoiceToThePins) {
    CollectingRenderer* renderer = AddRenderer(kSubtypeA);
    CInterfacePtr<IPin> in = In(renderer);
    const ComPtr<IBaseFilter> outsider(new CollectingRenderer());

    EXPECT_EQ(graph_->ConnectDirect(in.Get(), SourceOut(), nullptr), VFW_E_INVALID_DIRECTION);
    EXPECT_EQ(graph_->ConnectDirect(SourceOut(), In(outsider.Get()).Get(), nullptr), VFW_E_NOT_IN_GRAPH);
    const CMediaType refused = PlainType(MEDIATYPE_Video, kSubtypeB);
    EXPECT_TRUE(FAILED(graph_->ConnectDirect(SourceOut(), in.Get(), &refused)));
    ASSERT_EQ(graph_->ConnectDirect(SourceOut(), in.Get(), nullptr), S_OK);
    EXPECT_EQ(renderer->ConnectedType().subtype, kSubtypeA);
    EXPECT_EQ(graph_->ConnectDirect(SourceOut(), in.Get(), nullptr), VFW_E_ALREADY_CONNECTED);
}

TEST_F(GraphConnectTest, ConnectGoesThroughTheMappersHighestMeritConverterAddedUnderItsName) {
    CollectingRenderer* renderer = AddRenderer(kSubtypeB);
    ASSERT_EQ(kAtoB.Register(mapper_.Get(), MERIT_UNLIKELY), S_OK);
    ASSERT_EQ(kAtoBSecond.Register(mapper_.Get(), MERIT_NORMAL), S_OK);
    const int before = Converter::live;

    ASSERT_EQ(graph_->Connect(SourceOut(), In(renderer).Get()), S_OK);
    EXPECT_EQ(FilterNames(), (std::vector<std::string>{"A to B, second choice", "renderer", "source"}));
    EXPECT_EQ(PushThrough(renderer), (std::vector<uint8_t>{0x11, 0x2B}));
    graph_.Reset();
    EXPECT_EQ(Converter::live, before);  // the graph's converter went with it
}

TEST_F(GraphConnectTest, CandidatesThatLeadNowhereAreRemovedAndDoNotUseIsNeverTried) {
    CollectingRenderer* renderer = AddRenderer(kSubtypeC);
    ASSERT_EQ(kAtoB.Register(mapper_.Get(), MERIT_NORMAL), S_OK);      // B is a dead end
    ASSERT_EQ(kAtoC.Register(mapper_.Get(), MERIT_DO_NOT_USE), S_OK);  // would fit, but asks not to be used
    const int before = Converter::live;

    EXPECT_EQ(graph_->Connect(SourceOut(), In(renderer).Get()), VFW_E_CANNOT_CONNECT);
    EXPECT_EQ(FilterNames(), (std::vector<std::string>{"renderer", "source"}));
    EXPECT_EQ(Converter::live, before);
    IPin* peer = nullptr;
    EXPECT_EQ(SourceOut()->ConnectedTo(&peer), VFW_E_NOT_CONNECTED);
}

TEST_F(GraphConnectTest, ChainsOfMapperFiltersAreFollowedOutputByOutput) {
    CollectingRenderer* renderer = AddRenderer(kSubtypeC);
    ASSERT_EQ(kAtoB.Register(mapper_.Get(), MERIT_NORMAL), S_OK);
    ASSERT_EQ(kBtoC.Register(mapper_.Get(), MERIT_NORMAL), S_OK);
    ASSERT_EQ(graph_->Connect(SourceOut(), In(renderer).Get()), S_OK);
    EXPECT_EQ(FilterNames(), (std::vector<std::string>{"B to C", "A to B", "renderer", "source"}));
    EXPECT_EQ(PushThrough(renderer), (std::vector<uint8_t>{0x11, 0xAB, 0xBC}));
}

TEST_F(GraphConnectTest, FiltersAlreadyInTheGraphComeBeforeTheMapperButNotThroughHiddenOutputs) {
    ASSERT_EQ(kAtoBSecond.Register(mapper_.Get(), MERIT_NORMAL), S_OK);
    const struct {
        const char* outputName;
        bool ownUsed;
        uint8_t expectedMarker;  // 0x01: the graph's own converter; 0x2B: the mapper's
    } cases[] = {{"XForm Out", true, 0x01}, {"~XForm Out", false, 0x2B}};
    for (const auto& c : cases) {
        NewGraph();
        CollectingRenderer* renderer = AddRenderer(kSubtypeB);
        const ComPtr<IBaseFilter> own(new Converter(GUID_NULL, kSubtypeA, kSubtypeB, 0x01, c.outputName));
        ASSERT_EQ(graph_->AddFilter(own.Get(), Ole("own").c_str()), S_OK);
        ASSERT_EQ(graph_->Connect(SourceOut(), In(renderer).Get()), S_OK) << c.outputName;
        EXPECT_EQ(PushThrough(renderer), (std::vector<uint8_t>{0x11, c.expectedMarker})) << c.outputName;
        // A converter that was tried and left is disconnected again.
        ComPtr<IPin> peer;
        EXPECT_EQ(SUCCEEDED(In(own.Get())->ConnectedTo(peer.Out())), c.ownUsed) << c.outputName;
    }
}

TEST_F(GraphConnectTest, RenderEndsInARendererTheMapperOffers) {
    ASSERT_EQ(kAtoB.Register(mapper_.Get(), MERIT_NORMAL), S_OK);
    // Nothing takes B: the source cannot be rendered, and nothing stays behind.
    EXPECT_EQ(graph_->Render(SourceOut()), VFW_E_CANNOT_RENDER);
    EXPECT_EQ(FilterNames(), std::vector<std::string>{"source"});
    // A renderer for B in the graph completes the path.
    CollectingRenderer* renderer = AddRenderer(kSubtypeB);
    ASSERT_EQ(graph_->Render(SourceOut()), S_OK);
    EXPECT_EQ(PushThrough(renderer), (std::vector<uint8_t>{0x11, 0xAB}));
}

TEST_F(GraphConnectTest, DisconnectTakesOnePinAndReconnectConnectsAgainAtOnce) {
    CollectingRenderer* renderer = AddRenderer(kSubtypeA);
    CInterfacePtr<IPin> in = In(renderer);
    EXPECT_EQ(graph_->Reconnect(SourceOut()), VFW_E_NOT_CONNECTED);
    ASSERT_EQ(graph_->ConnectDirect(SourceOut(), in.Get(), nullptr), S_OK);

    ASSERT_EQ(graph_->Reconnect(in.Get()), S_OK);
    ComPtr<IPin> peer;
    ASSERT_EQ(in->ConnectedTo(peer.Out()), S_OK);
    EXPECT_EQ(peer.Get(), SourceOut());

    // A type the renderer refuses: both ends end up disconnected.
    const CMediaType refused = PlainType(MEDIATYPE_Video, kSubtypeB);
    EXPECT_TRUE(FAILED(graph_->ReconnectEx(SourceOut(), &refused)));
    EXPECT_EQ(SourceOut()->ConnectedTo(peer.Out()), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(in->ConnectedTo(peer.Out()), VFW_E_NOT_CONNECTED);

    ASSERT_EQ(graph_->ConnectDirect(SourceOut(), in.Get(), nullptr), S_OK);
    ASSERT_EQ(graph_->Disconnect(SourceOut()), S_OK);
    EXPECT_EQ(SourceOut()->ConnectedTo(peer.Out()), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(in->ConnectedTo(peer.Out()), S_OK);  // the other end is the caller's to disconnect
    ASSERT_EQ(graph_->Disconnect(in.Get()), S_OK);
    EXPECT_EQ(in->ConnectedTo(peer.Out()), VFW_E_NOT_CONNECTED);
}

}  // namespace
}  // namespace zetest

// The graph's states: downstream-first transitions, the asynchronous Run that a renderer waiting for
// its first sample causes (S_FALSE, VFW_S_STATE_INTERMEDIATE, the filters run from a worker once a
// pushing thread's sample completes the pause), Stop and Pause during it, IMediaFilter::Run at once,
// the clock rules and the completion events.
#include <thread>

#include "tests/dshow/runtime/graph_test_filters.h"

namespace zetest {
namespace {

const std::vector<std::string> kPauseAll = {"Pause renderer", "Pause converter", "Pause source"};
const std::vector<std::string> kRunAll = {"Run renderer", "Run converter", "Run source"};
const std::vector<std::string> kStopAll = {"Stop renderer", "Stop converter", "Stop source"};

std::vector<std::string> Joined(std::initializer_list<std::vector<std::string>> parts) {
    std::vector<std::string> all;
    for (const auto& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

// A pushing thread: delivers one sample and keeps the answer.
class Pusher {
public:
    explicit Pusher(TestSourceFilter* source) : thread_([this, source] {
        result_ = source->PushBytes({0x42});
        done_ = true;
    }) {}
    ~Pusher() {
        if (thread_.joinable()) thread_.join();
    }
    HRESULT Join() {
        thread_.join();
        return result_;
    }
    bool Done() const { return done_; }
    std::thread::id Id() const { return thread_.get_id(); }

private:
    HRESULT result_ = E_UNEXPECTED;
    std::atomic<bool> done_{false};
    std::thread thread_;
};

// source (A) -> converter (A to B) -> renderer (B), added renderer first and source last but one, so
// that neither the order of adding nor its reverse is downstream first.
class GraphStateTest : public RuntimeTest {
protected:
    void SetUp() override {
        RuntimeTest::SetUp();
        graph_ = Create<IFilterGraph2>(CLSID_FilterGraph, IID_IFilterGraph2);
        ASSERT_TRUE(graph_);
        ASSERT_EQ(graph_.As(IID_IMediaControl, &control_), S_OK);
        ASSERT_EQ(graph_.As(IID_IMediaFilter, &filter_), S_OK);
        renderer_ = new Logged<CollectingRenderer>(&log_, "renderer", AcceptOnly(kSubtypeB));
        source_ = new Logged<TestSourceFilter>(&log_, "source", std::vector<CMediaType>{PlainType(MEDIATYPE_Video, kSubtypeA)});
        converter_ = new Logged<Converter>(&log_, "converter", GUID_NULL, kSubtypeA, kSubtypeB, 0x01);
        for (IBaseFilter* f : {static_cast<IBaseFilter*>(renderer_), static_cast<IBaseFilter*>(source_),
                               static_cast<IBaseFilter*>(converter_)}) {
            held_.emplace_back(f);
            ASSERT_TRUE(SUCCEEDED(graph_->AddFilter(f, nullptr)));
        }
        ASSERT_EQ(graph_->Connect(source_->OutputPin(), FindPin(renderer_, PINDIR_INPUT).Get()), S_OK);
        log_.Take();
    }
    void TearDown() override {
        control_.Reset();
        filter_.Reset();
        graph_.Reset();
        RuntimeTest::TearDown();
    }

    HRESULT GraphState(DWORD timeout, FILTER_STATE* state) { return filter_->GetState(timeout, state); }

    CallLog log_;
    ComPtr<IFilterGraph2> graph_;
    ComPtr<IMediaControl> control_;
    ComPtr<IMediaFilter> filter_;
    Logged<CollectingRenderer>* renderer_ = nullptr;
    Logged<TestSourceFilter>* source_ = nullptr;
    Logged<Converter>* converter_ = nullptr;
    std::vector<ComPtr<IBaseFilter>> held_;
};

TEST_F(GraphStateTest, RunWaitsForTheFirstSampleAndRunsTheFiltersFromAWorker) {
    ASSERT_EQ(filter_->SetSyncSource(nullptr), S_OK);
    ASSERT_EQ(control_->Run(), S_FALSE);
    EXPECT_EQ(log_.Take(), kPauseAll);
    for (DWORD timeout : {DWORD{0}, DWORD{INFINITE}}) {
        FILTER_STATE state = State_Stopped;
        EXPECT_EQ(GraphState(timeout, &state), VFW_S_STATE_INTERMEDIATE) << timeout;
        EXPECT_EQ(state, State_Running);
    }
    OAFilterState automationState = 0;
    EXPECT_EQ(control_->GetState(0, &automationState), VFW_S_STATE_INTERMEDIATE);
    EXPECT_EQ(automationState, State_Running);
    EXPECT_EQ(control_->Run(), S_FALSE);  // still on its way

    Pusher pusher(source_);
    const std::thread::id pushing = pusher.Id();
    ASSERT_TRUE(renderer_->WaitForCount(1));
    EXPECT_EQ(pusher.Join(), S_OK);
    const std::vector<RenderedSample> samples = renderer_->Samples();
    EXPECT_EQ(samples[0].bytes, (std::vector<uint8_t>{0x42, 0x01}));
    EXPECT_EQ(samples[0].thread, pushing);  // rendered on the pushing thread, once running
    // The worker runs the upstream filters after the renderer has let the sample go.
    FILTER_STATE state = State_Stopped;
    for (int wait = 0; wait < 10000 && GraphState(0, &state) == VFW_S_STATE_INTERMEDIATE; ++wait)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(GraphState(INFINITE, &state), S_OK);
    EXPECT_EQ(state, State_Running);
    EXPECT_EQ(log_.Take(), kRunAll);

    // A running graph pauses its filters before it stops them.
    ASSERT_EQ(control_->Stop(), S_OK);
    EXPECT_EQ(log_.Take(), Joined({kPauseAll, kStopAll}));
}

TEST_F(GraphStateTest, StopReleasesAThreadBlockedInAPausedRenderer) {
    ASSERT_EQ(filter_->SetSyncSource(nullptr), S_OK);
    ASSERT_EQ(control_->Pause(), S_FALSE);
    Pusher pusher(source_);
    // The sample completes the pause and then holds the pushing thread in the renderer.
    FILTER_STATE state = State_Stopped;
    ASSERT_EQ(GraphState(INFINITE, &state), S_OK);
    EXPECT_EQ(state, State_Paused);
    EXPECT_FALSE(pusher.Done());

    ASSERT_EQ(control_->Stop(), S_OK);
    EXPECT_EQ(pusher.Join(), S_OK);
    EXPECT_EQ(renderer_->Count(), 0u);  // released, not rendered
    EXPECT_EQ(log_.Take(), Joined({kPauseAll, kStopAll}));
}

TEST_F(GraphStateTest, PauseDuringAnIncompleteRunCancelsIt) {
    ASSERT_EQ(filter_->SetSyncSource(nullptr), S_OK);
    ASSERT_EQ(control_->Run(), S_FALSE);
    control_->Pause();
    FILTER_STATE state = State_Stopped;
    EXPECT_EQ(GraphState(0, &state), VFW_S_STATE_INTERMEDIATE);
    EXPECT_EQ(state, State_Paused);

    Pusher pusher(source_);
    ASSERT_EQ(GraphState(INFINITE, &state), S_OK);
    EXPECT_EQ(state, State_Paused);
    EXPECT_EQ(log_.Take(), Joined({kPauseAll, kPauseAll}));  // and no Run
    ASSERT_EQ(control_->Stop(), S_OK);
    EXPECT_EQ(pusher.Join(), S_OK);
    EXPECT_EQ(renderer_->Count(), 0u);
}

TEST_F(GraphStateTest, MediaFilterRunRunsAtOnce) {
    ASSERT_EQ(filter_->SetSyncSource(nullptr), S_OK);
    ASSERT_EQ(filter_->Run(0), S_OK);
    EXPECT_EQ(log_.Take(), Joined({kPauseAll, kRunAll}));
    FILTER_STATE state = State_Stopped;
    EXPECT_EQ(GraphState(0, &state), S_OK);
    EXPECT_EQ(state, State_Running);
    // Running without a clock: the sample is rendered before Deliver returns.
    EXPECT_EQ(source_->PushBytes({0x07}), S_OK);
    EXPECT_EQ(renderer_->Count(), 1u);
}

TEST_F(GraphStateTest, NoClockSticksUntilTheDefaultIsAskedFor) {
    auto expectEveryFilterHas = [&](IReferenceClock* expected, const char* when) {
        for (const ComPtr<IBaseFilter>& f : held_) {
            ComPtr<IReferenceClock> clock;
            EXPECT_EQ(f->GetSyncSource(clock.Out()), S_OK) << when;
            EXPECT_EQ(clock.Get(), expected) << when;
        }
    };
    ComPtr<IReferenceClock> clock;
    ASSERT_EQ(filter_->GetSyncSource(clock.Out()), S_OK);
    EXPECT_FALSE(clock) << "no clock before the first pause";

    ASSERT_EQ(filter_->SetSyncSource(nullptr), S_OK);
    control_->Pause();
    ASSERT_EQ(filter_->GetSyncSource(clock.Out()), S_OK);
    EXPECT_FALSE(clock) << "SetSyncSource(NULL) holds through Pause";
    expectEveryFilterHas(nullptr, "no clock");
    EXPECT_EQ(graph_->SetDefaultSyncSource(), VFW_E_NOT_STOPPED);
    ASSERT_EQ(control_->Stop(), S_OK);

    ASSERT_EQ(graph_->SetDefaultSyncSource(), S_OK);
    ASSERT_EQ(filter_->GetSyncSource(clock.Out()), S_OK);
    ASSERT_TRUE(clock);
    REFERENCE_TIME now = 0;
    EXPECT_TRUE(SUCCEEDED(clock->GetTime(&now)));
    expectEveryFilterHas(clock.Get(), "default clock");
}

TEST_F(GraphStateTest, PauseChoosesAClockFilterFirstAndTheSystemClockOtherwise) {
    control_->Pause();
    ComPtr<IReferenceClock> system;
    ASSERT_EQ(filter_->GetSyncSource(system.Out()), S_OK);
    ASSERT_TRUE(system);
    ASSERT_EQ(control_->Stop(), S_OK);

    auto* clockRenderer = new ClockRenderer();
    const ComPtr<IBaseFilter> held(clockRenderer);
    ASSERT_EQ(graph_->AddFilter(clockRenderer, Ole("clock renderer").c_str()), S_OK);
    ASSERT_EQ(graph_->SetDefaultSyncSource(), S_OK);
    ComPtr<IReferenceClock> chosen;
    ASSERT_EQ(filter_->GetSyncSource(chosen.Out()), S_OK);
    EXPECT_EQ(chosen.Get(), clockRenderer->Clock());

    // The clock leaves with its filter.
    ASSERT_EQ(graph_->RemoveFilter(clockRenderer), S_OK);
    ASSERT_EQ(filter_->GetSyncSource(chosen.Out()), S_OK);
    EXPECT_FALSE(chosen);
}

TEST_F(GraphStateTest, EndOfStreamEndsWaitForCompletionWithOneCompleteEvent) {
    ComPtr<IMediaEventEx> events;
    ASSERT_EQ(graph_.As(IID_IMediaEventEx, &events), S_OK);
    LONG code = -1;
    EXPECT_EQ(events->WaitForCompletion(0, &code), VFW_E_WRONG_STATE);

    ASSERT_EQ(filter_->SetSyncSource(nullptr), S_OK);
    ASSERT_EQ(control_->Run(), S_FALSE);
    ASSERT_EQ(source_->DeliverEndOfStream(), S_OK);
    ASSERT_EQ(events->WaitForCompletion(10000, &code), S_OK);
    EXPECT_EQ(code, EC_COMPLETE);

    LONG_PTR first = 0, second = 0;
    ASSERT_EQ(events->GetEvent(&code, &first, &second, 0), S_OK);
    EXPECT_EQ(code, EC_COMPLETE);
    EXPECT_EQ(events->GetEvent(&code, &first, &second, 0), E_ABORT);

    // What a filter reports goes to the queue as it is.
    ComPtr<IMediaEventSink> sink;
    ASSERT_EQ(graph_.As(IID_IMediaEventSink, &sink), S_OK);
    ASSERT_EQ(sink->Notify(EC_ERRORABORT, E_FAIL, 0), S_OK);
    ASSERT_EQ(events->GetEvent(&code, &first, &second, 0), S_OK);
    EXPECT_EQ(code, EC_ERRORABORT);
    EXPECT_EQ(first, E_FAIL);
}

}  // namespace
}  // namespace zetest

// The renderer's sample flow: synchronous rendering while running without a clock, waiting for the
// clock, the paused wait and what releases it, and the failures a delivering source sees.
#include <future>
#include <thread>

#include "tests/dshow/baseclasses/live_objects.h"
#include "tests/dshow/support/ze_filter_harness.h"

namespace {

using namespace std::chrono_literals;
using zetest::PushedSample;

class RendererTest : public LiveObjectTest {
protected:
    void SetUp() override
    {
        LiveObjectTest::SetUp();
        chain = std::make_unique<zetest::FilterChain>();
        source = new zetest::TestSourceFilter({zetest::PlainType(MEDIATYPE_Stream, MEDIASUBTYPE_NULL)}, 64, 2);
        renderer = new zetest::CollectingRenderer();
        chain->Add(source, "source");
        chain->Add(renderer, "renderer");
        ASSERT_EQ(chain->ConnectAll(), S_OK);
    }
    void TearDown() override
    {
        chain.reset();
        LiveObjectTest::TearDown();
    }

    // Pushes on another thread; the future holds Push's answer.
    std::future<HRESULT> PushAsync(PushedSample sample)
    {
        return std::async(std::launch::async, [this, sample] { return source->Push(sample); });
    }

    std::unique_ptr<zetest::FilterChain> chain;
    zetest::TestSourceFilter* source = nullptr;
    zetest::CollectingRenderer* renderer = nullptr;
};

TEST_F(RendererTest, RunningWithoutClockRendersOnTheDeliveringThreadBeforeDeliverReturns)
{
    ASSERT_EQ(chain->Run(), S_OK);
    const PushedSample cases[] = {
        PushedSample::Untimed({1, 2, 3}),
        PushedSample::Timed({4, 5}, 10'000'000, 10'400'000),  // far in the future: no clock, so no wait
    };
    size_t expected = 0;
    for (const PushedSample& sample : cases) {
        ASSERT_EQ(source->Push(sample), S_OK);
        ++expected;
        const auto rendered = renderer->Samples();
        ASSERT_EQ(rendered.size(), expected);
        EXPECT_EQ(rendered.back().bytes, sample.bytes);
        EXPECT_EQ(rendered.back().thread, std::this_thread::get_id());
        EXPECT_EQ(rendered.back().timed, sample.timed);
    }
}

TEST_F(RendererTest, RunningWithClockWaitsUntilTheStreamTimeOfTheSample)
{
    auto* clock = new zetest::ManualClock(0);
    CInterfacePtr<IReferenceClock> hold(clock);
    ASSERT_EQ(chain->SetSyncSource(clock), S_OK);
    const REFERENCE_TIME startTime = 1'000;
    ASSERT_EQ(chain->Run(startTime), S_OK);

    // Due at 1000 (start) + 5000 (sample start) on the clock.
    auto pushed = PushAsync(PushedSample::Timed({9}, 5'000, 6'000));
    ASSERT_TRUE([&] {
        for (int i = 0; i < 1000 && clock->PendingAdvises() == 0; ++i)
            std::this_thread::sleep_for(1ms);
        return clock->PendingAdvises() == 1;
    }());
    clock->SetTime(5'999);
    EXPECT_EQ(pushed.wait_for(50ms), std::future_status::timeout);
    EXPECT_EQ(renderer->Count(), 0u);
    clock->SetTime(6'000);
    EXPECT_EQ(pushed.get(), S_OK);
    EXPECT_EQ(renderer->Count(), 1u);

    // Untimed samples do not wait for the clock.
    EXPECT_EQ(source->Push(PushedSample::Untimed({7})), S_OK);
    EXPECT_EQ(renderer->Count(), 2u);
}

TEST_F(RendererTest, StopTimeBeforeStartTimeDropsTheSampleSilently)
{
    auto* clock = new zetest::ManualClock(0);
    CInterfacePtr<IReferenceClock> hold(clock);
    chain->SetSyncSource(clock);
    ASSERT_EQ(chain->Run(), S_OK);
    EXPECT_EQ(source->Push(PushedSample::Timed({1}, 2'000, 1'000)), S_OK);
    EXPECT_EQ(renderer->Count(), 0u);
    EXPECT_EQ(chain->Events().Count(EC_ERRORABORT), 0);
}

TEST_F(RendererTest, PauseStaysIncompleteUntilTheFirstSampleArrives)
{
    FILTER_STATE state;
    EXPECT_EQ(renderer->Pause(), S_FALSE);
    EXPECT_EQ(renderer->GetState(0, &state), VFW_S_STATE_INTERMEDIATE);
    EXPECT_EQ(state, State_Paused);
    ASSERT_EQ(source->Pause(), S_OK);

    auto pushed = PushAsync(PushedSample::Untimed({1}));
    EXPECT_EQ(renderer->GetState(10'000, &state), S_OK);
    EXPECT_EQ(state, State_Paused);
    EXPECT_EQ(pushed.wait_for(50ms), std::future_status::timeout) << "the delivering thread waits while paused";
    EXPECT_EQ(renderer->Count(), 0u);
    ASSERT_EQ(renderer->Stop(), S_OK);
    EXPECT_EQ(pushed.get(), S_OK);
}

// What ends the paused wait, and whether the held sample is rendered.
struct Release {
    const char* name;
    std::function<void(zetest::FilterChain&, zetest::TestSourceFilter*)> act;
    size_t rendered;
};

TEST_F(RendererTest, PausedWaitEndsOnRunWithRenderingAndOnStopOrFlushWithout)
{
    const Release cases[] = {
        {"Run", [](zetest::FilterChain& c, zetest::TestSourceFilter*) { c.Run(); }, 1},
        {"Stop", [](zetest::FilterChain& c, zetest::TestSourceFilter*) { c.Stop(); }, 0},
        {"BeginFlush", [](zetest::FilterChain&, zetest::TestSourceFilter* s) { s->DeliverBeginFlush(); }, 0},
    };
    for (const Release& release : cases) {
        SCOPED_TRACE(release.name);
        renderer->Clear();
        chain->Stop();
        source->DeliverEndFlush();
        ASSERT_EQ(chain->Pause(), S_FALSE);
        auto pushed = PushAsync(PushedSample::Untimed({42}));
        FILTER_STATE state;
        ASSERT_EQ(renderer->GetState(10'000, &state), S_OK);
        ASSERT_EQ(pushed.wait_for(20ms), std::future_status::timeout);
        release.act(*chain, source);
        EXPECT_EQ(pushed.get(), S_OK);
        EXPECT_EQ(renderer->Count(), release.rendered);
    }
}

TEST_F(RendererTest, FailedChecksBecomeEFailAndOnlyARealErrorAborts)
{
    // A standalone buffer lets the test deliver while the source's own allocator is decommitted.
    CInterfacePtr<IMemAllocator> allocator;
    ASSERT_EQ(CMemAllocator::CreateInstance(allocator.Out()), S_OK);
    ALLOCATOR_PROPERTIES want{1, 16, 1, 0}, got{};
    ASSERT_EQ(allocator->SetProperties(&want, &got), S_OK);
    ASSERT_EQ(allocator->Commit(), S_OK);
    auto deliver = [&] {
        CInterfacePtr<IMediaSample> sample;
        EXPECT_EQ(allocator->GetBuffer(sample.Out(), nullptr, nullptr, 0), S_OK);
        return source->OutputPin()->Deliver(sample.Get());
    };

    // Stopped: Deliver checks no state of its own, the renderer refuses.
    EXPECT_EQ(deliver(), E_FAIL);
    EXPECT_EQ(chain->Events().Count(EC_ERRORABORT), 0);

    ASSERT_EQ(renderer->Run(0), S_OK);
    EXPECT_EQ(deliver(), S_OK) << "a stopped source's Deliver still reaches a running renderer";
    EXPECT_EQ(renderer->Count(), 1u);

    // Flushing.
    source->DeliverBeginFlush();
    EXPECT_EQ(deliver(), E_FAIL);
    EXPECT_EQ(chain->Events().Count(EC_ERRORABORT), 0);
    source->DeliverEndFlush();

    // A type the renderer refuses, brought by a sample: one abort, then every sample fails.
    CMediaType refused = zetest::PlainType(MEDIATYPE_Audio, MEDIASUBTYPE_PCM);
    CInterfacePtr<IMediaSample> typed;
    ASSERT_EQ(allocator->GetBuffer(typed.Out(), nullptr, nullptr, 0), S_OK);
    typed->SetMediaType(&refused);
    renderer->SetAccept([](const CMediaType* t) { return IsEqualGUID(t->majortype, MEDIATYPE_Stream) ? S_OK : S_FALSE; });
    EXPECT_EQ(source->OutputPin()->Deliver(typed.Get()), E_FAIL);
    typed.Reset();
    EXPECT_EQ(chain->Events().Count(EC_ERRORABORT), 1);
    EXPECT_EQ(deliver(), E_FAIL);
    EXPECT_EQ(chain->Events().Count(EC_ERRORABORT), 1);
    EXPECT_EQ(renderer->Count(), 1u);
    renderer->Stop();
}

TEST_F(RendererTest, EndOfStreamCompletesWhenRunningWithNothingPending)
{
    ASSERT_EQ(chain->Pause(), S_FALSE);
    EXPECT_EQ(source->DeliverEndOfStream(), S_OK);
    FILTER_STATE state;
    EXPECT_EQ(renderer->GetState(0, &state), S_OK) << "end of stream completes the pause";
    EXPECT_EQ(chain->Events().Count(EC_COMPLETE), 0);
    ASSERT_EQ(chain->Run(), S_OK);
    ASSERT_EQ(chain->Events().Count(EC_COMPLETE), 1);
    const auto events = chain->Events().Events();
    EXPECT_EQ(events.back().param2, reinterpret_cast<LONG_PTR>(static_cast<IBaseFilter*>(renderer)));
}

TEST_F(RendererTest, ASampleAfterEndOfStreamIsUnexpectedAndAborts)
{
    ASSERT_EQ(chain->Run(), S_OK);
    ASSERT_EQ(source->DeliverEndOfStream(), S_OK);
    EXPECT_EQ(chain->Events().Count(EC_COMPLETE), 1);
    EXPECT_EQ(source->PushBytes({1}), E_UNEXPECTED);
    EXPECT_EQ(renderer->Count(), 0u);
    EXPECT_EQ(chain->Events().Count(EC_ERRORABORT), 1);

    // Stop forgets the end of stream; the next run takes samples again.
    ASSERT_EQ(chain->Stop(), S_OK);
    ASSERT_EQ(chain->Run(), S_OK);
    EXPECT_EQ(source->PushBytes({2}), S_OK);
    EXPECT_EQ(renderer->Count(), 1u);
}

}  // namespace

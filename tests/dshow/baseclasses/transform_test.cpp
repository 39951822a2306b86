// The transform filter between a pushing source and a collecting renderer: what it copies to its
// outputs, skipped outputs, the answers its input gives, and filters that make other than one output
// per input.
#include <future>

#include "tests/dshow/baseclasses/live_objects.h"
#include "tests/dshow/baseclasses/test_filters.h"
#include "tests/dshow/support/ze_filter_harness.h"

namespace {

using zetest::PushedSample;

const CMediaType kStream = zetest::PlainType(MEDIATYPE_Stream, MEDIASUBTYPE_NULL);

// Holds back each input and delivers it, doubled, when the next one comes or at end of stream: a
// filter with one input of delay, like a decoder with reordering.
class DelayDoubler : public basetest::PassThrough {
public:
    HRESULT Receive(IMediaSample* sample) override
    {
        HRESULT hr = Drain();
        if (FAILED(hr))
            return hr;
        BYTE* data = nullptr;
        sample->GetPointer(&data);
        held.assign(data, data + sample->GetActualDataLength());
        return S_OK;
    }
    HRESULT EndOfStream() override
    {
        const HRESULT hr = Drain();
        return FAILED(hr) ? hr : CTransformFilter::EndOfStream();
    }
    HRESULT BeginFlush() override
    {
        held.clear();
        return CTransformFilter::BeginFlush();
    }

private:
    HRESULT Drain()
    {
        for (int copy = 0; copy < 2 && !held.empty(); ++copy) {
            CInterfacePtr<IMediaSample> out;
            HRESULT hr = m_pOutput->GetDeliveryBuffer(out.Out(), nullptr, nullptr, 0);
            if (FAILED(hr))
                return hr;
            BYTE* to = nullptr;
            out->GetPointer(&to);
            std::memcpy(to, held.data(), held.size());
            to[0] = static_cast<BYTE>(to[0] + copy);
            out->SetActualDataLength(static_cast<LONG>(held.size()));
            hr = DeliverOutput(out.Get());
            if (FAILED(hr))
                return hr;
        }
        held.clear();
        return S_OK;
    }

    std::vector<BYTE> held;
};

template <class Transform>
class TransformTest : public LiveObjectTest {
protected:
    void SetUp() override
    {
        LiveObjectTest::SetUp();
        chain = std::make_unique<zetest::FilterChain>();
        source = new zetest::TestSourceFilter({kStream}, 64, 2);
        transform = new Transform();
        renderer = new zetest::CollectingRenderer();
        chain->Add(source, "source");
        chain->Add(transform, "transform");
        chain->Add(renderer, "renderer");
        ASSERT_EQ(chain->ConnectAll(), S_OK);
    }
    void TearDown() override
    {
        chain.reset();
        LiveObjectTest::TearDown();
    }

    std::unique_ptr<zetest::FilterChain> chain;
    zetest::TestSourceFilter* source = nullptr;
    Transform* transform = nullptr;
    zetest::CollectingRenderer* renderer = nullptr;
};

using PassThroughTest = TransformTest<basetest::PassThrough>;
using DelayTest = TransformTest<DelayDoubler>;

TEST_F(PassThroughTest, OutputsCarryTheTimesAndFlagsOfTheirInputs)
{
    ASSERT_EQ(chain->Run(), S_OK);
    std::vector<PushedSample> pushed;
    pushed.push_back(PushedSample::Timed({1, 2}, 0, 400'000, true));
    pushed.push_back(PushedSample::Timed({3}, 400'000, 800'000, false));
    pushed.push_back(PushedSample::Untimed({4, 5, 6}));
    PushedSample flagged = PushedSample::Timed({7}, 800'000, 1'200'000, false);
    flagged.discontinuity = true;
    flagged.preroll = true;
    pushed.push_back(flagged);

    for (const PushedSample& sample : pushed)
        ASSERT_EQ(source->Push(sample), S_OK);
    const auto rendered = renderer->Samples();
    ASSERT_EQ(rendered.size(), pushed.size());
    for (size_t i = 0; i < pushed.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(rendered[i].bytes, pushed[i].bytes);
        EXPECT_EQ(rendered[i].timed, pushed[i].timed);
        if (pushed[i].timed) {
            EXPECT_EQ(rendered[i].start, pushed[i].start);
            EXPECT_EQ(rendered[i].stop, pushed[i].stop);
        }
        EXPECT_EQ(rendered[i].syncPoint, pushed[i].syncPoint);
        EXPECT_EQ(rendered[i].discontinuity, pushed[i].discontinuity);
        EXPECT_EQ(rendered[i].preroll, pushed[i].preroll);
        EXPECT_EQ(rendered[i].thread, std::this_thread::get_id());
    }
}

TEST_F(PassThroughTest, SkippedOutputIsNotDeliveredAndTheSourceHearsSuccess)
{
    ASSERT_EQ(chain->Run(), S_OK);
    EXPECT_EQ(source->PushBytes({basetest::PassThrough::skipMarker, 1}), S_OK);
    EXPECT_EQ(source->PushBytes({basetest::PassThrough::skipMarker, 2}), S_OK);
    EXPECT_EQ(source->PushBytes({9}), S_OK);
    const auto rendered = renderer->Samples();
    ASSERT_EQ(rendered.size(), 1u);
    EXPECT_EQ(rendered[0].bytes, std::vector<uint8_t>{9});
    EXPECT_EQ(chain->Events().Count(EC_QUALITY_CHANGE), 1);
}

TEST_F(PassThroughTest, TheSourceSeesTheTransformsStateAndTheRenderersAnswers)
{
    ASSERT_EQ(chain->Run(), S_OK);
    ASSERT_EQ(source->DeliverBeginFlush(), S_OK);
    EXPECT_EQ(source->PushBytes({1}), S_FALSE) << "flushing transform";
    ASSERT_EQ(source->DeliverEndFlush(), S_OK);
    EXPECT_EQ(source->PushBytes({2}), S_OK);

    // Only the renderer flushes: its E_FAIL comes back through the transform unchanged, unreported.
    ASSERT_EQ(renderer->InputPin()->BeginFlush(), S_OK);
    EXPECT_EQ(source->PushBytes({3}), E_FAIL);
    ASSERT_EQ(renderer->InputPin()->EndFlush(), S_OK);
    EXPECT_EQ(chain->Events().Count(EC_ERRORABORT), 0);

    // Only the renderer stops: it decommits the allocator the transform's outputs come from.
    ASSERT_EQ(renderer->Stop(), S_OK);
    EXPECT_EQ(source->PushBytes({4}), VFW_E_NOT_COMMITTED);
    EXPECT_EQ(renderer->Count(), 1u);
}

TEST_F(PassThroughTest, AStoppedTransformRefusesWithWrongState)
{
    // The source pauses on its own; the transform stays stopped. A buffer of the test's own is used,
    // since the shared allocator follows the transform's input.
    CInterfacePtr<IMemAllocator> allocator;
    ASSERT_EQ(CMemAllocator::CreateInstance(allocator.Out()), S_OK);
    ALLOCATOR_PROPERTIES want{1, 8, 1, 0}, got{};
    ASSERT_EQ(allocator->SetProperties(&want, &got), S_OK);
    ASSERT_EQ(allocator->Commit(), S_OK);
    CInterfacePtr<IMediaSample> sample;
    ASSERT_EQ(allocator->GetBuffer(sample.Out(), nullptr, nullptr, 0), S_OK);
    ASSERT_EQ(renderer->Run(0), S_OK);
    EXPECT_EQ(source->OutputPin()->Deliver(sample.Get()), VFW_E_WRONG_STATE);
    EXPECT_EQ(renderer->Count(), 0u);
}

TEST_F(PassThroughTest, StreamControlTravelsDownstream)
{
    ASSERT_EQ(chain->Run(), S_OK);
    ASSERT_EQ(source->DeliverNewSegment(100, 900, 1.0), S_OK);
    EXPECT_EQ(renderer->InputPin()->CurrentStartTime(), 100);
    EXPECT_EQ(renderer->InputPin()->CurrentStopTime(), 900);
    ASSERT_EQ(source->DeliverEndOfStream(), S_OK);
    EXPECT_EQ(renderer->EndOfStreamCount(), 1);
    EXPECT_EQ(chain->Events().Count(EC_COMPLETE), 1);
}

TEST_F(DelayTest, AFilterMayDeliverNothingNowAndSeveralLater)
{
    ASSERT_EQ(chain->Run(), S_OK);
    ASSERT_EQ(source->PushBytes({10, 1}), S_OK);
    EXPECT_EQ(renderer->Count(), 0u) << "held back";
    ASSERT_EQ(source->PushBytes({20, 2}), S_OK);
    EXPECT_EQ(renderer->Count(), 2u);
    ASSERT_EQ(source->DeliverEndOfStream(), S_OK);
    const auto rendered = renderer->Samples();
    ASSERT_EQ(rendered.size(), 4u);
    const std::vector<std::vector<uint8_t>> expected = {{10, 1}, {11, 1}, {20, 2}, {21, 2}};
    for (size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(rendered[i].bytes, expected[i]);
    EXPECT_EQ(renderer->EndOfStreamCount(), 1);
}

TEST_F(DelayTest, FlushDropsWhatTheFilterHeld)
{
    ASSERT_EQ(chain->Run(), S_OK);
    ASSERT_EQ(source->PushBytes({10}), S_OK);
    ASSERT_EQ(source->DeliverBeginFlush(), S_OK);
    ASSERT_EQ(source->DeliverEndFlush(), S_OK);
    ASSERT_EQ(source->DeliverEndOfStream(), S_OK);
    EXPECT_EQ(renderer->Count(), 0u);
}

TEST_F(PassThroughTest, StoppingDownstreamFirstReleasesAPusherHeldByAPausedRenderer)
{
    // The pushing thread holds the transform's receive lock while the paused renderer holds it; the
    // transform's Stop needs that lock, so the renderer must let go first.
    ASSERT_EQ(chain->Pause(), S_FALSE);
    auto pushed = std::async(std::launch::async, [this] { return source->PushBytes({5}); });
    FILTER_STATE state;
    ASSERT_EQ(renderer->GetState(10'000, &state), S_OK);
    ASSERT_EQ(pushed.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    EXPECT_EQ(chain->Stop(), S_OK);
    EXPECT_EQ(pushed.get(), S_OK);
    EXPECT_EQ(renderer->Count(), 0u);
}

TEST_F(PassThroughTest, PinsAreFoundAsInAndOutWhateverTheirNames)
{
    const struct {
        const char* id;
        IPin* pin;
    } cases[] = {
        {"In", transform->Input()},
        {"Out", transform->Output()},
        {"XForm In", transform->Input()},
        {"Other", nullptr},
    };
    for (const auto& c : cases) {
        CInterfacePtr<IPin> found;
        EXPECT_EQ(transform->FindPin(MakeWideName(c.id).c_str(), found.Out()), c.pin ? S_OK : VFW_E_NOT_FOUND) << c.id;
        EXPECT_EQ(found.Get(), c.pin) << c.id;
    }
}

}  // namespace

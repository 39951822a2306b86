// Filter states and what they do to pins, the input pin's streaming checks, and delivery without
// a state check of its own.
#include "tests/dshow/baseclasses/live_objects.h"
#include "tests/dshow/baseclasses/test_filters.h"
#include "tests/dshow/support/ze_filter_harness.h"

namespace {

const CMediaType kStream = zetest::PlainType(MEDIATYPE_Stream, MEDIASUBTYPE_NULL);

class FilterStateTest : public LiveObjectTest {
protected:
    void SetUp() override
    {
        LiveObjectTest::SetUp();
        chain = std::make_unique<zetest::FilterChain>();
        source = new zetest::TestSourceFilter({kStream}, 16, 1);
        sink = new basetest::ProbeSink();
        sink->Pin().offered = {kStream};
        sink->Pin().accepted = {kStream};
        chain->Add(source, "source");
        chain->Add(sink, "sink");
    }
    void TearDown() override
    {
        chain.reset();
        standalone.Reset();
        LiveObjectTest::TearDown();
    }
    // A sample from an allocator of the test's own, to deliver whatever state the filters are in.
    CInterfacePtr<IMediaSample> StandaloneSample(const AM_MEDIA_TYPE* type = nullptr)
    {
        if (!standalone) {
            EXPECT_EQ(CMemAllocator::CreateInstance(standalone.Out()), S_OK);
            ALLOCATOR_PROPERTIES want{4, 16, 1, 0}, got{};
            standalone->SetProperties(&want, &got);
            standalone->Commit();
        }
        CInterfacePtr<IMediaSample> sample;
        EXPECT_EQ(standalone->GetBuffer(sample.Out(), nullptr, nullptr, 0), S_OK);
        if (type != nullptr)
            sample->SetMediaType(const_cast<AM_MEDIA_TYPE*>(type));
        return sample;
    }
    HRESULT DeliverStandalone(const AM_MEDIA_TYPE* type = nullptr)
    {
        return source->OutputPin()->Deliver(StandaloneSample(type).Get());
    }
    HRESULT TakeSourceBuffer()
    {
        CInterfacePtr<IMediaSample> sample;
        return source->OutputPin()->GetDeliveryBuffer(sample.Out(), nullptr, nullptr, AM_GBF_NOWAIT);
    }

    std::unique_ptr<zetest::FilterChain> chain;
    zetest::TestSourceFilter* source = nullptr;
    basetest::ProbeSink* sink = nullptr;
    CInterfacePtr<IMemAllocator> standalone;
};

TEST_F(FilterStateTest, PauseActivatesConnectedPinsAndStopDeactivatesThem)
{
    // Unconnected: Active is not called, which for an output pin without allocator would fail.
    EXPECT_EQ(source->Pause(), S_OK);
    EXPECT_EQ(source->Stop(), S_OK);

    ASSERT_EQ(chain->ConnectAll(), S_OK);
    EXPECT_EQ(TakeSourceBuffer(), VFW_E_NOT_COMMITTED);
    ASSERT_EQ(source->Pause(), S_OK);
    EXPECT_EQ(TakeSourceBuffer(), S_OK) << "Pause committed the allocator";
    ASSERT_EQ(source->Stop(), S_OK);
    EXPECT_EQ(TakeSourceBuffer(), VFW_E_NOT_COMMITTED) << "Stop decommitted it";

    // Run from Stopped goes through Pause.
    ASSERT_EQ(source->Run(0), S_OK);
    FILTER_STATE state;
    ASSERT_EQ(source->GetState(0, &state), S_OK);
    EXPECT_EQ(state, State_Running);
    EXPECT_EQ(TakeSourceBuffer(), S_OK);
}

TEST_F(FilterStateTest, AFailingActiveAbortsPauseButAFailingInactiveStillStops)
{
    ASSERT_EQ(chain->ConnectAll(), S_OK);
    FILTER_STATE state;
    sink->Pin().activeResult = E_ABORT;
    EXPECT_EQ(sink->Pause(), E_ABORT);
    ASSERT_EQ(sink->GetState(0, &state), S_OK);
    EXPECT_EQ(state, State_Stopped);
    EXPECT_EQ(sink->Run(0), E_ABORT);
    ASSERT_EQ(sink->GetState(0, &state), S_OK);
    EXPECT_EQ(state, State_Stopped);

    sink->Pin().activeResult = S_OK;
    sink->Pin().inactiveResult = E_UNEXPECTED;
    ASSERT_EQ(sink->Run(0), S_OK);
    EXPECT_EQ(sink->Stop(), E_UNEXPECTED);
    ASSERT_EQ(sink->GetState(0, &state), S_OK);
    EXPECT_EQ(state, State_Stopped);
}

TEST_F(FilterStateTest, ReceiveAnswersFromTheStreamingChecksReachTheSourceUnchanged)
{
    ASSERT_EQ(chain->ConnectAll(), S_OK);
    const CMediaType refused = zetest::PlainType(MEDIATYPE_Audio, MEDIASUBTYPE_PCM);
    const struct {
        const char* step;
        std::function<void()> act;
        const AM_MEDIA_TYPE* brought;
        HRESULT answer;
    } steps[] = {
        {"stopped", [] {}, nullptr, VFW_E_WRONG_STATE},
        {"paused", [&] { chain->Pause(); }, nullptr, S_OK},
        {"flushing", [&] { source->DeliverBeginFlush(); }, nullptr, S_FALSE},
        {"flush ended", [&] { source->DeliverEndFlush(); }, nullptr, S_OK},
        {"refused type in the stream", [] {}, &refused, VFW_E_INVALIDMEDIATYPE},
        {"after the runtime error", [] {}, nullptr, VFW_E_RUNTIME_ERROR},
        {"flush clears the error", [&] {
             source->DeliverBeginFlush();
             source->DeliverEndFlush();
         },
         nullptr, S_OK},
        {"stopped again", [&] { chain->Stop(); }, nullptr, VFW_E_WRONG_STATE},
    };
    int expectedReceived = 0;
    for (const auto& step : steps) {
        step.act();
        EXPECT_EQ(DeliverStandalone(step.brought), step.answer) << step.step;
        expectedReceived += step.answer == S_OK ? 1 : 0;
    }
    EXPECT_EQ(sink->Pin().received, expectedReceived);
    EXPECT_EQ(chain->Events().Count(EC_ERRORABORT), 1);
}

TEST_F(FilterStateTest, DeliverWithoutAPeerIsNotConnected)
{
    EXPECT_EQ(DeliverStandalone(), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(source->DeliverEndOfStream(), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(source->DeliverBeginFlush(), VFW_E_NOT_CONNECTED);
}

TEST_F(FilterStateTest, ConnectionChangesNeedStoppedFiltersAndFreePins)
{
    CInterfacePtr<IPin> out = zetest::FindPin(source, PINDIR_OUTPUT);
    CInterfacePtr<IPin> in = zetest::FindPin(sink, PINDIR_INPUT);
    ASSERT_EQ(source->Pause(), S_OK);
    EXPECT_EQ(out->Connect(in.Get(), nullptr), VFW_E_NOT_STOPPED);
    ASSERT_EQ(source->Stop(), S_OK);
    ASSERT_EQ(out->Connect(in.Get(), nullptr), S_OK);
    EXPECT_EQ(out->Connect(in.Get(), nullptr), VFW_E_ALREADY_CONNECTED);
    EXPECT_EQ(in->ReceiveConnection(out.Get(), &kStream), VFW_E_ALREADY_CONNECTED);
    ASSERT_EQ(sink->Pause(), S_OK);
    EXPECT_EQ(in->Disconnect(), VFW_E_NOT_STOPPED);
    ASSERT_EQ(sink->Stop(), S_OK);
    EXPECT_EQ(in->Disconnect(), S_OK);
    EXPECT_EQ(in->Disconnect(), S_FALSE);
    EXPECT_EQ(out->Disconnect(), S_OK);
    CInterfacePtr<IPin> peer;
    EXPECT_EQ(out->ConnectedTo(peer.Out()), VFW_E_NOT_CONNECTED);
}

TEST_F(FilterStateTest, PinsAreFoundByNameAndEnumeratedWithReferences)
{
    CInterfacePtr<IPin> found;
    const CWideName name = MakeWideName("In");
    ASSERT_EQ(sink->FindPin(name.c_str(), found.Out()), S_OK);
    EXPECT_EQ(found.Get(), static_cast<IPin*>(&sink->Pin()));
    EXPECT_EQ(sink->FindPin(MakeWideName("Out").c_str(), found.Out()), VFW_E_NOT_FOUND);

    CInterfacePtr<IEnumPins> pins;
    ASSERT_EQ(sink->EnumPins(pins.Out()), S_OK);
    IPin* got[2] = {};
    ULONG fetched = 0;
    EXPECT_EQ(pins->Next(2, got, &fetched), S_FALSE);
    ASSERT_EQ(fetched, 1u);
    got[0]->Release();
    PIN_INFO info{};
    CInterfacePtr<IPin> in = zetest::FindPin(sink, PINDIR_INPUT);
    ASSERT_EQ(in->QueryPinInfo(&info), S_OK);
    EXPECT_EQ(info.pFilter, static_cast<IBaseFilter*>(sink));
    EXPECT_EQ(info.dir, PINDIR_INPUT);
    EXPECT_TRUE(WideNameEquals(info.achName, name.c_str()));
    info.pFilter->Release();
}

}  // namespace

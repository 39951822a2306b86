// Media type negotiation of IPin::Connect: whose types are tried first, partial types as filters,
// fully specified types alone, and the answers when nothing fits.
#include <optional>

#include "tests/dshow/baseclasses/live_objects.h"
#include "tests/dshow/baseclasses/test_filters.h"
#include "tests/dshow/support/ze_filter_harness.h"

namespace {

const CMediaType kA = zetest::PlainType(MEDIATYPE_Video, MEDIASUBTYPE_RGB24);
const CMediaType kB = zetest::PlainType(MEDIATYPE_Video, MEDIASUBTYPE_RGB32);
const CMediaType kC = zetest::PlainType(MEDIATYPE_Video, MEDIASUBTYPE_YUY2);
const std::optional<CMediaType> kHole;  // the input pin answers S_FALSE at this position

CMediaType PartialRgb32()
{
    CMediaType partial(&MEDIATYPE_Video);
    partial.SetSubtype(&MEDIASUBTYPE_RGB32);
    return partial;  // no format type: partially specified
}

struct NegotiationCase {
    const char* name;
    std::vector<CMediaType> sourceOffers;        // the output pin accepts exactly these
    std::vector<std::optional<CMediaType>> sinkOffers;
    std::vector<CMediaType> sinkAccepts;
    std::optional<CMediaType> asked;             // the type given to Connect
    HRESULT result;
    std::optional<CMediaType> agreed;
};

using NegotiationTest = LiveObjectTest;

TEST_F(NegotiationTest, ConnectTriesTheReceivingPinsTypesFirstThenItsOwn)
{
    const NegotiationCase cases[] = {
        // The output pin's first type would be A; the input pin's list is asked first and gives B.
        {"input pin's types first", {kA, kB}, {kC, kB}, {kA, kB}, {}, S_OK, kB},
        {"then the output pin's, in order", {kA, kB}, {}, {kB, kA}, {}, S_OK, kA},
        {"input pin offering only refused types", {kA, kB}, {kC}, {kB}, {}, S_OK, kB},
        // The hole ends the input pin's list: B behind it is never seen, A from the output pin wins.
        {"enumeration stops at a non-S_OK answer", {kA, kB}, {kC, kHole, kB}, {kB, kA}, {}, S_OK, kA},
        {"partial type filters the candidates", {kA, kB}, {kA, kB}, {kA, kB}, PartialRgb32(), S_OK, kB},
        {"fully specified type is tried alone", {kA, kB}, {kB}, {kB}, kA, VFW_E_TYPE_NOT_ACCEPTED, {}},
        {"fully specified type accepted", {kA, kB}, {kA}, {kA, kB}, kB, S_OK, kB},
        {"nothing acceptable", {kA}, {kC}, {kB}, {}, VFW_E_NO_ACCEPTABLE_TYPES, {}},
    };
    for (const NegotiationCase& c : cases) {
        SCOPED_TRACE(c.name);
        zetest::FilterChain chain;
        auto* source = new zetest::TestSourceFilter(c.sourceOffers);
        auto* sink = new basetest::ProbeSink();
        sink->Pin().offered = c.sinkOffers;
        sink->Pin().accepted = c.sinkAccepts;
        chain.Add(source, "source");
        chain.Add(sink, "sink");
        EXPECT_EQ(chain.Connect(0, c.asked ? &*c.asked : nullptr), c.result);
        AM_MEDIA_TYPE onInput{}, onOutput{};
        CInterfacePtr<IPin> in = zetest::FindPin(sink, PINDIR_INPUT);
        CInterfacePtr<IPin> out = zetest::FindPin(source, PINDIR_OUTPUT);
        const HRESULT inAnswer = in->ConnectionMediaType(&onInput);
        const HRESULT outAnswer = out->ConnectionMediaType(&onOutput);
        if (c.agreed) {
            ASSERT_EQ(inAnswer, S_OK);
            ASSERT_EQ(outAnswer, S_OK);
            EXPECT_TRUE(CMediaType(onInput) == *c.agreed);
            EXPECT_TRUE(CMediaType(onOutput) == *c.agreed);
        } else {
            EXPECT_EQ(inAnswer, VFW_E_NOT_CONNECTED);
            EXPECT_EQ(outAnswer, VFW_E_NOT_CONNECTED);
        }
        FreeMediaType(onInput);
        FreeMediaType(onOutput);
    }
}

TEST_F(NegotiationTest, TheOutputPinUsesTheInputPinsAllocatorFirstAndItsOwnOtherwise)
{
    for (const bool inputOffers : {true, false}) {
        SCOPED_TRACE(inputOffers);
        zetest::FilterChain chain;
        auto* source = new zetest::TestSourceFilter({kA}, 100, 3);
        auto* sink = new basetest::ProbeSink();
        sink->Pin().accepted = {kA};
        sink->Pin().offersAllocator = inputOffers;
        CInterfacePtr<IMemAllocator> offered;
        if (inputOffers) {
            ASSERT_EQ(sink->Pin().GetAllocator(offered.Out()), S_OK);
        }
        chain.Add(source, "source");
        chain.Add(sink, "sink");
        ASSERT_EQ(chain.ConnectAll(), S_OK);
        IMemAllocator* used = source->OutputPin()->Allocator();
        ASSERT_NE(used, nullptr);
        EXPECT_EQ(used, sink->Pin().Allocator()) << "the input pin was told which allocator is used";
        EXPECT_EQ(used == offered.Get(), inputOffers);
        ALLOCATOR_PROPERTIES sized{};
        ASSERT_EQ(used->GetProperties(&sized), S_OK);
        EXPECT_EQ(sized.cbBuffer, 100);
        EXPECT_EQ(sized.cBuffers, 3);
    }
}

TEST_F(NegotiationTest, QueryAcceptAnswersSFalseForARefusedType)
{
    auto* sink = new basetest::ProbeSink();
    CInterfacePtr<IBaseFilter> hold(sink);
    sink->Pin().accepted = {kA};
    CInterfacePtr<IPin> in = zetest::FindPin(sink, PINDIR_INPUT);
    EXPECT_EQ(in->QueryAccept(&kA), S_OK);
    EXPECT_EQ(in->QueryAccept(&kB), S_FALSE);
}

TEST_F(NegotiationTest, MediaTypeEnumeratorHandsOutCopiesAndSkipsLikeNext)
{
    auto* sink = new basetest::ProbeSink();
    CInterfacePtr<IBaseFilter> hold(sink);
    sink->Pin().offered = {kA, kB, kC};
    CInterfacePtr<IPin> in = zetest::FindPin(sink, PINDIR_INPUT);
    CInterfacePtr<IEnumMediaTypes> types;
    ASSERT_EQ(in->EnumMediaTypes(types.Out()), S_OK);
    ASSERT_EQ(types->Skip(1), S_OK);
    AM_MEDIA_TYPE* got[3] = {};
    ULONG fetched = 0;
    EXPECT_EQ(types->Next(3, got, &fetched), S_FALSE);
    ASSERT_EQ(fetched, 2u);
    EXPECT_TRUE(CMediaType(*got[0]) == kB);
    EXPECT_TRUE(CMediaType(*got[1]) == kC);
    DeleteMediaType(got[0]);
    DeleteMediaType(got[1]);
    EXPECT_EQ(types->Skip(1), S_FALSE);

    CInterfacePtr<IEnumMediaTypes> copy;
    ASSERT_EQ(types->Reset(), S_OK);
    ASSERT_EQ(types->Clone(copy.Out()), S_OK);
    sink->Pin().IncrementTypeVersion();
    EXPECT_EQ(copy->Next(1, got, &fetched), VFW_E_ENUM_OUT_OF_SYNC);
    ASSERT_EQ(copy->Reset(), S_OK);
    ASSERT_EQ(copy->Next(1, got, &fetched), S_OK);
    EXPECT_TRUE(CMediaType(*got[0]) == kA);
    DeleteMediaType(got[0]);
}

}  // namespace

// The filters in a chain, pins connected directly without a graph manager: the source delivering into
// the harness's collecting renderer, a pushing source feeding the render filter, and the source
// feeding the render filter straight (YUY2 in, YUY2 out). Every object is gone again afterwards.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "graph/ze_decode_state.h"
#include "graph/ze_video_render_filter.h"
#include "graph/ze_video_source_filter.h"
#include "graph/ze_video_source_output_pin.h"
#include "tests/dshow/support/ze_filter_harness.h"
#include "tests/graph/graph_test_support.h"

namespace {

using namespace zegraph_test;

constexpr DWORD kYuy2 = ZeFourcc('Y', 'U', 'Y', '2');
constexpr DWORD kXvid = ZeFourcc('X', 'V', 'I', 'D');

// A memory allocator that grants buffers of half the size asked for.
class HalvingAllocator : public CMemAllocator {
public:
    HalvingAllocator() : CMemAllocator("HalvingAllocator", nullptr, nullptr) {}
    HRESULT STDMETHODCALLTYPE SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) override
    {
        ALLOCATOR_PROPERTIES halved = *request;
        halved.cbBuffer /= 2;
        return CMemAllocator::SetProperties(&halved, actual);
    }
};

class GraphConnectionTest : public ReportedTest {
protected:
    void SetUp() override
    {
        ReportedTest::SetUp();
        ZeSetDataLengthFlag(false);
        ZeSetCurrentFrameSize(0);
    }
    void TearDown() override
    {
        ZeSetDataLengthFlag(false);
        ZeSetCurrentFrameSize(0);
        ExpectAllObjectsGone();
        ReportedTest::TearDown();
    }

    // A source filter holding `header` at 25 frames per second, with one reference for the caller.
    static ZeComRef<IZEVideoSourceFilter> Source(const BITMAPINFOHEADER& header)
    {
        ZeComRef<IZEVideoSourceFilter> source = Create<IZEVideoSourceFilter>(CreateZEVideoSourceFilter,
                                                                             IID_IZEVideoSourceFilter);
        const ze_video_stream_desc desc = StreamDesc(25, 1);
        EXPECT_EQ(source->SetMediaInfo(&header, &desc), S_OK);
        return source;
    }
    static IBaseFilter* Base(IZEVideoSourceFilter* source) { return static_cast<CZEVideoSourceFilter*>(source); }
    static IBaseFilter* Base(IZEVideoRenderFilter* render)
    {
        return static_cast<CBaseFilter*>(static_cast<CZEVideoRenderFilter*>(render));
    }

    // Fills a sample with `bytes` and sends it on.
    static HRESULT Send(IZEVideoSourceFilter* source, const std::vector<BYTE>& bytes, BOOL syncPoint = TRUE)
    {
        BYTE* data = nullptr;
        HRESULT hr = source->GetSampleBuffer(&data);
        if (FAILED(hr)) return hr;
        std::memcpy(data, bytes.data(), bytes.size());
        hr = source->SetSyncPoint(syncPoint);
        if (FAILED(hr)) return hr;
        return source->Decode();
    }
};

TEST_F(GraphConnectionTest, SourceDeliversStampedSamplesOfTheFrameSize)
{
    ZeComRef<IZEVideoSourceFilter> source = Source(Bitmap(16, 16, 24, kXvid));
    auto* renderer = new zetest::CollectingRenderer();
    {
        zetest::FilterChain chain;
        chain.Add(Base(source.get()), "source");
        chain.Add(renderer, "renderer");
        ASSERT_EQ(chain.ConnectAll(), S_OK);

        // One buffer of one picture: 16 × 3 bytes × 16 rows, aligned to 4.
        ALLOCATOR_PROPERTIES props{};
        AM_MEDIA_TYPE type{};
        ASSERT_EQ(source->GetSampleProps(&props, &type), S_OK);
        EXPECT_EQ(props.cBuffers, 1);
        EXPECT_GE(props.cbBuffer, 768);
        EXPECT_EQ(props.cbAlign, 4);
        EXPECT_EQ(type.subtype, ZeFourccSubtype(kXvid));
        EXPECT_EQ(type.formattype, FORMAT_VideoInfo);
        EXPECT_EQ(type.cbFormat, 88u);
        // The copy shares the connection's format block.
        EXPECT_EQ(type.pbFormat,
                  static_cast<CZEVideoSourceFilter*>(source.get())->GetPin(0)->CurrentMediaType().pbFormat);

        ASSERT_EQ(chain.Run(), S_OK);
        const std::vector<BYTE> frame = Pattern(static_cast<size_t>(props.cbBuffer), 3);
        // Length flag off: the sample keeps the allocator's length, the whole buffer.
        ZeSetCurrentFrameSize(5);
        ASSERT_EQ(Send(source.get(), frame), S_OK);
        // Length flag on: the frame size decides.
        ZeSetDataLengthFlag(true);
        ASSERT_EQ(Send(source.get(), frame, FALSE), S_OK);
        BYTE* data = nullptr;
        ASSERT_EQ(source->GetSampleBuffer(&data), S_OK);
        ASSERT_EQ(source->SetDiscontinuity(TRUE), S_OK);
        ASSERT_EQ(source->Decode(), S_OK);

        const std::vector<zetest::RenderedSample> samples = renderer->Samples();
        ASSERT_EQ(samples.size(), 3u);
        EXPECT_EQ(samples[0].bytes, frame);
        EXPECT_EQ(samples[1].bytes, std::vector<BYTE>(frame.begin(), frame.begin() + 5));
        const bool syncPoints[3] = {true, false, false};
        const bool discontinuities[3] = {false, false, true};
        for (size_t i = 0; i < samples.size(); ++i) {
            EXPECT_TRUE(samples[i].timed) << i;
            EXPECT_EQ(samples[i].start, 0) << i;
            EXPECT_EQ(samples[i].stop, 400000) << i;
            EXPECT_EQ(samples[i].syncPoint, syncPoints[i]) << i;
            EXPECT_EQ(samples[i].discontinuity, discontinuities[i]) << i;
        }
        EXPECT_TRUE(TakeReports().empty());
    }
}

TEST_F(GraphConnectionTest, RefusedDeliveriesReportAtThePinAndAtDecode)
{
    ZeComRef<IZEVideoSourceFilter> source = Source(Bitmap(8, 8, 24, kXvid));
    auto* renderer = new zetest::CollectingRenderer();
    zetest::FilterChain chain;
    chain.Add(Base(source.get()), "source");
    chain.Add(renderer, "renderer");
    ASSERT_EQ(chain.ConnectAll(), S_OK);

    // Stopped: the allocator is not committed.
    BYTE* data = nullptr;
    EXPECT_EQ(source->GetSampleBuffer(&data), E_POINTER);
    EXPECT_EQ(TakeReports(),
              (std::vector<std::string>{
                  Line("[80040211] unknown error (-2147220975)", "CZEVideoSourceOutputPin::GetSampleBuffer"),
                  Line(kPointer, "CZEVideoSourceFilter::GetSampleBuffer")}));

    // A frame larger than the sample's buffer is not sent on with a stale length.
    ASSERT_EQ(chain.Run(), S_OK);
    ALLOCATOR_PROPERTIES props{};
    AM_MEDIA_TYPE type{};
    ASSERT_EQ(source->GetSampleProps(&props, &type), S_OK);
    ZeSetDataLengthFlag(true);
    ZeSetCurrentFrameSize(static_cast<uint32_t>(props.cbBuffer) + 1);
    ASSERT_EQ(source->GetSampleBuffer(&data), S_OK);
    const HRESULT refused = source->Decode();
    EXPECT_TRUE(FAILED(refused));
    const std::vector<std::string> lines = TakeReports();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_NE(lines[0].find(" ### CZEVideoSourceOutputPin::Deliver ### "), std::string::npos) << lines[0];
    EXPECT_NE(lines[1].find(" ### CZEVideoSourceFilter::Decode ### "), std::string::npos) << lines[1];
    EXPECT_EQ(renderer->Count(), 0u);
    // The sample went back: the next one comes without waiting, and Decode without one is refused.
    EXPECT_EQ(source->Decode(), E_POINTER);
    TakeReports();
    ZeSetCurrentFrameSize(4);
    ASSERT_EQ(Send(source.get(), Pattern(4, 9)), S_OK);
    EXPECT_EQ(renderer->Count(), 1u);

    // A committed allocator refuses new properties; the pin passes the answer on and reports it.
    IMemAllocator* allocator = nullptr;
    ASSERT_EQ(CMemAllocator::CreateInstance(&allocator), S_OK);
    ZeComRef<IMemAllocator> owned(allocator);
    ALLOCATOR_PROPERTIES request{1, 64, 1, 0}, actual{};
    ASSERT_EQ(allocator->SetProperties(&request, &actual), S_OK);
    ASSERT_EQ(allocator->Commit(), S_OK);
    auto* pin = static_cast<CZEVideoSourceOutputPin*>(static_cast<CZEVideoSourceFilter*>(source.get())->GetPin(0));
    EXPECT_EQ(pin->DecideBufferSize(allocator, &request), VFW_E_ALREADY_COMMITTED);
    EXPECT_EQ(TakeReports(), std::vector<std::string>{Line("[8004020f] unknown error (-2147220977)",
                                                           "CZEVideoSourceOutputPin::DecideBufferSize")});
    allocator->Decommit();

    // An allocator that grants half of what is asked leaves the picture without room.
    IMemAllocator* halving = new HalvingAllocator();
    halving->AddRef();
    ZeComRef<IMemAllocator> halvingRef(halving);
    request = ALLOCATOR_PROPERTIES{};
    EXPECT_EQ(pin->DecideBufferSize(halving, &request), E_FAIL);
    EXPECT_EQ(request.cBuffers, 1);
    EXPECT_EQ(request.cbBuffer, 192);  // 8 × 3 bytes, 8 rows
    EXPECT_EQ(request.cbAlign, 4);
    EXPECT_EQ(TakeReports(), std::vector<std::string>{Line(kFail, "CZEVideoSourceOutputPin::DecideBufferSize")});
}

TEST_F(GraphConnectionTest, RenderFilterTakesADecoderTypeOfItsWidthOnly)
{
    ZeComRef<IZEVideoRenderFilter> render = Create<IZEVideoRenderFilter>(CreateZEVideoRenderFilter,
                                                                         IID_IZEVideoRenderFilter);
    const BITMAPINFOHEADER target = Bitmap(4, 2, 32, BI_RGB);
    ASSERT_EQ(render->InitTargetBuffer(&target, 4, 2), S_OK);

    // A decoder that can only give 6-wide pictures: nothing fits.
    auto* wide = new zetest::TestSourceFilter({zetest::VideoInfoType(MEDIASUBTYPE_RGB32, 6, 2, 32)});
    {
        zetest::FilterChain chain;
        chain.Add(wide, "decoder");
        chain.Add(Base(render.get()), "render");
        EXPECT_TRUE(FAILED(chain.ConnectAll()));
        const std::vector<std::string> lines = TakeReports();
        EXPECT_NE(std::find(lines.begin(), lines.end(), Line(kInvalidArg, "CZEVideoRenderFilter::CheckMediaType")),
                  lines.end());
        chain.Teardown();
    }

    // One of 4-wide bottom-up pictures: taken, and what it pushes lands in the target.
    auto* fitting = new zetest::TestSourceFilter({zetest::VideoInfoType(MEDIASUBTYPE_RGB32, 4, 2, 32)});
    zetest::FilterChain chain;
    chain.Add(fitting, "decoder");
    chain.Add(Base(render.get()), "render");
    ASSERT_EQ(chain.ConnectAll(), S_OK);
    ASSERT_EQ(chain.Run(), S_OK);
    const std::vector<BYTE> picture = Pattern(32, 40);
    ASSERT_EQ(fitting->Push(zetest::PushedSample::Untimed(picture)), S_OK);
    BYTE* buffer = nullptr;
    ASSERT_EQ(render->GetTargetBuffer(&buffer, TRUE), S_OK);
    EXPECT_EQ(std::vector<BYTE>(buffer + 40, buffer + 72), picture);
    chain.Teardown();
    TakeReports();
}

TEST_F(GraphConnectionTest, SourceFeedsTheRenderFilterDirectlyAndPicturesComeOutInOrder)
{
    ZeComRef<IZEVideoSourceFilter> source = Source(Bitmap(4, 2, 16, kYuy2));
    ZeComRef<IZEVideoRenderFilter> render = Create<IZEVideoRenderFilter>(CreateZEVideoRenderFilter,
                                                                         IID_IZEVideoRenderFilter);
    const BITMAPINFOHEADER target = Bitmap(4, 2, 16, kYuy2);
    ASSERT_EQ(render->InitTargetBuffer(&target, 4, 2), S_OK);
    zetest::FilterChain chain;
    chain.Add(Base(source.get()), "source");
    chain.Add(Base(render.get()), "render");
    // The render filter's own proposal comes first and the source takes it: YUY2 is its FOURCC type.
    ASSERT_EQ(chain.ConnectAll(), S_OK);
    EXPECT_TRUE(TakeReports().empty());
    ALLOCATOR_PROPERTIES props{};
    AM_MEDIA_TYPE type{};
    ASSERT_EQ(source->GetSampleProps(&props, &type), S_OK);
    EXPECT_EQ(type.majortype, MEDIATYPE_Video);
    EXPECT_EQ(type.subtype, MEDIASUBTYPE_YUY2);
    EXPECT_EQ(type.formattype, FORMAT_VideoInfo);
    EXPECT_EQ(type.lSampleSize, 16u);  // 4 × 2 bytes, 2 rows
    EXPECT_GE(props.cbBuffer, 16);

    ASSERT_EQ(chain.Run(), S_OK);
    ZeSetDataLengthFlag(true);
    ZeSetCurrentFrameSize(16);
    BYTE* buffer = nullptr;
    ASSERT_EQ(render->GetTargetBuffer(&buffer, TRUE), S_FALSE);  // nothing yet: black
    ASSERT_EQ(Send(source.get(), Pattern(16, 1)), S_OK);
    ASSERT_EQ(render->GetTargetBuffer(&buffer, TRUE), S_OK);
    EXPECT_EQ(std::vector<BYTE>(buffer + 40, buffer + 56), Pattern(16, 1));

    // Two pictures before a take: they come back oldest first.
    ASSERT_EQ(Send(source.get(), Pattern(16, 2)), S_OK);
    ASSERT_EQ(Send(source.get(), Pattern(16, 3)), S_OK);
    ASSERT_EQ(render->GetTargetBuffer(&buffer, TRUE), S_OK);
    EXPECT_EQ(std::vector<BYTE>(buffer + 40, buffer + 56), Pattern(16, 2));
    ASSERT_EQ(Send(source.get(), Pattern(16, 4)), S_OK);
    ASSERT_EQ(render->GetTargetBuffer(&buffer, TRUE), S_OK);
    EXPECT_EQ(std::vector<BYTE>(buffer + 40, buffer + 56), Pattern(16, 3));
    EXPECT_TRUE(TakeReports().empty());
}

TEST_F(GraphConnectionTest, CreationAnswersForAggregationAndRefusals)
{
    void* object = reinterpret_cast<void*>(this);
    // An outer object may only ask for the inner IUnknown.
    zetest::CollectingRenderer* outer = new zetest::CollectingRenderer();
    outer->NonDelegatingAddRef();
    IUnknown* outerUnknown = outer->GetOwner();
    EXPECT_EQ(CreateZEVideoSourceFilter(outerUnknown, IID_IZEVideoSourceFilter, &object), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(CreateZEVideoRenderFilter(outerUnknown, IID_IUnknown, &object), S_OK);
    ASSERT_NE(object, nullptr);
    // The inner IUnknown answers the render filter's own interfaces, which delegate to the outer object.
    IUnknown* inner = static_cast<IUnknown*>(object);
    IZEVideoRenderFilter* render = nullptr;
    ASSERT_EQ(inner->QueryInterface(IID_IZEVideoRenderFilter, reinterpret_cast<void**>(&render)), S_OK);
    IUnknown* identity = nullptr;
    ASSERT_EQ(render->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&identity)), S_OK);
    EXPECT_EQ(identity, outerUnknown);
    identity->Release();
    render->Release();
    inner->Release();
    outer->NonDelegatingRelease();

    EXPECT_EQ(CreateZEVideoSourceFilter(nullptr, IID_IZEVideoSourceFilter, nullptr), E_POINTER);
    EXPECT_EQ(CreateZEVideoRenderFilter(nullptr, IID_IMemAllocator, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(TakeReports(),
              (std::vector<std::string>{
                  Line("[80040110] unknown error (-2147221232)", "CZEVideoSourceFilter::CreateZEVideoSourceFilter"),
                  Line(kPointer, "CZEVideoSourceFilter::CreateZEVideoSourceFilter"),
                  Line("[80004002] no such interface supported", "CZEVideoRenderFilter::CreateZEVideoRenderFilter")}));
}

}  // namespace

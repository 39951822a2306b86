// The source filter on its own: the format block it keeps and offers, the types its pin takes, its
// COM identity, and every refusal with its one report line.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "graph/ze_video_source_filter.h"
#include "graph/ze_video_source_output_pin.h"
#include "tests/graph/graph_test_support.h"

namespace {

using namespace zegraph_test;

class SourceFilterTest : public ReportedTest {
public:
    void SetUp() override
    {
        ReportedTest::SetUp();
        m_source = Create<IZEVideoSourceFilter>(CreateZEVideoSourceFilter, IID_IZEVideoSourceFilter);
        ASSERT_TRUE(m_source);
        m_filter = static_cast<CZEVideoSourceFilter*>(m_source.get());
        m_pin = static_cast<CZEVideoSourceOutputPin*>(m_filter->GetPin(0));
        ASSERT_NE(m_pin, nullptr);
    }
    void TearDown() override
    {
        m_pin = nullptr;
        m_filter = nullptr;
        m_source.reset();
        ExpectAllObjectsGone();
        ReportedTest::TearDown();
    }

    // Every type the pin offers, through its IPin enumerator.
    std::vector<CMediaType> Offered()
    {
        IEnumMediaTypes* raw = nullptr;
        EXPECT_EQ(m_pin->EnumMediaTypes(&raw), S_OK);
        ZeComRef<IEnumMediaTypes> types(raw);
        std::vector<CMediaType> offered;
        AM_MEDIA_TYPE* type = nullptr;
        while (types->Next(1, &type, nullptr) == S_OK) {
            offered.emplace_back(*type);
            DeleteMediaType(type);
        }
        return offered;
    }

    ZeComRef<IZEVideoSourceFilter> m_source;
    const BITMAPINFOHEADER m_header = Bitmap(16, 16, 24, BI_RGB);
    const ze_video_stream_desc m_desc = StreamDesc(25, 1);
    CZEVideoSourceFilter* m_filter = nullptr;
    CZEVideoSourceOutputPin* m_pin = nullptr;
};

const VIDEOINFOHEADER& Info(const CMediaType& type) { return *reinterpret_cast<const VIDEOINFOHEADER*>(type.pbFormat); }

TEST_F(SourceFilterTest, FormatBlockKeepsTheBytesAfterTheHeaderAndTheFrameTime)
{
    // A header with 8 bytes of codec data behind it: biSize 48, block 96.
    struct {
        BITMAPINFOHEADER header;
        BYTE extra[8];
    } format{Bitmap(352, 288, 24, ZeFourcc('H', '2', '6', '4'), 5000), {1, 2, 3, 4, 5, 6, 7, 8}};
    format.header.biSize = 48;
    format.header.biClrImportant = 7;
    const ze_video_stream_desc desc = StreamDesc(30000, 1001);
    ASSERT_EQ(m_source->SetMediaInfo(&format.header, &desc), S_OK);

    const std::vector<CMediaType> offered = Offered();
    ASSERT_EQ(offered.size(), 2u);
    for (const CMediaType& type : offered) {
        ASSERT_EQ(type.cbFormat, 96u);
        EXPECT_EQ(type.majortype, MEDIATYPE_Video);
        EXPECT_EQ(type.subtype, ZeFourccSubtype(ZeFourcc('H', '2', '6', '4')));
        EXPECT_EQ(type.formattype, FORMAT_VideoInfo);
        const VIDEOINFOHEADER& info = Info(type);
        EXPECT_EQ(info.AvgTimePerFrame, 344827);
        EXPECT_EQ(info.rcSource.right, 352);
        EXPECT_EQ(info.rcTarget.bottom, 288);
        EXPECT_EQ(info.dwBitRate, 0u);
        EXPECT_EQ(info.bmiHeader.biSize, 48u);
        EXPECT_EQ(info.bmiHeader.biClrImportant, 7u);
        // The bitmap-size rule counts rows whatever the compression: 352 × 3 bytes, 288 rows.
        EXPECT_EQ(info.bmiHeader.biSizeImage, 304128u);
        EXPECT_EQ(type.lSampleSize, 304128u);
        EXPECT_FALSE(type.bTemporalCompression);
        EXPECT_EQ(std::memcmp(type.pbFormat + 88, format.extra, 8), 0);
    }
    // Past position 1 the enumeration ends quietly.
    EXPECT_TRUE(TakeReports().empty());
}

TEST_F(SourceFilterTest, UncompressedPictureSizeIsRecomputedFromTheRows)
{
    // 3 pixels of 3 bytes make 9, padded to 12 per row; 2 rows. The stored size is ignored.
    const BITMAPINFOHEADER header = Bitmap(3, 2, 24, BI_RGB, 999);
    const ze_video_stream_desc desc = StreamDesc(25, 1);
    ASSERT_EQ(m_source->SetMediaInfo(&header, &desc), S_OK);
    const std::vector<CMediaType> offered = Offered();
    ASSERT_EQ(offered.size(), 2u);
    EXPECT_EQ(Info(offered[0]).bmiHeader.biSizeImage, 24u);
    EXPECT_EQ(offered[0].lSampleSize, 24u);
    EXPECT_EQ(Info(offered[0]).AvgTimePerFrame, 400000);
    EXPECT_EQ(offered[0].cbFormat, 88u);
}

TEST_F(SourceFilterTest, MjpgOffersVideoThenAviStreamDvsdTheSameTypeTwice)
{
    const ze_video_stream_desc desc = StreamDesc(25, 1);
    BITMAPINFOHEADER header = Bitmap(640, 480, 24, ZeFourcc('m', 'j', 'p', 'g'), 30000);
    ASSERT_EQ(m_source->SetMediaInfo(&header, &desc), S_OK);
    std::vector<CMediaType> offered = Offered();
    ASSERT_EQ(offered.size(), 2u);
    EXPECT_EQ(offered[0].majortype, MEDIATYPE_Video);
    EXPECT_EQ(offered[0].subtype, MEDIASUBTYPE_MJPG);
    EXPECT_EQ(offered[1].majortype, MEDIATYPE_Stream);
    EXPECT_EQ(offered[1].formattype, GUID_NULL);
    for (const CMediaType& type : offered) EXPECT_EQ(Info(type).bmiHeader.biCompression, ZeFourcc('M', 'J', 'P', 'G'));

    header = Bitmap(720, 576, 24, ZeFourcc('d', 'v', 's', 'd'), 144000);
    ASSERT_EQ(m_source->SetMediaInfo(&header, &desc), S_OK);
    offered = Offered();
    ASSERT_EQ(offered.size(), 2u);
    EXPECT_TRUE(offered[0] == offered[1]);
    EXPECT_EQ(offered[0].subtype, MEDIASUBTYPE_dvsd);
    EXPECT_EQ(Info(offered[0]).bmiHeader.biCompression, ZeFourcc('d', 'v', 's', 'd'));
    EXPECT_TRUE(TakeReports().empty());
}

TEST_F(SourceFilterTest, ScaleZeroIsStoredAsOneAndSetStreamInfoBuildsTheSameDescription)
{
    ze_video_stream_desc desc = StreamDesc(12, 0);
    desc.dwLength = 0x100000002ull;
    desc.rcFrameRight = 320;
    desc.dwReserved = 0xDEADBEEF;
    const BITMAPINFOHEADER header = Bitmap(320, 240, 32, BI_RGB);
    ASSERT_EQ(m_source->SetStreamInfo(&header, &desc), S_OK);
    EXPECT_EQ(m_filter->StreamHeader().dwScale, 1u);
    EXPECT_EQ(m_filter->StreamHeader().dwRate, 12u);
    EXPECT_EQ(m_filter->StreamHeader().dwLength, 0x100000002ull);
    EXPECT_EQ(m_filter->StreamHeader().rcFrameRight, 320);
    EXPECT_EQ(m_filter->StreamHeader().dwReserved, 0u);
    EXPECT_EQ(Info(Offered().at(0)).AvgTimePerFrame, 833333);
}

TEST_F(SourceFilterTest, PinTakesTypesOnlyForTheStoredCompression)
{
    CMediaType dv(&MEDIATYPE_Video);
    dv.SetSubtype(&MEDIASUBTYPE_dvsd);
    dv.SetFormatType(&FORMAT_DvInfo);
    const std::string refused = Line(kInvalidArg, "CZEVideoSourceOutputPin::CheckMediaType");

    // Nothing stored yet: nothing is taken.
    EXPECT_EQ(m_pin->CheckMediaType(&dv), E_INVALIDARG);
    EXPECT_EQ(TakeReports(), std::vector<std::string>{refused});

    const BITMAPINFOHEADER header = Bitmap(720, 480, 24, ZeFourcc('d', 'v', 's', 'd'));
    const ze_video_stream_desc desc = StreamDesc(30000, 1001);
    ASSERT_EQ(m_source->SetMediaInfo(&header, &desc), S_OK);
    EXPECT_EQ(m_pin->CheckMediaType(&dv), S_OK);
    dv.SetFormatType(&FORMAT_VideoInfo2);
    EXPECT_EQ(m_pin->CheckMediaType(&dv), E_INVALIDARG);
    EXPECT_EQ(m_pin->CheckMediaType(nullptr), E_POINTER);
    EXPECT_EQ(TakeReports(),
              (std::vector<std::string>{refused, Line(kPointer, "CZEVideoSourceOutputPin::CheckMediaType")}));
}

TEST_F(SourceFilterTest, RefusalsReportOnceUnderTheirOwnNames)
{
    struct Row {
        const char* what;
        HRESULT (*call)(SourceFilterTest&);
        HRESULT result;
        std::vector<std::string> lines;
    } rows[] = {
        {"SetMediaInfo without header",
         [](SourceFilterTest& t) { return t.m_source->SetMediaInfo(nullptr, &t.m_desc); }, E_POINTER,
         {Line(kPointer, "CZEVideoSourceFilter::SetMediaInfo")}},
        {"SetStreamInfo without header",
         [](SourceFilterTest& t) { return t.m_source->SetStreamInfo(nullptr, &t.m_desc); }, E_POINTER,
         {Line(kPointer, "CZEVideoSourceFilter::SetMediaInfo")}},
        {"SetStreamInfo without stream header",
         [](SourceFilterTest& t) { return t.m_source->SetStreamInfo(&t.m_header, nullptr); }, E_POINTER,
         {Line(kPointer, "CZEVideoSourceFilter::SetStreamInfo")}},
        {"GetSampleProps without type",
         [](SourceFilterTest& t) {
             ALLOCATOR_PROPERTIES props{};
             return t.m_source->GetSampleProps(&props, nullptr);
         },
         E_POINTER, {Line(kPointer, "CZEVideoSourceFilter::GetSampleProps")}},
        {"GetSampleProps without props",
         [](SourceFilterTest& t) {
             AM_MEDIA_TYPE type{};
             return t.m_source->GetSampleProps(nullptr, &type);
         },
         E_POINTER, {Line(kPointer, "CZEVideoSourceFilter::GetSampleProps")}},
        {"GetSampleBuffer without out", [](SourceFilterTest& t) { return t.m_source->GetSampleBuffer(nullptr); },
         E_POINTER, {Line(kPointer, "CZEVideoSourceFilter::GetSampleBuffer")}},
        {"Decode before GetSampleBuffer", [](SourceFilterTest& t) { return t.m_source->Decode(); }, E_POINTER,
         {Line(kPointer, "CZEVideoSourceOutputPin::Deliver"), Line(kPointer, "CZEVideoSourceFilter::Decode")}},
        {"SetSyncPoint before GetSampleBuffer", [](SourceFilterTest& t) { return t.m_source->SetSyncPoint(TRUE); },
         E_POINTER, {Line(kPointer, "CZEVideoSourceOutputPin::SetSyncPoint")}},
        {"SetDiscontinuity before GetSampleBuffer",
         [](SourceFilterTest& t) { return t.m_source->SetDiscontinuity(TRUE); }, E_POINTER,
         {Line(kPointer, "CZEVideoSourceOutputPin::SetDiscontinuity")}},
        {"AddPin without pin", [](SourceFilterTest& t) { return t.m_filter->AddPin(nullptr); }, E_POINTER,
         {Line(kPointer, "CZEVideoSourceFilter::AddPin")}},
        {"GetMediaType without type", [](SourceFilterTest& t) { return t.m_pin->GetMediaType(0, nullptr); },
         E_POINTER, {Line(kPointer, "CZEVideoSourceOutputPin::GetMediaType")}},
        {"GetMediaType at position 2 (no report)",
         [](SourceFilterTest& t) {
             CMediaType type;
             return t.m_pin->GetMediaType(2, &type);
         },
         E_INVALIDARG, {}},
        {"DecideBufferSize before a connection",
         [](SourceFilterTest& t) {
             IMemAllocator* allocator = nullptr;
             CMemAllocator::CreateInstance(&allocator);
             ZeComRef<IMemAllocator> owned(allocator);
             ALLOCATOR_PROPERTIES request{};
             return t.m_pin->DecideBufferSize(allocator, &request);
         },
         E_FAIL, {Line(kFail, "CZEVideoSourceOutputPin::DecideBufferSize")}},
    };
    ASSERT_EQ(m_source->SetMediaInfo(&m_header, &m_desc), S_OK);
    for (const Row& row : rows) {
        EXPECT_EQ(row.call(*this), row.result) << row.what;
        EXPECT_EQ(TakeReports(), row.lines) << row.what;
    }
    // The pin stays where it was: the refused AddPin changed nothing.
    EXPECT_EQ(m_filter->GetPin(0), static_cast<CBasePin*>(m_pin));
}

TEST_F(SourceFilterTest, IdentityOnePinAndItsName)
{
    EXPECT_EQ(m_filter->GetPinCount(), 1);
    EXPECT_EQ(m_filter->GetPin(1), nullptr);
    EXPECT_EQ(m_filter->GetPin(-1), nullptr);

    IBaseFilter* base = nullptr;
    ASSERT_EQ(m_source->QueryInterface(IID_IBaseFilter, reinterpret_cast<void**>(&base)), S_OK);
    ZeComRef<IBaseFilter> baseRef(base);
    CLSID clsid{};
    EXPECT_EQ(base->GetClassID(&clsid), S_OK);
    EXPECT_EQ(clsid, (CLSID{0x4b9e6a07, 0xd2c8, 0x4e1f, {0x93, 0xa5, 0x7f, 0x0c, 0x1b, 0x2d, 0x6e, 0x84}}));

    IZEVideoSourceFilter* again = nullptr;
    ASSERT_EQ(base->QueryInterface(IID_IZEVideoSourceFilter, reinterpret_cast<void**>(&again)), S_OK);
    EXPECT_EQ(again, m_source.get());
    again->Release();

    PIN_INFO info{};
    ASSERT_EQ(m_pin->QueryPinInfo(&info), S_OK);
    ZeComRef<IBaseFilter> owner(info.pFilter);
    EXPECT_EQ(info.dir, PINDIR_OUTPUT);
    const char expected[] = "ZEVideoSourceOutputPin";
    for (size_t i = 0; i < sizeof expected; ++i) EXPECT_EQ(info.achName[i], static_cast<WCHAR>(expected[i])) << i;
}

}  // namespace

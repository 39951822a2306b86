// The render filter on its own: target formats it takes and refuses, picture sizes, blank pictures,
// the order in which queued pictures come back, the media types its pin proposes and accepts, and its
// COM identity. Pictures go in through DoRenderSample with samples from a real allocator.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "graph/ze_video_render_filter.h"
#include "graph/ze_video_render_input_pin.h"
#include "tests/graph/graph_test_support.h"

namespace {

using namespace zegraph_test;

constexpr DWORD kYuy2 = ZeFourcc('Y', 'U', 'Y', '2');

class RenderFilterTest : public ReportedTest {
public:
    void SetUp() override
    {
        ReportedTest::SetUp();
        m_render = Create<IZEVideoRenderFilter>(CreateZEVideoRenderFilter, IID_IZEVideoRenderFilter);
        ASSERT_TRUE(m_render);
        m_filter = static_cast<CZEVideoRenderFilter*>(m_render.get());
    }
    void TearDown() override
    {
        m_filter = nullptr;
        m_render.reset();
        ExpectAllObjectsGone();
        ReportedTest::TearDown();
    }

    // The header of the current target buffer (it must exist).
    BITMAPINFOHEADER TargetHeader()
    {
        BYTE* buffer = nullptr;
        const HRESULT hr = m_render->GetTargetBuffer(&buffer, FALSE);
        EXPECT_TRUE(hr == S_OK || hr == S_FALSE);
        BITMAPINFOHEADER header{};
        if (buffer != nullptr) std::memcpy(&header, buffer, sizeof header);
        return header;
    }

    // Renders `pixels` as one picture.
    HRESULT Render(SampleMaker& samples, const std::vector<BYTE>& pixels)
    {
        ZeComRef<IMediaSample> sample = samples.Make(pixels);
        return m_filter->DoRenderSample(sample.get());
    }

    // The picture bytes of what GetTargetBuffer hands out, and its result.
    std::vector<BYTE> Take(BOOL takeQueued, size_t pictureBytes, HRESULT* result = nullptr)
    {
        BYTE* buffer = nullptr;
        const HRESULT hr = m_render->GetTargetBuffer(&buffer, takeQueued);
        if (result != nullptr) *result = hr;
        if (buffer == nullptr) return {};
        return std::vector<BYTE>(buffer + 40, buffer + 40 + pictureBytes);
    }

    ZeComRef<IZEVideoRenderFilter> m_render;
    CZEVideoRenderFilter* m_filter = nullptr;
};

TEST_F(RenderFilterTest, PictureSizePadsEachRowToFourBytes)
{
    struct Row {
        LONG width, height;
        WORD bits;
        DWORD compression;
        DWORD imageSize;
    } rows[] = {
        {3, 1, 24, BI_RGB, 12},    // 9 bytes of row padded to 12
        {3, 3, 24, BI_RGB, 36},
        {4, 2, 24, BI_RGB, 24},
        {5, 1, 24, BI_RGB, 16},
        {3, 2, 32, BI_RGB, 24},
        {3, 2, 16, kYuy2, 16},     // YUY2 counts 16 bits whatever biBitCount says: 6 bytes padded to 8
        {3, 2, 12, kYuy2, 16},
        {720, 576, 16, kYuy2, 829440},
        {1, -9, 32, BI_RGB, static_cast<DWORD>(-36)},  // a negative height gives a negative size, kept
    };
    for (const Row& row : rows) {
        const BITMAPINFOHEADER format = Bitmap(row.width, row.height, row.bits, row.compression);
        ASSERT_EQ(m_render->InitTargetBuffer(&format, row.width, row.height), S_OK) << row.width << "x" << row.height;
        EXPECT_EQ(TargetHeader().biSizeImage, row.imageSize) << row.width << "x" << row.height << "@" << row.bits;
        EXPECT_EQ(TargetHeader().biWidth, row.width);
    }
    EXPECT_TRUE(TakeReports().empty());
}

TEST_F(RenderFilterTest, RefusedFormatsReportAndKeepThePreviousTarget)
{
    const BITMAPINFOHEADER good = Bitmap(8, 4, 24, BI_RGB);
    ASSERT_EQ(m_render->InitTargetBuffer(&good, 8, 4), S_OK);
    const std::string invalid = Line(kInvalidArg, "CZEVideoRenderFilter::InitTargetBuffer");
    struct Row {
        const char* what;
        BITMAPINFOHEADER format;
    } rows[] = {
        {"no bit count", Bitmap(8, 4, 0, BI_RGB)},
        {"no width", Bitmap(0, 4, 24, BI_RGB)},
        {"no height", Bitmap(8, 0, 24, BI_RGB)},
        {"16-bit RGB", Bitmap(8, 4, 16, BI_RGB)},
        {"8-bit RGB", Bitmap(8, 4, 8, BI_RGB)},
        {"bit fields", Bitmap(8, 4, 32, BI_BITFIELDS)},
        {"MJPG", Bitmap(8, 4, 24, ZeFourcc('M', 'J', 'P', 'G'))},
        {"UYVY", Bitmap(8, 4, 16, ZeFourcc('U', 'Y', 'V', 'Y'))},
        {"lower-case yuy2", Bitmap(8, 4, 16, ZeFourcc('y', 'u', 'y', '2'))},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(m_render->InitTargetBuffer(&row.format, 8, 4), E_INVALIDARG) << row.what;
        EXPECT_EQ(TakeReports(), std::vector<std::string>{invalid}) << row.what;
        EXPECT_EQ(TargetHeader().biBitCount, 24) << row.what;
        EXPECT_EQ(TargetHeader().biSizeImage, 96u) << row.what;
    }
    EXPECT_EQ(m_render->InitTargetBuffer(nullptr, 8, 4), E_POINTER);
    EXPECT_EQ(TakeReports(), std::vector<std::string>{Line(kPointer, "CZEVideoRenderFilter::InitTargetBuffer")});
}

TEST_F(RenderFilterTest, PictureTooLargeForThirtyTwoBitsLeavesNoTarget)
{
    const BITMAPINFOHEADER good = Bitmap(8, 4, 24, BI_RGB);
    ASSERT_EQ(m_render->InitTargetBuffer(&good, 8, 4), S_OK);
    // 16384 × 4 bytes × 16384 rows = 1 GiB; four times that does not fit 32 bits.
    const BITMAPINFOHEADER huge = Bitmap(16384, 16384, 32, BI_RGB);
    EXPECT_EQ(m_render->InitTargetBuffer(&huge, 16384, 16384), E_OUTOFMEMORY);
    // A height of -100 makes the size -400; with the header's 40 bytes still negative.
    const BITMAPINFOHEADER negative = Bitmap(1, -100, 32, BI_RGB);
    EXPECT_EQ(m_render->InitTargetBuffer(&negative, 1, -100), E_OUTOFMEMORY);
    const std::string line = Line(kOutOfMemory, "CZEVideoRenderFilter::InitTargetBuffer");
    EXPECT_EQ(TakeReports(), (std::vector<std::string>{line, line}));

    // The old target went before the allocation failed.
    BYTE* buffer = reinterpret_cast<BYTE*>(this);
    EXPECT_EQ(m_render->GetTargetBuffer(&buffer, FALSE), E_POINTER);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(TakeReports(), std::vector<std::string>{Line(kPointer, "CZEVideoRenderFilter::GetTargetBuffer")});
}

// A target buffer of the size InitTargetBuffer would give, every byte 0xAB, handed to the filter.
BYTE* MarkedBuffer(size_t bytes)
{
    BYTE* buffer = static_cast<BYTE*>(CoTaskMemAlloc(bytes));
    std::memset(buffer, 0xAB, bytes);
    return buffer;
}

TEST_F(RenderFilterTest, BlankYuy2PictureIsBlackPairsRightAfterTheHeader)
{
    const BITMAPINFOHEADER format = Bitmap(3, 2, 16, kYuy2);
    ASSERT_EQ(m_render->InitTargetBuffer(&format, 3, 2), S_OK);
    BYTE* buffer = nullptr;
    ASSERT_EQ(m_render->GetTargetBuffer(&buffer, FALSE), S_FALSE);
    // 6 pixel pairs (16, 128); the row padding of the 16-byte picture stays zero.
    const BYTE expected[16] = {16, 128, 16, 128, 16, 128, 16, 128, 16, 128, 16, 128, 0, 0, 0, 0};
    EXPECT_EQ(std::memcmp(buffer + 40, expected, sizeof expected), 0);
    EXPECT_EQ(m_render->IsFrameMissing(), S_FALSE);
}

TEST_F(RenderFilterTest, BlankRgbPictureIsZeroedFromByte1600)
{
    struct Row {
        const char* what;
        LONG width, height;
        size_t bufferBytes;      // (picture + 40) × 4
        size_t zeroFrom, zeroTo; // what turns to zero
    } rows[] = {
        // 20 × 10 × 4 = 800 bytes of picture: bytes 1600 to 2400 of 3360.
        {"800-byte picture", 20, 10, 3360, 1600, 2400},
        // 480 bytes: the zeroing ends exactly at the end of the 2080-byte buffer.
        {"480-byte picture", 12, 10, 2080, 1600, 2080},
        // 24 bytes: the buffer (256 bytes) ends before byte 1600, so nothing changes.
        {"24-byte picture", 6, 1, 256, 256, 256},
    };
    for (const Row& row : rows) {
        const BITMAPINFOHEADER format = Bitmap(row.width, row.height, 32, BI_RGB);
        ASSERT_EQ(m_render->InitTargetBuffer(&format, row.width, row.height), S_OK) << row.what;
        BYTE* const marked = MarkedBuffer(row.bufferBytes);
        ASSERT_EQ(m_render->SetTargetBuffer(marked), S_OK);
        BYTE* buffer = nullptr;
        ASSERT_EQ(m_render->GetTargetBuffer(&buffer, FALSE), S_FALSE) << row.what;
        ASSERT_EQ(buffer, marked);
        size_t wrong = 0;
        for (size_t i = 0; i < row.bufferBytes; ++i) {
            const BYTE expected = (i >= row.zeroFrom && i < row.zeroTo) ? 0 : 0xAB;
            if (buffer[i] != expected) ++wrong;
        }
        EXPECT_EQ(wrong, 0u) << row.what;
    }
}

TEST_F(RenderFilterTest, RenderedPictureIsCopiedAsOneBlockAndTheTargetWidthWrittenIntoTheHeader)
{
    // A 4 × 2 RGB24 picture (rows of 12 bytes) whose rectangle is given as 5 wide.
    const BITMAPINFOHEADER format = Bitmap(4, 2, 24, BI_RGB);
    ASSERT_EQ(m_render->InitTargetBuffer(&format, 5, 2), S_OK);
    EXPECT_EQ(m_render->GetMediaInfo(nullptr), S_OK);
    EXPECT_EQ(TargetHeader().biWidth, 4);
    SampleMaker samples(64);
    const std::vector<BYTE> picture = Pattern(24, 7);
    ASSERT_EQ(Render(samples, picture), S_OK);
    EXPECT_EQ(m_render->IsFrameMissing(), S_OK);
    HRESULT hr = E_FAIL;
    EXPECT_EQ(Take(FALSE, 24, &hr), picture);
    EXPECT_EQ(hr, S_OK);
    EXPECT_EQ(TargetHeader().biWidth, 5);
    EXPECT_EQ(TargetHeader().biSizeImage, 24u);

    // Resetting keeps the header and blanks the picture; the next take is a blank picture again.
    ASSERT_EQ(m_render->ResetTargetBuffer(), S_OK);
    EXPECT_EQ(m_render->IsFrameMissing(), S_FALSE);
    BYTE* buffer = nullptr;
    ASSERT_EQ(m_render->GetTargetBuffer(&buffer, FALSE), S_FALSE);
    EXPECT_EQ(reinterpret_cast<BITMAPINFOHEADER*>(buffer)->biWidth, 5);
    EXPECT_EQ(reinterpret_cast<BITMAPINFOHEADER*>(buffer)->biBitCount, 24);
    EXPECT_EQ(std::vector<BYTE>(buffer + 40, buffer + 64), std::vector<BYTE>(24, 0));
}

TEST_F(RenderFilterTest, SampleSmallerThanThePictureFillsOnlyWhatItHolds)
{
    const BITMAPINFOHEADER format = Bitmap(4, 4, 32, BI_RGB);  // 64 bytes of picture
    ASSERT_EQ(m_render->InitTargetBuffer(&format, 4, 4), S_OK);
    SampleMaker samples(16);
    ASSERT_EQ(Render(samples, Pattern(16, 1)), S_OK);
    std::vector<BYTE> expected = Pattern(16, 1);
    expected.resize(64, 0);
    EXPECT_EQ(Take(FALSE, 64), expected);
}

// Pictures are numbered; each one is 8 bytes of its number plus a pattern.
std::vector<BYTE> Picture(int number) { return Pattern(8, static_cast<BYTE>(number * 16)); }

TEST_F(RenderFilterTest, QueuedPicturesComeBackInTheOrderRendered)
{
    // Each step renders picture n (n > 0), or takes (0: with takeQueued, -1: without) and expects
    // the picture then in the target, and the queue length afterwards.
    struct Step {
        int action;
        int expectedPicture;
        size_t queued;
    };
    struct Row {
        const char* what;
        std::vector<Step> steps;
    } rows[] = {
        {"one at a time never queues", {{1, 1, 0}, {0, 1, 0}, {2, 2, 0}, {0, 2, 0}, {3, 3, 0}, {0, 3, 0}}},
        // The second render queues the first picture and then itself.
        {"two, then taken in order", {{1, 1, 0}, {2, 2, 2}, {0, 1, 1}, {0, 1, 0}}},
        {"three, then taken in order", {{1, 1, 0}, {2, 2, 2}, {3, 3, 3}, {0, 1, 2}, {0, 2, 1}, {0, 2, 0}}},
        // Without takeQueued the current picture comes back and the oldest copy is dropped.
        {"take without the queue", {{1, 1, 0}, {2, 2, 2}, {-1, 2, 1}, {0, 2, 0}}},
        // Once begun, queueing goes on: every later picture is queued too.
        {"queueing stays on", {{1, 1, 0}, {2, 2, 2}, {0, 1, 1}, {0, 1, 0}, {3, 3, 1}, {4, 4, 2}, {0, 3, 1}}},
    };
    for (const Row& row : rows) {
        SetUp();  // a fresh filter per row: queueing never switches off again
        const BITMAPINFOHEADER format = Bitmap(2, 1, 32, BI_RGB);
        ASSERT_EQ(m_render->InitTargetBuffer(&format, 2, 1), S_OK);
        SampleMaker samples(8);
        for (size_t i = 0; i < row.steps.size(); ++i) {
            const Step& step = row.steps[i];
            if (step.action > 0) {
                ASSERT_EQ(Render(samples, Picture(step.action)), S_OK) << row.what << " step " << i;
            } else {
                HRESULT hr = E_FAIL;
                EXPECT_EQ(Take(step.action == 0, 8, &hr), Picture(step.expectedPicture)) << row.what << " step " << i;
                EXPECT_EQ(hr, S_OK);
            }
            EXPECT_EQ(m_filter->QueuedPictures(), step.queued) << row.what << " step " << i;
        }
    }
    EXPECT_TRUE(TakeReports().empty());
}

TEST_F(RenderFilterTest, ClearingAndResettingEmptyTheQueueButQueueingGoesOn)
{
    const BITMAPINFOHEADER format = Bitmap(2, 1, 32, BI_RGB);
    ASSERT_EQ(m_render->InitTargetBuffer(&format, 2, 1), S_OK);
    SampleMaker samples(8);
    ASSERT_EQ(Render(samples, Picture(1)), S_OK);
    ASSERT_EQ(Render(samples, Picture(2)), S_OK);
    EXPECT_EQ(m_filter->QueuedPictures(), 2u);
    EXPECT_EQ(m_render->ClearFrameQueue(), S_OK);
    EXPECT_EQ(m_filter->QueuedPictures(), 0u);
    EXPECT_EQ(m_render->IsFrameMissing(), S_OK);  // clearing the queue keeps the picture

    ASSERT_EQ(Render(samples, Picture(3)), S_OK);
    EXPECT_EQ(m_filter->QueuedPictures(), 1u);
    EXPECT_EQ(m_render->ResetTargetBuffer(), S_OK);
    EXPECT_EQ(m_filter->QueuedPictures(), 0u);
    EXPECT_EQ(m_render->IsFrameMissing(), S_FALSE);
    // Three rendered, none taken: the count is not reset either.
    EXPECT_EQ(m_filter->RenderedCount(), 3);
    ASSERT_EQ(Render(samples, Picture(4)), S_OK);
    EXPECT_EQ(m_filter->QueuedPictures(), 1u);
}

TEST_F(RenderFilterTest, PinProposesVideoInfoThenVideoInfo2AndStopsWithAReport)
{
    const BITMAPINFOHEADER format = Bitmap(6, 4, 16, kYuy2);
    ASSERT_EQ(m_render->InitTargetBuffer(&format, 6, 3), S_OK);
    CBasePin* pin = m_filter->GetPin(0);
    ASSERT_NE(pin, nullptr);
    IEnumMediaTypes* raw = nullptr;
    ASSERT_EQ(pin->EnumMediaTypes(&raw), S_OK);
    ZeComRef<IEnumMediaTypes> types(raw);
    AM_MEDIA_TYPE* offered[3] = {};
    ULONG fetched = 0;
    EXPECT_EQ(types->Next(3, offered, &fetched), S_FALSE);
    ASSERT_EQ(fetched, 2u);
    const GUID formats[2] = {FORMAT_VideoInfo, FORMAT_VideoInfo2};
    const ULONG sizes[2] = {88, 112};
    const size_t headerAt[2] = {48, 72};
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(offered[i]->majortype, MEDIATYPE_Video);
        EXPECT_EQ(offered[i]->subtype, MEDIASUBTYPE_YUY2);
        EXPECT_EQ(offered[i]->formattype, formats[i]);
        EXPECT_EQ(offered[i]->cbFormat, sizes[i]);
        EXPECT_FALSE(offered[i]->bTemporalCompression);
        EXPECT_EQ(offered[i]->lSampleSize, 48u);  // 6 × 2 bytes, 4 rows
        const RECT* rects = reinterpret_cast<const RECT*>(offered[i]->pbFormat);
        EXPECT_EQ(rects[0].right, 6);
        EXPECT_EQ(rects[0].bottom, 3);  // the rectangle given, not the format's height
        EXPECT_EQ(rects[1].bottom, 3);
        BITMAPINFOHEADER header;
        std::memcpy(&header, offered[i]->pbFormat + headerAt[i], sizeof header);
        EXPECT_EQ(header.biCompression, kYuy2);
        EXPECT_EQ(header.biHeight, 4);
        EXPECT_EQ(header.biSizeImage, 48u);
        DeleteMediaType(offered[i]);
    }
    EXPECT_EQ(TakeReports(), std::vector<std::string>{Line(kInvalidArg, "CZEVideoRenderInputPin::GetMediaType")});

    CMediaType type;
    auto* ourPin = static_cast<CZEVideoRenderInputPin*>(pin);
    EXPECT_EQ(ourPin->GetMediaType(-1, &type), S_FALSE);
    EXPECT_EQ(ourPin->GetMediaType(0, nullptr), E_POINTER);
    EXPECT_EQ(TakeReports(), std::vector<std::string>{Line(kPointer, "CZEVideoRenderInputPin::GetMediaType")});
}

// A video type of the given subtype with a format block of `bytes` bytes whose bitmap header says `width`.
CMediaType VideoType(const GUID& subtype, const GUID& formatType, ULONG bytes, LONG width, LONG height = 4)
{
    CMediaType type(&MEDIATYPE_Video);
    type.SetSubtype(&subtype);
    type.SetFormatType(&formatType);
    if (bytes > 0) {
        BYTE* block = type.AllocFormatBuffer(bytes);
        const size_t headerAt = formatType == FORMAT_VideoInfo2 ? 72 : 48;
        const BITMAPINFOHEADER header = Bitmap(width, height, 32, BI_RGB);
        if (headerAt + sizeof header <= bytes) std::memcpy(block + headerAt, &header, sizeof header);
    }
    return type;
}

TEST_F(RenderFilterTest, TakesTheTargetSubtypeOfTheTargetWidthOnly)
{
    const BITMAPINFOHEADER format = Bitmap(8, 4, 32, BI_RGB);
    ASSERT_EQ(m_render->InitTargetBuffer(&format, 8, 4), S_OK);
    CMediaType audio = VideoType(MEDIASUBTYPE_RGB32, FORMAT_VideoInfo, 88, 8);
    audio.SetType(&MEDIATYPE_Audio);
    struct Row {
        const char* what;
        CMediaType type;
        HRESULT result;
    } rows[] = {
        {"video info, same width", VideoType(MEDIASUBTYPE_RGB32, FORMAT_VideoInfo, 88, 8), S_OK},
        {"video info, other height", VideoType(MEDIASUBTYPE_RGB32, FORMAT_VideoInfo, 88, 8, -4), S_OK},
        {"video info 2, same width", VideoType(MEDIASUBTYPE_RGB32, FORMAT_VideoInfo2, 112, 8), S_OK},
        {"video info, other width", VideoType(MEDIASUBTYPE_RGB32, FORMAT_VideoInfo, 88, 10), E_INVALIDARG},
        {"video info 2, other width", VideoType(MEDIASUBTYPE_RGB32, FORMAT_VideoInfo2, 112, 16), E_INVALIDARG},
        {"other subtype", VideoType(MEDIASUBTYPE_RGB24, FORMAT_VideoInfo, 88, 8), E_INVALIDARG},
        {"audio", audio, E_INVALIDARG},
        {"dv info", VideoType(MEDIASUBTYPE_RGB32, FORMAT_DvInfo, 88, 8), E_INVALIDARG},
        {"video info of 92 bytes", VideoType(MEDIASUBTYPE_RGB32, FORMAT_VideoInfo, 92, 8), E_FAIL},
        {"video info 2 of 88 bytes", VideoType(MEDIASUBTYPE_RGB32, FORMAT_VideoInfo2, 88, 8), E_FAIL},
        {"no format block", VideoType(MEDIASUBTYPE_RGB32, FORMAT_VideoInfo, 0, 8), E_FAIL},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(m_filter->CheckMediaType(&row.type), row.result) << row.what;
        const std::vector<std::string> lines = TakeReports();
        if (row.result == S_OK) {
            EXPECT_TRUE(lines.empty()) << row.what;
        } else {
            const std::string text = row.result == E_FAIL ? kFail : kInvalidArg;
            EXPECT_EQ(lines, std::vector<std::string>{Line(text, "CZEVideoRenderFilter::CheckMediaType")}) << row.what;
        }
    }
    EXPECT_EQ(m_filter->CheckMediaType(nullptr), E_POINTER);
    EXPECT_EQ(TakeReports(), std::vector<std::string>{Line(kPointer, "CZEVideoRenderFilter::CheckMediaType")});
}

TEST_F(RenderFilterTest, RefusalsWithoutArgumentsReportOnce)
{
    struct Row {
        const char* what;
        HRESULT (*call)(RenderFilterTest&);
        std::string line;
    } rows[] = {
        {"GetTargetBuffer without out", [](RenderFilterTest& t) { return t.m_render->GetTargetBuffer(nullptr, TRUE); },
         Line(kPointer, "CZEVideoRenderFilter::GetTargetBuffer")},
        {"GetTargetBuffer before InitTargetBuffer",
         [](RenderFilterTest& t) {
             BYTE* buffer = nullptr;
             return t.m_render->GetTargetBuffer(&buffer, TRUE);
         },
         Line(kPointer, "CZEVideoRenderFilter::GetTargetBuffer")},
        {"GetMediaInfo before InitTargetBuffer", [](RenderFilterTest& t) { return t.m_render->GetMediaInfo(nullptr); },
         Line(kPointer, "CZEVideoRenderFilter::GetMediaInfo")},
        {"SetTargetBuffer without buffer", [](RenderFilterTest& t) { return t.m_render->SetTargetBuffer(nullptr); },
         Line(kPointer, "CZEVideoRenderFilter::SetTargetBuffer")},
        {"DoRenderSample without sample", [](RenderFilterTest& t) { return t.m_filter->DoRenderSample(nullptr); },
         Line(kPointer, "CZEVideoRenderFilter::DoRenderSample")},
        {"GetPin without out",
         [](RenderFilterTest& t) { return static_cast<IZEBaseFilterEx*>(t.m_filter)->GetPin(nullptr); },
         Line(kPointer, "CZEVideoRenderFilter::GetPin")},
        {"QueryInterface without out",
         [](RenderFilterTest& t) { return t.m_render->QueryInterface(IID_IZEBaseFilterEx, nullptr); },
         Line(kPointer, "CZEVideoRenderFilter::NonDelegatingQueryInterface")},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.call(*this), E_POINTER) << row.what;
        EXPECT_EQ(TakeReports(), std::vector<std::string>{row.line}) << row.what;
    }
    // Before InitTargetBuffer the pin has no format to propose.
    CMediaType type;
    EXPECT_EQ(static_cast<CZEVideoRenderInputPin*>(m_filter->GetPin(0))->GetMediaType(0, &type), E_FAIL);
    EXPECT_EQ(TakeReports(), std::vector<std::string>{Line(kFail, "CZEVideoRenderInputPin::GetMediaType")});
}

TEST_F(RenderFilterTest, InterfacesAndThePinWithoutANewReference)
{
    IZEBaseFilterEx* ex = nullptr;
    ASSERT_EQ(m_render->QueryInterface(IID_IZEBaseFilterEx, reinterpret_cast<void**>(&ex)), S_OK);
    ZeComRef<IZEBaseFilterEx> exRef(ex);
    IBaseFilter* base = nullptr;
    ASSERT_EQ(ex->QueryInterface(IID_IBaseFilter, reinterpret_cast<void**>(&base)), S_OK);
    ZeComRef<IBaseFilter> baseRef(base);
    CLSID clsid{};
    EXPECT_EQ(ex->GetClassID(&clsid), S_OK);
    EXPECT_EQ(clsid, (CLSID{0x7d3a51c2, 0x9e4b, 0x4f08, {0xa6, 0xd1, 0x2c, 0x5b, 0x8e, 0x90, 0xf1, 0x43}}));
    FILTER_STATE state = State_Running;
    EXPECT_EQ(ex->GetState(0, &state), S_OK);
    EXPECT_EQ(state, State_Stopped);

    const ULONG before = ex->AddRef();
    ex->Release();
    IPin* pin = nullptr;
    ASSERT_EQ(ex->GetPin(&pin), S_OK);
    EXPECT_EQ(pin, static_cast<IPin*>(m_filter->GetPin(0)));
    const ULONG after = ex->AddRef();
    ex->Release();
    EXPECT_EQ(after, before);

    PIN_INFO info{};
    ASSERT_EQ(pin->QueryPinInfo(&info), S_OK);
    ZeComRef<IBaseFilter> owner(info.pFilter);
    EXPECT_EQ(info.dir, PINDIR_INPUT);
    const char expected[] = "ZEVideoRenderInputPin";
    for (size_t i = 0; i < sizeof expected; ++i) EXPECT_EQ(info.achName[i], static_cast<WCHAR>(expected[i])) << i;
}

}  // namespace

// Media type ownership, partial matching and the bitmap size rule.
#include <cstring>

#include <gtest/gtest.h>

#include "dshow/baseclasses/media_type.h"
#include "tests/dshow/support/test_media_types.h"

namespace {

// Counts its references, so ownership by media types can be seen.
class CountedUnknown : public IUnknown {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override
    {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++refs; }
    ULONG STDMETHODCALLTYPE Release() override { return --refs; }
    ULONG refs = 1;
};

CMediaType WithFormat(const GUID& major, const GUID& subtype, const GUID& format, std::vector<BYTE> block)
{
    CMediaType type(&major);
    type.SetSubtype(&subtype);
    type.SetFormatType(&format);
    type.SetFormat(block.data(), static_cast<ULONG>(block.size()));
    return type;
}

TEST(MediaType, MatchesPartialComparesOnlyWhatThePartialTypeNames)
{
    const CMediaType full = WithFormat(MEDIATYPE_Video, MEDIASUBTYPE_RGB24, FORMAT_VideoInfo, {1, 2, 3, 4});
    const struct {
        const char* name;
        CMediaType partial;
        bool matches;
    } cases[] = {
        {"nothing named", WithFormat(GUID_NULL, GUID_NULL, GUID_NULL, {}), true},
        {"major only", WithFormat(MEDIATYPE_Video, GUID_NULL, GUID_NULL, {}), true},
        {"other major", WithFormat(MEDIATYPE_Audio, GUID_NULL, GUID_NULL, {}), false},
        {"major and subtype", WithFormat(MEDIATYPE_Video, MEDIASUBTYPE_RGB24, GUID_NULL, {}), true},
        {"other subtype", WithFormat(MEDIATYPE_Video, MEDIASUBTYPE_RGB32, GUID_NULL, {}), false},
        {"format with equal block", WithFormat(GUID_NULL, GUID_NULL, FORMAT_VideoInfo, {1, 2, 3, 4}), true},
        {"format with other block", WithFormat(GUID_NULL, GUID_NULL, FORMAT_VideoInfo, {1, 2, 3, 5}), false},
        {"format with shorter block", WithFormat(GUID_NULL, GUID_NULL, FORMAT_VideoInfo, {1, 2, 3}), false},
        {"other format", WithFormat(GUID_NULL, GUID_NULL, FORMAT_VideoInfo2, {1, 2, 3, 4}), false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(full.MatchesPartial(&c.partial) != FALSE, c.matches) << c.name;
}

TEST(MediaType, PartiallySpecifiedWhenMajorTypeOrFormatTypeIsOpen)
{
    const struct {
        GUID major, subtype, format;
        bool partial;
    } cases[] = {
        {GUID_NULL, MEDIASUBTYPE_RGB24, FORMAT_VideoInfo, true},
        {MEDIATYPE_Video, MEDIASUBTYPE_RGB24, GUID_NULL, true},
        {MEDIATYPE_Video, GUID_NULL, FORMAT_VideoInfo, false},
        {MEDIATYPE_Video, MEDIASUBTYPE_RGB24, FORMAT_VideoInfo, false},
    };
    for (const auto& c : cases) {
        const CMediaType type = WithFormat(c.major, c.subtype, c.format, {});
        EXPECT_EQ(type.IsPartiallySpecified() != FALSE, c.partial);
    }
}

TEST(MediaType, CopiesOwnTheirFormatBlockAndTheirInterfaceReference)
{
    CountedUnknown unknown;
    AM_MEDIA_TYPE* created = nullptr;
    {
        CMediaType original = WithFormat(MEDIATYPE_Video, MEDIASUBTYPE_YUY2, FORMAT_VideoInfo, {9, 8, 7});
        original.pUnk = &unknown;
        unknown.AddRef();

        const CMediaType copy(original);
        EXPECT_EQ(unknown.refs, 3u);
        EXPECT_NE(copy.pbFormat, original.pbFormat);
        EXPECT_TRUE(copy == original);

        created = CreateMediaType(&original);
        ASSERT_NE(created, nullptr);
        EXPECT_EQ(unknown.refs, 4u);
        EXPECT_EQ(std::memcmp(created->pbFormat, original.pbFormat, 3), 0);

        AM_MEDIA_TYPE plain{};
        ASSERT_EQ(CopyMediaType(&plain, &original), S_OK);
        EXPECT_EQ(unknown.refs, 5u);
        FreeMediaType(plain);
        EXPECT_EQ(plain.pbFormat, nullptr);
        EXPECT_EQ(plain.cbFormat, 0u);
        EXPECT_EQ(unknown.refs, 4u);
    }
    EXPECT_EQ(unknown.refs, 2u) << "the two CMediaTypes gave their references back";
    DeleteMediaType(created);
    EXPECT_EQ(unknown.refs, 1u);
    DeleteMediaType(nullptr);
}

TEST(MediaType, ReallocatedFormatKeepsWhatFitsAndZeroesTheRest)
{
    CMediaType type = WithFormat(MEDIATYPE_Video, MEDIASUBTYPE_RGB8, FORMAT_VideoInfo, {1, 2, 3, 4});
    BYTE* grown = type.ReallocFormatBuffer(6);
    ASSERT_NE(grown, nullptr);
    const BYTE expected[] = {1, 2, 3, 4, 0, 0};
    EXPECT_EQ(std::memcmp(grown, expected, sizeof expected), 0);
    ASSERT_NE(type.ReallocFormatBuffer(2), nullptr);
    EXPECT_EQ(type.FormatLength(), 2u);
    EXPECT_EQ(type.Format()[1], 2);
    type.InitMediaType();
    EXPECT_FALSE(type.IsValid());
    EXPECT_EQ(type.Format(), nullptr);
    EXPECT_TRUE(type.IsFixedSize());
    EXPECT_EQ(type.GetSampleSize(), 1u);
}

TEST(MediaType, BitmapSizePadsEveryRowToWholeDwords)
{
    // Row bytes worked out by hand: ceil(width * bits / 32) * 4.
    const struct {
        LONG width, height;
        WORD bits;
        DWORD bytes;
    } cases[] = {
        {3, 2, 24, 12 * 2},        // 9 bytes of pixels per row
        {4, -3, 24, 12 * 3},       // top-down counts the same rows
        {1, 1, 1, 4},              // one bit still takes a DWORD
        {5, 1, 8, 8},
        {720, 576, 16, 1440 * 576},
        {33, 2, 32, 132 * 2},
    };
    for (const auto& c : cases) {
        BITMAPINFOHEADER header{};
        header.biWidth = c.width;
        header.biHeight = c.height;
        header.biBitCount = c.bits;
        EXPECT_EQ(GetBitmapSize(&header), c.bytes) << c.width << "x" << c.height << "x" << c.bits;
    }
}

TEST(MediaType, VideoInfoTypeOfTheHarnessDescribesAnUncompressedPicture)
{
    const CMediaType type = zetest::VideoInfoType(MEDIASUBTYPE_RGB24, 3, 2, 24);
    ASSERT_EQ(type.FormatLength(), sizeof(VIDEOINFOHEADER));
    const auto* info = reinterpret_cast<const VIDEOINFOHEADER*>(type.Format());
    EXPECT_EQ(info->bmiHeader.biSizeImage, 24u);
    EXPECT_EQ(type.GetSampleSize(), 24u);
    EXPECT_FALSE(type.IsPartiallySpecified());
}

}  // namespace

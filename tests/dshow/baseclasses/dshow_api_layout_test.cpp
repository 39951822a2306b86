// The DirectShow records have the layout of the Windows SDK, and the identifiers their published values.
#include "platform/win32_dshow.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <string>

namespace {

constexpr bool kWide = sizeof(void*) == 8;
constexpr size_t pick(size_t win32, size_t win64) { return kWide ? win64 : win32; }

// Sizes and offsets as the 32-bit and 64-bit Windows compilers lay the records out.
static_assert(sizeof(BITMAPINFOHEADER) == 40);
static_assert(sizeof(ALLOCATOR_PROPERTIES) == 16);
static_assert(sizeof(VIDEOINFOHEADER) == 88);
static_assert(offsetof(VIDEOINFOHEADER, AvgTimePerFrame) == 40);
static_assert(offsetof(VIDEOINFOHEADER, bmiHeader) == 48);
static_assert(sizeof(VIDEOINFOHEADER2) == 112);
static_assert(offsetof(VIDEOINFOHEADER2, dwControlFlags) == 64);
static_assert(offsetof(VIDEOINFOHEADER2, bmiHeader) == 72);
static_assert(sizeof(DVINFO) == 32);
static_assert(sizeof(Quality) == 24);
static_assert(offsetof(Quality, Late) == 8);

static_assert(sizeof(AM_MEDIA_TYPE) == pick(72, 88));
static_assert(offsetof(AM_MEDIA_TYPE, lSampleSize) == 40);
static_assert(offsetof(AM_MEDIA_TYPE, formattype) == 44);
static_assert(offsetof(AM_MEDIA_TYPE, pUnk) == pick(60, 64));
static_assert(offsetof(AM_MEDIA_TYPE, cbFormat) == pick(64, 72));
static_assert(offsetof(AM_MEDIA_TYPE, pbFormat) == pick(68, 80));

static_assert(sizeof(AM_SAMPLE2_PROPERTIES) == pick(48, 64));
static_assert(offsetof(AM_SAMPLE2_PROPERTIES, tStart) == 16);
static_assert(offsetof(AM_SAMPLE2_PROPERTIES, dwStreamId) == 32);
static_assert(offsetof(AM_SAMPLE2_PROPERTIES, pMediaType) == pick(36, 40));
static_assert(offsetof(AM_SAMPLE2_PROPERTIES, cbBuffer) == pick(44, 56));

static_assert(sizeof(PIN_INFO) == pick(264, 272));
static_assert(offsetof(PIN_INFO, achName) == pick(8, 12));
static_assert(sizeof(FILTER_INFO) == pick(260, 264));
static_assert(offsetof(FILTER_INFO, pGraph) == 256);

static_assert(sizeof(REGPINTYPES) == pick(8, 16));
static_assert(sizeof(REGPINMEDIUM) == 24);
static_assert(sizeof(REGFILTERPINS2) == pick(28, 48));
static_assert(offsetof(REGFILTERPINS2, lpMediaType) == pick(12, 16));
static_assert(offsetof(REGFILTERPINS2, clsPinCategory) == pick(24, 40));
static_assert(sizeof(REGFILTER2) == pick(16, 24));
static_assert(offsetof(REGFILTER2, cPins2) == 8);
static_assert(offsetof(REGFILTER2, rgPins2) == pick(12, 16));
static_assert(offsetof(REGFILTER2, rgPins) == offsetof(REGFILTER2, rgPins2));

// A GUID written the registry way, for comparison with the declared constants.
std::string GuidText(const GUID& g)
{
    char text[40];
    std::snprintf(text, sizeof text, "%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X", g.Data1, g.Data2, g.Data3,
                  g.Data4[0], g.Data4[1], g.Data4[2], g.Data4[3], g.Data4[4], g.Data4[5], g.Data4[6], g.Data4[7]);
    return text;
}

struct NamedGuid {
    const char* name;
    const GUID* guid;
    const char* text;
};

// Values as Microsoft's documentation and registry show them.
const NamedGuid kIdentifiers[] = {
    {"IID_IPin", &IID_IPin, "56A86891-0AD4-11CE-B03A-0020AF0BA770"},
    {"IID_IBaseFilter", &IID_IBaseFilter, "56A86895-0AD4-11CE-B03A-0020AF0BA770"},
    {"IID_IMemInputPin", &IID_IMemInputPin, "56A8689D-0AD4-11CE-B03A-0020AF0BA770"},
    {"IID_IGraphBuilder", &IID_IGraphBuilder, "56A868A9-0AD4-11CE-B03A-0020AF0BA770"},
    {"IID_IMediaControl", &IID_IMediaControl, "56A868B1-0AD4-11CE-B03A-0020AF0BA770"},
    {"IID_IEnumMediaTypes", &IID_IEnumMediaTypes, "89C31040-846B-11CE-97D3-00AA0055595A"},
    {"IID_IFilterMapper2", &IID_IFilterMapper2, "B79BB0B0-33C1-11D1-ABE1-00A0C905F375"},
    {"IID_IIPDVDec", &IID_IIPDVDec, "B8E8BD60-0BFE-11D0-AF91-00AA00B67A42"},
    {"MEDIATYPE_Video", &MEDIATYPE_Video, "73646976-0000-0010-8000-00AA00389B71"},
    {"MEDIATYPE_Interleaved", &MEDIATYPE_Interleaved, "73766169-0000-0010-8000-00AA00389B71"},
    {"MEDIASUBTYPE_RGB24", &MEDIASUBTYPE_RGB24, "E436EB7D-524F-11CE-9F53-0020AF0BA770"},
    {"MEDIASUBTYPE_ARGB32", &MEDIASUBTYPE_ARGB32, "773C9AC0-3274-11D0-B724-00AA006C1A01"},
    {"MEDIASUBTYPE_dvsd", &MEDIASUBTYPE_dvsd, "64737664-0000-0010-8000-00AA00389B71"},
    {"FORMAT_VideoInfo", &FORMAT_VideoInfo, "05589F80-C356-11CE-BF01-00AA0055595A"},
    {"FORMAT_VideoInfo2", &FORMAT_VideoInfo2, "F72A76A0-EB0A-11D0-ACE4-0000C0CC16BA"},
    {"FORMAT_DvInfo", &FORMAT_DvInfo, "05589F84-C356-11CE-BF01-00AA0055595A"},
    {"CLSID_FilterGraph", &CLSID_FilterGraph, "E436EBB3-524F-11CE-9F53-0020AF0BA770"},
    {"CLSID_DVVideoCodec", &CLSID_DVVideoCodec, "B1B77C00-C3E4-11CF-AF79-00AA00B67A42"},
    {"CLSID_MjpegDec", &CLSID_MjpegDec, "301056D0-6DFF-11D2-9EEB-006008039E37"},
    {"CLSID_LegacyAmFilterCategory", &CLSID_LegacyAmFilterCategory, "083863F1-70DE-11D0-BD40-00A0C911CE86"},
    {"CLSID_ActiveMovieCategories", &CLSID_ActiveMovieCategories, "DA4E3DA0-D07D-11D0-BD50-00A0C911CE86"},
};

TEST(DshowApiLayout, IdentifiersHaveTheirPublishedValues)
{
    for (const NamedGuid& id : kIdentifiers)
        EXPECT_EQ(GuidText(*id.guid), id.text) << id.name;
}

TEST(DshowApiLayout, FourccSubtypesMatchTheNamedOnes)
{
    const struct {
        DWORD fourcc;
        const GUID* named;
    } cases[] = {
        {ZeFourcc('d', 'v', 's', 'd'), &MEDIASUBTYPE_dvsd},
        {ZeFourcc('M', 'J', 'P', 'G'), &MEDIASUBTYPE_MJPG},
        {ZeFourcc('Y', 'U', 'Y', '2'), &MEDIASUBTYPE_YUY2},
        {ZeFourcc('v', 'i', 'd', 's'), &MEDIATYPE_Video},
    };
    for (const auto& c : cases)
        EXPECT_EQ(GuidText(ZeFourccSubtype(c.fourcc)), GuidText(*c.named));
    EXPECT_EQ(GuidText(ZeFourccSubtype(ZeFourcc('d', 'i', 'v', 'x'))), "78766964-0000-0010-8000-00AA00389B71");
}

}  // namespace

// The source filter's frame time and the media types its pin accepts and offers, per stored
// compression, checked against values worked out by hand.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "graph/ze_source_format.h"

namespace {

TEST(SourceFrameTime, WholeFramesPerSecondIntoTenMillionTicks)
{
    struct Row {
        uint32_t rate;
        uint32_t scale;
        int64_t avgTimePerFrame;
    } rows[] = {
        {30000, 1001, 344827},    // 29 frames per second, not 29.97: 10 000 000 / 29
        {25, 1, 400000},
        {50, 2, 400000},
        {24, 1, 416666},          // 416 666.67 truncated
        {7, 0, 1428571},          // scale 0 counts as 1
        {1, 0, 10000000},
        {3, 2, 10000000},         // 1.5 frames per second count as 1
        {std::numeric_limits<uint32_t>::max(), 1, 0},  // 0.0023 ticks, truncated
        // Fewer frames than one per second: the quotient is infinite and the value the most negative.
        {1000, 1001, std::numeric_limits<int64_t>::min()},
        {0, 1, std::numeric_limits<int64_t>::min()},
        {0, 0, std::numeric_limits<int64_t>::min()},
    };
    for (const Row& row : rows)
        EXPECT_EQ(ZeAvgTimePerFrame(row.rate, row.scale), row.avgTimePerFrame) << row.rate << "/" << row.scale;
}

AM_MEDIA_TYPE Type(const GUID& major, const GUID& sub, const GUID& format)
{
    AM_MEDIA_TYPE type{};
    type.majortype = major;
    type.subtype = sub;
    type.formattype = format;
    return type;
}

TEST(SourceAcceptedTypes, PerStoredCompression)
{
    const DWORD dvsd = ZeFourcc('d', 'v', 's', 'd');
    const DWORD mjpg = ZeFourcc('m', 'j', 'p', 'g');
    const DWORD MJPG = ZeFourcc('M', 'J', 'P', 'G');
    const DWORD xvid = ZeFourcc('X', 'V', 'I', 'D');
    // The published Avi stream subtype, written out here rather than taken from the code.
    const GUID avi = {0xe436eb88, 0x524f, 0x11ce, {0x9f, 0x53, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
    const GUID xvidSub = {0x44495658, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xaa, 0x00, 0x38, 0x9b, 0x71}};
    struct Row {
        const char* what;
        DWORD compression;
        AM_MEDIA_TYPE type;
        bool accepted;
    } rows[] = {
        {"dvsd video info", dvsd, Type(MEDIATYPE_Video, MEDIASUBTYPE_dvsd, FORMAT_VideoInfo), true},
        {"dvsd dv info", dvsd, Type(MEDIATYPE_Video, MEDIASUBTYPE_dvsd, FORMAT_DvInfo), true},
        {"dvsd video info 2", dvsd, Type(MEDIATYPE_Video, MEDIASUBTYPE_dvsd, FORMAT_VideoInfo2), false},
        {"dvsd interleaved", dvsd, Type(MEDIATYPE_Interleaved, MEDIASUBTYPE_dvsd, FORMAT_DvInfo), false},
        {"mjpg MJPG", mjpg, Type(MEDIATYPE_Video, MEDIASUBTYPE_MJPG, FORMAT_VideoInfo), true},
        {"mjpg MJPG stream", mjpg, Type(MEDIATYPE_Stream, MEDIASUBTYPE_MJPG, FORMAT_VideoInfo), true},
        {"mjpg MJPG dv info", mjpg, Type(MEDIATYPE_Video, MEDIASUBTYPE_MJPG, FORMAT_DvInfo), false},
        {"mjpg avi stream", mjpg, Type(MEDIATYPE_Stream, avi, GUID_NULL), true},
        {"mjpg avi video info", mjpg, Type(MEDIATYPE_Video, avi, FORMAT_VideoInfo), true},
        {"mjpg avi wave", mjpg, Type(MEDIATYPE_Stream, avi, FORMAT_WaveFormatEx), false},
        {"mjpg pcm", mjpg, Type(MEDIATYPE_Audio, MEDIASUBTYPE_PCM, FORMAT_WaveFormatEx), true},
        {"mjpg pcm video info", mjpg, Type(MEDIATYPE_Audio, MEDIASUBTYPE_PCM, FORMAT_VideoInfo), false},
        {"mjpg own fourcc", mjpg, Type(MEDIATYPE_Video, ZeFourccSubtype(mjpg), FORMAT_VideoInfo), true},
        // Upper-case MJPG is an ordinary compression: its FOURCC subtype (the MJPG subtype) only.
        {"MJPG MJPG", MJPG, Type(MEDIATYPE_Video, MEDIASUBTYPE_MJPG, FORMAT_VideoInfo), true},
        {"MJPG avi stream", MJPG, Type(MEDIATYPE_Stream, avi, GUID_NULL), false},
        {"MJPG pcm", MJPG, Type(MEDIATYPE_Audio, MEDIASUBTYPE_PCM, FORMAT_WaveFormatEx), false},
        {"XVID video info", xvid, Type(MEDIATYPE_Video, xvidSub, FORMAT_VideoInfo), true},
        {"XVID dv info", xvid, Type(MEDIATYPE_Video, xvidSub, FORMAT_DvInfo), true},
        {"XVID no format", xvid, Type(MEDIATYPE_Video, xvidSub, GUID_NULL), false},
        {"XVID stream", xvid, Type(MEDIATYPE_Stream, xvidSub, FORMAT_VideoInfo), false},
        {"XVID as dvsd", xvid, Type(MEDIATYPE_Video, MEDIASUBTYPE_dvsd, FORMAT_VideoInfo), false},
    };
    for (const Row& row : rows) EXPECT_EQ(ZeSourceAcceptsType(row.compression, row.type), row.accepted) << row.what;
}

TEST(SourceOfferedTypes, MjpgOffersTwoTypesOthersOneTypeTwice)
{
    const GUID avi = {0xe436eb88, 0x524f, 0x11ce, {0x9f, 0x53, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
    const GUID h264 = {0x34363248, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xaa, 0x00, 0x38, 0x9b, 0x71}};
    const DWORD mjpg = ZeFourcc('m', 'j', 'p', 'g');
    const DWORD MJPG = ZeFourcc('M', 'J', 'P', 'G');
    const DWORD dvsd = ZeFourcc('d', 'v', 's', 'd');
    const DWORD H264 = ZeFourcc('H', '2', '6', '4');
    struct Row {
        DWORD compression;
        int position;
        GUID major, sub, format;
        DWORD offeredCompression;
    } rows[] = {
        {mjpg, 0, MEDIATYPE_Video, MEDIASUBTYPE_MJPG, FORMAT_VideoInfo, MJPG},
        {mjpg, 1, MEDIATYPE_Stream, avi, GUID_NULL, MJPG},
        {dvsd, 0, MEDIATYPE_Video, MEDIASUBTYPE_dvsd, FORMAT_VideoInfo, dvsd},
        {dvsd, 1, MEDIATYPE_Video, MEDIASUBTYPE_dvsd, FORMAT_VideoInfo, dvsd},
        {H264, 0, MEDIATYPE_Video, h264, FORMAT_VideoInfo, H264},
        {H264, 1, MEDIATYPE_Video, h264, FORMAT_VideoInfo, H264},
    };
    for (const Row& row : rows) {
        const ZeSourceOffer offer = ZeSourceOfferAt(row.compression, row.position);
        EXPECT_EQ(offer.majortype, row.major) << row.compression << " @" << row.position;
        EXPECT_EQ(offer.subtype, row.sub) << row.compression << " @" << row.position;
        EXPECT_EQ(offer.formattype, row.format) << row.compression << " @" << row.position;
        EXPECT_EQ(offer.compression, row.offeredCompression) << row.compression << " @" << row.position;
    }
}

}  // namespace

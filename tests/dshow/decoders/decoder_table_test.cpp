// The decoder table: which decoder each FOURCC reaches, and the DV resolutions.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

extern "C" {
#include <libavcodec/avcodec.h>
}

#include "dshow/decoders/ze_decoder_table.h"
#include "dshow/decoders/ze_dv_resolution.h"

namespace {

using zedec::DecoderRow;
using zedec::DecoderTable;

DWORD Tag(const char* text) { return ZeFourcc(text[0], text[1], text[2], text[3]); }

std::vector<const DecoderRow*> RowsTaking(DWORD fourcc)
{
    std::vector<const DecoderRow*> rows;
    for (const DecoderRow& row : DecoderTable())
        for (DWORD tag : row.fourccs)
            if (tag == fourcc)
                rows.push_back(&row);
    return rows;
}

struct FourccCase {
    const char* fourcc;
    const char* codecName;      // libavcodec's short name of the codec that must decode it
    const char* friendlyName;   // of the first row that takes it; null for a generic row
};

// FOURCCs as AVI files carry them and the decoders Windows users know for them.
const FourccCase kFourccs[] = {
    {"dvsd", "dvvideo", "DV Video Decoder"},     {"MJPG", "mjpeg", "MJPEG Decompressor"},
    {"divx", "mpeg4", "DivX Decoder Filter"},    {"DIVX", "mpeg4", "DivX Decoder Filter"},
    {"DX50", "mpeg4", "DivX Decoder Filter"},    {"xvid", "mpeg4", "DivX Decoder Filter"},
    {"XVID", "mpeg4", "DivX Decoder Filter"},    {"FMP4", "mpeg4", "DivX Decoder Filter"},
    {"MP4V", "mpeg4", "DivX Decoder Filter"},    {"H264", "h264", nullptr},
    {"avc1", "h264", nullptr},                   {"cvid", "cinepak", nullptr},
    {"CRAM", "msvideo1", nullptr},               {"MSVC", "msvideo1", nullptr},
    {"tscc", "tscc", nullptr},                   {"HFYU", "huffyuv", nullptr},
    {"CFHD", "cfhd", nullptr},                   {"mpg2", "mpeg2video", nullptr},
    {"dv25", "dvvideo", nullptr},                {"AVI1", "mjpeg", nullptr},
};

TEST(DecoderTable, EachFourccReachesADecoderOfItsCodec)
{
    for (const FourccCase& c : kFourccs) {
        SCOPED_TRACE(c.fourcc);
        const std::vector<const DecoderRow*> rows = RowsTaking(Tag(c.fourcc));
        ASSERT_FALSE(rows.empty());
        for (const DecoderRow* row : rows)
            EXPECT_STREQ(avcodec_get_name(row->codec), c.codecName);
        if (c.friendlyName) {
            EXPECT_EQ(rows.front()->friendlyName, c.friendlyName);
        } else {
            ASSERT_EQ(rows.size(), 1u);
            EXPECT_EQ(rows.front()->clsid, zedec::GenericDecoderClsid(rows.front()->codec));
            EXPECT_NE(rows.front()->friendlyName.find(" Decoder"), std::string::npos);
            EXPECT_LT(rows.front()->merit, DWORD(MERIT_NORMAL));
            EXPECT_GT(rows.front()->merit, DWORD(MERIT_UNLIKELY));
        }
    }
}

TEST(DecoderTable, NamedDecodersHaveTheirWindowsIdentities)
{
    const struct {
        CLSID clsid;
        const char* name;
        std::set<std::string> mustTake;
    } named[] = {
        {CLSID_DVVideoCodec, "DV Video Decoder", {"dvsd"}},
        {CLSID_MjpegDec, "MJPEG Decompressor", {"MJPG"}},
        {{0x78766964, 0, 0x10, {0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71}}, "DivX Decoder Filter",
         {"divx", "DIVX", "DX50", "xvid", "XVID", "FMP4", "MP4V"}},
        {{0x64697678, 0, 0x10, {0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71}}, "XviD MPEG-4 Video Decoder",
         {"divx", "DIVX", "DX50", "xvid", "XVID", "FMP4", "MP4V"}},
    };
    for (const auto& n : named) {
        SCOPED_TRACE(n.name);
        const DecoderRow* row = zedec::FindDecoderRow(n.clsid);
        ASSERT_NE(row, nullptr);
        EXPECT_EQ(row->friendlyName, n.name);
        EXPECT_EQ(row->merit, DWORD(MERIT_NORMAL));
        for (const std::string& tag : n.mustTake)
            EXPECT_NE(std::find(row->fourccs.begin(), row->fourccs.end(), Tag(tag.c_str())), row->fourccs.end()) << tag;
    }
    // The MJPEG Decompressor takes 'MJPG' alone, the DV decoder only the DV FOURCCs Windows' has.
    EXPECT_EQ(zedec::FindDecoderRow(CLSID_MjpegDec)->fourccs.size(), 1u);
    for (DWORD tag : zedec::FindDecoderRow(CLSID_DVVideoCodec)->fourccs)
        EXPECT_TRUE(tag == Tag("dvsd") || tag == Tag("dvhd") || tag == Tag("dvsl"));
}

TEST(DecoderTable, ClassIdsAreUniqueAndNoUncompressedFormatIsDecoded)
{
    std::set<std::string> clsids;
    for (const DecoderRow& row : DecoderTable()) {
        const GUID& g = row.clsid;
        clsids.insert(std::string(reinterpret_cast<const char*>(&g), sizeof g));
        EXPECT_NE(avcodec_find_decoder(row.codec), nullptr) << row.friendlyName;
        EXPECT_FALSE(row.fourccs.empty()) << row.friendlyName;
    }
    EXPECT_EQ(clsids.size(), DecoderTable().size());
    EXPECT_GT(DecoderTable().size(), 50u);  // libavformat's RIFF table names well over fifty decodable codecs
    for (const char* raw : {"YUY2", "UYVY", "YV12", "I420", "Y41P"})
        EXPECT_TRUE(RowsTaking(Tag(raw)).empty()) << raw;
    EXPECT_TRUE(RowsTaking(0).empty());
}

TEST(DvResolution, ValuesDivisorsAndSizes)
{
    const struct {
        int value;
        bool accepted;
        int palWidth, palHeight, ntscWidth, ntscHeight;
    } cases[] = {
        {1000, true, 720, 576, 720, 480}, {1001, true, 360, 288, 360, 240}, {1002, true, 180, 144, 180, 120},
        {1003, true, 88, 72, 88, 60},     {1, true, 720, 576, 720, 480},    {2, true, 360, 288, 360, 240},
        {4, true, 180, 144, 180, 120},    {8, true, 88, 72, 88, 60},        {0, false, 0, 0, 0, 0},
        {3, false, 0, 0, 0, 0},           {16, false, 0, 0, 0, 0},          {999, false, 0, 0, 0, 0},
        {1004, false, 0, 0, 0, 0},        {-1, false, 0, 0, 0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        int resolution = 0;
        ASSERT_EQ(zedec::DvResolutionOf(c.value, &resolution), c.accepted);
        if (!c.accepted)
            continue;
        int w = 0, h = 0;
        zedec::DvPictureSize(resolution, 720, 576, &w, &h);
        EXPECT_EQ(w, c.palWidth);
        EXPECT_EQ(h, c.palHeight);
        zedec::DvPictureSize(resolution, 720, 480, &w, &h);
        EXPECT_EQ(w, c.ntscWidth);
        EXPECT_EQ(h, c.ntscHeight);
    }
}

}  // namespace

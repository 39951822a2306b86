// Every decoder's pictures of ffmpeg-made clips against ffmpeg's own decode of the same frames to
// the same pixel format, through the filter between a test source and a renderer that accepts only
// that format. One row per (clip, decoder, format, DV resolution).
#include <gtest/gtest.h>

#include <algorithm>

extern "C" {
#include <libavcodec/codec_id.h>
}

#include "dshow/decoders/ze_decoder_table.h"
#include "tests/dshow/decoders/decoder_chain.h"

namespace {

using dectest::Clip;

const CLSID kDivxDecoder = ZeFourccSubtype(ZeFourcc('d', 'i', 'v', 'x'));
const CLSID kXvidDecoder = ZeFourccSubtype(ZeFourcc('x', 'v', 'i', 'd'));

struct PictureRow {
    const char* clip;
    const char* fourcc;  // the input subtype the source offers
    CLSID decoder;
    const GUID* subtype;
    const char* ffmpegFormat;
    int resolution;  // put_IPDisplay value for the DV decoder, 0 for the others
    int width, height;
};

std::ostream& operator<<(std::ostream& out, const PictureRow& row)
{
    return out << row.clip << "/" << row.fourcc << "/" << row.ffmpegFormat << "/" << row.resolution;
}

const PictureRow kRows[] = {
    {"dv_pal", "dvsd", CLSID_DVVideoCodec, &MEDIASUBTYPE_RGB24, "bgr24", 0, 720, 576},
    {"dv_pal", "dvsd", CLSID_DVVideoCodec, &MEDIASUBTYPE_RGB32, "bgra", 0, 720, 576},
    {"dv_pal", "dvsd", CLSID_DVVideoCodec, &MEDIASUBTYPE_YUY2, "yuyv422", 0, 720, 576},
    {"dv_pal", "dvsd", CLSID_DVVideoCodec, &MEDIASUBTYPE_UYVY, "uyvy422", 0, 720, 576},
    {"dv_ntsc", "dvsd", CLSID_DVVideoCodec, &MEDIASUBTYPE_RGB24, "bgr24", 0, 720, 480},
    {"dv_ntsc", "dvsd", CLSID_DVVideoCodec, &MEDIASUBTYPE_YUY2, "yuyv422", 0, 720, 480},
    {"dv_pal_wide", "dvsd", CLSID_DVVideoCodec, &MEDIASUBTYPE_RGB24, "bgr24", 0, 720, 576},
    {"dv_pal", "dvsd", CLSID_DVVideoCodec, &MEDIASUBTYPE_RGB24, "bgr24", DVRESOLUTION_HALF, 360, 288},
    {"dv_pal", "dvsd", CLSID_DVVideoCodec, &MEDIASUBTYPE_RGB24, "bgr24", DVRESOLUTION_QUARTER, 180, 144},
    {"dv_pal", "dvsd", CLSID_DVVideoCodec, &MEDIASUBTYPE_RGB24, "bgr24", DVRESOLUTION_DC, 88, 72},
    {"dv_pal", "dvsd", CLSID_DVVideoCodec, &MEDIASUBTYPE_RGB24, "bgr24", 4, 180, 144},
    {"dv_ntsc", "dvsd", CLSID_DVVideoCodec, &MEDIASUBTYPE_YUY2, "yuyv422", DVRESOLUTION_DC, 88, 60},
    {"dv_ntsc", "dvsd", CLSID_DVVideoCodec, &MEDIASUBTYPE_RGB32, "bgra", DVRESOLUTION_HALF, 360, 240},
    {"mjpeg_s16_stereo", "MJPG", CLSID_MjpegDec, &MEDIASUBTYPE_RGB24, "bgr24", 0, 320, 240},
    {"mjpeg_s16_stereo", "MJPG", CLSID_MjpegDec, &MEDIASUBTYPE_RGB32, "bgra", 0, 320, 240},
    {"divx_lower_video_only", "divx", kDivxDecoder, &MEDIASUBTYPE_RGB24, "bgr24", 0, 176, 144},
    {"divx_video_only", "DIVX", kDivxDecoder, &MEDIASUBTYPE_UYVY, "uyvy422", 0, 320, 240},
    {"dx50_u8_stereo", "DX50", kDivxDecoder, &MEDIASUBTYPE_RGB32, "bgra", 0, 176, 144},
    {"xvid_mp2", "XVID", kXvidDecoder, &MEDIASUBTYPE_YUY2, "yuyv422", 0, 320, 240},
    {"fmp4_video_only", "FMP4", kXvidDecoder, &MEDIASUBTYPE_RGB24, "bgr24", 0, 320, 240},
    {"h264_s16_mono", "H264", zedec::GenericDecoderClsid(AV_CODEC_ID_H264), &MEDIASUBTYPE_RGB24, "bgr24", 0, 320, 240},
    {"h264_no_bframes", "H264", zedec::GenericDecoderClsid(AV_CODEC_ID_H264), &MEDIASUBTYPE_YUY2, "yuyv422", 0, 320,
     240},
    {"cinepak_video_only", "cvid", zedec::GenericDecoderClsid(AV_CODEC_ID_CINEPAK), &MEDIASUBTYPE_RGB24, "bgr24", 0,
     160, 120},
};

class DecoderPictures : public ::testing::TestWithParam<PictureRow> {};

TEST_P(DecoderPictures, EqualFfmpegsDecodeOfTheSameFrames)
{
    const PictureRow& row = GetParam();
    std::string whyNot;
    const Clip* clip = dectest::LoadClip(row.clip, &whyNot);
    if (!clip)
        GTEST_SKIP() << whyNot;
    size_t largest = 0;
    for (const auto& p : clip->packets)
        largest = std::max(largest, p.bytes.size());

    const DWORD fourcc = ZeFourcc(row.fourcc[0], row.fourcc[1], row.fourcc[2], row.fourcc[3]);
    dectest::DecoderChain chain(row.decoder, dectest::ClipInputType(*clip, fourcc), LONG(largest), *row.subtype);
    ASSERT_EQ(chain.Created(), S_OK);
    if (row.resolution) {
        IIPDVDec* dv = nullptr;
        ASSERT_EQ(chain.Decoder()->QueryInterface(IID_IIPDVDec, reinterpret_cast<void**>(&dv)), S_OK);
        EXPECT_EQ(dv->put_IPDisplay(row.resolution), S_OK);
        dv->Release();
    }
    ASSERT_EQ(chain.Connect(), S_OK);
    ASSERT_EQ(chain.Run(), S_OK);
    for (const auto& packet : clip->packets)
        ASSERT_EQ(chain.Push(packet), S_OK);
    EXPECT_EQ(chain.Source().DeliverEndOfStream(), S_OK);
    EXPECT_EQ(chain.Renderer().EndOfStreamCount(), 1);
    const std::vector<zetest::RenderedSample> samples = chain.Renderer().Samples();

    // ffmpeg: lowres for the DV sizes, and the DC picture as the left 88 columns of lowres 3.
    int lowres = 0;
    std::string filter;
    switch (row.resolution) {
    case DVRESOLUTION_HALF:
        lowres = 1;
        break;
    case 4:
    case DVRESOLUTION_QUARTER:
        lowres = 2;
        break;
    case DVRESOLUTION_DC:
        lowres = 3;
        filter = "crop=88:" + std::to_string(row.height) + ":0:0";
        break;
    }
    const dectest::Pictures truth =
        dectest::FfmpegPictures(row.clip, row.ffmpegFormat, row.width, row.height, lowres, filter);
    ASSERT_FALSE(truth.pictures.empty());
    ASSERT_EQ(samples.size(), truth.pictures.size());

    const BITMAPINFOHEADER& bih = reinterpret_cast<const VIDEOINFOHEADER*>(samples[0].type.Format())->bmiHeader;
    EXPECT_EQ(*samples[0].type.Subtype(), *row.subtype);
    EXPECT_EQ(bih.biWidth, row.width);
    EXPECT_EQ(bih.biHeight, row.height);  // positive: RGB bottom-up, YUV top-down
    std::vector<REFERENCE_TIME> in, out;
    for (size_t i = 0; i < samples.size(); ++i) {
        const std::vector<uint8_t> rows = dectest::PictureRows(samples[i]);
        ASSERT_EQ(rows.size(), truth.pictures[i].size()) << "picture " << i;
        // The scaler flags are ffmpeg's own, so the pictures are the same to the bit.
        ASSERT_TRUE(rows == truth.pictures[i])
            << "picture " << i << " PSNR " << dectest::Psnr(rows.data(), truth.pictures[i].data(), rows.size());
        ASSERT_TRUE(samples[i].timed);
        out.push_back(samples[i].start);
        in.push_back(clip->packets[i].start);
    }
    // Each packet's time comes back with its picture: the same times, in display order.
    std::sort(out.begin(), out.end());
    EXPECT_EQ(out, in);
}

INSTANTIATE_TEST_SUITE_P(Clips, DecoderPictures, ::testing::ValuesIn(kRows));

}  // namespace

// The libavcodec core on its own: pictures against ffmpeg's decode, decoder delay, drain and flush.
#include <gtest/gtest.h>

#include <algorithm>

#include "dshow/decoders/ze_av_video_decoder.h"
#include "dshow/decoders/ze_dib_converter.h"
#include "tests/dshow/decoders/decoder_test_clips.h"

namespace {

using dectest::Clip;
using zedec::AvVideoDecoder;
using zedec::DibFormat;

const Clip& Load(const std::string& name)
{
    std::string whyNot;
    const Clip* clip = dectest::LoadClip(name, &whyNot);
    if (!clip)
        throw std::runtime_error(whyNot);
    return *clip;
}

struct Decoded {
    std::vector<int64_t> times;
    std::vector<size_t> afterPacket;  // number of packets sent when each picture came out
    std::vector<std::vector<uint8_t>> pictures;
};

// Sends every packet, then drains; converts each picture to `format` when asked.
Decoded DecodeAll(const Clip& clip, AVCodecID codec, int lowres, const DibFormat* format, bool drain = true)
{
    AvVideoDecoder decoder;
    std::string whyNot;
    EXPECT_TRUE(decoder.Open(codec, clip.header, clip.extra.data(), clip.extra.size(), lowres, &whyNot)) << whyNot;
    zedec::DibConverter converter;
    Decoded out;
    size_t sent = 0;
    auto sink = [&](const AVFrame& frame) {
        out.times.push_back(frame.pts);
        out.afterPacket.push_back(sent);
        if (format) {
            const zedec::DibLayout layout = zedec::DibLayoutOf(*format, frame.width, frame.height, frame.width);
            std::vector<uint8_t> dib(layout.ImageSize());
            EXPECT_TRUE(converter.Convert(frame, frame.width, frame.height, layout, dib.data()));
            out.pictures.push_back(dectest::TopDownRows(dib.data(), layout.stride,
                                                        size_t(frame.width) * zedec::DibBitCount(*format) / 8,
                                                        frame.height, layout.bottomUp));
        }
        return true;
    };
    for (const dectest::ClipPacket& p : clip.packets) {
        ++sent;
        EXPECT_EQ(decoder.Decode(p.bytes.data(), p.bytes.size(), p.start, p.stop - p.start, p.key, sink), 0);
    }
    if (drain) {
        EXPECT_EQ(decoder.Drain(sink), 0);
    }
    return out;
}

struct CoreRow {
    const char* clip;
    AVCodecID codec;
    DibFormat format;
    const char* ffmpegFormat;
};

class CorePictures : public ::testing::TestWithParam<CoreRow> {};

TEST_P(CorePictures, EqualFfmpegsOwnDecode)
{
    const CoreRow& row = GetParam();
    const Clip& clip = Load(row.clip);
    const Decoded ours = DecodeAll(clip, row.codec, 0, &row.format);
    const dectest::Pictures truth = dectest::FfmpegPictures(row.clip, row.ffmpegFormat, clip.header.biWidth,
                                                            std::abs(clip.header.biHeight));
    ASSERT_FALSE(truth.pictures.empty());
    ASSERT_EQ(ours.pictures.size(), truth.pictures.size());
    for (size_t i = 0; i < truth.pictures.size(); ++i)
        ASSERT_EQ(ours.pictures[i], truth.pictures[i]) << "picture " << i;
}

INSTANTIATE_TEST_SUITE_P(Core, CorePictures,
                         ::testing::Values(CoreRow{"dv_pal", AV_CODEC_ID_DVVIDEO, DibFormat::Rgb24, "bgr24"},
                                           CoreRow{"dv_ntsc", AV_CODEC_ID_DVVIDEO, DibFormat::Yuy2, "yuyv422"},
                                           CoreRow{"mjpeg_s16_stereo", AV_CODEC_ID_MJPEG, DibFormat::Rgb32, "bgra"},
                                           CoreRow{"h264_s16_mono", AV_CODEC_ID_H264, DibFormat::Rgb24, "bgr24"}));

TEST(CoreDelay, BFramesComeOutAfterThreePacketsAndTheRestOnDrain)
{
    const Clip& clip = Load("h264_s16_mono");
    const Decoded held = DecodeAll(clip, AV_CODEC_ID_H264, 0, nullptr, false);
    const Decoded all = DecodeAll(clip, AV_CODEC_ID_H264, 0, nullptr, true);
    ASSERT_FALSE(held.afterPacket.empty());
    EXPECT_EQ(held.afterPacket.front(), 3u);
    EXPECT_EQ(all.times.size(), clip.packets.size());
    EXPECT_EQ(all.times.size() - held.times.size(), 2u);  // two pictures wait for the end
    // Every packet time comes out once, in display order.
    std::vector<int64_t> in, out = all.times;
    for (const auto& p : clip.packets)
        in.push_back(p.start);
    std::sort(out.begin(), out.end());
    EXPECT_EQ(out, in);
}

TEST(CoreDelay, IntraCodecsGiveOnePicturePerPacketAtOnce)
{
    for (const auto& [name, codec] : {std::pair{"dv_pal", AV_CODEC_ID_DVVIDEO}, {"mjpeg_s16_stereo", AV_CODEC_ID_MJPEG}}) {
        const Clip& clip = Load(name);
        const Decoded held = DecodeAll(clip, codec, 0, nullptr, false);
        ASSERT_EQ(held.times.size(), clip.packets.size()) << name;
        for (size_t i = 0; i < held.times.size(); ++i) {
            EXPECT_EQ(held.afterPacket[i], i + 1) << name;
            EXPECT_EQ(held.times[i], clip.packets[i].start) << name;
        }
    }
}

TEST(CoreFlush, DiscardsHeldPicturesAndMpeg4WaitsForAKeyFrame)
{
    const Clip& clip = Load("fmp4_video_only");
    AvVideoDecoder decoder;
    ASSERT_TRUE(decoder.Open(AV_CODEC_ID_MPEG4, clip.header, clip.extra.data(), clip.extra.size(), 0, nullptr));
    std::vector<bool> keys;
    auto sink = [&](const AVFrame& frame) {
        keys.push_back(frame.key_frame != 0);
        return true;
    };
    // Half the clip, a flush, then the packets from the middle on, which starts with predicted ones.
    const size_t half = clip.packets.size() / 2;
    ASSERT_FALSE(clip.packets[half].key);
    for (size_t i = 0; i < half; ++i)
        decoder.Decode(clip.packets[i].bytes.data(), clip.packets[i].bytes.size(), 0, 0, clip.packets[i].key, sink);
    keys.clear();
    decoder.Flush();
    for (size_t i = half; i < clip.packets.size(); ++i)
        decoder.Decode(clip.packets[i].bytes.data(), clip.packets[i].bytes.size(), 0, 0, clip.packets[i].key, sink);
    decoder.Drain(sink);
    // Nothing from before the next key frame in decoding order comes out; the key frame does.
    size_t keyAt = half;
    while (!clip.packets[keyAt].key)
        ++keyAt;
    ASSERT_FALSE(keys.empty());
    EXPECT_TRUE(keys.front());
    EXPECT_LE(keys.size(), clip.packets.size() - keyAt);
}

TEST(CoreLowres, DvSizesShrinkByPowersOfTwo)
{
    const Clip& clip = Load("dv_pal");
    for (int lowres = 0; lowres <= 3; ++lowres) {
        AvVideoDecoder decoder;
        ASSERT_TRUE(decoder.Open(AV_CODEC_ID_DVVIDEO, clip.header, nullptr, 0, lowres, nullptr));
        int width = 0, height = 0;
        decoder.Decode(clip.packets[0].bytes.data(), clip.packets[0].bytes.size(), 0, 0, true,
                       [&](const AVFrame& f) {
                           width = f.width;
                           height = f.height;
                           return true;
                       });
        EXPECT_EQ(width, (lowres == 3 ? 90 : 720 >> lowres));
        EXPECT_EQ(height, 576 >> lowres);
    }
}

}  // namespace

namespace {

// libswscale's SIMD writers store past the end of a row for some widths; the conversion must keep
// every byte inside the DIB, whose rows are padded to 4 bytes only.
TEST(CoreConversion, WritesNothingPastTheDib)
{
    const struct {
        const char* clip;
        AVCodecID codec;
        int lowres;
        int width;  // the DIB's picture width; the DV DC picture keeps 88 of 90 columns
    } cases[] = {{"dv_pal", AV_CODEC_ID_DVVIDEO, 1, 360}, {"dv_pal", AV_CODEC_ID_DVVIDEO, 3, 88},
                 {"dv_ntsc", AV_CODEC_ID_DVVIDEO, 2, 180}, {"cinepak_video_only", AV_CODEC_ID_CINEPAK, 0, 160},
                 {"divx_lower_video_only", AV_CODEC_ID_MPEG4, 0, 176}};
    constexpr size_t kGuard = 512;
    for (const auto& c : cases) {
        const Clip& clip = Load(c.clip);
        AvVideoDecoder decoder;
        ASSERT_TRUE(decoder.Open(c.codec, clip.header, clip.extra.data(), clip.extra.size(), c.lowres, nullptr));
        zedec::DibConverter converter;
        for (DibFormat format : {DibFormat::Yuy2, DibFormat::Uyvy, DibFormat::Rgb24, DibFormat::Rgb32}) {
            for (int32_t sign : {1, -1}) {
                decoder.Decode(clip.packets[0].bytes.data(), clip.packets[0].bytes.size(), 0, 0, true,
                               [&](const AVFrame& frame) {
                                   const zedec::DibLayout layout =
                                       zedec::DibLayoutOf(format, c.width, sign * frame.height, c.width);
                                   std::vector<uint8_t> dib(layout.ImageSize() + kGuard, 0xA5);
                                   EXPECT_TRUE(converter.Convert(frame, std::min(frame.width, c.width),
                                                                 frame.height, layout, dib.data()));
                                   const std::vector<uint8_t> guard(kGuard, 0xA5);
                                   EXPECT_TRUE(std::equal(guard.begin(), guard.end(),
                                                          dib.begin() + layout.ImageSize()))
                                       << c.clip << " lowres " << c.lowres << " format " << int(format);
                                   return true;
                               });
                decoder.Flush();
            }
        }
    }
}

}  // namespace

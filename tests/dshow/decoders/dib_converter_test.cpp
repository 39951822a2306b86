// The DIB conversion on its own: libswscale's SIMD writers store past the end of a row for some
// widths and sources, and the converter must keep every byte inside the DIB.
#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

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

// DIB rows are padded to 4 bytes only; a guard after the image must come out untouched.
TEST(DibConverter, WritesNothingPastTheDib)
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

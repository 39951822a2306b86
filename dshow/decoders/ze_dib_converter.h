// Writes a decoded picture into a DIB buffer through libswscale: pixel format, colour matrix and
// range from the frame, rows in the DIB's order and stride. A cropped source (the top-left
// part of the frame) and a different target size are both handled by the same call.
#pragma once

#include <vector>

#include "dshow/decoders/ze_av_handles.h"
#include "dshow/decoders/ze_dib_layout.h"

namespace zedec {

// The scaler flags of every conversion. Plain bicubic without SWS_BITEXACT | SWS_ACCURATE_RND:
// libswscale then takes its SIMD paths, about ten times faster for YUV 4:2:0 to RGB24 on a PAL
// picture, and ffmpeg's command line converts with the very same flags by default (bicubic), so
// its output is still the same to the bit on the same machine.
constexpr int kScalerFlags = SWS_BICUBIC;

class DibConverter {
public:
    // Converts the top-left sourceWidth x sourceHeight pixels of frame into dst, laid out as
    // `layout` (scaled when the sizes differ). dst must hold layout.ImageSize() bytes.
    bool Convert(const AVFrame& frame, int sourceWidth, int sourceHeight, const DibLayout& layout, uint8_t* dst);

private:
    struct Setup {
        int srcW = 0, srcH = 0, srcFormat = -1, colorspace = -1, fullRange = -1;
        int dstW = 0, dstH = 0, dstFormat = -1;
        bool operator==(const Setup& o) const;
    };
    bool Scale(const AVFrame& frame, int sourceHeight, uint8_t* dst, size_t stride, int height, bool bottomUp);

    SwsContextPtr m_context;
    Setup m_setup;
    std::vector<uint8_t> m_scratch;
};

}  // namespace zedec

#include "dshow/decoders/ze_dib_converter.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <cstring>

namespace zedec {
namespace {

// Room after each row of the scratch buffer for what the SIMD writers store past a row's end.
constexpr size_t kRowSlack = 256;

// The full-range "J" formats are their plain counterparts with a full source range.
AVPixelFormat WithoutJpegRange(AVPixelFormat format, bool* fullRange)
{
    switch (format) {
    case AV_PIX_FMT_YUVJ420P:
        *fullRange = true;
        return AV_PIX_FMT_YUV420P;
    case AV_PIX_FMT_YUVJ422P:
        *fullRange = true;
        return AV_PIX_FMT_YUV422P;
    case AV_PIX_FMT_YUVJ444P:
        *fullRange = true;
        return AV_PIX_FMT_YUV444P;
    case AV_PIX_FMT_YUVJ440P:
        *fullRange = true;
        return AV_PIX_FMT_YUV440P;
    case AV_PIX_FMT_YUVJ411P:
        *fullRange = true;
        return AV_PIX_FMT_YUV411P;
    default:
        return format;
    }
}

}  // namespace

bool DibConverter::Setup::operator==(const Setup& o) const
{
    return srcW == o.srcW && srcH == o.srcH && srcFormat == o.srcFormat && colorspace == o.colorspace &&
           fullRange == o.fullRange && dstW == o.dstW && dstH == o.dstH && dstFormat == o.dstFormat;
}

bool DibConverter::Convert(const AVFrame& frame, int sourceWidth, int sourceHeight, const DibLayout& layout,
                           uint8_t* dst)
{
    if (sourceWidth <= 0 || sourceHeight <= 0 || sourceWidth > frame.width || sourceHeight > frame.height ||
        layout.width <= 0 || layout.height <= 0 || !dst)
        return false;
    bool fullRange = frame.color_range == AVCOL_RANGE_JPEG;
    const AVPixelFormat source = WithoutJpegRange(static_cast<AVPixelFormat>(frame.format), &fullRange);
    Setup setup;
    setup.srcW = sourceWidth;
    setup.srcH = sourceHeight;
    setup.srcFormat = source;
    setup.colorspace = frame.colorspace;
    setup.fullRange = fullRange ? 1 : 0;
    setup.dstW = layout.width;
    setup.dstH = layout.height;
    setup.dstFormat = DibPixelFormat(layout.format);

    if (!m_context || !(setup == m_setup)) {
        m_context.reset(sws_getContext(setup.srcW, setup.srcH, source, setup.dstW, setup.dstH,
                                       static_cast<AVPixelFormat>(setup.dstFormat), kScalerFlags, nullptr, nullptr,
                                       nullptr));
        if (!m_context)
            return false;
        // The frame's own matrix (BT.601 when it names none) and range; the packed YUV targets are
        // limited range, as DirectShow's YUY2 and UYVY are.
        const int* matrix = sws_getCoefficients(frame.colorspace);
        sws_setColorspaceDetails(m_context.get(), matrix, setup.fullRange, matrix, 0, 0, 1 << 16, 1 << 16);
        m_setup = setup;
    }

    // libswscale's SIMD writers may store up to a few dozen bytes past the end of a row, which in a
    // DIB is the next row or the end of the sample buffer. They stay inside rows whose width is a
    // multiple of 16 pixels when the source is planar YUV (every width has been probed); any other
    // picture goes through a scratch buffer with room after each row and is copied in.
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(source);
    const bool planarYuv = descriptor && (descriptor->flags & AV_PIX_FMT_FLAG_PLANAR) &&
                           !(descriptor->flags & AV_PIX_FMT_FLAG_RGB);
    const size_t rowBytes = static_cast<size_t>(layout.width) * static_cast<size_t>(DibBitCount(layout.format)) / 8;
    if (planarYuv && layout.width % 16 == 0)
        return Scale(frame, sourceHeight, dst, layout.stride, layout.height, layout.bottomUp);

    const size_t scratchStride = ((rowBytes + 63) & ~size_t(63)) + kRowSlack;
    m_scratch.resize(scratchStride * static_cast<size_t>(layout.height) + kRowSlack);
    if (!Scale(frame, sourceHeight, m_scratch.data(), scratchStride, layout.height, false))
        return false;
    for (int y = 0; y < layout.height; ++y) {
        const int row = layout.bottomUp ? layout.height - 1 - y : y;
        std::memcpy(dst + layout.stride * static_cast<size_t>(row), m_scratch.data() + scratchStride * y, rowBytes);
    }
    return true;
}

bool DibConverter::Scale(const AVFrame& frame, int sourceHeight, uint8_t* dst, size_t stride, int height,
                         bool bottomUp)
{
    uint8_t* planes[4] = {dst, nullptr, nullptr, nullptr};
    int strides[4] = {static_cast<int>(stride), 0, 0, 0};
    if (bottomUp) {
        // The first row of the picture is the last row in memory.
        planes[0] = dst + stride * static_cast<size_t>(height - 1);
        strides[0] = -strides[0];
    }
    return sws_scale(m_context.get(), frame.data, frame.linesize, 0, sourceHeight, planes, strides) == height;
}

}  // namespace zedec

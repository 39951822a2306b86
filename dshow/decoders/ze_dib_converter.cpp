#include "dshow/decoders/ze_dib_converter.h"

namespace zedec {
namespace {

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

    uint8_t* planes[4] = {dst, nullptr, nullptr, nullptr};
    int strides[4] = {static_cast<int>(layout.stride), 0, 0, 0};
    if (layout.bottomUp) {
        // The first row of the picture is the last row in memory.
        planes[0] = dst + layout.stride * static_cast<size_t>(layout.height - 1);
        strides[0] = -strides[0];
    }
    const int rows = sws_scale(m_context.get(), frame.data, frame.linesize, 0, sourceHeight, planes, strides);
    return rows == layout.height;
}

}  // namespace zedec

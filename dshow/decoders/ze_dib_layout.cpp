#include "dshow/decoders/ze_dib_layout.h"

namespace zedec {
namespace {

constexpr DWORD FourCC(char a, char b, char c, char d)
{
    return DWORD(uint8_t(a)) | DWORD(uint8_t(b)) << 8 | DWORD(uint8_t(c)) << 16 | DWORD(uint8_t(d)) << 24;
}

}  // namespace

int DibBitCount(DibFormat format)
{
    switch (format) {
    case DibFormat::Yuy2:
    case DibFormat::Uyvy:
        return 16;
    case DibFormat::Rgb24:
        return 24;
    case DibFormat::Rgb32:
        return 32;
    }
    return 0;
}

DWORD DibCompression(DibFormat format)
{
    switch (format) {
    case DibFormat::Yuy2:
        return FourCC('Y', 'U', 'Y', '2');
    case DibFormat::Uyvy:
        return FourCC('U', 'Y', 'V', 'Y');
    default:
        return 0;  // BI_RGB
    }
}

AVPixelFormat DibPixelFormat(DibFormat format)
{
    switch (format) {
    case DibFormat::Yuy2:
        return AV_PIX_FMT_YUYV422;
    case DibFormat::Uyvy:
        return AV_PIX_FMT_UYVY422;
    case DibFormat::Rgb24:
        return AV_PIX_FMT_BGR24;  // DIB byte order: blue, green, red
    case DibFormat::Rgb32:
        return AV_PIX_FMT_BGRA;
    }
    return AV_PIX_FMT_NONE;
}

bool DibIsRgb(DibFormat format) { return format == DibFormat::Rgb24 || format == DibFormat::Rgb32; }

size_t DibStride(DibFormat format, int rowPixels)
{
    const size_t bits = static_cast<size_t>(rowPixels) * static_cast<size_t>(DibBitCount(format));
    return ((bits + 31) & ~size_t(31)) / 8;
}

DibLayout DibLayoutOf(DibFormat format, int32_t biWidth, int32_t biHeight, int pictureWidth)
{
    DibLayout layout;
    layout.format = format;
    layout.width = pictureWidth;
    layout.height = biHeight < 0 ? -biHeight : biHeight;
    layout.bottomUp = DibIsRgb(format) && biHeight > 0;
    layout.stride = DibStride(format, biWidth);
    return layout;
}

}  // namespace zedec

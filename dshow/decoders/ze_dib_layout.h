// The uncompressed pictures the decoders write: the DIB formats, their pixel formats in libavutil
// terms, and where each row of a picture lies in a sample buffer.
//
// RGB DIBs with a positive height are stored bottom-up (the first row in memory is the bottom
// row), with a negative height top-down. YUV DIBs are always top-down whatever the sign. Every
// row starts on a 4-byte boundary: stride = ((width * bits + 31) & ~31) / 8.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {
#include <libavutil/pixfmt.h>
}

#include "platform/win32.h"

namespace zedec {

enum class DibFormat { Yuy2, Uyvy, Rgb24, Rgb32 };

int DibBitCount(DibFormat format);
// BI_RGB (0) for the RGB formats, the FOURCC for the packed YUV ones.
DWORD DibCompression(DibFormat format);
AVPixelFormat DibPixelFormat(DibFormat format);
bool DibIsRgb(DibFormat format);

struct DibLayout {
    DibFormat format = DibFormat::Rgb24;
    int width = 0;       // picture width in pixels
    int height = 0;      // picture height in pixels, positive
    bool bottomUp = false;
    size_t stride = 0;   // bytes from one row in memory to the next

    size_t ImageSize() const { return stride * static_cast<size_t>(height); }
};

// Rows of `rowPixels` pixels (biWidth, which may exceed the picture width) rounded up to 4 bytes.
size_t DibStride(DibFormat format, int rowPixels);

// The layout a BITMAPINFOHEADER describes for a picture of pictureWidth x |biHeight| pixels;
// biWidth gives the stride and must be at least pictureWidth.
DibLayout DibLayoutOf(DibFormat format, int32_t biWidth, int32_t biHeight, int pictureWidth);

}  // namespace zedec

// Media types of the decoder filter: what an input type says about the compressed stream, the
// output types the filter offers, and whether a proposed output type is one it can fill.
#pragma once

#include <cstdint>
#include <vector>

#include "dshow/baseclasses/media_type.h"
#include "dshow/decoders/ze_decoder_table.h"
#include "dshow/decoders/ze_dib_layout.h"

namespace zedec {

// The output formats in the order the filter offers them: packed YUV first, then RGB, as
// Windows' DV Video Decoder lists its types (YUY2, UYVY, RGB24, RGB32; its ARGB32, RGB565, RGB555,
// RGB8 and Y41P are not made here). The order of Windows' own list is not documented beyond the
// documentation's listing; we follow that listing. Every row offers the same list: the MJPEG
// Decompressor's concrete output types are not documented either.
extern const DibFormat kOfferedOutputs[4];

struct InputFormat {
    BITMAPINFOHEADER header{};   // biWidth, |biHeight| = the coded picture size
    std::vector<uint8_t> extra;  // the bytes after the BITMAPINFOHEADER in the format block
    REFERENCE_TIME frameDuration = 0;
};

// Checks an input type against a table row: MEDIATYPE_Video, one of the row's subtypes (or a
// FOURCC subtype libavformat maps to the row's codec, in another letter case), and a format block
// of FORMAT_VideoInfo, FORMAT_VideoInfo2 or, for the DV decoder, FORMAT_DvInfo (whose 50/60 flag
// in the VAUX source pack gives the PAL or NTSC picture size). Fills *format when it fits.
bool ReadInputType(const AM_MEDIA_TYPE& type, const DecoderRow& row, InputFormat* format);

// Output type number `index` for pictures of width x height: VIDEOINFOHEADER, RGB with a positive
// (bottom-up) height, YUV with a positive height as well (YUV is top-down whatever the sign). The
// sign Windows' decoders propose is not documented; positive is the DIB convention we choose.
// False past the last one.
bool MakeOutputType(int index, int width, int height, REFERENCE_TIME frameDuration, CMediaType* type);

// Whether a proposed output type describes pictures of width x height in a format the filter
// writes: a FORMAT_VideoInfo or FORMAT_VideoInfo2 block whose biWidth is at least the width (a
// wider biWidth is the stride, with rcTarget giving the picture), |biHeight| equal to the height,
// and the bit count and compression of the subtype. Fills *layout when it does. A proposal of
// another picture size is refused: the decoders do not scale (whether Windows' DV decoder accepts
// one is not documented; refusing is our choice).
bool ReadOutputType(const AM_MEDIA_TYPE& type, int width, int height, DibLayout* layout);

}  // namespace zedec

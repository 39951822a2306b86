// The DV Video Decoder's output resolutions (IIPDVDec): which put_IPDisplay values mean which
// resolution, the lowres level that decodes it and the picture size it gives.
//
// FULL, HALF, QUARTER and DC are DVRESOLUTION_FULL..DC (1000..1003). The divisors 1, 2, 4 and 8
// are taken as the same four resolutions: callers that think of the picture as divided by a
// scale factor hand the decoder the divisor itself. Every other value is refused. What Windows'
// DV decoder answers for values outside 1000..1003 is not documented; accepting the divisors is
// our choice. The starting resolution is FULL, also our choice for the same reason.
//
// Sizes are the full picture divided by 1, 2, 4 and 8, except that the DC picture keeps only the
// largest multiple of 8 columns: 720 / 8 = 90 becomes 88 (PAL 88x72, NTSC 88x60), the DC size
// Windows' DV decoder gives. libavcodec's
// lowres 3 decodes the DC coefficients into 90 columns; the DC picture is its left 88 columns,
// cropped rather than scaled, so that every pixel stays the decoder's own and YUY2 keeps whole
// two-pixel pairs.
#pragma once

namespace zedec {

// Turns a put_IPDisplay value into a DVRESOLUTION_* value; false for values that are neither.
bool DvResolutionOf(int value, int* resolution);

// 0 for FULL, 1 for HALF, 2 for QUARTER, 3 for DC.
int DvLowres(int resolution);

// The picture size of a resolution for a stream whose full picture is fullWidth x fullHeight.
void DvPictureSize(int resolution, int fullWidth, int fullHeight, int* width, int* height);

}  // namespace zedec

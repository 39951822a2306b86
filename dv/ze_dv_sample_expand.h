// Expansion of 12-bit nonlinear DV audio codes to signed 16-bit samples.
#pragma once

#include <cstdint>

namespace ZeDV {

// Piecewise-linear expansion by segment of the code. The negative segment 0xC00-0xCFF is offset
// from 0xDFF rather than 0xE00, so it lies 4 above the mirror image of its positive twin
// (0xC00 gives -2044, 0xCFF and 0xD00 both give -1024); that asymmetry is part of the mapping.
int16_t Expand12BitSample(uint16_t code);

}  // namespace ZeDV

// The DV video and audio parameters of a file, taken from one of its frames held in memory.
#pragma once

#include <cstddef>
#include <cstdint>

#include "dv/ze_dv_params.h"

namespace ZeDV {

constexpr uint8_t kPackVauxSource = 0x60;
constexpr uint8_t kPackVauxSourceControl = 0x61;
constexpr uint8_t kPackAauxSource = 0x50;
constexpr uint32_t kVauxSourceSlot = 39;
constexpr uint32_t kVauxSourceControlSlot = 40;
constexpr uint32_t kAauxSourceBlock = 3;

// Smallest frame these decoders accept: one that holds the whole pack search range (which also
// covers the fixed VAUX slots and the AAUX source pack).
size_t MinimumParamsFrameSize();

// Zeroes `params`, then fills the recording date and time, the 60-field flag (VAUX source in slot
// 39) and aspect, display, compression, recording-start and interlace codes (VAUX source control
// in slot 40). Missing or differently typed packs leave their fields 0. False only for a frame
// shorter than MinimumParamsFrameSize(); `params` is then zeroed.
bool DecodeVideoParamsFromFrame(const uint8_t* frame, size_t frameSize, ZeDVVideoParams* params);

// Zeroes `params`, then fills them from the AAUX source pack of audio block 3, if it is one.
// False only for a frame shorter than MinimumParamsFrameSize(); `params` is then zeroed.
bool DecodeAudioParamsFromFrame(const uint8_t* frame, size_t frameSize, ZeDVAudioParams* params);

}  // namespace ZeDV

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

// Zeroes `params`, then fills the recording date and time, the 60-field flag (VAUX source in slot
// 39) and aspect, display, compression, recording-start and interlace codes (VAUX source control
// in slot 40). Missing or differently typed packs leave their fields 0; so does a pack that would
// reach past the end of a short frame. False only for a null frame; `params` is then zeroed.
bool DecodeVideoParamsFromFrame(const uint8_t* frame, size_t frameSize, ZeDVVideoParams* params);

// Zeroes `params`, then fills them from the AAUX source pack of audio block 3, if it is one and
// lies inside the frame. False only for a null frame; `params` is then zeroed.
bool DecodeAudioParamsFromFrame(const uint8_t* frame, size_t frameSize, ZeDVAudioParams* params);

}  // namespace ZeDV

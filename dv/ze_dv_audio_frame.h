// Sound inside one DV frame: how many samples the frame holds (from its AAUX source pack) and
// the unshuffling of those samples out of the audio DIF blocks into interleaved 16-bit PCM.
#pragma once

#include <cstddef>
#include <cstdint>

#include "dv/ze_dv_pack_location.h"

namespace ZeDV {

// The most sample frames a DV frame carries (625/50 at 48 kHz).
constexpr uint32_t kMostSamplesPerFrame = 1944;
// The leading bytes of a frame that hold all the audio blocks read: those of the first 12 DIF
// sequences. Whatever a frame has beyond (or claims to have) is never needed for its sound.
constexpr uint32_t kAudioFrameBytes = 12 * kDifSequenceBytes;

// What the AAUX source pack of a frame says about its sound.
struct AudioFrameLayout {
    bool countKnown = false;     // the pack was an AAUX source pack with a known sample rate
    bool decodable = false;      // ... and 16-bit linear or 12-bit nonlinear samples
    bool system625 = false;      // 625/50 (12 DIF sequences) rather than 525/60 (10)
    uint32_t sampleRateCode = 0; // 0 48 kHz, 1 44.1 kHz, 2 32 kHz
    uint32_t quantization = 0;   // 0 16-bit linear, 1 12-bit nonlinear, 2 20-bit
    uint32_t samples = 0;        // sample frames carried by this frame
};

// Offset of the AAUX source pack read for the layout: audio block 3 of the first sequence.
uint64_t AudioSourcePackOffset();
// The layout given by the five bytes of that pack. The sample count is the minimum of the
// system and rate plus the pack's AF_SIZE, held to the most the rate allows.
AudioFrameLayout ParseAudioSourcePack(const uint8_t* pack);
// The layout of a whole frame: the AAUX source pack of the first sequence, or when that one is
// missing or damaged the first one found in the source slots of the later sequences (block 3 of
// even, block 0 of odd sequences) of the first channel half.
AudioFrameLayout FindAudioLayout(const uint8_t* frame, size_t frameSize);

// Writes `samples` sample frames of `channels` (1: channel 1; 2: channels 1 and 2) interleaved
// as native signed 16-bit values. 16-bit frames carry channel 1 in the first half of the DIF
// sequences and channel 2 in the second; 12-bit frames carry the first stereo pair in the first
// half (the second pair, in the second half, is not taken). Samples whose audio block is missing
// or damaged (wrong block identifier, beyond the frame), samples holding the error code and all
// samples of a frame that is not decodable come out as 0.
void ExtractAudioSamples(const uint8_t* frame, size_t frameSize, const AudioFrameLayout& layout, uint32_t samples,
                         uint32_t channels, int16_t* out);

// Expansion of 12-bit nonlinear DV audio codes to signed 16-bit samples.
// Piecewise-linear expansion by segment of the code. The negative segment 0xC00-0xCFF is offset
// from 0xDFF rather than 0xE00, so it lies 4 above the mirror image of its positive twin
// (0xC00 gives -2044, 0xCFF and 0xD00 both give -1024); that asymmetry is part of the mapping.
int16_t Expand12BitSample(uint16_t code);

}  // namespace ZeDV

// The PCM stream header and format that describe the sound of an interleaved DV stream, computed
// from the DV stream's header and the audio parameters of its first frame.
#pragma once

#include <cstdint>

#include "dv/ze_dv_params.h"
#include "platform/win32.h"

namespace ZeDV {

struct IavsVideoTiming {
    uint32_t rate = 0;            // dwRate of the 'iavs' stream
    uint32_t scale = 0;           // dwScale
    uint64_t length = 0;          // dwLength, in frames
    uint32_t initialFrames = 0;   // the main header's dwInitialFrames
};

struct IavsAudioHeader {
    uint32_t dwInitialFrames = 0;
    uint32_t dwScale = 1;
    uint32_t dwRate = 0;
    uint64_t dwLength = 0;
    uint32_t dwSuggestedBufferSize = 0;
    uint32_t dwSampleSize = 0;
};

// Frames per second in unsigned 32-bit division; 0 when the scale is 0 or exceeds the rate.
uint32_t IavsFramesPerSecond(const IavsVideoTiming& video);

// Header and WAVEFORMATEX of the audio carried by the frames. False, with nothing written, when
// the frame rate is 0 (a scale of 0 or above the rate): the lengths divide by it.
//  length:           ((frames x 1000) / fps x rate) / 1000 in 64 bits, divided by fps as signed
//  buffer size:      (bytes x mode x rate) / fps, signed 32-bit
//  nChannels:        2 when either channel flag is set, else 1
//  nBlockAlign, nAvgBytesPerSec, dwSampleSize: from the audio mode code, whatever the channel count
bool ComputeIavsAudioFormat(const IavsVideoTiming& video, const ZeDVAudioParams& audio, IavsAudioHeader* header,
                            WAVEFORMATEX* format);

}  // namespace ZeDV

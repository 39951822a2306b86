// The benchmark inputs, written once by the test AVI writer and kept under ZE_BENCH_DATA_DIR so
// later runs read them from the page cache.
#pragma once

#include <cstdint>
#include <string>

struct BenchInput {
    std::string path;
    uint64_t indexBytes = 0;   // bytes of index data a reader must take in (idx1 or all ix## chunks)
    uint64_t videoBytes = 0;   // sum of the video chunks' data
    uint64_t audioBytes = 0;   // sum of the audio chunks' data
    uint64_t frames = 0;
};

// 1,000,000 video chunks listed in one idx1.
const BenchInput& Idx1MillionInput();
// 1,000,000 video chunks over four RIFF parts, listed by ix## chunks behind one super index.
const BenchInput& OdmlMillionInput();
// An idx1 file whose first 4 MiB after the 'movi' list hold no "00db"/"00dc" at all.
const BenchInput& NoVideoChunkIn4MiBInput();
// 600 PAL-DV-sized video frames with 48 kHz stereo PCM between them.
const BenchInput& FrameAccessInput();

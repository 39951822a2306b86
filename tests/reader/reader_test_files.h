// Small AVI files for the reader tests, built with the test AVI writer.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/fixtures/ze_avi_formats.h"
#include "tests/fixtures/ze_avi_writer.h"

namespace readertest {

struct VideoFile {
    std::string handler = "XVID";
    int32_t width = 320;
    int32_t height = 240;
    uint32_t rate = 25;
    uint32_t scale = 1;
    size_t frames = 3;
    size_t frameBytes = 64;
    std::vector<uint8_t> firstFrame;  // replaces the first frame's pattern when not empty
    bool audio = false;               // adds 16-bit stereo PCM at 44100 Hz, one chunk per frame
    size_t audioChunkBytes = 1764;
};
zetest::AviModel VideoAvi(const VideoFile& file);

// PAL DV frames (144000 bytes) with packs put where the pack search looks first.
constexpr size_t kDvFrameBytes = 144000;
std::vector<uint8_t> DvFrame(uint8_t seed);
// Five bytes at `offset` of the frame.
void PutPack(std::vector<uint8_t>& frame, size_t offset, uint8_t header, uint8_t pc1, uint8_t pc2, uint8_t pc3,
             uint8_t pc4);
// Offset of the i-th place the pack search looks at (5 (i + i div 15) + 243).
size_t PackSearchOffset(size_t i);

// A 'dvsd' AVI of the given frames with, when audioChunkBytes is not 0, a 48 kHz stereo PCM stream of
// one chunk per frame.
zetest::AviModel DvAvi(const std::vector<std::vector<uint8_t>>& frames, size_t audioChunkBytes);

}  // namespace readertest

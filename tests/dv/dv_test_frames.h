// Hand-built DV frames for the DV tests: zero bytes with correct audio block identifiers, and
// packs and samples put where a test wants them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace dvtest {

constexpr size_t kPalFrameBytes = 144000;
constexpr size_t kNtscFrameBytes = 120000;

struct Frame {
    bool pal = true;
    std::vector<uint8_t> bytes;

    uint32_t Sequences() const { return pal ? 12 : 10; }
    // Byte offset of audio block `block` (0-8) of DIF sequence `sequence`.
    static size_t AudioBlock(uint32_t sequence, uint32_t block) { return sequence * 12000u + 480u + block * 1280u; }

    // Five bytes at `offset`.
    void Put(size_t offset, std::initializer_list<uint8_t> pack);
    // A pack in VAUX block `slot / 15` of the first sequence, at position `slot % 15`.
    void PutVaux(uint32_t slot, std::initializer_list<uint8_t> pack);
    // The AAUX pack of an audio block.
    void PutAaux(uint32_t sequence, uint32_t block, std::initializer_list<uint8_t> pack);
    // AAUX source packs in every sequence's source slot (block 3 of even, block 0 of odd ones):
    // AF_SIZE `extra`, rate code `rate` (0 48k, 1 44.1k, 2 32k) and quantisation `quant`.
    void PutAudioSource(uint32_t extra, uint32_t rate, uint32_t quant);
    // Sets both data bytes of every 16-bit word (or all three of every 12-bit triplet) of the audio
    // blocks of `sequence` to `fill`.
    void FillAudioData(uint32_t sequence, uint8_t fill);
};

// A frame of 625/50 (pal) or 525/60 lines: zeros, header DSF bit, audio block identifiers.
Frame MakeFrame(bool pal);

}  // namespace dvtest

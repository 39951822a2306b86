// Hand-built DV frames for the DV tests: zero bytes with correct audio block identifiers, and
// packs and samples put where a test wants them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <algorithm>
#include <cstring>
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
    void Put(size_t offset, std::initializer_list<uint8_t> pack) {
        std::copy(pack.begin(), pack.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
    }
    // A pack in VAUX block `slot / 15` of the first sequence, at position `slot % 15`.
    void PutVaux(uint32_t slot, std::initializer_list<uint8_t> pack) {
        Put(240 + 80 * (slot / 15) + 3 + 5 * (slot % 15), pack);
    }
    // The AAUX pack of an audio block.
    void PutAaux(uint32_t sequence, uint32_t block, std::initializer_list<uint8_t> pack) {
        Put(AudioBlock(sequence, block) + 3, pack);
    }
    // AAUX source packs in every sequence's source slot (block 3 of even, block 0 of odd ones):
    // AF_SIZE `extra`, rate code `rate` (0 48k, 1 44.1k, 2 32k) and quantisation `quant`.
    void PutAudioSource(uint32_t extra, uint32_t rate, uint32_t quant) {
        const uint8_t pc1 = static_cast<uint8_t>(0xC0 | extra);
        const uint8_t pc3 = static_cast<uint8_t>(0xC0 | (pal ? 0x20 : 0x00));
        const uint8_t pc4 = static_cast<uint8_t>(0x80 | rate << 3 | quant);
        for (uint32_t s = 0; s < Sequences(); ++s)
            PutAaux(s, s % 2 == 0 ? 3 : 0, {0x50, pc1, static_cast<uint8_t>(s < Sequences() / 2 ? 0 : 1), pc3, pc4});
    }
    // Sets both data bytes of every 16-bit word (or all three of every 12-bit triplet) of the audio
    // blocks of `sequence` to `fill`.
    void FillAudioData(uint32_t sequence, uint8_t fill) {
        for (uint32_t b = 0; b < 9; ++b) std::memset(bytes.data() + AudioBlock(sequence, b) + 8, fill, 72);
    }
};

// A frame of 625/50 (pal) or 525/60 lines: zeros, header DSF bit, audio block identifiers.
inline Frame MakeFrame(bool pal) {
    Frame f;
    f.pal = pal;
    f.bytes.assign(pal ? kPalFrameBytes : kNtscFrameBytes, 0);
    f.bytes[3] = pal ? 0x80 : 0x00;
    for (uint32_t s = 0; s < f.Sequences(); ++s) {
        for (uint32_t b = 0; b < 9; ++b) {
            uint8_t* id = f.bytes.data() + Frame::AudioBlock(s, b);
            id[0] = 0x76;
            id[1] = static_cast<uint8_t>(s << 4 | 0x07);
            id[2] = static_cast<uint8_t>(b);
        }
    }
    return f;
}

}  // namespace dvtest

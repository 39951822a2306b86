#include "tests/dv/dv_test_frames.h"

#include <algorithm>
#include <cstring>

namespace dvtest {

void Frame::Put(size_t offset, std::initializer_list<uint8_t> pack) {
    std::copy(pack.begin(), pack.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
}

void Frame::PutVaux(uint32_t slot, std::initializer_list<uint8_t> pack) {
    Put(240 + 80 * (slot / 15) + 3 + 5 * (slot % 15), pack);
}

void Frame::PutAaux(uint32_t sequence, uint32_t block, std::initializer_list<uint8_t> pack) {
    Put(AudioBlock(sequence, block) + 3, pack);
}

void Frame::PutAudioSource(uint32_t extra, uint32_t rate, uint32_t quant) {
    const uint8_t pc1 = static_cast<uint8_t>(0xC0 | extra);
    const uint8_t pc3 = static_cast<uint8_t>(0xC0 | (pal ? 0x20 : 0x00));
    const uint8_t pc4 = static_cast<uint8_t>(0x80 | rate << 3 | quant);
    for (uint32_t s = 0; s < Sequences(); ++s) {
        const uint8_t pc2 = s < Sequences() / 2 ? 0x00 : 0x01;
        PutAaux(s, s % 2 == 0 ? 3 : 0, {0x50, pc1, pc2, pc3, pc4});
    }
}

void Frame::FillAudioData(uint32_t sequence, uint8_t fill) {
    for (uint32_t b = 0; b < 9; ++b) {
        std::memset(bytes.data() + AudioBlock(sequence, b) + 8, fill, 72);
    }
}

Frame MakeFrame(bool pal) {
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

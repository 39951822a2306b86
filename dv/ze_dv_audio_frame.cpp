#include "dv/ze_dv_audio_frame.h"

#include <algorithm>
#include <cstring>

#include "dv/ze_dv_pack_location.h"
#include "dv/ze_dv_params_decode.h"

namespace ZeDV {
namespace {

constexpr uint32_t kAudioBlocksPerSequence = 9;
constexpr uint32_t kAudioDataStart = 8;  // after the block identifier and the AAUX pack
constexpr uint8_t kSectionAudio = 3;

// Samples per frame by system (525/60, 625/50) and rate code (48, 44.1, 32 kHz).
constexpr uint32_t kMinSamples[2][3] = {{1580, 1452, 1053}, {1896, 1742, 1264}};
constexpr uint32_t kMaxSamples[2][3] = {{1620, 1489, 1080}, {kMostSamplesPerFrame, 1786, 1296}};

struct System {
    uint32_t halfSequences;     // DIF sequences per channel half
    uint32_t samplesPerStride;  // samples between two consecutive data positions of one block
};

System SystemOf(const AudioFrameLayout& layout) {
    return layout.system625 ? System{6, 54} : System{5, 45};
}

uint64_t AudioBlockOffset(uint32_t sequence, uint32_t block) {
    return uint64_t{sequence} * kDifSequenceBytes + kFirstAudioBlock + uint64_t{block} * kAudioBlockStride;
}

// Audio blocks of the first 2 x halfSequences sequences whose identifier says what they should be:
// an audio section of that sequence and block number, wholly inside the frame.
class AudioBlockMap {
public:
    AudioBlockMap(const uint8_t* frame, size_t frameSize, uint32_t sequences) {
        for (uint32_t s = 0; s < sequences && s < kMaxSequences; ++s) {
            for (uint32_t b = 0; b < kAudioBlocksPerSequence; ++b) {
                const uint64_t offset = AudioBlockOffset(s, b);
                const uint8_t* block = offset + kDifBlockBytes <= frameSize ? frame + offset : nullptr;
                if (block != nullptr && (block[0] >> 5) == kSectionAudio && (block[1] >> 4) == s && block[2] == b) {
                    m_blocks[s][b] = block;
                }
            }
        }
    }
    const uint8_t* Block(uint32_t sequence, uint32_t block) const { return m_blocks[sequence][block]; }

private:
    static constexpr uint32_t kMaxSequences = 12;
    const uint8_t* m_blocks[kMaxSequences][kAudioBlocksPerSequence] = {};
};

// Where sample n of a channel half lies: the sequence within the half, the audio block and the
// index of the sample's data word within that block.
struct SamplePlace {
    uint32_t sequence;
    uint32_t block;
    uint32_t word;
};

SamplePlace PlaceOf(uint32_t n, const System& sys) {
    const uint32_t r = n % 3;
    return SamplePlace{(n / 3 + 2 * r) % sys.halfSequences, 3 * r + (n % sys.samplesPerStride) / (sys.samplesPerStride / 3),
                       n / sys.samplesPerStride};
}

int16_t Read16(const uint8_t* block, uint32_t word) {
    const uint32_t at = kAudioDataStart + 2 * word;
    if (block == nullptr || at + 2 > kDifBlockBytes) return 0;
    const uint16_t code = static_cast<uint16_t>(block[at] << 8 | block[at + 1]);
    return code == 0x8000 ? 0 : static_cast<int16_t>(code);  // 0x8000 marks a missing sample
}

void Read12(const uint8_t* block, uint32_t word, int16_t* first, int16_t* second) {
    const uint32_t at = kAudioDataStart + 3 * word;
    if (block == nullptr || at + 3 > kDifBlockBytes) {
        *first = *second = 0;
        return;
    }
    const uint16_t a = static_cast<uint16_t>(block[at] << 4 | block[at + 2] >> 4);
    const uint16_t b = static_cast<uint16_t>(block[at + 1] << 4 | (block[at + 2] & 0x0F));
    // 0x800 marks a missing sample: silence rather than the full-scale negative value it expands to.
    *first = a == 0x800 ? 0 : Expand12BitSample(a);
    *second = b == 0x800 ? 0 : Expand12BitSample(b);
}

}  // namespace

uint64_t AudioSourcePackOffset() {
    return AauxPackOffset(kAauxSourceBlock);
}

AudioFrameLayout ParseAudioSourcePack(const uint8_t* pack) {
    AudioFrameLayout layout;
    if (pack == nullptr || pack[0] != kPackAauxSource) return layout;
    const uint32_t rate = (pack[4] >> 3) & 7u;
    if (rate > 2) return layout;
    layout.system625 = (pack[3] & 0x20) != 0;
    layout.sampleRateCode = rate;
    layout.quantization = pack[4] & 7u;
    const int system = layout.system625 ? 1 : 0;
    layout.samples = std::min(kMinSamples[system][rate] + (pack[1] & 0x3Fu), kMaxSamples[system][rate]);
    layout.countKnown = true;
    layout.decodable = layout.quantization <= 1;
    return layout;
}

AudioFrameLayout FindAudioLayout(const uint8_t* frame, size_t frameSize) {
    constexpr uint32_t kHalfSequencesAtMost = 6;
    for (uint32_t s = 0; s < kHalfSequencesAtMost && frame != nullptr; ++s) {
        const uint64_t offset = AudioBlockOffset(s, s % 2 == 0 ? kAauxSourceBlock : 0) + 3;
        if (offset + CZeDVDataPack::kSize > frameSize) break;
        const AudioFrameLayout layout = ParseAudioSourcePack(frame + offset);
        if (layout.countKnown) return layout;
    }
    return AudioFrameLayout{};
}

void ExtractAudioSamples(const uint8_t* frame, size_t frameSize, const AudioFrameLayout& layout, uint32_t samples,
                         uint32_t channels, int16_t* out) {
    std::memset(out, 0, sizeof(int16_t) * samples * channels);
    if (frame == nullptr || !layout.decodable || channels == 0) return;
    const System sys = SystemOf(layout);
    const AudioBlockMap blocks(frame, frameSize, 2 * sys.halfSequences);
    for (uint32_t n = 0; n < samples; ++n) {
        const SamplePlace p = PlaceOf(n, sys);
        int16_t left = 0;
        int16_t right = 0;
        if (layout.quantization == 0) {
            left = Read16(blocks.Block(p.sequence, p.block), p.word);
            right = Read16(blocks.Block(p.sequence + sys.halfSequences, p.block), p.word);
        } else {
            Read12(blocks.Block(p.sequence, p.block), p.word, &left, &right);
        }
        out[n * channels] = left;
        if (channels > 1) out[n * channels + 1] = right;
    }
}

}  // namespace ZeDV

// ---- 12-bit nonlinear samples ------------------------------------------------------------------

namespace ZeDV {
namespace {

// One segment: codes first..last map to (code - origin) * scale. Tried in this order.
struct Segment {
    uint16_t first;
    uint16_t last;
    int32_t origin;
    int32_t scale;
};

constexpr Segment kSegments[] = {
    {0x700, 0x7FF, 0x600, 64},
    {0x600, 0x6FF, 0x500, 32},
    {0x500, 0x5FF, 0x400, 16},
    {0x400, 0x4FF, 0x300, 8},
    {0x300, 0x3FF, 0x200, 4},
    {0x200, 0x2FF, 0x100, 2},
    {0x800, 0x8FF, 0xA00, 64},
    {0x900, 0x9FF, 0xB00, 32},
    {0xA00, 0xAFF, 0xC00, 16},
    {0xB00, 0xBFF, 0xD00, 8},
    {0xC00, 0xCFF, 0xDFF, 4},
    {0xD00, 0xDFF, 0xF00, 2},
    {0xE00, 0xFFF, 0x1000, 1},
};

}  // namespace

int16_t Expand12BitSample(uint16_t code) {
    for (const Segment& s : kSegments) {
        if (code >= s.first && code <= s.last) {
            return static_cast<int16_t>((static_cast<int32_t>(code) - s.origin) * s.scale);
        }
    }
    return static_cast<int16_t>(code);  // 0x000-0x1FF: linear already
}

}  // namespace ZeDV

// Sound out of one DV frame: sample counts, the unshuffling of 16-bit and 12-bit samples,
// damaged blocks and error codes.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <vector>

#include "dv/ze_dv_audio_frame.h"
#include "tests/dv/dv_test_frames.h"

namespace {

using dvtest::Frame;
using dvtest::MakeFrame;

ZeDV::AudioFrameLayout LayoutOf(const Frame& f) {
    return ZeDV::FindAudioLayout(f.bytes.data(), f.bytes.size());
}

std::vector<int16_t> Extract(const Frame& f, uint32_t samples, uint32_t channels, size_t size = 0) {
    std::vector<int16_t> out(samples * channels, 12345);
    ZeDV::ExtractAudioSamples(f.bytes.data(), size != 0 ? size : f.bytes.size(), LayoutOf(f), samples, channels,
                              out.data());
    return out;
}

TEST(DVAudioLayout, SampleCountFromTheSourcePack) {
    const struct {
        bool pal;
        uint32_t extra, rate, quant;
        uint32_t samples;
        bool decodable;
    } cases[] = {
        {true, 24, 0, 0, 1920, true},  {false, 20, 0, 0, 1600, true}, {false, 22, 0, 0, 1602, true},
        {false, 63, 0, 0, 1620, true},  // held to the most a 525/60 frame carries
        {true, 0, 1, 0, 1742, true},   {true, 16, 2, 1, 1280, true},  {false, 27, 2, 1, 1080, true},
        {false, 0, 0, 2, 1580, false},  // 20-bit: counted, not decoded
    };
    for (const auto& c : cases) {
        Frame f = MakeFrame(c.pal);
        f.PutAudioSource(c.extra, c.rate, c.quant);
        const ZeDV::AudioFrameLayout l = LayoutOf(f);
        EXPECT_TRUE(l.countKnown);
        EXPECT_EQ(l.samples, c.samples) << c.pal << " " << c.extra << " " << c.rate;
        EXPECT_EQ(l.decodable, c.decodable);
        EXPECT_EQ(l.system625, c.pal);
    }
    Frame f = MakeFrame(true);
    f.PutAudioSource(24, 3, 0);  // no such rate
    EXPECT_FALSE(LayoutOf(f).countKnown);
    EXPECT_FALSE(LayoutOf(MakeFrame(true)).countKnown);

    // A damaged source pack in the first sequence: the next sequence's pack serves.
    f = MakeFrame(true);
    f.PutAudioSource(24, 0, 0);
    f.PutAaux(0, 3, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF});
    EXPECT_EQ(LayoutOf(f).samples, 1920u);
    EXPECT_FALSE(ZeDV::ParseAudioSourcePack(f.bytes.data() + ZeDV::AudioSourcePackOffset()).countKnown);
}

// Gives every 16-bit word of every audio block a value of its own: sequence, block and word.
uint16_t WordValue(uint32_t sequence, uint32_t block, uint32_t word) {
    return static_cast<uint16_t>((sequence * 9 + block) * 36 + word + 1);
}

Frame NumberedFrame(bool pal) {
    Frame f = MakeFrame(pal);
    f.PutAudioSource(pal ? 48 : 40, 0, 0);
    for (uint32_t s = 0; s < f.Sequences(); ++s) {
        for (uint32_t b = 0; b < 9; ++b) {
            for (uint32_t w = 0; w < 36; ++w) {
                const uint16_t v = WordValue(s, b, w);
                f.bytes[Frame::AudioBlock(s, b) + 8 + 2 * w] = static_cast<uint8_t>(v >> 8);
                f.bytes[Frame::AudioBlock(s, b) + 9 + 2 * w] = static_cast<uint8_t>(v);
            }
        }
    }
    return f;
}

TEST(DVAudioExtract, SixteenBitSamplesVisitEveryWordOnceInTheStandardOrder) {
    for (bool pal : {true, false}) {
        const Frame f = NumberedFrame(pal);
        const uint32_t half = f.Sequences() / 2;
        const uint32_t samples = pal ? 1944 : 1620;  // every word of a half
        const std::vector<int16_t> pcm = Extract(f, samples, 2);
        std::set<int16_t> left;
        for (uint32_t n = 0; n < samples; ++n) {
            left.insert(pcm[2 * n]);
            // Channel 2 sits at the same place in the second half of the sequences.
            EXPECT_EQ(pcm[2 * n + 1], pcm[2 * n] + static_cast<int16_t>(half * 9 * 36)) << n;
        }
        EXPECT_EQ(left.size(), samples);
        EXPECT_EQ(*left.begin(), 1);
        EXPECT_EQ(*left.rbegin(), static_cast<int16_t>(half * 9 * 36));

        // First words of the blocks of sequence 0, from the standard's shuffle table.
        const uint32_t firstRow525[9] = {0, 15, 30, 10, 25, 40, 5, 20, 35};
        const uint32_t firstRow625[9] = {0, 18, 36, 13, 31, 49, 8, 26, 44};
        for (uint32_t b = 0; b < 9; ++b) {
            const uint32_t n = pal ? firstRow625[b] : firstRow525[b];
            EXPECT_EQ(pcm[2 * n], WordValue(0, b, 0)) << pal << " block " << b;
        }
        // The next word of a block is P samples later.
        EXPECT_EQ(pcm[2 * (pal ? 54 : 45)], WordValue(0, 0, 1));
        EXPECT_EQ(pcm[2 * 1], WordValue(2, 3, 0));
    }
}

TEST(DVAudioExtract, CountsBeyondWhatTheBlocksHoldAreSilent) {
    // A 12-bit frame at 48 kHz claims more samples than its triplets hold.
    Frame g = MakeFrame(false);
    g.PutAudioSource(40, 0, 1);
    for (uint32_t s = 0; s < 5; ++s) g.FillAudioData(s, 0x11);
    const std::vector<int16_t> pcm = Extract(g, 1620, 2);
    EXPECT_NE(pcm[2 * 1079], 0);
    for (uint32_t n = 1080; n < 1620; ++n) ASSERT_EQ(pcm[2 * n], 0) << n;
}

TEST(DVAudioExtract, TwelveBitCodesExpandByTheTableAndTheSecondPairIsNotTaken) {
    const struct {
        uint8_t b0, b1, b2;
        int16_t first, second;
    } cases[] = {
        {0x7F, 0x80, 0xF0, 32704, 0},       // 0x7FF, 0x800 (error code: silence)
        {0xC0, 0xCF, 0x0F, -2044, -1024},   // 0xC00, 0xCFF
        {0xD0, 0xFF, 0x0F, -1024, -1},      // 0xD00, 0xFFF
        {0x1F, 0x20, 0xF0, 511, 512},       // 0x1FF, 0x200
        {0x90, 0x0A, 0x0B, -16384, 171},    // 0x900, 0x0AB
    };
    for (bool pal : {true, false}) {
        for (const auto& c : cases) {
            Frame f = MakeFrame(pal);
            f.PutAudioSource(pal ? 16 : 20, 2, 1);
            const uint32_t half = f.Sequences() / 2;
            for (uint32_t s = 0; s < f.Sequences(); ++s) {
                for (uint32_t b = 0; b < 9; ++b) {
                    for (uint32_t t = 0; t < 24; ++t) {
                        uint8_t* p = f.bytes.data() + Frame::AudioBlock(s, b) + 8 + 3 * t;
                        // Channels 3/4 in the second half get other codes, which must not show up.
                        p[0] = s < half ? c.b0 : 0x33;
                        p[1] = s < half ? c.b1 : 0x44;
                        p[2] = s < half ? c.b2 : 0x55;
                    }
                }
            }
            const uint32_t samples = LayoutOf(f).samples;
            const std::vector<int16_t> pcm = Extract(f, samples, 2);
            for (uint32_t n = 0; n < samples; ++n) {
                ASSERT_EQ(pcm[2 * n], c.first) << n;
                ASSERT_EQ(pcm[2 * n + 1], c.second) << n;
            }
        }
    }
}

TEST(DVAudioExtract, TwelveBitTripletsVisitEveryPlaceOnce) {
    Frame f = MakeFrame(false);
    f.PutAudioSource(27, 2, 1);  // 1080 samples, every triplet of the first half
    std::map<std::pair<int16_t, int16_t>, uint32_t> place;
    for (uint32_t s = 0; s < 5; ++s) {
        for (uint32_t b = 0; b < 9; ++b) {
            for (uint32_t t = 0; t < 24; ++t) {
                const uint32_t id = (s * 9 + b) * 24 + t;  // codes 0x000-0x1FF expand unchanged
                const uint16_t first = static_cast<uint16_t>(id % 512);
                const uint16_t second = static_cast<uint16_t>(id / 512);
                uint8_t* p = f.bytes.data() + Frame::AudioBlock(s, b) + 8 + 3 * t;
                p[0] = static_cast<uint8_t>(first >> 4);
                p[1] = static_cast<uint8_t>(second >> 4);
                p[2] = static_cast<uint8_t>((first & 0xF) << 4 | (second & 0xF));
                place[{static_cast<int16_t>(first), static_cast<int16_t>(second)}] = id;
            }
        }
    }
    const std::vector<int16_t> pcm = Extract(f, 1080, 2);
    std::set<uint32_t> seen;
    for (uint32_t n = 0; n < 1080; ++n) seen.insert(place.at({pcm[2 * n], pcm[2 * n + 1]}));
    EXPECT_EQ(seen.size(), 1080u);
    EXPECT_EQ(place.at({pcm[2 * 10], pcm[2 * 10 + 1]}), (0u * 9 + 3) * 24);  // sample 10: sequence 0, block 3
    EXPECT_EQ(place.at({pcm[2 * 45], pcm[2 * 45 + 1]}), 1u);                // sample 45: block 0, triplet 1
}

TEST(DVAudioExtract, DamagedBlocksErrorCodesAndShortFramesGiveSilenceOnlyWhereTheyAre) {
    Frame f = MakeFrame(true);
    f.PutAudioSource(48, 0, 0);  // 1944 samples: every word of a half
    for (uint32_t s = 0; s < 12; ++s) f.FillAudioData(s, 0x01);  // every sample 0x0101
    f.bytes[Frame::AudioBlock(1, 4)] = 0x00;                     // not an audio block any more
    f.bytes[Frame::AudioBlock(7, 2) + 1] = 0x27;                 // identifier names another sequence
    f.bytes[Frame::AudioBlock(8, 5) + 8] = 0x80;                 // one error code: 0x8000
    f.bytes[Frame::AudioBlock(8, 5) + 9] = 0x00;
    const std::vector<int16_t> pcm = Extract(f, 1944, 2);
    uint32_t silentLeft = 0;
    uint32_t silentRight = 0;
    for (uint32_t n = 0; n < 1944; ++n) {
        EXPECT_TRUE(pcm[2 * n] == 0 || pcm[2 * n] == 0x0101);
        EXPECT_TRUE(pcm[2 * n + 1] == 0 || pcm[2 * n + 1] == 0x0101);
        silentLeft += pcm[2 * n] == 0;
        silentRight += pcm[2 * n + 1] == 0;
    }
    EXPECT_EQ(silentLeft, 36u);        // the 36 words of one block
    EXPECT_EQ(silentRight, 36u + 1u);  // one block and one error code

    // Cut after the first sequence: what lies beyond is silent, the first sequence still plays.
    const std::vector<int16_t> cut = Extract(f, 1944, 2, 12000);
    EXPECT_EQ(cut[0], 0x0101);
    uint32_t playing = 0;
    for (uint32_t n = 0; n < 1944; ++n) playing += cut[2 * n] != 0;
    EXPECT_EQ(playing, 9u * 36u);  // one sequence of channel 1
    for (uint32_t n = 0; n < 1944; ++n) ASSERT_EQ(cut[2 * n + 1], 0);

    // No usable source pack anywhere: all silence.
    Frame g = MakeFrame(true);
    g.FillAudioData(0, 0x01);
    const std::vector<int16_t> none = Extract(g, 1944, 2);
    for (int16_t v : none) ASSERT_EQ(v, 0);
}

}  // namespace

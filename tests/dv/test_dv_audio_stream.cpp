// PCM by sample position over a run of DV frames: frame boundaries with varying sample counts,
// the sequential cursor, random access, frames without sound, the end of the stream.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "dv/ze_dv_audio_stream.h"
#include "tests/dv/dv_test_frames.h"

namespace {

using dvtest::Frame;

// 525/60 frames, frame k filled with the byte k + 1 so every sample of it reads (k + 1) x 257.
struct Material {
    std::vector<std::vector<uint8_t>> frames;
    int reads = 0;
    bool failReads = false;

    ZeDV::FrameAccess Access() {
        ZeDV::FrameAccess a;
        a.frameCount = [this]() { return static_cast<uint64_t>(frames.size()); };
        a.frameSize = [this](uint64_t f) { return static_cast<uint32_t>(frames[f].size()); };
        a.readFrame = [this](uint64_t f, uint32_t offset, uint8_t* out, uint32_t size, uint32_t* got) -> HRESULT {
            ++reads;
            if (failReads) return E_FAIL;
            const std::vector<uint8_t>& bytes = frames[f];
            *got = offset >= bytes.size() ? 0 : std::min<uint32_t>(size, static_cast<uint32_t>(bytes.size()) - offset);
            std::memcpy(out, bytes.data() + offset, *got);
            return S_OK;
        };
        return a;
    }
};

constexpr uint32_t kNoPack = 0xFFFF;

Material MakeMaterial(const std::vector<uint32_t>& afSizes) {
    Material m;
    for (size_t k = 0; k < afSizes.size(); ++k) {
        Frame f = dvtest::MakeFrame(false);
        if (afSizes[k] != kNoPack) f.PutAudioSource(afSizes[k], 0, 0);
        for (uint32_t s = 0; s < 10; ++s) f.FillAudioData(s, static_cast<uint8_t>(k + 1));
        m.frames.push_back(f.bytes);
    }
    return m;
}

ZeDV::PcmFormat Stereo16() {
    ZeDV::PcmFormat p;
    p.channels = 2;
    p.bitsPerSample = 16;
    p.sampleRate = 48000;
    p.frameRate = 30000;
    p.frameScale = 1001;
    return p;
}

// The PCM the frames should give: `counts[k]` stereo samples of value (k + 1) x 257 each.
std::vector<uint8_t> Expected(const std::vector<uint32_t>& counts) {
    std::vector<uint8_t> out;
    for (size_t k = 0; k < counts.size(); ++k) {
        const uint8_t v = static_cast<uint8_t>(k + 1);
        out.insert(out.end(), counts[k] * 4, v);  // 257 x v is the byte v twice
    }
    return out;
}

std::vector<uint8_t> ReadBytes(ZeDV::CZeDVAudioStream& s, uint64_t position, size_t count) {
    std::vector<uint8_t> out(count, 0xEE);
    EXPECT_EQ(s.Read(position, out.data(), count), S_OK);
    return out;
}

TEST(DVAudioStream, FramesOfVaryingLengthJoinUpAndAreDecodedOnceEach) {
    // Sample counts 1600, 1602, 1602, 1620 (an AF_SIZE of 63 is held to the 525/60 maximum).
    Material m = MakeMaterial({20, 22, 22, 63});
    ZeDV::CZeDVAudioStream s;
    s.Reset(m.Access(), Stereo16());
    const std::vector<uint8_t> all = Expected({1600, 1602, 1602, 1620});
    std::vector<uint8_t> joined;
    for (uint64_t position = 0; position < 6424; position += 100) {
        std::vector<uint8_t> out(400);
        ASSERT_EQ(s.Read(position, out.data(), out.size()), S_OK);
        joined.insert(joined.end(), out.begin(), out.end());
    }
    joined.resize(all.size());
    EXPECT_EQ(joined, all);
    EXPECT_EQ(m.reads, 4 + 4);  // one source pack and one whole frame per frame

    // Random access, across frame boundaries, lands on the same bytes.
    for (uint64_t start : {1599ull, 3201ull, 4803ull, 0ull}) {
        EXPECT_EQ(ReadBytes(s, start, 12), std::vector<uint8_t>(all.begin() + start * 4, all.begin() + start * 4 + 12))
            << start;
    }
    uint64_t start = 0;
    ASSERT_EQ(s.FrameStart(3, &start), S_OK);
    EXPECT_EQ(start, 4804u);
}

TEST(DVAudioStream, FramesWithoutSoundKeepTheNominalTimelineAndAreSilent) {
    // Frame 1 has no source pack, frame 2 is a drop frame with no bytes at all.
    Material m = MakeMaterial({20, kNoPack, 22, 22});
    m.frames[2].clear();
    ZeDV::CZeDVAudioStream s;
    s.Reset(m.Access(), Stereo16());
    // 525/60 at 48 kHz averages 1601.6 samples: frames 1 and 2 take 1602 and 1601 by the clock.
    std::vector<uint8_t> expected = Expected({1600, 1602, 1601, 1602});
    std::fill(expected.begin() + 1600 * 4, expected.begin() + (1600 + 1602 + 1601) * 4, 0);
    EXPECT_EQ(ReadBytes(s, 0, expected.size()), expected);

    // A clock far from any DV rate (a damaged header) gives a frame without a pack no more than
    // the most a DV frame carries.
    ZeDV::PcmFormat odd = Stereo16();
    odd.sampleRate = 0xFFFFFFFFu;
    odd.frameRate = 1;
    odd.frameScale = 1;
    s.Reset(m.Access(), odd);
    uint64_t start = 0;
    ASSERT_EQ(s.FrameStart(2, &start), S_OK);
    EXPECT_EQ(start, 1600u + 1944u);
}

TEST(DVAudioStream, PastTheEndIsSilenceAndFailuresOfTheFramesComeBack) {
    Material m = MakeMaterial({20, 22});
    ZeDV::CZeDVAudioStream s;
    s.Reset(m.Access(), Stereo16());
    std::vector<uint8_t> tail = ReadBytes(s, 3000, 4000);
    EXPECT_EQ(std::count(tail.begin(), tail.begin() + 202 * 4, 2), 202 * 4);
    EXPECT_EQ(std::count(tail.begin() + 202 * 4, tail.end(), 0), 4000 - 202 * 4);
    EXPECT_EQ(ReadBytes(s, 1000000, 16), std::vector<uint8_t>(16, 0));

    // An index entry claiming far more than a frame: only the part that holds the sound is read.
    Material big = MakeMaterial({20, 22});
    ZeDV::FrameAccess access = big.Access();
    access.frameSize = [](uint64_t) { return 1000000u; };
    uint32_t largestAsked = 0;
    auto read = access.readFrame;
    access.readFrame = [&](uint64_t f, uint32_t offset, uint8_t* out, uint32_t size, uint32_t* got) {
        largestAsked = std::max(largestAsked, size);
        return read(f, offset, out, size, got);
    };
    std::vector<uint8_t> frameBuffer;
    ZeDV::CZeDVAudioStream u;
    u.Reset(access, Stereo16(), &frameBuffer);
    EXPECT_EQ(ReadBytes(u, 1598, 16), (std::vector<uint8_t>{1, 1, 1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2, 2, 2}));
    EXPECT_LE(largestAsked, 144000u);
    EXPECT_LE(frameBuffer.size(), 144000u);

    Material bad = MakeMaterial({20, 22});
    bad.failReads = true;
    ZeDV::CZeDVAudioStream t;
    t.Reset(bad.Access(), Stereo16());
    std::vector<uint8_t> out(64, 0xEE);
    EXPECT_EQ(t.Read(0, out.data(), out.size()), E_FAIL);
    EXPECT_EQ(out, std::vector<uint8_t>(64, 0));
}

TEST(DVAudioStream, MonoAndOtherWidths) {
    Material m = MakeMaterial({20, 22});
    ZeDV::CZeDVAudioStream s;
    ZeDV::PcmFormat mono = Stereo16();
    mono.channels = 1;
    s.Reset(m.Access(), mono);
    // One channel: two bytes per sample frame, so position 1599 starts 2 bytes before frame 1.
    EXPECT_EQ(ReadBytes(s, 1599, 4), (std::vector<uint8_t>{1, 1, 2, 2}));

    ZeDV::PcmFormat wide = Stereo16();
    wide.bitsPerSample = 20;
    s.Reset(m.Access(), wide);
    EXPECT_EQ(ReadBytes(s, 0, 32), std::vector<uint8_t>(32, 0));
}

}  // namespace

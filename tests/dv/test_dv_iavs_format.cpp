// The PCM stream that describes the sound of an interleaved DV stream.
#include <gtest/gtest.h>

#include <vector>

#include "dv/ze_dv_iavs_audio_format.h"

namespace {

ZeDVAudioParams Audio(uint32_t mode, uint8_t first, uint8_t second, uint32_t rate = 48000, uint32_t bits = 16) {
    ZeDVAudioParams a;
    a.sampleRate = rate;
    a.bitsPerSample = bits;
    a.audioModeCode = mode;
    a.firstChannel = first;
    a.secondChannel = second;
    return a;
}

TEST(DVIavsAudioFormat, PalTwoHundredFiftyFrames) {
    ZeDV::IavsVideoTiming video{25, 1, 250, 3};
    ZeDV::IavsAudioHeader h;
    WAVEFORMATEX w{};
    ASSERT_TRUE(ZeDV::ComputeIavsAudioFormat(video, Audio(1, 0, 0), &h, &w));
    EXPECT_EQ((std::vector<uint64_t>{480000, 3840, 2, 1, 48000, 3, 1, 16, 0}),
              (std::vector<uint64_t>{h.dwLength, h.dwSuggestedBufferSize, h.dwSampleSize, h.dwScale, h.dwRate,
                                     h.dwInitialFrames, w.wFormatTag, w.wBitsPerSample, w.cbSize}));
    // Channels follow the flags, the block the mode: mode 2 without flags is one channel of 4-byte
    // blocks; a single flag with mode 1, as DV camcorders and ffmpeg write it, two channels of 2 bytes.
    const struct {
        uint32_t mode;
        uint8_t first, second;
        uint32_t channels, blockAlign, bytesPerSecond;
    } cases[] = {{1, 0, 0, 1, 2, 96000}, {2, 1, 1, 2, 4, 192000}, {2, 0, 0, 1, 4, 192000}, {1, 1, 0, 2, 2, 96000}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.mode << " " << int(c.first) << int(c.second));
        ASSERT_TRUE(ZeDV::ComputeIavsAudioFormat(video, Audio(c.mode, c.first, c.second), &h, &w));
        EXPECT_EQ((std::vector<uint32_t>{c.channels, c.blockAlign, c.bytesPerSecond}),
                  (std::vector<uint32_t>{w.nChannels, w.nBlockAlign, w.nAvgBytesPerSec}));
    }
}

TEST(DVIavsAudioFormat, IntegerFrameRateAndItsZeroGuard) {
    ZeDV::IavsAudioHeader h;
    WAVEFORMATEX w{};
    // 30000/1001 counts as 29 frames per second: 300 frames last 10344 ms.
    ASSERT_TRUE(ZeDV::ComputeIavsAudioFormat({30000, 1001, 300, 0}, Audio(1, 1, 0, 32000), &h, &w));
    EXPECT_EQ(h.dwLength, 331008u);
    EXPECT_EQ(h.dwSuggestedBufferSize, 2206u);  // 64000 / 29
    // Fewer than one frame a second: nothing is computed.
    h.dwLength = 7;
    EXPECT_FALSE(ZeDV::ComputeIavsAudioFormat({1, 2, 300, 0}, Audio(1, 1, 0), &h, &w));
    EXPECT_FALSE(ZeDV::ComputeIavsAudioFormat({25, 0, 300, 0}, Audio(1, 1, 0), &h, &w));
    EXPECT_EQ(h.dwLength, 7u);
    // A rate of 2^31 or more frames a second divides as a negative number, as 32-bit code does.
    ASSERT_TRUE(ZeDV::ComputeIavsAudioFormat({0xFFFFFFFFu, 1, 1, 0}, Audio(1, 1, 0), &h, &w));
    EXPECT_EQ(h.dwSuggestedBufferSize, static_cast<uint32_t>(-96000));
}

}  // namespace

// The PCM stream that describes the sound of an interleaved DV stream.
#include <gtest/gtest.h>

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
    EXPECT_EQ(h.dwLength, 480000u);
    EXPECT_EQ(h.dwSuggestedBufferSize, 3840u);
    EXPECT_EQ(h.dwSampleSize, 2u);
    EXPECT_EQ(h.dwScale, 1u);
    EXPECT_EQ(h.dwRate, 48000u);
    EXPECT_EQ(h.dwInitialFrames, 3u);
    EXPECT_EQ(w.wFormatTag, 1);
    EXPECT_EQ(w.nChannels, 1);
    EXPECT_EQ(w.nBlockAlign, 2);
    EXPECT_EQ(w.nAvgBytesPerSec, 96000u);
    EXPECT_EQ(w.wBitsPerSample, 16);
    EXPECT_EQ(w.cbSize, 0);

    ASSERT_TRUE(ZeDV::ComputeIavsAudioFormat(video, Audio(2, 1, 1), &h, &w));
    EXPECT_EQ(w.nChannels, 2);
    EXPECT_EQ(w.nBlockAlign, 4);
    EXPECT_EQ(w.nAvgBytesPerSec, 192000u);
    // Channels follow the flags, the block the mode: mode 2 without flags is one channel of 4-byte blocks.
    ASSERT_TRUE(ZeDV::ComputeIavsAudioFormat(video, Audio(2, 0, 0), &h, &w));
    EXPECT_EQ(w.nChannels, 1);
    EXPECT_EQ(w.nBlockAlign, 4);
    // A single flag with mode 1, as DV camcorders and ffmpeg write it: two channels, 2-byte blocks.
    ASSERT_TRUE(ZeDV::ComputeIavsAudioFormat(video, Audio(1, 1, 0), &h, &w));
    EXPECT_EQ(w.nChannels, 2);
    EXPECT_EQ(w.nBlockAlign, 2);
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

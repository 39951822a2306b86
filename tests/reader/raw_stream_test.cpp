// Raw access: DV frames and stored audio chunks as the file holds them, and their descriptions.
#include <cstring>

#include "tests/fixtures/ze_temp_file.h"
#include "tests/support/reader_module.h"
#include "tests/reader/reader_test_files.h"

namespace readertest {
namespace {

using zetest::Descriptor;
using zetest::ReaderTest;

constexpr size_t kAudioChunk = 7680;

class RawStream : public ReaderTest {
protected:
    void OpenDv(size_t frames = 4, size_t audioChunk = kAudioChunk) {
        std::vector<std::vector<uint8_t>> list;
        for (size_t i = 0; i < frames; ++i) list.push_back(DvFrame(static_cast<uint8_t>(i * 11)));
        layout = zetest::BuildAvi(DvAvi(list, audioChunk));
        file = std::make_unique<zetest::TempFile>(layout.bytes);
        GUID selected{};
        ASSERT_EQ(S_OK, raw->InitRawStream(file->c_str(), &selected, 0));
        EXPECT_TRUE(IsEqualGUID(ZeMediaGuid::Yuy2, selected));
    }
    // Bytes of chunk `n` of the file's chunk table (video and audio chunks alternate).
    std::vector<uint8_t> Chunk(size_t n, size_t bytes) const {
        const auto at = layout.bytes.begin() + static_cast<long>(layout.dataPos[n]);
        return std::vector<uint8_t>(at, at + static_cast<long>(bytes));
    }

    zetest::AviLayout layout;
    std::unique_ptr<zetest::TempFile> file;
};

TEST_F(RawStream, VideoFramesByTime) {
    OpenDv();
    // 40 ms a frame at 25 frames per second, in each time format.
    struct Ask {
        DWORD format;
        LONGLONG time;
        size_t frame;
    } asks[] = {{ZE_TIME_MILLISECONDS, 0, 0}, {ZE_TIME_MILLISECONDS, 81, 2}, {ZE_TIME_SECONDS, 0, 0},
                {ZE_TIME_100KTH_SECONDS, 12000, 3}, {ZE_TIME_100KTH_SECONDS, 4000, 1}};
    for (const Ask& a : asks) {
        BYTE* sample = nullptr;
        DWORD size = 0;
        ASSERT_EQ(S_OK, raw->GetRawSample(ZE_RAW_VIDEO, a.format, &a.time, &sample, nullptr, &size));
        ASSERT_NE(nullptr, sample);
        EXPECT_EQ(kDvFrameBytes, size);
        EXPECT_EQ(0, std::memcmp(Chunk(2 * a.frame, kDvFrameBytes).data(), sample, kDvFrameBytes)) << "frame " << a.frame;
    }
    EXPECT_TRUE(NothingReported());
}

TEST_F(RawStream, VideoPastTheEnd) {
    OpenDv();
    BYTE* sample = reinterpret_cast<BYTE*>(0x1);
    // Frame 4 of 4 passes the end test and fails in the read.
    const LONGLONG atCount = 160;
    EXPECT_TRUE(FAILED(raw->GetRawSample(ZE_RAW_VIDEO, ZE_TIME_MILLISECONDS, &atCount, &sample, nullptr, nullptr)));
    EXPECT_EQ(nullptr, sample);
    EXPECT_FALSE(TakeReports().empty());
    const LONGLONG beyond = 200;
    sample = reinterpret_cast<BYTE*>(0x1);
    EXPECT_EQ(E_INVALIDARG, raw->GetRawSample(ZE_RAW_VIDEO, ZE_TIME_MILLISECONDS, &beyond, &sample, nullptr, nullptr));
    EXPECT_EQ(nullptr, sample);
    EXPECT_TRUE(ReportedOnce(E_INVALIDARG, "CZEAviReader::GetRawSample"));
    const LONGLONG negative = -40;
    EXPECT_TRUE(Fails(raw->GetRawSample(ZE_RAW_VIDEO, ZE_TIME_MILLISECONDS, &negative, &sample, nullptr, nullptr),
                      E_INVALIDARG, "CZEAviReader::GetRawSample"));
    // Still usable.
    const LONGLONG first = 0;
    EXPECT_EQ(S_OK, raw->GetRawSample(ZE_RAW_VIDEO, ZE_TIME_MILLISECONDS, &first, &sample, nullptr, nullptr));
}

TEST_F(RawStream, AudioChunksComeInStoredOrder) {
    OpenDv();
    const LONGLONG time = 500;
    for (size_t chunk = 0; chunk < 4; ++chunk) {
        BYTE* sample = nullptr;
        DWORD size = 0;
        ASSERT_EQ(S_OK, raw->GetRawSample(ZE_RAW_AUDIO, ZE_TIME_MILLISECONDS, &time, &sample, nullptr, &size));
        EXPECT_EQ(kAudioChunk, size);
        EXPECT_EQ(0, std::memcmp(Chunk(2 * chunk + 1, kAudioChunk).data(), sample, kAudioChunk)) << "chunk " << chunk;
    }
    // After the last stored chunk there is nothing more.
    BYTE* sample = reinterpret_cast<BYTE*>(0x1);
    EXPECT_EQ(E_FAIL, raw->GetRawSample(ZE_RAW_AUDIO, ZE_TIME_MILLISECONDS, &time, &sample, nullptr, nullptr));
    EXPECT_EQ(nullptr, sample);
    EXPECT_TRUE(ReportedOnce(E_FAIL, "CZEAviReader::GetRawSample"));
}

TEST_F(RawStream, ShortProperties) {
    OpenDv();
    ZeRawSampleProperties p{};
    const DWORD shortSize = sizeof(p);
    // Buffers, buffer size (the video stream header's dwScale, the audio chunk), alignment, prefix.
    ASSERT_EQ(S_OK, raw->GetRawSampleProperties(ZE_RAW_VIDEO, &shortSize, &p, nullptr));
    EXPECT_EQ((std::vector<uint64_t>{1, 1, 1, 0}), (std::vector<uint64_t>{p.buffers, p.bufferSize, p.alignment, p.prefix}));
    ASSERT_EQ(S_OK, raw->GetRawSampleProperties(ZE_RAW_AUDIO, &shortSize, &p, nullptr));
    EXPECT_EQ((std::vector<uint64_t>{1, kAudioChunk, 4, 0}),
              (std::vector<uint64_t>{p.buffers, p.bufferSize, p.alignment, p.prefix}));
    const DWORD wrong = 20;
    EXPECT_TRUE(Fails(raw->GetRawSampleProperties(ZE_RAW_AUDIO, &wrong, &p, nullptr),
                      E_FAIL, "CZEAviReader::GetRawSampleProperties"));
    // Missing arguments and other kinds: nothing done.
    EXPECT_EQ(S_OK, raw->GetRawSampleProperties(ZE_RAW_AUDIO, nullptr, &p, nullptr));
    EXPECT_EQ(S_OK, raw->GetRawSampleProperties(ZE_RAW_AUDIO, &shortSize, nullptr, nullptr));
    EXPECT_EQ(S_OK, raw->GetRawSampleProperties(5, &shortSize, &p, nullptr));
    EXPECT_TRUE(NothingReported());
}

TEST_F(RawStream, MediaTypes) {
    OpenDv();
    ZeRawMediaType media{};
    const DWORD size = sizeof(media);
    ASSERT_EQ(S_OK, raw->GetRawSampleProperties(ZE_RAW_VIDEO, &size, &media, nullptr));
    EXPECT_TRUE(IsEqualGUID(ZeMediaGuid::Video, media.majortype));
    EXPECT_TRUE(IsEqualGUID(ZeMediaGuid::Dvsd, media.subtype));
    EXPECT_TRUE(IsEqualGUID(ZeMediaGuid::FormatVideoInfo, media.formattype));
    EXPECT_EQ(TRUE, media.bFixedSizeSamples);
    EXPECT_EQ(FALSE, media.bTemporalCompression);
    EXPECT_EQ(kDvFrameBytes, media.lSampleSize);
    EXPECT_EQ(nullptr, media.pUnk);
    ASSERT_EQ(88u, media.cbFormat);
    ASSERT_NE(nullptr, media.pbFormat);
    ZeRawVideoInfo info;
    std::memcpy(&info, media.pbFormat, sizeof(info));
    EXPECT_EQ(25, info.AvgTimePerFrame);  // the frame rate itself
    EXPECT_EQ(720, info.bmiHeader.biWidth);
    EXPECT_EQ(576, info.bmiHeader.biHeight);
    EXPECT_EQ(0, info.rcSource.left);
    EXPECT_EQ(720, info.rcSource.right);

    ASSERT_EQ(S_OK, raw->GetRawSampleProperties(ZE_RAW_AUDIO, &size, &media, nullptr));
    EXPECT_TRUE(IsEqualGUID(ZeMediaGuid::Audio, media.majortype));
    EXPECT_TRUE(IsEqualGUID(ZeMediaGuid::Pcm, media.subtype));
    EXPECT_TRUE(IsEqualGUID(ZeMediaGuid::FormatWaveFormatEx, media.formattype));
    EXPECT_EQ(kAudioChunk, media.lSampleSize);
    EXPECT_EQ(18u, media.cbFormat);
    WAVEFORMATEX wave;
    std::memcpy(&wave, media.pbFormat, sizeof(wave));
    EXPECT_EQ(48000u, wave.nSamplesPerSec);
    EXPECT_EQ(2u, wave.nChannels);
    EXPECT_TRUE(NothingReported());
}

TEST_F(RawStream, NotDv) {
    VideoFile plan;
    plan.audio = true;
    zetest::TempFile xvid(zetest::BuildAvi(VideoAvi(plan)).bytes);
    GUID selected{};
    EXPECT_TRUE(Fails(raw->InitRawStream(xvid.c_str(), &selected, 0), E_INVALIDARG, "CZEAviReader::InitRawStream"));
    EXPECT_TRUE(IsEqualGUID(ZeMediaGuid::Yuy2, selected));
    // Properties of a file whose video is not DV: nothing written, no failure.
    ZeRawSampleProperties p;
    std::memset(&p, 0xCD, sizeof(p));
    const DWORD size = sizeof(p);
    EXPECT_EQ(S_OK, raw->GetRawSampleProperties(ZE_RAW_AUDIO, &size, &p, nullptr));
    EXPECT_EQ(0xCDCDCDCDu, p.buffers);
    // No raw buffers: samples are refused.
    const LONGLONG time = 0;
    BYTE* sample = nullptr;
    EXPECT_TRUE(Fails(raw->GetRawSample(ZE_RAW_VIDEO, ZE_TIME_MILLISECONDS, &time, &sample, nullptr, nullptr),
                      E_FAIL, "CZEAviReader::GetRawSample"));
    // The file stays open for the other interfaces.
    ZeStreamInfo info;
    EXPECT_EQ(S_OK, video->GetStreamInfo(&info));
    EXPECT_TRUE(Fails(raw->InitRawStream(nullptr, nullptr, 0), E_POINTER, "CZEAviReader::InitRawStream"));
    EXPECT_TRUE(Fails(raw->GetRawSample(ZE_RAW_VIDEO, 2, nullptr, &sample, nullptr, nullptr),
                      E_POINTER, "CZEAviReader::GetRawSample"));
}

}  // namespace
}  // namespace readertest

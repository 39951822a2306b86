// The audio reader: opening, the reader record, reads by sample position and their failures.
#include <cstring>

#include "tests/fixtures/ze_temp_file.h"
#include "tests/support/reader_module.h"
#include "tests/reader/reader_test_files.h"

namespace readertest {
namespace {

using zetest::Descriptor;
using zetest::ReaderTest;

class AudioReader : public ReaderTest {
protected:
    void OpenAudioFile(uint32_t audioScale = 1) {
        VideoFile plan;
        plan.audio = true;
        plan.frames = 4;
        plan.audioChunkBytes = 400;  // 100 sample frames of 16-bit stereo per chunk
        layout = zetest::BuildAvi(WithScale(VideoAvi(plan), audioScale));
        file = std::make_unique<zetest::TempFile>(layout.bytes);
        ASSERT_EQ(S_OK, audio->InitAudioReader(file->c_str(), 0, 0, nullptr));
    }
    static zetest::AviModel WithScale(zetest::AviModel plan, uint32_t scale) {
        plan.streams[1].scale = scale;
        return plan;
    }
    // The stored audio bytes, chunk after chunk.
    std::vector<uint8_t> StoredAudio() const {
        std::vector<uint8_t> all;
        for (size_t i = 1; i < layout.dataPos.size(); i += 2)
            all.insert(all.end(), layout.bytes.begin() + static_cast<long>(layout.dataPos[i]),
                       layout.bytes.begin() + static_cast<long>(layout.dataPos[i] + 400));
        return all;
    }

    zetest::AviLayout layout;
    std::unique_ptr<zetest::TempFile> file;
};

TEST_F(AudioReader, ReadsStoredBytesBySamplePosition) {
    OpenAudioFile();
    const std::vector<uint8_t> stored = StoredAudio();
    ASSERT_EQ(1600u, stored.size());
    // Across chunk boundaries, sequentially and after a jump back.
    for (uint32_t start : {0u, 37u, 99u, 250u, 10u}) {
        std::vector<uint8_t> got(4 * 120, 0xEE);
        ASSERT_EQ(S_OK, audio->GetAudioBuffer(start, 0, got.data(), static_cast<LONG>(got.size()), nullptr));
        const size_t end = std::min<size_t>(stored.size(), start * 4 + got.size());
        EXPECT_EQ(0, std::memcmp(stored.data() + start * 4, got.data(), end - start * 4)) << "start " << start;
        for (size_t i = end - start * 4; i < got.size(); ++i) ASSERT_EQ(0, got[i]) << "silence past the end";
    }
    EXPECT_TRUE(NothingReported());
}

TEST_F(AudioReader, BadArgumentsAndReadsPastTheEnd) {
    OpenAudioFile();
    uint8_t buffer[64];
    EXPECT_TRUE(Fails(audio->GetAudioBuffer(0, 0, nullptr, 16, nullptr), E_POINTER, "CZEAviReader::GetAudioBuffer"));
    EXPECT_TRUE(Fails(audio->GetAudioBuffer(0, 0, buffer, 0, nullptr), E_INVALIDARG, "CZEAviReader::GetAudioBuffer"));
    EXPECT_TRUE(Fails(audio->GetAudioBuffer(0, 0, buffer, -4, nullptr), E_INVALIDARG, "CZEAviReader::GetAudioBuffer"));
    // Far past the end: zeros and S_OK.
    std::memset(buffer, 0xEE, sizeof(buffer));
    EXPECT_EQ(S_OK, audio->GetAudioBuffer(0, 1, buffer, sizeof(buffer), nullptr));
    for (uint8_t b : buffer) ASSERT_EQ(0, b);
    TakeReports();
    EXPECT_TRUE(Fails(audio->GetFormatInfo(buffer), E_NOTIMPL, "CZEAviReader::GetFormatInfo"));
    EXPECT_EQ(S_OK, audio->CloseAudioReader());
}

TEST_F(AudioReader, ReaderRecord) {
    OpenAudioFile();
    ZeReaderInfo info;
    std::memset(&info, 0xCD, sizeof(info));
    ASSERT_EQ(S_OK, audio->GetReaderInfo(&info, nullptr));
    // Size and reserved fields are left as they were; length counts 4-byte sample frames of 1600 bytes.
    EXPECT_EQ((std::vector<uint64_t>{0xCDCDCDCD, 158, 4, 0, 2, 0xCDCDCDCD, 400, 16 * 44100, 1, 2, 44100, 176400, 4,
                                     16, 0, 0xCD}),
              (std::vector<uint64_t>{info.cbSize, info.kind, info.version, info.streamFlags, info.sampleKind,
                                     info.reserved20, info.length, info.bitRatePerChannel, info.wFormatTag,
                                     info.nChannels, info.nSamplesPerSec, info.nAvgBytesPerSec, info.nBlockAlign,
                                     info.wBitsPerSample, info.cbExtra, info.reserved36[0]}));
    EXPECT_TRUE(Fails(audio->GetReaderInfo(nullptr, nullptr), E_POINTER, "CZEAviReader::GetReaderInfo"));

    // A stream scale of 0 counts as 1.
    OpenAudioFile(0);
    ASSERT_EQ(S_OK, audio->GetReaderInfo(&info, nullptr));
    EXPECT_EQ(16u * 44100u, info.bitRatePerChannel);
}

TEST_F(AudioReader, FilesWithoutUsableAudio) {
    // Video only: the trial read fails; the reader record stays untouched.
    zetest::TempFile silent(zetest::BuildAvi(VideoAvi({})).bytes);
    EXPECT_EQ(E_FAIL, audio->InitAudioReader(silent.c_str(), 0, 0, nullptr));
    const std::vector<std::string> reports = TakeReports();
    ASSERT_EQ(2u, reports.size());
    EXPECT_NE(std::string::npos, reports[0].find("CZeAviFileParser::GetSample"));
    EXPECT_NE(std::string::npos, reports[1].find("CZEAviReader::InitAudioReader"));
    // Every report names the file being opened.
    EXPECT_NE(std::string::npos, reports[1].find(silent.Path()));
    ZeReaderInfo info;
    std::memset(&info, 0xCD, sizeof(info));
    EXPECT_EQ(S_OK, audio->GetReaderInfo(&info, nullptr));
    EXPECT_EQ(0xCDCDCDCDu, info.kind);

    EXPECT_TRUE(Fails(audio->InitAudioReader(nullptr, 0, 0, nullptr), E_POINTER, "CZEAviReader::InitAudioReader"));
}

TEST_F(AudioReader, OpenFailuresLeaveTheObjectUsable) {
    zetest::TempFile notAvi(std::vector<uint8_t>(100, 'x'));
    EXPECT_TRUE(Fails(audio->InitAudioReader(notAvi.c_str(), 0, 0, nullptr),
                      E_AVI_NOVALIDFILE, "CZeAviFileParser::Parse"));
    EXPECT_TRUE(Fails(audio->InitAudioReader("/no/such/file.avi", 0, 0, nullptr),
                      E_AVI_OPEN, "CZeAviFileParser::OpenAVIFile"));
    zetest::AviModel plan = VideoAvi({});
    plan.streams.push_back(zetest::PcmStream(2, 44100, 16));
    plan.chunks.push_back({"01wb", std::vector<uint8_t>(400, 1)});
    plan.truncateAt = 300;
    zetest::TempFile cut(zetest::BuildAvi(plan).bytes);
    EXPECT_EQ(E_AVI_READ, audio->InitAudioReader(cut.c_str(), 0, 0, nullptr));
    TakeReports();
    // The same object then opens a good file.
    OpenAudioFile();
    std::vector<uint8_t> got(16);
    ASSERT_EQ(S_OK, audio->GetAudioBuffer(0, 0, got.data(), 16, nullptr));
    EXPECT_EQ(0, std::memcmp(StoredAudio().data(), got.data(), 16));
    EXPECT_TRUE(NothingReported());
}

}  // namespace
}  // namespace readertest

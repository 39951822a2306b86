// The parser's DV steps on whole files: type-1 files built from hand-made frames, and DV made by
// ffmpeg, whose own decode of the sound is the reference.
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "avi/ze_avi_file_parser.h"
#include "reader/status/ze_error_report.h"
#include "reader/ze_host_log_sink.h"
#include "tests/dv/dv_test_frames.h"
#include "tests/fixtures/ze_avi_formats.h"
#include "tests/fixtures/ze_avi_writer.h"
#include "tests/fixtures/ze_ffmpeg_material.h"
#include "tests/fixtures/ze_temp_file.h"
#include "tests/support/host_log_capture.h"

namespace {

// A type-1 file of the given frames, 'iavs' stream with the given rate and scale.
std::vector<uint8_t> Type1File(const std::vector<std::vector<uint8_t>>& frames, bool pal, uint32_t rate = 0,
                               uint32_t scale = 0, uint32_t initialFrames = 0) {
    zetest::AviModel plan;
    plan.initialFrames = initialFrames;
    zetest::StreamModel s = zetest::IavsStream(pal);
    if (scale != 0 || rate != 0) {
        s.rate = rate;
        s.scale = scale;
    }
    plan.streams.push_back(s);
    plan.width = 720;
    plan.height = pal ? 576 : 480;
    plan.microSecPerFrame = pal ? 40000 : 33367;
    for (const std::vector<uint8_t>& f : frames) plan.chunks.push_back(zetest::ChunkModel{"00__", f});
    return zetest::BuildAvi(plan).bytes;
}

// Keeps what the module writes into the host's log while it lives.
struct CapturedLog {
    CapturedLog() { ZeConnectHostLog(&log); }
    ~CapturedLog() { ZeConnectHostLog(nullptr); }
    std::string Text() const { return log.Text(); }
    zetest::HostLogCapture log;
};

struct OpenedFile {
    explicit OpenedFile(const std::vector<uint8_t>& bytes) : file(bytes) {
        EXPECT_EQ(parser.OpenAVIFile(file.c_str()), S_OK);
        parsed = parser.Parse();
    }
    zetest::TempFile file;
    CZeAviFileParser parser;
    HRESULT parsed = E_FAIL;
};

dvtest::Frame CamcorderFrame(uint8_t fill, uint32_t afSize) {
    dvtest::Frame f = dvtest::MakeFrame(true);
    f.PutVaux(39, {0x60, 0xFF, 0xFF, 0xE0, 0xFF});
    f.PutVaux(40, {0x61, 0x3F, 0xC9, 0xFD, 0xFF});  // 14/9, display 1, interlaced
    f.PutVaux(41, {0x62, 0xFF, 0xC7, 0x06, 0x03});
    f.PutVaux(42, {0x63, 0xFF, 0x08, 0x15, 0x21});
    f.PutAudioSource(afSize, 0, 0);
    for (uint32_t s = 0; s < 12; ++s) f.FillAudioData(s, fill);
    return f;
}

TEST(DVParserSteps, Type1FileGetsItsParametersAndASynthesisedPcmStream) {
    std::vector<std::vector<uint8_t>> frames;
    for (uint8_t k = 0; k < 4; ++k) frames.push_back(CamcorderFrame(static_cast<uint8_t>(k + 1), 24).bytes);
    OpenedFile f(Type1File(frames, true));
    ASSERT_EQ(f.parsed, S_OK);

    const ZeDVVideoParams& v = f.parser.GetDVVideoParams();
    EXPECT_DOUBLE_EQ(v.aspectRatio, 14.0 / 9.0);
    EXPECT_STREQ(v.recordingDateTime, "7.6.2003 21:15:8");
    const ZeDVAudioParams& a = f.parser.GetDVAudioParams();
    // Sixty fields, display, interlace, compression, recording start; rate, bits, mode, first channel.
    EXPECT_EQ((std::vector<uint32_t>{0, 1, 2, 2, 0, 48000, 16, 1, 1}),
              (std::vector<uint32_t>{v.sixtyFields, v.displayCode, v.interlaceCode, v.compressionCode,
                                     v.recordingStartCode, a.sampleRate, a.bitsPerSample, a.audioModeCode,
                                     a.firstChannel}));

    const CZeAviStreamHeader* h = f.parser.GetAudioStreamHeader();
    const WAVEFORMATEX* w = f.parser.GetAudioFormat();
    ASSERT_NE(h, nullptr);
    ASSERT_NE(w, nullptr);
    EXPECT_EQ(h->GetLength(), 4u * 1920u);
    EXPECT_EQ(h->GetSampleSize(), 2u);
    EXPECT_EQ(w->nChannels, 2);
    EXPECT_EQ(f.parser.GetDVFrameBuffer().size(), 144000u);

    // The DV format block is kept word for word as the stream format holds it.
    const CZeAviDVInfoEx* info = f.parser.GetPrincipalStream()->GetFormat().GetDVInfo();
    ASSERT_NE(info, nullptr);
    const std::vector<uint8_t> block = zetest::IavsStream(true).format;
    ASSERT_EQ(block.size(), 32u);
    for (uint32_t w = 0; w < 8; ++w) {
        const uint32_t stored = block[4 * w] | block[4 * w + 1] << 8 | block[4 * w + 2] << 16 |
                                static_cast<uint32_t>(block[4 * w + 3]) << 24;
        EXPECT_EQ(info->GetWord(w), stored) << "word " << w;
    }
    EXPECT_NE(info->GetWord(0), 0u);
    EXPECT_EQ(info->GetWord(8), 0u);  // past the block: nothing copied

    // Sound: 1920 stereo samples of each frame's fill, across frame boundaries.
    std::vector<uint8_t> pcm(4 * 1920 * 4 + 400, 0xEE);
    uint64_t position = 0;
    uint64_t count = pcm.size();
    ASSERT_EQ(f.parser.GetSample(&position, pcm.data(), &count), S_OK);
    for (size_t i = 0; i < 4 * 1920 * 4; ++i) ASSERT_EQ(pcm[i], i / (1920 * 4) + 1) << i;
    for (size_t i = 4 * 1920 * 4; i < pcm.size(); ++i) ASSERT_EQ(pcm[i], 0) << i;
    position = 3839;
    count = 8;
    ASSERT_EQ(f.parser.GetSample(&position, pcm.data(), &count), S_OK);
    EXPECT_EQ(std::vector<uint8_t>(pcm.begin(), pcm.begin() + 8), (std::vector<uint8_t>{2, 2, 2, 2, 3, 3, 3, 3}));
}

TEST(DVParserSteps, FramesTooSmallForPacksAndRatesBelowOneFrameASecond) {
    // Fewer than one frame a second: the file opens without a DV sound stream, and says why.
    std::vector<std::vector<uint8_t>> frames(2, CamcorderFrame(1, 24).bytes);
    {
        CapturedLog log;
        OpenedFile f(Type1File(frames, true, 1, 2));
        EXPECT_EQ(f.parsed, S_OK);
        EXPECT_EQ(f.parser.GetAudioFormat(), nullptr);
        EXPECT_NE(log.Text().find("rate 1 / scale 2 is below one frame per second: no audio stream"),
                  std::string::npos)
            << log.Text();
        EXPECT_STREQ(f.parser.GetDVVideoParams().recordingDateTime, "7.6.2003 21:15:8");
    }
    {
        OpenedFile f(Type1File(frames, true, 25, 0));
        EXPECT_EQ(f.parsed, S_OK);
        EXPECT_EQ(f.parser.GetAudioFormat(), nullptr);
    }
    // A "DV" frame of 1000 bytes opens: what its bytes hold is decoded, packs beyond it are
    // missing (REC DATE is there, REC TIME is not). The only report is the failed read of the
    // second frame, which this file lacks.
    SetErrorContext("");
    std::vector<uint8_t> shortFrame(1000, 0x62);
    const uint8_t source[] = {0x60, 0xFF, 0xFF, 0xC0, 0xFF};
    std::copy(source, source + 5, shortFrame.begin() + 448);
    OpenedFile f(Type1File({shortFrame}, true));
    EXPECT_EQ(f.parsed, S_OK);
    EXPECT_EQ(f.parser.GetDVVideoParams().sixtyFields, 1u);
    EXPECT_STREQ(f.parser.GetDVVideoParams().recordingDateTime, "");
    EXPECT_EQ(f.parser.GetDVAudioParams().sampleRate, 0u);
    for (const std::string& line : GetReportList()) EXPECT_EQ(line.find("::DecodeDV"), std::string::npos) << line;
    std::vector<uint8_t> pcm(64, 0xEE);
    uint64_t position = 0;
    uint64_t count = pcm.size();
    EXPECT_EQ(f.parser.GetSample(&position, pcm.data(), &count), S_OK);
    EXPECT_EQ(pcm, std::vector<uint8_t>(64, 0));
}

TEST(DVParserSteps, TheSecondFrameIsUsedUnlessItIsLargerThanTheFirst) {
    dvtest::Frame first = CamcorderFrame(1, 24);
    dvtest::Frame second = CamcorderFrame(1, 24);
    second.PutVaux(41, {0x62, 0xFF, 0xC8, 0x06, 0x03});
    OpenedFile same(Type1File({first.bytes, second.bytes}, true));
    ASSERT_EQ(same.parsed, S_OK);
    EXPECT_STREQ(same.parser.GetDVVideoParams().recordingDateTime, "8.6.2003 21:15:8");

    second.bytes.resize(second.bytes.size() + 80);
    OpenedFile larger(Type1File({first.bytes, second.bytes}, true));
    ASSERT_EQ(larger.parsed, S_OK);
    EXPECT_STREQ(larger.parser.GetDVVideoParams().recordingDateTime, "7.6.2003 21:15:8");

    // The main header's initial frames move both: frame N + 1 for the picture, frame N for the sound.
    dvtest::Frame third = CamcorderFrame(1, 24);
    third.PutVaux(41, {0x62, 0xFF, 0xC9, 0x06, 0x03});
    dvtest::Frame mono = CamcorderFrame(1, 24);
    mono.PutAaux(0, 3, {0x50, 0xD8, 0x01, 0xE0, 0x08});
    OpenedFile later(Type1File({first.bytes, mono.bytes, third.bytes}, true, 0, 0, 1));
    ASSERT_EQ(later.parsed, S_OK);
    EXPECT_STREQ(later.parser.GetDVVideoParams().recordingDateTime, "9.6.2003 21:15:8");
    EXPECT_EQ(later.parser.GetDVAudioParams().sampleRate, 44100u);
    EXPECT_EQ(later.parser.GetDVAudioParams().secondChannel, 1u);
    // The synthesised header and format, field by field, from that frame's sound.
    const CZeAviStreamHeader* h = later.parser.GetAudioStreamHeader();
    const WAVEFORMATEX* w = later.parser.GetAudioFormat();
    ASSERT_NE(h, nullptr);
    ASSERT_NE(w, nullptr);
    EXPECT_EQ((std::vector<uint64_t>{0x73647561 /* auds */, 0, 0, 0, 0, 1, 1, 44100, 0, 3 * 44100 / 25,
                                     2 * 44100 / 25, 0, 2}),
              (std::vector<uint64_t>{h->GetFccType(), h->GetFccHandler(), h->GetFlags(), h->GetPriority(),
                                     h->GetLanguage(), h->GetInitialFrames(), h->GetScale(), h->GetRate(),
                                     h->GetStart(), h->GetLength(), h->GetSuggestedBufferSize(), h->GetQuality(),
                                     h->GetSampleSize()}));
    EXPECT_EQ(h->GetFrame().left | h->GetFrame().top | h->GetFrame().right | h->GetFrame().bottom, 0);
    EXPECT_EQ((std::vector<uint64_t>{1, 2, 44100, 88200, 2, 16, 0}),
              (std::vector<uint64_t>{w->wFormatTag, w->nChannels, w->nSamplesPerSec, w->nAvgBytesPerSec,
                                     w->nBlockAlign, w->wBitsPerSample, w->cbSize}));

    // Frame N empty: the index has no frame to decode, reported once by the video step.
    SetErrorContext("");
    OpenedFile empty(Type1File({{}, first.bytes}, true));
    EXPECT_EQ(empty.parsed, static_cast<HRESULT>(0x8004001Du));
    const std::vector<std::string> lines = GetReportList();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find("[8004001d]"), std::string::npos) << lines[0];
    EXPECT_NE(lines[0].find("CZeAviFileParser::DecodeDVVideoParams"), std::string::npos) << lines[0];
}

// ---- ffmpeg-made DV --------------------------------------------------------------------------

struct FfmpegDv {
    std::string dvPath;
    std::vector<uint8_t> pcm;  // ffmpeg's own decode of the sound, s16le
};

// A raw DV stream made by ffmpeg (cached in the build folder) and ffmpeg's PCM decode of it.
bool MakeFfmpegDv(bool pal, FfmpegDv* out, std::string* whyNot) {
    if (zetest::RunCommand("command -v ffmpeg >/dev/null 2>&1") != 0) {
        *whyNot = "ffmpeg is not on PATH";
        return false;
    }
    const std::string name = pal ? "dv_type1_source_pal" : "dv_type1_source_ntsc";
    out->dvPath = zetest::CacheDir() + "/" + name + ".dv";
    const std::string part = out->dvPath + "." + std::to_string(::getpid()) + ".part.dv";
    std::string log;
    if (zetest::RunCommand("test -s " + zetest::ShellQuote(out->dvPath)) != 0) {
        const std::string cmd =
            std::string("ffmpeg -nostdin -hide_banner -loglevel error -y ") +
            "-f lavfi -i testsrc=size=" + (pal ? "720x576:rate=25" : "720x480:rate=30000/1001") +
            " -f lavfi -i sine=frequency=997:sample_rate=48000:duration=1.5 -f lavfi -i "
            "sine=frequency=441:sample_rate=48000:duration=1.5 -filter_complex '[1:a][2:a]amerge=inputs=2[a]' "
            "-map 0:v -map '[a]' -t 1.5 -c:v dvvideo -pix_fmt " +
            (pal ? "yuv420p" : "yuv411p") + " -aspect 4:3 -c:a pcm_s16le -metadata creation_time=" +
            (pal ? "2024-12-31T23:59:58Z" : "1999-03-04T05:06:07Z") + " -f dv " + zetest::ShellQuote(part) + " 2>&1";
        if (zetest::RunCommand(cmd, &log) != 0 || zetest::RunCommand("mv " + zetest::ShellQuote(part) + " " +
                                                                     zetest::ShellQuote(out->dvPath)) != 0) {
            *whyNot = "ffmpeg could not make DV: " + log;
            return false;
        }
    }
    std::string pcm;
    if (zetest::RunCommand("ffmpeg -nostdin -hide_banner -loglevel error -i " + zetest::ShellQuote(out->dvPath) +
                               " -map 0:a -c:a pcm_s16le -f s16le -",
                           &pcm) != 0) {
        *whyNot = "ffmpeg could not decode its DV sound";
        return false;
    }
    out->pcm.assign(pcm.begin(), pcm.end());
    return true;
}

std::vector<std::vector<uint8_t>> SplitFrames(const std::vector<uint8_t>& dv, size_t frameBytes) {
    std::vector<std::vector<uint8_t>> frames;
    for (size_t at = 0; at + frameBytes <= dv.size(); at += frameBytes) {
        frames.emplace_back(dv.begin() + static_cast<std::ptrdiff_t>(at),
                            dv.begin() + static_cast<std::ptrdiff_t>(at + frameBytes));
    }
    return frames;
}

class DVFromFfmpeg : public ::testing::TestWithParam<bool> {};

TEST_P(DVFromFfmpeg, SoundMatchesFfmpegByteForByteAndTheDateMatchesTheMetadata) {
    const bool pal = GetParam();
    FfmpegDv dv;
    std::string whyNot;
    if (!MakeFfmpegDv(pal, &dv, &whyNot)) GTEST_SKIP() << whyNot;
    const auto frames = SplitFrames(zetest::ReadWholeFile(dv.dvPath), pal ? 144000 : 120000);
    ASSERT_GE(frames.size(), 30u);
    ASSERT_FALSE(dv.pcm.empty());

    OpenedFile f(Type1File(frames, pal));
    ASSERT_EQ(f.parsed, S_OK);
    EXPECT_STREQ(f.parser.GetDVVideoParams().recordingDateTime, pal ? "31.12.2024 23:59:58" : "4.3.1999 5:6:7");
    EXPECT_EQ(f.parser.GetDVVideoParams().sixtyFields, pal ? 0u : 1u);
    const WAVEFORMATEX* w = f.parser.GetAudioFormat();
    ASSERT_NE(w, nullptr);
    ASSERT_EQ(w->nChannels, 2);
    ASSERT_EQ(w->wBitsPerSample, 16);

    // Sequential reads of odd sizes (whole sample frames), as the audio reader makes them.
    std::vector<uint8_t> ours;
    uint64_t position = 0;
    const uint64_t sampleFrames = dv.pcm.size() / 4;
    for (uint64_t piece = 1; position < sampleFrames; piece = piece * 3 % 4096 + 1) {
        uint64_t n = std::min(piece, sampleFrames - position);
        std::vector<uint8_t> out(n * 4);
        uint64_t count = out.size();
        uint64_t at = position;
        ASSERT_EQ(f.parser.GetSample(&at, out.data(), &count), S_OK);
        ours.insert(ours.end(), out.begin(), out.end());
        position += n;
    }
    ASSERT_EQ(ours.size(), dv.pcm.size());
    EXPECT_TRUE(ours == dv.pcm) << "first difference at byte "
                                << (std::mismatch(ours.begin(), ours.end(), dv.pcm.begin()).first - ours.begin());

    // Random access lands on the same bytes.
    for (uint64_t at : {sampleFrames - 1, uint64_t{0}, sampleFrames / 2, uint64_t{1601}, uint64_t{3203}}) {
        std::vector<uint8_t> out(4 * 700, 0xEE);
        uint64_t count = out.size();
        uint64_t start = at;
        ASSERT_EQ(f.parser.GetSample(&start, out.data(), &count), S_OK);
        const size_t have = std::min<size_t>(out.size(), dv.pcm.size() - at * 4);
        EXPECT_TRUE(std::equal(out.begin(), out.begin() + have, dv.pcm.begin() + at * 4)) << at;
        EXPECT_TRUE(std::all_of(out.begin() + have, out.end(), [](uint8_t b) { return b == 0; })) << at;
    }
}

INSTANTIATE_TEST_SUITE_P(PalAndNtsc, DVFromFfmpeg, ::testing::Values(true, false),
                         [](const ::testing::TestParamInfo<bool>& p) { return p.param ? "Pal" : "Ntsc"; });

TEST(DVFromFfmpegType2, RecordingDateOfAnFfmpegDvAvi) {
    std::string whyNot;
    const std::string path = zetest::MaterialPath("dv_pal", &whyNot);
    if (path.empty()) GTEST_SKIP() << whyNot;
    CZeAviFileParser parser;
    ASSERT_EQ(parser.OpenAVIFile(path.c_str()), S_OK);
    ASSERT_EQ(parser.Parse(), S_OK);
    EXPECT_STREQ(parser.GetDVVideoParams().recordingDateTime, "31.12.2024 23:59:58");
    EXPECT_DOUBLE_EQ(parser.GetDVVideoParams().aspectRatio, 4.0 / 3.0);
    EXPECT_EQ(parser.GetDVAudioParams().sampleRate, 0u);  // separate audio stream: not decoded from frames
}

}  // namespace

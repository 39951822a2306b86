// Real MJPEG frames and PCM from ffmpeg, written again by the test writer in every index form:
// idx1 counted from 'movi' or from the file start, and OpenDML super indexes over several RIFF
// parts (ix## inside or after 'movi', with or without an idx1 for the first part). Whatever the
// form, the parser must find every chunk where the writer put it and hand out the same bytes.
#include <gtest/gtest.h>

#include "tests/avi/real_parsed_file.h"
#include "tests/fixtures/ze_avi_formats.h"

namespace zetest {
namespace {

struct Form {
    const char* name;
    Idx1 idx1;
    bool openDml;
    bool ixInsideMovi;
};

const Form kForms[] = {
    {"idx1_from_movi", Idx1::FromMovi, false, true},
    {"idx1_absolute", Idx1::Absolute, false, true},
    {"odml_ix_in_movi", Idx1::None, true, true},
    {"odml_ix_after_movi", Idx1::None, true, false},
    {"odml_with_idx1", Idx1::FromMovi, true, true},
};

class RealRemux : public ::testing::TestWithParam<Form> {
protected:
    void SetUp() override
    {
        Material m;
        std::string whyNot;
        if (!m.Load("mjpeg_s16_stereo", &whyNot))
            GTEST_SKIP() << whyNot;
        model.width = 320;
        model.height = 240;
        model.streams = {VideoStream("MJPG", 320, 240), PcmStream(2, 44100, 16)};
        model.idx1 = GetParam().idx1;
        model.ixInsideMovi = GetParam().ixInsideMovi;
        model.entriesPerIx = 5;
        if (GetParam().openDml)
            model.streams[0].superIndex = model.streams[1].superIndex = SuperIndex::Full;
        // Packets in file order, whichever stream they belong to, spread over three parts.
        std::vector<std::pair<int64_t, ChunkModel>> ordered;
        for (const ProbeStream& s : m.probe) {
            for (const ProbePacket& p : s.packets) {
                ChunkModel c;
                c.ckid = s.codecType == "video" ? "00dc" : "01wb";
                c.data = m.Bytes(p);
                c.flags = p.key ? kAviKeyFrame : 0;
                ordered.emplace_back(p.pos, c);
            }
        }
        std::sort(ordered.begin(), ordered.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
        for (size_t i = 0; i < ordered.size(); ++i) {
            ordered[i].second.part = GetParam().openDml ? static_cast<unsigned>(i * 3 / ordered.size()) : 0;
            model.chunks.push_back(ordered[i].second);
        }
    }

    AviModel model;
};

// Every index entry where the writer put the chunk; every frame and the whole PCM the original bytes.
TEST_P(RealRemux, IndexAndBytesAreWhereTheWriterPutEachChunk)
{
    const AviLayout layout = BuildAvi(model);
    TempFile avi(layout.bytes);
    ParsedFile f(avi.Path());
    ASSERT_TRUE(f.Ok()) << std::hex << f.parseResult;
    std::vector<std::vector<uint8_t>> frames;
    std::vector<uint8_t> pcm;
    for (int stream : {0, 1}) {
        SCOPED_TRACE("stream " + std::to_string(stream));
        const std::vector<IndexRow> rows = f.Index(static_cast<uint32_t>(stream));
        const std::vector<size_t> chunks = ChunksOfStream(model, stream);
        ASSERT_EQ(rows.size(), chunks.size());
        for (size_t next = 0; next < rows.size(); ++next) {
            const ChunkModel& c = model.chunks[chunks[next]];
            EXPECT_EQ(rows[next].position, layout.dataPos[chunks[next]]) << "entry " << next;
            EXPECT_EQ(rows[next].size, c.data.size());
            if (stream == 0) {
                EXPECT_EQ(rows[next].flags & kAviKeyFrame, c.flags & kAviKeyFrame);
                frames.push_back(c.data);
            } else {
                pcm.insert(pcm.end(), c.data.begin(), c.data.end());
            }
        }
    }
    ExpectFrames(f, frames);
    uint64_t position = 0;
    uint64_t count = pcm.size();
    std::vector<uint8_t> got(count, 0xEE);
    ASSERT_EQ(f.parser.GetSample(&position, got.data(), &count), 0);
    EXPECT_TRUE(got == pcm);
}

// Every fifth frame after the first stored as a drop frame (index offset 0, nothing in 'movi'):
// reading it gives the last frame actually read again, bytes and size.
TEST_P(RealRemux, DropFramesRepeatTheFrameReadBefore)
{
    std::vector<std::vector<uint8_t>> expected;
    for (ChunkModel& c : model.chunks) {
        if (c.ckid != "00dc")
            continue;
        c.drop = expected.size() % 5 == 4;
        expected.push_back(c.drop ? expected.back() : c.data);
    }
    TempFile avi(BuildAvi(model).bytes);
    ParsedFile f(avi.Path());
    ASSERT_TRUE(f.Ok());
    ExpectFrames(f, expected);
}

INSTANTIATE_TEST_SUITE_P(Forms, RealRemux, ::testing::ValuesIn(kForms),
                         [](const ::testing::TestParamInfo<Form>& p) { return std::string(p.param.name); });

}  // namespace
}  // namespace zetest

// Real MJPEG frames and PCM from ffmpeg, written again by the test writer in every index form:
// idx1 counted from 'movi' or from the file start, and OpenDML super indexes over several RIFF
// parts (ix## inside or after 'movi', with or without an idx1 for the first part). Whatever the
// form, the parser must find every chunk where the writer put it and hand out the same bytes.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/avi/real_parsed_file.h"
#include "tests/fixtures/ze_avi_formats.h"
#include "tests/fixtures/ze_avi_writer.h"
#include "tests/fixtures/ze_ffmpeg_material.h"
#include "tests/fixtures/ze_ffprobe_packets.h"
#include "tests/fixtures/ze_temp_file.h"

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
        std::string whyNot;
        const std::string path = MaterialPath("mjpeg_s16_stereo", &whyNot);
        if (path.empty())
            GTEST_SKIP() << whyNot;
        const std::vector<uint8_t> file = ReadWholeFile(path);
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
        for (const ProbeStream& s : ProbeFile(path)) {
            for (const ProbePacket& p : s.packets) {
                ChunkModel c;
                c.ckid = s.codecType == "video" ? "00dc" : "01wb";
                c.data.assign(file.begin() + p.pos, file.begin() + p.pos + p.size);
                c.flags = p.key ? kAviKeyFrame : 0;
                ordered.emplace_back(p.pos, c);
                if (s.codecType == "audio")
                    pcm.insert(pcm.end(), c.data.begin(), c.data.end());
            }
        }
        std::sort(ordered.begin(), ordered.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
        for (size_t i = 0; i < ordered.size(); ++i) {
            ordered[i].second.part = GetParam().openDml ? static_cast<unsigned>(i * 3 / ordered.size()) : 0;
            model.chunks.push_back(ordered[i].second);
        }
        layout = BuildAvi(model);
    }

    AviModel model;
    AviLayout layout;
    std::vector<uint8_t> pcm;
};

TEST_P(RealRemux, IndexPointsWhereTheWriterPutEachChunk)
{
    TempFile avi(layout.bytes);
    ParsedFile f(avi.Path());
    ASSERT_TRUE(f.Ok()) << std::hex << f.parseResult;
    for (uint32_t stream : {0u, 1u}) {
        const std::vector<IndexRow> rows = f.Index(stream);
        size_t next = 0;
        for (size_t i = 0; i < model.chunks.size(); ++i) {
            if (StreamOfChunkId(model.chunks[i].ckid) != static_cast<int>(stream))
                continue;
            ASSERT_LT(next, rows.size()) << "stream " << stream << " has too few entries";
            EXPECT_EQ(rows[next].position, layout.dataPos[i]) << "stream " << stream << " entry " << next;
            EXPECT_EQ(rows[next].size, model.chunks[i].data.size());
            if (stream == 0) {
                EXPECT_EQ(rows[next].flags & kAviKeyFrame, model.chunks[i].flags & kAviKeyFrame);
            }
            ++next;
        }
        EXPECT_EQ(next, rows.size()) << "stream " << stream << " has extra entries";
    }
}

TEST_P(RealRemux, FramesAndPcmAreTheOriginalBytes)
{
    TempFile avi(layout.bytes);
    ParsedFile f(avi.Path());
    ASSERT_TRUE(f.Ok());
    std::vector<uint8_t> buffer(f.parser.GetMaxVideoFrameSize());
    uint64_t frame = 0;
    for (const ChunkModel& c : model.chunks) {
        if (c.ckid != "00dc")
            continue;
        uint64_t asked = frame++, bytesRead = 0;
        uint8_t flags = 0;
        int16_t tolerance = 0;
        ASSERT_EQ(f.parser.GetFrame(buffer.data(), &asked, &bytesRead, &flags, &tolerance), 0);
        ASSERT_EQ(bytesRead, c.data.size());
        ASSERT_TRUE(std::equal(c.data.begin(), c.data.end(), buffer.begin())) << "frame " << asked;
    }
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
    AviModel dropped = model;
    size_t frame = 0;
    for (ChunkModel& c : dropped.chunks)
        if (c.ckid == "00dc" && frame++ % 5 == 4)
            c.drop = true;
    TempFile avi(BuildAvi(dropped).bytes);
    ParsedFile f(avi.Path());
    ASSERT_TRUE(f.Ok());
    std::vector<uint8_t> buffer(f.parser.GetMaxVideoFrameSize());
    const ChunkModel* lastStored = nullptr;
    uint64_t asked = 0;
    for (const ChunkModel& c : dropped.chunks) {
        if (c.ckid != "00dc")
            continue;
        if (!c.drop)
            lastStored = &c;
        uint64_t n = asked++, bytesRead = 0;
        uint8_t flags = 0;
        int16_t tolerance = 0;
        ASSERT_EQ(f.parser.GetFrame(buffer.data(), &n, &bytesRead, &flags, &tolerance), 0) << "frame " << n;
        ASSERT_EQ(bytesRead, lastStored->data.size()) << "frame " << n;
        EXPECT_TRUE(std::equal(lastStored->data.begin(), lastStored->data.end(), buffer.begin())) << "frame " << n;
    }
}

INSTANTIATE_TEST_SUITE_P(Forms, RealRemux, ::testing::ValuesIn(kForms),
                         [](const ::testing::TestParamInfo<Form>& p) { return std::string(p.param.name); });

}  // namespace
}  // namespace zetest

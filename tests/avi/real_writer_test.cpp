// The test AVI writer checked by an independent reader: ffprobe must find every chunk the writer
// placed, at the position the writer reports, in each index form. The parser suites rely on
// these layouts being right. (Key flags are not compared: ffmpeg marks every packet of an
// intra-only codec such as raw video as a key frame, whatever the index says.)
#include <gtest/gtest.h>

#include "tests/avi/real_parsed_file.h"
#include "tests/fixtures/ze_avi_formats.h"

namespace zetest {
namespace {

struct WriterForm {
    const char* name;
    Idx1 idx1;
    bool openDml;
    unsigned parts;
};

const WriterForm kWriterForms[] = {
    {"idx1_from_movi", Idx1::FromMovi, false, 1},
    {"idx1_absolute", Idx1::Absolute, false, 1},
    {"odml_three_parts", Idx1::None, true, 3},
    {"odml_three_parts_with_idx1", Idx1::FromMovi, true, 3},
};

class WriterAgainstFfprobe : public ::testing::TestWithParam<WriterForm> {};

TEST_P(WriterAgainstFfprobe, EveryChunkIsWhereTheWriterSays)
{
    if (RunCommand("command -v ffprobe >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "ffprobe is not on PATH (scripts/install-deps installs it)";
    const WriterForm& form = GetParam();
    AviModel model;
    model.width = 16;
    model.height = 8;
    model.streams = {VideoStream("DIB ", 16, 8), PcmStream(1, 8000, 8)};
    model.idx1 = form.idx1;
    model.entriesPerIx = 4;
    if (form.openDml)
        model.streams[0].superIndex = model.streams[1].superIndex = SuperIndex::Full;
    const size_t frames = 12;
    for (size_t i = 0; i < frames; ++i) {
        const unsigned part = static_cast<unsigned>(i * form.parts / frames);
        ChunkModel video{"00db", PatternBytes(384, static_cast<uint32_t>(i))};
        video.part = part;
        video.flags = i % 4 == 0 ? kAviKeyFrame : 0;
        ChunkModel audio{"01wb", PatternBytes(101 + i, static_cast<uint32_t>(i + 50))};  // odd sizes, padded
        audio.part = part;
        model.chunks.push_back(video);
        model.chunks.push_back(audio);
    }
    const AviLayout layout = BuildAvi(model);
    ASSERT_EQ(layout.moviListPos.size(), form.parts);
    TempFile avi(layout.bytes);
    const std::vector<ProbeStream> probe = ProbeFile(avi.Path());
    ASSERT_EQ(probe.size(), 2u);
    for (int stream = 0; stream < 2; ++stream) {
        SCOPED_TRACE("stream " + std::to_string(stream));
        const std::vector<size_t> chunks = ChunksOfStream(model, stream);
        ASSERT_EQ(probe[stream].packets.size(), chunks.size());
        for (size_t next = 0; next < chunks.size(); ++next) {
            const ProbePacket& p = probe[stream].packets[next];
            EXPECT_EQ(static_cast<uint64_t>(p.pos), layout.dataPos[chunks[next]]) << "chunk " << chunks[next];
            EXPECT_EQ(p.size, model.chunks[chunks[next]].data.size()) << "chunk " << chunks[next];
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Forms, WriterAgainstFfprobe, ::testing::ValuesIn(kWriterForms),
                         [](const ::testing::TestParamInfo<WriterForm>& p) { return std::string(p.param.name); });

}  // namespace
}  // namespace zetest

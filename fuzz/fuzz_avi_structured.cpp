// Structured fuzz target with an oracle: the input is read as a recipe for a well-formed AVI file
// (streams, chunks of any size and odd length, padded or not, drop frames, idx1 counted from 'movi'
// or from the file start with entries the reader must skip, or OpenDML indexes over several RIFF
// parts). The test writer builds it and says where every chunk's data lies; the parser must index
// exactly those positions and hand out exactly those bytes (for a drop frame: the frame read
// before). Any difference aborts, so libFuzzer keeps the recipe.
#include <fuzzer/FuzzedDataProvider.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "avi/ze_avi_file_parser.h"
#include "reader/status/ze_error_report.h"
#include "tests/fixtures/ze_avi_formats.h"
#include "tests/fixtures/ze_avi_writer.h"
#include "tests/fixtures/ze_temp_file.h"

using namespace zetest;

namespace {

#define ZE_ORACLE(condition, ...)                                                \
    do {                                                                          \
        if (!(condition)) {                                                       \
            std::fprintf(stderr, "oracle: %s failed: ", #condition);              \
            std::fprintf(stderr, __VA_ARGS__);                                    \
            std::fprintf(stderr, "\n");                                           \
            std::abort();                                                         \
        }                                                                         \
    } while (0)

AviModel Recipe(FuzzedDataProvider& in)
{
    AviModel model;
    model.width = 16;
    model.height = 16;
    const size_t streams = in.ConsumeIntegralInRange<size_t>(1, 3);
    for (size_t s = 0; s < streams; ++s) {
        if (in.ConsumeBool())
            model.streams.push_back(VideoStream("MJPG", 16, 16));
        else
            model.streams.push_back(PcmStream(in.ConsumeIntegralInRange<uint16_t>(1, 2), 8000,
                                             in.ConsumeBool() ? 16 : 8));
    }
    const int form = in.ConsumeIntegralInRange(0, 2);
    model.idx1 = form == 1 ? Idx1::Absolute : Idx1::FromMovi;
    const bool openDml = form == 2;
    if (openDml) {
        for (StreamModel& s : model.streams)
            s.superIndex = SuperIndex::Full;
        model.entriesPerIx = in.ConsumeIntegralInRange<uint32_t>(0, 5);
        model.ixInsideMovi = in.ConsumeBool();
        if (in.ConsumeBool())
            model.idx1 = Idx1::None;
    }
    const unsigned parts = openDml ? in.ConsumeIntegralInRange<unsigned>(1, 3) : 1;
    const size_t chunks = in.ConsumeIntegralInRange<size_t>(1, 40);
    for (size_t i = 0; i < chunks; ++i) {
        // The principal stream owns the first chunk: with an empty principal index the legacy
        // index would be read on top of the OpenDML ones, and absolute idx1 offsets are only
        // recognised from the first video chunk on.
        const size_t stream = i == 0 ? 0 : in.ConsumeIntegralInRange<size_t>(0, streams - 1);
        const StreamModel& st = model.streams[stream];
        ChunkModel c;
        char id[5];
        std::snprintf(id, sizeof id, "%02u%s", static_cast<unsigned>(stream), st.fccType == "vids" ? "dc" : "wb");
        c.ckid = id;
        size_t size;
        if (st.fccType == "vids")
            size = in.ConsumeIntegralInRange<size_t>(1, 300);
        else  // whole sample frames, never below the 4 bytes an audio entry must hold
            size = st.sampleSize * in.ConsumeIntegralInRange<size_t>(4, 100);
        // Pattern bytes, not fuzz bytes: the first-video-chunk scan must not meet "00dc" inside data.
        c.data = PatternBytes(size, static_cast<uint32_t>(i * 7919 + size));
        c.flags = in.ConsumeBool() ? kAviKeyFrame : 0;
        c.pad = in.ConsumeBool();
        c.part = static_cast<unsigned>(i * parts / chunks);
        // A drop frame anywhere but first: the first chunk fixes the base of absolute offsets.
        c.drop = i > 0 && st.fccType == "vids" && in.ConsumeIntegralInRange(0, 7) == 0;
        model.chunks.push_back(c);
    }
    // idx1 entries the reader skips: stream numbers beyond the streams, index chunks, unknown types.
    const size_t extra = in.ConsumeIntegralInRange<size_t>(0, 3);
    for (size_t i = 0; i < extra; ++i) {
        static const char* const kSkipped[] = {"09dc", "ix00", "00pc", "12wb", "7Fdb"};
        model.extraIdx1.push_back({kSkipped[in.ConsumeIntegralInRange<size_t>(0, 4)], kAviKeyFrame,
                                  in.ConsumeIntegral<uint32_t>(), in.ConsumeIntegralInRange<uint32_t>(0, 4096)});
    }
    if (model.idx1 == Idx1::Absolute && model.streams[0].fccType != "vids")
        model.idx1 = Idx1::FromMovi;
    return model;
}

void CheckIndexes(const CZeAviFileParser& parser, const AviModel& model, const AviLayout& layout)
{
    ZE_ORACLE(parser.GetStreamCount() == model.streams.size(), "%zu streams", parser.GetStreamCount());
    for (size_t s = 0; s < model.streams.size(); ++s) {
        const CZeAviIndexListChunk& index = parser.GetStream(static_cast<uint32_t>(s))->GetIndexList();
        size_t next = 0;
        for (size_t i = 0; i < model.chunks.size(); ++i) {
            if (StreamOfChunkId(model.chunks[i].ckid) != static_cast<int>(s))
                continue;
            ZE_ORACLE(next < index.GetCount(), "stream %zu has %zu entries", s, index.GetCount());
            const CZeAviIndexChunk& e = index.At(next++);
            ZE_ORACLE(model.chunks[i].drop || e.GetPosition() == layout.dataPos[i],
                      "stream %zu chunk %zu at %llu, written at %llu", s, i,
                      static_cast<unsigned long long>(e.GetPosition()),
                      static_cast<unsigned long long>(layout.dataPos[i]));
            ZE_ORACLE(e.GetSize() == model.chunks[i].data.size(), "stream %zu chunk %zu size %u", s, i, e.GetSize());
            ZE_ORACLE(e.IsKeyFrame() == ((model.chunks[i].flags & kAviKeyFrame) != 0), "stream %zu chunk %zu", s, i);
        }
        ZE_ORACLE(next == index.GetCount(), "stream %zu has %zu entries, %zu written", s, index.GetCount(), next);
    }
}

void CheckFrames(CZeAviFileParser& parser, const AviModel& model)
{
    const uint32_t video = parser.GetFirstVideoStreamNumber();
    if (video == CZeAviFileParser::kNoStream)
        return;
    std::vector<uint8_t> buffer(parser.GetMaxVideoFrameSize());
    uint64_t n = 0;
    const ChunkModel* lastStored = nullptr;
    for (const ChunkModel& chunk : model.chunks) {
        if (StreamOfChunkId(chunk.ckid) != static_cast<int>(video))
            continue;
        if (!chunk.drop)
            lastStored = &chunk;
        if (!lastStored)
            return;  // a drop frame before any stored one has nothing to repeat
        const ChunkModel& c = *lastStored;
        uint64_t frame = n++, bytesRead = 0;
        uint8_t flags = 0;
        int16_t tolerance = 0;
        const HRESULT hr = parser.GetFrame(buffer.data(), &frame, &bytesRead, &flags, &tolerance);
        ZE_ORACLE(hr == 0 && bytesRead == c.data.size(), "frame %llu: %x, %llu bytes",
                  static_cast<unsigned long long>(frame), static_cast<unsigned>(hr),
                  static_cast<unsigned long long>(bytesRead));
        ZE_ORACLE(std::equal(c.data.begin(), c.data.end(), buffer.begin()), "frame %llu bytes differ",
                  static_cast<unsigned long long>(frame));
    }
}

void CheckAudio(CZeAviFileParser& parser, const AviModel& model)
{
    const uint32_t audio = parser.GetFirstAudioStreamNumber();
    if (audio == CZeAviFileParser::kNoStream)
        return;
    std::vector<uint8_t> pcm;
    for (const ChunkModel& c : model.chunks)
        if (StreamOfChunkId(c.ckid) == static_cast<int>(audio))
            pcm.insert(pcm.end(), c.data.begin(), c.data.end());
    if (pcm.empty())
        return;
    uint64_t position = 0, count = pcm.size();
    std::vector<uint8_t> got(pcm.size(), 0xEE);
    const HRESULT hr = parser.GetSample(&position, got.data(), &count);
    ZE_ORACLE(hr == 0 && got == pcm, "the PCM of stream %u differs (%x)", audio, static_cast<unsigned>(hr));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider in(data, size);
    const AviModel model = Recipe(in);
    const AviLayout layout = BuildAvi(model);
    TempFile file(layout.bytes);
    SetErrorContext("structured fuzz");
    CZeAviFileParser parser;
    const HRESULT opened = parser.OpenAVIFile(file.c_str());
    ZE_ORACLE(opened == 0, "open %x", static_cast<unsigned>(opened));
    const HRESULT parsed = parser.Parse();
    ZE_ORACLE(parsed == 0, "parse %x", static_cast<unsigned>(parsed));
    CheckIndexes(parser, model, layout);
    CheckFrames(parser, model);
    CheckAudio(parser, model);
    return 0;
}

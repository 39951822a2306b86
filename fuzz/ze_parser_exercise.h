// One pass of the AVI parser over a file, as the host drives it: the quick signature check, the
// full parse, then frames and audio from the start, the middle and past the end. Shared by the
// fuzz target and the regression suite that replays the inputs it found.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "avi/ze_avi_file_parser.h"
#include "reader/status/ze_error_report.h"

namespace zefuzz {

// Frames larger than this are not read: a huge size in a damaged index is not a fault to chase.
constexpr uint32_t kLargestFrameRead = 64u << 20;

inline void ReadSomeFrames(CZeAviFileParser& parser)
{
    const uint64_t count = parser.GetVideoFrameCount();
    // A blank frame past the end is as long as the last frame read by any parser of the process.
    const uint64_t size = std::max<uint64_t>(parser.GetMaxVideoFrameSize(), CZeAviFileParser::GetLastFrameSize());
    if (count == 0 || size > kLargestFrameRead)
        return;
    std::vector<uint8_t> buffer(size ? size : 1);
    const uint64_t frames[] = {0, 1, count / 2, count - 1, count, count + 3, 0};
    for (uint64_t f : frames) {
        for (uint8_t flags : {uint8_t{0}, uint8_t{0x80}}) {
            uint64_t frame = f, bytesRead = 0;
            int16_t tolerance = 1;
            parser.GetFrame(buffer.data(), &frame, &bytesRead, &flags, &tolerance);
        }
    }
}

inline void ReadSomeAudio(CZeAviFileParser& parser)
{
    std::vector<uint8_t> buffer(8192);
    const uint64_t positions[] = {0, 100, 100 + 8192 / 4, 3, 1u << 20, 0};
    for (uint64_t p : positions) {
        uint64_t position = p, count = buffer.size();
        parser.GetSample(&position, buffer.data(), &count);
    }
    const uint32_t block = parser.GetMaxAudioChunkSize();
    if (block == 0 || block > kLargestFrameRead)
        return;
    std::vector<uint8_t> chunk(block);
    for (uint64_t b : {uint64_t{0}, uint64_t{1}}) {
        int32_t skip = 0;
        uint64_t entry = b;
        parser.GetOneAudioBlock(chunk.data(), &entry, &skip);
    }
}

inline void ExerciseParser(const char* path)
{
    SetErrorContext("fuzz");  // also drops the report lines gathered so far
    {
        CZeAviFileParser check;
        check.Parse(path);
    }
    CZeAviFileParser parser;
    if (parser.OpenAVIFile(path) < 0 || parser.Parse() < 0)
        return;
    parser.IsValidAVIFile();
    ReadSomeFrames(parser);
    ReadSomeAudio(parser);
}

}  // namespace zefuzz

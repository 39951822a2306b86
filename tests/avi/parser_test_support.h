// Helpers of the parser unit tests: a parser opened and parsed on bytes written to a temporary
// file, report-line queries, and little patches of built files.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "avi/ze_avi_file_parser.h"
#include "reader/status/ze_error_report.h"
#include "tests/fixtures/ze_avi_formats.h"
#include "tests/fixtures/ze_avi_writer.h"
#include "tests/fixtures/ze_le_bytes.h"
#include "tests/fixtures/ze_temp_file.h"

namespace zetest {

// Opens and fully parses `bytes` (the report list is emptied first).
class ParsedBytes {
public:
    explicit ParsedBytes(const std::vector<uint8_t>& bytes) : file(bytes) {
        SetErrorContext("");
        open = parser.OpenAVIFile(file.c_str());
        parse = open < 0 ? open : parser.Parse();
    }
    TempFile file;
    CZeAviFileParser parser;
    HRESULT open = 0;
    HRESULT parse = 0;
};

// Number of report lines of the parser's class with this code and method since the last
// SetErrorContext.
inline int CountReports(HRESULT code, const std::string& method, const std::string& className = "CZeAviFileParser") {
    char head[32];
    std::snprintf(head, sizeof(head), "[%x]", static_cast<unsigned>(code));
    const std::string tag = "### " + className + "::" + method + " ###";
    int n = 0;
    for (const std::string& line : GetReportList()) {
        if (line.rfind(head, 0) == 0 && line.find(tag) != std::string::npos) ++n;
    }
    return n;
}

inline void PatchU32(std::vector<uint8_t>& bytes, uint64_t at, uint32_t value) {
    for (int i = 0; i < 4; ++i) bytes[static_cast<size_t>(at) + i] = static_cast<uint8_t>(value >> (8 * i));
}

inline void PatchU64(std::vector<uint8_t>& bytes, uint64_t at, uint64_t value) {
    PatchU32(bytes, at, static_cast<uint32_t>(value));
    PatchU32(bytes, at + 4, static_cast<uint32_t>(value >> 32));
}

// Position of the first occurrence of a four-character text at or after `from`; npos when none.
inline size_t FindText(const std::vector<uint8_t>& bytes, const char* text, size_t from = 0) {
    for (size_t i = from; i + 4 <= bytes.size(); ++i) {
        if (std::memcmp(&bytes[i], text, 4) == 0) return i;
    }
    return std::string::npos;
}

// A raw video stream of `count` chunks "00dc" of `size` bytes each.
inline AviModel VideoModel(size_t count, size_t size, Idx1 idx1 = Idx1::FromMovi) {
    AviModel model;
    model.width = 32;
    model.height = 16;
    model.streams = {VideoStream("DIB ", 32, 16)};
    model.chunks = PatternChunks("00dc", count, size);
    model.idx1 = idx1;
    return model;
}

// Video of `frames` chunks followed, chunk for chunk, by 16-bit stereo PCM chunks of `pcmBytes`.
inline AviModel VideoAndPcmModel(size_t frames, size_t frameSize, size_t pcmBytes, Idx1 idx1 = Idx1::FromMovi) {
    AviModel model = VideoModel(0, 0, idx1);
    model.streams.push_back(PcmStream(2, 48000, 16));
    const std::vector<ChunkModel> video = PatternChunks("00dc", frames, frameSize, 1);
    const std::vector<ChunkModel> audio = PatternChunks("01wb", frames, pcmBytes, 2);
    for (size_t i = 0; i < frames; ++i) {
        model.chunks.push_back(video[i]);
        model.chunks.push_back(audio[i]);
    }
    return model;
}

}  // namespace zetest

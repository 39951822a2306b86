// Shared by the real-file suites: a parser opened and fully parsed on one file, the flat index of
// a stream as plain values, ffmpeg material with its ffprobe packets, and the frame and PCM reads
// that every suite compares against those packets.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "avi/ze_avi_file_parser.h"
#include "tests/fixtures/ze_avi_writer.h"
#include "tests/fixtures/ze_ffmpeg_material.h"
#include "tests/fixtures/ze_ffprobe_packets.h"
#include "tests/fixtures/ze_temp_file.h"

namespace zetest {

struct IndexRow {
    uint32_t ckid = 0;
    uint32_t flags = 0;
    uint64_t position = 0;
    uint32_t size = 0;
};

class ParsedFile {
public:
    explicit ParsedFile(const std::string& path)
    {
        openResult = parser.OpenAVIFile(path.c_str());
        parseResult = openResult < 0 ? openResult : parser.Parse();
    }
    bool Ok() const { return openResult >= 0 && parseResult >= 0; }

    std::vector<IndexRow> Index(uint32_t stream) const
    {
        std::vector<IndexRow> rows;
        const CZeAviStreamList* list = parser.GetStream(stream);
        if (!list)
            return rows;
        const CZeAviIndexListChunk& index = list->GetIndexList();
        for (size_t i = 0; i < index.GetCount(); ++i) {
            const CZeAviIndexChunk& e = index.At(i);
            rows.push_back({e.GetChunkId(), e.GetFlags(), e.GetPosition(), e.GetSize()});
        }
        return rows;
    }

    // Frame `frame` into `buffer`; the result of GetFrame, the bytes read in *bytesRead.
    HRESULT Frame(std::vector<uint8_t>& buffer, uint64_t frame, uint64_t* bytesRead, uint8_t flags = 0)
    {
        int16_t tolerance = 0;
        return parser.GetFrame(buffer.data(), &frame, bytesRead, &flags, &tolerance);
    }

    // The audio from sample frame 0 to `frames`, read sequentially `step` sample frames at a time.
    std::vector<uint8_t> PcmInSteps(uint64_t frames, uint64_t frameBytes, uint64_t step)
    {
        std::vector<uint8_t> got;
        for (uint64_t pos = 0; pos < frames; pos += step) {
            uint64_t position = pos;
            uint64_t count = std::min(step, frames - pos) * frameBytes;
            std::vector<uint8_t> buffer(count, 0xEE);
            EXPECT_EQ(parser.GetSample(&position, buffer.data(), &count), 0) << "at sample frame " << pos;
            got.insert(got.end(), buffer.begin(), buffer.end());
        }
        return got;
    }

    CZeAviFileParser parser;
    HRESULT openResult = 0;
    HRESULT parseResult = 0;
};

// Every frame of `expected`, in order, must come back from the parser as exactly those bytes.
inline void ExpectFrames(ParsedFile& f, const std::vector<std::vector<uint8_t>>& expected, uint8_t flags = 0)
{
    std::vector<uint8_t> buffer(f.parser.GetMaxVideoFrameSize());
    for (uint64_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE("frame " + std::to_string(i));
        uint64_t bytesRead = 0;
        ASSERT_EQ(f.Frame(buffer, i, &bytesRead, flags), 0);
        ASSERT_EQ(bytesRead, expected[i].size());
        ASSERT_TRUE(std::equal(expected[i].begin(), expected[i].end(), buffer.begin()));
    }
}

// Index rows against ffprobe's packets: data position, size and key flag of each.
inline void ExpectRowsArePackets(const std::vector<IndexRow>& rows, const std::vector<ProbePacket>& packets)
{
    ASSERT_EQ(rows.size(), packets.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        SCOPED_TRACE("frame " + std::to_string(i));
        EXPECT_EQ(static_cast<int64_t>(rows[i].position), packets[i].pos);
        EXPECT_EQ(rows[i].size, packets[i].size);
        EXPECT_EQ((rows[i].flags & kAviKeyFrame) != 0, packets[i].key);
    }
}

// `size` bytes of the file at `pos`, read with plain stdio.
inline std::vector<uint8_t> FileRange(const std::string& path, uint64_t pos, uint64_t size)
{
    std::unique_ptr<FILE, int (*)(FILE*)> f(std::fopen(path.c_str(), "rb"), &std::fclose);
    std::vector<uint8_t> bytes(size);
    if (!f || fseeko(f.get(), static_cast<off_t>(pos), SEEK_SET) != 0 ||
        std::fread(bytes.data(), 1, size, f.get()) != size)
        throw std::runtime_error("cannot read " + std::to_string(size) + " bytes at " + std::to_string(pos) +
                                 " of " + path);
    return bytes;
}

// An ffmpeg material file read whole, with ffprobe's streams and each packet's bytes.
struct Material {
    // False, with the reason, when the file cannot be made on this machine.
    bool Load(const std::string& name, std::string* whyNot)
    {
        path = MaterialPath(name, whyNot);
        if (path.empty())
            return false;
        probe = ProbeFile(path);
        file = ReadWholeFile(path);
        return true;
    }
    const ProbeStream* FirstOfType(const std::string& type) const
    {
        for (const ProbeStream& s : probe)
            if (s.codecType == type)
                return &s;
        return nullptr;
    }
    std::vector<uint8_t> Bytes(const ProbePacket& p) const
    {
        if (p.pos < 0 || static_cast<uint64_t>(p.pos) + p.size > file.size())
            throw std::out_of_range("packet beyond the end of the file");
        return std::vector<uint8_t>(file.begin() + p.pos, file.begin() + p.pos + p.size);
    }
    std::vector<std::vector<uint8_t>> Packets(const ProbeStream& s) const
    {
        std::vector<std::vector<uint8_t>> packets;
        for (const ProbePacket& p : s.packets)
            packets.push_back(Bytes(p));
        return packets;
    }
    // The joined payload of every packet of the first stream of `type`.
    std::vector<uint8_t> Joined(const std::string& type) const
    {
        std::vector<uint8_t> joined;
        if (const ProbeStream* s = FirstOfType(type))
            for (const ProbePacket& p : s->packets) {
                const std::vector<uint8_t> bytes = Bytes(p);
                joined.insert(joined.end(), bytes.begin(), bytes.end());
            }
        return joined;
    }

    std::string path;
    std::vector<ProbeStream> probe;
    std::vector<uint8_t> file;
};

// Names of the material files below a gigabyte that `wanted` picks.
inline std::vector<std::string> SmallMaterials(bool (*wanted)(const MaterialInfo&))
{
    std::vector<std::string> names;
    for (const MaterialInfo& m : MaterialTable())
        if (!m.large && wanted(m))
            names.push_back(m.name);
    return names;
}

// Indexes into `model.chunks` of the chunks of one stream, in file order.
inline std::vector<size_t> ChunksOfStream(const AviModel& model, int stream)
{
    std::vector<size_t> chunks;
    for (size_t i = 0; i < model.chunks.size(); ++i)
        if (StreamOfChunkId(model.chunks[i].ckid) == stream)
            chunks.push_back(i);
    return chunks;
}

}  // namespace zetest

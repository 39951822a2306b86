// Shared by the real-file suites: a parser opened and fully parsed on one file, the flat index of
// a stream as plain values, and byte ranges of the file read directly, without the parser.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "avi/ze_avi_file_parser.h"

namespace zetest {

struct IndexRow {
    uint32_t ckid = 0;
    uint32_t flags = 0;
    uint64_t position = 0;
    uint32_t size = 0;
};

class ParsedFile {
public:
    explicit ParsedFile(const std::string& path) : m_path(path)
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

    CZeAviFileParser parser;
    HRESULT openResult = 0;
    HRESULT parseResult = 0;

private:
    std::string m_path;
};

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

}  // namespace zetest

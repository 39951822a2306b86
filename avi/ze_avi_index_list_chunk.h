// CZeAviIndexListChunk: a stream's flat index, one CZeAviIndexChunk per stored chunk of the
// stream, in the order of the file's index. Its base fields describe the index chunk it came from.
#pragma once

#include <cstddef>
#include <vector>

#include "avi/ze_avi_form_types.h"
#include "avi/ze_avi_index_chunk.h"

class CZeAviIndexListChunk : public CZeAviFormTypes {
public:
    CZeAviIndexListChunk() = default;
    CZeAviIndexListChunk(const CZeAviIndexListChunk&) = default;
    CZeAviIndexListChunk& operator=(const CZeAviIndexListChunk&) = default;
    CZeAviIndexListChunk(CZeAviIndexListChunk&&) = default;
    CZeAviIndexListChunk& operator=(CZeAviIndexListChunk&&) = default;
    ~CZeAviIndexListChunk() override;

    // Destroys every entry, then the base fields 0.
    HRESULT Reset() override;
    // Banner and base fields only, nothing about the entries.
    std::string Dump() const override;

    void Append(const CZeAviIndexChunk& entry) { m_entries.push_back(entry); }
    void Reserve(size_t count) { m_entries.reserve(count); }
    size_t GetCount() const { return m_entries.size(); }
    bool IsEmpty() const { return m_entries.empty(); }
    // Position must be below GetCount().
    const CZeAviIndexChunk& At(size_t position) const { return m_entries[position]; }
    CZeAviIndexChunk& At(size_t position) { return m_entries[position]; }
    const std::vector<CZeAviIndexChunk>& Entries() const { return m_entries; }

private:
    std::vector<CZeAviIndexChunk> m_entries;
};

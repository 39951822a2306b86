// The index records: the entries of a stream's flat index (CZeAviIndexChunk) and the list that
// holds them (CZeAviIndexListChunk), and the transient records of an OpenDML index while the parser
// reads it (CZeAviBaseIndex, CZeAviSuperIndex).
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "avi/ze_avi_form_types.h"
#include "platform/win32.h"

// CZeAviIndexChunk: one entry of a stream's flat index, whichever index of the file it came from:
// the chunk's identifier, its flags (0x10 key frame), the offset as the index gives it, the size of
// its data and the absolute file position of its data.
struct ze_avi_indexchunk {
    uint32_t ckid = 0;
    uint32_t dwFlags = 0;
    uint64_t qwOffset = 0;
    uint32_t dwSize = 0;
    uint64_t qwPosition = 0;
};

// (type, field, accessor name)
#define ZE_AVI_INDEXCHUNK_FIELDS(X)   \
    X(uint32_t, ckid, ChunkId)        \
    X(uint32_t, dwFlags, Flags)       \
    X(uint64_t, qwOffset, Offset)     \
    X(uint32_t, dwSize, Size)         \
    X(uint64_t, qwPosition, Position)

class CZeAviIndexChunk : private ze_avi_indexchunk {
public:
    static constexpr uint32_t kKeyFrame = 0x10;  // AVIIF_KEYFRAME

    CZeAviIndexChunk() = default;
    CZeAviIndexChunk(const CZeAviIndexChunk&) = default;
    CZeAviIndexChunk& operator=(const CZeAviIndexChunk&) = default;
    virtual ~CZeAviIndexChunk() = default;

    // All five fields 0; returns 0.
    virtual HRESULT Reset();

#define ZE_ACCESSORS(type, field, name)           \
    type Get##name() const { return field; }      \
    void Set##name(type value) { field = value; }
    ZE_AVI_INDEXCHUNK_FIELDS(ZE_ACCESSORS)
#undef ZE_ACCESSORS

    bool IsKeyFrame() const { return (dwFlags & kKeyFrame) != 0; }
};

// CZeAviIndexListChunk: a stream's flat index, one CZeAviIndexChunk per stored chunk of the
// stream, in the order of the file's index. Its base fields describe the index chunk it came from.
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

// CZeAviBaseIndex: the common header of an OpenDML 'indx' super index or 'ix##' standard index
// chunk, as the parser reads it. For a super index entry, `cb` holds the entry's size and
// `qwOffset` the file position of the 'ix##' chunk it points to.
struct ze_avi_baseindex {
    uint32_t fcc = 0;
    uint32_t cb = 0;
    uint16_t wLongsPerEntry = 0;
    uint8_t bIndexSubType = 0;
    uint8_t bIndexType = 0;
    uint32_t nEntriesInUse = 0;
    uint32_t dwChunkId = 0;
    uint32_t dwReserved[3] = {0, 0, 0};
    uint64_t qwOffset = 0;
};

// (type, field, accessor name); dwReserved has accessors by index.
#define ZE_AVI_BASEINDEX_FIELDS(X)               \
    X(uint32_t, fcc, Fcc)                        \
    X(uint32_t, cb, Cb)                          \
    X(uint16_t, wLongsPerEntry, LongsPerEntry)   \
    X(uint8_t, bIndexSubType, IndexSubType)      \
    X(uint8_t, bIndexType, IndexType)            \
    X(uint32_t, nEntriesInUse, EntriesInUse)     \
    X(uint32_t, dwChunkId, ChunkId)              \
    X(uint64_t, qwOffset, Offset)

class CZeAviBaseIndex : protected ze_avi_baseindex {
public:
    CZeAviBaseIndex() = default;
    CZeAviBaseIndex(const CZeAviBaseIndex&) = default;
    CZeAviBaseIndex& operator=(const CZeAviBaseIndex&) = default;
    virtual ~CZeAviBaseIndex() = default;

    // Every field 0; returns 0.
    virtual HRESULT Reset();

#define ZE_ACCESSORS(type, field, name)           \
    type Get##name() const { return field; }      \
    void Set##name(type value) { field = value; }
    ZE_AVI_BASEINDEX_FIELDS(ZE_ACCESSORS)
#undef ZE_ACCESSORS

    // Index 0..2; another index reads 0 and is ignored by the setter.
    uint32_t GetReserved(int32_t index) const { return (index >= 0 && index < 3) ? dwReserved[index] : 0; }
    void SetReserved(int32_t index, uint32_t value) {
        if (index >= 0 && index < 3) dwReserved[index] = value;
    }
};

// CZeAviSuperIndex: one entry of an 'indx' super index while the parser reads the 'ix##' chunk it
// points to. It can own a sequence of entry records, which its Reset destroys.
class CZeAviSuperIndex : public CZeAviBaseIndex {
public:
    CZeAviSuperIndex() = default;
    CZeAviSuperIndex(const CZeAviSuperIndex&) = delete;
    CZeAviSuperIndex& operator=(const CZeAviSuperIndex&) = delete;
    ~CZeAviSuperIndex() override;

    // The base fields 0, then every owned entry destroyed.
    HRESULT Reset() override;

private:
    std::vector<std::unique_ptr<CZeAviBaseIndex>> m_entries;
};

// CZeAviFileParser: building the per-stream flat indexes from OpenDML 'indx'/'ix##' chunks or
// from the legacy 'idx1' chunk.
#include <algorithm>
#include <cstring>
#include <new>

#include "avi/ze_avi_file_parser.h"
#include "avi/ze_avi_chunk_layouts.h"
#include "avi/ze_avi_index_records.h"
#include "avi/ze_avi_fourcc.h"
#include "avi/ze_avi_le.h"
#include "reader/status/ze_error_report.h"

using namespace ZeAvi;

namespace {

// Largest 'ix##' entry array accepted (bytes).
constexpr uint64_t kMaxIxArrayBytes = 0x20000000u;
// The first-video-chunk scan looks at this many positions at most.
constexpr uint64_t kFirstVideoScanPositions = 0x400000u;
// The scan reads the file in windows of this size; consecutive windows overlap by 3 bytes so that
// every position is tested with its 4 bytes in one window.
constexpr uint64_t kScanWindow = 0x10000u;

bool IsVideoChunkName(const uint8_t* p) {
    return p[0] == '0' && p[1] == '0' && (p[2] == 'd' || p[2] == 'D') &&
           (p[3] == 'b' || p[3] == 'B' || p[3] == 'c' || p[3] == 'C');
}

bool SameText2(const uint8_t* p, const char* text) {
    return LowerAscii(static_cast<char>(p[0])) == text[0] && LowerAscii(static_cast<char>(p[1])) == text[1];
}

// The stream number of a chunk identifier, read the way atoi reads the identifier's characters:
// leading white space, an optional sign, then decimal digits.
int32_t StreamNumberOf(const uint8_t* ckid) {
    int i = 0;
    while (i < 4 && (ckid[i] == ' ' || (ckid[i] >= '\t' && ckid[i] <= '\r'))) ++i;
    bool negative = false;
    if (i < 4 && (ckid[i] == '+' || ckid[i] == '-')) {
        negative = ckid[i] == '-';
        ++i;
    }
    int32_t value = 0;
    for (; i < 4 && ckid[i] >= '0' && ckid[i] <= '9'; ++i) value = value * 10 + (ckid[i] - '0');
    return negative ? -value : value;
}

// The index header that 'indx' and 'ix##' chunks share, as stored: wLongsPerEntry, bIndexSubType,
// bIndexType, nEntriesInUse, dwChunkId (12 bytes). The reserved words are not taken from the file.
void DecodeIndexHeader(const uint8_t* p, CZeAviBaseIndex& index) {
    index.SetLongsPerEntry(LoadLE16(p));
    index.SetIndexSubType(p[2]);
    index.SetIndexType(p[3]);
    index.SetEntriesInUse(LoadLE32(p + 4));
    index.SetChunkId(LoadLE32(p + 8));
    for (int32_t i = 0; i < 3; ++i) index.SetReserved(i, 0);
}

}  // namespace

// ---- OpenDML indexes -----------------------------------------------------------------------------

HRESULT CZeAviFileParser::ParseStreamIndexChunk(uint64_t position, CZeAviStreamList& streamList) {
    const char* const method = "ParseStreamIndexChunk";
    uint32_t fcc = 0;
    uint32_t cb = 0;
    HRESULT hr = OpenChunk(position, kIndx, method, &cb, nullptr, &fcc);
    if (FAILED(hr)) return hr;
    CZeAviIndexListChunk indexList;
    indexList.SetID(fcc);
    indexList.SetSize(cb);
    indexList.SetOffset(static_cast<uint32_t>(position + 8));

    CZeAviBaseIndex superIndex;
    superIndex.SetFcc(kIndx);
    superIndex.SetCb(cb);
    uint64_t cursor = position + 8;
    if (FAILED(hr = FillBaseIndex(&cursor, superIndex))) return hr;

    const uint32_t entries = superIndex.GetEntriesInUse();
    // Termination: every entry is read from the file, so a count beyond the file ends in a short read.
    for (uint32_t i = 0; i < entries; ++i) {
        if (FAILED(hr = SeekTo(position + 32 + 16 * static_cast<uint64_t>(i)))) return hr;
        // qwOffset, dwSize, dwDuration (not used)
        uint8_t body[16];
        if (FAILED(hr = ReadBody(body, kSuperIndexEntryBody, method))) return hr;
        CZeAviSuperIndex entry;
        entry.SetOffset(LoadLE64(body));
        entry.SetCb(LoadLE32(body + 8));
        if (FAILED(hr = FillSuperIndex(indexList, entry, entries))) return hr;
    }
    streamList.SetIndexList(std::move(indexList));
    return S_OK;
}

HRESULT CZeAviFileParser::FillBaseIndex(uint64_t* position, CZeAviBaseIndex& index) {
    const char* const method = "FillBaseIndex";
    if (position == nullptr) return ReportError(kClass, method, E_POINTER);
    HRESULT hr = SeekTo(*position);
    if (FAILED(hr)) return hr;
    uint8_t body[12];
    if (FAILED(hr = ReadBody(body, kIndexHeaderBody, method))) return hr;
    DecodeIndexHeader(body, index);
    *position += 24;
    return S_OK;
}

HRESULT CZeAviFileParser::FillSuperIndex(CZeAviIndexListChunk& indexList, CZeAviSuperIndex& entry,
                                         uint32_t entryCount) {
    const char* const method = "FillSuperIndex";
    HRESULT hr = SeekTo(entry.GetOffset());
    if (FAILED(hr)) return hr;
    // The 'ix##' chunk's head: FOURCC, size, the index header, qwBaseOffset, dwReserved3.
    uint8_t head[32];
    if (FAILED(hr = ReadBody(head, kStandardIndexHead, method))) return hr;
    entry.SetFcc(LoadLE32(head));
    entry.SetCb(LoadLE32(head + 4));
    DecodeIndexHeader(head + 8, entry);
    const uint64_t baseOffset = LoadLE64(head + 20);

    const uint32_t count = entry.GetEntriesInUse();
    // Guard: the byte count is taken in 64 bits, so a count whose 32-bit product would wrap cannot
    // slip under the bound.
    const uint64_t bytes = static_cast<uint64_t>(count) * 8;
    if (bytes > kMaxIxArrayBytes) return ReportError(kClass, method, E_AVI_STREAMINDEX);
    // Guard: an array reaching past the end of the file could only end in a short read; it is
    // refused as one before it is allocated.
    if (bytes > BytesFrom(m_file.GetPosition())) return ReportError(kClass, method, E_AVI_READ);
    // Guard: one parse cannot read more standard index entries, over all streams, kept or left
    // out, than the file has room for 8-byte entries; super indexes that name the same 'ix##'
    // chunk again and again, within one stream or across streams, stop here instead of growing
    // the indexes (or the time spent on them) without bound. Arrays that lie inside the file, each
    // in bytes of its own, never trip this, so it comes after the short-read test and only catches
    // entries counted twice.
    const uint64_t maxEntries = m_file.GetFileSize() / 8;
    if (m_indexEntriesRead + count > maxEntries) return ReportError(kClass, method, E_AVI_STREAMINDEX);
    m_indexEntriesRead += count;
    std::vector<uint8_t> array;
    try {
        array.resize(static_cast<size_t>(bytes));
    } catch (const std::bad_alloc&) {
        return ReportError(kClass, method, E_OUTOFMEMORY);
    }
    if (bytes != 0 && FAILED(hr = ReadExact(array.data(), bytes, method))) return hr;

    if (indexList.IsEmpty()) {
        // One reservation, assuming every 'ix##' chunk is as long as the first. Guard: never more
        // than the file's size in entry records.
        const uint64_t predicted = static_cast<uint64_t>(count) * entryCount;
        const uint64_t cap = m_file.GetFileSize() / sizeof(CZeAviIndexChunk);
        try {
            indexList.Reserve(static_cast<size_t>(std::min(predicted, cap)));
        } catch (const std::bad_alloc&) {
            return ReportError(kClass, method, E_OUTOFMEMORY);
        }
    }
    const uint8_t* cursor = array.data();
    for (uint32_t i = 0; i < count; ++i) {
        CZeAviIndexChunk indexEntry;
        indexEntry.SetChunkId(entry.GetChunkId());
        if (FAILED(hr = FillSuperIndex(indexEntry, baseOffset, &cursor))) return hr;
        indexList.Append(indexEntry);
    }
    return S_OK;
}

HRESULT CZeAviFileParser::FillSuperIndex(CZeAviIndexChunk& entry, uint64_t baseOffset, const uint8_t** cursor) {
    if (cursor == nullptr || *cursor == nullptr) return ReportError(kClass, "FillSuperIndex", E_POINTER);
    const uint32_t offset = LoadLE32(*cursor);
    const uint32_t sizeWord = LoadLE32(*cursor + 4);
    entry.SetOffset(offset);
    entry.SetPosition(offset + baseOffset);
    entry.SetSize(sizeWord);
    // Bit 31 of the size marks a frame that is not a key frame.
    if (static_cast<int32_t>(sizeWord) >= 0) entry.SetFlags(entry.GetFlags() | CZeAviIndexChunk::kKeyFrame);
    // The bit is taken out of the size only when the size word exceeds the suggested buffer size.
    if (sizeWord > m_aviFile.GetHeader().GetSuggestedBufferSize()) entry.SetSize(sizeWord & 0x7FFFFFFFu);
    *cursor += 8;
    return S_OK;
}

// ---- Legacy index ----------------------------------------------------------------------------

HRESULT CZeAviFileParser::BuildLegacyIndex() {
    const CZeAviStreamList* principal = m_aviFile.GetStream(0);
    if (principal == nullptr || !principal->GetIndexList().IsEmpty()) return S_OK;
    uint64_t movi = 0;
    HRESULT hr = FindListChunk(12, "movi", &movi);
    if (FAILED(hr)) return hr;
    uint64_t moviBase = movi + 16;  // where the data of a chunk at relative offset 0 begins
    uint64_t idx1 = 0;
    uint32_t idx1Size = 0;
    if (FAILED(hr = FindChunk(movi, "idx1", &idx1, &idx1Size))) return hr;
    if (idx1 == 0 || idx1Size == 0) return S_OK;
    uint64_t firstVideoData = 0;
    if (FAILED(hr = FindFirstVideoChunk(movi, &firstVideoData))) return hr;
    return ParseStreamIdx1Chunk(idx1, &moviBase, firstVideoData);
}

HRESULT CZeAviFileParser::FindFirstVideoChunk(uint64_t start, uint64_t* dataPosition) {
    // Finds exactly what testing one position at a time finds (seek there, read 4 bytes, compare
    // with "00db"/"00dc"; a short read ends the scan), but reads the file in overlapping windows.
    // A position whose low word is all ones cannot be sought to; the scan stops there with the
    // seek's failure, as a one-position-at-a-time scan would.
    *dataPosition = 0;
    const uint64_t limit = start + kFirstVideoScanPositions;  // positions start .. limit - 1
    std::vector<uint8_t> window(kScanWindow);
    uint64_t position = start;
    while (position < limit) {
        HRESULT hr = SeekTo(position);
        if (FAILED(hr)) return hr;
        uint64_t count = kScanWindow;
        uint64_t got = 0;
        if (FAILED(hr = Read(window.data(), &count, &got))) return hr;
        if (got < 4) return S_FALSE;  // short read: nothing found
        uint64_t last = std::min(position + got - 4, limit - 1);
        const uint64_t unseekable = position | 0xFFFFFFFFull;  // first position >= this one that cannot be sought
        const bool stopsAtSeek = unseekable > position && unseekable <= last;
        if (stopsAtSeek) last = unseekable - 1;
        // Every name starts with '0': jump from one '0' to the next instead of testing each byte.
        const uint8_t* const base = window.data();
        const uint8_t* cursor = base;
        const uint8_t* const end = base + static_cast<size_t>(last - position) + 1;
        while (cursor < end) {
            cursor = static_cast<const uint8_t*>(std::memchr(cursor, '0', static_cast<size_t>(end - cursor)));
            if (cursor == nullptr) break;
            if (IsVideoChunkName(cursor)) {
                *dataPosition = position + static_cast<uint64_t>(cursor - base) + 8;
                return S_OK;
            }
            ++cursor;
        }
        position = last + 1;  // the next window starts at the first position not yet tested
    }
    return S_FALSE;
}

HRESULT CZeAviFileParser::ParseStreamIdx1Chunk(uint64_t position, uint64_t* moviBase, uint64_t firstVideoData) {
    const char* const method = "ParseStreamIdx1Chunk";
    if (moviBase == nullptr) return ReportError(kClass, method, E_POINTER);
    uint32_t size = 0;
    HRESULT hr = OpenChunk(position, kIdx1, method, &size);
    if (FAILED(hr)) return hr;
    // Guard: an index reaching past the end of the file could only end in a short read; it is
    // refused as one before it is allocated.
    if (size > BytesFrom(position + 8)) return ReportError(kClass, method, E_AVI_READ);
    std::vector<uint8_t> entries;
    try {
        entries.assign(size, 0);
    } catch (const std::bad_alloc&) {
        return ReportError(kClass, method, E_OUTOFMEMORY);
    }
    if (FAILED(hr = ReadExact(entries.data(), size, method))) return hr;

    std::vector<CZeAviStreamList>& streams = m_aviFile.GetStreams();
    const uint64_t streamCount = streams.size();
    const uint32_t count = size >> 4;  // a remainder of fewer than 16 bytes is ignored
    bool baseDecided = false;
    for (uint32_t i = 0; i < count; ++i) {
        const uint8_t* record = &entries[static_cast<size_t>(i) * 16];
        const int32_t stream = StreamNumberOf(record);
        if (stream < 0 || static_cast<uint64_t>(stream) >= streamCount) {
            ReportError(kClass, method, E_AVI_STREAMINDEX);
            continue;
        }
        const uint8_t* type = record + 2;
        const bool frame = SameText2(type, "db") || SameText2(type, "dc") || SameText2(type, "sb") ||
                           SameText2(type, "__");
        const bool audio = !frame && SameText2(type, "wb");
        if (!frame && !audio) continue;

        const uint32_t ckid = LoadLE32(record);
        const uint32_t flags = LoadLE32(record + 4);
        const uint32_t offset = LoadLE32(record + 8);
        const uint32_t length = LoadLE32(record + 12);
        CZeAviIndexChunk entry;
        entry.SetChunkId(ckid);
        entry.SetFlags(flags);
        entry.SetSize(length);
        if (frame) {
            entry.SetOffset(offset);
            // The first "00db"/"00dc" entry tells how the offsets are counted: from the 'movi'
            // FOURCC (delta equals the starting base) or from the start of the file.
            if (firstVideoData != 0 && !baseDecided && record[0] == '0' && record[1] == '0' &&
                (SameText2(type, "db") || SameText2(type, "dc"))) {
                const uint64_t delta = firstVideoData - offset;
                if (delta != 0) {
                    *moviBase = delta;
                    baseDecided = true;
                }
            }
            entry.SetPosition(offset + *moviBase);
        } else {
            // Audio entries keep the resolved position in both fields.
            entry.SetOffset(offset + *moviBase);
            entry.SetPosition(offset + *moviBase);
        }
        streams[static_cast<size_t>(stream)].GetIndexList().Append(entry);
    }
    return hr;
}

// CZeAviFileParser: opening the file, the read and seek wrappers every parse step uses, the chunk
// openers and the searches for sibling chunks.
#include "avi/ze_avi_file_parser.h"
#include "avi/ze_avi_chunk_layouts.h"
#include "avi/ze_avi_fourcc.h"
#include "avi/ze_avi_le.h"
#include "reader/status/ze_error_report.h"

using namespace ZeAvi;

// ---- The file ---------------------------------------------------------------------------------

HRESULT CZeAviFileParser::OpenAVIFile(const char* path) {
    if (path == nullptr) return ReportError(kClass, "OpenAVIFile", E_POINTER);
    if (m_file.IsOpen() && m_aviFile.GetFileName() == path) return S_OK;
    Reset();
    const int32_t opened = m_file.Open(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                       FILE_ATTRIBUTE_READONLY | FILE_FLAG_NO_BUFFERING, nullptr);
    if (opened < 0) return ReportError(kClass, "OpenAVIFile", E_AVI_OPEN);
    m_aviFile.SetFileName(path);
    return S_OK;
}

HRESULT CZeAviFileParser::Seek(uint64_t* position, uint32_t* method) {
    if (position == nullptr || method == nullptr) return ReportError(kClass, "Seek", E_POINTER);
    int32_t high = static_cast<int32_t>(static_cast<uint32_t>(*position >> 32));
    const uint32_t low = m_file.Seek(static_cast<int32_t>(static_cast<uint32_t>(*position)), &high, *method);
    if (low == INVALID_SET_FILE_POINTER) return ReportError(kClass, "Seek", E_AVI_SEEK);
    return S_OK;
}

HRESULT CZeAviFileParser::SeekTo(uint64_t position, const char* method) {
    int32_t high = static_cast<int32_t>(static_cast<uint32_t>(position >> 32));
    const uint32_t low = m_file.Seek(static_cast<int32_t>(static_cast<uint32_t>(position)), &high, FILE_BEGIN);
    if (low == INVALID_SET_FILE_POINTER) return ReportError(kClass, method, E_AVI_SEEK);
    return S_OK;
}

HRESULT CZeAviFileParser::Read(void* buffer, uint64_t* count, uint64_t* bytesRead) {
    if (buffer == nullptr || count == nullptr || bytesRead == nullptr) return ReportError(kClass, "Read", E_POINTER);
    *bytesRead = 0;
    if (*count != 0 && FileRead(buffer, count, bytesRead) < 0) {
        return ReportError(kClass, "Read", E_AVI_READ);
    }
    return S_OK;
}

int32_t CZeAviFileParser::FileRead(void* buffer, uint64_t* count, uint64_t* bytesRead) {
    // Guard: positions near 2^64 (a damaged 64-bit offset) would wrap once the count is added;
    // a read that starts past the end of the file fails before it reaches the file layer. A read
    // of nothing is left to the layer, which succeeds at once wherever the position stands.
    if (m_file.IsOpen() && *count != 0 && m_file.GetPosition() > m_file.GetFileSize()) {
        *bytesRead = 0;
        return E_FAIL;
    }
    return m_file.Read(buffer, count, bytesRead, nullptr);
}

HRESULT CZeAviFileParser::ReadExact(void* buffer, uint64_t count, const char* method) {
    uint64_t got = 0;
    const HRESULT hr = Read(buffer, &count, &got);
    if (FAILED(hr)) return hr;
    if (got != count) return ReportError(kClass, method, E_AVI_READ);
    return S_OK;
}

HRESULT CZeAviFileParser::ReadBody(void* buffer, const FieldLayout& layout, const char* method) {
    uint64_t count = layout.Bytes();
    uint64_t got = 0;
    const HRESULT hr = Read(buffer, &count, &got);
    if (FAILED(hr)) return hr;
    return got < layout.Bytes() ? ShortBody(got, layout, method) : S_OK;
}

HRESULT CZeAviFileParser::ShortBody(uint64_t got, const FieldLayout& layout, const char* method) {
    if (layout.IsBetweenFields(got)) {
        const HRESULT hr = ReadOnAtEnd();
        if (FAILED(hr)) return hr;
    }
    return ReportError(kClass, method, E_AVI_READ);
}

HRESULT CZeAviFileParser::ReadOnAtEnd() {
    uint8_t field[8];
    uint64_t count = sizeof(field);
    uint64_t got = 0;
    return Read(field, &count, &got);
}

uint64_t CZeAviFileParser::BytesFrom(uint64_t position) const {
    const uint64_t size = m_file.GetFileSize();
    return position < size ? size - position : 0;
}

// ---- Chunk openers ----------------------------------------------------------------------------

HRESULT CZeAviFileParser::OpenChunk(uint64_t position, uint32_t fourcc, const char* method, uint32_t* size,
                                    CZeAviFormTypes* record, uint32_t* idRead) {
    HRESULT hr = SeekTo(position);
    if (FAILED(hr)) return hr;
    uint8_t head[8];
    uint64_t count = sizeof(head);
    uint64_t got = 0;
    if (FAILED(hr = Read(head, &count, &got))) return hr;
    // The identifier is judged before the size: a record learns its ID even when the size is cut off.
    if (got < 4) return ShortBody(got, kChunkHead, method);
    const uint32_t id = LoadLE32(head);
    if (!SameFourCC(id, fourcc)) return ReportError(kClass, method, E_AVI_READ);
    if (record != nullptr) record->SetID(fourcc);
    if (idRead != nullptr) *idRead = id;
    if (got < sizeof(head)) return ShortBody(got, kChunkHead, method);
    *size = LoadLE32(head + 4);
    if (*size == 0) return ReportError(kClass, method, E_AVI_READ);
    return S_OK;
}

HRESULT CZeAviFileParser::OpenList(uint64_t position, uint32_t listType, const char* method, uint32_t* size,
                                   CZeAviFormTypes* sizeRecord) {
    HRESULT hr = OpenChunk(position, kLIST, method, size);
    if (FAILED(hr)) return hr;
    if (sizeRecord != nullptr) sizeRecord->SetSize(*size);
    uint8_t type[4];
    if (FAILED(hr = ReadExact(type, sizeof(type), method))) return hr;
    if (!SameFourCC(LoadLE32(type), listType)) return ReportError(kClass, method, E_AVI_READ);
    return S_OK;
}

// ---- Chunk searches ---------------------------------------------------------------------------

HRESULT CZeAviFileParser::FindListChunk(uint64_t start, const char* listType, uint64_t* found) {
    const char* const method = "FindListChunk";
    if (listType == nullptr || found == nullptr) return ReportError(kClass, method, E_POINTER);
    const uint32_t wanted = FourCC(listType);
    *found = 0;
    uint64_t position = start;
    HRESULT hr = SeekTo(position);
    if (FAILED(hr)) return hr;
    // Termination: every round either moves `position` on by at least 8 bytes or (a match at
    // position 0 only) reads on sequentially, so the walk reaches the end of the file, where the
    // reads fail or come up short.
    for (;;) {
        uint8_t head[12];  // identifier, size, list type
        if (FAILED(hr = ReadBody(head, kListHead, method))) return hr;
        if (SameFourCC(LoadLE32(head), kLIST) && SameFourCC(LoadLE32(head + 8), wanted)) {
            *found = position;
            if (position != 0) return S_OK;
            continue;  // a match at offset 0 reads on from where the file stands
        }
        // Odd sizes are not rounded up to the RIFF padding.
        position += static_cast<uint64_t>(LoadLE32(head + 4)) + 8;
        if (FAILED(hr = SeekTo(position))) return hr;
    }
}

HRESULT CZeAviFileParser::FindChunk(uint64_t start, const char* chunkId, uint64_t* found, uint32_t* size,
                                    uint64_t end) {
    if (chunkId == nullptr || found == nullptr) return ReportError(kClass, "FindChunk", E_POINTER);
    const uint32_t wanted = FourCC(chunkId);
    *found = 0;
    if (size != nullptr) *size = 0;
    uint64_t position = start;
    // Termination: `position` grows by at least 8 bytes a round until a read comes up short.
    while (position < end) {
        HRESULT hr = SeekTo(position);
        if (FAILED(hr)) return hr;
        uint8_t head[8];
        uint64_t count = sizeof(head);
        uint64_t got = 0;
        // A chunk header cut off by the end of the file ends the walk without a match (a read
        // refused there has reported itself).
        if (FAILED(Read(head, &count, &got))) return S_OK;
        if (got != sizeof(head)) {
            if (kChunkHead.IsBetweenFields(got)) ReadOnAtEnd();
            return S_OK;
        }
        const uint32_t chunkSize = LoadLE32(head + 4);
        if (SameFourCC(LoadLE32(head), wanted)) {
            *found = position;
            if (size != nullptr) *size = chunkSize;
            return S_OK;
        }
        position += static_cast<uint64_t>(chunkSize) + 8;
    }
    return S_OK;
}

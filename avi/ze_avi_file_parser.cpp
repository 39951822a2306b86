// CZeAviFileParser: opening, file I/O wrappers, validation, the full parse sequence and the walk
// of the header list. Index building and sample access live in their own files.
#include "avi/ze_avi_file_parser.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "avi/ze_avi_fourcc.h"
#include "avi/ze_avi_header_list.h"
#include "avi/ze_avi_le.h"
#include "reader/status/ze_error_report.h"

using namespace ZeAvi;

namespace {

const char kClass[] = "CZeAviFileParser";

// A stream name longer than this is cut; the rest of the 'strn' chunk is not read.
constexpr uint32_t kMaxStreamName = 4096;

uint32_t FourCCOf(const char* text) {
    uint32_t value = 0;
    for (int i = 0; i < 4 && text[i] != '\0'; ++i) {
        value |= static_cast<uint32_t>(static_cast<uint8_t>(text[i])) << (8 * i);
    }
    return value;
}

}  // namespace

CZeAviFileParser::CZeAviFileParser() { Reset(); }

CZeAviFileParser::~CZeAviFileParser() { Reset(); }

void CZeAviFileParser::Reset() {
    if (m_file.IsOpen()) m_file.Close();
    m_aviFile.Reset();
    m_aviFile.SetFileName(std::string());
    m_parsed = 0;
    m_audioCursor = AudioCursor();
    m_indexEntriesRead = 0;
    std::vector<uint64_t>().swap(m_audioEntryEnds);
    m_frameCache[0] = FrameCache();
    m_frameCache[1] = FrameCache();
    m_dvVideo = ZeDVVideoParams();
    m_dvAudio = ZeDVAudioParams();
    std::vector<uint8_t>().swap(m_dvFrameBuffer);
    m_dvState.reset();
}

// ---- File I/O ---------------------------------------------------------------------------------

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

HRESULT CZeAviFileParser::SeekTo(uint64_t position) {
    uint32_t method = FILE_BEGIN;
    return Seek(&position, &method);
}

HRESULT CZeAviFileParser::ReadExact(void* buffer, uint64_t count, const char* method) {
    uint64_t got = 0;
    const HRESULT hr = Read(buffer, &count, &got);
    if (FAILED(hr)) return hr;
    if (got != count) return ReportError(kClass, method, E_AVI_READ);
    return S_OK;
}

HRESULT CZeAviFileParser::ReadU8(uint8_t* value, const char* method) { return ReadExact(value, 1, method); }

HRESULT CZeAviFileParser::ReadU16(uint16_t* value, const char* method) {
    uint8_t bytes[2];
    const HRESULT hr = ReadExact(bytes, sizeof(bytes), method);
    if (SUCCEEDED(hr)) *value = LoadLE16(bytes);
    return hr;
}

HRESULT CZeAviFileParser::ReadU32(uint32_t* value, const char* method) {
    uint8_t bytes[4];
    const HRESULT hr = ReadExact(bytes, sizeof(bytes), method);
    if (SUCCEEDED(hr)) *value = LoadLE32(bytes);
    return hr;
}

HRESULT CZeAviFileParser::OpenChunk(uint64_t position, uint32_t fourcc, const char* method, uint32_t* size,
                                    CZeAviFormTypes* record, uint32_t* idRead) {
    HRESULT hr = SeekTo(position);
    if (FAILED(hr)) return hr;
    uint32_t id = 0;
    if (FAILED(hr = ReadU32(&id, method))) return hr;
    if (!SameFourCC(id, fourcc)) return ReportError(kClass, method, E_AVI_READ);
    if (record != nullptr) record->SetID(fourcc);
    if (idRead != nullptr) *idRead = id;
    if (FAILED(hr = ReadU32(size, method))) return hr;
    if (*size == 0) return ReportError(kClass, method, E_AVI_READ);
    return S_OK;
}

HRESULT CZeAviFileParser::OpenList(uint64_t position, uint32_t listType, const char* method, uint32_t* size,
                                   CZeAviFormTypes* sizeRecord) {
    HRESULT hr = OpenChunk(position, kLIST, method, size);
    if (FAILED(hr)) return hr;
    if (sizeRecord != nullptr) sizeRecord->SetSize(*size);
    uint32_t type = 0;
    if (FAILED(hr = ReadU32(&type, method))) return hr;
    if (!SameFourCC(type, listType)) return ReportError(kClass, method, E_AVI_READ);
    return S_OK;
}

HRESULT CZeAviFileParser::ReadU64(uint64_t* value, const char* method) {
    uint8_t bytes[8];
    const HRESULT hr = ReadExact(bytes, sizeof(bytes), method);
    if (SUCCEEDED(hr)) *value = LoadLE64(bytes);
    return hr;
}

uint64_t CZeAviFileParser::BytesFrom(uint64_t position) const {
    const uint64_t size = m_file.GetFileSize();
    return position < size ? size - position : 0;
}

// ---- Validation and the parse sequence ------------------------------------------------------

HRESULT CZeAviFileParser::IsValidAVIFile() {
    if (!m_parsed) return ReportError(kClass, "IsValidAVIFile", E_AVI_PARSE);
    const bool headerUsable = m_aviFile.GetHeader().GetID() == kAvih;
    const bool hasStreams = !m_aviFile.GetStreams().empty();
    const CZeAviStreamList* first = m_aviFile.GetStream(0);
    const bool firstUsable = first != nullptr && first->GetHeader().GetID() == kStrh &&
                             first->GetFormat().GetFormatType() != CZeAviStreamFormat::kNone;
    if (!headerUsable || !hasStreams || !firstUsable) return ReportError(kClass, "IsValidAVIFile", E_AVI_NOVALIDFILE);
    return S_OK;
}

HRESULT CZeAviFileParser::Parse(const char* path) {
    if (m_parsed) return S_OK;
    HRESULT hr = OpenAVIFile(path);
    if (FAILED(hr)) return hr;
    uint8_t head[12] = {};
    uint64_t count = sizeof(head);
    uint64_t got = 0;
    hr = SeekTo(0);
    if (SUCCEEDED(hr)) hr = Read(head, &count, &got);
    if (FAILED(hr) || got < sizeof(head)) {
        // A file of fewer than 12 bytes passes with the read's result.
        Reset();
        return hr;
    }
    const bool riff = SameFourCC(LoadLE32(head), kRIFF);
    const bool avi = SameFourCC(LoadLE32(head + 8), kAVI_, 3);
    Reset();
    if (!riff || !avi) return ReportError(kClass, "Parse", E_AVI_NOVALIDFILE);
    return S_OK;
}

HRESULT CZeAviFileParser::Parse() {
    if (m_parsed) return S_OK;
    m_aviFile.Reset();
    m_audioCursor = AudioCursor();
    m_indexEntriesRead = 0;
    std::vector<uint64_t>().swap(m_audioEntryEnds);
    HRESULT hr = SeekTo(0);
    if (FAILED(hr)) return hr;

    uint32_t riff = 0;
    uint32_t riffSize = 0;
    uint32_t formType = 0;
    if (FAILED(hr = ReadU32(&riff, "Parse"))) return hr;
    if (!SameFourCC(riff, kRIFF)) return ReportError(kClass, "Parse", E_AVI_NOVALIDFILE);
    // The RIFF size does not bound anything: the file's real length does.
    if (FAILED(hr = ReadU32(&riffSize, "Parse"))) return hr;
    if (FAILED(hr = ReadU32(&formType, "Parse"))) return hr;
    if (!SameFourCC(formType, kAVI_, 3)) return ReportError(kClass, "Parse", E_AVI_NOVALIDFILE);

    uint64_t headerList = 0;
    if (FAILED(hr = FindListChunk(12, "hdrl", &headerList))) return hr;
    if (headerList == 0) return ReportError(kClass, "Parse", E_AVI_READ);
    if (FAILED(hr = ParseHeaderListChunk(headerList))) return hr;

    if (FAILED(hr = BuildLegacyIndex())) return hr;
    // Index sizes are known from here on (the DV steps size their frame buffers by them).
    m_aviFile.FinishSetup();

    if (IsDV()) {
        if (FAILED(hr = DecodeDVVideoParams())) return hr;
        if (IsInterleavedDV()) {
            if (FAILED(hr = DecodeDVAudioParams())) return hr;
            if (FAILED(hr = CreateIavsAudioStreams())) return hr;
        }
    }

    hr = FinishStreams();
    if (SUCCEEDED(hr)) m_parsed = 1;
    m_aviFile.FinishSetup();
    BuildAudioEntryEnds();
    return hr;
}

// ---- Chunk searches ---------------------------------------------------------------------------

HRESULT CZeAviFileParser::FindListChunk(uint64_t start, const char* listType, uint64_t* found) {
    if (listType == nullptr || found == nullptr) return ReportError(kClass, "FindListChunk", E_POINTER);
    const uint32_t wanted = FourCCOf(listType);
    *found = 0;
    uint64_t position = start;
    HRESULT hr = SeekTo(position);
    if (FAILED(hr)) return hr;
    // Termination: every round either moves `position` on by at least 8 bytes or (a match at
    // position 0 only) reads on sequentially, so the walk reaches the end of the file, where the
    // reads fail or come up short.
    for (;;) {
        uint32_t id = 0;
        uint32_t size = 0;
        uint32_t type = 0;
        if (FAILED(hr = ReadU32(&id, "FindListChunk"))) return hr;
        if (FAILED(hr = ReadU32(&size, "FindListChunk"))) return hr;
        if (FAILED(hr = ReadU32(&type, "FindListChunk"))) return hr;
        if (SameFourCC(id, kLIST) && SameFourCC(type, wanted)) {
            *found = position;
            if (position != 0) return S_OK;
            continue;  // a match at offset 0 reads on from where the file stands
        }
        // Odd sizes are not rounded up to the RIFF padding.
        position += static_cast<uint64_t>(size) + 8;
        if (FAILED(hr = SeekTo(position))) return hr;
    }
}

HRESULT CZeAviFileParser::FindChunk(uint64_t start, const char* chunkId, uint64_t* found, uint32_t* size,
                                    uint64_t end) {
    if (chunkId == nullptr || found == nullptr) return ReportError(kClass, "FindChunk", E_POINTER);
    const uint32_t wanted = FourCCOf(chunkId);
    *found = 0;
    if (size != nullptr) *size = 0;
    uint64_t position = start;
    // Termination: `position` grows by at least 8 bytes a round until a read comes up short.
    while (position < end) {
        HRESULT hr = SeekTo(position);
        if (FAILED(hr)) return hr;
        uint8_t head[8];
        uint64_t count = 4;
        uint64_t got = 0;
        if (FAILED(Read(head, &count, &got)) || got != 4) return S_OK;
        count = 4;
        if (FAILED(Read(head + 4, &count, &got)) || got != 4) return S_OK;
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

// ---- Header list -----------------------------------------------------------------------------

HRESULT CZeAviFileParser::ParseHeaderListChunk(uint64_t position) {
    uint32_t size = 0;
    HRESULT hr = OpenList(position, kHdrl, "ParseHeaderListChunk", &size);
    if (FAILED(hr)) return hr;

    m_aviFile.SetOffset(static_cast<uint32_t>(position + 12));
    m_aviFile.SetSize(size);
    m_aviFile.SetID(kHdrl);

    uint64_t mainHeader = 0;
    if (FAILED(hr = FindChunk(position + 12, "avih", &mainHeader))) return hr;
    if (FAILED(hr = ParseHeaderChunk(mainHeader))) return hr;

    const uint32_t streams = m_aviFile.GetHeader().GetStreams();
    if (streams == 0) return S_OK;
    // Room for the streams up front (and one synthesised DV sound stream), so that filing a stream
    // never copies the indexes of the ones before it; a damaged count reserves no more than 64.
    m_aviFile.GetStreams().reserve(std::min<uint32_t>(streams, 63) + 1);
    uint64_t running = position + 12;
    for (uint32_t i = 0; i < streams; ++i) {
        uint64_t found = 0;
        hr = FindListChunk(running, "strl", &found);
        if (SUCCEEDED(hr)) hr = ParseStreamListChunk(found, &running);
        // Guard against a stream count far beyond the lists in the file: a failed round leaves the
        // running position as it was, so every further round would repeat the same failure with the
        // same code. Stop at the first one; the header list's result is that code either way.
        if (FAILED(hr)) break;
    }
    return hr;
}

HRESULT CZeAviFileParser::ParseHeaderChunk(uint64_t position) {
    const char* const method = "ParseHeaderChunk";
    CZeAviHeader& header = m_aviFile.GetHeader();
    uint32_t size = 0;
    HRESULT hr = OpenChunk(position, kAvih, method, &size, &header);
    if (FAILED(hr)) return hr;
    header.SetSize(size);
    header.SetOffset(static_cast<uint32_t>(position));
    // The body is always 56 bytes, whatever size the chunk declares.
    for (int i = 0; i < CZeAviHeader::kWordCount; ++i) {
        if (FAILED(hr = ReadU32(header.Word(i), method))) return hr;
    }
    return S_OK;
}

HRESULT CZeAviFileParser::ParseStreamListChunk(uint64_t position, uint64_t* next) {
    const char* const method = "ParseStreamListChunk";
    CZeAviStreamList streamList;
    uint32_t size = 0;
    HRESULT hr = OpenList(position, kStrl, method, &size, &streamList);
    if (FAILED(hr)) return hr;
    streamList.SetID(kStrl);
    streamList.SetOffset(static_cast<uint32_t>(position + 12));

    // The searches for the list's own chunks stop at the end of the list.
    const uint64_t first = position + 12;
    const uint64_t end = position + 8 + size;
    uint64_t found = 0;
    if (FAILED(hr = FindChunk(first, "strn", &found, nullptr, end))) return hr;
    if (found != 0 && FAILED(hr = ParseStreamNameChunk(found, streamList))) return hr;
    if (FAILED(hr = FindChunk(first, "indx", &found, nullptr, end))) return hr;
    if (found != 0 && FAILED(hr = ParseStreamIndexChunk(found, streamList))) return hr;
    if (FAILED(hr = FindChunk(first, "strh", &found, nullptr, end))) return hr;
    // Not found: position 0 holds "RIFF", which the chunk reader rejects with E_AVI_READ.
    if (FAILED(hr = ParseStreamHeaderChunk(found, streamList))) return hr;
    if (FAILED(hr = FindChunk(first, "strf", &found, nullptr, end))) return hr;
    hr = ParseStreamFormatChunk(found, streamList);
    if (FAILED(hr)) return hr;
    if (hr == S_OK) {
        CZeAviHeaderList(m_aviFile).AddStream(std::move(streamList));
    } else {
        m_aviFile.NoteSkippedStream();
    }
    // Odd sizes are not rounded up here either.
    *next = end;
    return hr;
}

HRESULT CZeAviFileParser::ParseStreamNameChunk(uint64_t position, CZeAviStreamList& streamList) {
    const char* const method = "ParseStreamNameChunk";
    HRESULT hr = SeekTo(position);
    if (FAILED(hr)) return hr;
    uint32_t id = 0;
    uint32_t size = 0;
    if (FAILED(hr = ReadU32(&id, method))) return hr;
    if (!SameFourCC(id, kStrn)) return ReportError(kClass, method, E_AVI_READ);
    if (FAILED(hr = ReadU32(&size, method))) return hr;
    // Guard: a name is read up to kMaxStreamName bytes, whatever the chunk declares.
    const uint32_t length = size < kMaxStreamName ? size : kMaxStreamName;
    std::string text(length, '\0');
    if (length != 0 && FAILED(hr = ReadExact(&text[0], length, method))) return hr;
    const size_t terminator = text.find('\0');
    if (terminator != std::string::npos) text.resize(terminator);
    streamList.SetStreamName(text);
    return S_OK;
}

HRESULT CZeAviFileParser::ParseStreamHeaderChunk(uint64_t position, CZeAviStreamList& streamList) {
    const char* const method = "ParseStreamHeaderChunk";
    CZeAviStreamHeader header;
    uint32_t size = 0;
    HRESULT hr = OpenChunk(position, kStrh, method, &size, &header);
    if (FAILED(hr)) return hr;
    header.SetSize(size);
    header.SetOffset(static_cast<uint32_t>(position));

    uint32_t length = 0;
    if (FAILED(hr = ReadU32(&header.fccType, method)) || FAILED(hr = ReadU32(&header.fccHandler, method)) ||
        FAILED(hr = ReadU32(&header.dwFlags, method)) || FAILED(hr = ReadU16(&header.wPriority, method)) ||
        FAILED(hr = ReadU16(&header.wLanguage, method)) || FAILED(hr = ReadU32(&header.dwInitialFrames, method)) ||
        FAILED(hr = ReadU32(&header.dwScale, method)) || FAILED(hr = ReadU32(&header.dwRate, method)) ||
        FAILED(hr = ReadU32(&header.dwStart, method)) || FAILED(hr = ReadU32(&length, method)) ||
        FAILED(hr = ReadU32(&header.dwSuggestedBufferSize, method)) ||
        FAILED(hr = ReadU32(&header.dwQuality, method)) || FAILED(hr = ReadU32(&header.dwSampleSize, method))) {
        return hr;
    }
    header.SetLength(length);
    uint16_t edges[4] = {};  // left, top, right, bottom, widened without sign
    for (uint16_t& edge : edges) {
        if (FAILED(hr = ReadU16(&edge, method))) return hr;
    }
    ze_avi_rect frame;
    frame.left = edges[0];
    frame.top = edges[1];
    frame.right = edges[2];
    frame.bottom = edges[3];

    CZeAviHeader& mainHeader = m_aviFile.GetHeader();
    if ((frame.right == 0 || frame.bottom == 0) && SameFourCC(header.fccHandler, kDvsd)) {
        // An empty DV frame takes the DV picture size of its frame rate; other rates keep it empty.
        if (header.dwScale != 0) {
            const uint32_t fps = header.dwRate / header.dwScale;
            if (fps == 25) {
                frame.right = 720;
                frame.bottom = 576;
                mainHeader.SetWidth(720);
                mainHeader.SetHeight(576);
            }
            if (fps > 25) {
                frame.right = 720;
                frame.bottom = 480;
                mainHeader.SetWidth(720);
                mainHeader.SetHeight(480);
            }
        }
    } else if (frame.right <= frame.left || frame.bottom <= frame.top) {
        frame.left = 0;
        frame.top = 0;
        frame.right = static_cast<int32_t>(mainHeader.GetWidth());
        frame.bottom = static_cast<int32_t>(mainHeader.GetHeight());
    }
    header.SetFrame(frame);
    streamList.SetHeader(header);
    return S_OK;
}

HRESULT CZeAviFileParser::ParseStreamFormatChunk(uint64_t position, CZeAviStreamList& streamList) {
    const char* const method = "ParseStreamFormatChunk";
    CZeAviStreamFormat format;
    uint32_t size = 0;
    HRESULT hr = OpenChunk(position, kStrf, method, &size, &format);
    if (FAILED(hr)) return hr;
    format.SetSize(size);
    format.SetOffset(static_cast<uint32_t>(position + 8));

    const uint32_t streamType = streamList.GetHeader().GetFccType();
    hr = S_OK;
    if (SameFourCC(streamType, kVids)) {
        hr = FillVideoStreamFormatHeader(size, format);
    } else if (SameFourCC(streamType, kAuds)) {
        hr = FillAudioStreamFormatHeader(size, format);
    } else if (SameFourCC(streamType, kIavs)) {
        hr = FillInterleavedVideoAudioStreamFormatHeader(position + 8, size, format);
    }
    if (hr != S_OK) return hr;  // a failure, or a stream to be left out
    streamList.SetFormat(format);
    return S_OK;
}

HRESULT CZeAviFileParser::FillVideoStreamFormatHeader(uint32_t size, CZeAviStreamFormat& format) {
    const char* const method = "FillVideoStreamFormatHeader";
    BITMAPINFOHEADER bih = {};
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t xPels = 0;
    uint32_t yPels = 0;
    HRESULT hr = S_OK;
    if (FAILED(hr = ReadU32(&bih.biSize, method)) || FAILED(hr = ReadU32(&width, method)) ||
        FAILED(hr = ReadU32(&height, method)) || FAILED(hr = ReadU16(&bih.biPlanes, method)) ||
        FAILED(hr = ReadU16(&bih.biBitCount, method)) || FAILED(hr = ReadU32(&bih.biCompression, method)) ||
        FAILED(hr = ReadU32(&bih.biSizeImage, method)) || FAILED(hr = ReadU32(&xPels, method)) ||
        FAILED(hr = ReadU32(&yPels, method)) || FAILED(hr = ReadU32(&bih.biClrUsed, method)) ||
        FAILED(hr = ReadU32(&bih.biClrImportant, method))) {
        return hr;
    }
    bih.biWidth = static_cast<LONG>(width);
    bih.biHeight = static_cast<LONG>(height);
    bih.biXPelsPerMeter = static_cast<LONG>(xPels);
    bih.biYPelsPerMeter = static_cast<LONG>(yPels);

    const uint32_t type = CZeAviStreamFormat::kVideo;
    if (size < 41) {
        const uint32_t headerSize = sizeof(bih);
        return format.SetFormat(&bih, &headerSize, &type);
    }
    // Guard: the bytes behind the header must be in the file; a larger claim could only end in a
    // short read, so it is refused as one before anything is allocated for it.
    const uint32_t tail = size - sizeof(bih);
    if (tail > BytesFrom(m_file.GetPosition())) return ReportError(kClass, method, E_AVI_READ);
    uint8_t* block = new (std::nothrow) uint8_t[size]();
    if (block == nullptr) return ReportError(kClass, method, E_OUTOFMEMORY);
    std::memcpy(block, &bih, sizeof(bih));
    hr = ReadExact(block + sizeof(bih), tail, method);
    if (SUCCEEDED(hr)) hr = format.SetFormat(block, &size, &type);
    delete[] block;
    return hr;
}

HRESULT CZeAviFileParser::FillAudioStreamFormatHeader(uint32_t size, CZeAviStreamFormat& format) {
    const char* const method = "FillAudioStreamFormatHeader";
    WAVEFORMATEX wfx = {};
    HRESULT hr = S_OK;
    // A field is read only when the chunk reaches its end.
    if (size >= 2 && FAILED(hr = ReadU16(&wfx.wFormatTag, method))) return hr;
    if (wfx.wFormatTag != WAVE_FORMAT_PCM) return S_FALSE;  // only PCM streams are kept
    if (size >= 4 && FAILED(hr = ReadU16(&wfx.nChannels, method))) return hr;
    if (size >= 8 && FAILED(hr = ReadU32(&wfx.nSamplesPerSec, method))) return hr;
    if (size >= 12 && FAILED(hr = ReadU32(&wfx.nAvgBytesPerSec, method))) return hr;
    if (size >= 14 && FAILED(hr = ReadU16(&wfx.nBlockAlign, method))) return hr;
    if (size >= 16 && FAILED(hr = ReadU16(&wfx.wBitsPerSample, method))) return hr;
    if (size >= 18 && FAILED(hr = ReadU16(&wfx.cbSize, method))) return hr;

    const uint32_t type = CZeAviStreamFormat::kAudio;
    if (size <= sizeof(wfx)) return format.SetFormat(&wfx, &size, &type);
    // The bytes past the first 18 are not taken from the file; they stay zero.
    // Guard: a block can be no larger than the file that declares it.
    if (size > m_file.GetFileSize()) return ReportError(kClass, method, E_AVI_READ);
    std::vector<uint8_t> block;
    try {
        block.assign(size, 0);
    } catch (const std::bad_alloc&) {
        return ReportError(kClass, method, E_OUTOFMEMORY);
    }
    std::memcpy(block.data(), &wfx, sizeof(wfx));
    return format.SetFormat(block.data(), &size, &type);
}

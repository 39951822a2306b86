// CZeAviFileParser: the walk of the header list: the main header, each stream list with its name,
// header and format, and the format blocks of video, audio and interleaved DV streams.
#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

#include "avi/ze_avi_file_parser.h"
#include "avi/ze_avi_chunk_layouts.h"
#include "avi/ze_avi_fourcc.h"
#include "avi/ze_avi_le.h"
#include "reader/status/ze_error_report.h"

using namespace ZeAvi;

namespace {

// A stream name longer than this is cut; the rest of the 'strn' chunk is not read.
constexpr uint32_t kMaxStreamName = 4096;

}  // namespace

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
    // The body is always 56 bytes, whatever size the chunk declares. A body cut off by the end of
    // the file still fills the header's words up to the cut.
    uint8_t body[CZeAviHeader::kWordCount * 4];
    uint64_t count = sizeof(body);
    uint64_t got = 0;
    if (FAILED(hr = Read(body, &count, &got))) return hr;
    for (uint64_t i = 0; i < got / 4; ++i) header.SetWord(static_cast<int>(i), LoadLE32(body + 4 * i));
    if (got < sizeof(body)) return ShortBody(got, kMainHeaderBody, method);
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
    uint8_t head[8];  // identifier and size; a size of 0 is allowed here
    if (FAILED(hr = ReadBody(head, kChunkHead, method))) return hr;
    if (!SameFourCC(LoadLE32(head), kStrn)) return ReportError(kClass, method, E_AVI_READ);
    const uint32_t size = LoadLE32(head + 4);
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

    // AVISTREAMHEADER as stored: 56 bytes, the frame rectangle as four 16-bit edges at the end.
    uint8_t body[56];
    if (FAILED(hr = ReadBody(body, kStreamHeaderBody, method))) return hr;
    header.SetFccType(LoadLE32(body));
    header.SetFccHandler(LoadLE32(body + 4));
    header.SetFlags(LoadLE32(body + 8));
    header.SetPriority(LoadLE16(body + 12));
    header.SetLanguage(LoadLE16(body + 14));
    header.SetInitialFrames(LoadLE32(body + 16));
    header.SetScale(LoadLE32(body + 20));
    header.SetRate(LoadLE32(body + 24));
    header.SetStart(LoadLE32(body + 28));
    header.SetLength(LoadLE32(body + 32));
    header.SetSuggestedBufferSize(LoadLE32(body + 36));
    header.SetQuality(LoadLE32(body + 40));
    header.SetSampleSize(LoadLE32(body + 44));
    // The edges are widened without sign.
    ze_avi_rect frame;
    frame.left = LoadLE16(body + 48);
    frame.top = LoadLE16(body + 50);
    frame.right = LoadLE16(body + 52);
    frame.bottom = LoadLE16(body + 54);

    CZeAviHeader& mainHeader = m_aviFile.GetHeader();
    if ((frame.right == 0 || frame.bottom == 0) && SameFourCC(header.GetFccHandler(), kDvsd)) {
        // An empty DV frame takes the DV picture size of its frame rate; other rates keep it empty.
        if (header.GetScale() != 0) {
            const uint32_t fps = header.GetRate() / header.GetScale();
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
    // BITMAPINFOHEADER as stored: 40 bytes, whatever size the chunk declares.
    uint8_t body[40];
    HRESULT hr = ReadBody(body, kBitmapHeaderBody, method);
    if (FAILED(hr)) return hr;
    BITMAPINFOHEADER bih = {};
    bih.biSize = LoadLE32(body);
    bih.biWidth = static_cast<LONG>(LoadLE32(body + 4));
    bih.biHeight = static_cast<LONG>(LoadLE32(body + 8));
    bih.biPlanes = LoadLE16(body + 12);
    bih.biBitCount = LoadLE16(body + 14);
    bih.biCompression = LoadLE32(body + 16);
    bih.biSizeImage = LoadLE32(body + 20);
    bih.biXPelsPerMeter = static_cast<LONG>(LoadLE32(body + 24));
    bih.biYPelsPerMeter = static_cast<LONG>(LoadLE32(body + 28));
    bih.biClrUsed = LoadLE32(body + 32);
    bih.biClrImportant = LoadLE32(body + 36);

    const uint32_t type = CZeAviStreamFormat::kVideo;
    if (size < 41) {
        const uint32_t headerSize = sizeof(bih);
        return format.SetFormat(&bih, &headerSize, &type);
    }
    // Guard: the bytes behind the header must be in the file; a larger claim could only end in a
    // short read, so it is refused as one before anything is allocated for it.
    const uint32_t tail = size - sizeof(bih);
    if (tail > BytesFrom(m_file.GetPosition())) return ReportError(kClass, method, E_AVI_READ);
    std::vector<uint8_t> block;
    try {
        block.assign(size, 0);
    } catch (const std::bad_alloc&) {
        return ReportError(kClass, method, E_OUTOFMEMORY);
    }
    std::memcpy(block.data(), &bih, sizeof(bih));
    if (FAILED(hr = ReadExact(block.data() + sizeof(bih), tail, method))) return hr;
    return format.SetFormat(block.data(), &size, &type);
}

HRESULT CZeAviFileParser::FillAudioStreamFormatHeader(uint32_t size, CZeAviStreamFormat& format) {
    const char* const method = "FillAudioStreamFormatHeader";
    // WAVEFORMATEX as stored: a field is taken only when the chunk reaches its end, so the body is
    // the fields that end within the declared size.
    uint8_t body[18] = {};
    const uint64_t fields = kWaveFormatBody.BytesOfFieldsWithin(size);
    uint64_t count = fields;
    uint64_t got = 0;
    HRESULT hr = Read(body, &count, &got);
    if (FAILED(hr)) return hr;
    if (got < std::min<uint64_t>(fields, 2)) return ShortBody(got, kWaveFormatBody, method);
    WAVEFORMATEX wfx = {};
    wfx.wFormatTag = LoadLE16(body);
    // Only PCM streams are kept; the fields behind another format tag are not looked at.
    if (wfx.wFormatTag != WAVE_FORMAT_PCM) return S_FALSE;
    if (got < fields) return ShortBody(got, kWaveFormatBody, method);
    wfx.nChannels = LoadLE16(body + 2);
    wfx.nSamplesPerSec = LoadLE32(body + 4);
    wfx.nAvgBytesPerSec = LoadLE32(body + 8);
    wfx.nBlockAlign = LoadLE16(body + 12);
    wfx.wBitsPerSample = LoadLE16(body + 14);
    wfx.cbSize = LoadLE16(body + 16);

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

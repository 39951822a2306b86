// CZeAviFileParser: video frames and audio bytes out of a parsed file, the final repairs of the
// parse and the accessors the plug-in object and the DV code use.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "avi/ze_avi_file_parser.h"
#include "avi/ze_avi_fourcc.h"
#include "reader/status/ze_error_report.h"

using namespace ZeAvi;

// Shared by every parser of the process on purpose: the size of the last frame read by any of them.
uint64_t CZeAviFileParser::s_lastFrameSize = 0;

uint64_t CZeAviFileParser::GetLastFrameSize() { return s_lastFrameSize; }

// ---- Final repairs -------------------------------------------------------------------------------

HRESULT CZeAviFileParser::FinishStreams() {
    // A video length beyond the index is cut to the index.
    for (uint32_t number : {m_aviFile.GetFirstVideoStream(), m_aviFile.GetSecondVideoStream()}) {
        CZeAviStreamList* video = m_aviFile.GetStream(number);
        if (video == nullptr) continue;
        const uint64_t entries = video->GetIndexList().GetCount();
        if (entries != 0 && video->GetHeader().GetLength() > entries) video->GetHeader().SetLength(entries);
    }

    // An audio length that disagrees with the video by more than a second is recounted from the
    // audio index.
    CZeAviStreamList* audio = m_aviFile.GetStream(m_aviFile.GetFirstAudioStream());
    const CZeAviStreamList* video = m_aviFile.GetStream(m_aviFile.GetFirstVideoStream());
    if (IsInterleavedDV() || audio == nullptr || video == nullptr || audio->GetIndexList().IsEmpty()) return S_OK;
    const WAVEFORMATEX* wfx = audio->GetFormat().GetWaveFormat();
    if (wfx == nullptr || wfx->nSamplesPerSec == 0) return S_OK;
    CZeAviStreamHeader& audioHeader = audio->GetHeader();
    const CZeAviStreamHeader& videoHeader = video->GetHeader();
    const double audioSeconds = static_cast<double>(audioHeader.GetLength()) / wfx->nSamplesPerSec;
    const double videoSeconds = static_cast<double>(videoHeader.GetLength()) * videoHeader.GetScale() /
                                static_cast<double>(videoHeader.GetRate());
    if (!(std::fabs(audioSeconds - videoSeconds) > 1.0)) return S_OK;
    const uint64_t bytesPerFrame = static_cast<uint64_t>(wfx->nChannels) * (wfx->wBitsPerSample >> 3);
    // Guard: a format with no channels or under 8 bits keeps its length instead of dividing by 0.
    if (bytesPerFrame == 0) return S_OK;
    uint64_t total = 0;
    for (const CZeAviIndexChunk& entry : audio->GetIndexList().Entries()) total += entry.GetSize();
    audioHeader.SetLength(total / bytesPerFrame);
    return S_OK;
}

// ---- Index lookups ---------------------------------------------------------------------------

void CZeAviFileParser::LookupEntry(uint32_t stream, uint64_t entry, uint64_t* position, uint32_t* size,
                                   uint64_t* indexOffset) const {
    const CZeAviStreamList* list = m_aviFile.GetStream(stream);
    if (list != nullptr && entry < list->GetIndexList().GetCount()) {
        const CZeAviIndexChunk& chunk = list->GetIndexList().At(static_cast<size_t>(entry));
        if (position != nullptr) *position = chunk.GetPosition();
        if (size != nullptr) *size = chunk.GetSize();
        if (indexOffset != nullptr) *indexOffset = chunk.GetOffset();
        return;
    }
    if (position != nullptr) *position = ~static_cast<uint64_t>(0);
    if (size != nullptr) *size = 0xFFFFFFFFu;
    if (indexOffset != nullptr) *indexOffset = ~static_cast<uint64_t>(0);
}

void CZeAviFileParser::BuildAudioEntryEnds() {
    std::vector<uint64_t>().swap(m_audioEntryEnds);
    const CZeAviStreamList* audio = GetAudioStream();
    if (audio == nullptr) return;
    m_audioEntryEnds.reserve(audio->GetIndexList().GetCount());
    uint64_t end = 0;
    for (const CZeAviIndexChunk& entry : audio->GetIndexList().Entries()) {
        end += entry.GetSize();
        m_audioEntryEnds.push_back(end);
    }
}

uint64_t CZeAviFileParser::GetAudioIndex(uint64_t* position, uint64_t* inEntry) {
    if (inEntry != nullptr) *inEntry = kNoEntry;
    if (position == nullptr) return kNoEntry;
    const CZeAviStreamList* audio = GetAudioStream();
    if (audio == nullptr) return kNoEntry;
    if (m_audioEntryEnds.size() != audio->GetIndexList().GetCount()) BuildAudioEntryEnds();
    // The entry holding the byte is the first whose end lies beyond it (entries of size 0 hold none).
    const auto it = std::upper_bound(m_audioEntryEnds.begin(), m_audioEntryEnds.end(), *position);
    if (it == m_audioEntryEnds.end()) return kNoEntry;
    const uint64_t entry = static_cast<uint64_t>(it - m_audioEntryEnds.begin());
    const uint64_t start = entry == 0 ? 0 : m_audioEntryEnds[static_cast<size_t>(entry - 1)];
    if (inEntry != nullptr) *inEntry = *position - start;
    return entry;
}

void CZeAviFileParser::PrepareAudioRead() {
    m_audioCursor = AudioCursor();
    BuildAudioEntryEnds();
}

// ---- Video frames ------------------------------------------------------------------------------

HRESULT CZeAviFileParser::GetFrame(void* buffer, uint64_t* frame, uint64_t* bytesRead, uint8_t* flags,
                                   int16_t* tolerance) {
    const char* const method = "GetFrame";
    if (buffer == nullptr || frame == nullptr || bytesRead == nullptr || flags == nullptr || tolerance == nullptr) {
        return ReportError(kClass, method, E_POINTER);
    }
    const CZeAviStreamList* first = GetVideoStream();
    if (first == nullptr || first->GetIndexList().IsEmpty()) return ReportError(kClass, method, E_AVI_STREAMINDEX);

    const bool second = (*flags & 0x80) != 0 && m_aviFile.HasSecondVideoStream();
    FrameCache& cache = m_frameCache[second ? 1 : 0];
    const uint64_t count = first->GetIndexList().GetCount();
    if (*frame >= count) {
        const uint64_t withinTolerance = *frame - static_cast<uint64_t>(static_cast<int64_t>(*tolerance));
        if (withinTolerance < count) {
            // Guard: the blank frame never exceeds this file's largest frame, the size the caller's
            // buffer is made for (the shared last size may come from another file).
            const uint64_t blank = std::min<uint64_t>(s_lastFrameSize, GetMaxVideoFrameSize());
            std::memset(buffer, 0, static_cast<size_t>(blank));
            *bytesRead = ~static_cast<uint64_t>(0);
            cache.lastFrameAsked = *frame;
            return S_OK;
        }
    }

    // Frames are read at their data position; an entry whose offset in the index is 0 is a drop frame.
    uint64_t position = 0;
    uint32_t size = 0;
    uint64_t indexOffset = 0;
    LookupEntry(second ? m_aviFile.GetSecondVideoStream() : m_aviFile.GetFirstVideoStream(), *frame, &position,
                &size, &indexOffset);
    if (indexOffset != 0) {
        cache.lastReadPosition = position;
        cache.lastReadSize = size;
    } else {
        // A drop frame: the last frame read on this stream is delivered again.
        position = cache.lastReadPosition;
        size = cache.lastReadSize;
    }
    cache.lastFrameAsked = *frame;
    s_lastFrameSize = size;

    HRESULT hr = SeekTo(position);
    if (FAILED(hr)) return hr;
    uint64_t wanted = size;
    uint64_t got = 0;
    if (FAILED(hr = Read(buffer, &wanted, &got))) return hr;
    if (got < size) return ReportError(kClass, method, E_AVI_READ);
    *bytesRead = size;
    return S_OK;
}

// ---- Audio -----------------------------------------------------------------------------------------

uint64_t CZeAviFileParser::GetOneAudioBlock(void* buffer, uint64_t* block, int32_t* skip) {
    const char* const method = "GetOneAudioBlock";
    if (buffer == nullptr || block == nullptr || skip == nullptr) {
        ReportError(kClass, method, E_POINTER);
        return 0;
    }
    const CZeAviStreamList* audio = GetAudioStream();
    if (audio == nullptr || audio->GetIndexList().IsEmpty()) {
        ReportError(kClass, method, E_FAIL);
        return 0;
    }
    // Guard: an entry past the index has no position to seek to (the all-ones offset would wrap
    // with a skip added); it fails as the seek to that offset does.
    if (*block >= audio->GetIndexList().GetCount()) {
        ReportError(kClass, method, E_AVI_SEEK);
        return 0;
    }
    const CZeAviIndexChunk& entry = audio->GetIndexList().At(static_cast<size_t>(*block));
    // Guard: the skip must stay inside the entry, or the read would run outside it.
    if (*skip < 0 || static_cast<uint32_t>(*skip) > entry.GetSize()) {
        ReportError(kClass, method, E_INVALIDARG);
        return 0;
    }
    const uint64_t position = entry.GetPosition() + static_cast<uint64_t>(static_cast<int64_t>(*skip));
    if (FAILED(SeekTo(position, method))) return 0;
    uint64_t count = entry.GetSize() - static_cast<uint32_t>(*skip);
    uint64_t got = 0;
    if (FileRead(buffer, &count, &got) < 0) {
        ReportError(kClass, method, E_AVI_READ);
        return 0;
    }
    return got;
}

HRESULT CZeAviFileParser::GetSample(uint64_t* position, void* buffer, uint64_t* count) {
    const char* const method = "GetSample";
    if (buffer == nullptr || count == nullptr || *count == 0) return S_OK;
    if (position == nullptr) return ReportError(kClass, method, E_POINTER);
    if (IsInterleavedDV()) return GetSampleFromStream(position, buffer, count);

    std::memset(buffer, 0, static_cast<size_t>(*count));
    const CZeAviStreamList* audio = GetAudioStream();
    const WAVEFORMATEX* wfx = audio != nullptr ? audio->GetFormat().GetWaveFormat() : nullptr;
    if (wfx == nullptr || audio->GetIndexList().IsEmpty()) return ReportError(kClass, method, E_FAIL);
    const CZeAviIndexListChunk& index = audio->GetIndexList();

    // Sample frames to stream bytes: the division by 8 comes before the channel count.
    const uint64_t streamPosition = ((*position * wfx->wBitsPerSample) >> 3) * wfx->nChannels;
    const CZeAviIndexChunk& last = index.At(index.GetCount() - 1);
    // The stream byte position is compared with the file position where the audio data ends.
    if (streamPosition > last.GetPosition() + last.GetSize()) return S_OK;

    uint64_t entry = 0;
    uint64_t inEntry = 0;
    if (m_audioCursor.valid && streamPosition == m_audioCursor.streamPosition) {
        entry = m_audioCursor.entry;
        inEntry = m_audioCursor.inEntry;
    } else if (streamPosition != 0) {
        uint64_t lookup = streamPosition;
        entry = GetAudioIndex(&lookup, &inEntry);
        if (entry == kNoEntry) return S_OK;
    }
    if (entry >= index.GetCount()) {
        m_audioCursor = AudioCursor();
        return ReportError(kClass, method, E_FAIL);
    }
    if (index.At(static_cast<size_t>(entry)).GetSize() < 4) return ReportError(kClass, method, E_FAIL);

    uint8_t* out = static_cast<uint8_t*>(buffer);
    uint64_t remaining = *count;
    uint64_t reached = streamPosition;
    while (remaining != 0 && entry < index.GetCount()) {
        const CZeAviIndexChunk& chunk = index.At(static_cast<size_t>(entry));
        const uint64_t available = inEntry < chunk.GetSize() ? chunk.GetSize() - inEntry : 0;
        const uint64_t take = std::min(available, remaining);
        if (take != 0) {
            const HRESULT hr = SeekTo(chunk.GetPosition() + inEntry, method);
            if (FAILED(hr)) return hr;
            uint64_t wanted = take;
            uint64_t got = 0;
            if (FileRead(out, &wanted, &got) < 0) return ReportError(kClass, method, E_AVI_READ);
            out += got;
            remaining -= got;
            inEntry += got;
            reached += got;
            if (got < take) break;  // the file ends inside the entry: the rest stays silent
        }
        if (inEntry >= chunk.GetSize()) {
            ++entry;
            inEntry = 0;
        }
    }
    m_audioCursor.valid = true;
    m_audioCursor.streamPosition = reached;
    m_audioCursor.entry = entry;
    m_audioCursor.inEntry = inEntry;
    return S_OK;
}

// ---- Accessors ---------------------------------------------------------------------------------

const CZeAviStreamHeader* CZeAviFileParser::GetVideoStreamHeader() const {
    const CZeAviStreamList* video = GetVideoStream();
    return video != nullptr ? &video->GetHeader() : nullptr;
}

const BITMAPINFOHEADER* CZeAviFileParser::GetVideoFormat() const {
    const CZeAviStreamList* video = GetVideoStream();
    return video != nullptr ? video->GetFormat().GetBitmapInfoHeader() : nullptr;
}

const CZeAviStreamHeader* CZeAviFileParser::GetAudioStreamHeader() const {
    const CZeAviStreamList* audio = GetAudioStream();
    return audio != nullptr ? &audio->GetHeader() : nullptr;
}

const WAVEFORMATEX* CZeAviFileParser::GetAudioFormat() const {
    const CZeAviStreamList* audio = GetAudioStream();
    return audio != nullptr ? audio->GetFormat().GetWaveFormat() : nullptr;
}

uint64_t CZeAviFileParser::GetVideoFrameCount() const {
    const CZeAviStreamList* video = GetVideoStream();
    return video != nullptr ? video->GetIndexList().GetCount() : 0;
}

uint32_t CZeAviFileParser::GetMaxVideoFrameSize() const {
    uint32_t largest = 0;
    for (uint32_t number : {GetFirstVideoStreamNumber(), GetSecondVideoStreamNumber()}) {
        const CZeAviStreamList* video = GetStream(number);
        if (video != nullptr) largest = std::max(largest, video->GetMaxChunkSize());
    }
    // No read delivers more than the file holds, so a damaged index entry that claims more than
    // that does not make callers size their frame buffers beyond the file.
    return static_cast<uint32_t>(std::min<uint64_t>(largest, GetFileSize()));
}

uint32_t CZeAviFileParser::GetMaxAudioChunkSize() const {
    const CZeAviStreamList* audio = GetAudioStream();
    const uint32_t largest = audio != nullptr ? audio->GetMaxChunkSize() : 0;
    // As for frames: a block read never delivers more than the file holds.
    return static_cast<uint32_t>(std::min<uint64_t>(largest, GetFileSize()));
}

uint32_t CZeAviFileParser::GetVideoCompression() const {
    const CZeAviStreamList* video = GetVideoStream();
    if (video == nullptr) return 0;
    if (const BITMAPINFOHEADER* bih = video->GetFormat().GetBitmapInfoHeader()) return bih->biCompression;
    return video->GetHeader().GetFccHandler();
}

bool CZeAviFileParser::IsDV() const { return GetVideoCompression() == kDvsd; }

bool CZeAviFileParser::IsInterleavedDV() const {
    const CZeAviStreamList* principal = GetPrincipalStream();
    return principal != nullptr && SameFourCC(principal->GetHeader().GetFccType(), kIavs);
}

#include "reader/ze_reader_source.h"

#include <cstring>

#include "avi/ze_avi_file_parser.h"

static_assert(CZeReaderSource::kNoStream == CZeAviFileParser::kNoStream, "one stream number for none");

namespace {

ZeXpStreamHeader CopyStreamHeader(const CZeAviStreamHeader& from) {
    ZeXpStreamHeader to;
    std::memset(&to, 0, sizeof(to));
    to.fccType = from.GetFccType();
    to.fccHandler = from.GetFccHandler();
    to.dwFlags = from.GetFlags();
    to.wPriority = from.GetPriority();
    to.wLanguage = from.GetLanguage();
    to.dwInitialFrames = from.GetInitialFrames();
    to.dwScale = from.GetScale();
    to.dwRate = from.GetRate();
    to.dwStart = from.GetStart();
    to.dwLength = from.GetLength();
    to.dwSuggestedBufferSize = from.GetSuggestedBufferSize();
    to.dwQuality = from.GetQuality();
    to.dwSampleSize = from.GetSampleSize();
    to.rcFrameLeft = from.GetFrame().left;
    to.rcFrameTop = from.GetFrame().top;
    to.rcFrameRight = from.GetFrame().right;
    to.rcFrameBottom = from.GetFrame().bottom;
    return to;
}

}  // namespace

CZeReaderSource::CZeReaderSource() : m_parser(std::make_unique<CZeAviFileParser>()) {}
CZeReaderSource::~CZeReaderSource() = default;

bool CZeReaderSource::IsParsed() const { return m_parser->IsParsed(); }

HRESULT CZeReaderSource::QuickCheck(const char* path) { return m_parser->Parse(path); }

HRESULT CZeReaderSource::OpenAndParse(const char* path) {
    const HRESULT hr = m_parser->OpenAVIFile(path);
    if (FAILED(hr)) return hr;
    return m_parser->Parse();
}

const std::string& CZeReaderSource::FileName() const { return m_parser->GetAviFile().GetFileName(); }

uint32_t CZeReaderSource::StreamCount() const { return static_cast<uint32_t>(m_parser->GetStreamCount()); }

ZeXpMainHeader CZeReaderSource::MainHeader() const {
    const CZeAviHeader& h = m_parser->GetMainHeader();
    return ZeXpMainHeader{h.GetMicroSecPerFrame(), h.GetMaxBytesPerSec(), h.GetPaddingGranularity(),
                          h.GetFlags(), h.GetTotalFrames(), h.GetInitialFrames(), h.GetStreams(),
                          h.GetSuggestedBufferSize(), h.GetWidth(), h.GetHeight(),
                          {h.GetReserved(0), h.GetReserved(1), h.GetReserved(2), h.GetReserved(3)}};
}

ZeXpStreamRoles CZeReaderSource::Roles() const {
    const CZeAviFile& file = m_parser->GetAviFile();
    return ZeXpStreamRoles{static_cast<int32_t>(file.GetFirstVideoStream()),
                           static_cast<int32_t>(file.GetSecondVideoStream()),
                           static_cast<int32_t>(file.GetFirstAudioStream()), file.GetSkippedStreams()};
}

bool CZeReaderSource::HasStream(uint32_t stream) const { return m_parser->GetStream(stream) != nullptr; }

std::optional<ZeXpStreamHeader> CZeReaderSource::StreamHeader(uint32_t stream) const {
    const CZeAviStreamList* list = m_parser->GetStream(stream);
    if (!list) return std::nullopt;
    return CopyStreamHeader(list->GetHeader());
}

const void* CZeReaderSource::StreamFormat(uint32_t stream, uint32_t* bytes) const {
    *bytes = 0;
    const CZeAviStreamList* list = m_parser->GetStream(stream);
    if (!list) return nullptr;
    const CZeAviStreamFormat& format = list->GetFormat();
    if (format.GetFormatType() == CZeAviStreamFormat::kDVInfo && format.GetDVInfo()) {
        *bytes = ze_avi_dv_info_ex::kWordCount * 4;
        return format.GetDVInfo()->Words();
    }
    *bytes = format.GetFormat() ? format.GetFormatBytes() : 0;
    return format.GetFormat();
}

uint32_t CZeReaderSource::StreamFormatType(uint32_t stream) const {
    const CZeAviStreamList* list = m_parser->GetStream(stream);
    return list ? list->GetFormat().GetFormatType() : CZeAviStreamFormat::kNone;
}

std::string CZeReaderSource::StreamName(uint32_t stream) const {
    const CZeAviStreamList* list = m_parser->GetStream(stream);
    return list ? list->GetStreamName() : std::string();
}

uint64_t CZeReaderSource::IndexCount(uint32_t stream) const {
    const CZeAviStreamList* list = m_parser->GetStream(stream);
    return list ? list->GetIndexList().GetCount() : 0;
}

ZeXpIndexEntry CZeReaderSource::IndexRow(uint32_t stream, uint64_t entry) const {
    const CZeAviIndexChunk& chunk = m_parser->GetStream(stream)->GetIndexList().At(entry);
    ZeXpIndexEntry row{};
    row.ckid = chunk.GetChunkId();
    row.dwFlags = chunk.GetFlags();
    row.qwOffset = chunk.GetOffset();
    row.dwSize = chunk.GetSize();
    row.qwPosition = chunk.GetPosition();
    return row;
}

uint32_t CZeReaderSource::VideoStream() const { return m_parser->GetFirstVideoStreamNumber(); }
uint32_t CZeReaderSource::AudioStream() const { return m_parser->GetFirstAudioStreamNumber(); }

const BITMAPINFOHEADER* CZeReaderSource::VideoFormat() const { return m_parser->GetVideoFormat(); }

std::optional<BITMAPINFOHEADER> CZeReaderSource::VideoPicture() const {
    if (const BITMAPINFOHEADER* bitmap = m_parser->GetVideoFormat()) return *bitmap;
    const CZeAviStreamList* video = m_parser->GetVideoStream();
    if (!video || !video->GetFormat().GetDVInfo()) return std::nullopt;
    const ze_avi_rect& frame = video->GetHeader().GetFrame();
    BITMAPINFOHEADER picture{};
    picture.biSize = sizeof(BITMAPINFOHEADER);
    picture.biWidth = frame.right - frame.left;
    picture.biHeight = frame.bottom - frame.top;
    picture.biCompression = video->GetHeader().GetFccHandler();
    return picture;
}

const WAVEFORMATEX* CZeReaderSource::AudioFormat() const { return m_parser->GetAudioFormat(); }
bool CZeReaderSource::IsDvVideo() const { return m_parser->IsParsed() && m_parser->IsDV(); }

uint64_t CZeReaderSource::VideoFrameCount() const { return m_parser->GetVideoFrameCount(); }
int32_t CZeReaderSource::LargestVideoFrameSize() const {
    return static_cast<int32_t>(m_parser->GetMaxVideoFrameSize());
}
uint32_t CZeReaderSource::LargestAudioChunkSize() const { return m_parser->GetMaxAudioChunkSize(); }

HRESULT CZeReaderSource::ReadAt(uint64_t position, void* buffer, uint64_t count, uint64_t* bytesRead) {
    uint32_t method = FILE_BEGIN;
    const HRESULT hr = m_parser->Seek(&position, &method);
    if (FAILED(hr)) return hr;
    return m_parser->Read(buffer, &count, bytesRead);
}

HRESULT CZeReaderSource::GetFrame(void* buffer, uint64_t frame, uint64_t* bytesRead) {
    uint8_t flags = 0;
    int16_t tolerance = 0;
    return m_parser->GetFrame(buffer, &frame, bytesRead, &flags, &tolerance);
}

HRESULT CZeReaderSource::GetSample(uint64_t position, void* buffer, uint64_t count) {
    return m_parser->GetSample(&position, buffer, &count);
}

uint64_t CZeReaderSource::GetOneAudioBlock(void* buffer, uint64_t block) {
    int32_t skip = 0;
    return m_parser->GetOneAudioBlock(buffer, &block, &skip);
}

uint64_t CZeReaderSource::GetAudioIndex(uint64_t position, uint64_t* inEntry) {
    return m_parser->GetAudioIndex(&position, inEntry);
}

void CZeReaderSource::PrepareAudioRead() { m_parser->PrepareAudioRead(); }

ZeXpDVVideoParams CZeReaderSource::DVVideoParams() const {
    const ZeDVVideoParams& p = m_parser->GetDVVideoParams();
    ZeXpDVVideoParams record{};
    record.sixtyFields = p.sixtyFields;
    record.displayCode = p.displayCode;
    record.interlaceCode = p.interlaceCode;
    record.compressionCode = p.compressionCode;
    record.recordingStartCode = p.recordingStartCode;
    record.aspectRatio = p.aspectRatio;
    std::memcpy(record.recordingDateTime, p.recordingDateTime, sizeof(record.recordingDateTime));
    record.recordingDateTime[sizeof(record.recordingDateTime) - 1] = '\0';
    return record;
}

ZeXpDVAudioParams CZeReaderSource::DVAudioParams() const {
    const ZeDVAudioParams& p = m_parser->GetDVAudioParams();
    ZeXpDVAudioParams record{};
    record.sampleRate = p.sampleRate;
    record.bitsPerSample = p.bitsPerSample;
    record.audioModeCode = p.audioModeCode;
    record.firstChannel = p.firstChannel;
    record.secondChannel = p.secondChannel;
    return record;
}

#include "reader/ze_reader_source.h"

#include "avi/ze_avi_file_parser.h"

CZeReaderSource::CZeReaderSource() : m_parser(std::make_unique<CZeAviFileParser>()) {}
CZeReaderSource::~CZeReaderSource() = default;

bool CZeReaderSource::IsParsed() const { return m_parser->IsParsed(); }

HRESULT CZeReaderSource::QuickCheck(const char* path) { return m_parser->Parse(path); }

HRESULT CZeReaderSource::OpenAndParse(const char* path) {
    const HRESULT hr = m_parser->OpenAVIFile(path);
    if (FAILED(hr)) return hr;
    return m_parser->Parse();
}

const CZeAviFile& CZeReaderSource::File() const { return m_parser->GetAviFile(); }

const CZeAviStreamList* CZeReaderSource::FirstVideo() const { return m_parser->GetVideoStream(); }
const CZeAviStreamList* CZeReaderSource::FirstAudio() const { return m_parser->GetAudioStream(); }
const CZeAviStreamList* CZeReaderSource::Stream(uint32_t number) const { return m_parser->GetStream(number); }
const BITMAPINFOHEADER* CZeReaderSource::VideoFormat() const { return m_parser->GetVideoFormat(); }
const WAVEFORMATEX* CZeReaderSource::AudioFormat() const { return m_parser->GetAudioFormat(); }
uint32_t CZeReaderSource::VideoCompression() const { return m_parser->GetVideoCompression(); }
bool CZeReaderSource::IsDvVideo() const { return m_parser->IsParsed() && m_parser->IsDV(); }

uint64_t CZeReaderSource::VideoFrameCount() const { return m_parser->GetVideoFrameCount(); }
int32_t CZeReaderSource::LargestVideoFrameSize() const {
    return static_cast<int32_t>(m_parser->GetMaxVideoFrameSize());
}
uint32_t CZeReaderSource::LargestAudioChunkSize() const { return m_parser->GetMaxAudioChunkSize(); }
uint64_t CZeReaderSource::AudioChunkCount() const {
    const CZeAviStreamList* audio = FirstAudio();
    return audio ? audio->GetIndexList().GetCount() : 0;
}

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

const ZeDVVideoParams& CZeReaderSource::DVVideoParams() const { return m_parser->GetDVVideoParams(); }
const ZeDVAudioParams& CZeReaderSource::DVAudioParams() const { return m_parser->GetDVAudioParams(); }

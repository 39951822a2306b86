// CZeAviFileParser: the life of a parse: reset, the quick signature check, the full parse sequence
// and the validation of its result. The steps live in their own files: I/O and chunk search
// (ze_avi_parser_io.cpp), the header list (ze_avi_parser_header.cpp), the indexes
// (ze_avi_parser_index.cpp), the DV steps (ze_avi_parser_dv.cpp) and sample access
// (ze_avi_parser_access.cpp).
#include "avi/ze_avi_file_parser.h"

#include "avi/ze_avi_chunk_layouts.h"
#include "avi/ze_avi_fourcc.h"
#include "avi/ze_avi_le.h"
#include "dv/ze_dv_audio_stream.h"
#include "reader/status/ze_error_report.h"

using namespace ZeAvi;

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
    m_dvAudioStream.reset();
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

    // "RIFF", its size, "AVI ". The RIFF size does not bound anything: the file's real length does.
    // The signature is judged before the rest: a file that does not start with "RIFF" is not an AVI
    // file however short it is.
    uint8_t head[12];
    uint64_t count = sizeof(head);
    uint64_t got = 0;
    if (FAILED(hr = Read(head, &count, &got))) return hr;
    if (got < 4) return ShortBody(got, kListHead, "Parse");
    if (!SameFourCC(LoadLE32(head), kRIFF)) return ReportError(kClass, "Parse", E_AVI_NOVALIDFILE);
    if (got < sizeof(head)) return ShortBody(got, kListHead, "Parse");
    if (!SameFourCC(LoadLE32(head + 8), kAVI_, 3)) return ReportError(kClass, "Parse", E_AVI_NOVALIDFILE);

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


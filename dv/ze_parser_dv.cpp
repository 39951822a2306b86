// The parser's DV steps: DV parameters from one frame, the synthesised audio stream of an
// interleaved DV file, its DV format block and the audio taken out of its frames.
#include "avi/ze_avi_file_parser.h"
#include "reader/status/ze_error_report.h"

namespace {
const char kClass[] = "CZeAviFileParser";
}

HRESULT CZeAviFileParser::DecodeDVVideoParams() { return ReportError(kClass, "DecodeDVVideoParams", E_NOTIMPL); }

HRESULT CZeAviFileParser::DecodeDVAudioParams() { return ReportError(kClass, "DecodeDVAudioParams", E_NOTIMPL); }

HRESULT CZeAviFileParser::CreateIavsAudioStreams() {
    return ReportError(kClass, "CreateIavsAudioStreams", E_NOTIMPL);
}

HRESULT CZeAviFileParser::GetSampleFromStream(uint64_t* /*position*/, void* /*buffer*/, uint64_t* /*count*/) {
    return ReportError(kClass, "GetSampleFromStream", E_NOTIMPL);
}

HRESULT CZeAviFileParser::FillInterleavedVideoAudioStreamFormatHeader(uint64_t /*position*/, uint32_t /*size*/,
                                                                      CZeAviStreamFormat& /*format*/) {
    return ReportError(kClass, "FillInterleavedVideoAudioStreamFormatHeader", E_NOTIMPL);
}

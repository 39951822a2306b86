#include "avi/ze_avi_header.h"

#include <cstdio>

HRESULT CZeAviHeader::Reset() {
    static_cast<ze_avi_mainheader&>(*this) = ze_avi_mainheader();
    return CZeAviFormTypes::Reset();
}

std::string CZeAviHeader::Dump() const {
    std::string text = "### CZeAviHeader ###\n" + DumpBase();
#define ZE_DUMP(field, name, format) text += ZeAvi::DumpLine(format, field);
    ZE_AVI_MAINHEADER_FIELDS(ZE_DUMP)
#undef ZE_DUMP
    char line[160];
    std::snprintf(line, sizeof(line), "dwReserved: %ld - %ld - %ld - %ld\n",
                  static_cast<long>(static_cast<int32_t>(dwReserved[0])),
                  static_cast<long>(static_cast<int32_t>(dwReserved[1])),
                  static_cast<long>(static_cast<int32_t>(dwReserved[2])),
                  static_cast<long>(static_cast<int32_t>(dwReserved[3])));
    return text + line;
}

uint32_t CZeAviHeader::GetReserved(int32_t index) const {
    return (index >= 0 && index < 4) ? dwReserved[index] : 0;
}

void CZeAviHeader::SetReserved(int32_t index, uint32_t value) {
    if (index >= 0 && index < 4) dwReserved[index] = value;
}

void CZeAviHeader::SetWord(int index, uint32_t value) {
    uint32_t* const words[kWordCount] = {
        &dwMicroSecPerFrame, &dwMaxBytesPerSec, &dwPaddingGranularity, &dwFlags, &dwTotalFrames,
        &dwInitialFrames, &dwStreams, &dwSuggestedBufferSize, &dwWidth, &dwHeight,
        &dwReserved[0], &dwReserved[1], &dwReserved[2], &dwReserved[3]};
    if (index >= 0 && index < kWordCount) *words[index] = value;
}

HRESULT CZeAviStreamHeader::Reset() {
    static_cast<ze_avi_streamheader&>(*this) = ze_avi_streamheader();
    return CZeAviFormTypes::Reset();
}

std::string CZeAviStreamHeader::Dump() const {
    std::string text = "### CZeAviStreamHeader ###\n" + DumpBase();
#define ZE_DUMP(type, field, name, format) text += ZeAvi::DumpLine(format, static_cast<uint32_t>(field));
    ZE_AVI_STREAMHEADER_FIELDS(ZE_DUMP)
#undef ZE_DUMP
    text += ZeAvi::DumpLine("rcFrame left: %ld", static_cast<uint32_t>(rcFrame.left));
    text += ZeAvi::DumpLine("rcFrame right: %ld", static_cast<uint32_t>(rcFrame.right));
    text += ZeAvi::DumpLine("rcFrame top: %ld", static_cast<uint32_t>(rcFrame.top));
    text += ZeAvi::DumpLine("rcFrame bottom: %ld", static_cast<uint32_t>(rcFrame.bottom));
    return text;
}

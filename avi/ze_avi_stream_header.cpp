#include "avi/ze_avi_stream_header.h"

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

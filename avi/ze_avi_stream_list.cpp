#include "avi/ze_avi_stream_list.h"

HRESULT CZeAviStreamList::Reset() {
    static_cast<ze_avi_streamlist&>(*this) = ze_avi_streamlist();
    m_header.Reset();
    m_format.Reset();
    streamName.clear();
    m_index.Reset();
    return CZeAviFormTypes::Reset();
}

std::string CZeAviStreamList::Dump() const {
    return "### CZeAviStreamList ###\nstreamName : " + streamName + "\n" + DumpBase() + m_header.Dump() +
           m_format.Dump();
}

void CZeAviStreamList::MeasureIndex() {
    dwMaxChunkSize = 0;
    qwTotalBytes = 0;
    for (const CZeAviIndexChunk& entry : m_index.Entries()) {
        if (entry.GetSize() > dwMaxChunkSize) dwMaxChunkSize = entry.GetSize();
        qwTotalBytes += entry.GetSize();
    }
}

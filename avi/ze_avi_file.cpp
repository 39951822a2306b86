#include "avi/ze_avi_file.h"

HRESULT CZeAviFile::Reset() {
    m_header.Reset();
    std::vector<CZeAviStreamList>().swap(m_streams);
    m_videoStreams.clear();
    m_audioStreams.clear();
    static_cast<ze_avi_file&>(*this) = ze_avi_file();
    return CZeAviFormTypes::Reset();
}

std::string CZeAviFile::Dump() const {
    std::string text = "### CZeAviFile ###\nfileName : " + fileName + "\n" + DumpBase() + m_header.Dump();
    for (size_t i = 0; i < m_streams.size(); ++i) {
        text += ZeAvi::DumpLine("Stream: %ld", static_cast<uint32_t>(i));
        text += m_streams[i].Dump();
    }
    return text;
}

HRESULT CZeAviFile::FinishSetup() {
    for (CZeAviStreamList& stream : m_streams) stream.MeasureIndex();
    return S_OK;
}

CZeAviStreamList* CZeAviFile::GetStream(uint32_t number) {
    return number < m_streams.size() ? &m_streams[number] : nullptr;
}

const CZeAviStreamList* CZeAviFile::GetStream(uint32_t number) const {
    return number < m_streams.size() ? &m_streams[number] : nullptr;
}

bool CZeAviFile::HasSecondVideoStream() const {
    return static_cast<int32_t>(dwFirstVideoStream) >= 0 && static_cast<int32_t>(dwSecondVideoStream) >= 0 &&
           dwFirstVideoStream != dwSecondVideoStream;
}

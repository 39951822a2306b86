#include "avi/ze_avi_file.h"

#include <utility>

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

HRESULT CZeAviHeaderList::AddStream(const CZeAviStreamList& streamList) {
    CZeAviStreamList copy(streamList);
    return AddStream(std::move(copy));
}

HRESULT CZeAviHeaderList::AddStream(CZeAviStreamList&& streamList) {
    const uint32_t type = streamList.GetFormat().GetFormatType();
    const bool video = type == CZeAviStreamFormat::kVideo || type == CZeAviStreamFormat::kDVInfo;
    const bool audio = type == CZeAviStreamFormat::kAudio;
    if (!video && !audio) {
        m_file.NoteSkippedStream();
        return S_FALSE;
    }
    const uint32_t number = static_cast<uint32_t>(m_file.GetStreams().size());
    m_file.GetStreams().push_back(std::move(streamList));
    m_file.GetStreams().back().SetStreamNumber(number);
    if (video) {
        if (m_file.GetVideoStreams().empty()) {
            m_file.SetFirstVideoStream(number);
        } else if (m_file.GetVideoStreams().size() == 1) {
            m_file.SetSecondVideoStream(number);
        }
        m_file.GetVideoStreams().push_back(number);
    } else {
        if (m_file.GetAudioStreams().empty()) m_file.SetFirstAudioStream(number);
        m_file.GetAudioStreams().push_back(number);
    }
    return S_OK;
}

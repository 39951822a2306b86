#include "avi/ze_avi_header_list.h"
#include <utility>

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

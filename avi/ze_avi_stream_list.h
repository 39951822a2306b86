// CZeAviStreamList: everything the file says about one stream: the 'strl' list's position, the
// stream header, the format, the name from 'strn' and the stream's flat index.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "avi/ze_avi_form_types.h"
#include "avi/ze_avi_header.h"
#include "avi/ze_avi_index_records.h"
#include "avi/ze_avi_stream_format.h"

// Stream-level values, zero when the list is built.
struct ze_avi_streamlist {
    uint32_t dwStreamNumber = 0;   // position in the file record's stream vector (set when added)
    uint32_t dwMaxChunkSize = 0;   // largest data size among the index entries (set when the file is set up)
    uint64_t qwTotalBytes = 0;     // sum of the data sizes of the index entries (set likewise)
};

class CZeAviStreamList : public CZeAviFormTypes, protected ze_avi_streamlist {
public:
    CZeAviStreamList() = default;
    CZeAviStreamList(const CZeAviStreamList&) = default;
    CZeAviStreamList& operator=(const CZeAviStreamList&) = default;
    CZeAviStreamList(CZeAviStreamList&&) = default;
    CZeAviStreamList& operator=(CZeAviStreamList&&) = default;
    ~CZeAviStreamList() override = default;

    HRESULT Reset() override;
    // Banner, name, base fields, then the header's and the format's dumps.
    std::string Dump() const override;

    CZeAviStreamHeader& GetHeader() { return m_header; }
    const CZeAviStreamHeader& GetHeader() const { return m_header; }
    void SetHeader(const CZeAviStreamHeader& header) { m_header = header; }

    CZeAviStreamFormat& GetFormat() { return m_format; }
    const CZeAviStreamFormat& GetFormat() const { return m_format; }
    void SetFormat(const CZeAviStreamFormat& format) { m_format = format; }

    const std::string& GetStreamName() const { return streamName; }
    void SetStreamName(const std::string& name) { streamName = name; }

    CZeAviIndexListChunk& GetIndexList() { return m_index; }
    const CZeAviIndexListChunk& GetIndexList() const { return m_index; }
    void SetIndexList(const CZeAviIndexListChunk& index) { m_index = index; }
    void SetIndexList(CZeAviIndexListChunk&& index) { m_index = std::move(index); }

    uint32_t GetStreamNumber() const { return dwStreamNumber; }
    void SetStreamNumber(uint32_t value) { dwStreamNumber = value; }
    uint32_t GetMaxChunkSize() const { return dwMaxChunkSize; }
    uint64_t GetTotalBytes() const { return qwTotalBytes; }
    // Fills the largest entry size and the byte total from the index.
    void MeasureIndex();

private:
    CZeAviStreamHeader m_header;
    CZeAviStreamFormat m_format;
    std::string streamName;
    CZeAviIndexListChunk m_index;
};

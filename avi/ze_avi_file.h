// CZeAviFile: the root of the record tree of one AVI file: the path, the main header and one
// stream list per kept stream, in file order, with the stream numbers sorted by kind; and
// CZeAviHeaderList, which files the stream lists of a header list into it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "avi/ze_avi_form_types.h"
#include "avi/ze_avi_header.h"
#include "avi/ze_avi_stream_list.h"

struct ze_avi_file {
    static constexpr uint32_t kNoStream = 0xFFFFFFFFu;
    // Positions in the stream vector; kNoStream when absent.
    uint32_t dwFirstVideoStream = kNoStream;
    uint32_t dwSecondVideoStream = kNoStream;
    uint32_t dwFirstAudioStream = kNoStream;
    // Streams of the header list that were left out (compressed audio, unknown format types).
    uint32_t dwSkippedStreams = 0;
};

class CZeAviFile : public CZeAviFormTypes, protected ze_avi_file {
public:
    CZeAviFile() = default;
    CZeAviFile(const CZeAviFile&) = default;
    CZeAviFile& operator=(const CZeAviFile&) = default;
    ~CZeAviFile() override = default;

    // Main header reset, every stream list destroyed, number vectors emptied, the three stream
    // numbers set to none, the skipped count 0, then the base fields 0. The path is kept: it is the
    // file that is (about to be) open.
    HRESULT Reset() override;
    std::string Dump() const override;
    // Completes the record once the parser is done with the file: measures every stream's index
    // (largest entry, byte total). Returns 0.
    virtual HRESULT FinishSetup();

    const std::string& GetFileName() const { return fileName; }
    void SetFileName(const std::string& name) { fileName = name; }

    CZeAviHeader& GetHeader() { return m_header; }
    const CZeAviHeader& GetHeader() const { return m_header; }

    std::vector<CZeAviStreamList>& GetStreams() { return m_streams; }
    const std::vector<CZeAviStreamList>& GetStreams() const { return m_streams; }
    // The stream list at `number`, null when there is none.
    CZeAviStreamList* GetStream(uint32_t number);
    const CZeAviStreamList* GetStream(uint32_t number) const;

    std::vector<uint32_t>& GetVideoStreams() { return m_videoStreams; }
    const std::vector<uint32_t>& GetVideoStreams() const { return m_videoStreams; }
    std::vector<uint32_t>& GetAudioStreams() { return m_audioStreams; }
    const std::vector<uint32_t>& GetAudioStreams() const { return m_audioStreams; }

    uint32_t GetFirstVideoStream() const { return dwFirstVideoStream; }
    void SetFirstVideoStream(uint32_t value) { dwFirstVideoStream = value; }
    uint32_t GetSecondVideoStream() const { return dwSecondVideoStream; }
    void SetSecondVideoStream(uint32_t value) { dwSecondVideoStream = value; }
    uint32_t GetFirstAudioStream() const { return dwFirstAudioStream; }
    void SetFirstAudioStream(uint32_t value) { dwFirstAudioStream = value; }
    uint32_t GetSkippedStreams() const { return dwSkippedStreams; }
    void NoteSkippedStream() { ++dwSkippedStreams; }

    // Both video numbers present (non-negative as signed values) and different.
    bool HasSecondVideoStream() const;

private:
    std::string fileName;
    CZeAviHeader m_header;
    std::vector<CZeAviStreamList> m_streams;
    std::vector<uint32_t> m_videoStreams;
    std::vector<uint32_t> m_audioStreams;
};

// CZeAviHeaderList: files the stream lists of a header list into a CZeAviFile record.
class CZeAviHeaderList {
public:
    explicit CZeAviHeaderList(CZeAviFile& file) : m_file(file) {}

    // Appends `streamList` to the file's streams and files its number by format type: 1 (video)
    // and 3 (interleaved DV) among the video streams, 2 (audio) among the audio streams. The first
    // video stream becomes the first video number, the next one the second video number; the first
    // audio stream the first audio number. A list of any other format type is not added; the file
    // only counts one more skipped stream. Returns 0 when added, 1 when left out.
    HRESULT AddStream(const CZeAviStreamList& streamList);
    // The same for a stream list the caller no longer needs: its index moves instead of being copied.
    HRESULT AddStream(CZeAviStreamList&& streamList);

private:
    CZeAviFile& m_file;
};

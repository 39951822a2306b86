// The file side of CZEAviReader: the AVI parser that the object owns, answering in the object's own
// terms. Headers come back as copies in the host's record layouts, index entries as rows, format blocks
// as stored bytes and streams by number or role, so the parser's record tree stays behind this class
// and nothing else in the plug-in object depends on it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/win32.h"
#include "reader/api/ze_exchange.h"

class CZeAviFileParser;

class CZeReaderSource {
public:
    // The stream number of a role the file does not have.
    static constexpr uint32_t kNoStream = 0xFFFFFFFFu;

    CZeReaderSource();
    ~CZeReaderSource();
    CZeReaderSource(const CZeReaderSource&) = delete;
    CZeReaderSource& operator=(const CZeReaderSource&) = delete;

    // ---- Opening ----
    bool IsParsed() const;
    // The quick signature check of a file; closes what it opened.
    HRESULT QuickCheck(const char* path);
    // Opens the file and runs the full parse; both steps report their own failures.
    HRESULT OpenAndParse(const char* path);

    // ---- The file ----
    const std::string& FileName() const;
    uint32_t StreamCount() const;
    ZeXpMainHeader MainHeader() const;
    ZeXpStreamRoles Roles() const;

    // ---- One stream by number; a number without a stream answers empty ----
    bool HasStream(uint32_t stream) const;
    std::optional<ZeXpStreamHeader> StreamHeader(uint32_t stream) const;
    // The stored bytes of the format block (bitmap or wave header with what follows it, or the words of
    // a DV info block); null with *bytes 0 when there are none.
    const void* StreamFormat(uint32_t stream, uint32_t* bytes) const;
    // 0 none, 1 video, 2 audio, 3 interleaved DV.
    uint32_t StreamFormatType(uint32_t stream) const;
    std::string StreamName(uint32_t stream) const;
    uint64_t IndexCount(uint32_t stream) const;
    // Index entry `entry` (below IndexCount) of the stream.
    ZeXpIndexEntry IndexRow(uint32_t stream, uint64_t entry) const;

    // ---- Streams by role ----
    uint32_t VideoStream() const;
    uint32_t AudioStream() const;
    std::optional<ZeXpStreamHeader> VideoHeader() const { return StreamHeader(VideoStream()); }
    std::optional<ZeXpStreamHeader> AudioHeader() const { return StreamHeader(AudioStream()); }
    // The video's bitmap header; null when the video has none (interleaved DV carries a DV info block).
    const BITMAPINFOHEADER* VideoFormat() const;
    // The video's picture: its bitmap header or, for interleaved DV, one made from the stream's frame
    // rectangle and handler, so that type-1 DV files describe themselves like type-2 ones.
    std::optional<BITMAPINFOHEADER> VideoPicture() const;
    const WAVEFORMATEX* AudioFormat() const;
    // A parsed file whose video is 'dvsd'.
    bool IsDvVideo() const;

    uint64_t VideoFrameCount() const;
    int32_t LargestVideoFrameSize() const;
    uint32_t LargestAudioChunkSize() const;
    uint64_t AudioChunkCount() const { return IndexCount(AudioStream()); }

    // ---- Reading ----
    // Reads count bytes at an absolute file position through the parser's seek and read.
    HRESULT ReadAt(uint64_t position, void* buffer, uint64_t count, uint64_t* bytesRead);
    HRESULT GetFrame(void* buffer, uint64_t frame, uint64_t* bytesRead);
    HRESULT GetSample(uint64_t position, void* buffer, uint64_t count);
    uint64_t GetOneAudioBlock(void* buffer, uint64_t block);
    uint64_t GetAudioIndex(uint64_t position, uint64_t* inEntry);
    void PrepareAudioRead();

    // ---- DV parameters decoded when the file was opened ----
    ZeXpDVVideoParams DVVideoParams() const;
    ZeXpDVAudioParams DVAudioParams() const;

private:
    std::unique_ptr<CZeAviFileParser> m_parser;
};

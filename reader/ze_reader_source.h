// The file side of CZEAviReader: the AVI parser that the object owns, with the few operations the
// plug-in object needs of it, and the questions about the parsed file (which stream is the video,
// its header and format) asked in one place.
#pragma once

#include <cstdint>
#include <memory>

#include "avi/ze_avi_file.h"
#include "dv/ze_dv_params.h"
#include "platform/win32.h"

class CZeAviFileParser;

class CZeReaderSource {
public:
    CZeReaderSource();
    ~CZeReaderSource();
    CZeReaderSource(const CZeReaderSource&) = delete;
    CZeReaderSource& operator=(const CZeReaderSource&) = delete;

    bool IsParsed() const;
    // The quick signature check of a file; closes what it opened.
    HRESULT QuickCheck(const char* path);
    // Opens the file and runs the full parse; both steps report their own failures.
    HRESULT OpenAndParse(const char* path);

    const CZeAviFile& File() const;

    // Streams by role; null when the file has none.
    const CZeAviStreamList* FirstVideo() const;
    const CZeAviStreamList* FirstAudio() const;
    const CZeAviStreamList* Stream(uint32_t number) const;
    const BITMAPINFOHEADER* VideoFormat() const;
    const WAVEFORMATEX* AudioFormat() const;
    // biCompression of the video, or its stream header's fccHandler when the format is no bitmap
    // header (interleaved DV); 0 without video.
    uint32_t VideoCompression() const;
    bool IsDvVideo() const;

    uint64_t VideoFrameCount() const;
    int32_t LargestVideoFrameSize() const;
    uint32_t LargestAudioChunkSize() const;
    uint64_t AudioChunkCount() const;

    // Reads count bytes at an absolute file position through the parser's seek and read.
    HRESULT ReadAt(uint64_t position, void* buffer, uint64_t count, uint64_t* bytesRead);
    HRESULT GetFrame(void* buffer, uint64_t frame, uint64_t* bytesRead);
    HRESULT GetSample(uint64_t position, void* buffer, uint64_t count);
    uint64_t GetOneAudioBlock(void* buffer, uint64_t block);
    uint64_t GetAudioIndex(uint64_t position, uint64_t* inEntry);
    void PrepareAudioRead();

    const ZeDVVideoParams& DVVideoParams() const;
    const ZeDVAudioParams& DVAudioParams() const;

private:
    std::unique_ptr<CZeAviFileParser> m_parser;
};

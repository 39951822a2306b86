// PCM read by sample position out of a sequence of DV frames that carry their sound inside
// (interleaved DV). Keeps a table of where each frame's samples start, built lazily from the
// frames' AAUX source packs as reads reach further, a cursor so that consecutive reads go on
// without a search, and the decoded sound of the last frame used.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "platform/win32.h"

namespace ZeDV {

// How the reader gets at the frames. `frameCount` gives the number of frames; `readFrame` reads
// up to `size` bytes from `offset` of frame `frame` into `buffer` and sets `*bytesRead`; a frame
// without data (a drop frame) reads 0 bytes and succeeds. A failure is reported by the callee and
// returned as is.
struct FrameAccess {
    std::function<uint64_t()> frameCount;
    std::function<uint32_t(uint64_t frame)> frameSize;
    std::function<HRESULT(uint64_t frame, uint32_t offset, uint8_t* buffer, uint32_t size, uint32_t* bytesRead)>
        readFrame;
};

// The PCM that reads deliver, as the stream's format announces it.
struct PcmFormat {
    uint32_t channels = 0;       // 1: channel 1; 2: channels 1 and 2
    uint32_t bitsPerSample = 0;  // 16 gives samples; any other width gives silence
    uint32_t sampleRate = 0;     // announced rate; with the frame rate it gives the sample count of
    uint32_t frameRate = 0;      // a frame whose AAUX source pack is missing
    uint32_t frameScale = 0;
};

class CZeDVAudioStream {
public:
    CZeDVAudioStream() = default;
    CZeDVAudioStream(const CZeDVAudioStream&) = delete;
    CZeDVAudioStream& operator=(const CZeDVAudioStream&) = delete;

    // Starts over on new frames: forgets table, cursor and cached sound. Frames are read into
    // `frameBuffer` (grown when a frame is larger), or into a buffer of the reader's own when null.
    void Reset(FrameAccess access, const PcmFormat& format, std::vector<uint8_t>* frameBuffer = nullptr);
    void Clear();
    bool IsReady() const { return static_cast<bool>(m_access.frameCount); }

    // Fills `count` bytes of `buffer` with the PCM starting at sample frame `position`; byte
    // position of a sample frame is ((position x bits) >> 3) x channels, as for stored PCM. What
    // lies past the last frame is silence. Returns 0, or the failure of a frame read.
    HRESULT Read(uint64_t position, uint8_t* buffer, uint64_t count);

    // Sample frames carried by frame `frame` and the first sample frame of it (extends the table).
    HRESULT FrameStart(uint64_t frame, uint64_t* start);

private:
    struct Cursor {
        bool valid = false;
        uint64_t streamByte = 0;   // byte position the previous read ended at
        uint64_t frame = 0;        // frame holding that byte
        uint64_t byteInFrame = 0;  // offset within that frame's PCM
    };

    uint64_t NominalSamples(uint64_t frame) const;
    HRESULT SamplesOfFrame(uint64_t frame, uint32_t* samples);
    HRESULT ExtendTable(uint64_t frames);
    HRESULT Locate(uint64_t sample, uint64_t* frame, uint64_t* sampleInFrame);
    HRESULT DecodeFrame(uint64_t frame);
    uint32_t BytesPerSampleFrame() const { return m_format.channels * 2; }

    FrameAccess m_access;
    PcmFormat m_format;
    std::vector<uint64_t> m_frameStart = std::vector<uint64_t>(1, 0);  // m_frameStart[f]: first sample frame of frame f; one extra at the end
    Cursor m_cursor;
    std::vector<uint8_t> m_ownFrameBuffer;
    std::vector<uint8_t>* m_frameBuffer = &m_ownFrameBuffer;
    uint64_t m_pcmFrame = UINT64_MAX;  // frame whose sound m_pcm holds
    std::vector<uint8_t> m_pcm;        // little-endian interleaved samples of that frame
};

}  // namespace ZeDV

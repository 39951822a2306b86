// The pictures of the render filter: one target buffer (a 40-byte BITMAPINFOHEADER, then the pixels,
// rows padded to 4 bytes) that every rendered picture overwrites, and a first-in first-out queue of
// copies of it, so that pictures a decoder hands out late can be taken in the order they came.
//
// The target is allocated four times as large as one header and picture, in task memory. The blank
// RGB picture is written from byte 1600 of the buffer on, beyond the first imageSize + 40 bytes for
// small pictures, which the slack keeps inside the buffer from 480 picture bytes on; below that the
// blanking stops at the end of the buffer. Every copy in and out of the buffer is bounded by its
// size and by the sample's, whatever the picture size says.
//
// Not synchronised: the render filter calls it under its lock.
#pragma once

#include <cstdint>
#include <deque>
#include <vector>

#include "graph/ze_com_ref.h"
#include "platform/win32_dshow.h"

class ZeRenderTarget {
public:
    // The subtype and bits per pixel that a picture format asks for: YUY2 (16), or uncompressed RGB32
    // or RGB24. E_INVALIDARG for anything else.
    static HRESULT ChooseSubtype(const BITMAPINFOHEADER& format, GUID* subtype, uint32_t* bitsPerPixel);
    // Bytes of one picture: rows of (bytes per pixel × width) padded to 4 bytes, times the height, in
    // signed 32-bit arithmetic that wraps as the machine does; a negative height gives a negative size.
    static int32_t ImageSize(uint32_t bitsPerPixel, int32_t width, int32_t height);

    // Takes the format already checked by ChooseSubtype. Stores the picture size, then replaces the
    // buffer; E_OUTOFMEMORY leaves no buffer (a size whose fourfold does not fit 32 bits counts as
    // an allocation that failed, as it does in a 32-bit process).
    HRESULT Init(const BITMAPINFOHEADER& format, const GUID& subtype, uint32_t bitsPerPixel, LONG width, LONG height);

    // Copies one decoded picture into the buffer and, once queueing has begun, into the queue.
    // E_OUTOFMEMORY when a copy cannot be made; the picture is then not marked ready. E_FAIL without
    // a buffer.
    HRESULT Render(const BYTE* data, LONG dataSize);

    // The buffer after a picture (S_OK; with takeQueued and two or more copies queued, the oldest
    // copy comes back in it), or a blank picture when none was rendered (S_FALSE). Null without a
    // buffer.
    HRESULT Take(bool takeQueued, BYTE** out);

    void ClearQueue() { m_queue.clear(); }
    // Empties the queue, zeroes the picture and the header but gives the header back its bytes, and
    // forgets the rendered picture.
    void Reset();
    // Adopts a block from CoTaskMemAlloc; it is taken to be as large as InitTargetBuffer would make it
    // for the current picture size.
    void Adopt(BYTE* buffer);

    bool HasBuffer() const { return m_buffer != nullptr; }
    bool FrameReady() const { return m_frameReady; }
    const BITMAPINFOHEADER* Header() const { return reinterpret_cast<const BITMAPINFOHEADER*>(m_buffer.get()); }
    const GUID& Subtype() const { return m_subtype; }
    LONG Width() const { return m_width; }
    LONG Height() const { return m_height; }
    int32_t ImageBytes() const { return m_imageSize; }
    size_t QueuedCount() const { return m_queue.size(); }
    int32_t RenderedCount() const { return m_renderedCount; }
    bool Queueing() const { return m_queueing; }

private:
    BITMAPINFOHEADER* MutableHeader() { return reinterpret_cast<BITMAPINFOHEADER*>(m_buffer.get()); }
    // imageSize + 40, bounded by the buffer.
    size_t UsedBytes() const;
    // Zeroes `count` bytes from `offset`, as far as the buffer reaches.
    void ZeroRange(int64_t offset, int64_t count);
    bool HeaderShowsPicture() const;
    HRESULT PushCopy();

    ZeTaskMemBlock m_buffer;
    size_t m_capacity = 0;
    int32_t m_imageSize = 0;
    uint32_t m_bitsPerPixel = 0;
    LONG m_width = 0;
    LONG m_height = 0;
    GUID m_subtype = GUID_NULL;
    bool m_frameReady = false;
    bool m_queueing = false;
    int32_t m_renderedCount = 0;
    std::deque<std::vector<BYTE>> m_queue;
};

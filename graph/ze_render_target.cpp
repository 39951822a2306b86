// Target buffer, picture queue and blank pictures of the render filter.
#include "graph/ze_render_target.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

constexpr size_t kHeaderBytes = sizeof(BITMAPINFOHEADER);
constexpr DWORD kFourccYuy2 = ZeFourcc('Y', 'U', 'Y', '2');
// The blank RGB picture starts this far into the buffer.
constexpr int64_t kBlankRgbOffset = 1600;

// (imageSize + 40) 32-bit words, counted in 32 bits. False when the byte count would not fit 32
// bits, which a 32-bit process can never allocate. A picture size between -40 and -31 would leave
// no room for the header, so the block is never smaller than the header.
bool TargetAllocationBytes(int32_t imageSize, size_t* bytes)
{
    const uint32_t words = static_cast<uint32_t>(imageSize) + static_cast<uint32_t>(kHeaderBytes);
    if (words > 0x3FFFFFFFu) return false;
    *bytes = std::max<size_t>(size_t{words} * 4u, kHeaderBytes);
    return true;
}

}  // namespace

HRESULT ZeRenderTarget::ChooseSubtype(const BITMAPINFOHEADER& format, GUID* subtype, uint32_t* bitsPerPixel)
{
    if (format.biCompression == kFourccYuy2) {
        *subtype = MEDIASUBTYPE_YUY2;
        *bitsPerPixel = 16;
        return S_OK;
    }
    if (format.biCompression == BI_RGB && format.biBitCount == 32) {
        *subtype = MEDIASUBTYPE_RGB32;
        *bitsPerPixel = 32;
        return S_OK;
    }
    if (format.biCompression == BI_RGB && format.biBitCount == 24) {
        *subtype = MEDIASUBTYPE_RGB24;
        *bitsPerPixel = 24;
        return S_OK;
    }
    return E_INVALIDARG;
}

int32_t ZeRenderTarget::ImageSize(uint32_t bitsPerPixel, int32_t width, int32_t height)
{
    // Unsigned arithmetic gives the two's complement results of 32-bit signed arithmetic without
    // the undefined behaviour of a signed overflow.
    const uint32_t row = ((bitsPerPixel / 8u) * static_cast<uint32_t>(width) + 3u) & ~3u;
    return static_cast<int32_t>(row * static_cast<uint32_t>(height));
}

HRESULT ZeRenderTarget::Init(const BITMAPINFOHEADER& format, const GUID& subtype, uint32_t bitsPerPixel, LONG width,
                             LONG height)
{
    m_subtype = subtype;
    m_bitsPerPixel = bitsPerPixel;
    m_imageSize = ImageSize(bitsPerPixel, format.biWidth, format.biHeight);
    m_width = width;
    m_height = height;

    m_buffer.reset();
    m_capacity = 0;
    size_t bytes = 0;
    if (!TargetAllocationBytes(m_imageSize, &bytes)) return E_OUTOFMEMORY;
    m_buffer.reset(static_cast<BYTE*>(CoTaskMemAlloc(bytes)));
    if (!m_buffer) return E_OUTOFMEMORY;
    m_capacity = bytes;

    ZeroRange(0, int64_t{m_imageSize} + static_cast<int64_t>(kHeaderBytes));
    std::memcpy(m_buffer.get(), &format, kHeaderBytes);
    MutableHeader()->biSizeImage = static_cast<DWORD>(m_imageSize);
    return S_OK;
}

size_t ZeRenderTarget::UsedBytes() const
{
    const int64_t used = int64_t{m_imageSize} + static_cast<int64_t>(kHeaderBytes);
    return static_cast<size_t>(std::clamp<int64_t>(used, 0, static_cast<int64_t>(m_capacity)));
}

void ZeRenderTarget::ZeroRange(int64_t offset, int64_t count)
{
    const int64_t end = std::min(offset + count, static_cast<int64_t>(m_capacity));
    if (offset < end) std::memset(m_buffer.get() + offset, 0, static_cast<size_t>(end - offset));
}

bool ZeRenderTarget::HeaderShowsPicture() const
{
    const BITMAPINFOHEADER* header = Header();
    return header->biSizeImage > 0 && header->biWidth >= 1 && header->biHeight >= 1;
}

HRESULT ZeRenderTarget::PushCopy()
{
    try {
        m_queue.emplace_back(m_buffer.get(), m_buffer.get() + UsedBytes());
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
    return S_OK;
}

HRESULT ZeRenderTarget::Render(const BYTE* data, LONG dataSize)
{
    if (!m_buffer) return E_FAIL;
    MutableHeader()->biWidth = m_width;
    ++m_renderedCount;

    // The second picture in a row without a take starts the queue; the first one, still in the
    // target, goes in ahead of it.
    if (!m_queueing && m_renderedCount >= 2) {
        m_queueing = true;
        if (HeaderShowsPicture()) {
            const HRESULT hr = PushCopy();
            if (FAILED(hr)) return hr;
        }
    }

    // One block in the decoder's row order and pitch; no more than the sample holds.
    const size_t room = m_capacity - kHeaderBytes;
    const size_t bytes = std::min({static_cast<size_t>(std::max<int32_t>(m_imageSize, 0)),
                                   static_cast<size_t>(std::max<LONG>(dataSize, 0)), room});
    if (bytes > 0) std::memcpy(m_buffer.get() + kHeaderBytes, data, bytes);

    if (m_queueing && HeaderShowsPicture()) {
        const HRESULT hr = PushCopy();
        if (FAILED(hr)) return hr;
    }
    m_frameReady = true;
    return S_OK;
}

HRESULT ZeRenderTarget::Take(bool takeQueued, BYTE** out)
{
    *out = nullptr;
    if (!m_buffer) return E_POINTER;
    if (m_frameReady) {
        if (m_renderedCount > 0) --m_renderedCount;
        if (takeQueued && m_queue.size() >= 2) {
            const size_t used = UsedBytes();
            ZeroRange(0, static_cast<int64_t>(used));
            const std::vector<BYTE>& oldest = m_queue.front();
            std::memcpy(m_buffer.get(), oldest.data(), std::min(oldest.size(), used));
        }
        if (!m_queue.empty()) m_queue.pop_front();
        *out = m_buffer.get();
        return S_OK;
    }

    if (Header()->biCompression == kFourccYuy2) {
        // Black in YUY2: luma 16, chroma 128, one pair per pixel.
        const int64_t pairs = int64_t{Header()->biWidth} * Header()->biHeight;
        const int64_t room = static_cast<int64_t>((m_capacity - kHeaderBytes) / 2);
        BYTE* pixel = m_buffer.get() + kHeaderBytes;
        for (int64_t i = 0; i < std::min(pairs, room); ++i) {
            *pixel++ = 16;
            *pixel++ = 128;
        }
    } else {
        ZeroRange(kBlankRgbOffset, m_imageSize);
    }
    *out = m_buffer.get();
    return S_FALSE;
}

void ZeRenderTarget::Reset()
{
    ClearQueue();
    if (m_buffer) {
        BITMAPINFOHEADER header;
        std::memcpy(&header, m_buffer.get(), kHeaderBytes);
        ZeroRange(0, static_cast<int64_t>(UsedBytes()));
        std::memcpy(m_buffer.get(), &header, kHeaderBytes);
    }
    m_frameReady = false;
}

void ZeRenderTarget::Adopt(BYTE* buffer)
{
    m_buffer.reset(buffer);
    if (!TargetAllocationBytes(m_imageSize, &m_capacity)) m_capacity = kHeaderBytes;
}

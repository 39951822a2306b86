// What the source filter knows about its stream: the format block it keeps (a VIDEOINFOHEADER whose
// bitmap header is followed by whatever the stream's format carried, colour table or codec data),
// the frame time derived from the stream's rate and scale, and the rules by which the output pin
// offers and accepts media types for the stored compression.
#pragma once

#include <cstdint>
#include <vector>

#include "graph/ze_video_stream_desc.h"
#include "platform/win32_dshow.h"

// Compression codes the pin treats apart. The stored compression is compared with the lower-case
// 'mjpg' only, while the type offered for it carries the upper-case 'MJPG'.
constexpr DWORD kZeFourccDvsd = ZeFourcc('d', 'v', 's', 'd');
constexpr DWORD kZeFourccMjpgLower = ZeFourcc('m', 'j', 'p', 'g');
constexpr DWORD kZeFourccMjpgUpper = ZeFourcc('M', 'J', 'P', 'G');

// MEDIASUBTYPE_Avi, the subtype of a stream of AVI file data: {E436EB88-524F-11CE-9F53-0020AF0BA770}.
extern const GUID kZeSubtypeAviStream;

// The VIDEOINFOHEADER part in front of the bitmap header.
constexpr uint32_t kZeVideoInfoPrefix = 48;

// 10 000 000 / (rate / scale), the frames per second taken as a truncated integer on purpose, so
// 30000/1001 counts as 29 frames per second. Scale 0 counts as 1. A rate below the scale gives 0
// frames per second; the division by zero then yields the most negative 64-bit value, which is
// what a truncating conversion of the infinite quotient gives on x86, made explicit here.
int64_t ZeAvgTimePerFrame(uint32_t rate, uint32_t scale);

// The stored format block: zero until Set, then max(biSize, 40) + 48 bytes.
class ZeSourceFormat {
public:
    // Copies header (biSize bytes, at least its 40) behind a zeroed VIDEOINFOHEADER prefix and stores
    // the frame time. Returns E_OUTOFMEMORY when the block cannot be allocated; the old block is gone then.
    HRESULT Set(const BITMAPINFOHEADER& header, uint32_t rate, uint32_t scale);

    bool Empty() const { return m_bytes.empty(); }
    uint32_t Size() const { return static_cast<uint32_t>(m_bytes.size()); }
    const BYTE* Bytes() const { return m_bytes.data(); }
    const VIDEOINFOHEADER& Info() const { return *reinterpret_cast<const VIDEOINFOHEADER*>(m_bytes.data()); }
    // biCompression of the stored header, 0 while nothing is stored.
    DWORD Compression() const { return Empty() ? 0 : Info().bmiHeader.biCompression; }

private:
    std::vector<BYTE> m_bytes;
};

// Whether the output pin takes `type` for a stream of the given compression.
bool ZeSourceAcceptsType(DWORD compression, const AM_MEDIA_TYPE& type);

// The identifiers of the type the output pin offers at position 0 or 1, and the compression its
// format's bitmap header carries (the upper-case 'MJPG' for a lower-case 'mjpg' stream).
struct ZeSourceOffer {
    GUID majortype;
    GUID subtype;
    GUID formattype;
    DWORD compression;
};
ZeSourceOffer ZeSourceOfferAt(DWORD compression, int position);

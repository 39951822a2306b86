// Format block, frame time and media-type rules of the source filter.
#include "graph/ze_source_format.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

const GUID kZeSubtypeAviStream = {0xe436eb88, 0x524f, 0x11ce, {0x9f, 0x53, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};

int64_t ZeAvgTimePerFrame(uint32_t rate, uint32_t scale)
{
    if (scale == 0) scale = 1;
    const uint32_t framesPerSecond = rate / scale;
    if (framesPerSecond == 0) return std::numeric_limits<int64_t>::min();
    return static_cast<int64_t>(10000000.0 / static_cast<double>(framesPerSecond));
}

HRESULT ZeSourceFormat::Set(const BITMAPINFOHEADER& header, uint32_t rate, uint32_t scale)
{
    // A header that claims fewer than its own 40 bytes still gets room for all of them.
    const uint32_t headerBytes = std::max<uint32_t>(header.biSize, sizeof(BITMAPINFOHEADER));
    if (headerBytes > std::numeric_limits<uint32_t>::max() - kZeVideoInfoPrefix) {
        m_bytes = std::vector<BYTE>();
        return E_OUTOFMEMORY;
    }
    // The old block goes first, so a failed allocation leaves no format behind.
    m_bytes = std::vector<BYTE>();
    std::vector<BYTE> bytes;
    try {
        bytes.assign(headerBytes + kZeVideoInfoPrefix, 0);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
    // The 40 bytes of the header first, then biSize bytes over the same place, so what follows the
    // header in the caller's format (colour table, codec data) comes along.
    std::memcpy(bytes.data() + kZeVideoInfoPrefix, &header, sizeof(BITMAPINFOHEADER));
    std::memcpy(bytes.data() + kZeVideoInfoPrefix, &header, header.biSize);
    const int64_t avgTimePerFrame = ZeAvgTimePerFrame(rate, scale);
    std::memcpy(bytes.data() + offsetof(VIDEOINFOHEADER, AvgTimePerFrame), &avgTimePerFrame, sizeof avgTimePerFrame);
    m_bytes.swap(bytes);
    return S_OK;
}

bool ZeSourceAcceptsType(DWORD compression, const AM_MEDIA_TYPE& type)
{
    const bool videoInfoOrDv = type.formattype == FORMAT_VideoInfo || type.formattype == FORMAT_DvInfo;
    if (compression == kZeFourccDvsd && type.majortype == MEDIATYPE_Video && type.subtype == MEDIASUBTYPE_dvsd &&
        videoInfoOrDv)
        return true;
    if (compression == kZeFourccMjpgLower) {
        if (type.majortype == MEDIATYPE_Video || type.majortype == MEDIATYPE_Stream) {
            if (type.subtype == MEDIASUBTYPE_MJPG && type.formattype == FORMAT_VideoInfo) return true;
            if (type.subtype == kZeSubtypeAviStream &&
                (type.formattype == FORMAT_VideoInfo || type.formattype == GUID_NULL))
                return true;
        }
        // Taken as well, though this filter never offers sound.
        if (type.majortype == MEDIATYPE_Audio && type.subtype == MEDIASUBTYPE_PCM &&
            type.formattype == FORMAT_WaveFormatEx)
            return true;
    }
    return type.majortype == MEDIATYPE_Video && type.subtype == ZeFourccSubtype(compression) && videoInfoOrDv;
}

ZeSourceOffer ZeSourceOfferAt(DWORD compression, int position)
{
    if (compression == kZeFourccDvsd) return {MEDIATYPE_Video, MEDIASUBTYPE_dvsd, FORMAT_VideoInfo, compression};
    if (compression == kZeFourccMjpgLower) {
        if (position == 0) return {MEDIATYPE_Video, MEDIASUBTYPE_MJPG, FORMAT_VideoInfo, kZeFourccMjpgUpper};
        return {MEDIATYPE_Stream, kZeSubtypeAviStream, GUID_NULL, kZeFourccMjpgUpper};
    }
    return {MEDIATYPE_Video, ZeFourccSubtype(compression), FORMAT_VideoInfo, compression};
}

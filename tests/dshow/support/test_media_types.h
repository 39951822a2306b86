// Media types that tests of filters build again and again.
#pragma once

#include "dshow/baseclasses/streams.h"

namespace zetest {

// A type without a format block.
inline CMediaType PlainType(const GUID& major, const GUID& subtype)
{
    CMediaType type(&major);
    type.SetSubtype(&subtype);
    type.SetFormatType(&FORMAT_None);
    return type;
}

// MEDIATYPE_Video with a VIDEOINFOHEADER of `width` x `height` at `bitCount` bits per pixel. Uncompressed
// (BI_RGB, BI_BITFIELDS) pictures get the DWORD-aligned image size and fixed-size samples.
inline CMediaType VideoInfoType(const GUID& subtype, LONG width, LONG height, WORD bitCount,
                                DWORD compression = BI_RGB, REFERENCE_TIME frameTime = 400000)
{
    CMediaType type(&MEDIATYPE_Video);
    type.SetSubtype(&subtype);
    type.SetFormatType(&FORMAT_VideoInfo);
    auto* info = reinterpret_cast<VIDEOINFOHEADER*>(type.AllocFormatBuffer(sizeof(VIDEOINFOHEADER)));
    info->AvgTimePerFrame = frameTime;
    BITMAPINFOHEADER& header = info->bmiHeader;
    header.biSize = sizeof(BITMAPINFOHEADER);
    header.biWidth = width;
    header.biHeight = height;
    header.biPlanes = 1;
    header.biBitCount = bitCount;
    header.biCompression = compression;
    header.biSizeImage = GetBitmapSize(&header);
    const bool uncompressed = compression == BI_RGB || compression == BI_BITFIELDS;
    if (uncompressed)
        type.SetSampleSize(header.biSizeImage);
    else
        type.SetVariableSize();
    type.SetTemporalCompression(uncompressed ? FALSE : TRUE);
    return type;
}

}  // namespace zetest

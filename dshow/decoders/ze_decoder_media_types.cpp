#include "dshow/decoders/ze_decoder_media_types.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <iterator>

namespace zedec {

const DibFormat kOfferedOutputs[4] = {DibFormat::Yuy2, DibFormat::Uyvy, DibFormat::Rgb24, DibFormat::Rgb32};

namespace {

const GUID& SubtypeOf(DibFormat format)
{
    switch (format) {
    case DibFormat::Yuy2:
        return MEDIASUBTYPE_YUY2;
    case DibFormat::Uyvy:
        return MEDIASUBTYPE_UYVY;
    case DibFormat::Rgb24:
        return MEDIASUBTYPE_RGB24;
    case DibFormat::Rgb32:
        break;
    }
    return MEDIASUBTYPE_RGB32;
}

bool FormatOfSubtype(const GUID& subtype, DibFormat* format)
{
    for (DibFormat f : kOfferedOutputs)
        if (IsEqualGUID(subtype, SubtypeOf(f))) {
            *format = f;
            return true;
        }
    if (IsEqualGUID(subtype, MEDIASUBTYPE_ARGB32)) {  // same bytes; the alpha byte comes out opaque
        *format = DibFormat::Rgb32;
        return true;
    }
    return false;
}

// The BITMAPINFOHEADER of a VIDEOINFOHEADER or VIDEOINFOHEADER2 block, the bytes after it and
// the target rectangle.
bool VideoHeaderOf(const AM_MEDIA_TYPE& type, const BITMAPINFOHEADER** header, const BYTE** extra,
                   size_t* extraSize, RECT* target, REFERENCE_TIME* frameDuration)
{
    size_t offset = 0;
    if (IsEqualGUID(type.formattype, FORMAT_VideoInfo) && type.cbFormat >= sizeof(VIDEOINFOHEADER)) {
        offset = offsetof(VIDEOINFOHEADER, bmiHeader);
        const auto* vih = reinterpret_cast<const VIDEOINFOHEADER*>(type.pbFormat);
        *target = vih->rcTarget;
        *frameDuration = vih->AvgTimePerFrame;
    } else if (IsEqualGUID(type.formattype, FORMAT_VideoInfo2) && type.cbFormat >= sizeof(VIDEOINFOHEADER2)) {
        offset = offsetof(VIDEOINFOHEADER2, bmiHeader);
        const auto* vih = reinterpret_cast<const VIDEOINFOHEADER2*>(type.pbFormat);
        *target = vih->rcTarget;
        *frameDuration = vih->AvgTimePerFrame;
    } else {
        return false;
    }
    if (!type.pbFormat)
        return false;
    *header = reinterpret_cast<const BITMAPINFOHEADER*>(type.pbFormat + offset);
    const size_t headerEnd = offset + sizeof(BITMAPINFOHEADER);
    *extra = type.pbFormat + headerEnd;
    *extraSize = type.cbFormat - headerEnd;
    return true;
}

bool RowTakesSubtype(const DecoderRow& row, const GUID& subtype)
{
    DWORD fourcc = 0;
    if (!FourccOfSubtype(subtype, &fourcc))
        return false;
    if (std::find(row.fourccs.begin(), row.fourccs.end(), fourcc) != row.fourccs.end())
        return true;
    // The named decoders take exactly their listed subtypes; a generic row takes any FOURCC that
    // libavformat gives its codec.
    return IsEqualGUID(row.clsid, GenericDecoderClsid(row.codec)) && CodecOfFourcc(fourcc) == row.codec;
}

}  // namespace

bool ReadInputType(const AM_MEDIA_TYPE& type, const DecoderRow& row, InputFormat* format)
{
    if (!IsEqualGUID(type.majortype, MEDIATYPE_Video) || !RowTakesSubtype(row, type.subtype))
        return false;
    InputFormat in;
    const BITMAPINFOHEADER* header = nullptr;
    const BYTE* extra = nullptr;
    size_t extraSize = 0;
    RECT target{};
    if (VideoHeaderOf(type, &header, &extra, &extraSize, &target, &in.frameDuration)) {
        in.header = *header;
        in.extra.assign(extra, extra + extraSize);
    } else if (row.dv && IsEqualGUID(type.formattype, FORMAT_DvInfo) && type.pbFormat &&
               type.cbFormat >= sizeof(DVINFO)) {
        // The 50/60 flag is bit 5 of the VAUX source pack's third data byte.
        const auto* dv = reinterpret_cast<const DVINFO*>(type.pbFormat);
        const bool fifty = (dv->dwDVVAuxSrc >> 21) & 1;
        in.header.biSize = sizeof(BITMAPINFOHEADER);
        in.header.biWidth = 720;
        in.header.biHeight = fifty ? 576 : 480;
        in.header.biCompression = type.subtype.Data1;
        in.frameDuration = fifty ? 400000 : 333667;
    } else {
        return false;
    }
    if (in.header.biWidth <= 0 || in.header.biHeight == 0)
        return false;
    if (format)
        *format = std::move(in);
    return true;
}

bool MakeOutputType(int index, int width, int height, REFERENCE_TIME frameDuration, CMediaType* type)
{
    if (index < 0 || index >= static_cast<int>(std::size(kOfferedOutputs)) || !type)
        return false;
    const DibFormat format = kOfferedOutputs[index];
    type->InitMediaType();
    type->SetType(&MEDIATYPE_Video);
    type->SetSubtype(&SubtypeOf(format));
    type->SetFormatType(&FORMAT_VideoInfo);
    auto* vih = reinterpret_cast<VIDEOINFOHEADER*>(type->AllocFormatBuffer(sizeof(VIDEOINFOHEADER)));
    if (!vih)
        return false;
    const DibLayout layout = DibLayoutOf(format, width, height, width);
    vih->rcSource = RECT{0, 0, width, height};
    vih->rcTarget = RECT{0, 0, width, height};
    vih->AvgTimePerFrame = frameDuration;
    if (frameDuration > 0)
        vih->dwBitRate = static_cast<DWORD>(
            std::min<double>(4294967295.0, double(layout.ImageSize()) * 8.0 * 1e7 / double(frameDuration)));
    BITMAPINFOHEADER& bih = vih->bmiHeader;
    bih.biSize = sizeof(BITMAPINFOHEADER);
    bih.biWidth = width;
    bih.biHeight = height;
    bih.biPlanes = 1;
    bih.biBitCount = static_cast<WORD>(DibBitCount(format));
    bih.biCompression = DibCompression(format);
    bih.biSizeImage = static_cast<DWORD>(layout.ImageSize());
    type->SetSampleSize(bih.biSizeImage);
    type->SetTemporalCompression(FALSE);
    return true;
}

bool ReadOutputType(const AM_MEDIA_TYPE& type, int width, int height, DibLayout* layout)
{
    DibFormat format;
    if (!IsEqualGUID(type.majortype, MEDIATYPE_Video) || !FormatOfSubtype(type.subtype, &format))
        return false;
    const BITMAPINFOHEADER* header = nullptr;
    const BYTE* extra = nullptr;
    size_t extraSize = 0;
    RECT target{};
    REFERENCE_TIME duration = 0;
    if (!VideoHeaderOf(type, &header, &extra, &extraSize, &target, &duration))
        return false;
    if (header->biBitCount != DibBitCount(format) || header->biPlanes > 1)
        return false;
    const bool rgb = DibIsRgb(format);
    if (header->biCompression != (rgb ? 0u : DibCompression(format)))
        return false;
    // A target rectangle, when there is one, is the picture; biWidth is then the stride in pixels.
    const bool hasTarget = target.right > target.left && target.bottom > target.top;
    const int pictureWidth = hasTarget ? target.right - target.left : header->biWidth;
    const int pictureHeight = hasTarget ? target.bottom - target.top : std::abs(header->biHeight);
    if (pictureWidth != width || pictureHeight != height || std::abs(header->biHeight) != height ||
        header->biWidth < width || (hasTarget && (target.left != 0 || target.top != 0)))
        return false;
    if (layout)
        *layout = DibLayoutOf(format, header->biWidth, header->biHeight, width);
    return true;
}

}  // namespace zedec

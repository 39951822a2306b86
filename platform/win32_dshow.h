// The DirectShow subset the decoding graph is written against. On Windows it is the SDK (the mingw-w64
// headers and libstrmiids); elsewhere our own declarations, split by area: records, constants and
// identifiers (win32_dshow_types.h), filter interfaces (win32_dshow_filters.h) and graph interfaces
// (win32_dshow_graph.h), with the identifiers' values in platform/posix/dshow_guids.cpp.
// Not included by win32.h: code that uses DirectShow includes this header itself.
#pragma once

#include "platform/win32.h"

#ifdef _WIN32
#include <dshow.h>
#include <dvdmedia.h>
#include <uuids.h>
#include <amvideo.h>
// strmif.h declares IID_IIPDVDec, but libstrmiids does not carry its value.
extern "C" __declspec(selectany) const IID IID_IIPDVDec = {
    0xb8e8bd60, 0x0bfe, 0x11d0, {0xaf, 0x91, 0x00, 0xaa, 0x00, 0xb6, 0x7a, 0x42}};
#else
#include "platform/win32_dshow_types.h"
#include "platform/win32_dshow_filters.h"
#include "platform/win32_dshow_graph.h"
#endif
#include "platform/win32_dshow_record_layouts.h"

// The media subtype that stands for a FOURCC: {XXXXXXXX-0000-0010-8000-00AA00389B71}, the FOURCC's
// four characters read as a little-endian DWORD in the first field.
inline GUID ZeFourccSubtype(DWORD fourcc)
{
    return GUID{fourcc, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
}

// The FOURCC of four characters, first character in the lowest byte.
constexpr DWORD ZeFourcc(char a, char b, char c, char d)
{
    return static_cast<DWORD>(static_cast<BYTE>(a)) | (static_cast<DWORD>(static_cast<BYTE>(b)) << 8) |
           (static_cast<DWORD>(static_cast<BYTE>(c)) << 16) | (static_cast<DWORD>(static_cast<BYTE>(d)) << 24);
}

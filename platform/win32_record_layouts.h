// Sizes and offsets of the Windows records the module reads, writes or hands on, checked on every
// build: the SDK's declarations on Windows and ours elsewhere must give the same layout (32-bit
// offsets on a 32-bit build; a pointer field is 8 bytes on a 64-bit one and moves what follows it).
#pragma once

#include <cstddef>

namespace ze_win32_layout {
constexpr bool k32 = sizeof(void*) == 4;

static_assert(sizeof(BYTE) == 1 && sizeof(WORD) == 2 && sizeof(DWORD) == 4 && sizeof(LONG) == 4, "integer widths");
static_assert(sizeof(HRESULT) == 4 && sizeof(LONGLONG) == 8, "integer widths");
static_assert(sizeof(GUID) == 16 && sizeof(LARGE_INTEGER) == 8 && sizeof(FILETIME) == 8, "basic records");
static_assert(sizeof(RECT) == 16 && offsetof(RECT, bottom) == 12, "RECT");
static_assert(sizeof(WAVEFORMATEX) == 18 && offsetof(WAVEFORMATEX, cbSize) == 16, "WAVEFORMATEX is packed");
static_assert(offsetof(WAVEFORMATEX, nSamplesPerSec) == 4 && offsetof(WAVEFORMATEX, nBlockAlign) == 12, "WAVEFORMATEX");
static_assert(sizeof(BITMAPINFOHEADER) == 40 && offsetof(BITMAPINFOHEADER, biCompression) == 16, "BITMAPINFOHEADER");
static_assert(offsetof(BITMAPINFOHEADER, biClrImportant) == 36, "BITMAPINFOHEADER");
static_assert(offsetof(BITMAPINFO, bmiColors) == 40, "BITMAPINFO");
}  // namespace ze_win32_layout

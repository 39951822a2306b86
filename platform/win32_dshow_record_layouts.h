// Sizes and offsets of the DirectShow records the graph and the module exchange, checked on every
// build against the SDK's declarations on Windows and ours elsewhere (see win32_record_layouts.h).
#pragma once

#include <cstddef>

namespace ze_win32_layout {
static_assert(offsetof(AM_MEDIA_TYPE, bFixedSizeSamples) == 32 && offsetof(AM_MEDIA_TYPE, lSampleSize) == 40,
              "AM_MEDIA_TYPE");
static_assert(offsetof(AM_MEDIA_TYPE, formattype) == 44, "AM_MEDIA_TYPE");
static_assert(offsetof(AM_MEDIA_TYPE, pUnk) == (k32 ? 60 : 64), "AM_MEDIA_TYPE");
static_assert(offsetof(AM_MEDIA_TYPE, cbFormat) == (k32 ? 64 : 72), "AM_MEDIA_TYPE");
static_assert(offsetof(AM_MEDIA_TYPE, pbFormat) == (k32 ? 68 : 80), "AM_MEDIA_TYPE");
static_assert(sizeof(AM_MEDIA_TYPE) == (k32 ? 72 : 88), "AM_MEDIA_TYPE");
static_assert(sizeof(REFERENCE_TIME) == 8, "REFERENCE_TIME");
static_assert(offsetof(VIDEOINFOHEADER, AvgTimePerFrame) == 40 && offsetof(VIDEOINFOHEADER, bmiHeader) == 48,
              "VIDEOINFOHEADER");
static_assert(sizeof(VIDEOINFOHEADER) == 88, "VIDEOINFOHEADER");
static_assert(offsetof(VIDEOINFOHEADER2, dwPictAspectRatioX) == 56 && offsetof(VIDEOINFOHEADER2, bmiHeader) == 72,
              "VIDEOINFOHEADER2");
static_assert(sizeof(VIDEOINFOHEADER2) == 112, "VIDEOINFOHEADER2");
static_assert(sizeof(DVINFO) == 32, "DVINFO");
static_assert(sizeof(ALLOCATOR_PROPERTIES) == 16, "ALLOCATOR_PROPERTIES");
}  // namespace ze_win32_layout

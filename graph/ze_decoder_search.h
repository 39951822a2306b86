// The decoder list of a video stream: the decoders the filter mapper offers for the stream's media
// type that really connect between the module's source filter and its render filter.
#pragma once

#include "graph/ze_filter_record.h"
#include "graph/ze_video_stream_desc.h"
#include "platform/win32_dshow.h"

// In a temporary graph holding a source filter with the stream's format and a render filter, every
// decoder of at least MERIT_NORMAL whose input takes the source's media types exactly is tried, in
// the mapper's order: it qualifies when its input connects directly to the source's output and its
// output connects directly to the render filter in one of the picture formats it offers that the
// render filter takes (YUY2, RGB24 or RGB32), tried in the decoder's order. The records of the decoders that qualify are appended
// to `decoders`; everything else built here is released again. S_OK also when none qualifies;
// E_POINTER for null arguments; failures to create the graph, the filters, or of the mapper query
// are returned. Nothing is reported by this function itself.
HRESULT FindDecoders(const BITMAPINFOHEADER* format, const ze_video_stream_desc* desc, CZeFilterList* decoders);

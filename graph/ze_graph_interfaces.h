// The interfaces of the decoding graph's own filters, through which the frame service drives them,
// and the class identifiers under which the two filters are created and registered.
//
//   IZEVideoSourceFilter  the push source: format in, one sample buffer out, Decode pushes it on.
//   IZEVideoRenderFilter  the sink: target picture format in, rendered pictures out.
//   IZEBaseFilterEx       IBaseFilter with direct access to the render filter's one pin.
#pragma once

#include "graph/ze_video_stream_desc.h"
#include "platform/win32_dshow.h"

extern "C" const IID IID_IZEVideoSourceFilter;
extern "C" const IID IID_IZEVideoRenderFilter;
extern "C" const IID IID_IZEBaseFilterEx;

extern "C" const CLSID CLSID_ZEVideoSourceFilter;  // {4B9E6A07-D2C8-4E1F-93A5-7F0C1B2D6E84}
extern "C" const CLSID CLSID_ZEVideoRenderFilter;  // {7D3A51C2-9E4B-4F08-A6D1-2C5B8E90F143}

struct IZEVideoSourceFilter : public IUnknown {
    // The allocator properties granted at connection and a flat copy of the connection media type.
    // The copy shares the pin's format block: the caller must not free it.
    virtual HRESULT STDMETHODCALLTYPE GetSampleProps(ALLOCATOR_PROPERTIES* props, AM_MEDIA_TYPE* type) = 0;
    // A fresh sample from the allocator; *data points at its buffer until Decode sends it on.
    virtual HRESULT STDMETHODCALLTYPE GetSampleBuffer(BYTE** data) = 0;
    // Sets the format from a bitmap header and the stream description the frame service filled in.
    virtual HRESULT STDMETHODCALLTYPE SetStreamInfo(const BITMAPINFOHEADER* header,
                                                    const ze_video_stream_desc* streamHeader) = 0;
    // Keeps a copy of the bitmap header (biSize bytes) and the description; derives the frame time.
    virtual HRESULT STDMETHODCALLTYPE SetMediaInfo(const BITMAPINFOHEADER* header,
                                                   const ze_video_stream_desc* desc) = 0;
    // Delivers the held sample downstream on the calling thread.
    virtual HRESULT STDMETHODCALLTYPE Decode() = 0;
    virtual HRESULT STDMETHODCALLTYPE SetDiscontinuity(BOOL discontinuity) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetSyncPoint(BOOL syncPoint) = 0;

protected:
    ~IZEVideoSourceFilter() = default;
};

struct IZEVideoRenderFilter : public IUnknown {
    // Fixes the picture format (RGB32, RGB24 or YUY2) and allocates the target buffer.
    virtual HRESULT STDMETHODCALLTYPE InitTargetBuffer(const BITMAPINFOHEADER* format, LONG width, LONG height) = 0;
    // The target buffer (40-byte header, then the pixels). S_FALSE with a blank picture when nothing
    // was rendered; with takeQueued, the oldest of two or more queued pictures.
    virtual HRESULT STDMETHODCALLTYPE GetTargetBuffer(BYTE** buffer, BOOL takeQueued) = 0;
    // S_OK when a target buffer exists. The argument is not used.
    virtual HRESULT STDMETHODCALLTYPE GetMediaInfo(void* unused) = 0;
    virtual HRESULT STDMETHODCALLTYPE ClearFrameQueue() = 0;
    // Empties the queue, blanks the picture (the header stays) and forgets that a picture was rendered.
    virtual HRESULT STDMETHODCALLTYPE ResetTargetBuffer() = 0;
    // S_FALSE while no picture was rendered since the last reset, S_OK otherwise.
    virtual HRESULT STDMETHODCALLTYPE IsFrameMissing() = 0;
    // Adopts a buffer from CoTaskMemAlloc as the target; it must be as large as the one it replaces.
    virtual HRESULT STDMETHODCALLTYPE SetTargetBuffer(BYTE* buffer) = 0;

protected:
    ~IZEVideoRenderFilter() = default;
};

struct IZEBaseFilterEx : public IBaseFilter {
    // The filter's input pin, without a new reference.
    virtual HRESULT STDMETHODCALLTYPE GetPin(IPin** pin) = 0;

protected:
    ~IZEBaseFilterEx() = default;
};

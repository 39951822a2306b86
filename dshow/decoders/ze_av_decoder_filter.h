// The decoder filter: one transform filter for every row of the decoder table. The row gives its
// class identifier, name and input subtypes; libavcodec decodes and libswscale writes the DIB.
//
// Streaming runs on the delivering thread: each input sample is one packet, and every picture the
// decoder completes is delivered at once, so one Receive delivers zero or several samples (codecs
// with reordering hold pictures back). EndOfStream drains the held pictures before passing the end
// on; NewSegment and BeginFlush discard them (after a jump, MPEG-4 part 2 and its kind drop
// pictures until a key frame). Input times become packet time stamps and come back with the
// pictures they belong to. A packet libavcodec cannot decode gives no picture and no error, so
// one damaged frame does not stop the stream.
//
// The DV row also implements IIPDVDec (see ze_dv_resolution.h for the values and sizes).
#pragma once

#include "dshow/baseclasses/transform_filter.h"
#include "dshow/decoders/ze_av_video_decoder.h"
#include "dshow/decoders/ze_decoder_media_types.h"
#include "dshow/decoders/ze_decoder_table.h"
#include "dshow/decoders/ze_dib_converter.h"

namespace zedec {

class CZeAvDecoderFilter : public CTransformFilter, public IIPDVDec {
public:
    CZeAvDecoderFilter(const DecoderRow& row, LPUNKNOWN outer, HRESULT* phr);

    DECLARE_IUNKNOWN
    HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override;

    // CTransformFilter
    HRESULT Transform(IMediaSample* in, IMediaSample* out) override;
    HRESULT CheckInputType(const CMediaType* type) override;
    HRESULT CheckTransform(const CMediaType* input, const CMediaType* output) override;
    HRESULT GetMediaType(int position, CMediaType* type) override;
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override;
    HRESULT SetMediaType(PIN_DIRECTION direction, const CMediaType* type) override;
    HRESULT StartStreaming() override;
    HRESULT StopStreaming() override;
    HRESULT Receive(IMediaSample* sample) override;
    HRESULT EndOfStream() override;
    HRESULT BeginFlush() override;
    HRESULT NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;

    // IIPDVDec. put_IPDisplay takes DVRESOLUTION_* or the divisors 1, 2, 4, 8; it answers
    // VFW_E_NOT_STOPPED unless the filter is stopped, E_INVALIDARG for other values, and when the
    // output is connected it has the graph reconnect it at the new size (keeping the old resolution
    // if that fails).
    HRESULT STDMETHODCALLTYPE get_IPDisplay(int* displayPix) override;
    HRESULT STDMETHODCALLTYPE put_IPDisplay(int displayPix) override;

private:
    // The size of the pictures the filter writes for an input format at the current resolution.
    void PictureSize(const InputFormat& input, int* width, int* height) const;
    HRESULT DeliverPicture(const AVFrame& frame);
    HRESULT ReceiveGuarded(IMediaSample* sample);

    const DecoderRow& m_row;
    int m_resolution = DVRESOLUTION_FULL;
    InputFormat m_input;        // of the connected input type
    DibLayout m_outputLayout;   // of the connected output type
    AvVideoDecoder m_decoder;
    DibConverter m_converter;
    bool m_discontinuity = true;  // the next delivered picture starts a new run
};

// Creates the filter of a table row for a class factory.
HRESULT CreateDecoderFilter(const DecoderRow& row, LPUNKNOWN outer, REFIID iid, void** object);

}  // namespace zedec

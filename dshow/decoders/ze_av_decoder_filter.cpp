#include "dshow/decoders/ze_av_decoder_filter.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>

#include "dshow/decoders/ze_dv_resolution.h"

namespace zedec {
namespace {

// The decoders keep no exception inside: what the C++ library throws (only std::bad_alloc here)
// becomes E_OUTOFMEMORY before a COM caller sees it.
template <class Call>
HRESULT Guarded(Call&& call)
{
    try {
        return call();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

}  // namespace

CZeAvDecoderFilter::CZeAvDecoderFilter(const DecoderRow& row, LPUNKNOWN outer, HRESULT* phr)
    : CTransformFilter(row.friendlyName.c_str(), outer, row.clsid, phr), m_row(row)
{
}

HRESULT STDMETHODCALLTYPE CZeAvDecoderFilter::NonDelegatingQueryInterface(REFIID iid, void** object)
{
    if (m_row.dv && IsEqualIID(iid, IID_IIPDVDec))
        return GetInterface(static_cast<IIPDVDec*>(this), object);
    return CTransformFilter::NonDelegatingQueryInterface(iid, object);
}

void CZeAvDecoderFilter::PictureSize(const InputFormat& input, int* width, int* height) const
{
    const int fullWidth = input.header.biWidth;
    const int fullHeight = std::abs(input.header.biHeight);
    if (m_row.dv) {
        DvPictureSize(m_resolution, fullWidth, fullHeight, width, height);
    } else {
        *width = fullWidth;
        *height = fullHeight;
    }
}

HRESULT CZeAvDecoderFilter::CheckInputType(const CMediaType* type)
{
    if (!type)
        return E_POINTER;
    return Guarded([&] { return ReadInputType(*type, m_row, nullptr) ? S_OK : VFW_E_TYPE_NOT_ACCEPTED; });
}

HRESULT CZeAvDecoderFilter::CheckTransform(const CMediaType* input, const CMediaType* output)
{
    if (!input || !output)
        return E_POINTER;
    return Guarded([&] {
        InputFormat in;
        if (!ReadInputType(*input, m_row, &in))
            return VFW_E_TYPE_NOT_ACCEPTED;
        int width = 0, height = 0;
        PictureSize(in, &width, &height);
        return ReadOutputType(*output, width, height, nullptr) ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
    });
}

HRESULT CZeAvDecoderFilter::GetMediaType(int position, CMediaType* type)
{
    if (!type)
        return E_POINTER;
    if (!m_pInput->IsConnected())
        return VFW_E_NOT_CONNECTED;
    if (position < 0)
        return E_INVALIDARG;
    return Guarded([&] {
        int width = 0, height = 0;
        PictureSize(m_input, &width, &height);
        return MakeOutputType(position, width, height, m_input.frameDuration, type) ? S_OK : VFW_S_NO_MORE_ITEMS;
    });
}

HRESULT CZeAvDecoderFilter::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request)
{
    if (!allocator || !request)
        return E_POINTER;
    request->cBuffers = std::max<LONG>(request->cBuffers, 1);
    request->cbBuffer = std::max<LONG>(request->cbBuffer, static_cast<LONG>(m_outputLayout.ImageSize()));
    request->cbAlign = std::max<LONG>(request->cbAlign, 1);
    ALLOCATOR_PROPERTIES actual{};
    const HRESULT hr = allocator->SetProperties(request, &actual);
    if (FAILED(hr))
        return hr;
    return actual.cbBuffer < request->cbBuffer || actual.cBuffers < 1 ? E_FAIL : S_OK;
}

HRESULT CZeAvDecoderFilter::SetMediaType(PIN_DIRECTION direction, const CMediaType* type)
{
    if (!type)
        return E_POINTER;
    return Guarded([&] {
        if (direction == PINDIR_INPUT)
            return ReadInputType(*type, m_row, &m_input) ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
        int width = 0, height = 0;
        PictureSize(m_input, &width, &height);
        return ReadOutputType(*type, width, height, &m_outputLayout) ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
    });
}

HRESULT CZeAvDecoderFilter::StartStreaming()
{
    return Guarded([&] {
        const int lowres = m_row.dv ? DvLowres(m_resolution) : 0;
        if (!m_decoder.Open(m_row.codec, m_input.header, m_input.extra.data(), m_input.extra.size(), lowres, nullptr))
            return VFW_E_TYPE_NOT_ACCEPTED;
        m_discontinuity = true;
        return S_OK;
    });
}

HRESULT CZeAvDecoderFilter::StopStreaming()
{
    m_decoder.Close();
    return S_OK;
}

HRESULT CZeAvDecoderFilter::DeliverPicture(const AVFrame& frame)
{
    IMediaSample* out = nullptr;
    HRESULT hr = m_pOutput->GetDeliveryBuffer(&out, nullptr, nullptr, 0);
    if (FAILED(hr))
        return hr;
    CInterfacePtr<IMediaSample> sample;
    sample.Attach(out);

    // Downstream may hand a buffer of a new type (a renderer's stride, say): take it on.
    AM_MEDIA_TYPE* attached = nullptr;
    if (out->GetMediaType(&attached) == S_OK && attached) {
        int width = 0, height = 0;
        PictureSize(m_input, &width, &height);
        DibLayout layout;
        const bool usable = ReadOutputType(*attached, width, height, &layout);
        if (usable) {
            const CMediaType type(*attached);
            m_pOutput->SetMediaType(&type);
        }
        DeleteMediaType(attached);
        if (!usable)
            return VFW_E_TYPE_NOT_ACCEPTED;
        m_outputLayout = layout;
    }

    BYTE* buffer = nullptr;
    out->GetPointer(&buffer);
    if (!buffer || out->GetSize() < static_cast<LONG>(m_outputLayout.ImageSize()))
        return VFW_E_BUFFER_OVERFLOW;
    // The DC picture is the left part of libavcodec's lowres-3 picture; every other size is the
    // whole decoded picture (scaled when it differs from the connected size).
    int sourceWidth = frame.width;
    if (m_row.dv && m_resolution == DVRESOLUTION_DC)
        sourceWidth = std::min(frame.width, m_outputLayout.width);
    if (!m_converter.Convert(frame, sourceWidth, frame.height, m_outputLayout, buffer))
        return E_FAIL;
    out->SetActualDataLength(static_cast<LONG>(m_outputLayout.ImageSize()));
    if (frame.pts != AV_NOPTS_VALUE) {
        REFERENCE_TIME start = frame.pts;
        REFERENCE_TIME stop = start + std::max<int64_t>(frame.pkt_duration, 1);
        out->SetTime(&start, &stop);
    } else {
        out->SetTime(nullptr, nullptr);
    }
    out->SetSyncPoint(TRUE);
    out->SetDiscontinuity(m_discontinuity ? TRUE : FALSE);
    out->SetPreroll(FALSE);
    m_discontinuity = false;
    return m_pOutput->Deliver(out);
}

HRESULT CZeAvDecoderFilter::Transform(IMediaSample*, IMediaSample*)
{
    // Receive is the decoder's path (zero or several pictures per sample); the base class's
    // one-in-one-out path never calls this.
    return E_UNEXPECTED;
}

HRESULT CZeAvDecoderFilter::ReceiveGuarded(IMediaSample* sample)
{
    AM_MEDIA_TYPE* changed = nullptr;
    if (sample->GetMediaType(&changed) == S_OK && changed) {
        // A new input format in the stream: read it and start the decoder afresh.
        InputFormat input;
        const bool usable = ReadInputType(*changed, m_row, &input);
        DeleteMediaType(changed);
        if (!usable)
            return VFW_E_INVALIDMEDIATYPE;
        m_input = std::move(input);
        const HRESULT hr = StartStreaming();
        if (FAILED(hr))
            return hr;
    }
    BYTE* data = nullptr;
    sample->GetPointer(&data);
    const LONG length = sample->GetActualDataLength();
    REFERENCE_TIME start = 0, stop = 0;
    const HRESULT timed = sample->GetTime(&start, &stop);
    const int64_t pts = SUCCEEDED(timed) ? start : AV_NOPTS_VALUE;
    const int64_t duration = timed == S_OK && stop > start ? stop - start : 0;

    HRESULT delivered = S_OK;
    m_decoder.Decode(data, length > 0 ? size_t(length) : 0, pts, duration, sample->IsSyncPoint() == S_OK,
                     [&](const AVFrame& frame) {
                         delivered = DeliverPicture(frame);
                         return delivered == S_OK;
                     });
    return delivered;
}

HRESULT CZeAvDecoderFilter::Receive(IMediaSample* sample)
{
    if (!sample)
        return E_POINTER;
    CAutoLock lock(&m_csReceive);
    if (!m_decoder.IsOpen())
        return VFW_E_WRONG_STATE;
    return Guarded([&] { return ReceiveGuarded(sample); });
}

HRESULT CZeAvDecoderFilter::EndOfStream()
{
    {
        CAutoLock lock(&m_csReceive);
        if (m_decoder.IsOpen()) {
            const HRESULT drained = Guarded([&] {
                HRESULT delivered = S_OK;
                m_decoder.Drain([&](const AVFrame& frame) {
                    delivered = DeliverPicture(frame);
                    return delivered == S_OK;
                });
                return delivered;
            });
            (void)drained;  // the end of the stream is passed on whatever became of the last pictures
        }
    }
    return CTransformFilter::EndOfStream();
}

HRESULT CZeAvDecoderFilter::BeginFlush()
{
    // Downstream flushes first, which frees a delivery blocked there; then the receive lock is free
    // and the held pictures can go.
    const HRESULT hr = CTransformFilter::BeginFlush();
    CAutoLock lock(&m_csReceive);
    m_decoder.Flush();
    m_discontinuity = true;
    return hr;
}

HRESULT CZeAvDecoderFilter::NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate)
{
    {
        CAutoLock lock(&m_csReceive);
        m_decoder.Flush();
        m_discontinuity = true;
    }
    return CTransformFilter::NewSegment(start, stop, rate);
}

HRESULT STDMETHODCALLTYPE CZeAvDecoderFilter::get_IPDisplay(int* displayPix)
{
    if (!displayPix)
        return E_POINTER;
    CAutoLock lock(&m_csFilter);
    *displayPix = m_resolution;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CZeAvDecoderFilter::put_IPDisplay(int displayPix)
{
    CAutoLock lock(&m_csFilter);
    int resolution = 0;
    if (!DvResolutionOf(displayPix, &resolution))
        return E_INVALIDARG;
    // The picture size is part of the connected output type, which cannot change mid-stream.
    if (m_State != State_Stopped)
        return VFW_E_NOT_STOPPED;
    if (resolution == m_resolution)
        return S_OK;
    const int previous = m_resolution;
    m_resolution = resolution;
    if (m_pOutput->IsConnected()) {
        const HRESULT hr = ReconnectPin(m_pOutput.get(), nullptr);
        if (FAILED(hr)) {
            m_resolution = previous;
            return hr;
        }
    }
    return S_OK;
}

HRESULT CreateDecoderFilter(const DecoderRow& row, LPUNKNOWN outer, REFIID iid, void** object)
{
    if (!object)
        return E_POINTER;
    *object = nullptr;
    if (outer && !IsEqualIID(iid, IID_IUnknown))
        return CLASS_E_NOAGGREGATION;
    return Guarded([&] {
        HRESULT hr = S_OK;
        std::unique_ptr<CZeAvDecoderFilter> made(new CZeAvDecoderFilter(row, outer, &hr));
        if (FAILED(hr))
            return hr;
        // From here the reference count owns the filter: the query takes the first reference, and
        // a failed query's release frees it.
        CZeAvDecoderFilter* filter = made.release();
        filter->NonDelegatingAddRef();
        hr = filter->NonDelegatingQueryInterface(iid, object);
        filter->NonDelegatingRelease();
        return hr;
    });
}

}  // namespace zedec

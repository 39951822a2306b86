// The source filter's output pin: the media types it offers and accepts, the buffer it asks the
// allocator for, and the one sample it holds between GetSampleBuffer and Deliver.
#include "graph/ze_video_source_output_pin.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "graph/ze_decode_state.h"
#include "graph/ze_video_source_filter.h"
#include "reader/status/ze_error_report.h"

namespace {
constexpr const char* kClass = "CZEVideoSourceOutputPin";
constexpr const char* kPinName = "ZEVideoSourceOutputPin";
// Every sample carries the same times, 0 to 40 ms, whatever frame it holds.
constexpr REFERENCE_TIME kSampleStart = 0;
constexpr REFERENCE_TIME kSampleStop = 400000;
}  // namespace

CZEVideoSourceOutputPin::CZEVideoSourceOutputPin(CZEVideoSourceFilter* filter, CCritSec* lock, HRESULT* phr)
    : CBaseOutputPin(nullptr, filter, lock, phr, kPinName), m_filter(filter)
{
    const HRESULT hr = filter->AddPin(this);
    if (FAILED(hr) && phr != nullptr) *phr = hr;
}

// A sample still held goes back to the allocator before the base class lets go of the allocator.
CZEVideoSourceOutputPin::~CZEVideoSourceOutputPin() = default;

HRESULT CZEVideoSourceOutputPin::CheckMediaType(const CMediaType* type)
{
    if (type == nullptr) return ReportError(kClass, "CheckMediaType", E_POINTER);
    CAutoLock lock(m_pLock);
    // Before SetMediaInfo there is no compression to compare with, and nothing is taken.
    if (!m_filter->Format().Empty() && ZeSourceAcceptsType(m_filter->Format().Compression(), *type)) return S_OK;
    return ReportError(kClass, "CheckMediaType", E_INVALIDARG);
}

HRESULT CZEVideoSourceOutputPin::GetMediaType(int position, CMediaType* type)
{
    if (type == nullptr) return ReportError(kClass, "GetMediaType", E_POINTER);
    CAutoLock lock(m_pLock);
    // Two positions; asking past them is how an enumeration ends, not a failure worth a report.
    if (position < 0 || position > 1) return E_INVALIDARG;
    const ZeSourceFormat& format = m_filter->Format();
    if (format.Empty()) return ReportError(kClass, "GetMediaType", E_FAIL);

    BYTE* block = type->AllocFormatBuffer(format.Size());
    if (block == nullptr) return ReportError(kClass, "GetMediaType", E_OUTOFMEMORY);
    std::memset(block, 0, format.Size());
    auto* info = reinterpret_cast<VIDEOINFOHEADER*>(block);
    const VIDEOINFOHEADER& stored = format.Info();
    const BITMAPINFOHEADER& storedHeader = stored.bmiHeader;
    const uint32_t headerBytes = std::min<uint32_t>(storedHeader.biSize, format.Size() - kZeVideoInfoPrefix);
    std::memcpy(&info->bmiHeader, &storedHeader, headerBytes);
    info->bmiHeader.biSize = storedHeader.biSize;
    info->bmiHeader.biWidth = storedHeader.biWidth;
    info->bmiHeader.biHeight = storedHeader.biHeight;
    info->bmiHeader.biPlanes = storedHeader.biPlanes;
    info->bmiHeader.biBitCount = storedHeader.biBitCount;
    info->bmiHeader.biCompression = storedHeader.biCompression;
    info->bmiHeader.biClrImportant = storedHeader.biClrImportant;
    info->bmiHeader.biSizeImage = GetBitmapSize(&info->bmiHeader);
    info->rcSource = RECT{0, 0, storedHeader.biWidth, storedHeader.biHeight};
    info->rcTarget = info->rcSource;
    info->dwBitRate = stored.dwBitRate;
    info->dwBitErrorRate = stored.dwBitErrorRate;
    info->AvgTimePerFrame = stored.AvgTimePerFrame;

    const ZeSourceOffer offer = ZeSourceOfferAt(storedHeader.biCompression, position);
    type->SetType(&offer.majortype);
    type->SetSubtype(&offer.subtype);
    type->SetFormatType(&offer.formattype);
    info->bmiHeader.biCompression = offer.compression;
    type->SetTemporalCompression(FALSE);
    type->SetSampleSize(info->bmiHeader.biSizeImage);
    return S_OK;
}

HRESULT CZEVideoSourceOutputPin::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request)
{
    if (allocator == nullptr || request == nullptr) return ReportError(kClass, "DecideBufferSize", E_POINTER);
    CAutoLock lock(m_pLock);
    // One picture of the connection type; a block too short to hold a VIDEOINFOHEADER counts as none,
    // and a size that a buffer size (a LONG) cannot carry as nothing to ask for.
    if (m_mt.pbFormat == nullptr || m_mt.cbFormat < sizeof(VIDEOINFOHEADER))
        return ReportError(kClass, "DecideBufferSize", E_FAIL);
    const DWORD pictureBytes = reinterpret_cast<const VIDEOINFOHEADER*>(m_mt.pbFormat)->bmiHeader.biSizeImage;
    if (pictureBytes == 0 || pictureBytes > static_cast<DWORD>(std::numeric_limits<LONG>::max()))
        return ReportError(kClass, "DecideBufferSize", E_FAIL);

    request->cBuffers = 1;
    request->cbBuffer = static_cast<LONG>(pictureBytes);
    request->cbAlign = 4;
    const HRESULT hr = allocator->SetProperties(request, &m_actualProps);
    if (FAILED(hr)) return ReportError(kClass, "DecideBufferSize", hr);
    if (m_actualProps.cbBuffer < request->cbBuffer) return ReportError(kClass, "DecideBufferSize", E_FAIL);
    return S_OK;
}

HRESULT CZEVideoSourceOutputPin::GetSampleBuffer(BYTE** data)
{
    if (data == nullptr) return ReportError(kClass, "GetSampleBuffer", E_POINTER);
    CAutoLock lock(m_pLock);
    m_currentSample.reset();
    IMediaSample* sample = nullptr;
    HRESULT hr = GetDeliveryBuffer(&sample, nullptr, nullptr, 0);
    if (FAILED(hr)) return ReportError(kClass, "GetSampleBuffer", hr);
    if (sample == nullptr) return ReportError(kClass, "GetSampleBuffer", E_FAIL);
    m_currentSample.reset(sample);
    hr = sample->GetPointer(data);
    if (FAILED(hr)) return ReportError(kClass, "GetSampleBuffer", hr);
    return S_OK;
}

HRESULT CZEVideoSourceOutputPin::SetDiscontinuity(BOOL discontinuity)
{
    CAutoLock lock(m_pLock);
    if (!m_currentSample) return ReportError(kClass, "SetDiscontinuity", E_POINTER);
    const HRESULT hr = m_currentSample->SetDiscontinuity(discontinuity);
    if (FAILED(hr)) return ReportError(kClass, "SetDiscontinuity", hr);
    return hr;
}

HRESULT CZEVideoSourceOutputPin::SetSyncPoint(BOOL syncPoint)
{
    CAutoLock lock(m_pLock);
    if (!m_currentSample) return ReportError(kClass, "SetSyncPoint", E_POINTER);
    const HRESULT hr = m_currentSample->SetSyncPoint(syncPoint);
    if (FAILED(hr)) return ReportError(kClass, "SetSyncPoint", hr);
    return hr;
}

HRESULT CZEVideoSourceOutputPin::Deliver()
{
    CAutoLock lock(m_pLock);
    if (!m_currentSample) return ReportError(kClass, "Deliver", E_POINTER);
    // The sample is let go of on every path from here on.
    const ZeComRef<IMediaSample> sample = std::move(m_currentSample);
    if (ZeDataLengthFlag()) {
        // A frame larger than the buffer is refused rather than sent on with a stale length.
        const HRESULT hr = sample->SetActualDataLength(static_cast<LONG>(ZeCurrentFrameSize()));
        if (FAILED(hr)) return ReportError(kClass, "Deliver", hr);
    }
    REFERENCE_TIME start = kSampleStart;
    REFERENCE_TIME stop = kSampleStop;
    sample->SetTime(&start, &stop);
    const HRESULT hr = CBaseOutputPin::Deliver(sample.get());
    if (hr != S_OK) return ReportError(kClass, "Deliver", hr);
    return hr;
}

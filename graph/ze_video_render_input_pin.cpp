// The render filter's input pin and the two media types it proposes.
#include "graph/ze_video_render_input_pin.h"

#include <cstring>

#include "graph/ze_video_render_filter.h"
#include "reader/status/ze_error_report.h"

namespace {
constexpr const char* kClass = "CZEVideoRenderInputPin";
constexpr const char* kPinName = "ZEVideoRenderInputPin";

// Fills the parts both VIDEOINFOHEADER and VIDEOINFOHEADER2 share: rectangles and bitmap header.
template <class Info>
void FillVideoInfo(Info* info, const BITMAPINFOHEADER& header, LONG width, LONG height)
{
    std::memset(info, 0, sizeof(Info));
    info->rcSource = RECT{0, 0, width, height};
    info->rcTarget = info->rcSource;
    info->bmiHeader = header;
}
}  // namespace

CZEVideoRenderInputPin::CZEVideoRenderInputPin(CZEVideoRenderFilter* filter, HRESULT* phr)
    : CRendererInputPin(filter, phr, kPinName), m_filter(filter)
{
}

HRESULT CZEVideoRenderInputPin::GetMediaType(int position, CMediaType* type)
{
    if (type == nullptr) return ReportError(kClass, "GetMediaType", E_POINTER);
    if (position < 0) return S_FALSE;
    if (position > 1) return ReportError(kClass, "GetMediaType", E_INVALIDARG);

    BITMAPINFOHEADER header;
    LONG width = 0;
    LONG height = 0;
    GUID subtype;
    // Before InitTargetBuffer there is no picture format to propose.
    if (!m_filter->TargetFormat(&header, &width, &height, &subtype)) return ReportError(kClass, "GetMediaType", E_FAIL);

    if (position == 0) {
        BYTE* block = type->AllocFormatBuffer(sizeof(VIDEOINFOHEADER));
        if (block == nullptr) return ReportError(kClass, "GetMediaType", E_OUTOFMEMORY);
        FillVideoInfo(reinterpret_cast<VIDEOINFOHEADER*>(block), header, width, height);
        type->SetFormatType(&FORMAT_VideoInfo);
    } else {
        BYTE* block = type->AllocFormatBuffer(sizeof(VIDEOINFOHEADER2));
        if (block == nullptr) return ReportError(kClass, "GetMediaType", E_OUTOFMEMORY);
        FillVideoInfo(reinterpret_cast<VIDEOINFOHEADER2*>(block), header, width, height);
        type->SetFormatType(&FORMAT_VideoInfo2);
    }
    type->SetType(&MEDIATYPE_Video);
    type->SetSubtype(&subtype);
    type->SetTemporalCompression(FALSE);
    type->SetSampleSize(header.biSizeImage);
    return S_OK;
}

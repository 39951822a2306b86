// The render filter's input pin. It proposes the filter's target picture format to the decoder, as
// a VIDEOINFOHEADER first and a VIDEOINFOHEADER2 second; everything else is the base renderer pin's.
#pragma once

#include "dshow/baseclasses/renderer.h"

class CZEVideoRenderFilter;

class CZEVideoRenderInputPin : public CRendererInputPin {
public:
    CZEVideoRenderInputPin(CZEVideoRenderFilter* filter, HRESULT* phr);

    HRESULT GetMediaType(int position, CMediaType* type) override;

private:
    CZEVideoRenderFilter* const m_filter;
};

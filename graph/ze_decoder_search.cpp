#include "graph/ze_decoder_search.h"

#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

#include "dshow/baseclasses/media_type.h"
#include "graph/ze_com_ref.h"
#include "graph/ze_decoder_discovery.h"
#include "graph/ze_graph_create.h"
#include "graph/ze_graph_interfaces.h"
#include "graph/ze_ole_text.h"
#include "graph/ze_system_decoders.h"

namespace {

struct MediaTypeDelete {
    void operator()(AM_MEDIA_TYPE* type) const { DeleteMediaType(type); }
};
typedef std::unique_ptr<AM_MEDIA_TYPE, MediaTypeDelete> ScopedMediaType;

template <class T>
HRESULT CreateObject(REFCLSID clsid, REFIID iid, ZeComRef<T>* object)
{
    void* raw = nullptr;
    const HRESULT hr = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, iid, &raw);
    if (SUCCEEDED(hr)) object->reset(static_cast<T*>(raw));
    return hr;
}

// The filter's first pin of `direction`; empty when it has none.
ZeComRef<IPin> FirstPin(IBaseFilter* filter, PIN_DIRECTION direction)
{
    IEnumPins* rawPins = nullptr;
    if (FAILED(filter->EnumPins(&rawPins)) || rawPins == nullptr) return ZeComRef<IPin>();
    const ZeComRef<IEnumPins> pins(rawPins);
    for (;;) {
        IPin* raw = nullptr;
        if (pins->Next(1, &raw, nullptr) != S_OK || raw == nullptr) return ZeComRef<IPin>();
        ZeComRef<IPin> pin(raw);
        PIN_DIRECTION found = PINDIR_INPUT;
        if (SUCCEEDED(pin->QueryDirection(&found)) && found == direction) return pin;
    }
}

// Every media type the pin offers, in its order.
std::vector<ScopedMediaType> OfferedTypes(IPin* pin)
{
    std::vector<ScopedMediaType> types;
    IEnumMediaTypes* rawTypes = nullptr;
    if (FAILED(pin->EnumMediaTypes(&rawTypes)) || rawTypes == nullptr) return types;
    const ZeComRef<IEnumMediaTypes> offered(rawTypes);
    for (;;) {
        AM_MEDIA_TYPE* raw = nullptr;
        if (offered->Next(1, &raw, nullptr) != S_OK || raw == nullptr) return types;
        ScopedMediaType type(raw);
        types.push_back(std::move(type));
    }
}

// A picture the render filter can hold: video in a VIDEOINFOHEADER, YUY2, RGB24 or RGB32.
const VIDEOINFOHEADER* RenderablePicture(const AM_MEDIA_TYPE& type)
{
    if (!IsEqualGUID(type.majortype, MEDIATYPE_Video) || !IsEqualGUID(type.formattype, FORMAT_VideoInfo) ||
        type.pbFormat == nullptr || type.cbFormat < sizeof(VIDEOINFOHEADER))
        return nullptr;
    if (!IsEqualGUID(type.subtype, MEDIASUBTYPE_YUY2) && !IsEqualGUID(type.subtype, MEDIASUBTYPE_RGB24) &&
        !IsEqualGUID(type.subtype, MEDIASUBTYPE_RGB32))
        return nullptr;
    return reinterpret_cast<const VIDEOINFOHEADER*>(type.pbFormat);
}

// The temporary graph with the module's two filters in it.
struct SearchGraph {
    ZeComRef<IGraphBuilder> graph;
    ZeComRef<IBaseFilter> source;
    ZeComRef<IPin> sourceOut;
    ZeComRef<IZEBaseFilterEx> render;
    ZeComRef<IBaseFilter> renderFilter;  // the identity its pin names as its filter
    ZeComRef<IZEVideoRenderFilter> renderTarget;
    IPin* renderIn = nullptr;  // owned by the render filter
};

HRESULT BuildSearchGraph(const BITMAPINFOHEADER* format, const ze_video_stream_desc* desc, SearchGraph* search)
{
    HRESULT hr = CreateObject(CLSID_FilterGraph, IID_IGraphBuilder, &search->graph);
    if (FAILED(hr)) return hr;

    void* raw = nullptr;
    hr = CreateZEVideoSourceFilter(nullptr, IID_IZEVideoSourceFilter, &raw);
    if (FAILED(hr)) return hr;
    const ZeComRef<IZEVideoSourceFilter> source(static_cast<IZEVideoSourceFilter*>(raw));
    hr = source->SetStreamInfo(format, desc);
    if (FAILED(hr)) return hr;
    hr = source->QueryInterface(IID_IBaseFilter, &raw);
    if (FAILED(hr)) return hr;
    search->source.reset(static_cast<IBaseFilter*>(raw));
    hr = search->graph->AddFilter(search->source.get(), ZeOle("ORVEN AVI Video Source Filter").c_str());
    if (FAILED(hr)) return hr;
    search->sourceOut = FirstPin(search->source.get(), PINDIR_OUTPUT);
    if (!search->sourceOut) return E_FAIL;

    hr = CreateZEVideoRenderFilter(nullptr, IID_IZEBaseFilterEx, &raw);
    if (FAILED(hr)) return hr;
    search->render.reset(static_cast<IZEBaseFilterEx*>(raw));
    hr = search->render->QueryInterface(IID_IZEVideoRenderFilter, &raw);
    if (FAILED(hr)) return hr;
    search->renderTarget.reset(static_cast<IZEVideoRenderFilter*>(raw));
    hr = search->render->QueryInterface(IID_IBaseFilter, &raw);
    if (FAILED(hr)) return hr;
    search->renderFilter.reset(static_cast<IBaseFilter*>(raw));
    hr = search->graph->AddFilter(search->renderFilter.get(), ZeOle("ORVEN AVI Video Render Filter").c_str());
    if (FAILED(hr)) return hr;
    hr = search->render->GetPin(&search->renderIn);
    if (FAILED(hr)) return hr;
    return search->renderIn != nullptr ? S_OK : E_FAIL;
}

// Connects the decoder's output to the render filter in the first offered picture format that the
// render filter, set up for that format, accepts.
bool ConnectToRender(const SearchGraph& search, IPin* decoderOut)
{
    for (const ScopedMediaType& type : OfferedTypes(decoderOut)) {
        const VIDEOINFOHEADER* picture = RenderablePicture(*type);
        if (picture == nullptr) continue;
        const BITMAPINFOHEADER& header = picture->bmiHeader;
        if (FAILED(search.renderTarget->InitTargetBuffer(&header, header.biWidth, std::abs(header.biHeight))))
            continue;
        if (SUCCEEDED(search.graph->ConnectDirect(decoderOut, search.renderIn, type.get()))) return true;
    }
    return false;
}

// Puts the candidate between the two filters and takes it out again; true when both connections held.
bool Qualifies(const SearchGraph& search, const CZeFilter& candidate)
{
    ZeComRef<IBaseFilter> decoder;
    if (FAILED(CreateObject(candidate.ClassId(), IID_IBaseFilter, &decoder))) return false;
    const CZeFilter::Name name = candidate.FriendlyName();
    if (FAILED(search.graph->AddFilter(decoder.get(), name.c_str()))) return false;

    bool connected = false;
    const ZeComRef<IPin> decoderIn = FirstPin(decoder.get(), PINDIR_INPUT);
    const ZeComRef<IPin> decoderOut = FirstPin(decoder.get(), PINDIR_OUTPUT);
    if (decoderIn && decoderOut && SUCCEEDED(search.graph->ConnectDirect(search.sourceOut.get(), decoderIn.get(), nullptr)))
        connected = ConnectToRender(search, decoderOut.get());
    // Removing the decoder breaks both of its connections.
    search.graph->RemoveFilter(decoder.get());
    return connected;
}

HRESULT Search(const BITMAPINFOHEADER* format, const ze_video_stream_desc* desc, CZeFilterList* decoders)
{
    ZeEnsureSystemDecoders();
    // The device enumerator is what gives the mapper's categories their monikers; it is held while
    // the mapper is asked.
    ZeComRef<ICreateDevEnum> devices;
    HRESULT hr = CreateObject(CLSID_SystemDeviceEnum, IID_ICreateDevEnum, &devices);
    if (FAILED(hr)) return hr;

    SearchGraph search;
    hr = BuildSearchGraph(format, desc, &search);
    if (FAILED(hr)) return hr;

    // The source offers the stream's media types; they are what a decoder's input must take.
    std::vector<AM_MEDIA_TYPE> streamTypes;
    const std::vector<ScopedMediaType> offered = OfferedTypes(search.sourceOut.get());
    for (const ScopedMediaType& type : offered) streamTypes.push_back(*type);  // flat: shares the format blocks

    CZeFilterList candidates;
    hr = EnumerateDecoders(streamTypes, &candidates, MERIT_NORMAL, FALSE, TRUE);
    if (FAILED(hr)) return hr;
    for (const CZeFilter& candidate : candidates)
        if (Qualifies(search, candidate)) decoders->push_back(candidate);
    return S_OK;
}

}  // namespace

HRESULT FindDecoders(const BITMAPINFOHEADER* format, const ze_video_stream_desc* desc, CZeFilterList* decoders)
{
    if (format == nullptr || desc == nullptr || decoders == nullptr) return E_POINTER;
    try {
        return Search(format, desc, decoders);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

// The decoders in the runtime's filter graph: the mapper finds the decoder of each FOURCC, and
// intelligent connect and ConnectDirect put it between a test source and a test renderer.
#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

extern "C" {
#include <libavcodec/codec_id.h>
}

#include "dshow/decoders/ze_decoder_table.h"
#include "tests/dshow/decoders/decoder_chain.h"

namespace {

using dectest::Clip;

// The class identifier a moniker's property bag names.
CLSID MonikerClsid(IMoniker* moniker)
{
    CLSID clsid = GUID_NULL;
    IPropertyBag* bag = nullptr;
    if (FAILED(moniker->BindToStorage(nullptr, nullptr, IID_IPropertyBag, reinterpret_cast<void**>(&bag))))
        return clsid;
    VARIANT value;
    VariantInit(&value);
    const OLECHAR name[] = {'C', 'L', 'S', 'I', 'D', 0};
    if (SUCCEEDED(bag->Read(name, &value, nullptr)) && value.vt == VT_BSTR)
        CLSIDFromString(value.bstrVal, &clsid);
    VariantClear(&value);
    bag->Release();
    return clsid;
}

// Class identifiers of the filters the mapper offers for a video subtype, best merit first.
std::vector<CLSID> MatchingFilters(IFilterMapper2* mapper, DWORD fourcc)
{
    const GUID types[2] = {MEDIATYPE_Video, ZeFourccSubtype(fourcc)};
    IEnumMoniker* found = nullptr;
    std::vector<CLSID> clsids;
    if (mapper->EnumMatchingFilters(&found, 0, FALSE, MERIT_UNLIKELY, TRUE, 1, types, nullptr, nullptr, FALSE, TRUE,
                                    0, nullptr, nullptr, nullptr) != S_OK)
        return clsids;
    for (IMoniker* moniker = nullptr; found->Next(1, &moniker, nullptr) == S_OK; moniker->Release())
        clsids.push_back(MonikerClsid(moniker));
    found->Release();
    return clsids;
}

DWORD Tag(const char* text) { return ZeFourcc(text[0], text[1], text[2], text[3]); }

TEST(DecoderGraph, MapperFindsTheDecoderOfEveryFourcc)
{
    dectest::InstallDecodersWithMapper();
    IFilterMapper2* mapper = nullptr;
    ASSERT_EQ(CoCreateInstance(CLSID_FilterMapper2, nullptr, CLSCTX_INPROC_SERVER, IID_IFilterMapper2,
                               reinterpret_cast<void**>(&mapper)),
              S_OK);
    // The decoders Windows has come first for their FOURCCs (the two MPEG-4 part 2 decoders share
    // a merit, so either may lead); a generic decoder is found for what they do not take.
    const CLSID divx = ZeFourccSubtype(Tag("divx")), xvid = ZeFourccSubtype(Tag("xvid"));
    const struct {
        const char* fourcc;
        CLSID first, orFirst;
    } named[] = {{"dvsd", CLSID_DVVideoCodec, CLSID_DVVideoCodec},
                 {"MJPG", CLSID_MjpegDec, CLSID_MjpegDec},
                 {"DIVX", divx, xvid},
                 {"xvid", divx, xvid},
                 {"FMP4", divx, xvid},
                 {"H264", zedec::GenericDecoderClsid(AV_CODEC_ID_H264), GUID_NULL},
                 {"cvid", zedec::GenericDecoderClsid(AV_CODEC_ID_CINEPAK), GUID_NULL},
                 {"CRAM", zedec::GenericDecoderClsid(AV_CODEC_ID_MSVIDEO1), GUID_NULL},
                 {"HFYU", zedec::GenericDecoderClsid(AV_CODEC_ID_HUFFYUV), GUID_NULL},
                 {"dv25", zedec::GenericDecoderClsid(AV_CODEC_ID_DVVIDEO), GUID_NULL}};
    for (const auto& n : named) {
        const std::vector<CLSID> found = MatchingFilters(mapper, Tag(n.fourcc));
        ASSERT_FALSE(found.empty()) << n.fourcc;
        EXPECT_TRUE(found.front() == n.first || found.front() == n.orFirst) << n.fourcc;
    }
    EXPECT_TRUE(MatchingFilters(mapper, Tag("YUY2")).empty());
    // Every FOURCC of every decoder reaches that decoder through the mapper.
    for (const zedec::DecoderRow& row : zedec::DecoderTable())
        for (DWORD fourcc : row.fourccs) {
            const std::vector<CLSID> found = MatchingFilters(mapper, fourcc);
            EXPECT_NE(std::find(found.begin(), found.end(), row.clsid), found.end())
                << row.friendlyName << " " << std::string(reinterpret_cast<const char*>(&fourcc), 4);
        }
    mapper->Release();
}

// A graph with a test source of a clip and a renderer that takes RGB24 only.
class GraphOfClip {
public:
    GraphOfClip(const Clip& clip, DWORD fourcc)
    {
        dectest::InstallDecodersWithMapper();
        size_t largest = 0;
        for (const auto& p : clip.packets)
            largest = std::max(largest, p.bytes.size());
        created = CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder,
                                   reinterpret_cast<void**>(&graph));
        source = new zetest::TestSourceFilter({dectest::ClipInputType(clip, fourcc)}, LONG(largest), 1);
        source->AddRef();
        renderer = new zetest::CollectingRenderer(
            [](const CMediaType* type) { return *type->Subtype() == MEDIASUBTYPE_RGB24 ? S_OK : S_FALSE; });
        renderer->AddRef();
        if (SUCCEEDED(created)) {
            const OLECHAR sourceName[] = {'s', 0}, rendererName[] = {'r', 0};
            graph->AddFilter(source, sourceName);
            graph->AddFilter(renderer, rendererName);
        }
    }
    ~GraphOfClip()
    {
        if (graph) {
            IMediaControl* control = nullptr;
            if (SUCCEEDED(graph->QueryInterface(IID_IMediaControl, reinterpret_cast<void**>(&control)))) {
                control->Stop();
                control->Release();
            }
            graph->Release();
        }
        source->Release();
        renderer->Release();
    }
    // The class identifiers of the filters in the graph.
    std::vector<CLSID> Filters()
    {
        std::vector<CLSID> clsids;
        IEnumFilters* filters = nullptr;
        if (FAILED(graph->EnumFilters(&filters)))
            return clsids;
        for (IBaseFilter* filter = nullptr; filters->Next(1, &filter, nullptr) == S_OK; filter->Release()) {
            CLSID clsid = GUID_NULL;
            filter->GetClassID(&clsid);
            clsids.push_back(clsid);
        }
        filters->Release();
        return clsids;
    }
    // Runs the graph without a clock and pushes the first packets of the clip.
    HRESULT RunAndPush(const Clip& clip, size_t packets)
    {
        IMediaFilter* filter = nullptr;
        HRESULT hr = graph->QueryInterface(IID_IMediaFilter, reinterpret_cast<void**>(&filter));
        if (FAILED(hr))
            return hr;
        filter->SetSyncSource(nullptr);
        hr = filter->Run(0);
        filter->Release();
        for (size_t i = 0; SUCCEEDED(hr) && i < packets; ++i)
            hr = source->Push(zetest::PushedSample::Timed(clip.packets[i].bytes, clip.packets[i].start,
                                                          clip.packets[i].stop, clip.packets[i].key));
        return hr;
    }

    HRESULT created = E_FAIL;
    IGraphBuilder* graph = nullptr;
    zetest::TestSourceFilter* source = nullptr;
    zetest::CollectingRenderer* renderer = nullptr;
};

const Clip& Load(const char* name)
{
    std::string whyNot;
    const Clip* clip = dectest::LoadClip(name, &whyNot);
    if (!clip)
        throw std::runtime_error(whyNot);
    return *clip;
}

TEST(DecoderGraph, IntelligentConnectPutsEachDecoderInPlace)
{
    const struct {
        const char* clip;
        const char* fourcc;
        CLSID decoder, orDecoder;  // the MPEG-4 part 2 decoders tie on merit
        int width, height;
    } rows[] = {
        {"dv_pal", "dvsd", CLSID_DVVideoCodec, CLSID_DVVideoCodec, 720, 576},
        {"mjpeg_s16_stereo", "MJPG", CLSID_MjpegDec, CLSID_MjpegDec, 320, 240},
        {"xvid_mp2", "XVID", ZeFourccSubtype(Tag("divx")), ZeFourccSubtype(Tag("xvid")), 320, 240},
        {"h264_no_bframes", "H264", zedec::GenericDecoderClsid(AV_CODEC_ID_H264), GUID_NULL, 320, 240},
        {"cinepak_video_only", "cvid", zedec::GenericDecoderClsid(AV_CODEC_ID_CINEPAK), GUID_NULL, 160, 120}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.clip);
        const Clip& clip = Load(row.clip);
        GraphOfClip g(clip, Tag(row.fourcc));
        ASSERT_EQ(g.created, S_OK);
        CInterfacePtr<IPin> out = zetest::FindPin(g.source, PINDIR_OUTPUT);
        CInterfacePtr<IPin> in = zetest::FindPin(g.renderer, PINDIR_INPUT);
        EXPECT_EQ(g.graph->Connect(out.Get(), in.Get()), S_OK);
        const std::vector<CLSID> filters = g.Filters();
        EXPECT_TRUE(std::find(filters.begin(), filters.end(), row.decoder) != filters.end() ||
                    std::find(filters.begin(), filters.end(), row.orDecoder) != filters.end());
        EXPECT_EQ(filters.size(), 3u);
        ASSERT_EQ(g.RunAndPush(clip, 2), S_OK);
        const std::vector<zetest::RenderedSample> samples = g.renderer->Samples();
        ASSERT_EQ(samples.size(), 2u);
        EXPECT_EQ(samples[0].bytes.size(), size_t(row.width) * 3 * row.height);
    }
}

TEST(DecoderGraph, ConnectDirectAndAResolutionChangeReconnectsTheOutput)
{
    const Clip& clip = Load("dv_ntsc");
    GraphOfClip g(clip, Tag("dvsd"));
    ASSERT_EQ(g.created, S_OK);
    IBaseFilter* decoder = nullptr;
    ASSERT_EQ(CoCreateInstance(CLSID_DVVideoCodec, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter,
                               reinterpret_cast<void**>(&decoder)),
              S_OK);
    const OLECHAR name[] = {'d', 0};
    ASSERT_EQ(g.graph->AddFilter(decoder, name), S_OK);
    CInterfacePtr<IPin> sourceOut = zetest::FindPin(g.source, PINDIR_OUTPUT);
    CInterfacePtr<IPin> decoderIn = zetest::FindPin(decoder, PINDIR_INPUT);
    CInterfacePtr<IPin> decoderOut = zetest::FindPin(decoder, PINDIR_OUTPUT);
    CInterfacePtr<IPin> rendererIn = zetest::FindPin(g.renderer, PINDIR_INPUT);
    EXPECT_EQ(g.graph->ConnectDirect(sourceOut.Get(), decoderIn.Get(), nullptr), S_OK);
    EXPECT_EQ(g.graph->ConnectDirect(decoderOut.Get(), rendererIn.Get(), nullptr), S_OK);
    const CMediaType before = g.renderer->ConnectedType();
    const auto* vih = reinterpret_cast<const VIDEOINFOHEADER*>(before.Format());
    EXPECT_EQ(vih->bmiHeader.biWidth, 720);
    EXPECT_EQ(vih->bmiHeader.biHeight, 480);

    // Stopped and connected: the new size reaches the renderer through a reconnection.
    IIPDVDec* dv = nullptr;
    ASSERT_EQ(decoder->QueryInterface(IID_IIPDVDec, reinterpret_cast<void**>(&dv)), S_OK);
    EXPECT_EQ(dv->put_IPDisplay(DVRESOLUTION_DC), S_OK);
    const CMediaType after = g.renderer->ConnectedType();
    ASSERT_NE(after.Format(), nullptr);
    const auto* dc = reinterpret_cast<const VIDEOINFOHEADER*>(after.Format());
    EXPECT_EQ(dc->bmiHeader.biWidth, 88);
    EXPECT_EQ(dc->bmiHeader.biHeight, 60);
    ASSERT_EQ(g.RunAndPush(clip, 1), S_OK);
    const std::vector<zetest::RenderedSample> samples = g.renderer->Samples();
    ASSERT_EQ(samples.size(), 1u);
    EXPECT_EQ(samples[0].bytes.size(), 88u * 3 * 60);
    dv->Release();
    decoder->Release();
}

}  // namespace

// DV PAL to RGB24 pictures per second: through a graph of a test source, the DV Video Decoder and a
// test sink, against libavcodec and libswscale called directly on the same frames with the same
// scaler flags. Beside them, the graph's own cost per sample with a pass-through transform in
// place of the decoder.
#include <benchmark/benchmark.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "dshow/baseclasses/streams.h"
#include "dshow/decoders/ze_av_handles.h"
#include "dshow/decoders/ze_dib_converter.h"
#include "dshow/decoders/ze_dshow_decoders.h"
#include "dshow/runtime/ze_dshow_runtime.h"
#include "tests/dshow/support/test_source_filter.h"

namespace {

constexpr int kWidth = 720;
constexpr int kHeight = 576;
constexpr size_t kFrameBytes = 144000;

// 100 PAL DV frames made once by ffmpeg as a raw DV stream (no audio), so each frame is one
// 144000-byte slice of the file.
const std::vector<std::vector<uint8_t>>& DvFrames()
{
    static const std::vector<std::vector<uint8_t>> frames = [] {
        const std::string dir = ZE_BENCH_DATA_DIR;
        const std::string path = dir + "/dshow_dv_pal_100.dv";
        std::ifstream probe(path, std::ios::binary);
        if (!probe) {
            const std::string cmd = "mkdir -p '" + dir +
                                    "' && ffmpeg -nostdin -hide_banner -loglevel error -y -f lavfi -i "
                                    "testsrc=size=720x576:rate=25:duration=4 -c:v dvvideo -pix_fmt yuv420p -f dv '" +
                                    path + ".part' && mv '" + path + ".part' '" + path + "'";
            if (std::system(cmd.c_str()) != 0)
                return std::vector<std::vector<uint8_t>>{};
        }
        std::ifstream in(path, std::ios::binary);
        const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        std::vector<std::vector<uint8_t>> out;
        for (size_t at = 0; at + kFrameBytes <= bytes.size(); at += kFrameBytes)
            out.emplace_back(bytes.begin() + at, bytes.begin() + at + kFrameBytes);
        return out;
    }();
    return frames;
}

// libavcodec and libswscale by hand: each frame is sent, received and converted into a
// bottom-up RGB24 DIB buffer with the decoder filter's scaler flags.
void DirectLibav(benchmark::State& state)
{
    const auto& frames = DvFrames();
    if (frames.empty()) {
        state.SkipWithError("ffmpeg could not make the DV frames");
        return;
    }
    const AVCodec* codec = avcodec_find_decoder(AV_CODEC_ID_DVVIDEO);
    zedec::CodecContextPtr context(avcodec_alloc_context3(codec));
    context->thread_count = 1;
    avcodec_open2(context.get(), codec, nullptr);
    zedec::PacketPtr packet(av_packet_alloc());
    zedec::FramePtr frame(av_frame_alloc());
    zedec::SwsContextPtr sws;
    const size_t stride = (kWidth * 3 + 3) & ~size_t(3);
    std::vector<uint8_t> dib(stride * kHeight);
    int64_t pictures = 0;
    for (auto _ : state) {
        for (const auto& bytes : frames) {
            av_new_packet(packet.get(), static_cast<int>(bytes.size()));
            std::memcpy(packet->data, bytes.data(), bytes.size());
            avcodec_send_packet(context.get(), packet.get());
            av_packet_unref(packet.get());
            while (avcodec_receive_frame(context.get(), frame.get()) == 0) {
                sws.reset(sws_getCachedContext(sws.release(), frame->width, frame->height, AVPixelFormat(frame->format), kWidth,
                                           kHeight, AV_PIX_FMT_BGR24, zedec::kScalerFlags, nullptr, nullptr, nullptr));
                uint8_t* planes[4] = {dib.data() + stride * (kHeight - 1)};
                int strides[4] = {-static_cast<int>(stride)};
                sws_scale(sws.get(), frame->data, frame->linesize, 0, frame->height, planes, strides);
                av_frame_unref(frame.get());
                ++pictures;
            }
        }
        benchmark::ClobberMemory();
    }
    state.counters["pictures_per_s"] = benchmark::Counter(double(pictures), benchmark::Counter::kIsRate);
}

// The first pin of a filter in a direction (a new reference), or null.
IPin* FirstPin(IBaseFilter* filter, PIN_DIRECTION direction)
{
    CInterfacePtr<IEnumPins> pins;
    if (FAILED(filter->EnumPins(pins.Out())))
        return nullptr;
    for (IPin* pin = nullptr; pins->Next(1, &pin, nullptr) == S_OK; pin->Release()) {
        PIN_DIRECTION d;
        if (SUCCEEDED(pin->QueryDirection(&d)) && d == direction)
            return pin;
    }
    return nullptr;
}

// A renderer that keeps nothing: the picture is left where the decoder wrote it, as the direct
// path leaves it in its DIB buffer.
class NullRenderer : public CBaseRenderer {
public:
    explicit NullRenderer(const GUID& subtype) : CBaseRenderer(GUID_NULL, "NullRenderer", nullptr, nullptr), m_subtype(subtype)
    {
    }
    HRESULT CheckMediaType(const CMediaType* type) override
    {
        return IsEqualGUID(m_subtype, GUID_NULL) || IsEqualGUID(*type->Subtype(), m_subtype) ? S_OK : S_FALSE;
    }
    HRESULT DoRenderSample(IMediaSample*) override
    {
        ++rendered;
        return S_OK;
    }
    int64_t rendered = 0;

private:
    GUID m_subtype;
};

// Hands each input sample on unchanged: what is left of a sample's trip through a graph once no
// filter does any work.
class PassThrough : public CTransformFilter {
public:
    PassThrough() : CTransformFilter("PassThrough", nullptr, GUID_NULL) {}
    HRESULT CheckInputType(const CMediaType*) override { return S_OK; }
    HRESULT CheckTransform(const CMediaType* in, const CMediaType* out) override { return *in == *out ? S_OK : S_FALSE; }
    HRESULT GetMediaType(int position, CMediaType* type) override
    {
        if (position < 0)
            return E_INVALIDARG;
        if (position > 0)
            return VFW_S_NO_MORE_ITEMS;
        return type->Set(m_pInput->CurrentMediaType());
    }
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override
    {
        request->cBuffers = std::max<LONG>(request->cBuffers, 1);
        request->cbBuffer = std::max<LONG>(request->cbBuffer, 1);
        ALLOCATOR_PROPERTIES actual{};
        return allocator->SetProperties(request, &actual);
    }
    HRESULT Transform(IMediaSample*, IMediaSample*) override { return E_UNEXPECTED; }  // Receive passes samples on
    HRESULT Receive(IMediaSample* sample) override { return m_pOutput->Deliver(sample); }
};

// A graph of the runtime's filter graph manager: a test source, one filter in the middle and a
// null renderer, connected pin to pin, running with no clock so samples render on the pushing thread.
class BenchGraph {
public:
    BenchGraph(const CMediaType& input, LONG largestSample, IBaseFilter* middle, const GUID& outputSubtype)
    {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        ZeDShowRuntimeInstall();
        ZeDShowDecodersRegisterClasses();
        m_source.Attach(new zetest::TestSourceFilter({input}, largestSample, 1));
        m_source->AddRef();
        m_renderer.Attach(new NullRenderer(outputSubtype));
        m_renderer->AddRef();
        if (FAILED(CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder,
                                    m_graph.OutVoid())))
            return;
        const OLECHAR s[] = {'s', 0}, m[] = {'m', 0}, r[] = {'r', 0};
        m_graph->AddFilter(m_source.Get(), s);
        m_graph->AddFilter(middle, m);
        m_graph->AddFilter(m_renderer.Get(), r);
        CInterfacePtr<IPin> sourceOut, middleIn, middleOut, rendererIn;
        sourceOut.Attach(FirstPin(m_source.Get(), PINDIR_OUTPUT));
        middleIn.Attach(FirstPin(middle, PINDIR_INPUT));
        middleOut.Attach(FirstPin(middle, PINDIR_OUTPUT));
        rendererIn.Attach(FirstPin(m_renderer.Get(), PINDIR_INPUT));
        if (FAILED(m_graph->ConnectDirect(sourceOut.Get(), middleIn.Get(), nullptr)) ||
            FAILED(m_graph->ConnectDirect(middleOut.Get(), rendererIn.Get(), nullptr)))
            return;
        CInterfacePtr<IMediaFilter> control;
        if (FAILED(m_graph->QueryInterface(IID_IMediaFilter, control.OutVoid())))
            return;
        control->SetSyncSource(nullptr);
        m_running = SUCCEEDED(control->Run(0));
    }
    ~BenchGraph()
    {
        CInterfacePtr<IMediaControl> control;
        if (m_graph.Get() && SUCCEEDED(m_graph->QueryInterface(IID_IMediaControl, control.OutVoid())))
            control->Stop();
    }
    bool Running() const { return m_running; }
    HRESULT Push(const zetest::PushedSample& sample) { return m_source->Push(sample); }
    int64_t Rendered() const { return m_renderer->rendered; }

private:
    CInterfacePtr<IGraphBuilder> m_graph;
    CInterfacePtr<zetest::TestSourceFilter> m_source;
    CInterfacePtr<NullRenderer> m_renderer;
    bool m_running = false;
};

CMediaType DvInputType()
{
    CMediaType type(&MEDIATYPE_Video);
    type.SetSubtype(&MEDIASUBTYPE_dvsd);
    type.SetFormatType(&FORMAT_VideoInfo);
    auto* vih = reinterpret_cast<VIDEOINFOHEADER*>(type.AllocFormatBuffer(sizeof(VIDEOINFOHEADER)));
    vih->AvgTimePerFrame = 400000;
    vih->bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    vih->bmiHeader.biWidth = kWidth;
    vih->bmiHeader.biHeight = kHeight;
    vih->bmiHeader.biCompression = ZeFourcc('d', 'v', 's', 'd');
    vih->bmiHeader.biSizeImage = kFrameBytes;
    return type;
}

// The same frames through source -> DV Video Decoder -> null renderer, RGB24 out.
void DecoderGraph(benchmark::State& state)
{
    const auto& frames = DvFrames();
    if (frames.empty()) {
        state.SkipWithError("ffmpeg could not make the DV frames");
        return;
    }
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    ZeDShowDecodersRegisterClasses();
    CInterfacePtr<IBaseFilter> decoder;
    if (FAILED(CoCreateInstance(CLSID_DVVideoCodec, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter,
                                decoder.OutVoid()))) {
        state.SkipWithError("no DV Video Decoder");
        return;
    }
    BenchGraph graph(DvInputType(), LONG(kFrameBytes), decoder.Get(), MEDIASUBTYPE_RGB24);
    if (!graph.Running()) {
        state.SkipWithError("the graph did not connect and run");
        return;
    }
    std::vector<zetest::PushedSample> samples;
    for (size_t i = 0; i < frames.size(); ++i)
        samples.push_back(zetest::PushedSample::Timed(frames[i], REFERENCE_TIME(i) * 400000,
                                                      REFERENCE_TIME(i + 1) * 400000));
    for (auto _ : state)
        for (const auto& sample : samples)
            if (graph.Push(sample) != S_OK)
                state.SkipWithError("a sample was refused");
    state.counters["pictures_per_s"] = benchmark::Counter(double(graph.Rendered()), benchmark::Counter::kIsRate);
}

// Small samples through source -> pass-through -> null renderer: the graph's cost per sample.
void PassThroughGraph(benchmark::State& state)
{
    CMediaType type(&MEDIATYPE_Stream);
    CInterfacePtr<PassThrough> middle;
    middle.Attach(new PassThrough);
    middle->AddRef();
    BenchGraph graph(type, 64, middle.Get(), GUID_NULL);
    if (!graph.Running()) {
        state.SkipWithError("the graph did not connect and run");
        return;
    }
    const zetest::PushedSample sample = zetest::PushedSample::Timed(std::vector<uint8_t>(64, 1), 0, 1);
    for (auto _ : state)
        if (graph.Push(sample) != S_OK)
            state.SkipWithError("a sample was refused");
    state.counters["samples_per_s"] = benchmark::Counter(double(graph.Rendered()), benchmark::Counter::kIsRate);
}

// Prints, after the table, how the graph's pictures per second compare with the direct path's.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        // Single runs, or with repetitions the mean, which then replaces them.
        for (const Run& run : runs) {
            if (run.error_occurred)
                continue;
            const std::string name = run.run_name.str();
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "mean") {
                m_cpu[name] = run.GetAdjustedCPUTime();
                m_fromMean.insert(name);
            } else if (run.run_type == Run::RT_Iteration && !m_fromMean.count(name)) {
                m_cpu[name] = run.GetAdjustedCPUTime();
            }
        }
    }
    void Finalize() override
    {
        ConsoleReporter::Finalize();
        const double direct = m_cpu["dv_pal_rgb24/libav"], graph = m_cpu["dv_pal_rgb24/graph"];
        if (direct > 0 && graph > 0)
            std::printf("\ndv_pal_rgb24: graph speed / direct libavcodec+libswscale speed = %.3f (CPU time)\n",
                        direct / graph);
    }

private:
    std::map<std::string, double> m_cpu;
    std::set<std::string> m_fromMean;
};

}  // namespace

BENCHMARK(DirectLibav)->Name("dv_pal_rgb24/libav")->Unit(benchmark::kMillisecond);
BENCHMARK(DecoderGraph)->Name("dv_pal_rgb24/graph")->Unit(benchmark::kMillisecond);
BENCHMARK(PassThroughGraph)->Name("graph_sample/pass_through")->Unit(benchmark::kNanosecond);

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}

#include "tests/dshow/decoders/decoder_chain.h"

#include <cstdlib>
#include <cstring>
#include <mutex>

#include "dshow/decoders/ze_dshow_decoders.h"
#include "tests/fixtures/ze_ffmpeg_material.h"

namespace dectest {

void MakeDecodersCreatable()
{
    static std::once_flag once;
    std::call_once(once, [] {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        ZeDShowDecodersRegisterClasses();
    });
}

void InstallDecodersWithMapper()
{
    static std::once_flag once;
    std::call_once(once, [] {
        MakeDecodersCreatable();
        // A registry store of the decoder tests alone, kept in the test folder: the decoders'
        // registration is written into it once, and later test processes find it in place.
        ::setenv("ZE_REGISTRY_FILE", (zetest::CacheDir() + "/decoder_tests_registry.reg").c_str(), 1);
        ZeDShowDecodersInstall();
    });
}

CMediaType ClipInputType(const Clip& clip, DWORD fourcc)
{
    CMediaType type(&MEDIATYPE_Video);
    const GUID subtype = ZeFourccSubtype(fourcc);
    type.SetSubtype(&subtype);
    type.SetFormatType(&FORMAT_VideoInfo);
    type.SetTemporalCompression(TRUE);
    type.SetVariableSize();
    BYTE* block = type.AllocFormatBuffer(static_cast<ULONG>(sizeof(VIDEOINFOHEADER) + clip.extra.size()));
    auto* vih = reinterpret_cast<VIDEOINFOHEADER*>(block);
    vih->AvgTimePerFrame = clip.frameDuration;
    vih->bmiHeader = clip.header;
    vih->bmiHeader.biCompression = fourcc;
    if (!clip.extra.empty())
        std::memcpy(block + sizeof(VIDEOINFOHEADER), clip.extra.data(), clip.extra.size());
    return type;
}

DecoderChain::DecoderChain(REFCLSID decoder, const CMediaType& input, LONG largestSample, const GUID& outputSubtype)
{
    MakeDecodersCreatable();
    m_source = new zetest::TestSourceFilter({input}, largestSample, 1);
    m_chain.Add(m_source, "source");
    m_created = CoCreateInstance(decoder, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter,
                                 reinterpret_cast<void**>(&m_decoder));
    if (SUCCEEDED(m_created)) {
        m_chain.Add(m_decoder, "decoder");
        m_decoder->Release();  // the chain's reference keeps it
    }
    const GUID wanted = outputSubtype;
    m_renderer = new zetest::CollectingRenderer([wanted](const CMediaType* type) {
        return IsEqualGUID(wanted, GUID_NULL) || IsEqualGUID(*type->Subtype(), wanted) ? S_OK : S_FALSE;
    });
    m_chain.Add(m_renderer, "renderer");
}

HRESULT DecoderChain::Connect(const AM_MEDIA_TYPE* outputType)
{
    if (FAILED(m_created))
        return m_created;
    const HRESULT hr = m_chain.Connect(0);
    return FAILED(hr) ? hr : m_chain.Connect(1, outputType);
}
HRESULT DecoderChain::Run() { return m_chain.Run(); }
HRESULT DecoderChain::Stop() { return m_chain.Stop(); }

HRESULT DecoderChain::Push(const ClipPacket& packet)
{
    return m_source->Push(zetest::PushedSample::Timed(packet.bytes, packet.start, packet.stop, packet.key));
}

std::vector<uint8_t> PictureRows(const zetest::RenderedSample& sample)
{
    const auto* vih = reinterpret_cast<const VIDEOINFOHEADER*>(sample.type.Format());
    const BITMAPINFOHEADER& bih = vih->bmiHeader;
    const int height = std::abs(bih.biHeight);
    const size_t stride = ((size_t(bih.biWidth) * bih.biBitCount + 31) & ~size_t(31)) / 8;
    const size_t rowBytes = size_t(bih.biWidth) * bih.biBitCount / 8;
    const bool rgb = bih.biCompression == 0;
    if (sample.bytes.size() < stride * size_t(height))
        return {};
    return TopDownRows(sample.bytes.data(), stride, rowBytes, height, rgb && bih.biHeight > 0);
}

}  // namespace dectest

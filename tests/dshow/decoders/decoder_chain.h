// One decoder between the harness's test source and collecting renderer, in a FilterChain (pins
// connected directly, no graph manager), running with no clock so every picture is rendered on the
// pushing thread. The decoder is made with CoCreateInstance from its class identifier.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "dshow/baseclasses/streams.h"
#include "tests/dshow/decoders/decoder_test_clips.h"
#include "tests/dshow/support/ze_filter_harness.h"

namespace dectest {

// COM for the program and the decoders as built-in classes, creatable by class identifier.
void MakeDecodersCreatable();
// Also registers the decoders with the mapper, in a registry store of the decoder tests.
void InstallDecodersWithMapper();

// The input type a splitter gives a clip's video: MEDIATYPE_Video, the FOURCC's subtype and a
// VIDEOINFOHEADER followed by the bytes that followed the BITMAPINFOHEADER in the file.
CMediaType ClipInputType(const Clip& clip, DWORD fourcc);

class DecoderChain {
public:
    // The renderer accepts only `outputSubtype` (any subtype when GUID_NULL).
    DecoderChain(REFCLSID decoder, const CMediaType& input, LONG largestSample, const GUID& outputSubtype);

    HRESULT Created() const { return m_created; }
    IBaseFilter* Decoder() const { return m_decoder; }
    zetest::TestSourceFilter& Source() { return *m_source; }
    zetest::CollectingRenderer& Renderer() { return *m_renderer; }

    // source -> decoder, then decoder -> renderer (with `outputType` when given).
    HRESULT Connect(const AM_MEDIA_TYPE* outputType = nullptr);
    HRESULT Run();       // every filter paused, then running
    HRESULT Stop();

    // Pushes one packet of the clip with its times and key flag.
    HRESULT Push(const ClipPacket& packet);

private:
    HRESULT m_created = E_FAIL;
    IBaseFilter* m_decoder = nullptr;  // held by the chain, as are the other two
    zetest::TestSourceFilter* m_source = nullptr;
    zetest::CollectingRenderer* m_renderer = nullptr;
    zetest::FilterChain m_chain;
};

// The renderer's pictures as ffmpeg writes raw pictures: rows top-down, tightly packed.
std::vector<uint8_t> PictureRows(const zetest::RenderedSample& sample);

}  // namespace dectest

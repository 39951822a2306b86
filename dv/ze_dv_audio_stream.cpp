#include "dv/ze_dv_audio_stream.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "dv/ze_dv_audio_frame.h"
#include "dv/ze_dv_pack_location.h"
#include "reader/status/ze_error_report.h"

namespace ZeDV {
namespace {

constexpr const char* kClassName = "CZeDVAudioStream";
constexpr uint64_t kTableGrowth = 256;  // frames added to the start table at a time when seeking

}  // namespace

void CZeDVAudioStream::Reset(FrameAccess access, const PcmFormat& format, std::vector<uint8_t>* frameBuffer) {
    Clear();
    m_access = std::move(access);
    m_format = format;
    m_frameBuffer = frameBuffer != nullptr ? frameBuffer : &m_ownFrameBuffer;
}

void CZeDVAudioStream::Clear() {
    m_access = FrameAccess{};
    m_format = PcmFormat{};
    m_frameStart.assign(1, 0);
    m_cursor = Cursor{};
    m_ownFrameBuffer.clear();
    m_ownFrameBuffer.shrink_to_fit();
    m_frameBuffer = &m_ownFrameBuffer;
    m_pcmFrame = UINT64_MAX;
    m_pcm.clear();
}

uint64_t CZeDVAudioStream::NominalSamples(uint64_t frame) const {
    if (m_format.frameRate == 0) return 0;
    const uint64_t perFrameNum = uint64_t{m_format.sampleRate} * m_format.frameScale;
    const uint64_t nominal = (frame + 1) * perFrameNum / m_format.frameRate - frame * perFrameNum / m_format.frameRate;
    // A clock far from any DV rate (a damaged header) must not make a frame without a source pack
    // a source of gigabytes of silence: no DV frame carries more than this.
    return std::min<uint64_t>(nominal, kMostSamplesPerFrame);
}

HRESULT CZeDVAudioStream::SamplesOfFrame(uint64_t frame, uint32_t* samples) {
    const uint64_t offset = AudioSourcePackOffset();
    uint8_t pack[CZeDVDataPack::kSize] = {};
    uint32_t got = 0;
    if (m_access.frameSize(frame) >= offset + sizeof(pack)) {
        const HRESULT hr = m_access.readFrame(frame, static_cast<uint32_t>(offset), pack, sizeof(pack), &got);
        if (FAILED(hr)) return hr;
    }
    const AudioFrameLayout layout = got == sizeof(pack) ? ParseAudioSourcePack(pack) : AudioFrameLayout{};
    // A frame without a readable source pack (a gap on the tape, a drop frame, a damaged block)
    // keeps the stream on its nominal timeline and plays silence or what its blocks still hold.
    *samples = layout.countKnown ? layout.samples : static_cast<uint32_t>(NominalSamples(frame));
    return S_OK;
}

HRESULT CZeDVAudioStream::ExtendTable(uint64_t frames) {
    frames = std::min(frames, m_access.frameCount());
    while (m_frameStart.size() - 1 < frames) {
        uint32_t samples = 0;
        const HRESULT hr = SamplesOfFrame(m_frameStart.size() - 1, &samples);
        if (FAILED(hr)) return hr;
        m_frameStart.push_back(m_frameStart.back() + samples);
    }
    return S_OK;
}

HRESULT CZeDVAudioStream::FrameStart(uint64_t frame, uint64_t* start) {
    const HRESULT hr = ExtendTable(frame + 1);
    if (FAILED(hr)) return hr;
    *start = frame < m_frameStart.size() ? m_frameStart[frame] : m_frameStart.back();
    return S_OK;
}

HRESULT CZeDVAudioStream::Locate(uint64_t sample, uint64_t* frame, uint64_t* sampleInFrame) {
    const uint64_t frames = m_access.frameCount();
    // Most frames hold about the nominal count, so reading the table up to the estimated frame
    // and a little beyond usually finds the position in one step.
    const uint64_t perFrame = std::max<uint64_t>(1, NominalSamples(0));
    HRESULT hr = ExtendTable(sample / perFrame + 2);
    while (SUCCEEDED(hr) && m_frameStart.back() <= sample && m_frameStart.size() - 1 < frames) {
        hr = ExtendTable(m_frameStart.size() - 1 + kTableGrowth);
    }
    if (FAILED(hr)) return hr;
    if (m_frameStart.back() <= sample) {  // past the last frame
        *frame = frames;
        *sampleInFrame = 0;
        return S_OK;
    }
    const auto next = std::upper_bound(m_frameStart.begin(), m_frameStart.end(), sample);
    *frame = static_cast<uint64_t>(next - m_frameStart.begin()) - 1;
    *sampleInFrame = sample - m_frameStart[*frame];
    return S_OK;
}

HRESULT CZeDVAudioStream::DecodeFrame(uint64_t frame) {
    if (m_pcmFrame == frame) return S_OK;
    m_pcmFrame = UINT64_MAX;
    // Only the part of the frame that holds audio blocks is read, so a damaged index entry that
    // claims gigabytes costs no more than a real frame.
    const uint32_t size = std::min(m_access.frameSize(frame), kAudioFrameBytes);
    const uint64_t samples = m_frameStart[frame + 1] - m_frameStart[frame];
    const uint32_t channels = m_format.channels;
    std::vector<int16_t> decoded;
    try {
        if (m_frameBuffer->size() < size) m_frameBuffer->resize(size);
        decoded.resize(samples * channels);
        m_pcm.resize(decoded.size() * 2);
    } catch (const std::bad_alloc&) {
        return ReportError(kClassName, "DecodeFrame", E_OUTOFMEMORY);
    }
    uint32_t got = 0;
    if (size != 0) {
        const HRESULT hr = m_access.readFrame(frame, 0, m_frameBuffer->data(), size, &got);
        if (FAILED(hr)) return hr;
    }
    const uint8_t* data = m_frameBuffer->data();
    const AudioFrameLayout layout = FindAudioLayout(data, got);
    ExtractAudioSamples(got != 0 ? data : nullptr, got, layout, static_cast<uint32_t>(samples), channels,
                        decoded.data());
    for (size_t i = 0; i < decoded.size(); ++i) {
        const uint16_t v = static_cast<uint16_t>(decoded[i]);
        m_pcm[2 * i] = static_cast<uint8_t>(v);
        m_pcm[2 * i + 1] = static_cast<uint8_t>(v >> 8);
    }
    m_pcmFrame = frame;
    return S_OK;
}

HRESULT CZeDVAudioStream::Read(uint64_t position, uint8_t* buffer, uint64_t count) {
    if (buffer == nullptr || count == 0) return S_OK;
    std::memset(buffer, 0, count);
    // Only 16-bit output is produced (12-bit material expands to it); other widths stay silent.
    if (m_format.bitsPerSample != 16 || m_format.channels == 0 || m_format.channels > 2 || !m_access.frameCount) {
        return S_OK;
    }
    const uint64_t streamByte = ((position * m_format.bitsPerSample) >> 3) * m_format.channels;
    uint64_t frame = 0;
    uint64_t byteInFrame = 0;
    if (m_cursor.valid && m_cursor.streamByte == streamByte) {
        frame = m_cursor.frame;
        byteInFrame = m_cursor.byteInFrame;
    } else {
        m_cursor.valid = false;
        uint64_t sampleInFrame = 0;
        const HRESULT hr = Locate(position, &frame, &sampleInFrame);
        if (FAILED(hr)) return hr;
        byteInFrame = sampleInFrame * BytesPerSampleFrame();
    }
    const uint64_t frames = m_access.frameCount();
    uint64_t done = 0;
    while (done < count && frame < frames) {
        HRESULT hr = ExtendTable(frame + 1);
        if (FAILED(hr)) return hr;
        const uint64_t frameBytes = (m_frameStart[frame + 1] - m_frameStart[frame]) * BytesPerSampleFrame();
        if (byteInFrame >= frameBytes) {
            ++frame;
            byteInFrame = 0;
            continue;
        }
        hr = DecodeFrame(frame);
        if (FAILED(hr)) {
            m_cursor.valid = false;
            return hr;
        }
        const uint64_t n = std::min(count - done, frameBytes - byteInFrame);
        std::memcpy(buffer + done, m_pcm.data() + byteInFrame, n);
        done += n;
        byteInFrame += n;
    }
    m_cursor = Cursor{true, streamByte + count, frame, byteInFrame};
    return S_OK;
}

}  // namespace ZeDV

// IZERawStream: DV frames and stored audio chunks handed to the host as they are in the file, with a
// description of the samples as DirectShow buffer properties or media types.
#include <cstring>
#include <optional>

#include "reader/ze_avi_reader_internal.h"

using ze_reader::Guarded;
using ze_reader::Report;
using ze_reader::TruncateToIndex;

namespace {
constexpr uint32_t kShortPropertiesSize = sizeof(ZeRawSampleProperties);
constexpr uint32_t kMediaTypeSize = sizeof(ZeRawMediaType);
constexpr uint32_t kWaveFormatSize = 18;
}  // namespace

HRESULT STDMETHODCALLTYPE CZEAviReader::InitRawStream(LPCSTR path, GUID* selectedSubtype, DWORD) {
    if (!path) return Report("InitRawStream", E_POINTER);
    LockGuard lock(*this);
    return Guarded("InitRawStream", [&] { return InitRawStreamLocked(path, selectedSubtype); });
}

HRESULT CZEAviReader::InitRawStreamLocked(LPCSTR path, GUID* selectedSubtype) {
    CZeReaderSource& source = Src();
    if (!source.IsParsed() && FAILED(source.OpenAndParse(path))) return GetLastReportedError();
    // Raw work runs in the packed YUV format.
    m_preferredSubtype = m_yuvSubtype;
    if (selectedSubtype) *selectedSubtype = m_yuvSubtype;
    // Only DV video is handed out raw; the file stays open for the other interfaces.
    if (!source.IsDvVideo()) return Report("InitRawStream", E_INVALIDARG);
    const HRESULT hr = PrepareRawBuffers();
    if (SUCCEEDED(hr)) m_rawStream = static_cast<int32_t>(source.VideoStream());
    return hr;
}

HRESULT CZEAviReader::PrepareRawBuffers() {
    CZeReaderSource& source = Src();
    const int32_t frameSize = source.LargestVideoFrameSize();
    if (frameSize <= 0) return Report("InitRawStream", E_FAIL);
    const std::optional<ZeXpStreamHeader> audio = source.AudioHeader();
    const uint32_t audioSize = audio ? audio->dwSuggestedBufferSize : 0;
    try {
        std::vector<uint8_t> frameBuffer(static_cast<size_t>(frameSize), 0);
        auto videoInfo = std::make_unique<ZeRawVideoInfo>();
        std::memset(videoInfo.get(), 0, sizeof(ZeRawVideoInfo));
        std::vector<uint8_t> audioBuffer;
        if (audioSize > 0) {
            // A stored chunk larger than the suggested size would not fit: the buffer takes the
            // larger of the two, while the host is told the suggested size.
            const uint32_t largest = source.LargestAudioChunkSize();
            audioBuffer.assign(largest > audioSize ? largest : audioSize, 0);
        }
        m_rawFrameBuffer.swap(frameBuffer);
        m_rawVideoInfo = std::move(videoInfo);
        m_rawAudioBuffer.swap(audioBuffer);
    } catch (const std::bad_alloc&) {
        return Report("InitRawStream", E_OUTOFMEMORY);
    }
    m_rawFrameBufferSize = frameSize;
    m_rawAudioBufferSize = audioSize;
    m_rawAudioBlock = 0;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CZEAviReader::GetRawSampleProperties(DWORD kind, const DWORD* size, void* out, void*) {
    if (!size || !out) return S_OK;
    LockGuard lock(*this);
    return Guarded("GetRawSampleProperties", [&] { return GetRawSamplePropertiesLocked(kind, *size, out); });
}

HRESULT CZEAviReader::GetRawSamplePropertiesLocked(DWORD kind, DWORD size, void* out) {
    CZeReaderSource& source = Src();
    if (!source.IsDvVideo()) return S_OK;

    if (kind == ZE_RAW_VIDEO) {
        const std::optional<ZeXpStreamHeader> header = source.VideoHeader();
        const BITMAPINFOHEADER* format = source.VideoFormat();
        if (!header || !format) return Report("GetRawSampleProperties", E_POINTER);
        if (size == kShortPropertiesSize) {
            const ZeRawSampleProperties properties{1, header->dwScale, 1, 0};
            std::memcpy(out, &properties, sizeof(properties));
            return S_OK;
        }
        // Without InitRawStream there is no format block to point at.
        if (size != kMediaTypeSize || !m_rawVideoInfo) return Report("GetRawSampleProperties", E_FAIL);
        ZeRawVideoInfo& info = *m_rawVideoInfo;
        std::memcpy(&info.bmiHeader, format, sizeof(BITMAPINFOHEADER));
        // The frame rate itself, not a duration; hosts of this module read it so.
        const uint32_t rate = header->dwRate;
        const uint32_t scale = header->dwScale;
        const double perFrame = scale != 0 ? static_cast<double>(rate) / static_cast<double>(scale)
                                           : static_cast<double>(rate) * 100000.0;
        info.AvgTimePerFrame = static_cast<int64_t>(perFrame);
        info.dwBitRate = source.MainHeader().dwMaxBytesPerSec * 8u;
        info.rcSource = RECT{0, 0, format->biWidth, 0};
        info.rcTarget = RECT{0, 0, format->biWidth, format->biHeight < 0 ? -format->biHeight : format->biHeight};
        ZeRawMediaType media{};
        media.majortype = ZeMediaGuid::Video;
        media.subtype = ZeMediaGuid::Dvsd;
        media.bFixedSizeSamples = TRUE;
        media.bTemporalCompression = FALSE;
        media.lSampleSize = static_cast<uint32_t>(m_rawFrameBufferSize);
        media.formattype = ZeMediaGuid::FormatVideoInfo;
        media.pUnk = nullptr;
        media.cbFormat = sizeof(ZeRawVideoInfo);
        media.pbFormat = reinterpret_cast<uint8_t*>(m_rawVideoInfo.get());
        std::memcpy(out, &media, sizeof(media));
        return S_OK;
    }

    if (kind == ZE_RAW_AUDIO) {
        if (!source.AudioHeader()) return Report("GetRawSampleProperties", E_FAIL);
        const WAVEFORMATEX* format = source.AudioFormat();
        if (!format) return Report("GetRawSampleProperties", E_POINTER);
        if (size == kShortPropertiesSize) {
            const ZeRawSampleProperties properties{1, m_rawAudioBufferSize, format->nBlockAlign, 0};
            std::memcpy(out, &properties, sizeof(properties));
            return S_OK;
        }
        if (size != kMediaTypeSize) return Report("GetRawSampleProperties", E_FAIL);
        ZeRawMediaType media{};
        media.majortype = ZeMediaGuid::Audio;
        media.subtype = ZeMediaGuid::Pcm;
        media.bFixedSizeSamples = TRUE;
        media.bTemporalCompression = FALSE;
        media.lSampleSize = m_rawAudioBufferSize;
        media.formattype = ZeMediaGuid::FormatWaveFormatEx;
        media.pUnk = nullptr;
        media.cbFormat = kWaveFormatSize;
        media.pbFormat = reinterpret_cast<uint8_t*>(const_cast<WAVEFORMATEX*>(format));
        std::memcpy(out, &media, sizeof(media));
        return S_OK;
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CZEAviReader::GetRawSample(DWORD kind, DWORD timeFormat, const LONGLONG* time, BYTE** out,
                                                     void*, DWORD* outSize) {
    if (!time || !out) return Report("GetRawSample", E_POINTER);
    LockGuard lock(*this);
    return Guarded("GetRawSample", [&] { return GetRawSampleLocked(kind, timeFormat, *time, out, outSize); });
}

HRESULT CZEAviReader::GetRawSampleLocked(DWORD kind, DWORD timeFormat, LONGLONG time, BYTE** out, DWORD* outSize) {
    CZeReaderSource& source = Src();
    // Raw samples need the buffers of InitRawStream.
    if (m_rawFrameBuffer.empty()) {
        *out = nullptr;
        return Report("GetRawSample", E_FAIL);
    }

    if (kind == ZE_RAW_VIDEO) {
        const std::optional<ZeXpStreamHeader> video = source.VideoHeader();
        double fps = 0.0;
        if (video && video->dwScale != 0)
            fps = static_cast<double>(video->dwRate) / static_cast<double>(video->dwScale);
        const double t = static_cast<double>(time);
        uint64_t frame = 0;
        if (timeFormat == ZE_TIME_SECONDS)
            frame = TruncateToIndex(fps * t);
        else if (timeFormat == ZE_TIME_MILLISECONDS)
            frame = TruncateToIndex(fps * t / 1000.0);
        else if (timeFormat == ZE_TIME_100KTH_SECONDS)
            frame = TruncateToIndex(fps * t / 100000.0);
        // The frame just past the last passes here and fails in the read.
        if (frame > source.VideoFrameCount()) {
            *out = nullptr;
            return Report("GetRawSample", E_INVALIDARG);
        }
        uint64_t bytesRead = 0;
        if (FAILED(source.GetFrame(m_rawFrameBuffer.data(), frame, &bytesRead))) {
            *out = nullptr;
            return GetLastReportedError();
        }
        *out = m_rawFrameBuffer.data();
        // The buffer's size, the same for every frame.
        if (outSize) *outSize = static_cast<DWORD>(m_rawFrameBufferSize);
        return S_OK;
    }

    if (kind == ZE_RAW_AUDIO) {
        const WAVEFORMATEX* format = source.AudioFormat();
        // Answered without a report: the host asked for audio of a file that has none described.
        if (!format) return E_POINTER;
        if (m_rawAudioBuffer.empty()) {
            *out = nullptr;
            return Report("GetRawSample", E_FAIL);
        }
        const uint64_t rate = format->nSamplesPerSec;
        const uint64_t t = static_cast<uint64_t>(time);
        uint64_t position = rate * t;
        if (timeFormat == ZE_TIME_MILLISECONDS) position /= 1000;
        if (timeFormat == ZE_TIME_100KTH_SECONDS) position /= 100000;
        // Looked up, though raw audio always comes in stored order.
        uint64_t inEntry = 0;
        source.GetAudioIndex(position, &inEntry);
        // Past the last stored chunk there is nothing to read; the index lookup would give no entry.
        if (m_rawAudioBlock >= source.AudioChunkCount()) {
            *out = nullptr;
            return Report("GetRawSample", E_FAIL);
        }
        const uint64_t bytes = source.GetOneAudioBlock(m_rawAudioBuffer.data(), m_rawAudioBlock);
        if (bytes == UINT64_MAX) {
            *out = nullptr;
            return Report("GetRawSample", E_FAIL);
        }
        *out = m_rawAudioBuffer.data();
        ++m_rawAudioBlock;
        if (outSize) *outSize = static_cast<DWORD>(bytes);
        return S_OK;
    }
    return S_OK;
}

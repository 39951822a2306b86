// IZEBasicAudioReader: PCM audio of the file by sample position, straight from the parser's sample
// access.
#include <optional>
#include <vector>

#include "reader/ze_avi_reader_internal.h"

using ze_reader::Guarded;
using ze_reader::Report;

namespace {
constexpr uint64_t kTrialReadBytes = 4096;
constexpr uint32_t kReaderInfoKind = 158;
constexpr uint32_t kReaderInfoVersion = 4;
constexpr uint32_t kReaderInfoSampleKind = 2;
}  // namespace

HRESULT STDMETHODCALLTYPE CZEAviReader::InitAudioReader(LPCSTR path, DWORD, DWORD, void*) {
    if (!path) return Report("InitAudioReader", E_POINTER);
    LockGuard lock(*this);
    return Guarded("InitAudioReader", [&] { return InitAudioReaderLocked(path); });
}

HRESULT CZEAviReader::InitAudioReaderLocked(LPCSTR path) {
    CZeReaderSource& source = Src();
    if (!m_keepErrorContext) {
        m_statusCode = 0;
        SetErrorContext(path);
    }
    m_audioWork[0] = 0;
    m_audioWork[1] = 0;
    // A file parsed before keeps being served, whatever path this call names.
    if (!source.IsParsed() && FAILED(source.OpenAndParse(path))) {
        CloseAudioReaderLocked();
        return GetLastReportedError();
    }
    std::vector<uint8_t> trial(kTrialReadBytes);
    const HRESULT hr = source.GetSample(0, trial.data(), kTrialReadBytes);
    if (FAILED(hr)) {
        CloseAudioReaderLocked();
        return Report("InitAudioReader", hr);
    }
    m_audioOpen = true;
    source.PrepareAudioRead();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CZEAviReader::CloseAudioReader() {
    LockGuard lock(*this);
    CloseAudioReaderLocked();
    return S_OK;
}

void CZEAviReader::CloseAudioReaderLocked() {
    m_audioOpen = false;
    m_audioWork[0] = 0;
    m_audioWork[1] = 0;
}

HRESULT STDMETHODCALLTYPE CZEAviReader::GetReaderInfo(ZeReaderInfo* info, void*) {
    if (!info) return Report("GetReaderInfo", E_POINTER);
    LockGuard lock(*this);
    return Guarded("GetReaderInfo", [&] {
        CZeReaderSource& source = Src();
        const std::optional<ZeXpStreamHeader> header = source.AudioHeader();
        const WAVEFORMATEX* format = source.AudioFormat();
        // Without audio the record stays as the host passed it.
        if (!header || !format) return S_OK;
        const uint32_t scale = header->dwScale != 0 ? header->dwScale : 1;
        info->kind = kReaderInfoKind;
        info->version = kReaderInfoVersion;
        info->streamFlags = header->dwFlags;
        info->sampleKind = kReaderInfoSampleKind;
        info->length = header->dwLength;
        info->bitRatePerChannel = static_cast<uint32_t>(format->wBitsPerSample) * (header->dwRate / scale);
        ze_reader::CopyWaveFields(*format, info);
        info->cbExtra = format->cbSize;
        return S_OK;
    });
}

HRESULT STDMETHODCALLTYPE CZEAviReader::GetAudioBuffer(DWORD positionLow, DWORD positionHigh, void* buffer,
                                                       LONG count, void*) {
    if (!buffer) return Report("GetAudioBuffer", E_POINTER);
    if (count <= 0) return Report("GetAudioBuffer", E_INVALIDARG);
    LockGuard lock(*this);
    Guarded("GetAudioBuffer", [&] {
        const uint64_t position = static_cast<uint64_t>(positionHigh) << 32 | positionLow;
        const uint64_t bytes = static_cast<uint64_t>(static_cast<int64_t>(count));
        const HRESULT hr = Src().GetSample(position, buffer, bytes);
        // A failed read reaches the host through its log only; the call itself succeeds.
        if (FAILED(hr)) Report("GetAudioBuffer", hr);
        return S_OK;
    });
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CZEAviReader::GetFormatInfo(void*) { return Report("GetFormatInfo", E_NOTIMPL); }

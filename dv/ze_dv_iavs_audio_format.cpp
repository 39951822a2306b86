#include "dv/ze_dv_iavs_audio_format.h"

namespace ZeDV {

uint32_t IavsFramesPerSecond(const IavsVideoTiming& video) {
    return video.scale == 0 ? 0 : video.rate / video.scale;
}

bool ComputeIavsAudioFormat(const IavsVideoTiming& video, const ZeDVAudioParams& audio, IavsAudioHeader* header,
                            WAVEFORMATEX* format) {
    const uint32_t fps = IavsFramesPerSecond(video);
    if (fps == 0) return false;
    const uint32_t bytes = audio.bitsPerSample / 8;
    const uint32_t mode = audio.audioModeCode;
    const uint32_t rate = audio.sampleRate;
    const int64_t signedFps = static_cast<int32_t>(fps);  // a rate of 2^31 or more per second reads negative

    const int64_t frameMillis = static_cast<int64_t>(video.length * 1000u);
    header->dwInitialFrames = video.initialFrames;
    header->dwScale = 1;
    header->dwRate = rate;
    header->dwLength = static_cast<uint64_t>(frameMillis / signedFps * rate / 1000);
    // The 32-bit quotient, taken in 64 bits so that -2^31 / -1 cannot trap; it is truncated to 32 bits.
    const int32_t bufferBytes = static_cast<int32_t>(bytes * mode * rate);
    header->dwSuggestedBufferSize = static_cast<uint32_t>(static_cast<int32_t>(int64_t{bufferBytes} / signedFps));
    header->dwSampleSize = bytes * mode;

    format->wFormatTag = WAVE_FORMAT_PCM;
    format->nChannels = (audio.firstChannel != 0 || audio.secondChannel != 0) ? 2 : 1;
    format->nSamplesPerSec = rate;
    format->nAvgBytesPerSec = bytes * rate * mode;
    format->nBlockAlign = static_cast<WORD>(static_cast<uint16_t>(mode) * bytes);
    format->wBitsPerSample = static_cast<WORD>(audio.bitsPerSample);
    format->cbSize = 0;
    return true;
}

}  // namespace ZeDV

// `audio`: all audio of a file through GetAudioBuffer into a WAV file.
#include <cstdio>
#include <vector>

#include "host/commands.h"
#include "host/exchange_client.h"
#include "host/progress.h"
#include "host/wav_writer.h"

namespace {

// Sample frames of the audio stream: its stored bytes over the bytes of one sample frame, or the
// stream header's length when the stream has no index of its own (sound taken out of interleaved DV
// frames).
uint64_t SampleFrames(ExchangeClient& exchange, const ZeReaderInfo& info, uint32_t frameBytes) {
    const auto roles = exchange.GetRecord<ZeXpStreamRoles>(ZE_XP_STREAM_ROLES);
    if (roles.firstAudio >= 0) {
        uint64_t bytes = 0;
        for (const ZeXpIndexEntry& e : exchange.GetIndex(static_cast<uint32_t>(roles.firstAudio))) bytes += e.dwSize;
        if (bytes > 0) return bytes / frameBytes;
    }
    return info.length;
}

}  // namespace

int RunAudio(const ModuleOptions& module, const std::string& file, const std::string& output) {
    ModuleSession session(module);
    ExchangeClient exchange(session);
    session.Check(session.Audio()->InitAudioReader(file.c_str(), 0, 0, nullptr), "opening the audio of " + file);

    ZeReaderInfo info{};
    info.cbSize = sizeof(info);
    session.Check(session.Audio()->GetReaderInfo(&info, nullptr), "reading the audio description of " + file);
    // One sample of every channel. The block alignment of sound taken from interleaved DV frames counts
    // samples of one channel only, so the frame size is worked out from channels and sample width.
    const uint32_t frameBytes = static_cast<uint32_t>(info.nChannels) * ((info.wBitsPerSample + 7u) / 8u);
    if (frameBytes == 0)
        throw HostError(E_FAIL, "reading the audio of " + file + ": no PCM audio with a usable sample size");

    WAVEFORMATEX format{};
    format.wFormatTag = info.wFormatTag;
    format.nChannels = info.nChannels;
    format.nSamplesPerSec = info.nSamplesPerSec;
    format.nAvgBytesPerSec = info.nSamplesPerSec * frameBytes;
    format.nBlockAlign = static_cast<WORD>(frameBytes);
    format.wBitsPerSample = info.wBitsPerSample;

    const uint64_t total = SampleFrames(exchange, info, frameBytes);
    WavWriter wav(output, format);
    ProgressBar progress("audio", total);
    constexpr uint64_t kFramesPerRead = 16384;
    std::vector<uint8_t> buffer(kFramesPerRead * frameBytes);
    for (uint64_t position = 0; position < total;) {
        const uint64_t frames = total - position < kFramesPerRead ? total - position : kFramesPerRead;
        const LONG bytes = static_cast<LONG>(frames * frameBytes);
        const size_t reportsBefore = session.Log().LineCount();
        const HRESULT hr = session.Audio()->GetAudioBuffer(static_cast<DWORD>(position),
                                                           static_cast<DWORD>(position >> 32), buffer.data(), bytes,
                                                           nullptr);
        session.Check(hr, "reading audio at sample " + std::to_string(position));
        // The module answers S_OK even when the read failed; its report tells.
        if (session.Log().LineCount() != reportsBefore)
            throw HostError(session.Log().LastCode(), "reading audio at sample " + std::to_string(position),
                            session.Log().LastReport());
        wav.Write(buffer.data(), static_cast<size_t>(bytes));
        position += frames;
        progress.Update(position);
    }
    wav.Close();
    std::printf("%s: %llu sample frames, %u Hz, %u channels, %u bits -> %s\n", file.c_str(),
                static_cast<unsigned long long>(total), info.nSamplesPerSec, info.nChannels, info.wBitsPerSample,
                output.c_str());
    return 0;
}

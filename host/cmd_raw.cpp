// `raw`: DV frames and stored audio chunks exactly as the file holds them.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "host/commands.h"
#include "host/exchange_client.h"

namespace {

struct FileCloser {
    void operator()(FILE* file) const { std::fclose(file); }
};

std::unique_ptr<FILE, FileCloser> CreateOutput(const std::string& path) {
    std::unique_ptr<FILE, FileCloser> file(std::fopen(path.c_str(), "wb"));
    if (!file) throw HostError(E_FAIL, "creating " + path + ": " + std::strerror(errno));
    return file;
}

void WriteAll(FILE* file, const void* data, size_t bytes, const std::string& path) {
    if (bytes && std::fwrite(data, 1, bytes, file) != bytes)
        throw HostError(E_FAIL, "writing " + path + ": " + std::strerror(errno));
}

}  // namespace

int RunRaw(const ModuleOptions& module, const RawOptions& options) {
    ModuleSession session(module);
    ExchangeClient exchange(session);
    GUID subtype{};
    session.Check(session.Raw()->InitRawStream(options.file.c_str(), &subtype, 0),
                  "preparing raw access to " + options.file + " (raw access takes DV video, 'dvsd', only)");
    // The output is created once the first sample is in hand, so a failed request leaves no file.
    std::unique_ptr<FILE, FileCloser> output;

    if (options.frame) {
        const uint64_t frame = *options.frame;
        const auto roles = exchange.GetRecord<ZeXpStreamRoles>(ZE_XP_STREAM_ROLES);
        const auto header = exchange.GetRecord<ZeXpStreamHeader>(ZE_XP_STREAM_HEADER, static_cast<uint32_t>(roles.firstVideo));
        const uint64_t frames = exchange.GetU32(ZE_XP_FRAME_COUNT);
        if (frame >= frames)
            throw HostError(E_INVALIDARG, "reading DV frame " + std::to_string(frame) + ": beyond the last frame (" +
                                              std::to_string(frames) + " frames)");
        if (header.dwRate == 0) throw HostError(E_FAIL, "reading DV frames: the video stream header has a rate of 0");
        // The start of the frame in 1/100000 s, rounded up so that the module's truncation lands on it.
        const LONGLONG time = static_cast<LONGLONG>((frame * 100000ull * header.dwScale + header.dwRate - 1) / header.dwRate);
        BYTE* sample = nullptr;
        DWORD bytes = 0;
        session.Check(session.Raw()->GetRawSample(ZE_RAW_VIDEO, ZE_TIME_100KTH_SECONDS, &time, &sample, nullptr, &bytes),
                      "reading DV frame " + std::to_string(frame));
        // The module gives its buffer's size; the index gives the frame's own.
        ZeXpIndexEntry entry{};
        ZeExchangeValue value{sizeof(ZeExchangeValue), sizeof(entry), 0, 0, 0, &entry};
        session.Check(session.Exchange()->Get(ZE_XP_INDEX_ENTRIES, static_cast<uint32_t>(roles.firstVideo),
                                              static_cast<DWORD>(frame), &value),
                      "reading the index entry of frame " + std::to_string(frame));
        const uint32_t frameBytes = entry.dwSize != 0 && entry.dwSize < bytes ? entry.dwSize : bytes;
        output = CreateOutput(options.output);
        WriteAll(output.get(), sample, frameBytes, options.output);
        std::printf("%s: frame %llu, %u bytes -> %s\n", options.file.c_str(), static_cast<unsigned long long>(frame),
                    frameBytes, options.output.c_str());
    }
    if (options.audio) {
        const auto roles = exchange.GetRecord<ZeXpStreamRoles>(ZE_XP_STREAM_ROLES);
        if (roles.firstAudio < 0 || exchange.GetU32(ZE_XP_INDEX_COUNT, static_cast<uint32_t>(roles.firstAudio)) == 0)
            throw HostError(E_FAIL, "reading stored audio chunks: the file stores none (sound inside DV frames is not "
                                    "stored apart)");
        uint64_t total = 0;
        for (uint64_t chunk = 0; chunk < options.audioChunks; ++chunk) {
            const LONGLONG time = 0;  // stored chunks come in order, whatever the time
            BYTE* sample = nullptr;
            DWORD bytes = 0;
            session.Check(session.Raw()->GetRawSample(ZE_RAW_AUDIO, ZE_TIME_100KTH_SECONDS, &time, &sample, nullptr, &bytes),
                          "reading stored audio chunk " + std::to_string(chunk));
            if (!output) output = CreateOutput(options.output);
            WriteAll(output.get(), sample, bytes, options.output);
            total += bytes;
        }
        std::printf("%s: %llu audio chunks, %llu bytes -> %s\n", options.file.c_str(),
                    static_cast<unsigned long long>(options.audioChunks), static_cast<unsigned long long>(total),
                    options.output.c_str());
    }
    if (output && std::fflush(output.get()) != 0) throw HostError(E_FAIL, "writing " + options.output);
    return 0;
}

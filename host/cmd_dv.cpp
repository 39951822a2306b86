// `dv`: DV parameters of a file and, for one frame, its recording date and time and every camera value.
#include <cstdio>
#include <nlohmann/json.hpp>

#include "host/commands.h"
#include "host/exchange_client.h"

using nlohmann::ordered_json;

int RunDv(const ModuleOptions& module, const std::string& file, uint32_t frame, bool json) {
    ModuleSession session(module);
    ExchangeClient exchange(session);
    session.Check(session.Video()->CheckFile(file.c_str(), nullptr, nullptr), "checking " + file);
    exchange.Open(file);
    if (!exchange.Check(ZE_XP_DV_VIDEO_PARAMS).available)
        throw HostError(E_AVI_NOVALIDFILE, "reading DV parameters: " + file + " holds no DV video ('dvsd')");
    const uint32_t frames = exchange.GetU32(ZE_XP_FRAME_COUNT);
    if (frame >= frames)
        throw HostError(E_INVALIDARG,
                        "reading frame " + std::to_string(frame) + ": beyond the last frame (" + std::to_string(frames) + " frames)");

    const auto video = exchange.GetRecord<ZeXpDVVideoParams>(ZE_XP_DV_VIDEO_PARAMS);
    const auto audio = exchange.GetRecord<ZeXpDVAudioParams>(ZE_XP_DV_AUDIO_PARAMS);
    ordered_json j;
    j["file"] = file;
    j["frame"] = frame;
    j["dvVideo"] = {{"sixtyFields", video.sixtyFields},
                    {"aspectRatio", video.aspectRatio},
                    {"displayCode", video.displayCode},
                    {"interlaceCode", video.interlaceCode},
                    {"compressionCode", video.compressionCode},
                    {"recordingStartCode", video.recordingStartCode},
                    {"recordingDateTime", video.recordingDateTime}};
    j["dvAudio"] = {{"sampleRate", audio.sampleRate},
                    {"bitsPerSample", audio.bitsPerSample},
                    {"audioModeCode", audio.audioModeCode},
                    {"firstChannel", audio.firstChannel},
                    {"secondChannel", audio.secondChannel}};
    std::string text;
    j["recordingDateTime"] = exchange.GetRecordingText(frame, &text) ? ordered_json(text) : ordered_json(nullptr);
    ZeXpDVTimestamp stamp{};
    if (exchange.GetTimestamp(frame, &stamp))
        j["timestamp"] = {{"seconds", stamp.seconds},       {"minutes", stamp.minutes},
                          {"hours", stamp.hours},           {"dayOfMonth", stamp.dayOfMonth},
                          {"month", stamp.month},           {"yearsSince1900", stamp.yearsSince1900}};
    else
        j["timestamp"] = nullptr;

    ordered_json camera = ordered_json::object();
    const uint32_t rows = exchange.Check(ZE_XP_CAMERA_FIRST).count;
    for (uint32_t row = 0; row < rows; ++row) {
        const std::string name = exchange.Check(ZE_XP_CAMERA_FIRST + row, 0, frame).name;
        uint32_t value = 0, id = 0;
        if (exchange.GetCamera(row, frame, &value, &id))
            camera[name] = {{"id", id}, {"value", value}};
        else
            camera[name] = {{"id", nullptr}, {"value", nullptr}};
    }
    j["camera"] = camera;

    if (json) {
        std::printf("%s\n", j.dump(2).c_str());
        return 0;
    }
    std::printf("File: %s, frame %u of %u\n", file.c_str(), frame, frames);
    std::printf("DV video: %s system, aspect %.6g, display code %u, interlace code %u, compression code %u, "
                "recording start %u\n",
                video.sixtyFields ? "525/60" : "625/50", video.aspectRatio, video.displayCode, video.interlaceCode,
                video.compressionCode, video.recordingStartCode);
    std::printf("DV audio: %u Hz, %u bits, audio mode %u, channels %u/%u\n", audio.sampleRate, audio.bitsPerSample,
                audio.audioModeCode, audio.firstChannel, audio.secondChannel);
    std::printf("Recorded: %s\n", j["recordingDateTime"].is_null() ? "(no date in this frame)" : text.c_str());
    if (!j["timestamp"].is_null())
        std::printf("Time stamp: %04u-%02u-%02u %02u:%02u:%02u\n", stamp.yearsSince1900 + 1900, stamp.month + 1,
                    stamp.dayOfMonth, stamp.hours, stamp.minutes, stamp.seconds);
    std::printf("Camera values (name, parameter id, value):\n");
    for (const auto& [name, entry] : camera.items()) {
        if (entry["value"].is_null())
            std::printf("  %-22s -   (not recorded)\n", name.c_str());
        else
            std::printf("  %-22s %-3u %u\n", name.c_str(), entry["id"].get<unsigned>(), entry["value"].get<unsigned>());
    }
    return 0;
}

// `check` and `info`: whether the module takes a file, and everything it says about it.
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>

#include "host/commands.h"
#include "host/exchange_client.h"

using nlohmann::ordered_json;

int RunCheck(const ModuleOptions& module, const std::string& file) {
    ModuleSession session(module);
    DWORD flags = 0, value = 0;
    session.Check(session.Video()->CheckFile(file.c_str(), &flags, &value), "checking " + file);
    std::printf("%s: accepted as AVI\n", file.c_str());
    return 0;
}

namespace {

ordered_json MainHeaderJson(const ZeXpMainHeader& h) {
    return ordered_json{{"dwMicroSecPerFrame", h.dwMicroSecPerFrame},
                        {"dwMaxBytesPerSec", h.dwMaxBytesPerSec},
                        {"dwPaddingGranularity", h.dwPaddingGranularity},
                        {"dwFlags", h.dwFlags},
                        {"dwTotalFrames", h.dwTotalFrames},
                        {"dwInitialFrames", h.dwInitialFrames},
                        {"dwStreams", h.dwStreams},
                        {"dwSuggestedBufferSize", h.dwSuggestedBufferSize},
                        {"dwWidth", h.dwWidth},
                        {"dwHeight", h.dwHeight},
                        {"dwReserved", {h.dwReserved[0], h.dwReserved[1], h.dwReserved[2], h.dwReserved[3]}}};
}

ordered_json StreamHeaderJson(const ZeXpStreamHeader& h) {
    return ordered_json{{"fccType", FourCCText(h.fccType)},
                        {"fccHandler", FourCCText(h.fccHandler)},
                        {"dwFlags", h.dwFlags},
                        {"wPriority", h.wPriority},
                        {"wLanguage", h.wLanguage},
                        {"dwInitialFrames", h.dwInitialFrames},
                        {"dwScale", h.dwScale},
                        {"dwRate", h.dwRate},
                        {"dwStart", h.dwStart},
                        {"dwLength", h.dwLength},
                        {"dwSuggestedBufferSize", h.dwSuggestedBufferSize},
                        {"dwQuality", h.dwQuality},
                        {"dwSampleSize", h.dwSampleSize},
                        {"rcFrame",
                         {{"left", h.rcFrameLeft}, {"top", h.rcFrameTop}, {"right", h.rcFrameRight},
                          {"bottom", h.rcFrameBottom}}}};
}

template <class T>
T Load(const std::vector<uint8_t>& bytes) {
    T record{};
    std::memcpy(&record, bytes.data(), bytes.size() < sizeof(T) ? bytes.size() : sizeof(T));
    return record;
}

ordered_json FormatJson(uint32_t type, const std::vector<uint8_t>& bytes) {
    if (type == 1) {
        const auto b = Load<BITMAPINFOHEADER>(bytes);
        return ordered_json{{"biSize", b.biSize},         {"biWidth", b.biWidth},
                            {"biHeight", b.biHeight},     {"biPlanes", b.biPlanes},
                            {"biBitCount", b.biBitCount}, {"biCompression", FourCCText(b.biCompression)},
                            {"biSizeImage", b.biSizeImage}, {"biXPelsPerMeter", b.biXPelsPerMeter},
                            {"biYPelsPerMeter", b.biYPelsPerMeter}, {"biClrUsed", b.biClrUsed},
                            {"biClrImportant", b.biClrImportant}, {"extraBytes", bytes.size() > 40 ? bytes.size() - 40 : 0}};
    }
    if (type == 2) {
        const auto w = Load<WAVEFORMATEX>(bytes);
        return ordered_json{{"wFormatTag", w.wFormatTag},         {"nChannels", w.nChannels},
                            {"nSamplesPerSec", w.nSamplesPerSec}, {"nAvgBytesPerSec", w.nAvgBytesPerSec},
                            {"nBlockAlign", w.nBlockAlign},       {"wBitsPerSample", w.wBitsPerSample},
                            {"cbSize", w.cbSize}};
    }
    if (type == 3) {
        ordered_json words = ordered_json::array();
        for (size_t i = 0; i + 4 <= bytes.size(); i += 4) {
            uint32_t word = 0;
            std::memcpy(&word, bytes.data() + i, 4);
            words.push_back(word);
        }
        return ordered_json{{"dvInfo", words}};
    }
    return nullptr;
}

ordered_json IndexSummaryJson(const std::vector<ZeXpIndexEntry>& index) {
    uint64_t keys = 0, bytes = 0;
    for (const ZeXpIndexEntry& e : index) {
        keys += (e.dwFlags & ZE_AVIIF_KEYFRAME) ? 1 : 0;
        bytes += e.dwSize;
    }
    ordered_json j{{"entries", index.size()}, {"keyFrames", keys}, {"bytes", bytes}};
    j["firstPosition"] = index.empty() ? ordered_json(nullptr) : ordered_json(index.front().qwPosition);
    j["lastPosition"] = index.empty() ? ordered_json(nullptr) : ordered_json(index.back().qwPosition);
    return j;
}

const char* RoleOf(uint32_t number, const ZeXpStreamRoles& roles) {
    if (static_cast<int32_t>(number) == roles.firstVideo) return "video";
    if (static_cast<int32_t>(number) == roles.secondVideo) return "video2";
    if (static_cast<int32_t>(number) == roles.firstAudio) return "audio";
    return "other";
}

std::string Plain(const ordered_json& value) { return value.is_string() ? value.get<std::string>() : value.dump(); }

void PrintText(const ordered_json& j) {
    const auto& m = j["module"];
    std::printf("File: %s\n", j["file"].get<std::string>().c_str());
    std::printf("Module: %s (%s files), class %s\n", m["description"].get<std::string>().c_str(),
                m["fileType"].get<std::string>().c_str(), m["clsid"].get<std::string>().c_str());
    const auto& s = j["streamInfo"];
    if (s.is_null()) {
        std::printf("Video: none (%s)\n", j["streamInfoError"].get<std::string>().c_str());
    } else {
        std::printf("Video: %dx%d, %.6g fps, %u frames, display aspect %.6g, display %dx%d\n", s["width"].get<int>(),
                    s["height"].get<int>(), s["frameRate"].get<double>(), s["frameCount"].get<unsigned>(),
                    s["aspectRatio"].get<double>(), s["displayWidth"].get<int>(), s["displayHeight"].get<int>());
        const auto& a = s["audio"];
        if (a["wFormatTag"].get<unsigned>() != 0)
            std::printf("Audio: format %u, %u channels, %u Hz, %u bits\n", a["wFormatTag"].get<unsigned>(),
                        a["nChannels"].get<unsigned>(), a["nSamplesPerSec"].get<unsigned>(),
                        a["wBitsPerSample"].get<unsigned>());
    }
    std::printf("Main header (avih):\n");
    for (const auto& [key, value] : j["avih"].items()) std::printf("  %-22s %s\n", key.c_str(), Plain(value).c_str());
    for (const auto& stream : j["streams"]) {
        std::printf("Stream %u (%s)%s%s:\n", stream["stream"].get<unsigned>(), stream["role"].get<std::string>().c_str(),
                    stream["strn"].get<std::string>().empty() ? "" : " ",
                    stream["strn"].get<std::string>().c_str());
        for (const auto& [key, value] : stream["strh"].items())
            std::printf("  %-22s %s\n", key.c_str(), Plain(value).c_str());
        if (stream["strf"].is_object())
            for (const auto& [key, value] : stream["strf"].items())
                std::printf("  %-22s %s\n", key.c_str(), Plain(value).c_str());
        const auto& idx = stream["index"];
        std::printf("  index: %s entries, %s key frames, %s bytes\n", idx["entries"].dump().c_str(),
                    idx["keyFrames"].dump().c_str(), idx["bytes"].dump().c_str());
    }
    std::printf("Colour formats:");
    for (const auto& name : j["colorFormats"]) std::printf(" %s", name.get<std::string>().c_str());
    std::printf("\n");
}

}  // namespace

int RunInfo(const ModuleOptions& module, const std::string& file, bool json) {
    ModuleSession session(module);
    ExchangeClient exchange(session);
    ordered_json j;
    j["file"] = file;

    ZeModuleInfo info{};
    info.cbSize = sizeof(info);
    session.Check(session.PlugIn()->GetModuleInfo(&info), "reading the module information");
    j["module"] = {{"clsid", GuidText(info.clsid)},
                   {"fileType", info.fileType ? info.fileType : ""},
                   {"description", info.description ? info.description : ""}};
    CoTaskMemFree(info.fileType);
    CoTaskMemFree(info.description);

    session.Check(session.Video()->CheckFile(file.c_str(), nullptr, nullptr), "checking " + file);
    exchange.Open(file);

    ZeStreamInfo si{};
    const HRESULT hr = session.Video()->GetStreamInfo(&si);
    if (FAILED(hr)) {
        j["streamInfo"] = nullptr;
        j["streamInfoError"] = session.Log().LastReport();
    } else {
        j["streamInfo"] = {{"width", si.width},
                           {"height", si.height},
                           {"displayWidth", si.displayWidth},
                           {"displayHeight", si.displayHeight},
                           {"frameRate", si.frameRate},
                           {"aspectRatio", si.aspectRatio},
                           {"frameCount", si.frameCount},
                           {"capabilities", si.capabilities},
                           {"streamKinds", si.streamKinds},
                           {"formatFlags", si.formatFlags},
                           {"audio",
                            {{"wFormatTag", si.wFormatTag},
                             {"nChannels", si.nChannels},
                             {"nSamplesPerSec", si.nSamplesPerSec},
                             {"nAvgBytesPerSec", si.nAvgBytesPerSec},
                             {"nBlockAlign", si.nBlockAlign},
                             {"wBitsPerSample", si.wBitsPerSample}}}};
    }

    j["avih"] = MainHeaderJson(exchange.GetRecord<ZeXpMainHeader>(ZE_XP_MAIN_HEADER));
    const auto roles = exchange.GetRecord<ZeXpStreamRoles>(ZE_XP_STREAM_ROLES);
    j["skippedStreams"] = roles.skippedStreams;
    const uint32_t streams = exchange.GetU32(ZE_XP_STREAM_COUNT);
    j["streams"] = ordered_json::array();
    for (uint32_t n = 0; n < streams; ++n) {
        ordered_json s;
        s["stream"] = n;
        s["role"] = RoleOf(n, roles);
        s["strn"] = exchange.GetText(ZE_XP_STREAM_NAME, n);
        s["strh"] = StreamHeaderJson(exchange.GetRecord<ZeXpStreamHeader>(ZE_XP_STREAM_HEADER, n));
        const uint32_t type = exchange.GetU32(ZE_XP_STREAM_FORMAT_TYPE, n);
        s["strf"] = exchange.Check(ZE_XP_STREAM_FORMAT, n).available
                        ? FormatJson(type, exchange.GetBytes(ZE_XP_STREAM_FORMAT, n))
                        : ordered_json(nullptr);
        s["index"] = IndexSummaryJson(exchange.GetIndex(n));
        j["streams"].push_back(s);
    }
    const uint32_t formats = exchange.GetU32(ZE_XP_COLOR_FORMAT_COUNT);
    j["colorFormats"] = ordered_json::array();
    for (uint32_t i = 0; i < formats; ++i) j["colorFormats"].push_back(exchange.GetText(ZE_XP_COLOR_FORMAT_NAME, 0, i));

    if (json)
        std::printf("%s\n", j.dump(2).c_str());
    else
        PrintText(j);
    return 0;
}

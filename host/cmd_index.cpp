// `index`: every index entry of a file, stream by stream.
#include <cstdio>
#include <nlohmann/json.hpp>

#include "host/commands.h"
#include "host/exchange_client.h"

int RunIndex(const ModuleOptions& module, const std::string& file, std::optional<uint32_t> stream, bool json) {
    ModuleSession session(module);
    ExchangeClient exchange(session);
    session.Check(session.Video()->CheckFile(file.c_str(), nullptr, nullptr), "checking " + file);
    exchange.Open(file);
    const uint32_t streams = exchange.GetU32(ZE_XP_STREAM_COUNT);
    if (stream && *stream >= streams)
        throw HostError(E_AVI_STREAMINDEX, "listing stream " + std::to_string(*stream) + ": no such stream (" +
                                               std::to_string(streams) + " streams)");
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    if (!json) std::printf("%-6s %-8s %-6s %-10s %-4s %-14s %-10s %s\n", "stream", "entry", "ckid", "dwFlags", "key",
                           "qwPosition", "dwSize", "qwOffset");
    for (uint32_t n = stream ? *stream : 0; n < (stream ? *stream + 1 : streams); ++n) {
        const std::vector<ZeXpIndexEntry> entries = exchange.GetIndex(n);
        for (size_t i = 0; i < entries.size(); ++i) {
            const ZeXpIndexEntry& e = entries[i];
            const bool key = (e.dwFlags & ZE_AVIIF_KEYFRAME) != 0;
            if (json) {
                list.push_back({{"stream", n},
                                {"entry", i},
                                {"ckid", FourCCText(e.ckid)},
                                {"dwFlags", e.dwFlags},
                                {"keyFrame", key},
                                {"qwOffset", e.qwOffset},
                                {"dwSize", e.dwSize},
                                {"qwPosition", e.qwPosition}});
            } else {
                std::printf("%-6u %-8zu %-6s 0x%08X %-4s %-14llu %-10u %llu\n", n, i, FourCCText(e.ckid).c_str(),
                            e.dwFlags, key ? "K" : "-", static_cast<unsigned long long>(e.qwPosition), e.dwSize,
                            static_cast<unsigned long long>(e.qwOffset));
            }
        }
    }
    if (json) std::printf("%s\n", list.dump(2).c_str());
    return 0;
}

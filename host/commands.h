// The commands of avihost. Each returns the process exit status; failures throw HostError.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/host_module.h"

int RunCheck(const ModuleOptions& module, const std::string& file);
int RunInfo(const ModuleOptions& module, const std::string& file, bool json);
int RunAudio(const ModuleOptions& module, const std::string& file, const std::string& output);

struct RawOptions {
    std::string file;
    std::string output;
    std::optional<uint64_t> frame;      // one DV frame
    bool audio = false;                 // stored audio chunks
    uint64_t audioChunks = 1;           // how many, from the first
};
int RunRaw(const ModuleOptions& module, const RawOptions& options);

int RunIndex(const ModuleOptions& module, const std::string& file, std::optional<uint32_t> stream, bool json);
int RunDv(const ModuleOptions& module, const std::string& file, uint32_t frame, bool json);
int RunRegister(const ModuleOptions& module, bool registerServer);

// Runs the built avihost and ffmpeg/ffprobe for the host tests.
#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace hosttest {

struct HostRun {
    int status = -1;
    std::string out;
    std::string err;
};

// avihost with the given arguments (each quoted for the shell); extra environment settings go first.
HostRun RunHost(const std::vector<std::string>& args, const std::string& environment = {});

// The material's path, or empty with the reason to skip in *why.
std::string Material(const std::string& name, std::string* why);

// ffprobe -show_streams of a file.
nlohmann::json ProbeStreams(const std::string& path);

// A fresh path in the test cache folder for an output file.
std::string OutputPath(const std::string& name);

std::vector<uint8_t> ReadFile(const std::string& path);

}  // namespace hosttest

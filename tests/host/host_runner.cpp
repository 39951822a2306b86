#include "tests/host/host_runner.h"

#include <unistd.h>

#include <fstream>
#include <iterator>

#include "tests/fixtures/ze_ffmpeg_material.h"

namespace hosttest {

HostRun RunHost(const std::vector<std::string>& args, const std::string& environment) {
    const std::string errPath = OutputPath("stderr.txt");
    std::string command = environment + " " + zetest::ShellQuote(ZE_BINARY_DIR "/avihost");
    for (const std::string& a : args) command += " " + zetest::ShellQuote(a);
    command += " 2>" + zetest::ShellQuote(errPath);
    HostRun run;
    run.status = zetest::RunCommand(command, &run.out);
    const std::vector<uint8_t> err = ReadFile(errPath);
    run.err.assign(err.begin(), err.end());
    std::remove(errPath.c_str());
    return run;
}

std::string Material(const std::string& name, std::string* why) { return zetest::MaterialPath(name, why); }

nlohmann::json ProbeStreams(const std::string& path) {
    std::string out;
    zetest::RunCommand("ffprobe -v error -show_streams -of json " + zetest::ShellQuote(path), &out);
    return nlohmann::json::parse(out);
}

std::string OutputPath(const std::string& name) {
    static int serial = 0;
    return zetest::CacheDir() + "/host." + std::to_string(getpid()) + "." + std::to_string(serial++) + "." + name;
}

std::vector<uint8_t> ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace hosttest

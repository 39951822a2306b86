// Runs the built avihost and ffprobe for the host tests, and compares avihost's WAV output with
// ffmpeg's own decode.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tests/fixtures/ze_ffmpeg_material.h"
#include "tests/fixtures/ze_temp_file.h"
#include "tests/support/temp_dir.h"

namespace hosttest {

struct HostRun {
    int status = -1;
    std::string out;
    std::string err;
};

// avihost with the given arguments (each quoted for the shell); extra environment settings go first.
inline HostRun RunHost(const std::vector<std::string>& args, const std::string& environment = {}) {
    const zetest::TempDir folder;
    const std::string errPath = folder.Path() + "/stderr.txt";
    std::string command = environment + " " + zetest::ShellQuote(ZE_BINARY_DIR "/avihost");
    for (const std::string& a : args) command += " " + zetest::ShellQuote(a);
    HostRun run;
    run.status = zetest::RunCommand(command + " 2>" + zetest::ShellQuote(errPath), &run.out);
    run.err = zetest::FileText(errPath);
    return run;
}

// ffprobe -show_streams of a file.
inline nlohmann::json ProbeStreams(const std::string& path) {
    std::string out;
    zetest::RunCommand("ffprobe -v error -show_streams -of json " + zetest::ShellQuote(path), &out);
    return nlohmann::json::parse(out);
}

// The data chunk of the canonical 44-byte-header WAV avihost writes equals the raw PCM file.
inline void ExpectWavDataEquals(const std::string& wav, const std::string& pcm) {
    const std::vector<uint8_t> ours = zetest::ReadWholeFile(wav);
    const std::vector<uint8_t> theirs = zetest::ReadWholeFile(pcm);
    ASSERT_GE(ours.size(), 44u);
    uint32_t dataBytes = 0;
    std::memcpy(&dataBytes, ours.data() + 40, 4);
    ASSERT_EQ(theirs.size(), dataBytes);
    EXPECT_TRUE(std::equal(theirs.begin(), theirs.end(), ours.begin() + 44)) << "the samples differ";
}

}  // namespace hosttest

#define MATERIAL_OR_SKIP(var, name)                                 \
    std::string why_##var;                                          \
    const std::string var = zetest::MaterialPath(name, &why_##var); \
    if (var.empty()) GTEST_SKIP() << why_##var

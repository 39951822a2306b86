// avihost on bad input: one line on stderr with the status code, the module's message and what
// failed; exit status 1. And registration, after which the module is found by its class id.
#include <gtest/gtest.h>

#include <cstdio>

#include "tests/fixtures/ze_ffmpeg_material.h"
#include "tests/host/host_runner.h"

namespace hosttest {
namespace {

void WriteBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
    FILE* f = std::fopen(path.c_str(), "wb");
    ASSERT_NE(nullptr, f);
    std::fwrite(bytes.data(), 1, bytes.size(), f);
    std::fclose(f);
}

// Exactly one line, naming the code and the failing step.
void ExpectOneErrorLine(const HostRun& run, const std::string& code, const std::string& where) {
    EXPECT_EQ(1, run.status);
    ASSERT_FALSE(run.err.empty());
    EXPECT_EQ(run.err.size() - 1, run.err.find('\n')) << run.err;
    EXPECT_EQ(0u, run.err.find("avihost: error " + code)) << run.err;
    EXPECT_NE(std::string::npos, run.err.find(where)) << run.err;
}

TEST(HostErrors, BadFiles) {
    const std::string missing = OutputPath("missing.avi");
    ExpectOneErrorLine(RunHost({"check", missing}), "0x80040013", "CZeAviFileParser::OpenAVIFile");
    ExpectOneErrorLine(RunHost({"info", missing}), "0x80040013", "\"cant open avi file\"");

    const std::string text = OutputPath("text.avi");
    WriteBytes(text, std::vector<uint8_t>(300, 'a'));
    ExpectOneErrorLine(RunHost({"check", text}), "0x80040012", "no valid avi file");
    ExpectOneErrorLine(RunHost({"audio", text, "-o", OutputPath("x.wav")}), "0x80040012", "CZeAviFileParser::Parse");

    std::string why;
    const std::string dv = Material("dv_pal", &why);
    if (!dv.empty()) {
        std::vector<uint8_t> bytes = ReadFile(dv);
        bytes.resize(3000);
        const std::string cut = OutputPath("cut.avi");
        WriteBytes(cut, bytes);
        ExpectOneErrorLine(RunHost({"info", cut}), "0x80040014", "while opening");
        ExpectOneErrorLine(RunHost({"index", cut}), "0x80040014", "CZeAviFileParser");
        ExpectOneErrorLine(RunHost({"dv", "--frame", "999", dv}), "0x80070057", "beyond the last frame");
        const std::string notWritten = OutputPath("x.dv");
        ExpectOneErrorLine(RunHost({"raw", dv, "--frame", "999", "-o", notWritten}), "0x80070057", "frame 999");
        EXPECT_TRUE(ReadFile(notWritten).empty()) << "a failed request leaves no file";
        std::remove(cut.c_str());
    }
    const std::string mjpeg = Material("mjpeg_s16_stereo", &why);
    if (!mjpeg.empty()) {
        ExpectOneErrorLine(RunHost({"raw", mjpeg, "--frame", "0", "-o", OutputPath("x.dv")}), "0x80070057",
                           "CZEAviReader::InitRawStream");
        ExpectOneErrorLine(RunHost({"dv", mjpeg}), "0x80040012", "no DV video");
        ExpectOneErrorLine(RunHost({"index", "--stream", "7", mjpeg}), "0x8004001D", "no such stream");
    }
    std::remove(text.c_str());
}

TEST(HostErrors, ModuleThatCannotBeLoaded) {
    ExpectOneErrorLine(RunHost({"--module", OutputPath("none.so"), "check", "x.avi"}), "0x8007007E",
                       "loading the module");
}

TEST(HostRegistration, ByClassIdAfterRegister) {
    std::string why;
    const std::string path = Material("mjpeg_s16_stereo", &why);
    if (path.empty()) GTEST_SKIP() << why;
    const std::string registry = OutputPath("registry.reg");
    const std::string env = "ZE_REGISTRY_FILE=" + zetest::ShellQuote(registry);
    ExpectOneErrorLine(RunHost({"--by-clsid", "check", path}, env), "0x80040154", "by its class id");
    HostRun run = RunHost({"register"}, env);
    ASSERT_EQ(0, run.status) << run.err;
    run = RunHost({"--by-clsid", "check", path}, env);
    EXPECT_EQ(0, run.status) << run.err;
    EXPECT_NE(std::string::npos, run.out.find("accepted"));
    run = RunHost({"unregister"}, env);
    EXPECT_EQ(0, run.status) << run.err;
    ExpectOneErrorLine(RunHost({"--by-clsid", "check", path}, env), "0x80040154", "by its class id");
    std::remove(registry.c_str());
    std::remove((registry + ".lock").c_str());
}

TEST(HostUsage, HelpDocumentsTheJson) {
    for (const char* command : {"info", "index", "dv"}) {
        const HostRun run = RunHost({command, "--help"});
        EXPECT_EQ(0, run.status);
        EXPECT_NE(std::string::npos, run.out.find("JSON (--json)")) << command;
    }
    const HostRun none = RunHost({});
    EXPECT_NE(0, none.status);
}

}  // namespace
}  // namespace hosttest

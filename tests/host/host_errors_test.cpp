// avihost on bad input: one line on stderr with the status code, the module's message and what
// failed; exit status 1. And registration, after which the module is found by its class id.
#include <gtest/gtest.h>

#include "tests/host/host_runner.h"

namespace hosttest {
namespace {

// Exactly one line, naming the code and the failing step.
void ExpectOneErrorLine(const HostRun& run, const std::string& code, const std::string& where) {
    EXPECT_EQ(1, run.status);
    ASSERT_FALSE(run.err.empty());
    EXPECT_EQ(run.err.size() - 1, run.err.find('\n')) << run.err;
    EXPECT_EQ(0u, run.err.find("avihost: error " + code)) << run.err;
    EXPECT_NE(std::string::npos, run.err.find(where)) << run.err;
}

struct BadRun {
    std::vector<std::string> args;
    const char* code;
    const char* where;
};

void ExpectErrorLines(const std::vector<BadRun>& runs) {
    for (const BadRun& r : runs) {
        SCOPED_TRACE(r.args[0] + " " + r.args[1]);
        ExpectOneErrorLine(RunHost(r.args), r.code, r.where);
    }
}

TEST(HostErrors, BadFilesAndTheModuleThatCannotBeLoaded) {
    const zetest::TempDir out;
    const std::string missing = out.Path() + "/missing.avi";
    const std::string text = out.Put("text.avi", std::string(300, 'a'));
    ExpectErrorLines({{{"check", missing}, "0x80040013", "CZeAviFileParser::OpenAVIFile"},
                      {{"info", missing}, "0x80040013", "\"cant open avi file\""},
                      {{"check", text}, "0x80040012", "no valid avi file"},
                      {{"audio", text, "-o", out.Path() + "/x.wav"}, "0x80040012", "CZeAviFileParser::Parse"},
                      {{"--module", out.Path() + "/none.so", "check", "x.avi"}, "0x8007007E", "loading the module"}});

    std::string why;
    const std::string dv = zetest::MaterialPath("dv_pal", &why);
    if (!dv.empty()) {
        std::vector<uint8_t> bytes = zetest::ReadWholeFile(dv);
        bytes.resize(3000);
        const std::string cut = out.Put("cut.avi", bytes);
        const std::string notWritten = out.Path() + "/x.dv";
        ExpectErrorLines({{{"info", cut}, "0x80040014", "while opening"},
                          {{"index", cut}, "0x80040014", "CZeAviFileParser"},
                          {{"dv", "--frame", "999", dv}, "0x80070057", "beyond the last frame"},
                          {{"raw", dv, "--frame", "999", "-o", notWritten}, "0x80070057", "frame 999"}});
        EXPECT_TRUE(zetest::FileText(notWritten).empty()) << "a failed request leaves no file";
    }
    const std::string mjpeg = zetest::MaterialPath("mjpeg_s16_stereo", &why);
    if (!mjpeg.empty()) {
        ExpectErrorLines({{{"raw", mjpeg, "--frame", "0", "-o", out.Path() + "/x.dv"}, "0x80070057",
                           "CZEAviReader::InitRawStream"},
                          {{"dv", mjpeg}, "0x80040012", "no DV video"},
                          {{"index", "--stream", "7", mjpeg}, "0x8004001D", "no such stream"}});
    }
}

TEST(HostRegistration, ByClassIdAfterRegister) {
    MATERIAL_OR_SKIP(path, "mjpeg_s16_stereo");
    const zetest::TempDir folder;
    const std::string env = "ZE_REGISTRY_FILE=" + zetest::ShellQuote(folder.Path() + "/registry.reg");
    ExpectOneErrorLine(RunHost({"--by-clsid", "check", path}, env), "0x80040154", "by its class id");
    HostRun run = RunHost({"register"}, env);
    ASSERT_EQ(0, run.status) << run.err;
    run = RunHost({"--by-clsid", "check", path}, env);
    EXPECT_EQ(0, run.status) << run.err;
    EXPECT_NE(std::string::npos, run.out.find("accepted"));
    run = RunHost({"unregister"}, env);
    EXPECT_EQ(0, run.status) << run.err;
    ExpectOneErrorLine(RunHost({"--by-clsid", "check", path}, env), "0x80040154", "by its class id");
}

TEST(HostUsage, HelpDocumentsTheJson) {
    for (const char* command : {"info", "index", "dv"}) {
        const HostRun run = RunHost({command, "--help"});
        EXPECT_EQ(0, run.status);
        EXPECT_NE(std::string::npos, run.out.find("JSON (--json)")) << command;
    }
    EXPECT_NE(0, RunHost({}).status);
}

}  // namespace
}  // namespace hosttest

// Report lines, message table and log routing of the process-wide error reporter.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "reader/status/ze_error_report.h"

namespace {

// Collects what the log routing hands to the sink.
void CollectLine(const char* line, void* lines) { static_cast<std::vector<std::string>*>(lines)->emplace_back(line); }

class ErrorReportTest : public ::testing::Test {
protected:
    void SetUp() override {
        SetLogSink(nullptr, nullptr);
        SetErrorContext("");
    }
    void TearDown() override { SetLogSink(nullptr, nullptr); }
};

TEST_F(ErrorReportTest, LinesAreFormattedByteForByte) {
    EXPECT_EQ(ReportError("CZEAviReader", "CheckFile", E_POINTER), E_POINTER);
    ASSERT_EQ(GetReportList().size(), 1u);
    EXPECT_EQ(GetReportList()[0], "[80004003] invalid pointer ### CZEAviReader::CheckFile ### \r\n");
    SetErrorContext("D:\\clip.avi");
    EXPECT_EQ(ReportError("CZeAviFileParser", "Read", E_AVI_READ), E_AVI_READ);
    ReportError("CZeAviFileParser", "GetFrame", E_AVI_STREAMINDEX);
    const std::vector<std::string> lines = GetReportList();
    ASSERT_EQ(lines.size(), 2u);  // the context change emptied the list
    EXPECT_EQ(lines[0], "[80040014]  ### CZeAviFileParser::Read ### D:\\clip.avi\r\n");
    EXPECT_EQ(lines[1], "[8004001d] unknown error (-2147221475) ### CZeAviFileParser::GetFrame ### D:\\clip.avi\r\n");
}

TEST_F(ErrorReportTest, MessageTableCoversBothDenseRangesAndTheSingles) {
    struct Row {
        uint32_t code;
        const char* text;
    } rows[] = {
        {0x80004001u, "not implemented"}, {0x80004002u, "no such interface supported"},
        {0x80004003u, "invalid pointer"}, {0x80004004u, "operation aborted"},
        {0x80004005u, "general access denied error"}, {0x80070006u, "invalid handle"},
        {0x8007000Eu, "out of memory"}, {0x80070057u, "one or more arguments are invalid"},
        {0x80040012u, "no valid avi file"}, {0x80040013u, "cant open avi file"}, {0x80040014u, ""},
        {0x80040015u, "cant seek avi file"}, {0x80040016u, "cant close avi file"},
        {0x80040017u, "unknown error (-2147221481)"}, {0x80040018u, "cant create video stream header"},
        {0x80040019u, "cant create video format header"}, {0x8004001Au, "cant create audio stream header"},
        {0x8004001Bu, "cant create audio format header"}, {0x8004001Cu, "no valid color space"},
        {0x8004001Du, "unknown error (-2147221475)"}, {0x8004001Eu, "avi file parse failed"},
        {0x8004001Fu, "no frame"}, {0x80040020u, "unknown error (-2147221472)"},
        {0x80040011u, "unknown error (-2147221487)"}, {0x80004000u, "unknown error (-2147467264)"},
        {0x80004006u, "unknown error (-2147467258)"}, {0u, "unknown error (0)"}, {1u, "unknown error (1)"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(ErrorMessageForCode(static_cast<HRESULT>(row.code)), row.text) << std::hex << row.code;
}

TEST_F(ErrorReportTest, ReturnsTheCodeItWasGivenAndKeepsItAsLastWithoutASink) {
    for (HRESULT code : {S_FALSE, S_OK, E_OUTOFMEMORY, E_FAIL}) {
        EXPECT_EQ(ReportError("A", "B", code), code);
        EXPECT_EQ(GetLastReportedError(), code);
    }
    const std::vector<std::string> lines = GetReportList();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[2], "[8007000e] out of memory ### A::B ### \r\n");
    EXPECT_EQ(lines[3], "[80004005] general access denied error ### A::B ### \r\n");
}

TEST_F(ErrorReportTest, SinkReceivesThePrefixedLinesOfLevelOne) {
    std::vector<std::string> lines;
    SetLogSink(CollectLine, &lines);
    ReportError("CZeAviFileParser", "Seek", E_AVI_SEEK);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0], "AVI Reader :: [80040015] cant seek avi file ### CZeAviFileParser::Seek ### \r\n\n");

    // Only level 1 reaches the sink in this build's fixed mode.
    LogLine(2, "trace only");
    LogLine(3, "trace only");
    EXPECT_EQ(lines.size(), 1u);
    LogLine(1, "direct");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[1], "AVI Reader :: direct\n");
}

TEST_F(ErrorReportTest, ContextChangeEmptiesListAndChangesTail) {
    ReportError("X", "Y", E_FAIL);
    ReportError("X", "Y", E_FAIL);
    EXPECT_EQ(GetReportList().size(), 2u);
    SetErrorContext("/tmp/a.avi");
    EXPECT_TRUE(GetReportList().empty());
    EXPECT_EQ(GetErrorContext(), "/tmp/a.avi");
    ReportError("X", "Y", E_FAIL);
    EXPECT_EQ(GetReportList()[0], "[80004005] general access denied error ### X::Y ### /tmp/a.avi\r\n");
}

}  // namespace

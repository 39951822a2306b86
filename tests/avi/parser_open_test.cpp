// Opening and validating files: the quick signature check, the full parse's early failures, the
// unpadded chunk walk, re-opening and validity.
#include <gtest/gtest.h>

#include "tests/avi/parser_test_support.h"

namespace zetest {
namespace {

std::vector<uint8_t> Head(const std::string& riff, const std::string& form) {
    std::vector<uint8_t> bytes(riff.begin(), riff.end());
    bytes.insert(bytes.end(), {4, 0, 0, 0});
    bytes.insert(bytes.end(), form.begin(), form.end());
    return bytes;
}

// The quick check takes "RIFF" and "AVI" in any case with any fourth form byte ("AVIX" too), and
// refuses everything else without keeping the file open.
TEST(ParserOpen, QuickCheckTakesRiffAviInAnyCaseAndRejectsOtherSignatures) {
    struct Case {
        const char* riff;
        const char* form;
        HRESULT expected;
    };
    const Case cases[] = {{"RIFF", "AVI ", S_OK},  {"RIFF", "AVIX", S_OK},
                          {"RIFF", "avi ", S_OK},  {"RIFF", "AvI\x19", S_OK},
                          {"riff", "AVI ", S_OK},  {"RIFF", "WAVE", E_AVI_NOVALIDFILE},
                          {"RIFX", "AVI ", E_AVI_NOVALIDFILE}, {"LIST", "AVI ", E_AVI_NOVALIDFILE}};
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.riff) + "/" + c.form);
        TempFile file(Head(c.riff, c.form));
        CZeAviFileParser parser;
        SetErrorContext("");
        EXPECT_EQ(parser.Parse(file.c_str()), c.expected);
        EXPECT_EQ(CountReports(E_AVI_NOVALIDFILE, "Parse"), c.expected == S_OK ? 0 : 1);
        EXPECT_FALSE(parser.IsOpen());
        EXPECT_FALSE(parser.IsParsed());
    }
}

TEST(ParserOpen, FilesOfOneToElevenBytesPassTheQuickCheckButNotTheFullParse) {
    for (size_t n = 1; n < 12; ++n) {
        std::vector<uint8_t> bytes = Head("RIFF", "WAVE");
        bytes.resize(n);
        TempFile file(bytes);
        CZeAviFileParser check;
        EXPECT_EQ(check.Parse(file.c_str()), S_OK) << n;

        ParsedBytes full(bytes);
        EXPECT_EQ(full.parse, E_AVI_READ) << n;
        EXPECT_FALSE(full.parser.IsParsed());
    }
    // An empty file cannot be mapped: it opens, and its first read fails.
    TempFile empty(std::vector<uint8_t>{});
    CZeAviFileParser check;
    SetErrorContext("");
    EXPECT_EQ(check.Parse(empty.c_str()), E_AVI_READ);
    EXPECT_EQ(CountReports(E_AVI_READ, "Read"), 1);
    EXPECT_EQ(GetReportList().size(), 1u);
    EXPECT_FALSE(check.IsOpen());
    ParsedBytes full(std::vector<uint8_t>{});
    EXPECT_EQ(full.open, S_OK);
    EXPECT_EQ(full.parse, E_AVI_READ);
}

TEST(ParserOpen, MissingFileFailsToOpen) {
    CZeAviFileParser parser;
    SetErrorContext("");
    EXPECT_EQ(parser.Parse("/nonexistent/dir/clip.avi"), E_AVI_OPEN);
    EXPECT_EQ(CountReports(E_AVI_OPEN, "OpenAVIFile"), 1);
    EXPECT_EQ(parser.OpenAVIFile("/nonexistent/dir/clip.avi"), E_AVI_OPEN);
}

TEST(ParserOpen, AParsedFileAnswersTheQuickCheckForAnyPath) {
    ParsedBytes f(BuildAvi(VideoModel(3, 100)).bytes);
    ASSERT_EQ(f.parse, S_OK);
    EXPECT_TRUE(f.parser.IsParsed());
    EXPECT_EQ(f.parser.Parse("/nonexistent/dir/clip.avi"), S_OK);
    EXPECT_EQ(f.parser.Parse(), S_OK);
    EXPECT_TRUE(f.parser.IsOpen());
}

TEST(ParserOpen, OpeningTheOpenPathKeepsTheParseAndAnotherPathResets) {
    ParsedBytes f(BuildAvi(VideoModel(3, 100)).bytes);
    ASSERT_EQ(f.parse, S_OK);
    EXPECT_EQ(f.parser.OpenAVIFile(f.file.c_str()), S_OK);
    EXPECT_TRUE(f.parser.IsParsed());
    EXPECT_EQ(f.parser.GetVideoFrameCount(), 3u);

    TempFile other(BuildAvi(VideoModel(5, 10)).bytes);
    EXPECT_EQ(f.parser.OpenAVIFile(other.c_str()), S_OK);
    EXPECT_FALSE(f.parser.IsParsed());
    EXPECT_EQ(f.parser.GetStreamCount(), 0u);
    EXPECT_EQ(f.parser.GetFileName(), other.Path());
    EXPECT_EQ(f.parser.Parse(), S_OK);
    EXPECT_EQ(f.parser.GetVideoFrameCount(), 5u);

    f.parser.Reset();
    EXPECT_FALSE(f.parser.IsOpen());
    EXPECT_TRUE(f.parser.GetFileName().empty());
}

TEST(ParserOpen, FullParseChecksTheSignature) {
    AviModel model = VideoModel(2, 10);
    model.formType = "AVIX";
    EXPECT_EQ(ParsedBytes(BuildAvi(model).bytes).parse, S_OK);
    model.formType = "WAVE";
    ParsedBytes wave(BuildAvi(model).bytes);
    EXPECT_EQ(wave.parse, E_AVI_NOVALIDFILE);
    EXPECT_EQ(CountReports(E_AVI_NOVALIDFILE, "Parse"), 1);
}

TEST(ParserOpen, WithoutAHeaderListTheWalkRunsOffTheEnd) {
    LeBytes out;
    const size_t riff = out.BeginList("RIFF", "AVI ");
    const size_t movi = out.BeginList("LIST", "movi");
    out.EndChunk(movi);
    out.EndChunk(riff);
    ParsedBytes f(out.Take());
    EXPECT_EQ(f.parse, E_AVI_READ);
    EXPECT_EQ(CountReports(E_AVI_READ, "FindListChunk"), 1);
}

// Chunk walks step by size + 8 without rounding odd sizes up: a padded odd chunk before the
// header list puts the walk one byte early, an unpadded one is walked correctly.
TEST(ParserOpen, OddChunksAreWalkedWithoutPadding) {
    AviModel model = VideoModel(2, 10);
    model.beforeHeader = {ChunkModel{"JUNK", {1, 2, 3}}};
    model.beforeHeader[0].pad = true;
    EXPECT_LT(ParsedBytes(BuildAvi(model).bytes).parse, 0);
    model.beforeHeader[0].pad = false;
    ParsedBytes unpadded(BuildAvi(model).bytes);
    EXPECT_EQ(unpadded.parse, S_OK);
    EXPECT_EQ(unpadded.parser.GetVideoFrameCount(), 2u);
}

TEST(ParserOpen, ValidityNeedsAParseAndAStream) {
    CZeAviFileParser idle;
    SetErrorContext("");
    EXPECT_EQ(idle.IsValidAVIFile(), E_AVI_PARSE);
    EXPECT_EQ(CountReports(E_AVI_PARSE, "IsValidAVIFile"), 1);

    AviModel none = VideoModel(0, 0);
    none.streams.clear();
    ParsedBytes empty(BuildAvi(none).bytes);
    ASSERT_EQ(empty.parse, S_OK);
    EXPECT_EQ(empty.parser.GetStreamCount(), 0u);
    EXPECT_EQ(empty.parser.IsValidAVIFile(), E_AVI_NOVALIDFILE);

    ParsedBytes good(BuildAvi(VideoModel(2, 10)).bytes);
    EXPECT_EQ(good.parser.IsValidAVIFile(), S_OK);
}

TEST(ParserOpen, ReadAndSeekWrappersReportTheirFailures) {
    ParsedBytes f(BuildAvi(VideoModel(1, 10)).bytes);
    SetErrorContext("");
    uint64_t count = 4;
    uint64_t got = 99;
    EXPECT_EQ(f.parser.Read(nullptr, &count, &got), E_POINTER);
    EXPECT_EQ(CountReports(E_POINTER, "Read"), 1);

    uint64_t position = 0xFFFFFFFFull;  // a position whose low word reads as the failure value
    uint32_t method = FILE_BEGIN;
    EXPECT_EQ(f.parser.Seek(&position, &method), E_AVI_SEEK);
    EXPECT_EQ(CountReports(E_AVI_SEEK, "Seek"), 1);

    position = f.parser.GetFileSize() - 2;
    ASSERT_EQ(f.parser.Seek(&position, &method), S_OK);
    uint8_t buffer[8];
    EXPECT_EQ(f.parser.Read(buffer, &count, &got), S_OK);  // short, not an error here
    EXPECT_EQ(got, 2u);
    position = f.parser.GetFileSize() + 10;
    ASSERT_EQ(f.parser.Seek(&position, &method), S_OK);
    EXPECT_EQ(f.parser.Read(buffer, &count, &got), E_AVI_READ);
    EXPECT_EQ(got, 0u);
}

}  // namespace
}  // namespace zetest

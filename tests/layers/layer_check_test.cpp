// The tree keeps its layers: every include and every library link points down the table in
// layers.txt, and neither the table nor the libraries have a cycle. The checks are shown to fail on
// planted wrong-way includes, links and cycles.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include <sys/stat.h>

#include "tests/layers/layer_rules.h"
#include "tests/support/temp_dir.h"

namespace {

using zelayers::LayerTable;

std::string ReadText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::string Lines(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += "  " + line + "\n";
    return text;
}

LayerTable TreeTable() {
    std::vector<std::string> problems;
    LayerTable table = LayerTable::Parse(ReadText(ZE_SOURCE_DIR "/tests/layers/layers.txt"), problems);
    EXPECT_TRUE(problems.empty()) << Lines(problems);
    return table;
}

const char kSmallTable[] =
    "platform\n"
    "reader/status  platform   # the floor\n"
    "dv             reader/status\n"
    "avi            dv\n"
    "reader         avi\n"
    "host           platform\n";

LayerTable SmallTable() {
    std::vector<std::string> problems;
    LayerTable table = LayerTable::Parse(kSmallTable, problems);
    EXPECT_TRUE(problems.empty()) << Lines(problems);
    return table;
}

TEST(Layers, TableOfTheTreeHasNoCycle) {
    const LayerTable table = TreeTable();
    EXPECT_GT(table.standsOn.size(), 5u);
    EXPECT_TRUE(table.Cycles().empty()) << Lines(table.Cycles());
}

TEST(Layers, EveryIncludeOfTheTreePointsDown) {
    const std::vector<std::string> wrong = zelayers::WrongWayIncludes(TreeTable(), ZE_SOURCE_DIR);
    EXPECT_TRUE(wrong.empty()) << "includes against the layers:\n" << Lines(wrong);
}

TEST(Layers, EveryLibraryLinkPointsDownWithoutCycles) {
    const std::string graphText = ReadText(ZE_BINARY_DIR "/ze_link_graph.txt");
    const std::vector<zelayers::LinkedLibrary> libraries = zelayers::ParseLinkGraph(graphText);
    bool sawParser = false;
    for (const auto& library : libraries) sawParser |= library.name == "ze_avi" && library.folder == "avi";
    EXPECT_TRUE(sawParser) << "the build wrote no link graph with the parser library:\n" << graphText;
    const std::vector<std::string> wrong = zelayers::WrongWayLinks(TreeTable(), libraries);
    EXPECT_TRUE(wrong.empty()) << "links against the layers:\n" << Lines(wrong);
}

TEST(Layers, FolderOfTakesTheLongestListedPrefix) {
    std::vector<std::string> problems;
    const LayerTable table = LayerTable::Parse("platform\nreader platform\nreader/api platform\n", problems);
    const struct {
        const char* path;
        const char* folder;
    } rows[] = {
        {"reader/ze_avi_reader.cpp", "reader"},   {"reader/api/ze_host_records.h", "reader/api"},
        {"reader/apis/x.h", "reader"},            {"platform/posix/files.cpp", "platform"},
        {"platformer/x.h", ""},                   {"tests/avi/x.cpp", ""},
        {"reader", ""},
    };
    for (const auto& row : rows) EXPECT_EQ(row.folder, table.FolderOf(row.path)) << row.path;
}

TEST(Layers, UnknownFolderOnTheRightIsAProblem) {
    std::vector<std::string> problems;
    LayerTable::Parse("avi dv\n", problems);
    ASSERT_EQ(1u, problems.size());
    EXPECT_NE(std::string::npos, problems[0].find("dv"));
}

TEST(Layers, PlantedCycleInTheTableIsFound) {
    std::vector<std::string> problems;
    const LayerTable table = LayerTable::Parse("platform\ndv avi platform\navi dv\n", problems);
    const std::vector<std::string> cycles = table.Cycles();
    ASSERT_EQ(1u, cycles.size());
    EXPECT_EQ("avi -> dv -> avi", cycles[0]);
}

TEST(Layers, PlantedWrongWayIncludesAreFoundAndRightOnesPass) {
    zetest::TempDir root;
    for (const char* folder : {"platform", "reader", "reader/status", "dv", "avi", "host", "tests"})
        ASSERT_EQ(0, ::mkdir((root.Path() + "/" + folder).c_str(), 0755));
    root.Put("platform/win32.h", "#pragma once\n");
    root.Put("reader/status/report.h", "#include \"platform/win32.h\"\n");
    root.Put("reader/object.h", "#pragma once\n");
    root.Put("dv/packs.h", "#include \"reader/status/report.h\"\n#include <vector>\n");
    root.Put("avi/parser.h", "#include \"dv/packs.h\"\n");
    root.Put("avi/local.h", "#pragma once\n");
    // Right way: down the table, beside the file, system headers, and headers that do not exist here.
    root.Put("avi/parser.cpp", "#include \"avi/parser.h\"\n#include \"local.h\"\n#include <string>\n"
                               "#include \"generated/version.h\"\n#include \"platform/win32.h\"\n");
    root.Put("tests/anything.cpp", "#include \"reader/object.h\"\n");
    // Wrong way: up the table, and across to a folder the includer does not stand on.
    root.Put("dv/camera.cpp", "#include \"dv/packs.h\"\n  #  include \"avi/parser.h\"\n");
    root.Put("host/main.cpp", "#include \"reader/object.h\"\n");
    root.Put("avi/reader_use.cpp", "#include \"tests/anything.cpp\"\n");

    const std::vector<std::string> wrong = zelayers::WrongWayIncludes(SmallTable(), root.Path());
    ASSERT_EQ(3u, wrong.size()) << Lines(wrong);
    EXPECT_EQ("avi/reader_use.cpp includes tests/anything.cpp (outside the module's folders)", wrong[0]);
    EXPECT_EQ("dv/camera.cpp includes avi/parser.h (dv may not use avi)", wrong[1]);
    EXPECT_EQ("host/main.cpp includes reader/object.h (host may not use reader)", wrong[2]);
}

TEST(Layers, PlantedWrongWayLinkAndLibraryCycleAreFound) {
    const std::vector<zelayers::LinkedLibrary> libraries = zelayers::ParseLinkGraph(
        "ze_platform platform pthread dl\n"
        "ze_status reader/status ze_platform\n"
        "ze_dv dv ze_status ze_avi\n"
        "ze_avi avi ze_dv ze_status\n"
        "ze_reader reader ze_avi ze_module\n"
        "ze_module reader ze_reader\n"
        "test_avi tests/avi ze_avi ze_reader\n");
    const std::vector<std::string> wrong = zelayers::WrongWayLinks(SmallTable(), libraries);
    const std::string text = Lines(wrong);
    EXPECT_NE(std::string::npos, text.find("ze_dv links ze_avi (dv may not use avi)")) << text;
    EXPECT_NE(std::string::npos, text.find("library cycle: ze_avi -> ze_dv -> ze_avi")) << text;
    EXPECT_NE(std::string::npos, text.find("library cycle: ze_module -> ze_reader -> ze_module")) << text;
    EXPECT_EQ(3u, wrong.size()) << text;
}

}  // namespace

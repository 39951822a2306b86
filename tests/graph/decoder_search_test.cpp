// The decoder list of a stream: candidates the mapper offers at MERIT_NORMAL or more that really
// connect between the module's source filter (carrying the stream's format) and its render filter.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "graph/ze_decoder_search.h"
#include "tests/graph/graph_test_support.h"
#include "tests/support/registry_sandbox.h"

namespace {

using namespace zegraph_test;

std::vector<std::string> SortedNames(const CZeFilterList& records)
{
    std::vector<std::string> names;
    for (const CZeFilter& record : records) {
        std::string text;
        for (WCHAR c : record.FriendlyName()) text.push_back(static_cast<char>(c));
        names.push_back(text);
    }
    std::sort(names.begin(), names.end());
    return names;
}

// COM on the test's thread, as the plug-in object has it on the host's thread.
class DecoderSearchTest : public ReportedTest {
protected:
    void SetUp() override
    {
        ReportedTest::SetUp();
        ASSERT_TRUE(SUCCEEDED(CoInitialize(nullptr)));
    }
    void TearDown() override
    {
        CoUninitialize();
        ReportedTest::TearDown();
    }
    zetest::RegistrySandbox m_registry;
};

TEST_F(DecoderSearchTest, DecodersThatConnectBetweenTheModulesFilters)
{
    const struct {
        DWORD fourcc;
        LONG width;
        LONG height;
        std::vector<std::string> wanted;
    } cases[] = {
        {ZeFourcc('d', 'v', 's', 'd'), 720, 576, {"DV Video Decoder"}},
        {ZeFourcc('d', 'v', 's', 'd'), 720, 480, {"DV Video Decoder"}},
        {ZeFourcc('M', 'J', 'P', 'G'), 320, 240, {"MJPEG Decompressor"}},
        {ZeFourcc('X', 'V', 'I', 'D'), 640, 480, {"DivX Decoder Filter", "XviD MPEG-4 Video Decoder"}},
        // Cinepak's decoder ranks below MERIT_NORMAL, so the list has no entry for it.
        {ZeFourcc('c', 'v', 'i', 'd'), 320, 240, {}},
        // Nothing at all takes this FOURCC.
        {ZeFourcc('Z', 'Z', 'Z', 'Z'), 320, 240, {}},
    };
    for (const auto& c : cases) {
        const std::string fourcc(reinterpret_cast<const char*>(&c.fourcc), 4);
        const BITMAPINFOHEADER format = Bitmap(c.width, c.height, 24, c.fourcc, 144000);
        const ze_video_stream_desc desc = StreamDesc(25, 1);
        CZeFilterList decoders;
        ASSERT_EQ(FindDecoders(&format, &desc, &decoders), S_OK) << fourcc;
        EXPECT_EQ(SortedNames(decoders), c.wanted) << fourcc << " " << c.width << "x" << c.height;
        for (const CZeFilter& decoder : decoders) EXPECT_FALSE(decoder.FilterData().empty());
        // Candidates are tried only in formats the render filter takes, so nothing refuses them.
        EXPECT_EQ(TakeReports(), std::vector<std::string>()) << fourcc;
    }
    ExpectAllObjectsGone();
}

TEST_F(DecoderSearchTest, AppendsToTheListItIsGiven)
{
    const BITMAPINFOHEADER format = Bitmap(720, 576, 24, ZeFourcc('d', 'v', 's', 'd'), 144000);
    const ze_video_stream_desc desc = StreamDesc(25, 1);
    CZeFilterList decoders(1);
    ASSERT_EQ(FindDecoders(&format, &desc, &decoders), S_OK);
    ASSERT_EQ(decoders.size(), 2u);
    EXPECT_TRUE(decoders[0].FriendlyName().empty());
    EXPECT_EQ(FindDecoders(nullptr, &desc, &decoders), E_POINTER);
    EXPECT_EQ(FindDecoders(&format, nullptr, &decoders), E_POINTER);
    EXPECT_EQ(FindDecoders(&format, &desc, nullptr), E_POINTER);
    EXPECT_EQ(decoders.size(), 2u);
}

}  // namespace

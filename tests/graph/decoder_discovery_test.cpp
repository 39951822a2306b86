// Decoder discovery on the Linux runtime's filter mapper with its system decoders, each test in a
// registry of its own: the records EnumerateDecoders collects for a stream's media type, the record
// walk over any moniker enumerator, and the server path a class's registry key names.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

#include "graph/ze_class_registry.h"
#include "graph/ze_com_ref.h"
#include "graph/ze_decoder_discovery.h"
#include "graph/ze_graph_create.h"
#include "graph/ze_graph_interfaces.h"
#include "graph/ze_system_decoders.h"
#include "reader/status/ze_error_report.h"
#include "tests/support/registry_sandbox.h"

namespace {

// {B1B77C00-C3E4-11CF-AF79-00AA00B67A42}: the DV Video Decoder's class on Windows.
const CLSID kDVVideoDecoder = {0xb1b77c00, 0xc3e4, 0x11cf, {0xaf, 0x79, 0x00, 0xaa, 0x00, 0xb6, 0x7a, 0x42}};

std::string Narrow(const CZeFilter::Name& name)
{
    std::string text;
    for (WCHAR c : name) text.push_back(static_cast<char>(c));
    return text;
}

std::vector<std::string> Names(const CZeFilterList& records)
{
    std::vector<std::string> names;
    for (const CZeFilter& record : records) names.push_back(Narrow(record.FriendlyName()));
    return names;
}

AM_MEDIA_TYPE VideoType(DWORD fourcc)
{
    AM_MEDIA_TYPE type{};
    type.majortype = MEDIATYPE_Video;
    type.subtype = ZeFourccSubtype(fourcc);
    return type;
}

// COM on the test's thread, as the plug-in object has it on the host's thread.
class DecoderDiscoveryTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        SetErrorContext("");
        ASSERT_TRUE(SUCCEEDED(CoInitialize(nullptr)));
    }
    void TearDown() override { CoUninitialize(); }
    zetest::RegistrySandbox m_registry;
};

TEST_F(DecoderDiscoveryTest, RecordsOfTheDecodersTakingEachFourcc)
{
    // Names as the decoders register them; the generic libavcodec decoders rank below MERIT_NORMAL,
    // so they show only with a lower minimum. Every name must contain its fragment.
    const struct {
        DWORD fourcc;
        DWORD merit;
        std::vector<std::string> fragments;
    } cases[] = {
        {ZeFourcc('d', 'v', 's', 'd'), MERIT_NORMAL, {"DV Video Decoder"}},
        {ZeFourcc('M', 'J', 'P', 'G'), MERIT_NORMAL, {"MJPEG Decompressor"}},
        {ZeFourcc('X', 'V', 'I', 'D'), MERIT_NORMAL, {"DivX Decoder Filter", "XviD MPEG-4 Video Decoder"}},
        {ZeFourcc('H', '2', '6', '4'), MERIT_NORMAL, {}},
        {ZeFourcc('H', '2', '6', '4'), MERIT_UNLIKELY, {"H.264"}},
        {ZeFourcc('c', 'v', 'i', 'd'), MERIT_NORMAL, {}},
        {ZeFourcc('c', 'v', 'i', 'd'), MERIT_UNLIKELY, {"Cinepak"}},
    };
    for (const auto& c : cases) {
        const std::string fourcc(reinterpret_cast<const char*>(&c.fourcc), 4);
        CZeFilterList records;
        ASSERT_EQ(EnumerateDecoders({VideoType(c.fourcc)}, &records, c.merit, FALSE, TRUE), S_OK) << fourcc;
        std::vector<std::string> names = Names(records);
        ASSERT_EQ(names.size(), c.fragments.size()) << fourcc << " at merit " << std::hex << c.merit;
        std::sort(names.begin(), names.end());
        for (size_t i = 0; i < names.size(); ++i)
            EXPECT_NE(names[i].find(c.fragments[i]), std::string::npos) << names[i];
        for (const CZeFilter& record : records) {
            EXPECT_FALSE(record.FilterData().empty()) << Narrow(record.FriendlyName());
            EXPECT_FALSE(IsEqualCLSID(record.ClassId(), GUID_NULL)) << Narrow(record.FriendlyName());
        }
    }
    EXPECT_TRUE(GetReportList().empty());
}

TEST_F(DecoderDiscoveryTest, DvRecordCarriesTheSystemDecodersClassAndRegistration)
{
    CZeFilterList records;
    ASSERT_EQ(EnumerateDecoders({VideoType(ZeFourcc('d', 'v', 's', 'd'))}, &records, MERIT_NORMAL, FALSE, TRUE), S_OK);
    ASSERT_EQ(records.size(), 1u);
    EXPECT_TRUE(IsEqualCLSID(records[0].ClassId(), kDVVideoDecoder));
    // The bytes are the mapper's registration as the registry holds it.
    const std::vector<BYTE> stored = zetest::QueryValue(
        HKEY_CLASSES_ROOT,
        "CLSID\\{083863F1-70DE-11d0-BD40-00A0C911CE86}\\Instance\\" + zetest::GuidText(kDVVideoDecoder),
        "FilterData");
    EXPECT_EQ(records[0].FilterData(), stored);
}

TEST_F(DecoderDiscoveryTest, SeveralTypesGatherTheDecodersOfEach)
{
    CZeFilterList records;
    ASSERT_EQ(EnumerateDecoders({VideoType(ZeFourcc('d', 'v', 's', 'd')), VideoType(ZeFourcc('M', 'J', 'P', 'G'))},
                                &records, MERIT_NORMAL, FALSE, TRUE),
              S_OK);
    std::vector<std::string> names = Names(records);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"DV Video Decoder", "MJPEG Decompressor"}));
}

TEST_F(DecoderDiscoveryTest, ArgumentsThatCannotBeAsked)
{
    CZeFilterList records;
    EXPECT_EQ(EnumerateDecoders({}, &records, MERIT_NORMAL, FALSE, TRUE), E_FAIL);
    EXPECT_EQ(EnumerateDecoders({VideoType(ZeFourcc('d', 'v', 's', 'd'))}, nullptr, MERIT_NORMAL, FALSE, TRUE),
              E_POINTER);
    EXPECT_EQ(CollectFilterRecords(nullptr, &records), E_POINTER);
    EXPECT_TRUE(records.empty());
    // A decoder's input pin is not a rendered one.
    ASSERT_EQ(EnumerateDecoders({VideoType(ZeFourcc('d', 'v', 's', 'd'))}, &records, MERIT_NORMAL, TRUE, TRUE), S_OK);
    EXPECT_TRUE(records.empty());
    EXPECT_TRUE(GetReportList().empty());
}

TEST_F(DecoderDiscoveryTest, CollectsEveryMonikerOfAnEnumeratorFromItsStart)
{
    ZeEnsureSystemDecoders();
    void* raw = nullptr;
    ASSERT_EQ(CoCreateInstance(CLSID_SystemDeviceEnum, nullptr, CLSCTX_INPROC_SERVER, IID_ICreateDevEnum, &raw), S_OK);
    const ZeComRef<ICreateDevEnum> devices(static_cast<ICreateDevEnum*>(raw));
    IEnumMoniker* rawMonikers = nullptr;
    ASSERT_EQ(devices->CreateClassEnumerator(CLSID_LegacyAmFilterCategory, &rawMonikers, 0), S_OK);
    const ZeComRef<IEnumMoniker> monikers(rawMonikers);

    CZeFilterList first;
    ASSERT_EQ(CollectFilterRecords(monikers.get(), &first), S_OK);
    const std::vector<std::string> names = Names(first);
    for (const char* wanted : {"DV Video Decoder", "MJPEG Decompressor", "XviD MPEG-4 Video Decoder"})
        EXPECT_NE(std::find(names.begin(), names.end(), wanted), names.end()) << wanted;
    // The walk resets the enumerator, so a second one sees the same records again.
    CZeFilterList second;
    ASSERT_EQ(CollectFilterRecords(monikers.get(), &second), S_OK);
    EXPECT_EQ(Names(second), names);
}

TEST_F(DecoderDiscoveryTest, ServerPathOfARegisteredClassAndNothingForAnUnknownOne)
{
    void* raw = nullptr;
    ASSERT_EQ(CreateZEVideoSourceFilter(nullptr, IID_IBaseFilter, &raw), S_OK);
    const ZeComRef<IBaseFilter> source(static_cast<IBaseFilter*>(raw));
    ASSERT_EQ(CreateZEVideoRenderFilter(nullptr, IID_IBaseFilter, &raw), S_OK);
    const ZeComRef<IBaseFilter> render(static_cast<IBaseFilter*>(raw));

    std::string path = "unchanged";
    // No classes key at all yet.
    EXPECT_EQ(GetClassRegistryPath(source.get(), &path), S_FALSE);
    EXPECT_EQ(path, "");

    // The key is written in lower case: class keys match whatever their case.
    std::string key = zetest::GuidText(CLSID_ZEVideoSourceFilter);
    std::transform(key.begin(), key.end(), key.begin(), [](char c) { return static_cast<char>(std::tolower(c)); });
    const std::string server = "C:\\Plugins\\ZEAviReader.dll";
    ASSERT_EQ(zetest::WriteValue(HKEY_LOCAL_MACHINE, "SOFTWARE\\Classes\\CLSID\\" + key + "\\InprocServer32", nullptr,
                                 REG_SZ, server.c_str(), static_cast<DWORD>(server.size() + 1)),
              ERROR_SUCCESS);
    // A class with no key of its own among the others.
    EXPECT_EQ(GetClassRegistryPath(render.get(), &path), S_FALSE);
    EXPECT_EQ(path, "");
    // A class with a key but no server path.
    ASSERT_EQ(zetest::WriteValue(HKEY_CLASSES_ROOT, "CLSID\\" + zetest::GuidText(CLSID_ZEVideoRenderFilter), nullptr,
                                 REG_SZ, "Render", 7),
              ERROR_SUCCESS);

    EXPECT_EQ(GetClassRegistryPath(source.get(), &path), S_OK);
    EXPECT_EQ(path, server);
    path = "unchanged";
    EXPECT_EQ(GetClassRegistryPath(render.get(), &path), S_FALSE);
    EXPECT_EQ(path, "");
    EXPECT_EQ(GetClassRegistryPath(nullptr, &path), E_POINTER);
    EXPECT_EQ(GetClassRegistryPath(source.get(), nullptr), E_POINTER);
    EXPECT_TRUE(GetReportList().empty());
}

}  // namespace

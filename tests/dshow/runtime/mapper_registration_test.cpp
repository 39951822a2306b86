// IFilterMapper2::RegisterFilter / UnregisterFilter / CreateCategory: the registry rows and the
// FilterData bytes, written out by hand from the layout (header, "0pi3" pins, "0ty3" types, offsets
// into a pool of GUIDs and mediums).
#include <cstring>

#include "tests/dshow/runtime/runtime_test_support.h"

namespace zetest {
namespace {

// Little-endian bytes built in the order a test writes them down.
class Bytes {
public:
    Bytes& Dwords(std::initializer_list<uint32_t> values) {
        for (uint32_t v : values)
            for (int shift = 0; shift < 32; shift += 8) bytes_.push_back(static_cast<BYTE>(v >> shift));
        return *this;
    }
    Bytes& Tag(const char (&text)[5]) {
        bytes_.insert(bytes_.end(), text, text + 4);
        return *this;
    }
    Bytes& Guid(const GUID& guid) {
        const BYTE* p = reinterpret_cast<const BYTE*>(&guid);  // x86: the in-memory GUID is little-endian
        bytes_.insert(bytes_.end(), p, p + 16);
        return *this;
    }
    const std::vector<BYTE>& Get() const { return bytes_; }

private:
    std::vector<BYTE> bytes_;
};

const GUID kDecoder = TestGuid(0x100);
const GUID kCompressed = TestGuid(1);
const GUID kDecoded = TestGuid(2);
const GUID kPinCategory = TestGuid(8);
const GUID kMediumGuid = TestGuid(9);

std::string InstancePath(REFCLSID category, REFCLSID clsid) {
    return "CLSID\\" + GuidText(category) + "\\Instance\\" + GuidText(clsid);
}

class MapperRegistrationTest : public RuntimeTest {
protected:
    void SetUp() override {
        RuntimeTest::SetUp();
        mapper_ = Create<IFilterMapper2>(CLSID_FilterMapper2, IID_IFilterMapper2);
        ASSERT_TRUE(mapper_);
    }
    std::vector<BYTE> StoredFilterData(REFCLSID category = CLSID_LegacyAmFilterCategory) {
        DWORD type = REG_NONE;
        std::vector<BYTE> data = QueryValue(HKEY_CLASSES_ROOT, InstancePath(category, kDecoder), "FilterData", &type);
        EXPECT_EQ(type, REG_BINARY);
        return data;
    }
    ComPtr<IFilterMapper2> mapper_;
};

TEST_F(MapperRegistrationTest, TwoPinDecoderIsStoredWithSharedGuidsAndItsNames) {
    const REGPINTYPES in[] = {{&MEDIATYPE_Video, &kCompressed}};
    const REGPINTYPES out[] = {{&MEDIATYPE_Video, &kDecoded}};
    const REGFILTERPINS2 pins[] = {{0, 0, 1, in, 0, nullptr, nullptr},
                                   {REG_PINFLAG_B_OUTPUT, 0, 1, out, 0, nullptr, nullptr}};
    REGFILTER2 description{};
    description.dwVersion = 2;
    description.dwMerit = MERIT_NORMAL;
    description.cPins2 = 2;
    description.rgPins2 = pins;

    IMoniker* moniker = nullptr;
    ASSERT_EQ(mapper_->RegisterFilter(kDecoder, Ole("Test Decoder").c_str(), &moniker, nullptr, nullptr, &description),
              S_OK);
    ComPtr<IMoniker> held = ComPtr<IMoniker>::Attach(moniker);
    LPOLESTR display = nullptr;
    ASSERT_EQ(moniker->GetDisplayName(nullptr, nullptr, &display), S_OK);
    EXPECT_EQ(Narrow(display), DeviceName(CLSID_LegacyAmFilterCategory, kDecoder));
    CoTaskMemFree(display);

    // Structures end at 0x60; the video major type is stored once and used by both pins.
    const Bytes expected = Bytes()
                               .Dwords({2, MERIT_NORMAL, 2, 0})
                               .Tag("0pi3").Dwords({0, 0, 1, 0, 0})
                               .Tag("0ty3").Dwords({0, 0x60, 0x70})
                               .Tag("1pi3").Dwords({REG_PINFLAG_B_OUTPUT, 0, 1, 0, 0})
                               .Tag("0ty3").Dwords({0, 0x60, 0x80})
                               .Guid(MEDIATYPE_Video).Guid(kCompressed).Guid(kDecoded);
    EXPECT_EQ(StoredFilterData(), expected.Get());

    const std::string path = InstancePath(CLSID_LegacyAmFilterCategory, kDecoder);
    const std::vector<BYTE> name = QueryValue(HKEY_CLASSES_ROOT, path, "FriendlyName");
    EXPECT_EQ(std::string(name.begin(), name.end()), std::string("Test Decoder", 13));
    const std::vector<BYTE> clsid = QueryValue(HKEY_CLASSES_ROOT, path, "CLSID");
    EXPECT_EQ(std::string(clsid.begin(), clsid.end()), GuidText(kDecoder) + std::string(1, '\0'));
    const std::vector<BYTE> own = QueryValue(HKEY_CLASSES_ROOT, "CLSID\\" + GuidText(kDecoder), nullptr);
    EXPECT_EQ(std::string(own.begin(), own.end()), std::string("Test Decoder", 13));

    ASSERT_EQ(mapper_->UnregisterFilter(nullptr, nullptr, kDecoder), S_OK);
    EXPECT_FALSE(KeyExists(HKEY_CLASSES_ROOT, path));
    EXPECT_EQ(mapper_->UnregisterFilter(nullptr, nullptr, kDecoder), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
}

TEST_F(MapperRegistrationTest, CategoryMediumsAndNullTypesGoToThePoolInOrderOfUse) {
    const REGPINTYPES types[] = {{nullptr, nullptr}, {&MEDIATYPE_Audio, &MEDIASUBTYPE_PCM}};
    const REGPINMEDIUM medium = {kMediumGuid, 5, 7};
    const REGFILTERPINS2 pin = {REG_PINFLAG_B_RENDERER | REG_PINFLAG_B_MANY, 3, 2, types, 1, &medium, &kPinCategory};
    REGFILTER2 description{};
    description.dwVersion = 2;
    description.dwMerit = 0x00123456;
    description.cPins2 = 1;
    description.rgPins2 = &pin;
    const GUID category = TestGuid(0x200);
    ASSERT_EQ(mapper_->RegisterFilter(kDecoder, Ole("Sink").c_str(), nullptr, &category, nullptr, &description), S_OK);

    // Structures: 16 + 24 + 2 * 16 + 4 = 76; GUIDs from 76 (category, null, audio, PCM), medium at 140.
    const Bytes expected = Bytes()
                               .Dwords({2, 0x00123456, 1, 0})
                               .Tag("0pi3").Dwords({REG_PINFLAG_B_RENDERER | REG_PINFLAG_B_MANY, 3, 2, 1, 76})
                               .Tag("0ty3").Dwords({0, 92, 92})
                               .Tag("1ty3").Dwords({0, 108, 124})
                               .Dwords({140})
                               .Guid(kPinCategory).Guid(GUID_NULL).Guid(MEDIATYPE_Audio).Guid(MEDIASUBTYPE_PCM)
                               .Guid(kMediumGuid).Dwords({5, 7});
    EXPECT_EQ(StoredFilterData(category), expected.Get());
    // Only the legacy category gives the class key a name.
    EXPECT_FALSE(KeyExists(HKEY_CLASSES_ROOT, "CLSID\\" + GuidText(kDecoder)));
}

TEST_F(MapperRegistrationTest, VersionOnePinsBecomeFlags) {
    const REGPINTYPES type = {&MEDIATYPE_Video, &kCompressed};
    REGFILTERPINS pins[2] = {};
    pins[0].bRendered = TRUE;
    pins[0].bZero = TRUE;
    pins[0].nMediaTypes = 1;
    pins[0].lpMediaType = &type;
    pins[1].bOutput = TRUE;
    pins[1].bMany = TRUE;
    REGFILTER2 description{};
    description.dwVersion = 1;
    description.dwMerit = MERIT_UNLIKELY;
    description.cPins = 2;
    description.rgPins = pins;
    ASSERT_EQ(mapper_->RegisterFilter(kDecoder, Ole("Old").c_str(), nullptr, nullptr, nullptr, &description), S_OK);

    const Bytes expected = Bytes()
                               .Dwords({2, MERIT_UNLIKELY, 2, 0})
                               .Tag("0pi3").Dwords({REG_PINFLAG_B_RENDERER | REG_PINFLAG_B_ZERO, 0, 1, 0, 0})
                               .Tag("0ty3").Dwords({0, 0x50, 0x60})
                               .Tag("1pi3").Dwords({REG_PINFLAG_B_OUTPUT | REG_PINFLAG_B_MANY, 0, 0, 0, 0})
                               .Guid(MEDIATYPE_Video).Guid(kCompressed);
    EXPECT_EQ(StoredFilterData(), expected.Get());

    description.dwVersion = 3;
    EXPECT_EQ(mapper_->RegisterFilter(kDecoder, Ole("Old").c_str(), nullptr, nullptr, nullptr, &description),
              E_INVALIDARG);
}

TEST_F(MapperRegistrationTest, CreateCategoryListsItUnderTheCategoriesKey) {
    const GUID category = TestGuid(0x300);
    ASSERT_EQ(mapper_->CreateCategory(category, MERIT_UNLIKELY, Ole("Test Category").c_str()), S_OK);
    const std::string path = "CLSID\\{DA4E3DA0-D07D-11D0-BD50-00A0C911CE86}\\Instance\\" + GuidText(category);
    EXPECT_EQ(QueryNumber(HKEY_CLASSES_ROOT, path, "Merit"), MERIT_UNLIKELY);
    const std::vector<BYTE> name = QueryValue(HKEY_CLASSES_ROOT, path, "FriendlyName");
    EXPECT_EQ(std::string(name.begin(), name.end()), std::string("Test Category", 14));
}

}  // namespace
}  // namespace zetest

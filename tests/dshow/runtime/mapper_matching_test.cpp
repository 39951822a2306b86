// IFilterMapper2::EnumMatchingFilters over a set of registered filters: wildcards in the query and in
// the registration, exact matching, the merit floor of filters and categories, the input/output and
// render conditions, and the order (merit descending; equal merits in registry order).
#include <cstring>

#include "tests/dshow/runtime/runtime_test_support.h"

namespace zetest {
namespace {

const GUID kCompressed = TestGuid(1);
const GUID kDecoded = TestGuid(2);
const GUID kOwnCategory = TestGuid(0x400);

struct Registered {
    char letter;
    GUID clsid;
    DWORD merit;
    REGPINTYPES in;  // {null, null} pointers: no input pin
    DWORD inFlags;
    REGPINTYPES out;  // no output pin when both are null
    bool inHasTypes;
};

// Registry order is CLSID order: A < G < F < C < B < D < E. G is registered before A.
const Registered kFilters[] = {
    {'G', TestGuid(0x11), MERIT_NORMAL, {&MEDIATYPE_Video, &kCompressed}, 0, {&MEDIATYPE_Video, &kDecoded}, true},
    {'A', TestGuid(0x10), MERIT_NORMAL, {&MEDIATYPE_Video, &kCompressed}, 0, {&MEDIATYPE_Video, &kDecoded}, true},
    {'B', TestGuid(0x20), MERIT_UNLIKELY, {&MEDIATYPE_Video, &GUID_NULL}, 0, {&MEDIATYPE_Video, &kDecoded}, true},
    {'C', TestGuid(0x18), MERIT_NORMAL - 1, {&MEDIATYPE_Video, &kDecoded}, REG_PINFLAG_B_RENDERER, {nullptr, nullptr},
     true},
    {'D', TestGuid(0x30), MERIT_DO_NOT_USE, {&MEDIATYPE_Video, &kCompressed}, 0, {&MEDIATYPE_Video, &kDecoded}, true},
    {'E', TestGuid(0x40), MERIT_PREFERRED, {&MEDIATYPE_Audio, &MEDIASUBTYPE_PCM}, 0,
     {&MEDIATYPE_Audio, &MEDIASUBTYPE_PCM}, true},
    {'F', TestGuid(0x15), MERIT_NORMAL, {nullptr, nullptr}, 0, {&MEDIATYPE_Video, &kDecoded}, false},
};

struct Query {
    const char* what;
    BOOL exact;
    DWORD merit;
    BOOL inputNeeded;
    std::vector<GUID> inputTypes;  // major, minor pairs
    BOOL render;
    BOOL outputNeeded;
    std::vector<GUID> outputTypes;
    std::string expected;  // letters in the order the enumerator gives them
};

class MapperMatchingTest : public RuntimeTest {
protected:
    void SetUp() override {
        RuntimeTest::SetUp();
        mapper_ = Create<IFilterMapper2>(CLSID_FilterMapper2, IID_IFilterMapper2);
        ASSERT_TRUE(mapper_);
        for (const Registered& f : kFilters) {
            // A filter whose input registers no type still has an input pin.
            const REGFILTERPINS2 pins[] = {{f.inFlags, 0, f.inHasTypes ? 1u : 0u, &f.in, 0, nullptr, nullptr},
                                           {REG_PINFLAG_B_OUTPUT, 0, 1, &f.out, 0, nullptr, nullptr}};
            REGFILTER2 description{};
            description.dwVersion = 2;
            description.dwMerit = f.merit;
            description.cPins2 = f.out.clsMajorType != nullptr ? 2 : 1;
            description.rgPins2 = pins;
            ASSERT_EQ(mapper_->RegisterFilter(f.clsid, Ole(std::string(1, f.letter)).c_str(), nullptr, nullptr,
                                              nullptr, &description),
                      S_OK);
        }
    }

    std::string Letters(const std::vector<std::string>& names) {
        std::string letters;
        for (const std::string& name : names) {
            char letter = '?';
            for (const Registered& f : kFilters)
                if (name == DeviceName(CLSID_LegacyAmFilterCategory, f.clsid)) letter = f.letter;
            if (name == DeviceName(kOwnCategory, TestGuid(0x50))) letter = 'H';
            letters.push_back(letter);
        }
        return letters;
    }

    std::string Run(const Query& q) {
        IEnumMoniker* found = nullptr;
        const HRESULT hr = mapper_->EnumMatchingFilters(
            &found, 0, q.exact, q.merit, q.inputNeeded, static_cast<DWORD>(q.inputTypes.size() / 2),
            q.inputTypes.data(), nullptr, nullptr, q.render, q.outputNeeded,
            static_cast<DWORD>(q.outputTypes.size() / 2), q.outputTypes.data(), nullptr, nullptr);
        EXPECT_EQ(hr, S_OK) << q.what;
        ComPtr<IEnumMoniker> held = ComPtr<IEnumMoniker>::Attach(found);
        return Letters(DisplayNames(found));
    }

    ComPtr<IFilterMapper2> mapper_;
};

TEST_F(MapperMatchingTest, QueriesFindTheFiltersTheRulesAdmitInMeritOrder) {
    const GUID V = MEDIATYPE_Video;
    const Query queries[] = {
        {"registered null subtype is a wildcard", FALSE, 0, TRUE, {V, kCompressed}, FALSE, FALSE, {}, "AGBD"},
        {"exact match: registered null no longer matches", TRUE, 0, TRUE, {V, kCompressed}, FALSE, FALSE, {}, "AGD"},
        {"merit above do-not-use", FALSE, MERIT_DO_NOT_USE + 1, TRUE, {V, kCompressed}, FALSE, FALSE, {}, "AGB"},
        {"null subtype asked is a wildcard, even exact", TRUE, 0, TRUE, {V, GUID_NULL}, FALSE, FALSE, {}, "AGCBD"},
        {"null major and subtype asked", FALSE, 0, TRUE, {GUID_NULL, GUID_NULL}, FALSE, FALSE, {}, "EAGCBD"},
        {"no input types: any input pin with a type", FALSE, 0, TRUE, {}, FALSE, FALSE, {}, "EAGCBD"},
        {"decoded input without render flag", FALSE, 0, TRUE, {V, kDecoded}, FALSE, FALSE, {}, "CB"},
        {"render flag needs a rendered input pin", FALSE, 0, TRUE, {V, kDecoded}, TRUE, FALSE, {}, "C"},
        {"output side only", FALSE, 0, FALSE, {}, FALSE, TRUE, {V, kDecoded}, "AGFBD"},
        {"both sides must match", FALSE, 0, TRUE, {V, kCompressed}, FALSE, TRUE, {MEDIATYPE_Audio, GUID_NULL}, ""},
        {"both sides match", FALSE, 0, TRUE, {V, kCompressed}, FALSE, TRUE, {V, kDecoded}, "AGBD"},
        {"several input pairs", FALSE, MERIT_UNLIKELY, TRUE, {MEDIATYPE_Audio, MEDIASUBTYPE_PCM, V, kDecoded}, FALSE,
         FALSE, {}, "ECB"},
        {"no side needed: every filter above the floor", FALSE, MERIT_DO_NOT_USE + 1, FALSE, {}, FALSE, FALSE, {},
         "EAGFCB"},
        {"floor above the legacy category's merit", FALSE, MERIT_PREFERRED, FALSE, {}, FALSE, FALSE, {}, ""},
    };
    for (const Query& q : queries) EXPECT_EQ(Run(q), q.expected) << q.what;
}

TEST_F(MapperMatchingTest, CategoriesOfHigherMeritAreSearchedForHigherFloors) {
    ASSERT_EQ(mapper_->CreateCategory(kOwnCategory, MERIT_PREFERRED, Ole("Own").c_str()), S_OK);
    const REGPINTYPES in = {&MEDIATYPE_Video, &kCompressed};
    const REGFILTERPINS2 pin = {0, 0, 1, &in, 0, nullptr, nullptr};
    REGFILTER2 description{};
    description.dwVersion = 2;
    description.dwMerit = MERIT_PREFERRED;
    description.cPins2 = 1;
    description.rgPins2 = &pin;
    ASSERT_EQ(mapper_->RegisterFilter(TestGuid(0x50), Ole("H").c_str(), nullptr, &kOwnCategory, nullptr, &description),
              S_OK);

    const GUID V = MEDIATYPE_Video;
    EXPECT_EQ(Run({"preferred floor", FALSE, MERIT_PREFERRED, TRUE, {V, kCompressed}, FALSE, FALSE, {}, ""}), "H");
    EXPECT_EQ(Run({"no floor", FALSE, 0, TRUE, {V, kCompressed}, FALSE, FALSE, {}, ""}), "HAGBD");
}

TEST_F(MapperMatchingTest, EveryChangeOfTheStoreIsSeenByTheNextQuery) {
    const Query query = {"decoders of the compressed type", FALSE, 0, TRUE, {MEDIATYPE_Video, kCompressed}, FALSE,
                         FALSE, {}, ""};
    EXPECT_EQ(Run(query), "AGBD");
    ASSERT_EQ(mapper_->UnregisterFilter(nullptr, nullptr, TestGuid(0x10)), S_OK);
    EXPECT_EQ(Run(query), "GBD");
    // A FilterData value changed behind the mapper's back: G's merit drops below D's.
    const std::string g = "CLSID\\" + GuidText(CLSID_LegacyAmFilterCategory) + "\\Instance\\" + GuidText(TestGuid(0x11));
    std::vector<BYTE> data = QueryValue(HKEY_CLASSES_ROOT, g, "FilterData");
    ASSERT_GE(data.size(), 8u);
    const DWORD lowMerit = MERIT_DO_NOT_USE - 1;
    std::memcpy(data.data() + 4, &lowMerit, 4);
    ASSERT_EQ(WriteValue(HKEY_CLASSES_ROOT, g, "FilterData", REG_BINARY, data.data(), static_cast<DWORD>(data.size())),
              ERROR_SUCCESS);
    EXPECT_EQ(Run(query), "BDG");
}

TEST_F(MapperMatchingTest, MonikersBindToTheirPropertyBags) {
    IEnumMoniker* found = nullptr;
    const GUID pair[] = {MEDIATYPE_Audio, MEDIASUBTYPE_PCM};
    ASSERT_EQ(mapper_->EnumMatchingFilters(&found, 0, TRUE, 0, TRUE, 1, pair, nullptr, nullptr, FALSE, FALSE, 0,
                                           nullptr, nullptr, nullptr),
              S_OK);
    ComPtr<IEnumMoniker> held = ComPtr<IEnumMoniker>::Attach(found);
    ComPtr<IMoniker> moniker;
    ASSERT_EQ(found->Next(1, moniker.Out(), nullptr), S_OK);
    ComPtr<IPropertyBag> bag;
    ASSERT_EQ(moniker->BindToStorage(nullptr, nullptr, IID_IPropertyBag, bag.OutVoid()), S_OK);
    VARIANT name;
    VariantInit(&name);
    ASSERT_EQ(bag->Read(Ole("FriendlyName").c_str(), &name, nullptr), S_OK);
    ASSERT_EQ(name.vt, VT_BSTR);
    EXPECT_EQ(Narrow(name.bstrVal), "E");
    VariantClear(&name);
    EXPECT_EQ(found->Next(1, moniker.Out(), nullptr), S_FALSE);
}

}  // namespace
}  // namespace zetest

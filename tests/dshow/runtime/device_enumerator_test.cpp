// ICreateDevEnum::CreateClassEnumerator and its monikers: S_FALSE with no enumerator for an empty or
// unknown category, the property bag's value types, binding to the object with IPersistPropertyBag,
// and the system filters that ZeAddSystemFilters brings into every registry store.
#include "dshow/runtime/device_moniker.h"
#include "tests/dshow/runtime/runtime_test_support.h"

namespace zetest {
namespace {

using ze_dsrt::ComObject;
using ze_dsrt::IPersistPropertyBag;
using ze_dsrt::kIID_IPersistPropertyBag;

const GUID kCategory = TestGuid(0x600);
const GUID kLoadable = TestGuid(0x610);
const GUID kSystemFilter = TestGuid(0x700);

// An object that remembers the friendly name of the bag it was loaded from.
class Loadable final : public ComObject<Loadable, IPersistPropertyBag> {
public:
    static std::string lastLoadedName;

    void* FindInterface(REFIID iid) {
        if (IsEqualIID(iid, kIID_IPersistPropertyBag) || IsEqualIID(iid, IID_IPersist))
            return static_cast<IPersistPropertyBag*>(this);
        return nullptr;
    }
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* clsid) override {
        *clsid = kLoadable;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE InitNew() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Load(IPropertyBag* bag, IErrorLog*) override {
        VARIANT name;
        VariantInit(&name);
        const HRESULT hr = bag->Read(Ole("FriendlyName").c_str(), &name, nullptr);
        if (SUCCEEDED(hr)) lastLoadedName = Narrow(name.bstrVal);
        VariantClear(&name);
        return hr;
    }
    HRESULT STDMETHODCALLTYPE Save(IPropertyBag*, BOOL, BOOL) override { return E_NOTIMPL; }
};
std::string Loadable::lastLoadedName;

ze_dsrt::StaticClassFactory g_loadableFactory(ze_dsrt::CreateObject<Loadable>);
HRESULT STDAPICALLTYPE LoadableClassObject(REFCLSID clsid, REFIID iid, LPVOID* object) {
    if (!IsEqualCLSID(clsid, kLoadable) && !IsEqualCLSID(clsid, kSystemFilter)) return CLASS_E_CLASSNOTAVAILABLE;
    return g_loadableFactory.QueryInterface(iid, object);
}

class DeviceEnumeratorTest : public RuntimeTest {
protected:
    void SetUp() override {
        RuntimeTest::SetUp();
        devices_ = Create<ICreateDevEnum>(CLSID_SystemDeviceEnum, IID_ICreateDevEnum);
        mapper_ = Create<IFilterMapper2>(CLSID_FilterMapper2, IID_IFilterMapper2);
        ASSERT_TRUE(devices_ && mapper_);
    }
    void Register(REFCLSID clsid, const char* name, DWORD merit) {
        const REGPINTYPES type = {&MEDIATYPE_Video, &GUID_NULL};
        const REGFILTERPINS2 pin = {0, 1, 1, &type, 0, nullptr, nullptr};
        REGFILTER2 description{};
        description.dwVersion = 2;
        description.dwMerit = merit;
        description.cPins2 = 1;
        description.rgPins2 = &pin;
        ASSERT_EQ(mapper_->RegisterFilter(clsid, Ole(name).c_str(), nullptr, &kCategory, nullptr, &description), S_OK);
    }
    ComPtr<IMoniker> FirstMoniker(REFCLSID category) {
        ComPtr<IEnumMoniker> monikers;
        ComPtr<IMoniker> moniker;
        if (devices_->CreateClassEnumerator(category, monikers.Out(), 0) == S_OK)
            monikers->Next(1, moniker.Out(), nullptr);
        return moniker;
    }
    ComPtr<ICreateDevEnum> devices_;
    ComPtr<IFilterMapper2> mapper_;
};

TEST_F(DeviceEnumeratorTest, EmptyOrUnknownCategoriesGiveSFalseAndNoEnumerator) {
    mapper_->CreateCategory(kCategory, MERIT_NORMAL, Ole("Empty").c_str());
    for (const GUID& category : {kCategory, TestGuid(0x6FF)}) {
        IEnumMoniker* monikers = reinterpret_cast<IEnumMoniker*>(1);
        EXPECT_EQ(devices_->CreateClassEnumerator(category, &monikers, 0), S_FALSE);
        EXPECT_EQ(monikers, nullptr);
    }
    EXPECT_EQ(devices_->CreateClassEnumerator(kCategory, nullptr, 0), E_POINTER);
}

TEST_F(DeviceEnumeratorTest, FlagsSelectSoftwareFiltersAndMerit) {
    Register(TestGuid(0x601), "usable", MERIT_NORMAL);
    Register(TestGuid(0x602), "never", MERIT_DO_NOT_USE);
    const struct {
        DWORD flags;
        std::vector<std::string> expected;
    } cases[] = {
        {0, {DeviceName(kCategory, TestGuid(0x601)), DeviceName(kCategory, TestGuid(0x602))}},
        {CDEF_DEVMON_FILTER, {DeviceName(kCategory, TestGuid(0x601)), DeviceName(kCategory, TestGuid(0x602))}},
        {CDEF_MERIT_ABOVE_DO_NOT_USE, {DeviceName(kCategory, TestGuid(0x601))}},
        {CDEF_DEVMON_DMO, {}},
    };
    for (const auto& c : cases) {
        ComPtr<IEnumMoniker> monikers;
        EXPECT_EQ(devices_->CreateClassEnumerator(kCategory, monikers.Out(), c.flags), c.expected.empty() ? S_FALSE : S_OK);
        EXPECT_EQ(DisplayNames(monikers.Get()), c.expected) << c.flags;
    }
}

TEST_F(DeviceEnumeratorTest, PropertyBagGivesEachRegistryTypeItsVariantType) {
    Register(kLoadable, "Bag Filter", MERIT_UNLIKELY);
    const std::string key = "CLSID\\" + GuidText(kCategory) + "\\Instance\\" + GuidText(kLoadable);
    ASSERT_EQ(WriteNumber(HKEY_CLASSES_ROOT, key, "Number", 0xFFFFFFFE), ERROR_SUCCESS);
    const std::vector<BYTE> stored = QueryValue(HKEY_CLASSES_ROOT, key, "FilterData");

    ComPtr<IMoniker> moniker = FirstMoniker(kCategory);
    ASSERT_TRUE(moniker);
    ComPtr<IPropertyBag> bag;
    ASSERT_EQ(moniker->BindToStorage(nullptr, nullptr, IID_IPropertyBag, bag.OutVoid()), S_OK);

    const struct {
        const char* name;
        HRESULT hr;
        VARTYPE vt;
    } reads[] = {
        {"FriendlyName", S_OK, VT_BSTR},
        {"CLSID", S_OK, VT_BSTR},
        {"FilterData", S_OK, VT_ARRAY | VT_UI1},
        {"Number", S_OK, VT_I4},
        {"Missing", HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), VT_EMPTY},
    };
    for (const auto& r : reads) {
        VARIANT value;
        VariantInit(&value);
        EXPECT_EQ(bag->Read(Ole(r.name).c_str(), &value, nullptr), r.hr) << r.name;
        EXPECT_EQ(value.vt, r.vt) << r.name;
        if (value.vt == VT_BSTR) {
            EXPECT_EQ(Narrow(value.bstrVal), r.name[0] == 'F' ? "Bag Filter" : GuidText(kLoadable));
        }
        if (value.vt == VT_I4) {
            EXPECT_EQ(value.lVal, -2);
        }
        if (value.vt == (VT_ARRAY | VT_UI1)) {
            void* data = nullptr;
            ASSERT_EQ(SafeArrayAccessData(value.parray, &data), S_OK);
            EXPECT_EQ(std::vector<BYTE>(static_cast<BYTE*>(data), static_cast<BYTE*>(data) + stored.size()), stored);
            LONG upper = 0;
            SafeArrayGetUBound(value.parray, 1, &upper);
            EXPECT_EQ(static_cast<size_t>(upper) + 1, stored.size());
            SafeArrayUnaccessData(value.parray);
        }
        VariantClear(&value);
    }
}

TEST_F(DeviceEnumeratorTest, BindToObjectCreatesTheClassAndLoadsItFromTheBag) {
    Register(kLoadable, "Loaded From Bag", MERIT_NORMAL);
    ComPtr<IMoniker> moniker = FirstMoniker(kCategory);
    ASSERT_TRUE(moniker);

    // Not a class the COM runtime knows yet.
    ComPtr<IPersist> object;
    EXPECT_EQ(moniker->BindToObject(nullptr, nullptr, IID_IPersist, object.OutVoid()), REGDB_E_CLASSNOTREG);

    ZeRegisterBuiltinClass(kLoadable, LoadableClassObject);
    Loadable::lastLoadedName.clear();
    ASSERT_EQ(moniker->BindToObject(nullptr, nullptr, IID_IPersist, object.OutVoid()), S_OK);
    CLSID clsid{};
    EXPECT_EQ(object->GetClassID(&clsid), S_OK);
    EXPECT_EQ(clsid, kLoadable);
    EXPECT_EQ(Loadable::lastLoadedName, "Loaded From Bag");
    ComPtr<IBaseFilter> filter;
    EXPECT_EQ(moniker->BindToObject(nullptr, nullptr, IID_IBaseFilter, filter.OutVoid()), E_NOINTERFACE);
    ZeRegisterBuiltinClass(kLoadable, nullptr);
}

// A system filter of the runtime: merit and types chosen so that no other test's query sees it.
const GUID kSystemMajor = TestGuid(0x777);
const REGPINTYPES kSystemType = {&kSystemMajor, &GUID_NULL};
const REGFILTERPINS2 kSystemPin = {REG_PINFLAG_B_OUTPUT, 0, 1, &kSystemType, 0, nullptr, nullptr};
const ZeSystemFilter kSystemRow = {&kSystemFilter, "System Test Filter", MERIT_DO_NOT_USE, 1, &kSystemPin,
                                   LoadableClassObject};

TEST_F(DeviceEnumeratorTest, SystemFiltersAreInEveryStoreTheRuntimeReads) {
    ZeAddSystemFilters(&kSystemRow, 1);
    const std::string instance = "CLSID\\" + GuidText(CLSID_LegacyAmFilterCategory) + "\\Instance\\" +
                                 GuidText(kSystemFilter);
    const std::vector<BYTE> name = QueryValue(HKEY_CLASSES_ROOT, instance, "FriendlyName");
    EXPECT_EQ(std::string(name.begin(), name.end()), std::string("System Test Filter", 19));
    const std::vector<BYTE> own = QueryValue(HKEY_CLASSES_ROOT, "CLSID\\" + GuidText(kSystemFilter), nullptr);
    EXPECT_EQ(std::string(own.begin(), own.end()), std::string("System Test Filter", 19));
    const std::string category = "CLSID\\{DA4E3DA0-D07D-11D0-BD50-00A0C911CE86}\\Instance\\" +
                                 GuidText(CLSID_LegacyAmFilterCategory);
    EXPECT_EQ(QueryNumber(HKEY_CLASSES_ROOT, category, "Merit"), MERIT_NORMAL);

    // A second store, with the name spoilt: the first enumeration in this process puts it right.
    RegistrySandbox second;
    ASSERT_EQ(WriteValue(HKEY_CLASSES_ROOT, instance, "FriendlyName", REG_SZ, "old", 4), ERROR_SUCCESS);
    ComPtr<IEnumMoniker> monikers;
    const GUID pair[] = {kSystemMajor, GUID_NULL};
    ASSERT_EQ(mapper_->EnumMatchingFilters(monikers.Out(), 0, FALSE, 0, FALSE, 0, nullptr, nullptr, nullptr, FALSE,
                                           TRUE, 1, pair, nullptr, nullptr),
              S_OK);
    EXPECT_EQ(DisplayNames(monikers.Get()), std::vector<std::string>{DeviceName(CLSID_LegacyAmFilterCategory, kSystemFilter)});
    const std::vector<BYTE> fixed = QueryValue(HKEY_CLASSES_ROOT, instance, "FriendlyName");
    EXPECT_EQ(std::string(fixed.begin(), fixed.end()), std::string("System Test Filter", 19));

    // The class is built in: created without any InprocServer32 entry.
    ComPtr<IPersist> object;
    EXPECT_EQ(CoCreateInstance(kSystemFilter, nullptr, CLSCTX_INPROC_SERVER, IID_IPersist, object.OutVoid()), S_OK);
}

}  // namespace
}  // namespace zetest

// The module's class factory, linked into the test: class choice by the latest class id, instance
// names, the live count behind DllCanUnloadNow, and the failure codes with their reports.
#include <gtest/gtest.h>

#ifdef ZE_MODULE_PATH
#include <string>

#include "platform/win32.h"
#include "reader/module/ze_avi_reader_class.h"
#include "reader/ze_module_state.h"
#include "reader/status/ze_error_report.h"
#include "reader/ze_avi_reader.h"

namespace {

// {0BADC1A5-0000-4000-8000-000000000001}
constexpr CLSID kUnknownClass = {0x0badc1a5, 0x0000, 0x4000, {0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01}};

IClassFactory* FactoryFor(const CLSID& clsid) {
    void* object = nullptr;
    EXPECT_EQ(S_OK, ZeGetClassObject(&clsid, &IID_IClassFactory, &object));
    return static_cast<IClassFactory*>(object);
}

bool LastReportNames(const char* classAndMethod) {
    const std::vector<std::string> lines = GetReportList();
    return !lines.empty() && lines.back().find(classAndMethod) != std::string::npos;
}

class ModuleFactoryTest : public ::testing::Test {
protected:
    void SetUp() override {
        SetErrorContext("");
        baseLive_ = ZeModuleLiveCount();
    }
    void TearDown() override { EXPECT_EQ(baseLive_, ZeModuleLiveCount()); }
    LONG baseLive_ = 0;
};

TEST_F(ModuleFactoryTest, CreatesTheReaderWithNumberedNames) {
    IClassFactory* factory = FactoryFor(CLSID_ZEAviReaderModule);
    ASSERT_NE(nullptr, factory);
    const LONG first = ZeClassFactory().InstanceCount();

    IUnknown* a = nullptr;
    IUnknown* b = nullptr;
    ASSERT_EQ(S_OK, factory->CreateInstance(nullptr, IID_IZEVideoStream, reinterpret_cast<void**>(&a)));
    ASSERT_EQ(S_OK, factory->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(&b)));
    // The object's IUnknown is its first interface.
    const CZEAviReader* readerA = static_cast<CZEAviReader*>(reinterpret_cast<IZEVideoStream*>(a));
    const CZEAviReader* readerB = static_cast<CZEAviReader*>(reinterpret_cast<IZEVideoStream*>(b));
    EXPECT_EQ("Instance_" + std::to_string(first), readerA->GetName());
    EXPECT_EQ("Instance_" + std::to_string(first + 1), readerB->GetName());

    // Factory and two objects keep the module loaded.
    EXPECT_EQ(baseLive_ + 3, ZeModuleLiveCount());
    EXPECT_EQ(S_FALSE, ZeCanUnloadNow());
    a->Release();
    b->Release();
    factory->Release();
    EXPECT_EQ(baseLive_, ZeModuleLiveCount());
    if (baseLive_ == 0) {
        EXPECT_EQ(S_OK, ZeCanUnloadNow());
    }
}

TEST_F(ModuleFactoryTest, FailuresAreReportedOnceWithTheirCodes) {
    IClassFactory* factory = FactoryFor(kUnknownClass);  // any class id is accepted here
    ASSERT_NE(nullptr, factory);
    void* object = reinterpret_cast<void*>(1);
    const LONG before = ZeClassFactory().InstanceCount();

    EXPECT_EQ(E_FAIL, factory->CreateInstance(nullptr, IID_IUnknown, &object));
    EXPECT_EQ(nullptr, object);
    EXPECT_EQ(E_FAIL, GetLastReportedError());
    EXPECT_TRUE(LastReportNames("CZEAviReaderClass::CreateInstance"));

    // Aggregation is refused but still uses up an instance number.
    IUnknown* outer = reinterpret_cast<IUnknown*>(factory);
    EXPECT_EQ(CLASS_E_NOAGGREGATION, factory->CreateInstance(outer, IID_IUnknown, &object));
    EXPECT_EQ(CLASS_E_NOAGGREGATION, GetLastReportedError());
    EXPECT_EQ(before + 2, ZeClassFactory().InstanceCount());

    // A filter asked for an interface it lacks is destroyed again, and the failure is the filter's.
    const struct {
        CLSID clsid;
        const char* reporter;
    } filters[] = {
        {CLSID_ZEVideoSourceFilter, "CZEVideoSourceFilter::CreateZEVideoSourceFilter"},
        {CLSID_ZEVideoRenderFilter, "CZEVideoRenderFilter::CreateZEVideoRenderFilter"},
    };
    for (const auto& filter : filters) {
        IClassFactory* filterFactory = FactoryFor(filter.clsid);
        const size_t before = GetReportList().size();
        EXPECT_EQ(E_NOINTERFACE, filterFactory->CreateInstance(nullptr, IID_IClassFactory, &object));
        EXPECT_EQ(nullptr, object);
        EXPECT_EQ(before + 1, GetReportList().size());
        EXPECT_TRUE(LastReportNames(filter.reporter));
        filterFactory->Release();
    }

    // A reader that lacks the interface asked for is destroyed again at once.
    IClassFactory* readerFactory = FactoryFor(CLSID_ZEAviReaderModule);
    const size_t reports = GetReportList().size();
    EXPECT_EQ(E_NOINTERFACE, readerFactory->CreateInstance(nullptr, IID_IClassFactory, &object));
    EXPECT_EQ(nullptr, object);
    EXPECT_EQ(reports + 1, GetReportList().size());
    EXPECT_EQ(E_POINTER, readerFactory->CreateInstance(nullptr, IID_IUnknown, nullptr));
    readerFactory->Release();
    factory->Release();
}

TEST_F(ModuleFactoryTest, OneFactoryFollowsTheLatestClassId) {
    IClassFactory* first = FactoryFor(CLSID_ZEAviReaderModule);
    IClassFactory* second = FactoryFor(kUnknownClass);
    EXPECT_EQ(first, second);
    void* object = nullptr;
    // The earlier pointer now creates what the later call asked for.
    EXPECT_EQ(E_FAIL, first->CreateInstance(nullptr, IID_IUnknown, &object));
    second->Release();
    first->Release();
}

TEST_F(ModuleFactoryTest, FactoryIdentityLocksAndBadArguments) {
    IClassFactory* factory = FactoryFor(CLSID_ZEAviReaderModule);
    void* unknown = nullptr;
    ASSERT_EQ(S_OK, factory->QueryInterface(IID_IUnknown, &unknown));
    EXPECT_EQ(static_cast<void*>(factory), unknown);
    static_cast<IUnknown*>(unknown)->Release();
    void* other = reinterpret_cast<void*>(1);
    EXPECT_EQ(E_NOINTERFACE, factory->QueryInterface(IID_IZEVideoStream, &other));
    EXPECT_EQ(E_POINTER, factory->QueryInterface(IID_IUnknown, nullptr));

    // A server lock keeps the module even without objects or factory references.
    EXPECT_EQ(S_OK, factory->LockServer(TRUE));
    factory->Release();
    EXPECT_EQ(baseLive_ + 1, ZeModuleLiveCount());
    EXPECT_EQ(S_FALSE, ZeCanUnloadNow());
    EXPECT_EQ(S_OK, ZeClassFactory().LockServer(FALSE));

    // A missing class id gives E_FAIL and no object; a missing out-pointer E_POINTER.
    void* object = reinterpret_cast<void*>(1);
    EXPECT_EQ(E_FAIL, ZeGetClassObject(nullptr, &IID_IClassFactory, &object));
    EXPECT_EQ(nullptr, object);
    EXPECT_TRUE(LastReportNames("::DllGetClassObject"));
    EXPECT_EQ(E_POINTER, ZeGetClassObject(&CLSID_ZEAviReaderModule, &IID_IClassFactory, nullptr));
    object = reinterpret_cast<void*>(1);
    EXPECT_EQ(E_NOINTERFACE, ZeGetClassObject(&CLSID_ZEAviReaderModule, &IID_IZEStatus, &object));
    EXPECT_EQ(nullptr, object);
}

}  // namespace
#endif

// The built module's class factory creating the decoding graph's two filters, reached the way a host
// or the system's COM runtime reaches it: DllGetClassObject with each filter's class id.
#include <gtest/gtest.h>

#include "graph/ze_com_ref.h"
#include "graph/ze_graph_interfaces.h"
#include "tests/support/reader_module.h"

namespace {

// The class ids as the module registers them.
const CLSID kSourceFilter = {0x4b9e6a07, 0xd2c8, 0x4e1f, {0x93, 0xa5, 0x7f, 0x0c, 0x1b, 0x2d, 0x6e, 0x84}};
const CLSID kRenderFilter = {0x7d3a51c2, 0x9e4b, 0x4f08, {0xa6, 0xd1, 0x2c, 0x5b, 0x8e, 0x90, 0xf1, 0x43}};

ZeComRef<IClassFactory> FactoryFor(REFCLSID clsid)
{
    void* factory = nullptr;
    EXPECT_EQ(zetest::ReaderModule().getClassObject(clsid, IID_IClassFactory, &factory), S_OK);
    return ZeComRef<IClassFactory>(static_cast<IClassFactory*>(factory));
}

TEST(ModuleFactoryFiltersTest, EachFilterUnderItsClassIdWithItsInterfaceAndPin)
{
    ASSERT_NE(zetest::ReaderModule().getClassObject, nullptr) << "libzeavireader.so was not built beside the tests";
    const struct {
        CLSID clsid;
        IID own;
        PIN_DIRECTION pin;
    } cases[] = {
        {kSourceFilter, IID_IZEVideoSourceFilter, PINDIR_OUTPUT},
        {kRenderFilter, IID_IZEVideoRenderFilter, PINDIR_INPUT},
    };
    for (const auto& c : cases) {
        const ZeComRef<IClassFactory> factory = FactoryFor(c.clsid);
        ASSERT_TRUE(factory);
        void* raw = nullptr;
        ASSERT_EQ(factory->CreateInstance(nullptr, IID_IBaseFilter, &raw), S_OK);
        const ZeComRef<IBaseFilter> filter(static_cast<IBaseFilter*>(raw));
        CLSID clsid{};
        ASSERT_EQ(filter->GetClassID(&clsid), S_OK);
        EXPECT_TRUE(IsEqualCLSID(clsid, c.clsid));
        void* own = nullptr;
        ASSERT_EQ(filter->QueryInterface(c.own, &own), S_OK);
        static_cast<IUnknown*>(own)->Release();

        IEnumPins* rawPins = nullptr;
        ASSERT_EQ(filter->EnumPins(&rawPins), S_OK);
        const ZeComRef<IEnumPins> pins(rawPins);
        IPin* rawPin = nullptr;
        ASSERT_EQ(pins->Next(1, &rawPin, nullptr), S_OK);
        const ZeComRef<IPin> pin(rawPin);
        PIN_DIRECTION direction = c.pin == PINDIR_INPUT ? PINDIR_OUTPUT : PINDIR_INPUT;
        EXPECT_EQ(pin->QueryDirection(&direction), S_OK);
        EXPECT_EQ(direction, c.pin);
        IPin* extra = nullptr;
        EXPECT_EQ(pins->Next(1, &extra, nullptr), S_FALSE);  // one pin each

        // No aggregation through the module's factory.
        void* aggregated = reinterpret_cast<void*>(1);
        EXPECT_EQ(factory->CreateInstance(filter.get(), IID_IUnknown, &aggregated), CLASS_E_NOAGGREGATION);
        EXPECT_EQ(aggregated, nullptr);
    }
}

TEST(ModuleFactoryFiltersTest, AFilterOutlivesTheFactoryThatMadeIt)
{
    void* raw = nullptr;
    {
        const ZeComRef<IClassFactory> factory = FactoryFor(kRenderFilter);
        ASSERT_EQ(factory->CreateInstance(nullptr, IID_IZEVideoRenderFilter, &raw), S_OK);
    }
    const ZeComRef<IZEVideoRenderFilter> render(static_cast<IZEVideoRenderFilter*>(raw));
    EXPECT_EQ(render->IsFrameMissing(), S_FALSE);
}

}  // namespace

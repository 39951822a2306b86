// Direct loading of a decoder module from the RegModule folder beside the module: the path built the
// Windows way from the module's own file name, and the whole load through a real library (the test
// decoder module "mc_dec_avc_ds.ax") placed beside a module file the test chooses.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <string>

#include "graph/ze_com_ref.h"
#include "graph/ze_module_loading.h"
#include "platform/win32_dshow.h"
#include "reader/status/ze_error_report.h"
#include "tests/support/temp_dir.h"

namespace {

// {96B9D0ED-8D13-4171-A983-B84D88D627BE}, the class the test decoder module creates.
const CLSID kAvcDecoderClass = {0x96b9d0ed, 0x8d13, 0x4171, {0xa9, 0x83, 0xb8, 0x4d, 0x88, 0xd6, 0x27, 0xbe}};
// {5A157B06-E2F2-4109-994D-49398207FF22}, a class the test module does not have.
const CLSID kOtherAvcClass = {0x5a157b06, 0xe2f2, 0x4109, {0x99, 0x4d, 0x49, 0x39, 0x82, 0x07, 0xff, 0x22}};

TEST(RegModulePathTest, FolderOfTheModuleThenRegModuleThenTheFile)
{
    const struct {
        const char* own;
        const char* wanted;
    } cases[] = {
        {"C:\\Plugins\\ZEAviReader.dll", "C:\\Plugins\\RegModule\\mc_dec_avc_ds.ax"},
        {"C:\\Program Files\\Host\\Plugins\\ZEAviReader.dll", "C:\\Program Files\\Host\\Plugins\\RegModule\\mc_dec_avc_ds.ax"},
        // A path that already ends in a backslash gets no second one.
        {"C:\\Plugins\\", "C:\\Plugins\\RegModule\\mc_dec_avc_ds.ax"},
        {"D:ZEAviReader.dll", "D:RegModule\\mc_dec_avc_ds.ax"},
        {"\\\\server\\share\\ZEAviReader.dll", "\\\\server\\share\\RegModule\\mc_dec_avc_ds.ax"},
        {"/opt/host/libzeavireader.so", "/opt/host/RegModule\\mc_dec_avc_ds.ax"},
        {"ZEAviReader.dll", "RegModule\\mc_dec_avc_ds.ax"},
    };
    for (const auto& c : cases) {
        std::string path;
        ASSERT_TRUE(ZeRegModulePath(c.own, "mc_dec_avc_ds.ax", &path)) << c.own;
        EXPECT_EQ(path, c.wanted) << c.own;
    }
}

TEST(RegModulePathTest, PathsPastMaxPathAreRefused)
{
    const std::string folder = "C:\\" + std::string(241, 'a') + "\\";
    std::string path = "unchanged";
    EXPECT_TRUE(ZeRegModulePath((folder + "m.dll").c_str(), "x.ax", &path));  // 259 characters fit
    EXPECT_EQ(path.size(), 259u);
    EXPECT_FALSE(ZeRegModulePath((folder + "m.dll").c_str(), "xy.ax", &path));
}

TEST(OwnModuleTest, IsTheProgramHoldingTheCode)
{
    char name[MAX_PATH] = {};
    ASSERT_GT(GetModuleFileNameA(ZeOwnModule(), name, MAX_PATH), 0u);
    EXPECT_EQ(std::filesystem::canonical(name), std::filesystem::canonical("/proc/self/exe"));
}

// A folder holding a copy of the test module under a host module's name, and a RegModule folder.
class ModuleLoadingTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        SetErrorContext("");
        std::filesystem::create_directory(m_dir.Path() + "/RegModule");
        // Any loadable library stands in for this module; only its file name matters.
        m_ownFile = m_dir.Path() + "/ZEAviReader.so";
        std::filesystem::copy_file(ZE_TEST_AVC_MODULE, m_ownFile);
        m_own = LoadLibraryA(m_ownFile.c_str());
        ASSERT_NE(m_own, nullptr);
    }
    void PlaceDecoderModule(const char* name) const
    {
        std::filesystem::copy_file(ZE_TEST_AVC_MODULE, m_dir.Path() + "/RegModule/" + name);
    }

    zetest::TempDir m_dir;
    std::string m_ownFile;
    HMODULE m_own = nullptr;
};

TEST_F(ModuleLoadingTest, CreatesTheFilterThroughTheModulesOwnFactory)
{
    PlaceDecoderModule("mc_dec_avc_ds.ax");
    void* object = nullptr;
    ASSERT_EQ(LoadModuleClassObject("mc_dec_avc_ds.ax", kAvcDecoderClass, IID_IBaseFilter, &object, m_own), S_OK);
    const ZeComRef<IBaseFilter> filter(static_cast<IBaseFilter*>(object));
    CLSID clsid{};
    ASSERT_EQ(filter->GetClassID(&clsid), S_OK);
    EXPECT_TRUE(IsEqualCLSID(clsid, kAvcDecoderClass));
    // The module stays loaded after its factory is gone.
    EXPECT_NE(GetModuleHandleA((m_dir.Path() + "/RegModule/mc_dec_avc_ds.ax").c_str()), nullptr);
    EXPECT_TRUE(GetReportList().empty());
}

TEST_F(ModuleLoadingTest, FailuresComeBackUnreported)
{
    m_dir.Put("RegModule/notalibrary.ax", "plain text, not a library");
    PlaceDecoderModule("mc_dec_avc_ds.ax");
    const struct {
        const char* file;
        CLSID clsid;
        IID iid;
        HRESULT wanted;
    } cases[] = {
        {"missing.ax", kAvcDecoderClass, IID_IBaseFilter, E_FAIL},
        {"notalibrary.ax", kAvcDecoderClass, IID_IBaseFilter, E_FAIL},
        {nullptr, kAvcDecoderClass, IID_IBaseFilter, E_POINTER},
        // The module's own answers pass through: an unknown class, an interface the filter lacks.
        {"mc_dec_avc_ds.ax", kOtherAvcClass, IID_IBaseFilter, CLASS_E_CLASSNOTAVAILABLE},
        {"mc_dec_avc_ds.ax", kAvcDecoderClass, IID_IClassFactory, E_NOINTERFACE},
    };
    for (const auto& c : cases) {
        void* object = reinterpret_cast<void*>(1);
        EXPECT_EQ(LoadModuleClassObject(c.file, c.clsid, c.iid, &object, m_own), c.wanted)
            << (c.file ? c.file : "(null)");
        if (c.file != nullptr) {
            EXPECT_EQ(object, nullptr);
        }
    }
    EXPECT_TRUE(GetReportList().empty());
}

TEST(ModuleLoadingOwnFolderTest, NoRegModuleBesideTheProgramMeansFailure)
{
    void* object = nullptr;
    EXPECT_EQ(LoadModuleClassObject("mc_dec_avc_ds.ax", kAvcDecoderClass, IID_IBaseFilter, &object), E_FAIL);
    EXPECT_EQ(object, nullptr);
}

}  // namespace

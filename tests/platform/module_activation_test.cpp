// The built module as a host meets it: registered by path under its class id, activated through
// CoCreateInstance, answering through its interfaces, and unloadable once everything is released.
#include <gtest/gtest.h>

#ifdef ZE_MODULE_PATH
#include <string>

#include "platform/win32.h"
#include "reader/ze_host_interfaces.h"
#include "tests/platform/registry_sandbox.h"

namespace {

void RegisterModuleByPath() {
    HKEY key = nullptr;
    ASSERT_EQ(ERROR_SUCCESS,
              RegCreateKeyExA(HKEY_CLASSES_ROOT, "CLSID\\{C3A8E5D1-6F2B-4A97-B0E4-19D7C5A3F260}\\InprocServer32", 0,
                              nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr));
    const std::string path = ZE_MODULE_PATH;
    ASSERT_EQ(ERROR_SUCCESS, RegSetValueExA(key, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(path.c_str()),
                                            static_cast<DWORD>(path.size() + 1)));
    RegCloseKey(key);
}

TEST(ModuleActivationTest, HostCreatesTheReaderThroughTheRegistry) {
    RegistrySandbox sandbox;
    RegisterModuleByPath();
    ASSERT_EQ(S_OK, CoInitialize(nullptr));

    IZEVideoImportPlugIn* plugIn = nullptr;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_ZEAviReaderModule, nullptr, CLSCTX_INPROC_SERVER, IID_IZEVideoImportPlugIn,
                                     reinterpret_cast<void**>(&plugIn)));
    ASSERT_NE(nullptr, plugIn);
    ZeModuleInfo info{};
    ASSERT_EQ(S_OK, plugIn->GetModuleInfo(&info));
    EXPECT_TRUE(IsEqualCLSID(CLSID_ZEAviReaderModule, info.clsid));
    // The module's task memory is the host's: the strings are freed here.
    ASSERT_NE(nullptr, info.fileType);
    EXPECT_STREQ("AVI", info.fileType);
    CoTaskMemFree(info.fileType);
    CoTaskMemFree(info.description);

    // Both sides of the module agree on its unload state.
    HMODULE module = GetModuleHandleA(ZE_MODULE_PATH);
    ASSERT_NE(nullptr, module);
    auto canUnload = reinterpret_cast<LPFNCANUNLOADNOW>(GetProcAddress(module, "DllCanUnloadNow"));
    ASSERT_NE(nullptr, canUnload);
    EXPECT_EQ(S_FALSE, canUnload());
    IZEStatus* status = nullptr;
    ASSERT_EQ(S_OK, plugIn->QueryInterface(IID_IZEStatus, reinterpret_cast<void**>(&status)));
    plugIn->Release();
    EXPECT_EQ(S_FALSE, canUnload());
    status->Release();
    EXPECT_EQ(S_OK, canUnload());

    // The filters' class ids reach the module too, which cannot make them in this build.
    void* object = nullptr;
    HKEY key = nullptr;
    ASSERT_EQ(ERROR_SUCCESS,
              RegCreateKeyExA(HKEY_CLASSES_ROOT, "CLSID\\{4B9E6A07-D2C8-4E1F-93A5-7F0C1B2D6E84}\\InprocServer32", 0,
                              nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr));
    const std::string path = ZE_MODULE_PATH;
    RegSetValueExA(key, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(path.c_str()),
                   static_cast<DWORD>(path.size() + 1));
    RegCloseKey(key);
    const CLSID source = {0x4b9e6a07, 0xd2c8, 0x4e1f, {0x93, 0xa5, 0x7f, 0x0c, 0x1b, 0x2d, 0x6e, 0x84}};
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE,
              CoCreateInstance(source, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &object));
    EXPECT_EQ(nullptr, object);
    EXPECT_EQ(S_OK, canUnload());
    CoUninitialize();
}

}  // namespace
#endif

// Activation: built-in classes, in-process servers found through the registry, and the failure codes
// of each step.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <unistd.h>

#include "platform/win32.h"
#include "reader/api/ze_host_interfaces.h"
#include "tests/platform/inproc_server/ze_test_server.h"
#include "tests/support/registry_sandbox.h"

namespace {

// {A1B2C3D4-0000-4000-8000-00000000B117}
constexpr CLSID kBuiltinClass = {0xa1b2c3d4, 0x0000, 0x4000, {0x80, 0x00, 0x00, 0x00, 0x00, 0x00, 0xb1, 0x17}};

// A built-in class: the test's own adder, which is its own class object too.
class LocalAdder final : public IZeTestAdder, public IClassFactory {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IZeTestAdder))
            *object = static_cast<IZeTestAdder*>(this);
        else if (IsEqualIID(iid, IID_IClassFactory))
            *object = static_cast<IClassFactory*>(this);
        else
            return E_NOINTERFACE;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE Add(LONG a, LONG b, LONG* sum) override {
        *sum = a * 100 + b;  // unlike the server's, so the two can be told apart
        return S_OK;
    }
    LONG STDMETHODCALLTYPE LiveObjects() override { return -1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID iid, void** object) override {
        return IsEqualIID(iid, IID_IClassFactory) ? E_NOINTERFACE : QueryInterface(iid, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

LocalAdder g_localAdder;
int g_localRequests = 0;

HRESULT STDAPICALLTYPE LocalClassObject(REFCLSID, REFIID iid, LPVOID* object) {
    ++g_localRequests;
    return static_cast<IClassFactory&>(g_localAdder).QueryInterface(iid, object);
}

// Registration must succeed for the activation that follows to mean anything.
void RegisterServer(REFCLSID clsid, const std::string& path, DWORD type = REG_SZ) {
    ASSERT_EQ(ERROR_SUCCESS, zetest::RegisterServer(clsid, path, type));
}

class ComActivationTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(S_OK, CoInitialize(nullptr)); }
    void TearDown() override {
        ZeRegisterBuiltinClass(kBuiltinClass, nullptr);
        CoUninitialize();
    }
    zetest::RegistrySandbox sandbox;
};

TEST_F(ComActivationTest, BuiltinClassesComeFirstAndCanBeRemoved) {
    ZeRegisterBuiltinClass(kBuiltinClass, &LocalClassObject);
    IZeTestAdder* adder = nullptr;
    ASSERT_EQ(S_OK, CoCreateInstance(kBuiltinClass, nullptr, CLSCTX_INPROC_SERVER, IID_IZeTestAdder,
                                     reinterpret_cast<void**>(&adder)));
    LONG sum = 0;
    ASSERT_EQ(S_OK, adder->Add(4, 2, &sum));
    EXPECT_EQ(402, sum);
    adder->Release();

    // A registry entry for the same class does not win over the built-in one.
    RegisterServer(kBuiltinClass, "/nonexistent/server.so");
    const int before = g_localRequests;
    IClassFactory* factory = nullptr;
    ASSERT_EQ(S_OK, CoGetClassObject(kBuiltinClass, CLSCTX_ALL, nullptr, IID_IClassFactory,
                                     reinterpret_cast<void**>(&factory)));
    EXPECT_EQ(before + 1, g_localRequests);
    factory->Release();

    // Removed, the registry entry is used, and its module is missing.
    ZeRegisterBuiltinClass(kBuiltinClass, nullptr);
    void* object = reinterpret_cast<void*>(1);
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND),
              CoCreateInstance(kBuiltinClass, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &object));
    EXPECT_EQ(nullptr, object);
}

TEST_F(ComActivationTest, ContextsAndArguments) {
    ZeRegisterBuiltinClass(kBuiltinClass, &LocalClassObject);
    void* object = nullptr;
    EXPECT_EQ(REGDB_E_CLASSNOTREG,
              CoCreateInstance(kBuiltinClass, nullptr, CLSCTX_LOCAL_SERVER, IID_IUnknown, &object));
    EXPECT_EQ(E_POINTER, CoCreateInstance(kBuiltinClass, nullptr, CLSCTX_ALL, IID_IUnknown, nullptr));
    EXPECT_EQ(E_INVALIDARG, CoGetClassObject(kBuiltinClass, CLSCTX_ALL, nullptr, IID_IClassFactory, nullptr));
    EXPECT_EQ(E_NOINTERFACE, CoCreateInstance(kBuiltinClass, nullptr, CLSCTX_ALL, IID_IClassFactory, &object));
}

TEST_F(ComActivationTest, UninitialisedThreadsAreRefusedUnlessAMultithreadedApartmentExists) {
    ZeRegisterBuiltinClass(kBuiltinClass, &LocalClassObject);
    HRESULT alone = S_OK, withMta = S_OK;
    std::thread([&] {
        void* object = nullptr;
        alone = CoCreateInstance(kBuiltinClass, nullptr, CLSCTX_ALL, IID_IUnknown, &object);
    }).join();
    EXPECT_EQ(CO_E_NOTINITIALIZED, alone);

    // While one thread is in the multithreaded apartment, every thread belongs to it implicitly.
    std::thread([&] {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_MULTITHREADED));
        std::thread([&] {
            void* object = nullptr;
            withMta = CoCreateInstance(kBuiltinClass, nullptr, CLSCTX_ALL, IID_IUnknown, &object);
        }).join();
        CoUninitialize();
    }).join();
    EXPECT_EQ(S_OK, withMta);
}

TEST_F(ComActivationTest, UnregisteredAndBrokenRegistrations) {
    void* object = reinterpret_cast<void*>(1);
    EXPECT_EQ(REGDB_E_CLASSNOTREG, CoCreateInstance(kBuiltinClass, nullptr, CLSCTX_ALL, IID_IUnknown, &object));
    EXPECT_EQ(nullptr, object);

    // A key without a default value, or with one of a type that names no file.
    zetest::Key key;
    ASSERT_EQ(ERROR_SUCCESS,
              zetest::CreateKey(HKEY_CLASSES_ROOT, "CLSID\\" + zetest::GuidText(kBuiltinClass) + "\\InprocServer32", key));
    EXPECT_EQ(REGDB_E_CLASSNOTREG, CoCreateInstance(kBuiltinClass, nullptr, CLSCTX_ALL, IID_IUnknown, &object));
    RegisterServer(kBuiltinClass, "/some/path.so", REG_BINARY);
    EXPECT_EQ(REGDB_E_CLASSNOTREG, CoCreateInstance(kBuiltinClass, nullptr, CLSCTX_ALL, IID_IUnknown, &object));

    // A file that is not a library, and a library without DllGetClassObject.
    RegisterServer(kBuiltinClass, sandbox.Path());
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_BAD_EXE_FORMAT),
              CoCreateInstance(kBuiltinClass, nullptr, CLSCTX_ALL, IID_IUnknown, &object));
    RegisterServer(kBuiltinClass, "libm.so.6");
    EXPECT_EQ(CO_E_ERRORINDLL, CoCreateInstance(kBuiltinClass, nullptr, CLSCTX_ALL, IID_IUnknown, &object));
}

#ifdef ZE_TEST_SERVER_PATH
TEST_F(ComActivationTest, InprocServerFromTheRegistry) {
    // Registered with Windows separators and a drive, as a Windows installer would write it.
    std::string windowsPath = std::string("C:") + ZE_TEST_SERVER_PATH;
    for (char& c : windowsPath)
        if (c == '/') c = '\\';
    RegisterServer(CLSID_ZeTestAdder, windowsPath);

    IZeTestAdder* adder = nullptr;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_ZeTestAdder, nullptr, CLSCTX_INPROC_SERVER, IID_IZeTestAdder,
                                     reinterpret_cast<void**>(&adder)));
    LONG sum = 0;
    ASSERT_EQ(S_OK, adder->Add(40, 2, &sum));
    EXPECT_EQ(42, sum);
    EXPECT_EQ(1, adder->LiveObjects());

    // A REG_EXPAND_SZ path has its environment variables filled in.
    const std::string full = ZE_TEST_SERVER_PATH;
    const size_t slash = full.rfind('/');
    ::setenv("ZE_TEST_SERVER_FOLDER", full.substr(0, slash).c_str(), 1);
    RegisterServer(CLSID_ZeTestAdder, "%ZE_TEST_SERVER_FOLDER%" + full.substr(slash), REG_EXPAND_SZ);
    IZeTestAdder* second = nullptr;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_ZeTestAdder, nullptr, CLSCTX_INPROC_SERVER, IID_IZeTestAdder,
                                     reinterpret_cast<void**>(&second)));
    EXPECT_EQ(2, second->LiveObjects());
    second->Release();
    RegisterServer(CLSID_ZeTestAdder, "%NO_SUCH_VARIABLE_HERE%" + full.substr(slash), REG_EXPAND_SZ);
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND),
              CoCreateInstance(CLSID_ZeTestAdder, nullptr, CLSCTX_INPROC_SERVER, IID_IZeTestAdder,
                               reinterpret_cast<void**>(&second)));
    RegisterServer(CLSID_ZeTestAdder, windowsPath);

    // The server is asked for a class it does not have: its own answer comes back.
    RegisterServer(kBuiltinClass, ZE_TEST_SERVER_PATH);
    void* object = nullptr;
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE, CoCreateInstance(kBuiltinClass, nullptr, CLSCTX_ALL, IID_IUnknown, &object));

    // A server in use is not unloaded; the object keeps working.
    CoFreeUnusedLibraries();
    ASSERT_EQ(S_OK, adder->Add(1, 2, &sum));
    EXPECT_EQ(3, sum);
    adder->Release();

    // Unused, it may go; the next activation loads it again.
    CoFreeUnusedLibraries();
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_ZeTestAdder, nullptr, CLSCTX_INPROC_SERVER, IID_IZeTestAdder,
                                     reinterpret_cast<void**>(&adder)));
    EXPECT_EQ(1, adder->LiveObjects());
    adder->Release();
}
#endif

#ifdef ZE_MODULE_PATH
// The built module as a host meets it: registered by path under its class id, activated through
// CoCreateInstance, answering through its interfaces, and unloadable once everything is released.
TEST_F(ComActivationTest, HostCreatesTheReaderModuleThroughTheRegistry) {
    RegisterServer(CLSID_ZEAviReaderModule, ZE_MODULE_PATH);
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

    // The filters' class ids reach the module too, which makes them.
    const CLSID source = {0x4b9e6a07, 0xd2c8, 0x4e1f, {0x93, 0xa5, 0x7f, 0x0c, 0x1b, 0x2d, 0x6e, 0x84}};
    RegisterServer(source, ZE_MODULE_PATH);
    IPersist* object = nullptr;
    ASSERT_EQ(S_OK, CoCreateInstance(source, nullptr, CLSCTX_INPROC_SERVER, IID_IPersist,
                                     reinterpret_cast<void**>(&object)));
    ASSERT_NE(nullptr, object);
    CLSID made{};
    EXPECT_EQ(S_OK, object->GetClassID(&made));
    EXPECT_TRUE(IsEqualCLSID(source, made));
    object->Release();
    EXPECT_EQ(S_OK, canUnload());
}
#endif

}  // namespace

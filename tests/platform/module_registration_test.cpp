// The built module's self-registration: exactly its rows are written, each value with its first two
// bytes only, and unregistration removes its keys while leaving other filters' entries alone.
#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <sys/stat.h>

#include "platform/win32.h"
#include "tests/support/registry_sandbox.h"

#ifdef ZE_MODULE_PATH
namespace {

typedef std::map<std::string, std::string> Store;  // "key path" -> "" and "key path|value name" -> "type:data"

// Every key and value below the classes root, flattened.
void Collect(HKEY key, const std::string& path, Store& out) {
    char name[512];
    BYTE data[512];
    for (DWORD i = 0;; ++i) {
        DWORD chars = sizeof name, size = sizeof data, type = 0;
        if (RegEnumValueA(key, i, name, &chars, nullptr, &type, data, &size) != ERROR_SUCCESS) break;
        out[path + "|" + name] = std::to_string(type) + ":" + std::string(reinterpret_cast<char*>(data), size);
    }
    for (DWORD i = 0;; ++i) {
        DWORD chars = sizeof name;
        if (RegEnumKeyExA(key, i, name, &chars, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
        const std::string child = path.empty() ? name : path + "\\" + name;
        out[child] = "";
        HKEY sub = nullptr;
        if (RegOpenKeyExA(key, name, 0, KEY_READ, &sub) == ERROR_SUCCESS) {
            Collect(sub, child, out);
            RegCloseKey(sub);
        }
    }
}

Store ClassesRoot() {
    Store store;
    Collect(HKEY_CLASSES_ROOT, "", store);
    return store;
}

class ModuleRegistrationTest : public ::testing::Test {
protected:
    void SetUp() override {
        // Loaded from a copy in the sandbox, so that the path written is told apart from the test
        // program's own (both would otherwise start with the same two bytes).
        modulePath_ = sandbox.Folder() + "/libzeavireader.so";
        std::ofstream(modulePath_, std::ios::binary) << std::ifstream(ZE_MODULE_PATH, std::ios::binary).rdbuf();
        module_ = LoadLibraryA(modulePath_.c_str());
        ASSERT_NE(nullptr, module_) << GetLastError();
        registerServer_ = reinterpret_cast<LPFNCANUNLOADNOW>(GetProcAddress(module_, "DllRegisterServer"));
        unregisterServer_ = reinterpret_cast<LPFNCANUNLOADNOW>(GetProcAddress(module_, "DllUnregisterServer"));
        ASSERT_NE(nullptr, registerServer_);
        ASSERT_NE(nullptr, unregisterServer_);
    }
    void TearDown() override {
        if (module_) FreeLibrary(module_);
    }

    // What the module must have written, from this test's own reading of the rows: each value is the
    // first two bytes of its text, stored without a zero.
    Store Expected() const {
        char resolved[PATH_MAX];
        const std::string modulePath = ::realpath(modulePath_.c_str(), resolved) ? resolved : modulePath_;
        EXPECT_EQ("/t", modulePath.substr(0, 2));
        const std::string reader = "CLSID\\{c3a8e5d1-6f2b-4a97-b0e4-19d7c5a3f260}";
        const std::string source = "CLSID\\{4B9E6A07-D2C8-4E1F-93A5-7F0C1B2D6E84}";
        const std::string render = "CLSID\\{7D3A51C2-9E4B-4F08-A6D1-2C5B8E90F143}";
        const std::string category = "CLSID\\{083863F1-70DE-11d0-BD40-00A0C911CE86}";
        const std::string sourceInstance = category + "\\Instance\\{4B9E6A07-D2C8-4E1F-93A5-7F0C1B2D6E84}";
        const std::string renderInstance = category + "\\Instance\\{7D3A51C2-9E4B-4F08-A6D1-2C5B8E90F143}";
        // Two bytes of the text and its zero: "0" keeps its zero, longer texts lose it.
        auto sz = [](const std::string& text) { return "1:" + (text + '\0').substr(0, 2); };
        Store s;
        for (const std::string& key :
             {std::string("CLSID"), reader, reader + "\\InprocServer32", source, source + "\\InprocServer32", category,
              category + "\\Instance", sourceInstance, render, render + "\\InprocServer32", renderInstance})
            s[key] = "";
        const Store values = {
            {reader + "|", sz("ORVEN AVI Reader")},
            {reader + "\\InprocServer32|", sz(modulePath)},
            {source + "|", sz("ORVEN DV Source Filter")},
            {source + "\\InprocServer32|", sz(modulePath)},
            {source + "\\InprocServer32|ThreadingModel", sz("Both")},
            {category + "|", sz("0")},
            {category + "\\Instance|", sz("0")},
            {sourceInstance + "|", sz("0")},
            {sourceInstance + "|CLSID", sz("{4B9E6A07-D2C8-4E1F-93A5-7F0C1B2D6E84}")},
            {sourceInstance + "|FriendlyName", sz("ORVEN DV Source Filter")},
            {render + "|", sz("ORVEN DV Render Filter")},
            {render + "\\InprocServer32|", sz(modulePath)},
            {render + "\\InprocServer32|ThreadingModel", sz("Both")},
            {renderInstance + "|", sz("0")},
            {renderInstance + "|CLSID", sz("{7D3A51C2-9E4B-4F08-A6D1-2C5B8E90F143}")},
            {renderInstance + "|FriendlyName", sz("ORVEN DV Render Filter")},
        };
        EXPECT_EQ(16u, values.size());
        s.insert(values.begin(), values.end());
        return s;
    }

    zetest::RegistrySandbox sandbox;
    std::string modulePath_;
    HMODULE module_ = nullptr;
    LPFNCANUNLOADNOW registerServer_ = nullptr;
    LPFNCANUNLOADNOW unregisterServer_ = nullptr;
};

TEST_F(ModuleRegistrationTest, WritesExactlyTheSixteenRows) {
    ASSERT_EQ(S_OK, registerServer_());
    EXPECT_EQ(Expected(), ClassesRoot());
    // Registering again changes nothing.
    ASSERT_EQ(S_OK, registerServer_());
    EXPECT_EQ(Expected(), ClassesRoot());
}

TEST_F(ModuleRegistrationTest, UnregisterRemovesEverythingItWrote) {
    ASSERT_EQ(S_OK, registerServer_());
    // Rows that share a key delete it a second time, so the answer is S_FALSE even on a clean system.
    EXPECT_EQ(S_FALSE, unregisterServer_());
    const Store left = ClassesRoot();
    EXPECT_EQ((Store{{"CLSID", ""}}), left);
}

TEST_F(ModuleRegistrationTest, UnregisterLeavesOtherFiltersInTheCategory) {
    const std::string other = "CLSID\\{083863F1-70DE-11d0-BD40-00A0C911CE86}\\Instance\\{OTHER}";
    ASSERT_EQ(ERROR_SUCCESS, zetest::WriteValue(HKEY_CLASSES_ROOT, other, "FriendlyName", REG_SZ, "Other", 6));

    ASSERT_EQ(S_OK, registerServer_());
    EXPECT_EQ(S_FALSE, unregisterServer_());
    const Store left = ClassesRoot();
    const Store expected = {
        {"CLSID", ""},
        {"CLSID\\{083863F1-70DE-11d0-BD40-00A0C911CE86}", ""},
        {"CLSID\\{083863F1-70DE-11d0-BD40-00A0C911CE86}|", std::string("1:0\0", 4)},  // values stay with their keys
        {"CLSID\\{083863F1-70DE-11d0-BD40-00A0C911CE86}\\Instance", ""},
        {"CLSID\\{083863F1-70DE-11d0-BD40-00A0C911CE86}\\Instance|", std::string("1:0\0", 4)},
        {other, ""},
        {other + "|FriendlyName", std::string("1:Other") + '\0'},
    };
    EXPECT_EQ(expected, left);
}

TEST_F(ModuleRegistrationTest, AKeyThatCannotBeCreatedFailsTheRegistration) {
    // The store's folder is a plain file, so no key can be written.
    const std::string blocker = sandbox.Folder() + "/blocker";
    ASSERT_FALSE((std::ofstream(blocker) << "x").fail());
    ::setenv("ZE_REGISTRY_FILE", (blocker + "/registry.reg").c_str(), 1);
    EXPECT_EQ(SELFREG_E_CLASS, registerServer_());
    EXPECT_EQ(S_FALSE, unregisterServer_());
    ::setenv("ZE_REGISTRY_FILE", sandbox.Path().c_str(), 1);
}

}  // namespace
#endif

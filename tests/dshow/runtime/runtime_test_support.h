// What the runtime's tests share: COM initialised and the runtime installed on a private registry
// store, OLE strings from plain text, the identifiers of made-up media types and filters, and small
// readers of the registry and of moniker enumerators.
#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "dshow/runtime/com_object.h"
#include "dshow/runtime/ze_dshow_runtime.h"
#include "platform/win32_dshow.h"
#include "tests/support/registry_sandbox.h"

namespace zetest {

using ze_dsrt::ComPtr;
using OleString = std::basic_string<OLECHAR>;

inline OleString Ole(const std::string& text) { return OleString(text.begin(), text.end()); }
inline std::string Narrow(const OLECHAR* text) {
    std::string out;
    for (; text != nullptr && *text != 0; ++text) out.push_back(static_cast<char>(*text));
    return out;
}

// A GUID whose first field tells which test item it stands for.
constexpr GUID TestGuid(uint32_t n) { return GUID{n, 0x7e57, 0x11d0, {0xaa, 0xbb, 0xcc, 0xdd, 0, 0, 0, 1}}; }

// Every test gets a fresh registry store, COM for its thread and the installed runtime.
class RuntimeTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)));
        ZeDShowRuntimeInstall();
    }
    void TearDown() override { CoUninitialize(); }

    template <class T>
    ComPtr<T> Create(REFCLSID clsid, REFIID iid) {
        ComPtr<T> object;
        EXPECT_EQ(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, iid, object.OutVoid()), S_OK);
        return object;
    }

    RegistrySandbox sandbox_;
};

// The display names of what an enumerator hands out, in order.
inline std::vector<std::string> DisplayNames(IEnumMoniker* monikers) {
    std::vector<std::string> names;
    if (monikers == nullptr) return names;
    IMoniker* moniker = nullptr;
    while (monikers->Next(1, &moniker, nullptr) == S_OK) {
        LPOLESTR text = nullptr;
        if (SUCCEEDED(moniker->GetDisplayName(nullptr, nullptr, &text))) names.push_back(Narrow(text));
        CoTaskMemFree(text);
        moniker->Release();
    }
    return names;
}

// "@device:sw:{category}\{clsid}", the display name Windows gives a registered filter.
inline std::string DeviceName(REFCLSID category, REFCLSID clsid) {
    return "@device:sw:" + GuidText(category) + "\\" + GuidText(clsid);
}

}  // namespace zetest

// Test fixture that reaches the import module exactly as a host does: the built libzeavireader.so is
// loaded, its class factory taken from DllGetClassObject, one object created and asked for its
// interfaces. A host log captures the module's report lines, so a test can see which method reported
// which code, and how often.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/win32.h"
#include "reader/ze_host_interfaces.h"

namespace readertest {

class CapturingLog final : public IZEHostLog {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++refs); }
    ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(--refs); }
    HRESULT STDMETHODCALLTYPE Reserved3() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Reserved4() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Reserved5() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Reserved6() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Reserved7() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Reserved8() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE WriteLogLine(const char* line, LONG kind) override {
        lines.emplace_back(line);
        kinds.push_back(kind);
        return S_OK;
    }

    int refs = 1;
    std::vector<std::string> lines;
    std::vector<LONG> kinds;
};

typedef HRESULT(STDAPICALLTYPE* GetClassObjectFn)(REFCLSID, REFIID, void**);
typedef HRESULT(STDAPICALLTYPE* CanUnloadNowFn)();

// The loaded module, shared by all tests of the process.
struct LoadedModule {
    HMODULE handle = nullptr;
    GetClassObjectFn getClassObject = nullptr;
    CanUnloadNowFn canUnloadNow = nullptr;
};
const LoadedModule& Module();
// The module keeps the last host log for the life of the process, so the tests hand it one that lives
// as long.
CapturingLog& SharedLog();

class ReaderTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // A fresh object with no interface taken; the caller releases it.
    IUnknown* CreateObject();
    // Report lines since the last call, each reduced to "[code] message ### Class::Method ### context".
    std::vector<std::string> TakeReports();
    // True when exactly one report arrived since the last call and it names `code` and `method`.
    bool ReportedOnce(HRESULT code, const std::string& method);
    bool NothingReported() { return TakeReports().empty(); }

    CapturingLog& log = SharedLog();
    IUnknown* object = nullptr;
    IZEVideoStream* video = nullptr;
    IZEClientServerExchange2* exchange = nullptr;
    IZEVideoImportPlugIn* plugIn = nullptr;
    IZEStatus* status = nullptr;
    IZEBasicAudioReader* audio = nullptr;
    IZERawStream* raw = nullptr;
    IZEColorFormatSupport* color = nullptr;

private:
    size_t m_seen = 0;
};

// The descriptor of a Get call over `buffer`.
inline ZeExchangeValue Descriptor(void* buffer, uint32_t bytes) {
    return ZeExchangeValue{sizeof(ZeExchangeValue), bytes, 0, 0, 0, buffer};
}

}  // namespace readertest

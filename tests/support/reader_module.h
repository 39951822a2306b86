// Reaches the import module exactly as a host does: the built libzeavireader.so is loaded once per
// process, its class factory taken from DllGetClassObject, one object created per test and asked for
// all its interfaces. A host log captures the module's report lines, so a test can see which method
// reported which code, and how often.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "platform/win32.h"
#include "reader/api/ze_host_interfaces.h"
#include "tests/support/host_log_capture.h"

namespace zetest {

typedef HRESULT(STDAPICALLTYPE* GetClassObjectFn)(REFCLSID, REFIID, void**);
typedef HRESULT(STDAPICALLTYPE* CanUnloadNowFn)();

struct LoadedModule {
    HMODULE handle = nullptr;
    GetClassObjectFn getClassObject = nullptr;
    CanUnloadNowFn canUnloadNow = nullptr;
};

inline const LoadedModule& ReaderModule() {
    static const LoadedModule module = [] {
        LoadedModule m;
        m.handle = LoadLibraryA(ZE_BINARY_DIR "/libzeavireader.so");
        if (m.handle) {
            m.getClassObject = reinterpret_cast<GetClassObjectFn>(
                reinterpret_cast<void*>(GetProcAddress(m.handle, "DllGetClassObject")));
            m.canUnloadNow = reinterpret_cast<CanUnloadNowFn>(
                reinterpret_cast<void*>(GetProcAddress(m.handle, "DllCanUnloadNow")));
        }
        return m;
    }();
    return module;
}

// The module keeps the last host log for the life of the process, so the tests hand it one that lives
// as long: never destroyed.
inline HostLogCapture& SharedHostLog() {
    static HostLogCapture* log = new HostLogCapture();
    return *log;
}

class ReaderTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(nullptr, ReaderModule().handle) << "libzeavireader.so was not built beside the tests";
        ASSERT_NE(nullptr, ReaderModule().getClassObject);
        object = CreateObject();
        ASSERT_NE(nullptr, object);
        struct {
            REFIID iid;
            void** slot;
        } wanted[] = {
            {IID_IZEVideoStream, reinterpret_cast<void**>(&video)},
            {IID_IZEClientServerExchange2, reinterpret_cast<void**>(&exchange)},
            {IID_IZEVideoImportPlugIn, reinterpret_cast<void**>(&plugIn)},
            {IID_IZEStatus, reinterpret_cast<void**>(&status)},
            {IID_IZEBasicAudioReader, reinterpret_cast<void**>(&audio)},
            {IID_IZERawStream, reinterpret_cast<void**>(&raw)},
            {IID_IZEColorFormatSupport, reinterpret_cast<void**>(&color)},
        };
        for (auto& w : wanted) ASSERT_EQ(S_OK, object->QueryInterface(w.iid, w.slot));
        ZeHostParams params{};
        params.flags = ZE_HOSTPARAM_USE_LOG;
        params.hostLog = &log;
        ASSERT_EQ(S_OK, status->SetHostParams(&params));
        seen_ = log.lines.size();
    }
    void TearDown() override {
        for (IUnknown* p : {static_cast<IUnknown*>(video), static_cast<IUnknown*>(exchange),
                            static_cast<IUnknown*>(plugIn), static_cast<IUnknown*>(status),
                            static_cast<IUnknown*>(audio), static_cast<IUnknown*>(raw),
                            static_cast<IUnknown*>(color), object})
            if (p) p->Release();
    }

    // A fresh object with no interface taken; the caller releases it.
    IUnknown* CreateObject() {
        IClassFactory* factory = nullptr;
        EXPECT_EQ(S_OK, ReaderModule().getClassObject(CLSID_ZEAviReaderModule, IID_IClassFactory,
                                                      reinterpret_cast<void**>(&factory)));
        if (!factory) return nullptr;
        IUnknown* created = nullptr;
        EXPECT_EQ(S_OK, factory->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(&created)));
        factory->Release();
        return created;
    }

    // Report lines since the last call, each reduced to "[code] message ### Class::Method ### context".
    std::vector<std::string> TakeReports() {
        std::vector<std::string> fresh;
        const std::string prefix = "AVI Reader :: ";
        for (; seen_ < log.lines.size(); ++seen_) {
            std::string line = log.lines[seen_];
            if (line.compare(0, prefix.size(), prefix) == 0) line.erase(0, prefix.size());
            while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
            fresh.push_back(line);
        }
        return fresh;
    }
    // Success when exactly one report arrived since the last call and it names `code` and `method`.
    ::testing::AssertionResult ReportedOnce(HRESULT code, const std::string& method) {
        const std::vector<std::string> reports = TakeReports();
        char bracket[16];
        std::snprintf(bracket, sizeof(bracket), "[%x]", static_cast<unsigned>(code));
        if (reports.size() == 1 && reports[0].rfind(bracket, 0) == 0 &&
            reports[0].find("### " + method + " ###") != std::string::npos)
            return ::testing::AssertionSuccess();
        ::testing::AssertionResult failure = ::testing::AssertionFailure();
        failure << reports.size() << " reports, wanted one of " << bracket << " by " << method;
        for (const std::string& r : reports) failure << "\n  report: " << r;
        return failure;
    }
    // A call's result is `code`, and the call reported it once under `method`.
    ::testing::AssertionResult Fails(HRESULT result, HRESULT code, const std::string& method) {
        if (result != code) {
            TakeReports();
            return ::testing::AssertionFailure() << "result " << std::hex << result << ", wanted " << code;
        }
        return ReportedOnce(code, method);
    }
    bool NothingReported() { return TakeReports().empty(); }

    HostLogCapture& log = SharedHostLog();
    IUnknown* object = nullptr;
    IZEVideoStream* video = nullptr;
    IZEClientServerExchange2* exchange = nullptr;
    IZEVideoImportPlugIn* plugIn = nullptr;
    IZEStatus* status = nullptr;
    IZEBasicAudioReader* audio = nullptr;
    IZERawStream* raw = nullptr;
    IZEColorFormatSupport* color = nullptr;

private:
    size_t seen_ = 0;
};

// The descriptor of a Get call over `buffer`.
inline ZeExchangeValue Descriptor(void* buffer, uint32_t bytes) {
    return ZeExchangeValue{sizeof(ZeExchangeValue), bytes, 0, 0, 0, buffer};
}

}  // namespace zetest

#include "tests/reader/reader_module_fixture.h"

#include <cstdio>

namespace readertest {

const LoadedModule& Module() {
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

CapturingLog& SharedLog() {
    static CapturingLog* log = new CapturingLog();  // never destroyed: the module may still hold it
    return *log;
}

IUnknown* ReaderTest::CreateObject() {
    IClassFactory* factory = nullptr;
    EXPECT_EQ(S_OK, Module().getClassObject(CLSID_ZEAviReaderModule, IID_IClassFactory, reinterpret_cast<void**>(&factory)));
    if (!factory) return nullptr;
    IUnknown* created = nullptr;
    EXPECT_EQ(S_OK, factory->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(&created)));
    factory->Release();
    return created;
}

void ReaderTest::SetUp() {
    ASSERT_NE(nullptr, Module().handle) << "libzeavireader.so was not built beside the tests";
    ASSERT_NE(nullptr, Module().getClassObject);
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
    m_seen = log.lines.size();
}

void ReaderTest::TearDown() {
    IUnknown* held[] = {video, exchange, plugIn, status, audio, raw, color, object};
    for (IUnknown* p : held)
        if (p) p->Release();
}

std::vector<std::string> ReaderTest::TakeReports() {
    std::vector<std::string> fresh;
    const std::string prefix = "AVI Reader :: ";
    for (; m_seen < log.lines.size(); ++m_seen) {
        std::string line = log.lines[m_seen];
        if (line.compare(0, prefix.size(), prefix) == 0) line.erase(0, prefix.size());
        while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
        fresh.push_back(line);
    }
    return fresh;
}

bool ReaderTest::ReportedOnce(HRESULT code, const std::string& method) {
    const std::vector<std::string> reports = TakeReports();
    char bracket[16];
    std::snprintf(bracket, sizeof(bracket), "[%x]", static_cast<unsigned>(code));
    if (reports.size() != 1) {
        for (const std::string& r : reports) ADD_FAILURE() << "report: " << r;
        return false;
    }
    const bool ok = reports[0].rfind(bracket, 0) == 0 && reports[0].find("### " + method + " ###") != std::string::npos;
    if (!ok) ADD_FAILURE() << "report: " << reports[0];
    return ok;
}

}  // namespace readertest

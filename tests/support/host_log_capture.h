// A host log that keeps every line the module writes through slot 9, with its kind, and counts calls
// that land on any other slot. Its answer to WriteLogLine is a failure, which the module must ignore.
#pragma once

#include <string>
#include <vector>

#include "reader/api/ze_host_interfaces.h"

namespace zetest {

class HostLogCapture final : public IZEHostLog {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++refs); }
    ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(--refs); }
    HRESULT STDMETHODCALLTYPE Reserved3() override { return WrongSlot(); }
    HRESULT STDMETHODCALLTYPE Reserved4() override { return WrongSlot(); }
    HRESULT STDMETHODCALLTYPE Reserved5() override { return WrongSlot(); }
    HRESULT STDMETHODCALLTYPE Reserved6() override { return WrongSlot(); }
    HRESULT STDMETHODCALLTYPE Reserved7() override { return WrongSlot(); }
    HRESULT STDMETHODCALLTYPE Reserved8() override { return WrongSlot(); }
    HRESULT STDMETHODCALLTYPE WriteLogLine(const char* line, LONG kind) override {
        lines.emplace_back(line);
        kinds.push_back(kind);
        return E_FAIL;
    }

    // Every line so far, joined.
    std::string Text() const {
        std::string text;
        for (const std::string& line : lines) text += line;
        return text;
    }

    int refs = 1;
    int wrongSlotCalls = 0;
    std::vector<std::string> lines;
    std::vector<LONG> kinds;

private:
    HRESULT WrongSlot() {
        ++wrongSlotCalls;
        return E_FAIL;
    }
};

}  // namespace zetest

// avihost's connection to the import module: loading it (by path, or by class identifier through the
// COM runtime once registered), creating the one object, and the host side of error reporting.
// Only the module's four exports and its interfaces are used.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/win32.h"
#include "reader/api/ze_host_interfaces.h"

// A counted interface pointer.
template <class T>
class ComPtr {
public:
    ComPtr() = default;
    ~ComPtr() { Reset(); }
    ComPtr(const ComPtr&) = delete;
    ComPtr& operator=(const ComPtr&) = delete;
    ComPtr(ComPtr&& other) noexcept : m_ptr(std::exchange(other.m_ptr, nullptr)) {}
    ComPtr& operator=(ComPtr&& other) noexcept {
        if (this != &other) {
            Reset();
            m_ptr = std::exchange(other.m_ptr, nullptr);
        }
        return *this;
    }
    void Reset() {
        if (m_ptr) std::exchange(m_ptr, nullptr)->Release();
    }
    T* Get() const { return m_ptr; }
    T* operator->() const { return m_ptr; }
    explicit operator bool() const { return m_ptr != nullptr; }
    // For out-parameters: releases what is held and hands out the slot.
    void** Out() {
        Reset();
        return reinterpret_cast<void**>(&m_ptr);
    }

private:
    T* m_ptr = nullptr;
};

// A failed step: the status code, what the host was doing, and the module's own report line, if any.
class HostError : public std::runtime_error {
public:
    HostError(HRESULT code, const std::string& what, std::string report = {})
        : std::runtime_error(what), m_code(code), m_report(std::move(report)) {}
    HRESULT Code() const { return m_code; }
    const std::string& Report() const { return m_report; }

private:
    HRESULT m_code;
    std::string m_report;
};

// The log the module writes its reports into (handed over with SetHostParams).
class HostLog final : public IZEHostLog {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_refs; }
    ULONG STDMETHODCALLTYPE Release() override { return --m_refs; }  // lives on the host's stack
    HRESULT STDMETHODCALLTYPE Reserved3() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Reserved4() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Reserved5() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Reserved6() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Reserved7() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Reserved8() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE WriteLogLine(const char* line, LONG kind) override;

    void SetEcho(bool echo) { m_echo = echo; }
    size_t LineCount() const { return m_lines.size(); }
    // The last report line reduced to "\"message\" in Class::Method", empty when there is none.
    std::string LastReport() const;
    // The status code of the last report line, E_FAIL when there is none.
    HRESULT LastCode() const;
    const std::vector<std::string>& Lines() const { return m_lines; }

private:
    ULONG m_refs = 1;
    bool m_echo = false;
    std::vector<std::string> m_lines;
};

// "\"message\" in Class::Method" from one module report line; empty when the line is not a report.
std::string ReportSummary(const std::string& line);
// Short name of a status code the module uses ("E_AVI_NOVALIDFILE"), empty when unknown.
const char* StatusName(HRESULT code);

struct ModuleOptions {
    std::string modulePath;  // empty: the module beside this program
    bool byClassId = false;  // create through the COM runtime and the registry
    bool verbose = false;    // echo the module's log to stderr
};

// The loaded module and one CZEAviReader object with all its interfaces.
class ModuleSession {
public:
    explicit ModuleSession(const ModuleOptions& options);
    ~ModuleSession() = default;
    ModuleSession(const ModuleSession&) = delete;
    ModuleSession& operator=(const ModuleSession&) = delete;

    IZEVideoStream* Video() const { return m_video.Get(); }
    IZEClientServerExchange2* Exchange() const { return m_exchange.Get(); }
    IZEVideoImportPlugIn* PlugIn() const { return m_plugIn.Get(); }
    IZEStatus* Status() const { return m_status.Get(); }
    IZEBasicAudioReader* Audio() const { return m_audio.Get(); }
    IZERawStream* Raw() const { return m_raw.Get(); }
    HostLog& Log() { return m_log; }

    // Throws HostError(code, what) with the module's last report when code is a failure.
    void Check(HRESULT code, const std::string& what) const;

private:
    // Members are destroyed in reverse order: the interfaces first, then the module, then COM; the log
    // outlives them all, since the module keeps a pointer to it.
    struct ComScope {
        bool started = false;
        ~ComScope() {
            if (started) CoUninitialize();
        }
    };
    struct Library {
        HMODULE handle = nullptr;
        ~Library() {
            if (handle) FreeLibrary(handle);
        }
    };

    HostLog m_log;
    ComScope m_com;
    Library m_library;
    ComPtr<IZEVideoStream> m_video;
    ComPtr<IZEClientServerExchange2> m_exchange;
    ComPtr<IZEVideoImportPlugIn> m_plugIn;
    ComPtr<IZEStatus> m_status;
    ComPtr<IZEBasicAudioReader> m_audio;
    ComPtr<IZERawStream> m_raw;
};

// Path of the module file beside this program.
std::string DefaultModulePath();

// Runs the module's DllRegisterServer or DllUnregisterServer.
HRESULT RunRegistration(const ModuleOptions& options, bool registerServer);

// Process-wide error reporting: every failing method hands its class name, method name and
// code to ReportError, which formats one line, keeps it, forwards it to the host's log and
// returns the code unchanged.
#pragma once

#include <string>
#include <vector>

#include "platform/win32.h"
#include "reader/status/ze_status_codes.h"

// The host's log. Only one method is used: slot 9 of its table (after IUnknown's three),
// called with a zero-terminated line and the number 2.
struct IZEHostLog : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Reserved3() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved4() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved5() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved6() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved7() = 0;
    virtual HRESULT STDMETHODCALLTYPE Reserved8() = 0;
    virtual HRESULT STDMETHODCALLTYPE WriteLogLine(const char* line, LONG kind) = 0;
protected:
    ~IZEHostLog() = default;
};

HRESULT ReportError(const char* className, const char* methodName, HRESULT code);
HRESULT GetLastReportedError();
void SetErrorContext(const char* text);
void SetHostLog(IZEHostLog* log);
IZEHostLog* GetHostLog();
std::string ErrorMessageForCode(HRESULT code);
void LogLine(int level, const std::string& text);

// Inspection of the process-wide report state (the module never reads it itself).
std::vector<std::string> GetReportList();
std::string GetErrorContext();

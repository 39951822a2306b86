// Process-wide error reporting: every failing method hands its class name, method name and
// code to ReportError, which formats one line, keeps it, hands it to the log sink and returns the
// code unchanged.
#pragma once

#include <string>
#include <vector>

#include "platform/win32.h"
#include "reader/api/ze_status_codes.h"

HRESULT ReportError(const char* className, const char* methodName, HRESULT code);
HRESULT GetLastReportedError();
void SetErrorContext(const char* text);
std::string ErrorMessageForCode(HRESULT code);
void LogLine(int level, const std::string& text);

// Where the log routing sends the lines meant for the host: `sink` is called with each framed line
// ("AVI Reader :: " + text + "\n", zero-terminated) and `context`. A null sink drops them. The sink
// stays until the next call; nothing here ever clears it.
using ZeLogSink = void (*)(const char* line, void* context);
void SetLogSink(ZeLogSink sink, void* context);

// Inspection of the process-wide report state (the module never reads it itself).
std::vector<std::string> GetReportList();
std::string GetErrorContext();

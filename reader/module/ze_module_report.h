// Reporting from the module's COM entry points: ReportError may run out of memory while it builds its
// line, and no exception may leave through a COM interface, so the code comes back either way.
#pragma once

#include "reader/status/ze_error_report.h"

inline HRESULT ZeModuleReport(const char* className, const char* methodName, HRESULT code) noexcept {
    try {
        return ReportError(className, methodName, code);
    } catch (...) {
        return code;
    }
}

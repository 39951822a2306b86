#include "reader/status/ze_error_report.h"

#include <cstdio>

namespace {

// One set per loaded module, shared by every object and deliberately unlocked.
struct ReportState {
    HRESULT lastCode = 0;
    std::string context;
    std::vector<std::string> lines;
    IZEHostLog* hostLog = nullptr;
    const int16_t logMode = 1;
};

ReportState& State() {
    static ReportState state;
    return state;
}

// Messages of the module's own codes 0x80040013..0x8004001F, by index; null falls to the unknown text.
const char* const kAviMessages[] = {
    "cant open avi file",                  // 0x80040013
    "",                                    // 0x80040014: deliberately empty
    "cant seek avi file",                  // 0x80040015
    "cant close avi file",                 // 0x80040016
    nullptr,                               // 0x80040017: never raised
    "cant create video stream header",     // 0x80040018
    "cant create video format header",     // 0x80040019
    "cant create audio stream header",     // 0x8004001A
    "cant create audio format header",     // 0x8004001B
    "no valid color space",                // 0x8004001C
    nullptr,                               // 0x8004001D
    "avi file parse failed",               // 0x8004001E
    "no frame",                            // 0x8004001F
};

// Messages of 0x80004001..0x80004005, by index.
const char* const kCommonMessages[] = {
    "not implemented",
    "no such interface supported",
    "invalid pointer",
    "operation aborted",
    "general access denied error",
};

const char* KnownMessage(HRESULT code) {
    const uint32_t u = static_cast<uint32_t>(code);
    if (u >= 0x80040013u && u <= 0x8004001Fu) return kAviMessages[u - 0x80040013u];
    if (u >= 0x80004001u && u <= 0x80004005u) return kCommonMessages[u - 0x80004001u];
    switch (u) {
        case 0x80070006u: return "invalid handle";
        case 0x8007000Eu: return "out of memory";
        case 0x80070057u: return "one or more arguments are invalid";
        case 0x80040012u: return "no valid avi file";
        default: return nullptr;
    }
}

void TraceSink(const std::string& text) {
    // This build emits no trace output; the text is built and dropped.
    (void)text;
}

}  // namespace

std::string ErrorMessageForCode(HRESULT code) {
    if (const char* known = KnownMessage(code)) return known;
    char buffer[100];
    std::snprintf(buffer, sizeof buffer, "%s (%d)", "unknown error", static_cast<int32_t>(code));
    return buffer;
}

void LogLine(int level, const std::string& text) {
    ReportState& s = State();
    const std::string framed = "AVI Reader :: " + text + "\n";
    switch (s.logMode) {
        case 1:
            if (level == 1 && s.hostLog) s.hostLog->WriteLogLine(framed.c_str(), 2);
            break;
        case 2:
            if (level == 2) TraceSink(framed);
            break;
        case 3:
            if (level == 1 || level == 3) TraceSink(framed);
            break;
        case 4:
            if (level == 1 || level == 3 || level == 4) TraceSink(framed);
            break;
        case 5:
            if (level == 1 || level == 4) TraceSink(framed);
            break;
        default:
            break;
    }
}

HRESULT ReportError(const char* className, const char* methodName, HRESULT code) {
    ReportState& s = State();
    s.lastCode = code;
    const std::string message = ErrorMessageForCode(code);
    char hex[255];
    std::snprintf(hex, sizeof hex, "[%x]", static_cast<uint32_t>(code));
    std::string line;
    line.reserve(64 + message.size() + s.context.size());
    line += hex;
    line += ' ';
    line += message;
    line += " ### ";
    line += className ? className : "";
    line += "::";
    line += methodName ? methodName : "";
    line += " ### ";
    line += s.context;
    line += "\r\n";
    s.lines.push_back(line);
    LogLine(1, line);
    return s.lastCode;
}

HRESULT GetLastReportedError() { return State().lastCode; }

void SetErrorContext(const char* text) {
    ReportState& s = State();
    s.context = text ? text : "";
    s.lines.clear();
}

void SetHostLog(IZEHostLog* log) { State().hostLog = log; }

IZEHostLog* GetHostLog() { return State().hostLog; }

std::vector<std::string> GetReportList() { return State().lines; }

std::string GetErrorContext() { return State().context; }

#include "reader/status/ze_error_report.h"

#include <cstdio>

namespace {

// One set per loaded module, shared by every object and deliberately unlocked.
struct ReportState {
    HRESULT lastCode = 0;
    std::string context;
    std::vector<std::string> lines;
    ZeLogSink sink = nullptr;
    void* sinkContext = nullptr;
    const int16_t logMode = 1;
};

ReportState& State() {
    static ReportState state;
    return state;
}

void TraceSink(const std::string& text) {
    // This build emits no trace output; the text is built and dropped.
    (void)text;
}

}  // namespace

std::string ErrorMessageForCode(HRESULT code) {
    const ZeStatusCode* row = FindStatusCode(code);
    if (row && row->message) return row->message;
    char buffer[100];
    std::snprintf(buffer, sizeof buffer, "%s (%d)", "unknown error", static_cast<int32_t>(code));
    return buffer;
}

void LogLine(int level, const std::string& text) {
    ReportState& s = State();
    const std::string framed = "AVI Reader :: " + text + "\n";
    switch (s.logMode) {
        case 1:
            if (level == 1 && s.sink) s.sink(framed.c_str(), s.sinkContext);
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

void SetLogSink(ZeLogSink sink, void* context) {
    ReportState& s = State();
    s.sink = sink;
    s.sinkContext = context;
}

std::vector<std::string> GetReportList() { return State().lines; }

std::string GetErrorContext() { return State().context; }

// The host's log as the status floor's log sink: every line the log routing sends to the host goes
// to slot 9 of the host's log with the number 2, and the log's answer is ignored.
#pragma once

#include "reader/api/ze_host_interfaces.h"
#include "reader/status/ze_error_report.h"

inline void ZeWriteToHostLog(const char* line, void* log) { static_cast<IZEHostLog*>(log)->WriteLogLine(line, 2); }

// Makes `log` the process-wide receiver of report lines (no reference is taken); null drops them.
inline void ZeConnectHostLog(IZEHostLog* log) { SetLogSink(log ? ZeWriteToHostLog : nullptr, log); }

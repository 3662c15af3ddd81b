// The file and UDP sinks of the debug log. Both line forms share them: the
// long form (WriteDebugLog) and the short form (DebugLogType) differ only in
// the places the flag below selects.
#pragma once

#include <cstddef>

#include "base/compat.h"

namespace debuglog {

enum LineForm { kLongForm, kShortForm };

// Appends one line to the day's log file, rotating by day of month and after
// 20,000 lines. The long form names files in the log folder and rotates the
// index only when a file was open; the short form writes in the current
// directory and always moves the index on. announce: also print
// "write logfile:<line>" on standard output. -1 when no file could be opened.
int WriteFileLine(const char* line, const SYSTEMTIME& st, LineForm form, bool announce);

// Sends one line (without its terminating zero) to the monitor, creating the
// socket on first use. -1 when no socket or a short send (the socket is then
// closed and made anew by the next line).
int SendLine(const char* line, size_t len, LineForm form);

// Closes the log file and the socket (release of the log).
void CloseSinks();

}  // namespace debuglog

// The converter's log lines. The converter's objects are linked into the
// program without the library's debug log, whose state lives in
// libquorvel.so alone; its lines go to standard error when --log is given.
#include <cstdarg>
#include <cstdio>

#include "base/debug_log.h"
#include "converter_log.h"

namespace {

bool g_on = false;

}  // namespace

void SetConverterLog(bool on) { g_on = on; }

int DebugLogLine(const char*, const char*, int, const char* fmt, ...) {
  if (!g_on) return 0;
  va_list ap;
  va_start(ap, fmt);
  int n = vfprintf(stderr, fmt, ap);
  va_end(ap);
  return n;
}

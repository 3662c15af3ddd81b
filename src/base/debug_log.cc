#include "base/debug_log.h"

#include <sys/time.h>

#include <cstdio>
#include <cstring>

#include "base/critical_section.h"
#include "base/debug_log_config.h"
#include "base/debug_log_sinks.h"
#include "base/debug_log_state.h"

using namespace debuglog;

namespace {

// "调用DebugRelease比调用DebugInit多!" in GB2312: DebugRelease was called
// more often than DebugInit.
const char kReleaseWarning[] =
    "\xb5\xf7\xd3\xc3" "DebugRelease" "\xb1\xc8\xb5\xf7\xd3\xc3" "DebugInit" "\xb6\xe0!";

// One buffer a thread: callers on several threads format at once.
thread_local char g_ctime_buf[64];

int VDebugLogFunc(const char* fmt, va_list ap) {
  if (!console) return 0;
  struct timeval tv;
  gettimeofday(&tv, nullptr);
  char prefix[256];
  snprintf(prefix, sizeof(prefix), "%s,Tid=0x%X", slogctime(tv.tv_sec),
           static_cast<unsigned>(GetCurrentThreadId()));
  char message[kMaxMessage];
  vsnprintf(message, sizeof(message), fmt, ap);
  printf("[%s]%s\r\n", prefix, message);
  return 0;
}

// The sinks' part of both line forms. `echo` repeats the line on the
// console and has the file sink announce it on standard output, as
// WriteDebugLog and DebugLogType do; the library's own lines reach the
// console only through DebugLogFunc. A failing sink ends the call with -1.
int Deliver(const char* writer, const char* text, const SYSTEMTIME& st, LineForm form,
            bool echo) {
  if (echo) DebugLogFunc("[%s:%d]%s\n", writer, __LINE__, text);
  if (to_file && WriteFileLine(text, st, form, echo && form == kLongForm) != 0) return -1;
  if (to_network && SendLine(text, strlen(text), form) != 0) return -1;
  return 0;
}

// The long line form of WriteDebugLog, and its local time in *st.
void FormatLongLine(const char* func, const char* file, int line, void* obj, const char* fmt,
                    va_list ap, char* text, size_t size, SYSTEMTIME* st) {
  char message[kMaxMessage];
  vsnprintf(message, sizeof(message), fmt, ap);
  local_clock(st);
  char prefix[256];
  snprintf(prefix, sizeof(prefix), "%02d-%02d %02d:%02d:%02d,this=0x%p,Tid=0x%X", st->tm_mon,
           st->tm_mday, st->tm_hour, st->tm_min, st->tm_sec, obj,
           static_cast<unsigned>(GetCurrentThreadId()));
  if (show_file_line) {
    snprintf(text, size, "%s:%s-----------fun=%s,file:%s,line:%d,%s\r\n", kName, message,
             func ? func : "", file ? file : "", line, prefix);
  } else {
    snprintf(text, size, "%s:%s,%s\r\n", kName, prefix, message);
  }
}

int VWriteDebugLog(const char* func, const char* file, int line, void* obj, const char* fmt,
                   va_list ap, bool echo) {
  if (!to_file && !to_network) return -1;
  char text[kMaxMessage + 1024];
  SYSTEMTIME st;
  FormatLongLine(func, file, line, obj, fmt, ap, text, sizeof(text), &st);
  return Deliver("WriteDebugLog", text, st, kLongForm, echo);
}

}  // namespace

const char* slogctime(long t) {
  if (t == 0) {
    g_ctime_buf[0] = '\0';
    return g_ctime_buf;
  }
  time_t tt = static_cast<time_t>(t);
  struct tm tmv;
  if (localtime_r(&tt, &tmv) == nullptr ||
      snprintf(g_ctime_buf, sizeof(g_ctime_buf), "%04d-%02d-%02d %02d:%02d:%02d",
               tmv.tm_year + 1900, tmv.tm_mon + 1, tmv.tm_mday, tmv.tm_hour, tmv.tm_min,
               tmv.tm_sec) < 0) {
    g_ctime_buf[0] = '\0';
  }
  return g_ctime_buf;
}

int DebugLogFunc(const char* fmt, ...) {
  va_list ap;
  va_start(ap, fmt);
  int ret = VDebugLogFunc(fmt, ap);
  va_end(ap);
  return ret;
}

int WriteDebugLog(const char* func, const char* file, int line, int, void* obj, const char* fmt,
                  ...) {
  va_list ap;
  va_start(ap, fmt);
  int ret = VWriteDebugLog(func, file, line, obj, fmt, ap, true);
  va_end(ap);
  return ret;
}

int DebugLogLine(const char* func, const char* file, int line, const char* fmt, ...) {
  va_list ap;
  va_start(ap, fmt);
  int ret = 0;
  if (console) {
    va_list copy;
    va_copy(copy, ap);
    ret = VDebugLogFunc(fmt, copy);
    va_end(copy);
  }
  // The file and UDP sinks get the long form, without a word on the console.
  if (to_file || to_network) ret = VWriteDebugLog(func, file, line, nullptr, fmt, ap, false);
  va_end(ap);
  return ret;
}

int DebugLogType(LOGTYPE, const char* fmt, ...) {
  char message[kMaxMessage];
  va_list ap;
  va_start(ap, fmt);
  vsnprintf(message, sizeof(message), fmt, ap);
  va_end(ap);
  SYSTEMTIME st;
  local_clock(&st);
  char prefix[128];
  snprintf(prefix, sizeof(prefix), "%04d-%02d-%02d %02d:%02d:%02d: %08x: ", st.tm_year, st.tm_mon,
           st.tm_mday, st.tm_hour, st.tm_min, st.tm_sec,
           static_cast<unsigned>(GetCurrentThreadId()));
  char text[kMaxMessage + 256];
  snprintf(text, sizeof(text), "%s: %s%s\r\n", kName, prefix, message);
  return Deliver("DebugLogType", text, st, kShortForm, true);
}

int DebugInitLoad(int reload) {
  DebugStartThread();
  to_file = 0;
  to_network = 0;
  level = 0;
  monitor_ip[0] = '\0';
  start_time[0] = '\0';
  show_file_line = 0;
  {
    CriticalSectionGuard guard(&log_lock);
    line_count = 0;
    file_index = 0;
    last_day = 0;
    file = nullptr;  // a file left open by a reload is forgotten, as designed
    log_dir[0] = '\0';
  }
  {
    CriticalSectionGuard guard(&sock_lock);
    sock = -1;
  }
  init_count = 0;
  lock_deleted = 0;
  level = 10;
  monitor_ip[0] = '\0';

  SYSTEMTIME st;
  local_clock(&st);
  snprintf(start_time, sizeof(start_time), "%02d%02d%02d", st.tm_hour, st.tm_min, st.tm_sec);

  // The handles were cleared above, so a reload closes nothing here.
  if (reload) CloseSinks();

  if (!ReadDebugConfigFile()) return 0;
  CONSOLE_LOG("[%s:%d]%s Build %s %s\r\n\n", kName, kBuildDate, kBuildTime);
  return 0;
}

int DebugInit() {
  int count = init_count + 1;
  if (count == 1) {
    DebugInitLoad(0);
    init_count = count;
    return 0;
  }
  init_count = count;
  CONSOLE_LOG("[%s:%d]DebugInit() count=%d!\n", count);
  return 0;
}

int DebugRelease() {
  int count = --init_count;
  if (count > 0) return 0;
  if (count < 0) {
    // The count stays below 0: the next DebugInit only counts, it does not
    // load the configuration again.
    CONSOLE_LOG("[%s:%d]DebugRelease() count=%d,%s", count, kReleaseWarning);
    return 0;
  }
  CONSOLE_LOG("[%s:%d]DebugRelease %s %s %s\n\n", kName, kBuildDate, kBuildTime);
  listener_running = 0;
  to_file = 0;
  to_network = 0;
  CloseSinks();
  // The lock itself stays valid (see debug_log_state.cc); the flag records
  // that the log let go of it.
  lock_deleted = 1;
  return 0;
}

int DebugLogSwitch(int on) {
  console = on >= 1 ? 1 : 0;
  return 0;
}

int ChangeDebugFileDir(const char* dir) {
  if (dir == nullptr) return -1;
  size_t len = strlen(dir);
  if (len == 0) return -2;
  if (len >= kDirSize) return -3;
  CriticalSectionGuard guard(&log_lock);
  if (file != nullptr) {
    fclose(file);
    file = nullptr;
  }
  // Only the characters are copied: a shorter folder keeps the tail of a
  // longer previous one (kept as designed).
  memcpy(log_dir, dir, len);
  return 0;
}

int SetLogToFile(unsigned long mode, char* dir, int) {
  if (mode == 0) {
    to_file = 0;
    to_network = 0;
    return 0;
  }
  ChangeDebugFileDir(dir);
  if (mode & 2) to_network = 1;
  if (mode & 1) to_file = 1;
  if (!to_file && !to_network) to_file = 1;
  return 0;
}

DebugLogState DebugGetState() {
  DebugLogState s;
  memset(&s, 0, sizeof(s));
  s.console = console;
  s.to_file = to_file;
  s.to_network = to_network;
  s.level = level;
  s.show_file_line = show_file_line;
  s.init_count = init_count;
  memcpy(s.monitor_ip, monitor_ip, sizeof(s.monitor_ip));
  memcpy(s.start_time, start_time, sizeof(s.start_time));
  CriticalSectionGuard guard(&log_lock);
  s.line_count = line_count;
  s.file_index = file_index;
  s.last_day = last_day;
  s.file_open = file != nullptr;
  memcpy(s.log_dir, log_dir, sizeof(s.log_dir));
  return s;
}

void DebugSetClock(void (*clock)(SYSTEMTIME*)) { local_clock = clock ? clock : GetLocalTime; }

void DebugSetConfigPath(const char* path) {
  snprintf(config_path, sizeof(config_path), "%s", path ? path : "./player_dbg.cfg");
}

void DebugSetMonitorPort(unsigned short port) { monitor_port = port; }

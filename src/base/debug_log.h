// The process-wide debug log: console, daily-rotated file and UDP sinks.
//
// Every log line of the library is written with QV_LOG, whose format begins
// with "[%s:%d]"; the macro fills those two with the calling function's name
// and the source line. A line goes to the console (DebugLogFunc) when the
// console switch is on, and in the long form of WriteDebugLog to the file
// and UDP sinks that are on; nothing else ever reaches standard output.
// Settings come from "./player_dbg.cfg" (see debug_log_config.h) and from
// SetLogToFile / DebugLogSwitch.
#pragma once

#include <cstdarg>

#include "base/compat.h"

#define QV_PRINTF(fmt_index, first_arg) \
  __attribute__((format(printf, fmt_index, first_arg)))

#define QV_LOG(fmt, ...) \
  DebugLogLine(__FUNCTION__, __FILE__, __LINE__, fmt, __FUNCTION__, __LINE__, ##__VA_ARGS__)

enum LOGTYPE { LOGTYPE_DEBUG = 0, LOGTYPE_INFO = 1, LOGTYPE_ERROR = 2 };

// Reference-counted start and release. The first DebugInit loads
// "./player_dbg.cfg"; the last DebugRelease closes the sinks; one release
// too many prints a warning and leaves the count below 0, so that the
// DebugInit that brings it back to 0 does not load again. Both return 0.
int DebugInit();
int DebugRelease();
// Resets every setting, stamps the start time of the file names, reads the
// configuration file and prints the build banner. 0.
int DebugInitLoad(int reload);

// Console switch: on when `on` >= 1.
int DebugLogSwitch(int on);

// mode 0: file and UDP off. Otherwise: folder := dir, bit value 2 UDP on,
// bit value 1 file on, file on when neither ends up on. 0.
int SetLogToFile(unsigned long mode, char* dir, int reserved);

// -1 null, -2 empty, -3 longer than 255; else closes the open file and
// copies the text's characters over the folder; 0.
int ChangeDebugFileDir(const char* dir);

// Console line "[<time>,Tid=0x..]<message>\r\n" when the switch is on. 0.
int DebugLogFunc(const char* fmt, ...) QV_PRINTF(1, 2);

// File and UDP line, long form, echoed to the console when the switch is on;
// the file sink also prints "write logfile:<line>" on standard output.
// -1 when both sinks are off or a send fails.
int WriteDebugLog(const char* func, const char* file, int line, int reserved,
                  void* obj, const char* fmt, ...) QV_PRINTF(6, 7);

// File and UDP line, short form: writes "./Quorvel_..." whatever the log
// folder, and is formatted even when both sinks are off.
int DebugLogType(LOGTYPE type, const char* fmt, ...) QV_PRINTF(2, 3);

// Local time "%04d-%02d-%02d %02d:%02d:%02d" in one shared static buffer;
// 0 gives "".
const char* slogctime(long t);

// What QV_LOG calls: the console line when the switch is on, and the long
// form to the file and UDP sinks that are on (without echo or announcement).
int DebugLogLine(const char* func, const char* file, int line, const char* fmt,
                 ...) QV_PRINTF(4, 5);

// Reload listener: deliberately never started (DebugStartThread answers -1
// without creating a thread); DebugThread is its body.
int DebugStartThread();
void* DebugThread(void* arg);

// --- for tests and diagnostics -------------------------------------------
struct DebugLogState {
  int console;
  int to_file;
  int to_network;
  int level;
  int show_file_line;
  int line_count;
  int file_index;
  int last_day;
  int init_count;
  bool file_open;
  char monitor_ip[64];
  char log_dir[256];
  char start_time[64];
};
DebugLogState DebugGetState();

// The clock the file and UDP lines read (GetLocalTime by default, also for
// the start time); null restores it.
void DebugSetClock(void (*clock)(SYSTEMTIME*));

// The configuration file read by DebugInitLoad ("./player_dbg.cfg").
void DebugSetConfigPath(const char* path);

// The UDP port of the monitor (3000).
void DebugSetMonitorPort(unsigned short port);

// Parses a configuration text into the log settings (used by DebugInitLoad).
void GetDebugConfig(const char* text);

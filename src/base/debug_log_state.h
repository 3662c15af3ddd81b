// Process-wide state of the debug log, shared by its parts (switches and
// writers, configuration file, sinks, reload listener). Not for other code:
// the rest of the library uses base/debug_log.h.
#pragma once

#include <pthread.h>

#include <atomic>
#include <cstdio>

#include "base/compat.h"
#include "base/critical_section.h"
#include "base/debug_log.h"

// The log's own messages go to the console only: routing them through the
// file or UDP sink could recurse into the sink that is failing.
#define CONSOLE_LOG(fmt, ...) DebugLogFunc(fmt, __FUNCTION__, __LINE__, ##__VA_ARGS__)

namespace debuglog {

extern const char kName[];        // "Quorvel", in lines and file names
extern const char kBuildDate[];
extern const char kBuildTime[];
const int kMaxMessage = 10240;    // message buffer; 10,239 characters at most
const int kLinesPerFile = 20000;
const int kDirSize = 256;
const int kMonitorIpSize = 64;

extern std::atomic<int> console;
extern std::atomic<int> to_file;
extern std::atomic<int> to_network;
extern int level;
extern char monitor_ip[kMonitorIpSize];  // empty: 127.0.0.1
extern char log_dir[kDirSize];           // guarded by log_lock
extern int show_file_line;
extern char start_time[64];
extern FILE* file;                       // guarded by log_lock
extern int line_count;                   // guarded by log_lock
extern int file_index;                   // guarded by log_lock
extern int last_day;                     // guarded by log_lock
extern int sock;                         // -1: none; guarded by sock_lock
extern CRITICAL_SECTION log_lock;
extern CRITICAL_SECTION sock_lock;
extern int init_count;
extern int lock_deleted;
extern std::atomic<int> listener_running;
extern pthread_t listener_thread;
extern unsigned long listener_id;

extern void (*local_clock)(SYSTEMTIME*);  // GetLocalTime unless a test sets one
extern char config_path[256];
extern unsigned short monitor_port;

}  // namespace debuglog

#include "base/debug_log.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/critical_section.h"

// The log's own messages go to the console only: routing them through the
// file or UDP sink could recurse into the sink that is failing.
#define CONSOLE_LOG(fmt, ...) DebugLogFunc(fmt, __FUNCTION__, __LINE__, ##__VA_ARGS__)

namespace {

const char kName[] = "Quorvel";
const char kBuildDate[] = "Jul 25 2023";
const char kBuildTime[] = "13:08:44";
const int kMaxMessage = 10240;
const int kLinesPerFile = 20000;
// "调用DebugRelease比调用DebugInit多!" in GB2312: DebugRelease was called
// more often than DebugInit.
const char kReleaseWarning[] =
    "\xb5\xf7\xd3\xc3" "DebugRelease" "\xb1\xc8\xb5\xf7\xd3\xc3" "DebugInit" "\xb6\xe0!";

std::atomic<int> g_console{0};
std::atomic<int> g_to_file{0};
std::atomic<int> g_to_network{0};
int g_level = 0;
char g_monitor_ip[64] = "";
char g_log_dir[256] = "";
int g_show_file_line = 0;
char g_start_time[64] = "";
FILE* g_file = nullptr;
int g_line_count = 0;
int g_file_index = 0;
int g_last_day = 0;
// A socket of -1 means none. (Zero is a valid descriptor, so it is never
// used to mean "none".)
int g_sock = -1;
CRITICAL_SECTION g_log_lock = PTHREAD_MUTEX_INITIALIZER;
int g_init_count = 0;
int g_lock_deleted = 0;
int g_listener_running = 0;
pthread_t g_listener_thread = 0;
unsigned long g_listener_id = 0;

void (*g_clock)(SYSTEMTIME*) = GetLocalTime;
char g_config_path[256] = "./player_dbg.cfg";
unsigned short g_monitor_port = 3000;

char g_ctime_buf[64];

// Copies at most cap - 1 bytes of [begin, end) and terminates.
void CopySpan(char* dst, size_t cap, const char* begin, const char* end) {
  size_t n = static_cast<size_t>(end - begin);
  if (n >= cap) n = cap - 1;
  memcpy(dst, begin, n);
  dst[n] = '\0';
}

// Finds "key" and the ';' that ends its value. False when either is missing.
bool FindSetting(const char* text, const char* key, const char** begin, const char** end) {
  const char* k = strstr(text, key);
  if (k == nullptr) return false;
  const char* v = k + strlen(key);
  const char* semi = strchr(v, ';');
  if (semi == nullptr) return false;
  *begin = v;
  *end = semi;
  return true;
}

// The folder test of the original layout, which always answers "missing".
int FolderExist(const char*) { return 0; }

// A numeric setting: an absent key gives `absent`, a key without its ';'
// leaves the value as it is, otherwise the value is read with atoi.
int IntSetting(const char* text, const char* key, int absent, int current) {
  if (strstr(text, key) == nullptr) return absent;
  const char* b;
  const char* e;
  if (!FindSetting(text, key, &b, &e)) return current;
  char buf[32];
  CopySpan(buf, sizeof(buf), b, e);
  return atoi(buf);
}

int SendLine(const char* line, size_t len, const char* who, bool short_form) {
  if (g_sock < 0) {
    g_sock = socket(AF_INET, SOCK_DGRAM, 0);
    if (g_sock < 0) {
      g_sock = -1;
      if (short_form)
        CONSOLE_LOG("[%s:%d]%s: ERR %d: create socket failed!\n", who, errno);
      else
        CONSOLE_LOG("[%s:%d]%s: DebugLog()  ERR %d: create socket failed!\n\n", who, errno);
      return -1;
    }
  }
  struct sockaddr_in to;
  memset(&to, 0, sizeof(to));
  to.sin_family = AF_INET;
  to.sin_port = htons(g_monitor_port);
  to.sin_addr.s_addr = inet_addr(g_monitor_ip[0] ? g_monitor_ip : "127.0.0.1");
  ssize_t sent = sendto(g_sock, line, len, 0, reinterpret_cast<struct sockaddr*>(&to), sizeof(to));
  if (sent < static_cast<ssize_t>(len)) {
    if (short_form)
      CONSOLE_LOG("[%s:%d]%s: ERR %d: sendto failed!\n", who, errno);
    else
      CONSOLE_LOG("[%s:%d]%s:  DebugLog() ERR %d:sendto failed!\n\n", who, errno);
    close(g_sock);
    g_sock = -1;
    return -1;
  }
  return 0;
}

// The file sink shared by both line forms. The long form rotates only when a
// file was open and names files in the log folder; the short form always
// bumps the index and writes to the current directory.
void WriteFileLine(const char* line, const SYSTEMTIME& st, bool short_form) {
  CriticalSectionGuard guard(&g_log_lock);
  if (g_file != nullptr && st.tm_mday != g_last_day) {
    fclose(g_file);
    g_file = nullptr;
    g_line_count = 0;
    g_file_index = 0;
  } else if (g_line_count >= kLinesPerFile) {
    bool was_open = g_file != nullptr;
    if (was_open) {
      fclose(g_file);
      g_file = nullptr;
    }
    if (was_open || short_form) ++g_file_index;
    g_line_count = 0;
  } else {
    ++g_line_count;
  }
  g_last_day = st.tm_mday;
  if (g_file == nullptr) {
    char name[512];
    if (short_form) {
      snprintf(name, sizeof(name), "./%s_%04d%02d%02d_%s_%d.log", kName, st.tm_year, st.tm_mon,
               st.tm_mday, g_start_time, g_file_index);
    } else {
      snprintf(name, sizeof(name), "%s/%s_%04d%02d%02d_%s_%d.log", g_log_dir, kName, st.tm_year,
               st.tm_mon, st.tm_mday, g_start_time, g_file_index);
    }
    g_file = fopen(name, "a");
    if (g_file == nullptr) {
      if (short_form)
        CONSOLE_LOG("[%s:%d]%s: ERR %d: open debug file error.\n", kName, errno);
      else
        CONSOLE_LOG("[%s:%d]%s: DebugLog() ERR %d: open debug file error.\r\n\n", kName, errno);
      return;
    }
  }
  fputs(line, g_file);
  if (!short_form) printf("write logfile:%s\n", line);
  fflush(g_file);
}

int VWriteDebugLog(const char* func, const char* file, int line, void* obj, const char* fmt,
                   va_list ap) {
  if (!g_to_file && !g_to_network) return -1;
  char message[kMaxMessage];
  vsnprintf(message, sizeof(message), fmt, ap);
  SYSTEMTIME st;
  g_clock(&st);
  char prefix[256];
  snprintf(prefix, sizeof(prefix), "%02d-%02d %02d:%02d:%02d,this=0x%p,Tid=0x%X", st.tm_mon,
           st.tm_mday, st.tm_hour, st.tm_min, st.tm_sec, obj,
           static_cast<unsigned>(GetCurrentThreadId()));
  char text[kMaxMessage + 512];
  if (g_show_file_line) {
    snprintf(text, sizeof(text), "%s:%s-----------fun=%s,file:%s,line:%d,%s\r\n", kName, message,
             func ? func : "", file ? file : "", line, prefix);
  } else {
    snprintf(text, sizeof(text), "%s:%s,%s\r\n", kName, prefix, message);
  }
  DebugLogFunc("[%s:%d]%s\n", __FUNCTION__, __LINE__, text);
  if (g_to_file) WriteFileLine(text, st, false);
  if (g_to_network && SendLine(text, strlen(text), kName, false) != 0) return -1;
  return 0;
}

int VDebugLogFunc(const char* fmt, va_list ap) {
  if (!g_console) return 0;
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
  int ret = VWriteDebugLog(func, file, line, obj, fmt, ap);
  va_end(ap);
  return ret;
}

int DebugLogLine(const char* func, const char* file, int line, const char* fmt, ...) {
  va_list ap;
  va_start(ap, fmt);
  int ret;
  if (g_to_file || g_to_network) {
    ret = VWriteDebugLog(func, file, line, nullptr, fmt, ap);
  } else {
    ret = VDebugLogFunc(fmt, ap);
  }
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
  g_clock(&st);
  char prefix[128];
  snprintf(prefix, sizeof(prefix), "%04d-%02d-%02d %02d:%02d:%02d: %08x: ", st.tm_year, st.tm_mon,
           st.tm_mday, st.tm_hour, st.tm_min, st.tm_sec,
           static_cast<unsigned>(GetCurrentThreadId()));
  char text[kMaxMessage + 256];
  snprintf(text, sizeof(text), "%s: %s%s\r\n", kName, prefix, message);
  DebugLogFunc("[%s:%d]%s\n", __FUNCTION__, __LINE__, text);
  if (g_to_file) WriteFileLine(text, st, true);
  if (g_to_network && SendLine(text, strlen(text), kName, true) != 0) return -1;
  return 0;
}

void GetDebugConfig(const char* text) {
  g_to_file = IntSetting(text, "file=", 0, g_to_file) != 0 ? 1 : 0;
  g_to_network = IntSetting(text, "network=", 0, g_to_network) != 0 ? 1 : 0;
  g_level = IntSetting(text, "level=", 0, g_level);
  const char* b;
  const char* e;
  if (strstr(text, "monitor_ip=") == nullptr) {
    g_monitor_ip[0] = '\0';
  } else if (FindSetting(text, "monitor_ip=", &b, &e)) {
    CopySpan(g_monitor_ip, sizeof(g_monitor_ip), b, e);
  }
  if (strstr(text, "debugfilepath=") == nullptr) {
    // The original clears the monitor address here; kept.
    g_monitor_ip[0] = '\0';
  } else if (FindSetting(text, "debugfilepath=", &b, &e)) {
    char dir[256];
    CopySpan(dir, sizeof(dir), b, e);
    if (dir[0] != '\0') mkdir(dir, 0755);
    if (!FolderExist(dir)) snprintf(g_log_dir, sizeof(g_log_dir), "%s", "./");
  }
  g_show_file_line = IntSetting(text, "showfileline=", 0, g_show_file_line);
}

int DebugStartThread() {
  if (g_listener_thread != 0) return 0;
  g_listener_running = -1;
  return -1;
}

// Body of the reload listener. Kept for completeness; DebugStartThread never
// starts it.
void* DebugThread(void*) {
  int sock = -1;
  int port = 0;
  srand(static_cast<unsigned>(GetTickCount()));
  g_listener_id = GetCurrentThreadId();
  while (g_listener_running) {
    if (sock < 0) {
      sock = socket(AF_INET, SOCK_DGRAM, 0);
      if (sock >= 0) {
        port = 15180 + rand() % 50000;
        struct sockaddr_in addr;
        memset(&addr, 0, sizeof(addr));
        addr.sin_family = AF_INET;
        addr.sin_port = htons(static_cast<unsigned short>(port));
        addr.sin_addr.s_addr = htonl(INADDR_ANY);
        if (bind(sock, reinterpret_cast<struct sockaddr*>(&addr), sizeof(addr)) != 0) {
          close(sock);
          sock = -1;
        }
      }
      if (sock >= 0 && access("c:\\netdll_dbg.cfg", F_OK) == 0) {
        FILE* f = fopen("c:\\portlist.txt", "a");
        if (f != nullptr) {
          SYSTEMTIME st;
          GetLocalTime(&st);
          fprintf(f, "ThreadId=%x,%04d-%02d-%02d %02d:%02d:%02d,port:%d\r\n",
                  static_cast<unsigned>(g_listener_id), st.tm_year, st.tm_mon, st.tm_mday,
                  st.tm_hour, st.tm_min, st.tm_sec, port);
          fclose(f);
        }
      }
    }
    if (sock >= 0) {
      fd_set rd;
      FD_ZERO(&rd);
      FD_SET(sock, &rd);
      struct timeval tv = {1, 0};
      int n = select(sock + 1, &rd, nullptr, nullptr, &tv);
      if (n < 0) {
        close(sock);
        sock = -1;
      } else if (n > 0) {
        char buf[kMaxMessage + 1];
        ssize_t got = recv(sock, buf, kMaxMessage, 0);
        if (got < 0) {
          close(sock);
          sock = -1;
        } else {
          buf[got] = '\0';
          if (strncmp(buf, "reloaddebug", 11) == 0) DebugInitLoad(1);
        }
      }
    }
    SleepMs(100);
  }
  if (sock >= 0) close(sock);
  return nullptr;
}

int DebugInitLoad(int reload) {
  DebugStartThread();
  g_to_file = 0;
  g_to_network = 0;
  g_level = 0;
  g_monitor_ip[0] = '\0';
  g_start_time[0] = '\0';
  g_line_count = 0;
  g_file_index = 0;
  g_last_day = 0;
  g_show_file_line = 0;
  g_file = nullptr;  // a reload forgets a file left open: kept as designed
  g_sock = -1;
  g_log_dir[0] = '\0';
  // The log lock is created statically and lives as long as the process, so
  // a line logged from another thread during a reload never meets a lock
  // being re-created.
  g_lock_deleted = 0;
  g_level = 10;
  g_monitor_ip[0] = '\0';

  SYSTEMTIME st;
  g_clock(&st);
  snprintf(g_start_time, sizeof(g_start_time), "%02d%02d%02d", st.tm_hour, st.tm_min, st.tm_sec);

  if (reload) {
    if (g_file != nullptr) {
      fclose(g_file);
      g_file = nullptr;
    }
    if (g_sock != -1) {
      shutdown(g_sock, SHUT_RDWR);
      close(g_sock);
    }
  }

  FILE* f = fopen(g_config_path, "rb");
  if (f == nullptr) return 0;
  fseek(f, 0, SEEK_END);
  long len = ftell(f);
  fseek(f, 0, SEEK_SET);
  if (len < 0) len = 0;
  char* text = nullptr;
  for (int attempt = 0; attempt < 200 && text == nullptr; ++attempt) {
    text = static_cast<char*>(malloc(static_cast<size_t>(len) + 1));
    if (text == nullptr) SleepMs(1);
  }
  if (text != nullptr) {
    size_t got = fread(text, 1, static_cast<size_t>(len), f);
    text[got] = '\0';
    GetDebugConfig(text);
    free(text);
  }
  fclose(f);
  CONSOLE_LOG("[%s:%d]%s Build %s %s\r\n\n", kName, kBuildDate, kBuildTime);
  return 0;
}

int DebugInit() {
  int count = ++g_init_count;
  if (count == 1) {
    DebugInitLoad(0);
    g_init_count = count;
    return 0;
  }
  CONSOLE_LOG("[%s:%d]DebugInit() count=%d!\n", count);
  return 0;
}

int DebugRelease() {
  int count = --g_init_count;
  if (count > 0) return 0;
  if (count < 0) {
    CONSOLE_LOG("[%s:%d]DebugRelease() count=%d,%s", count, kReleaseWarning);
    g_init_count = 0;  // a later DebugInit starts afresh
    return 0;
  }
  CONSOLE_LOG("[%s:%d]DebugRelease %s %s %s\n\n", kName, kBuildDate, kBuildTime);
  g_listener_running = 0;
  g_to_file = 0;
  g_to_network = 0;
  {
    CriticalSectionGuard guard(&g_log_lock);
    if (g_file != nullptr) {
      fclose(g_file);
      g_file = nullptr;
    }
  }
  if (g_sock != -1) {
    close(g_sock);
    g_sock = -1;
  }
  // The lock itself is kept: a line logged after the release still takes it.
  g_lock_deleted = 1;
  return 0;
}

int DebugLogSwitch(int on) {
  g_console = on >= 1 ? 1 : 0;
  return 0;
}

int ChangeDebugFileDir(const char* dir) {
  if (dir == nullptr) return -1;
  size_t len = strlen(dir);
  if (len == 0) return -2;
  if (len > 255) return -3;
  CriticalSectionGuard guard(&g_log_lock);
  if (g_file != nullptr) {
    fclose(g_file);
    g_file = nullptr;
  }
  // Only the characters are copied: a shorter folder keeps the tail of a
  // longer previous one (kept as designed).
  memcpy(g_log_dir, dir, len);
  return 0;
}

int SetLogToFile(unsigned long mode, char* dir, int) {
  if (mode == 0) {
    g_to_file = 0;
    g_to_network = 0;
    return 0;
  }
  ChangeDebugFileDir(dir);
  if (mode & 2) g_to_network = 1;
  if (mode & 1) g_to_file = 1;
  if (!g_to_file && !g_to_network) g_to_file = 1;
  return 0;
}

DebugLogState DebugGetState() {
  DebugLogState s;
  memset(&s, 0, sizeof(s));
  s.console = g_console;
  s.to_file = g_to_file;
  s.to_network = g_to_network;
  s.level = g_level;
  s.show_file_line = g_show_file_line;
  s.line_count = g_line_count;
  s.file_index = g_file_index;
  s.last_day = g_last_day;
  s.init_count = g_init_count;
  s.file_open = g_file != nullptr;
  memcpy(s.monitor_ip, g_monitor_ip, sizeof(s.monitor_ip));
  memcpy(s.log_dir, g_log_dir, sizeof(s.log_dir));
  memcpy(s.start_time, g_start_time, sizeof(s.start_time));
  return s;
}

void DebugSetClock(void (*clock)(SYSTEMTIME*)) { g_clock = clock ? clock : GetLocalTime; }

void DebugSetConfigPath(const char* path) {
  snprintf(g_config_path, sizeof(g_config_path), "%s", path ? path : "./player_dbg.cfg");
}

void DebugSetMonitorPort(unsigned short port) { g_monitor_port = port; }

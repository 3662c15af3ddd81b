#include "base/debug_log_sinks.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "base/debug_log_state.h"

namespace debuglog {

namespace {

// Opens the file of the current index. Caller holds log_lock.
bool OpenLogFile(const SYSTEMTIME& st, LineForm form) {
  char name[kDirSize + 128];
  if (form == kShortForm) {
    snprintf(name, sizeof(name), "./%s_%04d%02d%02d_%s_%d.log", kName, st.tm_year, st.tm_mon,
             st.tm_mday, start_time, file_index);
  } else {
    // With no folder set the files go to the current directory rather than
    // to the root of the file system.
    snprintf(name, sizeof(name), "%s/%s_%04d%02d%02d_%s_%d.log", log_dir[0] ? log_dir : ".",
             kName, st.tm_year, st.tm_mon, st.tm_mday, start_time, file_index);
  }
  file = fopen(name, "a");
  if (file != nullptr) return true;
  if (form == kShortForm)
    CONSOLE_LOG("[%s:%d]%s: ERR %d: open debug file error.\n", kName, errno);
  else
    CONSOLE_LOG("[%s:%d]%s: DebugLog() ERR %d: open debug file error.\r\n\n", kName, errno);
  return false;
}

}  // namespace

int WriteFileLine(const char* line, const SYSTEMTIME& st, LineForm form, bool announce) {
  CriticalSectionGuard guard(&log_lock);
  if (file != nullptr && st.tm_mday != last_day) {
    fclose(file);
    file = nullptr;
    line_count = 0;
    file_index = 0;
  } else if (line_count >= kLinesPerFile) {
    bool was_open = file != nullptr;
    if (was_open) {
      fclose(file);
      file = nullptr;
    }
    if (was_open || form == kShortForm) ++file_index;
    line_count = 0;
  } else {
    ++line_count;
  }
  last_day = st.tm_mday;
  if (file == nullptr && !OpenLogFile(st, form)) return -1;
  fputs(line, file);
  if (announce) printf("write logfile:%s\n", line);
  fflush(file);
  return 0;
}

int SendLine(const char* line, size_t len, LineForm form) {
  // The socket has a lock of its own: without it two threads could each
  // create one, or one could close it while another sends on it.
  CriticalSectionGuard guard(&sock_lock);
  if (sock == -1) {
    sock = socket(AF_INET, SOCK_DGRAM, 0);
    if (sock < 0) {
      sock = -1;
      if (form == kShortForm)
        CONSOLE_LOG("[%s:%d]%s: ERR %d: create socket failed!\n", kName, errno);
      else
        CONSOLE_LOG("[%s:%d]%s: DebugLog()  ERR %d: create socket failed!\n\n", kName, errno);
      return -1;
    }
  }
  struct sockaddr_in to;
  memset(&to, 0, sizeof(to));
  to.sin_family = AF_INET;
  to.sin_port = htons(monitor_port);
  to.sin_addr.s_addr = inet_addr(monitor_ip[0] ? monitor_ip : "127.0.0.1");
  ssize_t sent = sendto(sock, line, len, 0, reinterpret_cast<struct sockaddr*>(&to), sizeof(to));
  if (sent < static_cast<ssize_t>(len)) {
    if (form == kShortForm)
      CONSOLE_LOG("[%s:%d]%s: ERR %d: sendto failed!\n", kName, errno);
    else
      CONSOLE_LOG("[%s:%d]%s:  DebugLog() ERR %d:sendto failed!\n\n", kName, errno);
    close(sock);
    sock = -1;
    return -1;
  }
  return 0;
}

void CloseSinks() {
  {
    CriticalSectionGuard guard(&log_lock);
    if (file != nullptr) {
      fclose(file);
      file = nullptr;
    }
  }
  CriticalSectionGuard guard(&sock_lock);
  if (sock != -1) {
    close(sock);
    sock = -1;
  }
}

}  // namespace debuglog

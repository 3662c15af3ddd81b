// The reload listener: a thread that would wait for a "reloaddebug" datagram
// and reload the configuration. DebugStartThread deliberately never starts
// it; the body is kept so that the mechanism stays documented in code.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/debug_log_state.h"

using namespace debuglog;

int DebugStartThread() {
  if (listener_thread != 0) return 0;
  listener_running = -1;
  return -1;
}

namespace {

int OpenListenerSocket(int* port) {
  int s = socket(AF_INET, SOCK_DGRAM, 0);
  if (s < 0) return -1;
  *port = 15180 + rand() % 50000;
  struct sockaddr_in addr;
  memset(&addr, 0, sizeof(addr));
  addr.sin_family = AF_INET;
  addr.sin_port = htons(static_cast<unsigned short>(*port));
  addr.sin_addr.s_addr = htonl(INADDR_ANY);
  if (bind(s, reinterpret_cast<struct sockaddr*>(&addr), sizeof(addr)) != 0) {
    close(s);
    return -1;
  }
  if (access("c:\\netdll_dbg.cfg", F_OK) == 0) {
    FILE* f = fopen("c:\\portlist.txt", "a");
    if (f != nullptr) {
      SYSTEMTIME st;
      GetLocalTime(&st);
      fprintf(f, "ThreadId=%x,%04d-%02d-%02d %02d:%02d:%02d,port:%d\r\n",
              static_cast<unsigned>(listener_id), st.tm_year, st.tm_mon, st.tm_mday, st.tm_hour,
              st.tm_min, st.tm_sec, *port);
      fclose(f);
    }
  }
  return s;
}

}  // namespace

void* DebugThread(void*) {
  int sock = -1;
  int port = 0;
  srand(static_cast<unsigned>(GetTickCount()));
  listener_id = GetCurrentThreadId();
  while (listener_running) {
    if (sock < 0) sock = OpenListenerSocket(&port);
    if (sock >= 0) {
      fd_set rd;
      FD_ZERO(&rd);
      FD_SET(sock, &rd);
      struct timeval tv = {1, 0};
      int n = select(sock + 1, &rd, nullptr, nullptr, &tv);
      char buf[kMaxMessage + 1];
      ssize_t got = n > 0 ? recv(sock, buf, kMaxMessage, 0) : 0;
      if (n < 0 || got < 0) {
        close(sock);
        sock = -1;
      } else if (n > 0) {
        buf[got] = '\0';
        if (strncmp(buf, "reloaddebug", 11) == 0) DebugInitLoad(1);
      }
    }
    SleepMs(100);
  }
  if (sock >= 0) close(sock);
  return nullptr;
}

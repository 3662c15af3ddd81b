#include "stream/rtsp_pull_class.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/compat.h"
#include "base/debug_log.h"
#include "stream/av_stream_source.h"
#include "stream/ending_threads.h"

CRTSPPullClass::CRTSPPullClass(CRTSPObjectList* owner, int pull_mode, int auto_reconnect)
    : CPullClass(owner, pull_mode, auto_reconnect) {
  SetDebugClassName("CRTSPPullClass");
}

CRTSPPullClass::~CRTSPPullClass() { Kill(-1); }

int CRTSPPullClass::Kill(int wait) {
  SetStopFlag();
  CThreadClass::Kill(0);
  return CThreadClass::Kill(wait);
}

int CRTSPPullClass::Thread() {
  CAvStreamSource source(this);
  source.Run();
  return 0;
}

int CRTSPPullClass::Start(int stack_size) {
  QV_LOG("[%s:%d]CRTSPPullClass::Start(int stSize):%d", stack_size);
  return CThreadClass::Start(stack_size);
}

int CRTSPPullClass::RunThread() {
  int ret = CThreadClass::RunThread();
  if (delete_when_done_) {
    delete this;
    ending_threads::Done();
  }
  return ret;
}

int CRTSPPullClass::CheckIpPort(const char* host, int port, CThreadClass* thread) {
  struct sockaddr_in addr;
  memset(&addr, 0, sizeof(addr));
  addr.sin_family = AF_INET;
  addr.sin_port = htons(static_cast<unsigned short>(port));
  if (host == nullptr || inet_pton(AF_INET, host, &addr.sin_addr) != 1) {
    struct addrinfo hints;
    memset(&hints, 0, sizeof(hints));
    hints.ai_family = AF_INET;
    struct addrinfo* found = nullptr;
    if (host == nullptr || getaddrinfo(host, nullptr, &hints, &found) != 0 || found == nullptr) {
      QV_LOG("[%s:%d]server name error %s", host != nullptr ? host : "");
      if (thread != nullptr) {
        thread->SleepThread(1000, 100);
      } else {
        SleepMs(100);
      }
      return -2;
    }
    addr.sin_addr = reinterpret_cast<struct sockaddr_in*>(found->ai_addr)->sin_addr;
    freeaddrinfo(found);
  }
  int fd = socket(AF_INET, SOCK_STREAM, 0);
  if (fd < 0) return -1;
  // The flags become 1, which leaves the socket blocking; kept as it is.
  if (fcntl(fd, F_SETFL, 1) != 0) {
    QV_LOG("[%s:%d]%s ioctlsocket error code=%d", host, 100863);
    close(fd);
    return -100;
  }
  int rc = connect(fd, reinterpret_cast<struct sockaddr*>(&addr), sizeof(addr));
  bool ok = rc == 0;
  // A blocking connect has its answer already, unless a signal cut it short.
  bool pending = rc != 0 && (errno == EINTR || errno == EINPROGRESS || errno == EALREADY);
  unsigned long start = GetTickCount();
  for (int round = 0; pending && round < 400 && GetTickCount() - start < 30000; ++round) {
    if (thread != nullptr && !thread->IsRunning()) break;
    fd_set writable;
    FD_ZERO(&writable);
    FD_SET(fd, &writable);
    struct timeval tv = {0, 400 * 1000};
    int ready = select(fd + 1, nullptr, &writable, nullptr, &tv);
    int error = 0;
    socklen_t len = sizeof(error);
    getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &len);
    if (ready > 0 && error == 0) {
      ok = true;
      break;
    }
    if (ready > 0 || (ready < 0 && round > 40) || (error != 0 && round > 20)) break;
    if (thread != nullptr) {
      thread->SleepThread(1000, 100);
    } else {
      SleepMs(1000);
    }
  }
  if (!ok) QV_LOG("[%s:%d]%s connect to server error,code=%d", host, 100863);
  close(fd);
  return ok ? 0 : -1;
}

// The connection phase of a link round: socket options, name resolution,
// the non-blocking connect and the first login request.
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "base/compat.h"
#include "base/debug_log.h"
#include "link/host_lookup.h"
#include "link/ipc_link_thread.h"
#include "link/ptz_control_class.h"
#include "link/xml_request.h"

namespace {

const int kReportedErrorCode = 100863;  // printed where an error code is expected
const int kRecvBuffer = 262144;
const int kSendBuffer = 20480;
const int kConnectPolls = 400;
const unsigned long kConnectTimeoutMs = 5000;
const int kConnectSliceMs = 300;
const int kLinkTimeoutMs = 5000;

int SocketError(int sock) {
  int err = 0;
  socklen_t len = sizeof(err);
  if (getsockopt(sock, SOL_SOCKET, SO_ERROR, &err, &len) != 0) return errno;
  return err;
}

}  // namespace

// The address to connect to: dotted text directly, else the first IPv4
// address of the name, else whatever inet_addr makes of the text. A stop
// ends the wait for the resolver.
in_addr_t CPTZControlClass::ResolveHost() {
  return ResolveHostAddress(host_, [this] { return Running(); });
}

int CPTZControlClass::OpenSocket() {
  int sock = socket(AF_INET, SOCK_STREAM, 6);
  char label[300];
  snprintf(label, sizeof(label), "ipc[%s:%d]", host_.c_str(), static_cast<int>(port_));
  log_label_ = label;
  framing_.SetDeviceName(log_label_);
  const char* l = log_label_.c_str();
  if (sock < 0) {
    PostStatus(EVENT_SOCKETERROR, "%s ERR %d: create socket failed!", l, kReportedErrorCode);
    return -1;
  }
  int on = 1;
  int idle = 3, interval = 1, probes = 3;
  setsockopt(sock, SOL_SOCKET, SO_KEEPALIVE, &on, sizeof(on));
  setsockopt(sock, IPPROTO_TCP, TCP_KEEPIDLE, &idle, sizeof(idle));
  setsockopt(sock, IPPROTO_TCP, TCP_KEEPINTVL, &interval, sizeof(interval));
  setsockopt(sock, IPPROTO_TCP, TCP_KEEPCNT, &probes, sizeof(probes));

  const char* failure = nullptr;
  int rcvbuf = kRecvBuffer, sndbuf = kSendBuffer;
  struct linger lg;
  lg.l_onoff = 1;  // close resets the connection
  lg.l_linger = 0;
  struct sockaddr_in local;
  memset(&local, 0, sizeof(local));
  local.sin_family = AF_INET;
  local.sin_addr.s_addr = htonl(INADDR_ANY);
  local.sin_port = 0;
  if (setsockopt(sock, SOL_SOCKET, SO_RCVBUF, &rcvbuf, sizeof(rcvbuf)) != 0) {
    failure = "%s ERR %d: set socket SO_RCVBUF option failed!";
  } else if (setsockopt(sock, SOL_SOCKET, SO_SNDBUF, &sndbuf, sizeof(sndbuf)) != 0) {
    failure = "%s ERR %d: set socket SO_SNDBUF option failed!";
  } else if (setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on)) != 0) {
    failure = "%s setsockopt SO_REUSEADDR, Err: %d";
  } else if (setsockopt(sock, SOL_SOCKET, SO_LINGER, &lg, sizeof(lg)) != 0) {
    failure = "%s ERR %d: set socket SO_LINGER option failed!";
  } else if (bind(sock, reinterpret_cast<struct sockaddr*>(&local), sizeof(local)) != 0) {
    failure = "%s ERR %d: bind socket failed!";
  }
  if (failure != nullptr) {
    char text[512];
    snprintf(text, sizeof(text), failure, l, kReportedErrorCode);
    PostStatus(EVENT_SOCKETERROR, "%s", text);
    close(sock);
    return -1;
  }
  return sock;
}

bool CPTZControlClass::Connect(int sock) {
  struct sockaddr_in peer;
  memset(&peer, 0, sizeof(peer));
  peer.sin_family = AF_INET;
  peer.sin_port = htons(static_cast<uint16_t>(port_));
  peer.sin_addr.s_addr = ResolveHost();
  int flags = fcntl(sock, F_GETFL, 0);
  fcntl(sock, F_SETFL, flags | O_NONBLOCK);

  const char* addr = address_text_.c_str();
  bool connected = false;
  unsigned long start = GetTickCount();
  // A stop that ended the name look-up also ends the attempt.
  int ret = -1;
  errno = 0;
  if (Running()) ret = connect(sock, reinterpret_cast<struct sockaddr*>(&peer), sizeof(peer));
  if (ret == 0) {
    connected = true;
  } else if (errno == EINPROGRESS || errno == EINTR) {
    // Polls of at most 300 ms, so that a stop is seen in time.
    for (int polls = 1; polls <= kConnectPolls; ++polls) {
      if (!Running() || GetTickCount() - start > kConnectTimeoutMs) break;
      struct pollfd pfd;
      pfd.fd = sock;
      pfd.events = POLLOUT | POLLPRI;
      pfd.revents = 0;
      int n = poll(&pfd, 1, kConnectSliceMs);
      if (n > 0) {
        int err = SocketError(sock);
        if (err == 0) {
          QV_LOG("[%s:%d]connect %s ok \n\n", addr);
          connected = true;
        } else {
          QV_LOG("[%s:%d]connect %s getsockopt SO_ERROR return %d =.=bConnectServerOK:%d \n\n",
                 addr, err, 0);
        }
        break;
      }
      if (n < 0) {
        int err = SocketError(sock);
        if (err != 0 && polls > 20) {
          printf("connect %s getsockopt SO_ERROR return %d,bConnectServerOK:%d ==\n", addr, err, 0);
          break;
        }
      }
      if (n != 0) link_thread_->SleepThread(10, 100);
    }
  }
  if (!connected) {
    QV_LOG("[%s:%d]error connect to ipc[%s:%d] code=%d\n", host_.c_str(),
           static_cast<int>(port_), kReportedErrorCode);
    PostStatus(EVENT_CONNECTFAILED, "error connect  ipc[%s:%d] error,error code =%d\n",
               host_.c_str(), static_cast<int>(port_), kReportedErrorCode);
    return false;
  }
  // Back to blocking mode for the rest of the link's life.
  QV_LOG("[%s:%d]connecting server set nonblock\n");
  if (fcntl(sock, F_SETFL, flags & ~O_NONBLOCK) != 0) {
    PostStatus(EVENT_SOCKETERROR, "ipc[%s:%d] ioctlsocket error code =%d", host_.c_str(),
               static_cast<int>(port_), kReportedErrorCode);
    return false;
  }
  link_state_ = kConnected;
  PostStatus(EVENT_CONNECTOK, "ipc[%s] connect socket OK!", addr);
  return true;
}

bool CPTZControlClass::SendLogin(char* request, int request_size, bool first) {
  char body[1024];
  // The first request names the authentication method; resends leave it out.
  snprintf(body, sizeof(body),
           first ? "<USER_AUTH_PARAM\nUsername=\"%s\" Password=\"%s\" AuthMethod=\"1\"/>%s"
                 : "<USER_AUTH_PARAM\nUsername=\"%s\" Password=\"%s\"/>%s",
           user_.c_str(), password_.c_str(),
           encrypt_ ? "<ENCRYPT Capbility=\"SUPPORT_VXE\" Version=\"1\" />" : "");
  if (first) QV_LOG("[%s:%d]send auth message %s\n\n", body);
  int size = request_size < 1024 ? request_size : 1024;
  int len = MakeXMLRequest(request, size, "USER_AUTH_MESSAGE", "CMD_USER_AUTH", "0", body);
  int sent = framing_.send_with_header(sock_, request, len, kLinkTimeoutMs, 0);
  return sent == len;
}

CPTZControlClass::RoundResult CPTZControlClass::ConnectPhase(char* request, int request_size) {
  sock_ = OpenSocket();
  if (sock_ < 0) return auto_reconnect_ ? kRoundRetry : kRoundStop;
  if (!Connect(sock_)) {
    CloseSocket();
    return auto_reconnect_ ? kRoundRetry : kRoundStop;
  }
  if (!SendLogin(request, request_size, true)) {
    PostStatus(EVENT_SOCKETERROR, "%s send auth request failed, error code =%d",
               log_label_.c_str(), kReportedErrorCode);
    CloseSocket();
    return auto_reconnect_ ? kRoundRetry : kRoundStop;
  }
  QV_LOG("[%s:%d]send auth message ok, enter main loop...\n");
  unsigned long now = GetTickCount();
  heartbeat_tick_ = now;
  last_recv_tick_ = now;
  login_send_tick_ = now;
  login_resends_ = 0;
  return kRoundReady;
}

void CPTZControlClass::CloseSocket() {
  if (sock_ >= 0) close(sock_);
  sock_ = -1;
}

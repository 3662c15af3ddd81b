// Messages out: queued for the search thread, or broadcast at once on every
// interface when no search runs.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <new>

#include "base/debug_log.h"
#include "discovery/broadcast_socket.h"
#include "discovery/search_ipc.h"
#include "discovery/search_message.h"

namespace {

const int kOwnBufferBytes = 2048;
const int kWritableWaitMs = 2000;
const int kSocketAttempts = 1000;

}  // namespace

int CCSearchIPC::SendMsgToIPC(char* buffer, int size, int code, const char* body,
                              unsigned short port) {
  char* own = nullptr;
  if (buffer == nullptr) {
    own = new (std::nothrow) char[kOwnBufferBytes];
    if (own == nullptr) return QV_E_NO_MEMORY;
    buffer = own;
    size = kOwnBufferBytes;
  }
  FormatSearchMessage(buffer, size, code, body);
  if (running_ != 0) {
    EnterCriticalSection(&queue_lock_);
    queue_.push_back(buffer);
    LeaveCriticalSection(&queue_lock_);
  } else {
    SendBroardcastDirectly(buffer, port);
  }
  delete[] own;
  return 0;
}

int CCSearchIPC::SendDataHandle(int sock, const char* ifname, const char* message) {
  pollfd p = {sock, POLLOUT, 0};
  int ready = poll(&p, 1, kWritableWaitMs);
  if (ready < 0) {
    QV_LOG("[%s:%d]select failed, error=%d", 100863);
    return -1;
  }
  if (ready == 0) return -1;
  if ((p.revents & POLLNVAL) != 0) {
    QV_LOG("[%s:%d]select sock find socket error");
    return -1;
  }
  sockaddr_in to;
  memset(&to, 0, sizeof(to));
  to.sin_family = AF_INET;
  to.sin_port = htons(kSearchPort);
  to.sin_addr.s_addr = htonl(INADDR_BROADCAST);
  size_t length = strlen(message);
  ssize_t sent = sendto(sock, message, length, MSG_NOSIGNAL, reinterpret_cast<sockaddr*>(&to),
                        sizeof(to));
  if (sent != static_cast<ssize_t>(length)) {
    QV_LOG("[%s:%d]sendto failed, error=%d", 100863);
  } else {
    QV_LOG("[%s:%d]send msg to seach ipc by %s", ifname);
  }
  return 0;
}

void CCSearchIPC::SendBroardcastDirectly(const char* message, unsigned short port) {
  NetcardList cards = GetNetcardIPList();
  if (cards.empty()) {
    IP_ADAPTER_INFO zero;
    memset(&zero, 0, sizeof(zero));
    cards[0] = zero;
  }
  std::map<uint32_t, int> sockets;
  for (const auto& card : cards) {
    for (int attempt = 0; attempt < kSocketAttempts; ++attempt) {
      unsigned short local_port = port;
      int sock = CreateBroardcastSocket(card.second.name, card.second.address, &local_port);
      if (sock >= 0) {
        sockets[card.first] = sock;
        break;
      }
    }
  }
  for (auto it = sockets.rbegin(); it != sockets.rend(); ++it) {
    SendDataHandle(it->second, cards[it->first].name, message);
    close(it->second);
  }
}

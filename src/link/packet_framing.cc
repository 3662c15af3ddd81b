#include "link/packet_framing.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>

#include "base/compat.h"
#include "base/debug_log.h"
#include "base/thread_class.h"

namespace {

// Log and status texts print this fixed number where an error code is
// expected.
const int kReportedErrorCode = 100863;

bool Transient(int err) { return err == EAGAIN || err == EWOULDBLOCK || err == EINTR; }

uint32_t ReadLe32(const unsigned char* p) {
  return static_cast<uint32_t>(p[0]) | (static_cast<uint32_t>(p[1]) << 8) |
         (static_cast<uint32_t>(p[2]) << 16) | (static_cast<uint32_t>(p[3]) << 24);
}

void WriteLe32(unsigned char* p, uint32_t v) {
  p[0] = static_cast<unsigned char>(v);
  p[1] = static_cast<unsigned char>(v >> 8);
  p[2] = static_cast<unsigned char>(v >> 16);
  p[3] = static_cast<unsigned char>(v >> 24);
}

}  // namespace

// poll() rather than select(): a host may hold more than FD_SETSIZE
// descriptors, and select() cannot watch those.
int CPacketFraming::Poll(int sock, bool for_write, int wait_ms) {
  struct pollfd pfd;
  pfd.fd = sock;
  pfd.events = static_cast<short>((for_write ? POLLOUT : POLLIN) | POLLPRI);
  pfd.revents = 0;
  int n = poll(&pfd, 1, wait_ms < 0 ? 0 : wait_ms);
  if (n == 0) return 0;
  if (n < 0) return errno == EINTR ? 0 : kSocketError;
  if (pfd.revents & (for_write ? POLLOUT : POLLIN)) return 1;
  return kSocketError;
}

int CPacketFraming::SocketCanRead(int sock, int wait_ms) { return Poll(sock, false, wait_ms); }

int CPacketFraming::SocketCanWrite(int sock, int wait_ms) { return Poll(sock, true, wait_ms); }

bool CPacketFraming::WatchedStopped() { return watched_ != nullptr && !watched_->IsRunning(); }

int CPacketFraming::WaitForSock(int for_write, int sock, unsigned long start_tick,
                                int timeout_ms) {
  for (;;) {
    if (timeout_ms != -1 &&
        GetTickCount() - start_tick >= static_cast<unsigned long>(timeout_ms)) {
      return 0;
    }
    if (WatchedStopped()) return 0;
    int ready = for_write ? SocketCanWrite(sock, kWaitSliceMs) : SocketCanRead(sock, kWaitSliceMs);
    if (ready != 0) return ready;
  }
}

int CPacketFraming::SendData(int sock, const char* data, int len, unsigned long start_tick,
                             int timeout_ms, int extra_flags) {
  if (len <= 0) return 0;
  int sent = 0;
  while (sent < len) {
    int wait = WaitForSock(1, sock, start_tick, timeout_ms);
    if (wait <= 0) return wait;
    // Never blocks inside send (the wait above is the only place to wait),
    // and a peer that has gone away gives an error, not SIGPIPE.
    ssize_t n = send(sock, data + sent, static_cast<size_t>(len - sent),
                     MSG_DONTWAIT | MSG_NOSIGNAL | extra_flags);
    if (n < 0 && Transient(errno)) continue;
    if (n <= 0) {
      QV_LOG("[%s:%d]%s send data error:%d\n", DeviceName(), kReportedErrorCode);
      return sent;
    }
    sent += static_cast<int>(n);
  }
  return len;
}

int CPacketFraming::send_with_header(int sock, const char* payload, int len, int timeout_ms,
                                     int encrypted) {
  unsigned long start = GetTickCount();
  unsigned char header[kHeaderSize];
  WriteLe32(header, encrypted ? kEncryptedFlag : kPlainFlag);
  WriteLe32(header + 4, static_cast<uint32_t>(len));
  // The header waits for its payload, so that a frame leaves in one segment
  // instead of a lone header that the peer acknowledges late.
  int ret = SendData(sock, reinterpret_cast<const char*>(header), kHeaderSize, start, timeout_ms,
                     len > 0 ? MSG_MORE : 0);
  if (ret != kHeaderSize) {
    QV_LOG("[%s:%d]%s send flag failed. ret=%d\n", DeviceName(), ret);
    return kHeaderNotSent;
  }
  return SendData(sock, payload, len, start, timeout_ms);
}

int CPacketFraming::recv_with_header(int sock, char** payload, int timeout_ms) {
  unsigned long start = GetTickCount();
  int wait = WaitForSock(0, sock, start, timeout_ms);
  if (wait < 1) return wait;

  // Flag hunt: a window of the last four bytes, filled one byte at a time.
  unsigned char window[4] = {0, 0, 0, 0};
  int count = 0;
  for (;;) {
    wait = WaitForSock(0, sock, start, timeout_ms);
    if (wait < 1) return wait;
    unsigned char byte = 0;
    ssize_t n = recv(sock, &byte, 1, MSG_DONTWAIT);
    if (n < 0 && Transient(errno)) continue;
    if (n <= 0) {
      QV_LOG("[%s:%d]%s recv flag failed, ret=%ld\n\n", DeviceName(), static_cast<long>(n));
      perror("recv");
      return kSocketError;
    }
    memmove(window, window + 1, 3);
    window[3] = byte;
    ++count;
    uint32_t flag = ReadLe32(window);
    if (count >= 4 && (flag == kPlainFlag || flag == kEncryptedFlag)) break;
  }
  if (count > 4) QV_LOG("[%s:%d]%s recv pack skip buffer size=%d\n\n", DeviceName(), count - 4);

  unsigned char len_bytes[4];
  int got = 0;
  while (got < 4) {
    wait = WaitForSock(0, sock, start, timeout_ms);
    if (wait < 1) return wait;
    ssize_t n = recv(sock, len_bytes + got, static_cast<size_t>(4 - got), MSG_DONTWAIT);
    if (n < 0 && Transient(errno)) continue;
    if (n <= 0) {
      QV_LOG("[%s:%d]%s recv len failed. ret =%d\n", DeviceName(), got);
      return kSocketError;
    }
    got += static_cast<int>(n);
  }
  int32_t len = static_cast<int32_t>(ReadLe32(len_bytes));
  if (len <= 0) {
    QV_LOG("[%s:%d]%s recv bad len=%d\n", DeviceName(), len);
    return kLengthTooSmall;
  }
  if (len > kMaxPayload) {
    QV_LOG("[%s:%d]%s recv bad len=%d\n", DeviceName(), len);
    return kLengthTooLarge;
  }

  char* buffer = nullptr;
  while ((buffer = new (std::nothrow) char[static_cast<size_t>(len) + kSpareBytes]) == nullptr) {
    if (WatchedStopped()) return 0;
    SleepUs(10);
  }
  *payload = buffer;

  int received = 0;
  while (received < len) {
    wait = WaitForSock(0, sock, start, timeout_ms);
    if (wait < 1) return wait;
    ssize_t n = recv(sock, buffer + received, static_cast<size_t>(len - received), MSG_DONTWAIT);
    if (n < 0 && Transient(errno)) continue;
    if (n <= 0) {
      QV_LOG("[%s:%d]%s recv data error, ret=%d\n", DeviceName(), static_cast<int>(n));
      return kSocketError;
    }
    received += static_cast<int>(n);
  }
  return len;
}

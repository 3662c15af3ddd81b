#include "emu/data_channel.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "base/compat.h"
#include "emu/frame_io.h"

namespace qvemu {
namespace {

const uint32_t kFlag = 0x31589518;
const uint32_t kControlFlag = 0x31589158;  // the control link's flag, a likely mix-up
const size_t kHeaderSize = 12;
const size_t kEndTextLength = 18;  // "FILE TRANSPORT OK!"
const unsigned long kAcceptMs = 30000;
const unsigned long kIdleMs = 30000;   // longest silence while a file moves
const unsigned long kHoldMs = 60000;
const unsigned long kDrainMs = 5000;
const int kSliceMs = 100;
const size_t kPiece = 65536;
const int kWriteTimeoutMs = 30000;

void PutLe32(std::string* s, uint32_t v) {
  for (int i = 0; i < 4; ++i) s->push_back(static_cast<char>(v >> (8 * i)));
}

uint32_t Le32(const std::string& s, size_t at) {
  uint32_t v = 0;
  for (int i = 3; i >= 0; --i) v = v << 8 | static_cast<unsigned char>(s[at + i]);
  return v;
}

}  // namespace

DataChannel::~DataChannel() {
  if (fd_ >= 0) close(fd_);
  if (listen_fd_ >= 0) close(listen_fd_);
}

bool DataChannel::Listen(const std::string& address) {
  sockaddr_in addr{};
  addr.sin_family = AF_INET;
  if (inet_pton(AF_INET, address.c_str(), &addr.sin_addr) != 1) return false;
  listen_fd_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (listen_fd_ < 0) return false;
  socklen_t len = sizeof addr;
  if (bind(listen_fd_, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0 ||
      listen(listen_fd_, 1) != 0 ||
      getsockname(listen_fd_, reinterpret_cast<sockaddr*>(&addr), &len) != 0) {
    return false;
  }
  port_ = ntohs(addr.sin_port);
  return true;
}

bool DataChannel::Accept(const std::atomic<bool>& stop) {
  unsigned long start = GetTickCount();
  while (!stop && GetTickCount() - start < kAcceptMs) {
    pollfd p{listen_fd_, POLLIN, 0};
    if (poll(&p, 1, kSliceMs) <= 0) continue;
    fd_ = accept4(listen_fd_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (fd_ >= 0) break;
  }
  close(listen_fd_);
  listen_fd_ = -1;
  return fd_ >= 0;
}

long DataChannel::ReadSome(std::string* out, size_t limit, int wait_ms) {
  pollfd p{fd_, POLLIN, 0};
  int r = poll(&p, 1, wait_ms);
  if (r < 0) return errno == EINTR ? -1 : 0;
  if (r == 0) return -1;
  char buf[kPiece];
  ssize_t n = recv(fd_, buf, std::min(limit, sizeof buf), 0);
  if (n < 0) return (errno == EAGAIN || errno == EINTR) ? -1 : 0;
  out->append(buf, static_cast<size_t>(n));
  return n;
}

void DataChannel::Hold(const std::atomic<bool>& stop) {
  unsigned long start = GetTickCount();
  while (!stop && GetTickCount() - start < kHoldMs) {
    pollfd p{fd_, POLLRDHUP, 0};
    if (poll(&p, 1, kSliceMs) > 0 && (p.revents & (POLLRDHUP | POLLHUP | POLLERR))) return;
  }
}

void DataChannel::Drain(const std::atomic<bool>& stop, DataChannelRecord* record, size_t until) {
  unsigned long start = GetTickCount();
  while (!stop && GetTickCount() - start < kDrainMs && record->received.size() < until) {
    if (ReadSome(&record->received, kPiece, kSliceMs) == 0) return;
  }
}

void DataChannel::SendFile(const std::string& bytes, const DataChannelFault& fault,
                           const std::atomic<bool>& stop, DataChannelRecord* record) {
  int64_t announced = static_cast<int64_t>(bytes.size());
  if (fault.kind == DataChannelFault::kWrongLength) announced += fault.value;
  size_t cut = bytes.size();
  bool cut_short = fault.kind == DataChannelFault::kStall ||
                   fault.kind == DataChannelFault::kCloseEarly;
  if (cut_short) cut = std::min(cut, static_cast<size_t>(std::max(0L, fault.value)));
  std::string header;
  PutLe32(&header, fault.kind == DataChannelFault::kWrongFlag ? kControlFlag : kFlag);
  PutLe32(&header, 0);
  PutLe32(&header, static_cast<uint32_t>(announced));
  if (!WriteAll(fd_, header, kWriteTimeoutMs, &stop)) return;
  for (size_t at = 0; at < cut; at += kPiece) {
    if (!WriteAll(fd_, bytes.substr(at, std::min(kPiece, cut - at)), kWriteTimeoutMs, &stop)) {
      return;
    }
  }
  if (fault.kind == DataChannelFault::kStall) {
    Hold(stop);
    return;
  }
  if (cut < bytes.size()) return;  // closes early
  record->complete = true;
  // The host's answer; the camera closes once it has it.
  Drain(stop, record, kEndTextLength);
}

bool DataChannel::ReceiveFile(const DataChannelFault& fault,
                              const std::function<std::string(const std::string&)>& answer,
                              const std::atomic<bool>& stop, DataChannelRecord* record,
                              std::string* file) {
  std::string& in = record->received;
  unsigned long last = GetTickCount();
  size_t limit = SIZE_MAX;
  if (fault.kind == DataChannelFault::kStall || fault.kind == DataChannelFault::kCloseEarly) {
    limit = kHeaderSize + static_cast<size_t>(std::max(0L, fault.value));
  }
  int64_t length = -1;
  while (!stop) {
    if (length < 0 && in.size() >= kHeaderSize) {
      if (Le32(in, 0) != kFlag) return false;
      length = static_cast<int32_t>(Le32(in, 8));
      if (length < 0) return false;
    }
    if (length >= 0 && in.size() >= kHeaderSize + static_cast<size_t>(length)) break;
    if (in.size() >= limit) {
      if (fault.kind == DataChannelFault::kStall) Hold(stop);
      return false;
    }
    size_t want = std::min(limit - in.size(), kPiece);
    if (length >= 0) want = std::min(want, kHeaderSize + static_cast<size_t>(length) - in.size());
    long n = ReadSome(&in, want, kSliceMs);
    if (n == 0) return false;
    if (n > 0) last = GetTickCount();
    if (GetTickCount() - last > kIdleMs) return false;
  }
  if (stop) return false;
  *file = in.substr(kHeaderSize, static_cast<size_t>(length));
  record->complete = true;
  WriteAll(fd_, answer(*file), kWriteTimeoutMs, &stop);
  Drain(stop, record, SIZE_MAX);
  return true;
}

}  // namespace qvemu

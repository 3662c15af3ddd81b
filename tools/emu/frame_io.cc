#include "emu/frame_io.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

#include "base/compat.h"

namespace qvemu {
namespace {

constexpr int kSliceMs = 100;
constexpr size_t kChunk = 65536;

void PutLe32(std::string* out, uint32_t v) {
  for (int i = 0; i < 4; ++i) out->push_back(static_cast<char>((v >> (8 * i)) & 0xff));
}

uint32_t GetLe32(const char* p) {
  const unsigned char* u = reinterpret_cast<const unsigned char*>(p);
  return u[0] | (u[1] << 8) | (u[2] << 16) | (static_cast<uint32_t>(u[3]) << 24);
}

bool IsFlag(uint32_t v) { return v == kPlainFlag || v == kEncryptedFlag; }

// Milliseconds left until deadline (a GetTickCount value), never negative.
int Remaining(unsigned long deadline) {
  unsigned long now = GetTickCount();
  return now >= deadline ? 0 : static_cast<int>(deadline - now);
}

}  // namespace

std::string EncodeFrame(const std::string& payload, uint32_t flag) {
  std::string out;
  out.reserve(payload.size() + 8);
  PutLe32(&out, flag);
  PutLe32(&out, static_cast<uint32_t>(payload.size()));
  out += payload;
  return out;
}

bool WriteAll(int fd, const std::string& bytes, int timeout_ms,
              const std::atomic<bool>* stop) {
  unsigned long deadline = GetTickCount() + static_cast<unsigned long>(timeout_ms);
  size_t sent = 0;
  while (sent < bytes.size()) {
    if (stop && stop->load()) return false;
    int left = Remaining(deadline);
    if (left == 0) return false;
    pollfd p{fd, POLLOUT, 0};
    int r = poll(&p, 1, std::min(left, kSliceMs));
    if (r < 0 && errno != EINTR) return false;
    if (r <= 0) continue;
    if (p.revents & (POLLERR | POLLHUP | POLLNVAL)) return false;
    ssize_t n = send(fd, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (n < 0 && (errno == EINTR || errno == EAGAIN)) continue;
    if (n <= 0) return false;
    sent += static_cast<size_t>(n);
  }
  return true;
}

FrameReader::FrameReader(int fd, int frame_timeout_ms)
    : fd_(fd), frame_timeout_ms_(frame_timeout_ms) {}

bool FrameReader::Fill(int wait_ms, bool* got) {
  *got = false;
  pollfd p{fd_, POLLIN, 0};
  int r = poll(&p, 1, wait_ms);
  if (r < 0) return errno == EINTR;
  if (r == 0) return true;
  if (p.revents & POLLNVAL) return false;
  char chunk[kChunk];
  ssize_t n = recv(fd_, chunk, sizeof chunk, 0);
  if (n < 0 && (errno == EINTR || errno == EAGAIN)) return true;
  if (n <= 0) return false;
  buf_.append(chunk, static_cast<size_t>(n));
  *got = true;
  return true;
}

bool FrameReader::HuntFlag() {
  size_t size = buf_.size();
  for (size_t i = pos_; i + 4 <= size; ++i) {
    if (IsFlag(GetLe32(buf_.data() + i))) {
      skipped_ += i - pos_;
      Consume(i - pos_);
      return true;
    }
  }
  // Keep the last three bytes: they may begin a flag split across reads.
  size_t avail = size - pos_;
  if (avail > 3) {
    skipped_ += avail - 3;
    Consume(avail - 3);
  }
  return false;
}

void FrameReader::Consume(size_t n) {
  pos_ += n;
  if (pos_ >= buf_.size()) {
    buf_.clear();
    pos_ = 0;
  } else if (pos_ >= kChunk && pos_ * 2 >= buf_.size()) {
    buf_.erase(0, pos_);
    pos_ = 0;
  }
}

FrameReader::Result FrameReader::Next(const std::atomic<bool>& stop,
                                      uint32_t* flag, std::string* payload) {
  bool got = false;
  for (;;) {
    if (stop.load()) return Result::kStopped;
    if (!HuntFlag() || buf_.size() - pos_ < 8) {
      if (!Fill(kSliceMs, &got)) return Result::kClosed;
      continue;
    }
    uint32_t f = GetLe32(buf_.data() + pos_);
    int32_t len = static_cast<int32_t>(GetLe32(buf_.data() + pos_ + 4));
    if (len <= 0 || len > kMaxPayload) {
      last_bad_length_ = len;
      Consume(8);
      return Result::kBadLength;
    }
    size_t need = 8 + static_cast<size_t>(len);
    unsigned long deadline = GetTickCount() + static_cast<unsigned long>(frame_timeout_ms_);
    while (buf_.size() - pos_ < need) {
      if (stop.load()) return Result::kStopped;
      int left = Remaining(deadline);
      if (left == 0) {
        Consume(buf_.size() - pos_);
        return Result::kIncomplete;
      }
      if (!Fill(std::min(left, kSliceMs), &got)) return Result::kClosed;
    }
    *flag = f;
    payload->assign(buf_, pos_ + 8, static_cast<size_t>(len));
    Consume(need);
    return Result::kFrame;
  }
}

}  // namespace qvemu

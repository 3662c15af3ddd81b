#include "emu/link.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

#include "base/compat.h"
#include "emu/camera_behaviour.h"
#include "emu/envelope.h"
#include "emu/frame_io.h"
#include "emu/frame_log.h"
#include "emu/hostile.h"

namespace qvemu {
namespace {

constexpr int kSendTimeoutMs = 5000;

std::string Describe(const std::string& type, const std::string& code, const std::string& flag) {
  return type + " " + code + " flag " + flag;
}

}  // namespace

Link::Link(int fd, int connection, Hooks hooks)
    : fd_(fd), connection_(connection), hooks_(std::move(hooks)) {}

Link::~Link() {
  Close();
  if (thread_.joinable()) thread_.join();
  close(fd_);
}

void Link::Start() { thread_ = std::thread(&Link::Run, this); }

void Link::Close() {
  stop_ = true;
  shutdown(fd_, SHUT_RDWR);
}

bool Link::Send(const std::string& bytes) {
  std::lock_guard<std::mutex> lock(write_mu_);
  return WriteAll(fd_, bytes, kSendTimeoutMs, &stop_);
}

void Link::Print(const std::string& text) const {
  if (hooks_.print) hooks_.print("link " + std::to_string(connection_) + text);
}

void Link::PauseUntil(std::chrono::steady_clock::time_point end) const {
  const auto slice = std::chrono::milliseconds(20);
  for (auto now = std::chrono::steady_clock::now(); !stop_ && now < end;
       now = std::chrono::steady_clock::now()) {
    std::this_thread::sleep_for(std::min<std::chrono::steady_clock::duration>(slice, end - now));
  }
}

void Link::Run() {
  FrameReader reader(fd_);
  LinkState state;
  state.connection = connection_;
  state.send = [this](const std::string& bytes) { return Send(bytes); };
  uint64_t skipped = 0;
  HostileDice dice = DiceFor(hooks_.hostile_seed, "link", static_cast<uint64_t>(connection_));
  for (;;) {
    if (state.pause_reading_ms > 0) {
      Print(": stops reading for " + std::to_string(state.pause_reading_ms) + " ms");
      PauseUntil(std::chrono::steady_clock::now() +
                 std::chrono::milliseconds(state.pause_reading_ms));
      state.pause_reading_ms = 0;
    }
    uint32_t flag = 0;
    std::string payload;
    FrameReader::Result r = reader.Next(stop_, &flag, &payload);
    if (reader.skipped_bytes() != skipped) {
      uint64_t delta = reader.skipped_bytes() - skipped;
      skipped = reader.skipped_bytes();
      *hooks_.skipped_bytes += delta;
      Print(": " + std::to_string(delta) + " stray bytes skipped");
    }
    if (r == FrameReader::Result::kClosed || r == FrameReader::Result::kStopped) break;
    if (r == FrameReader::Result::kBadLength) {
      ++*hooks_.bad_lengths;
      Print(": frame length " + std::to_string(reader.last_bad_length()) + " refused");
      continue;
    }
    if (r == FrameReader::Result::kIncomplete) {
      Print(": frame payload did not arrive in time, dropped");
      continue;
    }
    auto received = std::chrono::steady_clock::now();
    ReceivedFrame f;
    f.tick = GetTickCount();
    f.flag = flag;
    f.connection = connection_;
    ParseHeader(payload, &f.type, &f.code, &f.msg_flag);
    f.body = ExtractBody(payload);
    f.payload = std::move(payload);
    Print(" <- " + Describe(f.type, f.code, f.msg_flag) +
          (flag == kEncryptedFlag ? " (encrypted frame)" : ""));
    std::vector<Reply> replies = hooks_.behaviour->Handle(&state, f);
    hooks_.log->Add(std::move(f));
    if (replies.empty()) {
      Print(": not answered");
    } else {
      PauseUntil(received + std::chrono::milliseconds(hooks_.behaviour->ReplyDelayMs()));
    }
    // The login state changes under the write lock, ahead of the replies:
    // a frame pushed to logged-in links can then only follow the login reply.
    std::lock_guard<std::mutex> lock(write_mu_);
    logged_in_ = state.logged_in;
    for (const Reply& reply : replies) {
      std::string bytes = hooks_.behaviour->TakeInjection();
      if (!bytes.empty()) Print(": " + std::to_string(bytes.size()) + " raw bytes sent first");
      bool close_after = false;
      if (hooks_.hostile) {
        bytes += HostileReply(&dice, reply.type, reply.code, reply.flag, reply.body,
                              &close_after);
        bytes += HostileUnsolicited(&dice);
      } else {
        bytes += EncodeFrame(MakeEnvelope(reply.type, reply.code, reply.flag, reply.body));
      }
      if (!WriteAll(fd_, bytes, kSendTimeoutMs, &stop_) || close_after) {
        if (close_after) Print(": hostile, dropped after " + std::to_string(bytes.size()) + " bytes");
        Close();
        break;
      }
      Print(" -> " + Describe(reply.type, reply.code, reply.flag));
      if (reply.after_sent) reply.after_sent();
    }
  }
  // The link's parts (senders of their own) end while the socket is open.
  state.parts.clear();
  finished_ = true;
  Print(": closed");
}

}  // namespace qvemu

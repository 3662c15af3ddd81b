#include "frame_log_helper.h"

#include <chrono>
#include <cstdlib>
#include <cstring>

long FrameLog::OnFrame(long handle, unsigned long type, char* data, unsigned long length,
                       FRAME_EXTDATA* extra) {
  FrameLog* log = static_cast<FrameLog*>(extra->user);
  Frame frame{handle, type,
              std::vector<unsigned char>(reinterpret_cast<unsigned char*>(data),
                                         reinterpret_cast<unsigned char*>(data) + length),
              extra->flag, extra->timestamp, extra->user};
  log->Add(std::move(frame));
  return 0;
}

long FrameLog::OnStatus(long id, long code, const char* text, void* user) {
  static_cast<FrameLog*>(user)->AddStatus({id, code, text != nullptr ? text : ""});
  return 0;
}

void FrameLog::Add(Frame frame) {
  std::lock_guard<std::mutex> lock(mu_);
  frames_.push_back(std::move(frame));
  cv_.notify_all();
}

void FrameLog::AddStatus(StatusEvent event) {
  std::lock_guard<std::mutex> lock(mu_);
  statuses_.push_back(std::move(event));
  cv_.notify_all();
}

bool FrameLog::WaitFor(const std::function<bool(const std::vector<Frame>&)>& pred,
                       int timeout_ms) {
  std::unique_lock<std::mutex> lock(mu_);
  return cv_.wait_for(lock, std::chrono::milliseconds(timeout_ms), [&] { return pred(frames_); });
}

bool FrameLog::WaitForStatus(long code, int timeout_ms) {
  std::unique_lock<std::mutex> lock(mu_);
  return cv_.wait_for(lock, std::chrono::milliseconds(timeout_ms), [&] {
    for (const StatusEvent& e : statuses_) {
      if (e.code == code) return true;
    }
    return false;
  });
}

std::vector<Frame> FrameLog::Frames() {
  std::lock_guard<std::mutex> lock(mu_);
  return frames_;
}

std::vector<StatusEvent> FrameLog::Statuses() {
  std::lock_guard<std::mutex> lock(mu_);
  return statuses_;
}

int FrameLog::Count(unsigned long type) {
  std::lock_guard<std::mutex> lock(mu_);
  return CountType(frames_, type);
}

int FrameLog::StatusCount(long code) {
  std::lock_guard<std::mutex> lock(mu_);
  int n = 0;
  for (const StatusEvent& e : statuses_) n += e.code == code ? 1 : 0;
  return n;
}

ClientInfo StreamInfo(int port, unsigned short codec_family, unsigned short stream_index,
                      void* user_data) {
  ClientInfo info;
  memset(&info, 0, sizeof(info));
  info.port = port;
  info.codec_family = codec_family;
  info.stream_index = stream_index;
  info.user_data = user_data;
  return info;
}

int CountType(const std::vector<Frame>& frames, unsigned long type) {
  int n = 0;
  for (const Frame& f : frames) n += f.type == type ? 1 : 0;
  return n;
}

namespace {
// QV_TEST_LOG=1 in the environment shows the library's log on the console.
struct ConsoleLogSwitch {
  ConsoleLogSwitch() {
    if (getenv("QV_TEST_LOG") != nullptr) IP_NET_DVR_LOG_OPEN();
  }
} console_log_switch;
}  // namespace

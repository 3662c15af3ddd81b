#include "emu/frame_log.h"

#include <chrono>

namespace qvemu {

FrameLog::FrameLog(size_t limit) : limit_(limit == 0 ? 1 : limit) {}

void FrameLog::Add(ReceivedFrame frame) {
  {
    std::lock_guard<std::mutex> lock(mu_);
    frames_.push_back(std::move(frame));
    while (frames_.size() > limit_) frames_.pop_front();
    ++version_;
  }
  changed_.notify_all();
}

std::vector<ReceivedFrame> FrameLog::All() const {
  std::lock_guard<std::mutex> lock(mu_);
  return std::vector<ReceivedFrame>(frames_.begin(), frames_.end());
}

std::vector<ReceivedFrame> FrameLog::OfType(const std::string& type) const {
  std::lock_guard<std::mutex> lock(mu_);
  std::vector<ReceivedFrame> out;
  for (const ReceivedFrame& f : frames_) {
    if (f.type == type) out.push_back(f);
  }
  return out;
}

bool FrameLog::WaitFor(const std::function<bool(const std::vector<ReceivedFrame>&)>& done,
                       int timeout_ms) const {
  using Clock = std::chrono::steady_clock;
  // done is asked again when frames arrive and at least every 50 ms, so a
  // condition that also looks at other camera state is seen as well.
  const auto slice = std::chrono::milliseconds(50);
  auto deadline = Clock::now() + std::chrono::milliseconds(timeout_ms);
  std::unique_lock<std::mutex> lock(mu_);
  for (;;) {
    uint64_t seen = version_;
    std::vector<ReceivedFrame> copy(frames_.begin(), frames_.end());
    lock.unlock();
    if (done(copy)) return true;
    lock.lock();
    auto now = Clock::now();
    if (now >= deadline) return false;
    auto wait = deadline - now < slice ? deadline - now : Clock::duration(slice);
    changed_.wait_for(lock, wait, [&] { return version_ != seen; });
  }
}

void FrameLog::Clear() {
  {
    std::lock_guard<std::mutex> lock(mu_);
    frames_.clear();
    ++version_;
  }
  changed_.notify_all();
}

}  // namespace qvemu

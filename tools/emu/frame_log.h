// The record of every frame a camera received, bounded by a frame count
// (the oldest frames go first), with waiting for a condition on it.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "emu/camera.h"

namespace qvemu {

class FrameLog {
 public:
  explicit FrameLog(size_t limit);

  void Add(ReceivedFrame frame);
  std::vector<ReceivedFrame> All() const;
  std::vector<ReceivedFrame> OfType(const std::string& type) const;
  // done runs without the log's lock, on a copy, each time frames arrive.
  bool WaitFor(const std::function<bool(const std::vector<ReceivedFrame>&)>& done,
               int timeout_ms) const;
  void Clear();

 private:
  const size_t limit_;
  mutable std::mutex mu_;
  mutable std::condition_variable changed_;
  std::deque<ReceivedFrame> frames_;
  uint64_t version_ = 0;  // counts changes, so waiters see every one
};

}  // namespace qvemu

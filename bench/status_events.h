// Status events counted by code, for benchmarks that wait on logins and
// replies.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

#include "quorvel/quorvel.h"

class StatusEvents {
 public:
  void Install() { IP_NET_DVR_SetStatusEventCallBack(&StatusEvents::OnStatus, this); }
  void Reset() {
    std::lock_guard<std::mutex> lock(mu_);
    counts_.assign(kCodes, 0);
  }
  int Count(long code) {
    std::lock_guard<std::mutex> lock(mu_);
    return counts_[code];
  }
  bool WaitCount(long code, int n, int timeout_ms) {
    std::unique_lock<std::mutex> lock(mu_);
    return cv_.wait_for(lock, std::chrono::milliseconds(timeout_ms),
                        [&] { return counts_[code] >= n; });
  }

 private:
  static constexpr long kCodes = 64;
  static long OnStatus(long, long code, const char*, void* user) {
    StatusEvents* self = static_cast<StatusEvents*>(user);
    std::lock_guard<std::mutex> lock(self->mu_);
    if (code >= 0 && code < kCodes) ++self->counts_[code];
    self->cv_.notify_all();
    return 0;
  }
  std::mutex mu_;
  std::condition_variable cv_;
  std::vector<int> counts_ = std::vector<int>(kCodes, 0);
};

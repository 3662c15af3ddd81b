#include "stream/stream_clock.h"

#include <algorithm>

double CStreamClock::Map(int64_t source_ms, Medium medium) {
  if (!have_base_) {
    have_base_ = true;
    base_ = source_ms - resume_;
  }
  int64_t& last = last_[medium];
  int64_t out = source_ms - base_ + offset_[medium];
  if (last >= 0) {
    int64_t delta = out - last;
    if (delta < 0 || delta > kMaxJumpMs) {
      // Re-anchor this medium one usual step after its last stamp.
      offset_[medium] += last + step_[medium] - out;
      out = last + step_[medium];
    } else if (delta > 0) {
      step_[medium] = delta;
    }
  }
  out = std::max<int64_t>(out, 0);
  last = out;
  return static_cast<double>(out);
}

void CStreamClock::Restart() {
  resume_ = std::max(last_[kVideo], last_[kAudio]) + 1;
  if (resume_ < 0) resume_ = 0;
  have_base_ = false;
  offset_[kVideo] = offset_[kAudio] = 0;
}

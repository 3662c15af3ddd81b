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

double CStreamClock::Map(int64_t source_ms, bool has_stamp, uint64_t arrival_ms, Medium medium) {
  int64_t arrival = static_cast<int64_t>(arrival_ms);
  bool usable = has_stamp && !(medium == kVideo && have_stamped_video_ &&
                               source_ms <= stamped_video_source_);
  if (usable) {
    arrival_offset_ = source_ms - arrival;
    have_arrival_offset_ = true;
  } else {
    source_ms = arrival + (have_arrival_offset_ ? arrival_offset_ : 0);
    // Frames read in one burst (buffered while the stream was probed)
    // arrive together: video still moves forward.
    if (medium == kVideo && have_last_video_ && source_ms <= last_video_source_)
      source_ms = last_video_source_ + 1;
  }
  if (medium == kVideo) {
    last_video_source_ = source_ms;
    have_last_video_ = true;
    last_video_stamped_ = usable;
    if (usable) {
      stamped_video_source_ = source_ms;
      have_stamped_video_ = true;
    }
  }
  return Map(source_ms, medium);
}

void CStreamClock::Restart() {
  have_arrival_offset_ = false;
  have_last_video_ = false;
  have_stamped_video_ = false;
  last_video_stamped_ = false;
  resume_ = std::max(last_[kVideo], last_[kAudio]) + 1;
  if (resume_ < 0) resume_ = 0;
  have_base_ = false;
  offset_[kVideo] = offset_[kAudio] = 0;
}

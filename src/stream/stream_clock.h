// One millisecond clock for the audio and video frames of a stream. Time
// stamps start near 0 at the stream's first frame; a jump of either medium
// (a reconnect, a source that re-bases its clock) is absorbed so that each
// medium's stamps keep increasing.
#pragma once

#include <cstdint>

class CStreamClock {
 public:
  enum Medium { kVideo = 0, kAudio = 1 };

  // The stamp of a frame whose source time is source_ms.
  double Map(int64_t source_ms, Medium medium);
  // Forgets everything: the next frame starts a new time line that continues
  // after the last stamp handed out.
  void Restart();

 private:
  static const int64_t kMaxJumpMs = 2000;

  bool have_base_ = false;
  int64_t base_ = 0;
  int64_t offset_[2] = {0, 0};
  int64_t last_[2] = {-1, -1};
  int64_t step_[2] = {1, 1};
  int64_t resume_ = 0;  // where a restarted time line begins
};

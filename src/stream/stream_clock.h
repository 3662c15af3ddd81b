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
  // The same for a frame that arrived at arrival_ms (monotonic clock). A
  // frame without a source time (has_stamp false), and a video frame whose
  // source time does not move past the last video frame's that had one, is
  // placed by its arrival on the source's clock as the last usable stamp of
  // either medium set it against the arrival clock (video at least 1 ms
  // after the previous video frame).
  double Map(int64_t source_ms, bool has_stamp, uint64_t arrival_ms, Medium medium);
  // Whether the last video frame given to Map was placed by its own stamp
  // rather than by its arrival.
  bool LastVideoStamped() const { return last_video_stamped_; }
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
  bool have_arrival_offset_ = false;
  int64_t arrival_offset_ = 0;      // source time - arrival time
  bool have_last_video_ = false;
  int64_t last_video_source_ = 0;   // source time of the previous video frame
  // Source time of the last video frame placed by its own stamp: a frame
  // placed by arrival before any stamp was seen is on the arrival clock,
  // which says nothing about the source's.
  bool have_stamped_video_ = false;
  int64_t stamped_video_source_ = 0;
  bool last_video_stamped_ = false;
};

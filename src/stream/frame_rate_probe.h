// CFrameRateProbe: the frame rate of a video stream told from the time
// stamps of its frames, for streams whose description gives no usable rate
// (an MPEG-4 VOL header may state its time resolution, 65535, where the
// rate belongs).
#pragma once

class CFrameRateProbe {
 public:
  // Rates a camera may send, in frames per second.
  static bool Plausible(int fps) { return fps >= 1 && fps <= 120; }

  // Takes the next frame's time stamp in milliseconds. Returns the rate
  // once a run of frames with increasing stamps gives a plausible one, else
  // 0; a stamp that goes back starts a new run.
  int Add(double ms);
  void Reset();

 private:
  static const int kFrames = 13;  // twelve intervals

  int frames_ = 0;
  double first_ = 0;
  double last_ = 0;
};

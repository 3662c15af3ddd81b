#include "stream/frame_rate_probe.h"

#include <cmath>

int CFrameRateProbe::Add(double ms) {
  if (frames_ > 0 && ms < last_) Reset();
  // Several pieces of one picture share its stamp.
  if (frames_ > 0 && ms == last_) return 0;
  if (frames_ == 0) first_ = ms;
  last_ = ms;
  if (++frames_ < kFrames) return 0;
  double span = last_ - first_;
  int fps = static_cast<int>(std::lround((frames_ - 1) * 1000.0 / span));
  Reset();
  return Plausible(fps) ? fps : 0;
}

void CFrameRateProbe::Reset() {
  frames_ = 0;
  first_ = last_ = 0;
}

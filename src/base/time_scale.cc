#include "base/time_scale.h"

#include <atomic>

namespace {

std::atomic<double> g_scale{1.0};

}  // namespace

void SetTimerScale(double scale) {
  if (scale > 0) g_scale = scale;
}

double GetTimerScale() { return g_scale; }

unsigned long ScaledMs(unsigned long ms) {
  if (ms == 0) return 0;
  double v = static_cast<double>(ms) * g_scale;
  unsigned long r = static_cast<unsigned long>(v);
  return r == 0 ? 1 : r;
}

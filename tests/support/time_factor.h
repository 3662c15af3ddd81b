// How many times slower than a native run the test programs run here: 1
// natively, more under an instruction-set emulator (make test-aarch64 sets
// QUORVEL_TEST_TIME_FACTOR). Cases that shrink protocol timers stretch them
// back by this factor, so that a timer still outlasts the round trips it
// waits for; what they check stays the same.
#pragma once

#include <cstdlib>

namespace qvtest {

inline double TestTimeFactor() {
  const char* text = std::getenv("QUORVEL_TEST_TIME_FACTOR");
  double factor = text != nullptr ? std::atof(text) : 1.0;
  return factor > 1.0 ? factor : 1.0;
}

// A shrunken timer scale stretched by the factor, never past real time.
inline double StretchedScale(double scale) {
  if (scale >= 1.0) return scale;
  double stretched = scale * TestTimeFactor();
  return stretched < 1.0 ? stretched : 1.0;
}

}  // namespace qvtest

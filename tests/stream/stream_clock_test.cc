// One clock for audio and video: common origin, and each medium's stamps
// keep increasing across jumps of the source's clock and reconnects.
#include <gtest/gtest.h>

#include "stream/stream_clock.h"

namespace {

TEST(StreamClock, MediaShareTheOriginOfTheFirstFrame) {
  CStreamClock clock;
  EXPECT_EQ(clock.Map(5000, CStreamClock::kVideo), 0);
  EXPECT_EQ(clock.Map(5010, CStreamClock::kAudio), 10);
  EXPECT_EQ(clock.Map(5040, CStreamClock::kVideo), 40);
  EXPECT_EQ(clock.Map(4990, CStreamClock::kAudio), 11) << "backwards: just after the last";
  EXPECT_EQ(clock.Map(5050, CStreamClock::kAudio), 71) << "then follows the source again";
}

TEST(StreamClock, JumpsOfOneMediumAreAbsorbed) {
  CStreamClock clock;
  clock.Map(0, CStreamClock::kVideo);
  clock.Map(40, CStreamClock::kVideo);
  // The source re-bases its clock far ahead (a sender report arrived).
  EXPECT_EQ(clock.Map(34838000, CStreamClock::kVideo), 80);
  EXPECT_EQ(clock.Map(34838040, CStreamClock::kVideo), 120);
  EXPECT_EQ(clock.Map(20, CStreamClock::kAudio), 20) << "audio keeps its own line";
}

TEST(StreamClock, ARestartContinuesAfterTheLastStamp) {
  CStreamClock clock;
  clock.Map(100, CStreamClock::kVideo);
  clock.Map(200, CStreamClock::kAudio);
  clock.Restart();
  double next = clock.Map(0, CStreamClock::kVideo);
  EXPECT_GT(next, 100);
  EXPECT_GT(clock.Map(40, CStreamClock::kAudio), 100);
}

}  // namespace

// Stream time: one clock for audio and video, whose stamps keep increasing
// across jumps of the source's clock and reconnects, and the frame rate told
// from the stamps.
#include <gtest/gtest.h>

#include "stream/frame_rate_probe.h"
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

TEST(StreamClock, FramesWithoutUsableStampsArePlacedByTheirArrival) {
  CStreamClock clock;
  // Audio carries stamps 3000 ms ahead of the arrival clock.
  EXPECT_EQ(clock.Map(13000, true, 10000, CStreamClock::kAudio), 0);
  // Video without stamps lands where audio's stamps put its arrival.
  EXPECT_EQ(clock.Map(0, false, 10040, CStreamClock::kVideo), 40);
  EXPECT_EQ(clock.Map(0, false, 10080, CStreamClock::kVideo), 80);
  // A video stamp that does not move forward counts as none.
  EXPECT_EQ(clock.Map(13120, true, 10120, CStreamClock::kVideo), 120);
  EXPECT_EQ(clock.Map(13120, true, 10160, CStreamClock::kVideo), 160);
  EXPECT_EQ(clock.Map(13120, true, 10200, CStreamClock::kVideo), 200);
  // Audio frames may share a stamp; good stamps are taken as they are.
  EXPECT_EQ(clock.Map(13100, true, 10500, CStreamClock::kAudio), 100);
  EXPECT_EQ(clock.Map(13100, true, 10510, CStreamClock::kAudio), 100);
  EXPECT_EQ(clock.Map(13240, true, 10520, CStreamClock::kVideo), 240);
}

// A first frame without a stamp is placed on the arrival clock; the stamps
// that follow still count, even when they arrive in one burst (frames
// buffered while the stream was probed).
TEST(StreamClock, AnUnstampedFirstFrameLeavesTheStampsThatFollowInCharge) {
  CStreamClock clock;
  EXPECT_EQ(clock.Map(0, false, 50000, CStreamClock::kVideo), 0);
  EXPECT_FALSE(clock.LastVideoStamped());
  double first = clock.Map(137, true, 50000, CStreamClock::kVideo);
  EXPECT_TRUE(clock.LastVideoStamped());
  for (int i = 1; i <= 30; ++i) {
    EXPECT_EQ(clock.Map(137 + 40 * i, true, 50000, CStreamClock::kVideo), first + 40 * i) << i;
  }
}

TEST(StreamClock, WithoutAnyStampsTheArrivalClockRules) {
  CStreamClock clock;
  EXPECT_EQ(clock.Map(0, false, 500, CStreamClock::kVideo), 0);
  EXPECT_EQ(clock.Map(0, false, 520, CStreamClock::kAudio), 20);
  EXPECT_EQ(clock.Map(0, false, 540, CStreamClock::kVideo), 40);
  // A burst read at one instant: video still moves forward, audio may not.
  EXPECT_EQ(clock.Map(0, false, 600, CStreamClock::kVideo), 100);
  EXPECT_EQ(clock.Map(0, false, 600, CStreamClock::kVideo), 101);
  EXPECT_EQ(clock.Map(0, false, 600, CStreamClock::kAudio), 100);
  EXPECT_EQ(clock.Map(0, false, 600, CStreamClock::kAudio), 100);
  EXPECT_EQ(clock.Map(0, false, 640, CStreamClock::kVideo), 140);
  clock.Restart();
  EXPECT_GT(clock.Map(0, false, 9000, CStreamClock::kVideo), 40);
}

}  // namespace

namespace {

int FeedStamps(CFrameRateProbe* probe, double first, double step, int frames, double jitter = 0) {
  int fps = 0;
  for (int i = 0; i < frames && fps == 0; ++i)
    fps = probe->Add(first + i * step + ((i % 2) != 0 ? jitter : -jitter));
  return fps;
}

TEST(FrameRateProbe, RateFromTheStampsOfTwelveIntervals) {
  CFrameRateProbe probe;
  EXPECT_EQ(FeedStamps(&probe, 1000, 40, 12), 0) << "not yet";
  EXPECT_EQ(probe.Add(1000 + 12 * 40), 25);
  EXPECT_EQ(FeedStamps(&probe, 0, 1000.0 / 30, 13, 3), 30) << "jitter is averaged out";
  EXPECT_EQ(FeedStamps(&probe, 0, 80, 13), 13) << "12.5 fps rounds up";
}

TEST(FrameRateProbe, RepeatedStampsBackwardStepsAndImplausibleRates) {
  CFrameRateProbe probe;
  // Slices of one picture share its stamp: counted once.
  for (int i = 0; i < 12; ++i) {
    EXPECT_EQ(probe.Add(i * 40), 0);
    EXPECT_EQ(probe.Add(i * 40), 0);
  }
  EXPECT_EQ(probe.Add(480), 25);
  // A stamp that goes back starts over.
  EXPECT_EQ(FeedStamps(&probe, 5000, 40, 10), 0);
  EXPECT_EQ(FeedStamps(&probe, 0, 40, 12), 0);
  EXPECT_EQ(probe.Add(480), 25);
  EXPECT_EQ(FeedStamps(&probe, 0, 1, 13), 0) << "1000 fps is no camera's";
  EXPECT_EQ(FeedStamps(&probe, 0, 5000, 13), 0) << "0.2 fps rounds to 0";
  EXPECT_TRUE(CFrameRateProbe::Plausible(1));
  EXPECT_TRUE(CFrameRateProbe::Plausible(120));
  EXPECT_FALSE(CFrameRateProbe::Plausible(65535));
}

}  // namespace

// File lengths and durations, through the record thread, on a clock the test
// drives (and once on the scaled monotonic clock).
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>

#include "base/compat.h"
#include "base/time_scale.h"
#include "media_helper.h"
#include "record_helper.h"
#include "stream/disk_space.h"
#include "stream/record_task.h"

namespace {

__STREAM_AV_PARAM VideoParams() {
  __STREAM_AV_PARAM p;
  memset(&p, 0, sizeof(p));
  strcpy(p.video.codec, "H264");
  p.video.width = 1920;
  p.video.height = 1080;
  return p;
}

// Idle polls of 1 ms; the test clock is separate.
class RecordSplitTest : public RecordingTest {
 protected:
  void SetUp() override {
    RecordingTest::SetUp();
    SetDiskFreeCommand("echo 99999999 #%s");
  }
  void TearDown() override {
    SetDiskFreeCommand(nullptr);
    RecordingTest::TearDown();
  }

  // Records with frames every step_ms of test time (a key frame every
  // key_every frames) until the task ends by itself; returns the video
  // frame count of every file, in order.
  std::vector<int> Run(int max_file_seconds, int duration_seconds, int step_ms, int key_every) {
    __STREAM_AV_PARAM p = VideoParams();
    std::atomic<unsigned long> now{1000000};  // any origin will do
    const unsigned long origin = now;
    EventLog events;
    CRecordTask task(&p, max_file_seconds, duration_seconds, &events, 0);
    task.SetStorageBase(dir_.path().c_str(), 0);
    task.SetClock([&now] { return now.load(); });
    task.Start();
    unsigned char frame[32] = {};
    for (int i = 0; task.IsRunning() && i < 100000; ++i) {
      now = origin + static_cast<unsigned long>(i) * static_cast<unsigned long>(step_ms);
      memcpy(frame, &i, sizeof(i));
      task.VideoRing()->Write(frame, sizeof(frame), i % key_every == 0 ? 1 : 0, i);
      // The frame is judged on the clock it was written under.
      if (!WaitUntil([&] { return task.VideoRing()->GetReadCount() == 0 || !task.IsRunning(); })) {
        ADD_FAILURE() << "the record thread stopped reading";
        break;
      }
    }
    EXPECT_TRUE(events.WaitFor(EVENT_RECORD_TASKEND));
    task.Stop();
    std::vector<int> counts;
    for (const std::string& name : task.FinishedFiles()) {
      RecordedFile f = ReadRecording(name);
      EXPECT_EQ(f.error, "") << name;
      counts.push_back(f.Count("00dc"));
    }
    return counts;
  }
};

// Frames counted per file, with one frame at time 0 of each file.
TEST_F(RecordSplitTest, FileLengthsOnTheTestClock) {
  const struct {
    const char* what;
    int max_file_seconds, duration_seconds, step_ms, key_every;
    std::vector<int> frames;
  } cases[] = {
      // 330 <= 300 * 11 / 10: one file of 330 s, ended by the key frame after it.
      {"within a tenth over", 300, 330, 500, 1, {661}},
      // 331 s: a 300 s file (frames 0 .. 300.0 s) and then a 31 s file.
      {"beyond a tenth", 300, 331, 500, 1, {601, 63}},
      // Key frames every 4 s: the first file runs on to 304 s, the last to 404 s.
      {"split waits for a key frame", 300, 400, 1000, 4, {304, 100}},
      // 5 s asked: the file lasts 10 s (frames 0 .. 10 s).
      {"raised to ten seconds", 300, 5, 1000, 1, {11}},
      // A 5 s maximum per file gives 10 s files: 30 s left, then 19, then 8.
      {"ten-second files", 5, 30, 1000, 1, {11, 11, 11}},
      // 4,000 s in one file is asked; 3,600 s is the most a file holds.
      {"cut to an hour", 4000, 4000, 10000, 1, {361, 40}},
      // No duration left from the start: one file of the shortest length.
      {"no duration", 300, 0, 1000, 1, {11}},
      {"a negative duration", 300, -5, 1000, 1, {11}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Run(c.max_file_seconds, c.duration_seconds, c.step_ms, c.key_every), c.frames)
        << c.what;
  }
  // The rule alone, where the product of the eleven tenths would overflow.
  EXPECT_EQ(CRecordTask::FileLengthSeconds(100000, 2147483647), 3600);
}

// A file ends at a video key frame after its length: a stream without video
// keeps its file until the recording is stopped.
TEST_F(RecordSplitTest, WithoutVideoTheFileLastsUntilTheStop) {
  __STREAM_AV_PARAM p;
  memset(&p, 0, sizeof(p));
  strcpy(p.audio.codec, "G711U");
  p.audio.sample_rate = 8000;
  p.audio.channels = 1;
  std::atomic<unsigned long> now{1000000};
  const unsigned long origin = now;
  EventLog events;
  CRecordTask task(&p, 10, 10, &events, 0);
  task.SetStorageBase(dir_.path().c_str(), 0);
  task.SetClock([&now] { return now.load(); });
  task.Start();
  unsigned char frame[160] = {};
  for (int i = 0; i <= 30; ++i) {
    now = origin + static_cast<unsigned long>(i) * 1000;
    task.AudioRing()->Write(frame, sizeof(frame), 0, i * 1000.0);
    ASSERT_TRUE(WaitUntil([&] { return task.AudioRing()->GetReadCount() == 0; }));
  }
  ASSERT_TRUE(WaitUntil([&] { return task.AudioFrames() == 31; }));
  EXPECT_TRUE(task.IsRunning());
  EXPECT_TRUE(task.FinishedFiles().empty());
  task.Stop();
  ASSERT_EQ(task.FinishedFiles().size(), 1u);
  EXPECT_EQ(ReadRecording(task.FinishedFiles()[0]).Count("01wb"), 31);
  EXPECT_EQ(events.Count(EVNET_RECORD_FILEBEGIN), 1);
}

TEST_F(RecordSplitTest, ScaledMonotonicClockSplitsTheSameWay) {
  SetTimerScale(0.05);  // a recorded second lasts 50 ms
  __STREAM_AV_PARAM p = VideoParams();
  for (int duration : {22, 30}) {
    EventLog events;
    CRecordTask task(&p, 20, duration, &events, 0);
    task.SetStorageBase(dir_.path().c_str(), 0);
    unsigned long start = GetTickCount();
    task.Start();
    unsigned char frame[32] = {};
    for (int i = 0; task.IsRunning() && GetTickCount() - start < 20000; ++i) {
      task.VideoRing()->Write(frame, sizeof(frame), 1, i);
      SleepMs(5);
    }
    EXPECT_TRUE(events.WaitFor(EVENT_RECORD_TASKEND));
    // Never sooner than the recorded time (at least one file of 20 s).
    EXPECT_GE(GetTickCount() - start, 20 * 50UL);
    task.Stop();
    EXPECT_EQ(task.FinishedFiles().size(), duration == 22 ? 1u : 2u) << duration;
  }
}

}  // namespace

// File lengths and durations, through the record thread, on a clock the test
// drives (and once on the scaled monotonic clock).
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>

#include "base/compat.h"
#include "base/time_scale.h"
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

class RecordSplitTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_FALSE(dir_.path().empty());
    SetDiskFreeCommand("echo 99999999 #%s");
    SetTimerScale(0.02);  // idle polls of 1 ms; the test clock is separate
  }
  void TearDown() override {
    SetDiskFreeCommand(nullptr);
    SetTimerScale(1.0);
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

  TempDir dir_;
};

TEST_F(RecordSplitTest, DurationWithinOneTenthOverTheFileLengthMakesOneFile) {
  // 330 <= 300 * 11 / 10: one file of 330 s, ended by the key frame after it.
  EXPECT_EQ(Run(300, 330, 500, 1), (std::vector<int>{661}));
}

TEST_F(RecordSplitTest, DurationBeyondOneTenthSplitsAtTheNextKeyFrame) {
  // 331 s: a 300 s file (frames 0 .. 300.0 s) and then a 31 s file.
  EXPECT_EQ(Run(300, 331, 500, 1), (std::vector<int>{601, 63}));
}

TEST_F(RecordSplitTest, SplitWaitsForAKeyFrame) {
  // Key frames every 4 s: the first file runs on to 304 s.
  std::vector<int> counts = Run(300, 400, 1000, 4);
  ASSERT_EQ(counts.size(), 2u);
  EXPECT_EQ(counts[0], 304);
}

TEST_F(RecordSplitTest, ShortFilesAreRaisedToTenSeconds) {
  // 5 s asked: the file lasts 10 s (frames 0 .. 10 s).
  EXPECT_EQ(Run(300, 5, 1000, 1), (std::vector<int>{11}));
  // A 5 s maximum per file gives 10 s files: 30 s left, then 19, then 8.
  EXPECT_EQ(Run(5, 30, 1000, 1), (std::vector<int>{11, 11, 11}));
}

TEST_F(RecordSplitTest, LongFilesAreCutToAnHour) {
  // 4,000 s in one file is asked; 3,600 s is the most a file holds.
  EXPECT_EQ(Run(4000, 4000, 10000, 1), (std::vector<int>{361, 40}));
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

TEST(RecordFileLength, RuleAndClamp) {
  EXPECT_EQ(CRecordTask::FileLengthSeconds(330, 300), 330);
  EXPECT_EQ(CRecordTask::FileLengthSeconds(331, 300), 300);
  EXPECT_EQ(CRecordTask::FileLengthSeconds(5, 300), 10);
  EXPECT_EQ(CRecordTask::FileLengthSeconds(4000, 4000), 3600);
  EXPECT_EQ(CRecordTask::FileLengthSeconds(100000, 2147483647), 3600);
}

}  // namespace

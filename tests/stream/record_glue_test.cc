// Recording a live stream and a host-fed stream through the exported
// functions: arguments, file names, events, and the chunks in the files.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>

#include "base/compat.h"
#include "emu/rtsp_server.h"
#include "frame_log_helper.h"
#include "quorvel/quorvel.h"
#include "support/loopback.h"
#include "record_helper.h"
#include "stream/disk_space.h"
#include "stream/pull_class.h"
#include "stream/record_task.h"
#include "stream/rtsp_object_list.h"

namespace {

using testsupport::ClosedPort;

const int kWaitMs = 20000;

long Ignore(long, unsigned long, char*, unsigned long, FRAME_EXTDATA*) { return 0; }

// The first video chunk is an H.264 key frame led by its SPS.
bool StartsWithSps(const RecordedFile& rec) {
  for (const RecordedChunk& c : rec.chunks) {
    if (c.id != "00dc") continue;
    return c.data.size() > 5 && c.data[0] == 0 && c.data[1] == 0 && c.data[2] == 0 &&
           c.data[3] == 1 && (c.data[4] & 0x1F) == 7;
  }
  return false;
}

// Waits until at most `most` frames wait in the pull's record rings.
bool WaitPending(CPullClass* pull, int most) {
  return WaitUntil([&] { return pull->PendingRecordFrames() <= most; });
}

class RecordLive : public ::testing::Test {
 protected:
  void SetUp() override {
    IP_NET_DVR_SetStatusEventCallBack(&FrameLog::OnStatus, &log_);
    ASSERT_TRUE(server_.Start(qvemu::RtspOptions()));
  }
  void TearDown() override {
    IP_NET_DVR_SetStatusEventCallBack(nullptr, nullptr);
    server_.Stop();
  }
  long Play() {
    ClientInfo info = StreamInfo(server_.Port(), 1, 0, &log_);
    return IP_NET_DVR_RealPlayEx("127.0.0.1", "admin", "admin", &FrameLog::OnFrame, &info, 0);
  }
  TempDir dir_;
  FrameLog log_;
  qvemu::RtspServer server_;
};

TEST_F(RecordLive, AFileNameRecordsOneFileUnderItsTemporaryNameFirst) {
  std::string file = dir_ / "clip.AVI";
  long handle = Play();
  ASSERT_TRUE(log_.WaitFor([](const std::vector<Frame>& f) { return CountType(f, 2) >= 1; },
                           kWaitMs));
  ASSERT_EQ(IP_NET_DVR_StartRecord(handle, file.c_str(), 60, 0), 0);
  EXPECT_EQ(IP_NET_DVR_StartRecord(handle, file.c_str(), 60, 0), QV_E_RECORD_RUNNING);
  ASSERT_TRUE(log_.WaitForStatus(EVNET_RECORD_FILEBEGIN, kWaitMs));
  int start = log_.Count(0);
  ASSERT_TRUE(log_.WaitFor([start](const std::vector<Frame>& f) { return CountType(f, 0) >= start + 75; },
                           kWaitMs));
  EXPECT_TRUE(FileExists(file + ".tmp"));
  EXPECT_FALSE(FileExists(file));
  ASSERT_EQ(IP_NET_DVR_StopRecord(handle), 0);
  EXPECT_FALSE(FileExists(file + ".tmp"));
  ASSERT_TRUE(FileExists(file));
  EXPECT_EQ(IP_NET_DVR_StopRecord(handle), QV_E_RECORD_NOT_RUNNING);
  EXPECT_EQ(IP_NET_DVR_StopRealPlay(handle), 0);

  RecordedFile rec = ReadRecording(file);
  ASSERT_EQ(rec.error, "");
  EXPECT_EQ(rec.header_size, 10296u);
  EXPECT_GE(rec.Count("00dc"), 40);
  EXPECT_GE(rec.Count("01wb"), 10);
  EXPECT_TRUE(StartsWithSps(rec)) << "the file starts at a key frame with its SPS";
  ExpectSelfConsistent(rec);
  for (const StatusEvent& e : log_.Statuses()) {
    if (e.code >= 42 && e.code <= 49) {
      EXPECT_EQ(e.id, handle);
    }
  }
  EXPECT_EQ(log_.StatusCount(EVNET_RECORD_FILEBEGIN), 1);
  EXPECT_EQ(log_.StatusCount(EVENT_RECORD_TASKEND), 1);
}

TEST_F(RecordLive, StoppingTheStreamEndsItsRecordingInADayFolder) {
  std::string dir = dir_.path();
  long handle = Play();
  ASSERT_TRUE(log_.WaitFor([](const std::vector<Frame>& f) { return CountType(f, 2) >= 1; },
                           kWaitMs));
  ASSERT_EQ(IP_NET_DVR_StartRecord(handle, dir.c_str(), 300, 600), 0);
  ASSERT_TRUE(log_.WaitForStatus(EVNET_RECORD_FILEBEGIN, kWaitMs));
  EXPECT_EQ(IP_NET_DVR_StopRealPlay(handle), 0);
  ASSERT_EQ(log_.StatusCount(EVENT_RECORD_TASKEND), 1);
  std::string path;
  for (const StatusEvent& e : log_.Statuses()) {
    if (e.code == EVNET_RECORD_FILEBEGIN) path = e.text;
  }
  ASSERT_EQ(ListFiles(dir), std::vector<std::string>{path}) << "closed under its final name";
  EXPECT_EQ(path.compare(0, dir.size() + 1, dir + "/"), 0);
  EXPECT_NE(path.find("-av-1.avi"), std::string::npos) << "audio and video, main stream";
}

TEST(RecordArgs, NamesAndHandlesAreRefused) {
  ClientInfo info = StreamInfo(ClosedPort(), 1, 0, nullptr);
  long handle = IP_NET_DVR_RealPlayEx("127.0.0.1", "u", "p", &Ignore, &info, 0);
  EXPECT_EQ(IP_NET_DVR_StartRecord(handle, "x", 10, 10), -8999963);
  EXPECT_EQ(IP_NET_DVR_StartRecord(handle, "", 10, 10), -8999963);
  EXPECT_EQ(IP_NET_DVR_StartRecord(handle, nullptr, 10, 10), -8999963);
  EXPECT_EQ(IP_NET_DVR_StartRecord(12345, "/tmp", 10, 10), QV_E_UNKNOWN_HANDLE);
  EXPECT_EQ(IP_NET_DVR_StopRecord(handle), QV_E_RECORD_NOT_RUNNING);
  EXPECT_EQ(IP_NET_DVR_StopRecord(12345), QV_E_UNKNOWN_HANDLE);
  EXPECT_EQ(IP_NET_DVR_StopRealPlay(handle), 0);
  EXPECT_EQ(IP_NET_DVR_StartRecordStream(nullptr, "/tmp", 10, 10), QV_E_INVALID_ARG);
  unsigned char byte = 0;
  EXPECT_EQ(IP_NET_DVR_InputRecordStream(12345, 0, &byte, 1, 1, 0), QV_E_UNKNOWN_HANDLE);
  EXPECT_EQ(IP_NET_DVR_StopRecordStream(12345), QV_E_UNKNOWN_HANDLE);
}

TEST_F(RecordLive, HostFedFramesAreRecordedFromTheFirstKeyFrame) {
  // Frames taken from the emulator's stream are handed back in as a
  // host-fed recording, starting with two frames before a key frame.
  long play = Play();
  ASSERT_TRUE(log_.WaitFor([](const std::vector<Frame>& f) { return CountType(f, 0) >= 80; },
                           kWaitMs));
  IP_NET_DVR_StopRealPlay(play);
  std::vector<Frame> frames = log_.Frames();
  __STREAM_AV_PARAM param;
  ASSERT_EQ(frames[0].type, 2u);
  memcpy(&param, frames[0].bytes.data(), sizeof(param));
  size_t second_key = 0;
  for (size_t i = 1, keys = 0; i < frames.size() && second_key == 0; ++i) {
    if (frames[i].type == 0 && frames[i].flag == 1 && ++keys == 2) second_key = i;
  }
  ASSERT_GT(second_key, 3u);
  size_t first = second_key - 3;
  while (frames[first].type != 0) --first;

  std::string file = dir_ / "fed.avi";
  long handle = IP_NET_DVR_StartRecordStream(&param, file.c_str(), 60, 0);
  ASSERT_GT(handle, 0);
  CPullClass* pull = OjbectRtspList.GetRtspObject(handle, 0);
  EXPECT_EQ(IP_NET_DVR_InputRecordStream(handle, 2, frames[0].bytes.data(), 812, 0, 0),
            QV_E_INVALID_ARG);
  int fed_video = 0, fed_audio = 0, dropped_before_key = 0;
  bool key_seen = false;
  for (size_t i = first; i < frames.size(); ++i) {
    const Frame& f = frames[i];
    if (f.type > 1) continue;
    ASSERT_EQ(IP_NET_DVR_InputRecordStream(handle, static_cast<int>(f.type), f.bytes.data(),
                                           static_cast<int>(f.bytes.size()), f.flag, f.timestamp),
              0);
    if (f.type == 0) {
      key_seen = key_seen || f.flag == 1;
      if (key_seen) ++fed_video; else ++dropped_before_key;
    } else {
      ++fed_audio;
    }
    // The recorder holds 29 frames of each kind: let it keep up.
    ASSERT_TRUE(WaitPending(pull, 10));
  }
  ASSERT_TRUE(WaitPending(pull, 0));
  ASSERT_EQ(IP_NET_DVR_StopRecordStream(handle), 0);
  EXPECT_EQ(IP_NET_DVR_InputRecordStream(handle, 0, frames[1].bytes.data(), 1, 0, 0),
            QV_E_UNKNOWN_HANDLE);
  RecordedFile rec = ReadRecording(file);
  ASSERT_EQ(rec.error, "");
  EXPECT_GE(dropped_before_key, 1);
  EXPECT_EQ(rec.Count("00dc"), fed_video);
  EXPECT_TRUE(StartsWithSps(rec));
  EXPECT_GT(rec.Count("01wb"), 0);
  EXPECT_LE(rec.Count("01wb"), fed_audio);
}

TEST(RecordFed, FramesBeyondTheRingsLimitAreLeftOutWithoutHarm) {
  TempDir dir;
  SetDiskFreeCommand("echo 99999999 #%s");
  __STREAM_AV_PARAM param;
  memset(&param, 0, sizeof(param));
  snprintf(param.video.codec, sizeof(param.video.codec), "H264");
  param.video.width = 320;
  param.video.height = 240;
  param.video.frame_rate = 25;
  std::string file = dir / "big.avi";
  long handle = IP_NET_DVR_StartRecordStream(&param, file.c_str(), 60, 0);
  ASSERT_GT(handle, 0);
  CPullClass* pull = OjbectRtspList.GetRtspObject(handle, 0);
  // Sizes around the ring's cut: 514,048 bytes is the largest it keeps.
  const int sizes[] = {1000, 514048, 514049, 2000000, 3000, 600000, 4000};
  int kept = 0;
  for (size_t i = 0; i < sizeof(sizes) / sizeof(sizes[0]); ++i) {
    std::vector<unsigned char> frame(static_cast<size_t>(sizes[i]), 0x5A);
    ASSERT_EQ(IP_NET_DVR_InputRecordStream(handle, QV_FRAME_VIDEO, frame.data(), sizes[i],
                                           i == 0 ? 1 : 0, 40.0 * static_cast<double>(i)),
              0);
    kept += sizes[i] <= 514048 ? 1 : 0;
    ASSERT_TRUE(WaitPending(pull, 0));
  }
  ASSERT_EQ(IP_NET_DVR_StopRecordStream(handle), 0);
  SetDiskFreeCommand(nullptr);
  RecordedFile rec = ReadRecording(file);
  ASSERT_EQ(rec.error, "");
  ASSERT_EQ(rec.Count("00dc"), kept);
  EXPECT_EQ(rec.chunks[1].data.size(), 514048u);
  EXPECT_EQ(rec.chunks[2].data.size(), 3000u);
  EXPECT_EQ(rec.chunks[3].data.size(), 4000u);
}

// A host stops the recording -- or the whole stream -- from the status
// callback of a record event, on the record thread itself (say on event 45,
// the disk is full). The call succeeds, the file in hand is closed under its
// final name, the task reports its end and destroys itself.
struct EventStopper {
  int event;                  // stop on the first event of this code
  long (*stop)(long handle);  // the exported call that stops
  std::atomic<long> result{1};
  FrameLog log;
};

long StopOnEvent(long id, long code, const char* text, void* user) {
  EventStopper* s = static_cast<EventStopper*>(user);
  s->log.AddStatus({id, code, text != nullptr ? text : ""});
  if (code == s->event && s->result == 1) s->result = s->stop(id);
  return 0;
}

TEST(RecordStopFromEvent, EveryStopEndsTheTaskCleanly) {
  const struct {
    const char* what;
    int event;
    long (*stop)(long);
    bool live;  // a real-play stream (else a host-fed one)
  } cases[] = {
      {"StopRecord on opening a file", EVNET_RECORD_FILEBEGIN, &IP_NET_DVR_StopRecord, false},
      {"StopRecord on a full disk", EVENT_RECORD_DISKFREESPACE_TOOLOW, &IP_NET_DVR_StopRecord,
       false},
      {"StopRecordStream on opening a file", EVNET_RECORD_FILEBEGIN, &IP_NET_DVR_StopRecordStream,
       false},
      {"StopRealPlay on opening a file", EVNET_RECORD_FILEBEGIN, &IP_NET_DVR_StopRealPlay, true},
      {"StopRealPlay on a full disk", EVENT_RECORD_DISKFREESPACE_TOOLOW, &IP_NET_DVR_StopRealPlay,
       true},
  };
  __STREAM_AV_PARAM param;
  memset(&param, 0, sizeof(param));
  snprintf(param.video.codec, sizeof(param.video.codec), "H264");
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    TempDir dir;
    bool full = c.event == EVENT_RECORD_DISKFREESPACE_TOOLOW;
    SetDiskFreeCommand(full ? "echo 1 #%s" : "echo 99999999 #%s");
    int tasks = CRecordTask::LiveCount();
    int pulls = CPullClass::LiveCount();
    EventStopper stopper;
    stopper.event = c.event;
    stopper.stop = c.stop;
    IP_NET_DVR_SetStatusEventCallBack(&StopOnEvent, &stopper);
    long handle = 0;
    if (c.live) {
      ClientInfo info = StreamInfo(ClosedPort(), 1, 0, nullptr);
      handle = IP_NET_DVR_RealPlayEx("127.0.0.1", "u", "p", &Ignore, &info, 0);
      ASSERT_EQ(IP_NET_DVR_StartRecord(handle, dir.path().c_str(), 300, 600), 0);
    } else {
      handle = IP_NET_DVR_StartRecordStream(&param, dir.path().c_str(), 300, 600);
      ASSERT_GT(handle, 0);
    }
    ASSERT_TRUE(WaitUntil([&] { return stopper.result != 1; }));
    EXPECT_EQ(stopper.result, 0);
    ASSERT_TRUE(stopper.log.WaitForStatus(EVENT_RECORD_TASKEND, kWaitMs));
    ASSERT_TRUE(WaitUntil([&] { return CRecordTask::LiveCount() == tasks; }))
        << "the task destroys itself";
    std::vector<std::string> files = ListFiles(dir.path());
    ASSERT_EQ(files.size(), full ? 0u : 1u);
    if (!full) {
      EXPECT_EQ(files[0].find(".tmp"), std::string::npos) << files[0];
    }
    for (const StatusEvent& e : stopper.log.Statuses()) EXPECT_EQ(e.id, handle) << e.code;
    if (c.stop == &IP_NET_DVR_StopRecord) {
      EXPECT_EQ(IP_NET_DVR_StopRecord(handle), QV_E_RECORD_NOT_RUNNING);
      EXPECT_EQ(c.live ? IP_NET_DVR_StopRealPlay(handle) : IP_NET_DVR_StopRecordStream(handle), 0);
    } else {
      EXPECT_EQ(c.stop(handle), QV_E_UNKNOWN_HANDLE);
    }
    ASSERT_TRUE(WaitUntil([&] { return CPullClass::LiveCount() == pulls; }));
    IP_NET_DVR_SetStatusEventCallBack(nullptr, nullptr);
  }
  SetDiskFreeCommand(nullptr);
}

// Frames fed on one thread while another stops the recording: every call
// answers with a code of its own, and the stream is never used after it was
// freed (the sanitizer build checks the memory side).
TEST(RecordFed, FeedingWhileAnotherThreadStopsIsSafe) {
  TempDir dir;
  SetDiskFreeCommand("echo 1 #%s");  // no file: the frames only pass the rings
  __STREAM_AV_PARAM param;
  memset(&param, 0, sizeof(param));
  snprintf(param.video.codec, sizeof(param.video.codec), "H264");
  std::vector<unsigned char> frame(200000, 0x11);
  for (int round = 0; round < 20; ++round) {
    long handle = IP_NET_DVR_StartRecordStream(&param, dir.path().c_str(), 300, 600);
    ASSERT_GT(handle, 0);
    std::atomic<int> fed{0};
    std::atomic<long> odd{0};
    std::thread feeder([&] {
      for (;;) {
        long ret = IP_NET_DVR_InputRecordStream(handle, QV_FRAME_VIDEO, frame.data(),
                                                static_cast<int>(frame.size()), 1, fed * 40.0);
        if (ret == QV_E_UNKNOWN_HANDLE) return;
        if (ret != 0 && ret != QV_E_RECORD_NOT_RUNNING) odd = ret;
        ++fed;
      }
    });
    EXPECT_TRUE(WaitUntil([&] { return fed >= 3; }));
    if (round % 2 == 1) {
      EXPECT_EQ(IP_NET_DVR_StopRecord(handle), 0);
    }
    EXPECT_EQ(IP_NET_DVR_StopRecordStream(handle), 0);
    feeder.join();
    EXPECT_EQ(odd, 0) << "round " << round;
  }
  SetDiskFreeCommand(nullptr);
}

}  // namespace

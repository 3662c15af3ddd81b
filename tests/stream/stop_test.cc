// Ending streams: the host's stop, from any state and from inside a callback,
// and the watchdog's stop of streams that went silent.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <thread>

#include "base/compat.h"
#include "base/time_scale.h"
#include "emu/rtsp_server.h"
#include "frame_log_helper.h"
#include "mute_camera_helper.h"
#include "quorvel/quorvel.h"
#include "support/loopback.h"
#include "support/scratch.h"
#include "stream/pull_class.h"
#include "stream/rtsp_object_list.h"

namespace {

using testsupport::BlackHole;
using testsupport::ClosedPort;

const int kWaitMs = 20000;

long Ignore(long, unsigned long, char*, unsigned long, FRAME_EXTDATA*) { return 0; }

long PlayAt(int port, QV_RealDataCallBack cb, void* user) {
  ClientInfo info = StreamInfo(port, 1, 0, user);
  return IP_NET_DVR_RealPlayEx("127.0.0.1", "admin", "admin", cb, &info, 0);
}

long ElapsedMs(std::chrono::steady_clock::time_point since) {
  return static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(
                               std::chrono::steady_clock::now() - since)
                               .count());
}

TEST(HostStop, ReturnsWithinASecondWhileTheCameraNeverAnswers) {
  BlackHole hole;
  long handle = PlayAt(hole.Port(), &Ignore, nullptr);
  ASSERT_GT(handle, 0);
  ASSERT_TRUE(hole.Accept(kWaitMs)) << "the client connects and waits for the answer";
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(IP_NET_DVR_StopRealPlay(handle), 0);
  EXPECT_LT(ElapsedMs(start), 1000);
}

TEST(HostStop, ReturnsWithinASecondBetweenRefusedConnectionAttempts) {
  FrameLog log;
  IP_NET_DVR_SetStatusEventCallBack(&FrameLog::OnStatus, &log);
  long handle = PlayAt(ClosedPort(), &Ignore, nullptr);
  ASSERT_TRUE(log.WaitForStatus(EVENT_CONNECTRTSPERROR, kWaitMs));
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(IP_NET_DVR_StopRealPlay(handle), 0);
  EXPECT_LT(ElapsedMs(start), 1000);
  IP_NET_DVR_SetStatusEventCallBack(nullptr, nullptr);
  EXPECT_EQ(log.StatusCount(EVENT_RTSPTHREADEXIT), 0) << "the host knows it stopped the stream";
}

// Releasing every stream waits for a callback of a stream that is running,
// as stopping one stream does; the streams stay registered until stopped.
struct SlowStatus {
  std::atomic<int> inside{0};
  std::atomic<bool> released{false};
  std::atomic<int> late{0};
};

long SlowStatusCallback(long, long, const char*, void* user) {
  SlowStatus* s = static_cast<SlowStatus*>(user);
  if (s->released) ++s->late;
  s->inside = 1;
  SleepMs(200);  // a host that takes its time with an event
  s->inside = 0;
  return 0;
}

TEST(HostStop, StopAllWaitsForARunningCallback) {
  SlowStatus status;
  IP_NET_DVR_SetStatusEventCallBack(&SlowStatusCallback, &status);
  long handle = PlayAt(ClosedPort(), &Ignore, nullptr);  // reports each refused attempt
  ASSERT_TRUE(testsupport::WaitFor([&] { return status.inside == 1; }, kWaitMs));
  EXPECT_EQ(IP_NET_DVR_StopAllRealPlay(), 0);
  status.released = true;
  EXPECT_EQ(status.inside, 0) << "the release waited for the callback";
  EXPECT_EQ(status.late, 0);
  EXPECT_EQ(IP_NET_DVR_StopRealPlay(handle), 0);
  IP_NET_DVR_SetStatusEventCallBack(nullptr, nullptr);
}

class CallbackStop : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(server_.Start(qvemu::RtspOptions())); }
  void TearDown() override { server_.Stop(); }
  qvemu::RtspServer server_;
};

struct SlowHost {
  std::atomic<int> in_callback{0};
  std::atomic<bool> stopped{false};
  std::atomic<int> late_calls{0};
  std::atomic<int> calls{0};
};

long SlowCallback(long, unsigned long type, char*, unsigned long, FRAME_EXTDATA* extra) {
  SlowHost* host = static_cast<SlowHost*>(extra->user);
  if (host->stopped) ++host->late_calls;
  ++host->calls;
  if (type == 0) {
    host->in_callback = 1;
    SleepMs(200);  // a host that takes its time with a frame
    host->in_callback = 0;
  }
  return 0;
}

TEST_F(CallbackStop, StopWhileTheCallbackRunsWaitsForItAndEndsDelivery) {
  SlowHost host;
  long handle = PlayAt(server_.Port(), &SlowCallback, &host);
  ASSERT_TRUE(testsupport::WaitFor([&] { return host.in_callback == 1; }, kWaitMs));
  EXPECT_EQ(IP_NET_DVR_StopRealPlay(handle), 0);
  host.stopped = true;
  EXPECT_EQ(host.in_callback, 0) << "the stop waited for the running callback";
  int calls = host.calls;
  SleepMs(300);  // a window in which a late frame would show up
  EXPECT_EQ(host.late_calls, 0);
  EXPECT_EQ(host.calls, calls);
}

struct SelfStopper {
  std::atomic<long> handle{0};
  std::atomic<int> frames{0};
  std::atomic<long> stop_result{1};
  std::atomic<int> after_stop{0};
};

long StopOwnStream(long handle, unsigned long type, char*, unsigned long, FRAME_EXTDATA* extra) {
  SelfStopper* s = static_cast<SelfStopper*>(extra->user);
  if (s->stop_result != 1) {
    ++s->after_stop;
    return 0;
  }
  if (type == 0 && ++s->frames == 5) s->stop_result = IP_NET_DVR_StopRealPlay(handle);
  return 0;
}

TEST_F(CallbackStop, ACallbackMayStopItsOwnStream) {
  int live_before = CPullClass::LiveCount();
  SelfStopper stopper;
  long handle = PlayAt(server_.Port(), &StopOwnStream, &stopper);
  stopper.handle = handle;
  ASSERT_TRUE(testsupport::WaitFor([&] { return stopper.stop_result != 1; }, kWaitMs));
  EXPECT_EQ(stopper.stop_result, 0);
  EXPECT_EQ(IP_NET_DVR_StopRealPlay(handle), -8999989) << "forgotten at once";
  ASSERT_TRUE(testsupport::WaitFor([&] { return CPullClass::LiveCount() == live_before; }, kWaitMs))
      << "the pull destroys itself when its thread ends";
  EXPECT_EQ(stopper.after_stop, 0);
}

TEST(Watchdog, StopsAStreamOnceAfterItsDataStops) {
  SetTimerScale(0.02);  // period 60 ms, silence limit 200 ms
  CRTSPObjectList registry;
  int port = ClosedPort();
  std::string address = "rtsp://127.0.0.1:" + std::to_string(port);
  long quiet = registry.Add(address.c_str(), "", "", 0, 0, &Ignore, nullptr);
  long fed = registry.Add(address.c_str(), "", "", 0, 0, &Ignore, nullptr);
  CPullClass* fed_pull = registry.GetRtspObject(fed, 0);
  CPullClass* quiet_pull = registry.GetRtspObject(quiet, 0);
  fed_pull->SetLastDataTick(GetTickCount());

  // The count goes up last, after the flag and the tick are set.
  ASSERT_TRUE(testsupport::WaitFor([&] { return registry.SilentStreamsStopped() > 0; }, kWaitMs));
  EXPECT_TRUE(fed_pull->StopFlag());
  EXPECT_EQ(registry.SilentStreamsStopped(), 1);
  // Several more periods: flagged once only; a stream that never had data is
  // left alone; the stopped stream stays registered.
  unsigned long flagged_at = fed_pull->LastDataTick();
  SleepMs(600);
  EXPECT_EQ(registry.SilentStreamsStopped(), 1);
  EXPECT_EQ(fed_pull->LastDataTick(), flagged_at);
  EXPECT_FALSE(quiet_pull->StopFlag());
  EXPECT_EQ(registry.GetRtspObject(fed, 0), fed_pull);
  EXPECT_EQ(registry.Delete(fed), 0);
  EXPECT_EQ(registry.Delete(quiet), 0);
  SetTimerScale(1.0);
}

// The watchdog's period and limit scaled to 0.9 s and 3 s: a silent stream
// is stopped before the client's own 5 s read time-out could reconnect it.
// The emulator's silence starts on its own clock. Every wait has a deadline
// far beyond what a loaded machine (or a sanitizer build) needs; nothing is
// timed.
class SilentCamera : public ::testing::Test {
 protected:
  static const int kDeadlineMs = 60000;

  void SetUp() override {
    SetTimerScale(0.3);
    IP_NET_DVR_SetStatusEventCallBack(&FrameLog::OnStatus, &log_);
    stopped_before_ = OjbectRtspList.SilentStreamsStopped();
  }
  void TearDown() override {
    IP_NET_DVR_SetStatusEventCallBack(nullptr, nullptr);
    server_.Stop();
    SetTimerScale(1.0);
  }

  // Once the stream's thread has ended: the watchdog stopped it exactly
  // once, and it stays stopped (a window of two watchdog periods) and
  // registered.
  void ExpectStoppedOnce(long handle) {
    ASSERT_TRUE(log_.WaitForStatus(EVENT_RTSPTHREADEXIT, kDeadlineMs));
    EXPECT_EQ(OjbectRtspList.SilentStreamsStopped(), stopped_before_ + 1);
    int frames = log_.Count(0);
    SleepMs(ScaledMs(9000));
    EXPECT_EQ(OjbectRtspList.SilentStreamsStopped(), stopped_before_ + 1);
    EXPECT_EQ(log_.StatusCount(EVENT_RTSPTHREADEXIT), 1);
    EXPECT_EQ(log_.Count(0), frames) << "no frames after the stop";
    for (const StatusEvent& e : log_.Statuses()) EXPECT_EQ(e.id, handle);
    EXPECT_EQ(IP_NET_DVR_StopRealPlay(handle), 0) << "still registered";
  }

  FrameLog log_;
  qvemu::RtspServer server_;
  int stopped_before_ = 0;
};

TEST_F(SilentCamera, AStreamThatFallsSilentIsStoppedAndReportedOnce) {
  qvemu::RtspOptions options;
  options.silent_after_ms = 4000;
  ASSERT_TRUE(server_.Start(options));
  long handle = PlayAt(server_.Port(), &FrameLog::OnFrame, &log_);
  ASSERT_TRUE(log_.WaitFor([](const std::vector<Frame>& f) { return CountType(f, 0) >= 3; },
                           kDeadlineMs));
  ExpectStoppedOnce(handle);
}

TEST_F(SilentCamera, ASessionThatNeverSendsIsStoppedOnce) {
  MuteCamera camera;
  ASSERT_TRUE(camera.Start());
  long handle = PlayAt(camera.Port(), &FrameLog::OnFrame, &log_);
  ASSERT_TRUE(log_.WaitForStatus(EVENT_CONNECTRTSPOK, kDeadlineMs));
  EXPECT_GE(camera.Plays(), 1);
  ExpectStoppedOnce(handle);
  EXPECT_EQ(log_.Count(0) + log_.Count(1), 0);
}

}  // namespace

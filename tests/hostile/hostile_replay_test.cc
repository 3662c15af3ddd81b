// Remote playback from a camera whose replay media and start answers are
// hostile (lengths that lie, cut headers, sequence jumps, false trailers,
// fragments past the assembly buffer, odd parameter blocks), one case per
// seed: every frame the library hands over is whole and well formed, the
// play still reaches its end, and the session logs out cleanly.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "emu/hostile.h"
#include "emu/recordings.h"
#include "link/camera_fixture.h"
#include "replay/replay_recorder.h"
#include "support/call_watchdog.h"

namespace qvtest {
namespace {

const int kRecordingSeconds = 4;
const size_t kAssemblyBytes = 0x200000;  // the session's frame assembly buffer

class HostileReplay : public CameraFixture, public ::testing::WithParamInterface<uint64_t> {
 protected:
  qvemu::CameraOptions Options() const override {
    qvemu::CameraOptions o;
    o.recording_seconds = kRecordingSeconds;
    o.hostile_replay = true;
    o.hostile_seed = GetParam();
    return o;
  }
  void SetUp() override {
    CameraFixture::SetUp();
    // Key frames come in several fragments, so that cut and jumping
    // packets land inside frames too.
    camera_->SetReplayFragment(5000);
    replay_.Install();
  }
  void TearDown() override {
    {
      CallWatchdog::Guard g(&dog_, "IP_NET_DVR_Cleanup", kWaitMs);
      CameraFixture::TearDown();
    }
    EXPECT_EQ(dog_.Stuck(), 0) << "seed " << GetParam();
  }

  ReplayRecorder replay_;
  CallWatchdog dog_;
};

TEST_P(HostileReplay, FramesHandedOverAreWholeAndThePlayEnds) {
  long id = LoginReady();
  ASSERT_EQ(IP_NET_DVR_GetReplayAblity(id), 1);
  time_t start = qvemu::RecordingStore(kRecordingSeconds).FirstOfDay(camera_->CameraTime()).start;
  {
    CallWatchdog::Guard g(&dog_, "IP_NET_DVR_ReplayByTime", kWaitMs);
    ASSERT_EQ(IP_NET_DVR_ReplayByTime(id, static_cast<long>(start)), 0);
  }
  {
    CallWatchdog::Guard g(&dog_, "IP_NET_DVR_ControlReplay", kWaitMs);
    EXPECT_EQ(IP_NET_DVR_ControlReplay(id, QV_REPLAY_FAST, 4), 0);
  }
  ReplayEvent end;
  ASSERT_TRUE(replay_.WaitEvent(QV_REPLAY_STOP, kWaitMs * 3, &end)) << "seed " << GetParam();
  EXPECT_EQ(end.flag, 1);

  int intact = 0;
  for (const ReplayDelivery& d : replay_.Data()) {
    if (d.kind == QV_REPLAY_KIND_PARAM) {
      ASSERT_EQ(d.bytes.size(), sizeof(QV_REPLAY_PARAM));
      QV_REPLAY_PARAM p;
      memcpy(&p, d.bytes.data(), sizeof p);
      EXPECT_TRUE(p.audio_valid == 0 || p.audio_valid == 1);
      EXPECT_GE(p.video_size, 0);
      EXPECT_GE(p.audio_size, 0);
      continue;
    }
    ASSERT_GE(d.bytes.size(), sizeof(QV_REPLAY_TRAILER));
    ASSERT_LE(d.bytes.size(), kAssemblyBytes - 20) << "a frame beyond the assembly buffer";
    QV_REPLAY_TRAILER t = TrailerOf(d);
    ASSERT_EQ(t.magic, QV_REPLAY_TRAILER_MAGIC);
    EXPECT_EQ(t.reserved, 0u);
    std::string bytes = d.bytes.substr(0, d.bytes.size() - sizeof t);
    if (d.kind == QV_REPLAY_KIND_VIDEO && t.frame_index < 1000 &&
        bytes == qvemu::RecordingStore::VideoFrame(static_cast<int>(t.frame_index))) {
      ++intact;
    }
  }
  // Most packets pass unchanged: the play goes on between the faults.
  EXPECT_GT(intact, kRecordingSeconds * qvemu::RecordingStore::kFramesPerSecond / 4)
      << "seed " << GetParam();
  CallWatchdog::Guard g(&dog_, "IP_NET_DVR_Logout", kWaitMs);
  EXPECT_EQ(IP_NET_DVR_Logout(id), 0);
}

INSTANTIATE_TEST_SUITE_P(Seeds, HostileReplay, ::testing::Values(1u, 5u, 17u, 4242u, 0xfeedu));

// The media faults replay from the seed, and each kind of them comes up.
TEST(HostileDice, MediaPacketsReplayAndCoverTheirFaults) {
  std::string packet(20, '\0');
  packet[12] = 1;  // a first fragment
  packet += std::string(3000, 'd');
  int changed = 0, overflows = 0, cut = 0, lying = 0;
  for (uint64_t n = 0; n < 500; ++n) {
    qvemu::HostileDice a = qvemu::DiceFor(3, "replay", n), b = qvemu::DiceFor(3, "replay", n);
    uint16_t seq_a = 7, seq_b = 7;
    auto ra = qvemu::HostileMedia(&a, packet, &seq_a);
    auto rb = qvemu::HostileMedia(&b, packet, &seq_b);
    ASSERT_EQ(ra.size(), rb.size());
    ASSERT_EQ(seq_a, seq_b);
    size_t total = 0;
    for (size_t i = 0; i < ra.size(); ++i) {
      ASSERT_EQ(ra[i].packet, rb[i].packet);
      ASSERT_EQ(ra[i].announced, rb[i].announced);
      total += ra[i].packet.size();
      cut += ra[i].packet.size() < 20 ? 1 : 0;
      lying += ra[i].announced != static_cast<int>(ra[i].packet.size()) ? 1 : 0;
    }
    changed += ra.size() != 1 || ra[0].packet != packet ? 1 : 0;
    overflows += total > kAssemblyBytes ? 1 : 0;
  }
  EXPECT_GT(changed, 50);
  EXPECT_GT(overflows, 0);
  EXPECT_GT(cut, 0);
  EXPECT_GT(lying, 0);
}

}  // namespace
}  // namespace qvtest

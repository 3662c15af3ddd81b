// Remote playback against the emulated camera: a recording delivered frame
// by frame, the sequence wrap, faults that cost exactly one frame, and the
// control requests with their exact texts.
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "api/ptz_object_list.h"
#include "emu/recordings.h"
#include "link/camera_fixture.h"
#include "link/ptz_control_class.h"
#include "replay/replay_recorder.h"

namespace qvtest {
namespace {

const int kRecordingSeconds = 4;  // 100 video frames
const int kFrames = kRecordingSeconds * qvemu::RecordingStore::kFramesPerSecond;

#define TABS "\t\t\t\t\t\t"
// The time-line control request as a camera must receive it.
std::string TimelineRequest(long action, long start, long play) {
  return "<?xml version=\"1.0\" encoding=\"GB2312\" ?>" TABS " <XML_VEXORA>" TABS
         " <MESSAGE_HEADER " TABS " Msg_type=\"TIMELINE_REPLAY_CONTROL_MESSAGE\"" TABS
         " Msg_code=\"" + std::to_string(action) + "\" " TABS " Msg_flag=\"0\" " TABS
         " /><MESSAGE_BODY>" TABS " <REQUEST_PARAM " TABS " PlayTimestampInsec=\"" +
         std::to_string(start) + "\" " TABS " PlayParam=\"" + std::to_string(play) +
         "\" " TABS " />" TABS " </MESSAGE_BODY>" TABS " </XML_VEXORA>";
}
std::string ByNameRequest(long action, const std::string& name, long start, long play) {
  return "<?xml version=\"1.0\" encoding=\"GB2312\" ?>" TABS " <XML_VEXORA>" TABS
         " <MESSAGE_HEADER " TABS " Msg_type=\"REPLAY_CONTROL_MESSAGE\"" TABS
         " Msg_code=\"" + std::to_string(action) + "\" " TABS " Msg_flag=\"0\" " TABS
         " /><MESSAGE_BODY>" TABS " <REQUEST_PARAM " TABS " FileName = \"" + name + "\" " TABS
         " StartPos=\"" + std::to_string(start) + "\" " TABS " PlayParam=\"" +
         std::to_string(play) + "\" " TABS " />" TABS " </MESSAGE_BODY>" TABS " </XML_VEXORA>";
}
#undef TABS

class ReplayTest : public CameraFixture {
 protected:
  qvemu::CameraOptions Options() const override {
    qvemu::CameraOptions o;
    o.recording_seconds = kRecordingSeconds;
    return o;
  }
  void SetUp() override {
    CameraFixture::SetUp();
    replay_.Install();
  }

  // The first recording of the camera's day.
  qvemu::Recording First() const {
    return qvemu::RecordingStore(kRecordingSeconds).FirstOfDay(camera_->CameraTime());
  }

  // Logs in and starts the first recording, fast when asked.
  long Playing(long speed = 1) {
    long id = LoginReady();
    EXPECT_EQ(IP_NET_DVR_GetReplayAblity(id), 1);
    EXPECT_EQ(IP_NET_DVR_ReplayByTime(id, static_cast<long>(First().start)), 0);
    if (speed > 1) {
      EXPECT_EQ(IP_NET_DVR_ControlReplay(id, QV_REPLAY_FAST, speed), 0);
    }
    return id;
  }

  // Video and audio deliveries, in order.
  std::vector<ReplayDelivery> OfKind(unsigned long kind) const {
    std::vector<ReplayDelivery> out;
    for (const ReplayDelivery& d : replay_.Data()) {
      if (d.kind == kind) out.push_back(d);
    }
    return out;
  }

  // Every video and audio frame up to `last`, each once, in order, with the
  // recording's bytes, except the video frames listed in `missing`.
  void ExpectFrames(int last, const std::vector<int>& missing = {}) {
    std::vector<uint32_t> want;
    for (int i = 0; i <= last; ++i) {
      bool lost = false;
      for (int m : missing) lost = lost || m == i;
      if (!lost) want.push_back(static_cast<uint32_t>(i));
    }
    std::vector<uint32_t> got;
    for (const ReplayDelivery& d : OfKind(QV_REPLAY_KIND_VIDEO)) {
      QV_REPLAY_TRAILER t = TrailerOf(d);
      if (t.frame_index > static_cast<uint32_t>(last)) break;
      got.push_back(t.frame_index);
      std::string frame = qvemu::RecordingStore::VideoFrame(static_cast<int>(t.frame_index));
      ASSERT_EQ(d.bytes.size(), frame.size() + 16) << t.frame_index;
      EXPECT_EQ(d.bytes.compare(0, frame.size(), frame), 0) << t.frame_index;
    }
    EXPECT_EQ(got, want);
    std::vector<uint32_t> audio;
    for (const ReplayDelivery& d : OfKind(QV_REPLAY_KIND_AUDIO)) {
      QV_REPLAY_TRAILER t = TrailerOf(d);
      if (t.frame_index > static_cast<uint32_t>(last)) break;
      audio.push_back(t.frame_index);
    }
    ASSERT_EQ(audio.size(), static_cast<size_t>(last + 1));  // audio is never lost
  }

  ReplayRecorder replay_;
};

TEST_F(ReplayTest, ARecordingArrivesAsItsParametersThenEveryFrameOnceThenItsEnd) {
  long id = Playing(10);
  ReplayEvent end;
  ASSERT_TRUE(replay_.WaitEvent(QV_REPLAY_STOP, kWaitMs, &end));
  EXPECT_EQ(end.id, id);
  EXPECT_EQ(end.flag, 1);
  EXPECT_FALSE(end.has_body);

  std::vector<ReplayDelivery> all = replay_.Data();
  ASSERT_FALSE(all.empty());
  // The parameter record comes first, once.
  ASSERT_EQ(all[0].kind, static_cast<unsigned long>(QV_REPLAY_KIND_PARAM));
  ASSERT_EQ(all[0].bytes.size(), sizeof(QV_REPLAY_PARAM));
  EXPECT_EQ(OfKind(QV_REPLAY_KIND_PARAM).size(), 1u);
  QV_REPLAY_PARAM param;
  memcpy(&param, all[0].bytes.data(), sizeof param);
  EXPECT_EQ(param.video_seconds, kRecordingSeconds);
  EXPECT_STREQ(param.av.video.codec, "H264");
  EXPECT_EQ(param.av.video.width, 1280);
  EXPECT_EQ(param.av.video.height, 720);
  EXPECT_EQ(param.av.video.config_len, 16);
  EXPECT_STREQ(param.av.audio.codec, "G711U");
  EXPECT_EQ(param.audio_valid, 1);
  EXPECT_EQ(param.video_size, 536);
  EXPECT_EQ(param.audio_size, 276);
  EXPECT_EQ(all[0].user, &replay_);

  ExpectFrames(kFrames - 1);
  // Trailers, key marks and ticks.
  for (const ReplayDelivery& d : OfKind(QV_REPLAY_KIND_VIDEO)) {
    QV_REPLAY_TRAILER t = TrailerOf(d);
    SCOPED_TRACE(t.frame_index);
    EXPECT_EQ(t.magic, QV_REPLAY_TRAILER_MAGIC);
    EXPECT_EQ(t.reserved, 0u);
    EXPECT_EQ(t.key_index, t.frame_index - t.frame_index % 25);
    EXPECT_EQ(d.flag, t.frame_index % 25 == 0 ? 1 : 0);
    EXPECT_EQ(d.timestamp, t.frame_index * 40.0);
  }
  for (const ReplayDelivery& d : OfKind(QV_REPLAY_KIND_AUDIO)) {
    QV_REPLAY_TRAILER t = TrailerOf(d);
    EXPECT_EQ(t.key_index, t.frame_index);
    EXPECT_EQ(d.bytes.substr(0, d.bytes.size() - 16),
              qvemu::RecordingStore::AudioFrame(static_cast<int>(t.frame_index)));
  }
}

TEST_F(ReplayTest, TheSequenceRunsOnFrom65535To0) {
  // Frame 0 is a key frame of three packets: 65534, 65535 and 0.
  camera_->SetReplaySequenceStart(65534);
  Playing();
  ASSERT_TRUE(replay_.WaitVideoFrame(3, kWaitMs));
  ExpectFrames(2);
}

TEST_F(ReplayTest, BrokenPacketsCostOnlyTheirFrame) {
  const struct {
    qvemu::ReplayFault fault;
    const char* what;
  } cases[] = {
      {qvemu::ReplayFault::kSkipSequence, "a sequence number skipped inside the frame"},
      {qvemu::ReplayFault::kPacketLongerThanData, "a packet claiming more data than it has"},
      {qvemu::ReplayFault::kPosBeyondMessage, "a packet announced beyond its message"},
      {qvemu::ReplayFault::kOversizeFrame, "a frame larger than the assembly buffer"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    replay_.Clear();
    events_.Clear();  // the next login gets the same user ID again
    camera_->SetReplayFault(c.fault, 25);
    long id = Playing(4);
    ASSERT_TRUE(replay_.WaitVideoFrame(31, kWaitMs));  // audio 30 is in before it
    ExpectFrames(30, {25});
    // Frame 26 follows a key frame that never arrived: its key index is
    // the one before.
    for (const ReplayDelivery& d : OfKind(QV_REPLAY_KIND_VIDEO)) {
      if (TrailerOf(d).frame_index == 26) {
        EXPECT_EQ(TrailerOf(d).key_index, 0u);
      }
    }
    EXPECT_EQ(events_.Count(id, EVENT_SOCKETERROR), 0);
    EXPECT_EQ(IP_NET_DVR_Logout(id), 0);
  }
}

TEST_F(ReplayTest, ControlsReachTheCameraAsExactTextsAndAreHonoured) {
  qvemu::Recording r = First();
  long id = Playing();
  ASSERT_TRUE(replay_.WaitVideoFrame(1, kWaitMs));
  const struct {
    long action, parameter;
    long start, play;  // as sent
  } steps[] = {
      {QV_REPLAY_PAUSE, 9, 0, 9},
      {QV_REPLAY_RESUME, 0, 0, 0},
      {QV_REPLAY_FAST, 4, 0, 4},
      {QV_REPLAY_SLOW, 2, 0, 2},
      {QV_REPLAY_SEEK, static_cast<long>(r.start) + 3, static_cast<long>(r.start) + 3, 0},
      {QV_REPLAY_PLAY, 5, 0, 0},
      {QV_REPLAY_STEP, 3, 0, 3},
      {QV_REPLAY_STOP, 5, 0, 0},
  };
  for (const auto& s : steps) {
    SCOPED_TRACE(s.action);
    camera_->ClearReceived();
    ASSERT_EQ(IP_NET_DVR_ControlReplay(id, s.action, s.parameter), 0);
    ReplayEvent answer;
    ASSERT_TRUE(replay_.WaitEvent(s.action, kWaitMs, &answer));
    EXPECT_EQ(answer.flag, 0);
    EXPECT_FALSE(answer.has_body);
    auto sent = Frames("TIMELINE_REPLAY_CONTROL_MESSAGE");
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].payload, TimelineRequest(s.action, s.start, s.play));
    qvemu::ReplayState st = camera_->Replay().state;
    switch (s.action) {
      case QV_REPLAY_PAUSE: EXPECT_TRUE(st.paused); break;
      case QV_REPLAY_RESUME: EXPECT_FALSE(st.paused); break;
      case QV_REPLAY_FAST: EXPECT_EQ(st.speed_num, 4); break;
      case QV_REPLAY_SLOW: EXPECT_EQ(st.speed_den, 2); break;
      case QV_REPLAY_SEEK:
        EXPECT_GE(st.next_frame, 3 * 25);
        EXPECT_TRUE(replay_.WaitVideoFrame(3 * 25, kWaitMs));
        break;
      case QV_REPLAY_PLAY: EXPECT_EQ(st.speed_num * 10 + st.speed_den, 11); break;
      case QV_REPLAY_STOP: EXPECT_FALSE(st.open); break;
    }
  }
}

TEST_F(ReplayTest, PlayingByNameSendsTheFileRequestAndItsActionsNameTheFile) {
  qvemu::Recording r = First();
  long id = LoginReady();
  CPTZControlClass* session = ObjectPtzList.FindObjectByID(id, 0);
  ASSERT_NE(session, nullptr);
  int play = session->PlayFile(r.name.c_str());
  int pause = session->ControlPlay(QV_REPLAY_PAUSE, 0, 7);
  int other_mode = session->ControlPlay(QV_REPLAY_PAUSE, 2, 7);
  ObjectPtzList.ReleaseObjLock();
  ASSERT_EQ(play, 0);
  EXPECT_EQ(pause, 0);
  EXPECT_EQ(other_mode, QV_E_INVALID_ARG);
  auto sent = Frames("REPLAY_CONTROL_MESSAGE", 2);
  ASSERT_EQ(sent.size(), 2u);
  EXPECT_EQ(sent[0].payload,
            "<?xml version=\"1.0\" encoding=\"GB2312\" ?>\t<XML_VEXORA>\t<MESSAGE_HEADER\t"
            "Msg_type=\"REPLAY_CONTROL_MESSAGE\"\tMsg_code=\"0\"\tMsg_flag=\"0\"\t/>"
            "<MESSAGE_BODY>\t<REQUEST_PARAM\tFileName = \"" + r.name +
                "\"\tStartPos=\"0\"\tPlayParam=\"1\"\t/>\t</MESSAGE_BODY>\t</XML_VEXORA>");
  EXPECT_EQ(sent[1].payload, ByNameRequest(QV_REPLAY_PAUSE, r.name, 0, 7));
  ASSERT_TRUE(replay_.WaitEvent(QV_REPLAY_PAUSE, kWaitMs));
  EXPECT_EQ(camera_->Replay().recording, r.name);
  EXPECT_TRUE(camera_->Replay().state.paused);
}

TEST_F(ReplayTest, RequestsThatCannotBeMadeAreRefusedAndSendNothing) {
  // Before the ability answer the camera's replay ability is unknown.
  camera_->SetLoginReply(qvemu::LoginReply::Silent);
  long id = Login();
  ASSERT_TRUE(camera_->WaitForFrames(
      [](const std::vector<qvemu::ReceivedFrame>& all) { return !all.empty(); }, kWaitMs));
  EXPECT_EQ(IP_NET_DVR_GetReplayAblity(id), -1);
  EXPECT_EQ(IP_NET_DVR_ReplayByTime(id, 1), QV_E_REPLAY_UNSUPPORTED);
  camera_->SetLoginReply(qvemu::LoginReply::Accept);  // the next resend gets in
  ASSERT_TRUE(events_.WaitAux(id, 1020, kWaitMs));
  camera_->ClearReceived();
  EXPECT_EQ(IP_NET_DVR_ControlReplay(id, QV_REPLAY_PAUSE, 0), QV_E_NO_PLAY_FILE);
  EXPECT_EQ(IP_NET_DVR_PlayDeviceFile(nullptr, nullptr), 0);
  EXPECT_EQ(IP_NET_DVR_ReplayByTime(0, 1), QV_E_UNKNOWN_USER);
  // A time without a recording: the camera's refusal is a replay event.
  ASSERT_EQ(IP_NET_DVR_ReplayByTime(id, 1), 0);
  ReplayEvent refused;
  ASSERT_TRUE(replay_.WaitEvent(0, kWaitMs, &refused));
  EXPECT_EQ(refused.flag, -1);
  EXPECT_FALSE(refused.has_body);
  EXPECT_EQ(IP_NET_DVR_ControlReplay(id, 8, 0), QV_E_PLAY_ACTION);
  EXPECT_EQ(IP_NET_DVR_ControlReplay(id, -1, 0), QV_E_PLAY_ACTION);
  EXPECT_EQ(Requests().size(), 1u);
}

class NoReplayCameraTest : public ReplayTest {
 protected:
  qvemu::CameraOptions Options() const override {
    qvemu::CameraOptions o = ReplayTest::Options();
    o.front_replay = false;
    return o;
  }
};

TEST_F(NoReplayCameraTest, ACameraWithoutReplayIsNotAsked) {
  long id = LoginReady();
  EXPECT_EQ(IP_NET_DVR_GetReplayAblity(id), 0);
  EXPECT_EQ(IP_NET_DVR_ReplayByTime(id, static_cast<long>(First().start)),
            QV_E_REPLAY_UNSUPPORTED);
  EXPECT_TRUE(Requests().empty());
}

}  // namespace
}  // namespace qvtest

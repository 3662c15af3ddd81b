// Voice talk against the emulated camera: the start and stop requests and
// their statuses, each refusal, the talk packets on the wire, and the
// supervision that restarts a silent or refused talk.
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/compat.h"
#include "link/camera_fixture.h"

namespace qvtest {
namespace {

const char kG711Start[] =
    "<RA_START_PARAM\nAudioForamt=\"G711\" Channels=\"1\" SampleRate=\"8000\" Bitrate=\"64000\" "
    "RTPSendPort=\"0\"  ConnectType=\"1\" Sessionid=\"emu-session-1\" />";
const char kStop[] = "<RA_STOP_PARAM\nSessionid=\"emu-session-1\" />";

uint32_t Le(const std::string& s, size_t at, int bytes) {
  uint32_t v = 0;
  for (int i = bytes - 1; i >= 0; --i) v = (v << 8) | static_cast<unsigned char>(s[at + i]);
  return v;
}

// Real protocol timers: the 8 s silence rule must not cut a case short.
class TalkTest : public CameraFixture {
 protected:
  double Scale() const override { return 1.0; }

  // Starts G.711 talk and waits until the camera accepted it.
  long Talking() {
    long id = LoginReady();
    EXPECT_EQ(IP_NET_DVR_StartVoiceCom(id, 0, 8000, 1), 0);
    EXPECT_TRUE(events_.WaitStatus(id, EVENT_STARTAUDIOOK, kWaitMs));
    return id;
  }

  // Hands a frame in, retrying while the sender is still starting.
  void Feed(long id, const std::string& frame) {
    long ret = -1;
    for (int i = 0; i < 500 && ret == -1; ++i) {
      ret = IP_NET_DVR_InputAudioData(id, frame.data(), static_cast<int>(frame.size()));
      if (ret == -1) SleepMs(10);
    }
    ASSERT_EQ(ret, static_cast<long>(frame.size()));
  }
};

TEST_F(TalkTest, StartAndStopSendTheirRequestsAndReportTheCamerasAnswers) {
  long id = LoginReady();
  // Nothing is taken before the camera accepted talk.
  EXPECT_EQ(IP_NET_DVR_InputAudioData(id, "abc", 3), -1);
  EXPECT_EQ(IP_NET_DVR_StopVoiceCom(id), QV_E_TALK_NOT_RUNNING);
  ASSERT_EQ(IP_NET_DVR_StartVoiceCom(id, 0, 44100, 2), 0);
  EXPECT_EQ(IP_NET_DVR_StartVoiceCom(id, 0, 8000, 1), QV_E_TALK_BUSY);
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_STARTAUDIOOK, kWaitMs));
  EXPECT_EQ(events_.First(id, EVENT_STARTAUDIOOK).text,
            "StartAudio OK, recv port=0, audiotype=0, samplerate=8000, bits=16, channels=1,"
            "use same port=1");
  auto starts = Frames("REVERSE_AUDIO_MESSAGE");
  ASSERT_EQ(starts.size(), 1u);
  EXPECT_EQ(starts[0].payload, Envelope("REVERSE_AUDIO_MESSAGE", "CMD_RA_START", kG711Start));

  ASSERT_EQ(IP_NET_DVR_StopVoiceCom(id), 0);
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_STOPAUDIOOK, kWaitMs));
  EXPECT_EQ(events_.First(id, EVENT_STOPAUDIOOK).text, Label() + " Stop audio OK!");
  auto both = Frames("REVERSE_AUDIO_MESSAGE", 2);
  ASSERT_EQ(both.size(), 2u);
  EXPECT_EQ(both[1].payload, Envelope("REVERSE_AUDIO_MESSAGE", "CMD_RA_STOP", kStop));
  EXPECT_EQ(IP_NET_DVR_InputAudioData(id, "abc", 3), -1);
  EXPECT_EQ(IP_NET_DVR_StopVoiceCom(id), QV_E_TALK_NOT_RUNNING);

  // PCM asks with the caller's rate and channels; a stop the camera refuses
  // is status 9 with its flag.
  camera_->ClearReceived();
  ASSERT_EQ(IP_NET_DVR_StartVoiceCom(id, 3, 16000, 2), 0);
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_STARTAUDIOOK, kWaitMs, 2));
  EXPECT_EQ(Frames("REVERSE_AUDIO_MESSAGE")[0].payload,
            Envelope("REVERSE_AUDIO_MESSAGE", "CMD_RA_START",
                     "<RA_START_PARAM\nAudioForamt=\"PCM\" Channels=\"2\" SampleRate=\"16000\" "
                     "Bitrate=\"16000\" RTPSendPort=\"0\"  ConnectType=\"1\" "
                     "Sessionid=\"emu-session-1\" />"));
  // The sender let go at the stop is made again for this talk.
  Feed(id, "talking again");
  EXPECT_EQ(Frames("MEDIA_DATA_MESSAGE", 1).size(), 1u);
  camera_->SetReply("REVERSE_AUDIO_MESSAGE", "CMD_RA_STOP", -5, "");
  ASSERT_EQ(IP_NET_DVR_StopVoiceCom(id), 0);
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_STOPAUDIOFAILED, kWaitMs));
  EXPECT_EQ(events_.First(id, EVENT_STOPAUDIOFAILED).text, Label() + " Stop audio error,code=-5!");
  EXPECT_EQ(camera_->Talk().starts, 2);
}

TEST_F(TalkTest, EachRefusalHasItsStatusThenSevenWithTheSameText) {
  struct Case {
    int flag;
    long status;
    const char* text;
    bool stop_sent;
  };
  const Case cases[] = {
      {-1, EVENT_STARTAUDIO_ISBUSY, " StartAudio not allowed,for device is busy!", true},
      {-2, EVENT_STARTAUDIO_PARAMERROR, " StartAudio not allowed for audio param error!", false},
      {-3, EVENT_STARTAUDIO_AUDIODDISABLED, " StartAudio not allow for device's audio disabled!",
       false},
  };
  long id = LoginReady();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.flag);
    camera_->SetTalkRefusal(c.flag);
    camera_->ClearReceived();
    events_.Clear();
    ASSERT_EQ(IP_NET_DVR_StartVoiceCom(id, 0, 8000, 1), 0);
    ASSERT_TRUE(events_.WaitStatus(id, EVENT_STARTAUDIOFAILED, kWaitMs));
    std::vector<long> talk;
    for (long code : events_.Codes(id)) {
      if (code == c.status || code == EVENT_STARTAUDIOFAILED) talk.push_back(code);
    }
    EXPECT_EQ(talk, (std::vector<long>{c.status, EVENT_STARTAUDIOFAILED}));
    EXPECT_EQ(events_.First(id, c.status).text, Label() + c.text);
    EXPECT_EQ(events_.First(id, EVENT_STARTAUDIOFAILED).text, Label() + c.text);
    // Busy is also told to the camera with a stop; the talk stays requested.
    if (c.stop_sent) {
      auto frames = Frames("REVERSE_AUDIO_MESSAGE", 2);
      ASSERT_EQ(frames.size(), 2u);
      EXPECT_EQ(frames[1].code, "CMD_RA_STOP");
    }
    EXPECT_EQ(IP_NET_DVR_StartVoiceCom(id, 0, 8000, 1), QV_E_TALK_BUSY);
    EXPECT_EQ(IP_NET_DVR_InputAudioData(id, "abc", 3), -1);
    ASSERT_EQ(IP_NET_DVR_StopVoiceCom(id), 0);
  }
}

TEST_F(TalkTest, ASecondCameraSessionIsRefusedAsBusyWhileTheFirstTalks) {
  long first = Talking();
  long second = LoginReady();
  ASSERT_EQ(IP_NET_DVR_StartVoiceCom(second, 0, 8000, 1), 0);
  EXPECT_TRUE(events_.WaitStatus(second, EVENT_STARTAUDIO_ISBUSY, kWaitMs));
  // Once the first stops, the second's repeated request may get through.
  ASSERT_EQ(IP_NET_DVR_StopVoiceCom(first), 0);
  ASSERT_EQ(IP_NET_DVR_StopVoiceCom(second), 0);
  EXPECT_EQ(camera_->Talk().starts, 1);
}

TEST_F(TalkTest, FramesTravelAsTalkPacketsWithTheirHeader) {
  long id = Talking();
  const std::vector<std::string> frames = {std::string(160, '\x55'), "x", std::string(700, 'a')};
  for (const std::string& f : frames) Feed(id, f);
  auto packets = Frames("MEDIA_DATA_MESSAGE", frames.size());
  ASSERT_EQ(packets.size(), frames.size());
  std::string all_audio;
  for (size_t i = 0; i < frames.size(); ++i) {
    SCOPED_TRACE(i);
    const std::string& p = packets[i].payload;
    std::string xml =
        "<?xml version=\"1.0\" encoding=\"GB2312\" ?>\n<XML_VEXORA>\n<MESSAGE_HEADER\n"
        "Msg_type=\"MEDIA_DATA_MESSAGE\" Msg_code=\"3\" Msg_flag=\"0\" />\n<MESSAGE_BODY>\n"
        "<POS\nStartPos=\"0\" DataLen=\"" + std::to_string(frames[i].size() + 20) +
        "\" />\n</MESSAGE_BODY>\n</XML_VEXORA>";
    ASSERT_EQ(p.size(), xml.size() + 4 + 20 + frames[i].size());
    EXPECT_EQ(p.substr(0, xml.size()), xml);
    EXPECT_EQ(p.substr(xml.size(), 4), std::string(4, '\0'));
    size_t h = xml.size() + 4;
    EXPECT_EQ(Le(p, h, 4), Le(p, h + 4, 4));                     // the tick, twice
    EXPECT_EQ(Le(p, h + 8, 2), i);                                // sequence
    EXPECT_EQ(Le(p, h + 10, 2), frames[i].size());                // length
    EXPECT_EQ(p.substr(h + 12, 4), std::string("\x11\x01\x01\x01", 4));
    EXPECT_EQ(Le(p, h + 16, 4), i);                               // index
    EXPECT_EQ(p.substr(h + 20), frames[i]);
    all_audio += frames[i];
  }
  qvemu::TalkStats stats = camera_->Talk();
  EXPECT_EQ(stats.packets, frames.size());
  EXPECT_EQ(stats.bad_packets, 0);
  EXPECT_EQ(stats.audio, all_audio);
  // Frames the sender cannot take are refused, not cut.
  EXPECT_EQ(IP_NET_DVR_InputAudioData(id, nullptr, 5), QV_E_INVALID_ARG);
  std::string huge(102401, 'h');
  EXPECT_EQ(IP_NET_DVR_InputAudioData(id, huge.data(), static_cast<int>(huge.size())),
            QV_E_INVALID_ARG);
  EXPECT_EQ(IP_NET_DVR_Logout(id), 0);
}

// Scaled timers: 8 s of silence become 400 ms, the 10 s repeat 500 ms.
class TalkSupervisionTest : public TalkTest {
 protected:
  double Scale() const override { return 0.05; }
};

TEST_F(TalkSupervisionTest, ASilentSenderStopsAndTalkStartsAgain) {
  long id = Talking();
  // No audio: the sender stops, then the start request goes out again and
  // the camera accepts it once more.
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_STARTAUDIOOK, kWaitMs, 2));
  auto starts = Frames("REVERSE_AUDIO_MESSAGE", 2);
  ASSERT_GE(starts.size(), 2u);
  EXPECT_EQ(starts[1].payload, starts[0].payload);
  Feed(id, "after the restart");
  EXPECT_EQ(Frames("MEDIA_DATA_MESSAGE").size(), 1u);
  ASSERT_EQ(IP_NET_DVR_StopVoiceCom(id), 0);
}

TEST_F(TalkSupervisionTest, ARefusedTalkIsAskedForAgainUntilStopped) {
  long id = LoginReady();
  camera_->SetTalkRefusal(-2);
  ASSERT_EQ(IP_NET_DVR_StartVoiceCom(id, 0, 8000, 1), 0);
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_STARTAUDIO_PARAMERROR, kWaitMs, 3));
  camera_->SetTalkRefusal(0);
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_STARTAUDIOOK, kWaitMs));
  ASSERT_EQ(IP_NET_DVR_StopVoiceCom(id), 0);
  // Stopped talk is not asked for again (three repeat periods pass).
  camera_->ClearReceived();
  EXPECT_FALSE(camera_->WaitForFrames(
      [](const std::vector<qvemu::ReceivedFrame>& all) {
        for (const auto& f : all) {
          if (f.code == "CMD_RA_START") return true;
        }
        return false;
      },
      1500));
}

}  // namespace
}  // namespace qvtest

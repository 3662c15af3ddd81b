// The configuration exchange of the media and stream sections against the
// emulated camera: get a section, read the reply from the AUX callback, edit
// the record, write it and set it, and see the change in a second get.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>

#include "config/media_sections.h"
#include "link/camera_fixture.h"
#include "quorvel/quorvel.h"

namespace {

using qvtest::AuxEvent;
using qvtest::kWaitMs;

class MediaExchange : public qvtest::CameraFixture {
 public:
  // Asks for a section and returns the reply the AUX callback got.
  std::string Get(long id, long (*get)(long), long code) {
    events_.Clear();
    EXPECT_EQ(get(id), 0);
    AuxEvent reply;
    EXPECT_TRUE(events_.WaitAux(id, code, kWaitMs, &reply)) << code;
    return reply.xml;
  }

  // The whole cycle for one section: get, read, edit, set, get again and
  // read the edited record back.
  template <typename Rec>
  void Cycle(long id, long (*get)(long), long get_code, int (*read)(Rec*, const char*),
             const std::function<void(Rec*)>& edit, long (*set)(long, const Rec*), long set_code) {
    camera_->ClearReceived();
    std::string reply;
    Rec cfg;
    reply = Get(id, get, get_code);
    testing::internal::CaptureStdout();
    int rc = read(&cfg, reply.c_str());
    testing::internal::GetCapturedStdout();
    ASSERT_EQ(rc, 0) << reply;
    edit(&cfg);
    events_.Clear();
    ASSERT_EQ(set(id, &cfg), 0);
    ASSERT_TRUE(events_.WaitAux(id, set_code, kWaitMs));
    std::vector<qvemu::ReceivedFrame> sets = Frames("SYSTEM_CONFIG_SET_MESSAGE");
    ASSERT_EQ(sets.size(), 1u);
    EXPECT_EQ(sets[0].code, std::to_string(set_code));

    reply = Get(id, get, get_code);
    Rec back;
    testing::internal::CaptureStdout();
    rc = read(&back, reply.c_str());
    testing::internal::GetCapturedStdout();
    ASSERT_EQ(rc, 0) << reply;
    EXPECT_EQ(memcmp(&back, &cfg, sizeof(cfg)), 0) << reply;
  }
};

// One row per section with a set code: its get, reader, edit and set.
struct ExchangeRow {
  const char* name;
  void (*run)(MediaExchange* t, long id);
};

const ExchangeRow kRows[] = {
    {"MediaConfig 500/520",
     [](MediaExchange* t, long id) {
       t->Cycle<MediaConfig>(
           id, IP_NET_DVR_GET_MediaConfig, 500, IP_NET_DVR_GetMediaCfgByXml,
           [](MediaConfig* c) {
             c->Video.Capture.Brightness = 11;
             c->Audio.Capture.Volume = 33;
           },
           IP_NET_DVR_SET_MediaConfig, 520);
     }},
    {"Video 501/521",
     [](MediaExchange* t, long id) {
       t->Cycle<VideoConfig>(
           id, IP_NET_DVR_GET_VideoConfig, 501, IP_NET_DVR_Media_getVideoByXml,
           [](VideoConfig* c) { c->YUV.FrameRate = 5; }, IP_NET_DVR_SET_VideoConfig, 521);
     }},
    {"Audio 502/522",
     [](MediaExchange* t, long id) {
       t->Cycle<AudioConfig>(
           id, IP_NET_DVR_GET_AudioConfig, 502, IP_NET_DVR_Media_getAudioByXml,
           [](AudioConfig* c) { strcpy(c->Encode.EncodeType, "G711U"); },
           IP_NET_DVR_SET_AudioConfig, 522);
     }},
    {"VideoEncode 503/523",
     [](MediaExchange* t, long id) {
       t->Cycle<VideoEncodeConfig>(
           id, IP_NET_DVR_GET_VideoEncodeConfig, 503, IP_NET_DVR_Media_getVideoEncodeByXml,
           [](VideoEncodeConfig* c) {
             VideoEncodeStream* sub = GetVideoEncodeCfgByID(c, 1);
             sub->BitRate = 768;
             strcpy(sub->EncodeFormat, "H265");
             sub->IsH265 = 1;
           },
           IP_NET_DVR_SET_VideoEncodeConfig, 523);
     }},
    {"VideoCapture 504/524",
     [](MediaExchange* t, long id) {
       t->Cycle<VideoCaptureConfig>(
           id, IP_NET_DVR_GET_VideoCaptureConfig, 504, IP_NET_DVR_Media_getVideoCaptureByXml,
           [](VideoCaptureConfig* c) { c->IrcutNightStartTime = {19, 30, 0}; },
           IP_NET_DVR_SET_VideoCaptureConfig, 524);
     }},
    {"VideoOverlay 505/525",
     [](MediaExchange* t, long id) {
       t->Cycle<VideoOverlayConfig>(
           id, IP_NET_DVR_GET_VideoOverlayConfig, 505, IP_NET_DVR_Media_getVideoOverlayByXml,
           [](VideoOverlayConfig* c) { strcpy(c->Title.Title, "gate <2> & \"B\""); },
           IP_NET_DVR_SET_VideoOSDConfig, 525);
     }},
    {"VideoMask 509/529",
     [](MediaExchange* t, long id) {
       t->Cycle<VideoMaskConfig>(
           id, IP_NET_DVR_GET_VideoMaskConfig, 509, IP_NET_DVR_Media_getVideoMaskByXml,
           [](VideoMaskConfig* c) { c->SubStream[2] = {10, 20, 30, 40}; },
           IP_NET_DVR_SET_VideoMaskConfig, 529);
     }},
    {"MediaStream 600/620",
     [](MediaExchange* t, long id) {
       t->Cycle<MediaStreamConfig>(
           id, IP_NET_DVR_GET_MediaStreamConfig, 600, IP_NET_DVR_GetMediaStreamCfgByXml,
           [](MediaStreamConfig* c) {
             c->StreamAccess.enable_rtmp = 1;
             strcpy(c->StreamAccess.rtmp_streamid, "key&1");
             c->StreamAccess.Rtmp.TimeSpan.day2 = 0xFF00;
           },
           IP_NET_DVR_SET_MediaStreamConfig, 620);
     }},
};

TEST_F(MediaExchange, EverySectionWithASetCodeGoesRoundTheCycle) {
  long id = LoginReady();
  for (const ExchangeRow& row : kRows) {
    SCOPED_TRACE(row.name);
    row.run(this, id);
  }
}

// The user text lines have a set code only; the video get shows them.
TEST_F(MediaExchange, UserTextLinesAreSetAndSeenInTheVideoSection) {
  long id = LoginReady();
  VideoConfig video;
  std::string reply = Get(id, IP_NET_DVR_GET_VideoConfig, 501);
  testing::internal::CaptureStdout();
  ASSERT_EQ(IP_NET_DVR_Media_getVideoByXml(&video, reply.c_str()), 0);
  testing::internal::GetCapturedStdout();
  VideoUserOverlayConfig lines = video.UserOverlay;
  lines.Count = 2;
  strcpy(lines.UserOSD[1].TitleUtf8, "second line");
  events_.Clear();
  ASSERT_EQ(IP_NET_DVR_SET_VideoUserOSDConfig(id, &lines), 0);
  ASSERT_TRUE(events_.WaitAux(id, 531, kWaitMs));
  reply = Get(id, IP_NET_DVR_GET_VideoConfig, 501);
  testing::internal::CaptureStdout();
  ASSERT_EQ(IP_NET_DVR_Media_getVideoByXml(&video, reply.c_str()), 0);
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(memcmp(&video.UserOverlay, &lines, sizeof(lines)), 0) << reply;
}

// Gets without a set code send their code; sets refuse a null record and
// send nothing; an unknown user is refused.
TEST_F(MediaExchange, GetOnlyCodesNullRecordsAndUnknownUsers) {
  long id = LoginReady();
  const struct {
    long (*get)(long);
    long code;
  } gets[] = {{IP_NET_DVR_GET_AudioCapture, 507},
              {IP_NET_DVR_GET_AudioEncode, 508},
              {IP_NET_DVR_GET_VideoROIConfig, 510}};
  for (const auto& g : gets) {
    std::string reply = Get(id, g.get, g.code);
    EXPECT_FALSE(reply.empty()) << g.code;
    EXPECT_EQ(g.get(id + 1), QV_E_UNKNOWN_USER);
  }
  EXPECT_EQ(IP_NET_DVR_SET_MediaConfig(id, nullptr), QV_E_INVALID_ARG);
  EXPECT_EQ(IP_NET_DVR_SET_MediaStreamConfig(id, nullptr), QV_E_INVALID_ARG);
  EXPECT_EQ(IP_NET_DVR_SET_VideoUserOSDConfig(id, nullptr), QV_E_INVALID_ARG);
  MediaStreamConfig stream = {};
  EXPECT_EQ(IP_NET_DVR_SET_MediaStreamConfig(id + 1, &stream), QV_E_UNKNOWN_USER);
  // The set that went out carries exactly the writer's text.
  EXPECT_EQ(IP_NET_DVR_SET_MediaStreamConfig(id, &stream), 0);
  std::vector<qvemu::ReceivedFrame> sets = Frames("SYSTEM_CONFIG_SET_MESSAGE");
  ASSERT_EQ(sets.size(), 1u);
  char* xml = IP_NET_DVR_XMLGET_MediaStreamConfig(&stream);
  EXPECT_EQ(sets[0].payload, qvtest::Envelope("SYSTEM_CONFIG_SET_MESSAGE", "620", xml));
  free(xml);
}

}  // namespace

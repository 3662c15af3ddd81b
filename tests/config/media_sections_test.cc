// The media and stream sections: every element's round trip, its written
// form, the readers' defaults and checks, bad input, and the file store.
#include "config/media_sections.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>

#include "config/config_files_helper.h"
#include "config/media_fill_helper.h"
#include "config/round_trip.h"

namespace {

// One row per element: its round trip with every member set, and its
// reader's answers to texts that are not what it wants.
struct Section {
  const char* name;
  std::function<void(const MediaConfig&, const MediaStreamConfig&)> round_trip;
  std::function<int(const char* xml)> read;       // into a scratch record
  std::function<int()> read_into_null;
};

// `from` is m (the media section) or s (the stream section); `member` the
// element's place in it, empty for the whole section.
#define MEDIA_ROW(name, from, member, Rec, read, write)                                  \
  Section {                                                                            \
    name, [](const MediaConfig& m, const MediaStreamConfig& s) {                       \
      (void)m;                                                                         \
      (void)s;                                                                         \
      ExpectRecordRoundTrip<Rec>(from member, write, read);                            \
    },                                                                                 \
        [](const char* xml) {                                                          \
          Rec scratch;                                                                 \
          return read(&scratch, xml);                                                  \
        },                                                                             \
        [] { return read(nullptr, "<" name "/>"); }                                    \
  }

const Section kSections[] = {
    MEDIA_ROW("MediaConfig", m, , MediaConfig, GetMediaCfgByXml, XMLGET_MediaConfig),
    MEDIA_ROW("Video", m, .Video, VideoConfig, Media_getVideoByXml, XMLGET_VideoConfig),
    MEDIA_ROW("Audio", m, .Audio, AudioConfig, Media_getAudioByXml, XMLGET_AudioConfig),
    MEDIA_ROW("Capture", m, .Audio.Capture, AudioCaptureConfig, Media_getAudioCaptureByXml,
              XMLGET_AudioCaptureConfig),
    MEDIA_ROW("Encode", m, .Audio.Encode, AudioEncodeConfig, Media_getAudioEncodeByXml,
              XMLGET_AudioEncodeConfig),
    MEDIA_ROW("Capture", m, .Video.Capture, VideoCaptureConfig, Media_getVideoCaptureByXml,
              XMLGET_VideoCaptureConfig),
    MEDIA_ROW("Encode", m, .Video.Encode, VideoEncodeConfig, Media_getVideoEncodeByXml,
              XMLGET_VideoEncodeConfig),
    MEDIA_ROW("JpegConfig", m, .Video.Jpeg, JpegEncodeConfig, Media_getJpegEncodeByXml,
              XMLGET_VideoJpegEncodeConfig),
    MEDIA_ROW("Overlay", m, .Video.Overlay, VideoOverlayConfig, Media_getVideoOverlayByXml,
              XMLGET_VideoOverlayConfig),
    MEDIA_ROW("UserOverlay", m, .Video.UserOverlay, VideoUserOverlayConfig,
              Media_getVideoUserOverlayByXml, XMLGET_VideoUserOverlayConfig),
    MEDIA_ROW("Mask", m, .Video.Mask, VideoMaskConfig, Media_getVideoMaskByXml,
              XMLGET_VideoMaskConfig),
    MEDIA_ROW("ROI", m, .Video.ROI, VideoROIConfig, Media_getVideoROIByXml,
              XMLGET_VideoROIConfig),
    MEDIA_ROW("YUV", m, .Video.YUV, VideoYuvConfig, Media_getVideoYuvByXml,
              XMLGET_VideoYuvConfig),
    MEDIA_ROW("MediaStreamConfig", s, , MediaStreamConfig, GetMediaStreamCfgByXml,
              XMLGET_MediaStreamConfig),
};

#undef MEDIA_ROW

class MediaSections : public testing::Test {
 protected:
  void SetUp() override {
    FillMediaConfig(&media_);
    FillMediaStreamConfig(&stream_);
  }
  MediaConfig media_;
  MediaStreamConfig stream_;
};

TEST_F(MediaSections, EveryElementRoundTripsWithEveryMemberSet) {
  for (const Section& s : kSections) {
    SCOPED_TRACE(s.name);
    CapturedStdout([&] { s.round_trip(media_, stream_); });
  }
}

TEST_F(MediaSections, ReadersRefuseWhatIsNotTheirElement) {
  const char* bad[] = {nullptr, "", "<MediaConfig><Video>", "not xml at all",
                       "<Other a=\"1\"><Nested/></Other>", "<a b=\"1\" b=\"2\"/>"};
  for (const Section& s : kSections) {
    SCOPED_TRACE(s.name);
    for (const char* xml : bad) {
      CapturedStdout([&] { EXPECT_EQ(s.read(xml), -1) << (xml ? xml : "null"); });
    }
    EXPECT_EQ(s.read_into_null(), -1);
  }
}

// Pieces of the written forms: one attribute per line, the zero-padded
// times, blank-separated areas, the containers and the stream element.
TEST_F(MediaSections, WrittenForms) {
  AudioCaptureConfig capture = {1, 16, 8000, 5, 100, 1, 0, 0, 0};
  EXPECT_EQ(TakeText(XMLGET_AudioCaptureConfig(&capture)),
            "<Capture\r\nChannels=\"1\"\r\nBitsPerSample=\"16\"\r\nSampleRate=\"8000\"\r\n"
            "Volume=\"5\"\r\nVolumePlay=\"100\"\r\namplify=\"1\"\r\nra_answer=\"0\"\r\n"
            "aec_enable=\"0\"\r\nmute_ptz_turn=\"0\"\r\n/>\r\n");
  EXPECT_EQ(TakeText(XMLGET_AudioEncodeConfig(&media_.Audio.Encode)),
            "<Encode\r\nEnable=\"1\"\r\nSampleRate=\"16000\"\r\nEncodeType=\"G711U&amp;AAC\"\r\n"
            "BitRate=\"128\"\r\n/>\r\n");

  std::string video = TakeText(XMLGET_VideoCaptureConfig(&media_.Video.Capture));
  for (const char* piece :
       {"<Capture\r\nBrightness=\"-4\"\r\n", "TVSystem=\"1000\"\r\n",
        "IrcutSensitivity=\"3999999990\"\r\n", "led_brightness_alarm=\"3999999994\"\r\n",
        "IrcutNightStartTime=\"19:05:07\"\r\nIrcutNightEndTime=\"06:45:00\"\r\nIrcutKeepColor",
        "WDRStartTime=\"01:02:03\"\r\nWDREndTime=\"23:59:58\"\r\nshutter_mode=\"-70\"",
        "face_exposure_sensitivity=\"3\"\r\n/>\r\n"})
    EXPECT_NE(video.find(piece), std::string::npos) << piece << "\n" << video;

  std::string encode = TakeText(XMLGET_VideoEncodeConfig(&media_.Video.Encode));
  EXPECT_TRUE(StartsWith(encode, "<Encode>\r\n<EncodeConfig\r\nStream=\"0\"\r\nEnable")) << encode;
  EXPECT_NE(encode.find("lbr_noicelevel=\"112\"\r\n/>\r\n<EncodeConfig\r\nStream=\"1\"\r\n"),
            std::string::npos);
  EXPECT_NE(encode.find("<AdvanceEncodeConfig\r\nEncodeProfile=\"7\"\r\n"), std::string::npos);
  EXPECT_TRUE(EndsWith(encode, "OptimumDistance=\"12\"\r\n/>\r\n</Encode>\r\n")) << encode;
  EXPECT_EQ(encode.find("IsH265"), std::string::npos);

  VideoMaskConfig mask = {};
  mask.SubStream[3] = {1, 2, 3, 4};
  std::string zeros;
  for (int n = 1; n <= 4; ++n)
    zeros += "Area" + std::to_string(n) + "PosX=\"0\" Area" + std::to_string(n) + "PosY=\"0\" Area" +
             std::to_string(n) + "Width=\"0\" Area" + std::to_string(n) + "Height=\"0\" ";
  std::string sub = zeros.substr(0, zeros.find("Area4")) +
                    "Area4PosX=\"1\" Area4PosY=\"2\" Area4Width=\"3\" Area4Height=\"4\" ";
  EXPECT_EQ(TakeText(XMLGET_VideoMaskConfig(&mask)),
            "<Mask>\r\n<MainStream\r\n" + zeros + "/>\r\n<SubStream\r\n" + sub + "/>\r\n</Mask>\r\n");
  VideoROIConfig roi = {};
  roi.Enable = 1;
  EXPECT_EQ(TakeText(XMLGET_VideoROIConfig(&roi)), "<ROI\r\nEnable=\"1\"\r\n" + zeros + "/>\r\n");

  std::string overlay = TakeText(XMLGET_VideoOverlayConfig(&media_.Video.Overlay));
  EXPECT_NE(overlay.find("Style=\"8\"\r\n>\r\n<TimeOverlay\r\nPosX=\"-16\"\r\n"), std::string::npos);
  EXPECT_NE(overlay.find("Format=\"YYYY/MM/DD &quot;hh&quot;\"\r\n"), std::string::npos);
  EXPECT_NE(overlay.find("Title=\"\xD6\xD0 &lt;gate &apos;A&apos;&gt;\"\r\n/>\r\n</Overlay>\r\n"),
            std::string::npos)
      << overlay;
  VideoUserOverlayConfig none = {};
  EXPECT_EQ(TakeText(XMLGET_VideoUserOverlayConfig(&none)), "<UserOverlay>\r\n</UserOverlay>\r\n");

  std::string stream = TakeText(XMLGET_MediaStreamConfig(&stream_));
  EXPECT_TRUE(StartsWith(stream, "<MediaStreamConfig>\r\n<StreamAccess Auth=\"2\"\r\nVideo"))
      << stream;
  for (const char* piece :
       {"OnvifAuth=\"7\"\r\nWEBPort=\"8080\"\r\nhttpsPort=\"8443\"\r\nh5Port=\"9000\"\r\n",
        "httpsKey=\"/etc/ssl/&lt;cam&gt;.key\"\r\nenable_comm=\"1\"\r\nPTZPort=\"5001\"\r\n"
        "enable_hik=\"0\"\r\nhik_port=\"8001\"\r\n",
        "Multicast1_port=\"65535\"\r\nMulticast0_IP=\"3758096385\"\r\nMulticast1_IP=\"4026531834\"\r\n"
        ">\r\n<RtmpCfg>\r\n<TimeSpanCfg day0=\"1\" day1=\"2\" day2=\"4\" day3=\"8\" day4=\"16\" "
        "day5=\"32\" day6=\"16777215\" />\r\n</RtmpCfg>\r\n</StreamAccess>\r\n"
        "</MediaStreamConfig>\r\n"})
    EXPECT_NE(stream.find(piece), std::string::npos) << piece << "\n" << stream;

  std::string search = TakeText(XMLGET_MediaStreamConfig_ForSearch(&stream_));
  EXPECT_EQ(search.find("httpsKey"), std::string::npos);
  EXPECT_EQ(search.find("RtmpCfg"), std::string::npos);
  EXPECT_NE(search.find("<StreamAccess Auth=\"2\" VideoPort=\"8554\" RTPOverRTSP=\"3\" "),
            std::string::npos)
      << search;
  MediaStreamConfig back;
  ASSERT_EQ(GetMediaStreamCfgByXml(&back, search.c_str()), 0);
  EXPECT_EQ(back.StreamAccess.PTZPort, 5001);
  EXPECT_EQ(back.StreamAccess.Multicast1_IP, stream_.StreamAccess.Multicast1_IP);

  std::string media = TakeText(XMLGET_MediaConfig(&media_));
  EXPECT_TRUE(StartsWith(media, "<MediaConfig>\r\n<Video>\r\n<Capture\r\n"));
  EXPECT_NE(media.find("/>\r\n</Video>\r\n<Audio>\r\n<Capture\r\n"), std::string::npos);
  EXPECT_TRUE(EndsWith(media, "/>\r\n</Audio>\r\n</MediaConfig>\r\n"));
}

// What each reader makes of attributes it does not get, and the checks it
// applies to those it gets.
TEST(MediaReaders, DefaultsAndChecks) {
  AudioCaptureConfig audio;
  ASSERT_EQ(Media_getAudioCaptureByXml(&audio, "<Capture/>"), 0);
  AudioCaptureConfig audio_defaults = {1, 16, 8000, 0, 100, 1, 0, 0, 0};
  EXPECT_EQ(memcmp(&audio, &audio_defaults, sizeof(audio)), 0);

  const struct {
    const char* attributes;
    int wdr, dfrog_flag, dfrog, light_off, face;
  } captures[] = {
      {"", 128, 0, 128, 0, 0},
      {"WDRValue=\"300\" DfrogValue=\"-1\" DfrogFlag=\"2\"", 0, 0, 0, 0, 0},
      {"WDRValue=\"255\" DfrogValue=\"0\" DfrogFlag=\"1\"", 255, 1, 0, 0, 0},
      {"light_off_sensitivity=\"258\" face_exposure_sensitivity=\"-1\"", 128, 0, 128, 2, 255},
  };
  for (const auto& c : captures) {
    SCOPED_TRACE(c.attributes);
    VideoCaptureConfig v;
    std::string xml = std::string("<Capture ") + c.attributes + " IrcutMode=\"1\"/>";
    ASSERT_EQ(Media_getVideoCaptureByXml(&v, xml.c_str()), 0);
    EXPECT_EQ(v.WDRValue, c.wdr);
    EXPECT_EQ(v.DfrogFlag, c.dfrog_flag);
    EXPECT_EQ(v.DfrogValue, c.dfrog);
    EXPECT_EQ(v.light_off_sensitivity, static_cast<unsigned>(c.light_off));
    EXPECT_EQ(v.face_exposure_sensitivity, static_cast<unsigned>(c.face));
  }

  // Without infrared-cut settings: the message and the night period 18 to 8.
  VideoCaptureConfig v;
  std::string printed =
      CapturedStdout([&] { ASSERT_EQ(Media_getVideoCaptureByXml(&v, "<Capture Brightness=\"9\"/>"), 0); });
  EXPECT_NE(printed.find("]no IRCUT config found, use default config!!!\n\n"), std::string::npos);
  EXPECT_EQ(v.IrcutNightStartTime.Hour, 18);
  EXPECT_EQ(v.IrcutNightEndTime.Hour, 8);
  EXPECT_EQ(v.IrcutNightEndTime.Minute + v.IrcutNightEndTime.Second, 0);
  // Times as written, with blanks, or unreadable (which keeps the default).
  printed = CapturedStdout([&] {
    ASSERT_EQ(Media_getVideoCaptureByXml(&v, "<Capture IrcutNightStartTime=\"7: 8: 9\" "
                                             "IrcutNightEndTime=\"late\" WDRStartTime=\"21:30\" "
                                             "WDREndTime=\"2147483648:-1:+5\"/>"),
              0);
  });
  EXPECT_EQ(printed.find("no IRCUT"), std::string::npos);
  EXPECT_EQ(v.IrcutNightStartTime.Hour * 10000 + v.IrcutNightStartTime.Minute * 100 +
                v.IrcutNightStartTime.Second,
            70809);
  EXPECT_EQ(v.IrcutNightEndTime.Hour, 8);
  EXPECT_EQ(v.WDRStartTime.Hour + v.WDRStartTime.Minute, 0);
  EXPECT_EQ(v.WDREndTime.Hour, -2147483647 - 1);  // narrowed like atoi's int
  EXPECT_EQ(v.WDREndTime.Minute, -1);
  EXPECT_EQ(v.WDREndTime.Second, 5);

  // Streams: the slot of Stream, another index changes nothing, H265 noted.
  VideoEncodeConfig e;
  ASSERT_EQ(Media_getVideoEncodeByXml(&e, "<Encode>"
                                          "<EncodeConfig Stream=\"1\" EncodeFormat=\"H265\" BitRate=\"9\"/>"
                                          "<EncodeConfig Stream=\"3\" BitRate=\"77\"/>"
                                          "<EncodeConfig Stream=\"-1\" BitRate=\"78\"/>"
                                          "<EncodeConfig EncodeFormat=\"h265\" BitRate=\"5\"/>"
                                          "</Encode>"),
            0);
  EXPECT_EQ(e.Stream[0].BitRate, 5);
  EXPECT_EQ(e.Stream[0].IsH265, 0);
  EXPECT_EQ(e.Stream[1].BitRate, 9);
  EXPECT_EQ(e.Stream[1].IsH265, 1);
  EXPECT_EQ(e.Stream[2].BitRate, 0);
  EXPECT_EQ(e.Stream[2].Stream, 2);
  EXPECT_EQ(GetVideoEncodeCfgByID(&e, 1), &e.Stream[1]);
  EXPECT_EQ(GetVideoEncodeCfgByID(&e, 3), nullptr);
  EXPECT_EQ(GetVideoEncodeCfgByID(&e, -1), nullptr);
  EXPECT_EQ(GetVideoEncodeCfgByID(nullptr, 0), nullptr);

  // Stream access: its defaults, and zeros that keep them.
  MediaStreamConfig s;
  ASSERT_EQ(GetMediaStreamCfgByXml(&s, "<MediaStreamConfig/>"), 0);
  EXPECT_EQ(s.StreamAccess.VideoPort, 554);
  EXPECT_EQ(s.StreamAccess.enable_hik, 1);
  EXPECT_EQ(s.StreamAccess.hik_port, 8000);
  EXPECT_EQ(s.StreamAccess.enable_dh, 1);
  EXPECT_EQ(s.StreamAccess.dh_port, 37777);
  EXPECT_EQ(s.StreamAccess.rtmp_port, 1935);
  EXPECT_EQ(s.StreamAccess.Rtmp.TimeSpan.day3, 0xFFFFFFu);
  ASSERT_EQ(GetMediaStreamCfgByXml(&s, "<MediaStreamConfig><StreamAccess hik_port=\"0\" "
                                       "dh_port=\"0\" rtmp_port=\"0\" VideoPort=\"0\" "
                                       "enable_hik=\"0\" Multicast0_port=\"0\">"
                                       "<RtmpCfg><TimeSpanCfg day0=\"0\"/></RtmpCfg>"
                                       "</StreamAccess></MediaStreamConfig>"),
            0);
  EXPECT_EQ(s.StreamAccess.hik_port, 8000);
  EXPECT_EQ(s.StreamAccess.dh_port, 37777);
  EXPECT_EQ(s.StreamAccess.rtmp_port, 1935);
  EXPECT_EQ(s.StreamAccess.VideoPort, 0);
  EXPECT_EQ(s.StreamAccess.enable_hik, 0);
  EXPECT_EQ(s.StreamAccess.Rtmp.TimeSpan.day0, 0xFFFFFFu);  // all zero means every hour
}

// Capture and Encode exist under Video and under Audio.
TEST_F(MediaSections, CaptureAndEncodeAreFoundUnderTheirOwnParent) {
  std::string whole = TakeText(XMLGET_MediaConfig(&media_));
  CapturedStdout([&] {
    AudioCaptureConfig ac;
    ASSERT_EQ(Media_getAudioCaptureByXml(&ac, whole.c_str()), 0);
    EXPECT_EQ(memcmp(&ac, &media_.Audio.Capture, sizeof(ac)), 0);
    AudioEncodeConfig ae;
    ASSERT_EQ(Media_getAudioEncodeByXml(&ae, whole.c_str()), 0);
    EXPECT_EQ(memcmp(&ae, &media_.Audio.Encode, sizeof(ae)), 0);
    VideoCaptureConfig vc;
    ASSERT_EQ(Media_getVideoCaptureByXml(&vc, whole.c_str()), 0);
    EXPECT_EQ(memcmp(&vc, &media_.Video.Capture, sizeof(vc)), 0);
    VideoEncodeConfig ve;
    ASSERT_EQ(Media_getVideoEncodeByXml(&ve, whole.c_str()), 0);
    EXPECT_EQ(memcmp(&ve, &media_.Video.Encode, sizeof(ve)), 0);
    // A parent without the child has none to give.
    EXPECT_EQ(Media_getAudioCaptureByXml(&ac, "<Audio><Encode/></Audio><Capture/>"), -1);
  });
}

// Hostile but parsable input: over-long texts are cut, numbers are atoi's,
// lists stop at their capacity, unknown attributes and children are ignored.
TEST(MediaReaders, OverlongTextsBadNumbersAndFloods) {
  std::string longer(5000, 'x');
  std::string xml = "<Overlay Enable=\"12abc\" Transparency=\"abc\" Week=\"99999999999999999999\" "
                    "Unknown=\"1\"><Junk/><TitleOverlay Title=\"" + longer +
                    "\" TitleUtf8=\"" + longer + "\" PosX=\"-2147483649\"/>"
                    "<TimeOverlay Format=\"" + longer + "\"/></Overlay>";
  VideoOverlayConfig o;
  ASSERT_EQ(Media_getVideoOverlayByXml(&o, xml.c_str()), 0);
  EXPECT_EQ(o.Enable, 12);
  EXPECT_EQ(o.Transparency, 0);
  EXPECT_EQ(o.Week, -1);  // clipped to 64 bits, then narrowed like atoi's int
  EXPECT_EQ(strlen(o.Title.Title), sizeof(o.Title.Title) - 1);
  EXPECT_EQ(strlen(o.Title.TitleUtf8), sizeof(o.Title.TitleUtf8) - 1);
  EXPECT_EQ(strlen(o.Time.Format), sizeof(o.Time.Format) - 1);
  EXPECT_EQ(o.Title.PosX, 2147483647);

  std::string flood = "<UserOverlay>";
  for (int i = 0; i < 1000; ++i)
    flood += "<UserOSD enable=\"" + std::to_string(i) + "\" TitleUtf8=\"" + longer + "\"/><Other/>";
  flood += "</UserOverlay>";
  VideoUserOverlayConfig u;
  ASSERT_EQ(Media_getVideoUserOverlayByXml(&u, flood.c_str()), 0);
  EXPECT_EQ(u.Count, QV_MAX_USER_OSD);
  EXPECT_EQ(u.UserOSD[QV_MAX_USER_OSD - 1].enable, QV_MAX_USER_OSD - 1);
  EXPECT_EQ(strlen(u.UserOSD[0].TitleUtf8), sizeof(u.UserOSD[0].TitleUtf8) - 1);
  // A count outside the list is written as the list holds it.
  u.Count = 1000;
  std::string written = TakeText(XMLGET_VideoUserOverlayConfig(&u));
  EXPECT_EQ(Occurrences(written, "<UserOSD"), static_cast<size_t>(QV_MAX_USER_OSD));
  u.Count = -5;
  EXPECT_EQ(TakeText(XMLGET_VideoUserOverlayConfig(&u)), "<UserOverlay>\r\n</UserOverlay>\r\n");

  std::string streams = "<Encode>";
  for (int i = 0; i < 1000; ++i)
    streams += "<EncodeConfig Stream=\"" + std::to_string(i % 5) + "\" BitRate=\"" + std::to_string(i) +
               "\" Resolution=\"" + longer + "\"/>";
  streams += "</Encode>";
  VideoEncodeConfig e;
  ASSERT_EQ(Media_getVideoEncodeByXml(&e, streams.c_str()), 0);
  EXPECT_EQ(e.Stream[2].BitRate, 997);  // the last of its stream
  EXPECT_EQ(strlen(e.Stream[2].Resolution), 31u);

  // Writers given a null record give null.
  EXPECT_EQ(XMLGET_MediaConfig(nullptr), nullptr);
  EXPECT_EQ(XMLGET_MediaStreamConfig(nullptr), nullptr);
  EXPECT_EQ(XMLGET_MediaStreamConfig_ForSearch(nullptr), nullptr);
}

class MediaStore : public MediaSections {
 protected:
  void SetUp() override {
    MediaSections::SetUp();
    path_ = dir_ / "config.xml";
    use_.reset(new ScopedConfigPath(path_));
  }
  void TearDown() override { use_.reset(); }
  ScratchDir dir_;
  std::string path_;
  std::unique_ptr<ScopedConfigPath> use_;
};

TEST_F(MediaStore, SectionsAreWrittenIntoTheFileAndReadBack) {
  WriteFile(path_, "<?xml version=\"1.0\"?>\n<IPCConfig>\n<MediaConfig><Video/></MediaConfig>\n"
                   "<Keep me=\"1\"/>\n</IPCConfig>\n");
  ASSERT_EQ(SetMediaConfig(&media_), 0);
  ASSERT_EQ(SetMediaStreamConfig(&stream_), 0);  // inserted before the root's end
  std::string after = ReadFile(path_);
  EXPECT_NE(after.find("<Keep me=\"1\"/>"), std::string::npos);
  EXPECT_LT(after.find("</MediaConfig>"), after.find("<MediaStreamConfig>"));
  MediaConfig media;
  MediaStreamConfig stream;
  CapturedStdout([&] {
    ASSERT_EQ(GetMediaConfig(&media), 0);
    ASSERT_EQ(GetMediaStreamConfig(&stream), 0);
  });
  EXPECT_EQ(memcmp(&media, &media_, sizeof(media)), 0);
  EXPECT_EQ(memcmp(&stream, &stream_, sizeof(stream)), 0);

  // Nothing to splice into, no file, null records: -1 and the file as it was.
  WriteFile(path_, "<Other/>");
  CapturedStdout([&] {
    EXPECT_EQ(SetMediaConfig(&media_), -1);
    EXPECT_EQ(SetMediaStreamConfig(nullptr), -1);
    EXPECT_EQ(GetMediaConfig(&media), -1);
    EXPECT_EQ(GetMediaStreamConfig(nullptr), -1);
  });
  EXPECT_EQ(ReadFile(path_), "<Other/>");
  unlink(path_.c_str());
  CapturedStdout([&] {
    EXPECT_EQ(GetMediaStreamConfig(&stream), -1);
    EXPECT_EQ(SetMediaStreamConfig(&stream_), -1);
  });
  EXPECT_NE(access(path_.c_str(), F_OK), 0);
}

TEST_F(MediaSections, ShowMediaConfigPrintsTheRecord) {
  std::string printed = CapturedStdout([&] { ShowMediaConfig(&media_); });
  EXPECT_NE(printed.find("stream 0: H265 (H265)\n"), std::string::npos) << printed;
  EXPECT_NE(printed.find(TakeText(XMLGET_MediaConfig(&media_))), std::string::npos);
  EXPECT_EQ(CapturedStdout([] { ShowMediaConfig(nullptr); }), "");
}

}  // namespace

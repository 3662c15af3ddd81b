// The alarm section: round trips of every element, the written layout,
// defaults, lists at and beyond capacity, lookups and bad input.
#include "config/alarm_sections.h"

#include <gtest/gtest.h>

#include <string>

#include "config/config_files_helper.h"
#include "config/round_trip.h"
#include "config/section_fill_helper.h"

namespace {

const AlarmConfig& Filled() {
  static AlarmConfig cfg;
  static bool once = (FillAlarmConfig(&cfg), true);
  (void)once;
  return cfg;
}

#define ROW(name, member, Type, writer, reader) \
  {name, [] { ExpectRecordRoundTrip<Type>(Filled() member, writer, reader); }}

const RoundTripRow kAlarmRoundTrips[] = {
    ROW("AlarmConfig", , AlarmConfig, XMLGET_AlarmConfig, GetAlarmConfigByXml),
    ROW("InputAlarm", .Input, InputAlarm, XMLGET_InputAlarmConfig, Alarm_getInputByXml),
    ROW("OutputAlarm", .Output, OutPutAlarm, XMLGET_OutputAlarmConfig, Alarm_getOutputByXml),
    ROW("MotionDetectAlarm", .MotionDetect, MotionDetectAlarm, XMLGET_MDAlarmConfig,
        Alarm_getMotionDetectByXml),
    ROW("VideoLostAlarm", .VideoLost, VideoLostAlarm, XMLGET_VlAlarmConfig,
        Alarm_getVideoLostByXml),
    ROW("VideoCoverAlarm", .VideoCover, VideoCoverAlarm, XMLGET_VCAlarmConfig,
        Alarm_getVideoCoverByXml),
    ROW("StorageFullAlarm", .StorageFull, StorageFullAlarm, XMLGET_SFAlarmConfig,
        Alarm_getStorageFullByXml),
    ROW("AudioAlarm", .Audio, AudioAlarm, XMLGET_AudioAlarmConfig, Alarm_getAudioByXml),
    ROW("VideoGate", .Gate, VideoGate, XMLGET_VideoGateAlarmConfig, Alarm_getVideoGateByXml),
    ROW("VideoRegionAi", .RegionAi, VideoRegionAi, XMLGET_RegionAiAlarmConfig,
        Alarm_getRegionAiByXml),
    ROW("VideoPD", .PersonDetect, VideoPD, XMLGET_PdAlarmConfig, Alarm_getPdByXml),
    ROW("Lpr", .LicencePlate, Lpr, XMLGET_LprAlarmConfig, Alarm_getLprByXml),
    ROW("FaceDetect", .Face, FaceDetect, XMLGET_FdAlarmConfig, Alarm_getFdByXml),
    ROW("Temp_humidity", .TempHumidity, Temp_humidity, XMLGET_temp_humidityAlarmConfig,
        Alarm_getTempHumidityByXml),
    ROW("SMSAlarm", .SMS, SMSAlarm, XMLGET_SMSAlarmConfig, Alarm_getSMSByXml),
};

TEST(AlarmSections, EveryElementRoundTripsWithEveryMemberSet) {
  for (const RoundTripRow& row : kAlarmRoundTrips) {
    SCOPED_TRACE(row.name);
    CapturedStdout(row.check);
  }
}

TEST(AlarmSections, SingleChannelReadersTakeTheFirstChannel) {
  std::string xml = TakeText(XMLGET_AlarmConfig(const_cast<AlarmConfig*>(&Filled())));
  AlarmChannel channel;
  ASSERT_EQ(InputAlarm_getAlarmChannelCfgByXml(&channel, xml.c_str()), 0);
  EXPECT_TRUE(SameRecord(channel, Filled().Input.Channel[0]));
  OutputChannel output;
  ASSERT_EQ(OutputAlarm_getOutputChannelCfgByXml(&output, xml.c_str()), 0);
  EXPECT_TRUE(SameRecord(output, Filled().Output.Channel[0]));
}

TEST(AlarmSections, ContainerWritesItsSourcesInOrder) {
  AlarmConfig cfg;
  memset(&cfg, 0, sizeof(cfg));
  std::string xml = TakeText(XMLGET_AlarmConfig(&cfg));
  const char* order[] = {"<AlarmConfig>\r\n<InputAlarm>\r\n</InputAlarm>\r\n<MotionDetectAlarm ",
                         "<VideoLostAlarm ",   "<VideoCoverAlarm ", "<StorageFullAlarm ",
                         "<AudioAlarm ",       "<VideoGate>\r\n",   "<VideoRegionAi>\r\n",
                         "<VideoPD ",          "<Lpr ",             "<FaceDetect ",
                         "<Temp_humidity ",    "<OutputAlarm>\r\n</OutputAlarm>\r\n<SMSAlarm ",
                         "</AlarmConfig>\r\n"};
  size_t at = 0;
  for (const char* piece : order) {
    size_t found = xml.find(piece, at);
    ASSERT_NE(found, std::string::npos) << piece << "\n" << xml;
    at = found;
  }
  EXPECT_EQ(xml.size(), at + strlen("</AlarmConfig>\r\n"));
}

TEST(AlarmSections, ElementLayoutAsWritten) {
  VideoLostAlarm vl;
  memset(&vl, 0, sizeof(vl));
  vl.Enable = 1;
  vl.TimeSpan.day0 = 0xFF;
  vl.IOOutput.Count = 1;
  vl.IOOutput.Channel[0].PortIndex = 2;
  EXPECT_EQ(TakeText(XMLGET_VlAlarmConfig(&vl)),
            "<VideoLostAlarm Enable=\"1\" >\r\n"
            "<EnableTimeList>\r\n"
            "<TimeSpanCfg day0=\"255\" day1=\"0\" day2=\"0\" day3=\"0\" day4=\"0\" day5=\"0\" "
            "day6=\"0\" />\r\n"
            "</EnableTimeList>\r\n"
            "<AlarmAction>\r\n"
            "<IOOutputAction>\r\n"
            "<OutputChannelAction Enable=\"0\" PortIndex=\"2\" />\r\n"
            "</IOOutputAction>\r\n"
            "</AlarmAction>\r\n"
            "</VideoLostAlarm>\r\n");

  AudioAlarm au = {1, 2, 3, 4};
  EXPECT_EQ(TakeText(XMLGET_AudioAlarmConfig(&au)),
            "<AudioAlarm enable_babycry=\"1\" sensity_babycry=\"2\" enable_lsd=\"3\" "
            "sensity_lsd=\"4\" />\r\n");

  // Blank-padded night times after the other attributes; action children in
  // the order IO output, PTZ, audio play.
  MotionDetectAlarm md;
  memset(&md, 0, sizeof(md));
  md.NightStartTime = {18, 0, 5};
  md.NightEndTime = {7, 30, 0};
  strcpy(md.PTZ.ActionType, "PositionLoop");
  md.alarm_push = 1;
  std::string xml = TakeText(XMLGET_MDAlarmConfig(&md));
  EXPECT_NE(xml.find("NightAlarmThreshold=\"0\" NightStartTime=\"18: 0: 5\" "
                     "NightEndTime=\" 7:30: 0\" >\r\n<EnableTimeList>\r\n"),
            std::string::npos) << xml;
  EXPECT_NE(xml.find("<AlarmAction light_twinkle=\"0\" notify_alarmserver=\"0\" alarm_led=\"0\" "
                     "alarm_push=\"1\" >\r\n<IOOutputAction>\r\n</IOOutputAction>\r\n"
                     "<PTZAction Enable=\"0\" ActionType=\"PositionLoop\" />\r\n"
                     "<AudioPlayAction Enable=\"0\" EnableNight=\"0\" Times=\"0\" "
                     "Intervel=\"0\" FileName=\"\" />\r\n</AlarmAction>\r\n"
                     "</MotionDetectAlarm>\r\n"),
            std::string::npos) << xml;

  // Lines are numbered from 1; unsigned members are written with %u.
  VideoGate gate;
  memset(&gate, 0, sizeof(gate));
  gate.Line[3].type = 4000000000u;
  xml = TakeText(XMLGET_VideoGateAlarmConfig(&gate));
  EXPECT_EQ(xml.find("<VideoGate>\r\n<Line1 fromx=\"0\" "), 0u) << xml;
  EXPECT_NE(xml.find("<Line4 fromx=\"0\" fromy=\"0\" tox=\"0\" toy=\"0\" EnableDay=\"0\" "
                     "EnableNight=\"0\" sensitivity=\"0\" type=\"4000000000\" direction=\"0\" "
                     "/>\r\n<EnableTimeList>"),
            std::string::npos) << xml;
}

TEST(AlarmSections, DefaultsOfAbsentParts) {
  // No EnableTimeList, or an all-zero mask: the full week.
  MotionDetectAlarm md;
  ASSERT_EQ(Alarm_getMotionDetectByXml(&md, "<MotionDetectAlarm Enable=\"1\"/>"), 0);
  EXPECT_EQ(md.Enable, 1);
  EXPECT_EQ(md.TimeSpan.day0, 0xFFFFFFu);
  EXPECT_EQ(md.TimeSpan.day6, 0xFFFFFFu);
  EXPECT_EQ(md.IOOutput.Count, 0);
  ASSERT_EQ(Alarm_getMotionDetectByXml(
                &md, "<MotionDetectAlarm><EnableTimeList><TimeSpanCfg day0=\"0\"/>"
                     "</EnableTimeList></MotionDetectAlarm>"),
            0);
  EXPECT_EQ(md.TimeSpan.day3, 0xFFFFFFu);
  // A whole section without a source reads it as an empty element would.
  AlarmConfig cfg;
  memset(&cfg, 0x44, sizeof(cfg));
  ASSERT_EQ(GetAlarmConfigByXml(&cfg, "<AlarmConfig/>"), 0);
  EXPECT_EQ(cfg.Input.Count, 0);
  EXPECT_EQ(cfg.Face.TimeSpan.day2, 0xFFFFFFu);
  EXPECT_EQ(cfg.SMS.enable, 0);
  EXPECT_STREQ(cfg.SMS.content, "");
}

TEST(AlarmSections, UnknownPtzActionTypeIsKeptAndLogged) {
  MotionDetectAlarm md;
  const char* xml =
      "<MotionDetectAlarm><AlarmAction><PTZAction Enable=\"1\" ActionType=\"Spin\"/>"
      "</AlarmAction></MotionDetectAlarm>";
  std::string printed =
      CapturedStdout([&] { ASSERT_EQ(Alarm_getMotionDetectByXml(&md, xml), 0); });
  EXPECT_NE(printed.find("]unknown pzt action type Spin\n\n"), std::string::npos) << printed;
  EXPECT_STREQ(md.PTZ.ActionType, "Spin");
  for (const char* known : {"PositionLoop", "PresetPosition", "PositionWalk"}) {
    std::string good = std::string("<MotionDetectAlarm><AlarmAction><PTZAction ActionType=\"") +
                       known + "\"/></AlarmAction></MotionDetectAlarm>";
    EXPECT_EQ(CapturedStdout([&] { Alarm_getMotionDetectByXml(&md, good.c_str()); }), "")
        << known;
  }
}

std::string Repeat(const std::string& piece, int n) {
  std::string s;
  for (int i = 0; i < n; ++i) s += piece;
  return s;
}

TEST(AlarmSections, ListsKeepTheirCapacity) {
  InputAlarm in;
  std::string xml = "<InputAlarm>" +
                    Repeat("<AlarmChannel PortIndex=\"7\"><AlarmAction><IOOutputAction>" +
                               Repeat("<OutputChannelAction Enable=\"1\"/>", 50) +
                               "</IOOutputAction></AlarmAction></AlarmChannel>",
                           40) +
                    "</InputAlarm>";
  ASSERT_EQ(Alarm_getInputByXml(&in, xml.c_str()), 0);
  EXPECT_EQ(in.Count, QV_MAX_INPUT_CHANNELS);
  EXPECT_EQ(in.Channel[QV_MAX_INPUT_CHANNELS - 1].IOOutput.Count, QV_MAX_OUTPUT_ACTIONS);
  OutPutAlarm out;
  xml = "<OutputAlarm>" + Repeat("<OutputChannel Duration=\"3\"/>", 100) + "</OutputAlarm>";
  ASSERT_EQ(Alarm_getOutputByXml(&out, xml.c_str()), 0);
  EXPECT_EQ(out.Count, QV_MAX_OUTPUT_CHANNELS);
  // Lines and rules beyond their number, and unknown children, are ignored.
  VideoGate gate;
  ASSERT_EQ(Alarm_getVideoGateByXml(&gate, "<VideoGate><Line0 fromx=\"1\"/><Line5 fromx=\"1\"/>"
                                           "<Line2 fromx=\"9\"/><Other/></VideoGate>"),
            0);
  EXPECT_EQ(gate.Line[0].fromx, 0);
  EXPECT_EQ(gate.Line[1].fromx, 9);
  // A count set out of range is written within the entries.
  out.Count = 1000;
  EXPECT_EQ(Occurrences(TakeText(XMLGET_OutputAlarmConfig(&out)), "<OutputChannel "),
            static_cast<size_t>(QV_MAX_OUTPUT_CHANNELS));
  out.Count = -5;
  EXPECT_EQ(TakeText(XMLGET_OutputAlarmConfig(&out)), "<OutputAlarm>\r\n</OutputAlarm>\r\n");
}

TEST(AlarmSections, LookupsByPortIndex) {
  AlarmConfig cfg = Filled();
  EXPECT_EQ(GetAlarmChannelByID(&cfg.Input, 3), &cfg.Input.Channel[2]);
  EXPECT_EQ(GetAlarmChannelByID(&cfg.Input, 99), nullptr);
  EXPECT_EQ(GetOutputChannelByID(&cfg.Output, 10), &cfg.Output.Channel[0]);
  cfg.Output.Count = 1;  // entries past the count are not looked at
  EXPECT_EQ(GetOutputChannelByID(&cfg.Output, 11), nullptr);
  EXPECT_EQ(GetOutputChannelByID(nullptr, 10), nullptr);
  EXPECT_EQ(GetAlarmChannelByID(nullptr, 1), nullptr);
}

TEST(AlarmSections, BadInput) {
  AlarmConfig cfg;
  const struct {
    const char* what;
    std::string xml;
    int result;
  } cases[] = {
      {"broken XML", "<AlarmConfig><InputAlarm>", -1},
      {"not XML", "just text", -1},
      {"empty", "", -1},
      {"other element", "<NetworkConfig/>", -1},
      {"extra elements", "<AlarmConfig><Unknown a=\"1\"/><SMSAlarm enable=\"2\" x=\"y\"/>"
                         "<SMSAlarm enable=\"3\"/></AlarmConfig>", 0},
      {"non-numeric", "<AlarmConfig><SMSAlarm enable=\"abc\" min_interval=\"12abc\" "
                      "playresult=\"99999999999999999999\"/></AlarmConfig>", 0},
      {"over-long text", "<AlarmConfig><SMSAlarm dstnumber=\"" + std::string(5000, '9') +
                             "\"/></AlarmConfig>", 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    CapturedStdout([&] { EXPECT_EQ(GetAlarmConfigByXml(&cfg, c.xml.c_str()), c.result); });
  }
  // The last case: clipped to the member.
  EXPECT_EQ(std::string(cfg.SMS.dstnumber), std::string(sizeof(cfg.SMS.dstnumber) - 1, '9'));
  CapturedStdout([&] { GetAlarmConfigByXml(&cfg, cases[4].xml.c_str()); });
  EXPECT_EQ(cfg.SMS.enable, 3);  // of a repeated source the later one counts
  CapturedStdout([&] { GetAlarmConfigByXml(&cfg, cases[5].xml.c_str()); });
  EXPECT_EQ(cfg.SMS.enable, 0);
  EXPECT_EQ(cfg.SMS.min_interval, 12);
  EXPECT_EQ(GetAlarmConfigByXml(nullptr, "<AlarmConfig/>"), -1);
  CapturedStdout([&] { EXPECT_EQ(GetAlarmConfigByXml(&cfg, nullptr), -1); });
  EXPECT_EQ(XMLGET_AlarmConfig(nullptr), nullptr);
}

}  // namespace

// The system, record, server, platform and GB28181 sections: round trips of
// every element, the written layout, defaults, lists at and beyond capacity,
// lookups and bad input.
#include <gtest/gtest.h>

#include <string>

#include "config/config_files_helper.h"
#include "config/round_trip.h"
#include "config/section_fill_helper.h"
#include "config/service_sections.h"
#include "config/system_sections.h"

namespace {

template <typename Rec, void (*fill)(Rec*)>
const Rec& Filled() {
  static Rec cfg;
  static bool once = (fill(&cfg), true);
  (void)once;
  return cfg;
}
const SystemConfig& System() { return Filled<SystemConfig, FillSystemConfig>(); }
const RecordConfig& Record() { return Filled<RecordConfig, FillRecordConfig>(); }
const ServerConfig& Server() { return Filled<ServerConfig, FillServerConfig>(); }

#define ROW(name, value, Type, writer, reader) \
  {name, [] { ExpectRecordRoundTrip<Type>(value, writer, reader); }}

const RoundTripRow kRoundTrips[] = {
    ROW("SystemConfig", System(), SystemConfig, XMLGET_SystemConfig, GetSystemConfigByXml),
    ROW("PTZConfig", System().PTZ, PTZConfig, XMLGET_PTZConfig, System_getPTZCfgByXml),
    ROW("AfConfig", System().PTZ.Af, PTZAfConfig, XMLGET_PTZAFConfig, System_getPTZAfCfgByXml),
    ROW("AdvanceConfig", System().PTZ.Advance, PTZAdvanceConfig, XMLGET_PTZAdvanceConfig,
        System_getPTZAdvanceCfgByXml),
    ROW("TimeConfig", System().Time, TimeConfig, XMLGET_TimeConfig, System_getTimeCfgByXml),
    ROW("UserConfig", System().User, UserConfig, XMLGET_UserConfig, System_getUserCfgByXml),
    ROW("SystemLogConfig", System().SystemLog, SystemLogConfig, XMLGET_SyslogConfig,
        System_getLogCfgByXml),
    ROW("MiscConfig", System().Misc, MiscConfig, XMLGET_SysMiscConfig, System_getMiscCfgByXml),
    ROW("MaintainConfig", System().Maintain, MaintainConfig, XMLGET_SysMaintainConfig,
        System_getMaintainCfgByXml),
    ROW("AlowIpConfig", System().AlowIp, AlowIpConfig, XMLGET_SysAlowIpConfig,
        System_getAlowIpByXml),
    ROW("AlarmClockConfig", System().AlarmClock, AlarmClockConfig, XMLGET_SysAlarmClockConfig,
        System_getAlarmClockByXml),
    ROW("RecordConfig", Record(), RecordConfig, XMLGET_RecordConfig, GetRecordCfgByXml),
    ROW("ServerConfig", Server(), ServerConfig, XMLGET_ServerConfig, GetServerCfgByXml),
    ROW("FTPList", Server().FTP, FTPList, XMLGET_FtpConfig, Server_getFtpsByXml),
    ROW("SMTPList", Server().SMTP, SMTPList, XMLGET_SmtpConfig, Server_getSmtpsByXml),
    ROW("PlatformConfig", (Filled<PlatformConfig, FillPlatformConfig>()), PlatformConfig,
        XMLGET_PlatformConfig, GetPlatformCfgByXml),
    ROW("GB28181Config", (Filled<GB28181Config, FillGB28181Config>()), GB28181Config,
        XMLGET_GB28181Config, GetGB28181CfgByXml),
};

TEST(SystemSections, EveryElementRoundTripsWithEveryMemberSet) {
  for (const RoundTripRow& row : kRoundTrips) {
    SCOPED_TRACE(row.name);
    row.check();
  }
}

TEST(SystemSections, PartReadersTakeTheirPartOfALargerText) {
  std::string xml = TakeText(XMLGET_SystemConfig(const_cast<SystemConfig*>(&System())));
  PTZCommonConfig common;
  ASSERT_EQ(System_getPTZCommonCfgByXml(&common, xml.c_str()), 0);
  EXPECT_TRUE(SameRecord(common, System().PTZ.Common));
  std::string server = TakeText(XMLGET_ServerConfig(const_cast<ServerConfig*>(&Server())));
  SMTPConfig first;
  ASSERT_EQ(GetSmtpCfgByXml(&first, server.c_str()), 0);
  EXPECT_TRUE(SameRecord(first, Server().SMTP.Receiver[0]));
}

TEST(SystemSections, LayoutAsWritten) {
  AlowIpConfig ips = {1, {3232235777u, 0, 0, 0, 4294967295u}};
  EXPECT_EQ(TakeText(XMLGET_SysAlowIpConfig(&ips)),
            "<AlowIpConfig\r\nEnable=\"1\"\r\nipaddr1=\"3232235777\"\r\nipaddr2=\"0\"\r\n"
            "ipaddr3=\"0\"\r\nipaddr4=\"0\"\r\nipaddr5=\"4294967295\"\r\n/>\r\n");
  MaintainConfig maintain = {1, 7, {3, 0, 45}};
  EXPECT_EQ(TakeText(XMLGET_SysMaintainConfig(&maintain)),
            "<MaintainConfig\r\nEnable=\"1\"\r\nDay=\"7\"\r\nTime=\" 3: 0:45\"\r\n/>\r\n");
  PlatformConfig platform;
  memset(&platform, 0, sizeof(platform));
  platform.Vexora.Port = 3000000000u;
  strcpy(platform.Vexora.Server, "a&b");
  EXPECT_EQ(TakeText(XMLGET_PlatformConfig(&platform)),
            "<PlatformConfig>\r\n<VexoraConfig\r\nEnable=\"0\"\r\nServer=\"a&amp;b\"\r\n"
            "Port=\"3000000000\"\r\nUsername=\"\"\r\nPassword=\"\"\r\nPlayTone=\"0\"\r\n"
            "InRingTimes=\"0\"\r\nreserved=\"0\"\r\nkeyPressTimeLen=\"0\"\r\nFileName=\"\"\r\n"
            "/>\r\n</PlatformConfig>\r\n");
  TimeConfig time;
  memset(&time, 0, sizeof(time));
  time.Summer.Auto = 1;
  std::string xml = TakeText(XMLGET_TimeConfig(&time));
  EXPECT_NE(xml.find("\r\n/>\r\n<SummerTime\r\nenable=\"0\"\r\nauto=\"1\"\r\noffset=\"0\"\r\n>\r\n"
                     "<start\r\nmonth=\"0\"\r\n"),
            std::string::npos) << xml;
}

TEST(SystemSections, ContainersWriteTheirChildrenInOrder) {
  const struct {
    std::string text;
    std::vector<const char*> order;
  } cases[] = {
      {TakeText(XMLGET_SystemConfig(const_cast<SystemConfig*>(&System()))),
       {"<SystemConfig>\r\n<PTZConfig\r\n", "<AfConfig\r\n", "<AdvanceConfig>\r\n",
        "</PTZConfig>\r\n<TimeConfig\r\n", "<NTPConfig\r\n", "<SummerTime\r\n",
        "</TimeConfig>\r\n<UserConfig>\r\n<Account\r\n", "</UserConfig>\r\n<SystemLogConfig\r\n",
        "<MiscConfig\r\n", "<MaintainConfig\r\n", "<AlowIpConfig\r\n",
        "<AlarmClockConfig>\r\n<AlarmOnEveryHour\r\n", "<alarmclock>\r\n<clock\r\n",
        "</alarmclock>\r\n</AlarmClockConfig>\r\n</SystemConfig>\r\n"}},
      {TakeText(XMLGET_RecordConfig(const_cast<RecordConfig*>(&Record()))),
       {"<RecordConfig>\r\n<Common\r\n", "<ScheduleRecord\r\n",
        ">\r\n<EnableTimeList>\r\n<TimeSpanCfg ", "/>\r\n</EnableTimeList>\r\n</ScheduleRecord>\r\n",
        "<MotionDetectRecord\r\n", "<MotionDetectCapture\r\n", "<InputAlarmRecord\r\n",
        "<InputAlarmCapture\r\n", "</RecordConfig>\r\n"}},
      {TakeText(XMLGET_ServerConfig(const_cast<ServerConfig*>(&Server()))),
       {"<ServerConfig>\r\n<FTPList>\r\n<FTPConfig\r\n", "</FTPList>\r\n<SMTPList\r\n",
        ">\r\n<SMTPConfig\r\n", "</SMTPList>\r\n</ServerConfig>\r\n"}},
  };
  for (const auto& c : cases) {
    size_t at = 0;
    for (const char* piece : c.order) {
      size_t found = c.text.find(piece, at);
      ASSERT_NE(found, std::string::npos) << piece << "\n" << c.text;
      at = found;
    }
    EXPECT_EQ(c.text.size(), at + strlen(c.order.back()));
  }
}

TEST(SystemSections, DefaultsOfAbsentParts) {
  RecordConfig record;
  memset(&record, 0x44, sizeof(record));
  ASSERT_EQ(GetRecordCfgByXml(&record, "<RecordConfig><ScheduleRecord Stream=\"1\"/>"
                                       "</RecordConfig>"),
            0);
  EXPECT_EQ(record.Schedule.Stream, 1);
  EXPECT_EQ(record.Schedule.TimeSpan.day5, 0xFFFFFFu);
  EXPECT_EQ(record.Common.LocalEnable, 0);
  SystemConfig sys;
  memset(&sys, 0x44, sizeof(sys));
  ASSERT_EQ(GetSystemConfigByXml(&sys, "<SystemConfig/>"), 0);
  EXPECT_EQ(sys.User.nAccount, 0);
  EXPECT_EQ(sys.PTZ.Advance.Count, 0);
  EXPECT_EQ(sys.AlarmClock.Clock[4].hour, 0);
  PlatformConfig platform;
  memset(&platform, 0x44, sizeof(platform));
  ASSERT_EQ(GetPlatformCfgByXml(&platform, "<PlatformConfig/>"), 0);
  EXPECT_EQ(platform.Vexora.Port, 0u);
  EXPECT_STREQ(platform.Vexora.FileName, "");
}

std::string Repeat(const std::string& piece, int n) {
  std::string s;
  for (int i = 0; i < n; ++i) s += piece;
  return s;
}

TEST(SystemSections, ListsKeepTheirCapacity) {
  UserConfig users;
  std::string xml = "<UserConfig>" + Repeat("<Account Username=\"u\"/>", 500) + "</UserConfig>";
  ASSERT_EQ(System_getUserCfgByXml(&users, xml.c_str()), 0);
  EXPECT_EQ(users.nAccount, QV_MAX_USER_ACCOUNTS);
  PTZAdvanceConfig advance;
  xml = "<AdvanceConfig>" + Repeat("<FunctionConfig PresetNumber=\"3\"/>", 100) +
        "</AdvanceConfig>";
  ASSERT_EQ(System_getPTZAdvanceCfgByXml(&advance, xml.c_str()), 0);
  EXPECT_EQ(advance.Count, QV_MAX_PTZ_FUNCTIONS);
  AlarmClockConfig clocks;
  xml = "<AlarmClockConfig><alarmclock>" + Repeat("<clock hour=\"6\"/>", 20) +
        "</alarmclock></AlarmClockConfig>";
  ASSERT_EQ(System_getAlarmClockByXml(&clocks, xml.c_str()), 0);
  EXPECT_EQ(clocks.Clock[QV_ALARM_CLOCKS - 1].hour, 6);
  ServerConfig server;
  xml = "<ServerConfig><FTPList>" + Repeat("<FTPConfig Index=\"1\"/>", 9) +
        "</FTPList><SMTPList>" + Repeat("<SMTPConfig Index=\"2\"/>", 9) +
        "</SMTPList></ServerConfig>";
  ASSERT_EQ(GetServerCfgByXml(&server, xml.c_str()), 0);
  EXPECT_EQ(server.FTP.Count, QV_MAX_FTP_SERVERS);
  EXPECT_EQ(server.SMTP.Count, QV_MAX_SMTP_RECEIVERS);
  // Counts set out of range are written within the entries.
  users.nAccount = 99;
  server.FTP.Count = -1;
  EXPECT_EQ(TakeText(XMLGET_UserConfig(&users)).size(),
            strlen("<UserConfig>\r\n</UserConfig>\r\n") +
                QV_MAX_USER_ACCOUNTS * strlen("<Account\r\nUsername=\"u\"\r\nPassword=\"\"\r\n"
                                              "Group=\"\"\r\nStatus=\"\"\r\n/>\r\n"));
  EXPECT_EQ(TakeText(XMLGET_FtpConfig(&server.FTP)), "<FTPList>\r\n</FTPList>\r\n");
}

TEST(SystemSections, ServerLookupsByIndex) {
  ServerConfig server = Server();
  server.FTP.Server[2].Index = 42;
  server.SMTP.Receiver[1].Index = 7;
  EXPECT_EQ(GetFtpServerByID(&server.FTP, 42), &server.FTP.Server[2]);
  EXPECT_EQ(GetSmtpServerByID(&server.SMTP, 7), &server.SMTP.Receiver[1]);
  EXPECT_EQ(GetFtpServerByID(&server.FTP, 12345), nullptr);
  server.SMTP.Count = 1;
  EXPECT_EQ(GetSmtpServerByID(&server.SMTP, 7), nullptr);
  EXPECT_EQ(GetFtpServerByID(nullptr, 0), nullptr);
}

TEST(SystemSections, BadInputNeverOverflows) {
  // Every reader: broken text, no such element, and attributes that are
  // over-long, non-numeric, unknown or out of range.
  using Reader = int (*)(const char*);
  const struct {
    const char* tag;
    Reader read;
  } readers[] = {
      {"SystemConfig", [](const char* x) { SystemConfig c; return GetSystemConfigByXml(&c, x); }},
      {"PTZConfig", [](const char* x) { PTZConfig c; return System_getPTZCfgByXml(&c, x); }},
      {"TimeConfig", [](const char* x) { TimeConfig c; return System_getTimeCfgByXml(&c, x); }},
      {"UserConfig", [](const char* x) { UserConfig c; return System_getUserCfgByXml(&c, x); }},
      {"MaintainConfig",
       [](const char* x) { MaintainConfig c; return System_getMaintainCfgByXml(&c, x); }},
      {"RecordConfig", [](const char* x) { RecordConfig c; return GetRecordCfgByXml(&c, x); }},
      {"ServerConfig", [](const char* x) { ServerConfig c; return GetServerCfgByXml(&c, x); }},
      {"PlatformConfig",
       [](const char* x) { PlatformConfig c; return GetPlatformCfgByXml(&c, x); }},
      {"GB28181Config",
       [](const char* x) { GB28181Config c; return GetGB28181CfgByXml(&c, x); }},
  };
  std::string junk = "Time=\"" + std::string(4000, '7') + "\" Day=\"x1\" Port=\"-99999999999\" "
                     "Username=\"" + std::string(4000, 'u') + "\" Unknown=\"1\"";
  for (const auto& r : readers) {
    SCOPED_TRACE(r.tag);
    std::string tag = r.tag;
    CapturedStdout([&] {
      EXPECT_EQ(r.read(("<" + tag + "><").c_str()), -1);
      EXPECT_EQ(r.read("<IPCConfig/>"), -1);
      EXPECT_EQ(r.read(nullptr), -1);
      std::string deep = "<" + tag + " " + junk + "><" + tag + " " + junk + "/><Account " + junk +
                         "/><VexoraConfig " + junk + "/><GB28181 " + junk + "/></" + tag + ">";
      EXPECT_EQ(r.read(deep.c_str()), 0);
    });
  }
  MaintainConfig maintain;
  ASSERT_EQ(System_getMaintainCfgByXml(&maintain, "<MaintainConfig Time=\"12:x\" Day=\"3d\"/>"),
            0);
  EXPECT_EQ(maintain.Time.Hour, 12);
  EXPECT_EQ(maintain.Time.Minute, 0);
  EXPECT_EQ(maintain.Day, 3);
  GB28181Config gb;
  std::string xml = "<GB28181Config><GB28181 hcId=\"" + std::string(300, '1') +
                    "\"/></GB28181Config>";
  ASSERT_EQ(GetGB28181CfgByXml(&gb, xml.c_str()), 0);
  EXPECT_EQ(std::string(gb.Gb.hcId), std::string(sizeof(gb.Gb.hcId) - 1, '1'));
}

}  // namespace

// Reply bodies built from the camera's state: time, replay distribution,
// alarms.
#include "emu/system_replies.h"

#include <gtest/gtest.h>

namespace qvemu {
namespace {

// 2024-03-05 07:08:09 on the camera's clock.
const time_t kCameraNow = 1709622489;

TEST(SystemRepliesTest, SystemTimeHasOneBasedMonthAndTheZone) {
  EXPECT_EQ(SystemTimeBody(kCameraNow, "8"),
            "<RESPONSE_PARAM TimeZone=\"8\" Year=\"2024\" Month=\"3\" Day=\"5\" Hour=\"7\" "
            "Minute=\"8\" Second=\"9\" />");
}

TEST(SystemRepliesTest, SetTimeReadsTheRequestAndRefusesImpossibleTimes) {
  time_t when = 0;
  std::string zone;
  ASSERT_TRUE(ParseSetTime("<REQUEST_PARAM Time=\"20240305 07:08:09\" TimeZone=\"8\"/>", &when,
                           &zone));
  EXPECT_EQ(when, kCameraNow);
  EXPECT_EQ(zone, "8");
  const char* bad[] = {
      "<REQUEST_PARAM Time=\"20240231 07:08:09\" TimeZone=\"8\"/>",
      "<REQUEST_PARAM Time=\"20241305 07:08:09\" TimeZone=\"8\"/>",
      "<REQUEST_PARAM Time=\"20240305 24:00:00\" TimeZone=\"8\"/>",
      "<REQUEST_PARAM Time=\"20240305 07:08:09x\"/>",
      "<REQUEST_PARAM TimeZone=\"8\"/>",
      "not xml <",
  };
  for (const char* body : bad) EXPECT_FALSE(ParseSetTime(body, &when, &zone)) << body;
}

std::string Distribute(const std::string& reply) {
  const std::string key = "Distribute=\"";
  size_t at = reply.find(key);
  if (at == std::string::npos) return "";
  return reply.substr(at + key.size(), reply.find('"', at + key.size()) - at - key.size());
}

TEST(SystemRepliesTest, OneDayDistributionHasACharacterAMinute) {
  std::string reply;
  ASSERT_TRUE(ReplayDistributionBody(
      "<REQUEST_PARAM SearchMode=\"1\" RecordMode=\"ALL\" StartTime=\"20240304 00:00:00\" "
      "EndTime=\"20240304 23:59:59\"MediaType=\"VIDEO\" MinSize=\"-1\" MaxSize=\"-1\" Page=\"0\"/>",
      kCameraNow, &reply));
  EXPECT_EQ(reply.find("<RESPONSE_PARAM SearchMode=\"1\""), 0u);
  std::string minutes = Distribute(reply);
  ASSERT_EQ(minutes.size(), 1440u);
  EXPECT_EQ(minutes[8 * 60 - 1], '0');
  EXPECT_EQ(minutes[8 * 60], '1');
  EXPECT_EQ(minutes[12 * 60 - 1], '1');
  EXPECT_EQ(minutes[12 * 60], '0');
  EXPECT_EQ(minutes.find_first_not_of("01"), std::string::npos);

  // A day without recordings: all zeros, still a valid answer.
  ASSERT_TRUE(ReplayDistributionBody(
      "<REQUEST_PARAM SearchMode=\"1\" StartTime=\"20240301 00:00:00\"/>", kCameraNow, &reply));
  EXPECT_EQ(Distribute(reply), std::string(1440, '0'));
}

TEST(SystemRepliesTest, DatesDistributionListsRecordedDaysNewestFirst) {
  std::string reply;
  ASSERT_TRUE(ReplayDistributionBody(
      "<REQUEST_PARAM SearchMode=\"10\" RecordMode=\"ALL\" MediaType=\"VIDEO\" Page=\"0\"/>",
      kCameraNow, &reply));
  EXPECT_EQ(reply,
            "<RESPONSE_PARAM SearchMode=\"10\" RecordMode=\"ALL\" DateCount=\"3\">\n"
            "<DATE UtcTime=\"1709596800\" />\n"
            "<DATE UtcTime=\"1709510400\" />\n"
            "<DATE UtcTime=\"1709424000\" />\n"
            "</RESPONSE_PARAM>");
  EXPECT_FALSE(ReplayDistributionBody("<REQUEST_PARAM RecordMode=\"1\" />", kCameraNow, &reply));
}

TEST(SystemRepliesTest, AlarmBodyHoldsOneItemPerAlarmWithEscapedData) {
  AlarmSpec a = {2024, 3, 5, 2, 7, 8, 9, 23, 1, 2, "/snap/\"1\".jpg"};
  EXPECT_EQ(AlarmBody({a}),
            "<ALARM_REPORT_PARAM>\n<ALARM_ITEM>\n"
            "<ALARM_TIME Year=\"2024\" Month=\"3\" Day=\"5\" WDay=\"2\" Hour=\"7\" Minute=\"8\" "
            "Second=\"9\" />\n"
            "<ALARM_INFO Alarm_code=\"23\" Alarm_flag=\"1\" Alarm_level=\"2\" "
            "Alarm_data=\"/snap/&quot;1&quot;.jpg\" />\n"
            "</ALARM_ITEM>\n</ALARM_REPORT_PARAM>");
}

}  // namespace
}  // namespace qvemu

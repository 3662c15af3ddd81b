// Schedules (hour masks and work-day lists) and the time-zone table.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "config/config_files_helper.h"
#include "config/time_span.h"
#include "config/time_zone.h"
#include "config/xml_writer.h"

namespace {

using qvconfig::kMaxTimeZones;
using qvconfig::WriteTimeSpanCfg;
using qvconfig::WriteWorkDayList;
using qvconfig::XmlWriter;

const unsigned kFull = 0xFFFFFF;

WorkDayList OneSpan(int day, int sh, int sm, int ss, int eh, int em, int es) {
  WorkDayList list;
  memset(&list, 0, sizeof(list));
  list.Count = 1;
  list.Entry[0].Day = day;
  list.Entry[0].SpanCount = 1;
  list.Entry[0].Span[0] = {sh, sm, ss, eh, em, es};
  return list;
}

// "day: h:m:s-h:m:s ...; " for every entry of the list, within its arrays.
std::string Spans(const WorkDayList& list) {
  std::string text;
  char span[64];
  for (int d = 0; d < list.Count && d < QV_MAX_WORKDAYS; ++d) {
    text += std::to_string(list.Entry[d].Day) + ":";
    for (int i = 0; i < list.Entry[d].SpanCount && i < QV_MAX_WORKDAY_SPANS; ++i) {
      const WorkTimeSpan& t = list.Entry[d].Span[i];
      snprintf(span, sizeof(span), " %d:%02d:%02d-%d:%02d:%02d", t.StartHour, t.StartMinute,
               t.StartSecond, t.EndHour, t.EndMinute, t.EndSecond);
      text += span;
    }
    text += "; ";
  }
  return text;
}

TEST(HourMasks, AllZeroBecomesFullDays) {
  TimeSpanCfg cfg;
  ASSERT_EQ(getTimeSpanByXml(&cfg, "<TimeSpanCfg day0=\"0\" day1=\"0\" day2=\"0\" day3=\"0\" "
                                   "day4=\"0\" day5=\"0\" day6=\"0\"/>"), 0);
  for (unsigned mask : {cfg.day0, cfg.day1, cfg.day2, cfg.day3, cfg.day4, cfg.day5, cfg.day6})
    EXPECT_EQ(mask, kFull);
  ASSERT_EQ(getTimeSpanByXml(&cfg, "<x><TimeSpanCfg day3=\"4278190080\"/></x>"), 0);
  EXPECT_EQ(cfg.day3, 4278190080u);  // unsigned values above 2^31 read back
  EXPECT_EQ(cfg.day0, 0u);
  EXPECT_EQ(getTimeSpanByXml(&cfg, "<TimeSpanCfg"), -1);
  EXPECT_EQ(getTimeSpanByXml(&cfg, "<Other/>"), -1);
}

TEST(HourMasks, WrittenWithBlanksBetweenDays) {
  TimeSpanCfg cfg = {1, 2, 3, 4, 5, 6, kFull};
  XmlWriter out;
  WriteTimeSpanCfg(out, &cfg);
  EXPECT_STREQ(out.data(), "<TimeSpanCfg day0=\"1\" day1=\"2\" day2=\"3\" day3=\"4\" "
                           "day4=\"5\" day5=\"6\" day6=\"16777215\" />");
}

TEST(WorkDaysToMasks, HalfHoursRoundAsTheyDo) {
  WorkDayList list = OneSpan(2, 8, 30, 0, 17, 15, 0);
  TimeSpanCfg cfg;
  TransTimeSpan2New(&list, &cfg);
  unsigned hours_8_to_17 = 0;
  for (int h = 8; h <= 17; ++h) hours_8_to_17 |= 1u << h;
  EXPECT_EQ(cfg.day2, hours_8_to_17);
  EXPECT_EQ(cfg.day1, 0u);
  // A whole end hour is not included; a start minute above 59 skips its hour.
  list = OneSpan(7, 8, 60, 0, 10, 0, 0);
  TransTimeSpan2New(&list, &cfg);
  EXPECT_EQ(cfg.day0, 1u << 9);
  EXPECT_EQ(cfg.day6, 1u << 9);
  // Hours of 25 and above, days outside 0..7 and counts past the arrays are
  // ignored; an empty result becomes the full week.
  list = OneSpan(3, 25, 0, 0, 26, 0, 0);
  list.Entry[0].SpanCount = 1000;
  list.Count = 1000;
  list.Entry[1].Day = 9;
  TransTimeSpan2New(&list, &cfg);
  EXPECT_EQ(cfg.day3, kFull);
}

TEST(WorkDaysToMasks, TheWayBackToSpans) {
  TimeSpanCfg cfg = {0, (1u << 8) | (1u << 9) | (1u << 20), kFull, 0, 0, 0, 1u << 23};
  WorkDayList list;
  std::string printed = CapturedStdout([&] { TransTimeSpan2Old(&cfg, &list); });
  EXPECT_NE(printed.find("]workday 0: 0, bAllSet=0\n"), std::string::npos) << printed;
  EXPECT_EQ(Spans(list), "1: 8:00:00-9:59:00 20:00:00-20:59:00; 2: 0:00:00-23:59:00; "
                         "6: 23:00:00-23:59:00; ");
  // And forward again: the same masks.
  TimeSpanCfg again;
  TransTimeSpan2New(&list, &again);
  EXPECT_EQ(memcmp(&again, &cfg, sizeof(cfg)), 0);

  TimeSpanCfg full;
  SetAllTimeSpan(&full);
  TransTimeSpan2Old(&full, &list);
  EXPECT_EQ(Spans(list), "7: 0:00:00-23:59:00; ");
}

TEST(WorkDayReader, DaysSpansAndBadTimes) {
  WorkDayList list;
  std::string printed = CapturedStdout([&] {
    ASSERT_EQ(getWorkDayListByXml(&list,
                                  "<TimeSpanCfg><Workday Day=\"1\">"
                                  "<TimeSpan StartTime=\" 8:30: 0\" EndTime=\"17:15: 0\"/>"
                                  "<TimeSpan StartTime=\"8:30\" EndTime=\"17:15:00\"/>"
                                  "<TimeSpan EndTime=\"17:15:00\"/>"
                                  "</Workday><Workday Day=\"3\"/></TimeSpanCfg>"),
              0);
  });
  EXPECT_NE(printed.find("]time string length is invalid\n"), std::string::npos);
  EXPECT_NE(printed.find("]time string is null\n"), std::string::npos);
  EXPECT_EQ(Spans(list), "1: 8:30:00-17:15:00; 3:; ");  // only the first span is whole
  ASSERT_EQ(getWorkDayListByXml(&list, "<TimeSpanCfg/>"), 0);
  EXPECT_EQ(Spans(list), "7: 0:00:00-23:59:59; ");

  // Extra days and spans beyond the arrays are ignored.
  std::string many = "<TimeSpanCfg>";
  for (int d = 0; d < 50; ++d) {
    many += "<Workday Day=\"7\">";
    for (int s = 0; s < 50; ++s) many += "<TimeSpan StartTime=\"01:00:00\" EndTime=\"02:00:00\"/>";
    many += "</Workday>";
  }
  many += "</TimeSpanCfg>";
  ASSERT_EQ(getWorkDayListByXml(&list, many.c_str()), 0);
  EXPECT_EQ(list.Count, 7);
  EXPECT_EQ(list.Entry[6].SpanCount, 24);

  // What the writer writes reads back the same.
  WorkDayList written = OneSpan(4, 6, 5, 4, 22, 0, 9);
  XmlWriter out;
  WriteWorkDayList(out, &written);
  EXPECT_NE(std::string(out.data()).find("StartTime=\" 6: 5: 4\" EndTime=\"22: 0: 9\""),
            std::string::npos);
  ASSERT_EQ(getWorkDayListByXml(&list, out.data()), 0);
  EXPECT_EQ(memcmp(&list, &written, sizeof(list)), 0);
}

class TimeScope : public testing::Test {
 protected:
  void SetUp() override {
    const char* tz = getenv("TZ");
    had_tz_ = tz != nullptr;
    if (tz) old_tz_ = tz;
    setenv("TZ", "UTC", 1);
    tzset();
  }
  void TearDown() override {
    if (had_tz_) setenv("TZ", old_tz_.c_str(), 1); else unsetenv("TZ");
    tzset();
  }
  // Wednesday 2024-03-06 at the given time.
  static struct tm At(int h, int m, int s) { return tm{s, m, h, 6, 2, 124, 3, 0, 0, 0, nullptr}; }
  bool had_tz_ = false;
  std::string old_tz_;
};

TEST_F(TimeScope, StrictlyInsideASpan) {
  WorkDayList list = OneSpan(3, 8, 30, 0, 17, 0, 0);
  const struct {
    int day, h, m, s, in;
  } cases[] = {
      {3, 8, 30, 0, 0},  // the first second is outside
      {3, 8, 30, 1, 1}, {3, 16, 59, 59, 1}, {3, 17, 0, 0, 0},
      {2, 12, 0, 0, 0},  // another weekday
      {7, 12, 0, 0, 1},  // every day
  };
  for (const auto& c : cases) {
    list.Entry[0].Day = c.day;
    struct tm t = At(c.h, c.m, c.s);
    EXPECT_EQ(IsInTimeScope(&list, &t), c.in) << c.day << " " << c.h << ":" << c.m << ":" << c.s;
  }
}

TEST_F(TimeScope, SpansFromMasksEndAtTheStartOfTheirLastMinute) {
  TimeSpanCfg cfg = {0, 0, 0, (1u << 8) | (1u << 9), 0, 0, 0};
  WorkDayList list;
  CapturedStdout([&] { TransTimeSpan2Old(&cfg, &list); });
  const struct {
    int h, m, s, in;
  } cases[] = {{9, 58, 59, 1}, {9, 59, 0, 0}, {9, 59, 30, 0}};
  for (const auto& c : cases) {
    struct tm t = At(c.h, c.m, c.s);
    EXPECT_EQ(IsInTimeScope(&list, &t), c.in) << c.h << ":" << c.m << ":" << c.s;
  }
}

TEST_F(TimeScope, TheEntryPastTheCountIsLookedAt) {
  WorkDayList list = OneSpan(3, 1, 0, 0, 2, 0, 0);
  list.Entry[1] = list.Entry[0];
  list.Entry[1].Span[0] = {10, 0, 0, 11, 0, 0};
  struct tm t = At(10, 30, 0);
  EXPECT_EQ(IsInTimeScope(&list, &t), 1);
  list.Count = 7;  // never beyond the array
  for (int i = 0; i < 7; ++i) list.Entry[i] = list.Entry[0];
  EXPECT_EQ(IsInTimeScope(&list, &t), 0);
  list.Count = -3;
  EXPECT_EQ(IsInTimeScope(&list, &t), 0);
  EXPECT_EQ(IsInTimeScope(nullptr, &t), 0);
}

class TimeZoneTable : public testing::Test {
 protected:
  void TearDown() override { SetTimeZoneTablePath(nullptr); }
};

TEST_F(TimeZoneTable, OffsetsAndSummerTimeRules) {
  ASSERT_EQ(SetTimeZoneTablePath(FixturePath("qmr_tz.xml").c_str()), 0);
  DstConfig* head = ReadSummerTimeListFromXML();
  ASSERT_NE(head, nullptr);
  DstConfig* z[6] = {};
  int n = 0;
  for (DstConfig* r = head; r && n < 6; r = r->next) z[n++] = r;
  ASSERT_EQ(n, 5);  // the empty item and the foreign element are dropped
  EXPECT_EQ(z[4]->next, nullptr);

  EXPECT_STREQ(z[0]->name, "GMT-12:00 (International Date Line West)");
  EXPECT_STREQ(z[0]->rule, "UTC+12");
  // Offset; start month, week, weekday, hour; end month, week, weekday, hour.
  const int expected[5][9] = {
      {0, 0, 0, 0, 0, 0, 0, 0, 0},          // no ",M" parts: fields stay zero
      {510, 3, 2, 0, 0, 11, 1, 0, 0},       // GMT-03:30; no "/hour": 0
      {13 * 60, 3, 5, 0, 2, 10, 5, 0, 3},
      {20 * 60, 0, 0, 0, 0, 0, 0, 0, 0},    // "GMT+08" without minutes
      {-1, 0, 0, 0, 0, 0, 0, 0, 0},         // no parenthesis: not parsed
  };
  for (int i = 0; i < 5; ++i) {
    const DstConfig& r = *z[i];
    const int got[9] = {r.offset,    r.start_month, r.start_week, r.start_weekday, r.start_hour,
                        r.end_month, r.end_week,    r.end_weekday, r.end_hour};
    for (int k = 0; k < 9; ++k) EXPECT_EQ(got[k], expected[i][k]) << "zone " << i << " field " << k;
  }
  FreeSummerTimeList(head);
}

TEST_F(TimeZoneTable, MissingBadAndForeignFiles) {
  ScratchDir dir;
  SetTimeZoneTablePath((dir / "none.xml").c_str());
  std::string printed = CapturedStdout([&] { EXPECT_EQ(ReadSummerTimeListFromXML(), nullptr); });
  EXPECT_NE(printed.find("open file failed."), std::string::npos);
  WriteFile(dir / "bad.xml", "<tz><item>");
  SetTimeZoneTablePath((dir / "bad.xml").c_str());
  printed = CapturedStdout([&] { EXPECT_EQ(ReadSummerTimeListFromXML(), nullptr); });
  EXPECT_NE(printed.find("parse file failed."), std::string::npos);
  WriteFile(dir / "other.xml", "<zones/>");
  SetTimeZoneTablePath((dir / "other.xml").c_str());
  printed = CapturedStdout([&] { EXPECT_EQ(ReadSummerTimeListFromXML(), nullptr); });
  EXPECT_NE(printed.find("xmlDocument_getElementsByTagName(tz) return NULL!"), std::string::npos);
  EXPECT_EQ(SetTimeZoneTablePath(std::string(300, 'p').c_str()), -1);
  FreeSummerTimeList(nullptr);
}

TEST_F(TimeZoneTable, HostileEntries) {
  ScratchDir dir;
  std::string doc = "<tz>";
  doc += "<item value=\"" + std::string(500, 'r') + ",M99999.1.2/300,M1\">GMT+" +
         std::string(400, '9') + "(x)</item>";
  doc += "<item value=\",M,M\">GMT-99:99 (odd)</item>";
  for (int i = 0; i < 5000; ++i) doc += "<item value=\"v\">GMT+01:00 (many)</item>";
  doc += "</tz>";
  WriteFile(dir / "tz.xml", doc);
  SetTimeZoneTablePath((dir / "tz.xml").c_str());
  DstConfig* head = ReadSummerTimeListFromXML();
  ASSERT_NE(head, nullptr);
  size_t n = 0;
  for (DstConfig* r = head; r; r = r->next) ++n;
  EXPECT_EQ(n, kMaxTimeZones);
  EXPECT_EQ(strlen(head->rule), 63u);
  EXPECT_EQ(head->next->offset, (-99 + 12) * 60 - 99);
  EXPECT_EQ(head->next->start_month, 0);
  FreeSummerTimeList(head);
}

}  // namespace

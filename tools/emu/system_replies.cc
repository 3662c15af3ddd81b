#include "emu/system_replies.h"

#include <tinyxml.h>

#include <cstdio>

#include "emu/envelope.h"

namespace qvemu {
namespace {

constexpr int kMinutesPerDay = 1440;
constexpr time_t kDay = 86400;
constexpr int kRecordedDays = 3;

std::string Fmt(const char* fmt, int a, int b, int c, int d, int e, int f) {
  char buf[128];
  snprintf(buf, sizeof buf, fmt, a, b, c, d, e, f);
  return buf;
}

time_t Midnight(time_t t) { return t - t % kDay; }

bool Recorded(int minute) {
  return (minute >= 8 * 60 && minute < 12 * 60) || (minute >= 14 * 60 && minute < 18 * 60);
}

}  // namespace

std::string AbilityText(bool front_replay) {
  std::string text = "ptz + preset + talk + snapshot + sd_card + ircut + deterrence";
  if (front_replay) text += " + front_replay";
  return text;
}

std::string MediaCapabilityBody() {
  // Video values: name, codec, stream, profile, width, height, frame rate,
  // lowest, highest and default bit rate (kbit/s), GOP, reserved.
  // Audio values: name, sample rate, bits a sample, channels, kbit/s,
  // samples a frame.
  return "<RESPONSE_PARAM>\n"
         "<VideoCap CapList=\"MainStream,H264,0,2,1920,1080,25,512,8192,2048,50,0;"
         "MainStream,H265,0,1,1920,1080,25,256,4096,1024,50,0;"
         "SubStream,H264,1,2,640,360,25,128,2048,512,50,0;"
         "ThirdStream,H264,2,2,320,180,15,64,512,256,30,0\" />\n"
         "<AudioCap CapList=\"G711A,8000,16,1,64,320;G711U,8000,16,1,64,320;"
         "AAC,16000,16,1,32,1024\" />\n"
         "</RESPONSE_PARAM>";
}

std::string SystemTimeBody(time_t camera_now, const std::string& time_zone) {
  struct tm t;
  gmtime_r(&camera_now, &t);
  return "<RESPONSE_PARAM TimeZone=\"" + EscapeAttr(time_zone) + "\"" +
         Fmt(" Year=\"%d\" Month=\"%d\" Day=\"%d\" Hour=\"%d\" Minute=\"%d\" Second=\"%d\" />",
             t.tm_year + 1900, t.tm_mon + 1, t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec);
}

bool ParseSetTime(const std::string& body, time_t* when, std::string* time_zone) {
  BodyXml xml(body);
  const TiXmlElement* req = xml.Find("REQUEST_PARAM");
  std::string text = BodyXml::Attr(req, "Time");
  struct tm t = {};
  char tail = 0;
  if (sscanf(text.c_str(), "%4d%2d%2d %2d:%2d:%2d%c", &t.tm_year, &t.tm_mon, &t.tm_mday,
             &t.tm_hour, &t.tm_min, &t.tm_sec, &tail) != 6)
    return false;
  if (t.tm_year < 1970 || t.tm_year > 2099 || t.tm_mon < 1 || t.tm_mon > 12 || t.tm_mday < 1 ||
      t.tm_mday > 31 || t.tm_hour > 23 || t.tm_min > 59 || t.tm_sec > 59 || t.tm_hour < 0 ||
      t.tm_min < 0 || t.tm_sec < 0)
    return false;
  int day = t.tm_mday;
  t.tm_year -= 1900;
  t.tm_mon -= 1;
  time_t v = timegm(&t);
  if (t.tm_mday != day) return false;  // 31 February and the like roll over
  *when = v;
  *time_zone = BodyXml::Attr(req, "TimeZone");
  return true;
}

bool ReplayDistributionBody(const std::string& request_body, time_t camera_now,
                            std::string* reply_body) {
  BodyXml xml(request_body);
  const TiXmlElement* req = xml.Find("REQUEST_PARAM");
  std::string mode = BodyXml::Attr(req, "SearchMode");
  time_t today = Midnight(camera_now);
  if (mode == "1") {
    std::string start = BodyXml::Attr(req, "StartTime");
    struct tm t = {};
    if (sscanf(start.c_str(), "%4d%2d%2d", &t.tm_year, &t.tm_mon, &t.tm_mday) != 3) return false;
    t.tm_year -= 1900;
    t.tm_mon -= 1;
    time_t day = timegm(&t);
    bool has = day <= today && day > today - kRecordedDays * kDay;
    std::string minutes(kMinutesPerDay, '0');
    for (int m = 0; has && m < kMinutesPerDay; ++m) {
      if (Recorded(m)) minutes[m] = '1';
    }
    *reply_body = "<RESPONSE_PARAM SearchMode=\"1\" RecordMode=\"ALL\" StartTime=\"" +
                  EscapeAttr(start) + "\">\n<RECORD_DISTRIBUTE Distribute=\"" + minutes +
                  "\" />\n</RESPONSE_PARAM>";
    return true;
  }
  if (mode == "10") {
    std::string body = "<RESPONSE_PARAM SearchMode=\"10\" RecordMode=\"ALL\" DateCount=\"" +
                       std::to_string(kRecordedDays) + "\">\n";
    for (int i = 0; i < kRecordedDays; ++i) {
      body += "<DATE UtcTime=\"" + std::to_string(static_cast<long long>(today - i * kDay)) +
              "\" />\n";
    }
    *reply_body = body + "</RESPONSE_PARAM>";
    return true;
  }
  return false;
}

std::string FormatTime(time_t when) {
  struct tm t;
  gmtime_r(&when, &t);
  return Fmt("%04d-%02d-%02d %02d:%02d:%02d", t.tm_year + 1900, t.tm_mon + 1, t.tm_mday,
             t.tm_hour, t.tm_min, t.tm_sec);
}

std::string LogListBody(const std::vector<LogEvent>& events) {
  std::string body = "<RESPONSE_PARAM LogCount=\"" + std::to_string(events.size()) + "\">\n";
  for (const LogEvent& e : events) {
    body += "<LOG Time=\"" + FormatTime(e.when) + "\" Content=\"" + EscapeAttr(e.text) + "\" />\n";
  }
  return body + "</RESPONSE_PARAM>";
}

AlarmSpec AlarmAt(const struct tm& t, int code) {
  AlarmSpec alarm;
  alarm.year = t.tm_year + 1900;
  alarm.month = t.tm_mon + 1;
  alarm.day = t.tm_mday;
  alarm.wday = t.tm_wday;
  alarm.hour = t.tm_hour;
  alarm.minute = t.tm_min;
  alarm.second = t.tm_sec;
  alarm.code = code;
  alarm.flag = 1;
  return alarm;
}

std::string AlarmBody(const std::vector<AlarmSpec>& items) {
  std::string body = "<ALARM_REPORT_PARAM>\n";
  for (const AlarmSpec& a : items) {
    body += "<ALARM_ITEM>\n<ALARM_TIME" +
            Fmt(" Year=\"%d\" Month=\"%d\" Day=\"%d\" WDay=\"%d\" Hour=\"%d\" Minute=\"%d\"",
                a.year, a.month, a.day, a.wday, a.hour, a.minute) +
            " Second=\"" + std::to_string(a.second) + "\" />\n<ALARM_INFO Alarm_code=\"" +
            std::to_string(a.code) + "\" Alarm_flag=\"" + std::to_string(a.flag) +
            "\" Alarm_level=\"" + std::to_string(a.level) + "\" Alarm_data=\"" +
            EscapeAttr(a.data) + "\" />\n</ALARM_ITEM>\n";
  }
  return body + "</ALARM_REPORT_PARAM>";
}

}  // namespace qvemu

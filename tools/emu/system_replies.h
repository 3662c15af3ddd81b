// Reply bodies of the camera's system control codes that carry data, built
// from the camera's state. Times are the camera's own wall clock, held as
// seconds since the epoch and broken down without any time-zone shift.
#pragma once

#include <ctime>
#include <string>
#include <vector>

#include "emu/camera.h"

namespace qvemu {

// Ability list (code 1020): capabilities joined with " + ".
std::string AbilityText(bool front_replay);

// Media capabilities (code 1031): RESPONSE_PARAM with VideoCap and AudioCap
// lists, entries split by ';', values by ','.
std::string MediaCapabilityBody();

// System time (code 1048): RESPONSE_PARAM with TimeZone, Year, Month (1..12),
// Day, Hour, Minute, Second.
std::string SystemTimeBody(time_t camera_now, const std::string& time_zone);

// Reads a set-time request (code 1005: REQUEST_PARAM Time="YYYYMMDD hh:mm:ss"
// TimeZone="n"). false for a missing or impossible time.
bool ParseSetTime(const std::string& body, time_t* when, std::string* time_zone);

// Replay distribution (code 1021). SearchMode 1 asks for one day and gets a
// RECORD_DISTRIBUTE with one character a minute ('1' recorded, '0' not);
// SearchMode 10 asks for the days with recordings and gets one DATE a day
// (UtcTime: the day's midnight), newest first. The emulated storage holds
// recordings on the camera's current day and the two before it, from 08:00
// to 12:00 and 14:00 to 18:00. false for an unreadable request or another
// search mode.
bool ReplayDistributionBody(const std::string& request_body, time_t camera_now,
                            std::string* reply_body);

// Log list (code 1025) from the camera's recent events, oldest first.
struct LogEvent {
  time_t when;
  std::string text;
};
std::string LogListBody(const std::vector<LogEvent>& events);

// Alarm report body: one ALARM_ITEM (ALARM_TIME, ALARM_INFO) per alarm.
std::string AlarmBody(const std::vector<AlarmSpec>& items);

// An alarm of code (flag 1) stamped with the broken-down time t.
AlarmSpec AlarmAt(const struct tm& t, int code);

// "YYYY-MM-DD hh:mm:ss" of a camera time.
std::string FormatTime(time_t when);

}  // namespace qvemu

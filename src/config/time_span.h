// Schedules: the weekly hour mask TimeSpanCfg and the older work-day list,
// the conversions between them and the test whether a moment lies inside.
#pragma once

#include <upnp/ixml.h>

#include <ctime>

#include "quorvel/quorvel.h"

// Every mask 0xFFFFFF (every hour of every day).
void SetAllTimeSpan(TimeSpanCfg* cfg);
// An all-zero schedule becomes the full one.
void CheckTimeSpanValid(TimeSpanCfg* cfg);

// From a text: the first TimeSpanCfg element, its attributes day0..day6,
// then CheckTimeSpanValid. -1 when the text does not parse ("[%s:%u]xml
// error\r\n\n") or holds no TimeSpanCfg.
int getTimeSpanByXml(TimeSpanCfg* cfg, const char* xml);

// From a text: the first TimeSpanCfg element holding Workday children (Day,
// and TimeSpan children with StartTime and EndTime as "%2d:%2d:%2d").
// Without any Workday the list is one entry: Day 7, 00:00:00 to 23:59:59.
// Spans whose time text is missing or not eight characters long are left
// out (and logged).
int getWorkDayListByXml(WorkDayList* list, const char* xml);

// Work-day list to masks. A span sets the hours from its start hour (plus
// one when the start minute is above 59) up to, not including, its end hour
// (plus one when the end minute is above 0); so 08:30 to 17:15 sets hours 8
// to 17. Day 7 sets every day. Ends with CheckTimeSpanValid.
void TransTimeSpan2New(const WorkDayList* list, TimeSpanCfg* cfg);
// Masks to a work-day list: a full week is one entry Day 7, 00:00 to 23:59;
// otherwise one entry per day with set hours, each run of hours a..b giving
// the span a:00 to b:59. The seconds of these spans are 0, so the last
// minute of a span is outside it for IsInTimeScope.
void TransTimeSpan2Old(const TimeSpanCfg* cfg, WorkDayList* list);

// 1 when `now` lies strictly inside a span of an entry for its weekday (or
// for Day 7), else 0. The entry just past the count is looked at too (it is
// all zero in a list built by the readers).
int IsInTimeScope(const WorkDayList* list, const struct tm* now);

namespace qvconfig {

class XmlWriter;

// Element level of the two forms; readers give 0.
int ReadTimeSpanCfg(const IXML_Node* element, TimeSpanCfg* cfg);
// "<TimeSpanCfg day0=\"%u\" ... day6=\"%u\" />".
void WriteTimeSpanCfg(XmlWriter& out, const TimeSpanCfg* cfg);
int ReadWorkDayList(const IXML_Node* element, WorkDayList* list);
void WriteWorkDayList(XmlWriter& out, const WorkDayList* list);

}  // namespace qvconfig

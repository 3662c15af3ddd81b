// The time-zone table (an XML file, "/opt/ch/qmr_tz.xml" by default): one
// record per zone with its GMT offset and summer-time rule.
#pragma once

#include <cstddef>

// One zone, chained in a singly linked list.
struct DstConfig {
  char name[64];  // the item's text, for example "GMT-03:30 (Newfoundland)"
  char rule[64];  // the item's value attribute, a POSIX TZ string
  int offset;     // minutes: (hours + 12) * 60 + minutes; -1 until parsed
  unsigned char start_month, start_week, start_weekday, start_hour;
  unsigned char end_month, end_week, end_weekday, end_hour;
  DstConfig* next;
};

// The table's path, and setting it (null restores the default; paths of 256
// bytes or more are refused: -1).
const char* TimeZoneTablePath();
int SetTimeZoneTablePath(const char* path);

// Reads the table: for every item child of the first tz element a record
// (items with neither text nor value are dropped), in document order, with
// the offset parsed from the name ("GMT%c%02d:%02d" or "GMT%c%02d" before
// the first '(') and the summer-time start and end from the ",M" parts of
// the rule ("M%d.%d.%d/%d", or "M%d.%d.%d" with hour 0). The head of the
// list, or null when nothing was read. Release with FreeSummerTimeList.
DstConfig* ReadSummerTimeListFromXML();

void FreeSummerTimeList(DstConfig* head);

namespace qvconfig {

// Largest number of zones read from the table.
const size_t kMaxTimeZones = 1024;

// Parses one record's name and rule into its offset and summer-time fields.
void ParseTimeZoneRecord(DstConfig* record);

}  // namespace qvconfig

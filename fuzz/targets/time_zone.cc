// The time-zone table file: every zone's record, with its offset and
// summer-time rule parsed.
#include "config/time_zone.h"
#include "fuzz_target.h"

QV_FUZZ_TARGET(time_zone) {
  std::string path = qvfuzz::WriteScratchFile("tz.xml", data, size);
  if (path.empty() || SetTimeZoneTablePath(path.c_str()) != 0) return 0;
  FreeSummerTimeList(ReadSummerTimeListFromXML());
  SetTimeZoneTablePath(nullptr);
  return 0;
}

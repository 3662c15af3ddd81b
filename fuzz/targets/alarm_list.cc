// An alarm report: the list of alarms taken from it. Every entry's text
// must come out terminated, as the host reads it with string functions.
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_target.h"
#include "link/message_readers.h"

QV_FUZZ_TARGET(alarm_list) {
  std::string message = qvfuzz::Text(data, size);
  ALARM_ENTRY* list = nullptr;
  int n = GetAlarmList(&message[0], &list);
  if (n > kMaxAlarmItems) abort();
  for (int i = 0; i < n; ++i) {
    if (strnlen(list[i].alarm_data, sizeof(list[i].alarm_data)) == sizeof(list[i].alarm_data))
      abort();
  }
  delete[] list;
  return 0;
}

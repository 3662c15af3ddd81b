// What the library tells the program through its callbacks (status events
// and AUX responses), collected in arrival order for the main thread, which
// waits on them with a deadline.
#pragma once

#include <functional>
#include <string>

#include "quorvel/quorvel.h"

struct Notice {
  enum Kind { kStatus, kReply } kind = kStatus;
  long id = 0;            // user ID or real-play handle
  long code = 0;          // event code, or the reply's code as the library gives it
  std::string text;       // the event's text, or the reply's XML body
  bool has_alarm = false; // EVENT_PTZALARM: the alarm's record
  ALARM_ENTRY alarm{};

  // For a reply: its message code (the low 24 bits) and whether the camera
  // answered with a failure flag (the high 8 bits set).
  long ReplyCode() const { return code & 0xFFFFFF; }
  bool Refused() const { return (code & 0xFF000000L) != 0; }
};

class Notices {
 public:
  static Notices& Instance();
  // Registers the status and AUX response callbacks.
  void Install();
  // Waits up to timeout_ms for a notice after *cursor that match accepts;
  // the cursor moves past every notice looked at. False on time-out or
  // interruption (Ctrl-C).
  bool WaitFor(size_t* cursor, const std::function<bool(const Notice&)>& match, int timeout_ms,
               Notice* found);
  // The index the next notice will get: a cursor that skips what came so far.
  size_t End();
};

// Set by SIGINT and SIGTERM once InstallInterruptHandler has run.
bool Interrupted();
void InstallInterruptHandler();

// CIpcLinkThread: the thread object that runs a session's link loop.
#pragma once

#include "base/thread_class.h"

class CPTZControlClass;

class CIpcLinkThread : public CThreadClass {
 public:
  explicit CIpcLinkThread(CPTZControlClass* session);
  ~CIpcLinkThread() override;

  // The session's LinkThread(); -1 without a session.
  int Thread() override;
  // Running, and not asked to stop through the stop flag: a session can ask
  // its thread to stop without waiting for it (see CPTZControlClass::Kill).
  int IsRunning() override;
  // Also wakes the session's receive wait, which a stop must end at once:
  // an idle link thread waits until its next heartbeat.
  int Kill(int wait) override;

 private:
  CPTZControlClass* session_;
};

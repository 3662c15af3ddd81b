// CRTSPPullClass: a pull whose thread runs the RTSP client of its stream.
// Kill sets the stop flag first, so the client leaves any wait at once.
#pragma once

#include "stream/pull_class.h"

class CRTSPPullClass : public CPullClass {
 public:
  CRTSPPullClass(CRTSPObjectList* owner, int pull_mode, int auto_reconnect);
  ~CRTSPPullClass() override;

  int Kill(int wait) override;
  // Runs the stream source until the stop flag is set (or it gives up).
  int Thread() override;
  int Start(int stack_size) override;
  // Thread() and its bookkeeping; then destroys the object when a callback
  // stopped its own stream (DeleteWhenDone).
  int RunThread() override;

  // Called on the pull's own thread instead of destroying it there.
  void DeleteWhenDone() { delete_when_done_ = true; }

  // TCP reachability probe: 0 when host:port accepts a connection, -1 when
  // it does not, -2 for a name that does not resolve, -100 when the socket
  // flags cannot be set. `thread` (may be null) ends the wait early once it
  // stops running.
  static int CheckIpPort(const char* host, int port, CThreadClass* thread);

 private:
  bool delete_when_done_ = false;
};

// CRTSPObjectList: the registry of live-stream pulls by real-play handle,
// with the global real-data callback, the default auto-reconnect setting and
// the last error that IP_NET_DVR_GetLastErrorCode reads.
#pragma once

class CRTSPObjectList {
 public:
  CRTSPObjectList();
  virtual ~CRTSPObjectList();
  CRTSPObjectList(const CRTSPObjectList&) = delete;
  CRTSPObjectList& operator=(const CRTSPObjectList&) = delete;

  // Stops every pull: wait 0 only asks; non-zero also waits and destroys. 0.
  int ReleaseAll(int wait);

  // The last error, reset to 0 by reading.
  int GetLastErrorCode();
  void SetLastError(int code) { last_error_ = code; }

  // Handle 0 stores the default for new pulls and answers -8999989 (so the
  // caller goes on to the session registry). Otherwise the handle is looked
  // up -- and forgotten, as designed -- 0, or -8999989 when unknown.
  int SetAutoReconnect(long handle, int on);
  int Reconnect(long handle);

  // Window messages do not exist on this platform: does nothing, 0.
  int SetMessageHWND(int message, long window);

 private:
  int last_error_ = 0;
  int auto_reconnect_default_ = 1;
};

extern CRTSPObjectList OjbectRtspList;

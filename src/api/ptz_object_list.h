// CPTZObjectList: the table of logged-in devices (user ID = slot + 1), the
// host callbacks of the control link, and the forwarding of session events
// to them.
#pragma once

#include "base/bk_mutex.h"
#include "quorvel/quorvel.h"

class CPTZControlClass;

class CPTZObjectList {
 public:
  static const int kMaxSessions = 128;

  CPTZObjectList();
  virtual ~CPTZObjectList();
  CPTZObjectList(const CPTZObjectList&) = delete;
  CPTZObjectList& operator=(const CPTZObjectList&) = delete;

  // Stops every session: mode 0 only asks, a non-zero mode also waits for
  // each and destroys it. 0.
  int ReleaseAll(int mode);

  // Window messages do not exist on this platform: does nothing, 0.
  int SetMessageHWND(int message, long window);

  // Host callbacks (no lock: register before logging in).
  void SetStatusEventCallBack(QV_StatusEventCallBack cb, void* user);
  void SetAUXResponseCallBack(QV_AUXResponseCallBack cb, void* user);
  void SetExceptionCallBack(QV_ExceptionCallBack cb, void* user);
  int SetPlayActionEventCallBack(QV_ReplayEventCallBack cb, void* user);
  int SetReplayDataCallBack(QV_ReplayDataCallBack cb, void* user);

  // Event forwarding; each answers -1 (or -1234567 for the replay ones)
  // when no callback is registered.
  long PostStatusMsg(long reporter_id, long code, const char* text);
  long PostAuxResponse(long user_id, long code, long flag, const char* xml);
  long PostAlarm(long user_id, ALARM_ENTRY* entry);
  long OnPlayEventCallBack(long user_id, long code, long flag, char* body);
  long OnPlayBackDataRecvCallBack(long user_id, unsigned long kind, char* data,
                                  unsigned long length, FRAME_EXTDATA* extra);

  int LastError() const { return last_error_; }

 private:
  long message_window_ = 0;
  long guard_word_ = 0;  // stands before the table: user ID 0 finds nothing
  CPTZControlClass* table_[kMaxSessions] = {};
  CBkMutex table_lock_;
  int last_error_ = 0;

  QV_ExceptionCallBack exception_cb_ = nullptr;
  void* exception_user_ = nullptr;
  QV_StatusEventCallBack status_cb_ = nullptr;
  void* status_user_ = nullptr;
  QV_AUXResponseCallBack aux_cb_ = nullptr;
  void* aux_user_ = nullptr;
  QV_ReplayEventCallBack replay_event_cb_ = nullptr;
  void* replay_event_user_ = nullptr;
  QV_ReplayDataCallBack replay_data_cb_ = nullptr;
  void* replay_data_user_ = nullptr;

  int auto_reconnect_default_ = -1;
  int session_count_ = 0;
};

extern CPTZObjectList ObjectPtzList;

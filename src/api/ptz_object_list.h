// CPTZObjectList: the table of logged-in devices (user ID = slot + 1, lowest
// free slot first), the host callbacks of the control link, and the
// forwarding of session events to them.
//
// Every per-device call looks its session up with FindObjectByID, which
// returns with the table lock held; the caller runs the session operation
// and then calls ReleaseObjLock. All per-device calls are thereby
// serialised. Sessions post their events without the lock.
#pragma once

#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>

#include "base/bk_mutex.h"
#include "base/critical_section.h"
#include "discovery/search_ipc.h"
#include "quorvel/quorvel.h"

class CPTZControlClass;

class CPTZObjectList {
 public:
  static const int kMaxSessions = 128;

  CPTZObjectList();
  virtual ~CPTZObjectList();  // ReleaseAll(-1)
  CPTZObjectList(const CPTZObjectList&) = delete;
  CPTZObjectList& operator=(const CPTZObjectList&) = delete;

  // The talk group's audio sink: passes a frame to every member. 0.
  virtual long AudioFrameData(char* data, long length);
  // Error sink of the talk group. 0.
  virtual long OnError(long code, char* text);

  // ---- sessions ----------------------------------------------------------
  // Login: creates a session, starts its link thread and returns its user
  // ID; 0 for a null address, a port outside 1..65534 (last error -8999992)
  // or a full table.
  long Add(const char* ip, long port, const char* user, const char* password, long loginMode,
           long encrypt, const char* key);
  // Stores the session in the lowest free entry and starts it. The user ID,
  // or -1 when all entries are taken. An entry whose logged-out session is
  // still winding down is not free: its ID is not handed out before that
  // session has posted its last event.
  long InsertItem(CPTZControlClass* session);
  // The session of id with the table lock held (detach != 0: the entry is
  // cleared and the caller owns the session, which it must end with
  // DestroySession); null, lock released, for any ID that names no session
  // (including every ID outside 1..128).
  CPTZControlClass* FindObjectByID(long id, int detach);
  void ReleaseObjLock();
  // The first session whose address text ("ip:port") equals ipPort, with
  // the lock held; null otherwise.
  CPTZControlClass* FindObjectByIpstring(const char* ipPort);
  // Logout: detaches under the lock, tears down outside it. 0 or -9000002.
  int Delete(long id);
  // Stops every session: mode 0 only asks; any other mode also waits for
  // each and destroys it, and (except on a link thread) for the logouts
  // still finishing on helper threads. 0.
  int ReleaseAll(int mode);
  // Logouts made from a session's own callback that are still finishing.
  int PendingLogouts();
  // id 0: the auto-reconnect default of later sessions (0); otherwise the
  // session's setting.
  int SetAutoReconnect(long id, int value);

  // Window messages do not exist on this platform: does nothing, 0.
  int SetMessageHWND(int message, long window);

  // ---- host callbacks (may be changed while sessions run: each event uses
  // the pair registered at the moment it is delivered) --------------------
  void SetStatusEventCallBack(QV_StatusEventCallBack cb, void* user);
  void SetAUXResponseCallBack(QV_AUXResponseCallBack cb, void* user);
  void SetExceptionCallBack(QV_ExceptionCallBack cb, void* user);
  int SetPlayActionEventCallBack(QV_ReplayEventCallBack cb, void* user);
  int SetReplayDataCallBack(QV_ReplayDataCallBack cb, void* user);

  // ---- events: each answers -1 (-1234567 for the replay ones) without a
  // callback ---------------------------------------------------------------
  // Status event of a session (user ID) or another reporter (its ID).
  long PostStatusMsg(long reporter_id, long code, const char* text);
  // AUX response with code = (code & 0x00FFFFFF) | (flag & 0xFF000000),
  // computed in 32 bits and sign-extended.
  long PostPTZResponseMsg(CPTZControlClass* session, long code, long flag, const char* xml);
  long PostAuxResponseMsg(CPTZControlClass* session, long code, long flag, const char* xml);
  // Status event 23 with the entry as its data.
  long PostAlarmMsg(CPTZControlClass* session, ALARM_ENTRY* entry);
  long OnPlayEventCallBack(long user_id, long code, long flag, char* body);
  // Writes the replay data user pointer into extra->user first.
  long OnPlayBackDataRecvCallBack(long user_id, unsigned long kind, char* data,
                                  unsigned long length, FRAME_EXTDATA* extra);

  // ---- the talk group: AddTalk never inserts, so it stays empty ----------
  int AddTalk(long id);                      // 0
  int StartTalk(int, int, int, int);         // 0
  int StopTalk();                            // 0
  // Stops voice talk of a member: -9000002 when id is not one (always).
  int RemoveTalk(long id);

  // ---- per-device forwarders: -9000002 for an unknown ID, else the
  // session's result ------------------------------------------------------
  int GetReplayAblity(long id);
  // Session ControlPlay(action, mode, parameter): the first two values
  // change places on the way.
  int ControlPlay(long id, int mode, long action, long parameter);
  int PlayDeviceFile(long id, char* name);  // 0, without a lookup
  int PlayDeviceFile(long id, long time);   // session PlayFile(time)
  int StartAudio(long id, int audio_type, int sample_rate, int channels);
  int StopAudio(long id);
  int InputAudioData(long id, const char* data, int length);
  int GetUserData(unsigned long id, char* buffer, int* length);
  int SetUserData(unsigned long id, char* data, int length);
  int CreateIFrame(unsigned long id, int stream);
  int Reconnect(long id);
  int GetDVRConfig(long id, unsigned long code, long channel, void* body, unsigned long size,
                   unsigned long* returned);
  int SetDVRConfig(long id, unsigned long code, long channel, const void* body,
                   unsigned long size);
  int SendEncryptRawData(long id, const char* message);
  int SystemControl(long id, unsigned long code, int flag, const char* body);
  int WriteAUXString(long id, const char* message);
  int WriteAUXStringEx(long id, char* type, long code, long flag, const char* body);
  int WriteAUXStringEx1(long id, const char* data, int length);
  int PTZControlEx(long id, const char* xml);
  int SnapPic(long id, int stream, int quality, const char* path, int timeout_ms);
  // File transfers (the session's UploadFile, DownloadFile, GetDownloadPos
  // and StopDownload).
  int UploadFile(long id, long type, const char* path);
  int DownloadFile(long id, long type, const char* remote, const char* local);
  int GetProcessPos(long id, long direction);
  int StopUpload(long id);                        // stops either direction
  int StopDownload(long) { return 0; }            // no lookup
  int GetUploadState(long, long) { return 0; }    // no lookup
  int ExchangeEncrypt(long id);

  // LAN discovery, which lives and dies with the registry.
  CCSearchIPC& Search() { return search_; }

  int LastError() const { return last_error_; }
  int SessionCount() const { return session_count_; }

 private:
  template <typename Op>
  int Forward(long id, Op op);
  // Stops, waits for and deletes a session that has left the table, then
  // frees its entry. From the session's own link thread (a callback that
  // logs its device out) this finishes on a helper thread.
  void DestroySession(CPTZControlClass* session);
  void FreeEntry(long id);
  void WaitForPendingLogouts();

  long message_window_ = 0;
  CPTZControlClass* table_[kMaxSessions] = {};
  bool winding_down_[kMaxSessions] = {};  // entry left, session not yet gone
  CBkMutex table_lock_;
  std::mutex pending_mu_;
  std::condition_variable pending_cv_;
  int pending_logouts_ = 0;
  int last_error_ = 0;

  // Guards the callback pairs below; held only to copy or replace a pair,
  // never while a callback runs.
  mutable std::mutex callbacks_mu_;
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

  std::map<long, CPTZControlClass*> talk_map_;
  CRITICAL_SECTION talk_lock_;
  int auto_reconnect_default_ = -1;
  std::atomic<int> session_count_{0};
  CCSearchIPC search_;
};

extern CPTZObjectList ObjectPtzList;

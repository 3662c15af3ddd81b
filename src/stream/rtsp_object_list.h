// CRTSPObjectList: the registry of live-stream pulls by real-play handle,
// with the global real-data callback, the default auto-reconnect setting,
// the last error that IP_NET_DVR_GetLastErrorCode reads, and the watchdog
// thread that stops streams which went silent.
#pragma once

#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <vector>

#include "base/thread_class.h"
#include "quorvel/quorvel.h"
#include "quorvel/stream.h"

class CPullClass;

class CRTSPObjectList : public CThreadClass {
 public:
  // Starts the watchdog.
  CRTSPObjectList();
  ~CRTSPObjectList() override;
  CRTSPObjectList(const CRTSPObjectList&) = delete;
  CRTSPObjectList& operator=(const CRTSPObjectList&) = delete;

  // Creates and starts a pull for the stream address; returns its handle
  // (the pull's address), or 0 should the pull not start.
  long Add(const char* address, const char* user, const char* password, int link_mode,
           int stream_index, QV_RealDataCallBack callback, void* user_data);
  // Stops the pull, waits for it and destroys it. 0, or -8999989.
  int Delete(long handle);
  // Stops the watchdog and every pull, and waits for their threads (a pull
  // whose thread calls this ends when its callback returns). Wait 0 keeps
  // the pulls registered; non-zero also destroys them and empties the map.
  // Pulls forgotten by SetAutoReconnect/Reconnect are destroyed either way. 0.
  int ReleaseAll(int wait);
  // The pull, or null; erase removes the handle from the map (the pull is
  // not destroyed).
  CPullClass* GetRtspObject(long handle, int erase);

  // Delivery for pulls without a callback of their own: -1234567 when no
  // global callback is set, else its result (extra->user is filled in).
  long OnGetFrame(long handle, unsigned long type, char* data, unsigned long length,
                  FRAME_EXTDATA* extra);
  void SetRealDataCallBack(QV_RealDataCallBack callback, void* user);

  // Handle 0 stores the default for new pulls and answers -8999989 (so the
  // caller goes on to the session registry). Otherwise the handle is looked
  // up -- and forgotten, as designed: the pull keeps running but is no
  // longer known to Delete; only ReleaseAll stops it -- 0, or -8999989 when
  // unknown.
  int SetAutoReconnect(long handle, int on);
  int Reconnect(long handle);

  // Copies a pull's parameter blocks. 0, -8999989, or -8999992 for a null
  // destination of a known handle.
  int GetVideoParam(long handle, QV_VIDEO_PARAM* video);
  int GetAudioParam(long handle, QV_AUDIO_PARAM* audio);
  // Both blocks of a pull; -8999989 when the handle is unknown.
  int GetAvParam(long handle, __STREAM_AV_PARAM* param);

  // Recording of a registered stream. A name of at most one character:
  // -8999963. A name longer than 4 characters ending in ".avi" or ".AVI" is
  // one file of `a` seconds (the whole duration); any other name is a
  // storage directory with files of `a` seconds for a duration of `b`
  // seconds. Otherwise as CPullClass::StartRecord; -8999989 unknown handle.
  int StartRecord(long handle, const char* name, int a, int b);
  // Stops and destroys the recording (CRecordTask::Destroy). 0, -8999972
  // when not recording, or -8999989.
  int StopRecord(long handle);

  // Host-fed recording: registers a pull without a source for the given
  // parameters, starts its recording as StartRecord does, and returns its
  // handle (or a negative code: -8999992 null parameters, or those of
  // StartRecord; nothing stays registered then).
  long StartRecordStream(const __STREAM_AV_PARAM* param, const char* name, int a, int b);
  // One frame of a host-fed stream: type 0 video (flag 1 = key frame), 1
  // audio; time stamps in milliseconds on one clock. It goes to the
  // recording only. 0; -8999992 for another type, null data or a length of
  // 0 or less; -8999972 when its recording has ended (StopRecord);
  // -8999989 unknown handle.
  int InputRecordStream(long handle, int type, const unsigned char* data, int length, int flag,
                        double timestamp);
  // Stops the recording and forgets the handle. 0, or -8999989.
  int StopRecordStream(long handle);

  // The last error, reset to 0 by reading.
  int GetLastErrorCode();
  void SetLastError(int code) { last_error_ = code; }

  // Appends the statistics header (and one row per pull, none in this
  // library) to the file. 0, or -1.
  int WriteStatInfo(const char* path);

  // Window messages do not exist on this platform: does nothing, 0.
  int SetMessageHWND(int message, long window);

  // The watchdog body: every 3 s (scaled), stops each pull that has had no
  // data for 10 s (scaled) since its last-data tick.
  int Thread() override;
  // Wakes the watchdog out of its wait first, then CThreadClass::Kill.
  int Kill(int wait) override;
  // How many streams the watchdog has stopped so far.
  int SilentStreamsStopped() const { return silent_stopped_; }
  // True once the watchdog has entered its loop (and logged so).
  bool Watching() const { return watching_; }

 private:
  // Stops a pull and destroys it; from the pull's own thread (a callback
  // stopping its stream) the pull is left to destroy itself when it ends.
  void DestroyPull(CPullClass* pull, int wait);
  // True when the calling thread is the pull's own (inside its callback).
  static bool OnOwnThread(CPullClass* pull);
  // Removes the handle from the map and keeps the pull among the forgotten.
  CPullClass* ForgetPull(long handle);
  // The watchdog's pause of ms, sleeping throughout (one wake-up per
  // period); Kill ends it at once. False when it was ended.
  bool WatchPause(unsigned long ms);

  std::map<long, CPullClass*> pulls_;  // guarded by general_lock_
  std::vector<CPullClass*> forgotten_;  // guarded by general_lock_
  QV_RealDataCallBack global_callback_ = nullptr;
  void* global_user_ = nullptr;
  CRITICAL_SECTION callback_lock_;
  std::atomic<int> last_error_{0};
  std::atomic<int> auto_reconnect_default_{1};
  std::atomic<int> silent_stopped_{0};
  std::atomic<bool> watching_{false};
  std::mutex watch_mutex_;
  std::condition_variable watch_wake_;
  bool watch_stop_ = false;  // under watch_mutex_
};

extern CRTSPObjectList OjbectRtspList;

// CPullClass: one live stream as the host sees it. It keeps the stream's
// address, credentials and link mode, the parameter blocks and the last-data
// tick that the stream source maintains, and hands every frame to the
// stream's callback (or the registry's global one) and, while recording,
// into the record task's rings.
#pragma once

#include <atomic>
#include <cstdio>
#include <mutex>
#include <string>

#include "base/thread_class.h"
#include "quorvel/quorvel.h"
#include "quorvel/stream.h"
#include "stream/frame_action.h"

class CRTSPObjectList;
class CRecordTask;

// Reports a record task's events as status events of a real-play handle.
// It does not refer to the pull, so a task may end after its pull is gone
// (a host that stops the stream from the callback of a record event).
class CHandleEventSink : public CGetFrameActionClass {
 public:
  explicit CHandleEventSink(long handle) : handle_(handle) {}
  int OnGetVideoFrame(unsigned char*, int, int, double) override { return 0; }
  int OnGetAudioFrame(unsigned char*, int, int, double) override { return 0; }
  int OnRecordEvent(int event, const char* text) override;

 private:
  long handle_;
};

class CPullClass : public CThreadClass, public CGetFrameActionClass {
 public:
  // pull_mode 0 is real play.
  CPullClass(CRTSPObjectList* owner, int pull_mode, int auto_reconnect);
  ~CPullClass() override;

  // Stores the stream's texts, link mode, callback and user data.
  void SetStream(const char* address, const char* user, const char* password, int link_mode,
                 QV_RealDataCallBack callback, void* user_data);
  // SetStream, then stops a previous run and starts the thread. Returns
  // this (the handle's object).
  CPullClass* Add(const char* address, const char* user, const char* password, int link_mode,
                  QV_RealDataCallBack callback, void* user_data);

  // The real-play handle: the object's address.
  long RealPlayHandle() const { return reinterpret_cast<long>(this); }

  // Frame entry points of stream sources (CGetFrameActionClass).
  int OnGetVideoFrame(unsigned char* data, int length, int flag, double timestamp) override;
  int OnGetAudioFrame(unsigned char* data, int length, int flag, double timestamp) override;
  // A record event goes to the host's status callback with this handle.
  int OnRecordEvent(int event, const char* text) override;
  // Stores the blocks and delivers them as a type-2 frame.
  int OnGetAvParam(const __STREAM_AV_PARAM& param, double timestamp);

  // Delivery to the host: type 0 video, 1 audio, 2 parameter block; any
  // other type prints "bug, type:%d" and answers -1.
  virtual int OnCallBack(unsigned char* data, int length, int flag, double timestamp, int type);
  int OnGetMediaType(unsigned char* data, int length, int flag, double timestamp, int type);

  // A status event with this handle as the id (the host's callback result).
  long ReportStatus(long code, const char* text);

  // Parameter blocks, copied under the object's lock.
  void SetAvParam(const __STREAM_AV_PARAM& param);
  void GetAvParam(__STREAM_AV_PARAM* param);

  // Milliseconds of the monotonic clock at the last data; 0 = none yet.
  unsigned long LastDataTick() const { return last_data_tick_; }
  void SetLastDataTick(unsigned long tick) { last_data_tick_ = tick; }

  const std::string& Address() const { return address_; }
  const std::string& UserName() const { return user_; }
  const std::string& Password() const { return password_; }
  int LinkMode() const { return link_mode_; }
  int PullMode() const { return pull_mode_; }
  int AutoReconnect() const { return auto_reconnect_; }
  int IsMainStream() const { return main_stream_; }
  void SetMainStream(int main_stream) { main_stream_ = main_stream; }

  // The host stopped this stream (as opposed to the watchdog or the source
  // giving up).
  void MarkStoppedByHost() { stopped_by_host_ = true; }
  bool StoppedByHost() const { return stopped_by_host_; }

  // Pull objects alive in the process.
  static int LiveCount() { return live_count_; }

  // Starts a record task on this stream's parameters as they are known now
  // (see CRecordTask for the defaults it takes for what is not): `name` is
  // the storage directory, or with by_file_name the ".avi" file. The task
  // reports its events with this stream's handle. 0; -8999973 while
  // recording; -8999971 when the record thread does not start.
  int StartRecord(const char* name, int max_file_seconds, int duration_seconds,
                  int by_file_name);
  // Stops the task (its open file is closed and renamed) and destroys it
  // (CRecordTask::Destroy). 0, or -8999972 when not recording.
  int StopRecord();
  // Takes the record task away from the stream (no frame reaches it any
  // more) and hands it to the caller; null when not recording.
  CRecordTask* DetachRecordTask();
  int IsRecording();
  // One frame for the recording alone (no callback): type 0 video, 1 audio.
  // 0, or -8999972 when not recording.
  int RecordFrame(int type, const unsigned char* data, int length, int flag, double timestamp);
  // Frames waiting in the record task's rings (0 when not recording).
  int PendingRecordFrames();

  // Kept for the registry's interface; the watchdog does not reconnect. 0.
  int SetAutoReconnect(int on);
  int Reconnect();
  // Writes no statistics row. 0.
  int WriteStatInfo(FILE* file, int index);
  // Body of a callback thread; nothing to do. 0.
  int DoCallBackThread();

 protected:
  CRTSPObjectList* owner_;

 private:
  std::string address_;
  std::string user_;
  std::string password_;
  int link_mode_ = 0;
  int main_stream_ = 0;
  int pull_mode_;
  int auto_reconnect_;
  __STREAM_AV_PARAM av_param_{};
  std::atomic<unsigned long> last_data_tick_{0};
  QV_RealDataCallBack callback_ = nullptr;
  void* user_data_ = nullptr;
  std::atomic<bool> stopped_by_host_{false};
  // The "record_task_object" lock: frame delivery and the start and stop
  // of a recording meet here. A plain mutex, taken twice per frame.
  std::mutex record_lock_;
  int recording_ = 0;                    // under record_lock_
  CRecordTask* record_task_ = nullptr;   // under record_lock_
  static std::atomic<int> live_count_;
};

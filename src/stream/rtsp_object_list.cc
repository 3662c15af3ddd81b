#include "stream/rtsp_object_list.h"

#include <pthread.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <vector>

#include "base/compat.h"
#include "base/debug_log.h"
#include "base/time_scale.h"
#include "stream/ending_threads.h"
#include "stream/record_stream_pull.h"
#include "stream/record_task.h"
#include "stream/rtsp_pull_class.h"

namespace {
const unsigned long kWatchPeriodMs = 3000;
const unsigned long kSilenceLimitMs = 10000;
}  // namespace

CRTSPObjectList::CRTSPObjectList() {
  InitializeCriticalSection(&callback_lock_);
  SetDebugClassName("CRTSPObjectList");
  Start(1048576);
}

CRTSPObjectList::~CRTSPObjectList() {
  ReleaseAll(-1);
  Kill(-1);
  DeleteCriticalSection(&callback_lock_);
}

long CRTSPObjectList::Add(const char* address, const char* user, const char* password,
                          int link_mode, int stream_index, QV_RealDataCallBack callback,
                          void* user_data) {
  CRTSPPullClass* pull = nullptr;
  while ((pull = new (std::nothrow) CRTSPPullClass(this, 0, auto_reconnect_default_)) == nullptr)
    SleepUs(10);
  long handle = pull->RealPlayHandle();
  // Complete before anyone can find it by its handle.
  pull->SetStream(address, user, password, link_mode, callback, user_data);
  pull->SetMainStream(stream_index == 0 ? 1 : 0);
  {
    CriticalSectionGuard guard(&general_lock_);
    pulls_[handle] = pull;
  }
  QV_LOG("[%s:%d]==============add pitem:%s============", address);
  if (pull->Add(address, user, password, link_mode, callback, user_data) == nullptr) {
    SetLastError(0);
    return 0;
  }
  return handle;
}

CPullClass* CRTSPObjectList::GetRtspObject(long handle, int erase) {
  CriticalSectionGuard guard(&general_lock_);
  auto it = pulls_.find(handle);
  if (it == pulls_.end()) return nullptr;
  CPullClass* pull = it->second;
  if (erase) pulls_.erase(it);
  return pull;
}

bool CRTSPObjectList::OnOwnThread(CPullClass* pull) {
  return pthread_equal(pull->Handle(), pthread_self()) && pull->IsRunning();
}

void CRTSPObjectList::DestroyPull(CPullClass* pull, int wait) {
  pull->MarkStoppedByHost();
  if (OnOwnThread(pull)) {
    // A callback stops its own stream: the thread cannot join itself, so it
    // ends the stream when the callback returns and destroys the pull then.
    pull->SetStopFlag();
    ending_threads::Add();
    static_cast<CRTSPPullClass*>(pull)->DeleteWhenDone();
    return;
  }
  pull->Kill(wait);
  delete pull;
}

CPullClass* CRTSPObjectList::ForgetPull(long handle) {
  CriticalSectionGuard guard(&general_lock_);
  auto it = pulls_.find(handle);
  if (it == pulls_.end()) return nullptr;
  CPullClass* pull = it->second;
  pulls_.erase(it);
  forgotten_.push_back(pull);
  return pull;
}

int CRTSPObjectList::Delete(long handle) {
  CPullClass* pull = GetRtspObject(handle, 1);
  if (pull == nullptr) return -8999989;
  QV_LOG("[%s:%d]start kill %d thread", static_cast<int>(handle));
  DestroyPull(pull, -1);
  RemoveLock(handle);
  return 0;
}

int CRTSPObjectList::ReleaseAll(int wait) {
  Kill(-1);
  std::vector<CPullClass*> pulls;
  std::vector<CPullClass*> forgotten;
  {
    CriticalSectionGuard guard(&general_lock_);
    for (auto& entry : pulls_) pulls.push_back(entry.second);
    if (wait != 0) pulls_.clear();
    forgotten.swap(forgotten_);
  }
  // Every pull is asked first, so that all of them wind down together.
  for (auto* list : {&pulls, &forgotten}) {
    for (CPullClass* pull : *list) {
      pull->MarkStoppedByHost();
      pull->SetStopFlag();
    }
  }
  // Then each thread is waited for. Registered pulls stay registered when
  // wait is 0; forgotten ones can never be reached again and go at once. A
  // host callback that releases everything ends its own pull's thread when
  // it returns.
  for (CPullClass* pull : pulls) {
    if (wait != 0) {
      DestroyPull(pull, wait);
    } else if (!OnOwnThread(pull)) {
      pull->Kill(0);
    }
  }
  for (CPullClass* pull : forgotten) DestroyPull(pull, -1);
  ending_threads::WaitAll();
  Kill(-1);
  return 0;
}

long CRTSPObjectList::OnGetFrame(long handle, unsigned long type, char* data,
                                 unsigned long length, FRAME_EXTDATA* extra) {
  EnterCriticalSection(&callback_lock_);
  QV_RealDataCallBack callback = global_callback_;
  void* user = global_user_;
  LeaveCriticalSection(&callback_lock_);
  if (callback == nullptr) return -1234567;
  extra->user = user;
  return callback(handle, type, data, length, extra);
}

void CRTSPObjectList::SetRealDataCallBack(QV_RealDataCallBack callback, void* user) {
  CriticalSectionGuard guard(&callback_lock_);
  global_callback_ = callback;
  global_user_ = user;
}

int CRTSPObjectList::SetAutoReconnect(long handle, int on) {
  if (handle == 0) {
    auto_reconnect_default_ = on;
    return -8999989;
  }
  // Neither call touches the pull; it may be released at any time now.
  CPullClass* pull = ForgetPull(handle);
  return pull != nullptr ? pull->SetAutoReconnect(on) : -8999989;
}

int CRTSPObjectList::Reconnect(long handle) {
  CPullClass* pull = ForgetPull(handle);
  return pull != nullptr ? pull->Reconnect() : -8999989;
}

int CRTSPObjectList::GetAvParam(long handle, __STREAM_AV_PARAM* param) {
  CriticalSectionGuard guard(&general_lock_);
  auto it = pulls_.find(handle);
  if (it == pulls_.end()) return -8999989;
  it->second->GetAvParam(param);
  return 0;
}

int CRTSPObjectList::GetVideoParam(long handle, QV_VIDEO_PARAM* video) {
  __STREAM_AV_PARAM param;
  int ret = GetAvParam(handle, &param);
  if (ret == 0 && video == nullptr) return -8999992;
  if (ret == 0) *video = param.video;
  return ret;
}

int CRTSPObjectList::GetAudioParam(long handle, QV_AUDIO_PARAM* audio) {
  __STREAM_AV_PARAM param;
  int ret = GetAvParam(handle, &param);
  if (ret == 0 && audio == nullptr) return -8999992;
  if (ret == 0) *audio = param.audio;
  return ret;
}

int CRTSPObjectList::StartRecord(long handle, const char* name, int a, int b) {
  size_t len = name != nullptr ? strlen(name) : 0;
  if (len <= 1) {
    QV_LOG("[%s:%d]%s %d error ", name != nullptr ? name : "(null)", static_cast<int>(len));
    return -8999963;
  }
  bool file_name = len > 4 && (strcmp(name + len - 4, ".avi") == 0 ||
                               strcmp(name + len - 4, ".AVI") == 0);
  CriticalSectionGuard guard(&general_lock_);
  auto it = pulls_.find(handle);
  if (it == pulls_.end()) return -8999989;
  if (file_name) return it->second->StartRecord(name, a, a, 1);
  return it->second->StartRecord(name, a, b, 0);
}

int CRTSPObjectList::StopRecord(long handle) {
  CRecordTask* task = nullptr;
  {
    // The task is taken under the lock, so a stop of the stream on another
    // thread cannot free the pull meanwhile; it is stopped outside, where
    // its events may call back into the registry.
    CriticalSectionGuard guard(&general_lock_);
    auto it = pulls_.find(handle);
    if (it == pulls_.end()) return -8999989;
    task = it->second->DetachRecordTask();
  }
  if (task == nullptr) return -8999972;
  CRecordTask::Destroy(task);
  return 0;
}

long CRTSPObjectList::StartRecordStream(const __STREAM_AV_PARAM* param, const char* name, int a,
                                        int b) {
  if (param == nullptr) return -8999992;
  CRecordStreamPull* pull = nullptr;
  while ((pull = new (std::nothrow) CRecordStreamPull(this, *param)) == nullptr) SleepUs(10);
  long handle = pull->RealPlayHandle();
  {
    CriticalSectionGuard guard(&general_lock_);
    pulls_[handle] = pull;
  }
  int ret = StartRecord(handle, name, a, b);
  if (ret != 0) {
    GetRtspObject(handle, 1);
    delete pull;
    return ret;
  }
  return handle;
}

int CRTSPObjectList::InputRecordStream(long handle, int type, const unsigned char* data,
                                       int length, int flag, double timestamp) {
  if (data == nullptr || length <= 0 || (type != QV_FRAME_VIDEO && type != QV_FRAME_AUDIO))
    return -8999992;
  // Under the lock: a stop on another thread waits until the frame is in.
  CriticalSectionGuard guard(&general_lock_);
  auto it = pulls_.find(handle);
  if (it == pulls_.end()) return -8999989;
  return it->second->RecordFrame(type, data, length, flag, timestamp);
}

int CRTSPObjectList::StopRecordStream(long handle) { return Delete(handle); }

int CRTSPObjectList::GetLastErrorCode() { return last_error_.exchange(0); }

int CRTSPObjectList::WriteStatInfo(const char* path) {
  if (path == nullptr || path[0] == '\0') return -1;
  FILE* file = fopen(path, "a");
  if (file == nullptr) {
    printf("open file(%s) fail", path);
    return -1;
  }
  char header[256];
  snprintf(header, sizeof(header), "|%5s|%16s|%5s|%5s|%10s|%10s|%10s|%10s|%10s|%11s|%10s|",
           "Index", "IP", "Rtsp", "Tcp", "Lstkeyid", "Lstframid", "Lstframeer", "Lostframe",
           "Lostkey", "TotalFrames", "Lostrate");
  fputs(header, file);
  fputs(header, stdout);
  CriticalSectionGuard guard(&general_lock_);
  int index = 0;
  for (auto& entry : pulls_) entry.second->WriteStatInfo(file, index++);
  fputs("\n\n", file);
  fputs("\n\n", stdout);
  fclose(file);
  return 0;
}

int CRTSPObjectList::SetMessageHWND(int, long) { return 0; }

int CRTSPObjectList::Kill(int wait) {
  // Start's own Kill finds nothing running and leaves the flag alone.
  if (IsRunning()) {
    {
      std::lock_guard<std::mutex> guard(watch_mutex_);
      watch_stop_ = true;
    }
    watch_wake_.notify_all();
  }
  return CThreadClass::Kill(wait);
}

bool CRTSPObjectList::WatchPause(unsigned long ms) {
  std::unique_lock<std::mutex> lock(watch_mutex_);
  // Kill sets the flag under the mutex and wakes the wait, so the pause
  // needs no turns of its own to notice it.
  bool stopped = watch_wake_.wait_for(lock, std::chrono::milliseconds(ms),
                                      [this] { return watch_stop_ || !IsRunning(); });
  return !stopped;
}

int CRTSPObjectList::Thread() {
  QV_LOG("[%s:%d]CRTSPObjectList::CheckRtspConnect enter main loop....");
  watching_ = true;
  while (IsRunning()) {
    if (!WatchPause(ScaledMs(kWatchPeriodMs)) || !IsRunning()) break;
    unsigned long now = GetTickCount();
    unsigned long limit = ScaledMs(kSilenceLimitMs);
    CriticalSectionGuard guard(&general_lock_);
    for (auto& entry : pulls_) {
      CPullClass* pull = entry.second;
      unsigned long tick = pull->LastDataTick();
      if (tick == 0 || tick >= now || now - tick <= limit || pull->StopFlag()) continue;
      pull->SetStopFlag();
      pull->SetLastDataTick(now);
      ++silent_stopped_;
      QV_LOG("[%s:%d]stream %x=%d,url=%s not recv buffer in 10 seconds!",
             static_cast<unsigned>(entry.first), static_cast<int>(entry.first),
             pull->Address().c_str());
    }
  }
  QV_LOG("[%s:%d]CRTSPObjectList::CheckRtspConnect exit main loop!");
  return 0;
}

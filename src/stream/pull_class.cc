#include "stream/pull_class.h"

#include "api/ptz_object_list.h"
#include "base/compat.h"
#include "base/debug_log.h"
#include "stream/record_task.h"
#include "stream/rtsp_object_list.h"

std::atomic<int> CPullClass::live_count_{0};

CPullClass::CPullClass(CRTSPObjectList* owner, int pull_mode, int auto_reconnect)
    : owner_(owner), pull_mode_(pull_mode), auto_reconnect_(auto_reconnect) {
  ++live_count_;
}

CPullClass::~CPullClass() {
  Kill(-1);
  StopRecord();
  --live_count_;
}

int CHandleEventSink::OnRecordEvent(int event, const char* text) {
  return static_cast<int>(ObjectPtzList.PostStatusMsg(handle_, event, text != nullptr ? text : ""));
}

void CPullClass::SetStream(const char* address, const char* user, const char* password,
                           int link_mode, QV_RealDataCallBack callback, void* user_data) {
  address_ = address != nullptr ? address : "";
  user_ = user != nullptr ? user : "";
  password_ = password != nullptr ? password : "";
  link_mode_ = link_mode;
  callback_ = callback;
  user_data_ = user_data;
}

CPullClass* CPullClass::Add(const char* address, const char* user, const char* password,
                            int link_mode, QV_RealDataCallBack callback, void* user_data) {
  SetStream(address, user, password, link_mode, callback, user_data);
  Kill(-1);
  Start(1048576);
  return this;
}

int CPullClass::OnGetVideoFrame(unsigned char* data, int length, int flag, double timestamp) {
  record_lock_.lock();
  if (recording_ && record_task_ != nullptr && record_task_->IsRunning()) {
    record_task_->VideoRing()->Write(data, length, flag, timestamp);
    record_task_->FramesArrived();
  }
  record_lock_.unlock();
  return OnCallBack(data, length, flag, timestamp, QV_FRAME_VIDEO);
}

int CPullClass::OnGetAudioFrame(unsigned char* data, int length, int flag, double timestamp) {
  record_lock_.lock();
  if (recording_ && record_task_ != nullptr && record_task_->IsRunning()) {
    record_task_->AudioRing()->Write(data, length, flag, timestamp);
    record_task_->FramesArrived();
  }
  record_lock_.unlock();
  return OnCallBack(data, length, flag, timestamp, QV_FRAME_AUDIO);
}

int CPullClass::OnRecordEvent(int event, const char* text) {
  return static_cast<int>(ReportStatus(event, text != nullptr ? text : ""));
}

int CPullClass::OnGetAvParam(const __STREAM_AV_PARAM& param, double timestamp) {
  SetAvParam(param);
  __STREAM_AV_PARAM copy = param;
  return OnGetMediaType(reinterpret_cast<unsigned char*>(&copy), sizeof(copy), 0, timestamp,
                        QV_FRAME_AVPARAM);
}

int CPullClass::OnCallBack(unsigned char* data, int length, int flag, double timestamp,
                           int type) {
  return OnGetMediaType(data, length, flag, timestamp, type);
}

int CPullClass::OnGetMediaType(unsigned char* data, int length, int flag, double timestamp,
                               int type) {
  if (type != QV_FRAME_VIDEO && type != QV_FRAME_AUDIO && type != QV_FRAME_AVPARAM) {
    printf("bug, type:%d", type);
    fflush(stdout);
    return -1;
  }
  FRAME_EXTDATA extra;
  extra.flag = flag;
  extra.timestamp = timestamp;
  extra.user = user_data_;
  if (callback_ != nullptr) {
    return static_cast<int>(callback_(RealPlayHandle(), static_cast<unsigned long>(type),
                                      reinterpret_cast<char*>(data),
                                      static_cast<unsigned long>(length), &extra));
  }
  return static_cast<int>(owner_->OnGetFrame(RealPlayHandle(), static_cast<unsigned long>(type),
                                             reinterpret_cast<char*>(data),
                                             static_cast<unsigned long>(length), &extra));
}

long CPullClass::ReportStatus(long code, const char* text) {
  return ObjectPtzList.PostStatusMsg(RealPlayHandle(), code, text);
}

void CPullClass::SetAvParam(const __STREAM_AV_PARAM& param) {
  CriticalSectionGuard guard(&general_lock_);
  av_param_ = param;
}

void CPullClass::GetAvParam(__STREAM_AV_PARAM* param) {
  CriticalSectionGuard guard(&general_lock_);
  *param = av_param_;
}

int CPullClass::StartRecord(const char* name, int max_file_seconds, int duration_seconds,
                            int by_file_name) {
  if (IsRecording()) return -8999973;
  __STREAM_AV_PARAM param;
  GetAvParam(&param);
  CRecordTask* task = nullptr;
  while ((task = new (std::nothrow) CRecordTask(&param, max_file_seconds, duration_seconds,
                                                nullptr, main_stream_ ? 1 : 2)) == nullptr)
    SleepUs(10);
  task->AdoptSink(std::unique_ptr<CGetFrameActionClass>(new CHandleEventSink(RealPlayHandle())));
  task->SetStorageBase(name, by_file_name);
  if (task->Start(1048576) != 0) {
    delete task;
    return -8999971;
  }
  record_lock_.lock();
  record_task_ = task;
  recording_ = 1;
  record_lock_.unlock();
  QV_LOG("[%s:%d]record start: %s, file seconds %d, duration %d, by file name %d", name,
         max_file_seconds, duration_seconds, by_file_name);
  return 0;
}

int CPullClass::StopRecord() {
  CRecordTask* task = DetachRecordTask();
  if (task == nullptr) return -8999972;
  CRecordTask::Destroy(task);
  return 0;
}

CRecordTask* CPullClass::DetachRecordTask() {
  record_lock_.lock();
  CRecordTask* task = record_task_;
  record_task_ = nullptr;
  recording_ = 0;
  record_lock_.unlock();
  return task;
}

int CPullClass::RecordFrame(int type, const unsigned char* data, int length, int flag,
                            double timestamp) {
  record_lock_.lock();
  int ret = -8999972;
  if (recording_ && record_task_ != nullptr) {
    ret = 0;
    if (record_task_->IsRunning()) {
      CRingBuffer* ring = type == QV_FRAME_VIDEO ? record_task_->VideoRing() : record_task_->AudioRing();
      ring->Write(data, length, flag, timestamp);
      record_task_->FramesArrived();
    }
  }
  record_lock_.unlock();
  return ret;
}

int CPullClass::IsRecording() {
  record_lock_.lock();
  int recording = recording_;
  record_lock_.unlock();
  return recording;
}

int CPullClass::PendingRecordFrames() {
  record_lock_.lock();
  int pending = record_task_ != nullptr
                    ? record_task_->VideoRing()->GetReadCount() +
                          record_task_->AudioRing()->GetReadCount()
                    : 0;
  record_lock_.unlock();
  return pending;
}

int CPullClass::SetAutoReconnect(int) { return 0; }

int CPullClass::Reconnect() { return 0; }

int CPullClass::WriteStatInfo(FILE*, int) { return 0; }

int CPullClass::DoCallBackThread() { return 0; }

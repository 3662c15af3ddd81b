#include "stream/record_task.h"

#include <fcntl.h>
#include <pthread.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <new>

#include "base/compat.h"
#include "base/debug_log.h"
#include "base/time_scale.h"
#include "stream/avi_header.h"
#include "stream/disk_space.h"
#include "stream/ending_threads.h"

namespace {

const int kRingSlots = 30;
const int kMediaBufferSize = 1024000;
const unsigned long kAliveLogMs = 20000;
const int kMinFileSeconds = 10;
// A ring this full wakes the record thread (half of the 29 frames it holds).
const int kWakeFrames = 15;
// The longest idle wait: a batch of frames is written at least this often.
const unsigned long kIdleWaitMs = 300;
// The wait while a file's length is about to pass: the key frame that ends
// it is then seen as soon as it arrives, not a whole batch later.
const unsigned long kNearEndWaitMs = 50;
const int kMaxFileSeconds = 3600;

// Codec text of a parameter block, terminated within its field.
std::string CodecText(const char* field, size_t size) {
  return std::string(field, strnlen(field, size));
}

bool IsOneOf(const std::string& text, std::initializer_list<const char*> names) {
  for (const char* name : names) {
    if (strcasecmp(text.c_str(), name) == 0) return true;
  }
  return false;
}

bool PathExists(const std::string& path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0;
}

// "name.avi" -> "name<suffix>.avi" (suffix before the extension, if any).
std::string WithSuffix(const std::string& name, const std::string& suffix) {
  size_t dot = name.find_last_of('.');
  size_t slash = name.find_last_of('/');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) {
    return name + suffix;
  }
  return name.substr(0, dot) + suffix + name.substr(dot);
}

}  // namespace

std::atomic<int> CRecordTask::live_count_{0};

CRecordTask::CRecordTask(const __STREAM_AV_PARAM* params, int max_file_seconds,
                         int duration_seconds, CGetFrameActionClass* sink, int stream_kind)
    : video_ring_(kRingSlots), audio_ring_(kRingSlots) {
  ++live_count_;
  SetDebugClassName("CRecordTask");
  memset(&params_, 0, sizeof(params_));
  video_ring_.SetBufferName("record_video_inbuffer");
  audio_ring_.SetBufferName("record_audio_inbuffer");
  SetTaskParam(params, max_file_seconds, duration_seconds, sink, stream_kind);
}

CRecordTask::~CRecordTask() {
  Stop();
  --live_count_;
}

int CRecordTask::SetTaskParam(const __STREAM_AV_PARAM* params, int max_file_seconds,
                              int duration_seconds, CGetFrameActionClass* sink, int stream_kind) {
  max_file_seconds_ = max_file_seconds;
  remaining_seconds_ = duration_seconds;
  sink_ = sink;
  stream_kind_ = stream_kind;
  if (params == nullptr) return -1;
  params_ = *params;
  const QV_VIDEO_PARAM& v = params_.video;
  const QV_AUDIO_PARAM& a = params_.audio;

  std::string video = CodecText(v.codec, sizeof(v.codec));
  video_enable_ = !video.empty();
  video_codec_ = kAviVideoMpeg4;
  if (video.empty()) {
    QV_LOG("[%s:%d]media have no video stream!\n");
  } else if (IsOneOf(video, {"H264", "H.264", "AVC"})) {
    video_codec_ = kAviVideoH264;
    QV_LOG("[%s:%d]video type is H264!\n");
  } else if (IsOneOf(video, {"MPEG4", "MPEG-4", "MP4V"})) {
    QV_LOG("[%s:%d]video type is MPEG4!\n");
  } else {
    QV_LOG("[%s:%d]unkown video codec: %s\n", video.c_str());
  }

  std::string audio = CodecText(a.codec, sizeof(a.codec));
  audio_enable_ = false;
  if (audio.empty()) {
    QV_LOG("[%s:%d]media have no audio stream\n");
  } else if (IsOneOf(audio, {"G711U", "G711A", "G711", "PCMU", "PCMA"})) {
    audio_enable_ = true;
    audio_codec_ = kAviAudioG711;
    QV_LOG("[%s:%d]audio type is G711!\n");
  } else if (IsOneOf(audio, {"AAC", "MPEG4-GENERIC", "MP4A-LATM"})) {
    audio_enable_ = true;
    audio_codec_ = kAviAudioAac;
    QV_LOG("[%s:%d]audio type is AAC!\n");
  } else {
    QV_LOG("[%s:%d]unkown audio codec: %s\n", audio.c_str());
  }

  width_ = v.width > 0 ? v.width : 704;
  height_ = v.height > 0 ? v.height : 576;
  bit_rate_ = v.bit_rate > 0 ? v.bit_rate : 2097152;
  frame_rate_ = v.frame_rate > 0 ? v.frame_rate : 25;
  // Audio is described as the stream gives it, unknown values included.
  sample_rate_ = a.sample_rate;
  bits_per_sample_ = a.bits_per_sample;
  channels_ = a.channels;
  return 0;
}

int CRecordTask::SetStorageBase(const char* base, int by_file_name) {
  if (base == nullptr) return -1;
  CriticalSectionGuard guard(&general_lock_);
  storage_base_ = base;
  by_file_name_ = by_file_name;
  return 0;
}

const char* CRecordTask::GetStorageBase() { return storage_base_.c_str(); }

std::string CRecordTask::FreeSpaceFolder() {
  if (storage_base_.empty() || !by_file_name_) return storage_base_;
  return FolderOfFile(storage_base_);
}

int CRecordTask::Start(int stack_size) {
  Kill(0);
  {
    std::lock_guard<std::mutex> guard(wake_mutex_);
    stop_asked_ = false;
  }
  return CThreadClass::Start(stack_size);
}

int CRecordTask::Stop() { return Kill(-1); }

int CRecordTask::Kill(int wait) {
  if (IsRunning()) {
    {
      std::lock_guard<std::mutex> guard(wake_mutex_);
      stop_asked_ = true;
    }
    wake_.notify_all();
  }
  return CThreadClass::Kill(wait);
}

bool CRecordTask::RingHalfFull() {
  // Audio the file leaves out stays in its ring (which drops the oldest):
  // it wakes nobody.
  return video_ring_.GetReadCount() >= kWakeFrames ||
         (audio_enable_ && audio_ring_.GetReadCount() >= kWakeFrames);
}

void CRecordTask::FramesArrived() {
  if (!waiting_ || !RingHalfFull()) return;
  {
    std::lock_guard<std::mutex> guard(wake_mutex_);
    wake_pending_ = true;
  }
  wake_.notify_one();
}

void CRecordTask::WaitForFrames(unsigned long ms) {
  std::unique_lock<std::mutex> lock(wake_mutex_);
  // The writer counts its frame before it looks at waiting_, and this
  // thread sets waiting_ before it looks at the counts: a ring that filled
  // while the last batch was being written is not slept through.
  waiting_ = true;
  wake_.wait_for(lock, std::chrono::milliseconds(ms),
                 [this] { return wake_pending_ || stop_asked_ || RingHalfFull(); });
  waiting_ = false;
  wake_pending_ = false;
}

void CRecordTask::Destroy(CRecordTask* task) {
  if (task == nullptr) return;
  if (task->IsRunning() && pthread_equal(task->Handle(), pthread_self())) {
    task->delete_when_done_ = true;
    ending_threads::Add();
    task->Kill(0);  // lets the thread go; it sees the stop when the callback returns
    return;
  }
  task->Stop();
  delete task;
}

int CRecordTask::RunThread() {
  int ret = CThreadClass::RunThread();
  if (delete_when_done_) {
    delete this;
    ending_threads::Done();
  }
  return ret;
}

void CRecordTask::AdoptSink(std::unique_ptr<CGetFrameActionClass> sink) {
  owned_sink_ = std::move(sink);
  sink_ = owned_sink_.get();
}

void CRecordTask::SetClock(std::function<unsigned long()> clock) { clock_ = std::move(clock); }

unsigned long CRecordTask::NowMs() {
  if (clock_) return clock_();
  return static_cast<unsigned long>(static_cast<double>(GetTickCount()) / GetTimerScale());
}

std::vector<std::string> CRecordTask::FinishedFiles() {
  CriticalSectionGuard guard(&general_lock_);
  return finished_;
}

void CRecordTask::SendEvent(int event, const char* text) {
  if (sink_ != nullptr) sink_->OnRecordEvent(event, text != nullptr ? text : "");
}

int CRecordTask::CheckDiskFreeSpace(const char* path) { return ::CheckDiskFreeSpace(path); }

int CRecordTask::FileLengthSeconds(long long remaining_seconds, int max_file_seconds) {
  long long tolerance = static_cast<long long>(max_file_seconds) * 11 / 10;
  long long seconds = max_file_seconds;
  if (remaining_seconds <= tolerance) {
    QV_LOG("[%s:%d]All the reset duration= %d < m_max_file_seconds * 11/10 = %d, use one file "
           "to record all.\n",
           static_cast<int>(remaining_seconds), static_cast<int>(tolerance));
    seconds = remaining_seconds;
  }
  if (seconds < kMinFileSeconds) seconds = kMinFileSeconds;
  if (seconds > kMaxFileSeconds) seconds = kMaxFileSeconds;
  return static_cast<int>(seconds);
}

int CRecordTask::Thread() {
  QV_LOG("[%s:%d]enter record task, waiting buffered data...,now tick=%d\n",
         static_cast<int>(GetTickCount()));
  QV_LOG("[%s:%d]recrod thread before RecordBegin, thread id = %d,m_audio_enable=%d\n",
         static_cast<int>(GetCurrentThreadId()), audio_enable_ ? 1 : 0);

  unsigned char* media = nullptr;
  while (IsRunning() && (media = new (std::nothrow) unsigned char[kMediaBufferSize]) == nullptr) {
    SleepMs(50);
  }
  if (media == nullptr) {
    QV_LOG("[%s:%d]media_buffer = NULL--------------!!!!!!\n");
  } else {
    QV_LOG("[%s:%d]record task enter main loop, task_duration = %d\n",
           static_cast<int>(remaining_seconds_));
    unsigned long alive_at = GetTickCount();
    while (IsRunning()) {
      if (GetTickCount() - alive_at >= kAliveLogMs) {
        alive_at = GetTickCount();
        QV_LOG("[%s:%d]record thread is running ...\r\n");
      }
      // A storage folder that does not exist (a card that is not mounted)
      // has no free space: nothing is made until it appears.
      std::string folder = FreeSpaceFolder();
      if (CheckDiskFreeSpace(folder.c_str()) != 0) {
        QV_LOG("[%s:%d]freespace is too small when fork new record task, stop recording\n");
        SleepThread(static_cast<int>(ScaledMs(1000)), 10);
        SendEvent(EVENT_RECORD_DISKFREESPACE_TOOLOW, "");
        continue;
      }
      // The check runs a command and can take a while; a stop that came
      // meanwhile ends the task here instead of leaving behind a file that
      // holds nothing but its header.
      if (!IsRunning()) break;
      int ret = RecordBegin();
      if (ret != 0) {
        QV_LOG("[%s:%d]record begin failed, reader = %d\r\n", ret);
        SleepThread(static_cast<int>(ScaledMs(100)), 10);
        continue;
      }
      int file_seconds = FileLengthSeconds(remaining_seconds_, max_file_seconds_);
      // The frame buffer starts the spares the rings take in exchange for
      // the frames handed over.
      if (media != nullptr) {
        spares_[0].push_back({media, kMediaBufferSize, 0});
        media = nullptr;
      }
      RecordFrames(file_seconds);
      QV_LOG("[%s:%d]record one file exit loop,start close avi file.\n");
      unsigned long elapsed_ms = NowMs() - begin_ms_;
      ret = RecordEnd();
      if (ret != 0) QV_LOG("[%s:%d]record end failed, reader = %d\n", ret);
      remaining_seconds_ -= static_cast<long long>(elapsed_ms / 1000);
      if (remaining_seconds_ < 1) {
        QV_LOG("[%s:%d]video record thread exit,all time reached--------\r\n");
        break;
      }
    }
  }
  delete[] media;
  ReleaseBuffers();
  SendEvent(EVENT_RECORD_TASKEND, "");
  QV_LOG("[%s:%d]CRecordTask::RecordThreadAction record task exited.\n");
  return 0;
}

void CRecordTask::RecordFrames(int file_seconds) {
  const unsigned long file_ms = static_cast<unsigned long>(file_seconds) * 1000UL;
  // Frames arrive one by one; they are written in batches, so that the
  // thread wakes a few times a second rather than for every frame.
  const unsigned long idle_ms = ScaledMs(kIdleWaitMs);
  const unsigned long near_end_ms = ScaledMs(kNearEndWaitMs);
  unsigned long alive_at = GetTickCount();
  // A file given up after a failed write keeps its turn: its frames are
  // taken and dropped until its length has passed, so a failing disk is
  // not tried again at once.
  while (IsRunning()) {
    unsigned long elapsed = NowMs() - begin_ms_;
    if (GetTickCount() - alive_at >= kAliveLogMs) {
      alive_at = GetTickCount();
      QV_LOG("[%s:%d]record thread is running (has record %d miseconds,need record %d "
             "miseconds)...\r\n",
             static_cast<int>(elapsed), static_cast<int>(file_ms));
    }
    if (elapsed > file_ms) {
      int key = 0;
      if (video_ring_.IsKeyFrame(&key) && key != 0) {
        QV_LOG("[%s:%d]avi record duration reached.\n");
        FlushChunks();
        return;
      }
    }
    double video_ts = 0, audio_ts = 0;
    bool has_video = video_ring_.GetReadTimeStamp(&video_ts) != 0;
    bool has_audio = audio_enable_ && audio_ring_.GetReadTimeStamp(&audio_ts) != 0;
    if (!has_video && !has_audio) {
      // What was gathered goes to the file before the thread waits, in
      // whole blocks; the rest follows within kHoldMs.
      FlushBlocks();
      WaitForFrames(elapsed + kIdleWaitMs >= file_ms ? near_end_ms : idle_ms);
      continue;
    }
    int flag = 0, length = 0;
    double ts = 0;
    FrameBuffer taken;
    if (has_audio && (!has_video || audio_ts <= video_ts)) {
      unsigned char* frame = TakeFrame(&audio_ring_, &length, &flag, &ts, &taken);
      if (frame != nullptr && length > 0) RecordOneAudioFrame(frame, length, flag);
      FrameDone(taken);
      continue;
    }
    if (audio_enable_ && !has_audio) {
      QV_LOG("[%s:%d][%s][%d]read v\n", "record", video_frames_.load());
    }
    unsigned char* frame = TakeFrame(&video_ring_, &length, &flag, &ts, &taken);
    if (frame == nullptr || length <= 0) {
      FrameDone(taken);
      QV_LOG("[%s:%d]read video frame failed!\n");
      SleepMs(ScaledMs(10));
      continue;
    }
    RecordOneVideoFrame(frame, length, flag);
    FrameDone(taken);
  }
  FlushChunks();
}

int CRecordTask::MakeFileNames() {
  SYSTEMTIME st;
  GetLocalTime(&st);
  ++file_number_;
  if (by_file_name_) {
    final_name_ = file_number_ == 1 ? storage_base_
                                    : WithSuffix(storage_base_, "-" + std::to_string(file_number_));
  } else {
    char day[32];
    snprintf(day, sizeof(day), "/%04d-%02d-%02d", st.tm_year, st.tm_mon + 1, st.tm_mday);
    // Only the day folder is made: the storage folder itself must exist.
    std::string day_folder = storage_base_ + day;
    if (mkdir(day_folder.c_str(), 0755) != 0 && errno != EEXIST) {
      QV_LOG("[%s:%d]mkdir :%s fail\n", day_folder.c_str());
      return -1;
    }
    int number = stream_kind_;
    if (number != 1 && number != 2) number = (width_ >= 640 || height_ >= 480) ? 1 : 2;
    char name[64];
    snprintf(name, sizeof(name), "/%02d%02d%02d-%s-%d.avi", st.tm_hour, st.tm_min, st.tm_sec,
             audio_enable_ ? "av" : "vv", number);
    final_name_ = day_folder + name;
    for (int n = 2; PathExists(final_name_) || PathExists(final_name_ + ".tmp"); ++n) {
      final_name_ = day_folder + WithSuffix(name, "_" + std::to_string(n));
    }
  }
  temp_name_ = final_name_ + ".tmp";
  return 0;
}

int CRecordTask::RecordBegin() {
  video_frames_ = 0;
  audio_frames_ = 0;
  movie_bytes_ = 0;
  movie_offset_ = 0;
  first_key_seen_ = false;
  vol_written_ = false;
  if (InitAVIHeader() != 0) {
    QV_LOG("[%s:%d]InitAVIHeader failed!\n");
    return -1;
  }
  InitAVIIndex();
  if (storage_base_.empty()) {
    SendEvent(EVNET_RECORD_FILEBEGIN_ERROR, "");
    return -1;
  }
  if (MakeFileNames() != 0) return -1;
  QV_LOG("[%s:%d]localbase:%s, byfilename:%d\n", storage_base_.c_str(), by_file_name_);
  QV_LOG("[%s:%d]filename:%s\n", temp_name_.c_str());

  // A directory recording never takes over another file; a named file is
  // the caller's to overwrite.
  int flags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | (by_file_name_ ? 0 : O_EXCL);
  header_written_ = false;
  if (file_.Open(temp_name_.c_str(), flags) != 0) {
    SendEvent(EVNET_RECORD_FILEBEGIN_ERROR, temp_name_.c_str());
    QV_LOG("[%s:%d]open %s failed!\n", temp_name_.c_str());
    return -2;
  }
  SendEvent(EVNET_RECORD_FILEBEGIN, final_name_.c_str());
  if (WriteAVIHeader() != 0) {
    SendEvent(EVNET_RECORD_WRITE_FILE_ERROR, final_name_.c_str());
    QV_LOG("[%s:%d]write avi header failed!\n");
    file_.Close();
    remove(temp_name_.c_str());
    return -4;
  }
  begin_ms_ = NowMs();
  return 0;
}

int CRecordTask::RecordEnd() {
  if (!file_.IsOpen() || !FlushChunks()) return -1;
  int result = 0;
  if (WriteAVIIndex() != 0) result = -1;
  UpdateAVIHeader();
  if (WriteAVIHeader() != 0) result = -1;
  QV_LOG("[%s:%d]write finished. start flush and closing...\n");
  if (file_.Close() != 0) result = -1;
  QV_LOG("[%s:%d]change file name from: %s to %s\n", temp_name_.c_str(), final_name_.c_str());
  if (rename(temp_name_.c_str(), final_name_.c_str()) != 0) {
    QV_LOG("[%s:%d]rename %s failed, errno=%d\n", temp_name_.c_str(), errno);
    result = -1;
  }
  QV_LOG("[%s:%d]video frame = %d, audio frame = %d\n", video_frames_.load(),
         audio_frames_.load());
  if (result != 0) return result;
  CriticalSectionGuard guard(&general_lock_);
  finished_.push_back(final_name_);
  return 0;
}

void CRecordTask::GiveUpFile() { file_.Close(); }

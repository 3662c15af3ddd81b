#include "base/thread_class.h"

#include <sched.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "base/compat.h"
#include "base/debug_log.h"
#include "base/thread_map.h"

namespace {
const char kStatusLock[] = "thread_statusvar";

unsigned HandleBits(pthread_t h) { return static_cast<unsigned>(h); }
}  // namespace

CThreadClass::CThreadClass() {
  InitializeCriticalSection(&general_lock_);
  InitializeCriticalSection(&locks_guard_);
  if (pthread_attr_init(&attr_) != 0) {
    QV_LOG("[%s:%d]pthread_attr_init fail\n\n");
  } else {
    attr_ok_ = true;
  }
}

CThreadClass::~CThreadClass() {
  CThreadClass::Kill(-1);
  ReapEnded();
  EnterCriticalSection(&locks_guard_);
  for (auto& entry : locks_) {
    DeleteCriticalSection(entry.second);
    delete entry.second;
  }
  locks_.clear();
  LeaveCriticalSection(&locks_guard_);
  DeleteCriticalSection(&locks_guard_);
  DeleteCriticalSection(&general_lock_);
  if (attr_ok_) pthread_attr_destroy(&attr_);
}

int CThreadClass::SetDebugClassName(const char* name) {
  if (name == nullptr) return 0;
  strncpy(class_name_, name, sizeof(class_name_) - 1);
  class_name_[sizeof(class_name_) - 1] = '\0';
  return static_cast<int>(strlen(class_name_));
}

int CThreadClass::IsRunning() { return (running_ && !exit_) ? 1 : 0; }

int CThreadClass::IsExit() { return exit_; }

int CThreadClass::Exit() { return Kill(0); }

int CThreadClass::Thread() { return -1; }

int CThreadClass::Kill(int) {
  Lock(kStatusLock);
  if (handle_ == 0 || running_ == 0) {
    UnLock(kStatusLock);
    return 0;
  }
  running_ = 0;
  stop_ = true;
  pthread_t handle = handle_;
  UnLock(kStatusLock);

  QV_LOG("[%s:%d]begin join %#x\n\n", HandleBits(handle));
  if (!thread_in_map(handle)) {
    QV_LOG("[%s:%d]thread id %#x not exist in thread map\n\n", HandleBits(handle));
    return 0;
  }
  thread_del_map(handle);
  // A body that stops itself cannot join itself: let it go instead.
  int ret = pthread_equal(handle, pthread_self()) ? pthread_detach(handle)
                                                   : pthread_join(handle, nullptr);

  Lock(kStatusLock);
  handle_ = 0;
  exit_ = 1;
  UnLock(kStatusLock);
  QV_LOG("[%s:%d]end join %#x, return %d\n\n", HandleBits(handle), ret);
  return 0;
}

// A body that ended by itself leaves its handle behind (Kill does not join
// it). Joining it here, once it has finished, keeps its stack from leaking.
void CThreadClass::ReapEnded() {
  Lock(kStatusLock);
  pthread_t handle = handle_;
  bool ended = handle != 0 && running_ == 0 && exit_ == 1;
  if (ended) handle_ = 0;
  UnLock(kStatusLock);
  if (!ended || !thread_in_map(handle)) return;
  thread_del_map(handle);
  if (pthread_equal(handle, pthread_self())) {
    pthread_detach(handle);
  } else {
    pthread_join(handle, nullptr);
  }
}

int CThreadClass::Start(int) {
  Kill(0);
  ReapEnded();
  Lock(kStatusLock);
  handle_ = 0;
  running_ = 1;
  stop_ = false;
  exit_ = 0;
  QV_LOG("[%s:%d]begin to create thread\n\n");
  int result = 0;
  for (int attempt = 0; attempt < 100; ++attempt) {
    pthread_t h = 0;
    int ret = pthread_create(&h, nullptr, TheThread, this);
    if (ret == 0) {
      handle_ = h;
      QV_LOG("[%s:%d]pthread_create thread OK: %#x!\n\n", HandleBits(h));
    } else {
      QV_LOG("[%s:%d]pthread_create thread ERROR with ret:%d !\n\n", ret);
    }
    if (handle_ != 0) {
      QV_LOG("[%s:%d]create thread OK! handle:%#x\n\n", HandleBits(handle_.load()));
      break;
    }
    SleepUs(10);
  }
  QV_LOG("[%s:%d]create thread over\n\n");
  if (handle_ == 0) {
    QV_LOG("[%s:%d]%s::Create thread Error,code !\n", class_name_);
    running_ = 0;
    stop_ = true;
    exit_ = 1;
    result = -2;
  }
  // Entered in the thread table before the status lock is let go: a body
  // that stops itself at once must find its handle there.
  if (handle_ != 0) thread_add_map(handle_);
  UnLock(kStatusLock);
  return result;
}

int CThreadClass::RunThread() {
  int ret = Thread();
  stop_ = true;
  Lock(kStatusLock);
  running_ = 0;
  exit_ = 1;
  UnLock(kStatusLock);
  exit_ = 1;
  QV_LOG("[%s:%d][CThreadClass::RunThread()]Runthread exit now...\n\n");
  return ret;
}

int CThreadClass::SleepThread(int ms, int step_ms) {
  if (step_ms < 1) step_ms = 1;
  unsigned long start = GetTickCount();
  unsigned long now = 0;
  while (IsRunning()) {
    now = GetTickCount();
    if (now - start > static_cast<unsigned long>(ms)) break;
    SleepMs(static_cast<unsigned long>(step_ms));
  }
  // Not running at entry: no time was read and the unsigned difference from
  // 0 wraps, so the answer is 1.
  return (now - start >= static_cast<unsigned long>(ms)) ? 1 : 0;
}

int CThreadClass::EnterPause(int timeout_ms) {
  if (!IsRunning()) return -1;
  pause_ = -1;
  unsigned long start = GetTickCount();
  while (pause_ < 1 && IsRunning()) {
    if (timeout_ms > 0 && GetTickCount() - start > static_cast<unsigned long>(timeout_ms)) break;
  }
  return pause_ >= 1 ? 0 : -2;
}

int CThreadClass::IsPause() { return pause_; }

int CThreadClass::CheckAllOk() {
  if (pause_ == 0 || pause_ == 1) return 1;
  pause_ = 1;
  return 0;
}

void CThreadClass::Lock(const std::string& key) {
  EnterCriticalSection(&locks_guard_);
  CRITICAL_SECTION* cs = nullptr;
  auto it = locks_.find(key);
  if (it != locks_.end()) {
    cs = it->second;
  } else {
    while ((cs = new (std::nothrow) CRITICAL_SECTION) == nullptr) SleepUs(10);
    InitializeCriticalSection(cs);
    locks_[key] = cs;
  }
  LeaveCriticalSection(&locks_guard_);
  EnterCriticalSection(cs);
}

void CThreadClass::UnLock(const std::string& key) {
  EnterCriticalSection(&locks_guard_);
  auto it = locks_.find(key);
  if (it != locks_.end()) LeaveCriticalSection(it->second);
  LeaveCriticalSection(&locks_guard_);
}

void CThreadClass::RemoveLock(const std::string& key) {
  EnterCriticalSection(&locks_guard_);
  auto it = locks_.find(key);
  if (it != locks_.end()) {
    DeleteCriticalSection(it->second);
    delete it->second;
    locks_.erase(it);
  }
  LeaveCriticalSection(&locks_guard_);
}

static std::string LongKey(long key) {
  char buf[32];
  snprintf(buf, sizeof(buf), "%ld", key);
  return buf;
}

void CThreadClass::Lock(long key) { Lock(LongKey(key)); }
void CThreadClass::UnLock(long key) { UnLock(LongKey(key)); }
void CThreadClass::RemoveLock(long key) { RemoveLock(LongKey(key)); }

int CThreadClass::setthreadhighpriority(pthread_attr_t* attr) {
  if (getuid() != 0) return 1;
  int inherit = 0;
  int ret = pthread_attr_getinheritsched(attr, &inherit);
  if (ret != 0) {
    QV_LOG("[%s:%d]pthread_attr_getinheritsched\n%s\n\n", strerror(ret));
  } else {
    if (inherit == PTHREAD_INHERIT_SCHED) {
      inherit = PTHREAD_EXPLICIT_SCHED;
    } else {
      QV_LOG("[%s:%d]PTHREAD_EXPLICIT_SCHED\n\n");
    }
    ret = pthread_attr_setinheritsched(attr, inherit);
    if (ret != 0) QV_LOG("[%s:%d]pthread_attr_setinheritsched\n%s\n\n", strerror(ret));
  }
  int policy = 0;
  ret = pthread_attr_getschedpolicy(attr, &policy);
  if (ret != 0) QV_LOG("[%s:%d] line[%d] ret %d\n \n", __LINE__, ret);
  if (policy == SCHED_OTHER) {
    ret = pthread_attr_setschedpolicy(attr, SCHED_RR);
    if (ret != 0) QV_LOG("[%s:%d] line[%d] ret %d\n \n", __LINE__, ret);
    ret = pthread_attr_getschedpolicy(attr, &policy);
    if (ret != 0) QV_LOG("[%s:%d] line[%d] ret %d\n \n", __LINE__, ret);
  }
  int max = sched_get_priority_max(policy);
  int min = sched_get_priority_min(policy);
  struct sched_param param;
  memset(&param, 0, sizeof(param));
  ret = pthread_attr_getschedparam(attr, &param);
  if (ret != 0) QV_LOG("[%s:%d] line[%d] ret %d\n \n", __LINE__, ret);
  int current = param.sched_priority == 0 ? 30 : param.sched_priority;
  if (current >= min && current <= max) {
    int before = current;
    param.sched_priority = current + (max - current) * 6 / 10;
    ret = pthread_attr_setschedparam(attr, &param);
    if (ret != 0) QV_LOG("[%s:%d] line[%d] ret %d\n \n", __LINE__, ret);
    ret = pthread_attr_getschedparam(attr, &param);
    if (ret != 0) QV_LOG("[%s:%d] line[%d] ret %d\n \n", __LINE__, ret);
    QV_LOG("[%s:%d]before:%d now:%d\n\n", before, param.sched_priority);
  } else {
    QV_LOG("[%s:%d] priority not set\n\n");
  }
  return 0;
}

void* TheThread(void* arg) {
  prctl(PR_SET_NAME, "TheThread", 0, 0, 0);
  if (arg == nullptr) {
    QV_LOG("[%s:%d]Create Thread Error,RTPRecvThread not find in TheThread!\n\n");
    return nullptr;
  }
  static_cast<CThreadClass*>(arg)->RunThread();
  return nullptr;
}

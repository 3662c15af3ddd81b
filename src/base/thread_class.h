// CThreadClass: base of every worker thread of the library.
//
// A derived class overrides Thread() with its body; Start() runs it on a new
// thread and Kill() asks it to stop and joins it. Bodies poll IsRunning()
// (or the stop flag) at least every 300 ms in every blocking wait.
#pragma once

#include <pthread.h>

#include <atomic>
#include <map>
#include <string>

#include "base/critical_section.h"

class CThreadClass {
 public:
  CThreadClass();
  virtual int SetDebugClassName(const char* name);  // keeps 99 characters
  virtual int IsRunning();       // running and not exited
  virtual int IsExit();
  virtual int Exit();            // Kill(0)
  // Clears the running flag and joins the thread; the argument is ignored;
  // 0. A body that already ended by itself is not joined here (the next
  // Start or the destructor does it); a body that kills itself detaches.
  virtual int Kill(int wait);
  virtual ~CThreadClass();
  virtual int Thread();          // the body; the base returns -1
  // Stops a running thread first (Kill), then runs Thread() on a new one.
  // The argument is ignored. 0, or -2 when no thread could be created.
  virtual int Start(int stack_size);
  // Waits ms while running, in steps of step_ms (at least 1). 1 when the
  // time passed, 0 when the object stopped running first.
  virtual int SleepThread(int ms, int step_ms);
  // Requests a pause and spins until the body acknowledges through
  // CheckAllOk (0), the timeout passes (-2) or the object is not running (-1).
  virtual int EnterPause(int timeout_ms);
  virtual int IsPause();
  // For bodies: 1 normally; acknowledges a requested pause and returns 0.
  virtual int CheckAllOk();
  virtual int RunThread();       // Thread() and the bookkeeping of its end

  // Named locks, created on first use; a long key is formatted with "%ld".
  void Lock(const std::string& key);
  void UnLock(const std::string& key);
  void RemoveLock(const std::string& key);
  void Lock(long key);
  void UnLock(long key);
  void RemoveLock(long key);

  // Raises the priority in attr (super-user only; 1 otherwise).
  int setthreadhighpriority(pthread_attr_t* attr);

  bool StopFlag() const { return stop_; }
  void SetStopFlag() { stop_ = true; }
  // Read without a lock by other threads (is this call on my own thread?).
  pthread_t Handle() const { return handle_.load(); }

  CThreadClass(const CThreadClass&) = delete;
  CThreadClass& operator=(const CThreadClass&) = delete;

 protected:
  CRITICAL_SECTION general_lock_;  // free for the derived class

 private:
  // Joins a body that ended by itself, once it is gone from view.
  void ReapEnded();

  // The flags are read without a lock by the bodies' loops; changes by
  // Start, Kill and RunThread are made under "thread_statusvar".
  std::atomic<bool> stop_{true};
  char class_name_[100] = {};
  std::atomic<pthread_t> handle_{0};
  std::atomic<int> exit_{1};
  std::atomic<int> running_{0};
  std::atomic<int> pause_{0};
  std::map<std::string, CRITICAL_SECTION*> locks_;
  CRITICAL_SECTION locks_guard_;
  pthread_attr_t attr_;
  bool attr_ok_ = false;
};

// Entry given to pthread_create: names the thread and runs RunThread().
void* TheThread(void* arg);

// A plain mutex object (default attributes, not recursive).
#pragma once

#include <pthread.h>

class CBkMutex {
 public:
  CBkMutex() { pthread_mutex_init(&mutex_, nullptr); }
  virtual ~CBkMutex() { pthread_mutex_destroy(&mutex_); }
  CBkMutex(const CBkMutex&) = delete;
  CBkMutex& operator=(const CBkMutex&) = delete;

  int Lock() { return pthread_mutex_lock(&mutex_); }
  int Unlock() { return pthread_mutex_unlock(&mutex_); }

 private:
  pthread_mutex_t mutex_;
};

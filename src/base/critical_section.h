// Critical sections: default (non-recursive) pthread mutexes.
#pragma once

#include <pthread.h>

typedef pthread_mutex_t CRITICAL_SECTION;

int InitializeCriticalSection(CRITICAL_SECTION* cs);  // always 0
void EnterCriticalSection(CRITICAL_SECTION* cs);
void LeaveCriticalSection(CRITICAL_SECTION* cs);
void DeleteCriticalSection(CRITICAL_SECTION* cs);

// Holds a critical section for the life of a scope.
class CriticalSectionGuard {
 public:
  explicit CriticalSectionGuard(CRITICAL_SECTION* cs) : cs_(cs) { EnterCriticalSection(cs_); }
  ~CriticalSectionGuard() { LeaveCriticalSection(cs_); }
  CriticalSectionGuard(const CriticalSectionGuard&) = delete;
  CriticalSectionGuard& operator=(const CriticalSectionGuard&) = delete;

 private:
  CRITICAL_SECTION* cs_;
};

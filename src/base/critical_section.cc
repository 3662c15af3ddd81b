#include "base/critical_section.h"

#include "base/debug_log.h"

int InitializeCriticalSection(CRITICAL_SECTION* cs) {
  int ret = pthread_mutex_init(cs, nullptr);
  if (ret != 0) QV_LOG("[%s:%d]pthread_mutext_init error , ret:%d\n\n", ret);
  return 0;
}

void EnterCriticalSection(CRITICAL_SECTION* cs) {
  int ret = pthread_mutex_lock(cs);
  if (ret != 0) QV_LOG("[%s:%d]pthread_mutex_lock error , ret:%d\n\n", ret);
}

void LeaveCriticalSection(CRITICAL_SECTION* cs) {
  int ret = pthread_mutex_unlock(cs);
  if (ret != 0) QV_LOG("[%s:%d]pthread_mutex_unlock error , ret:%d\n\n", ret);
}

void DeleteCriticalSection(CRITICAL_SECTION* cs) {
  int ret = pthread_mutex_destroy(cs);
  if (ret != 0) QV_LOG("[%s:%d]pthread_mutex_destroy error , ret:%d\n\n", ret);
}

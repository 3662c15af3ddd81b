#include "base/compat.h"

#include <cstring>
#include <ctime>
#include <unistd.h>

unsigned long GetTickCount() {
  struct timespec ts;
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return static_cast<unsigned long>(ts.tv_sec) * 1000UL +
         static_cast<unsigned long>(ts.tv_nsec) / 1000000UL;
}

void GetLocalTime(SYSTEMTIME* st) {
  if (st == nullptr) return;
  time_t now = time(nullptr);
  struct tm tmv;
  localtime_r(&now, &tmv);
  *st = tmv;
  st->tm_year += 1900;
}

unsigned long GetCurrentThreadId() {
  return static_cast<unsigned long>(pthread_self());
}

int WSAGetLastError() { return 12345; }

int strcpy_s(char* dst, int size, const char* src) {
  if (dst == nullptr || src == nullptr || size <= 0) return 0;
  strncpy(dst, src, static_cast<size_t>(size));
  return 0;
}

void SleepMs(unsigned long ms) { usleep(static_cast<useconds_t>(ms * 1000UL)); }

void SleepUs(unsigned long us) { usleep(static_cast<useconds_t>(us)); }

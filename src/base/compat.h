// Win32-flavoured helpers over POSIX: ticks, local time, thread ids.
#pragma once

#include <pthread.h>
#include <ctime>

// Calendar record with the layout of struct tm. GetLocalTime makes only the
// year absolute; the month stays 0-based.
typedef struct tm SYSTEMTIME;

// Milliseconds of the monotonic clock.
unsigned long GetTickCount();

// localtime_r of now, year + 1900, month 0-based. Null does nothing.
void GetLocalTime(SYSTEMTIME* st);

// pthread_self() as a number.
unsigned long GetCurrentThreadId();

// Always 12345: the socket layer's last error is deliberately not reported.
int WSAGetLastError();

// strncpy(dst, src, size); no terminator is forced. 0.
int strcpy_s(char* dst, int size, const char* src);

// Sleeps the calling thread.
void SleepMs(unsigned long ms);
void SleepUs(unsigned long us);

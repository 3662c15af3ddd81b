/*
 * The whole configuration record (IPCConfig) that mirrors a camera's
 * configuration document, and the schedule records of the time rules.
 *
 * Included from quorvel.h. Plain fixed-size records, copied by value.
 */
#ifndef QUORVEL_CONFIG_DOCUMENT_H
#define QUORVEL_CONFIG_DOCUMENT_H

#include "quorvel/config_network.h"
#include "quorvel/config_media.h"
#include "quorvel/config_alarm.h"
#include "quorvel/config_system.h"

/* ------------------------------------------------------------------ */
/* Work-day schedules (the older form of TimeSpanCfg)                  */
/* ------------------------------------------------------------------ */

/* One span of a day, start and end as hour, minute, second. */
typedef struct WorkTimeSpan {
  int StartHour, StartMinute, StartSecond;
  int EndHour, EndMinute, EndSecond;
} WorkTimeSpan;

#define QV_MAX_WORKDAY_SPANS 24
#define QV_MAX_WORKDAYS 7

/* One Workday element: Day 0 (Sunday) to 6, or 7 for every day. */
typedef struct WorkDay {
  int Day;
  int SpanCount;
  WorkTimeSpan Span[QV_MAX_WORKDAY_SPANS];
} WorkDay;

/* A TimeSpanCfg element holding Workday children. */
typedef struct WorkDayList {
  int Count;
  WorkDay Entry[QV_MAX_WORKDAYS];
} WorkDayList;
QV_STATIC_ASSERT(sizeof(WorkDayList) == 4092, "WorkDayList layout");

/* ------------------------------------------------------------------ */
/* The whole configuration                                             */
/* ------------------------------------------------------------------ */

/* Element ConfigVersion: its attribute Version. */
typedef struct ConfigVersion {
  char Version[64];
} ConfigVersion;

/*
 * The whole configuration (root element IPCConfig; a VEXORAConfig root reads
 * the same), one member per section, in this order. The record is large
 * (about 110 KiB): allocate it on the heap rather than on a thread's stack.
 */
typedef struct IPCConfig {
  SystemConfig system;             /* SystemConfig */
  ServerConfig server;             /* ServerConfig */
  MediaStreamConfig mediaStream;   /* MediaStreamConfig */
  PlatformConfig platform;         /* PlatformConfig */
  RecordConfig record;             /* RecordConfig */
  NetworkConfig network;           /* NetworkConfig */
  GB28181Config gb28181;           /* GB28181Config */
  ConfigVersion version;           /* ConfigVersion */
  MediaConfig media;               /* MediaConfig */
  AlarmConfig alarm;               /* AlarmConfig */
} IPCConfig;

#endif /* QUORVEL_CONFIG_DOCUMENT_H */

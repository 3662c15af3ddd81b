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

/* Capacity of a kept section text, terminator included. */
#define QV_CONFIG_SECTION_TEXT_MAX 16384

/*
 * A section whose typed record is not part of this library yet (system,
 * server, platform, record, GB28181, alarm).
 *
 * Loading the whole document keeps such a section's element exactly as the
 * file holds it, from its start tag to the end of its end tag, so that saving
 * the whole record writes it back byte for byte (apart from carriage returns,
 * which every save turns into blanks). Nothing in it is interpreted.
 *
 *  - length 0: the document had no such element; a save writes it empty
 *    (its start tag and end tag).
 *  - overflow 1: the element was longer than QV_CONFIG_SECTION_TEXT_MAX - 1
 *    bytes and could not be kept. A whole save of such a record fails (-1,
 *    file unchanged) rather than drop the section, and the file counts as
 *    not valid for CheckUserConfigFileValidity. Writing single sections into
 *    the file is unaffected: they leave every other section as it stands.
 */
typedef struct ConfigSectionText {
  unsigned int length;                     /* bytes in text */
  unsigned int overflow;                   /* 1: too long, not kept */
  char text[QV_CONFIG_SECTION_TEXT_MAX];   /* the element, zero-terminated */
} ConfigSectionText;

/*
 * The whole configuration (root element IPCConfig; a VEXORAConfig root reads
 * the same), one member per section, in this order. The record is large
 * (about 110 KiB): allocate it on the heap rather than on a thread's stack.
 */
typedef struct IPCConfig {
  ConfigSectionText system;        /* SystemConfig */
  ConfigSectionText server;        /* ServerConfig */
  MediaStreamConfig mediaStream;   /* MediaStreamConfig */
  ConfigSectionText platform;      /* PlatformConfig */
  ConfigSectionText record;        /* RecordConfig */
  NetworkConfig network;           /* NetworkConfig */
  ConfigSectionText gb28181;       /* GB28181Config */
  ConfigVersion version;           /* ConfigVersion */
  MediaConfig media;               /* MediaConfig */
  ConfigSectionText alarm;         /* AlarmConfig */
} IPCConfig;

#endif /* QUORVEL_CONFIG_DOCUMENT_H */

/* Records that the library passes to the host through its callbacks. */
#ifndef QUORVEL_RECORDS_H
#define QUORVEL_RECORDS_H

/* One alarm, handed to the status event callback with EVENT_PTZALARM. */
typedef struct ALARM_ENTRY {
  int year;          /* ALARM_TIME attributes, as the camera sends them */
  int month;
  int day;
  int wday;
  int hour;
  int minute;
  int second;
  int alarm_code;    /* ALARM_INFO: kind of alarm */
  int alarm_flag;
  int alarm_level;
  char alarm_data[128]; /* always terminated */
} ALARM_ENTRY;
QV_STATIC_ASSERT(sizeof(ALARM_ENTRY) == 168, "ALARM_ENTRY layout");

/* Extra data handed with every frame to the data callbacks. */
typedef struct FRAME_EXTDATA {
  int flag;          /* frame flag; for video, non-zero marks a key frame */
  double timestamp;  /* frame time stamp */
  void* user;        /* the user pointer registered with the callback */
} FRAME_EXTDATA;
QV_STATIC_ASSERT(sizeof(FRAME_EXTDATA) == 24, "FRAME_EXTDATA layout");

#endif /* QUORVEL_RECORDS_H */

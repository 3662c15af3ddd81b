/*
 * A host program that drives one camera through the public header only:
 * logs in, moves the head up-left and stops it, reads the camera's network
 * section (configuration code 305, LANConfig), reads, edits and writes back
 * its motion detection section and reads it again to show the change, and
 * prints every event the library delivered.
 * Usage: device_demo HOST PORT [USER PASSWORD]
 * Exit status 0 when it logged in, read the section and saw the change.
 */
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "quorvel/quorvel.h"

#define LAN_SECTION 305

static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
static pthread_cond_t changed = PTHREAD_COND_INITIALIZER;
static int logged_in;
static int section_read;
static int events;
/* The latest motion detection section (reply 802) and whether the camera
 * took the set (reply 822). */
static char motion_xml[16384];
static int motion_replies;
static int motion_set;

static long on_status(long id, long code, const char* data, void* user) {
  (void)user;
  pthread_mutex_lock(&lock);
  ++events;
  if (code == EVENT_PTZALARM) {
    const ALARM_ENTRY* a = (const ALARM_ENTRY*)data;
    printf("  event %2ld  session %ld: alarm code %d at %04d-%02d-%02d %02d:%02d:%02d\n", code,
           id, a->alarm_code, a->year, a->month, a->day, a->hour, a->minute, a->second);
  } else {
    printf("  event %2ld  session %ld: %s\n", code, id,
           data != NULL && data[0] != '\0' ? data : "(no text)");
  }
  if (code == EVENT_LOGINOK) logged_in = 1;
  pthread_cond_broadcast(&changed);
  pthread_mutex_unlock(&lock);
  return 0;
}

static long on_reply(long id, long code, const char* xml, void* user) {
  (void)user;
  pthread_mutex_lock(&lock);
  ++events;
  printf("  reply %4ld session %ld:%s\n", code, id, xml);
  if (code == LAN_SECTION) section_read = 1;
  if (code == QV_CFG_GET_MOTION_DETECT) {
    snprintf(motion_xml, sizeof(motion_xml), "%s", xml != NULL ? xml : "");
    ++motion_replies;
  }
  if (code == QV_CFG_SET_MOTION_DETECT) motion_set = 1;
  pthread_cond_broadcast(&changed);
  pthread_mutex_unlock(&lock);
  return 0;
}

/* Waits up to seconds for *flag to reach at least n. */
static int wait_count(int* flag, int n, int seconds) {
  struct timespec until;
  clock_gettime(CLOCK_REALTIME, &until);
  until.tv_sec += seconds;
  pthread_mutex_lock(&lock);
  while (*flag < n && pthread_cond_timedwait(&changed, &lock, &until) == 0) {
  }
  int ok = *flag >= n;
  pthread_mutex_unlock(&lock);
  return ok;
}

static int wait_for(int* flag, int seconds) { return wait_count(flag, 1, seconds); }

/* Asks for the motion detection section and reads the reply into md. */
static int read_motion(long id, MotionDetectAlarm* md) {
  pthread_mutex_lock(&lock);
  int seen = motion_replies;
  pthread_mutex_unlock(&lock);
  if (IP_NET_DVR_GET_MotionDetectAlarm(id) != 0 || !wait_count(&motion_replies, seen + 1, 10))
    return 0;
  pthread_mutex_lock(&lock);
  int ok = IP_NET_DVR_Alarm_getMotionDetectByXml(md, motion_xml) == 0;
  pthread_mutex_unlock(&lock);
  return ok;
}

int main(int argc, char** argv) {
  if (argc < 3) {
    fprintf(stderr, "usage: %s HOST PORT [USER PASSWORD]\n", argv[0]);
    return 2;
  }
  char* user = argc > 4 ? argv[3] : "admin";
  char* password = argc > 4 ? argv[4] : "admin";
  unsigned short port = (unsigned short)atoi(argv[2]);

  IP_NET_DVR_Init();
  IP_NET_DVR_SetStatusEventCallBack(on_status, NULL);
  IP_NET_DVR_SetAUXResponseCallBack(on_reply, NULL);

  printf("logging in to %s:%u as %s\n", argv[1], port, user);
  long id = IP_NET_DVR_Login(argv[1], port, user, password, NULL);
  if (id == 0 || !wait_for(&logged_in, 10)) {
    printf("login failed\n");
    IP_NET_DVR_Cleanup();
    return 1;
  }

  printf("moving the head up-left, then stopping it\n");
  long moved = IP_NET_DVR_PTZControl(id, QV_PTZ_LEFT_UP, 3, 3);
  long stopped = IP_NET_DVR_PTZControl(id, QV_PTZ_STOP, 0, 0);
  printf("  PTZControl: %ld, %ld\n", moved, stopped);

  printf("reading configuration section %d (LANConfig)\n", LAN_SECTION);
  long asked = IP_NET_DVR_GetDVRConfig(id, LAN_SECTION, 0, NULL, 0, NULL);
  int read = asked == 0 && wait_for(&section_read, 10);

  printf("reading, editing and writing back the motion detection section\n");
  MotionDetectAlarm md;
  int changed_ok = 0;
  if (read_motion(id, &md)) {
    int before = md.Sensitivity;
    md.Sensitivity = before == 5 ? 2 : 5;
    md.NightStartTime.Hour = 20;
    char* xml = IP_NET_DVR_XMLGET_MDAlarmConfig(&md);
    printf("  sending:\n%s", xml != NULL ? xml : "(nothing)\n");
    free(xml);
    if (IP_NET_DVR_SET_MotionDetectAlarm(id, &md) == 0 && wait_for(&motion_set, 10)) {
      MotionDetectAlarm again;
      changed_ok = read_motion(id, &again) && again.Sensitivity == md.Sensitivity &&
                   again.NightStartTime.Hour == 20;
      printf("  sensitivity %d -> %d, night from %2d:%02d; the camera %s the change\n", before,
             again.Sensitivity, again.NightStartTime.Hour, again.NightStartTime.Minute,
             changed_ok ? "shows" : "does NOT show");
    }
  }

  IP_NET_DVR_Logout(id);
  pthread_mutex_lock(&lock);
  printf("%d events received; section %s\n", events, read ? "read" : "NOT read");
  pthread_mutex_unlock(&lock);
  IP_NET_DVR_Cleanup();
  return read && changed_ok ? 0 : 1;
}

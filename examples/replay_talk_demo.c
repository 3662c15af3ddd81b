/*
 * A host program that plays a camera's recording and talks to it, through
 * the public header only: logs in, asks which days hold recordings, replays
 * the newest day from 08:00 for a few seconds (counting the frames the
 * replay data callback receives), then starts voice talk and sends two
 * seconds of G.711 frames. Usage: replay_talk_demo HOST PORT [SECONDS]
 * Exit status 0 when frames arrived and the camera took the talk.
 */
#define _POSIX_C_SOURCE 200809L

#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include "quorvel/quorvel.h"

#define RECORD_SEARCH 1021

static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
static pthread_cond_t changed = PTHREAD_COND_INITIALIZER;
static int logged_in, talking;
static char dates_reply[4096];
static long video_frames, audio_frames, key_frames, media_bytes;
static QV_REPLAY_PARAM param;
static int have_param;

static long on_status(long id, long code, const char* data, void* user) {
  (void)id;
  (void)user;
  pthread_mutex_lock(&lock);
  if (code == EVENT_LOGINOK) logged_in = 1;
  if (code == EVENT_STARTAUDIOOK) talking = 1;
  if (code >= EVENT_STARTAUDIOOK && code <= EVENT_STOPAUDIOFAILED) {
    printf("  talk event %ld: %s\n", code, data);
  }
  pthread_cond_broadcast(&changed);
  pthread_mutex_unlock(&lock);
  return 0;
}

static long on_reply(long id, long code, const char* xml, void* user) {
  (void)id;
  (void)user;
  pthread_mutex_lock(&lock);
  if (code == RECORD_SEARCH && dates_reply[0] == '\0') {
    snprintf(dates_reply, sizeof(dates_reply), "%s", xml);
  }
  pthread_cond_broadcast(&changed);
  pthread_mutex_unlock(&lock);
  return 0;
}

static long on_replay_event(long id, long code, long flag, char* body, void* user) {
  (void)id;
  (void)user;
  printf("  replay event: code %ld flag %ld%s\n", code, flag, body != NULL ? " (with a body)" : "");
  return 0;
}

static long on_replay_data(long id, unsigned long kind, char* data, unsigned long length,
                           FRAME_EXTDATA* extra) {
  (void)id;
  pthread_mutex_lock(&lock);
  if (kind == QV_REPLAY_KIND_PARAM && length == sizeof(param)) {
    memcpy(&param, data, sizeof(param));
    have_param = 1;
  } else if (kind == QV_REPLAY_KIND_VIDEO) {
    ++video_frames;
    if (extra->flag) ++key_frames;
    media_bytes += (long)length - (long)sizeof(QV_REPLAY_TRAILER);
  } else {
    ++audio_frames;
    media_bytes += (long)length - (long)sizeof(QV_REPLAY_TRAILER);
  }
  pthread_mutex_unlock(&lock);
  return 0;
}

static void sleep_ms(long ms) {
  struct timespec t = {ms / 1000, (ms % 1000) * 1000000L};
  nanosleep(&t, NULL);
}

/* Waits up to seconds for *flag (or a non-empty text). */
static int wait_for(const int* flag, const char* text, int seconds) {
  struct timespec until;
  clock_gettime(CLOCK_REALTIME, &until);
  until.tv_sec += seconds;
  pthread_mutex_lock(&lock);
  while (!(flag != NULL ? *flag : text[0] != '\0') &&
         pthread_cond_timedwait(&changed, &lock, &until) == 0) {
  }
  int ok = flag != NULL ? *flag : text[0] != '\0';
  pthread_mutex_unlock(&lock);
  return ok;
}

int main(int argc, char** argv) {
  if (argc < 3) {
    fprintf(stderr, "usage: %s HOST PORT [SECONDS]\n", argv[0]);
    return 2;
  }
  int seconds = argc > 3 ? atoi(argv[3]) : 3;
  IP_NET_DVR_Init();
  IP_NET_DVR_SetStatusEventCallBack(on_status, NULL);
  IP_NET_DVR_SetAUXResponseCallBack(on_reply, NULL);
  IP_NET_DVR_SetReplayEventCallBack(on_replay_event, NULL);
  IP_NET_DVR_SetReplayDataCallBack(on_replay_data, NULL);

  long id = IP_NET_DVR_Login(argv[1], (unsigned short)atoi(argv[2]), "admin", "admin", NULL);
  if (id == 0 || !wait_for(&logged_in, NULL, 10)) {
    printf("login failed\n");
    IP_NET_DVR_Cleanup();
    return 1;
  }
  for (int i = 0; i < 100 && IP_NET_DVR_GetReplayAblity(id) < 0; ++i) sleep_ms(50);
  printf("replay ability: %ld\n", IP_NET_DVR_GetReplayAblity(id));

  unsigned int days[8] = {0};
  IP_NET_DVR_GetReplay_Dates_Distribute(id);
  if (!wait_for(NULL, dates_reply, 10) ||
      IP_NET_DVR_GetReplay_Dates_DistributeByXml(dates_reply, days, 8) != 0 || days[0] == 0) {
    printf("no days with recordings\n");
    IP_NET_DVR_Cleanup();
    return 1;
  }
  long start = (long)days[0] + 8 * 3600;
  printf("replaying from 08:00 of the newest recorded day (%ld) for %d s\n", start, seconds);
  long asked = IP_NET_DVR_ReplayByTime(id, start);
  sleep_ms(1000L * seconds);
  IP_NET_DVR_ControlReplay(id, QV_REPLAY_STOP, 0);
  pthread_mutex_lock(&lock);
  if (have_param) {
    printf("  recording: %d s, video %s %dx%d %d fps, audio %s %d Hz\n", param.video_seconds,
           param.av.video.codec, param.av.video.width, param.av.video.height,
           param.av.video.frame_rate, param.av.audio.codec, param.av.audio.sample_rate);
  }
  printf("  %ld video frames (%ld key frames), %ld audio frames, %ld bytes\n", video_frames,
         key_frames, audio_frames, media_bytes);
  int replayed = asked == 0 && video_frames > 0;
  pthread_mutex_unlock(&lock);

  printf("talking: G.711, two seconds of 20 ms frames\n");
  IP_NET_DVR_StartVoiceCom(id, 0, 8000, 1);
  int talked = wait_for(&talking, NULL, 10);
  char frame[160];
  memset(frame, 0xFF, sizeof(frame)); /* mu-law silence */
  int sent = 0;
  for (int i = 0; talked && i < 100; ++i) {
    if (IP_NET_DVR_InputAudioData(id, frame, (int)sizeof(frame)) == (long)sizeof(frame)) ++sent;
    sleep_ms(20);
  }
  printf("  %d frames handed in\n", sent);
  IP_NET_DVR_StopVoiceCom(id);
  sleep_ms(200);

  IP_NET_DVR_Logout(id);
  IP_NET_DVR_Cleanup();
  printf("replay %s, talk %s\n", replayed ? "ok" : "FAILED", talked && sent > 0 ? "ok" : "FAILED");
  return replayed && talked && sent > 0 ? 0 : 1;
}

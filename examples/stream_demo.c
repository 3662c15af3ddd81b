/*
 * Live stream demo: plays a camera's H.264 stream for a few seconds, records
 * it meanwhile into an AVI file, and prints what arrived.
 * Usage: stream_demo ADDRESS PORT [USER PASSWORD [SECONDS [FILE.avi]]]
 * (for the emulator: quorvel-emu --rtsp-port 0 prints the port).
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "quorvel/quorvel.h"

struct counts {
  long video;
  long key;
  long audio;
  long params;
  long bytes;
  double first_ts;
  double last_ts;
};

static long on_frame(long handle, unsigned long type, char* data, unsigned long length,
                     FRAME_EXTDATA* extra) {
  struct counts* c = (struct counts*)extra->user;
  (void)handle;
  (void)data;
  if (type == QV_FRAME_VIDEO) {
    if (c->video == 0) c->first_ts = extra->timestamp;
    c->last_ts = extra->timestamp;
    c->video++;
    if (extra->flag) c->key++;
  } else if (type == QV_FRAME_AUDIO) {
    c->audio++;
  } else if (type == QV_FRAME_AVPARAM) {
    c->params++;
  }
  c->bytes += (long)length;
  return 0;
}

static long on_status(long id, long code, const char* text, void* user) {
  (void)user;
  printf("status: stream %lx event %ld %s\n", (unsigned long)id, code, text ? text : "");
  return 0;
}

int main(int argc, char** argv) {
  struct counts c;
  ClientInfo info;
  QV_VIDEO_PARAM video;
  QV_AUDIO_PARAM audio;
  long handle;
  int seconds;
  struct timespec pause = {0, 100 * 1000 * 1000};
  int i;
  int recording = 0;

  if (argc < 3) {
    fprintf(stderr, "usage: %s ADDRESS PORT [USER PASSWORD [SECONDS [FILE.avi]]]\n", argv[0]);
    return 2;
  }
  seconds = argc > 5 ? atoi(argv[5]) : 4;
  memset(&c, 0, sizeof(c));
  memset(&info, 0, sizeof(info));
  info.port = atoi(argv[2]);
  info.link_mode = QV_LINK_TCP;
  info.codec_family = 1; /* H.264: the camera's root path */
  info.user_data = &c;

  IP_NET_DVR_Init();
  IP_NET_DVR_SetStatusEventCallBack(on_status, NULL);
  handle = IP_NET_DVR_RealPlayEx(argv[1], argc > 3 ? argv[3] : "admin",
                                 argc > 4 ? argv[4] : "admin", on_frame, &info, 0);
  if (handle <= 0) {
    fprintf(stderr, "real play failed: %ld\n", handle);
    return 1;
  }
  printf("playing %s:%d for %d s (handle %lx)\n", argv[1], info.port, seconds,
         (unsigned long)handle);
  for (i = 0; i < seconds * 10; ++i) {
    nanosleep(&pause, NULL);
    if (argc > 6 && c.params > 0 && !recording) {
      long ret = IP_NET_DVR_StartRecord(handle, argv[6], 3600, 0);
      printf("recording into %s: %ld\n", argv[6], ret);
      recording = ret == 0;
    }
  }
  if (recording) printf("stop recording: %ld\n", IP_NET_DVR_StopRecord(handle));

  if (IP_NET_DVR_GetVideoParam(handle, &video) == 0 &&
      IP_NET_DVR_GetAudioParam(handle, &audio) == 0) {
    printf("video: %s %dx%d %d fps; audio: %s %d Hz %d channel(s)\n", video.codec, video.width,
           video.height, video.frame_rate, audio.codec, audio.sample_rate, audio.channels);
  }
  IP_NET_DVR_StopRealPlay(handle);
  printf("frames: video %ld (key %ld), audio %ld, parameter blocks %ld, %ld bytes, "
         "video time %.0f ms\n",
         c.video, c.key, c.audio, c.params, c.bytes, c.last_ts - c.first_ts);
  IP_NET_DVR_Cleanup();
  return c.video > 0 ? 0 : 1;
}

/*
 * A host program that moves files with one camera through the public header
 * only: uploads a file, fetches it back and compares the bytes, then takes
 * a snapshot into a local file. Usage: file_demo HOST PORT FOLDER
 * (FOLDER: where the local files go). Exit status 0 when all three worked.
 */
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "quorvel/quorvel.h"

#define FILE_SIZE 300000

static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
static pthread_cond_t changed = PTHREAD_COND_INITIALIZER;
static int counts[64];

static long on_status(long id, long code, const char* data, void* user) {
  (void)user;
  pthread_mutex_lock(&lock);
  if (code >= EVENT_UPLOADOK && code <= EVENT_DOWNLOADFAILED) {
    printf("  event %2ld  session %ld: %s\n", code, id, data);
  } else if (code == EVENT_PTZALARM) {
    printf("  event %2ld  session %ld: alarm %d, %s\n", code, id,
           ((const ALARM_ENTRY*)data)->alarm_code, ((const ALARM_ENTRY*)data)->alarm_data);
  }
  if (code >= 0 && code < 64) ++counts[code];
  pthread_cond_broadcast(&changed);
  pthread_mutex_unlock(&lock);
  return 0;
}

/* Waits up to seconds until status code has come n times. */
static int wait_count(long code, int n, int seconds) {
  struct timespec until;
  clock_gettime(CLOCK_REALTIME, &until);
  until.tv_sec += seconds;
  pthread_mutex_lock(&lock);
  while (counts[code] < n && counts[EVENT_UPLOADFAILED] == 0 &&
         counts[EVENT_DOWNLOADFAILED] == 0 &&
         pthread_cond_timedwait(&changed, &lock, &until) == 0) {
  }
  int ok = counts[code] >= n;
  pthread_mutex_unlock(&lock);
  return ok;
}

static long file_size(const char* path) {
  FILE* f = fopen(path, "rb");
  if (f == NULL) return -1;
  fseek(f, 0, SEEK_END);
  long n = ftell(f);
  fclose(f);
  return n;
}

static int same_files(const char* a, const char* b) {
  FILE* fa = fopen(a, "rb");
  FILE* fb = fopen(b, "rb");
  int same = fa != NULL && fb != NULL;
  while (same) {
    int ca = fgetc(fa), cb = fgetc(fb);
    same = ca == cb;
    if (ca == EOF) break;
  }
  if (fa != NULL) fclose(fa);
  if (fb != NULL) fclose(fb);
  return same;
}

int main(int argc, char** argv) {
  if (argc < 4) {
    fprintf(stderr, "usage: %s HOST PORT FOLDER\n", argv[0]);
    return 2;
  }
  if (strlen(argv[3]) > 400) {
    fprintf(stderr, "%s: the folder's path is too long\n", argv[0]);
    return 2;
  }
  unsigned short port = (unsigned short)atoi(argv[2]);
  char upload[512], fetched_dir[480], fetched[512], picture[512];
  snprintf(upload, sizeof upload, "%s/notes.bin", argv[3]);
  snprintf(fetched_dir, sizeof fetched_dir, "%s/back", argv[3]);
  snprintf(fetched, sizeof fetched, "%s/notes.bin", fetched_dir);
  snprintf(picture, sizeof picture, "%s/snapshot.jpg", argv[3]);

  FILE* f = fopen(upload, "wb");
  if (f == NULL) return 1;
  for (int i = 0; i < FILE_SIZE; ++i) fputc((i * 7 + i / 256) & 0xff, f);
  fclose(f);

  IP_NET_DVR_Init();
  IP_NET_DVR_SetStatusEventCallBack(on_status, NULL);
  long id = IP_NET_DVR_Login(argv[1], port, "admin", "admin", NULL);
  if (id == 0 || !wait_count(EVENT_LOGINOK, 1, 10)) {
    printf("login failed\n");
    IP_NET_DVR_Cleanup();
    return 1;
  }

  printf("uploading %s (%d bytes)\n", upload, FILE_SIZE);
  /* Over the data channel: a progress event at 204,800 bytes, then the end. */
  int up = IP_NET_DVR_UploadFile(id, 2, upload) == 0 && wait_count(EVENT_UPLOADOK, 2, 30);

  printf("fetching it back into %s\n", fetched_dir);
  char remote[] = "notes.bin";
  int down = IP_NET_DVR_GetFileByName(id, 2, remote, fetched_dir) == 0 &&
             wait_count(EVENT_DOWNLOADOK, 1, 30) && same_files(upload, fetched);
  printf("  the bytes came back %s\n", down ? "unchanged" : "DIFFERENT or not at all");

  printf("taking a snapshot into %s\n", picture);
  long snap = IP_NET_DVR_SnapPic(id, 0, 80, picture, 5000);
  long picture_size = file_size(picture);
  printf("  SnapPic: %ld, picture of %ld bytes\n", snap, picture_size);

  IP_NET_DVR_Logout(id);
  IP_NET_DVR_Cleanup();
  return up && down && snap == 0 && picture_size > 0 ? 0 : 1;
}

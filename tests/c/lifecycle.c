/*
 * A host written in C: includes the public header and calls the library-wide
 * functions through libquorvel.so. Usage: lifecycle <log folder>.
 * Exits 0 when every result is as documented.
 */
#define _POSIX_C_SOURCE 200809L
#include <dirent.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>

#include "quorvel/quorvel.h"

static int failures = 0;

#define CHECK(cond)                                              \
  do {                                                           \
    if (!(cond)) {                                               \
      fprintf(stderr, "%s:%d: failed: %s\n", __FILE__, __LINE__, #cond); \
      ++failures;                                                \
    }                                                            \
  } while (0)

static long on_status(long id, long code, const char* data, void* user) {
  (void)id, (void)code, (void)data, (void)user;
  return 0;
}

static long on_aux(long id, long code, const char* xml, void* user) {
  (void)id, (void)code, (void)xml, (void)user;
  return 0;
}

static long on_exception(long id, long code, void* user) {
  (void)id, (void)code, (void)user;
  return 0;
}

static long on_replay_event(long id, long code, long flag, char* body, void* user) {
  (void)id, (void)code, (void)flag, (void)body, (void)user;
  return 0;
}

static long on_replay_data(long id, unsigned long kind, char* data, unsigned long len,
                           FRAME_EXTDATA* extra) {
  (void)id, (void)kind, (void)data, (void)len, (void)extra;
  return 0;
}

static int count_log_files(const char* dir) {
  int n = 0;
  DIR* d = opendir(dir);
  struct dirent* e;
  if (d == NULL) return -1;
  while ((e = readdir(d)) != NULL) {
    if (strncmp(e->d_name, "Quorvel_", 8) == 0) ++n;
  }
  closedir(d);
  return n;
}

int main(int argc, char** argv) {
  long t1, t2;
  if (argc < 2) {
    fprintf(stderr, "usage: %s <log folder>\n", argv[0]);
    return 2;
  }
  mkdir(argv[1], 0755);

  CHECK(IP_NET_DVR_Init() == 0);
  CHECK(IP_NET_DVR_GetSDKVersion() == 120524100L);
  CHECK(IP_NET_DVR_GetSDKBuildVersion() == 2012052413L);
  t1 = IP_NET_DVR_Get_Timestamp();
  t2 = IP_NET_DVR_Get_Timestamp();
  CHECK(t2 >= t1);
  CHECK(IP_NET_DVR_LOG_OPEN() == 0);
  CHECK(IP_NET_DVR_LOG_CLOSE() == 0);
  CHECK(IP_NET_DVR_SetLogToFile(1, argv[1], 0) == 0);
  CHECK(IP_NET_DVR_SetStatusEventCallBack(on_status, NULL) == 0);
  CHECK(IP_NET_DVR_SetAUXResponseCallBack(on_aux, NULL) == 0);
  CHECK(IP_NET_DVR_SetExceptionCallBack(0, 0, on_exception, NULL) == 0);
  CHECK(IP_NET_DVR_SetReplayEventCallBack(on_replay_event, NULL) == 0);
  CHECK(IP_NET_DVR_SetReplayDataCallBack(on_replay_data, NULL) == 0);
  CHECK(IP_NET_DVR_GetLastErrorCode() == 0);
  CHECK(IP_NET_DVR_LogoutAll() == 0);
  CHECK(IP_NET_DVR_StopAllRealPlay() == 0);
  CHECK(IP_NET_DVR_Cleanup() == 0);
  CHECK(IP_NET_DVR_Cleanup() == 0);
  CHECK(count_log_files(argv[1]) == 1);

  CHECK(QV_E_UNKNOWN_USER == -9000002 && QV_E_SOCKET == -1234567);
  printf("%s: %d failures\n", argv[0], failures);
  return failures == 0 ? 0 : 1;
}

/*
 * A small host program: loads libquorvel, turns console logging on, prints
 * the versions, writes a log file into the folder named on the command line,
 * registers a status callback and cleans up.
 */
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>

#include "quorvel/quorvel.h"

static long on_status(long id, long code, const char* data, void* user) {
  (void)user;
  printf("status: id=%ld code=%ld %s\n", id, code, code == EVENT_PTZALARM ? "(alarm)" : data);
  return 0;
}

int main(int argc, char** argv) {
  char* log_dir = argc > 1 ? argv[1] : "demo-logs";

  IP_NET_DVR_Init();
  IP_NET_DVR_LOG_OPEN();
  printf("SDK version %ld, build %ld\n", IP_NET_DVR_GetSDKVersion(),
         IP_NET_DVR_GetSDKBuildVersion());

  mkdir(log_dir, 0755);
  IP_NET_DVR_SetLogToFile(1, log_dir, 0);
  IP_NET_DVR_SetStatusEventCallBack(on_status, NULL);
  printf("timestamp %ld ms, log folder %s\n", IP_NET_DVR_Get_Timestamp(), log_dir);

  IP_NET_DVR_Cleanup();
  return 0;
}

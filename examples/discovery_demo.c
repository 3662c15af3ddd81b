/*
 * A host program that finds cameras on the LAN through the public header
 * only: searches until it has found the number of cameras asked for (or 10
 * seconds pass), prints each one, moves the first one to a new address
 * when one is given, and shows that the next search finds it there.
 * Usage: discovery_demo CAMERAS [NEW_ADDRESS]
 * Exit status 0 when every camera was found (and, with NEW_ADDRESS, the
 * first one was seen at its new address).
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "quorvel/quorvel.h"

static void sleep_ms(long ms) {
  struct timespec t = {ms / 1000, (ms % 1000) * 1000000L};
  nanosleep(&t, NULL);
}

/* Waits up to 10 s until the table holds `count` cameras. */
static int wait_for_count(long count) {
  for (int i = 0; i < 1000; ++i) {
    if (IP_NET_DVR_GetSearchIPCCount() >= count) return 1;
    sleep_ms(10);
  }
  return 0;
}

/* Waits up to 10 s until the camera `serial` shows the address `ip`. */
static int wait_for_address(const char* serial, const char* ip) {
  for (int i = 0; i < 1000; ++i) {
    long count = IP_NET_DVR_GetSearchIPCCount();
    for (long k = 0; k < count; ++k) {
      IPC_ENTRY e;
      if (IP_NET_DVR_GetIPCInfo(k, &e) == 0 && strcmp(e.serial, serial) == 0 &&
          strcmp(e.lan.IPAddress, ip) == 0) {
        return 1;
      }
    }
    sleep_ms(10);
  }
  return 0;
}

int main(int argc, char** argv) {
  if (argc < 2) {
    fprintf(stderr, "usage: discovery_demo CAMERAS [NEW_ADDRESS]\n");
    return 2;
  }
  long wanted = atol(argv[1]);
  IP_NET_DVR_Init();
  IP_NET_DVR_SetSearchInterval(500);
  IP_NET_DVR_StartSearchIPC();
  int found = wait_for_count(wanted);
  long count = IP_NET_DVR_GetSearchIPCCount();
  printf("found %ld camera(s):\n", count);
  IPC_ENTRY first;
  memset(&first, 0, sizeof(first));
  for (long i = 0; i < count; ++i) {
    IPC_ENTRY e;
    if (IP_NET_DVR_GetIPCInfo(i, &e) != 0) continue;
    if (i == 0) first = e;
    printf("  %-12s %-6s %-15s port %-5u MAC %s via %s, OSD \"%s\"\n", e.serial, e.device_type,
           e.lan.IPAddress, e.stream.StreamAccess.PTZPort, e.lan.MacAddress, e.interface_name,
           (const char*)e.osd);
  }
  int moved = 1;
  if (found && argc > 2) {
    LANConfig lan = first.lan;
    snprintf(lan.IPAddress, sizeof(lan.IPAddress), "%s", argv[2]);
    printf("moving %s from %s to %s\n", first.serial, first.lan.IPAddress, argv[2]);
    IP_NET_DVR_ModifyIPCBySN(first.serial, &lan, NULL);
    moved = wait_for_address(first.serial, argv[2]);
    printf(moved ? "the next search found %s at %s\n" : "%s was not seen at %s\n", first.serial,
           argv[2]);
  }
  IP_NET_DVR_StopSearchIPC();
  IP_NET_DVR_Cleanup();
  return found && moved ? 0 : 1;
}

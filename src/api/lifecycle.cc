// Library-wide exported functions: start, clean-up, global logout, versions,
// time stamp, log switches, last error and callback registration.
#include <signal.h>

#include <cstdio>
#include <cstring>

#include "api/ptz_object_list.h"
#include "base/compat.h"
#include "base/debug_log.h"
#include "quorvel/quorvel.h"
#include "stream/rtsp_object_list.h"

namespace {
const long kSdkBuildVersion = 2012052413;
}  // namespace

QV_API int IP_NET_DVR_Init(void) {
  struct sigaction sa;
  memset(&sa, 0, sizeof(sa));
  sa.sa_handler = SIG_IGN;
  sigemptyset(&sa.sa_mask);
  if (sigaction(SIGPIPE, &sa, nullptr) == 0) printf("SIGPIPE ignore\n");
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, 0);
  DebugInit();
  return 0;
}

QV_API int IP_NET_DVR_Cleanup(void) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, 0);
  IP_NET_DVR_SetExceptionCallBack(0, 0, nullptr, nullptr);
  IP_NET_DVR_SetAUXResponseCallBack(nullptr, nullptr);
  IP_NET_DVR_SetStatusEventCallBack(nullptr, nullptr);
  ObjectPtzList.ReleaseAll(0);
  OjbectRtspList.ReleaseAll(0);
  int sessions = ObjectPtzList.ReleaseAll(-1);
  int streams = OjbectRtspList.ReleaseAll(-1);
  DebugRelease();
  return sessions | streams;
}

QV_API long IP_NET_DVR_LogoutAll(void) {
  QV_LOG("[%s:%d]%s(%d) begin...\n", __FUNCTION__, 0);
  unsigned long start = GetTickCount();
  ObjectPtzList.ReleaseAll(0);
  int ret = ObjectPtzList.ReleaseAll(-1);
  QV_LOG("[%s:%d]%s(%d) end,use tick=%d\n", __FUNCTION__, 0,
         static_cast<int>(GetTickCount() - start));
  return ret;
}

QV_API long IP_NET_DVR_StopAllRealPlay(void) {
  QV_LOG("[%s:%d]%s(%d) begin...\n", __FUNCTION__, 0);
  unsigned long start = GetTickCount();
  OjbectRtspList.ReleaseAll(0);
  int ret = ObjectPtzList.ReleaseAll(-1);
  QV_LOG("[%s:%d]%s(%d) end,use tick=%d\n", __FUNCTION__, 0,
         static_cast<int>(GetTickCount() - start));
  return ret;
}

QV_API long IP_NET_DVR_GetSDKVersion(void) {
  // Version 120524.1 scaled by 1000, computed in double precision.
  long version = static_cast<long>(120524.0 * 1000.0 + 0.1 * 1000.0);
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(version));
  return version;
}

QV_API long IP_NET_DVR_GetSDKBuildVersion(void) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(kSdkBuildVersion));
  return kSdkBuildVersion;
}

QV_API long IP_NET_DVR_Get_Timestamp(void) { return static_cast<long>(GetTickCount()); }

QV_API long IP_NET_DVR_SetLogToFile(unsigned long mode, char* directory, int reserved) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, 0);
  return SetLogToFile(mode, directory, reserved);
}

QV_API long IP_NET_DVR_LOG_OPEN(void) { return DebugLogSwitch(1); }

QV_API long IP_NET_DVR_LOG_CLOSE(void) { return DebugLogSwitch(0); }

QV_API long IP_NET_DVR_GetLastErrorCode(void) { return OjbectRtspList.GetLastErrorCode(); }

QV_API long IP_NET_DVR_SetStatusEventCallBack(QV_StatusEventCallBack cb, void* user) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, 0);
  ObjectPtzList.SetStatusEventCallBack(cb, user);
  return 0;
}

QV_API long IP_NET_DVR_SetAUXResponseCallBack(QV_AUXResponseCallBack cb, void* user) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, 0);
  ObjectPtzList.SetAUXResponseCallBack(cb, user);
  return 0;
}

QV_API long IP_NET_DVR_SetExceptionCallBack(unsigned int window, unsigned int message,
                                            QV_ExceptionCallBack cb, void* user) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(message));
  ObjectPtzList.SetMessageHWND(static_cast<int>(message), static_cast<long>(window));
  ObjectPtzList.SetExceptionCallBack(cb, user);
  return 0;
}

QV_API long IP_NET_DVR_SetReplayEventCallBack(QV_ReplayEventCallBack cb, void* user) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, 0);
  return ObjectPtzList.SetPlayActionEventCallBack(cb, user);
}

QV_API long IP_NET_DVR_SetReplayDataCallBack(QV_ReplayDataCallBack cb, void* user) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, 0);
  return ObjectPtzList.SetReplayDataCallBack(cb, user);
}

// Exported remote playback: replay by time and its control actions.
#include "api/ptz_object_list.h"
#include "base/debug_log.h"
#include "quorvel/quorvel.h"

namespace {

const int kTimelineMode = 1;

}  // namespace

QV_API long IP_NET_DVR_GetReplayAblity(long userID) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(userID));
  return ObjectPtzList.GetReplayAblity(userID);
}

QV_API long IP_NET_DVR_ReplayByTime(long userID, long time) {
  return ObjectPtzList.PlayDeviceFile(userID, time);
}

QV_API long IP_NET_DVR_ControlReplay(long userID, long action, long parameter) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(userID));
  return ObjectPtzList.ControlPlay(userID, kTimelineMode, action, parameter);
}

QV_API long IP_NET_DVR_PlayDeviceFile(char*, char*) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, 0);
  return ObjectPtzList.PlayDeviceFile(0, static_cast<char*>(nullptr));
}

// Exported voice talk: the per-device talk functions and the talk group.
#include "api/ptz_object_list.h"
#include "base/debug_log.h"
#include "quorvel/quorvel.h"

QV_API long IP_NET_DVR_StartVoiceCom(long userID, int audioType, int sampleRate, int channels) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(userID));
  return ObjectPtzList.StartAudio(userID, audioType, sampleRate, channels);
}

QV_API long IP_NET_DVR_StopVoiceCom(long userID) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(userID));
  return ObjectPtzList.StopAudio(userID);
}

QV_API long IP_NET_DVR_InputAudioData(long userID, const char* data, int length) {
  return ObjectPtzList.InputAudioData(userID, data, length);
}

QV_API long IP_NET_DVR_SetVoiceComClientVolume(long userID, long) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(userID));
  return QV_E_UNSUPPORTED;
}

QV_API long IP_NET_DVR_AddTalk(long userID) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(userID));
  return ObjectPtzList.AddTalk(userID);
}

QV_API long IP_NET_DVR_RemoveTalk(long userID) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(userID));
  return ObjectPtzList.RemoveTalk(userID);
}

QV_API long IP_NET_DVR_StartTalk(int arg1, int arg2, int arg3, int arg4) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, 0);
  return ObjectPtzList.StartTalk(arg1, arg2, arg3, arg4);
}

QV_API long IP_NET_DVR_StopTalk(void) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, 0);
  return ObjectPtzList.StopTalk();
}

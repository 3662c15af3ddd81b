// Exported recording functions: recording a live stream, and recording a
// stream that the host feeds frame by frame.
#include "base/debug_log.h"
#include "quorvel/quorvel.h"
#include "quorvel/stream.h"
#include "stream/rtsp_object_list.h"

QV_API long IP_NET_DVR_StartRecord(long handle, const char* name, int a, int b) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(handle));
  return OjbectRtspList.StartRecord(handle, name, a, b);
}

QV_API long IP_NET_DVR_StopRecord(long handle) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(handle));
  return OjbectRtspList.StopRecord(handle);
}

QV_API long IP_NET_DVR_StartRecordStream(const __STREAM_AV_PARAM* param, const char* name, int a,
                                         int b) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, 0);
  return OjbectRtspList.StartRecordStream(param, name, a, b);
}

QV_API long IP_NET_DVR_InputRecordStream(long handle, int type, const unsigned char* data,
                                         int length, int flag, double timestamp) {
  return OjbectRtspList.InputRecordStream(handle, type, data, length, flag, timestamp);
}

QV_API long IP_NET_DVR_StopRecordStream(long handle) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(handle));
  return OjbectRtspList.StopRecordStream(handle);
}

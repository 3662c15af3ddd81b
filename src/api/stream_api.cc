// Exported live-stream functions: real play, stop, the global real-data
// callback, the parameter blocks and the statistics file.
#include <string>

#include "api/ptz_object_list.h"
#include "base/compat.h"
#include "base/debug_log.h"
#include "link/ptz_control_class.h"
#include "quorvel/quorvel.h"
#include "quorvel/stream.h"
#include "stream/rtsp_object_list.h"
#include "stream/stream_address.h"

namespace {

// The stream address that `info` selects at `address`.
std::string StreamAddressFor(const char* address, const ClientInfo* info, bool keep_scheme) {
  return BuildStreamAddress(address, info->port,
                            StreamPathFor(info->codec_family, info->stream_index), keep_scheme);
}

long AddStream(const std::string& url, const char* user, const char* password,
               QV_RealDataCallBack callback, const ClientInfo* info) {
  return OjbectRtspList.Add(url.c_str(), user, password, info->link_mode, info->stream_index,
                            callback, info->user_data);
}

}  // namespace

QV_API long IP_NET_DVR_RealPlayEx(const char* address, const char* user, const char* password,
                                  QV_RealDataCallBack callback, ClientInfo* info, int) {
  QV_LOG("[%s:%d]%s", __FUNCTION__);
  QV_LOG("[%s:%d]IP_NET_DVR_RealPlayEx, ip:%s", address != nullptr ? address : "(null)");
  unsigned long start = GetTickCount();
  if (info == nullptr) {
    QV_LOG("[%s:%d]pUser is null error");
    return QV_E_REALPLAY_ARG;
  }
  if (address == nullptr) {
    QV_LOG("[%s:%d]server ip is null error");
    return QV_E_REALPLAY_ARG;
  }
  if (callback == nullptr) {
    QV_LOG("[%s:%d]callback function not allow empty error");
    return QV_E_REALPLAY_ARG;
  }
  std::string url = StreamAddressFor(address, info, true);
  QV_LOG("[%s:%d]%s", url.c_str());
  long handle = AddStream(url, user, password, callback, info);
  QV_LOG("[%s:%d]%s(%s) end,use tick=%d...", __FUNCTION__, address,
         static_cast<int>(GetTickCount() - start));
  return handle;
}

QV_API long IP_NET_DVR_RealPlay(long user_id, int, QV_RealDataCallBack callback, ClientInfo* info,
                                int) {
  QV_LOG("[%s:%d]%s(%d) start...", __FUNCTION__, static_cast<int>(user_id));
  unsigned long start = GetTickCount();
  CPTZControlClass* session = ObjectPtzList.FindObjectByID(user_id, 0);
  if (session == nullptr) {
    QV_LOG("[%s:%d]not find user login data %d", static_cast<int>(user_id));
    return QV_E_REALPLAY_ARG;
  }
  std::string host = session->Host();
  std::string user = session->UserName();
  std::string password = session->Password();
  ObjectPtzList.ReleaseObjLock();
  if (info == nullptr) {
    QV_LOG("[%s:%d]pUser is null error");
    return QV_E_REALPLAY_ARG;
  }
  if (callback == nullptr) {
    QV_LOG("[%s:%d]callback function not allow empty error");
    return QV_E_REALPLAY_ARG;
  }
  // Never the "vxr://" rule here: always "rtsp://".
  std::string url = StreamAddressFor(host.c_str(), info, false);
  QV_LOG("[%s:%d]%s", url.c_str());
  long handle = AddStream(url, user.c_str(), password.c_str(), callback, info);
  QV_LOG("[%s:%d]%s(%d) end,use tick=%d...", __FUNCTION__, static_cast<int>(user_id),
         static_cast<int>(GetTickCount() - start));
  return handle;
}

QV_API long IP_NET_DVR_StopRealPlay(long handle) {
  QV_LOG("[%s:%d]%s(%d)", __FUNCTION__, static_cast<int>(handle));
  unsigned long start = GetTickCount();
  int ret = OjbectRtspList.Delete(handle);
  QV_LOG("[%s:%d]%s(%d) end,use tick=%d...", __FUNCTION__, static_cast<int>(handle),
         static_cast<int>(GetTickCount() - start));
  return ret;
}

QV_API long IP_NET_DVR_SetRealDataCallBack(QV_RealDataCallBack callback, void* user) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, 0);
  OjbectRtspList.SetRealDataCallBack(callback, user);
  return 0;
}

QV_API long IP_NET_DVR_GetVideoParam(long handle, QV_VIDEO_PARAM* video) {
  QV_LOG("[%s:%d]%s(%d) start..", __FUNCTION__, static_cast<int>(handle));
  unsigned long start = GetTickCount();
  int ret = OjbectRtspList.GetVideoParam(handle, video);
  QV_LOG("[%s:%d]%s(%d) end,use tick=%d", __FUNCTION__, static_cast<int>(handle),
         static_cast<int>(GetTickCount() - start));
  return ret;
}

QV_API long IP_NET_DVR_GetAudioParam(long handle, QV_AUDIO_PARAM* audio) {
  QV_LOG("[%s:%d]%s(%d)", __FUNCTION__, static_cast<int>(handle));
  return OjbectRtspList.GetAudioParam(handle, audio);
}

QV_API long IP_NET_DVR_WriteTestResult(const char* path) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, 0);
  return OjbectRtspList.WriteStatInfo(path);
}

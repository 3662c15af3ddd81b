// Exported login, logout and link control.
#include "api/ptz_object_list.h"
#include "base/compat.h"
#include "base/debug_log.h"
#include "quorvel/quorvel.h"
#include "stream/rtsp_object_list.h"

namespace {

const char* Shown(const char* ip) { return ip != nullptr ? ip : ""; }

int Elapsed(unsigned long start) { return static_cast<int>(GetTickCount() - start); }

}  // namespace

// Each exported function writes its own lines, so that they carry its name.
QV_API long IP_NET_DVR_Login(const char* ip, unsigned short port, char* user, char* password,
                             void*) {
  QV_LOG("[%s:%d]%s(%s) start...\n", __FUNCTION__, Shown(ip));
  unsigned long start = GetTickCount();
  long id = ObjectPtzList.Add(ip, port, user, password, 1, 0, nullptr);
  QV_LOG("[%s:%d]%s(%s) return %d,use tick=%d------\n", __FUNCTION__, Shown(ip),
         static_cast<int>(id), Elapsed(start));
  return id;
}

QV_API long IP_NET_DVR_Login_Encrypt(const char* ip, unsigned short port, char* user,
                                     char* password, void*, const char* key) {
  QV_LOG("[%s:%d]%s(%s) start...\n", __FUNCTION__, Shown(ip));
  unsigned long start = GetTickCount();
  long id = ObjectPtzList.Add(ip, port, user, password, 1, 1, key);
  QV_LOG("[%s:%d]%s(%s) return %d,use tick=%d------\n", __FUNCTION__, Shown(ip),
         static_cast<int>(id), Elapsed(start));
  return id;
}

QV_API long IP_NET_DVR_EXCHANGE_Encrypt(long userID) {
  QV_LOG("[%s:%d]%s(%d) pXml:\n\n", __FUNCTION__, static_cast<int>(userID));
  return ObjectPtzList.ExchangeEncrypt(userID);
}

QV_API long IP_NET_DVR_Logout(long userID) {
  QV_LOG("[%s:%d]%s(%ld) begin...\n", __FUNCTION__, userID);
  if (userID == 0) return 0;
  unsigned long start = GetTickCount();
  int ret = ObjectPtzList.Delete(userID);
  QV_LOG("[%s:%d]%s(%ld) end,use tick=%d\n", __FUNCTION__, userID, Elapsed(start));
  return ret;
}

// A live-stream handle first; what the stream registry does not know goes
// to the sessions.
QV_API long IP_NET_DVR_SetAutoReconnect(long id, int value) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(id));
  int ret = OjbectRtspList.SetAutoReconnect(id, value);
  if (ret != QV_E_UNKNOWN_HANDLE) return ret;
  return ObjectPtzList.SetAutoReconnect(id, value);
}

QV_API long IP_NET_DVR_Reconnect(long id) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(id));
  int ret = OjbectRtspList.Reconnect(id);
  if (ret != QV_E_UNKNOWN_HANDLE) return ret;
  return ObjectPtzList.Reconnect(id);
}

// Exported login, logout and link control.
#include "api/ptz_object_list.h"
#include "base/compat.h"
#include "base/debug_log.h"
#include "quorvel/quorvel.h"
#include "stream/rtsp_object_list.h"

namespace {

long Login(const char* func, const char* ip, unsigned short port, char* user, char* password,
           long encrypt, const char* key) {
  const char* shown = ip != nullptr ? ip : "";
  QV_LOG("[%s:%d]%s(%s) start...\n", func, shown);
  unsigned long start = GetTickCount();
  long id = ObjectPtzList.Add(ip, port, user, password, 1, encrypt, key);
  QV_LOG("[%s:%d]%s(%s) return %d,use tick=%d------\n", func, shown, static_cast<int>(id),
         static_cast<int>(GetTickCount() - start));
  return id;
}

}  // namespace

QV_API long IP_NET_DVR_Login(const char* ip, unsigned short port, char* user, char* password,
                             void*) {
  return Login(__FUNCTION__, ip, port, user, password, 0, nullptr);
}

QV_API long IP_NET_DVR_Login_Encrypt(const char* ip, unsigned short port, char* user,
                                     char* password, void*, const char* key) {
  return Login(__FUNCTION__, ip, port, user, password, 1, key);
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
  QV_LOG("[%s:%d]%s(%ld) end,use tick=%d\n", __FUNCTION__, userID,
         static_cast<int>(GetTickCount() - start));
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

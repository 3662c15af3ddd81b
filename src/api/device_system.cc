// Exported system commands, configuration requests, raw messages and user
// data. Each builds a small body and hands it to the session.
#include <cstdio>

#include "api/ptz_object_list.h"
#include "base/compat.h"
#include "base/debug_log.h"
#include "quorvel/quorvel.h"

namespace {

const unsigned long kRestoreConfig = 1002;
const unsigned long kReboot = 1007;
const unsigned long kFormatDisk = 1017;
const unsigned long kAbility = 1020;
const unsigned long kLogFile = 1025;
const unsigned long kDayNight = 1046;
const unsigned long kScareOff = 1112;

// Each exported function writes its entry line itself, so that the line
// carries its own name.
long Control(long userID, unsigned long code, const char* body) {
  return ObjectPtzList.SystemControl(userID, code, 0, body);
}

int Id(long userID) { return static_cast<int>(userID); }

}  // namespace

QV_API long IP_NET_DVR_SystemControl(long userID, unsigned long code, int flag,
                                     const char* body) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(userID));
  return ObjectPtzList.SystemControl(userID, code, flag, body);
}

QV_API long IP_NET_DVR_RebootDVR(long userID) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, Id(userID));
  return Control(userID, kReboot, "");
}

QV_API long IP_NET_DVR_ShutDownDVR(long userID) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(userID));
  return QV_E_UNSUPPORTED;
}

QV_API long IP_NET_DVR_FormatDisk(long userID, long disk) {
  static const char* const kDisks[] = {
      "<REQUEST_PARAM\nDevName=\"sd1\" \n/>",
      "<REQUEST_PARAM\nDevName=\"sd2\" \n/>",
      "<REQUEST_PARAM\nDevName=\"usb\" \n/>",
  };
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, Id(userID));
  const char* body = (disk >= 0 && disk <= 2) ? kDisks[disk] : "";
  return Control(userID, kFormatDisk, body);
}

QV_API long IP_NET_DVR_GetFormatProgress(long, long, long*, long*) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, 0);
  return QV_E_UNSUPPORTED;
}

QV_API long IP_NET_DVR_Ircut_switch_daynight(long userID, int mode) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, Id(userID));
  const char* body =
      mode < 1 ? "<REQUEST_PARAM Mode=\"NightMode\" />" : "<REQUEST_PARAM Mode=\"DayMode\" />";
  return Control(userID, kDayNight, body);
}

QV_API long IP_NET_DVR_RestoreConfig(long userID) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, Id(userID));
  return Control(userID, kRestoreConfig, "");
}

QV_API long IP_NET_DVR_FindDVRLogFile(long userID) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, Id(userID));
  return Control(userID, kLogFile, "");
}

QV_API long IP_NET_DVR_SCARE_OFF(long userID, int playSound, int ledOn, int time) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, Id(userID));
  char body[128];
  snprintf(body, sizeof(body), "<REQUEST_PARAM play_sound=\"%d\" led_on=\"%d\" time=\"%d\"/>",
           playSound, ledOn, time);
  return Control(userID, kScareOff, body);
}

QV_API long IP_NET_DVR_GetDeviceAbility(long userID) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(userID));
  char empty[1] = "";
  return ObjectPtzList.GetDVRConfig(userID, kAbility, 0, empty, 0, nullptr);
}

QV_API long IP_NET_DVR_GetDVRConfig(long userID, unsigned long code, long channel, void* body,
                                    unsigned long size, unsigned long* returned) {
  QV_LOG("[%s:%d]%s(%d) start...\n", __FUNCTION__, static_cast<int>(userID));
  unsigned long start = GetTickCount();
  int ret = ObjectPtzList.GetDVRConfig(userID, code, channel, body, size, returned);
  QV_LOG("[%s:%d]%s(%d) end,use tick=%d...\n", __FUNCTION__, static_cast<int>(userID),
         static_cast<int>(GetTickCount() - start));
  return ret;
}

QV_API long IP_NET_DVR_SetDVRConfig(long userID, unsigned long code, long channel,
                                    const void* xml, unsigned long length) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(userID));
  return ObjectPtzList.SetDVRConfig(userID, code, channel, xml, length);
}

QV_API long IP_NET_DVR_WriteAUXStringEx(long userID, char* type, long code, long flag,
                                        const char* body) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(userID));
  return ObjectPtzList.WriteAUXStringEx(userID, type, code, flag, body);
}

QV_API long IP_NET_DVR_SendRawMsg(long userID, const char* message, int length) {
  return ObjectPtzList.WriteAUXStringEx1(userID, message, length);
}

QV_API long IP_NET_DVR_SEND_ENCRYPPT_RAWDATA(long userID, char* data) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(userID));
  return ObjectPtzList.SendEncryptRawData(userID, data);
}

QV_API long IP_NET_DVR_CreateIFrame(long userID, int stream) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(userID));
  return ObjectPtzList.CreateIFrame(static_cast<unsigned long>(userID), stream);
}

QV_API long IP_NET_DVR_GetUserData(long userID, char* buffer, int* length) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(userID));
  return ObjectPtzList.GetUserData(static_cast<unsigned long>(userID), buffer, length);
}

QV_API long IP_NET_DVR_SetUserData(long userID, char* data, int length) {
  QV_LOG("[%s:%d]%s(%d)\n", __FUNCTION__, static_cast<int>(userID));
  if (data == nullptr) return -1;
  return ObjectPtzList.SetUserData(static_cast<unsigned long>(userID), data, length);
}

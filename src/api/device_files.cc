// Exported file transfers: upgrade, uploads, downloads, the configuration
// file, progress and stop. Each checks its arguments and hands the transfer
// to the session.
#include <tinyxml.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "api/ptz_object_list.h"
#include "base/debug_log.h"
#include "quorvel/quorvel.h"

namespace {

const long kFirmwareType = 1;
const long kConfigType = 0;
const char kCameraConfigFile[] = "/mnt/nand/config.xml";

void LogEntry(const char* func, long userID) {
  QV_LOG("[%s:%d]%s(%d)\n", func, static_cast<int>(userID));
}

// Firmware and other uploads must name a file that opens for update.
bool Openable(const char* path) {
  if (path == nullptr) return false;
  FILE* f = fopen(path, "rb+");
  if (f == nullptr) return false;
  fclose(f);
  return true;
}

// The last part of a camera path: after the last backslash, then after the
// last slash.
const char* BaseName(const char* path) {
  const char* back = strrchr(path, '\\');
  const char* name = back != nullptr ? back + 1 : path;
  const char* slash = strrchr(name, '/');
  return slash != nullptr ? slash + 1 : name;
}

}  // namespace

QV_API long IP_NET_DVR_Upgrade(long userID, const char* path) {
  LogEntry(__FUNCTION__, userID);
  if (!Openable(path)) return QV_E_FILE_MISSING;
  return ObjectPtzList.UploadFile(userID, kFirmwareType, path);
}

QV_API long IP_NET_DVR_UploadFile(long userID, long type, const char* path) {
  LogEntry(__FUNCTION__, userID);
  if (!Openable(path)) return QV_E_FILE_MISSING;
  return ObjectPtzList.UploadFile(userID, type, path);
}

QV_API long IP_NET_DVR_GetFileByName(long userID, long type, char* remotePath,
                                     const char* localDir) {
  LogEntry(__FUNCTION__, userID);
  if (remotePath == nullptr || localDir == nullptr) return QV_E_INVALID_ARG;
  std::string local = std::string(localDir) + "/" + BaseName(remotePath);
  printf("savefilepath:%s\n", local.c_str());
  return ObjectPtzList.DownloadFile(userID, type, remotePath, local.c_str());
}

QV_API long IP_NET_DVR_GetConfigFile(long userID, const char* localPath) {
  LogEntry(__FUNCTION__, userID);
  return ObjectPtzList.DownloadFile(userID, kFirmwareType, kCameraConfigFile, localPath);
}

QV_API long IP_NET_DVR_SetConfigFile(long userID, const char* path) {
  LogEntry(__FUNCTION__, userID);
  TiXmlDocument doc;
  if (path == nullptr) return -1;
  if (!doc.LoadFile(path)) return -1;
  if (doc.RootElement() == nullptr) return -2;
  return ObjectPtzList.UploadFile(userID, kConfigType, path);
}

QV_API long IP_NET_DVR_GetDownloadPos(long userID) {
  LogEntry(__FUNCTION__, userID);
  return ObjectPtzList.GetProcessPos(userID, 0);
}

QV_API long IP_NET_DVR_GetUpgradeProgress(long userID) {
  LogEntry(__FUNCTION__, userID);
  return ObjectPtzList.GetProcessPos(userID, 1);
}

QV_API long IP_NET_DVR_GetDownloadState(long userID) {
  LogEntry(__FUNCTION__, userID);
  return 0;
}

QV_API long IP_NET_DVR_GetUpgradeState(long userID) {
  LogEntry(__FUNCTION__, userID);
  return 0;
}

QV_API long IP_NET_DVR_StopGetFile(long userID) {
  LogEntry(__FUNCTION__, userID);
  return 0;
}

QV_API long IP_NET_DVR_CloseUpgradeHandle(long userID) {
  LogEntry(__FUNCTION__, userID);
  return ObjectPtzList.StopUpload(userID);
}

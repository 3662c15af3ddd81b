// Events of a session, posted on its link thread: status, PTZ and aux
// replies (with the user-data reply decoded first) and alarms (with a
// pending snapshot completed first).
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "api/ptz_object_list.h"
#include "base/debug_log.h"
#include "link/ptz_control_class.h"
#include "link/xml_util.h"

namespace {

const long kRemoveReplyCode = 1024;
const long kUserDataCode = 1034;
const long kUploadReplyCode = 1022;
const long kDownloadReplyCode = 1023;
const long kSnapFileType = 1;
const int kSnapReadyAlarm = 23;
const size_t kRemoteNameMax = 255;

// Pairs of hexadecimal digits, each read as "%02x" reads it: the digits up
// to the first other character ("4g" is 0x04), 0 when there is none. An odd
// trailing digit is left out. The number of bytes written.
size_t DecodeUserData(const char* hex, unsigned char* out, size_t cap) {
  size_t n = 0;
  for (size_t i = 0; n < cap && hex[i] != '\0' && hex[i + 1] != '\0'; i += 2) {
    unsigned value = 0;
    if (sscanf(hex + i, "%02x", &value) != 1) value = 0;
    out[n++] = static_cast<unsigned char>(value);
  }
  return n;
}

}  // namespace

long CPTZControlClass::PostStatusMsg(long code, const char* text) {
  if (owner_ == nullptr) return -1;
  return owner_->PostStatusMsg(user_id_, code, text);
}

long CPTZControlClass::PostPTZResponseMsg(long code, long flag, const char* body) {
  state_lock_.Lock();
  last_ptz_response_ = body != nullptr ? body : "";
  state_lock_.Unlock();
  if (owner_ == nullptr) return -1;
  return owner_->PostPTZResponseMsg(this, code, flag, body);
}

long CPTZControlClass::PostAuxResponseMsg(long code, long flag, const char* body) {
  if (code == kRemoveReplyCode) {
    // Reported as a status event with the session's last formatted text.
    std::string text = status_text_;
    PostStatusMsg(flag == 0 ? EVENT_REMOVEOK : EVENT_REMOVEFAILED, text.c_str());
    return 0;
  }
  if (code == kUploadReplyCode || code == kDownloadReplyCode) {
    return OnTransferReply(code, flag, body);
  }
  if (code == kUserDataCode) {
    // The camera's user data, as pairs of hexadecimal digits. The length is
    // written last: GetUserData waits for it.
    char* data = nullptr;
    int len = 0;
    TiXmlDocument doc;
    const char* hex = ParseXml(doc, body) ? GetAttribValue(doc.RootElement(), "UserDevData")
                                          : nullptr;
    if (hex != nullptr) {
      size_t room = strlen(hex) / 2;
      data = static_cast<char*>(malloc(room + 1));
      if (data != nullptr) {
        len = static_cast<int>(DecodeUserData(hex, reinterpret_cast<unsigned char*>(data), room));
        data[len] = '\0';
      }
    }
    state_lock_.Lock();
    free(user_data_);
    user_data_ = data;
    user_data_len_ = len;
    state_lock_.Unlock();
  }
  state_lock_.Lock();
  last_aux_response_ = body != nullptr ? body : "";
  state_lock_.Unlock();
  if (owner_ == nullptr) return -1;
  return owner_->PostAuxResponseMsg(this, code, flag, body);
}

long CPTZControlClass::PostAlarmMsg(ALARM_ENTRY* entry) {
  state_lock_.Lock();
  std::string local = snap_local_file_;
  state_lock_.Unlock();
  if (entry != nullptr && entry->alarm_code == kSnapReadyAlarm && !local.empty()) {
    char remote[kRemoteNameMax + 1];
    CopyText(remote, sizeof(remote), entry->alarm_data);
    printf("snap pic OK, begin download %s, local file=%s.\n", remote, local.c_str());
    int err = StartSnapshotDownload(remote, local.c_str());
    state_lock_.Lock();
    snap_local_file_.clear();
    state_lock_.Unlock();
    snap_result_ = err != 0 ? err : 1;
  }
  if (owner_ == nullptr) return -1;
  return owner_->PostAlarmMsg(this, entry);
}

int CPTZControlClass::StartSnapshotDownload(const char* remote, const char* local) {
  return DownloadFile(kSnapFileType, remote, local);
}

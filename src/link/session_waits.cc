// Requests that wait for their reply: snapshots and user data. The link
// thread fills the result fields; these operations poll them.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/compat.h"
#include "base/debug_log.h"
#include "link/ptz_control_class.h"
#include "link/xml_request.h"

namespace {

const long kSnapCode = 1043;
const long kUserDataCode = 1034;
const unsigned long kUserDataWaitMs = 5000;

void SnapBody(char* body, size_t size, int stream, int quality) {
  snprintf(body, size, "<REQUEST_PARAM Stream=\"%d\" Quality=\"%d\"/>", stream, quality);
}

}  // namespace

int CPTZControlClass::SnapPicMakeRequest(int stream, int quality, char* buffer, int size) {
  char body[96];
  SnapBody(body, sizeof(body), stream, quality);
  return MakeXMLRequest(buffer, size, "SYSTEM_CONTROL_MESSAGE", "1043", "0", body);
}

int CPTZControlClass::SnapPicEx(const char* message, char* buffer, int size) {
  state_lock_.Lock();
  snap_pending_ = 1;
  snap_buffer_ = buffer;
  snap_buffer_size_ = size;
  state_lock_.Unlock();
  if (message != nullptr) Queue(aux_queue_, aux_lock_, CAuxMsgBuffer(message, 0));
  return 1;
}

int CPTZControlClass::SnapPic(int stream, int quality, const char* local_file, int wait_ms) {
  // The file name is in place before the request leaves, so that a quick
  // reply finds it.
  snap_result_ = 0;
  state_lock_.Lock();
  snap_local_file_ = local_file != nullptr ? local_file : "";
  state_lock_.Unlock();
  char body[96];
  SnapBody(body, sizeof(body), stream, quality);
  int ret = WriteAUXStringEx("SYSTEM_CONTROL_MESSAGE", kSnapCode, 0, body);
  if (ret != 0 || wait_ms < 1) {
    if (ret != 0) {
      state_lock_.Lock();
      snap_local_file_.clear();
      state_lock_.Unlock();
    } else {
      QV_LOG("[%s:%d]SnapPic message send OK, please wait jpg alarm message in callback\n\n");
    }
    return ret;
  }
  unsigned long start = GetTickCount();
  while (snap_result_ == 0 && GetTickCount() - start < static_cast<unsigned long>(wait_ms)) {
    SleepMs(1);
  }
  if (snap_result_ > 0) WaitSnapshotStored(start, static_cast<unsigned long>(wait_ms));
  state_lock_.Lock();
  snap_local_file_.clear();
  state_lock_.Unlock();
  int result = snap_result_;
  if (result > 0) {
    QV_LOG("[%s:%d]Get pic, spend time:%d ms\n\n", static_cast<int>(GetTickCount() - start));
    return 0;
  }
  if (result < 0) {
    QV_LOG("[%s:%d]fail:%d \n\n", result);
    return result;
  }
  QV_LOG("[%s:%d]timeout\n\n");
  return QV_E_SNAP_TIMEOUT;
}

int CPTZControlClass::GetUserData(char* buffer, int* size) {
  state_lock_.Lock();
  free(user_data_);
  user_data_ = nullptr;
  user_data_len_ = -1;
  state_lock_.Unlock();
  int ret = SystemControl(kUserDataCode, 0, "");
  if (ret != 0 || buffer == nullptr || size == nullptr || *size <= 0) return ret;
  unsigned long start = GetTickCount();
  while (user_data_len_ < 0 && GetTickCount() - start < kUserDataWaitMs) SleepUs(100);
  state_lock_.Lock();
  int len = user_data_len_;
  int copy = 0;
  if (len > 0 && user_data_ != nullptr) {
    copy = len < *size - 1 ? len : *size - 1;
    memcpy(buffer, user_data_, static_cast<size_t>(copy));
  }
  state_lock_.Unlock();
  buffer[copy] = '\0';
  *size = copy;
  return 0;
}

// The registry's host callbacks and the forwarding of session events to
// them. A callback and its user pointer are replaced and read together under
// a lock, and called outside it, so a callback may register callbacks.
#include <cstdint>

#include "api/ptz_object_list.h"
#include "base/debug_log.h"
#include "link/ptz_control_class.h"

namespace {

// Low 24 bits from the reply's code, high 8 bits from its flag, computed in
// 32 bits and sign-extended.
long PackedCode(long code, long flag) {
  int32_t packed = static_cast<int32_t>((static_cast<uint32_t>(code) & 0x00FFFFFFu) |
                                        (static_cast<uint32_t>(flag) & 0xFF000000u));
  return static_cast<long>(packed);
}

}  // namespace

void CPTZObjectList::SetStatusEventCallBack(QV_StatusEventCallBack cb, void* user) {
  std::lock_guard<std::mutex> lock(callbacks_mu_);
  status_cb_ = cb;
  status_user_ = user;
}

void CPTZObjectList::SetAUXResponseCallBack(QV_AUXResponseCallBack cb, void* user) {
  std::lock_guard<std::mutex> lock(callbacks_mu_);
  aux_cb_ = cb;
  aux_user_ = user;
}

void CPTZObjectList::SetExceptionCallBack(QV_ExceptionCallBack cb, void* user) {
  std::lock_guard<std::mutex> lock(callbacks_mu_);
  exception_cb_ = cb;
  exception_user_ = user;
}

int CPTZObjectList::SetPlayActionEventCallBack(QV_ReplayEventCallBack cb, void* user) {
  std::lock_guard<std::mutex> lock(callbacks_mu_);
  replay_event_cb_ = cb;
  replay_event_user_ = user;
  return 0;
}

int CPTZObjectList::SetReplayDataCallBack(QV_ReplayDataCallBack cb, void* user) {
  std::lock_guard<std::mutex> lock(callbacks_mu_);
  replay_data_cb_ = cb;
  replay_data_user_ = user;
  return 0;
}

long CPTZObjectList::PostStatusMsg(long reporter_id, long code, const char* text) {
  QV_StatusEventCallBack cb;
  void* user;
  {
    std::lock_guard<std::mutex> lock(callbacks_mu_);
    cb = status_cb_;
    user = status_user_;
  }
  if (cb != nullptr) return cb(reporter_id, code, text, user);
  if (message_window_ != 0) {
    QV_LOG("[%s:%d][CPTZObjectList::PostStatusMsg()] SendMessage() deleted...\n\n");
  }
  return -1;
}

long CPTZObjectList::PostPTZResponseMsg(CPTZControlClass* session, long code, long flag,
                                        const char* xml) {
  QV_AUXResponseCallBack cb;
  void* user;
  {
    std::lock_guard<std::mutex> lock(callbacks_mu_);
    cb = aux_cb_;
    user = aux_user_;
  }
  if (cb == nullptr) return -1;
  return cb(session != nullptr ? session->UserID() : 0, PackedCode(code, flag), xml, user);
}

long CPTZObjectList::PostAuxResponseMsg(CPTZControlClass* session, long code, long flag,
                                        const char* xml) {
  return PostPTZResponseMsg(session, code, flag, xml);
}

long CPTZObjectList::PostAlarmMsg(CPTZControlClass* session, ALARM_ENTRY* entry) {
  QV_StatusEventCallBack cb;
  void* user;
  {
    std::lock_guard<std::mutex> lock(callbacks_mu_);
    cb = status_cb_;
    user = status_user_;
  }
  if (cb == nullptr) return -1;
  return cb(session != nullptr ? session->UserID() : 0, EVENT_PTZALARM,
            reinterpret_cast<const char*>(entry), user);
}

long CPTZObjectList::OnPlayEventCallBack(long user_id, long code, long flag, char* body) {
  QV_ReplayEventCallBack cb;
  void* user;
  {
    std::lock_guard<std::mutex> lock(callbacks_mu_);
    cb = replay_event_cb_;
    user = replay_event_user_;
  }
  if (cb == nullptr) return QV_E_SOCKET;
  return cb(user_id, code, flag, body, user);
}

long CPTZObjectList::OnPlayBackDataRecvCallBack(long user_id, unsigned long kind, char* data,
                                                unsigned long length, FRAME_EXTDATA* extra) {
  QV_ReplayDataCallBack cb;
  void* user;
  {
    std::lock_guard<std::mutex> lock(callbacks_mu_);
    cb = replay_data_cb_;
    user = replay_data_user_;
  }
  if (cb == nullptr) return QV_E_SOCKET;
  if (extra != nullptr) extra->user = user;
  return cb(user_id, kind, data, length, extra);
}

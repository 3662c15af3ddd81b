// Dispatch of received messages by Msg_type: heartbeat and login replies,
// the key reply, PTZ replies, alarms, system / configuration replies, and
// the hand-over of media, replay and talk messages to their handlers.
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "base/compat.h"
#include "base/debug_log.h"
#include "base/time_scale.h"
#include "link/ipc_link_thread.h"
#include "link/message_readers.h"
#include "link/ptz_control_class.h"
#include "link/xml_util.h"

namespace {

const unsigned long kRefusalPauseMs = 10000;
const unsigned long kReconnectPauseMs = 1000;
const long kAbilityCode = 1020;
const long kKeyCode = 150;

bool Is(const char* a, const char* b) { return strcmp(a, b) == 0; }

}  // namespace

bool CPTZControlClass::Dispatch(char* message, int length) {
  char type[kHeaderFieldMax + 1], code[kHeaderFieldMax + 1], flag[kHeaderFieldMax + 1];
  int ret = TinyGetMessageHeader(message, type, code, flag);
  if (ret != 0) {
    QV_LOG("[%s:%d]%s recv bad message xml=%s, len=%d, ret=%d\n\n", log_label_.c_str(), message,
           length, ret);
    return true;
  }
  long code_value = atol(code);
  long flag_value = atol(flag);
  char* body_text = nullptr;
  GetMessageBody(message, &body_text);
  std::unique_ptr<char[]> body(body_text);

  if (Is(type, "AUXPTZ_HEARTBEAT_MESSAGE")) {
    last_recv_tick_ = GetTickCount();
  } else if (Is(type, "MEDIA_DATA_MESSAGE")) {
    // Download data, upload acknowledgements and replay media; a camera
    // never sends upload data. While a link-mode download runs, its frames
    // go to the file (OnFileMediaData answers false for the others); the
    // rest is replay media.
    if (code_value == 1) {
      QV_LOG("[%s:%d]not allow type 1 (upload data) from ipc\n");
    } else if (!OnFileMediaData(message, length)) {
      OnMediaDataMessage(message, length);
    }
  } else if (Is(type, "REPLAY_CONTROL_MESSAGE") || Is(type, "TIMELINE_REPLAY_CONTROL_MESSAGE")) {
    OnReplayReply(code_value, flag_value, body.get());
  } else if (Is(type, "REVERSE_AUDIO_MESSAGE")) {
    OnTalkReply(code, flag_value, flag, message);
  } else if (Is(type, "USER_AUTH_MESSAGE")) {
    if (Is(code, "CMD_USER_AUTH")) return OnLoginReply(flag_value, message, flag);
  } else if (Is(type, "SYSTEM_ENCRYPT_MESSAGE")) {
    if (code_value == kKeyCode && flag_value == 0 && body) OnKeyReply(body.get());
  } else if (Is(type, "PTZ_CONTROL_MESSAGE")) {
    OnPtzReply(code, flag_value, flag, body.get());
  } else if (Is(type, "ALARM_REPORT_MESSAGE")) {
    if (Is(code, "CMD_REPORT_ALARM")) OnAlarmReport(message);
  } else if (Is(type, "SYSTEM_CONTROL_MESSAGE")) {
    OnSystemReply(code_value, flag_value, body.get());
  } else if (Is(type, "SYSTEM_CONFIG_GET_MESSAGE")) {
    if (body) QV_LOG("[%s:%d]msgbody=\n%s\n", body.get());
    OnSystemReply(code_value, flag_value, body.get());
  } else if (Is(type, "SYSTEM_CONFIG_SET_MESSAGE")) {
    PostAuxResponseMsg(code_value, flag_value, body ? body.get() : "");
  }
  // Any other type is ignored.
  return true;
}

bool CPTZControlClass::OnLoginReply(long flag, char* message, const char* flag_text) {
  const char* label = log_label_.c_str();
  if (flag == 0) {
    std::string id;
    GetSessionID(message, id);
    state_lock_.Lock();
    session_id_ = id;
    state_lock_.Unlock();
    reconnect_pause_ = ScaledMs(kReconnectPauseMs);
    link_state_ = kLoggedIn;
    PostStatus(EVENT_LOGINOK, "%s: OK: authentication OK!", label);
    if (talk_.requested) talk_.start_request_tick = GetTickCount();
    SystemControl(kAbilityCode, 0, "");
    if (encrypt_) ExchangeEncrypt();
    return true;
  }
  replay_ability_ = -1;
  if (flag == -1) {
    PostStatus(EVENT_LOGIN_USERERROR,
               "%s: ERR %s: authentication failed, username or passwords errror!", label,
               flag_text);
  } else {
    PostStatus(EVENT_LOGINFAILED, "%s: ERR %s: authentication failed, close link!", label,
               flag_text);
  }
  link_thread_->SleepThread(static_cast<int>(ScaledMs(kRefusalPauseMs)), 100);
  return false;
}

void CPTZControlClass::OnKeyReply(const char* body) {
  TiXmlDocument doc;
  if (ParseXml(doc, body)) {
    const char* key = GetAttribValue(doc.RootElement(), "KeyValue");
    if (key != nullptr) QV_LOG("[%s:%d]Get key %s, set key %s\n", key, key_.c_str());
  }
  PostAuxResponseMsg(kKeyCode, 0, body);
}

void CPTZControlClass::OnPtzReply(const char* code, long flag, const char* flag_text,
                                  const char* body) {
  const char* label = log_label_.c_str();
  if (flag != 0) {
    PostStatus(EVENT_SENDPTZFAILED, "%s: ERR %s: send PTZ control command failed!", label,
               flag_text);
    return;
  }
  PostStatus(EVENT_SENDPTZOK, "%s: send PTZ control command ok!", label);
  bool preset_reply = Is(code, "PTZ_CMD");
  if (body != nullptr) {
    if (preset_reply) {
      PostStatusMsg(EVENT_PTZPRESETINFO, body);
    } else {
      PostPTZResponseMsg(atol(code), 0, body);
    }
  } else if (preset_reply) {
    PostStatusMsg(EVNET_PTZNOPRESETINFO, "");
  } else {
    PostPTZResponseMsg(atol(code), 0, "");
  }
}

void CPTZControlClass::OnAlarmReport(char* message) {
  ALARM_ENTRY* list = nullptr;
  int count = GetAlarmList(message, &list);
  for (int i = 0; i < count; ++i) {
    ALARM_ENTRY entry = list[i];
    PostAlarmMsg(&entry);
  }
  delete[] list;
}

void CPTZControlClass::OnSystemReply(long code, long flag, const char* body) {
  if (code == kAbilityCode && body != nullptr) UpdateAbility(body);
  PostAuxResponseMsg(code, flag, body != nullptr ? body : "");
}

void CPTZControlClass::UpdateAbility(const char* body) {
  std::string list;
  std::string framed = std::string("+ ") + body + " + ";
  for (char c : framed) {
    if (!isspace(static_cast<unsigned char>(c))) list += c;
  }
  replay_ability_ = list.find("+front_replay+") != std::string::npos ? 1 : 0;
  state_lock_.Lock();
  ability_list_ = list;
  state_lock_.Unlock();
}

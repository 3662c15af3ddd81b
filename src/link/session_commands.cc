// Queueing of requests: the state checks, the three queues and the thin
// request builders.
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include "base/compat.h"
#include "base/debug_log.h"
#include "link/ptz_control_class.h"
#include "link/xml_request.h"

namespace {

const int kPtzBufferSize = 20480;
// Room for one aux request: longer requests are cut to 51,199 characters.
const int kAuxBufferSize = 51200;
const int kStopRepeats = 6;
const int kStopGapMs = 50;

const char* const kAuxTypes[] = {
    "SYSTEM_CONFIG_SET_MESSAGE", "SYSTEM_CONFIG_GET_MESSAGE", "SYSTEM_CONTROL_MESSAGE",
    "VOD_CONTROL_MESSAGE", "SYSTEM_ENCRYPT_MESSAGE",
};

bool AuxTypeAllowed(const char* type) {
  for (const char* allowed : kAuxTypes) {
    if (strcmp(type, allowed) == 0) return true;
  }
  return false;
}

// A body text from a caller's buffer: bounded by its size when one is given.
std::string BodyText(const void* body, unsigned long size) {
  if (body == nullptr) return std::string();
  const char* text = static_cast<const char*>(body);
  return size > 0 ? std::string(text, strnlen(text, size)) : std::string(text);
}

}  // namespace

int CPTZControlClass::CheckLoggedIn() {
  int state = link_state_;
  if (state < kConnected) {
    QV_LOG("[%s:%d]failed, not connected!\n");
    return QV_E_NOT_CONNECTED;
  }
  if (state == kConnected) {
    QV_LOG("[%s:%d]failed, not log in!\n");
    return QV_E_NOT_LOGGED_IN;
  }
  return 0;
}

int CPTZControlClass::Queue(std::list<CAuxMsgBuffer>& queue, CBkMutex& lock,
                            const CAuxMsgBuffer& msg) {
  // An empty request goes out as a bare frame header; a failed copy does not.
  if (msg.c_bytes() == nullptr && msg.length() > 0) return QV_E_NO_MEMORY;
  int ret = 0;
  lock.Lock();
  try {
    queue.push_back(msg);
  } catch (const std::bad_alloc&) {
    ret = QV_E_NO_MEMORY;
  }
  lock.Unlock();
  if (ret == 0) WakeLinkThread();
  return ret;
}

int CPTZControlClass::WritePTZString(const char* xml) {
  if (xml == nullptr) return QV_E_INVALID_ARG;
  int ret = CheckLoggedIn();
  if (ret != 0) return ret;
  std::unique_ptr<char[]> buffer(new (std::nothrow) char[kPtzBufferSize]);
  if (!buffer) return QV_E_NO_MEMORY;
  int len = MakeXMLRequest(buffer.get(), kPtzBufferSize, "PTZ_CONTROL_MESSAGE", "PTZ_CMD", "0", xml);
  CAuxMsgBuffer msg(buffer.get(), len, 0);
  if (strstr(xml, "<cmd>stop</cmd>") != nullptr) {
    // A stop must not get lost: it is sent several times.
    for (int i = 0; i < kStopRepeats; ++i) {
      if ((ret = Queue(ptz_queue_, ptz_lock_, msg)) != 0) return ret;
      if (i + 1 < kStopRepeats) SleepMs(kStopGapMs);
    }
    last_ptz_tick_ = 0;
    return 0;
  }
  if ((ret = Queue(ptz_queue_, ptz_lock_, msg)) != 0) return ret;
  last_ptz_tick_ = static_cast<unsigned>(GetTickCount());
  return 0;
}

int CPTZControlClass::WriteAUXString(const char* message, int encrypted) {
  int ret = CheckLoggedIn();
  if (ret != 0) return ret;
  if (message == nullptr) return QV_E_INVALID_ARG;
  return Queue(aux_queue_, aux_lock_, CAuxMsgBuffer(message, encrypted));
}

int CPTZControlClass::WriteAUXStringEx(const char* type, long code, long flag, const char* body) {
  int ret = CheckLoggedIn();
  if (ret != 0) return ret;
  if (type == nullptr) return QV_E_INVALID_ARG;
  if (!AuxTypeAllowed(type)) {
    QV_LOG("[%s:%d]undefined message type: %s\n", type);
    return QV_E_MSG_TYPE;
  }
  char code_text[32], flag_text[32];
  snprintf(code_text, sizeof(code_text), "%ld", code);
  snprintf(flag_text, sizeof(flag_text), "%ld", flag);
  std::unique_ptr<char[]> buffer(new (std::nothrow) char[kAuxBufferSize]);
  if (!buffer) return QV_E_NO_MEMORY;
  int len = MakeXMLRequest(buffer.get(), kAuxBufferSize, type, code_text, flag_text, body);
  if ((ret = Queue(aux_queue_, aux_lock_, CAuxMsgBuffer(buffer.get(), len, 0))) != 0) return ret;
  QV_LOG("[%s:%d]add this action to list ok!\n");
  return 0;
}

int CPTZControlClass::WriteAUXStringEx1(const char* data, int length) {
  int ret = CheckLoggedIn();
  if (ret != 0) return ret;
  // Queued as given: a length of 0 sends a bare header, a negative one a
  // header the link cannot follow with its payload (the link then drops).
  if (data == nullptr && length > 0) return QV_E_INVALID_ARG;
  return Queue(aux_queue_, aux_lock_, CAuxMsgBuffer(data, length, 0));
}

int CPTZControlClass::WriteActionString(const char* data, int length) {
  int ret = CheckLoggedIn();
  if (ret != 0) return ret;
  if (data == nullptr || length < 1 || length > CPacketFraming::kMaxPayload) {
    return QV_E_INVALID_ARG;
  }
  return Queue(action_queue_, action_lock_, CAuxMsgBuffer(data, length, 0));
}

int CPTZControlClass::SendEncryptRawData(const char* message) {
  return WriteAUXString(message, 1);
}

int CPTZControlClass::SystemControl(unsigned long code, int flag, const char* body) {
  return WriteAUXStringEx("SYSTEM_CONTROL_MESSAGE", static_cast<long>(code), flag, body);
}

int CPTZControlClass::VodControl(unsigned long code, int flag, const char* body) {
  return WriteAUXStringEx("VOD_CONTROL_MESSAGE", static_cast<long>(code), flag, body);
}

int CPTZControlClass::SetDVRConfig(unsigned long code, long, const void* body,
                                   unsigned long size) {
  std::string text = BodyText(body, size);
  return WriteAUXStringEx("SYSTEM_CONFIG_SET_MESSAGE", static_cast<long>(code), 0, text.c_str());
}

int CPTZControlClass::GetDVRConfig(unsigned long code, long, void* body, unsigned long size,
                                   unsigned long*) {
  std::string text = BodyText(body, size);
  return WriteAUXStringEx("SYSTEM_CONFIG_GET_MESSAGE", static_cast<long>(code), 0, text.c_str());
}

int CPTZControlClass::CreateIFrame(int stream) {
  char body[96];
  snprintf(body, sizeof(body), "<REQUEST_PARAM\nCamera=\"0\" Stream=\"%d\" />\n", stream);
  return WriteAUXStringEx("SYSTEM_CONTROL_MESSAGE", 1032, 0, body);
}

int CPTZControlClass::GetRecordFileList() {
  char body[64];
  snprintf(body, sizeof(body), "<REQUEST_PARAM RecordMode=\"%d\" />", 1);
  return WriteAUXStringEx("SYSTEM_CONTROL_MESSAGE", 1021, 0, body);
}

int CPTZControlClass::ExchangeEncrypt() {
  std::string body = "<KeyConfig KeyLen=\"32\" KeyValue=\"" + key_ + "\"/>";
  return WriteAUXStringEx("SYSTEM_ENCRYPT_MESSAGE", 150, 0, body.c_str());
}

int CPTZControlClass::SetUserData(char*, int) {
  printf("[SetUserData],This function needs to be fixed , call the uathor pls~!");
  return 0;
}

int CPTZControlClass::CopyResponse(const std::string& response, std::string& out) {
  int state = link_state_;
  if (state < kConnected) QV_LOG("[%s:%d]failed, not connected!\n");
  if (state == kConnected) {
    QV_LOG("[%s:%d]failed, not log in!\n");
    return -3;
  }
  state_lock_.Lock();
  out = response;
  state_lock_.Unlock();
  return static_cast<int>(out.size());
}

int CPTZControlClass::GetLastPTZResponse(std::string& out) {
  return CopyResponse(last_ptz_response_, out);
}

int CPTZControlClass::GetLastAUXResponse(std::string& out) {
  return CopyResponse(last_aux_response_, out);
}

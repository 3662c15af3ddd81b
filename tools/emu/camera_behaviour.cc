#include "emu/camera_behaviour.h"

#include <tinyxml.h>

#include <cstdlib>

#include "emu/envelope.h"

namespace qvemu {
namespace {

constexpr size_t kLogEntries = 50;

Reply Answer(const ReceivedFrame& f, int flag, const std::string& body = "") {
  return Reply{f.type, f.code, std::to_string(flag), body};
}

std::string Trimmed(const std::string& s) {
  size_t b = s.find_first_not_of(" \r\n\t");
  if (b == std::string::npos) return "";
  size_t e = s.find_last_not_of(" \r\n\t");
  return s.substr(b, e - b + 1);
}

time_t LocalOffset() {
  time_t now = time(nullptr);
  struct tm t;
  localtime_r(&now, &t);
  return t.tm_gmtoff;
}

}  // namespace

CameraBehaviour::CameraBehaviour(const CameraOptions& options)
    : options_(options), user_data_(options.user_data), clock_offset_(LocalOffset()) {
  if (!options_.config_document.empty() && !config_.Load(options_.config_document)) {
    Note("configuration document unusable, built-in default used");
  }
  initial_config_ = config_.Text();
  using namespace std::placeholders;
  type_handlers_["USER_AUTH_MESSAGE"] = std::bind(&CameraBehaviour::OnLogin, this, _1, _2, _3);
  type_handlers_["AUXPTZ_HEARTBEAT_MESSAGE"] =
      std::bind(&CameraBehaviour::OnHeartbeat, this, _1, _2, _3);
  type_handlers_["PTZ_CONTROL_MESSAGE"] = std::bind(&CameraBehaviour::OnPtz, this, _1, _2, _3);
  type_handlers_["SYSTEM_CONTROL_MESSAGE"] =
      std::bind(&CameraBehaviour::OnSystemControl, this, _1, _2, _3);
  type_handlers_["SYSTEM_CONFIG_GET_MESSAGE"] =
      std::bind(&CameraBehaviour::OnConfigGet, this, _1, _2, _3);
  type_handlers_["SYSTEM_CONFIG_SET_MESSAGE"] =
      std::bind(&CameraBehaviour::OnConfigSet, this, _1, _2, _3);
  type_handlers_["SYSTEM_ENCRYPT_MESSAGE"] =
      std::bind(&CameraBehaviour::OnEncrypt, this, _1, _2, _3);
  type_handlers_["MEDIA_DATA_MESSAGE"] =
      std::bind(&CameraBehaviour::OnMediaData, this, _1, _2, _3);
  AddControlHandlers();
}

std::vector<Reply> CameraBehaviour::Handle(LinkState* link, const ReceivedFrame& frame) {
  std::lock_guard<std::mutex> lock(mu_);
  std::vector<Reply> out;
  bool is_login = frame.type == "USER_AUTH_MESSAGE";
  if (!is_login && !link->logged_in) return out;
  auto canned = canned_.find({frame.type, frame.code});
  if (canned != canned_.end()) {
    out.push_back(Answer(frame, canned->second.first, canned->second.second));
    if (is_login && canned->second.first == 0) {
      link->logged_in = true;
      ++logins_;
    }
    return out;
  }
  auto handler = type_handlers_.find(frame.type);
  if (handler != type_handlers_.end()) handler->second(link, frame, &out);
  return out;
}

void CameraBehaviour::OnLogin(LinkState* link, const ReceivedFrame& f, std::vector<Reply>* out) {
  if (f.code != "CMD_USER_AUTH" || login_mode_ == LoginReply::Silent) return;
  if (login_mode_ == LoginReply::Refuse) {
    out->push_back(Answer(f, refuse_flag_));
    return;
  }
  BodyXml body(f.body);
  const TiXmlElement* auth = body.Find("USER_AUTH_PARAM");
  std::string user = BodyXml::Attr(auth, "Username");
  if (!auth || user != options_.user || BodyXml::Attr(auth, "Password") != options_.password) {
    Note("login refused for user \"" + user + "\"");
    out->push_back(Answer(f, -1));
    return;
  }
  link->logged_in = true;
  ++logins_;
  Note("login of \"" + user + "\" on link " + std::to_string(link->connection));
  out->push_back(Answer(f, 0,
                        "<USER_AUTH_RESPONSE Sessionid=\"" + EscapeAttr(options_.session_id) +
                            "\" />"));
}

void CameraBehaviour::OnHeartbeat(LinkState*, const ReceivedFrame& f, std::vector<Reply>* out) {
  if (f.code == "CMD_HEARTBEAT" && heartbeat_replies_) out->push_back(Answer(f, 0));
}

void CameraBehaviour::OnPtz(LinkState*, const ReceivedFrame& f, std::vector<Reply>* out) {
  out->push_back(Reply{f.type, ptz_code_, std::to_string(ptz_flag_), ptz_body_});
}

void CameraBehaviour::OnSystemControl(LinkState* link, const ReceivedFrame& f,
                                      std::vector<Reply>* out) {
  auto handler = control_handlers_.find(atol(f.code.c_str()));
  if (handler == control_handlers_.end()) {
    out->push_back(Answer(f, -1));
    return;
  }
  handler->second(link, f, out);
}

void CameraBehaviour::OnConfigGet(LinkState* link, const ReceivedFrame& f,
                                  std::vector<Reply>* out) {
  long code = atol(f.code.c_str());
  auto ability = control_handlers_.find(1020);
  if (code == 1020 && ability != control_handlers_.end()) {
    ability->second(link, f, out);
    return;
  }
  std::string section;
  if (config_.GetSection(code, &section)) {
    out->push_back(Answer(f, 0, section));
  } else {
    out->push_back(Answer(f, -1));
  }
}

void CameraBehaviour::OnConfigSet(LinkState*, const ReceivedFrame& f, std::vector<Reply>* out) {
  long code = atol(f.code.c_str());
  bool ok = config_.SetSection(code, Trimmed(f.body));
  if (ok) {
    Note("configuration section " + std::to_string(code) + " changed");
    if (config_listener_) config_listener_(code, config_.Config());
  }
  out->push_back(Answer(f, ok ? 0 : -1));
}

void CameraBehaviour::OnEncrypt(LinkState*, const ReceivedFrame& f, std::vector<Reply>* out) {
  if (f.code != "150") {
    out->push_back(Answer(f, -1));
    return;
  }
  out->push_back(Answer(f, 0,
                        "<KeyConfig KeyLen=\"32\" KeyValue=\"" + EscapeAttr(options_.key) +
                            "\"/>"));
}

void CameraBehaviour::OnMediaData(LinkState* link, const ReceivedFrame& f,
                                  std::vector<Reply>* out) {
  auto handler = media_handlers_.find(atol(f.code.c_str()));
  if (handler != media_handlers_.end()) handler->second(link, f, out);
}

void CameraBehaviour::AddControlHandlers() {
  // Codes whose reply is a plain acknowledgement; the log keeps what happened.
  const std::map<long, const char*> acknowledged = {
      {1007, "reboot requested"},
      {1032, "key frame requested"},
      {1043, "snapshot requested"},
      {1112, "deterrence triggered"},
  };
  for (const auto& a : acknowledged) {
    std::string text = a.second;
    control_handlers_[a.first] = [this, text](LinkState*, const ReceivedFrame& f,
                                              std::vector<Reply>* out) {
      Note(text);
      out->push_back(Answer(f, 0));
    };
  }
  control_handlers_[1002] = [this](LinkState*, const ReceivedFrame& f, std::vector<Reply>* out) {
    config_.Load(initial_config_);
    Note("configuration restored");
    out->push_back(Answer(f, 0));
  };
  control_handlers_[1005] = [this](LinkState*, const ReceivedFrame& f, std::vector<Reply>* out) {
    time_t when;
    std::string zone;
    if (!ParseSetTime(f.body, &when, &zone)) {
      out->push_back(Answer(f, -1));
      return;
    }
    clock_offset_ = when - time(nullptr);
    if (!zone.empty()) config_.Config().system.Time.TimeZone = atoi(zone.c_str());
    Note("system time set");
    out->push_back(Answer(f, 0));
  };
  control_handlers_[1017] = [this](LinkState*, const ReceivedFrame& f, std::vector<Reply>* out) {
    BodyXml body(f.body);
    std::string dev = BodyXml::Attr(body.Find("REQUEST_PARAM"), "DevName");
    bool known = dev == "sd1" || dev == "sd2" || dev == "usb";
    if (known) Note("disk " + dev + " formatted");
    out->push_back(Answer(f, known ? 0 : -1));
  };
  control_handlers_[1020] = [this](LinkState*, const ReceivedFrame& f, std::vector<Reply>* out) {
    out->push_back(Answer(f, 0, AbilityText(options_.front_replay)));
  };
  control_handlers_[1021] = [this](LinkState*, const ReceivedFrame& f, std::vector<Reply>* out) {
    std::string body;
    bool ok = options_.front_replay &&
              ReplayDistributionBody(f.body, time(nullptr) + clock_offset_, &body);
    out->push_back(ok ? Answer(f, 0, body) : Answer(f, -1));
  };
  control_handlers_[1025] = [this](LinkState*, const ReceivedFrame& f, std::vector<Reply>* out) {
    out->push_back(Answer(f, 0, LogListBody(std::vector<LogEvent>(log_.begin(), log_.end()))));
  };
  control_handlers_[1031] = [](LinkState*, const ReceivedFrame& f, std::vector<Reply>* out) {
    out->push_back(Answer(f, 0, MediaCapabilityBody()));
  };
  control_handlers_[1034] = [this](LinkState*, const ReceivedFrame& f, std::vector<Reply>* out) {
    out->push_back(
        Answer(f, 0, "<RESPONSE_PARAM UserDevData=\"" + HexEncode(user_data_) + "\" />"));
  };
  control_handlers_[1046] = [this](LinkState*, const ReceivedFrame& f, std::vector<Reply>* out) {
    BodyXml body(f.body);
    std::string mode = BodyXml::Attr(body.Find("REQUEST_PARAM"), "Mode");
    bool known = mode == "DayMode" || mode == "NightMode";
    if (known) {
      day_night_ = mode;
      Note("switched to " + mode);
    }
    out->push_back(Answer(f, known ? 0 : -1));
  };
  control_handlers_[1048] = [this](LinkState*, const ReceivedFrame& f, std::vector<Reply>* out) {
    out->push_back(Answer(f, 0,
                          SystemTimeBody(time(nullptr) + clock_offset_,
                                         std::to_string(config_.Config().system.Time.TimeZone))));
  };
}

void CameraBehaviour::Note(const std::string& text) {
  log_.push_back(LogEvent{time(nullptr) + clock_offset_, text});
  if (log_.size() > kLogEntries) log_.pop_front();
}

void CameraBehaviour::SetTypeHandler(const std::string& type, Handler handler) {
  std::lock_guard<std::mutex> lock(mu_);
  type_handlers_[type] = std::move(handler);
}

void CameraBehaviour::SetControlHandler(long code, Handler handler) {
  std::lock_guard<std::mutex> lock(mu_);
  control_handlers_[code] = std::move(handler);
}

void CameraBehaviour::SetMediaHandler(long code, Handler handler) {
  std::lock_guard<std::mutex> lock(mu_);
  media_handlers_[code] = std::move(handler);
}

std::string CameraBehaviour::ConfigDocumentLocked() const { return config_.Text(); }

bool CameraBehaviour::SetConfigDocumentLocked(const std::string& xml) { return config_.Load(xml); }

time_t CameraBehaviour::CameraNowLocked() const { return time(nullptr) + clock_offset_; }

void CameraBehaviour::AddNote(const std::string& text) {
  std::lock_guard<std::mutex> lock(mu_);
  Note(text);
}

void CameraBehaviour::SetLoginReply(LoginReply mode, int refuse_flag) {
  std::lock_guard<std::mutex> lock(mu_);
  login_mode_ = mode;
  refuse_flag_ = refuse_flag;
}

void CameraBehaviour::SetHeartbeatReplies(bool on) {
  std::lock_guard<std::mutex> lock(mu_);
  heartbeat_replies_ = on;
}

void CameraBehaviour::SetReplyDelayMs(int ms) {
  std::lock_guard<std::mutex> lock(mu_);
  reply_delay_ms_ = ms < 0 ? 0 : ms;
}

int CameraBehaviour::ReplyDelayMs() const {
  std::lock_guard<std::mutex> lock(mu_);
  return reply_delay_ms_;
}

void CameraBehaviour::SetPtzReply(int flag, const std::string& code, const std::string& body) {
  std::lock_guard<std::mutex> lock(mu_);
  ptz_flag_ = flag;
  ptz_code_ = code;
  ptz_body_ = body;
}

void CameraBehaviour::InjectBeforeNextReply(const std::string& raw_bytes) {
  std::lock_guard<std::mutex> lock(mu_);
  injection_ += raw_bytes;
}

std::string CameraBehaviour::TakeInjection() {
  std::lock_guard<std::mutex> lock(mu_);
  std::string out;
  out.swap(injection_);
  return out;
}

void CameraBehaviour::SetUserData(const std::string& bytes) {
  std::lock_guard<std::mutex> lock(mu_);
  user_data_ = bytes;
}

void CameraBehaviour::SetReply(const std::string& type, const std::string& code, int flag,
                               const std::string& body) {
  std::lock_guard<std::mutex> lock(mu_);
  canned_[{type, code}] = {flag, body};
}

void CameraBehaviour::ClearReplies() {
  std::lock_guard<std::mutex> lock(mu_);
  canned_.clear();
}

int CameraBehaviour::Logins() const {
  std::lock_guard<std::mutex> lock(mu_);
  return logins_;
}

std::string CameraBehaviour::ConfigDocument() const {
  std::lock_guard<std::mutex> lock(mu_);
  return config_.Text();
}

void CameraBehaviour::SetConfigListener(ConfigListener listener) {
  std::lock_guard<std::mutex> lock(mu_);
  config_listener_ = std::move(listener);
}

bool CameraBehaviour::SetConfigDocument(const std::string& xml) {
  std::lock_guard<std::mutex> lock(mu_);
  return config_.Load(xml);
}

time_t CameraBehaviour::CameraNow() const {
  std::lock_guard<std::mutex> lock(mu_);
  return time(nullptr) + clock_offset_;
}

}  // namespace qvemu

// What the emulated camera answers, apart from any socket: one handler per
// message family (Msg_type) and, inside the system control family, one per
// code, and inside the media data family one per code. Later message
// families (files, replay, talk) plug in with SetTypeHandler,
// SetControlHandler and SetMediaHandler.
#pragma once

#include <ctime>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "emu/camera.h"
#include "emu/config_store.h"
#include "emu/system_replies.h"

namespace qvemu {

// One message the camera sends back.
struct Reply {
  Reply() = default;
  Reply(std::string t, std::string c, std::string f, std::string b)
      : type(std::move(t)), code(std::move(c)), flag(std::move(f)), body(std::move(b)) {}
  std::string type, code, flag, body;
  std::function<void()> after_sent;  // runs once the reply went out whole (may be empty)
};

// What a link knows about itself; handlers may change logged_in.
struct LinkState {
  int connection = 0;
  bool logged_in = false;
  // Sends bytes whole on this link, serialised with the replies: for what
  // the camera pushes on its own (replay media, file data). Usable while
  // the link runs, so only by the link's own parts below.
  std::function<bool(const std::string&)> send;
  // Helpers that belong to this link (a replay sender, a talk receiver),
  // by name; destroyed when the link ends, before its socket closes.
  std::map<std::string, std::shared_ptr<void>> parts;
  int pause_reading_ms = 0;  // set by a handler: the link reads nothing more for this long
};

class CameraBehaviour {
 public:
  // Handlers run with the behaviour's lock held: they may read and change
  // the state through the protected-by-lock accessors below, never through
  // the public setters.
  using Handler = std::function<void(LinkState*, const ReceivedFrame&, std::vector<Reply>*)>;

  explicit CameraBehaviour(const CameraOptions& options);

  // The replies to one received frame, in sending order (often one, none
  // for ignored messages and faults).
  std::vector<Reply> Handle(LinkState* link, const ReceivedFrame& frame);

  void SetTypeHandler(const std::string& type, Handler handler);
  void SetControlHandler(long code, Handler handler);
  // MEDIA_DATA_MESSAGE by Msg_code (talk audio, file data); codes without
  // a handler are not answered.
  void SetMediaHandler(long code, Handler handler);

  // For handlers, which run with the lock held: the camera's log, its
  // configuration document and its clock.
  void NoteLocked(const std::string& text) { Note(text); }
  std::string ConfigDocumentLocked() const;
  bool SetConfigDocumentLocked(const std::string& xml);
  time_t CameraNowLocked() const;
  // One entry of the camera's log, from any other thread.
  void AddNote(const std::string& text);

  // Settings and faults (see Camera).
  void SetLoginReply(LoginReply mode, int refuse_flag);
  void SetHeartbeatReplies(bool on);
  void SetReplyDelayMs(int ms);
  int ReplyDelayMs() const;
  void SetPtzReply(int flag, const std::string& code, const std::string& body);
  void InjectBeforeNextReply(const std::string& raw_bytes);
  std::string TakeInjection();  // the bytes to send ahead of the next reply, once
  void SetUserData(const std::string& bytes);
  void SetReply(const std::string& type, const std::string& code, int flag,
                const std::string& body);
  void ClearReplies();
  int Logins() const;
  std::string ConfigDocument() const;
  bool SetConfigDocument(const std::string& xml);
  // Called, with the lock held, after a configuration set changed a section.
  using ConfigListener = std::function<void(long code, const IPCConfig& cfg)>;
  void SetConfigListener(ConfigListener listener);
  time_t CameraNow() const;  // the camera's wall clock

 private:
  void OnLogin(LinkState* link, const ReceivedFrame& f, std::vector<Reply>* out);
  void OnHeartbeat(LinkState* link, const ReceivedFrame& f, std::vector<Reply>* out);
  void OnPtz(LinkState* link, const ReceivedFrame& f, std::vector<Reply>* out);
  void OnSystemControl(LinkState* link, const ReceivedFrame& f, std::vector<Reply>* out);
  void OnConfigGet(LinkState* link, const ReceivedFrame& f, std::vector<Reply>* out);
  void OnConfigSet(LinkState* link, const ReceivedFrame& f, std::vector<Reply>* out);
  void OnEncrypt(LinkState* link, const ReceivedFrame& f, std::vector<Reply>* out);
  void OnMediaData(LinkState* link, const ReceivedFrame& f, std::vector<Reply>* out);
  void AddControlHandlers();
  void Note(const std::string& text);  // one entry of the camera's log

  const CameraOptions options_;
  mutable std::mutex mu_;
  std::map<std::string, Handler> type_handlers_;
  std::map<long, Handler> control_handlers_;
  std::map<long, Handler> media_handlers_;
  std::map<std::pair<std::string, std::string>, std::pair<int, std::string>> canned_;

  LoginReply login_mode_ = LoginReply::Accept;
  int refuse_flag_ = -1;
  bool heartbeat_replies_ = true;
  int reply_delay_ms_ = 0;
  int ptz_flag_ = 0;
  std::string ptz_code_ = "PTZ_CMD";
  std::string ptz_body_;
  std::string injection_;
  std::string user_data_;
  int logins_ = 0;

  ConfigStore config_;
  ConfigListener config_listener_;
  std::string initial_config_;  // what a restore (code 1002) goes back to
  time_t clock_offset_ = 0;     // camera clock minus the host's UTC clock
  std::string day_night_ = "DayMode";
  std::deque<LogEvent> log_;
};

}  // namespace qvemu

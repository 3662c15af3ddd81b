#include "camera_session.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <vector>

#include "report.h"

namespace {

// Events that end a session's link: connecting failed or the link was lost.
bool LinkLost(long code) {
  return code == EVENT_CONNECTFAILED || code == EVENT_SOCKETERROR ||
         code == EVENT_LOGIN_RECONNECT || code == EVENT_LOGOUT_FINISH;
}

bool LoginRefused(long code) {
  return LinkLost(code) || code == EVENT_LOGINFAILED || code == EVENT_LOGIN_USERERROR ||
         code == EVENT_LOGIN_HEARTBEAT_LOST;
}

std::string TimeoutText(int ms) {
  char text[32];
  snprintf(text, sizeof(text), "%g s", ms / 1000.0);
  return text;
}

}  // namespace

namespace {
bool g_show_library_prints = false;
}  // namespace

void LibraryPrints::Show(bool on) { g_show_library_prints = on; }

LibraryPrints::LibraryPrints() {
  fflush(stdout);
  saved_ = dup(STDOUT_FILENO);
  if (saved_ < 0) return;
  if (g_show_library_prints) {
    dup2(STDERR_FILENO, STDOUT_FILENO);
    return;
  }
  int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (null >= 0) {
    dup2(null, STDOUT_FILENO);
    close(null);
  }
}

LibraryPrints::~LibraryPrints() {
  fflush(stdout);
  if (saved_ >= 0) {
    dup2(saved_, STDOUT_FILENO);
    close(saved_);
  }
}

Library::Library(const LogOptions& log) {
  LibraryPrints::Show(log.console);
  {
    LibraryPrints quiet;  // "SIGPIPE ignore"
    IP_NET_DVR_Init();
  }
  if (log.console) IP_NET_DVR_LOG_OPEN();
  if (!log.dir.empty() || log.udp) {
    std::vector<char> dir(log.dir.begin(), log.dir.end());
    dir.push_back('\0');
    unsigned long mode = (log.dir.empty() ? 0 : 1) | (log.udp ? 2 : 0);
    IP_NET_DVR_SetLogToFile(mode, dir.data(), 0);
  }
  Notices::Instance().Install();
}

Library::~Library() {
  LibraryPrints quiet;
  IP_NET_DVR_Cleanup();
}

CameraSession::CameraSession(const ConnectionOptions& connection) : connection_(connection) {}

CameraSession::~CameraSession() {
  if (id_ > 0) IP_NET_DVR_Logout(id_);
}

std::string CameraSession::Address() const {
  return connection_.host + ":" + std::to_string(connection_.port);
}

bool CameraSession::Open() {
  if (connection_.port < 1 || connection_.port > 65534) {
    return Fail("no camera port: give --port N (or QUORVEL_PORT), 1 to 65534");
  }
  std::vector<char> user(connection_.user.begin(), connection_.user.end());
  std::vector<char> password(connection_.password.begin(), connection_.password.end());
  user.push_back('\0');
  password.push_back('\0');
  size_t since = Notices::Instance().End();
  id_ = IP_NET_DVR_Login(connection_.host.c_str(), static_cast<unsigned short>(connection_.port),
                         user.data(), password.data(), nullptr);
  if (id_ <= 0) {
    id_ = 0;
    return Fail("login to " + Address() + " failed: the library took no session (bad address, "
                "or 128 sessions in use)") == 0;
  }
  Notice verdict;
  bool answered = Notices::Instance().WaitFor(
      &since,
      [this](const Notice& n) {
        return n.kind == Notice::kStatus && n.id == id_ &&
               (n.code == EVENT_LOGINOK || LoginRefused(n.code));
      },
      TimeoutMs(), &verdict);
  if (!answered) {
    if (Interrupted()) return Fail("interrupted") == 0;
    return Fail("login to " + Address() + " failed: no answer within " +
                TimeoutText(TimeoutMs())) == 0;
  }
  if (verdict.code != EVENT_LOGINOK) return FailEvent("login to " + Address(), verdict) == 0;
  return true;
}

bool CameraSession::AwaitEvent(const std::string& what, size_t since,
                               const std::function<bool(const Notice&)>& match, int timeout_ms,
                               Notice* found) {
  Notice n;
  bool seen = Notices::Instance().WaitFor(
      &since,
      [&](const Notice& x) {
        return x.kind == Notice::kStatus && x.id == id_ && (match(x) || LinkLost(x.code));
      },
      timeout_ms, &n);
  if (!seen) {
    if (Interrupted()) return Fail(what + " interrupted") == 0;
    return Fail(what + " failed: no answer within " + TimeoutText(timeout_ms)) == 0;
  }
  if (!match(n)) return FailEvent(what, n) == 0;
  if (found != nullptr) *found = n;
  return true;
}

bool CameraSession::Ask(const std::string& what, const std::function<long()>& send,
                        long reply_code, Notice* reply) {
  size_t since = Notices::Instance().End();
  long queued = send();
  if (queued < 0) return FailResult(what, queued) == 0;
  Notice n;
  bool seen = Notices::Instance().WaitFor(
      &since,
      [&](const Notice& x) {
        if (x.id != id_) return false;
        if (x.kind == Notice::kReply) return x.ReplyCode() == reply_code;
        return LinkLost(x.code) || x.code == EVENT_SENDPTZERROR;
      },
      TimeoutMs(), &n);
  if (!seen) {
    if (Interrupted()) return Fail(what + " interrupted") == 0;
    return Fail(what + " failed: no reply within " + TimeoutText(TimeoutMs())) == 0;
  }
  if (n.kind == Notice::kStatus) return FailEvent(what, n) == 0;
  if (n.Refused()) {
    return Fail(what + " failed: the camera refused it (reply " + std::to_string(reply_code) +
                " with a failure flag)") == 0;
  }
  if (reply != nullptr) *reply = n;
  return true;
}

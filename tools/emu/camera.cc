#include "emu/camera.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <mutex>
#include <thread>

#include "emu/camera_behaviour.h"
#include "emu/envelope.h"
#include "emu/file_service.h"
#include "emu/frame_io.h"
#include "emu/frame_log.h"
#include "emu/link.h"
#include "emu/replay_server.h"
#include "emu/system_replies.h"
#include "emu/talk_receiver.h"

namespace qvemu {

class Camera::Impl {
 public:
  explicit Impl(CameraOptions options)
      : options_(std::move(options)), behaviour_(options_), log_(options_.record_limit),
        files_(options_, &behaviour_, FileHooks()), replay_(options_) {
    talk_.Install(&behaviour_);
    replay_.Install(&behaviour_);
  }

  ~Impl() { Stop(); }

  bool Start();
  void Stop();
  void CloseLinks();
  // Sends bytes to the links that pass the filter; true if one took them whole.
  bool SendTo(const std::function<bool(const Link&)>& filter, const std::string& bytes,
              const std::string& what);
  int OpenLinks() const;
  void Print(const std::string& text) const;

  const CameraOptions options_;
  CameraBehaviour behaviour_;
  TalkReceiver talk_;
  FrameLog log_;
  FileService files_;
  ReplayServer replay_;
  std::atomic<uint16_t> port_{0};
  std::atomic<int> connections_{0};
  std::atomic<uint64_t> skipped_bytes_{0};
  std::atomic<int> bad_lengths_{0};

 private:
  void AcceptLoop();
  std::vector<std::shared_ptr<Link>> Snapshot() const;
  FileService::Hooks FileHooks();

  int listen_fd_ = -1;
  std::atomic<bool> stop_{true};
  std::thread accept_thread_;
  std::mutex start_mu_;  // Start and Stop
  mutable std::mutex links_mu_;
  std::vector<std::shared_ptr<Link>> links_;
  mutable std::mutex print_mu_;
};

bool Camera::Impl::Start() {
  std::lock_guard<std::mutex> lock(start_mu_);
  if (!stop_) return false;
  sockaddr_in addr{};
  addr.sin_family = AF_INET;
  addr.sin_port = htons(options_.port);
  if (inet_pton(AF_INET, options_.bind_address.c_str(), &addr.sin_addr) != 1) return false;
  int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return false;
  int one = 1;
  setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
  socklen_t len = sizeof addr;
  if (bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0 || listen(fd, 128) != 0 ||
      getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &len) != 0) {
    close(fd);
    return false;
  }
  listen_fd_ = fd;
  port_ = ntohs(addr.sin_port);
  stop_ = false;
  accept_thread_ = std::thread(&Impl::AcceptLoop, this);
  return true;
}

FileService::Hooks Camera::Impl::FileHooks() {
  FileService::Hooks hooks;
  hooks.send = [this](int connection, const std::string& bytes) {
    return SendTo([connection](const Link& l) { return l.connection() == connection; }, bytes,
                  std::to_string(bytes.size()) + "-byte file data frame");
  };
  hooks.control_port = [this] { return port_.load(); };
  hooks.print = [this](const std::string& text) { Print(text); };
  return hooks;
}

void Camera::Impl::Stop() {
  std::lock_guard<std::mutex> lock(start_mu_);
  if (stop_) return;
  stop_ = true;
  files_.Stop();
  accept_thread_.join();
  close(listen_fd_);
  listen_fd_ = -1;
  std::vector<std::shared_ptr<Link>> links;
  {
    std::lock_guard<std::mutex> links_lock(links_mu_);
    links.swap(links_);
  }
  for (auto& link : links) link->Close();
  links.clear();  // joins every link thread
}

void Camera::Impl::AcceptLoop() {
  while (!stop_) {
    pollfd p{listen_fd_, POLLIN, 0};
    if (poll(&p, 1, 100) <= 0) continue;
    sockaddr_in peer{};
    socklen_t len = sizeof peer;
    int fd = accept4(listen_fd_, reinterpret_cast<sockaddr*>(&peer), &len, SOCK_CLOEXEC);
    if (fd < 0) continue;
    int number = ++connections_;
    Link::Hooks hooks{&behaviour_, &log_, &skipped_bytes_, &bad_lengths_, nullptr,
                      options_.hostile, options_.hostile_seed};
    if (options_.verbose) hooks.print = [this](const std::string& s) { Print(s); };
    auto link = std::make_shared<Link>(fd, number, hooks);
    char host[INET_ADDRSTRLEN] = "?";
    inet_ntop(AF_INET, &peer.sin_addr, host, sizeof host);
    Print("link " + std::to_string(number) + ": accepted from " + host + ":" +
          std::to_string(ntohs(peer.sin_port)));
    // The link joins the list before its thread runs: once a client has its
    // login reply, pushes to logged-in links must already find it.
    std::vector<std::shared_ptr<Link>> finished;
    {
      std::lock_guard<std::mutex> lock(links_mu_);
      for (auto it = links_.begin(); it != links_.end();) {
        if ((*it)->Finished()) {
          finished.push_back(*it);
          it = links_.erase(it);
        } else {
          ++it;
        }
      }
      links_.push_back(link);
    }
    link->Start();
  }
}

std::vector<std::shared_ptr<Link>> Camera::Impl::Snapshot() const {
  std::lock_guard<std::mutex> lock(links_mu_);
  return links_;
}

void Camera::Impl::CloseLinks() {
  for (auto& link : Snapshot()) link->Close();
}

bool Camera::Impl::SendTo(const std::function<bool(const Link&)>& filter,
                          const std::string& bytes, const std::string& what) {
  bool any = false;
  for (auto& link : Snapshot()) {
    if (link->Finished() || !filter(*link)) continue;
    if (link->Send(bytes)) {
      any = true;
      Print("link " + std::to_string(link->connection()) + " -> " + what);
    }
  }
  return any;
}

int Camera::Impl::OpenLinks() const {
  int open = 0;
  for (auto& link : Snapshot()) open += link->Finished() ? 0 : 1;
  return open;
}

void Camera::Impl::Print(const std::string& text) const {
  if (!options_.verbose) return;
  std::lock_guard<std::mutex> lock(print_mu_);
  printf("%s\n", text.c_str());
  fflush(stdout);
}

namespace {

bool LoggedIn(const Link& link) { return link.LoggedIn(); }

}  // namespace

Camera::Camera(CameraOptions options) : impl_(new Impl(std::move(options))) {}
Camera::~Camera() = default;

bool Camera::Start() { return impl_->Start(); }
void Camera::Stop() { impl_->Stop(); }
uint16_t Camera::Port() const { return impl_->port_; }
const CameraOptions& Camera::Options() const { return impl_->options_; }

void Camera::SetLoginReply(LoginReply mode, int refuse_flag) {
  impl_->behaviour_.SetLoginReply(mode, refuse_flag);
}
void Camera::SetHeartbeatReplies(bool on) { impl_->behaviour_.SetHeartbeatReplies(on); }
void Camera::SetReplyDelayMs(int ms) { impl_->behaviour_.SetReplyDelayMs(ms); }
void Camera::SetPtzReply(int flag, const std::string& code, const std::string& body) {
  impl_->behaviour_.SetPtzReply(flag, code, body);
}
void Camera::InjectBeforeNextReply(const std::string& raw_bytes) {
  impl_->behaviour_.InjectBeforeNextReply(raw_bytes);
}
void Camera::CloseLinks() { impl_->CloseLinks(); }
void Camera::SetUserData(const std::string& bytes) { impl_->behaviour_.SetUserData(bytes); }
void Camera::SetReply(const std::string& type, long code, int flag, const std::string& body) {
  impl_->behaviour_.SetReply(type, std::to_string(code), flag, body);
}
void Camera::SetReply(const std::string& type, const std::string& code, int flag,
                      const std::string& body) {
  impl_->behaviour_.SetReply(type, code, flag, body);
}
void Camera::ClearReplies() { impl_->behaviour_.ClearReplies(); }

bool Camera::SendAlarm(const std::vector<AlarmSpec>& items) {
  std::string payload =
      MakeEnvelope("ALARM_REPORT_MESSAGE", "CMD_REPORT_ALARM", "0", AlarmBody(items));
  return impl_->SendTo(LoggedIn, EncodeFrame(payload),
                       "ALARM_REPORT_MESSAGE CMD_REPORT_ALARM flag 0 (alarms: " +
                           std::to_string(items.size()) + ")");
}

bool Camera::SendFrame(const std::string& payload, uint32_t flag) {
  return impl_->SendTo(LoggedIn, EncodeFrame(payload, flag),
                       std::to_string(payload.size()) + "-byte frame");
}

bool Camera::SendRaw(const std::string& bytes) {
  return impl_->SendTo(LoggedIn, bytes, std::to_string(bytes.size()) + " raw bytes");
}

bool Camera::SendRawTo(int connection, const std::string& bytes) {
  return impl_->SendTo([connection](const Link& l) { return l.connection() == connection; },
                       bytes, std::to_string(bytes.size()) + " raw bytes");
}

std::vector<ReceivedFrame> Camera::Received() const { return impl_->log_.All(); }
std::vector<ReceivedFrame> Camera::ReceivedOfType(const std::string& type) const {
  return impl_->log_.OfType(type);
}
bool Camera::WaitForFrames(const std::function<bool(const std::vector<ReceivedFrame>&)>& done,
                           int timeout_ms) const {
  return impl_->log_.WaitFor(done, timeout_ms);
}
void Camera::ClearReceived() { impl_->log_.Clear(); }
int Camera::Connections() const { return impl_->connections_; }
int Camera::OpenLinks() const { return impl_->OpenLinks(); }
int Camera::Logins() const { return impl_->behaviour_.Logins(); }
uint64_t Camera::SkippedBytes() const { return impl_->skipped_bytes_; }
int Camera::BadLengths() const { return impl_->bad_lengths_; }

void Camera::SetTalkEnabled(bool on) { impl_->talk_.SetEnabled(on); }
void Camera::SetTalkRefusal(int flag) { impl_->talk_.SetRefusal(flag); }
bool Camera::SetTalkSaveFile(const std::string& path) { return impl_->talk_.SetSaveFile(path); }
TalkStats Camera::Talk() const { return impl_->talk_.Stats(); }
void Camera::ClearTalk() { impl_->talk_.Clear(); }
FileService& Camera::Files() { return impl_->files_; }
void Camera::SetReplayFragment(int bytes) { impl_->replay_.SetFragment(bytes); }
void Camera::SetReplaySequenceStart(uint16_t sequence) { impl_->replay_.SetSequenceStart(sequence); }
void Camera::SetReplayFault(ReplayFault fault, int video_frame) {
  impl_->replay_.SetFault(fault, video_frame);
}
ReplayStats Camera::Replay() const { return impl_->replay_.Stats(); }
time_t Camera::CameraTime() const { return impl_->behaviour_.CameraNow(); }

std::string Camera::ConfigDocument() const { return impl_->behaviour_.ConfigDocument(); }
void Camera::SetConfigListener(std::function<void(long, const IPCConfig&)> listener) {
  impl_->behaviour_.SetConfigListener(std::move(listener));
}
bool Camera::SetConfigDocument(const std::string& xml) {
  return impl_->behaviour_.SetConfigDocument(xml);
}

}  // namespace qvemu

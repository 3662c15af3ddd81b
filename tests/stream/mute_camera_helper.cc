#include "mute_camera_helper.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace {

const char kSdp[] =
    "v=0\r\n"
    "o=- 1 1 IN IP4 127.0.0.1\r\n"
    "s=mute\r\n"
    "t=0 0\r\n"
    "m=audio 0 RTP/AVP 0\r\n"
    "a=rtpmap:0 PCMU/8000\r\n"
    "a=control:track1\r\n";

// The value of a header line ("CSeq: 3" -> "3"), "" when absent.
std::string Header(const std::string& request, const char* name) {
  std::string key = std::string("\r\n") + name + ":";
  size_t at = request.find(key);
  if (at == std::string::npos) return "";
  at += key.size();
  while (at < request.size() && request[at] == ' ') ++at;
  size_t end = request.find("\r\n", at);
  return request.substr(at, end - at);
}

bool SendAll(int fd, const std::string& text) {
  size_t sent = 0;
  while (sent < text.size()) {
    ssize_t n = send(fd, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
    if (n <= 0) return false;
    sent += static_cast<size_t>(n);
  }
  return true;
}

}  // namespace

MuteCamera::~MuteCamera() { Stop(); }

bool MuteCamera::Start() {
  listen_fd_ = socket(AF_INET, SOCK_STREAM, 0);
  struct sockaddr_in addr;
  memset(&addr, 0, sizeof(addr));
  addr.sin_family = AF_INET;
  addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t len = sizeof(addr);
  if (listen_fd_ < 0 || bind(listen_fd_, reinterpret_cast<sockaddr*>(&addr), sizeof(addr)) != 0 ||
      listen(listen_fd_, 4) != 0 ||
      getsockname(listen_fd_, reinterpret_cast<sockaddr*>(&addr), &len) != 0) {
    return false;
  }
  port_ = ntohs(addr.sin_port);
  thread_ = std::thread([this] { Serve(); });
  return true;
}

void MuteCamera::Stop() {
  stop_ = true;
  if (thread_.joinable()) thread_.join();
  if (listen_fd_ >= 0) close(listen_fd_);
  listen_fd_ = -1;
}

// One client at a time: a reconnecting client gets the next turn.
void MuteCamera::Serve() {
  int client = -1;
  std::string pending;
  while (!stop_) {
    struct pollfd p = {client >= 0 ? client : listen_fd_, POLLIN, 0};
    if (poll(&p, 1, 100) != 1) continue;
    if (client < 0) {
      client = accept(listen_fd_, nullptr, nullptr);
      pending.clear();
      continue;
    }
    char buf[4096];
    ssize_t n = recv(client, buf, sizeof(buf), 0);
    if (n > 0) pending.append(buf, static_cast<size_t>(n));
    if (n <= 0 || !Answer(client, &pending)) {
      close(client);
      client = -1;
    }
  }
  if (client >= 0) close(client);
}

bool MuteCamera::Answer(int fd, std::string* pending) {
  for (size_t end; (end = pending->find("\r\n\r\n")) != std::string::npos;) {
    std::string request = "\r\n" + pending->substr(0, end + 2);
    pending->erase(0, end + 4);
    std::string method = request.substr(2, request.find(' ', 2) - 2);
    std::string reply = "RTSP/1.0 200 OK\r\nCSeq: " + Header(request, "CSeq") + "\r\n";
    if (method == "OPTIONS") {
      reply += "Public: OPTIONS, DESCRIBE, SETUP, PLAY, TEARDOWN, GET_PARAMETER\r\n\r\n";
    } else if (method == "DESCRIBE") {
      reply += "Content-Base: rtsp://127.0.0.1:" + std::to_string(port_) + "/\r\n";
      reply += "Content-Type: application/sdp\r\n";
      reply += "Content-Length: " + std::to_string(strlen(kSdp)) + "\r\n\r\n" + kSdp;
    } else if (method == "SETUP") {
      reply += "Transport: RTP/AVP/TCP;unicast;interleaved=0-1\r\nSession: 4711\r\n\r\n";
    } else if (method == "PLAY") {
      reply += "Session: 4711\r\nRange: npt=0.000-\r\n\r\n";
      ++plays_;
    } else {
      reply += "Session: 4711\r\n\r\n";
    }
    if (!SendAll(fd, reply)) return false;
  }
  return true;
}

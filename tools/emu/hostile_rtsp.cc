#include "emu/hostile_rtsp.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>

#include "emu/frame_io.h"
#include "emu/hostile.h"

namespace qvemu {
namespace {

constexpr int kSliceMs = 100;

int ConnectLoopback(int port) {
  int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return -1;
  sockaddr_in addr{};
  addr.sin_family = AF_INET;
  addr.sin_port = htons(static_cast<uint16_t>(port));
  addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0) {
    close(fd);
    return -1;
  }
  return fd;
}

}  // namespace

HostileRtspProxy::~HostileRtspProxy() { Stop(); }

bool HostileRtspProxy::Start(int server_port, uint64_t seed, int port) {
  if (!stop_) return false;
  int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return false;
  int one = 1;
  setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
  sockaddr_in addr{};
  addr.sin_family = AF_INET;
  addr.sin_port = htons(static_cast<uint16_t>(port));
  addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t len = sizeof addr;
  if (bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0 || listen(fd, 64) != 0 ||
      getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &len) != 0) {
    close(fd);
    return false;
  }
  listen_fd_ = fd;
  port_ = ntohs(addr.sin_port);
  server_port_ = server_port;
  seed_ = seed;
  stop_ = false;
  accept_thread_ = std::thread(&HostileRtspProxy::AcceptLoop, this);
  return true;
}

void HostileRtspProxy::Stop() {
  if (stop_.exchange(true)) return;
  accept_thread_.join();
  close(listen_fd_);
  listen_fd_ = -1;
  std::vector<std::thread> relays;
  {
    std::lock_guard<std::mutex> lock(mu_);
    relays.swap(relays_);
  }
  for (auto& t : relays) t.join();
}

void HostileRtspProxy::AcceptLoop() {
  while (!stop_) {
    pollfd p{listen_fd_, POLLIN, 0};
    if (poll(&p, 1, kSliceMs) <= 0) continue;
    int client = accept4(listen_fd_, nullptr, nullptr, SOCK_CLOEXEC);
    if (client < 0) continue;
    int number = ++connections_;
    std::lock_guard<std::mutex> lock(mu_);
    relays_.emplace_back(&HostileRtspProxy::Relay, this, client, number);
  }
}

void HostileRtspProxy::Relay(int client, int number) {
  int server = ConnectLoopback(server_port_);
  HostileDice dice = DiceFor(seed_, "rtsp", static_cast<uint64_t>(number));
  char buf[16384];
  while (server >= 0 && !stop_) {
    pollfd p[2] = {{client, POLLIN, 0}, {server, POLLIN, 0}};
    if (poll(p, 2, kSliceMs) <= 0) continue;
    if (p[0].revents) {
      ssize_t n = recv(client, buf, sizeof buf, 0);
      if (n <= 0 || !WriteAll(server, std::string(buf, static_cast<size_t>(n)), 5000, &stop_)) {
        break;
      }
    }
    if (p[1].revents) {
      ssize_t n = recv(server, buf, sizeof buf, 0);
      if (n <= 0) break;
      bool cut = false;
      std::string out = HostileRtspChunk(&dice, std::string(buf, static_cast<size_t>(n)), &cut);
      if (!WriteAll(client, out, 5000, &stop_)) break;
      if (cut) {
        ++cuts_;
        break;
      }
    }
  }
  if (server >= 0) close(server);
  close(client);
}

}  // namespace qvemu

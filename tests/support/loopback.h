// Loopback peers: a socket bound to 127.0.0.1 on a free port, a listener
// that accepts and never answers, and a port on which nothing listens.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace testsupport {

// A TCP socket bound to 127.0.0.1 on a free port; *port gets the port.
inline int BindLoopback(int* port) {
  int fd = socket(AF_INET, SOCK_STREAM, 0);
  struct sockaddr_in addr = {};
  addr.sin_family = AF_INET;
  addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  bind(fd, reinterpret_cast<struct sockaddr*>(&addr), sizeof(addr));
  socklen_t len = sizeof(addr);
  getsockname(fd, reinterpret_cast<struct sockaddr*>(&addr), &len);
  *port = ntohs(addr.sin_port);
  return fd;
}

// A loopback port that refuses connections (bound once, then closed).
inline int ClosedPort() {
  int port = 0;
  close(BindLoopback(&port));
  return port;
}

// Listens on 127.0.0.1 with the given backlog and never answers.
class BlackHole {
 public:
  explicit BlackHole(int backlog = 4) : listen_fd_(BindLoopback(&port_)) {
    listen(listen_fd_, backlog);
  }
  ~BlackHole() {
    if (conn_fd_ >= 0) close(conn_fd_);
    close(listen_fd_);
  }
  BlackHole(const BlackHole&) = delete;
  BlackHole& operator=(const BlackHole&) = delete;

  int Port() const { return port_; }
  sockaddr_in Address() const {
    struct sockaddr_in addr = {};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    addr.sin_port = htons(static_cast<uint16_t>(port_));
    return addr;
  }
  // Accepts one connection (kept open, never answered); false after timeout.
  bool Accept(int timeout_ms) {
    struct pollfd p = {listen_fd_, POLLIN, 0};
    if (poll(&p, 1, timeout_ms) != 1) return false;
    conn_fd_ = accept(listen_fd_, nullptr, nullptr);
    return conn_fd_ >= 0;
  }
  // The accepted connection, or -1.
  int Connection() const { return conn_fd_; }

 private:
  int port_ = 0;
  int listen_fd_ = -1;
  int conn_fd_ = -1;
};

}  // namespace testsupport

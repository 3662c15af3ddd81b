#include "black_hole_helper.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

namespace {
int BindLoopback(int* port) {
  int fd = socket(AF_INET, SOCK_STREAM, 0);
  struct sockaddr_in addr;
  memset(&addr, 0, sizeof(addr));
  addr.sin_family = AF_INET;
  addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  bind(fd, reinterpret_cast<struct sockaddr*>(&addr), sizeof(addr));
  socklen_t len = sizeof(addr);
  getsockname(fd, reinterpret_cast<struct sockaddr*>(&addr), &len);
  *port = ntohs(addr.sin_port);
  return fd;
}
}  // namespace

BlackHole::BlackHole() {
  listen_fd_ = BindLoopback(&port_);
  listen(listen_fd_, 4);
}

BlackHole::~BlackHole() {
  if (conn_fd_ >= 0) close(conn_fd_);
  close(listen_fd_);
}

bool BlackHole::Accept(int timeout_ms) {
  struct pollfd p = {listen_fd_, POLLIN, 0};
  if (poll(&p, 1, timeout_ms) != 1) return false;
  conn_fd_ = accept(listen_fd_, nullptr, nullptr);
  return conn_fd_ >= 0;
}

int ClosedPort() {
  int port = 0;
  int fd = BindLoopback(&port);
  close(fd);
  return port;
}

// Loopback peers for stream tests: a listening socket that accepts and never
// answers, and a port on which nothing listens.
#pragma once

class BlackHole {
 public:
  BlackHole();   // listens on 127.0.0.1, a free port
  ~BlackHole();
  int Port() const { return port_; }
  // Accepts one connection (kept open, never answered); false after timeout.
  bool Accept(int timeout_ms);

 private:
  int listen_fd_ = -1;
  int conn_fd_ = -1;
  int port_ = 0;
};

// A loopback port that refuses connections (bound once, then closed).
int ClosedPort();

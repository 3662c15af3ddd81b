// Small helpers shared by test folders: a scratch directory, file reading,
// waiting on a condition with a deadline, captured standard output and a
// loopback UDP receiver.
#pragma once

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <dirent.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace testsupport {

// A fresh directory under /tmp, removed with its contents at destruction.
// With enter = true the process works inside it until destruction.
class ScratchDir {
 public:
  explicit ScratchDir(bool enter = false) {
    char tmpl[] = "/tmp/quorvel-test.XXXXXX";
    if (mkdtemp(tmpl) != nullptr) path_ = tmpl;
    if (enter && !path_.empty()) {
      char cwd[4096];
      if (getcwd(cwd, sizeof(cwd)) != nullptr) old_cwd_ = cwd;
      if (chdir(path_.c_str()) != 0) old_cwd_.clear();
    }
  }
  ~ScratchDir() {
    if (!old_cwd_.empty() && chdir(old_cwd_.c_str()) != 0) perror("chdir");
    if (!path_.empty()) {
      std::string cmd = "rm -rf '" + path_ + "'";
      if (system(cmd.c_str()) != 0) perror("rm");
    }
  }
  ScratchDir(const ScratchDir&) = delete;
  ScratchDir& operator=(const ScratchDir&) = delete;

  const std::string& path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
  std::string old_cwd_;
};

// Names in a directory, "." and ".." left out, sorted.
inline std::vector<std::string> ListDir(const std::string& dir) {
  std::vector<std::string> names;
  if (DIR* d = opendir(dir.c_str())) {
    while (struct dirent* e = readdir(d)) {
      std::string n = e->d_name;
      if (n != "." && n != "..") names.push_back(n);
    }
    closedir(d);
  }
  std::sort(names.begin(), names.end());
  return names;
}

inline std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

inline void WriteFile(const std::string& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary);
  out << text;
}

// Polls cond every millisecond until it holds or the deadline passes.
inline bool WaitFor(const std::function<bool()>& cond, int timeout_ms = 10000) {
  auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
  while (!cond()) {
    if (std::chrono::steady_clock::now() > deadline) return cond();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

// Runs fn and returns what it printed to standard output.
template <typename Fn>
std::string CapturedStdout(Fn fn) {
  testing::internal::CaptureStdout();
  fn();
  return testing::internal::GetCapturedStdout();
}

// A UDP socket bound to 127.0.0.1 on a free port.
class UdpReceiver {
 public:
  UdpReceiver() {
    fd_ = socket(AF_INET, SOCK_DGRAM, 0);
    struct sockaddr_in addr = {};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t len = sizeof(addr);
    if (fd_ < 0 || bind(fd_, reinterpret_cast<sockaddr*>(&addr), sizeof(addr)) != 0 ||
        getsockname(fd_, reinterpret_cast<sockaddr*>(&addr), &len) != 0) {
      return;
    }
    port_ = ntohs(addr.sin_port);
  }
  ~UdpReceiver() {
    if (fd_ >= 0) close(fd_);
  }
  UdpReceiver(const UdpReceiver&) = delete;
  UdpReceiver& operator=(const UdpReceiver&) = delete;

  unsigned short port() const { return port_; }

  // One datagram, or false when none arrives within timeout_ms.
  bool Receive(std::string* out, int timeout_ms = 10000) {
    struct pollfd p = {fd_, POLLIN, 0};
    if (poll(&p, 1, timeout_ms) != 1) return false;
    char buf[65536];
    ssize_t n = recv(fd_, buf, sizeof(buf), 0);
    if (n < 0) return false;
    out->assign(buf, static_cast<size_t>(n));
    return true;
  }

 private:
  int fd_ = -1;
  unsigned short port_ = 0;
};

}  // namespace testsupport

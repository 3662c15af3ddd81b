#include "soak/emu_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>

namespace qvsoak {
namespace {

// The port after the last ':' of a line that starts with prefix, or 0.
int PortAfter(const std::string& text, const char* prefix) {
  size_t at = text.find(prefix);
  if (at == std::string::npos) return 0;
  size_t end = text.find('\n', at);
  if (end == std::string::npos) return 0;
  size_t colon = text.rfind(':', end);
  if (colon == std::string::npos || colon < at) return 0;
  return atoi(text.substr(colon + 1, end - colon - 1).c_str());
}

}  // namespace

EmuProcess::EmuProcess(std::string program, std::vector<std::string> args, std::string log,
                       bool rtsp)
    : program_(std::move(program)), args_(std::move(args)), log_(std::move(log)), rtsp_(rtsp) {}

EmuProcess::~EmuProcess() { Stop(); }

bool EmuProcess::Start() {
  std::vector<std::string> args = {program_, "--quiet", "--port", std::to_string(port_)};
  if (rtsp_) {
    args.push_back("--rtsp-port");
    args.push_back(std::to_string(rtsp_port_));
  }
  args.insert(args.end(), args_.begin(), args_.end());
  // Everything the child needs is ready before fork: it only calls
  // async-signal-safe functions.
  std::vector<char*> argv;
  for (auto& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);
  int out[2];
  if (pipe2(out, O_CLOEXEC) != 0) return false;
  pid_t pid = fork();
  if (pid < 0) {
    close(out[0]);
    close(out[1]);
    return false;
  }
  if (pid == 0) {
    dup2(out[1], 1);
    int err = open(log_.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    if (err >= 0) dup2(err, 2);
    execv(program_.c_str(), argv.data());
    _exit(127);
  }
  close(out[1]);
  pid_ = pid;
  ++starts_;
  std::string text;
  auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  bool ready = false;
  while (!ready && std::chrono::steady_clock::now() < deadline) {
    pollfd p{out[0], POLLIN, 0};
    if (poll(&p, 1, 200) <= 0) continue;
    char buf[512];
    ssize_t n = read(out[0], buf, sizeof buf);
    if (n <= 0) break;
    text.append(buf, static_cast<size_t>(n));
    int port = PortAfter(text, "quorvel-emu listening on ");
    int rtsp = PortAfter(text, "quorvel-emu rtsp on ");
    if (port > 0 && (!rtsp_ || rtsp > 0)) {
      port_ = port;
      rtsp_port_ = rtsp;
      ready = true;
    }
  }
  // Nothing more is read: the camera runs quiet and ignores a closed pipe.
  close(out[0]);
  if (!ready) Kill();
  return ready;
}

void EmuProcess::Kill() {
  if (pid_ <= 0) return;
  kill(pid_, SIGKILL);
  waitpid(pid_, nullptr, 0);
  pid_ = -1;
}

void EmuProcess::Stop() {
  if (pid_ <= 0) return;
  kill(pid_, SIGTERM);
  for (int i = 0; i < 50; ++i) {
    if (waitpid(pid_, nullptr, WNOHANG) == pid_) {
      pid_ = -1;
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  Kill();
}

}  // namespace qvsoak

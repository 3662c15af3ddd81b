// Network namespaces for tests and benchmarks that broadcast or probe: each
// run makes its own (names "qvd<pid>-<tag>"), joins them with veth pairs,
// and deletes them when the objects go, also after a failed assertion.
// Namespaces that a crashed run left behind are deleted by the next run.
// Nothing is ever sent on the machine's own interfaces.
//
// Making namespaces needs root (`ip netns`); NamespacesUnavailable() says
// why not, so that callers can skip with a clear message.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <spawn.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

extern char** environ;

namespace qvnet {

const char kNamespacePrefix[] = "qvd";

// Runs a command line through the shell; its output, and its status in
// *status.
inline std::string Capture(const std::string& command, int* status) {
  std::string output;
  FILE* p = popen((command + " 2>&1").c_str(), "r");
  if (p == nullptr) {
    *status = -1;
    return output;
  }
  char chunk[512];
  size_t n;
  while ((n = fread(chunk, 1, sizeof(chunk), p)) > 0) output.append(chunk, n);
  *status = pclose(p);
  return output;
}

// Runs a command line; true on exit status 0. Its output is shown when it
// fails.
inline bool Run(const std::string& command) {
  int status = 0;
  std::string output = Capture(command, &status);
  if (status != 0) {
    fprintf(stderr, "command failed (%d): %s\n%s", status, command.c_str(), output.c_str());
  }
  return status == 0;
}

// Deletes the namespaces of earlier runs whose process is gone.
inline void SweepStaleNamespaces() {
  int status = 0;
  std::istringstream list(Capture("ip netns list", &status));
  std::string line;
  const size_t prefix = sizeof(kNamespacePrefix) - 1;
  while (std::getline(list, line)) {
    std::string name = line.substr(0, line.find(' '));
    if (name.compare(0, prefix, kNamespacePrefix) != 0) continue;
    pid_t pid = static_cast<pid_t>(atol(name.c_str() + prefix));
    if (pid > 0 && kill(pid, 0) != 0 && errno == ESRCH) Run("ip netns del " + name);
  }
}

// Empty when this process can make namespaces; otherwise why not.
inline std::string NamespacesUnavailable() {
  static std::once_flag once;
  static std::string why;
  std::call_once(once, [] {
    if (geteuid() != 0) {
      why = "needs root to create network namespaces (CI runs as root)";
      return;
    }
    int status = 0;
    Capture("ip -V", &status);
    if (status != 0) {
      why = "the ip command (iproute2) is missing";
      return;
    }
    SweepStaleNamespaces();
    std::string probe = kNamespacePrefix + std::to_string(getpid()) + "-probe";
    Capture("ip netns add " + probe, &status);
    if (status != 0) {
      why = "ip netns add failed: no right to create namespaces here";
      return;
    }
    Capture("ip netns del " + probe, &status);
  });
  return why;
}

class NetNamespace {
 public:
  // Creates namespace "qvd<pid>-<tag>" with its loopback up.
  explicit NetNamespace(const std::string& tag)
      : name_(kNamespacePrefix + std::to_string(getpid()) + "-" + tag) {
    ok_ = Run("ip netns add " + name_) && Ip("link set lo up");
  }
  ~NetNamespace() { Run("ip netns del " + name_); }
  NetNamespace(const NetNamespace&) = delete;
  NetNamespace& operator=(const NetNamespace&) = delete;

  const std::string& name() const { return name_; }
  bool ok() const { return ok_; }
  // `ip -n <name> <args>`.
  bool Ip(const std::string& args) const { return Run("ip -n " + name_ + " " + args); }
  // Adds addresses ("10.1.0.10/24", ...) to one device in one go.
  bool AddAddresses(const std::string& device, const std::vector<std::string>& cidrs) const {
    char path[] = "/tmp/quorvel-netns.XXXXXX";
    int fd = mkstemp(path);
    if (fd < 0) return false;
    std::string batch;
    for (const std::string& cidr : cidrs) batch += "addr add " + cidr + " dev " + device + "\n";
    bool written = write(fd, batch.data(), batch.size()) == static_cast<ssize_t>(batch.size());
    close(fd);
    bool ok = written && Ip("-batch " + std::string(path));
    unlink(path);
    return ok;
  }

  // While an Inside lives, the thread that made it (and every thread it
  // starts) works in the namespace: sockets it opens belong there.
  class Inside {
   public:
    explicit Inside(const NetNamespace& ns) {
      saved_ = open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
      int fd = open(("/var/run/netns/" + ns.name()).c_str(), O_RDONLY | O_CLOEXEC);
      ok_ = saved_ >= 0 && fd >= 0 && setns(fd, CLONE_NEWNET) == 0;
      if (fd >= 0) close(fd);
    }
    ~Inside() {
      if (saved_ < 0) return;
      if (setns(saved_, CLONE_NEWNET) != 0) perror("setns back");
      close(saved_);
    }
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;
    bool ok() const { return ok_; }

   private:
    int saved_ = -1;
    bool ok_ = false;
  };

 private:
  std::string name_;
  bool ok_ = false;
};

// A veth pair: a_dev in a with address a_cidr, b_dev in b with b_cidr (an
// empty address leaves that end without one); both ends up.
inline bool Link(const NetNamespace& a, const std::string& a_dev, const std::string& a_cidr,
                 const NetNamespace& b, const std::string& b_dev, const std::string& b_cidr) {
  if (!a.Ip("link add " + a_dev + " type veth peer name " + b_dev + " netns " + b.name())) {
    return false;
  }
  if (!a_cidr.empty() && !a.Ip("addr add " + a_cidr + " dev " + a_dev)) return false;
  if (!b_cidr.empty() && !b.Ip("addr add " + b_cidr + " dev " + b_dev)) return false;
  return a.Ip("link set " + a_dev + " up") && b.Ip("link set " + b_dev + " up");
}

// A child process started inside a namespace (`ip netns exec`), its output
// collected; stopped with SIGTERM and waited for when the object goes.
class NamespaceProcess {
 public:
  NamespaceProcess() = default;
  ~NamespaceProcess() { Stop(); }
  NamespaceProcess(const NamespaceProcess&) = delete;
  NamespaceProcess& operator=(const NamespaceProcess&) = delete;

  bool Start(const NetNamespace& ns, const std::vector<std::string>& argv) {
    std::vector<std::string> args = {"ip", "netns", "exec", ns.name()};
    args.insert(args.end(), argv.begin(), argv.end());
    std::vector<char*> c_args;
    for (std::string& a : args) c_args.push_back(&a[0]);
    c_args.push_back(nullptr);
    int fds[2];
    if (pipe2(fds, O_CLOEXEC) != 0) return false;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fds[1], 1);
    posix_spawn_file_actions_adddup2(&actions, fds[1], 2);
    int rc = posix_spawnp(&pid_, "ip", &actions, nullptr, c_args.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(fds[1]);
    if (rc != 0) {
      pid_ = -1;
      close(fds[0]);
      return false;
    }
    out_ = fds[0];
    return true;
  }

  // Reads its output until it holds text (true), or the process ends or
  // the timeout passes (false).
  bool WaitForLine(const std::string& text, int timeout_ms) {
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
    while (output_.find(text) == std::string::npos) {
      auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                      deadline - std::chrono::steady_clock::now())
                      .count();
      if (left <= 0 || out_ < 0) return false;
      pollfd p = {out_, POLLIN, 0};
      if (poll(&p, 1, static_cast<int>(left)) <= 0) continue;
      if (!ReadSome()) return output_.find(text) != std::string::npos;
    }
    return true;
  }

  // Stops it; its exit status, or -1 when it was killed or never started.
  int Stop() {
    int result = -1;
    if (pid_ > 0) {
      kill(pid_, SIGTERM);
      int status = 0;
      if (waitpid(pid_, &status, 0) == pid_ && WIFEXITED(status)) result = WEXITSTATUS(status);
      pid_ = -1;
    }
    if (out_ >= 0) {
      fcntl(out_, F_SETFL, fcntl(out_, F_GETFL) | O_NONBLOCK);
      while (ReadSome()) {
      }
    }
    return result;
  }

  const std::string& Output() const { return output_; }

 private:
  // One read of its output; false (and the pipe closed) at its end.
  bool ReadSome() {
    char chunk[4096];
    ssize_t n = read(out_, chunk, sizeof(chunk));
    if (n > 0) {
      output_.append(chunk, static_cast<size_t>(n));
      return true;
    }
    close(out_);
    out_ = -1;
    return false;
  }

  pid_t pid_ = -1;
  int out_ = -1;
  std::string output_;
};

}  // namespace qvnet

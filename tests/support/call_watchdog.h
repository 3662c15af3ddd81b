// Watches calls into the library from any number of threads: each call is
// wrapped in a Guard naming it and giving its bound; a monitor thread
// reports every call still running past its bound, once, with the stack of
// the thread that made it (through gdb when it may attach, else the
// kernel's view from /proc). Used by the hostile-camera cases and the soak.
#pragma once

#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <fstream>
#include <map>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>

namespace qvtest {

class CallWatchdog {
 public:
  using Clock = std::chrono::steady_clock;

  // Reports go to `out` (stderr by default).
  explicit CallWatchdog(FILE* out = stderr) : out_(out), monitor_(&CallWatchdog::Monitor, this) {}
  ~CallWatchdog() {
    {
      std::lock_guard<std::mutex> lock(mu_);
      stop_ = true;
    }
    wake_.notify_all();
    monitor_.join();
  }
  CallWatchdog(const CallWatchdog&) = delete;
  CallWatchdog& operator=(const CallWatchdog&) = delete;

  class Guard {
   public:
    Guard(CallWatchdog* dog, const char* what, int bound_ms) : dog_(dog) {
      id_ = dog_->Enter(what, bound_ms);
    }
    ~Guard() { dog_->Leave(id_); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

   private:
    CallWatchdog* dog_;
    uint64_t id_;
  };

  int Stuck() const { return stuck_; }        // calls that overran their bound
  uint64_t Calls() const { return calls_; }   // calls watched so far

 private:
  struct Call {
    std::string what;
    pid_t tid;
    Clock::time_point start;
    Clock::time_point deadline;
    bool reported = false;
  };

  uint64_t Enter(const char* what, int bound_ms) {
    auto now = Clock::now();
    std::lock_guard<std::mutex> lock(mu_);
    uint64_t id = ++next_;
    running_[id] = Call{what, static_cast<pid_t>(syscall(SYS_gettid)), now,
                        now + std::chrono::milliseconds(bound_ms)};
    ++calls_;
    return id;
  }

  void Leave(uint64_t id) {
    std::lock_guard<std::mutex> lock(mu_);
    running_.erase(id);
  }

  void Monitor() {
    std::unique_lock<std::mutex> lock(mu_);
    while (!stop_) {
      wake_.wait_for(lock, std::chrono::milliseconds(500));
      auto now = Clock::now();
      for (auto& entry : running_) {
        Call& call = entry.second;
        if (call.reported || now < call.deadline) continue;
        call.reported = true;
        ++stuck_;
        long ms = static_cast<long>(
            std::chrono::duration_cast<std::chrono::milliseconds>(now - call.start).count());
        fprintf(out_, "watchdog: %s on thread %d has not returned after %ld ms\n%s\n",
                call.what.c_str(), call.tid, ms, StackOf(call.tid).c_str());
        fflush(out_);
      }
    }
  }

  // The thread's stack: gdb's backtrace, or the kernel stack from /proc.
  static std::string StackOf(pid_t tid) {
    std::ostringstream cmd;
    cmd << "gdb -batch -nx -p " << getpid() << " -ex 'thread find " << tid
        << "' -ex 'info threads' 2>/dev/null | grep -m1 'LWP " << tid << "' | "
        << "sed -n 's/^[* ]*\\([0-9]*\\) .*/\\1/p'";
    std::string number = Run(cmd.str());
    while (!number.empty() && (number.back() == '\n' || number.back() == ' ')) number.pop_back();
    if (!number.empty()) {
      std::string bt = Run("gdb -batch -nx -p " + std::to_string(getpid()) + " -ex 'thread " +
                           number + "' -ex bt 2>/dev/null | grep '^#'");
      if (!bt.empty()) return bt;
    }
    std::ifstream in("/proc/self/task/" + std::to_string(tid) + "/stack");
    std::ostringstream s;
    s << in.rdbuf();
    std::string kernel = s.str();
    return kernel.empty() ? "(no stack available)" : "kernel stack:\n" + kernel;
  }

  static std::string Run(const std::string& command) {
    FILE* p = popen(command.c_str(), "r");
    if (p == nullptr) return "";
    std::string out;
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0) out.append(buf, n);
    pclose(p);
    return out;
  }

  FILE* out_;
  mutable std::mutex mu_;
  std::condition_variable wake_;
  bool stop_ = false;
  uint64_t next_ = 0;
  std::map<uint64_t, Call> running_;
  std::atomic<int> stuck_{0};
  std::atomic<uint64_t> calls_{0};
  std::thread monitor_;  // last: starts once the members above exist
};

}  // namespace qvtest

// Benchmark support: the camera emulator in a process of its own (so that
// only the library's CPU time is counted), and the CPU time of this process.
#pragma once

#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

extern char** environ;

namespace benchsupport {

// User + system CPU seconds of this process so far.
inline double CpuSeconds() {
  struct rusage u;
  getrusage(RUSAGE_SELF, &u);
  return static_cast<double>(u.ru_utime.tv_sec + u.ru_stime.tv_sec) +
         static_cast<double>(u.ru_utime.tv_usec + u.ru_stime.tv_usec) / 1e6;
}

// build/quorvel-emu (next to this program's folder), stopped with SIGTERM
// when the object goes.
class EmulatorProcess {
 public:
  EmulatorProcess() = default;
  EmulatorProcess(const EmulatorProcess&) = delete;
  EmulatorProcess& operator=(const EmulatorProcess&) = delete;
  ~EmulatorProcess() { Stop(); }

  // Starts it with --quiet and `extra`, then reads its output until a line
  // matches `pattern` (an sscanf format with one %d, e.g.
  // "quorvel-emu listening on 127.0.0.1:%d"); *value gets the number.
  bool Start(const std::vector<std::string>& extra, const char* pattern, int* value) {
    char self[4096] = {};
    if (readlink("/proc/self/exe", self, sizeof(self) - 1) <= 0) return false;
    std::string program(self);
    program = program.substr(0, program.rfind('/')) + "/../quorvel-emu";
    std::vector<std::string> args = {program, "--quiet"};
    args.insert(args.end(), extra.begin(), extra.end());
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(&a[0]);
    argv.push_back(nullptr);
    int out[2];
    if (pipe(out) != 0) return false;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    posix_spawn_file_actions_addclose(&actions, out[0]);
    int rc = posix_spawn(&pid_, program.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(out[1]);
    if (rc != 0) {
      pid_ = -1;
      close(out[0]);
      return false;
    }
    FILE* in = fdopen(out[0], "r");
    char line[256];
    *value = 0;
    while (fgets(line, sizeof(line), in) != nullptr) {
      if (sscanf(line, pattern, value) == 1) break;
    }
    fclose(in);
    return *value > 0;
  }

  // SIGTERM; an emulator that has not ended 10 s later (its streaming
  // pipelines can hang in their shutdown on a starved machine) is killed,
  // so that one stuck camera does not stop the whole run.
  void Stop() {
    if (pid_ <= 0) return;
    kill(pid_, SIGTERM);
    for (int i = 0; i < 1000 && waitpid(pid_, nullptr, WNOHANG) == 0; ++i) usleep(10000);
    if (waitpid(pid_, nullptr, WNOHANG) == 0) {
      fprintf(stderr, "quorvel-emu did not end on SIGTERM: killed\n");
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
    pid_ = -1;
  }

 private:
  pid_t pid_ = -1;
};

}  // namespace benchsupport

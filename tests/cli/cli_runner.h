// Runs the quorvel program as a person would, against an emulated camera
// started in-process: its exit status, standard output and standard error.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <vector>

extern char** environ;

namespace qvcli {

struct CliRun {
  int status = -1;  // exit status; -1 when it was killed or did not start
  std::string out, err;
};

// Seconds after which a run is killed and counted as hanging.
const int kRunLimitS = 60;

// Runs build/quorvel with args and the extra environment variables. watch,
// when given, sees the output so far after each read; the first time it
// answers true the program gets SIGINT (Ctrl-C).
inline CliRun RunCli(const std::vector<std::string>& args,
                     const std::map<std::string, std::string>& env = {},
                     const std::function<bool(const std::string& out)>& watch = nullptr) {
  CliRun run;
  std::string program = QUORVEL_BINARY_DIR "/quorvel";
  std::vector<std::string> environment;
  for (char** e = environ; *e != nullptr; ++e) {
    std::string entry = *e;
    if (entry.compare(0, 8, "QUORVEL_") == 0 && entry.compare(0, 17, "QUORVEL_TEST_TIME") != 0) {
      continue;  // only what the case gives
    }
    environment.push_back(entry);
  }
  for (const auto& kv : env) environment.push_back(kv.first + "=" + kv.second);
  // Everything the child needs is made before fork: the test process runs
  // the camera's threads, and one of them may hold the allocator's lock at
  // the fork (the sanitizer's allocator is not reset in the child), so the
  // child calls nothing but async-signal-safe functions until execve.
  std::vector<char*> argv{const_cast<char*>(program.c_str())};
  for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);
  std::vector<char*> envp;
  for (std::string& e : environment) envp.push_back(&e[0]);
  envp.push_back(nullptr);
  // Close-on-exec, so that no other child of this process holds the write
  // ends and keeps the reads below from seeing the end.
  int out_pipe[2], err_pipe[2];
  if (pipe2(out_pipe, O_CLOEXEC) != 0) return run;
  if (pipe2(err_pipe, O_CLOEXEC) != 0) {
    close(out_pipe[0]);
    close(out_pipe[1]);
    return run;
  }
  pid_t pid = fork();
  if (pid == 0) {
    dup2(out_pipe[1], STDOUT_FILENO);
    dup2(err_pipe[1], STDERR_FILENO);
    int null = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (null >= 0) dup2(null, STDIN_FILENO);
    execve(program.c_str(), argv.data(), envp.data());
    _exit(127);
  }
  close(out_pipe[1]);
  close(err_pipe[1]);
  if (pid < 0) {
    close(out_pipe[0]);
    close(err_pipe[0]);
    return run;
  }
  auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(kRunLimitS);
  bool interrupted = false;
  pollfd fds[2] = {{out_pipe[0], POLLIN, 0}, {err_pipe[0], POLLIN, 0}};
  std::string* sinks[2] = {&run.out, &run.err};
  int open_pipes = 2;
  while (open_pipes > 0) {
    if (std::chrono::steady_clock::now() > deadline) {
      kill(pid, SIGKILL);
      run.err += "\n[killed: still running after the limit]";
      break;
    }
    if (poll(fds, 2, 100) < 0) break;
    for (int i = 0; i < 2; ++i) {
      if (fds[i].fd < 0 || (fds[i].revents & (POLLIN | POLLHUP)) == 0) continue;
      char chunk[4096];
      ssize_t n = read(fds[i].fd, chunk, sizeof(chunk));
      if (n <= 0) {
        close(fds[i].fd);
        fds[i].fd = -1;
        --open_pipes;
      } else {
        sinks[i]->append(chunk, static_cast<size_t>(n));
      }
    }
    if (watch && !interrupted && watch(run.out)) {
      interrupted = true;
      kill(pid, SIGINT);
    }
  }
  for (pollfd& p : fds) {
    if (p.fd >= 0) close(p.fd);
  }
  int status = 0;
  waitpid(pid, &status, 0);
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}

}  // namespace qvcli

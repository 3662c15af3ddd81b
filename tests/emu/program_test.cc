// The quorvel-emu program: its first line, its options, its output and a
// clean stop on SIGTERM.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "raw_client_helper.h"

namespace {

using qvemu_test::FlagOf;
using qvemu_test::RawClient;

class Program {
 public:
  explicit Program(std::vector<std::string> args) {
    // The child calls only async-signal-safe functions before execv: what
    // it needs is made here.
    std::vector<char*> argv;
    std::string path = std::string(QUORVEL_BINARY_DIR) + "/quorvel-emu";
    argv.push_back(const_cast<char*>(path.c_str()));
    for (auto& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    int out[2];
    if (pipe2(out, O_CLOEXEC) != 0) return;
    pid_ = fork();
    if (pid_ == 0) {
      dup2(out[1], 1);
      dup2(out[1], 2);
      execv(path.c_str(), argv.data());
      _exit(127);
    }
    close(out[1]);
    fd_ = out[0];
  }
  ~Program() {
    if (pid_ > 0 && status_ < 0) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
    if (fd_ >= 0) close(fd_);
  }
  // Output up to and including the next line feed ("" on time-out or end).
  std::string Line(int timeout_ms = 10000) {
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
    while (output_.find('\n', read_) == std::string::npos) {
      if (!ReadSome(deadline)) return "";
    }
    size_t end = output_.find('\n', read_) + 1;
    std::string line = output_.substr(read_, end - read_);
    read_ = end;
    return line;
  }
  // Signals the program (0: none) and returns its exit status and output.
  int Finish(int signal, std::string* all) {
    if (signal) kill(pid_, signal);
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (ReadSome(deadline)) {
    }
    int status = 0;
    waitpid(pid_, &status, 0);
    status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    *all = output_;
    return status_;
  }

 private:
  bool ReadSome(std::chrono::steady_clock::time_point deadline) {
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now()).count();
    pollfd p{fd_, POLLIN, 0};
    if (left <= 0 || poll(&p, 1, static_cast<int>(left)) <= 0) return false;
    char buf[4096];
    ssize_t n = read(fd_, buf, sizeof buf);
    if (n <= 0) return false;
    output_.append(buf, static_cast<size_t>(n));
    return true;
  }

  pid_t pid_ = -1;
  int fd_ = -1;
  int status_ = -1;
  std::string output_;
  size_t read_ = 0;
};

uint16_t PortOf(const std::string& first_line) {
  const std::string prefix = "quorvel-emu listening on 127.0.0.1:";
  if (first_line.compare(0, prefix.size(), prefix) != 0) return 0;
  return static_cast<uint16_t>(std::stoi(first_line.substr(prefix.size())));
}

TEST(ProgramTest, ServesALoginPrintsWhatItDoesAndStopsOnSigterm) {
  Program emu({"--user", "op", "--password", "secret", "--no-front-replay"});
  uint16_t port = PortOf(emu.Line());
  ASSERT_NE(port, 0);
  RawClient c;
  ASSERT_TRUE(c.Connect(port));
  EXPECT_FALSE(c.Login("admin", "admin"));
  ASSERT_TRUE(c.Login("op", "secret"));
  EXPECT_EQ(c.Request("SYSTEM_CONTROL_MESSAGE", "1020").find("front_replay"), std::string::npos);
  std::string out;
  EXPECT_EQ(emu.Finish(SIGTERM, &out), 0);
  EXPECT_NE(out.find("link 1 <- USER_AUTH_MESSAGE CMD_USER_AUTH flag 0\n"), std::string::npos);
  EXPECT_NE(out.find("link 1 -> USER_AUTH_MESSAGE CMD_USER_AUTH flag -1\n"), std::string::npos);
  EXPECT_NE(out.find("link 1 -> SYSTEM_CONTROL_MESSAGE 1020 flag 0\n"), std::string::npos);
  EXPECT_NE(out.find("quorvel-emu stopped"), std::string::npos);
  EXPECT_TRUE(c.WaitClosed());
}

TEST(ProgramTest, FaultOptionsAndAConfigurationFile) {
  std::string path = std::string(QUORVEL_BINARY_DIR) + "/tests/program_test_config.xml";
  FILE* f = fopen(path.c_str(), "w");
  ASSERT_NE(f, nullptr);
  fputs("<IPCConfig><NetworkConfig><UPNPConfig Enable=\"0\"/></NetworkConfig></IPCConfig>", f);
  fclose(f);
  Program emu({"--config", path, "--no-heartbeat", "--quiet"});
  uint16_t port = PortOf(emu.Line());
  ASSERT_NE(port, 0);
  RawClient c;
  ASSERT_TRUE(c.Connect(port));
  ASSERT_TRUE(c.Login());
  EXPECT_NE(c.Request("SYSTEM_CONFIG_GET_MESSAGE", "312").find("<UPNPConfig\r\nEnable=\"0\"\r\n/>"),
            std::string::npos);
  EXPECT_EQ(c.Request("AUXPTZ_HEARTBEAT_MESSAGE", "CMD_HEARTBEAT", "", 300), "");
  std::string out;
  EXPECT_EQ(emu.Finish(SIGINT, &out), 0);
  EXPECT_EQ(out.find("link 1"), std::string::npos);  // quiet

  Program refusing({"--refuse-login=9"});
  RawClient d;
  ASSERT_TRUE(d.Connect(PortOf(refusing.Line())));
  EXPECT_EQ(FlagOf(d.Request("USER_AUTH_MESSAGE", "CMD_USER_AUTH",
                             "<USER_AUTH_PARAM\nUsername=\"admin\" Password=\"admin\"/>")),
            "9");
  remove(path.c_str());
}

TEST(ProgramTest, RefusesBadArguments) {
  const std::vector<std::vector<std::string>> bad = {
      {"--port", "70000"}, {"--delay-ms", "x"}, {"--config", "/nonexistent/config.xml"},
      {"--bogus"}, {"stray"}, {"--bind", "999.1.1.1"},
  };
  for (const auto& args : bad) {
    Program emu(args);
    std::string out;
    EXPECT_NE(emu.Finish(0, &out), 0) << args[0];
    EXPECT_EQ(out.find("listening"), std::string::npos) << out;
  }
}

}  // namespace

// Library lifecycle and the library-wide exported functions.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <regex>
#include <string>

#include "api/ptz_object_list.h"
#include "base/compat.h"
#include "base/debug_log.h"
#include "quorvel/quorvel.h"
#include "stream/rtsp_object_list.h"
#include "support/scratch.h"

using testsupport::CapturedStdout;
using testsupport::ListDir;
using testsupport::ReadFile;

namespace {

class LifecycleTest : public ::testing::Test {
 protected:
  // The stream watchdog starts with the library and logs its first line on
  // its own thread; cases that compare the log wait for that line first.
  void SetUp() override {
    ASSERT_TRUE(testsupport::WaitFor([] { return OjbectRtspList.Watching(); }));
  }

  void TearDown() override {
    while (DebugGetState().init_count > 0) IP_NET_DVR_Cleanup();
    IP_NET_DVR_LOG_CLOSE();
    IP_NET_DVR_SetReplayEventCallBack(nullptr, nullptr);
    IP_NET_DVR_SetReplayDataCallBack(nullptr, nullptr);
  }

  // Runs fn with console logging on and returns what it printed.
  template <typename Fn>
  static std::string Console(Fn fn) {
    IP_NET_DVR_LOG_OPEN();
    std::string out = CapturedStdout(fn);
    IP_NET_DVR_LOG_CLOSE();
    return out;
  }

  // Position of text in out, or npos with a failure.
  static size_t Find(const std::string& out, const std::string& text, size_t from = 0) {
    size_t pos = out.find(text, from);
    EXPECT_NE(pos, std::string::npos) << "missing: " << text << "\nin:\n" << out;
    return pos;
  }
};

int g_calls = 0;
void* g_seen_user = nullptr;

long CountStatus(long, long, const char*, void*) { return ++g_calls; }
long CountAux(long, long, const char*, void*) { return ++g_calls; }
long CountException(long, long, void*) { return ++g_calls; }
long ReplayEvent(long, long, long, char*, void* user) {
  g_seen_user = user;
  return 55;
}
long ReplayData(long, unsigned long, char*, unsigned long, FRAME_EXTDATA* extra) {
  g_seen_user = extra->user;
  return 66;
}

}  // namespace

// ---------------------------------------------------------------- start and clean-up

TEST_F(LifecycleTest, CleanupWithoutInitAndTwiceReturnsZero) {
  EXPECT_EQ(IP_NET_DVR_Cleanup(), 0);
  EXPECT_EQ(IP_NET_DVR_Cleanup(), 0);
  EXPECT_EQ(DebugGetState().init_count, -2);

  CapturedStdout([] {
    for (int i = 0; i < 4; ++i) EXPECT_EQ(IP_NET_DVR_Init(), 0);
  });
  EXPECT_EQ(DebugGetState().init_count, 2);
  EXPECT_EQ(IP_NET_DVR_Cleanup(), 0);
  EXPECT_EQ(IP_NET_DVR_Cleanup(), 0);
  EXPECT_EQ(IP_NET_DVR_Cleanup(), 0);
  EXPECT_EQ(DebugGetState().init_count, -1);  // a clean-up too many is counted
}

TEST_F(LifecycleTest, CleanupLogsItsStepsAndClearsHostCallbacksButNotTheReplayOnes) {
  int user = 0;
  CapturedStdout([] { IP_NET_DVR_Init(); });
  IP_NET_DVR_SetStatusEventCallBack(CountStatus, &user);
  IP_NET_DVR_SetAUXResponseCallBack(CountAux, &user);
  IP_NET_DVR_SetExceptionCallBack(0, 0, CountException, &user);
  IP_NET_DVR_SetReplayEventCallBack(ReplayEvent, &user);
  IP_NET_DVR_SetReplayDataCallBack(ReplayData, &user);
  EXPECT_EQ(ObjectPtzList.PostStatusMsg(1, EVENT_CONNECTOK, "up"), 1);

  std::string out = Console([] { IP_NET_DVR_Cleanup(); });
  size_t pos = Find(out, "]IP_NET_DVR_Cleanup(0)\n");
  pos = Find(out, "]IP_NET_DVR_SetExceptionCallBack(0)\n", pos);
  pos = Find(out, "]IP_NET_DVR_SetAUXResponseCallBack(0)\n", pos);
  pos = Find(out, "]IP_NET_DVR_SetStatusEventCallBack(0)\n", pos);
  Find(out, "]DebugRelease Quorvel Jul 25 2023 13:08:44\n\n", pos);
  g_calls = 0;
  EXPECT_EQ(ObjectPtzList.PostStatusMsg(1, EVENT_CONNECTOK, "up"), -1);
  EXPECT_EQ(ObjectPtzList.PostAuxResponseMsg(nullptr, 0x1234, 0, "<xml/>"), -1);
  EXPECT_EQ(g_calls, 0);

  EXPECT_EQ(ObjectPtzList.OnPlayEventCallBack(1, 2, 3, nullptr), 55);
  EXPECT_EQ(g_seen_user, &user);
  g_seen_user = nullptr;
  FRAME_EXTDATA extra = {};
  char data[4] = {};
  EXPECT_EQ(ObjectPtzList.OnPlayBackDataRecvCallBack(1, 0, data, sizeof(data), &extra), 66);
  EXPECT_EQ(g_seen_user, &user);  // the user pointer travels in the extra record

  IP_NET_DVR_SetReplayEventCallBack(nullptr, nullptr);
  IP_NET_DVR_SetReplayDataCallBack(nullptr, nullptr);
  EXPECT_EQ(ObjectPtzList.OnPlayEventCallBack(1, 2, 3, nullptr), QV_E_SOCKET);
  EXPECT_EQ(ObjectPtzList.OnPlayBackDataRecvCallBack(1, 0, data, sizeof(data), &extra),
            QV_E_SOCKET);
}

TEST_F(LifecycleTest, WriteToClosedSocketFailsInsteadOfEndingTheProcess) {
  // Without Init a write to a socket whose peer has gone ends the process.
  pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    int fds[2];
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, fds) != 0) _exit(2);
    close(fds[1]);
    ssize_t n = write(fds[0], "x", 1);
    _exit(n < 0 ? 3 : 4);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status)) << "exit status " << WEXITSTATUS(status);
  EXPECT_EQ(WTERMSIG(status), SIGPIPE);

  EXPECT_EQ(CapturedStdout([] { EXPECT_EQ(IP_NET_DVR_Init(), 0); }), "SIGPIPE ignore\n");
  int fds[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, fds), 0);
  close(fds[1]);
  errno = 0;
  EXPECT_EQ(write(fds[0], "x", 1), -1);
  EXPECT_EQ(errno, EPIPE);
  close(fds[0]);
}

// ---------------------------------------------------------------- accessors

TEST_F(LifecycleTest, VersionsAreExactAndLogged) {
  long version = 0, build = 0;
  std::string out = Console([&] {
    version = IP_NET_DVR_GetSDKVersion();
    build = IP_NET_DVR_GetSDKBuildVersion();
  });
  EXPECT_EQ(version, 120524100);
  EXPECT_EQ(build, 2012052413);
  std::regex lines(
      R"(\[[^\]]+\]\[IP_NET_DVR_GetSDKVersion:\d+\]IP_NET_DVR_GetSDKVersion\(120524100\)\n\r\n)"
      R"(\[[^\]]+\]\[IP_NET_DVR_GetSDKBuildVersion:\d+\]IP_NET_DVR_GetSDKBuildVersion\(2012052413\)\n\r\n)");
  EXPECT_TRUE(std::regex_match(out, lines)) << out;
}

TEST_F(LifecycleTest, LastErrorCodeIsReadAndClearedAndAccessorsWriteNoLine) {
  OjbectRtspList.SetLastError(QV_E_UNKNOWN_HANDLE);
  std::string out = CapturedStdout([] {
    EXPECT_EQ(IP_NET_DVR_LOG_OPEN(), 0);
    EXPECT_EQ(DebugGetState().console, 1);
    IP_NET_DVR_Get_Timestamp();
    EXPECT_EQ(IP_NET_DVR_GetLastErrorCode(), QV_E_UNKNOWN_HANDLE);
    EXPECT_EQ(IP_NET_DVR_GetLastErrorCode(), 0);
    EXPECT_EQ(IP_NET_DVR_LOG_CLOSE(), 0);
    EXPECT_EQ(DebugGetState().console, 0);
  });
  EXPECT_EQ(out, "");
}

// ---------------------------------------------------------------- frame lines

TEST_F(LifecycleTest, GlobalReleasesLogBeginAndEndWithElapsedTicks) {
  long logout = -1, stop = -1;
  std::string out = Console([&] {
    logout = IP_NET_DVR_LogoutAll();
    stop = IP_NET_DVR_StopAllRealPlay();
  });
  EXPECT_EQ(logout, 0);
  EXPECT_EQ(stop, 0);
  std::regex lines(
      R"(\[[^\]]+\]\[IP_NET_DVR_LogoutAll:\d+\]IP_NET_DVR_LogoutAll\(0\) begin\.\.\.\n\r\n)"
      R"(\[[^\]]+\]\[IP_NET_DVR_LogoutAll:\d+\]IP_NET_DVR_LogoutAll\(0\) end,use tick=\d+\n\r\n)"
      R"(\[[^\]]+\]\[IP_NET_DVR_StopAllRealPlay:\d+\]IP_NET_DVR_StopAllRealPlay\(0\) begin\.\.\.\n\r\n)"
      // the stream watchdog's own lines as it stops
      R"((?:[^\n]*\n)*)"
      R"(\[[^\]]+\]\[IP_NET_DVR_StopAllRealPlay:\d+\]IP_NET_DVR_StopAllRealPlay\(0\) end,use tick=\d+\n\r\n)");
  EXPECT_TRUE(std::regex_match(out, lines)) << out;
}

// Entry lines name the exported function in both places, also where
// several functions share a helper.
TEST_F(LifecycleTest, EntryLinesCarryTheExportedFunctionsName) {
  const long id = 99;  // names no session
  const struct {
    const char* name;
    std::function<void()> call;
  } calls[] = {
      {"IP_NET_DVR_Login",
       [] { IP_NET_DVR_Login("127.0.0.1", 0, const_cast<char*>("a"), const_cast<char*>("b"), nullptr); }},
      {"IP_NET_DVR_Login_Encrypt",
       [] {
         IP_NET_DVR_Login_Encrypt("127.0.0.1", 0, const_cast<char*>("a"), const_cast<char*>("b"),
                                  nullptr, "k");
       }},
      {"IP_NET_DVR_RebootDVR", [=] { IP_NET_DVR_RebootDVR(id); }},
      {"IP_NET_DVR_FormatDisk", [=] { IP_NET_DVR_FormatDisk(id, 0); }},
      {"IP_NET_DVR_Ircut_switch_daynight", [=] { IP_NET_DVR_Ircut_switch_daynight(id, 1); }},
      {"IP_NET_DVR_RestoreConfig", [=] { IP_NET_DVR_RestoreConfig(id); }},
      {"IP_NET_DVR_FindDVRLogFile", [=] { IP_NET_DVR_FindDVRLogFile(id); }},
      {"IP_NET_DVR_SCARE_OFF", [=] { IP_NET_DVR_SCARE_OFF(id, 1, 1, 5); }},
      {"IP_NET_DVR_SystemControl", [=] { IP_NET_DVR_SystemControl(id, 1007, 0, ""); }},
      {"IP_NET_DVR_GetDeviceAbility", [=] { IP_NET_DVR_GetDeviceAbility(id); }},
      {"IP_NET_DVR_CreateIFrame", [=] { IP_NET_DVR_CreateIFrame(id, 0); }},
      {"IP_NET_DVR_Logout", [=] { IP_NET_DVR_Logout(id); }},
  };
  for (const auto& c : calls) {
    std::string out = Console(c.call);
    std::string first = out.substr(0, out.find('\n'));
    std::regex form(std::string(R"(\[[^\]]+\]\[)") + c.name + R"(:\d+\])" + c.name + R"(\(.*)");
    EXPECT_TRUE(std::regex_match(first, form)) << c.name << ": " << first;
  }
}

TEST_F(LifecycleTest, CallbackSettersReturnZeroAndLogTheirArgument) {
  std::string out = Console([] {
    EXPECT_EQ(IP_NET_DVR_SetExceptionCallBack(7, 42, CountException, nullptr), 0);
    EXPECT_EQ(IP_NET_DVR_SetStatusEventCallBack(CountStatus, nullptr), 0);
    EXPECT_EQ(IP_NET_DVR_SetAUXResponseCallBack(CountAux, nullptr), 0);
    EXPECT_EQ(IP_NET_DVR_SetReplayEventCallBack(ReplayEvent, nullptr), 0);
    EXPECT_EQ(IP_NET_DVR_SetReplayDataCallBack(ReplayData, nullptr), 0);
  });
  size_t pos = Find(out, "]IP_NET_DVR_SetExceptionCallBack(42)\n");
  pos = Find(out, "]IP_NET_DVR_SetStatusEventCallBack(0)\n", pos);
  pos = Find(out, "]IP_NET_DVR_SetAUXResponseCallBack(0)\n", pos);
  pos = Find(out, "]IP_NET_DVR_SetReplayEventCallBack(0)\n", pos);
  Find(out, "]IP_NET_DVR_SetReplayDataCallBack(0)\n", pos);
  IP_NET_DVR_Cleanup();
}

TEST_F(LifecycleTest, SetLogToFileMakesTheLibraryLogIntoTheFolderAndNotOntoStdout) {
  testsupport::ScratchDir logs;
  CapturedStdout([] { IP_NET_DVR_Init(); });
  std::string out = CapturedStdout([&] {
    EXPECT_EQ(IP_NET_DVR_SetLogToFile(1, const_cast<char*>(logs.path().c_str()), 0), 0);
    IP_NET_DVR_SetStatusEventCallBack(CountStatus, nullptr);
    IP_NET_DVR_Cleanup();
  });
  EXPECT_EQ(out, "");  // the console switch is off

  auto files = ListDir(logs.path());
  ASSERT_EQ(files.size(), 1u);
  EXPECT_TRUE(std::regex_match(files[0], std::regex(R"(Quorvel_\d{8}_\d{6}_0\.log)"))) << files[0];
  std::string text = ReadFile(logs / files[0]);
  size_t pos = Find(text, "]IP_NET_DVR_SetStatusEventCallBack(0)\n\r\n");
  Find(text, "]IP_NET_DVR_Cleanup(0)\n\r\n", pos);
  EXPECT_EQ(DebugGetState().to_file, 0);
  EXPECT_FALSE(DebugGetState().file_open);
}

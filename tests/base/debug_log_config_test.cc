// The debug log's configuration file, ./player_dbg.cfg.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <climits>
#include <string>

#include "base/debug_log.h"
#include "base/log_fixture.h"

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;
using testsupport::ListDir;
using testsupport::ReadFile;

namespace {

bool IsDir(const std::string& path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

}  // namespace

TEST_F(DebugLogTest, WithoutAFileTheDefaultsHold) {
  DebugLogSwitch(1);
  CaptureStdout();
  Init();
  EXPECT_EQ(GetCapturedStdout(), "");  // no banner without a file
  DebugLogState s = DebugGetState();
  EXPECT_EQ(s.to_file, 0);
  EXPECT_EQ(s.to_network, 0);
  EXPECT_EQ(s.level, 10);
  EXPECT_EQ(s.show_file_line, 0);
  EXPECT_STREQ(s.monitor_ip, "");
  EXPECT_STREQ(s.start_time, "102030");
}

TEST_F(DebugLogTest, KeysAreFoundAnywhereInAnyOrder) {
  std::string sub = logs_ / "sub";
  std::string cfg = "# comment\nshowfileline=1; level=3;monitor_ip=127.0.0.1;debugfilepath=" +
                    sub + ";network=0;\r\nfile=7;";
  DebugLogSwitch(1);
  CaptureStdout();
  Init(cfg.c_str());
  std::string out = GetCapturedStdout();
  EXPECT_NE(out.find("]Quorvel Build Jul 25 2023 13:08:44\r\n\n\r\n"), std::string::npos) << out;
  DebugLogState s = DebugGetState();
  EXPECT_EQ(s.to_file, 1);
  EXPECT_EQ(s.to_network, 0);
  EXPECT_EQ(s.level, 3);
  EXPECT_EQ(s.show_file_line, 1);
  EXPECT_STREQ(s.monitor_ip, "127.0.0.1");
  // The folder is created, but the log stays in "./".
  EXPECT_TRUE(IsDir(sub));
  EXPECT_STREQ(s.log_dir, "./");
}

TEST_F(DebugLogTest, NetworkKeyWithoutSemicolonAtTheEndLeavesOnlyTheFileOn) {
  Init("file=1;\nnetwork=1");
  EXPECT_EQ(DebugGetState().to_file, 1);
  EXPECT_EQ(DebugGetState().to_network, 0);
}

TEST_F(DebugLogTest, AbsentKeysTakeTheirDefaultsAndAnAbsentFolderClearsTheMonitor) {
  Init("monitor_ip=127.0.0.9;");
  DebugLogState s = DebugGetState();
  EXPECT_STREQ(s.monitor_ip, "");
  EXPECT_EQ(s.level, 0);  // absent: 0, unlike the 10 of a missing file
  EXPECT_EQ(s.to_file, 0);
  EXPECT_EQ(s.show_file_line, 0);
}

TEST_F(DebugLogTest, KeysWithoutSemicolonsLeaveTheirSettingsAsTheyWere) {
  Init("level=5\nmonitor_ip=127.0.0.1\ndebugfilepath=made-by-mistake\nshowfileline=1\nfile=1");
  DebugLogState s = DebugGetState();
  EXPECT_EQ(s.level, 10);
  EXPECT_STREQ(s.monitor_ip, "");
  EXPECT_EQ(s.show_file_line, 0);
  EXPECT_EQ(s.to_file, 0);
  EXPECT_STREQ(s.log_dir, "");
  EXPECT_EQ(ListDir("."), std::vector<std::string>{"player_dbg.cfg"});
}

TEST_F(DebugLogTest, HugeValuesStayInsideTheirBuffers) {
  std::string long_dir = logs_ / std::string(300, 'p');
  std::string cfg = "file=99999999999999999999999999;level=-99999999999999999999;monitor_ip=" +
                    std::string(10000, '1') + ";debugfilepath=" + long_dir +
                    ";showfileline=" + std::string(5000, '9') + ";";
  Init(cfg.c_str());
  DebugLogState s = DebugGetState();
  EXPECT_EQ(s.to_file, 1);
  EXPECT_EQ(s.level, INT_MIN);
  EXPECT_EQ(s.show_file_line, INT_MAX);
  EXPECT_EQ(std::string(s.monitor_ip), std::string(63, '1'));
  EXPECT_STREQ(s.log_dir, "./");
  EXPECT_TRUE(ListDir(logs_.path()).empty());  // no folder under a cut name
}

TEST_F(DebugLogTest, OversizedOrUnreadableFilesAreHandled) {
  // Only the first MiB is read: a key behind it is not seen.
  std::string big(1 << 20, ' ');
  Init((big + "file=1;").c_str());
  EXPECT_EQ(DebugGetState().to_file, 0);
  DebugRelease();

  // A directory in the file's place is no configuration.
  remove("player_dbg.cfg");
  ASSERT_EQ(mkdir("player_dbg.cfg", 0755), 0);
  Init();
  EXPECT_EQ(DebugGetState().level, 10);
}

TEST_F(DebugLogTest, FileKeyAloneLogsIntoTheCurrentDirectory) {
  Init("file=1;");
  CaptureStdout();
  WriteDebugLog("fn", "f.cc", 1, 0, nullptr, "here\n");
  GetCapturedStdout();
  EXPECT_NE(ReadFile("./Quorvel_20240015_102030_0.log").find("here"), std::string::npos);
}

TEST_F(DebugLogTest, ShowFileLineSelectsTheLongLineForm) {
  Init("showfileline=1;");
  SetLogToFile(1, const_cast<char*>(logs_.path().c_str()), 0);
  CaptureStdout();
  WriteDebugLog("fn", "src/x.cc", 42, 0, nullptr, "[%s:%d]m\n", "fn", 42);
  GetCapturedStdout();
  char tid[32];
  snprintf(tid, sizeof(tid), "%X", static_cast<unsigned>(GetCurrentThreadId()));
  EXPECT_EQ(ReadFile(FileName(logs_.path(), "20240015", 0)),
            std::string("Quorvel:[fn:42]m\n-----------fun=fn,file:src/x.cc,line:42,"
                        "00-15 10:20:30,this=0x(nil),Tid=0x") +
                tid + "\r\n");
}

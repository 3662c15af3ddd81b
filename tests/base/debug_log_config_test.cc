// The debug log's configuration file, ./player_dbg.cfg.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <climits>
#include <string>

#include "base/debug_log.h"
#include "base/log_fixture.h"

using testsupport::CapturedStdout;
using testsupport::ListDir;
using testsupport::ReadFile;

TEST_F(DebugLogTest, KeysAreFoundAnywhereInAnyOrder) {
  std::string sub = logs_ / "sub";
  std::string cfg = "# comment\nshowfileline=1; level=3;monitor_ip=127.0.0.1;debugfilepath=" +
                    sub + ";network=0;\r\nfile=7;";
  DebugLogSwitch(1);
  std::string out = CapturedStdout([&] { Init(cfg.c_str()); });
  EXPECT_NE(out.find("]Quorvel Build Jul 25 2023 13:08:44\r\n\n\r\n"), std::string::npos) << out;
  DebugLogState s = DebugGetState();
  EXPECT_EQ(s.to_file, 1);
  EXPECT_EQ(s.to_network, 0);
  EXPECT_EQ(s.level, 3);
  EXPECT_EQ(s.show_file_line, 1);
  EXPECT_STREQ(s.monitor_ip, "127.0.0.1");
  // The folder is created, but the log stays in "./".
  struct stat st;
  EXPECT_TRUE(stat(sub.c_str(), &st) == 0 && S_ISDIR(st.st_mode));
  EXPECT_STREQ(s.log_dir, "./");
}

// Files that are missing, partial, malformed or hostile: each row is read by
// a fresh start of the log.
TEST_F(DebugLogTest, MissingMalformedAndHugeSettings) {
  const std::string huge = "file=99999999999999999999999999;level=-99999999999999999999;"
                           "monitor_ip=" + std::string(10000, '1') + ";debugfilepath=" +
                           (logs_ / std::string(300, 'p')) + ";showfileline=" +
                           std::string(5000, '9') + ";";
  const struct {
    const char* what;
    std::string text;  // empty: no file at all
    int to_file, to_network, level, show_file_line;
    std::string monitor_ip, log_dir;
  } cases[] = {
      {"no file: defaults", "", 0, 0, 10, 0, "", ""},
      {"last key without ';'", "file=1;\nnetwork=1", 1, 0, 0, 0, "", ""},
      // absent keys give 0 (unlike the 10 of a missing file), and an absent
      // folder clears the monitor
      {"absent keys", "monitor_ip=127.0.0.9;", 0, 0, 0, 0, "", ""},
      {"no ';' anywhere: settings as they were",
       "level=5\nmonitor_ip=127.0.0.1\ndebugfilepath=made-by-mistake\nshowfileline=1\nfile=1",
       0, 0, 10, 0, "", ""},
      {"huge values stay in their buffers", huge, 1, 0, INT_MIN, INT_MAX,
       std::string(63, '1'), "./"},
      // only the first MiB is read: a key behind it is not seen
      {"oversized", std::string(1 << 20, ' ') + "file=1;", 0, 0, 0, 0, "", ""},
  };
  DebugLogSwitch(1);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    remove("player_dbg.cfg");
    std::string out = CapturedStdout([&] { Init(c.text.empty() ? nullptr : c.text.c_str()); });
    if (c.text.empty()) {
      EXPECT_EQ(out, "");  // no banner without a file
    }
    DebugLogState s = DebugGetState();
    EXPECT_EQ(s.to_file, c.to_file);
    EXPECT_EQ(s.to_network, c.to_network);
    EXPECT_EQ(s.level, c.level);
    EXPECT_EQ(s.show_file_line, c.show_file_line);
    EXPECT_EQ(std::string(s.monitor_ip), c.monitor_ip);
    EXPECT_EQ(std::string(s.log_dir), c.log_dir);
    EXPECT_STREQ(s.start_time, "102030");
    CapturedStdout([] { DebugRelease(); });
  }
  // No folder was made by mistake, nor under a cut name.
  EXPECT_EQ(ListDir("."), std::vector<std::string>{"player_dbg.cfg"});
  EXPECT_TRUE(ListDir(logs_.path()).empty());

  // A directory in the file's place is no configuration.
  remove("player_dbg.cfg");
  ASSERT_EQ(mkdir("player_dbg.cfg", 0755), 0);
  Init();
  EXPECT_EQ(DebugGetState().level, 10);
}

TEST_F(DebugLogTest, FileKeyAloneLogsIntoTheCurrentDirectory) {
  Init("file=1;");
  CapturedStdout([] { WriteDebugLog("fn", "f.cc", 1, 0, nullptr, "here\n"); });
  EXPECT_NE(ReadFile("./Quorvel_20240015_102030_0.log").find("here"), std::string::npos);
}

TEST_F(DebugLogTest, ShowFileLineSelectsTheLongLineForm) {
  Init("showfileline=1;");
  SetLogToFile(1, const_cast<char*>(logs_.path().c_str()), 0);
  CapturedStdout([] { WriteDebugLog("fn", "src/x.cc", 42, 0, nullptr, "[%s:%d]m\n", "fn", 42); });
  char tid[32];
  snprintf(tid, sizeof(tid), "%X", static_cast<unsigned>(GetCurrentThreadId()));
  EXPECT_EQ(ReadFile(FileName(logs_.path(), "20240015", 0)),
            std::string("Quorvel:[fn:42]m\n-----------fun=fn,file:src/x.cc,line:42,"
                        "00-15 10:20:30,this=0x(nil),Tid=0x") +
                tid + "\r\n");
}

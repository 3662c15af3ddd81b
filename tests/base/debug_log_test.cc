// The debug log's sinks, switches and reference counting.
#include "base/debug_log.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <regex>
#include <string>

#include "base/log_fixture.h"

using testsupport::CapturedStdout;
using testsupport::ListDir;
using testsupport::ReadFile;

namespace {

// The calling thread's ID as the line forms print it ("%X" or "%08x").
std::string Tid(const char* form = "%X") {
  char buf[32];
  snprintf(buf, sizeof(buf), form, static_cast<unsigned>(GetCurrentThreadId()));
  return buf;
}

}  // namespace

// ---------------------------------------------------------------- switches

TEST_F(DebugLogTest, NothingIsWrittenWithoutConfigurationAndWithTheSwitchOff) {
  Init();
  EXPECT_EQ(CapturedStdout([] {
              QV_LOG("[%s:%d]quiet %d\n", 1);
              EXPECT_EQ(WriteDebugLog("fn", "f.cc", 1, 0, nullptr, "[%s:%d]quiet\n", "fn", 1), -1);
              EXPECT_EQ(DebugLogType(LOGTYPE_DEBUG, "quiet\n"), 0);
              DebugLogFunc("[%s:%d]quiet\n", "fn", 1);
            }),
            "");
  EXPECT_TRUE(ListDir(".").empty());
  EXPECT_TRUE(ListDir(logs_.path()).empty());

  // Turn the network sink on: the first datagram is the next line, so no
  // line above was sent.
  SetLogToFile(2, const_cast<char*>(logs_.path().c_str()), 0);
  CapturedStdout([] { QV_LOG("[%s:%d]first\n"); });
  std::string got;
  ASSERT_TRUE(udp_.Receive(&got));
  EXPECT_NE(got.find("first"), std::string::npos) << got;
}

TEST_F(DebugLogTest, ConsoleLineCarriesTimeThreadFunctionAndLine) {
  Init();
  DebugLogSwitch(5);
  testing::internal::CaptureStdout();
  int line = __LINE__ + 1;
  QV_LOG("[%s:%d]hello %d\n", 7);
  std::string out = testing::internal::GetCapturedStdout();
  std::regex form(R"(\[\d{4}-\d\d-\d\d \d\d:\d\d:\d\d,Tid=0x[0-9A-F]+\]\[TestBody:(\d+)\]hello 7\n\r\n)");
  std::smatch m;
  ASSERT_TRUE(std::regex_match(out, m, form)) << out;
  EXPECT_EQ(m[1], std::to_string(line));

  DebugLogSwitch(0);
  EXPECT_EQ(CapturedStdout([] { QV_LOG("[%s:%d]hidden\n"); }), "");
}

TEST_F(DebugLogTest, SetLogToFileOnlyTurnsSinksOnAndModeZeroTurnsThemOff) {
  Init();
  char* dir = const_cast<char*>(logs_.path().c_str());
  auto sinks = [] { return std::make_pair(DebugGetState().to_file, DebugGetState().to_network); };
  SetLogToFile(4, dir, 0);  // neither bit: the file sink
  EXPECT_EQ(sinks(), std::make_pair(1, 0));
  SetLogToFile(0, dir, 0);
  SetLogToFile(2, dir, 0);
  EXPECT_EQ(sinks(), std::make_pair(0, 1));
  SetLogToFile(1, nullptr, 0);  // a bad folder is ignored; flags still set
  EXPECT_EQ(sinks(), std::make_pair(1, 1));
  EXPECT_EQ(std::string(DebugGetState().log_dir), logs_.path());
  SetLogToFile(0, dir, 0);
  EXPECT_EQ(sinks(), std::make_pair(0, 0));
}

// ---------------------------------------------------------------- file sink

// The library's own lines reach the sinks in the long form; the console
// shows them in its own form, and only while it is switched on.
TEST_F(DebugLogTest, LibraryLinesGoToTheFileAndToTheConsoleOnlyWhenItIsOn) {
  Init();
  SetLogToFile(1, const_cast<char*>(logs_.path().c_str()), 0);
  testing::internal::CaptureStdout();
  int line = __LINE__ + 1;
  QV_LOG("[%s:%d]library %d\n", 1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  std::string file = FileName(logs_.path(), "20240015", 0);
  EXPECT_EQ(ReadFile(file), "Quorvel:00-15 10:20:30,this=0x(nil),Tid=0x" + Tid() + ",[TestBody:" +
                                std::to_string(line) + "]library 1\n\r\n");

  DebugLogSwitch(1);
  testing::internal::CaptureStdout();
  QV_LOG("[%s:%d]shown\n");
  std::string out = testing::internal::GetCapturedStdout();
  std::regex form(R"(\[\d{4}-\d\d-\d\d \d\d:\d\d:\d\d,Tid=0x[0-9A-F]+\]\[TestBody:\d+\]shown\n\r\n)");
  EXPECT_TRUE(std::regex_match(out, form)) << out;
  EXPECT_EQ(CountLines(ReadFile(file)), 2);
}

TEST_F(DebugLogTest, LongFormLineGoesToTheDaysFileInTheLogFolder) {
  Init();
  SetLogToFile(1, const_cast<char*>(logs_.path().c_str()), 0);
  void* obj = reinterpret_cast<void*>(0x1234);
  std::string out = CapturedStdout([&] {
    EXPECT_EQ(WriteDebugLog("fn", "f.cc", 12, 0, obj, "[%s:%d]msg %d\n", "fn", 12, 5), 0);
  });
  // January prints as month 00.
  std::string line = "Quorvel:00-15 10:20:30,this=0x0x1234,Tid=0x" + Tid() + ",[fn:12]msg 5\n\r\n";
  EXPECT_EQ(ReadFile(FileName(logs_.path(), "20240015", 0)), line);
  EXPECT_EQ(out, "write logfile:" + line + "\n");
  EXPECT_EQ(ListDir(logs_.path()).size(), 1u);
}

TEST_F(DebugLogTest, LineAfterTwentyThousandOpensTheNextIndexAndANewDayStartsAtZero) {
  Init();
  SetLogToFile(1, const_cast<char*>(logs_.path().c_str()), 0);
  testing::internal::CaptureStdout();
  for (int i = 1; i <= 20000; ++i) WriteDebugLog("fn", "f.cc", 1, 0, nullptr, "line %d\n", i);
  std::string first = FileName(logs_.path(), "20240015", 0);
  std::string second = FileName(logs_.path(), "20240015", 1);
  EXPECT_EQ(CountLines(ReadFile(first)), 20000);
  EXPECT_EQ(ListDir(logs_.path()).size(), 1u);

  WriteDebugLog("fn", "f.cc", 1, 0, nullptr, "line %d\n", 20001);
  EXPECT_EQ(CountLines(ReadFile(first)), 20000);
  EXPECT_NE(ReadFile(second).find("line 20001\n"), std::string::npos);
  EXPECT_EQ(DebugGetState().file_index, 1);

  Now().tm_mday = 16;
  WriteDebugLog("fn", "f.cc", 1, 0, nullptr, "next day\n");
  testing::internal::GetCapturedStdout();
  EXPECT_NE(ReadFile(FileName(logs_.path(), "20240016", 0)).find("next day"), std::string::npos);
  EXPECT_EQ(CountLines(ReadFile(second)), 1);
  EXPECT_EQ(DebugGetState().file_index, 0);
  EXPECT_EQ(ListDir(logs_.path()).size(), 3u);
}

TEST_F(DebugLogTest, WithNoFileOpenOnlyTheShortFormMovesTheIndexOn) {
  Init();
  SetLogToFile(1, const_cast<char*>(logs_.path().c_str()), 0);
  // The short form prints nothing, and writes in the current directory
  // whatever the folder.
  EXPECT_EQ(CapturedStdout([] {
              for (int i = 0; i < 20000; ++i) DebugLogType(LOGTYPE_INFO, "short %d", i);
            }),
            "");
  EXPECT_EQ(CountLines(ReadFile("./Quorvel_20240015_102030_0.log")), 20000);
  EXPECT_TRUE(ListDir(logs_.path()).empty());

  ChangeDebugFileDir(logs_.path().c_str());  // closes the file
  DebugLogType(LOGTYPE_ERROR, "after %d", 1);
  EXPECT_EQ(ReadFile("./Quorvel_20240015_102030_1.log"),
            "Quorvel: 2024-00-15 10:20:30: " + Tid("%08x") + ": after 1\r\n");
}

TEST_F(DebugLogTest, WithNoFileOpenTheLongFormReopensTheSameIndex) {
  Init();
  SetLogToFile(1, const_cast<char*>(logs_.path().c_str()), 0);
  CapturedStdout([&] {
    for (int i = 0; i < 20000; ++i) WriteDebugLog("fn", "f.cc", 1, 0, nullptr, "long %d\n", i);
    ChangeDebugFileDir(logs_.path().c_str());
    WriteDebugLog("fn", "f.cc", 1, 0, nullptr, "after\n");
  });
  EXPECT_EQ(CountLines(ReadFile(FileName(logs_.path(), "20240015", 0))), 20001);
  EXPECT_EQ(ListDir(logs_.path()).size(), 1u);
}

TEST_F(DebugLogTest, UnopenableFileEndsTheCallWithAnError) {
  Init();
  std::string missing = logs_.path() + "/no/such/folder";
  SetLogToFile(3, const_cast<char*>(missing.c_str()), 0);
  DebugLogSwitch(1);
  std::string out = CapturedStdout(
      [] { EXPECT_EQ(WriteDebugLog("fn", "f.cc", 1, 0, nullptr, "lost\n"), -1); });
  EXPECT_NE(out.find("]Quorvel: DebugLog() ERR 2: open debug file error.\r\n\n\r\n"),
            std::string::npos)
      << out;
  // The network sink was not reached.
  SetLogToFile(0, nullptr, 0);
  SetLogToFile(2, const_cast<char*>(logs_.path().c_str()), 0);
  CapturedStdout([] { WriteDebugLog("fn", "f.cc", 1, 0, nullptr, "reached\n"); });
  std::string got;
  ASSERT_TRUE(udp_.Receive(&got));
  EXPECT_NE(got.find("reached"), std::string::npos) << got;
}

// ---------------------------------------------------------------- UDP sink

TEST_F(DebugLogTest, UdpSinkSendsEachLineWithoutTerminator) {
  Init("network=1;monitor_ip=127.0.0.1;debugfilepath=.;");
  EXPECT_EQ(DebugGetState().to_network, 1);
  EXPECT_EQ(WriteDebugLog("fn", "f.cc", 3, 0, nullptr, "[%s:%d]over udp\n", "fn", 3), 0);
  std::string got;
  ASSERT_TRUE(udp_.Receive(&got));
  EXPECT_EQ(got, "Quorvel:00-15 10:20:30,this=0x(nil),Tid=0x" + Tid() + ",[fn:3]over udp\n\r\n");

  EXPECT_EQ(DebugLogType(LOGTYPE_DEBUG, "typed %d", 9), 0);
  ASSERT_TRUE(udp_.Receive(&got));
  EXPECT_EQ(got, "Quorvel: 2024-00-15 10:20:30: " + Tid("%08x") + ": typed 9\r\n");

  int line = __LINE__ + 1;
  QV_LOG("[%s:%d]macro\n");
  ASSERT_TRUE(udp_.Receive(&got));
  EXPECT_NE(got.find(",[TestBody:" + std::to_string(line) + "]macro\n\r\n"), std::string::npos)
      << got;
  EXPECT_EQ(ListDir("."), std::vector<std::string>{"player_dbg.cfg"});
}

// ---------------------------------------------------------------- folder

TEST_F(DebugLogTest, ChangeDebugFileDirChecksItsTextAndKeepsALongerTail) {
  Init();
  SetLogToFile(1, const_cast<char*>(logs_.path().c_str()), 0);
  CapturedStdout([] { WriteDebugLog("fn", "f.cc", 1, 0, nullptr, "open\n"); });
  EXPECT_TRUE(DebugGetState().file_open);
  EXPECT_EQ(ChangeDebugFileDir(logs_.path().c_str()), 0);  // closes the file
  EXPECT_FALSE(DebugGetState().file_open);

  EXPECT_EQ(ChangeDebugFileDir(nullptr), -1);
  EXPECT_EQ(ChangeDebugFileDir(""), -2);
  EXPECT_EQ(ChangeDebugFileDir(std::string(256, 'd').c_str()), -3);
  EXPECT_EQ(std::string(DebugGetState().log_dir), logs_.path());

  std::string longest(255, 'e');
  EXPECT_EQ(ChangeDebugFileDir(longest.c_str()), 0);
  EXPECT_EQ(std::string(DebugGetState().log_dir), longest);

  EXPECT_EQ(ChangeDebugFileDir("/tmp/abcdef"), 0);
  EXPECT_EQ(ChangeDebugFileDir("/tmp/x"), 0);
  EXPECT_EQ(std::string(DebugGetState().log_dir).substr(0, 11), "/tmp/xbcdef");
}

// ---------------------------------------------------------------- counting

TEST_F(DebugLogTest, InitTwiceThenReleaseThriceWarnsInGb2312) {
  Init();
  DebugLogSwitch(1);
  EXPECT_NE(CapturedStdout([] { DebugInit(); }).find("]DebugInit() count=2!\n\r\n"),
            std::string::npos);
  SetLogToFile(1, const_cast<char*>(logs_.path().c_str()), 0);

  DebugRelease();  // still counted once: the log goes on
  CapturedStdout([] { EXPECT_EQ(WriteDebugLog("fn", "f.cc", 1, 0, nullptr, "still here\n"), 0); });
  EXPECT_TRUE(DebugGetState().file_open);

  std::string out = CapturedStdout([] { DebugRelease(); });  // the last one shuts it down
  EXPECT_NE(out.find("]DebugRelease Quorvel Jul 25 2023 13:08:44\n\n\r\n"), std::string::npos)
      << out;
  EXPECT_EQ(DebugGetState().to_file, 0);
  EXPECT_FALSE(DebugGetState().file_open);
  EXPECT_EQ(WriteDebugLog("fn", "f.cc", 1, 0, nullptr, "gone\n"), -1);

  out = CapturedStdout([] { DebugRelease(); });  // one too many
  const std::string warning =
      "DebugRelease() count=-1,"
      "\xb5\xf7\xd3\xc3" "DebugRelease" "\xb1\xc8\xb5\xf7\xd3\xc3" "DebugInit" "\xb6\xe0!\r\n";
  ASSERT_GE(out.size(), warning.size());
  EXPECT_EQ(out.substr(out.size() - warning.size()), warning);
  EXPECT_EQ(DebugGetState().init_count, -1);

  // The start that brings the count back to 0 only counts: the
  // configuration is not read again.
  testsupport::WriteFile("player_dbg.cfg", "file=1;");
  EXPECT_NE(CapturedStdout([] { DebugInit(); }).find("]DebugInit() count=0!\n\r\n"),
            std::string::npos);
  EXPECT_EQ(DebugGetState().init_count, 0);
  EXPECT_EQ(DebugGetState().to_file, 0);
  CapturedStdout([] { DebugInit(); });  // the next one loads
  EXPECT_EQ(DebugGetState().to_file, 1);
}

TEST(DebugLogTime, SlogctimeFormatsLocalTimeWithMonthFromOne) {
  const char* old = getenv("TZ");
  std::string saved = old ? old : "";
  setenv("TZ", "UTC", 1);
  tzset();
  EXPECT_STREQ(slogctime(0), "");
  EXPECT_STREQ(slogctime(31 * 86400L + 3723), "1970-02-01 01:02:03");
  if (old) setenv("TZ", saved.c_str(), 1); else unsetenv("TZ");
  tzset();
}

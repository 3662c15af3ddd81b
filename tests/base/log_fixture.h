// Fixture for the debug-log tests: each test works inside a scratch
// directory (where "./player_dbg.cfg" and the short-form files live), with a
// fixed clock and the monitor port pointed at a loopback receiver. Everything
// the test changes in the process-wide log is put back afterwards.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "base/debug_log.h"
#include "support/scratch.h"

class DebugLogTest : public ::testing::Test {
 protected:
  // 2024-01-15 10:20:30 in the log's calendar (absolute year, month from 0).
  static SYSTEMTIME& Now() {
    static SYSTEMTIME now = MakeTime(2024, 0, 15, 10, 20, 30);
    return now;
  }
  static void FakeClock(SYSTEMTIME* st) { *st = Now(); }
  static SYSTEMTIME MakeTime(int year, int mon, int mday, int hour, int min, int sec) {
    SYSTEMTIME st = {};
    st.tm_year = year;
    st.tm_mon = mon;
    st.tm_mday = mday;
    st.tm_hour = hour;
    st.tm_min = min;
    st.tm_sec = sec;
    return st;
  }

  void SetUp() override {
    Now() = MakeTime(2024, 0, 15, 10, 20, 30);
    DebugSetClock(FakeClock);
    DebugSetConfigPath(nullptr);
    DebugSetMonitorPort(udp_.port());
  }

  void TearDown() override {
    while (DebugGetState().init_count > 0) DebugRelease();
    DebugLogSwitch(0);
    SetLogToFile(0, nullptr, 0);
    DebugSetClock(nullptr);
    DebugSetConfigPath(nullptr);
    DebugSetMonitorPort(3000);
  }

  // Writes ./player_dbg.cfg (unless config is null) and starts the log.
  void Init(const char* config = nullptr) {
    if (config != nullptr) testsupport::WriteFile("player_dbg.cfg", config);
    ASSERT_EQ(DebugInit(), 0);
  }

  // The long-form file name for a day and index, in folder dir.
  static std::string FileName(const std::string& dir, const char* date, int index) {
    return dir + "/Quorvel_" + date + "_102030_" + std::to_string(index) + ".log";
  }

  static int CountLines(const std::string& text) {
    int n = 0;
    for (size_t pos = 0; (pos = text.find("\r\n", pos)) != std::string::npos; pos += 2) ++n;
    return n;
  }

  testsupport::ScratchDir cwd_{true};
  testsupport::ScratchDir logs_;
  testsupport::UdpReceiver udp_;
};

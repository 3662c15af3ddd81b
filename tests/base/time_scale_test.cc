// The scale of the protocol timers belongs to the code that links the
// library's internals; a host's environment never changes it.
#include "base/time_scale.h"

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cstdlib>
#include <string>

extern char** environ;

namespace {

const char kChildMark[] = "QV_TIMER_SCALE_CHILD";

TEST(TimerScale, StartsAtOneWhateverTheEnvironmentSays) {
  EXPECT_EQ(GetTimerScale(), 1.0);
  if (getenv(kChildMark) != nullptr) return;  // the run below

  // The same case again in a process started with the variable that once
  // set the scale.
  std::string filter = "--gtest_filter=TimerScale.StartsAtOneWhateverTheEnvironmentSays";
  char* argv[] = {const_cast<char*>("test_base"), const_cast<char*>(filter.c_str()), nullptr};
  setenv("QUORVEL_TIMER_SCALE", "0.01", 1);
  setenv(kChildMark, "1", 1);
  pid_t child = 0;
  int spawned = posix_spawn(&child, "/proc/self/exe", nullptr, nullptr, argv, environ);
  unsetenv("QUORVEL_TIMER_SCALE");
  unsetenv(kChildMark);
  ASSERT_EQ(spawned, 0);
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(TimerScale, ScalesLongTimersButNeverToZero) {
  SetTimerScale(0.02);
  EXPECT_EQ(ScaledMs(10000), 200u);
  EXPECT_EQ(ScaledMs(10), 1u);  // 0.2 ms still waits
  EXPECT_EQ(ScaledMs(0), 0u);
  SetTimerScale(0);  // ignored
  SetTimerScale(-1);
  EXPECT_EQ(GetTimerScale(), 0.02);
  SetTimerScale(1.0);
}

}  // namespace

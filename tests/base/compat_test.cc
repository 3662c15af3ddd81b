#include "base/compat.h"

#include <gtest/gtest.h>

#include <cstring>
#include <ctime>

TEST(Compat, LocalTimeHasAbsoluteYearAndZeroBasedMonth) {
  time_t before = time(nullptr);
  SYSTEMTIME st;
  GetLocalTime(&st);
  struct tm ref;
  localtime_r(&before, &ref);
  if (ref.tm_mday != st.tm_mday) GTEST_SKIP() << "midnight passed during the test";
  EXPECT_EQ(st.tm_year, ref.tm_year + 1900);
  EXPECT_EQ(st.tm_mon, ref.tm_mon);  // January is 0
  GetLocalTime(nullptr);             // does nothing
}

TEST(Compat, StrcpySCopiesAtMostSizeAndForcesNoTerminator) {
  char buf[8];
  memset(buf, 'x', sizeof(buf));
  EXPECT_EQ(strcpy_s(buf, 4, "abcdef"), 0);
  EXPECT_EQ(std::string(buf, 8), "abcdxxxx");
  EXPECT_EQ(strcpy_s(buf, 8, "ab"), 0);
  EXPECT_EQ(std::string(buf, 8), std::string("ab\0\0\0\0\0\0", 8));  // strncpy pads
}

// Round trips of configuration records through their writers and readers.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

inline bool StartsWith(const std::string& text, const std::string& head) {
  return text.compare(0, head.size(), head) == 0;
}

inline bool EndsWith(const std::string& text, const std::string& tail) {
  return text.size() >= tail.size() &&
         text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

// How often piece stands in text (overlapping ones counted).
inline size_t Occurrences(const std::string& text, const std::string& piece) {
  size_t n = 0;
  for (size_t at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1)) ++n;
  return n;
}

// Takes over a writer's text (null gives "" and a failure).
inline std::string TakeText(char* text) {
  EXPECT_NE(text, nullptr);
  std::string s = text ? text : "";
  free(text);
  return s;
}

// Equal records; otherwise the offset of the first differing byte.
template <typename Rec>
testing::AssertionResult SameRecord(const Rec& a, const Rec& b) {
  const unsigned char* pa = reinterpret_cast<const unsigned char*>(&a);
  const unsigned char* pb = reinterpret_cast<const unsigned char*>(&b);
  for (size_t i = 0; i < sizeof(Rec); ++i)
    if (pa[i] != pb[i]) return testing::AssertionFailure() << "records differ at byte " << i;
  return testing::AssertionSuccess();
}

// Record to XML to record (equal), and that XML to record to XML
// (byte-identical). The record read into starts out full of stale bytes.
template <typename Rec, typename Write>
void ExpectRecordRoundTrip(const Rec& filled, Write write, int (*read)(Rec*, const char*)) {
  Rec in = filled;
  std::string xml = TakeText(write(&in));
  Rec out;
  memset(&out, 0x5A, sizeof(out));
  ASSERT_EQ(read(&out, xml.c_str()), 0) << xml;
  EXPECT_TRUE(SameRecord(filled, out)) << xml;
  EXPECT_EQ(TakeText(write(&out)), xml);
}

// One row of a table of round trips: a name and the check, bound to its
// record, writer and reader.
struct RoundTripRow {
  const char* name;
  void (*check)();
};

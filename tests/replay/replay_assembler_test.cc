// The reassembly of replay media packets, packet by packet: which runs of
// packets make a frame and which are dropped.
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/debug_log.h"
#include "link/replay_assembler.h"
#include "support/scratch.h"

namespace {

enum { kMiddle = 0, kFirst = 1, kLast = 16, kWhole = 17 };

struct Packet {
  int type;
  uint16_t sequence;
  uint32_t index;
  std::string data;
  int kind = 0;
  int key = 0;
};

std::string Encode(const Packet& p) {
  std::string out(20, '\0');
  uint32_t tick = 1000 + p.index;
  memcpy(&out[0], &tick, 4);
  memcpy(&out[4], &tick, 4);
  memcpy(&out[8], &p.sequence, 2);
  uint16_t len = static_cast<uint16_t>(p.data.size());
  memcpy(&out[10], &len, 2);
  out[12] = static_cast<char>(p.type);
  out[13] = static_cast<char>(p.key);
  out[14] = static_cast<char>(p.kind);
  memcpy(&out[16], &p.index, 4);
  return out + p.data;
}

// The frames a run of packets makes: their data (trailer cut off) by index.
std::vector<std::string> Feed(CReplayAssembler* a, const std::vector<Packet>& packets) {
  std::vector<std::string> frames;
  for (const Packet& p : packets) {
    std::string bytes = Encode(p);
    CReplayAssembler::Frame f;
    if (a->Add(reinterpret_cast<const unsigned char*>(bytes.data()),
               static_cast<int>(bytes.size()), &f)) {
      frames.push_back(std::to_string(f.index) + ":" + std::string(f.data, f.length - 16));
    }
  }
  return frames;
}

TEST(ReplayAssembler, RunsOfPacketsAndTheFramesTheyMake) {
  const struct {
    const char* what;
    std::vector<Packet> packets;
    std::vector<std::string> frames;
    const char* log;  // the line a dropped packet leaves; "" when none is dropped
  } cases[] = {
      {"whole frames", {{kWhole, 1, 1, "ab"}, {kWhole, 9, 2, ""}}, {"1:ab", "2:"}, ""},
      {"first, middles, last", {{kFirst, 4, 7, "a"}, {kMiddle, 5, 7, "b"}, {kMiddle, 6, 7, "c"},
                                {kLast, 7, 7, "d"}}, {"7:abcd"}, "recv frame audio=0,index=7,size=20"},
      {"across the sequence wrap", {{kFirst, 65535, 3, "x"}, {kLast, 0, 3, "y"}}, {"3:xy"}, ""},
      {"a skipped middle loses the frame only",
       {{kFirst, 1, 5, "a"}, {kMiddle, 3, 5, "b"}, {kLast, 4, 5, "c"}, {kWhole, 9, 6, "z"}},
       {"6:z"}, "pack seq=2!=3,error----------1"},
      {"a skipped last", {{kFirst, 1, 5, "a"}, {kLast, 3, 5, "c"}}, {},
       "pack seq=2!=3,error----------2"},
      {"a last of another frame", {{kFirst, 1, 5, "a"}, {kLast, 2, 6, "b"}}, {},
       "pack type=16,frame index=6,last pack frame index=5,recv data error!"},
      {"a middle of another frame", {{kFirst, 1, 5, "a"}, {kMiddle, 2, 6, "b"}, {kLast, 3, 5, "c"}},
       {}, "pack type=0,frame index=6,last pack frame index=5,recv data error!"},
      {"a middle without a first", {{kWhole, 1, 5, "a"}, {kMiddle, 2, 5, "b"}, {kLast, 3, 5, "c"}},
       {"5:a"}, "pack type=0,frame index=5,last pack frame index=5,recv data error!"},
      {"a first replaces an unfinished frame",
       {{kFirst, 1, 5, "a"}, {kFirst, 2, 6, "b"}, {kLast, 3, 6, "c"}}, {"6:bc"}, ""},
      {"a whole frame in the middle of one ends it",
       {{kFirst, 1, 5, "a"}, {kWhole, 2, 9, "w"}, {kLast, 3, 5, "c"}}, {"9:w"},
       "recv data error!"},
      {"an unknown type", {{2, 1, 5, "a"}, {kWhole, 2, 6, "b"}}, {"6:b"},
       "pack type=2,frame index=5,last pack frame index=0,recv data error!"},
  };
  DebugLogSwitch(1);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    CReplayAssembler a;
    a.Allocate();
    std::vector<std::string> frames;
    std::string log = testsupport::CapturedStdout([&] { frames = Feed(&a, c.packets); });
    EXPECT_EQ(frames, c.frames);
    EXPECT_THAT(log, ::testing::HasSubstr(c.log));
  }
  DebugLogSwitch(0);
}

TEST(ReplayAssembler, TrailerCarriesTheLatestKeyFrameForVideoAndTheIndexForAudio) {
  CReplayAssembler a;
  a.Allocate();
  std::vector<uint32_t> keys;
  const Packet packets[] = {{kWhole, 1, 10, "k", 0, 1}, {kWhole, 2, 11, "p"},
                            {kWhole, 3, 40, "s", 1, 0}, {kWhole, 4, 12, "p"},
                            {kWhole, 5, 13, "k", 0, 1}};
  for (const Packet& p : packets) {
    std::string bytes = Encode(p);
    CReplayAssembler::Frame f;
    ASSERT_TRUE(a.Add(reinterpret_cast<const unsigned char*>(bytes.data()),
                      static_cast<int>(bytes.size()), &f));
    uint32_t trailer[4];
    memcpy(trailer, f.data + f.length - 16, 16);
    EXPECT_EQ(trailer[0], 0x1A2B3C4Du);
    EXPECT_EQ(trailer[1], 0u);
    EXPECT_EQ(trailer[2], p.index);
    keys.push_back(trailer[3]);
  }
  EXPECT_EQ(keys, (std::vector<uint32_t>{10, 10, 40, 10, 13}));
}

TEST(ReplayAssembler, PacketsWithImpossibleLengthsAreDropped) {
  CReplayAssembler a;
  CReplayAssembler::Frame f;
  std::string whole = Encode({kWhole, 1, 1, "abc"});
  const unsigned char* bytes = reinterpret_cast<const unsigned char*>(whole.data());
  // Nothing is taken before the buffer exists.
  EXPECT_FALSE(a.Add(bytes, static_cast<int>(whole.size()), &f));
  a.Allocate();
  DebugLogSwitch(1);
  std::string log = testsupport::CapturedStdout([&] {
    EXPECT_FALSE(a.Add(bytes, 19, &f));                                  // shorter than a header
    EXPECT_FALSE(a.Add(bytes, static_cast<int>(whole.size()) - 1, &f));  // data cut short
  });
  EXPECT_THAT(log, ::testing::HasSubstr("pack type=-1,data len=-1,packet len=19,bad length, dropped!"));
  EXPECT_THAT(log, ::testing::HasSubstr("pack type=17,data len=3,packet len=22,bad length, dropped!"));
  EXPECT_TRUE(a.Add(bytes, static_cast<int>(whole.size()), &f));
  // A frame that would not fit into 2 MiB with its trailer is given up at
  // the packet that overflows, and its later packets are refused too.
  std::string chunk(60000, 'd');
  std::vector<Packet> big = {{kFirst, 0, 2, chunk}};
  uint16_t seq = 1;
  for (int i = 0; i < 40; ++i) big.push_back({kMiddle, seq++, 2, chunk});
  big.push_back({kLast, seq++, 2, "e"});
  big.push_back({kWhole, seq++, 3, "next"});
  log = testsupport::CapturedStdout(
      [&] { EXPECT_EQ(Feed(&a, big), std::vector<std::string>{"3:next"}); });
  EXPECT_THAT(log, ::testing::HasSubstr("frame index=2,size=2100020 too big for the assembly buffer, dropped!"));
  DebugLogSwitch(0);
  // One that fills the buffer to the last byte is whole.
  const int room = CReplayAssembler::kBufferSize - 20 - 16;
  std::vector<Packet> exact = {{kFirst, 0, 4, std::string(room % 60000, 'f')}};
  seq = 1;
  for (int i = 0; i < room / 60000; ++i) exact.push_back({kMiddle, seq++, 4, chunk});
  exact.push_back({kLast, seq, 4, ""});
  std::vector<std::string> frames = Feed(&a, exact);
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].size(), 2u + static_cast<size_t>(room));
}

}  // namespace

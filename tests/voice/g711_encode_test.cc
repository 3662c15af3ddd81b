// The mu-law encoder against G.711's own construction of a code: the
// 14-bit magnitude plus the bias of 33 is split into a segment (the
// position of its highest set bit above bit 5) and the four bits below that
// bit, and the code is inverted, with the sign in the top bit.
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "voice/audio_thread.h"

namespace {

uint8_t G711MuLaw(int16_t sample) {
  int x = sample >> 2;
  int mask = x < 0 ? 0x7F : 0xFF;
  int m = x < 0 ? -x : x;
  if (m > 8159) m = 8159;  // the largest magnitude the code can carry
  m += 33;
  int segment = 0;
  while (segment < 8 && m > (0x40 << segment) - 1) ++segment;
  int code = segment >= 8 ? 0x7F : (segment << 4) | ((m >> (segment + 1)) & 0x0F);
  return static_cast<uint8_t>(code ^ mask);
}

uint8_t Encode(int16_t sample) {
  short in = sample;
  short out = 0;
  CAudioThread::AUDIO_g711Encode(&out, &in, 2);
  return static_cast<uint8_t>(out & 0xFF);
}

TEST(G711Encode, EverySampleMatchesTheStandardCode) {
  for (int s = -32768; s <= 32767; ++s) {
    ASSERT_EQ(Encode(static_cast<int16_t>(s)), G711MuLaw(static_cast<int16_t>(s))) << s;
  }
  EXPECT_EQ(Encode(0), 0xFF);
  EXPECT_EQ(Encode(-4), 0x7E);
  EXPECT_EQ(Encode(32767), 0x80);
  EXPECT_EQ(Encode(-32768), 0x00);
}

TEST(G711Encode, BytesArePackedInOrderIntoWholeWords) {
  const short in[3] = {0, -4, 32767};
  std::vector<uint16_t> out(3, 0xAAAA);
  short n = CAudioThread::AUDIO_g711Encode(reinterpret_cast<short*>(out.data()), in, 6);
  EXPECT_EQ(n, 3);
  EXPECT_EQ(out[0], 0x7EFF);  // first byte low, second high
  EXPECT_EQ(out[1], 0x0080);  // a lone last byte overwrites its word
  EXPECT_EQ(out[2], 0xAAAA);  // nothing beyond
  // An odd byte count leaves its last byte out.
  EXPECT_EQ(CAudioThread::AUDIO_g711Encode(reinterpret_cast<short*>(out.data()), in, 5), 2);
}

}  // namespace

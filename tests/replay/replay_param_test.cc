// The replay parameter record from the camera's blocks of every size.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "link/replay_param.h"

namespace {

std::string Block(int size, const char* codec, int a, int b, int c, int d, int config_len) {
  std::string block(static_cast<size_t>(size), '\0');
  strncpy(&block[0], codec, 31);
  int values[5] = {a, b, c, d, config_len};
  memcpy(&block[32], values, sizeof values);
  for (int i = 52; i < size; ++i) block[static_cast<size_t>(i)] = static_cast<char>(i);
  return block;
}

QV_REPLAY_PARAM Make(const std::string& video, const std::string& audio) {
  QV_REPLAY_PARAM p;
  memset(&p, 0x5A, sizeof p);
  MakeReplayParam(reinterpret_cast<const unsigned char*>(video.data()),
                  static_cast<int>(video.size()),
                  reinterpret_cast<const unsigned char*>(audio.data()),
                  static_cast<int>(audio.size()), 61, &p);
  return p;
}

TEST(ReplayParam, VideoBlocksOfEverySize) {
  std::string audio = Block(276, "AAC", 48000, 16, 2, 128000, 2);
  // Current size, a shorter and a longer form: field by field, config cut
  // to what the block holds and the record can take.
  for (int size : {536, 316, 400, 700}) {
    SCOPED_TRACE(size);
    QV_REPLAY_PARAM p = Make(Block(size, "H264", 1920, 1080, 30, 4000000, 1000), audio);
    EXPECT_EQ(p.video_size, size);
    EXPECT_STREQ(p.av.video.codec, "H264");
    EXPECT_EQ(p.av.video.width, 1920);
    EXPECT_EQ(p.av.video.frame_rate, 30);
    int expected = size - 52 < 484 ? size - 52 : 484;
    EXPECT_EQ(p.av.video.config_len, expected);
    EXPECT_EQ(p.av.video.config[0], 52);
    EXPECT_EQ(p.legacy_video[0], 0);
  }
  // A legacy block is kept as sent.
  std::string legacy = Block(315, "OLD", 1, 2, 3, 4, 5);
  QV_REPLAY_PARAM p = Make(legacy, audio);
  EXPECT_EQ(p.av.video.codec[0], '\0');
  EXPECT_EQ(p.av.video.width, 0);
  EXPECT_EQ(memcmp(p.legacy_video, legacy.data(), legacy.size()), 0);
  EXPECT_EQ(p.video_seconds, 61);
  // The rest of the record is zero.
  for (unsigned char c : p.reserved) ASSERT_EQ(c, 0);
}

TEST(ReplayParam, AudioBlocksAndTheirCheck) {
  std::string video = Block(536, "H264", 1, 1, 25, 1, 0);
  const struct {
    int rate, bits, channels;
    bool usable;
  } cases[] = {
      {8000, 16, 1, true},   {48000, 24, 8, true},  {7000, 16, 1, false},
      {44100, 16, 2, false}, {8000, 8, 1, false},   {8000, 12, 1, false},
      {8000, 16, 0, false},  {8000, 16, 9, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.rate * 100 + c.bits);
    QV_REPLAY_PARAM p = Make(video, Block(276, "PCM", c.rate, c.bits, c.channels, 0, 0));
    EXPECT_EQ(p.audio_valid, c.usable ? 1 : 0);
    EXPECT_EQ(p.av.audio.sample_rate, c.usable ? c.rate : 0);
  }
  // 56 bytes and up are converted; below, kept as they are.
  QV_REPLAY_PARAM p = Make(video, Block(56, "G711U", 8000, 16, 1, 64000, 9));
  EXPECT_STREQ(p.av.audio.codec, "G711U");
  EXPECT_EQ(p.av.audio.config_len, 4);
  std::string legacy = Block(55, "G711U", 8000, 16, 1, 64000, 0);
  p = Make(video, legacy);
  EXPECT_EQ(p.audio_valid, 0);
  EXPECT_EQ(p.audio_size, 55);
  EXPECT_EQ(memcmp(p.legacy_audio, legacy.data(), legacy.size()), 0);
}

}  // namespace

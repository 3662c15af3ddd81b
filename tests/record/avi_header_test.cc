#include "stream/avi_header.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "record_helper.h"

namespace {

// Expected (offset, word) pairs; codes are given as text.
struct Word {
  size_t at;
  uint64_t value;
  const char* code;
};

void ExpectWords(const std::vector<uint8_t>& b, const std::vector<Word>& words) {
  for (const Word& w : words) {
    if (w.code != nullptr) {
      EXPECT_EQ(CodeAt(b, w.at), w.code) << "offset " << w.at;
    } else {
      EXPECT_EQ(WordAt(b, w.at), w.value) << "offset " << w.at;
    }
  }
}

void ExpectZero(const std::vector<uint8_t>& b, size_t from, size_t to_inclusive) {
  for (size_t i = from; i <= to_inclusive; ++i) {
    ASSERT_EQ(b[i], 0) << "offset " << i;
  }
}

uint16_t U16(const std::vector<uint8_t>& b, size_t at) {
  return static_cast<uint16_t>(b[at] | (b[at + 1] << 8));
}

std::vector<uint8_t> VideoImage(int codec, int w, int h, int bit_rate, int rate) {
  std::vector<uint8_t> b(kAviVideoHeaderSize + 16, 0xEE);
  EXPECT_EQ(init_avi_header_video(b.data(), static_cast<int>(b.size()), codec, w, h, bit_rate,
                                  rate),
            kAviVideoHeaderSize);
  EXPECT_EQ(b[kAviVideoHeaderSize], 0xEE);  // nothing written past the image
  b.resize(kAviVideoHeaderSize);
  return b;
}

std::vector<uint8_t> AvImage(int vcodec, int acodec, int w, int h, int bit_rate, int rate,
                             int sample_rate, int bits, int channels) {
  std::vector<uint8_t> b(kAviAvHeaderSize, 0xEE);
  EXPECT_EQ(init_avi_header(b.data(), static_cast<int>(b.size()), vcodec, acodec, w, h, bit_rate,
                            rate, sample_rate, bits, channels),
            kAviAvHeaderSize);
  return b;
}

TEST(AviHeaderVideoOnly, EveryWordOfTheTable) {
  std::vector<uint8_t> b = VideoImage(kAviVideoH264, 1920, 1080, 4000000, 25);
  ExpectWords(b, {{0, 0, "RIFF"},     {8, 5952, nullptr},    {16, 0, "AVI "},
                  {24, 0, "LIST"},    {32, 4584, nullptr},   {40, 0, "hdrl"},
                  {48, 0, "avih"},    {56, 56, nullptr},     {64, 40000, nullptr},
                  {72, 500000, nullptr}, {80, 0, nullptr},   {88, 0x910, nullptr},
                  {96, 0, nullptr},   {104, 0, nullptr},     {112, 1, nullptr},
                  {120, 0x100000, nullptr}, {128, 1920, nullptr}, {136, 1080, nullptr},
                  {176, 0, "LIST"},   {184, 4376, nullptr},  {192, 0, "strl"},
                  {200, 0, "strh"},   {208, 56, nullptr},    {216, 0, "vids"},
                  {224, 0, "H264"},   {232, 0, nullptr},     {240, 0, nullptr},
                  {248, 0, nullptr},  {256, 1, nullptr},     {264, 25, nullptr},
                  {272, 0, nullptr},  {280, 1801, nullptr},  {288, 0x100000, nullptr},
                  {296, 0xFFFFFFFF, nullptr}, {304, 0, nullptr}, {320, 0, "strf"},
                  {328, 40, nullptr}, {336, 40, nullptr},    {344, 1920, nullptr},
                  {352, 1080, nullptr}, {368, 0, "H264"},    {376, 1920ULL * 1080 * 3, nullptr},
                  {416, 0, "JUNK"},   {424, 4116, nullptr},  {432, 4, nullptr},
                  {440, 0, nullptr},  {448, 0, "00dc"},      {4560, 0, "JUNK"},
                  {4568, 260, nullptr}, {4576, 0, "odml"},   {4584, 0, "dmlh"},
                  {4592, 248, nullptr}, {4848, 0, "LIST"},   {4856, 24, nullptr},
                  {4864, 0, "INFO"},  {4872, 0, "ISFT"},     {4880, 11, nullptr},
                  {4904, 0, "JUNK"},  {4912, 1016, nullptr}, {5936, 0, "LIST"},
                  {5944, 0, nullptr}, {5952, 0, "movi"}});
  // Frame rectangle 0, 0, width, height; planes 1 and 24 bits.
  EXPECT_EQ(U16(b, 312), 0);
  EXPECT_EQ(U16(b, 314), 0);
  EXPECT_EQ(U16(b, 316), 1920);
  EXPECT_EQ(U16(b, 318), 1080);
  EXPECT_EQ(U16(b, 360), 1);
  EXPECT_EQ(U16(b, 362), 24);
  EXPECT_EQ(WordAt(b, 360) >> 32, 0u);
  EXPECT_EQ(memcmp(&b[4888], "Lavf52.7.0\0", 11), 0);
  ExpectZero(b, 144, 175);
  ExpectZero(b, 384, 415);
  ExpectZero(b, 456, 4559);
  ExpectZero(b, 4600, 4847);
  ExpectZero(b, 4899, 4903);
  ExpectZero(b, 4920, 5935);
}

TEST(AviHeaderVideoOnly, Mpeg4HandlerAndZeroFrameRate) {
  std::vector<uint8_t> b = VideoImage(kAviVideoMpeg4, 352, 288, 512000, 0);
  EXPECT_EQ(CodeAt(b, 224), "XVID");
  EXPECT_EQ(CodeAt(b, 368), "XVID");
  EXPECT_EQ(WordAt(b, 64), 0u);
  EXPECT_EQ(WordAt(b, 264), 0u);
  EXPECT_EQ(init_avi_header_video(b.data(), kAviVideoHeaderSize - 1, 1, 1, 1, 1, 1), -1);
}

TEST(AviHeaderAudioVideo, AacWordsAndTheDoubledSizes) {
  std::vector<uint8_t> b = AvImage(kAviVideoH264, kAviAudioAac, 1280, 720, 2097152, 30, 44100,
                                   16, 2);
  std::vector<uint8_t> v = VideoImage(kAviVideoH264, 1280, 720, 2097152, 30);
  // Offsets 0..4559 equal the video-only image except these words.
  std::vector<size_t> differ = {8, 32, 56, 112, 208, 328};
  for (size_t at = 0; at < 4560; at += 8) {
    bool listed = std::find(differ.begin(), differ.end(), at) != differ.end();
    if (!listed) {
      ASSERT_EQ(WordAt(b, at), WordAt(v, at)) << "offset " << at;
    }
  }
  ExpectWords(b, {{8, 10288, nullptr},  {32, 10232, nullptr}, {56, 112, nullptr},
                  {112, 2, nullptr},    {208, 104, nullptr},  {328, 80, nullptr},
                  {336, 40, nullptr},   {4560, 0, "LIST"},    {4568, 4328, nullptr},
                  {4576, 0, "strl"},    {4584, 0, "strh"},    {4592, 104, nullptr},
                  {4600, 0, "auds"},    {4608, 0, "MP4A"},    {4616, 0, nullptr},
                  {4624, 0, nullptr},   {4632, 0, nullptr},   {4640, 1, nullptr},
                  {4648, (44100 * 1000 / 2) / 16000, nullptr}, {4656, 0, nullptr},
                  {4664, 480256, nullptr}, {4672, 12288, nullptr}, {4680, 0xFFFFFFFF, nullptr},
                  {4688, 4, nullptr},   {4696, 0, nullptr},   {4704, 0, "strf"},
                  {4712, 32, nullptr},  {4728, 44100, nullptr}, {4736, 4 * 44100, nullptr},
                  {4752, 0, "JUNK"},    {4760, 4116, nullptr}, {4768, 4, nullptr},
                  {4776, 0, nullptr},   {4784, 0, "01wb"},    {8896, 0, "JUNK"},
                  {8904, 260, nullptr}, {8912, 0, "odml"},    {8920, 0, "dmlh"},
                  {8928, 248, nullptr}, {9184, 0, "LIST"},    {9192, 24, nullptr},
                  {9200, 0, "INFO"},    {9208, 0, "ISFT"},    {9216, 11, nullptr},
                  {9240, 0, "JUNK"},    {9248, 1016, nullptr}, {10272, 0, "LIST"},
                  {10280, 0, nullptr},  {10288, 0, "movi"}});
  EXPECT_EQ(U16(b, 4720), 255);
  EXPECT_EQ(U16(b, 4722), 2);
  EXPECT_EQ(U16(b, 4724) | U16(b, 4726), 0);
  EXPECT_EQ(U16(b, 4744), 4);
  EXPECT_EQ(U16(b, 4746), 16);
  EXPECT_EQ(memcmp(&b[9224], "Lavf52.7.0\0", 11), 0);
  ExpectZero(b, 4792, 8895);
  ExpectZero(b, 8936, 9183);
  ExpectZero(b, 9256, 10271);
}

TEST(AviHeaderAudioVideo, G711WordsAndAacWithoutChannels) {
  std::vector<uint8_t> b = AvImage(kAviVideoMpeg4, kAviAudioG711, 704, 576, 2097152, 25, 8000,
                                   16, 1);
  EXPECT_EQ(CodeAt(b, 224), "XVID");
  EXPECT_EQ(WordAt(b, 4608), 1u);
  EXPECT_EQ(WordAt(b, 4648), 8000u);
  EXPECT_EQ(WordAt(b, 4688), 1u);
  EXPECT_EQ(U16(b, 4720), 7);
  EXPECT_EQ(U16(b, 4722), 1);
  EXPECT_EQ(WordAt(b, 4728), 8000u);
  EXPECT_EQ(WordAt(b, 4736), 8000u);
  EXPECT_EQ(U16(b, 4744), 1);
  EXPECT_EQ(U16(b, 4746), 8);  // always 8 for G.711, whatever the stream says

  std::vector<uint8_t> silent = AvImage(kAviVideoH264, kAviAudioAac, 704, 576, 0, 25, 48000, 16,
                                        0);
  EXPECT_EQ(WordAt(silent, 4648), 0u);
}

}  // namespace

#include "stream/frame_probe.h"

#include <gtest/gtest.h>

#include <cmath>

namespace fp = frame_probe;

namespace {

using Bytes = std::vector<uint8_t>;

// ADTS header of an AAC-LC, 8 kHz, mono frame of `length` bytes.
Bytes AdtsFrame(size_t length) {
  Bytes f(length, 0x21);
  const uint8_t head[7] = {0xFF, 0xF1, 0x6C, 0x40, static_cast<uint8_t>(length >> 3),
                           static_cast<uint8_t>(((length & 7) << 5) | 0x1F), 0xFC};
  std::copy(head, head + 7, f.begin());
  return f;
}

// G.711 of a tone, each sample coded to the nearest value of the law.
Bytes Tone(int16_t (*decode)(uint8_t), double amplitude) {
  Bytes out;
  for (int n = 0; n < 4000; ++n) {
    double x = amplitude * sin(2 * M_PI * 300 * n / 8000.0);
    int best = 0;
    for (int c = 1; c < 256; ++c) {
      if (fabs(decode(static_cast<uint8_t>(c)) - x) < fabs(decode(static_cast<uint8_t>(best)) - x)) {
        best = c;
      }
    }
    out.push_back(static_cast<uint8_t>(best));
  }
  return out;
}

TEST(FrameProbe, H264KeyFrames) {
  const Bytes sps = {0x67, 0x42, 0x00, 0x1E, 0x95};
  const Bytes pps = {0x68, 0xCE, 0x3C, 0x80};
  auto au = [](std::initializer_list<Bytes> units) {
    Bytes out;
    for (const Bytes& u : units) {
      out.insert(out.end(), {0, 0, 0, 1});
      out.insert(out.end(), u.begin(), u.end());
    }
    return out;
  };
  const Bytes idr = {0x65, 0x88, 0x80};
  const Bytes i_slice = {0x41, 0x88, 0x80};  // type 1, first_mb 0, slice_type 7 (I)
  const Bytes p_slice = {0x41, 0x9A, 0x80};  // slice_type 5 (P)

  Bytes key = au({sps, pps, idr});
  EXPECT_TRUE(fp::H264IsKeyFrame(key.data(), key.size()));
  Bytes intra = au({sps, pps, i_slice});
  EXPECT_TRUE(fp::H264IsKeyFrame(intra.data(), intra.size()));
  Bytes bare_intra = au({i_slice});  // no parameter sets: cannot start there
  EXPECT_FALSE(fp::H264IsKeyFrame(bare_intra.data(), bare_intra.size()));
  Bytes p = au({sps, pps, p_slice});
  EXPECT_FALSE(fp::H264IsKeyFrame(p.data(), p.size()));
  Bytes short_codes = {0, 0, 1, 0x67, 1, 0, 0, 1, 0x65, 2};  // 3-byte start codes
  EXPECT_TRUE(fp::H264IsKeyFrame(short_codes.data(), short_codes.size()));
}

TEST(FrameProbe, Mpeg4ConfigAndIntraPictures) {
  Bytes f = {0, 0, 1, 0xB0, 1, 0, 0, 1, 0xB5, 9, 0, 0, 1, 0x00, 0, 0, 1, 0x20, 8, 8,
             0, 0, 1, 0xB6, 0x10, 0x55};
  EXPECT_EQ(fp::Mpeg4ConfigLength(f.data(), f.size()), 20u);
  EXPECT_TRUE(fp::Mpeg4IsKeyFrame(f.data(), f.size()));
  Bytes p = {0, 0, 1, 0xB6, 0x50, 0x55};
  EXPECT_EQ(fp::Mpeg4ConfigLength(p.data(), p.size()), 0u);
  EXPECT_FALSE(fp::Mpeg4IsKeyFrame(p.data(), p.size()));
}

TEST(FrameProbe, AacHeadersAndConfigs) {
  fp::Adts h;
  Bytes one = AdtsFrame(20);
  ASSERT_TRUE(fp::ParseAdts(one.data(), one.size(), &h));
  EXPECT_EQ(h.object_type, 2);
  EXPECT_EQ(fp::AacSampleRate(h.sample_rate_index), 8000);
  EXPECT_EQ(h.channel_config, 1);
  EXPECT_EQ(h.header_size, 7u);
  EXPECT_EQ(h.frame_size, 20u);
  Bytes two = one;
  two.insert(two.end(), one.begin(), one.end());
  EXPECT_TRUE(fp::IsAdtsStream(two.data(), two.size()));
  EXPECT_FALSE(fp::IsAdtsStream(two.data(), two.size() - 1));  // second frame cut
  EXPECT_FALSE(fp::ParseAdts(one.data(), 19, &h));
  Bytes blocks = one;
  blocks[6] |= 1;  // two raw data blocks in one frame
  EXPECT_FALSE(fp::ParseAdts(blocks.data(), blocks.size(), &h));
  Bytes raw = {0x21, 0x10, 0x05};
  EXPECT_FALSE(fp::IsAdtsStream(raw.data(), raw.size()));

  EXPECT_EQ(fp::AacConfig(2, 44100, 2), (Bytes{0x12, 0x10}));
  EXPECT_EQ(fp::AacConfig(2, 8000, 1), (Bytes{0x15, 0x88}));
  EXPECT_EQ(fp::AacConfig(2, 7000, 1), (Bytes{0x17, 0x80, 0x0D, 0xAC, 0x08}));  // rate spelt out
  EXPECT_TRUE(fp::AacConfig(2, 8000, 0).empty());
  EXPECT_EQ(fp::AacFrameSamples(Bytes{0x12, 0x10}.data(), 2), 1024);
  EXPECT_EQ(fp::AacFrameSamples(Bytes{0x12, 0x14}.data(), 2), 960);
}

TEST(FrameProbe, G711LawsAndTellingThemApart) {
  EXPECT_EQ(fp::MulawToLinear(0xFF), 0);
  EXPECT_EQ(fp::MulawToLinear(0x80), 32124);
  EXPECT_EQ(fp::MulawToLinear(0x00), -32124);
  EXPECT_EQ(fp::AlawToLinear(0xD5), 8);
  EXPECT_EQ(fp::AlawToLinear(0x55), -8);
  EXPECT_EQ(fp::AlawToLinear(0xAA), 32256);

  for (double amplitude : {800.0, 8000.0, 30000.0}) {
    Bytes alaw = Tone(fp::AlawToLinear, amplitude);
    Bytes mulaw = Tone(fp::MulawToLinear, amplitude);
    EXPECT_TRUE(fp::G711LooksALaw(alaw.data(), alaw.size())) << amplitude;
    EXPECT_FALSE(fp::G711LooksALaw(mulaw.data(), mulaw.size())) << amplitude;
  }
  Bytes silence(4000, 0xD5);
  EXPECT_FALSE(fp::G711LooksALaw(silence.data(), silence.size()));
  Bytes few = Tone(fp::AlawToLinear, 8000);
  EXPECT_FALSE(fp::G711LooksALaw(few.data(), 100));
}

}  // namespace

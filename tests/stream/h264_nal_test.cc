// Key-frame test, Annex-B scanning and the parameter sets that every key
// frame must carry.
#include <gtest/gtest.h>

#include <random>
#include <utility>
#include <vector>

#include "stream/h264_nal.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes Unit(std::initializer_list<uint8_t> body, bool long_start = true) {
  Bytes out = long_start ? Bytes{0, 0, 0, 1} : Bytes{0, 0, 1};
  out.insert(out.end(), body);
  return out;
}

Bytes Cat(std::initializer_list<Bytes> parts) {
  Bytes out;
  for (const Bytes& p : parts) out.insert(out.end(), p.begin(), p.end());
  return out;
}

int Key(const Bytes& b) { return IsH264KeyFrame(b.data(), static_cast<int>(b.size())); }

TEST(IsH264KeyFrame, ParameterSetsAndIdrSlicesAreKeyFrames) {
  EXPECT_EQ(Key(Unit({0x67, 1, 2})), 1);  // SPS
  EXPECT_EQ(Key(Unit({0x68, 1, 2})), 1);  // PPS
  EXPECT_EQ(Key(Unit({0x65, 0x88, 2})), 1);  // IDR
  EXPECT_EQ(Key(Unit({0x06, 0x05, 2})), 0);  // SEI
  EXPECT_EQ(Key(Unit({0x09, 0x10, 2})), 0);  // access unit delimiter
}

TEST(IsH264KeyFrame, NonIdrSlicesCountWhenTheirHeaderMarksIntra) {
  EXPECT_EQ(Key(Unit({0x41, 0xB0, 0})), 1);
  EXPECT_EQ(Key(Unit({0x41, 0xBF, 0})), 1);
  EXPECT_EQ(Key(Unit({0x41, 0x88, 0})), 1);
  EXPECT_EQ(Key(Unit({0x41, 0x4C, 0})), 1);
  EXPECT_EQ(Key(Unit({0x21, 0xEC, 0})), 1);  // (b & 0x4C) == 0x4C
  EXPECT_EQ(Key(Unit({0x41, 0x9A, 0})), 0);
  EXPECT_EQ(Key(Unit({0x41, 0x89, 0})), 0);
  EXPECT_EQ(Key(Unit({0x41, 0x30, 0})), 0);
}

TEST(IsH264KeyFrame, ShortOrUnframedInputIsNot) {
  EXPECT_EQ(Key(Bytes{0, 0, 0, 1, 0x65, 0x88}), 0) << "6 bytes";
  EXPECT_EQ(Key(Unit({0x65, 0x88, 0}, false)), 0) << "3-byte start code";
  EXPECT_EQ(Key(Bytes{1, 0, 0, 1, 0x65, 0x88, 0}), 0);
  EXPECT_EQ(IsH264KeyFrame(nullptr, 100), 0);
}

TEST(AnnexB, SplitsOnThreeAndFourByteStartCodes) {
  Bytes b = Cat({Bytes{0xFF}, Unit({0x67, 1, 0}), Unit({0x68, 2}, false), Unit({0x65, 3, 4})});
  std::vector<NalUnit> units = SplitAnnexB(b.data(), b.size());
  ASSERT_EQ(units.size(), 3u);
  EXPECT_EQ(units[0].type, 7);
  EXPECT_EQ(units[0].size, 2u) << "trailing zero belongs to the next start code";
  EXPECT_EQ(units[1].type, 8);
  EXPECT_EQ(units[2].type, 5);
  EXPECT_EQ(units[2].size, 3u);
  EXPECT_TRUE(SplitAnnexB(b.data(), 3).empty());
}

// The units a plain byte-by-byte walk finds; the scanner must find the same
// in any buffer, however its zeros and ones fall.
std::vector<std::pair<size_t, size_t>> ReferenceUnits(const Bytes& b) {
  std::vector<std::pair<size_t, size_t>> units;  // offset, size
  size_t i = 0, begin = 0;
  bool in_unit = false;
  while (i + 3 <= b.size()) {
    if (b[i] == 0 && b[i + 1] == 0 && b[i + 2] == 1) {
      if (in_unit) {
        size_t end = i;
        while (end > begin && b[end - 1] == 0) --end;
        if (end > begin) units.push_back({begin, end - begin});
      }
      i += 3;
      begin = i;
      in_unit = true;
    } else {
      ++i;
    }
  }
  if (in_unit && b.size() > begin) units.push_back({begin, b.size() - begin});
  return units;
}

TEST(AnnexB, ScannersAgreeWithAPlainWalkOnAnyBytes) {
  std::mt19937 random(7);
  const uint8_t alphabet[] = {0, 0, 0, 1, 0x65, 0x41, 0x67, 0x68, 0xFF};
  for (int round = 0; round < 3000; ++round) {
    Bytes b(random() % 40);
    for (uint8_t& x : b) x = alphabet[random() % sizeof(alphabet)];
    std::vector<std::pair<size_t, size_t>> found;
    for (const NalUnit& u : SplitAnnexB(b.data(), b.size())) {
      found.push_back({static_cast<size_t>(u.data - b.data()), u.size});
      EXPECT_EQ(u.type, u.data[0] & 0x1F);
    }
    ASSERT_EQ(found, ReferenceUnits(b)) << "round " << round;
    // The lead walk sees the same units up to the first slice.
    NalLead want{false, 0};
    for (const NalUnit& u : SplitAnnexB(b.data(), b.size())) {
      if (u.type >= 1 && u.type <= 5) {
        want.slice_type = u.type;
        break;
      }
      want.sets |= u.type == 7 || u.type == 8;
    }
    NalLead lead = ScanToFirstSlice(b.data(), b.size());
    ASSERT_EQ(lead.sets, want.sets) << "round " << round;
    ASSERT_EQ(lead.slice_type, want.slice_type) << "round " << round;
  }
  EXPECT_TRUE(SplitAnnexB(nullptr, 0).empty());
  EXPECT_EQ(ScanToFirstSlice(nullptr, 0).slice_type, 0);
}

TEST(AnnexB, AvcConfigurationRecordsBecomeStartCodedUnits) {
  Bytes avcc = {1, 0x42, 0xC0, 0x1E, 0xFF, 0xE1, 0, 3, 0x67, 0x42, 0x00, 1, 0, 2, 0x68, 0xCE};
  int prefix = 0;
  Bytes out = AvcConfigToAnnexB(avcc.data(), avcc.size(), &prefix);
  EXPECT_EQ(prefix, 4);
  EXPECT_EQ(out, Cat({Unit({0x67, 0x42, 0x00}), Unit({0x68, 0xCE})}));
  // A length running past the end gives nothing.
  Bytes cut(avcc.begin(), avcc.end() - 1);
  EXPECT_TRUE(AvcConfigToAnnexB(cut.data(), cut.size(), &prefix).empty());
  Bytes not_avcc = {0, 0, 0, 1, 0x67, 0, 0};
  EXPECT_TRUE(AvcConfigToAnnexB(not_avcc.data(), not_avcc.size(), &prefix).empty());
}

TEST(AnnexB, LengthPrefixedSamplesAreCheckedAgainstTheirSize) {
  Bytes sample = {0, 0, 0, 2, 0x65, 0x88, 0, 0, 0, 1, 0x41};
  Bytes out;
  ASSERT_TRUE(LengthPrefixedToAnnexB(sample.data(), sample.size(), 4, &out));
  EXPECT_EQ(out, Cat({Unit({0x65, 0x88}), Unit({0x41})}));
  sample[3] = 200;
  EXPECT_FALSE(LengthPrefixedToAnnexB(sample.data(), sample.size(), 4, &out));
  EXPECT_FALSE(LengthPrefixedToAnnexB(sample.data(), 2, 4, &out));
  EXPECT_FALSE(LengthPrefixedToAnnexB(sample.data(), sample.size(), 5, &out));
}

TEST(ParamSets, KeyFramesGetTheLatestSetsAtTheirFront) {
  CH264ParamSets sets;
  Bytes idr = Unit({0x65, 0x88, 0x80});
  Bytes out;
  EXPECT_FALSE(sets.CompleteKeyFrame(idr.data(), idr.size(), &out)) << "nothing known yet";
  Bytes config = Cat({Unit({0x67, 0x42, 1}), Unit({0x68, 0xCE, 1})});
  EXPECT_TRUE(sets.Learn(config.data(), config.size()));
  EXPECT_FALSE(sets.Learn(config.data(), config.size())) << "unchanged";

  ASSERT_TRUE(sets.CompleteKeyFrame(idr.data(), idr.size(), &out));
  EXPECT_EQ(out, Cat({config, idr}));
  EXPECT_EQ(IsH264KeyFrame(out.data(), static_cast<int>(out.size())), 1);

  // A delimiter and in-band sets after it are replaced by the sets in front.
  Bytes in_band = Cat({Unit({0x09, 0x10}), config, Unit({0x06, 5, 1}), idr});
  ASSERT_TRUE(sets.CompleteKeyFrame(in_band.data(), in_band.size(), &out));
  EXPECT_EQ(out, Cat({config, Unit({0x06, 5, 1}), idr}));

  Bytes ready = Cat({config, idr});
  EXPECT_FALSE(sets.CompleteKeyFrame(ready.data(), ready.size(), &out)) << "already in front";
  Bytes p_slice = Unit({0x41, 0x9A, 1});
  EXPECT_FALSE(sets.CompleteKeyFrame(p_slice.data(), p_slice.size(), &out));
  EXPECT_EQ(out, Cat({config, Unit({0x06, 5, 1}), idr})) << "left as it was";

  Bytes new_sps = Unit({0x67, 0x4D, 2});
  EXPECT_TRUE(sets.Learn(new_sps.data(), new_sps.size()));
  ASSERT_TRUE(sets.CompleteKeyFrame(idr.data(), idr.size(), &out));
  EXPECT_EQ(out, Cat({new_sps, Unit({0x68, 0xCE, 1}), idr}));
}

}  // namespace

#include "base/base64.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string Encode(const std::string& in) {
  CBase64 b;
  std::string out(b.GetOutSize(static_cast<int>(in.size()), true) + 1, 'X');
  int n = b.Encode(in.data(), &out[0], static_cast<int>(in.size()));
  EXPECT_EQ(out[n], '\0');
  return out.substr(0, n);
}

std::string Decode(const std::string& in) {
  CBase64 b;
  std::string out(in.size() + 1, 'X');
  int n = b.Decode(in.data(), &out[0], static_cast<int>(in.size()));
  EXPECT_EQ(out[n], '\0');
  return out.substr(0, n);
}

struct Vector {
  const char* plain;
  const char* encoded;
};

// RFC 4648, section 10.
const Vector kVectors[] = {{"", ""},           {"f", "Zg=="},         {"fo", "Zm8="},
                           {"foo", "Zm9v"},    {"foob", "Zm9vYg=="},  {"fooba", "Zm9vYmE="},
                           {"foobar", "Zm9vYmFy"}};

}  // namespace

TEST(Base64, RfcVectorsBothWays) {
  for (const Vector& v : kVectors) {
    EXPECT_EQ(Encode(v.plain), v.encoded) << v.plain;
    EXPECT_EQ(Decode(v.encoded), v.plain) << v.encoded;
  }
}

TEST(Base64, EveryByteValueRoundTrips) {
  std::string all;
  for (int i = 0; i < 256; ++i) all.push_back(static_cast<char>(255 - i));
  for (size_t len = 0; len <= all.size(); len += 37) {
    std::string part = all.substr(0, len);
    EXPECT_EQ(Decode(Encode(part)), part) << len;
  }
  EXPECT_EQ(Encode("\xfb\xff"), "+/8=");
}

TEST(Base64, DecoderSkipsForeignBytesAndStopsAtPadding) {
  EXPECT_EQ(Decode("QQ=="), "A");
  EXPECT_EQ(Decode("Zm9v\r\nYm Fy"), "foobar");            // line breaks and blanks
  EXPECT_EQ(Decode("\x80Zm9v\xffYmFy\xc3"), "foobar");     // high-bit bytes
  EXPECT_EQ(Decode("Zm*9v!Ym-Fy"), "foobar");              // outside the alphabet
  EXPECT_EQ(Decode("QQ==Zm9v"), "A");                      // '=' ends the input
  EXPECT_EQ(Decode("Zg"), "f");                            // padding is optional
  EXPECT_EQ(Decode("Z"), "");                              // six bits make no byte
}

TEST(Base64, DecodeCountsOnlyAcceptedCharacters) {
  CBase64 b;
  char out[16];
  EXPECT_EQ(b.Decode("Q\nQ\n=\n=", out, 7), 1);
  EXPECT_EQ(b.Decode("Zm9vYmE", out, 7), 5);
  EXPECT_EQ(b.Decode("", out, 0), 0);
  EXPECT_EQ(out[0], '\0');
}

TEST(Base64, OutputSizes) {
  CBase64 b;
  const int encode[][2] = {{0, 0}, {1, 4}, {2, 4}, {3, 4}, {4, 8}, {6, 8}, {7, 12}};
  for (auto& e : encode) EXPECT_EQ(b.GetOutSize(e[0], true), e[1]) << e[0];
  const int decode[][2] = {{0, 0}, {3, 0}, {4, 3}, {7, 3}, {8, 6}};
  for (auto& d : decode) EXPECT_EQ(b.GetOutSize(d[0], false), d[1]) << d[0];
  const int accepted[][2] = {{0, 0}, {1, 0}, {2, 1}, {3, 2}, {4, 3}, {6, 4}, {7, 5}, {8, 6}};
  for (auto& a : accepted) EXPECT_EQ(b.GetDecodeOutLen(a[0]), a[1]) << a[0];
}

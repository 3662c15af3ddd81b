// Text conversions between UTF-8, GB2312 and the traditional code column,
// and XML escaping.
#include "config/text_encoding.h"

#include <gtest/gtest.h>
#include <iconv.h>

#include <cstring>
#include <string>

#include "config/gb2312_table.h"

namespace {

// One conversion by the C library; empty when it has no mapping.
std::string Iconv(const char* to, const char* from, const std::string& in) {
  iconv_t cd = iconv_open(to, from);
  if (cd == reinterpret_cast<iconv_t>(-1)) return "";
  char out[16];
  char* inp = const_cast<char*>(in.data());
  size_t inleft = in.size();
  char* outp = out;
  size_t outleft = sizeof(out);
  size_t rc = iconv(cd, &inp, &inleft, &outp, &outleft);
  iconv_close(cd);
  if (rc == static_cast<size_t>(-1) || inleft != 0) return "";
  return std::string(out, sizeof(out) - outleft);
}

std::string Utf8Of(unsigned word) {
  return std::string{static_cast<char>(word >> 16), static_cast<char>(word >> 8),
                     static_cast<char>(word)};
}

std::string CodeOf(unsigned code) {
  return std::string{static_cast<char>(code >> 8), static_cast<char>(code)};
}

TEST(CharacterTable, SampleRowsMatchTheCLibrary) {
  ASSERT_GT(kGb2312TableRows, 0u);
  for (unsigned i = 0; i < kGb2312TableRows; i += 61) {
    const Gb2312Row& row = kGb2312Table[i];
    SCOPED_TRACE(i);
    std::string gb = CodeOf(row.codes & 0xFFFF);
    EXPECT_EQ(Iconv("UTF-8", "GB2312", gb), Utf8Of(row.simplified));
    std::string traditional = Utf8Of(row.traditional);
    std::string big5 = Iconv("BIG5", "UTF-8", traditional);
    std::string expected = !big5.empty() ? big5 : Iconv("GBK", "UTF-8", traditional);
    if (expected.empty()) expected = gb;  // neither encodes it: its own code
    EXPECT_EQ(CodeOf(row.codes >> 16), expected);
  }
}

TEST(CharacterTable, CoversEveryThreeByteGb2312Character) {
  unsigned three_byte = 0;
  for (int hi = 0xA1; hi <= 0xF7; ++hi) {
    for (int lo = 0xA1; lo <= 0xFE; ++lo) {
      std::string code{static_cast<char>(hi), static_cast<char>(lo)};
      std::string utf8 = Iconv("UTF-8", "GB2312", code);
      if (utf8.size() != 3) continue;
      ++three_byte;
      unsigned char out[3];
      unsigned n = 0;
      gb2312_2_utf8(reinterpret_cast<const unsigned char*>(code.data()), out, &n, 0);
      ASSERT_EQ(n, 3u) << std::hex << hi << lo;
      ASSERT_EQ(std::string(reinterpret_cast<char*>(out), 3), utf8);
    }
  }
  EXPECT_EQ(three_byte, kGb2312TableRows);
}

TEST(CharacterConversion, ZhongInBothCodeColumns) {
  const unsigned char zhong[] = {0xE4, 0xB8, 0xAD};
  unsigned char out[2] = {};
  unsigned n = 0;
  utf8_2_gb2312(zhong, out, &n);
  ASSERT_EQ(n, 2u);
  EXPECT_EQ(out[0], 0xD6);
  EXPECT_EQ(out[1], 0xD0);

  char text[200];
  str_utf8_2_gbkbig5("\xE4\xB8\xAD", text);
  EXPECT_STREQ(text, "\xA4\xA4");
  str_utf8_2_gb2312("a\xE4\xB8\xAD" "b", text);
  EXPECT_STREQ(text, "a\xD6\xD0" "b");
  str_gb2312_2_utf8("\xD6\xD0", text, 0);
  EXPECT_STREQ(text, "\xE4\xB8\xAD");
  str_gbkbig5_2_utf8("\xA4\xA4", text, 1);
  EXPECT_STREQ(text, "\xE4\xB8\xAD");
}

TEST(CharacterConversion, TraditionalFormsBothWays) {
  // 发 (GB2312 B7A2) has the traditional form 發 (Big5 B56F).
  char text[200];
  str_gb2312_2_utf8("\xB7\xA2", text, 1);
  EXPECT_STREQ(text, "\xE7\x99\xBC");
  str_gb2312_2_utf8("\xB7\xA2", text, 0);
  EXPECT_STREQ(text, "\xE5\x8F\x91");
  // Either form converts to the GB2312 code and to the Big5 code.
  str_utf8_2_gb2312("\xE7\x99\xBC", text);
  EXPECT_STREQ(text, "\xB7\xA2");
  str_utf8_2_gbkbig5("\xE5\x8F\x91", text);
  EXPECT_STREQ(text, "\xB5\x6F");
}

TEST(CharacterConversion, UnknownCharactersAreDropped) {
  char text[200];
  // Any byte from 0x81 up starts a character taken as three bytes long.
  str_utf8_2_gb2312("a\xF0\x9F\x98\x80" "b", text);  // four-byte emoji
  EXPECT_STREQ(text, "a\x80" "b");  // three bytes dropped, 0x80 copied
  str_utf8_2_gb2312("a\xE2\x82\xAC" "b", text);  // euro sign: not in GB2312
  EXPECT_STREQ(text, "ab");
  str_gb2312_2_utf8("a\xAA\xA1" "b", text, 0);  // row 0xAA is empty
  EXPECT_STREQ(text, "ab");
  str_gb2312_2_utf8("a\xFF\xFF" "b", text, 0);  // invalid GB2312 bytes
  EXPECT_STREQ(text, "ab");
  unsigned char out[3];
  unsigned n = 7;
  gb2312_2_utf8(reinterpret_cast<const unsigned char*>("\x81\x40"), out, &n, 0);
  EXPECT_EQ(n, 0u);
}

TEST(CharacterConversion, CutCharacterAtTheEndStops) {
  char text[200];
  str_utf8_2_gb2312("ab\xE4\xB8", text);
  EXPECT_STREQ(text, "ab");
  str_gb2312_2_utf8("ab\xD6", text, 0);
  EXPECT_STREQ(text, "ab");
}

TEST(CharacterConversion, OutputLimits) {
  char out[200];
  std::string ascii(300, 'x');
  str_utf8_2_gb2312(ascii.c_str(), out);
  EXPECT_EQ(std::string(out), std::string(199, 'x'));
  str_gb2312_2_utf8(ascii.c_str(), out, 0);
  EXPECT_EQ(std::string(out), std::string(199, 'x'));

  // 100 characters of two bytes: 99 fit below 198 bytes out.
  std::string zhong;
  for (int i = 0; i < 100; ++i) zhong += "\xE4\xB8\xAD";
  str_utf8_2_gb2312(zhong.c_str(), out);
  EXPECT_EQ(strlen(out), 198u);
  // After 198 bytes one single byte still fits.
  str_utf8_2_gb2312((zhong + "z").c_str(), out);
  EXPECT_EQ(strlen(out), 199u);
  EXPECT_EQ(out[198], 'z');

  // GB2312 to UTF-8: characters only while fewer than 197 bytes are out.
  std::string gb;
  for (int i = 0; i < 100; ++i) gb += "\xD6\xD0";
  str_gb2312_2_utf8(gb.c_str(), out, 0);
  EXPECT_EQ(strlen(out), 198u);  // 66 characters
  str_gb2312_2_utf8(("ab" + gb).c_str(), out, 0);
  EXPECT_EQ(strlen(out), 197u);  // 2 + 65 characters: 197 is not below 197
}

TEST(CharacterConversion, NullArguments) {
  char out[200] = "unchanged";
  str_utf8_2_gb2312(nullptr, out);
  EXPECT_STREQ(out, "");
  str_gb2312_2_utf8(nullptr, out, 0);
  EXPECT_STREQ(out, "");
  str_utf8_2_gb2312("x", nullptr);  // does nothing
  str_gb2312_2_utf8("x", nullptr, 1);
}

TEST(XmlEscape, AllFiveCharactersAndOthersUntouched) {
  char out[64];
  EXPECT_EQ(copy_with_escape(out, "a\"b&c'd<e>f\xD6\xD0"), out);
  EXPECT_STREQ(out, "a&quot;b&amp;c&apos;d&lt;e&gt;f\xD6\xD0");
  copy_with_escape(out, nullptr);
  EXPECT_STREQ(out, "");
  copy_with_escape(out, "");
  EXPECT_STREQ(out, "");
  char worst[6 * 5 + 1];
  copy_with_escape(worst, "&&&&&");
  EXPECT_STREQ(worst, "&amp;&amp;&amp;&amp;&amp;");
}

}  // namespace

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

// A UTF-8 lookup takes the first row holding the character in either
// column: a table in which a character is the traditional form of an
// earlier row would turn it into that row's code.
TEST(CharacterTable, EverySimplifiedCharacterFindsItsOwnCode) {
  for (unsigned i = 0; i < kGb2312TableRows; ++i) {
    const Gb2312Row& row = kGb2312Table[i];
    const unsigned char in[3] = {static_cast<unsigned char>(row.simplified >> 16),
                                 static_cast<unsigned char>(row.simplified >> 8),
                                 static_cast<unsigned char>(row.simplified)};
    unsigned char out[2] = {};
    unsigned n = 0;
    utf8_2_gb2312(in, out, &n);
    ASSERT_EQ(n, 2u) << i;
    ASSERT_EQ((unsigned(out[0]) << 8) | out[1], row.codes & 0xFFFF) << i;
  }
}

TEST(CharacterConversion, BothCodeColumnsUnknownAndCutCharacters) {
  using Convert = void (*)(const char*, char*);
  Convert to_gb = str_utf8_2_gb2312, to_big5 = str_utf8_2_gbkbig5;
  Convert gb = [](const char* in, char* out) { str_gb2312_2_utf8(in, out, 0); };
  Convert gb_trad = [](const char* in, char* out) { str_gb2312_2_utf8(in, out, 1); };
  Convert big5_trad = [](const char* in, char* out) { str_gbkbig5_2_utf8(in, out, 1); };
  const struct {
    Convert convert;
    const char* in;  // null: no text
    const char* out;
  } cases[] = {
      {to_gb, "a\xE4\xB8\xAD" "b", "a\xD6\xD0" "b"},  // 中
      {to_big5, "\xE4\xB8\xAD", "\xA4\xA4"},
      {gb, "\xD6\xD0", "\xE4\xB8\xAD"},
      {big5_trad, "\xA4\xA4", "\xE4\xB8\xAD"},
      // 发 (GB2312 B7A2) has the traditional form 發 (Big5 B56F); either
      // form converts to both codes.
      {gb_trad, "\xB7\xA2", "\xE7\x99\xBC"},
      {gb, "\xB7\xA2", "\xE5\x8F\x91"},
      {to_gb, "\xE7\x99\xBC", "\xB7\xA2"},
      {to_big5, "\xE5\x8F\x91", "\xB5\x6F"},
      // Any byte from 0x81 up starts a character taken as three bytes long:
      // of a four-byte emoji three bytes are dropped and 0x80 is copied.
      {to_gb, "a\xF0\x9F\x98\x80" "b", "a\x80" "b"},
      {to_gb, "a\xE2\x82\xAC" "b", "ab"},  // euro sign: not in GB2312
      {gb, "a\xAA\xA1" "b", "ab"},          // row 0xAA is empty
      {gb, "a\xFF\xFF" "b", "ab"},          // invalid GB2312 bytes
      {to_gb, "ab\xE4\xB8", "ab"},          // cut at the end
      {gb, "ab\xD6", "ab"},
      {to_gb, nullptr, ""},
      {gb, nullptr, ""},
  };
  for (const auto& c : cases) {
    char out[200] = "unchanged";
    c.convert(c.in, out);
    EXPECT_STREQ(out, c.out) << (c.in ? c.in : "(null)");
  }
  str_utf8_2_gb2312("x", nullptr);  // does nothing
  str_gb2312_2_utf8("x", nullptr, 1);
  unsigned char out[2] = {};
  unsigned n = 7;
  utf8_2_gb2312(reinterpret_cast<const unsigned char*>("\xE4\xB8\xAD"), out, &n);
  EXPECT_EQ(n, 2u);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(out), 2), "\xD6\xD0");
  unsigned char utf8[3];
  gb2312_2_utf8(reinterpret_cast<const unsigned char*>("\x81\x40"), utf8, &n, 0);
  EXPECT_EQ(n, 0u);
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

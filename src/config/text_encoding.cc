#include "config/text_encoding.h"

#include <cstdio>

#include "config/gb2312_table.h"

namespace {

// Longest converted text, terminator excluded.
const unsigned kOutMax = 199;

enum Column { kSimplified, kTraditional };

unsigned Utf8Word(const unsigned char* in) {
  return (unsigned(in[0]) << 16) | (unsigned(in[1]) << 8) | in[2];
}

const Gb2312Row* FindUtf8(const unsigned char* in) {
  unsigned word = Utf8Word(in);
  for (unsigned i = 0; i < kGb2312TableRows; ++i) {
    const Gb2312Row& row = kGb2312Table[i];
    if (row.simplified == word || row.traditional == word) return &row;
  }
  return nullptr;
}

const Gb2312Row* FindCode(const unsigned char* in, bool high) {
  unsigned code = (unsigned(in[0]) << 8) | in[1];
  for (unsigned i = 0; i < kGb2312TableRows; ++i) {
    unsigned codes = kGb2312Table[i].codes;
    if ((high ? codes >> 16 : codes & 0xFFFF) == code) return &kGb2312Table[i];
  }
  return nullptr;
}

void Utf8ToCode(const unsigned char* in, unsigned char out[2], unsigned* n,
                bool high) {
  const Gb2312Row* row = FindUtf8(in);
  if (!row) {
    *n = 0;
    return;
  }
  unsigned code = high ? row->codes >> 16 : row->codes & 0xFFFF;
  out[0] = static_cast<unsigned char>(code >> 8);
  out[1] = static_cast<unsigned char>(code);
  *n = 2;
}

void CodeToUtf8(const unsigned char* in, unsigned char out[3], unsigned* n,
                unsigned traditional, bool high) {
  const Gb2312Row* row = FindCode(in, high);
  if (!row) {
    *n = 0;
    return;
  }
  unsigned word = traditional ? row->traditional : row->simplified;
  out[0] = static_cast<unsigned char>(word >> 16);
  out[1] = static_cast<unsigned char>(word >> 8);
  out[2] = static_cast<unsigned char>(word);
  *n = 3;
}

// Walks a whole text: bytes below 0x81 are copied, any other byte starts a
// character of `in_len` bytes that `convert` turns into `out_len` bytes (or
// drops). A piece is written only while the output stays within kOutMax.
template <typename Convert>
void ConvertText(const char* in, char* out, unsigned in_len, unsigned out_len,
                 Convert convert) {
  if (!out) return;
  unsigned len = 0;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(in);
  while (p && *p) {
    if (*p < 0x81) {
      if (len < kOutMax) out[len++] = static_cast<char>(*p);
      ++p;
      continue;
    }
    for (unsigned i = 1; i < in_len; ++i)
      if (!p[i]) {  // a cut character at the end of the text
        out[len] = 0;
        return;
      }
    unsigned char piece[3];
    unsigned n = 0;
    convert(p, piece, &n);
    if (n == out_len && len + out_len <= kOutMax) {
      for (unsigned i = 0; i < n; ++i) out[len++] = static_cast<char>(piece[i]);
    }
    p += in_len;
  }
  out[len] = 0;
}

void StrUtf8ToCode(const char* in, char* out, bool high) {
  ConvertText(in, out, 3, 2, [high](const unsigned char* p, unsigned char* o,
                                    unsigned* n) { Utf8ToCode(p, o, n, high); });
}

void StrCodeToUtf8(const char* in, char* out, unsigned traditional, bool high) {
  ConvertText(in, out, 2, 3,
              [traditional, high](const unsigned char* p, unsigned char* o,
                                  unsigned* n) {
                CodeToUtf8(p, o, n, traditional, high);
              });
}

}  // namespace

void utf8_2_gb2312(const unsigned char* in, unsigned char out[2],
                   unsigned int* n) {
  Utf8ToCode(in, out, n, false);
}

void utf8_2_gbkbig5(const unsigned char* in, unsigned char out[2],
                    unsigned int* n) {
  Utf8ToCode(in, out, n, true);
}

void gb2312_2_utf8(const unsigned char* in, unsigned char out[3],
                   unsigned int* n, unsigned int traditional) {
  CodeToUtf8(in, out, n, traditional, false);
}

void gbkbig5_2_utf8(const unsigned char* in, unsigned char out[3],
                    unsigned int* n, unsigned int traditional) {
  CodeToUtf8(in, out, n, traditional, true);
}

void str_utf8_2_gb2312(const char* in, char* out) {
  StrUtf8ToCode(in, out, false);
}

void str_utf8_2_gbkbig5(const char* in, char* out) {
  StrUtf8ToCode(in, out, true);
}

void str_gb2312_2_utf8(const char* in, char* out, unsigned int traditional) {
  StrCodeToUtf8(in, out, traditional, false);
}

void str_gbkbig5_2_utf8(const char* in, char* out, unsigned int traditional) {
  StrCodeToUtf8(in, out, traditional, true);
}

char* copy_with_escape(char* dst, const char* src) {
  char* d = dst;
  for (const char* s = src; s && *s; ++s) {
    const char* entity = nullptr;
    switch (*s) {
      case '"': entity = "&quot;"; break;
      case '&': entity = "&amp;"; break;
      case '\'': entity = "&apos;"; break;
      case '<': entity = "&lt;"; break;
      case '>': entity = "&gt;"; break;
      default: *d++ = *s; continue;
    }
    while (*entity) *d++ = *entity++;
  }
  *d = 0;
  return dst;
}

void show_utf8_table() {
  for (unsigned i = 0; i < kGb2312TableRows; ++i) {
    const Gb2312Row& r = kGb2312Table[i];
    printf("%5u: %06X %06X %04X %04X\n", i, r.simplified, r.traditional,
           r.codes & 0xFFFF, r.codes >> 16);
  }
}

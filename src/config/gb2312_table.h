// The character table of the text conversions: one row per GB2312 character
// whose UTF-8 form is three bytes. Generated data (gb2312_table.cc, made by
// scripts/gen-gb2312-table): rows with a Big5 code first, then the
// others, each group in GB2312 code order.
#pragma once

struct Gb2312Row {
  unsigned int simplified;   // UTF-8 bytes packed big-endian, e.g. 0xE4B8AD
  unsigned int traditional;  // the same for the traditional form
  unsigned int codes;        // low 16: GB2312 code, high 16: Big5 (or GBK) code
};

extern const Gb2312Row kGb2312Table[];
extern const unsigned int kGb2312TableRows;

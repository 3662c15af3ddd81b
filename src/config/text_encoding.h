// Conversion of Chinese characters between UTF-8 and two double-byte
// encodings (GB2312, and the traditional-character code column: Big5, or GBK
// where Big5 has none) through one fixed table, and XML escaping.
//
// Only three-byte UTF-8 characters are recognised. The whole-text functions
// write at most 199 bytes and a terminator: the output buffer holds 200.
#pragma once

// Looks the three bytes `in` up (simplified column first, then the
// traditional one). Found: out = the GB2312 code, high byte first, *n = 2.
// Not found: *n = 0.
void utf8_2_gb2312(const unsigned char* in, unsigned char out[2],
                   unsigned int* n);
// The same, writing the traditional-form code.
void utf8_2_gbkbig5(const unsigned char* in, unsigned char out[2],
                    unsigned int* n);

// Looks the two bytes `in` up as a GB2312 code. Found: out = the simplified
// UTF-8 (the traditional form when `traditional` is non-zero), *n = 3.
// Not found: *n = 0.
void gb2312_2_utf8(const unsigned char* in, unsigned char out[3],
                   unsigned int* n, unsigned int traditional);
// The same, looking `in` up as a traditional-form code.
void gbkbig5_2_utf8(const unsigned char* in, unsigned char out[3],
                    unsigned int* n, unsigned int traditional);

// Whole texts, UTF-8 to double-byte: bytes below 0x81 are copied; any other
// byte starts a three-byte character that becomes its two-byte code or is
// dropped when the table lacks it. A null `in` gives "", a null `out` does
// nothing.
void str_utf8_2_gb2312(const char* in, char* out);
void str_utf8_2_gbkbig5(const char* in, char* out);

// Whole texts, double-byte to UTF-8: bytes below 0x81 are copied; any other
// byte starts a two-byte code that becomes three UTF-8 bytes or is dropped.
void str_gb2312_2_utf8(const char* in, char* out, unsigned int traditional);
void str_gbkbig5_2_utf8(const char* in, char* out, unsigned int traditional);

// Copies src into dst replacing " & ' < > by their XML entities. dst must
// hold six bytes per byte of src plus one. Null or empty src gives "".
// Returns dst.
char* copy_with_escape(char* dst, const char* src);

// Prints every row of the table to standard output.
void show_utf8_table();

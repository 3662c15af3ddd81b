// Base64 with the RFC 4648 alphabet and no line breaks.
#pragma once

class CBase64 {
 public:
  // Encodes len bytes; writes a terminating zero (not counted). Returns the
  // number of characters written.
  int Encode(const void* in, void* out, int len);
  // Decodes len characters, skipping bytes with the high bit set and bytes
  // outside the alphabet, stopping at '='. Writes a terminating zero.
  // Returns the number of bytes produced; out needs len * 3 / 4 + 1 bytes.
  int Decode(const void* in, void* out, int len);
  // encode: len / 3 * 4 (+4 for a partial group); decode: len / 4 * 3.
  // The terminating zero is not counted.
  int GetOutSize(int len, bool encode);
  // Bytes decoded from n accepted characters.
  int GetDecodeOutLen(int n);
};

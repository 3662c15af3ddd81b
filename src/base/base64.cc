#include "base/base64.h"

namespace {

const char kAlphabet[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

struct ReverseTable {
  unsigned char v[256];
  ReverseTable() {
    for (int i = 0; i < 256; ++i) v[i] = 255;
    for (int i = 0; i < 64; ++i) v[static_cast<unsigned char>(kAlphabet[i])] = static_cast<unsigned char>(i);
  }
};

const ReverseTable kReverse;

}  // namespace

int CBase64::Encode(const void* in, void* out, int len) {
  const unsigned char* src = static_cast<const unsigned char*>(in);
  char* dst = static_cast<char*>(out);
  int n = 0;
  int i = 0;
  for (; i + 2 < len; i += 3) {
    unsigned v = (src[i] << 16) | (src[i + 1] << 8) | src[i + 2];
    dst[n++] = kAlphabet[(v >> 18) & 63];
    dst[n++] = kAlphabet[(v >> 12) & 63];
    dst[n++] = kAlphabet[(v >> 6) & 63];
    dst[n++] = kAlphabet[v & 63];
  }
  int rest = len - i;
  if (rest == 1) {
    unsigned v = src[i] << 16;
    dst[n++] = kAlphabet[(v >> 18) & 63];
    dst[n++] = kAlphabet[(v >> 12) & 63];
    dst[n++] = '=';
    dst[n++] = '=';
  } else if (rest == 2) {
    unsigned v = (src[i] << 16) | (src[i + 1] << 8);
    dst[n++] = kAlphabet[(v >> 18) & 63];
    dst[n++] = kAlphabet[(v >> 12) & 63];
    dst[n++] = kAlphabet[(v >> 6) & 63];
    dst[n++] = '=';
  }
  dst[n] = '\0';
  return n;
}

int CBase64::Decode(const void* in, void* out, int len) {
  const unsigned char* src = static_cast<const unsigned char*>(in);
  unsigned char* dst = static_cast<unsigned char*>(out);
  int accepted = 0;
  int n = 0;
  unsigned bits = 0;
  int nbits = 0;
  for (int i = 0; i < len; ++i) {
    unsigned char c = src[i];
    if (c & 0x80) continue;
    if (c == '=') break;
    unsigned char v = kReverse.v[c];
    if (v == 255) continue;
    ++accepted;
    bits = (bits << 6) | v;
    nbits += 6;
    if (nbits >= 8) {
      nbits -= 8;
      dst[n++] = static_cast<unsigned char>((bits >> nbits) & 0xFF);
    }
  }
  dst[n] = '\0';
  return GetDecodeOutLen(accepted);
}

int CBase64::GetOutSize(int len, bool encode) {
  if (encode) return len / 3 * 4 + (len % 3 != 0 ? 4 : 0);
  return len / 4 * 3;
}

int CBase64::GetDecodeOutLen(int n) { return n / 4 * 3 + (n % 4) * 6 / 8; }

// Base64 text as a camera or a configuration file may carry it: decoded
// into a buffer of the size the decoder asks for, then encoded back.
#include <cstdlib>
#include <vector>

#include "base/base64.h"
#include "fuzz_target.h"

QV_FUZZ_TARGET(base64) {
  CBase64 codec;
  int len = static_cast<int>(size);
  std::vector<char> decoded(static_cast<size_t>(len) * 3 / 4 + 1);
  int n = codec.Decode(data, decoded.data(), len);
  if (n < 0 || n > len * 3 / 4) abort();
  std::vector<char> encoded(static_cast<size_t>(codec.GetOutSize(n, true)) + 1);
  codec.Encode(decoded.data(), encoded.data(), n);
  return 0;
}

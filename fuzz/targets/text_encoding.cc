// Text in the camera's double-byte encodings and in UTF-8, converted both
// ways as whole texts (into the 200-byte buffers the conversions write) and
// character by character, then escaped for XML.
#include <string>
#include <vector>

#include "config/text_encoding.h"
#include "fuzz_target.h"

QV_FUZZ_TARGET(text_encoding) {
  std::string text = qvfuzz::Text(data, size);
  unsigned traditional = size > 0 ? data[0] & 1 : 0;
  char out[200];
  str_utf8_2_gb2312(text.c_str(), out);
  str_utf8_2_gbkbig5(text.c_str(), out);
  str_gb2312_2_utf8(text.c_str(), out, traditional);
  str_gbkbig5_2_utf8(text.c_str(), out, traditional);
  for (size_t i = 0; i + 3 <= size; i += 3) {
    unsigned char two[2], three[3];
    unsigned n = 0;
    utf8_2_gb2312(data + i, two, &n);
    utf8_2_gbkbig5(data + i, two, &n);
    gb2312_2_utf8(data + i, three, &n, traditional);
    gbkbig5_2_utf8(data + i, three, &n, traditional);
  }
  std::vector<char> escaped(text.size() * 6 + 1);
  copy_with_escape(escaped.data(), text.c_str());
  return 0;
}

#include "config/xml_writer.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "config/text_encoding.h"

namespace qvconfig {

XmlWriter::XmlWriter(size_t initial) : cap_(initial < 16 ? 16 : initial) {
  buf_ = static_cast<char*>(malloc(cap_));
  if (buf_) buf_[0] = 0;
}

XmlWriter::~XmlWriter() { free(buf_); }

void XmlWriter::Fail() {
  free(buf_);
  buf_ = nullptr;
  len_ = 0;
}

bool XmlWriter::Reserve(size_t more) {
  if (!buf_) return false;
  if (len_ + more + 1 <= cap_) return true;
  if (len_ + more + 1 > kMaxText) {
    Fail();
    return false;
  }
  size_t cap = cap_;
  while (cap < len_ + more + 1) cap *= 2;
  if (cap > kMaxText) cap = kMaxText;
  char* grown = static_cast<char*>(realloc(buf_, cap));
  if (!grown) {
    Fail();
    return false;
  }
  buf_ = grown;
  cap_ = cap;
  return true;
}

void XmlWriter::Append(const char* fmt, ...) {
  if (!buf_) return;
  va_list args;
  va_start(args, fmt);
  int n = vsnprintf(buf_ + len_, cap_ - len_, fmt, args);
  va_end(args);
  if (n < 0) {
    buf_[len_] = 0;
    return;
  }
  if (len_ + n + 1 > cap_) {
    if (!Reserve(static_cast<size_t>(n))) return;
    va_start(args, fmt);
    vsnprintf(buf_ + len_, cap_ - len_, fmt, args);
    va_end(args);
  }
  len_ += static_cast<size_t>(n);
}

void XmlWriter::AppendBytes(const char* bytes, size_t n) {
  if (!Reserve(n)) return;
  memcpy(buf_ + len_, bytes, n);
  len_ += n;
  buf_[len_] = 0;
}

void XmlWriter::AppendTextAttr(const char* name, const char* value,
                               size_t size, bool escape, const char* sep) {
  std::string raw(value ? value : "", value ? strnlen(value, size) : 0);
  if (!escape) {
    Append("%s=\"%s\"%s", name, raw.c_str(), sep);
    return;
  }
  std::string escaped(raw.size() * 6 + 1, '\0');
  copy_with_escape(&escaped[0], raw.c_str());
  Append("%s=\"%s\"%s", name, escaped.c_str(), sep);
}

char* XmlWriter::Release() {
  char* text = buf_;
  buf_ = nullptr;
  len_ = 0;
  return text;
}

}  // namespace qvconfig

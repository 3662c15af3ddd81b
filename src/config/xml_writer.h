// Builds the XML text of a section in a malloc'd buffer that the caller of
// the XMLGET_ writers releases with free(). The buffer starts at 1000 bytes
// and grows as pieces are appended, so nothing is ever cut; each piece is
// formatted with a bounded formatter. Past kMaxText, or when memory runs
// out, the writer fails and Release() gives null.
#pragma once

#include <cstddef>

#include "base/debug_log.h"  // QV_PRINTF

namespace qvconfig {

class XmlWriter {
 public:
  static const size_t kMaxText = 16 * 1024 * 1024;

  explicit XmlWriter(size_t initial = 1000);
  ~XmlWriter();
  XmlWriter(const XmlWriter&) = delete;
  XmlWriter& operator=(const XmlWriter&) = delete;

  void Append(const char* fmt, ...) QV_PRINTF(2, 3);
  void AppendBytes(const char* bytes, size_t n);
  // name="value"<sep>, the value being at most `size` bytes of `value`
  // (which need not be terminated within them), escaped when `escape`.
  void AppendTextAttr(const char* name, const char* value, size_t size,
                      bool escape, const char* sep);

  bool ok() const { return buf_ != nullptr; }
  const char* data() const { return buf_ ? buf_ : ""; }
  size_t size() const { return len_; }

  // Hands the terminated text over (null after a failure).
  char* Release();

 private:
  bool Reserve(size_t more);
  void Fail();

  char* buf_;
  size_t len_ = 0;
  size_t cap_;
};

}  // namespace qvconfig

#include "config/section_spans.h"

#include <cstring>

namespace qvconfig {

namespace {

bool StartsWith(const char* text, size_t length, size_t at, const char* s) {
  size_t n = strlen(s);
  return at + n <= length && memcmp(text + at, s, n) == 0;
}

// Offset just past the next `close` from `at`, or npos.
size_t SkipPast(const char* text, size_t length, size_t at, const char* close) {
  size_t n = strlen(close);
  for (size_t i = at; i + n <= length; ++i)
    if (memcmp(text + i, close, n) == 0) return i + n;
  return std::string::npos;
}

bool IsNameChar(char c) {
  return c && !strchr(" \t\r\n/>=\"'<", c);
}

// A tag from its '<': name, whether it is an end tag or self-closing, and
// the offset past its '>' (npos when unterminated).
struct Tag {
  std::string name;
  bool end = false;
  bool empty = false;
  size_t next = std::string::npos;
};

Tag ReadTag(const char* text, size_t length, size_t at) {
  Tag tag;
  size_t i = at + 1;
  if (i < length && text[i] == '/') {
    tag.end = true;
    ++i;
  }
  size_t name_at = i;
  while (i < length && IsNameChar(text[i])) ++i;
  tag.name.assign(text + name_at, i - name_at);
  char quote = 0;
  for (; i < length; ++i) {
    char c = text[i];
    if (quote) {
      if (c == quote) quote = 0;
    } else if (c == '"' || c == '\'') {
      quote = c;
    } else if (c == '>') {
      tag.empty = !tag.end && text[i - 1] == '/';
      tag.next = i + 1;
      break;
    }
  }
  return tag;
}

}  // namespace

std::vector<ElementSpan> ScanChildSpans(const char* text, size_t length,
                                        const char* root) {
  std::vector<ElementSpan> spans;
  size_t depth = 0;       // open elements
  size_t root_depth = 0;  // depth outside the root, once found
  bool in_root = false;
  size_t child_begin = 0;
  std::string child_name;
  size_t i = 0;
  while (i < length) {
    if (text[i] != '<') {
      const void* lt = memchr(text + i, '<', length - i);
      if (!lt) break;
      i = static_cast<size_t>(static_cast<const char*>(lt) - text);
      continue;
    }
    size_t next;
    if (StartsWith(text, length, i, "<!--")) {
      next = SkipPast(text, length, i + 4, "-->");
    } else if (StartsWith(text, length, i, "<![CDATA[")) {
      next = SkipPast(text, length, i + 9, "]]>");
    } else if (StartsWith(text, length, i, "<?")) {
      next = SkipPast(text, length, i + 2, "?>");
    } else if (StartsWith(text, length, i, "<!")) {
      next = SkipPast(text, length, i + 2, ">");
    } else {
      Tag tag = ReadTag(text, length, i);
      next = tag.next;
      if (next == std::string::npos) break;
      if (tag.end) {
        if (depth == 0) break;
        --depth;
        if (in_root && depth == root_depth) break;  // the root closed
        if (in_root && depth == root_depth + 1)
          spans.push_back({child_name, child_begin, next});
      } else {
        if (in_root && depth == root_depth + 1) {
          if (tag.empty) {
            spans.push_back({tag.name, i, next});
          } else {
            child_name = tag.name;
            child_begin = i;
          }
        }
        if (!in_root && tag.name == root) {
          if (tag.empty) break;
          in_root = true;
          root_depth = depth;
        }
        if (!tag.empty) ++depth;
      }
    }
    if (next == std::string::npos) break;
    i = next;
  }
  return spans;
}

}  // namespace qvconfig

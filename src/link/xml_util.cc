#include "link/xml_util.h"

#include <cstdlib>
#include <cstring>

#include "base/debug_log.h"

namespace {

// Counts element nesting without parsing: "<name" opens, "</" and "/>"
// close. Comments and declarations are not elements. Conservative enough to
// bound the parser's recursion.
bool NestingWithin(const char* text, int limit) {
  int depth = 0;
  for (const char* p = text; *p != '\0'; ++p) {
    if (p[0] == '<') {
      if (p[1] == '/') {
        if (depth > 0) --depth;
      } else if (p[1] != '?' && p[1] != '!') {
        if (++depth > limit) return false;
      }
    } else if (p[0] == '/' && p[1] == '>') {
      if (depth > 0) --depth;
    }
  }
  return true;
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return 0;
}

}  // namespace

bool ParseXml(TiXmlDocument& doc, const char* text) {
  if (text == nullptr) return false;
  if (!NestingWithin(text, kMaxXmlDepth)) {
    doc.SetError(TiXmlBase::TIXML_ERROR, nullptr, nullptr, TIXML_ENCODING_LEGACY);
    return false;
  }
  doc.Parse(text, nullptr, TIXML_ENCODING_LEGACY);
  return !doc.Error();
}

const char* GetAttribValue(const TiXmlNode* node, const char* name) {
  if (node == nullptr || name == nullptr) return nullptr;
  const TiXmlElement* element = node->ToElement();
  return element != nullptr ? element->Attribute(name) : nullptr;
}

TiXmlNode* SelectNode(TiXmlNode* node, const char* name) {
  if (node == nullptr || name == nullptr) return nullptr;
  return node->FirstChild(name);
}

int CopyFragment(const char* message, const char* open, const char* close, char** out,
                 bool quiet_open) {
  *out = nullptr;
  const char* begin = message != nullptr ? strstr(message, open) : nullptr;
  if (begin == nullptr) {
    if (!quiet_open) QV_LOG("[%s:%d]Not found header.\n\n");
    return -1;
  }
  const char* end = strstr(begin + strlen(open), close);
  if (end == nullptr) {
    QV_LOG("[%s:%d]Not found tail.\n\n");
    return -1;
  }
  end += strlen(close);
  size_t span = static_cast<size_t>(end - begin);
  char* copy = static_cast<char*>(malloc(span + 1));
  if (copy == nullptr) {
    QV_LOG("[%s:%d]malloc %d failed.\n\n", static_cast<int>(span + 1));
    return -1;
  }
  memcpy(copy, begin, span);
  copy[span] = '\0';
  *out = copy;
  return 0;
}

void CopyText(char* dst, size_t cap, const char* src) {
  if (src == nullptr) src = "";
  size_t n = strlen(src);
  if (n >= cap) n = cap - 1;
  memcpy(dst, src, n);
  dst[n] = '\0';
}

size_t DecodeHex(const char* text, unsigned char* out, size_t cap) {
  if (text == nullptr) return 0;
  size_t n = 0;
  for (const char* p = text; p[0] != '\0' && p[1] != '\0' && n < cap; p += 2) {
    out[n++] = static_cast<unsigned char>(HexDigit(p[0]) * 16 + HexDigit(p[1]));
  }
  return n;
}

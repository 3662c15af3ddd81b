#include "config/config_xml.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "config/xml_tail.h"

namespace qvconfig {
namespace {

// Every byte from 0x80 up becomes a two-byte UTF-8 sequence of the same
// code point, so that the strict parser takes any byte string.
std::string Widen(const char* text, size_t length) {
  std::string out;
  out.reserve(length + length / 4);
  for (size_t i = 0; i < length; ++i) {
    unsigned char c = static_cast<unsigned char>(text[i]);
    if (c < 0x80) {
      out.push_back(static_cast<char>(c));
    } else {
      out.push_back(static_cast<char>(0xC0 | (c >> 6)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
  }
  return out;
}

// Reads one byte of a parser value back; returns the bytes consumed.
size_t Narrow(const unsigned char* p, char* out) {
  if ((p[0] == 0xC2 || p[0] == 0xC3) && (p[1] & 0xC0) == 0x80) {
    *out = static_cast<char>(((p[0] & 0x03) << 6) | (p[1] & 0x3F));
    return 2;
  }
  *out = static_cast<char>(p[0]);
  return 1;
}

}  // namespace

ConfigXml::~ConfigXml() {
  if (doc_) ixmlDocument_free(doc_);
}

bool ConfigXml::Parse(const char* text) {
  return text && Parse(text, strlen(text));
}

bool ConfigXml::Parse(const char* text, size_t length) {
  if (doc_) {
    ixmlDocument_free(doc_);
    doc_ = nullptr;
  }
  if (!text) return false;
  // The parser stops at a zero byte; so does the text it is given.
  length = strnlen(text, length);
  std::string wide = Widen(text, length);
  if (HasTextAfterRoot(wide)) return false;
  doc_ = ixmlParseBuffer(wide.c_str());
  return doc_ != nullptr;
}

IXML_Node* ConfigXml::First(const char* tag) const {
  if (!doc_) return nullptr;
  IXML_NodeList* list = ixmlDocument_getElementsByTagName(doc_, tag);
  if (!list) return nullptr;
  IXML_Node* node = ixmlNodeList_item(list, 0);
  ixmlNodeList_free(list);
  return node;
}

bool IsElement(const IXML_Node* node, const char* name) {
  return node && node->nodeType == eELEMENT_NODE && node->nodeName &&
         strcmp(node->nodeName, name) == 0;
}

const char* ElementName(const IXML_Node* node) {
  if (!node || node->nodeType != eELEMENT_NODE || !node->nodeName) return "";
  return node->nodeName;
}

IXML_Node* FirstChildElement(const IXML_Node* node) {
  IXML_Node* child = node ? node->firstChild : nullptr;
  while (child && child->nodeType != eELEMENT_NODE) child = child->nextSibling;
  return child;
}

IXML_Node* NextSiblingElement(const IXML_Node* node) {
  IXML_Node* next = node ? node->nextSibling : nullptr;
  while (next && next->nodeType != eELEMENT_NODE) next = next->nextSibling;
  return next;
}

const char* FindAttribute(const IXML_Node* node, const char* name) {
  for (IXML_Node* a = FirstAttribute(node); a; a = NextAttribute(a))
    if (strcmp(AttributeName(a), name) == 0) return AttributeValue(a);
  return nullptr;
}

void CopyText(char* dst, size_t size, const char* src) {
  if (!dst || size == 0) return;
  size_t n = src ? strnlen(src, size - 1) : 0;
  if (n) memcpy(dst, src, n);
  memset(dst + n, 0, size - n);
}

std::string NodeBytes(const char* value) {
  std::string out;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(value);
  while (p && *p) {
    char c;
    p += Narrow(p, &c);
    out.push_back(c);
  }
  return out;
}

void ElementText(const IXML_Node* node, char* dst, size_t size) {
  const char* text = nullptr;
  for (IXML_Node* c = node ? node->firstChild : nullptr; c; c = c->nextSibling) {
    if (c->nodeType == eTEXT_NODE) {
      text = c->nodeValue;
      break;
    }
  }
  StrCpy(dst, size, text);
}

long long AtoiValue(const char* value) {
  if (!value) return 0;
  int saved = errno;
  long long v = strtoll(value, nullptr, 10);
  errno = saved;
  return v;
}

}  // namespace qvconfig

void StrCpy(char* dst, size_t size, const char* value) {
  if (!dst || size == 0) return;
  size_t n = 0;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(value);
  while (p && *p && n + 1 < size) p += qvconfig::Narrow(p, &dst[n++]);
  memset(dst + n, 0, size - n);
}

// Configuration documents on the ixml DOM parser.
//
// Documents are GB2312 (or any other byte encoding); the parser accepts only
// UTF-8, so every byte from 0x80 up is handed to it as the character of the
// same number and values are turned back into the original bytes when they
// are copied out (StrCpy, NodeBytes). Numeric character references to
// characters 0x80..0xFF therefore yield that byte.
#pragma once

#include <upnp/ixml.h>

#include <cstddef>
#include <string>

// Copies a parser value into dst as the document's bytes: at most size - 1
// bytes, the rest of dst zero-filled; null value gives "". Size 0 does
// nothing.
void StrCpy(char* dst, size_t size, const char* value);

namespace qvconfig {

class ConfigXml {
 public:
  ConfigXml() = default;
  ~ConfigXml();
  ConfigXml(const ConfigXml&) = delete;
  ConfigXml& operator=(const ConfigXml&) = delete;

  // Parses the text (null or unparsable: false).
  bool Parse(const char* text);
  bool Parse(const char* text, size_t length);

  // The first element with this tag name anywhere in the document, or null.
  IXML_Node* First(const char* tag) const;

 private:
  IXML_Document* doc_ = nullptr;
};

// True when the node is an element with this exact (case-sensitive) name.
bool IsElement(const IXML_Node* node, const char* name);

// The element's name, or "" for other nodes.
const char* ElementName(const IXML_Node* node);

// First child element and next sibling element (text and comments skipped).
IXML_Node* FirstChildElement(const IXML_Node* node);
IXML_Node* NextSiblingElement(const IXML_Node* node);

// Attribute walk in document order: `attr` runs over the attribute nodes.
inline IXML_Node* FirstAttribute(const IXML_Node* node) {
  return node ? node->firstAttr : nullptr;
}
inline IXML_Node* NextAttribute(const IXML_Node* attr) {
  return attr->nextSibling;
}
inline const char* AttributeName(const IXML_Node* attr) {
  return attr->nodeName ? attr->nodeName : "";
}
inline const char* AttributeValue(const IXML_Node* attr) {
  return attr->nodeValue;
}

// The value of the attribute with this name, or null.
const char* FindAttribute(const IXML_Node* node, const char* name);

// Copies plain bytes (not a parser value) as StrCpy does.
void CopyText(char* dst, size_t size, const char* src);

// A parser value as the document's bytes.
std::string NodeBytes(const char* value);

// The element's text (its first text child) into dst, as StrCpy.
void ElementText(const IXML_Node* node, char* dst, size_t size);

// atoi as the readers use it: leading blanks, sign and decimal digits; no
// digits give 0. Values beyond 64 bits are clipped; callers narrow to the
// member's width.
long long AtoiValue(const char* value);

}  // namespace qvconfig

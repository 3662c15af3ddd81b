#include "config/element_parts.h"

#include <cstdio>

namespace qvconfig {

void ReadDayTime(const char* value, DayTime* time) {
  time->Hour = time->Minute = time->Second = 0;
  if (value) sscanf(value, "%d:%d:%d", &time->Hour, &time->Minute, &time->Second);
}

void ReadTimeAttrs(const IXML_Node* element, const TimeAttr* attrs, size_t count,
                   void* record) {
  for (IXML_Node* a = FirstAttribute(element); a; a = NextAttribute(a)) {
    for (size_t i = 0; i < count; ++i) {
      if (strcmp(attrs[i].name, AttributeName(a)) != 0) continue;
      DayTime t;
      ReadDayTime(NodeBytes(AttributeValue(a)).c_str(), &t);
      memcpy(static_cast<char*>(record) + attrs[i].offset, &t, sizeof(t));
    }
  }
}

void WriteTimeAttrs(XmlWriter& out, const TimeAttr* attrs, size_t count,
                    const void* record, const char* sep) {
  for (size_t i = 0; i < count; ++i) {
    DayTime t;
    memcpy(&t, static_cast<const char*>(record) + attrs[i].offset, sizeof(t));
    out.Append("%s=\"%2d:%2d:%2d\"%s", attrs[i].name, t.Hour, t.Minute, t.Second, sep);
  }
}

void WriteInlineStart(XmlWriter& out, const char* name, const XmlField* fields,
                      size_t count, const void* record, const char* end) {
  if (count == 0) {
    out.Append("<%s%s", name, end);
    return;
  }
  out.Append("<%s ", name);
  WriteXmlFields(out, fields, count, record, " ");
  out.Append("%s", end);
}

IXML_Node* FirstChildNamed(const IXML_Node* element, const char* name) {
  for (IXML_Node* c = FirstChildElement(element); c; c = NextSiblingElement(c))
    if (IsElement(c, name)) return c;
  return nullptr;
}

}  // namespace qvconfig

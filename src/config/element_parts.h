// Pieces shared by the alarm, system, record, server and platform sections:
// times of day, lists of like children, and the two element shapes they are
// written in (all attributes on the start tag's line, or one attribute per
// line).
#pragma once

#include <upnp/ixml.h>

#include <cstddef>
#include <cstring>

#include "config/config_xml.h"
#include "config/xml_fields.h"
#include "config/xml_writer.h"
#include "quorvel/quorvel.h"

namespace qvconfig {

// A time-of-day attribute: read with "%d:%d:%d" (parts that are missing stay
// 0), written "%2d:%2d:%2d" (blank-padded).
struct TimeAttr {
  const char* name;
  unsigned offset;  // of the DayTime member in the record
};
#define TIME_ATTR(Rec, member, name) \
  qvconfig::TimeAttr { name, static_cast<unsigned>(offsetof(Rec, member)) }

void ReadDayTime(const char* value, DayTime* time);
void ReadTimeAttrs(const IXML_Node* element, const TimeAttr* attrs, size_t count,
                   void* record);
void WriteTimeAttrs(XmlWriter& out, const TimeAttr* attrs, size_t count,
                    const void* record, const char* sep);

// "<Name a=\"1\" b=\"2\" " then `end` (">\r\n" or "/>\r\n"); "<Name" then
// `end` for an element without attributes.
void WriteInlineStart(XmlWriter& out, const char* name, const XmlField* fields,
                      size_t count, const void* record, const char* end);

// Reads every child element named `name`, in document order, into the next
// entry of `entries` with `read`, keeping at most `capacity`; returns the
// number read. Entries are cleared by `read`.
template <typename Entry>
int ReadListChildren(const IXML_Node* element, const char* name, Entry* entries,
                     int capacity, int (*read)(const IXML_Node*, Entry*)) {
  int count = 0;
  for (IXML_Node* c = FirstChildElement(element); c && count < capacity;
       c = NextSiblingElement(c)) {
    if (IsElement(c, name)) read(c, &entries[count++]);
  }
  return count;
}

// The count of a list record clamped to 0..capacity, so that writing a record
// whose count was set out of range never reads past its entries.
inline int ListCount(int count, int capacity) {
  return count < 0 ? 0 : count > capacity ? capacity : count;
}

// The first entry of a list whose `id` member equals `id`, or null.
template <typename Entry>
Entry* FindEntry(Entry* entries, int count, int capacity, int Entry::*id, int value) {
  int n = ListCount(count, capacity);
  for (int i = 0; i < n; ++i)
    if (entries[i].*id == value) return &entries[i];
  return nullptr;
}

// The first child element named `name`, or null.
IXML_Node* FirstChildNamed(const IXML_Node* element, const char* name);

}  // namespace qvconfig

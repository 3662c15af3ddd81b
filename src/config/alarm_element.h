// One description per alarm element, and the reader and writer that every
// alarm element shares. An alarm element is written as its start tag with its
// attributes on one line, then (where it has them) its numbered children
// (Line1.., Rule1..), its schedule (EnableTimeList holding a TimeSpanCfg) and
// its AlarmAction with the action children, each piece followed by "\r\n",
// then its end tag. An element with none of these is written empty ("/>").
#pragma once

#include <upnp/ixml.h>

#include <cstddef>

#include "config/element_parts.h"
#include "config/xml_fields.h"

namespace qvconfig {

class XmlWriter;

const int kNone = -1;

// Numbered children named by `format` ("Line%d") from 1 to `count`, each an
// empty element with `fields`; entry i sits at offset + i * size.
struct NumberedChildren {
  const char* format;
  int count;
  int offset;
  unsigned size;
  const XmlField* fields;
  size_t field_count;
};

struct AlarmElementLayout {
  const char* name;
  const XmlField* fields;  // attributes of the element, writing order
  size_t field_count;
  const TimeAttr* times;   // time-of-day attributes, written after the fields
  size_t time_count;
  const NumberedChildren* numbered;  // or null
  int schedule;            // offset of the TimeSpanCfg, or kNone
  bool action;             // has an AlarmAction
  const XmlField* action_fields;
  size_t action_field_count;
  int io_output;           // offsets of the action children, or kNone
  int ptz;
  int audio_play;
};

// Clears the record, makes its schedule the full week and reads the element.
void ReadAlarmElement(const AlarmElementLayout& layout, const IXML_Node* element,
                      void* record, size_t size);
void WriteAlarmElement(const AlarmElementLayout& layout, XmlWriter& out,
                       const void* record);

}  // namespace qvconfig

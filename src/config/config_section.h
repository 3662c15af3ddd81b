// Shared plumbing of the section readers and writers: reading a record from
// a reply text, handing a writer's text over, and the element shapes that
// most sections use.
#pragma once

#include <upnp/ixml.h>

#include <cstddef>
#include <cstring>

#include "config/config_print.h"
#include "config/config_xml.h"
#include "config/xml_fields.h"
#include "config/xml_writer.h"

namespace qvconfig {

// Parses `xml`, finds the first element `tag` and hands it to `read`. -1 when
// the text does not parse (logged "[%s:%u]xml error\r\n\n" with `func`), the
// element is absent or the record is null; else the reader's result.
//
// With a `parent` (for element names that several sections use): when the
// text has such an element, the first child `tag` of the first of them is
// read (none: -1); otherwise the first element `tag` anywhere.
template <typename Rec>
int ReadRecordByXml(const char* func, Rec* cfg, const char* xml, const char* tag,
                    int (*read)(const IXML_Node*, Rec*), const char* parent = nullptr) {
  if (!cfg) return -1;
  ConfigXml doc;
  if (!doc.Parse(xml)) {
    if (ConfigMessages()) printf("[%s:%u]xml error\r\n\n", func, static_cast<unsigned>(__LINE__));
    return -1;
  }
  const IXML_Node* node = doc.First(tag);
  if (const IXML_Node* up = parent ? doc.First(parent) : nullptr) {
    node = FirstChildElement(up);
    while (node && !IsElement(node, tag)) node = NextSiblingElement(node);
  }
  if (!node) return -1;
  return read(node, cfg);
}

#define READ_RECORD_BY_XML(cfg, xml, tag, read) \
  qvconfig::ReadRecordByXml(__FUNCTION__, cfg, xml, tag, read)
#define READ_CHILD_RECORD_BY_XML(cfg, xml, parent, tag, read) \
  qvconfig::ReadRecordByXml(__FUNCTION__, cfg, xml, tag, read, parent)

// Runs `write` into a new text that the caller frees; null for a null record
// or when the text cannot be built.
template <typename Rec>
char* WriteRecordText(const Rec* cfg, void (*write)(XmlWriter&, const Rec*)) {
  if (!cfg) return nullptr;
  XmlWriter out;
  write(out, cfg);
  return out.Release();
}

// Clears the record and reads the element's attributes into it.
void ReadPlainElement(const IXML_Node* element, const XmlField* fields,
                      size_t count, void* record, size_t record_size);

// Writes "<Name\r\n", every attribute followed by "\r\n", then `end`
// (for example "/>\r\n", or ">\r\n" when children follow).
void WriteLineElement(XmlWriter& out, const char* name, const XmlField* fields,
                      size_t count, const void* record, const char* end);

// A container's children: each child element whose name has an entry is
// handed to that entry's reader; unknown children are ignored.
template <typename Rec>
struct ChildReader {
  const char* name;
  void (*read)(const IXML_Node*, Rec*);
};

// A ChildReader entry that hands the child to the element reader of a
// record member: CHILD_MEMBER(VideoConfig, "Capture", Capture, ReadVideoCapture).
template <typename Rec, typename Child, Child Rec::*member,
          int (*read)(const IXML_Node*, Child*)>
void ReadChildMember(const IXML_Node* element, Rec* cfg) {
  read(element, &(cfg->*member));
}

#define CHILD_MEMBER(Rec, name, member, read)                                        \
  qvconfig::ChildReader<Rec> {                                                       \
    name, qvconfig::ReadChildMember<Rec, decltype(Rec::member), &Rec::member, read> \
  }

template <typename Rec, size_t N>
void ReadChildren(const IXML_Node* element, const ChildReader<Rec> (&readers)[N],
                  Rec* cfg) {
  for (IXML_Node* c = FirstChildElement(element); c; c = NextSiblingElement(c)) {
    const char* name = ElementName(c);
    for (const ChildReader<Rec>& r : readers) {
      if (strcmp(r.name, name) == 0) {
        r.read(c, cfg);
        break;
      }
    }
  }
}

}  // namespace qvconfig

// Table-driven attribute readers and writers of configuration elements.
//
// An element's plain attributes are listed once, in writing order, as
// XmlField entries naming the record member behind each. The reader walks the
// element's attributes in document order and stores each one whose name
// matches an entry exactly (texts through StrCpy, numbers through atoi
// narrowed to the member's width); unknown attributes are ignored. The writer
// emits name="value" and a separator for every entry: texts with %s after
// XML escaping, signed and narrow members with %d, unsigned 32-bit ones with
// %u, times of day (DayTime) as "%02d:%02d:%02d".
#pragma once

#include <upnp/ixml.h>

#include <cstddef>

#include "quorvel/quorvel.h"

namespace qvconfig {

class XmlWriter;

enum class XmlFieldType : unsigned char { kText, kI8, kU8, kI16, kU16, kI32, kU32, kTime };

enum : unsigned char {
  kFieldNoEscape = 1,   // text written as it is
  kFieldWriteOnly = 2,  // written, never read back
};

struct XmlField {
  const char* name;
  XmlFieldType type;
  unsigned offset;  // of the member in the record
  unsigned size;    // of the member
  unsigned char flags;
};

template <typename T> struct XmlFieldTypeOf;
template <size_t N> struct XmlFieldTypeOf<char[N]> {
  static constexpr XmlFieldType value = XmlFieldType::kText;
};
template <> struct XmlFieldTypeOf<signed char> {
  static constexpr XmlFieldType value = XmlFieldType::kI8;
};
template <> struct XmlFieldTypeOf<unsigned char> {
  static constexpr XmlFieldType value = XmlFieldType::kU8;
};
template <> struct XmlFieldTypeOf<short> {
  static constexpr XmlFieldType value = XmlFieldType::kI16;
};
template <> struct XmlFieldTypeOf<unsigned short> {
  static constexpr XmlFieldType value = XmlFieldType::kU16;
};
template <> struct XmlFieldTypeOf<int> {
  static constexpr XmlFieldType value = XmlFieldType::kI32;
};
template <> struct XmlFieldTypeOf<unsigned int> {
  static constexpr XmlFieldType value = XmlFieldType::kU32;
};
template <> struct XmlFieldTypeOf<DayTime> {
  static constexpr XmlFieldType value = XmlFieldType::kTime;
};

#define XML_FIELD_FLAGS(Rec, member, name, flags)                          \
  qvconfig::XmlField {                                                     \
    name, qvconfig::XmlFieldTypeOf<decltype(Rec::member)>::value,          \
        static_cast<unsigned>(offsetof(Rec, member)),                      \
        static_cast<unsigned>(sizeof(Rec::member)), flags                  \
  }
#define XML_FIELD(Rec, member, name) XML_FIELD_FLAGS(Rec, member, name, 0)

template <typename T, size_t N>
constexpr size_t FieldCount(const T (&)[N]) { return N; }

// The entry named `name` (readable entries only), or null.
const XmlField* FindXmlField(const XmlField* fields, size_t count,
                             const char* name);

// Reads "h:m:s" (three decimal numbers, blanks before each allowed, each
// narrowed like atoi's int); false, leaving *time alone, for anything else.
bool ParseDayTime(const char* value, DayTime* time);

// Stores one parser value into the record member of `field`.
void StoreXmlField(const XmlField& field, void* record, const char* value);

// Walks the element's attributes and stores every known one.
void ReadXmlFields(const IXML_Node* element, const XmlField* fields,
                   size_t count, void* record);

// Writes every entry as name="value" followed by `sep`.
void WriteXmlFields(XmlWriter& out, const XmlField* fields, size_t count,
                    const void* record, const char* sep);

}  // namespace qvconfig

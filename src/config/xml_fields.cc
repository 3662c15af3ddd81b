#include "config/xml_fields.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "config/config_xml.h"
#include "config/xml_writer.h"

namespace qvconfig {

const XmlField* FindXmlField(const XmlField* fields, size_t count,
                             const char* name) {
  for (size_t i = 0; i < count; ++i)
    if (!(fields[i].flags & kFieldWriteOnly) && strcmp(fields[i].name, name) == 0)
      return &fields[i];
  return nullptr;
}

bool ParseDayTime(const char* value, DayTime* time) {
  if (!value) return false;
  std::string text = NodeBytes(value);
  const char* p = text.c_str();
  int parts[3];
  for (int i = 0; i < 3; ++i) {
    char* end;
    long long v = strtoll(p, &end, 10);
    if (end == p) return false;
    parts[i] = static_cast<int>(static_cast<uint32_t>(v));
    p = end;
    if (i < 2 && *p++ != ':') return false;
  }
  *time = DayTime{parts[0], parts[1], parts[2]};
  return true;
}

void StoreXmlField(const XmlField& field, void* record, const char* value) {
  char* member = static_cast<char*>(record) + field.offset;
  if (field.type == XmlFieldType::kText) {
    StrCpy(member, field.size, value);
    return;
  }
  if (field.type == XmlFieldType::kTime) {
    DayTime time;
    memcpy(&time, member, sizeof(time));
    if (ParseDayTime(value, &time)) memcpy(member, &time, sizeof(time));
    return;
  }
  // atoi's int, narrowed to the member's width as an assignment would.
  uint64_t bits = static_cast<uint64_t>(AtoiValue(value));
  switch (field.type) {
    case XmlFieldType::kI8:
    case XmlFieldType::kU8: {
      uint8_t v = static_cast<uint8_t>(bits);
      memcpy(member, &v, sizeof(v));
      break;
    }
    case XmlFieldType::kI16:
    case XmlFieldType::kU16: {
      uint16_t v = static_cast<uint16_t>(bits);
      memcpy(member, &v, sizeof(v));
      break;
    }
    default: {
      uint32_t v = static_cast<uint32_t>(bits);
      memcpy(member, &v, sizeof(v));
      break;
    }
  }
}

void ReadXmlFields(const IXML_Node* element, const XmlField* fields,
                   size_t count, void* record) {
  for (IXML_Node* a = FirstAttribute(element); a; a = NextAttribute(a)) {
    const XmlField* field = FindXmlField(fields, count, AttributeName(a));
    if (field) StoreXmlField(*field, record, AttributeValue(a));
  }
}

void WriteXmlFields(XmlWriter& out, const XmlField* fields, size_t count,
                    const void* record, const char* sep) {
  const char* base = static_cast<const char*>(record);
  for (size_t i = 0; i < count; ++i) {
    const XmlField& f = fields[i];
    const char* member = base + f.offset;
    switch (f.type) {
      case XmlFieldType::kText:
        out.AppendTextAttr(f.name, member, f.size, !(f.flags & kFieldNoEscape),
                           sep);
        break;
      case XmlFieldType::kI8: {
        int8_t v;
        memcpy(&v, member, sizeof(v));
        out.Append("%s=\"%d\"%s", f.name, v, sep);
        break;
      }
      case XmlFieldType::kU8: {
        uint8_t v;
        memcpy(&v, member, sizeof(v));
        out.Append("%s=\"%d\"%s", f.name, v, sep);
        break;
      }
      case XmlFieldType::kI16: {
        int16_t v;
        memcpy(&v, member, sizeof(v));
        out.Append("%s=\"%d\"%s", f.name, v, sep);
        break;
      }
      case XmlFieldType::kU16: {
        uint16_t v;
        memcpy(&v, member, sizeof(v));
        out.Append("%s=\"%d\"%s", f.name, v, sep);
        break;
      }
      case XmlFieldType::kI32: {
        int32_t v;
        memcpy(&v, member, sizeof(v));
        out.Append("%s=\"%d\"%s", f.name, v, sep);
        break;
      }
      case XmlFieldType::kU32: {
        uint32_t v;
        memcpy(&v, member, sizeof(v));
        out.Append("%s=\"%u\"%s", f.name, v, sep);
        break;
      }
      case XmlFieldType::kTime: {
        DayTime t;
        memcpy(&t, member, sizeof(t));
        out.Append("%s=\"%02d:%02d:%02d\"%s", f.name, t.Hour, t.Minute, t.Second, sep);
        break;
      }
    }
  }
}

}  // namespace qvconfig

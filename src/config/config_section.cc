#include "config/config_section.h"

namespace qvconfig {

void ReadPlainElement(const IXML_Node* element, const XmlField* fields,
                      size_t count, void* record, size_t record_size) {
  memset(record, 0, record_size);
  ReadXmlFields(element, fields, count, record);
}

void WriteLineElement(XmlWriter& out, const char* name, const XmlField* fields,
                      size_t count, const void* record, const char* end) {
  out.Append("<%s\r\n", name);
  WriteXmlFields(out, fields, count, record, "\r\n");
  out.Append("%s", end);
}

}  // namespace qvconfig

#include "link/xml_request.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "base/debug_log.h"

namespace {

const char kDeclaration[] = "<?xml version=\"1.0\" encoding=\"GB2312\" ?>";
const char kHeader[] =
    "<XML_VEXORA>\n<MESSAGE_HEADER\nMsg_type=\"%s\"\nMsg_code=\"%s\"\nMsg_flag=\"%s\"\n/>";
const char kBody[] = "<MESSAGE_BODY>\n%s\n</MESSAGE_BODY>\n</XML_VEXORA>";
const char kEmptyBody[] = "<MESSAGE_BODY/>\n</XML_VEXORA>";

const char* OrEmpty(const char* s) { return s != nullptr ? s : ""; }

// Appends one formatted piece at *pos, bounded by what is left of size.
void Append(char* buffer, int size, int* pos, const char* fmt, ...) QV_PRINTF(4, 5);
void Append(char* buffer, int size, int* pos, const char* fmt, ...) {
  int left = size - *pos;
  if (left <= 1) return;
  va_list ap;
  va_start(ap, fmt);
  int n = vsnprintf(buffer + *pos, static_cast<size_t>(left), fmt, ap);
  va_end(ap);
  if (n < 0) return;
  *pos += n < left ? n : left - 1;
}

}  // namespace

int MakeXMLRequest(char* buffer, int size, const char* type, const char* code, const char* flag,
                   const char* body) {
  if (buffer == nullptr || size < 1) return 0;
  buffer[0] = '\0';
  int pos = 0;
  Append(buffer, size, &pos, "%s", kDeclaration);
  Append(buffer, size, &pos, kHeader, OrEmpty(type), OrEmpty(code), OrEmpty(flag));
  if (body != nullptr && body[0] != '\0') {
    Append(buffer, size, &pos, kBody, body);
  } else {
    Append(buffer, size, &pos, "%s", kEmptyBody);
  }
  QV_LOG("[%s:%d]%s\n\n", buffer);
  return pos;
}

int MakeXMLRequest(std::string& out, const char* type, const char* code, const char* flag,
                   const char* body) {
  out.assign(kDeclaration);
  out += "<XML_VEXORA>\n<MESSAGE_HEADER\nMsg_type=\"";
  out += OrEmpty(type);
  out += "\"\nMsg_code=\"";
  out += OrEmpty(code);
  out += "\"\nMsg_flag=\"";
  out += OrEmpty(flag);
  out += "\"\n/>";
  if (body != nullptr && body[0] != '\0') {
    out += "<MESSAGE_BODY>\n";
    out += body;
    out += "\n</MESSAGE_BODY>\n</XML_VEXORA>";
  } else {
    out += kEmptyBody;
  }
  return static_cast<int>(out.size());
}

int MakeXMLRequest(std::string& out, const char* type, long code, const char* flag,
                   const char* body) {
  char text[32];
  snprintf(text, sizeof(text), "%ld", code);
  return MakeXMLRequest(out, type, text, flag, body);
}

int MakeAudioDataRequest(char* buffer, int size, const char* data, int length) {
  char body[64];
  snprintf(body, sizeof(body), "<RA_DATA_PARAM\nDataLength=\"%d\"/>", length);
  int xml = MakeXMLRequest(buffer, size, "REVERSE_AUDIO_MESSAGE", "CMD_RA_DATA", "0", body);
  if (data == nullptr || length <= 0 || size < 1) return xml;
  int room = size - xml;
  int copy = length < room ? length : room;
  if (copy > 0) memcpy(buffer + xml, data, static_cast<size_t>(copy));
  return xml + (copy > 0 ? copy : 0);
}

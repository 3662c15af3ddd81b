#include "discovery/search_message.h"

#include <cstdio>

const char kSearchRoot[] = "XML_BRELLWICK";

int FormatSearchMessage(char* buffer, int size, int code, const char* body) {
  if (buffer == nullptr || size <= 0) return 0;
  // The declaration has no blank before "encoding": cameras expect it so.
  int n = snprintf(buffer, static_cast<size_t>(size),
                   "<?xml version=\"1.0\"encoding=\"GB2312\"?>\n"
                   "<%s>\n"
                   "<MESSAGE_HEADER\n"
                   "Msg_type=\"SYSTEM_SEARCHIPC_MESSAGE\"\n"
                   "Msg_code=\"%d\"\n"
                   "Msg_flag=\"0\"\n"
                   "/>\n"
                   "<MESSAGE_BODY>\n"
                   "%s%s"
                   "</MESSAGE_BODY>\n"
                   "</%s>",
                   kSearchRoot, code, body != nullptr ? body : "", body != nullptr ? "\n" : "",
                   kSearchRoot);
  if (n < 0) return 0;
  return n < size ? n : size - 1;
}

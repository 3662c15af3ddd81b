// A received control-link message through the readers every message meets:
// header, body, binary payload position and the login reply's session id.
#include <string>

#include "fuzz_target.h"
#include "link/message_readers.h"

QV_FUZZ_TARGET(message_header) {
  std::string message = qvfuzz::Text(data, size);
  char type[kHeaderFieldMax + 1], code[kHeaderFieldMax + 1], flag[kHeaderFieldMax + 1];
  TinyGetMessageHeader(&message[0], type, code, flag);
  char* body = nullptr;
  GetMessageBody(&message[0], &body);
  delete[] body;
  int start = 0, length = 0;
  GetXmlPosAndDataLen(&message[0], &start, &length);
  std::string id;
  GetSessionID(&message[0], id);
  return 0;
}

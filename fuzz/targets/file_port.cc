// The camera's answer to a file transfer request: data port, mode and
// length read from the reply body.
#include <string>

#include "fuzz_target.h"
#include "link/message_readers.h"

QV_FUZZ_TARGET(file_port) {
  std::string body = qvfuzz::Text(data, size);
  unsigned short port = 0;
  int type = 0;
  unsigned long length = 0;
  GetFileTransportPort(body.c_str(), &port, &type, &length);
  return 0;
}

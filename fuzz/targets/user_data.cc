// The camera's user data reply (code 1034): hexadecimal digit pairs in an
// attribute, decoded into the session's buffer.
#include <string>

#include "fuzz_target.h"
#include "link/ptz_control_class.h"

QV_FUZZ_TARGET(user_data) {
  CPTZControlClass session(nullptr, 0, 0, "");
  std::string body = qvfuzz::Text(data, size);
  session.PostAuxResponseMsg(1034, 0, body.c_str());
  return 0;
}

// The camera's answer to a replay start: the recording's length and its
// Base64 video and audio parameter blocks, turned into the parameter record
// the host receives. Dispatched by a session as its link thread would.
#include <string>

#include "fuzz_target.h"
#include "link_access.h"

QV_FUZZ_TARGET(replay_start) {
  CPTZControlClass session(nullptr, 0, 0, "");
  std::string body = qvfuzz::Text(data, size);
  FuzzLinkAccess::Dispatch(session,
                           "<MESSAGE_HEADER Msg_type=\"REPLAY_CONTROL_MESSAGE\" Msg_code=\"0\" "
                           "Msg_flag=\"0\"/><MESSAGE_BODY>" + body + "</MESSAGE_BODY>");
  return 0;
}

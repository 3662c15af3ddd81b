// The camera's ability list (the reply to code 1020): the session keeps it
// without blanks and learns from it whether the camera replays recordings.
#include <cstdlib>
#include <string>

#include "fuzz_target.h"
#include "link_access.h"

QV_FUZZ_TARGET(ability_list) {
  CPTZControlClass session(nullptr, 0, 0, "");
  std::string body = qvfuzz::Text(data, size);
  FuzzLinkAccess::Dispatch(session,
                           "<MESSAGE_HEADER Msg_type=\"SYSTEM_CONTROL_MESSAGE\" Msg_code=\"1020\" "
                           "Msg_flag=\"0\"/><MESSAGE_BODY>" + body + "</MESSAGE_BODY>");
  int replay = session.GetReplayAblity();
  if (replay != -1 && replay != 0 && replay != 1) abort();
  session.AbilityList();
  return 0;
}

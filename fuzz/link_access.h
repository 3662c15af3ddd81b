// A session without a camera, whose message dispatch the targets drive
// directly, as its link thread would with each received message.
#pragma once

#include <string>

#include "link/ptz_control_class.h"

struct FuzzLinkAccess {
  // Dispatches one message (a copy, terminated as received payloads are).
  static bool Dispatch(CPTZControlClass& session, const std::string& message) {
    std::string copy = message;
    return session.Dispatch(&copy[0], static_cast<int>(message.size()));
  }
};

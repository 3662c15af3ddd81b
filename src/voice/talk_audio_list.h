// TalkAudioList: the talk packets waiting for the link thread. The audio
// send thread appends, the link thread takes and trims; a lock of its own
// keeps the two apart.
#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>

#include "voice/talk_packet.h"

class TalkAudioList {
 public:
  // false (the packet is freed) when the list cannot grow.
  bool Append(std::unique_ptr<TalkPacket> packet);
  // The oldest packet, or null when none waits.
  std::unique_ptr<TalkPacket> Take();
  // When more than `above` packets wait, drops the oldest until `keep`
  // remain. The number dropped.
  size_t Trim(size_t above, size_t keep);
  size_t Size() const;
  void Clear();

 private:
  mutable std::mutex mu_;
  std::deque<std::unique_ptr<TalkPacket>> packets_;
};

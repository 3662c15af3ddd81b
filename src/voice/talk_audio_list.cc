#include "voice/talk_audio_list.h"

#include <new>

bool TalkAudioList::Append(std::unique_ptr<TalkPacket> packet) {
  std::lock_guard<std::mutex> lock(mu_);
  try {
    packets_.push_back(std::move(packet));
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

std::unique_ptr<TalkPacket> TalkAudioList::Take() {
  std::lock_guard<std::mutex> lock(mu_);
  if (packets_.empty()) return nullptr;
  std::unique_ptr<TalkPacket> packet = std::move(packets_.front());
  packets_.pop_front();
  return packet;
}

size_t TalkAudioList::Trim(size_t above, size_t keep) {
  std::lock_guard<std::mutex> lock(mu_);
  if (packets_.size() <= above) return 0;
  size_t dropped = packets_.size() - keep;
  packets_.erase(packets_.begin(), packets_.begin() + static_cast<std::ptrdiff_t>(dropped));
  return dropped;
}

size_t TalkAudioList::Size() const {
  std::lock_guard<std::mutex> lock(mu_);
  return packets_.size();
}

void TalkAudioList::Clear() {
  std::lock_guard<std::mutex> lock(mu_);
  packets_.clear();
}

// The emulated camera's side of voice talk: it accepts or refuses talk
// start requests, answers stops, and counts and keeps the talk audio that
// arrives as MEDIA_DATA_MESSAGE code 3.
//
// One link may talk at a time: a start from another link while one talks is
// refused as busy (-1). A start asking for an unusable format (anything but
// G.711, or PCM at 8, 16, 32, 44.1 or 48 kHz with one or two channels) is
// refused with -2; with talk disabled every start is refused with -3. A
// talking link stops talking with its stop request or when it closes.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "emu/camera.h"

namespace qvemu {

class CameraBehaviour;

class TalkReceiver {
 public:
  explicit TalkReceiver(size_t keep_limit = 16u << 20);  // audio bytes kept
  ~TalkReceiver();
  TalkReceiver(const TalkReceiver&) = delete;
  TalkReceiver& operator=(const TalkReceiver&) = delete;

  // Plugs the talk messages into the camera's message handling.
  void Install(CameraBehaviour* behaviour);

  void SetEnabled(bool on);
  // 0: decide as above; -1, -2, -3: refuse every start with that flag.
  void SetRefusal(int flag);
  // Also appends every accepted audio byte to this file ("" for none).
  bool SetSaveFile(const std::string& path);
  TalkStats Stats() const;
  void Clear();  // forgets counts, packets and audio

 private:
  class Talking;  // a link's talk, released when the link closes

  const size_t keep_limit_;
  mutable std::mutex mu_;
  bool enabled_ = true;
  int refusal_ = 0;
  int talking_link_ = 0;  // connection number, 0 for none
  TalkStats stats_;
  FILE* save_ = nullptr;
};

}  // namespace qvemu

// The emulated camera's remote playback: it answers replay requests
// (REPLAY_CONTROL_MESSAGE by file name, TIMELINE_REPLAY_CONTROL_MESSAGE by
// time) from its recordings store and plays them on the asking link.
//
// A start (code 0 with PlayParam 1) of a recording that exists is answered
// with code 0, flag 0 and <RESPONSE_PARAM VideoSeconds VideoParam AudioParam>
// (the blocks in Base64), followed by the media; one that does not exist
// (or any start when front_replay is off) with flag -1 and no body. Other
// codes act on the link's play (see ReplayPlayer) and are answered with the
// same code, flag 0, or -1 when nothing plays or the action is unknown. The
// end of a recording is told with code 7, flag 1 and no body.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "emu/camera.h"
#include "emu/recordings.h"
#include "emu/replay_player.h"

namespace qvemu {

class CameraBehaviour;
struct LinkState;
struct Reply;

class ReplayServer {
 public:
  explicit ReplayServer(const CameraOptions& options);

  // Plugs the replay requests into the camera's message handling.
  void Install(CameraBehaviour* behaviour);

  void SetFragment(int bytes);
  void SetSequenceStart(uint16_t sequence);
  void SetFault(ReplayFault fault, int video_frame);
  ReplayStats Stats() const;

 private:
  void OnRequest(CameraBehaviour* behaviour, LinkState* link, const ReceivedFrame& f,
                 std::vector<Reply>* out);
  void Start(time_t camera_now, LinkState* link, const ReceivedFrame& f, std::vector<Reply>* out);

  const bool front_replay_;
  const RecordingStore store_;
  mutable std::mutex mu_;
  ReplaySettings settings_;
  ReplayStats stats_;
  std::shared_ptr<ReplayStateCell> last_;  // of the most recent play
  uint64_t plays_ = 0;                     // starts answered, for hostile plays
};

}  // namespace qvemu

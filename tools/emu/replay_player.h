// ReplayPlayer: the sender of one link's replay. A thread of its own pushes
// the recording's frames as media packets at the recording's pace (scaled
// by the speed), honouring pause, resume, step, seek, speed and stop.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "emu/camera.h"
#include "emu/hostile.h"
#include "emu/recordings.h"

namespace qvemu {

// How the packets of a play are cut and what goes wrong on purpose.
struct ReplaySettings {
  int fragment = 8192;          // most data bytes in one packet
  uint16_t sequence_start = 0;  // sequence number of the first packet of a play
  ReplayFault fault = ReplayFault::kNone;
  int fault_frame = -1;         // video frame index of the recording it hits
  std::string message_code = "0";  // Msg_code of the media messages
  bool hostile = false;         // packets go out through HostileMedia
  uint64_t hostile_seed = 0;
  uint64_t hostile_play = 0;    // the play's number, which picks its generator
};

// The state of a play, readable after its player is gone.
class ReplayStateCell {
 public:
  void Set(const ReplayState& state) {
    std::lock_guard<std::mutex> lock(mu_);
    state_ = state;
  }
  ReplayState Get() const {
    std::lock_guard<std::mutex> lock(mu_);
    return state_;
  }

 private:
  mutable std::mutex mu_;
  ReplayState state_;
};

class ReplayPlayer {
 public:
  using Sender = std::function<bool(const std::string&)>;

  explicit ReplayPlayer(Sender send);
  ~ReplayPlayer();  // stops the thread
  ReplayPlayer(const ReplayPlayer&) = delete;
  ReplayPlayer& operator=(const ReplayPlayer&) = delete;

  // Plays r from video frame `frame` at normal speed. The framed start
  // reply goes out ahead of the first media packet; the framed end message
  // after the last frame.
  void Open(const Recording& r, int frame, const ReplaySettings& settings,
            const std::string& start_reply, const std::string& end_message);
  // Actions (the numbers of the replay requests): 0 play at normal speed,
  // 1 pause, 2 resume, 3 faster by parameter, 4 slower by parameter,
  // 5 go to video frame `parameter`, 6 step `parameter` frames, 7 stop.
  // false when nothing is open or the action is unknown.
  bool Control(int action, long parameter);
  const Recording& Current() const { return recording_; }
  std::shared_ptr<ReplayStateCell> StateCell() const { return cell_; }

 private:
  void Run();
  // Sends video and audio frame `index`; false when the link refused.
  // dice: the play's hostile generator, or null.
  bool SendStep(int index, const ReplaySettings& settings, HostileDice* dice, uint16_t* sequence);
  bool SendFrame(const std::string& data, int index, int kind, bool key,
                 const ReplaySettings& settings, HostileDice* dice, uint16_t* sequence,
                 uint64_t* packets);
  // The pause between two frames at the current speed.
  std::chrono::steady_clock::duration Interval() const;

  Sender send_;
  mutable std::mutex mu_;
  std::condition_variable changed_;
  bool stop_ = false;
  Recording recording_;
  ReplaySettings settings_;
  std::string pending_;      // a start reply still to send
  std::string end_message_;
  uint16_t sequence_ = 0;
  ReplayState state_;       // mirrored into cell_ after each change
  std::shared_ptr<ReplayStateCell> cell_ = std::make_shared<ReplayStateCell>();
  int steps_ = 0;            // frames to send while paused
  uint64_t generation_ = 0;  // counts Open calls
  std::chrono::steady_clock::time_point due_;
  std::thread thread_;
};

}  // namespace qvemu

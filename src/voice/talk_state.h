// The voice talk state of a session: whether talk is requested, what the
// host asked for, and what the camera's start reply said.
#pragma once

#include <atomic>

struct TalkState {
  // Set by StartAudio, cleared by StopAudio and by the end of the link
  // thread. While it is set the link thread keeps asking the camera to talk
  // and file transfers are refused.
  std::atomic<int> requested{0};

  // The seven values StopAudio clears together (under the session's talk
  // lock): the audio type asked for (below 3 G.711, 3 or more PCM) and the
  // camera's start reply.
  int audio_type = 0;
  int recv_port = 0;
  int reply_audio_type = 0;  // 0 G.711, 1 AAC
  int sample_rate = 0;
  int bits = 0;
  int channels = 0;
  int same_port = 0;         // 1: the packets share the control connection
  // Also asked for, so that a repeated start request says the same.
  int asked_sample_rate = 0;
  int asked_channels = 0;

  // Tick of the last talk packet made or sent; 8 s without one stops the
  // audio send thread.
  std::atomic<unsigned long> last_send_tick{0};
  // Tick of the last talk start request queued; the link thread repeats
  // the request 10 s after it while the audio send thread does not run.
  std::atomic<unsigned long> start_request_tick{0};

  void ClearValues() {
    audio_type = recv_port = reply_audio_type = sample_rate = bits = channels = same_port = 0;
    asked_sample_rate = asked_channels = 0;
  }
};

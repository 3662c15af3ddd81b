// The emulated camera's recordings: files of a fixed length covering
// 08:00-12:00 and 14:00-18:00 of the camera's current day and the two days
// before (what the replay distribution queries report), and their media.
//
// Media is made up, but the same every time, so that a test can rebuild
// any frame: 25 video frames a second (a key frame each second), and with
// each video frame one 40 ms G.711 audio frame of 320 bytes.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>

namespace qvemu {

struct Recording {
  std::string name;   // "/mnt/sd/record/YYYYMMDD/HHMMSS.h264"
  time_t start = 0;   // camera clock, seconds (the scale of the distribution replies)
  int seconds = 0;    // length
};

class RecordingStore {
 public:
  static constexpr int kFramesPerSecond = 25;
  static constexpr int kFrameMs = 40;
  static constexpr int kAudioFrameBytes = 320;

  // seconds: the length of each recording file (at least 1).
  explicit RecordingStore(int seconds);

  // The recording with that name, or covering that time, on camera_now's
  // day and the two before. false when there is none.
  bool ByName(const std::string& name, time_t camera_now, Recording* out) const;
  bool ByTime(time_t when, time_t camera_now, Recording* out) const;
  // The first recording of camera_now's day (for trying it out).
  Recording FirstOfDay(time_t camera_now) const;

  static int VideoFrames(const Recording& r) { return r.seconds * kFramesPerSecond; }
  static bool IsKeyFrame(int index) { return index % kFramesPerSecond == 0; }
  // The bytes of video / audio frame `index` of any recording.
  static std::string VideoFrame(int index);
  static std::string AudioFrame(int index);

  // The stream's parameter blocks (536 and 276 bytes) as the start of a
  // replay announces them: H.264 1280x720 at 25 fps; G.711 mu-law 8000 Hz,
  // 16 bits, one channel.
  static std::string VideoParamBlock();
  static std::string AudioParamBlock();

 private:
  Recording Make(time_t start) const;

  int seconds_;
};

}  // namespace qvemu

// CAvStreamSource: the RTSP client of one pull, on libavformat. It runs on
// the pull's thread: connects with the pull's address, credentials and link
// mode, learns the stream's parameters, and delivers every frame through the
// pull until the pull's stop flag is set. A stop is noticed within about
// 100 ms in every wait (connect, handshake, reads, retry pauses).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "quorvel/quorvel.h"
#include "stream/frame_rate_probe.h"
#include "stream/h264_nal.h"
#include "stream/stream_clock.h"

class CPullClass;
struct AVFormatContext;
struct AVPacket;

class CAvStreamSource {
 public:
  explicit CAvStreamSource(CPullClass* pull);
  ~CAvStreamSource();
  CAvStreamSource(const CAvStreamSource&) = delete;
  CAvStreamSource& operator=(const CAvStreamSource&) = delete;

  // Sessions until stopped; with auto-reconnect a lost or failed session is
  // retried after a pause of 3 s (scaled).
  void Run();

  // Socket I/O time-out of a session, in milliseconds.
  static const int kIoTimeoutMs = 5000;

 private:
  enum Outcome { kStopped, kRetry, kGiveUp };

  Outcome Session();
  int Open(const std::string& url);
  void Close();
  void LearnParams();
  void DeliverParams();
  void DeliverVideo(AVPacket* packet);
  void DeliverAudio(AVPacket* packet);
  // The packet's time on the stream's one clock (see CStreamClock); now is
  // its arrival on the monotonic clock.
  double StampMs(AVPacket* packet, unsigned long now, CStreamClock::Medium medium);
  bool Stopping() const;
  static int InterruptCallback(void* opaque);

  CPullClass* pull_;
  AVFormatContext* ctx_ = nullptr;
  int video_index_ = -1;
  int audio_index_ = -1;
  int video_codec_ = 0;  // AVCodecID
  int nal_length_size_ = 0;  // non-zero: length-prefixed H.264 samples
  CH264ParamSets h264_sets_;
  __STREAM_AV_PARAM param_{};
  CStreamClock clock_;
  CFrameRateProbe rate_probe_;  // while the stream names no usable rate
  std::vector<uint8_t> frame_;  // reused for converted or completed frames
  std::vector<uint8_t> scratch_;
};

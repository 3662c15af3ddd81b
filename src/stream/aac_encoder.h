// CAacEncoder: 16-bit PCM to AAC-LC through libavcodec's own encoder. The
// converter uses it for G.711 audio when the target container cannot hold
// G.711 (MP4).
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

struct AVCodecContext;
struct AVFrame;
struct AVPacket;

class CAacEncoder {
 public:
  // Receives each encoded frame; its time stamps count samples. Returns 0
  // to go on, negative to stop the encoder with that result.
  using Sink = std::function<int(AVPacket*)>;

  CAacEncoder() = default;
  ~CAacEncoder();
  CAacEncoder(const CAacEncoder&) = delete;
  CAacEncoder& operator=(const CAacEncoder&) = delete;

  // 0; a negative libav error code when the encoder cannot be opened.
  int Open(int sample_rate, int channels);
  // The AudioSpecificConfig of the encoded stream (after Open).
  std::vector<uint8_t> Config() const;
  int FrameSamples() const;

  // Interleaved samples (count per channel); full frames go to sink.
  int Push(const int16_t* samples, int count, const Sink& sink);
  // The last partial frame and the encoder's delay.
  int Flush(const Sink& sink);

 private:
  int Encode(AVFrame* frame, const Sink& sink);
  int EncodeFilled(const Sink& sink);  // the samples in frame_

  AVCodecContext* ctx_ = nullptr;
  AVFrame* frame_ = nullptr;
  AVPacket* packet_ = nullptr;
  int channels_ = 0;
  int filled_ = 0;     // samples in frame_
  int64_t next_pts_ = 0;
};

#include "stream/aac_encoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
}

namespace {
const int kBitRatePerChannel = 48000;
}

CAacEncoder::~CAacEncoder() {
  av_packet_free(&packet_);
  av_frame_free(&frame_);
  avcodec_free_context(&ctx_);
}

int CAacEncoder::Open(int sample_rate, int channels) {
  const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_AAC);
  if (codec == nullptr) return AVERROR_ENCODER_NOT_FOUND;
  ctx_ = avcodec_alloc_context3(codec);
  frame_ = av_frame_alloc();
  packet_ = av_packet_alloc();
  if (ctx_ == nullptr || frame_ == nullptr || packet_ == nullptr) return AVERROR(ENOMEM);
  ctx_->sample_fmt = AV_SAMPLE_FMT_FLTP;
  ctx_->sample_rate = sample_rate;
  av_channel_layout_default(&ctx_->ch_layout, channels);
  ctx_->bit_rate = static_cast<int64_t>(kBitRatePerChannel) * channels;
  ctx_->time_base = AVRational{1, sample_rate};
  ctx_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  int ret = avcodec_open2(ctx_, codec, nullptr);
  if (ret < 0) return ret;
  channels_ = channels;
  frame_->format = AV_SAMPLE_FMT_FLTP;
  frame_->nb_samples = ctx_->frame_size;
  frame_->sample_rate = sample_rate;
  ret = av_channel_layout_copy(&frame_->ch_layout, &ctx_->ch_layout);
  if (ret < 0) return ret;
  return av_frame_get_buffer(frame_, 0);
}

std::vector<uint8_t> CAacEncoder::Config() const {
  if (ctx_ == nullptr || ctx_->extradata == nullptr) return {};
  return std::vector<uint8_t>(ctx_->extradata, ctx_->extradata + ctx_->extradata_size);
}

int CAacEncoder::FrameSamples() const { return ctx_ != nullptr ? ctx_->frame_size : 0; }

int CAacEncoder::Encode(AVFrame* frame, const Sink& sink) {
  int ret = avcodec_send_frame(ctx_, frame);
  if (ret < 0) return ret;
  while ((ret = avcodec_receive_packet(ctx_, packet_)) >= 0) {
    ret = sink(packet_);
    av_packet_unref(packet_);
    if (ret < 0) return ret;
  }
  return ret == AVERROR(EAGAIN) || ret == AVERROR_EOF ? 0 : ret;
}

int CAacEncoder::EncodeFilled(const Sink& sink) {
  frame_->nb_samples = filled_;
  frame_->pts = next_pts_;
  next_pts_ += filled_;
  filled_ = 0;
  return Encode(frame_, sink);
}

int CAacEncoder::Push(const int16_t* samples, int count, const Sink& sink) {
  if (ctx_ == nullptr || frame_ == nullptr) return AVERROR(EINVAL);
  for (int i = 0; i < count; ++i) {
    if (filled_ == 0) {
      int ret = av_frame_make_writable(frame_);
      if (ret < 0) return ret;
    }
    for (int c = 0; c < channels_; ++c) {
      float* plane = reinterpret_cast<float*>(frame_->extended_data[c]);
      plane[filled_] = samples[static_cast<size_t>(i) * channels_ + c] / 32768.0f;
    }
    if (++filled_ == ctx_->frame_size) {
      int ret = EncodeFilled(sink);
      if (ret < 0) return ret;
    }
  }
  return 0;
}

int CAacEncoder::Flush(const Sink& sink) {
  if (ctx_ == nullptr) return AVERROR(EINVAL);
  if (filled_ > 0) {
    int ret = EncodeFilled(sink);
    if (ret < 0) return ret;
  }
  return Encode(nullptr, sink);
}

// CAviConverter: the frames, in file order, with rebuilt time stamps.
extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include "stream/aac_encoder.h"
#include "stream/avi_converter.h"
#include "stream/frame_probe.h"

namespace {

bool StartsWithStartCode(const std::vector<uint8_t>& f) {
  return f.size() >= 4 && f[0] == 0 && f[1] == 0 && (f[2] == 1 || (f[2] == 0 && f[3] == 1));
}

}  // namespace

int CAviConverter::WriteChunks() {
  const std::vector<AviChunk>& chunks = reader_.Chunks();
  std::vector<uint8_t> frame;
  for (size_t i = 0; i < chunks.size(); ++i) {
    const AviChunk& c = chunks[i];
    if (c.video ? !video_ : !audio_) continue;
    // Video ahead of the start was counted by PlanVideo.
    if (c.video && i < video_start_) continue;
    if (!c.video && i < audio_start_) {
      ++report_.skipped_audio;
      continue;
    }
    if (reader_.ReadChunk(i, &frame) != 0) return Fail(reader_.Error());
    int ret = c.video ? WriteVideo(frame) : WriteAudio(frame);
    if (ret != 0) return ret;
  }
  if (encode_) {
    int ret = encoder_->Flush([this](AVPacket* p) { return WriteEncoded(p); });
    if (ret < 0) return FailAv("cannot encode the audio", ret);
  }
  return 0;
}

int CAviConverter::WriteVideo(const std::vector<uint8_t>& frame) {
  bool h264 = report_.video_codec == "h264";
  int64_t pts = video_pts_++;
  // A frame that is not Annex-B cannot go into the output (the muxers check).
  if (h264 && !StartsWithStartCode(frame)) {
    ++report_.skipped_video;
    return 0;
  }
  bool key = h264 ? frame_probe::H264IsKeyFrame(frame.data(), frame.size())
                  : frame_probe::Mpeg4IsKeyFrame(frame.data(), frame.size());
  int ret = WritePacket(video_stream_, frame.data(), frame.size(), pts, 1, key);
  if (ret == 0) ++report_.video_frames;
  return ret;
}

int CAviConverter::WriteAudio(std::vector<uint8_t>& frame) {
  if (audio_codec_id_ == AV_CODEC_ID_AAC) return WriteAac(frame);
  return WriteG711(frame);
}

int CAviConverter::WriteG711(const std::vector<uint8_t>& frame) {
  int samples = static_cast<int>(frame.size()) / channels_;
  if (samples == 0) {
    ++report_.skipped_audio;
    return 0;
  }
  ++report_.audio_frames;
  int64_t pts = audio_pts_;
  audio_pts_ += samples;
  if (!encode_) {
    return WritePacket(audio_stream_, frame.data(), static_cast<size_t>(samples) * channels_, pts,
                       samples, true);
  }
  pcm_.resize(static_cast<size_t>(samples) * channels_);
  bool alaw = audio_codec_id_ == AV_CODEC_ID_PCM_ALAW;
  for (size_t i = 0; i < pcm_.size(); ++i) {
    pcm_[i] = alaw ? frame_probe::AlawToLinear(frame[i]) : frame_probe::MulawToLinear(frame[i]);
  }
  int ret = encoder_->Push(pcm_.data(), samples, [this](AVPacket* p) { return WriteEncoded(p); });
  return ret < 0 ? FailAv("cannot encode the audio", ret) : 0;
}

int CAviConverter::WriteAac(const std::vector<uint8_t>& frame) {
  if (!adts_) {
    ++report_.audio_frames;
    return WriteAacFrame(frame.data(), frame.size());
  }
  // One chunk may hold several ADTS frames; each goes out without its header.
  if (!frame_probe::IsAdtsStream(frame.data(), frame.size())) {
    ++report_.skipped_audio;
    return 0;
  }
  ++report_.audio_frames;
  frame_probe::Adts h;
  for (size_t at = 0; at < frame.size(); at += h.frame_size) {
    frame_probe::ParseAdts(frame.data() + at, frame.size() - at, &h);
    int ret = WriteAacFrame(frame.data() + at + h.header_size, h.frame_size - h.header_size);
    if (ret != 0) return ret;
  }
  return 0;
}

int CAviConverter::WriteAacFrame(const uint8_t* data, size_t size) {
  int64_t pts = audio_pts_;
  audio_pts_ += frame_samples_;
  return WritePacket(audio_stream_, data, size, pts, frame_samples_, true);
}

int CAviConverter::WriteEncoded(AVPacket* encoded) {
  AVStream* st = oc_->streams[audio_stream_];
  encoded->stream_index = audio_stream_;
  av_packet_rescale_ts(encoded, AVRational{1, sample_rate_}, st->time_base);
  int ret = av_interleaved_write_frame(oc_, encoded);
  return ret < 0 ? ret : 0;
}

int CAviConverter::WritePacket(int stream, const uint8_t* data, size_t size, int64_t pts,
                               int64_t duration, bool key) {
  AVStream* st = oc_->streams[stream];
  int ret = av_new_packet(packet_, static_cast<int>(size));
  if (ret < 0) return FailAv("cannot make a packet", ret);
  memcpy(packet_->data, data, size);
  packet_->stream_index = stream;
  packet_->pts = pts;
  packet_->dts = pts;
  packet_->duration = duration;
  if (key) packet_->flags |= AV_PKT_FLAG_KEY;
  AVRational source = stream == video_stream_ ? AVRational{video_scale_, video_rate_}
                                              : AVRational{1, sample_rate_};
  av_packet_rescale_ts(packet_, source, st->time_base);
  ret = av_interleaved_write_frame(oc_, packet_);
  if (ret < 0) return FailAv("cannot write a frame", ret);
  return 0;
}

// CAviConverter: what to write (plan) and the output file.
#include "stream/avi_converter.h"

#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/mem.h>
}

#include "base/debug_log.h"
#include "stream/aac_encoder.h"
#include "stream/avi_header.h"
#include "stream/frame_probe.h"
#include "stream/h264_nal.h"

namespace {

// Enough G.711 bytes to tell the law: two seconds at 8 kHz.
const size_t kLawProbeBytes = 16000;

// The muxer for an output name, by extension; null when not one of ours.
const char* ContainerFor(const std::string& path) {
  static const struct {
    const char* extension;
    const char* format;
  } kContainers[] = {{".avi", "avi"}, {".mp4", "mp4"}, {".mov", "mov"}, {".mkv", "matroska"}};
  size_t slash = path.find_last_of('/');
  size_t dot = path.find_last_of('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return nullptr;
  std::string extension = path.substr(dot);
  for (const auto& c : kContainers) {
    if (strcasecmp(extension.c_str(), c.extension) == 0) return c.format;
  }
  return nullptr;
}

bool SameFile(const std::string& a, const std::string& b) {
  struct stat sa, sb;
  return stat(a.c_str(), &sa) == 0 && stat(b.c_str(), &sb) == 0 && sa.st_dev == sb.st_dev &&
         sa.st_ino == sb.st_ino;
}

std::string AvErrorText(int error) {
  char text[AV_ERROR_MAX_STRING_SIZE] = {0};
  av_strerror(error, text, sizeof(text));
  return text;
}

// Copies bytes into codec parameters' extradata (padded as libav wants).
int SetExtradata(AVCodecParameters* par, const std::vector<uint8_t>& bytes) {
  if (bytes.empty()) return 0;
  par->extradata = static_cast<uint8_t*>(av_mallocz(bytes.size() + AV_INPUT_BUFFER_PADDING_SIZE));
  if (par->extradata == nullptr) return AVERROR(ENOMEM);
  memcpy(par->extradata, bytes.data(), bytes.size());
  par->extradata_size = static_cast<int>(bytes.size());
  return 0;
}

}  // namespace

CAviConverter::CAviConverter(const AviConvertOptions& options) : options_(options) {}

CAviConverter::~CAviConverter() { Cleanup(); }

int CAviConverter::Fail(const std::string& text) {
  error_ = text;
  QV_LOG("[%s:%d]convert failed: %s\n", text.c_str());
  return -1;
}

int CAviConverter::FailAv(const std::string& what, int av_error) {
  return Fail(what + ": " + AvErrorText(av_error));
}

void CAviConverter::Cleanup() {
  if (oc_ != nullptr) {
    if (oc_->pb != nullptr) avio_closep(&oc_->pb);
    avformat_free_context(oc_);
    oc_ = nullptr;
  }
  av_packet_free(&packet_);
  encoder_.reset();
  reader_.Close();
}

int CAviConverter::Convert(const std::string& in, const std::string& out) {
  report_ = AviConvertReport();
  error_.clear();
  video_ = audio_ = adts_ = encode_ = false;
  video_start_ = audio_start_ = 0;
  video_pts_ = audio_pts_ = 0;
  video_stream_ = audio_stream_ = -1;
  out_path_.clear();
  const char* container = ContainerFor(out);
  if (container == nullptr) {
    return Fail("unsupported output type for " + out + " (use .avi, .mp4, .mov or .mkv)");
  }
  report_.container = container;
  if (SameFile(in, out)) return Fail("the output would overwrite the input");
  if (reader_.Open(in) != 0) return Fail(reader_.Error());
  report_.recovered = !reader_.HasIndex();
  report_.damage = reader_.Damage();
  if (reader_.VideoChunks() == 0 && reader_.AudioChunks() == 0) {
    Cleanup();
    return Fail("no frames in the recording" +
                (report_.damage.empty() ? std::string() : " (" + report_.damage + ")"));
  }
  QV_LOG("[%s:%d]convert %s (%d video, %d audio chunks%s) to %s\n", in.c_str(),
         reader_.VideoChunks(), reader_.AudioChunks(), report_.recovered ? ", no index" : "",
         out.c_str());

  int ret = PlanVideo();
  if (ret == 0) ret = PlanAudio();
  if (ret == 0) ret = OpenOutput(out);
  if (ret == 0) ret = WriteChunks();
  if (ret == 0) {
    int av = av_write_trailer(oc_);
    if (av < 0) ret = FailAv("cannot finish " + out, av);
  }
  if (ret == 0 && oc_->pb != nullptr) {
    int av = avio_closep(&oc_->pb);
    if (av < 0) ret = FailAv("cannot close " + out, av);
  }
  Cleanup();
  if (ret != 0) {
    if (!out_path_.empty()) unlink(out_path_.c_str());
    return -1;
  }
  double video_seconds = report_.frame_rate > 0 ? video_pts_ / report_.frame_rate : 0;
  double audio_seconds = sample_rate_ > 0 ? static_cast<double>(audio_pts_) / sample_rate_ : 0;
  report_.seconds = video_seconds > audio_seconds ? video_seconds : audio_seconds;
  QV_LOG("[%s:%d]converted: %d video frames, %d audio frames\n", report_.video_frames,
         report_.audio_frames);
  return 0;
}

int CAviConverter::PlanVideo() {
  const AviStreamInfo& info = reader_.Info();
  if (reader_.VideoChunks() == 0) return 0;
  bool h264 = info.video_codec == kAviVideoH264;
  const std::vector<AviChunk>& chunks = reader_.Chunks();
  std::vector<uint8_t> frame;
  // A recording started before its stream's codec was known is marked
  // MPEG-4 whatever it holds: its first frame tells.
  if (!h264) {
    for (size_t i = 0; i < chunks.size(); ++i) {
      if (!chunks[i].video) continue;
      if (reader_.ReadChunk(i, &frame) != 0) return Fail(reader_.Error());
      CH264ParamSets sets;
      sets.Learn(frame.data(), frame.size());
      h264 = frame_probe::Mpeg4ConfigLength(frame.data(), frame.size()) == 0 && sets.Known() &&
             frame_probe::H264IsKeyFrame(frame.data(), frame.size());
      break;
    }
  }
  for (size_t i = 0; i < chunks.size() && !video_; ++i) {
    if (!chunks[i].video) continue;
    if (reader_.ReadChunk(i, &frame) != 0) return Fail(reader_.Error());
    if (h264) {
      CH264ParamSets sets;
      sets.Learn(frame.data(), frame.size());
      video_config_ = sets.AnnexB();
      video_ = sets.Known() && frame_probe::H264IsKeyFrame(frame.data(), frame.size());
    } else {
      size_t config = frame_probe::Mpeg4ConfigLength(frame.data(), frame.size());
      video_config_.assign(frame.begin(), frame.begin() + static_cast<long>(config));
      video_ = config > 0 && frame_probe::Mpeg4IsKeyFrame(frame.data(), frame.size());
    }
    if (video_) {
      video_start_ = i;
    } else {
      ++report_.skipped_video;
    }
  }
  if (!video_) {
    return Fail(std::string("no video key frame with its ") +
                (h264 ? "SPS and PPS" : "VOL header") + " in the recording");
  }
  video_rate_ = options_.frame_rate > 0 ? options_.frame_rate : info.rate;
  video_scale_ = options_.frame_rate > 0 ? 1 : info.scale;
  report_.video_codec = h264 ? "h264" : "mpeg4";
  report_.width = info.width;
  report_.height = info.height;
  report_.frame_rate = static_cast<double>(video_rate_) / video_scale_;
  return 0;
}

int CAviConverter::PlanAudio() {
  const AviStreamInfo& info = reader_.Info();
  if (!info.has_audio || reader_.AudioChunks() == 0) return 0;
  sample_rate_ = info.sample_rate;
  channels_ = info.channels;
  // Audio starts with the frame just ahead of the first video frame; that
  // first frame tells the stored form.
  const std::vector<AviChunk>& chunks = reader_.Chunks();
  size_t first = video_ ? video_start_ : 0;
  for (size_t i = first; video_ && i > 0; --i) {
    if (!chunks[i - 1].video) {
      first = i - 1;
      break;
    }
  }
  while (first < chunks.size() && chunks[first].video) ++first;
  if (first == chunks.size()) return 0;  // no audio from the first video frame on
  audio_start_ = first;

  std::vector<uint8_t> probe, frame;
  if (info.audio_codec == kAviAudioG711) {
    int law = options_.g711_law;
    if (law == kG711Auto) {
      for (size_t i = first; i < chunks.size() && probe.size() < kLawProbeBytes; ++i) {
        if (chunks[i].video) continue;
        if (reader_.ReadChunk(i, &frame) != 0) return Fail(reader_.Error());
        probe.insert(probe.end(), frame.begin(), frame.end());
      }
      law = frame_probe::G711LooksALaw(probe.data(), probe.size()) ? kG711ALaw : kG711MuLaw;
    }
    // G.711 is 8 kHz; a recording that did not know says 0.
    if (sample_rate_ <= 0) sample_rate_ = 8000;
    if (channels_ <= 0) channels_ = 1;
    audio_codec_id_ = law == kG711ALaw ? AV_CODEC_ID_PCM_ALAW : AV_CODEC_ID_PCM_MULAW;
    report_.audio_in = law == kG711ALaw ? "pcm_alaw" : "pcm_mulaw";
  } else {
    audio_codec_id_ = AV_CODEC_ID_AAC;
    if (reader_.ReadChunk(first, &frame) != 0) return Fail(reader_.Error());
    frame_probe::Adts adts;
    adts_ = frame_probe::IsAdtsStream(frame.data(), frame.size()) &&
            frame_probe::ParseAdts(frame.data(), frame.size(), &adts);
    if (adts_) {
      sample_rate_ = frame_probe::AacSampleRate(adts.sample_rate_index);
      channels_ = adts.channel_config == 7 ? 8 : adts.channel_config;
      audio_config_ = frame_probe::AacConfig(adts.object_type, sample_rate_, channels_);
    } else if (!options_.aac_config.empty()) {
      audio_config_ = options_.aac_config;
      if (sample_rate_ <= 0 || channels_ <= 0) {
        frame_probe::AacConfigFacts(audio_config_.data(), audio_config_.size(), &sample_rate_,
                                    &channels_);
      }
    } else {
      audio_config_ = frame_probe::AacConfig(2, sample_rate_, channels_);
    }
    if (audio_config_.empty() || sample_rate_ <= 0 || channels_ <= 0) {
      return Fail("cannot describe the AAC audio (rate or channels)");
    }
    frame_samples_ = frame_probe::AacFrameSamples(audio_config_.data(), audio_config_.size());
    report_.audio_in = adts_ ? "aac (ADTS)" : "aac";
  }
  audio_ = true;
  report_.audio_out = report_.audio_in == "aac (ADTS)" ? "aac" : report_.audio_in;
  return 0;
}

int CAviConverter::OpenOutput(const std::string& out) {
  int ret = avformat_alloc_output_context2(&oc_, nullptr, report_.container.c_str(), out.c_str());
  if (ret < 0 || oc_ == nullptr) return FailAv("cannot set up the " + report_.container + " output", ret);
  packet_ = av_packet_alloc();
  if (packet_ == nullptr) return Fail("out of memory");
  if (video_ && (ret = AddVideoStream()) != 0) return ret;
  if (audio_ && (ret = AddAudioStream()) != 0) return ret;
  ret = avio_open(&oc_->pb, out.c_str(), AVIO_FLAG_WRITE);
  if (ret < 0) return FailAv("cannot create " + out, ret);
  out_path_ = out;
  ret = avformat_write_header(oc_, nullptr);
  if (ret < 0) return FailAv("cannot write the " + report_.container + " header", ret);
  return 0;
}

int CAviConverter::AddVideoStream() {
  AVStream* st = avformat_new_stream(oc_, nullptr);
  if (st == nullptr) return Fail("out of memory");
  AVCodecParameters* par = st->codecpar;
  par->codec_type = AVMEDIA_TYPE_VIDEO;
  par->codec_id = report_.video_codec == "h264" ? AV_CODEC_ID_H264 : AV_CODEC_ID_MPEG4;
  par->width = report_.width;
  par->height = report_.height;
  par->bit_rate = reader_.Info().bit_rate;
  if (SetExtradata(par, video_config_) != 0) return Fail("out of memory");
  st->time_base = AVRational{video_scale_, video_rate_};
  st->avg_frame_rate = AVRational{video_rate_, video_scale_};
  st->r_frame_rate = st->avg_frame_rate;
  video_stream_ = st->index;
  return 0;
}

int CAviConverter::AddAudioStream() {
  AVCodecID id = static_cast<AVCodecID>(audio_codec_id_);
  if (id != AV_CODEC_ID_AAC && avformat_query_codec(oc_->oformat, id, FF_COMPLIANCE_NORMAL) != 1) {
    encoder_.reset(new CAacEncoder());
    int ret = encoder_->Open(sample_rate_, channels_);
    if (ret < 0) return FailAv("cannot open the AAC encoder", ret);
    encode_ = true;
    audio_config_ = encoder_->Config();
    frame_samples_ = encoder_->FrameSamples();
    report_.audio_out = "aac";
    id = AV_CODEC_ID_AAC;
  }
  AVStream* st = avformat_new_stream(oc_, nullptr);
  if (st == nullptr) return Fail("out of memory");
  AVCodecParameters* par = st->codecpar;
  par->codec_type = AVMEDIA_TYPE_AUDIO;
  par->codec_id = id;
  par->sample_rate = sample_rate_;
  av_channel_layout_default(&par->ch_layout, channels_);
  if (id == AV_CODEC_ID_AAC) {
    par->frame_size = frame_samples_;
    if (SetExtradata(par, audio_config_) != 0) return Fail("out of memory");
  } else {
    par->bits_per_coded_sample = 8;
    par->block_align = channels_;
    par->bit_rate = 8LL * sample_rate_ * channels_;
  }
  st->time_base = AVRational{1, sample_rate_};
  audio_stream_ = st->index;
  return 0;
}

#include "stream/av_stream_source.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/error.h>
#include <libavutil/log.h>
}

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>

#include "base/compat.h"
#include "base/debug_log.h"
#include "base/time_scale.h"
#include "stream/pull_class.h"
#include "stream/stream_address.h"

namespace {
const unsigned long kRetryPauseMs = 3000;

void CopyText(char* dst, size_t size, const char* src) {
  snprintf(dst, size, "%s", src != nullptr ? src : "");
}

// An MPEG-4 Part 2 frame is a key frame when its VOP is intra coded.
bool Mpeg4IsKeyFrame(const uint8_t* data, size_t size) {
  for (size_t i = 0; i + 4 < size; ++i) {
    if (data[i] == 0 && data[i + 1] == 0 && data[i + 2] == 1 && data[i + 3] == 0xB6)
      return (data[i + 4] >> 6) == 0;
  }
  return false;
}

// The configuration headers (VOS, VO, VOL) ahead of the first VOP.
size_t Mpeg4HeaderLength(const uint8_t* data, size_t size) {
  if (size < 4 || data[0] != 0 || data[1] != 0 || data[2] != 1 || data[3] == 0xB6) return 0;
  for (size_t i = 0; i + 3 < size; ++i) {
    if (data[i] == 0 && data[i + 1] == 0 && data[i + 2] == 1 && data[i + 3] == 0xB6) return i;
  }
  return 0;
}
// libav's own messages (warnings and worse) go to the library's log instead
// of the host's standard error.
void AvLogToDebugLog(void*, int level, const char* fmt, va_list args) {
  if (level > AV_LOG_WARNING) return;
  char text[512];
  vsnprintf(text, sizeof(text), fmt, args);
  size_t len = strlen(text);
  while (len > 0 && text[len - 1] == '\n') text[--len] = '\0';
  QV_LOG("[%s:%d]libav: %s", text);
}

std::once_flag g_av_log_once;
}  // namespace

CAvStreamSource::CAvStreamSource(CPullClass* pull) : pull_(pull) {
  std::call_once(g_av_log_once, [] { av_log_set_callback(AvLogToDebugLog); });
}

CAvStreamSource::~CAvStreamSource() { Close(); }

bool CAvStreamSource::Stopping() const { return pull_->StopFlag(); }

int CAvStreamSource::InterruptCallback(void* opaque) {
  return static_cast<CAvStreamSource*>(opaque)->Stopping() ? 1 : 0;
}

void CAvStreamSource::Run() {
  QV_LOG("[%s:%d]stream source start, url=%s", pull_->Address().c_str());
  Outcome outcome = kRetry;
  while (!Stopping()) {
    outcome = Session();
    if (outcome != kRetry || !pull_->AutoReconnect()) break;
    unsigned long start = GetTickCount();
    while (!Stopping() && GetTickCount() - start < ScaledMs(kRetryPauseMs)) SleepMs(20);
  }
  // A host that stops the stream learns nothing new from an event; a stream
  // that ends by itself (watchdog, refused address) is reported.
  bool by_host = pull_->StoppedByHost();
  QV_LOG("[%s:%d]stream source exit, url=%s", pull_->Address().c_str());
  if (!by_host) pull_->ReportStatus(EVENT_RTSPTHREADEXIT, pull_->Address().c_str());
}

int CAvStreamSource::Open(const std::string& url) {
  ctx_ = avformat_alloc_context();
  if (ctx_ == nullptr) return AVERROR(ENOMEM);
  ctx_->interrupt_callback.callback = &CAvStreamSource::InterruptCallback;
  ctx_->interrupt_callback.opaque = this;
  ctx_->max_analyze_duration = AV_TIME_BASE;  // 1 s of stream to learn the parameters
  AVDictionary* options = nullptr;
  av_dict_set(&options, "rtsp_transport", pull_->LinkMode() == QV_LINK_UDP ? "udp" : "tcp", 0);
  char timeout[32];
  snprintf(timeout, sizeof(timeout), "%d", kIoTimeoutMs * 1000);  // microseconds
  av_dict_set(&options, "timeout", timeout, 0);
  int ret = avformat_open_input(&ctx_, url.c_str(), nullptr, &options);
  av_dict_free(&options);
  if (ret < 0) return ret;  // the context is freed on failure
  // Learning the stream reads its first frames (up to a second of them, or
  // until the I/O time-out when nothing comes), however long a busy machine
  // takes for it.
  ret = avformat_find_stream_info(ctx_, nullptr);
  // The session is up: from now on the watchdog expects frames, also from a
  // camera that never sends one.
  if (pull_->LastDataTick() == 0) pull_->SetLastDataTick(GetTickCount());
  if (ret < 0) QV_LOG("[%s:%d]no stream information from %s", pull_->Address().c_str());
  return ret < 0 ? ret : 0;
}

void CAvStreamSource::Close() {
  if (ctx_ != nullptr) avformat_close_input(&ctx_);
  video_index_ = audio_index_ = -1;
}

CAvStreamSource::Outcome CAvStreamSource::Session() {
  const std::string& address = pull_->Address();
  std::string url = AddressWithCredentials(address, pull_->UserName(), pull_->Password());
  int ret = Open(url);
  if (ret < 0) {
    Close();
    if (Stopping()) return kStopped;
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(ret, text, sizeof(text));
    QV_LOG("[%s:%d]open %s failed: %s", address.c_str(), text);
    if (ret == AVERROR_PROTOCOL_NOT_FOUND || ret == AVERROR(EINVAL)) {
      pull_->ReportStatus(EVENT_URLERROR, address.c_str());
      return kGiveUp;
    }
    bool refused = ret == AVERROR(EPERM) || ret == AVERROR(EACCES) ||
                   ret == AVERROR_HTTP_UNAUTHORIZED || ret == AVERROR_HTTP_FORBIDDEN;
    pull_->ReportStatus(refused ? EVENT_RTSP_AUTHERROR : EVENT_CONNECTRTSPERROR, address.c_str());
    return kRetry;
  }
  pull_->ReportStatus(EVENT_CONNECTRTSPOK, address.c_str());
  LearnParams();
  clock_.Restart();
  DeliverParams();

  AVPacket* packet = av_packet_alloc();
  Outcome outcome = kRetry;
  while (packet != nullptr) {
    ret = av_read_frame(ctx_, packet);
    if (Stopping()) {
      outcome = kStopped;
      break;
    }
    if (ret < 0) {
      char text[AV_ERROR_MAX_STRING_SIZE] = {};
      av_strerror(ret, text, sizeof(text));
      QV_LOG("[%s:%d]read %s: %s", address.c_str(), text);
      pull_->ReportStatus(EVENT_CONNECTRTSPERROR, address.c_str());
      break;
    }
    if (packet->stream_index == video_index_) {
      DeliverVideo(packet);
    } else if (packet->stream_index == audio_index_) {
      DeliverAudio(packet);
    }
    av_packet_unref(packet);
  }
  av_packet_free(&packet);
  Close();
  return outcome;
}

void CAvStreamSource::LearnParams() {
  memset(&param_, 0, sizeof(param_));
  h264_sets_ = CH264ParamSets();
  nal_length_size_ = 0;
  video_index_ = av_find_best_stream(ctx_, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  audio_index_ = av_find_best_stream(ctx_, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
  if (video_index_ < 0) video_index_ = -1;
  if (audio_index_ < 0) audio_index_ = -1;
  for (unsigned i = 0; i < ctx_->nb_streams; ++i) {
    int index = static_cast<int>(i);
    if (index != video_index_ && index != audio_index_) ctx_->streams[i]->discard = AVDISCARD_ALL;
  }

  if (video_index_ >= 0) {
    AVStream* st = ctx_->streams[video_index_];
    AVCodecParameters* par = st->codecpar;
    QV_VIDEO_PARAM& v = param_.video;
    video_codec_ = par->codec_id;
    const char* name = par->codec_id == AV_CODEC_ID_H264    ? "H264"
                       : par->codec_id == AV_CODEC_ID_MPEG4 ? "MPEG4"
                                                            : avcodec_get_name(par->codec_id);
    CopyText(v.codec, sizeof(v.codec), name);
    v.width = par->width;
    v.height = par->height;
    AVRational rate = st->avg_frame_rate.num > 0 ? st->avg_frame_rate : st->r_frame_rate;
    if (rate.num > 0 && rate.den > 0)
      v.frame_rate = static_cast<int>((static_cast<int64_t>(rate.num) + rate.den / 2) / rate.den);
    // Otherwise the rate is told from the frames' time stamps.
    if (!CFrameRateProbe::Plausible(v.frame_rate)) v.frame_rate = 0;
    rate_probe_.Reset();
    v.bit_rate = par->bit_rate > 0 && par->bit_rate < INT32_MAX ? static_cast<int>(par->bit_rate) : 0;
    const uint8_t* extra = par->extradata;
    size_t extra_size = par->extradata != nullptr ? static_cast<size_t>(par->extradata_size) : 0;
    std::vector<uint8_t> config;
    if (par->codec_id == AV_CODEC_ID_H264) {
      if (extra_size > 0 && extra[0] == 1) {
        config = AvcConfigToAnnexB(extra, extra_size, &nal_length_size_);
      } else {
        config.assign(extra, extra + extra_size);
      }
      h264_sets_.Learn(config.data(), config.size());
      config = h264_sets_.AnnexB();
    } else {
      config.assign(extra, extra + extra_size);
    }
    if (config.size() <= sizeof(v.config)) {
      memcpy(v.config, config.data(), config.size());
      v.config_len = static_cast<int>(config.size());
    }
  }

  if (audio_index_ >= 0) {
    AVCodecParameters* par = ctx_->streams[audio_index_]->codecpar;
    QV_AUDIO_PARAM& a = param_.audio;
    const char* name = par->codec_id == AV_CODEC_ID_PCM_MULAW  ? "G711U"
                       : par->codec_id == AV_CODEC_ID_PCM_ALAW ? "G711A"
                       : par->codec_id == AV_CODEC_ID_AAC      ? "AAC"
                                                               : avcodec_get_name(par->codec_id);
    CopyText(a.codec, sizeof(a.codec), name);
    a.sample_rate = par->sample_rate;
    a.channels = par->ch_layout.nb_channels;
    a.bits_per_sample = par->codec_id == AV_CODEC_ID_AAC ? 16 : 8;
    a.bit_rate = par->bit_rate > 0 && par->bit_rate < INT32_MAX ? static_cast<int>(par->bit_rate) : 0;
    if (par->extradata != nullptr && par->extradata_size > 0 &&
        static_cast<size_t>(par->extradata_size) <= sizeof(a.config)) {
      memcpy(a.config, par->extradata, static_cast<size_t>(par->extradata_size));
      a.config_len = par->extradata_size;
    }
  }
}

void CAvStreamSource::DeliverParams() {
  if (Stopping()) return;
  QV_LOG("[%s:%d]stream params: video %s %dx%d %d fps, audio %s %d Hz %d ch",
         param_.video.codec, param_.video.width, param_.video.height, param_.video.frame_rate,
         param_.audio.codec, param_.audio.sample_rate, param_.audio.channels);
  pull_->OnGetAvParam(param_, 0);
  pull_->ReportStatus(EVENT_RECVVIDEOAUDIOPARAM, pull_->Address().c_str());
}

double CAvStreamSource::StampMs(AVPacket* packet, unsigned long now, CStreamClock::Medium medium) {
  int64_t t = packet->pts != AV_NOPTS_VALUE ? packet->pts : packet->dts;
  int64_t ms = t == AV_NOPTS_VALUE ? 0
                                   : av_rescale_q(t, ctx_->streams[packet->stream_index]->time_base,
                                                  AVRational{1, 1000});
  return clock_.Map(ms, t != AV_NOPTS_VALUE, now, medium);
}

void CAvStreamSource::DeliverVideo(AVPacket* packet) {
  if (packet->size <= 0 || Stopping()) return;
  const uint8_t* data = packet->data;
  size_t size = static_cast<size_t>(packet->size);
  int key = (packet->flags & AV_PKT_FLAG_KEY) ? 1 : 0;

  if (video_codec_ == AV_CODEC_ID_H264) {
    if (nal_length_size_ > 0) {
      if (!LengthPrefixedToAnnexB(data, size, nal_length_size_, &scratch_)) return;
      data = scratch_.data();
      size = scratch_.size();
    }
    // Most frames are told by the units ahead of their first slice. A key
    // frame without parameter sets there is walked whole, as they may
    // stand between its slices (with sets ahead, Learn walks it anyway).
    NalLead lead = ScanToFirstSlice(data, size);
    bool idr = lead.slice_type == 5;
    bool sets = lead.sets;
    if ((idr || key) && !sets) {
      CNalScanner scanner(data, size);
      NalUnit unit;
      while (scanner.Next(&unit)) {
        idr |= unit.type == 5;
        sets |= unit.type == 7 || unit.type == 8;
      }
    }
    key = (idr || key) ? 1 : 0;
    if (sets && h264_sets_.Learn(data, size)) {
      std::vector<uint8_t> sets = h264_sets_.AnnexB();
      if (sets.size() <= sizeof(param_.video.config)) {
        memset(param_.video.config, 0, sizeof(param_.video.config));
        memcpy(param_.video.config, sets.data(), sets.size());
        param_.video.config_len = static_cast<int>(sets.size());
        DeliverParams();
      }
    }
    if (key && h264_sets_.CompleteKeyFrame(data, size, &frame_)) {
      data = frame_.data();
      size = frame_.size();
    }
  } else if (video_codec_ == AV_CODEC_ID_MPEG4) {
    key = Mpeg4IsKeyFrame(data, size) ? 1 : 0;
    if (param_.video.config_len == 0) {
      size_t header = Mpeg4HeaderLength(data, size);
      if (header > 0 && header <= sizeof(param_.video.config)) {
        memcpy(param_.video.config, data, header);
        param_.video.config_len = static_cast<int>(header);
        DeliverParams();
      }
    }
  }
  if (size > static_cast<size_t>(INT32_MAX) || Stopping()) return;
  // One clock reading per frame serves its stamp and the watchdog.
  unsigned long now = GetTickCount();
  double ts = StampMs(packet, now, CStreamClock::kVideo);
  if (param_.video.frame_rate == 0) {
    // A run of frames is timed by one clock: the source's stamps or the
    // arrival of frames that had none.
    if (clock_.LastVideoStamped() != probe_stamped_) {
      rate_probe_.Reset();
      probe_stamped_ = clock_.LastVideoStamped();
    }
    int fps = rate_probe_.Add(ts);
    if (fps > 0) {
      param_.video.frame_rate = fps;
      DeliverParams();
    }
  }
  pull_->SetLastDataTick(now);
  pull_->OnGetVideoFrame(const_cast<uint8_t*>(data), static_cast<int>(size), key, ts);
}

void CAvStreamSource::DeliverAudio(AVPacket* packet) {
  if (packet->size <= 0 || Stopping()) return;
  unsigned long now = GetTickCount();
  double ts = StampMs(packet, now, CStreamClock::kAudio);
  pull_->SetLastDataTick(now);
  pull_->OnGetAudioFrame(packet->data, packet->size, 0, ts);
}

#include "link/replay_param.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>

#include "base/base64.h"

namespace {

const int kLegacyVideoBelow = 316;
const int kLegacyAudioBelow = 56;
const int kCodecBytes = 32;
const int kFieldsBytes = kCodecBytes + 5 * 4;  // codec and five ints ahead of the config area

int ReadInt(const unsigned char* p) {
  int v;
  memcpy(&v, p, sizeof v);
  return v;
}

// The fields every block form shares: codec, five ints, then a config area
// of the block's remaining bytes, of which config_len are used.
struct BlockFields {
  char codec[32];
  int values[5];
  const unsigned char* config;
  int config_len;
};

BlockFields ReadBlock(const unsigned char* block, int len) {
  BlockFields f;
  memcpy(f.codec, block, kCodecBytes);
  f.codec[kCodecBytes - 1] = '\0';
  for (int i = 0; i < 5; ++i) f.values[i] = ReadInt(block + kCodecBytes + 4 * i);
  f.config = block + kFieldsBytes;
  int area = len - kFieldsBytes;
  f.config_len = std::max(0, std::min(f.values[4], area));
  return f;
}

void ConvertVideo(const unsigned char* block, int len, QV_VIDEO_PARAM* out) {
  BlockFields f = ReadBlock(block, len);
  memcpy(out->codec, f.codec, sizeof(out->codec));
  out->width = f.values[0];
  out->height = f.values[1];
  out->frame_rate = f.values[2];
  out->bit_rate = f.values[3];
  out->config_len = std::min(f.config_len, static_cast<int>(sizeof(out->config)));
  memcpy(out->config, f.config, static_cast<size_t>(out->config_len));
}

void ConvertAudio(const unsigned char* block, int len, QV_AUDIO_PARAM* out) {
  BlockFields f = ReadBlock(block, len);
  memcpy(out->codec, f.codec, sizeof(out->codec));
  out->sample_rate = f.values[0];
  out->bits_per_sample = f.values[1];
  out->channels = f.values[2];
  out->bit_rate = f.values[3];
  out->config_len = std::min(f.config_len, static_cast<int>(sizeof(out->config)));
  memcpy(out->config, f.config, static_cast<size_t>(out->config_len));
}

bool UsableAudio(const QV_AUDIO_PARAM& a) {
  return a.channels >= 1 && a.channels <= 8 && a.bits_per_sample > 8 &&
         a.bits_per_sample % 8 == 0 && a.sample_rate >= 8000 && a.sample_rate % 1000 == 0;
}

}  // namespace

void MakeReplayParam(const unsigned char* video, int video_len, const unsigned char* audio,
                     int audio_len, int video_seconds, QV_REPLAY_PARAM* out) {
  memset(out, 0, sizeof(*out));
  out->video_seconds = video_seconds;
  out->video_size = video_len;
  out->audio_size = audio_len;
  if (video_len >= kLegacyVideoBelow) {
    ConvertVideo(video, video_len, &out->av.video);
  } else if (video_len > 0) {
    memcpy(out->legacy_video, video, static_cast<size_t>(video_len));
  }
  if (audio_len >= kLegacyAudioBelow) {
    ConvertAudio(audio, audio_len, &out->av.audio);
    out->audio_valid = UsableAudio(out->av.audio) ? 1 : 0;
    if (!out->audio_valid) memset(&out->av.audio, 0, sizeof(out->av.audio));
  } else if (audio_len > 0) {
    memcpy(out->legacy_audio, audio, static_cast<size_t>(audio_len));
  }
}

unsigned char* DecodeParamBlock(const char* text, int* len) {
  *len = 0;
  if (text == nullptr) return nullptr;
  size_t chars = strlen(text);
  unsigned char* out = new (std::nothrow) unsigned char[chars * 3 / 4 + 4];
  if (out == nullptr) return nullptr;
  CBase64 codec;
  *len = codec.Decode(text, out, static_cast<int>(chars));
  return out;
}

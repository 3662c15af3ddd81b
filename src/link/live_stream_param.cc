#include "link/live_stream_param.h"

#include <arpa/inet.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/debug_log.h"
#include "link/xml_util.h"

namespace {

bool Is(const TiXmlAttribute* a, const char* name) { return strcmp(a->Name(), name) == 0; }

bool Empty(const TiXmlAttribute* a) { return a->Value() == nullptr || a->Value()[0] == '\0'; }

// TRANS_PARAM. False (logged) when a known attribute has no value.
bool ReadTransport(const TiXmlElement* trans, LIVE_STREAM_PARAM* p) {
  for (const TiXmlAttribute* a = trans->FirstAttribute(); a != nullptr; a = a->Next()) {
    const char* missing = nullptr;
    int value = atoi(a->Value());
    if (Is(a, "StreamID")) {
      missing = "StreamID";
      p->stream_id = value;
    } else if (Is(a, "VideoStream")) {
      missing = "VideoStream";
      p->video_stream = value;
    } else if (Is(a, "AudioEnable")) {
      missing = "AudioEnable";
      p->audio_enable = value;
    } else if (Is(a, "Multicast")) {
      missing = "Multicast";
      p->multicast = value;
    } else if (Is(a, "MulticastAddress")) {
      missing = "Multicast";
      p->multicast_address = inet_addr(a->Value());
    } else if (Is(a, "VideoPort")) {
      missing = "VideoPort";
      p->video_port = value;
    } else if (Is(a, "AudioPort")) {
      missing = "AudioPort";
      p->audio_port = value;
    } else if (Is(a, "UseTcp")) {
      p->use_tcp = value;
      continue;
    } else {
      continue;
    }
    if (Empty(a)) {
      QV_LOG("[%s:%d]GetLiveStreamParam(): %s not found!\n\n", missing);
      return false;
    }
  }
  return true;
}

// One attribute of VIDEO_PARAM or AUDIO_PARAM and where it goes.
struct MediaField {
  const char* name;
  int LIVE_STREAM_PARAM::*number;  // null for the two texts and Config
  char* (*text)(LIVE_STREAM_PARAM*);
};

static_assert(sizeof(LIVE_STREAM_PARAM::video_encoder) == sizeof(LIVE_STREAM_PARAM::audio_encoder),
              "both encoder texts have one size");
char* VideoEncoder(LIVE_STREAM_PARAM* p) { return p->video_encoder; }
char* AudioEncoder(LIVE_STREAM_PARAM* p) { return p->audio_encoder; }

const MediaField kVideoFields[] = {
    {"Encoder", nullptr, VideoEncoder},
    {"Width", &LIVE_STREAM_PARAM::width, nullptr},
    {"Height", &LIVE_STREAM_PARAM::height, nullptr},
    {"Framerate", &LIVE_STREAM_PARAM::frame_rate, nullptr},
    {"Bitrate", &LIVE_STREAM_PARAM::bit_rate, nullptr},
    {"Config", nullptr, nullptr},
};

const MediaField kAudioFields[] = {
    {"Encoder", nullptr, AudioEncoder},
    {"SampleRate", &LIVE_STREAM_PARAM::sample_rate, nullptr},
    {"SampleWidth", &LIVE_STREAM_PARAM::sample_width, nullptr},
    {"Channels", &LIVE_STREAM_PARAM::channels, nullptr},
    {"Bitrate", &LIVE_STREAM_PARAM::audio_bit_rate, nullptr},
};

// Reads the known attributes of a media element; unknown ones are printed
// and skipped. False (logged) when a known attribute has no value.
template <size_t N>
bool ReadMedia(const TiXmlElement* element, const MediaField (&fields)[N], LIVE_STREAM_PARAM* p) {
  for (const TiXmlAttribute* a = element->FirstAttribute(); a != nullptr; a = a->Next()) {
    const MediaField* field = nullptr;
    for (const MediaField& f : fields) {
      if (Is(a, f.name)) field = &f;
    }
    if (field == nullptr) {
      printf("%s=%s\n", a->Name(), a->Value());
      continue;
    }
    if (field->number != nullptr) {
      p->*(field->number) = atoi(a->Value());
    } else if (field->text != nullptr) {
      CopyText(field->text(p), sizeof(p->video_encoder), a->Value());
    } else {
      p->config_length = static_cast<int>(DecodeHex(a->Value(), p->config, sizeof(p->config)));
    }
    if (Empty(a)) {
      QV_LOG("[%s:%d]GetLiveStreamParam(): %s not found!\n\n", a->Name());
      return false;
    }
  }
  return true;
}

}  // namespace

int GetLiveStreamParam(char* message, LIVE_STREAM_PARAM* param) {
  if (param == nullptr) return -1;
  memset(param, 0, sizeof(*param));
  TiXmlDocument doc;
  if (!ParseXml(doc, message)) {
    QV_LOG("[%s:%d]GetLiveStreamParam xmlDoc.Error\n\n");
    return -1;
  }
  TiXmlNode* body = SelectNode(doc.RootElement(), "MESSAGE_BODY");
  TiXmlNode* trans_node = SelectNode(body, "TRANS_PARAM");
  TiXmlElement* trans = trans_node != nullptr ? trans_node->ToElement() : nullptr;
  if (trans == nullptr) {
    QV_LOG("[%s:%d]GetLiveStreamParam TRANS_PARAM fail\n\n");
    return -2;
  }
  if (!ReadTransport(trans, param)) return -1;
  if (param->use_tcp == 0) {
    if (param->multicast != 0 && param->multicast_address == 0) {
      QV_LOG("[%s:%d]multicast but no multicast address!\n\n");
      return -1;
    }
    if (param->audio_enable != 0 && param->audio_port == 0) {
      QV_LOG("[%s:%d]audioenable but no audio port!\n\n");
      return -1;
    }
  }
  TiXmlElement* video = trans->NextSiblingElement("VIDEO_PARAM");
  if (video == nullptr) {
    QV_LOG("[%s:%d]GetLiveStreamParam VIDEO_PARAM fail\n\n");
    return -2;
  }
  if (!ReadMedia(video, kVideoFields, param)) return -1;
  if (param->audio_enable != 0) {
    TiXmlElement* audio = video->NextSiblingElement("AUDIO_PARAM");
    if (audio == nullptr) {
      QV_LOG("[%s:%d]GetLiveStreamParam(): AUDIO_PARAM not found!\n\n");
      return -2;
    }
    if (!ReadMedia(audio, kAudioFields, param)) return -1;
  }
  return 0;
}

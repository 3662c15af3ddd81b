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

bool ReadVideo(const TiXmlElement* video, LIVE_STREAM_PARAM* p) {
  for (const TiXmlAttribute* a = video->FirstAttribute(); a != nullptr; a = a->Next()) {
    int value = atoi(a->Value());
    if (Is(a, "Encoder")) {
      CopyText(p->video_encoder, sizeof(p->video_encoder), a->Value());
    } else if (Is(a, "Width")) {
      p->width = value;
    } else if (Is(a, "Height")) {
      p->height = value;
    } else if (Is(a, "Framerate")) {
      p->frame_rate = value;
    } else if (Is(a, "Bitrate")) {
      p->bit_rate = value;
    } else if (Is(a, "Config")) {
      p->config_length = static_cast<int>(
          DecodeHex(a->Value(), p->config, sizeof(p->config)));
    } else {
      printf("%s=%s\n", a->Name(), a->Value());
      continue;
    }
    if (Empty(a)) {
      QV_LOG("[%s:%d]GetLiveStreamParam(): %s not found!\n\n", a->Name());
      return false;
    }
  }
  return true;
}

bool ReadAudio(const TiXmlElement* audio, LIVE_STREAM_PARAM* p) {
  for (const TiXmlAttribute* a = audio->FirstAttribute(); a != nullptr; a = a->Next()) {
    int value = atoi(a->Value());
    if (Is(a, "Encoder")) {
      CopyText(p->audio_encoder, sizeof(p->audio_encoder), a->Value());
    } else if (Is(a, "SampleRate")) {
      p->sample_rate = value;
    } else if (Is(a, "SampleWidth")) {
      p->sample_width = value;
    } else if (Is(a, "Channels")) {
      p->channels = value;
    } else if (Is(a, "Bitrate")) {
      p->audio_bit_rate = value;
    } else {
      printf("%s=%s\n", a->Name(), a->Value());
      continue;
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
  if (!ReadVideo(video, param)) return -1;
  if (param->audio_enable != 0) {
    TiXmlElement* audio = video->NextSiblingElement("AUDIO_PARAM");
    if (audio == nullptr) {
      QV_LOG("[%s:%d]GetLiveStreamParam(): AUDIO_PARAM not found!\n\n");
      return -2;
    }
    if (!ReadAudio(audio, param)) return -1;
  }
  return 0;
}

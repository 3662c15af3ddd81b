#include "config_sections.h"

#include "quorvel/quorvel.h"

namespace {

template <typename Record>
ConfigSection Section(const char* name, const char* element, long get_code, long (*get)(long),
                      int (*read)(Record*, const char*), char* (*write)(const Record*),
                      long set_code, long (*set)(long, const Record*)) {
  ConfigSection s;
  s.name = name;
  s.element = element;
  s.get_code = get_code;
  s.set_code = set_code;
  s.record_size = sizeof(Record);
  s.get = get;
  s.read = [read](void* r, const char* xml) { return read(static_cast<Record*>(r), xml); };
  s.write = [write](const void* r) { return write(static_cast<const Record*>(r)); };
  if (set != nullptr) {
    s.set = [set](long id, const void* r) { return set(id, static_cast<const Record*>(r)); };
  }
  return s;
}

std::vector<ConfigSection> MakeSections() {
  return {
      Section("media", "MediaConfig", QV_CFG_GET_MEDIA, IP_NET_DVR_GET_MediaConfig,
              IP_NET_DVR_GetMediaCfgByXml, IP_NET_DVR_XMLGET_MediaConfig, QV_CFG_SET_MEDIA,
              IP_NET_DVR_SET_MediaConfig),
      Section("video", "Video", QV_CFG_GET_VIDEO, IP_NET_DVR_GET_VideoConfig,
              IP_NET_DVR_Media_getVideoByXml, IP_NET_DVR_XMLGET_VideoConfig, QV_CFG_SET_VIDEO,
              IP_NET_DVR_SET_VideoConfig),
      Section("audio", "Audio", QV_CFG_GET_AUDIO, IP_NET_DVR_GET_AudioConfig,
              IP_NET_DVR_Media_getAudioByXml, IP_NET_DVR_XMLGET_AudioConfig, QV_CFG_SET_AUDIO,
              IP_NET_DVR_SET_AudioConfig),
      Section("video-encode", "Encode", QV_CFG_GET_VIDEO_ENCODE,
              IP_NET_DVR_GET_VideoEncodeConfig, IP_NET_DVR_Media_getVideoEncodeByXml,
              IP_NET_DVR_XMLGET_VideoEncodeConfig, QV_CFG_SET_VIDEO_ENCODE,
              IP_NET_DVR_SET_VideoEncodeConfig),
      Section("video-capture", "Capture", QV_CFG_GET_VIDEO_CAPTURE,
              IP_NET_DVR_GET_VideoCaptureConfig, IP_NET_DVR_Media_getVideoCaptureByXml,
              IP_NET_DVR_XMLGET_VideoCaptureConfig, QV_CFG_SET_VIDEO_CAPTURE,
              IP_NET_DVR_SET_VideoCaptureConfig),
      Section("video-overlay", "Overlay", QV_CFG_GET_VIDEO_OVERLAY,
              IP_NET_DVR_GET_VideoOverlayConfig, IP_NET_DVR_Media_getVideoOverlayByXml,
              IP_NET_DVR_XMLGET_VideoOverlayConfig, QV_CFG_SET_VIDEO_OSD,
              IP_NET_DVR_SET_VideoOSDConfig),
      Section("video-mask", "Mask", QV_CFG_GET_VIDEO_MASK, IP_NET_DVR_GET_VideoMaskConfig,
              IP_NET_DVR_Media_getVideoMaskByXml, IP_NET_DVR_XMLGET_VideoMaskConfig,
              QV_CFG_SET_VIDEO_MASK, IP_NET_DVR_SET_VideoMaskConfig),
      Section("media-stream", "MediaStreamConfig", QV_CFG_GET_MEDIA_STREAM,
              IP_NET_DVR_GET_MediaStreamConfig, IP_NET_DVR_GetMediaStreamCfgByXml,
              IP_NET_DVR_XMLGET_MediaStreamConfig, QV_CFG_SET_MEDIA_STREAM,
              IP_NET_DVR_SET_MediaStreamConfig),
  };
}

}  // namespace

const std::vector<ConfigSection>& ConfigSections() {
  static const std::vector<ConfigSection> sections = MakeSections();
  return sections;
}

const ConfigSection* FindConfigSection(const std::string& name) {
  for (const ConfigSection& s : ConfigSections()) {
    if (s.name == name) return &s;
  }
  return nullptr;
}

// The media section's containers (MediaConfig, Video), its file store and
// its diagnostic print.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "config/config_section.h"
#include "config/config_store.h"
#include "config/media_sections.h"

namespace qvconfig {
namespace {

const ChildReader<VideoConfig> kVideoChildren[] = {
    CHILD_MEMBER(VideoConfig, "Capture", Capture, ReadVideoCapture),
    CHILD_MEMBER(VideoConfig, "Encode", Encode, ReadVideoEncode),
    CHILD_MEMBER(VideoConfig, "JpegConfig", Jpeg, ReadJpegEncode),
    CHILD_MEMBER(VideoConfig, "Overlay", Overlay, ReadVideoOverlay),
    CHILD_MEMBER(VideoConfig, "Mask", Mask, ReadVideoMask),
    CHILD_MEMBER(VideoConfig, "ROI", ROI, ReadVideoROI),
    CHILD_MEMBER(VideoConfig, "UserOverlay", UserOverlay, ReadVideoUserOverlay),
    CHILD_MEMBER(VideoConfig, "YUV", YUV, ReadVideoYuv),
};

const ChildReader<MediaConfig> kMediaChildren[] = {
    CHILD_MEMBER(MediaConfig, "Video", Video, ReadVideoConfig),
    CHILD_MEMBER(MediaConfig, "Audio", Audio, ReadAudioConfig),
};

}  // namespace

int ReadVideoConfig(const IXML_Node* element, VideoConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  ReadChildren(element, kVideoChildren, cfg);
  return 0;
}

void WriteVideoConfig(XmlWriter& out, const VideoConfig* cfg) {
  out.Append("<Video>\r\n");
  WriteVideoCapture(out, &cfg->Capture);
  WriteVideoEncode(out, &cfg->Encode);
  WriteJpegEncode(out, &cfg->Jpeg);
  WriteVideoOverlay(out, &cfg->Overlay);
  WriteVideoMask(out, &cfg->Mask);
  WriteVideoROI(out, &cfg->ROI);
  WriteVideoUserOverlay(out, &cfg->UserOverlay);
  WriteVideoYuv(out, &cfg->YUV);
  out.Append("</Video>\r\n");
}

int ReadMediaConfig(const IXML_Node* element, MediaConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  ReadChildren(element, kMediaChildren, cfg);
  return 0;
}

void WriteMediaConfig(XmlWriter& out, const MediaConfig* cfg) {
  out.Append("<MediaConfig>\r\n");
  WriteVideoConfig(out, &cfg->Video);
  WriteAudioConfig(out, &cfg->Audio);
  out.Append("</MediaConfig>\r\n");
}

}  // namespace qvconfig

int GetMediaCfgByXml(MediaConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "MediaConfig", qvconfig::ReadMediaConfig);
}
int Media_getVideoByXml(VideoConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "Video", qvconfig::ReadVideoConfig);
}

char* XMLGET_MediaConfig(const MediaConfig* cfg) {
  return qvconfig::WriteRecordText<MediaConfig>(cfg, qvconfig::WriteMediaConfig);
}
char* XMLGET_VideoConfig(const VideoConfig* cfg) {
  return qvconfig::WriteRecordText<VideoConfig>(cfg, qvconfig::WriteVideoConfig);
}

int GetMediaConfig(MediaConfig* cfg) {
  if (!cfg) return -1;
  memset(cfg, 0, sizeof(*cfg));
  return qvconfig::ReadConfigSection("MediaConfig", [cfg](const IXML_Node* node) {
    return qvconfig::ReadMediaConfig(node, cfg);
  });
}

int SetMediaConfig(const MediaConfig* cfg) {
  return qvconfig::WriteConfigSectionText("MediaConfig", XMLGET_MediaConfig(cfg));
}

void ShowMediaConfig(const MediaConfig* cfg) {
  if (!cfg) return;
  printf("MediaConfig (%zu bytes):\n", sizeof(*cfg));
  for (int i = 0; i < QV_MAX_ENCODE_STREAMS; ++i)
    printf("stream %d: %s%s\n", i, cfg->Video.Encode.Stream[i].EncodeFormat,
           cfg->Video.Encode.Stream[i].IsH265 ? " (H265)" : "");
  printf("user text lines: %d\n", cfg->Video.UserOverlay.Count);
  char* xml = XMLGET_MediaConfig(cfg);
  if (xml) printf("%s", xml);
  free(xml);
}

// The video text overlays: Overlay (with TimeOverlay and TitleOverlay) and
// the user text lines of UserOverlay.
#include <cstring>

#include "config/config_section.h"
#include "config/media_sections.h"

namespace qvconfig {
namespace {

// Attributes in writing order.
const XmlField kOverlayFields[] = {
    XML_FIELD(VideoOverlayConfig, Enable, "Enable"),
    XML_FIELD(VideoOverlayConfig, Transparency, "Transparency"),
    XML_FIELD(VideoOverlayConfig, RealTransparency, "RealTransparency"),
    XML_FIELD(VideoOverlayConfig, time24or12, "time24or12"),
    XML_FIELD(VideoOverlayConfig, ovlayfps, "ovlayfps"),
    XML_FIELD(VideoOverlayConfig, Week, "Week"),
    XML_FIELD(VideoOverlayConfig, Fontsize, "Fontsize"),
    XML_FIELD(VideoOverlayConfig, Style, "Style"),
};

const XmlField kTimeOverlayFields[] = {
    XML_FIELD(TimeOverlayConfig, PosX, "PosX"),
    XML_FIELD(TimeOverlayConfig, PosY, "PosY"),
    XML_FIELD(TimeOverlayConfig, Format, "Format"),
    XML_FIELD(TimeOverlayConfig, PosType, "PosType"),
};

const XmlField kTitleOverlayFields[] = {
    XML_FIELD(TitleOverlayConfig, PosX, "PosX"),
    XML_FIELD(TitleOverlayConfig, PosY, "PosY"),
    XML_FIELD(TitleOverlayConfig, PosType, "PosType"),
    XML_FIELD(TitleOverlayConfig, TitleType, "TitleType"),
    XML_FIELD(TitleOverlayConfig, TitleUtf8, "TitleUtf8"),
    XML_FIELD(TitleOverlayConfig, Title, "Title"),
};

#define USER_OSD(member) XML_FIELD(UserOSDConfig, member, #member)

const XmlField kUserOsdFields[] = {
    USER_OSD(enable),       USER_OSD(PosType),      USER_OSD(pos_xscale),
    USER_OSD(pos_yscale),   USER_OSD(color_front),  USER_OSD(color_back),
    USER_OSD(transparency), USER_OSD(Fontsize),     USER_OSD(linegap),
    USER_OSD(titleType),    USER_OSD(TitleUtf8),
};

#undef USER_OSD

void ReadTimeOverlay(const IXML_Node* element, VideoOverlayConfig* cfg) {
  ReadPlainElement(element, kTimeOverlayFields, FieldCount(kTimeOverlayFields), &cfg->Time,
                   sizeof(cfg->Time));
}

void ReadTitleOverlay(const IXML_Node* element, VideoOverlayConfig* cfg) {
  ReadPlainElement(element, kTitleOverlayFields, FieldCount(kTitleOverlayFields),
                   &cfg->Title, sizeof(cfg->Title));
}

const ChildReader<VideoOverlayConfig> kOverlayChildren[] = {
    {"TimeOverlay", ReadTimeOverlay},
    {"TitleOverlay", ReadTitleOverlay},
};

}  // namespace

int ReadVideoOverlay(const IXML_Node* element, VideoOverlayConfig* cfg) {
  ReadPlainElement(element, kOverlayFields, FieldCount(kOverlayFields), cfg, sizeof(*cfg));
  ReadChildren(element, kOverlayChildren, cfg);
  return 0;
}

void WriteVideoOverlay(XmlWriter& out, const VideoOverlayConfig* cfg) {
  WriteLineElement(out, "Overlay", kOverlayFields, FieldCount(kOverlayFields), cfg, ">\r\n");
  WriteLineElement(out, "TimeOverlay", kTimeOverlayFields, FieldCount(kTimeOverlayFields),
                   &cfg->Time, "/>\r\n");
  WriteLineElement(out, "TitleOverlay", kTitleOverlayFields, FieldCount(kTitleOverlayFields),
                   &cfg->Title, "/>\r\n");
  out.Append("</Overlay>\r\n");
}

int ReadVideoUserOverlay(const IXML_Node* element, VideoUserOverlayConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  for (IXML_Node* c = FirstChildElement(element); c && cfg->Count < QV_MAX_USER_OSD;
       c = NextSiblingElement(c)) {
    if (!IsElement(c, "UserOSD")) continue;
    UserOSDConfig* osd = &cfg->UserOSD[cfg->Count++];
    ReadPlainElement(c, kUserOsdFields, FieldCount(kUserOsdFields), osd, sizeof(*osd));
  }
  return 0;
}

void WriteVideoUserOverlay(XmlWriter& out, const VideoUserOverlayConfig* cfg) {
  out.Append("<UserOverlay>\r\n");
  int count = cfg->Count < 0 ? 0 : cfg->Count;
  if (count > QV_MAX_USER_OSD) count = QV_MAX_USER_OSD;
  for (int i = 0; i < count; ++i)
    WriteLineElement(out, "UserOSD", kUserOsdFields, FieldCount(kUserOsdFields),
                     &cfg->UserOSD[i], "/>\r\n");
  out.Append("</UserOverlay>\r\n");
}

}  // namespace qvconfig

int Media_getVideoOverlayByXml(VideoOverlayConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "Overlay", qvconfig::ReadVideoOverlay);
}
int Media_getVideoUserOverlayByXml(VideoUserOverlayConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "UserOverlay", qvconfig::ReadVideoUserOverlay);
}

char* XMLGET_VideoOverlayConfig(const VideoOverlayConfig* cfg) {
  return qvconfig::WriteRecordText<VideoOverlayConfig>(cfg, qvconfig::WriteVideoOverlay);
}
char* XMLGET_VideoUserOverlayConfig(const VideoUserOverlayConfig* cfg) {
  return qvconfig::WriteRecordText<VideoUserOverlayConfig>(cfg,
                                                           qvconfig::WriteVideoUserOverlay);
}

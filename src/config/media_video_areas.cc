// Privacy masks (Mask with MainStream and SubStream) and regions of interest
// (ROI): four areas each, written with blanks between the area attributes.
#include <cstring>

#include "config/config_section.h"
#include "config/media_sections.h"

namespace qvconfig {
namespace {

// The four areas of a mask stream or of the regions.
struct AreaSet {
  VideoArea Area[QV_MAX_VIDEO_AREAS];
};
static_assert(sizeof(AreaSet) == sizeof(VideoArea) * QV_MAX_VIDEO_AREAS, "AreaSet layout");

#define AREA(n)                                                  \
  XML_FIELD(AreaSet, Area[n - 1].PosX, "Area" #n "PosX"),        \
      XML_FIELD(AreaSet, Area[n - 1].PosY, "Area" #n "PosY"),    \
      XML_FIELD(AreaSet, Area[n - 1].Width, "Area" #n "Width"),  \
      XML_FIELD(AreaSet, Area[n - 1].Height, "Area" #n "Height")

// Area by area, in writing order.
const XmlField kAreaFields[] = {AREA(1), AREA(2), AREA(3), AREA(4)};

#undef AREA

const XmlField kRoiFields[] = {
    XML_FIELD(VideoROIConfig, Enable, "Enable"),
};

void ReadAreas(const IXML_Node* element, VideoArea* areas) {
  ReadPlainElement(element, kAreaFields, FieldCount(kAreaFields), areas, sizeof(AreaSet));
}

void WriteAreas(XmlWriter& out, const VideoArea* areas) {
  WriteXmlFields(out, kAreaFields, FieldCount(kAreaFields), areas, " ");
}

void ReadMainStream(const IXML_Node* element, VideoMaskConfig* cfg) {
  ReadAreas(element, cfg->MainStream);
}

void ReadSubStream(const IXML_Node* element, VideoMaskConfig* cfg) {
  ReadAreas(element, cfg->SubStream);
}

const ChildReader<VideoMaskConfig> kMaskChildren[] = {
    {"MainStream", ReadMainStream},
    {"SubStream", ReadSubStream},
};

}  // namespace

int ReadVideoMask(const IXML_Node* element, VideoMaskConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  ReadChildren(element, kMaskChildren, cfg);
  return 0;
}

void WriteVideoMask(XmlWriter& out, const VideoMaskConfig* cfg) {
  out.Append("<Mask>\r\n<MainStream\r\n");
  WriteAreas(out, cfg->MainStream);
  out.Append("/>\r\n<SubStream\r\n");
  WriteAreas(out, cfg->SubStream);
  out.Append("/>\r\n</Mask>\r\n");
}

int ReadVideoROI(const IXML_Node* element, VideoROIConfig* cfg) {
  ReadPlainElement(element, kRoiFields, FieldCount(kRoiFields), cfg, sizeof(*cfg));
  ReadXmlFields(element, kAreaFields, FieldCount(kAreaFields), cfg->Area);
  return 0;
}

void WriteVideoROI(XmlWriter& out, const VideoROIConfig* cfg) {
  WriteLineElement(out, "ROI", kRoiFields, FieldCount(kRoiFields), cfg, "");
  WriteAreas(out, cfg->Area);
  out.Append("/>\r\n");
}

}  // namespace qvconfig

int Media_getVideoMaskByXml(VideoMaskConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "Mask", qvconfig::ReadVideoMask);
}
int Media_getVideoROIByXml(VideoROIConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "ROI", qvconfig::ReadVideoROI);
}

char* XMLGET_VideoMaskConfig(const VideoMaskConfig* cfg) {
  return qvconfig::WriteRecordText<VideoMaskConfig>(cfg, qvconfig::WriteVideoMask);
}
char* XMLGET_VideoROIConfig(const VideoROIConfig* cfg) {
  return qvconfig::WriteRecordText<VideoROIConfig>(cfg, qvconfig::WriteVideoROI);
}

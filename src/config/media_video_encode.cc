// The video encoding elements: Encode (one EncodeConfig per stream and the
// AdvanceEncodeConfig), JpegConfig and YUV.
#include <cstring>

#include "config/config_section.h"
#include "config/media_sections.h"

namespace qvconfig {
namespace {

#define STREAM(member) XML_FIELD(VideoEncodeStream, member, #member)

// Attributes in writing order. IsH265 is the reader's own.
const XmlField kEncodeStreamFields[] = {
    STREAM(Stream),
    STREAM(Enable),
    STREAM(Resolution),
    STREAM(EncodeFormat),
    STREAM(BitRateControl),
    STREAM(Initquant),
    STREAM(BitRateQuality),
    STREAM(qp_enable),
    STREAM(qp_min),
    STREAM(qp_max),
    STREAM(BitRate),
    STREAM(FrameRate),
    STREAM(lbr_enable),
    STREAM(lbr_style),
    STREAM(lbr_bitratemode),
    STREAM(lbr_bitrate),
    STREAM(lbr_motionlevel),
    STREAM(lbr_noicelevel),
};

#undef STREAM

const XmlField kAdvanceEncodeFields[] = {
    XML_FIELD(VideoAdvanceEncode, EncodeProfile, "EncodeProfile"),
    XML_FIELD(VideoAdvanceEncode, DisablePrivateData, "DisablePrivateData"),
    XML_FIELD(VideoAdvanceEncode, EncMode, "EncMode"),
    XML_FIELD(VideoAdvanceEncode, NoiceLevel, "NoiceLevel"),
    XML_FIELD(VideoAdvanceEncode, TwoLensWorkMode, "TwoLensWorkMode"),
    XML_FIELD(VideoAdvanceEncode, OptimumDistance, "OptimumDistance"),
};

const XmlField kJpegFields[] = {
    XML_FIELD(JpegEncodeConfig, Enable, "Enable"),
    XML_FIELD(JpegEncodeConfig, Quality, "Quality"),
};

const XmlField kYuvFields[] = {
    XML_FIELD(VideoYuvConfig, Enable, "Enable"),
    XML_FIELD(VideoYuvConfig, Resolution, "Resolution"),
    XML_FIELD(VideoYuvConfig, FrameRate, "FrameRate"),
    XML_FIELD(VideoYuvConfig, Format, "Format"),
};

// One EncodeConfig into the slot its Stream names; other streams are
// ignored.
void ReadEncodeStream(const IXML_Node* element, VideoEncodeConfig* cfg) {
  VideoEncodeStream stream;
  ReadPlainElement(element, kEncodeStreamFields, FieldCount(kEncodeStreamFields), &stream,
                   sizeof(stream));
  if (stream.Stream < 0 || stream.Stream >= QV_MAX_ENCODE_STREAMS) return;
  stream.IsH265 = strcmp(stream.EncodeFormat, "H265") == 0;
  cfg->Stream[stream.Stream] = stream;
}

void ReadAdvanceEncode(const IXML_Node* element, VideoEncodeConfig* cfg) {
  ReadPlainElement(element, kAdvanceEncodeFields, FieldCount(kAdvanceEncodeFields),
                   &cfg->Advance, sizeof(cfg->Advance));
}

const ChildReader<VideoEncodeConfig> kEncodeChildren[] = {
    {"EncodeConfig", ReadEncodeStream},
    {"AdvanceEncodeConfig", ReadAdvanceEncode},
};

}  // namespace

int ReadVideoEncode(const IXML_Node* element, VideoEncodeConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  for (int i = 0; i < QV_MAX_ENCODE_STREAMS; ++i) cfg->Stream[i].Stream = i;
  ReadChildren(element, kEncodeChildren, cfg);
  return 0;
}

void WriteVideoEncode(XmlWriter& out, const VideoEncodeConfig* cfg) {
  out.Append("<Encode>\r\n");
  for (int i = 0; i < QV_MAX_ENCODE_STREAMS; ++i) {
    // A slot is written as the stream it is, whatever its Stream member says.
    VideoEncodeStream stream = cfg->Stream[i];
    stream.Stream = i;
    WriteLineElement(out, "EncodeConfig", kEncodeStreamFields,
                     FieldCount(kEncodeStreamFields), &stream, "/>\r\n");
  }
  WriteLineElement(out, "AdvanceEncodeConfig", kAdvanceEncodeFields,
                   FieldCount(kAdvanceEncodeFields), &cfg->Advance, "/>\r\n");
  out.Append("</Encode>\r\n");
}

int ReadJpegEncode(const IXML_Node* element, JpegEncodeConfig* cfg) {
  ReadPlainElement(element, kJpegFields, FieldCount(kJpegFields), cfg, sizeof(*cfg));
  return 0;
}

void WriteJpegEncode(XmlWriter& out, const JpegEncodeConfig* cfg) {
  WriteLineElement(out, "JpegConfig", kJpegFields, FieldCount(kJpegFields), cfg, "/>\r\n");
}

int ReadVideoYuv(const IXML_Node* element, VideoYuvConfig* cfg) {
  ReadPlainElement(element, kYuvFields, FieldCount(kYuvFields), cfg, sizeof(*cfg));
  return 0;
}

void WriteVideoYuv(XmlWriter& out, const VideoYuvConfig* cfg) {
  WriteLineElement(out, "YUV", kYuvFields, FieldCount(kYuvFields), cfg, "/>\r\n");
}

}  // namespace qvconfig

VideoEncodeStream* GetVideoEncodeCfgByID(VideoEncodeConfig* cfg, int id) {
  if (!cfg || id < 0 || id >= QV_MAX_ENCODE_STREAMS) return nullptr;
  return &cfg->Stream[id];
}

int Media_getVideoEncodeByXml(VideoEncodeConfig* cfg, const char* xml) {
  return READ_CHILD_RECORD_BY_XML(cfg, xml, "Video", "Encode", qvconfig::ReadVideoEncode);
}
int Media_getJpegEncodeByXml(JpegEncodeConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "JpegConfig", qvconfig::ReadJpegEncode);
}
int Media_getVideoYuvByXml(VideoYuvConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "YUV", qvconfig::ReadVideoYuv);
}

char* XMLGET_VideoEncodeConfig(const VideoEncodeConfig* cfg) {
  return qvconfig::WriteRecordText<VideoEncodeConfig>(cfg, qvconfig::WriteVideoEncode);
}
char* XMLGET_VideoJpegEncodeConfig(const JpegEncodeConfig* cfg) {
  return qvconfig::WriteRecordText<JpegEncodeConfig>(cfg, qvconfig::WriteJpegEncode);
}
char* XMLGET_VideoYuvConfig(const VideoYuvConfig* cfg) {
  return qvconfig::WriteRecordText<VideoYuvConfig>(cfg, qvconfig::WriteVideoYuv);
}

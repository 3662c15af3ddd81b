// The stream section MediaStreamConfig: one StreamAccess element (services,
// ports, RTMP push and multicast) holding the RTMP schedule RtmpCfg.
#include <cstring>

#include "config/config_section.h"
#include "config/config_store.h"
#include "config/media_sections.h"
#include "config/time_span.h"

namespace qvconfig {
namespace {

const unsigned short kDefaultRtspPort = 554;
const unsigned short kDefaultHikPort = 8000;
const unsigned short kDefaultDhPort = 37777;
const unsigned short kDefaultRtmpPort = 1935;

#define ACCESS(member) XML_FIELD(StreamAccessConfig, member, #member)

// Attributes in writing order.
const XmlField kStreamAccessFields[] = {
    ACCESS(Auth),
    ACCESS(VideoPort),
    ACCESS(RTPOverRTSP),
    ACCESS(enable_rtsp),
    ACCESS(enable_onvif),
    ACCESS(enable_web),
    ACCESS(OnvifAuth),
    ACCESS(WEBPort),
    ACCESS(httpsPort),
    ACCESS(h5Port),
    ACCESS(httpsCertificate),
    ACCESS(httpsKey),
    ACCESS(enable_comm),
    ACCESS(PTZPort),
    ACCESS(enable_hik),
    ACCESS(hik_port),
    ACCESS(hik_auth),
    ACCESS(enable_dh),
    ACCESS(dh_port),
    ACCESS(dh_auth),
    ACCESS(enable_tst),
    ACCESS(enable_rtmp),
    ACCESS(rtmp_port),
    ACCESS(streamno),
    ACCESS(rtmp_type),
    ACCESS(rtmp_server),
    ACCESS(rtmp_appname),
    ACCESS(rtmp_streamid),
    ACCESS(Multicast0_enable),
    ACCESS(Multicast1_enable),
    ACCESS(Multicast0_port),
    ACCESS(Multicast1_port),
    ACCESS(Multicast0_IP),
    ACCESS(Multicast1_IP),
};

// What a discovery reply carries.
const XmlField kSearchFields[] = {
    ACCESS(Auth),
    ACCESS(VideoPort),
    ACCESS(RTPOverRTSP),
    ACCESS(enable_rtsp),
    ACCESS(enable_onvif),
    ACCESS(enable_web),
    ACCESS(OnvifAuth),
    ACCESS(WEBPort),
    ACCESS(enable_comm),
    ACCESS(PTZPort),
    ACCESS(enable_hik),
    ACCESS(hik_port),
    ACCESS(hik_auth),
    ACCESS(enable_rtmp),
    ACCESS(rtmp_port),
    ACCESS(streamno),
    ACCESS(rtmp_type),
    ACCESS(rtmp_server),
    ACCESS(rtmp_appname),
    ACCESS(rtmp_streamid),
    ACCESS(Multicast0_enable),
    ACCESS(Multicast0_port),
    ACCESS(Multicast0_IP),
    ACCESS(Multicast1_enable),
    ACCESS(Multicast1_port),
    ACCESS(Multicast1_IP),
};

#undef ACCESS

// A zero read for a member with "0 is ignored" keeps its default.
template <typename T>
void KeepUnlessZero(T* member, T fallback) {
  if (*member == 0) *member = fallback;
}

void ReadRtmp(const IXML_Node* element, StreamAccessConfig* cfg) {
  IXML_Node* span = FirstChildElement(element);
  while (span && !IsElement(span, "TimeSpanCfg")) span = NextSiblingElement(span);
  if (span) ReadTimeSpanCfg(span, &cfg->Rtmp.TimeSpan);
}

void ReadStreamAccess(const IXML_Node* element, StreamAccessConfig* cfg) {
  ReadXmlFields(element, kStreamAccessFields, FieldCount(kStreamAccessFields), cfg);
  KeepUnlessZero(&cfg->hik_port, kDefaultHikPort);
  KeepUnlessZero(&cfg->dh_port, kDefaultDhPort);
  KeepUnlessZero(&cfg->rtmp_port, kDefaultRtmpPort);
  for (IXML_Node* c = FirstChildElement(element); c; c = NextSiblingElement(c)) {
    if (IsElement(c, "RtmpCfg")) {
      ReadRtmp(c, cfg);
      break;
    }
  }
}

void WriteForSearch(XmlWriter& out, const MediaStreamConfig* cfg) {
  out.Append("<MediaStreamConfig>\r\n<StreamAccess ");
  WriteXmlFields(out, kSearchFields, FieldCount(kSearchFields), &cfg->StreamAccess, " ");
  out.Append("/>\r\n</MediaStreamConfig>\r\n");
}

}  // namespace

int ReadMediaStreamConfig(const IXML_Node* element, MediaStreamConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  StreamAccessConfig* access = &cfg->StreamAccess;
  access->VideoPort = kDefaultRtspPort;
  access->enable_hik = 1;
  access->hik_port = kDefaultHikPort;
  access->enable_dh = 1;
  access->dh_port = kDefaultDhPort;
  access->rtmp_port = kDefaultRtmpPort;
  SetAllTimeSpan(&access->Rtmp.TimeSpan);
  for (IXML_Node* c = FirstChildElement(element); c; c = NextSiblingElement(c)) {
    if (IsElement(c, "StreamAccess")) {
      ReadStreamAccess(c, access);
      break;
    }
  }
  return 0;
}

void WriteMediaStreamConfig(XmlWriter& out, const MediaStreamConfig* cfg) {
  const StreamAccessConfig* access = &cfg->StreamAccess;
  out.Append("<MediaStreamConfig>\r\n<StreamAccess ");
  WriteXmlFields(out, kStreamAccessFields, FieldCount(kStreamAccessFields), access, "\r\n");
  out.Append(">\r\n<RtmpCfg>\r\n");
  WriteTimeSpanCfg(out, &access->Rtmp.TimeSpan);
  out.Append("\r\n</RtmpCfg>\r\n</StreamAccess>\r\n</MediaStreamConfig>\r\n");
}

}  // namespace qvconfig

int GetMediaStreamCfgByXml(MediaStreamConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "MediaStreamConfig", qvconfig::ReadMediaStreamConfig);
}

char* XMLGET_MediaStreamConfig(const MediaStreamConfig* cfg) {
  return qvconfig::WriteRecordText<MediaStreamConfig>(cfg, qvconfig::WriteMediaStreamConfig);
}

char* XMLGET_MediaStreamConfig_ForSearch(const MediaStreamConfig* cfg) {
  return qvconfig::WriteRecordText<MediaStreamConfig>(cfg, qvconfig::WriteForSearch);
}

int GetMediaStreamConfig(MediaStreamConfig* cfg) {
  if (!cfg) return -1;
  memset(cfg, 0, sizeof(*cfg));
  return qvconfig::ReadConfigSection("MediaStreamConfig", [cfg](const IXML_Node* node) {
    return qvconfig::ReadMediaStreamConfig(node, cfg);
  });
}

int SetMediaStreamConfig(const MediaStreamConfig* cfg) {
  return qvconfig::WriteConfigSectionText("MediaStreamConfig", XMLGET_MediaStreamConfig(cfg));
}

#include "emu/config_store.h"

#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>

#include "config/alarm_sections.h"
#include "config/config_store.h"
#include "config/media_sections.h"
#include "config/network_sections.h"
#include "config/service_sections.h"
#include "config/system_sections.h"

namespace qvemu {
namespace {

// A section by code: its element, its writer on the record and, for set
// codes, its reader into the record.
struct Section {
  const char* name;
  std::function<char*(IPCConfig&)> write;
  std::function<bool(IPCConfig&, const char*)> read;
};

// The writer of the member `path` (an expression on IPCConfig c).
#define WRITE(path, writer) [](IPCConfig& c) { return writer(&c.path); }
// The reader into the member `path`: into a copy, kept only when it reads.
#define READ(path, reader)                                    \
  [](IPCConfig& c, const char* xml) {                         \
    std::unique_ptr<decltype(c.path)> rec(new decltype(c.path)(c.path)); \
    if (reader(rec.get(), xml) != 0) return false;            \
    c.path = *rec;                                            \
    return true;                                              \
  }

const std::map<long, Section>& GetTable() {
  static const std::map<long, Section> kTable = {
      {200, {"SystemConfig", WRITE(system, XMLGET_SystemConfig), nullptr}},
      {201, {"PTZConfig", WRITE(system.PTZ, XMLGET_PTZConfig), nullptr}},
      {202, {"TimeConfig", WRITE(system.Time, XMLGET_TimeConfig), nullptr}},
      {203, {"UserConfig", WRITE(system.User, XMLGET_UserConfig), nullptr}},
      {204, {"SystemLogConfig", WRITE(system.SystemLog, XMLGET_SyslogConfig), nullptr}},
      {205, {"MiscConfig", WRITE(system.Misc, XMLGET_SysMiscConfig), nullptr}},
      {300, {"NetworkConfig", WRITE(network, XMLGET_NetworkConfig), nullptr}},
      {305, {"LANConfig", WRITE(network.LAN, XMLGET_NetworkLANConfig), nullptr}},
      {306, {"WIFIConfig", WRITE(network.WIFI, XMLGET_NetworkWIFIConfig), nullptr}},
      {310, {"ADSLConfig", WRITE(network.ADSL, XMLGET_NetworkADSLConfig), nullptr}},
      {311, {"DDNSConfig", WRITE(network.DDNS, XMLGET_NetworkDDNSConfig), nullptr}},
      {312, {"UPNPConfig", WRITE(network.UPNP, XMLGET_NetworkUPNPConfig), nullptr}},
      {315, {"P2PConfig", WRITE(network.P2P, XMLGET_NetworkP2PConfig), nullptr}},
      {400, {"ServerConfig", WRITE(server, XMLGET_ServerConfig), nullptr}},
      {401, {"FTPList", WRITE(server.FTP, XMLGET_FtpConfig), nullptr}},
      {402, {"SMTPList", WRITE(server.SMTP, XMLGET_SmtpConfig), nullptr}},
      {500, {"MediaConfig", WRITE(media, XMLGET_MediaConfig), nullptr}},
      {501, {"Video", WRITE(media.Video, XMLGET_VideoConfig), nullptr}},
      {502, {"Audio", WRITE(media.Audio, XMLGET_AudioConfig), nullptr}},
      {503, {"Encode", WRITE(media.Video.Encode, XMLGET_VideoEncodeConfig), nullptr}},
      {504, {"Capture", WRITE(media.Video.Capture, XMLGET_VideoCaptureConfig), nullptr}},
      {505, {"Overlay", WRITE(media.Video.Overlay, XMLGET_VideoOverlayConfig), nullptr}},
      {507, {"Capture", WRITE(media.Audio.Capture, XMLGET_AudioCaptureConfig), nullptr}},
      {508, {"Encode", WRITE(media.Audio.Encode, XMLGET_AudioEncodeConfig), nullptr}},
      {509, {"Mask", WRITE(media.Video.Mask, XMLGET_VideoMaskConfig), nullptr}},
      {510, {"ROI", WRITE(media.Video.ROI, XMLGET_VideoROIConfig), nullptr}},
      {600, {"MediaStreamConfig", WRITE(mediaStream, XMLGET_MediaStreamConfig), nullptr}},
      {650, {"PlatformConfig", WRITE(platform, XMLGET_PlatformConfig), nullptr}},
      {680, {"GB28181Config", WRITE(gb28181, XMLGET_GB28181Config), nullptr}},
      {700, {"RecordConfig", WRITE(record, XMLGET_RecordConfig), nullptr}},
      {800, {"AlarmConfig", WRITE(alarm, XMLGET_AlarmConfig), nullptr}},
      {801, {"InputAlarm", WRITE(alarm.Input, XMLGET_InputAlarmConfig), nullptr}},
      {802, {"MotionDetectAlarm", WRITE(alarm.MotionDetect, XMLGET_MDAlarmConfig), nullptr}},
      {803, {"VideoCoverAlarm", WRITE(alarm.VideoCover, XMLGET_VCAlarmConfig), nullptr}},
      {804, {"VideoLostAlarm", WRITE(alarm.VideoLost, XMLGET_VlAlarmConfig), nullptr}},
      {805, {"StorageFullAlarm", WRITE(alarm.StorageFull, XMLGET_SFAlarmConfig), nullptr}},
      {808, {"VideoPD", WRITE(alarm.PersonDetect, XMLGET_PdAlarmConfig), nullptr}},
  };
  return kTable;
}

#define SET_ROW(code, name, path, writer, reader) \
  { code, { name, WRITE(path, writer), READ(path, reader) } }

const std::map<long, Section>& SetTable() {
  static const std::map<long, Section> kTable = {
      SET_ROW(222, "TimeConfig", system.Time, XMLGET_TimeConfig, System_getTimeCfgByXml),
      SET_ROW(223, "UserConfig", system.User, XMLGET_UserConfig, System_getUserCfgByXml),
      SET_ROW(227, "MiscConfig", system.Misc, XMLGET_SysMiscConfig, System_getMiscCfgByXml),
      SET_ROW(320, "NetworkConfig", network, XMLGET_NetworkConfig, GetNetworkCfgByXml),
      SET_ROW(325, "LANConfig", network.LAN, XMLGET_NetworkLANConfig, Network_getLANCfgByXml),
      SET_ROW(326, "WIFIConfig", network.WIFI, XMLGET_NetworkWIFIConfig,
              Network_getWIFICfgByXml),
      SET_ROW(520, "MediaConfig", media, XMLGET_MediaConfig, GetMediaCfgByXml),
      SET_ROW(521, "Video", media.Video, XMLGET_VideoConfig, Media_getVideoByXml),
      SET_ROW(522, "Audio", media.Audio, XMLGET_AudioConfig, Media_getAudioByXml),
      SET_ROW(523, "Encode", media.Video.Encode, XMLGET_VideoEncodeConfig,
              Media_getVideoEncodeByXml),
      SET_ROW(524, "Capture", media.Video.Capture, XMLGET_VideoCaptureConfig,
              Media_getVideoCaptureByXml),
      SET_ROW(525, "Overlay", media.Video.Overlay, XMLGET_VideoOverlayConfig,
              Media_getVideoOverlayByXml),
      SET_ROW(529, "Mask", media.Video.Mask, XMLGET_VideoMaskConfig, Media_getVideoMaskByXml),
      SET_ROW(531, "UserOverlay", media.Video.UserOverlay, XMLGET_VideoUserOverlayConfig,
              Media_getVideoUserOverlayByXml),
      SET_ROW(620, "MediaStreamConfig", mediaStream, XMLGET_MediaStreamConfig,
              GetMediaStreamCfgByXml),
      SET_ROW(670, "PlatformConfig", platform, XMLGET_PlatformConfig, GetPlatformCfgByXml),
      SET_ROW(681, "GB28181Config", gb28181, XMLGET_GB28181Config, GetGB28181CfgByXml),
      SET_ROW(820, "AlarmConfig", alarm, XMLGET_AlarmConfig, GetAlarmConfigByXml),
      SET_ROW(821, "InputAlarm", alarm.Input, XMLGET_InputAlarmConfig, Alarm_getInputByXml),
      SET_ROW(822, "MotionDetectAlarm", alarm.MotionDetect, XMLGET_MDAlarmConfig,
              Alarm_getMotionDetectByXml),
      SET_ROW(823, "VideoCoverAlarm", alarm.VideoCover, XMLGET_VCAlarmConfig,
              Alarm_getVideoCoverByXml),
      SET_ROW(824, "VideoLostAlarm", alarm.VideoLost, XMLGET_VlAlarmConfig,
              Alarm_getVideoLostByXml),
      SET_ROW(828, "VideoGate", alarm.Gate, XMLGET_VideoGateAlarmConfig,
              Alarm_getVideoGateByXml),
      SET_ROW(829, "VideoPD", alarm.PersonDetect, XMLGET_PdAlarmConfig, Alarm_getPdByXml),
      SET_ROW(830, "OutputAlarm", alarm.Output, XMLGET_OutputAlarmConfig, Alarm_getOutputByXml),
  };
  return kTable;
}

const Section* Find(const std::map<long, Section>& table, long code) {
  auto it = table.find(code);
  return it == table.end() ? nullptr : &it->second;
}

}  // namespace

ConfigStore::ConfigStore() : cfg_(new IPCConfig()) { Load(DefaultDocument()); }

ConfigStore::~ConfigStore() = default;

ConfigStore::ConfigStore(const ConfigStore& other) : cfg_(new IPCConfig(*other.cfg_)) {}

ConfigStore& ConfigStore::operator=(const ConfigStore& other) {
  *cfg_ = *other.cfg_;
  return *this;
}

std::string ConfigStore::GetSectionName(long code) {
  const Section* s = Find(GetTable(), code);
  return s ? s->name : "";
}

std::string ConfigStore::SetSectionName(long code) {
  const Section* s = Find(SetTable(), code);
  return s ? s->name : "";
}

bool ConfigStore::Load(const std::string& xml) {
  std::unique_ptr<IPCConfig> cfg(new IPCConfig());
  if (qvconfig::LoadConfigDocument(xml, cfg.get()) != 0) return false;
  cfg_ = std::move(cfg);
  return true;
}

std::string ConfigStore::Text() const {
  std::string text;
  qvconfig::BuildConfigDocument(cfg_.get(), &text);
  return text;
}

bool ConfigStore::GetSection(long code, std::string* xml) const {
  const Section* s = Find(GetTable(), code);
  if (!s) return false;
  char* text = s->write(*cfg_);
  if (!text) return false;
  xml->assign(text);
  free(text);
  return true;
}

bool ConfigStore::SetSection(long code, const std::string& xml) {
  const Section* s = Find(SetTable(), code);
  return s && s->read(*cfg_, xml.c_str());
}

}  // namespace qvemu

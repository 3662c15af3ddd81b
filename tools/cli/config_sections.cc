#include "config_sections.h"

#include "quorvel/quorvel.h"

namespace {

// Keeps the set function out of deduction, so that read-only sections pass
// nullptr.
template <typename T>
struct Same {
  using type = T;
};

template <typename Record>
ConfigSection Section(const char* name, long get_code, long (*get)(long),
                      int (*read)(Record*, const char*), char* (*write)(const Record*),
                      long set_code, long (*set)(long, const typename Same<Record>::type*)) {
  ConfigSection s;
  s.name = name;
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
      Section("system", QV_CFG_GET_SYSTEM, IP_NET_DVR_GET_SystemConfig, IP_NET_DVR_GetSystemConfigByXml,
              IP_NET_DVR_XMLGET_SystemConfig, 0, nullptr),
      Section("ptz", QV_CFG_GET_PTZ, IP_NET_DVR_GET_PtzConfig, IP_NET_DVR_System_getPTZCfgByXml,
              IP_NET_DVR_XMLGET_PTZConfig, 0, nullptr),
      Section("time", QV_CFG_GET_TIME, IP_NET_DVR_GET_TimeConfig, IP_NET_DVR_System_getTimeCfgByXml,
              IP_NET_DVR_XMLGET_TimeConfig, QV_CFG_SET_TIME, IP_NET_DVR_SET_TimeConfig),
      Section("user", QV_CFG_GET_USER, IP_NET_DVR_GET_UserConfig, IP_NET_DVR_System_getUserCfgByXml,
              IP_NET_DVR_XMLGET_UserConfig, QV_CFG_SET_USER, IP_NET_DVR_SET_UserConfig),
      Section("syslog", QV_CFG_GET_SYSLOG, IP_NET_DVR_GET_SyslogConfig, IP_NET_DVR_System_getLogCfgByXml,
              IP_NET_DVR_XMLGET_SyslogConfig, 0, nullptr),
      Section("misc", QV_CFG_GET_MISC, IP_NET_DVR_GET_MiscConfig, IP_NET_DVR_System_getMiscCfgByXml,
              IP_NET_DVR_XMLGET_SysMiscConfig, QV_CFG_SET_MISC, IP_NET_DVR_SET_MiscConfig),
      Section("network", QV_CFG_GET_NETWORK, IP_NET_DVR_GET_NetworkConfig, IP_NET_DVR_GetNetworkCfgByXml,
              IP_NET_DVR_XMLGET_NetworkConfig, QV_CFG_SET_NETWORK, IP_NET_DVR_SET_NetworkConfig),
      Section("lan", QV_CFG_GET_LAN, IP_NET_DVR_GET_NetworkLANConfig, IP_NET_DVR_Network_getLANCfgByXml,
              IP_NET_DVR_XMLGET_NetworkLANConfig, QV_CFG_SET_LAN, IP_NET_DVR_SET_NetworkLANConfig),
      Section("wifi", QV_CFG_GET_WIFI, IP_NET_DVR_GET_NetworkWIFIConfig, IP_NET_DVR_Network_getWIFICfgByXml,
              IP_NET_DVR_XMLGET_NetworkWIFIConfig, QV_CFG_SET_WIFI, IP_NET_DVR_SET_NetworkWIFIConfig),
      Section("adsl", QV_CFG_GET_ADSL, IP_NET_DVR_GET_NetworkADSLConfig, IP_NET_DVR_Network_getADSLCfgByXml,
              IP_NET_DVR_XMLGET_NetworkADSLConfig, 0, nullptr),
      Section("ddns", QV_CFG_GET_DDNS, IP_NET_DVR_GET_NetworkDDNSConfig, IP_NET_DVR_Network_getDDNSCfgByXml,
              IP_NET_DVR_XMLGET_NetworkDDNSConfig, 0, nullptr),
      Section("upnp", QV_CFG_GET_UPNP, IP_NET_DVR_GET_NetworkUPNPConfig, IP_NET_DVR_Network_getUPNPCfgByXml,
              IP_NET_DVR_XMLGET_NetworkUPNPConfig, 0, nullptr),
      Section("p2p", QV_CFG_GET_P2P, IP_NET_DVR_GET_NetworkP2PConfig, IP_NET_DVR_Network_getP2PCfgByXml,
              IP_NET_DVR_XMLGET_NetworkP2PConfig, 0, nullptr),
      Section("server", QV_CFG_GET_SERVER, IP_NET_DVR_GET_ServerConfig, IP_NET_DVR_GetServerCfgByXml,
              IP_NET_DVR_XMLGET_ServerConfig, 0, nullptr),
      Section("ftp", QV_CFG_GET_FTP, IP_NET_DVR_GET_FtpServerConfig, IP_NET_DVR_Server_getFtpsByXml,
              IP_NET_DVR_XMLGET_FtpConfig, 0, nullptr),
      Section("smtp", QV_CFG_GET_SMTP, IP_NET_DVR_GET_SmtpServerConfig, IP_NET_DVR_Server_getSmtpsByXml,
              IP_NET_DVR_XMLGET_SmtpConfig, 0, nullptr),
      Section("media", QV_CFG_GET_MEDIA, IP_NET_DVR_GET_MediaConfig, IP_NET_DVR_GetMediaCfgByXml,
              IP_NET_DVR_XMLGET_MediaConfig, QV_CFG_SET_MEDIA, IP_NET_DVR_SET_MediaConfig),
      Section("video", QV_CFG_GET_VIDEO, IP_NET_DVR_GET_VideoConfig, IP_NET_DVR_Media_getVideoByXml,
              IP_NET_DVR_XMLGET_VideoConfig, QV_CFG_SET_VIDEO, IP_NET_DVR_SET_VideoConfig),
      Section("audio", QV_CFG_GET_AUDIO, IP_NET_DVR_GET_AudioConfig, IP_NET_DVR_Media_getAudioByXml,
              IP_NET_DVR_XMLGET_AudioConfig, QV_CFG_SET_AUDIO, IP_NET_DVR_SET_AudioConfig),
      Section("video-encode", QV_CFG_GET_VIDEO_ENCODE, IP_NET_DVR_GET_VideoEncodeConfig, IP_NET_DVR_Media_getVideoEncodeByXml,
              IP_NET_DVR_XMLGET_VideoEncodeConfig, QV_CFG_SET_VIDEO_ENCODE, IP_NET_DVR_SET_VideoEncodeConfig),
      Section("video-capture", QV_CFG_GET_VIDEO_CAPTURE, IP_NET_DVR_GET_VideoCaptureConfig, IP_NET_DVR_Media_getVideoCaptureByXml,
              IP_NET_DVR_XMLGET_VideoCaptureConfig, QV_CFG_SET_VIDEO_CAPTURE, IP_NET_DVR_SET_VideoCaptureConfig),
      Section("video-overlay", QV_CFG_GET_VIDEO_OVERLAY, IP_NET_DVR_GET_VideoOverlayConfig, IP_NET_DVR_Media_getVideoOverlayByXml,
              IP_NET_DVR_XMLGET_VideoOverlayConfig, QV_CFG_SET_VIDEO_OSD, IP_NET_DVR_SET_VideoOSDConfig),
      Section("video-mask", QV_CFG_GET_VIDEO_MASK, IP_NET_DVR_GET_VideoMaskConfig, IP_NET_DVR_Media_getVideoMaskByXml,
              IP_NET_DVR_XMLGET_VideoMaskConfig, QV_CFG_SET_VIDEO_MASK, IP_NET_DVR_SET_VideoMaskConfig),
      Section("media-stream", QV_CFG_GET_MEDIA_STREAM, IP_NET_DVR_GET_MediaStreamConfig, IP_NET_DVR_GetMediaStreamCfgByXml,
              IP_NET_DVR_XMLGET_MediaStreamConfig, QV_CFG_SET_MEDIA_STREAM, IP_NET_DVR_SET_MediaStreamConfig),
      Section("platform", QV_CFG_GET_PLATFORM, IP_NET_DVR_GET_PlatformConfig, IP_NET_DVR_GetPlatformCfgByXml,
              IP_NET_DVR_XMLGET_PlatformConfig, QV_CFG_SET_PLATFORM, IP_NET_DVR_SET_PlatformConfig),
      Section("gb28181", QV_CFG_GET_GB28181, IP_NET_DVR_GET_GB28181Config, IP_NET_DVR_GetGB28181CfgByXml,
              IP_NET_DVR_XMLGET_GB28181Config, QV_CFG_SET_GB28181, IP_NET_DVR_SET_GB28181Config),
      Section("record", QV_CFG_GET_RECORD, IP_NET_DVR_GET_RecordConfig, IP_NET_DVR_GetRecordCfgByXml,
              IP_NET_DVR_XMLGET_RecordConfig, 0, nullptr),
      Section("alarm", QV_CFG_GET_ALARM, IP_NET_DVR_GET_AlarmConfig, IP_NET_DVR_GetAlarmConfigByXml,
              IP_NET_DVR_XMLGET_AlarmConfig, QV_CFG_SET_ALARM, IP_NET_DVR_SET_AlarmConfig),
      Section("input-alarm", QV_CFG_GET_INPUT_ALARM, IP_NET_DVR_GET_InputAlarm, IP_NET_DVR_Alarm_getInputByXml,
              IP_NET_DVR_XMLGET_InputAlarmConfig, QV_CFG_SET_INPUT_ALARM, IP_NET_DVR_SET_InputAlarmConfig),
      Section("motion-detect", QV_CFG_GET_MOTION_DETECT, IP_NET_DVR_GET_MotionDetectAlarm, IP_NET_DVR_Alarm_getMotionDetectByXml,
              IP_NET_DVR_XMLGET_MDAlarmConfig, QV_CFG_SET_MOTION_DETECT, IP_NET_DVR_SET_MotionDetectAlarm),
      Section("video-cover", QV_CFG_GET_VIDEO_COVER, IP_NET_DVR_GET_VideoCoverAlarm, IP_NET_DVR_Alarm_getVideoCoverByXml,
              IP_NET_DVR_XMLGET_VCAlarmConfig, QV_CFG_SET_VIDEO_COVER, IP_NET_DVR_SET_VCAlarmConfig),
      Section("video-lost", QV_CFG_GET_VIDEO_LOST, IP_NET_DVR_GET_VideoLostAlarm, IP_NET_DVR_Alarm_getVideoLostByXml,
              IP_NET_DVR_XMLGET_VlAlarmConfig, QV_CFG_SET_VIDEO_LOST, IP_NET_DVR_SET_VlAlarmConfig),
      Section("storage-full", QV_CFG_GET_STORAGE_FULL, IP_NET_DVR_GET_StorageFullAlarm, IP_NET_DVR_Alarm_getStorageFullByXml,
              IP_NET_DVR_XMLGET_SFAlarmConfig, 0, nullptr),
      Section("person-detect", QV_CFG_GET_PERSON_DETECT, IP_NET_DVR_GET_PersonDetectAlarm, IP_NET_DVR_Alarm_getPersonDetectByXml,
              IP_NET_DVR_XMLGET_PDAlarmConfig, QV_CFG_SET_PERSON_DETECT, IP_NET_DVR_SET_PersonDetectAlarm),
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

// Every configuration section reader, as a host calls it on a camera's
// reply text: the first byte picks the reader, the rest is the text.
#include <memory>
#include <string>

#include "config/alarm_sections.h"
#include "config/media_sections.h"
#include "config/network_sections.h"
#include "config/service_sections.h"
#include "config/system_sections.h"
#include "config/time_span.h"
#include "fuzz_target.h"

namespace {

using Reader = int (*)(const char* xml);

// A fresh, cleared record per call, as a host's would be.
template <typename Rec, int (*read)(Rec*, const char*)>
int ReadInto(const char* xml) {
  std::unique_ptr<Rec> cfg(new Rec());
  return read(cfg.get(), xml);
}

#define R(read, Rec) &ReadInto<Rec, read>

const Reader kReaders[] = {
    R(Alarm_getInputByXml, InputAlarm),
    R(Alarm_getOutputByXml, OutPutAlarm),
    R(Alarm_getSMSByXml, SMSAlarm),
    R(InputAlarm_getAlarmChannelCfgByXml, AlarmChannel),
    R(OutputAlarm_getOutputChannelCfgByXml, OutputChannel),
    R(Alarm_getMotionDetectByXml, MotionDetectAlarm),
    R(Alarm_getVideoLostByXml, VideoLostAlarm),
    R(Alarm_getVideoCoverByXml, VideoCoverAlarm),
    R(Alarm_getStorageFullByXml, StorageFullAlarm),
    R(Alarm_getAudioByXml, AudioAlarm),
    R(Alarm_getVideoGateByXml, VideoGate),
    R(Alarm_getPdByXml, VideoPD),
    R(Alarm_getLprByXml, Lpr),
    R(Alarm_getFdByXml, FaceDetect),
    R(Alarm_getTempHumidityByXml, Temp_humidity),
    R(Alarm_getRegionAiByXml, VideoRegionAi),
    R(GetAlarmConfigByXml, AlarmConfig),
    R(GetMediaCfgByXml, MediaConfig),
    R(Media_getAudioByXml, AudioConfig),
    R(Media_getAudioCaptureByXml, AudioCaptureConfig),
    R(Media_getAudioEncodeByXml, AudioEncodeConfig),
    R(Media_getVideoByXml, VideoConfig),
    R(Media_getVideoCaptureByXml, VideoCaptureConfig),
    R(Media_getVideoEncodeByXml, VideoEncodeConfig),
    R(Media_getJpegEncodeByXml, JpegEncodeConfig),
    R(Media_getVideoOverlayByXml, VideoOverlayConfig),
    R(Media_getVideoUserOverlayByXml, VideoUserOverlayConfig),
    R(Media_getVideoMaskByXml, VideoMaskConfig),
    R(Media_getVideoROIByXml, VideoROIConfig),
    R(Media_getVideoYuvByXml, VideoYuvConfig),
    R(GetMediaStreamCfgByXml, MediaStreamConfig),
    R(Network_getLANCfgByXml, LANConfig),
    R(Network_getWIFICfgByXml, WIFIConfig),
    R(Network_getWIFIApCfgByXml, WIFIApConfig),
    R(Network_getAlarmServerCfgByXml, AlarmServerConfig),
    R(Network_getADSLCfgByXml, ADSLConfig),
    R(Network_getG3CfgByXml, G3Config),
    R(Network_getPPTPCfgByXml, PPTPConfig),
    R(Network_getDDNSCfgByXml, DDNSConfig),
    R(Network_getUPNPCfgByXml, UPNPConfig),
    R(Network_getP2PCfgByXml, P2PConfig),
    R(GetNetworkCfgByXml, NetworkConfig),
    R(GetNetworkStatusByXml, NetworkStatus),
    R(GetRecordCfgByXml, RecordConfig),
    R(Server_getFtpsByXml, FTPList),
    R(Server_getSmtpsByXml, SMTPList),
    R(GetSmtpCfgByXml, SMTPConfig),
    R(GetServerCfgByXml, ServerConfig),
    R(GetPlatformCfgByXml, PlatformConfig),
    R(GetGB28181CfgByXml, GB28181Config),
    R(System_getPTZCfgByXml, PTZConfig),
    R(System_getPTZCommonCfgByXml, PTZCommonConfig),
    R(System_getPTZAfCfgByXml, PTZAfConfig),
    R(System_getPTZAdvanceCfgByXml, PTZAdvanceConfig),
    R(System_getTimeCfgByXml, TimeConfig),
    R(System_getUserCfgByXml, UserConfig),
    R(System_getLogCfgByXml, SystemLogConfig),
    R(System_getMiscCfgByXml, MiscConfig),
    R(System_getMaintainCfgByXml, MaintainConfig),
    R(System_getAlowIpByXml, AlowIpConfig),
    R(System_getAlarmClockByXml, AlarmClockConfig),
    R(GetSystemConfigByXml, SystemConfig),
    R(getTimeSpanByXml, TimeSpanCfg),
    R(getWorkDayListByXml, WorkDayList),
};

}  // namespace

QV_FUZZ_TARGET(config_readers) {
  if (size == 0) return 0;
  Reader read = kReaders[data[0] % (sizeof(kReaders) / sizeof(kReaders[0]))];
  std::string xml = qvfuzz::Text(data + 1, size - 1);
  read(xml.c_str());
  return 0;
}

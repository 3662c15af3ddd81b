// Exchange rows of the system, network, platform, GB28181 and alarm
// sections: every set code with the get that shows its section.
#include <cstdio>
#include <cstring>

#include "config/alarm_sections.h"
#include "exchange/exchange_table.h"
#include "quorvel/quorvel.h"

namespace qvexchange {
namespace {

// A new text, the whole member cleared first as a reader leaves it.
template <size_t N>
void Set(char (&dst)[N], const char* text) {
  memset(dst, 0, N);
  snprintf(dst, N, "%s", text);
}

char* WriteVideoGate(const VideoGate* cfg) {
  return XMLGET_VideoGateAlarmConfig(const_cast<VideoGate*>(cfg));
}
char* WriteOutputAlarm(const OutPutAlarm* cfg) {
  return XMLGET_OutputAlarmConfig(const_cast<OutPutAlarm*>(cfg));
}

const ExchangeRows kRows({
    MakeRow<TimeConfig>(
        "TimeConfig", 202, 222, IP_NET_DVR_GET_TimeConfig, IP_NET_DVR_System_getTimeCfgByXml,
        IP_NET_DVR_XMLGET_TimeConfig, IP_NET_DVR_SET_TimeConfig, [](TimeConfig* c) {
          c->TimeZone = -5;
          Set(c->NTP.ServerIP, "ntp.example & co");
          c->Summer.Auto = 1;
        }),
    MakeRow<UserConfig>(
        "UserConfig", 203, 223, IP_NET_DVR_GET_UserConfig, IP_NET_DVR_System_getUserCfgByXml,
        IP_NET_DVR_XMLGET_UserConfig, IP_NET_DVR_SET_UserConfig, [](UserConfig* c) {
          UserAccount& a = c->Account[c->nAccount++ % QV_MAX_USER_ACCOUNTS];
          Set(a.Username, "operator");
          Set(a.Password, "p\"w<1>");
          Set(a.Group, "Operators");
          Set(a.Status, "Enable");
        }),
    MakeRow<MiscConfig>("MiscConfig", 205, 227, IP_NET_DVR_GET_MiscConfig,
                        IP_NET_DVR_System_getMiscCfgByXml, IP_NET_DVR_XMLGET_SysMiscConfig,
                        IP_NET_DVR_SET_MiscConfig,
                        [](MiscConfig* c) { Set(c->Language, "\xD6\xD0\xCE\xC4"); }),
    MakeRow<NetworkConfig>(
        "NetworkConfig", 300, 320, IP_NET_DVR_GET_NetworkConfig,
        IP_NET_DVR_GetNetworkCfgByXml, IP_NET_DVR_XMLGET_NetworkConfig,
        IP_NET_DVR_SET_NetworkConfig, [](NetworkConfig* c) {
          c->DDNS.Enable = 1;
          Set(c->DDNS.Domain, "camera.example");
          c->PPTP.MTU = 1300;
        }),
    MakeRow<LANConfig>("NetworkLANConfig", 305, 325, IP_NET_DVR_GET_NetworkLANConfig,
                       IP_NET_DVR_Network_getLANCfgByXml, IP_NET_DVR_XMLGET_NetworkLANConfig,
                       IP_NET_DVR_SET_NetworkLANConfig, [](LANConfig* c) {
                         Set(c->IPAddress, "192.168.1.99");
                         c->MTU = 1500;
                       }),
    MakeRow<WIFIConfig>("NetworkWIFIConfig", 306, 326, IP_NET_DVR_GET_NetworkWIFIConfig,
                        IP_NET_DVR_Network_getWIFICfgByXml, IP_NET_DVR_XMLGET_NetworkWIFIConfig,
                        IP_NET_DVR_SET_NetworkWIFIConfig, [](WIFIConfig* c) {
                          c->Enable = 1;
                          Set(c->ESSID, "\xE4\xB8\xAD-net");  // 中-net
                          Set(c->Encrypt.WPAKeyValue, "secret&more");
                        }),
    MakeRow<PlatformConfig>("PlatformConfig", 650, 670, IP_NET_DVR_GET_PlatformConfig,
                            IP_NET_DVR_GetPlatformCfgByXml, IP_NET_DVR_XMLGET_PlatformConfig,
                            IP_NET_DVR_SET_PlatformConfig, [](PlatformConfig* c) {
                              c->Vexora.Enable = 1;
                              Set(c->Vexora.Server, "platform.example");
                              c->Vexora.Port = 4000000000u;
                            }),
    MakeRow<GB28181Config>("GB28181Config", 680, 681, IP_NET_DVR_GET_GB28181Config,
                           IP_NET_DVR_GetGB28181CfgByXml, IP_NET_DVR_XMLGET_GB28181Config,
                           IP_NET_DVR_SET_GB28181Config, [](GB28181Config* c) {
                             c->Gb.Enable = 1;
                             Set(c->Gb.hcIp, "10.0.0.5");
                             c->Gb.hcPort = 15060;
                           }),
    MakeRow<AlarmConfig>("AlarmConfig", 800, 820, IP_NET_DVR_GET_AlarmConfig,
                         IP_NET_DVR_GetAlarmConfigByXml, IP_NET_DVR_XMLGET_AlarmConfig,
                         IP_NET_DVR_SET_AlarmConfig, [](AlarmConfig* c) {
                           c->StorageFull.Threshold = 75;
                           c->SMS.enable = 1;
                           Set(c->SMS.content, "alarm <%s> at camera");
                         }),
    MakeRow<InputAlarm>("InputAlarm", 801, 821, IP_NET_DVR_GET_InputAlarm,
                        IP_NET_DVR_Alarm_getInputByXml, IP_NET_DVR_XMLGET_InputAlarmConfig,
                        IP_NET_DVR_SET_InputAlarmConfig, [](InputAlarm* c) {
                          AlarmChannel& ch = c->Channel[0];
                          ch.Enable = 1;
                          ch.TimeSpan.day3 = 0xFF00;
                          ch.IOOutput.Count = 2;
                          ch.IOOutput.Channel[1].Enable = 1;
                          ch.IOOutput.Channel[1].PortIndex = 1;
                          if (c->Count == 0) c->Count = 1;
                        }),
    MakeRow<MotionDetectAlarm>(
        "MotionDetectAlarm", 802, 822, IP_NET_DVR_GET_MotionDetectAlarm,
        IP_NET_DVR_Alarm_getMotionDetectByXml, IP_NET_DVR_XMLGET_MDAlarmConfig,
        IP_NET_DVR_SET_MotionDetectAlarm, [](MotionDetectAlarm* c) {
          c->Sensitivity = 5;
          c->NightStartTime = DayTime{19, 30, 0};
          Set(c->PTZ.ActionType, "PositionLoop");
        }),
    MakeRow<VideoCoverAlarm>("VideoCoverAlarm", 803, 823, IP_NET_DVR_GET_VideoCoverAlarm,
                             IP_NET_DVR_Alarm_getVideoCoverByXml, IP_NET_DVR_XMLGET_VCAlarmConfig,
                             IP_NET_DVR_SET_VCAlarmConfig, [](VideoCoverAlarm* c) {
                               c->Enable = 1;
                               c->threadhold_second = 30;
                             }),
    MakeRow<VideoLostAlarm>("VideoLostAlarm", 804, 824, IP_NET_DVR_GET_VideoLostAlarm,
                            IP_NET_DVR_Alarm_getVideoLostByXml, IP_NET_DVR_XMLGET_VlAlarmConfig,
                            IP_NET_DVR_SET_VlAlarmConfig, [](VideoLostAlarm* c) {
                              c->Enable = 1;
                              c->TimeSpan.day0 = 0x0F;
                            }),
    MakeRow<VideoGate>("VideoGate", 800, 828, IP_NET_DVR_GET_AlarmConfig,
                       Alarm_getVideoGateByXml, WriteVideoGate,
                       IP_NET_DVR_SET_VideoGateAlarmConfig, [](VideoGate* c) {
                         c->Line[2].fromx = 100;
                         c->Line[2].type = 3;
                         c->alarm_push = 1;
                       }),
    MakeRow<VideoPD>("PersonDetectAlarm", 808, 829, IP_NET_DVR_GET_PersonDetectAlarm,
                     IP_NET_DVR_Alarm_getPersonDetectByXml, IP_NET_DVR_XMLGET_PDAlarmConfig,
                     IP_NET_DVR_SET_PersonDetectAlarm, [](VideoPD* c) {
                       c->EnableNight = 1;
                       c->width = 640;
                       c->track_human = 1;
                     }),
    MakeRow<OutPutAlarm>("OutputAlarm", 800, 830, IP_NET_DVR_GET_AlarmConfig,
                         Alarm_getOutputByXml, WriteOutputAlarm,
                         IP_NET_DVR_SET_OutputAlarmConfig, [](OutPutAlarm* c) {
                           c->Channel[0].Duration = 45;
                           Set(c->Channel[0].TriggerType, "Pulse");
                           if (c->Count == 0) c->Count = 1;
                         }),
});

}  // namespace
}  // namespace qvexchange

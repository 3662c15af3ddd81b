// The configuration document an emulated camera starts with when it is
// given none: a fixed-lens camera with pan-tilt head, wired network, three
// video streams and G711 audio.
#include "emu/config_store.h"

namespace qvemu {

const std::string& ConfigStore::DefaultDocument() {
  static const std::string kDocument = R"XML(<?xml version="1.0" encoding="GB2312" ?>
<IPCConfig>
<ConfigVersion Version="1.0.0"></ConfigVersion>
<SystemConfig>
<PTZConfig Protocol="PELCO-D" ComPort="0" BaudRate="9600" DataBits="8" StopBits="1" Verify="None" FlowControl="None" BootAction="0">
<AfConfig enable="1" type="0" bSendOnStart="0" />
<AdvanceConfig>
<FunctionConfig FunctionName="scan" PresetNumber="99" Function="ScanOn" ReserveValue="0" PresetNumber2="0" Function2="" interval_sec="0" />
<FunctionConfig FunctionName="cruise" PresetNumber="98" Function="Orbit" ReserveValue="0" PresetNumber2="0" Function2="" interval_sec="10" />
</AdvanceConfig>
</PTZConfig>
<TimeConfig TimeMode="NTP" TimeZone="8">
<NTPConfig ServerIP="pool.ntp.org" ServerPort="123" RefreshInterval="60" />
<SummerTime enable="0" auto="0" offset="60">
<start month="3" week="5" weekday="0" hour="2" />
<end month="10" week="5" weekday="0" hour="3" />
</SummerTime>
</TimeConfig>
<UserConfig>
<Account Username="admin" Password="admin" Group="Administrators" Status="Enable" />
<Account Username="guest" Password="guest" Group="Users" Status="Disable" />
</UserConfig>
<SystemLogConfig LogLevel="Info" MaxDay="30" StoreMedia="SD" StorePolicy="Cycle" AutoBackup="0" BackupWay="FTP" />
<MiscConfig Language="English" />
<MaintainConfig Enable="0" Day="7" Time=" 3: 0: 0" />
<AlowIpConfig Enable="0" ipaddr1="0" ipaddr2="0" ipaddr3="0" ipaddr4="0" ipaddr5="0" />
<AlarmClockConfig>
<AlarmOnEveryHour enable="0" from_hour="8" from_minute="0" from_second="0" to_hour="20" to_minute="0" to_second="0" />
<alarmclock>
<clock enable="0" hour="7" minute="0" second="0" />
<clock enable="0" hour="12" minute="0" second="0" />
<clock enable="0" hour="18" minute="0" second="0" />
<clock enable="0" hour="0" minute="0" second="0" />
<clock enable="0" hour="0" minute="0" second="0" />
</alarmclock>
</AlarmClockConfig>
</SystemConfig>
<NetworkConfig>
<LANConfig MacAddress="02:51:56:00:00:01" DHCP="0" dhcpOffTime="-1" ALLNET="0" IPAddress="192.168.1.88" Netmask="255.255.255.0" Gateway="192.168.1.1" DNS1="192.168.1.1" DNS2="8.8.8.8" hostname="quorvel-emu" MTU="1400" />
<WIFIConfig Version="2.0" Enable="0" DHCP="1" IPAddress="" Netmask="" Gateway="" OperationMode="managed" MacAddress="02:51:56:00:00:02" ChannelNumber="6" Region="USA" ESSID="" ESSID_UTF8="" BitRate="auto" MacMode="MIXED">
<WirelessEncrypt Enable="0" EncryptType="NONE">
<WEPEncrypt AuthMode="open system" KeyIndex="1" EncryptType="" KeyMode="" KeyValue="" />
<WPAEncrypt EncryptType="AES" AuthMode="WPA2-PSK" KeyValue="" />
</WirelessEncrypt>
<PingWatchConfig Enable="0" PingAddress="192.168.1.1" Interval="60" MaxFail="3" />
</WIFIConfig>
<WIFIApConfig Version="2.0" Enable="0" IPAddress="192.168.100.1" Netmask="255.255.255.0" MacAddress="02:51:56:00:00:03" ChannelNumber="6" Region="USA" ESSID="quorvel-emu-ap" BitRate="auto" MacMode="MIXED">
<WirelessEncrypt Enable="0" EncryptType="NONE" />
</WIFIApConfig>
<AlarmServerConfig url="" withattachment="0" Username="" Password="" />
<ADSLConfig Enable="0" Username="" Password="" />
<DDNSConfig Enable="0" Server="" Domain="" Username="" Password="" FreshInterval="60" />
<UPNPConfig Enable="1" />
<G3Config Enable="0" Type="0" DialNumber="*99#" APN="" Username="" Password="" DialOption="0" CenterNumber="" SMSC="" />
<PPTPConfig Enable="0" Server="" Username="" Password="" MTU="1460" />
<P2PConfig Enable="0" Type="0" Authcode="" />
</NetworkConfig>
<ServerConfig>
<FTPList>
<FTPConfig Index="0" ServerIP="" ServerPort="21" Username="" Password="" FilePath="/" FileSize="0" />
<FTPConfig Index="1" ServerIP="" ServerPort="21" Username="" Password="" FilePath="/" FileSize="0" />
<FTPConfig Index="2" ServerIP="" ServerPort="21" Username="" Password="" FilePath="/" FileSize="0" />
<FTPConfig Index="3" ServerIP="" ServerPort="21" Username="" Password="" FilePath="/" FileSize="0" />
</FTPList>
<SMTPList ServerIP="" ServerPort="25" Auth="0" Username="" Password="" FromEmail="">
<SMTPConfig Index="0" ToEmail="" CcEmail="" Subject="camera alarm" />
<SMTPConfig Index="1" ToEmail="" CcEmail="" Subject="camera alarm" />
<SMTPConfig Index="2" ToEmail="" CcEmail="" Subject="camera alarm" />
</SMTPList>
</ServerConfig>
<MediaConfig>
<Video>
<Capture Brightness="50" Contrast="50" Saturation="50" Sharpness="50" TVSystem="0" forct_antiflicker="0" cropxpix="0" cropypix="0" HFlip="0" VFlip="0" rotate="0" WB_RGB="0" BackLight="0" HLC="0" TNF="1" SNF="1" IrcutMode="0" IrcutSensitivity="2" IrcutOpenLedDelay="3" led_brightness_mode="0" led_brightness_value="100" led_brightness_alarm="100" IrcutNightStartTime="18:00:00" IrcutNightEndTime="08:00:00" IrcutKeepColor="0" led_mode="0" ispadvmode="0" bManualGain="0" gainValue="0" WDRMode="0" WDRValue="128" DfrogFlag="0" DfrogValue="128" WDRStartTime="00:00:00" WDREndTime="00:00:00" shutter_mode="0" shutter_mode_night="0" shutter_speed_day="0" shutter_speed_night="0" isp_mode_color="0" isp_mode_night="0" videoEncodeMode="0" light_off_sensitivity="2" face_exposure_sensitivity="2" />
<Encode>
<EncodeConfig Stream="0" Enable="1" Resolution="1920x1080" EncodeFormat="H264" BitRateControl="CBR" Initquant="30" BitRateQuality="3" qp_enable="0" qp_min="20" qp_max="45" BitRate="2048" FrameRate="25" lbr_enable="0" lbr_style="0" lbr_bitratemode="0" lbr_bitrate="1024" lbr_motionlevel="0" lbr_noicelevel="0" />
<EncodeConfig Stream="1" Enable="1" Resolution="640x360" EncodeFormat="H264" BitRateControl="VBR" Initquant="30" BitRateQuality="3" qp_enable="0" qp_min="20" qp_max="45" BitRate="512" FrameRate="25" lbr_enable="0" lbr_style="0" lbr_bitratemode="0" lbr_bitrate="256" lbr_motionlevel="0" lbr_noicelevel="0" />
<EncodeConfig Stream="2" Enable="0" Resolution="320x180" EncodeFormat="H264" BitRateControl="VBR" Initquant="30" BitRateQuality="3" qp_enable="0" qp_min="20" qp_max="45" BitRate="256" FrameRate="15" lbr_enable="0" lbr_style="0" lbr_bitratemode="0" lbr_bitrate="128" lbr_motionlevel="0" lbr_noicelevel="0" />
<AdvanceEncodeConfig EncodeProfile="2" DisablePrivateData="0" EncMode="0" NoiceLevel="0" TwoLensWorkMode="0" OptimumDistance="0" />
</Encode>
<JpegConfig Enable="1" Quality="80" />
<Overlay Enable="1" Transparency="0" RealTransparency="0" time24or12="0" ovlayfps="0" Week="1" Fontsize="0" Style="0">
<TimeOverlay PosX="16" PosY="16" Format="YYYY-MM-DD hh:mm:ss" PosType="0" />
<TitleOverlay PosX="16" PosY="1040" PosType="2" TitleType="0" TitleUtf8="" Title="EMULATED CAMERA" />
</Overlay>
<Mask>
<MainStream Area1PosX="0" Area1PosY="0" Area1Width="0" Area1Height="0" Area2PosX="0" Area2PosY="0" Area2Width="0" Area2Height="0" Area3PosX="0" Area3PosY="0" Area3Width="0" Area3Height="0" Area4PosX="0" Area4PosY="0" Area4Width="0" Area4Height="0" />
<SubStream Area1PosX="0" Area1PosY="0" Area1Width="0" Area1Height="0" Area2PosX="0" Area2PosY="0" Area2Width="0" Area2Height="0" Area3PosX="0" Area3PosY="0" Area3Width="0" Area3Height="0" Area4PosX="0" Area4PosY="0" Area4Width="0" Area4Height="0" />
</Mask>
<ROI Enable="0" Area1PosX="0" Area1PosY="0" Area1Width="0" Area1Height="0" Area2PosX="0" Area2PosY="0" Area2Width="0" Area2Height="0" Area3PosX="0" Area3PosY="0" Area3Width="0" Area3Height="0" Area4PosX="0" Area4PosY="0" Area4Width="0" Area4Height="0" />
<UserOverlay>
<UserOSD enable="0" PosType="0" pos_xscale="0" pos_yscale="0" color_front="16777215" color_back="0" transparency="0" Fontsize="0" linegap="0" titleType="0" TitleUtf8="" />
</UserOverlay>
<YUV Enable="0" Resolution="640x360" FrameRate="15" Format="0" />
</Video>
<Audio>
<Capture Channels="1" BitsPerSample="16" SampleRate="8000" Volume="80" VolumePlay="100" amplify="1" ra_answer="0" aec_enable="0" mute_ptz_turn="0" />
<Encode Enable="1" SampleRate="8000" EncodeType="G711A" BitRate="64" />
</Audio>
</MediaConfig>
<MediaStreamConfig>
<StreamAccess Auth="1" VideoPort="554" RTPOverRTSP="1" enable_rtsp="1" enable_onvif="1" enable_web="1" OnvifAuth="1" WEBPort="80" httpsPort="443" h5Port="8080" httpsCertificate="" httpsKey="" enable_comm="1" PTZPort="5000" enable_hik="1" hik_port="8000" hik_auth="0" enable_dh="1" dh_port="37777" dh_auth="0" enable_tst="0" enable_rtmp="0" rtmp_port="1935" streamno="0" rtmp_type="0" rtmp_server="" rtmp_appname="" rtmp_streamid="" Multicast0_enable="0" Multicast1_enable="0" Multicast0_port="0" Multicast1_port="0" Multicast0_IP="0" Multicast1_IP="0">
<RtmpCfg />
</StreamAccess>
</MediaStreamConfig>
<PlatformConfig>
<VexoraConfig Enable="0" Server="" Port="7000" Username="" Password="" PlayTone="1" InRingTimes="3" reserved="0" keyPressTimeLen="2" FileName="" />
</PlatformConfig>
<GB28181Config>
<GB28181 Enable="0" nstreams="1" nChannelNum="1" hcId="34020000002000000001" hcIp="" hcName="" hcPwd="" hcPort="5060" lcId="34020000001320000001" lcName="" lcPwd="" lcPort="5060" camId="34020000001320000001" alarmId="34020000001340000001" deviceName="quorvel-emu" />
</GB28181Config>
<RecordConfig>
<Common LocalEnable="1" StorageSequence="SD" RemoteEnable="0" MountParam="" StoragePolicy="Cycle" RecordFileSize="64" recordFileKeeyDays="30" timelapseEnable="0" timelapseSec="0" timelapseFps="0" timelapseFileSize="0" />
<ScheduleRecord Stream="0" FileFormat="MP4" MediaType="VIDEO" LocalStore="1" RemoteStore="0" JpegInterval="0" FtpUpload="0" EmailUpload="0">
<EnableTimeList />
</ScheduleRecord>
<MotionDetectRecord Stream="0" FileFormat="MP4" MediaType="VIDEO" PreRecordTime="5" RecordTime="30" LocalStore="1" RemoteStore="0" FtpUpload="0" EmailUpload="0" alarmbits="0" />
<MotionDetectCapture PreTakeTime="0" sendoutInterval="1" TotalTakeTime="3" LocalStore="1" RemoteStore="0" FtpUpload="0" EmailUpload="0" StopNoAlarm="1" Stream="0" alarmbits="0" />
<InputAlarmRecord Stream="0" FileFormat="MP4" MediaType="VIDEO" PreRecordTime="5" RecordTime="30" LocalStore="1" RemoteStore="0" FtpUpload="0" EmailUpload="0" alarmbits="0" />
<InputAlarmCapture PreTakeTime="0" sendoutInterval="1" TotalTakeTime="3" LocalStore="1" RemoteStore="0" FtpUpload="0" EmailUpload="0" StopNoAlarm="1" Stream="0" alarmbits="0" />
</RecordConfig>
<AlarmConfig>
<InputAlarm>
<AlarmChannel PortIndex="0" ChannelType="NO" TriggerType="Level" Enable="0">
<EnableTimeList />
<AlarmAction light_twinkle="0" notify_alarmserver="0" notify_sms="0">
<IOOutputAction><OutputChannelAction Enable="0" PortIndex="0" /></IOOutputAction>
<PTZAction Enable="0" ActionType="PresetPosition" />
<AudioPlayAction Enable="0" EnableNight="0" Times="1" Intervel="0" FileName="" />
</AlarmAction>
</AlarmChannel>
</InputAlarm>
<MotionDetectAlarm Enable="1" BlockCount="396" BlockConfig="" Sensitivity="3" AlarmThreshold="10" DayNightSwitch="0" NightSensitivity="3" NightAlarmThreshold="10" NightStartTime="18: 0: 0" NightEndTime=" 8: 0: 0">
<EnableTimeList />
<AlarmAction light_twinkle="0" notify_alarmserver="0" alarm_led="0" alarm_push="1">
<IOOutputAction><OutputChannelAction Enable="0" PortIndex="0" /></IOOutputAction>
<PTZAction Enable="0" ActionType="PresetPosition" />
<AudioPlayAction Enable="0" EnableNight="0" Times="1" Intervel="0" FileName="" />
</AlarmAction>
</MotionDetectAlarm>
<VideoLostAlarm Enable="0">
<EnableTimeList />
<AlarmAction><IOOutputAction><OutputChannelAction Enable="0" PortIndex="0" /></IOOutputAction></AlarmAction>
</VideoLostAlarm>
<VideoCoverAlarm Enable="0" Sensitivity="3" threadhold_second="10" backgroundUpdateSecond="60">
<EnableTimeList />
<AlarmAction><IOOutputAction><OutputChannelAction Enable="0" PortIndex="0" /></IOOutputAction><AudioPlayAction Enable="0" EnableNight="0" Times="1" Intervel="0" FileName="" /></AlarmAction>
</VideoCoverAlarm>
<StorageFullAlarm Enable="1" Threshold="90">
<AlarmAction><IOOutputAction><OutputChannelAction Enable="0" PortIndex="0" /></IOOutputAction></AlarmAction>
</StorageFullAlarm>
<AudioAlarm enable_babycry="0" sensity_babycry="3" enable_lsd="0" sensity_lsd="3" />
<VideoPD EnableDay="0" EnableNight="0" Type="0" Threshold="50" Sensitivity="3" minTargetRate="5" nonMotionFilter="1" xPos="0" yPos="0" width="100" height="100">
<EnableTimeList />
<AlarmAction drawrect="1" draw_human="1" track_human="0" auto_zoom="0" rect_twinkle="0" light_twinkle="0" notify_alarmserver="0" alarm_led="0" alarm_push="1"><IOOutputAction><OutputChannelAction Enable="0" PortIndex="0" /></IOOutputAction><AudioPlayAction Enable="0" EnableNight="0" Times="1" Intervel="0" FileName="" /></AlarmAction>
</VideoPD>
<VideoGate>
<Line1 fromx="0" fromy="0" tox="0" toy="0" EnableDay="0" EnableNight="0" sensitivity="3" type="0" direction="0" />
<Line2 fromx="0" fromy="0" tox="0" toy="0" EnableDay="0" EnableNight="0" sensitivity="3" type="0" direction="0" />
<Line3 fromx="0" fromy="0" tox="0" toy="0" EnableDay="0" EnableNight="0" sensitivity="3" type="0" direction="0" />
<Line4 fromx="0" fromy="0" tox="0" toy="0" EnableDay="0" EnableNight="0" sensitivity="3" type="0" direction="0" />
<EnableTimeList />
<AlarmAction drawrect="1" draw_target="1" light_twinkle="0" notify_alarmserver="0" alarm_led="0" alarm_push="1"><IOOutputAction><OutputChannelAction Enable="0" PortIndex="0" /></IOOutputAction><AudioPlayAction Enable="0" EnableNight="0" Times="1" Intervel="0" FileName="" /></AlarmAction>
</VideoGate>
<VideoRegionAi>
<Rule1 enable="0" sensitivity="3" type_filter="1" mode="0" stayseconds="3" />
<Rule2 enable="0" sensitivity="3" type_filter="1" mode="0" stayseconds="3" />
<Rule3 enable="0" sensitivity="3" type_filter="1" mode="0" stayseconds="3" />
<EnableTimeList />
<AlarmAction drawrect="1" draw_target="1" light_twinkle="0" notify_alarmserver="0" alarm_led="0" alarm_push="1"><IOOutputAction><OutputChannelAction Enable="0" PortIndex="0" /></IOOutputAction><AudioPlayAction Enable="0" EnableNight="0" Times="1" Intervel="0" FileName="" /></AlarmAction>
</VideoRegionAi>
<Lpr Enable="0" Sensitivity="3">
<EnableTimeList />
<AlarmAction drawosd="1" playvoice="0"><IOOutputAction><OutputChannelAction Enable="0" PortIndex="0" /></IOOutputAction></AlarmAction>
</Lpr>
<FaceDetect EnableDay="0" EnableNight="0" Threshold="50" Sensitivity="3" xPos="0" yPos="0" width="100" height="100">
<EnableTimeList />
<AlarmAction drawrect="1"><IOOutputAction><OutputChannelAction Enable="0" PortIndex="0" /></IOOutputAction><AudioPlayAction Enable="0" EnableNight="0" Times="1" Intervel="0" FileName="" /></AlarmAction>
</FaceDetect>
<Temp_humidity temp_enable="0" temp_upper_limit="40" temp_lower_limit="0" temp_range_lower="-20" temp_range_upper="60" humidity_enable="0" humidity_upper_limit="80" humidity_lower_limit="20" humidity_range_lower="0" humidity_range_upper="100" voc_enable="0" voc_good="100" voc_TracePollution="200" voc_LightPollution="300" voc_ModeratePollution="400" voc_HeavyPollution="500">
<AlarmAction><IOOutputAction><OutputChannelAction Enable="0" PortIndex="0" /></IOOutputAction></AlarmAction>
</Temp_humidity>
<OutputAlarm>
<OutputChannel PortIndex="0" ChannelType="NO" TriggerType="Level" Duration="10" DayEnable="1" NightEnable="1" EnableDay="1" EnableNight="1" />
</OutputAlarm>
<SMSAlarm enable="0" min_interval="60" playresult="0" dstnumber="" content="" />
</AlarmConfig>
</IPCConfig>
)XML";
  return kDocument;
}

}  // namespace qvemu

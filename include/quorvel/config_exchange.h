/*
 * Configuration exchange: reading and writing a camera's configuration as
 * XML. Included by quorvel.h.
 *
 * The cycle: IP_NET_DVR_GET_<Section>(userID) asks the camera for a section;
 * its reply (the section's XML element) arrives later through the AUX
 * response callback, with the section's get code. A reader turns that text
 * into a record, the host edits the record, and IP_NET_DVR_SET_<Section>
 * turns it back into XML with the section's writer and sends it; the
 * camera's answer arrives as AUX response with the set code (flag 0: taken).
 *
 * Readers, IP_NET_DVR_<reader>(record, xml): fill the record (cleared first)
 * from the first element of the section's name in xml. 0, or -1 when the
 * text does not parse, lacks the element, or record or xml is null.
 * Attribute values longer than a text member are cut to its size - 1; lists
 * keep their first entries up to their capacity.
 *
 * Writers, IP_NET_DVR_XMLGET_<Section>(record): the section's XML in a new
 * text that the caller releases with free(); null for a null record.
 *
 * GET and SET functions only queue the request (results as for every
 * per-device function, see device.h: -9000002 for an unknown user ID, ...);
 * a SET whose record cannot be written (a null record) returns -8999992 and
 * sends nothing.
 */
#ifndef QUORVEL_CONFIG_EXCHANGE_H
#define QUORVEL_CONFIG_EXCHANGE_H

/* ------------------------------------------------------------------ */
/* Section codes (Msg_code of the get and set messages)                */
/* ------------------------------------------------------------------ */
enum {
  QV_CFG_GET_SYSTEM = 200, QV_CFG_GET_PTZ = 201, QV_CFG_GET_TIME = 202,
  QV_CFG_GET_USER = 203, QV_CFG_GET_SYSLOG = 204, QV_CFG_GET_MISC = 205,
  QV_CFG_SET_TIME = 222, QV_CFG_SET_USER = 223, QV_CFG_SET_MISC = 227,
  QV_CFG_GET_NETWORK = 300, QV_CFG_GET_LAN = 305, QV_CFG_GET_WIFI = 306,
  QV_CFG_GET_ADSL = 310, QV_CFG_GET_DDNS = 311, QV_CFG_GET_UPNP = 312,
  QV_CFG_GET_P2P = 315,
  QV_CFG_SET_NETWORK = 320, QV_CFG_SET_LAN = 325, QV_CFG_SET_WIFI = 326,
  QV_CFG_GET_SERVER = 400, QV_CFG_GET_FTP = 401, QV_CFG_GET_SMTP = 402,
  QV_CFG_GET_PLATFORM = 650, QV_CFG_SET_PLATFORM = 670,
  QV_CFG_GET_GB28181 = 680, QV_CFG_SET_GB28181 = 681,
  QV_CFG_GET_RECORD = 700,
  QV_CFG_GET_ALARM = 800, QV_CFG_GET_INPUT_ALARM = 801, QV_CFG_GET_MOTION_DETECT = 802,
  QV_CFG_GET_VIDEO_COVER = 803, QV_CFG_GET_VIDEO_LOST = 804, QV_CFG_GET_STORAGE_FULL = 805,
  QV_CFG_GET_PERSON_DETECT = 808,
  QV_CFG_SET_ALARM = 820, QV_CFG_SET_INPUT_ALARM = 821, QV_CFG_SET_MOTION_DETECT = 822,
  QV_CFG_SET_VIDEO_COVER = 823, QV_CFG_SET_VIDEO_LOST = 824, QV_CFG_SET_VIDEO_GATE = 828,
  QV_CFG_SET_PERSON_DETECT = 829, QV_CFG_SET_OUTPUT_ALARM = 830
};

/* ------------------------------------------------------------------ */
/* Readers                                                             */
/* ------------------------------------------------------------------ */
QV_API int IP_NET_DVR_GetNetworkCfgByXml(NetworkConfig* cfg, const char* xml);
QV_API int IP_NET_DVR_Network_getLANCfgByXml(LANConfig* cfg, const char* xml);
QV_API int IP_NET_DVR_Network_getWIFICfgByXml(WIFIConfig* cfg, const char* xml);
QV_API int IP_NET_DVR_Network_getADSLCfgByXml(ADSLConfig* cfg, const char* xml);
QV_API int IP_NET_DVR_Network_getDDNSCfgByXml(DDNSConfig* cfg, const char* xml);
QV_API int IP_NET_DVR_Network_getUPNPCfgByXml(UPNPConfig* cfg, const char* xml);
QV_API int IP_NET_DVR_Network_getP2PCfgByXml(P2PConfig* cfg, const char* xml);
/* A status reply (WIRE_NETWORK, WIRELESS_NETWORK, CLOUD); -1 also when it
 * holds none of the three. */
QV_API int IP_NET_DVR_GetNetworkStatusByXml(NetworkStatus* status, const char* xml);

QV_API int IP_NET_DVR_Server_getFtpsByXml(FTPList* cfg, const char* xml);   /* FTPList */
QV_API int IP_NET_DVR_Server_getSmtpsByXml(SMTPList* cfg, const char* xml); /* SMTPList */
QV_API int IP_NET_DVR_GetServerCfgByXml(ServerConfig* cfg, const char* xml);
QV_API int IP_NET_DVR_GetRecordCfgByXml(RecordConfig* cfg, const char* xml);
QV_API int IP_NET_DVR_GetPlatformCfgByXml(PlatformConfig* cfg, const char* xml);
QV_API int IP_NET_DVR_GetGB28181CfgByXml(GB28181Config* cfg, const char* xml);

QV_API int IP_NET_DVR_Alarm_getInputByXml(InputAlarm* cfg, const char* xml);
QV_API int IP_NET_DVR_Alarm_getMotionDetectByXml(MotionDetectAlarm* cfg, const char* xml);
QV_API int IP_NET_DVR_Alarm_getPersonDetectByXml(VideoPD* cfg, const char* xml); /* VideoPD */
QV_API int IP_NET_DVR_Alarm_getVideoLostByXml(VideoLostAlarm* cfg, const char* xml);
QV_API int IP_NET_DVR_Alarm_getVideoCoverByXml(VideoCoverAlarm* cfg, const char* xml);
QV_API int IP_NET_DVR_Alarm_getStorageFullByXml(StorageFullAlarm* cfg, const char* xml);
QV_API int IP_NET_DVR_GetAlarmConfigByXml(AlarmConfig* cfg, const char* xml);
/* The first AlarmChannel of the text. */
QV_API int IP_NET_DVR_InputAlarm_getAlarmChannelCfgByXml(AlarmChannel* cfg, const char* xml);

QV_API int IP_NET_DVR_System_getPTZCfgByXml(PTZConfig* cfg, const char* xml);
/* The attributes of the first PTZConfig. */
QV_API int IP_NET_DVR_System_getPTZCommonCfgByXml(PTZCommonConfig* cfg, const char* xml);
QV_API int IP_NET_DVR_System_getPTZAdvanceCfgByXml(PTZAdvanceConfig* cfg, const char* xml);
QV_API int IP_NET_DVR_System_getTimeCfgByXml(TimeConfig* cfg, const char* xml);
QV_API int IP_NET_DVR_System_getUserCfgByXml(UserConfig* cfg, const char* xml);
QV_API int IP_NET_DVR_System_getLogCfgByXml(SystemLogConfig* cfg, const char* xml);
QV_API int IP_NET_DVR_System_getMiscCfgByXml(MiscConfig* cfg, const char* xml);
QV_API int IP_NET_DVR_GetSystemConfigByXml(SystemConfig* cfg, const char* xml);

/* ------------------------------------------------------------------ */
/* Writers (release the text with free())                              */
/* ------------------------------------------------------------------ */
QV_API char* IP_NET_DVR_XMLGET_NetworkConfig(const NetworkConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_NetworkLANConfig(const LANConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_NetworkWIFIConfig(const WIFIConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_NetworkADSLConfig(const ADSLConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_NetworkDDNSConfig(const DDNSConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_NetworkUPNPConfig(const UPNPConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_NetworkP2PConfig(const P2PConfig* cfg);

QV_API char* IP_NET_DVR_XMLGET_ServerConfig(const ServerConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_FtpConfig(const FTPList* cfg);   /* FTPList */
QV_API char* IP_NET_DVR_XMLGET_SmtpConfig(const SMTPList* cfg); /* SMTPList */
QV_API char* IP_NET_DVR_XMLGET_RecordConfig(const RecordConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_PlatformConfig(const PlatformConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_GB28181Config(const GB28181Config* cfg);

QV_API char* IP_NET_DVR_XMLGET_AlarmConfig(const AlarmConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_InputAlarmConfig(const InputAlarm* cfg);
QV_API char* IP_NET_DVR_XMLGET_MDAlarmConfig(const MotionDetectAlarm* cfg);
QV_API char* IP_NET_DVR_XMLGET_PDAlarmConfig(const VideoPD* cfg);
QV_API char* IP_NET_DVR_XMLGET_VlAlarmConfig(const VideoLostAlarm* cfg);
QV_API char* IP_NET_DVR_XMLGET_VCAlarmConfig(const VideoCoverAlarm* cfg);
QV_API char* IP_NET_DVR_XMLGET_SFAlarmConfig(const StorageFullAlarm* cfg);

QV_API char* IP_NET_DVR_XMLGET_SystemConfig(const SystemConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_UserConfig(const UserConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_TimeConfig(const TimeConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_SyslogConfig(const SystemLogConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_SysMiscConfig(const MiscConfig* cfg);
QV_API char* IP_NET_DVR_XMLGET_PTZConfig(const PTZConfig* cfg);

/* ------------------------------------------------------------------ */
/* Get and set requests                                                */
/* ------------------------------------------------------------------ */
QV_API long IP_NET_DVR_GET_SystemConfig(long userID);        /* 200 */
QV_API long IP_NET_DVR_GET_PtzConfig(long userID);           /* 201 */
QV_API long IP_NET_DVR_GET_TimeConfig(long userID);          /* 202 */
QV_API long IP_NET_DVR_GET_UserConfig(long userID);          /* 203 */
QV_API long IP_NET_DVR_GET_SyslogConfig(long userID);        /* 204 */
QV_API long IP_NET_DVR_GET_MiscConfig(long userID);          /* 205 */
QV_API long IP_NET_DVR_GET_NetworkConfig(long userID);       /* 300 */
QV_API long IP_NET_DVR_GET_NetworkLANConfig(long userID);    /* 305 */
QV_API long IP_NET_DVR_GET_NetworkWIFIConfig(long userID);   /* 306 */
QV_API long IP_NET_DVR_GET_NetworkADSLConfig(long userID);   /* 310 */
QV_API long IP_NET_DVR_GET_NetworkDDNSConfig(long userID);   /* 311 */
QV_API long IP_NET_DVR_GET_NetworkUPNPConfig(long userID);   /* 312 */
QV_API long IP_NET_DVR_GET_NetworkP2PConfig(long userID);    /* 315 */
QV_API long IP_NET_DVR_GET_ServerConfig(long userID);        /* 400 */
QV_API long IP_NET_DVR_GET_FtpServerConfig(long userID);     /* 401 */
QV_API long IP_NET_DVR_GET_SmtpServerConfig(long userID);    /* 402 */
QV_API long IP_NET_DVR_GET_PlatformConfig(long userID);      /* 650 */
QV_API long IP_NET_DVR_GET_GB28181Config(long userID);       /* 680 */
QV_API long IP_NET_DVR_GET_RecordConfig(long userID);        /* 700 */
QV_API long IP_NET_DVR_GET_AlarmConfig(long userID);         /* 800 */
QV_API long IP_NET_DVR_GET_InputAlarm(long userID);          /* 801 */
QV_API long IP_NET_DVR_GET_MotionDetectAlarm(long userID);   /* 802 */
QV_API long IP_NET_DVR_GET_VideoCoverAlarm(long userID);     /* 803 */
QV_API long IP_NET_DVR_GET_VideoLostAlarm(long userID);      /* 804 */
QV_API long IP_NET_DVR_GET_StorageFullAlarm(long userID);    /* 805 */
QV_API long IP_NET_DVR_GET_PersonDetectAlarm(long userID);   /* 808 */

QV_API long IP_NET_DVR_SET_TimeConfig(long userID, const TimeConfig* cfg);              /* 222 */
QV_API long IP_NET_DVR_SET_UserConfig(long userID, const UserConfig* cfg);              /* 223 */
QV_API long IP_NET_DVR_SET_MiscConfig(long userID, const MiscConfig* cfg);              /* 227 */
QV_API long IP_NET_DVR_SET_NetworkConfig(long userID, const NetworkConfig* cfg);        /* 320 */
QV_API long IP_NET_DVR_SET_NetworkLANConfig(long userID, const LANConfig* cfg);         /* 325 */
QV_API long IP_NET_DVR_SET_NetworkWIFIConfig(long userID, const WIFIConfig* cfg);       /* 326 */
QV_API long IP_NET_DVR_SET_PlatformConfig(long userID, const PlatformConfig* cfg);      /* 670 */
QV_API long IP_NET_DVR_SET_GB28181Config(long userID, const GB28181Config* cfg);        /* 681 */
QV_API long IP_NET_DVR_SET_AlarmConfig(long userID, const AlarmConfig* cfg);            /* 820 */
QV_API long IP_NET_DVR_SET_InputAlarmConfig(long userID, const InputAlarm* cfg);        /* 821 */
QV_API long IP_NET_DVR_SET_MotionDetectAlarm(long userID, const MotionDetectAlarm* cfg);/* 822 */
QV_API long IP_NET_DVR_SET_VCAlarmConfig(long userID, const VideoCoverAlarm* cfg);      /* 823 */
QV_API long IP_NET_DVR_SET_VlAlarmConfig(long userID, const VideoLostAlarm* cfg);       /* 824 */
QV_API long IP_NET_DVR_SET_VideoGateAlarmConfig(long userID, const VideoGate* cfg);     /* 828 */
QV_API long IP_NET_DVR_SET_PersonDetectAlarm(long userID, const VideoPD* cfg);          /* 829 */
QV_API long IP_NET_DVR_SET_OutputAlarmConfig(long userID, const OutPutAlarm* cfg);      /* 830 */

/* ------------------------------------------------------------------ */
/* Media capabilities, system time, versions, event names              */
/* ------------------------------------------------------------------ */

/* One video capability of the camera: two texts and ten numbers whose
 * meaning is the camera's, in the order it sends them. */
typedef struct VideoCap {
  char name[32];
  char text2[32];
  int value[10];
} VideoCap;
QV_STATIC_ASSERT(sizeof(VideoCap) == 104, "VideoCap layout");

/* One audio capability: a name and five numbers, in the camera's order. */
typedef struct AudioCap {
  char name[32];
  int value[5];
} AudioCap;
QV_STATIC_ASSERT(sizeof(AudioCap) == 52, "AudioCap layout");

/* Asks for the media capabilities (system control 1031); the reply arrives
 * as AUX response 1031. */
QV_API long IP_NET_DVR_GET_MediaCapability(long userID);

/* Reads that reply: its RESPONSE_PARAM's VideoCap and AudioCap CapList
 * attributes, entries split by ';' (an empty entry ends the list) and values
 * by ','. A video entry is kept when its two texts are not empty and its
 * fifth and sixth values are above 0 (at most 100 kept); an audio entry when
 * its name is not empty (at most 10). For each kind with entries kept, a new
 * array of exactly that many records is stored in *videoList / *audioList
 * (release it with delete[] from C++; a null list pointer skips that kind)
 * and its count in *videoCount / *audioCount; a kind without entries, or a
 * reply that does not parse or has no RESPONSE_PARAM, leaves them as they
 * were, so initialise them. 0; -8999992 for a null or empty reply or a null
 * count; -8000000 when memory runs out. */
QV_API long IP_NET_DVR_XMLGET_MediaCapability(const char* reply, int* videoCount,
                                              VideoCap** videoList, int* audioCount,
                                              AudioCap** audioList);

/* Asks for the camera's time (system control 1048); the reply arrives as AUX
 * response 1048. */
QV_API long IP_NET_DVR_GET_SYSTEMTIME(long userID);

/* Reads that reply into seven values: time zone, year, month, day, hour,
 * minute, second (all 0 first). 0; -8999992 for a null time; -8999977 when
 * the reply does not parse or has no RESPONSE_PARAM. */
QV_API long IP_NET_DVR_XMLGET_SYSTEMTIME(const char* reply, int* time);

/* Sets the camera's time (system control 1005) from seven values as above:
 * Time="YYYYMMDD hh:mm:ss" from values 1 to 6, TimeZone from value 0.
 * -8999992 for a null time. */
QV_API long IP_NET_DVR_SET_SYSTEMTIME(long userID, const int* time);

/* Reads a version reply into output (512 bytes, cleared first):
 * KernelVersion in the first 256 bytes, FileSystemVersion in the second
 * (at most 255 characters each). 0; -8999992 for a null output; -8999977
 * when the reply does not parse or has no RESPONSE_PARAM. */
QV_API long IP_NET_DVR_GetSystemVersionByXml(char* output, const char* reply);

/* The name of a status event code ("EVENT_PTZALARM" for 23, the "EVNET"
 * spellings kept), or "" for an unknown code. The text is static. */
QV_API const char* IP_NET_DVR_GET_EVENTNAME(unsigned int code);

#endif /* QUORVEL_CONFIG_EXCHANGE_H */

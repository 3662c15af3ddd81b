/*
 * System, record, server, platform and GB28181 sections of the configuration
 * (elements SystemConfig, RecordConfig, ServerConfig, PlatformConfig and
 * GB28181Config).
 *
 * Plain fixed-size records, copied by value. Text members are zero-terminated
 * char arrays; readers keep at most size - 1 characters. Lists hold a count
 * and a fixed number of entries: readers keep the first entries up to the
 * capacity below and ignore the rest. Included from quorvel.h (needs
 * QV_STATIC_ASSERT, TimeSpanCfg, DayTime and UserConfig from config_types.h).
 */
#ifndef QUORVEL_CONFIG_SYSTEM_H
#define QUORVEL_CONFIG_SYSTEM_H

/* Capacities of the lists. */
#define QV_MAX_PTZ_FUNCTIONS 16  /* FunctionConfig entries of AdvanceConfig */
#define QV_ALLOWED_IPS 5         /* ipaddr1 .. ipaddr5 of AlowIpConfig */
#define QV_ALARM_CLOCKS 5        /* clock entries of alarmclock */
#define QV_MAX_FTP_SERVERS 4     /* FTPConfig entries of FTPList */
#define QV_MAX_SMTP_RECEIVERS 3  /* SMTPConfig entries of SMTPList */

/* ------------------------------------------------------------------ */
/* SystemConfig                                                        */
/* ------------------------------------------------------------------ */

/* The attributes of PTZConfig: the head's serial line and start action. */
typedef struct PTZCommonConfig {
  char Protocol[32];
  int ComPort;
  int BaudRate;
  int DataBits;
  int StopBits;
  char Verify[16];
  char FlowControl[16];
  int BootAction;
} PTZCommonConfig;
QV_STATIC_ASSERT(sizeof(PTZCommonConfig) == 84, "PTZCommonConfig layout");

/* Element AfConfig (auto focus). */
typedef struct PTZAfConfig {
  int enable;
  int type;
  int bSendOnStart;
} PTZAfConfig;
QV_STATIC_ASSERT(sizeof(PTZAfConfig) == 12, "PTZAfConfig layout");

/* One element FunctionConfig: a named function bound to presets. */
typedef struct PTZFunctionConfig {
  char FunctionName[32];
  int PresetNumber;
  char Function[32];   /* for example "ScanOn" or "Orbit" */
  int ReserveValue;
  int PresetNumber2;
  char Function2[32];
  int interval_sec;
} PTZFunctionConfig;
QV_STATIC_ASSERT(sizeof(PTZFunctionConfig) == 112, "PTZFunctionConfig layout");

/* Element AdvanceConfig. */
typedef struct PTZAdvanceConfig {
  int Count;  /* used entries of Function */
  PTZFunctionConfig Function[QV_MAX_PTZ_FUNCTIONS];
} PTZAdvanceConfig;
QV_STATIC_ASSERT(sizeof(PTZAdvanceConfig) == 1796, "PTZAdvanceConfig layout");

/* Element PTZConfig. */
typedef struct PTZConfig {
  PTZCommonConfig Common;
  PTZAfConfig Af;
  PTZAdvanceConfig Advance;
} PTZConfig;
QV_STATIC_ASSERT(sizeof(PTZConfig) == 1892, "PTZConfig layout");

/* Element NTPConfig. */
typedef struct NTPConfig {
  char ServerIP[64];
  int ServerPort;
  int RefreshInterval;
} NTPConfig;
QV_STATIC_ASSERT(sizeof(NTPConfig) == 72, "NTPConfig layout");

/* Elements start and end of SummerTime. */
typedef struct SummerTimeRule {
  int month;
  int week;
  int weekday;
  int hour;
} SummerTimeRule;

/* Element SummerTime (attribute "auto" is held in Auto). */
typedef struct SummerTimeConfig {
  int enable;
  int Auto;
  int offset;
  SummerTimeRule start;
  SummerTimeRule end;
} SummerTimeConfig;
QV_STATIC_ASSERT(sizeof(SummerTimeConfig) == 44, "SummerTimeConfig layout");

/* Element TimeConfig. */
typedef struct TimeConfig {
  char TimeMode[16];
  int TimeZone;
  NTPConfig NTP;
  SummerTimeConfig Summer;
} TimeConfig;
QV_STATIC_ASSERT(sizeof(TimeConfig) == 136, "TimeConfig layout");

/* Element SystemLogConfig. */
typedef struct SystemLogConfig {
  char LogLevel[16];
  int MaxDay;
  char StoreMedia[16];
  char StorePolicy[16];
  int AutoBackup;
  char BackupWay[16];
} SystemLogConfig;
QV_STATIC_ASSERT(sizeof(SystemLogConfig) == 72, "SystemLogConfig layout");

/* Element MiscConfig. */
typedef struct MiscConfig {
  char Language[32];
} MiscConfig;

/* Element MaintainConfig: scheduled restart. */
typedef struct MaintainConfig {
  int Enable;
  int Day;
  DayTime Time;  /* written "%2d:%2d:%2d", blank-padded */
} MaintainConfig;
QV_STATIC_ASSERT(sizeof(MaintainConfig) == 20, "MaintainConfig layout");

/* Element AlowIpConfig: addresses allowed to connect, IPv4 addresses as
 * 32-bit numbers (ipaddr1 is ipaddr[0]). */
typedef struct AlowIpConfig {
  int Enable;
  unsigned int ipaddr[QV_ALLOWED_IPS];
} AlowIpConfig;
QV_STATIC_ASSERT(sizeof(AlowIpConfig) == 24, "AlowIpConfig layout");

/* Element AlarmOnEveryHour: the hourly chime and the part of the day it
 * sounds in. */
typedef struct AlarmOnEveryHour {
  int enable;
  int from_hour, from_minute, from_second;
  int to_hour, to_minute, to_second;
} AlarmOnEveryHour;

/* One element clock of alarmclock. */
typedef struct AlarmClock {
  int enable;
  int hour, minute, second;
} AlarmClock;

/* Element AlarmClockConfig. */
typedef struct AlarmClockConfig {
  AlarmOnEveryHour EveryHour;
  AlarmClock Clock[QV_ALARM_CLOCKS];
} AlarmClockConfig;
QV_STATIC_ASSERT(sizeof(AlarmClockConfig) == 108, "AlarmClockConfig layout");

/* The whole system section (element SystemConfig). */
typedef struct SystemConfig {
  PTZConfig PTZ;
  TimeConfig Time;
  UserConfig User;
  SystemLogConfig SystemLog;
  MiscConfig Misc;
  MaintainConfig Maintain;
  AlowIpConfig AlowIp;
  AlarmClockConfig AlarmClock;
} SystemConfig;
QV_STATIC_ASSERT(sizeof(SystemConfig) == 3488, "SystemConfig layout");

/* ------------------------------------------------------------------ */
/* RecordConfig                                                        */
/* ------------------------------------------------------------------ */

/* Element Common ("recordFileKeeyDays" is the attribute's own spelling). */
typedef struct RecordCommon {
  int LocalEnable;
  char StorageSequence[32];
  int RemoteEnable;
  char MountParam[128];
  char StoragePolicy[32];
  int RecordFileSize;
  int recordFileKeeyDays;
  int timelapseEnable;
  int timelapseSec;
  int timelapseFps;
  int timelapseFileSize;
} RecordCommon;
QV_STATIC_ASSERT(sizeof(RecordCommon) == 224, "RecordCommon layout");

/* Element ScheduleRecord. */
typedef struct ScheduleRecord {
  int Stream;
  char FileFormat[16];
  char MediaType[16];
  int LocalStore;
  int RemoteStore;
  int JpegInterval;
  int FtpUpload;
  int EmailUpload;
  TimeSpanCfg TimeSpan;
} ScheduleRecord;
QV_STATIC_ASSERT(sizeof(ScheduleRecord) == 84, "ScheduleRecord layout");

/* Elements MotionDetectRecord and InputAlarmRecord. */
typedef struct AlarmRecordConfig {
  int Stream;
  char FileFormat[16];
  char MediaType[16];
  int PreRecordTime;
  int RecordTime;
  int LocalStore;
  int RemoteStore;
  int FtpUpload;
  int EmailUpload;
  unsigned int alarmbits;
} AlarmRecordConfig;
QV_STATIC_ASSERT(sizeof(AlarmRecordConfig) == 64, "AlarmRecordConfig layout");

/* Elements MotionDetectCapture and InputAlarmCapture. */
typedef struct AlarmCaptureConfig {
  int PreTakeTime;
  int sendoutInterval;
  int TotalTakeTime;
  int LocalStore;
  int RemoteStore;
  int FtpUpload;
  int EmailUpload;
  int StopNoAlarm;
  int Stream;
  unsigned int alarmbits;
} AlarmCaptureConfig;
QV_STATIC_ASSERT(sizeof(AlarmCaptureConfig) == 40, "AlarmCaptureConfig layout");

/* The whole record section (element RecordConfig). */
typedef struct RecordConfig {
  RecordCommon Common;
  ScheduleRecord Schedule;
  AlarmRecordConfig MotionDetectRecord;
  AlarmCaptureConfig MotionDetectCapture;
  AlarmRecordConfig InputAlarmRecord;
  AlarmCaptureConfig InputAlarmCapture;
} RecordConfig;
QV_STATIC_ASSERT(sizeof(RecordConfig) == 516, "RecordConfig layout");

/* ------------------------------------------------------------------ */
/* ServerConfig                                                        */
/* ------------------------------------------------------------------ */

/* One element FTPConfig. */
typedef struct FTPConfig {
  int Index;
  char ServerIP[64];
  int ServerPort;
  char Username[64];
  char Password[64];
  char FilePath[128];
  int FileSize;
} FTPConfig;
QV_STATIC_ASSERT(sizeof(FTPConfig) == 332, "FTPConfig layout");

/* Element FTPList. */
typedef struct FTPList {
  int Count;  /* used entries of Server */
  FTPConfig Server[QV_MAX_FTP_SERVERS];
} FTPList;
QV_STATIC_ASSERT(sizeof(FTPList) == 1332, "FTPList layout");

/* One element SMTPConfig: a receiver of alarm mails. */
typedef struct SMTPConfig {
  int Index;
  char ToEmail[128];
  char CcEmail[128];
  char Subject[128];
} SMTPConfig;
QV_STATIC_ASSERT(sizeof(SMTPConfig) == 388, "SMTPConfig layout");

/* Element SMTPList: the mail server and its receivers. */
typedef struct SMTPList {
  char ServerIP[64];
  int ServerPort;
  int Auth;
  char Username[64];
  char Password[64];
  char FromEmail[128];
  int Count;  /* used entries of Receiver */
  SMTPConfig Receiver[QV_MAX_SMTP_RECEIVERS];
} SMTPList;
QV_STATIC_ASSERT(sizeof(SMTPList) == 1496, "SMTPList layout");

/* The whole server section (element ServerConfig). */
typedef struct ServerConfig {
  FTPList FTP;
  SMTPList SMTP;
} ServerConfig;
QV_STATIC_ASSERT(sizeof(ServerConfig) == 2828, "ServerConfig layout");

/* ------------------------------------------------------------------ */
/* PlatformConfig and GB28181Config                                    */
/* ------------------------------------------------------------------ */

/* Element VexoraConfig: the remote platform server. */
typedef struct VexoraConfig {
  int Enable;
  char Server[128];
  unsigned int Port;
  char Username[64];
  char Password[64];
  int PlayTone;
  int InRingTimes;
  int reserved;
  int keyPressTimeLen;
  char FileName[128];
} VexoraConfig;
QV_STATIC_ASSERT(sizeof(VexoraConfig) == 408, "VexoraConfig layout");

/* The whole platform section (element PlatformConfig). */
typedef struct PlatformConfig {
  VexoraConfig Vexora;
} PlatformConfig;

/* Element GB28181: the platform client. hc* name the platform server, lc*
 * the device itself. */
typedef struct GB28181 {
  int Enable;
  int nstreams;
  int nChannelNum;
  char hcId[32];
  char hcIp[64];
  char hcName[64];
  char hcPwd[64];
  int hcPort;
  char lcId[32];
  char lcName[64];
  char lcPwd[64];
  int lcPort;
  char camId[32];
  char alarmId[32];
  char deviceName[64];
} GB28181;
QV_STATIC_ASSERT(sizeof(GB28181) == 532, "GB28181 layout");

/* The whole GB28181 section (element GB28181Config). */
typedef struct GB28181Config {
  GB28181 Gb;
} GB28181Config;

#endif /* QUORVEL_CONFIG_SYSTEM_H */

/*
 * Alarm section of the configuration (element AlarmConfig): the camera's
 * alarm sources, each with its schedule and the actions taken when it fires.
 *
 * Plain fixed-size records, copied by value. Text members are zero-terminated
 * char arrays; readers keep at most size - 1 characters. Lists hold a count
 * and a fixed number of entries: readers keep the first entries up to the
 * capacity below and ignore the rest. Included from quorvel.h (needs
 * QV_STATIC_ASSERT and TimeSpanCfg from config_types.h).
 *
 * Schedules (TimeSpanCfg) read from an element without EnableTimeList, or
 * with an all-zero mask, are the full week (every mask 0xFFFFFF).
 */
#ifndef QUORVEL_CONFIG_ALARM_H
#define QUORVEL_CONFIG_ALARM_H

/* Capacities of the lists. */
#define QV_MAX_OUTPUT_ACTIONS 4   /* OutputChannelAction entries of an IOOutputAction */
#define QV_MAX_INPUT_CHANNELS 4   /* AlarmChannel entries of InputAlarm */
#define QV_MAX_OUTPUT_CHANNELS 4  /* OutputChannel entries of OutputAlarm */
#define QV_VIDEO_GATE_LINES 4     /* Line1 .. Line4 of VideoGate */
#define QV_REGION_AI_RULES 3      /* Rule1 .. Rule3 of VideoRegionAi */

/* ---- actions (children of AlarmAction) ---------------------------- */

/* One alarm output to drive (element OutputChannelAction). */
typedef struct OutputChannelAction {
  int Enable;
  int PortIndex;
} OutputChannelAction;

/* Element IOOutputAction: the outputs to drive. */
typedef struct IOOutputAction {
  int Count;  /* used entries of Channel */
  OutputChannelAction Channel[QV_MAX_OUTPUT_ACTIONS];
} IOOutputAction;
QV_STATIC_ASSERT(sizeof(IOOutputAction) == 36, "IOOutputAction layout");

/* Element PTZAction. ActionType is "PositionLoop", "PresetPosition" or
 * "PositionWalk"; another text is kept as it is (and logged on reading). */
typedef struct PTZAction {
  int Enable;
  char ActionType[32];
} PTZAction;
QV_STATIC_ASSERT(sizeof(PTZAction) == 36, "PTZAction layout");

/* Element AudioPlayAction ("Intervel" is the attribute's own spelling). */
typedef struct AudioPlayAction {
  int Enable;
  int EnableNight;
  int Times;
  int Intervel;
  char FileName[128];
} AudioPlayAction;
QV_STATIC_ASSERT(sizeof(AudioPlayAction) == 144, "AudioPlayAction layout");

/* ---- alarm sources -------------------------------------------------- */

/* One alarm input (element AlarmChannel inside InputAlarm). */
typedef struct AlarmChannel {
  int PortIndex;
  char ChannelType[32];
  char TriggerType[32];
  int Enable;
  TimeSpanCfg TimeSpan;
  /* AlarmAction */
  int light_twinkle;
  int notify_alarmserver;
  int notify_sms;
  IOOutputAction IOOutput;
  PTZAction PTZ;
  AudioPlayAction AudioPlay;
} AlarmChannel;
QV_STATIC_ASSERT(sizeof(AlarmChannel) == 328, "AlarmChannel layout");

/* Element InputAlarm. */
typedef struct InputAlarm {
  int Count;  /* used entries of Channel */
  AlarmChannel Channel[QV_MAX_INPUT_CHANNELS];
} InputAlarm;
QV_STATIC_ASSERT(sizeof(InputAlarm) == 1316, "InputAlarm layout");

/* Element MotionDetectAlarm. */
typedef struct MotionDetectAlarm {
  int Enable;
  int BlockCount;
  char BlockConfig[512];
  int Sensitivity;
  int AlarmThreshold;
  int DayNightSwitch;
  int NightSensitivity;
  int NightAlarmThreshold;
  DayTime NightStartTime;     /* written "%2d:%2d:%2d", blank-padded */
  DayTime NightEndTime;
  TimeSpanCfg TimeSpan;
  /* AlarmAction */
  int light_twinkle;
  int notify_alarmserver;
  int alarm_led;
  int alarm_push;
  IOOutputAction IOOutput;
  PTZAction PTZ;
  AudioPlayAction AudioPlay;
} MotionDetectAlarm;
QV_STATIC_ASSERT(sizeof(MotionDetectAlarm) == 824, "MotionDetectAlarm layout");

/* Element VideoLostAlarm. */
typedef struct VideoLostAlarm {
  int Enable;
  TimeSpanCfg TimeSpan;
  IOOutputAction IOOutput;
} VideoLostAlarm;
QV_STATIC_ASSERT(sizeof(VideoLostAlarm) == 68, "VideoLostAlarm layout");

/* Element VideoCoverAlarm (tampering). */
typedef struct VideoCoverAlarm {
  int Enable;
  int Sensitivity;
  int threadhold_second;
  int backgroundUpdateSecond;
  TimeSpanCfg TimeSpan;
  IOOutputAction IOOutput;
  AudioPlayAction AudioPlay;
} VideoCoverAlarm;
QV_STATIC_ASSERT(sizeof(VideoCoverAlarm) == 224, "VideoCoverAlarm layout");

/* Element StorageFullAlarm. */
typedef struct StorageFullAlarm {
  int Enable;
  int Threshold;
  IOOutputAction IOOutput;
} StorageFullAlarm;
QV_STATIC_ASSERT(sizeof(StorageFullAlarm) == 44, "StorageFullAlarm layout");

/* Element AudioAlarm (baby cry and loud sound detection). */
typedef struct AudioAlarm {
  int enable_babycry;
  int sensity_babycry;
  int enable_lsd;
  int sensity_lsd;
} AudioAlarm;
QV_STATIC_ASSERT(sizeof(AudioAlarm) == 16, "AudioAlarm layout");

/* One line of VideoGate (elements Line1 .. Line4). */
typedef struct VideoGateLine {
  int fromx, fromy, tox, toy;
  int EnableDay;
  int EnableNight;
  int sensitivity;
  unsigned int type;
  int direction;
} VideoGateLine;
QV_STATIC_ASSERT(sizeof(VideoGateLine) == 36, "VideoGateLine layout");

/* Element VideoGate (line crossing). */
typedef struct VideoGate {
  VideoGateLine Line[QV_VIDEO_GATE_LINES];
  TimeSpanCfg TimeSpan;
  /* AlarmAction */
  int drawrect;
  int draw_target;
  int light_twinkle;
  int notify_alarmserver;
  int alarm_led;
  int alarm_push;
  IOOutputAction IOOutput;
  AudioPlayAction AudioPlay;
} VideoGate;
QV_STATIC_ASSERT(sizeof(VideoGate) == 376, "VideoGate layout");

/* One rule of VideoRegionAi (elements Rule1 .. Rule3). */
typedef struct RegionAiRule {
  int enable;
  int sensitivity;
  unsigned int type_filter;
  int mode;
  int stayseconds;
} RegionAiRule;
QV_STATIC_ASSERT(sizeof(RegionAiRule) == 20, "RegionAiRule layout");

/* Element VideoRegionAi (region intrusion). */
typedef struct VideoRegionAi {
  RegionAiRule Rule[QV_REGION_AI_RULES];
  TimeSpanCfg TimeSpan;
  /* AlarmAction */
  int drawrect;
  int draw_target;
  int light_twinkle;
  int notify_alarmserver;
  int alarm_led;
  int alarm_push;
  IOOutputAction IOOutput;
  AudioPlayAction AudioPlay;
} VideoRegionAi;
QV_STATIC_ASSERT(sizeof(VideoRegionAi) == 292, "VideoRegionAi layout");

/* Element VideoPD (person detection). */
typedef struct VideoPD {
  int EnableDay;
  int EnableNight;
  int Type;
  int Threshold;
  int Sensitivity;
  int minTargetRate;
  int nonMotionFilter;
  int xPos, yPos, width, height;
  TimeSpanCfg TimeSpan;
  /* AlarmAction */
  int drawrect;
  int draw_human;
  int track_human;
  int auto_zoom;
  int rect_twinkle;
  int light_twinkle;
  int notify_alarmserver;
  int alarm_led;
  int alarm_push;
  IOOutputAction IOOutput;
  AudioPlayAction AudioPlay;
} VideoPD;
QV_STATIC_ASSERT(sizeof(VideoPD) == 288, "VideoPD layout");

/* Element Lpr (licence-plate recognition). */
typedef struct Lpr {
  int Enable;
  int Sensitivity;
  TimeSpanCfg TimeSpan;
  /* AlarmAction */
  int drawosd;
  int playvoice;
  IOOutputAction IOOutput;
} Lpr;
QV_STATIC_ASSERT(sizeof(Lpr) == 80, "Lpr layout");

/* Element FaceDetect. */
typedef struct FaceDetect {
  int EnableDay;
  int EnableNight;
  int Threshold;
  int Sensitivity;
  int xPos, yPos, width, height;
  TimeSpanCfg TimeSpan;
  /* AlarmAction */
  int drawrect;
  IOOutputAction IOOutput;
  AudioPlayAction AudioPlay;
} FaceDetect;
QV_STATIC_ASSERT(sizeof(FaceDetect) == 244, "FaceDetect layout");

/* Element Temp_humidity (temperature, humidity and air quality limits). */
typedef struct Temp_humidity {
  int temp_enable;
  int temp_upper_limit;
  int temp_lower_limit;
  int temp_range_lower;
  int temp_range_upper;
  int humidity_enable;
  int humidity_upper_limit;
  int humidity_lower_limit;
  int humidity_range_lower;
  int humidity_range_upper;
  int voc_enable;
  int voc_good;
  int voc_TracePollution;
  int voc_LightPollution;
  int voc_ModeratePollution;
  int voc_HeavyPollution;
  IOOutputAction IOOutput;
} Temp_humidity;
QV_STATIC_ASSERT(sizeof(Temp_humidity) == 100, "Temp_humidity layout");

/* One alarm output (element OutputChannel inside OutputAlarm). */
typedef struct OutputChannel {
  int PortIndex;
  char ChannelType[32];
  char TriggerType[32];
  int Duration;
  int DayEnable;
  int NightEnable;
  int EnableDay;
  int EnableNight;
} OutputChannel;
QV_STATIC_ASSERT(sizeof(OutputChannel) == 88, "OutputChannel layout");

/* Element OutputAlarm. */
typedef struct OutPutAlarm {
  int Count;  /* used entries of Channel */
  OutputChannel Channel[QV_MAX_OUTPUT_CHANNELS];
} OutPutAlarm;
QV_STATIC_ASSERT(sizeof(OutPutAlarm) == 356, "OutPutAlarm layout");

/* Element SMSAlarm. */
typedef struct SMSAlarm {
  int enable;
  int min_interval;
  int playresult;
  char dstnumber[64];
  char content[256];
} SMSAlarm;
QV_STATIC_ASSERT(sizeof(SMSAlarm) == 332, "SMSAlarm layout");

/* The whole alarm section (element AlarmConfig), members in this order. */
typedef struct AlarmConfig {
  InputAlarm Input;
  MotionDetectAlarm MotionDetect;
  VideoLostAlarm VideoLost;
  VideoCoverAlarm VideoCover;
  StorageFullAlarm StorageFull;
  AudioAlarm Audio;
  VideoGate Gate;
  VideoRegionAi RegionAi;
  VideoPD PersonDetect;
  Lpr LicencePlate;
  FaceDetect Face;
  OutPutAlarm Output;
  Temp_humidity TempHumidity;
  SMSAlarm SMS;
} AlarmConfig;
QV_STATIC_ASSERT(sizeof(AlarmConfig) == 4560, "AlarmConfig layout");

#endif /* QUORVEL_CONFIG_ALARM_H */

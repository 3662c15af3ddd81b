/*
 * Configuration records: fixed-size plain structures, copied by value.
 * Text members are zero-terminated char arrays; readers keep at most
 * size - 1 characters.
 */
#ifndef QUORVEL_CONFIG_TYPES_H
#define QUORVEL_CONFIG_TYPES_H

/* Weekly hour mask: bit h of dayN set = active during hour h of day N
 * (day0 is Sunday); 0xFFFFFF is the whole day. */
typedef struct TimeSpanCfg {
  unsigned int day0, day1, day2, day3, day4, day5, day6;
} TimeSpanCfg;
QV_STATIC_ASSERT(sizeof(TimeSpanCfg) == 28, "TimeSpanCfg layout");

/* A time of day as hour, minute and second (for example the night period
 * of the infrared-cut filter). */
typedef struct DayTime {
  int Hour;
  int Minute;
  int Second;
} DayTime;
QV_STATIC_ASSERT(sizeof(DayTime) == 12, "DayTime layout");

/* Wired network settings (element LANConfig). */
typedef struct LANConfig {
  char MacAddress[18];
  unsigned char DHCP;
  signed char dhcpOffTime;   /* default -1 */
  unsigned short ALLNET;
  char IPAddress[64];        /* 22 bytes into the record */
  char Netmask[64];
  char Gateway[64];
  char DNS1[64];
  char DNS2[64];
  char hostname[64];
  unsigned int MTU;          /* 1..8192, default 1400 */
  unsigned int reserved;     /* keeps the record at its interface size */
} LANConfig;
QV_STATIC_ASSERT(sizeof(LANConfig) == 416, "LANConfig layout");

/* One user account (element Account). */
typedef struct UserAccount {
  char Username[40];
  char Password[40];
  char Group[32];
  char Status[8];
} UserAccount;
QV_STATIC_ASSERT(sizeof(UserAccount) == 120, "UserAccount layout");

#define QV_MAX_USER_ACCOUNTS 10

/* The users of a camera (element UserConfig). */
typedef struct UserConfig {
  int nAccount;                               /* used entries of Account */
  UserAccount Account[QV_MAX_USER_ACCOUNTS];
} UserConfig;
QV_STATIC_ASSERT(sizeof(UserConfig) == 1204, "UserConfig layout");

/* RTMP push schedule (element RtmpCfg inside StreamAccess). */
typedef struct RtmpCfg {
  TimeSpanCfg TimeSpan;
} RtmpCfg;

/* Stream services and ports (element StreamAccess). Ports are 16-bit. */
typedef struct StreamAccessConfig {
  int Auth;
  int RTPOverRTSP;
  int enable_rtsp;
  int enable_onvif;
  int enable_web;
  int OnvifAuth;
  unsigned short VideoPort;  /* RTSP port, default 554 */
  unsigned short WEBPort;
  unsigned short httpsPort;
  unsigned short h5Port;
  char httpsCertificate[128];
  char httpsKey[128];
  int enable_comm;
  unsigned short PTZPort;
  unsigned short rtmp_port;  /* default 1935 */
  int enable_hik;            /* default 1 */
  unsigned short hik_port;   /* default 8000 */
  unsigned short dh_port;    /* default 37777 */
  int hik_auth;
  int enable_dh;             /* default 1 */
  int dh_auth;
  int enable_tst;
  int enable_rtmp;
  int streamno;
  int rtmp_type;
  char rtmp_server[64];
  char rtmp_appname[64];
  char rtmp_streamid[256];
  int Multicast0_enable;
  int Multicast1_enable;
  unsigned short Multicast0_port;
  unsigned short Multicast1_port;
  unsigned int Multicast0_IP;   /* IPv4 address as a 32-bit number */
  unsigned int Multicast1_IP;
  RtmpCfg Rtmp;
} StreamAccessConfig;

/* Where the camera offers its streams (element MediaStreamConfig). */
typedef struct MediaStreamConfig {
  StreamAccessConfig StreamAccess;
} MediaStreamConfig;
QV_STATIC_ASSERT(sizeof(MediaStreamConfig) == 764, "MediaStreamConfig layout");

#endif /* QUORVEL_CONFIG_TYPES_H */

/*
 * Network section of the configuration (element NetworkConfig) and the
 * network status records read from a camera's status reply.
 *
 * Plain fixed-size records, copied by value. Text members are zero-terminated
 * char arrays; readers keep at most size - 1 characters. Included from
 * quorvel.h (needs QV_STATIC_ASSERT and LANConfig from config_types.h).
 */
#ifndef QUORVEL_CONFIG_NETWORK_H
#define QUORVEL_CONFIG_NETWORK_H

/* Wireless encryption (element WirelessEncrypt with its children WEPEncrypt
 * and WPAEncrypt), part of WIFIConfig and WIFIApConfig. */
typedef struct WirelessEncrypt {
  int Enable;
  char EncryptType[64];
  char WEPAuthMode[64];     /* "open system" or "shared key" */
  char WEPEncryptType[64];
  char WEPKeyMode[64];
  char WEPKeyValue[64];
  int WEPKeyIndex;
  char WPAEncryptType[64];
  char WPAAuthMode[64];
  char WPAKeyValue[64];
} WirelessEncrypt;
QV_STATIC_ASSERT(sizeof(WirelessEncrypt) == 520, "WirelessEncrypt layout");

/* Link watch by ping (element PingWatchConfig inside WIFIConfig). */
typedef struct PingWatchConfig {
  int Enable;
  char PingAddress[64];
  int Interval;
  int MaxFail;
} PingWatchConfig;
QV_STATIC_ASSERT(sizeof(PingWatchConfig) == 76, "PingWatchConfig layout");

/* Wi-Fi client (element WIFIConfig). The network name is held in UTF-8; the
 * document carries it as GB2312 (ESSID) and as hexadecimal UTF-8
 * (ESSID_UTF8). Version is always written as "2.0". */
typedef struct WIFIConfig {
  int Enable;               /* default 1 */
  char Version[10];
  int DHCP;
  char IPAddress[64];
  char Netmask[64];
  char Gateway[64];
  char OperationMode[32];   /* default "managed" */
  char MacMode[64];         /* "MIXED", "G", "B" or "A" */
  char BitRate[10];
  char ESSID[64];           /* UTF-8 */
  char Region[64];          /* "USA", "TAIWAN", "FRANCE" or "ISRAEL" */
  int ChannelNumber;
  char MacAddress[18];
  WirelessEncrypt Encrypt;
  PingWatchConfig PingWatch;
} WIFIConfig;
QV_STATIC_ASSERT(sizeof(WIFIConfig) == 1068, "WIFIConfig layout");

/* Wi-Fi access point (element WIFIApConfig). ESSID is kept as it is. */
typedef struct WIFIApConfig {
  int Enable;
  char Version[10];
  char IPAddress[64];
  char Netmask[64];
  char MacMode[64];
  char BitRate[10];
  char ESSID[64];
  char Region[64];
  int ChannelNumber;
  char MacAddress[18];
  WirelessEncrypt Encrypt;
} WIFIApConfig;
QV_STATIC_ASSERT(sizeof(WIFIApConfig) == 888, "WIFIApConfig layout");

/* Alarm server (element AlarmServerConfig). Username and Password are
 * written without XML escaping. */
typedef struct AlarmServerConfig {
  char url[128];
  char Username[40];
  char Password[40];
  int withattachment;
} AlarmServerConfig;
QV_STATIC_ASSERT(sizeof(AlarmServerConfig) == 212, "AlarmServerConfig layout");

/* Dial-up line (element ADSLConfig). */
typedef struct ADSLConfig {
  int Enable;
  char Username[32];
  char Password[32];
} ADSLConfig;
QV_STATIC_ASSERT(sizeof(ADSLConfig) == 68, "ADSLConfig layout");

/* Dynamic DNS (element DDNSConfig). */
typedef struct DDNSConfig {
  int Enable;
  char Server[256];
  char Domain[256];
  char Username[256];
  char Password[256];
  int FreshInterval;
} DDNSConfig;
QV_STATIC_ASSERT(sizeof(DDNSConfig) == 1032, "DDNSConfig layout");

/* UPnP port mapping (element UPNPConfig). */
typedef struct UPNPConfig {
  int Enable;
} UPNPConfig;
QV_STATIC_ASSERT(sizeof(UPNPConfig) == 4, "UPNPConfig layout");

/* Peer-to-peer service (element P2PConfig). */
typedef struct P2PConfig {
  int Enable;
  int Type;
  char Authcode[16];
} P2PConfig;
QV_STATIC_ASSERT(sizeof(P2PConfig) == 24, "P2PConfig layout");

/* 3G/4G modem (element G3Config). Type is written but never read back: a
 * read leaves it 0. */
typedef struct G3Config {
  int Enable;
  int Type;
  char DialNumber[32];
  char APN[256];
  char Username[32];
  char Password[32];
  int DialOption;
  char CenterNumber[256];
  char SMSC[256];
} G3Config;
QV_STATIC_ASSERT(sizeof(G3Config) == 876, "G3Config layout");

/* PPTP tunnel (element PPTPConfig). MTU 1000..1500, otherwise 1460. */
typedef struct PPTPConfig {
  int Enable;
  char Server[256];
  char Username[256];
  char Password[256];
  int MTU;
} PPTPConfig;
QV_STATIC_ASSERT(sizeof(PPTPConfig) == 776, "PPTPConfig layout");

/* The whole network section (element NetworkConfig). */
typedef struct NetworkConfig {
  LANConfig LAN;
  WIFIConfig WIFI;
  WIFIApConfig WIFIAp;
  AlarmServerConfig AlarmServer;
  ADSLConfig ADSL;
  DDNSConfig DDNS;
  UPNPConfig UPNP;
  P2PConfig P2P;
  G3Config G3;
  PPTPConfig PPTP;
} NetworkConfig;
QV_STATIC_ASSERT(sizeof(NetworkConfig) == 5364, "NetworkConfig layout");

/* Wired link state (element WIRE_NETWORK of a status reply). */
typedef struct WireNetworkStatus {
  char MacAddress[256];
  char IPType[256];
  char IPAddress[256];
  char Netmask[256];
  char Gateway[256];
  char Dns1[256];
  char Dns2[256];
} WireNetworkStatus;

/* Wireless link state (element WIRELESS_NETWORK). EncrptType is spelled as
 * the element spells it. */
typedef struct WirelessNetworkStatus {
  char MacAddress[256];
  char IPAddress[256];
  char Netmask[256];
  char Gateway[256];
  char ESSID[256];
  char OperationMode[256];
  char AccessPoint[256];
  char Bitrate[256];
  char Frequency[256];
  char EncrptType[256];
  int LinkQuality;
  int SignalLevel;
  int Noise;
} WirelessNetworkStatus;

/* Cloud service state (element CLOUD). */
typedef struct CloudStatus {
  int Enable;
  int Type;
  int LoginStatus;
  char ID[128];
} CloudStatus;

/* A camera's network status reply. */
typedef struct NetworkStatus {
  WireNetworkStatus Wire;
  WirelessNetworkStatus Wireless;
  CloudStatus Cloud;
} NetworkStatus;
QV_STATIC_ASSERT(sizeof(NetworkStatus) == 4504, "NetworkStatus layout");

/* 3G/4G modem state (element Network4GStatus). */
typedef struct Network4GStatus {
  char Manufacturer[64];
  char Model[64];
  char ICCID[64];
  char IMEI[64];
  char IMSI[64];
  char MSISDN[64];
  char WorkMode[64];
  char Operator[64];
  int nSvrStatus;
  int nDialStatus;
  int nSimStatus;
  int nSignalLevel;
} Network4GStatus;
QV_STATIC_ASSERT(sizeof(Network4GStatus) == 528, "Network4GStatus layout");

#endif /* QUORVEL_CONFIG_NETWORK_H */

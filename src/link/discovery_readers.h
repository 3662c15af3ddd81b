// Readers of the XML that cameras send in reply to a LAN search: identity
// (serial number, platform, peer-to-peer id, type, OSD text) and the
// network, user and stream settings they announce. Each cuts its element out
// of the reply with a plain text search and parses only that fragment.
#pragma once

#include <string>

#include "quorvel/quorvel.h"

class TiXmlNode;

// Bytes that TinyGetDeviceParam2 may write into its osd buffer.
const int kOsdBytes = 255;

// Which root a discovery message has. Without a root name: 0 for both tags
// of XML_VEXORA, 1 for both tags of XML_BRELLWICK. With a root name: 2 when
// the message holds "</root>" (the opening tag is not required). -1
// otherwise, and for a null message.
int TinyGetMessageRootType(std::string root, char* message);

// IPC_SERIALNUMBER: SerialNumber and PLATFORMID into 32-byte buffers, P2PID
// into a 48-byte buffer, runtime. 0; -3 empty serial number; -2 not an
// IPC_SERIALNUMBER; -1 missing or unparsable.
int TinyGetDeviceParam(char* serial, char* platformId, char* p2pId, int* runtime, char* message);

// DEVICE_TYPE: DeviceType into a 32-byte buffer and the hexadecimal OSD text
// decoded into osd (at most kOsdBytes bytes, no terminator added). 0; -1
// empty type, missing or unparsable; -2 not a DEVICE_TYPE.
int TinyGetDeviceParam2(char* deviceType, unsigned char* osd, char* message);

// LANConfig (record cleared first). 0; -2 not a LANConfig; -1 otherwise.
int TinyNetwork_getLANCfgByXml(LANConfig* cfg, const char* message);
int TinyNetwork_getLANCfg(LANConfig* cfg, const TiXmlNode* node);

// UserConfig: one account per Account child, at most QV_MAX_USER_ACCOUNTS;
// each account's Status holds the first seven characters of its user name.
// 0; -2 not a UserConfig; -1 otherwise (silently when there is no
// "<UserConfig>").
int TinySystem_getUserCfgByXml(UserConfig* cfg, const char* message);
int TinySystem_getUserConfig(UserConfig* cfg, const TiXmlNode* node);
int TinyUser_getAccountConfig(UserAccount* account, const TiXmlNode* node);

// MediaStreamConfig (record cleared first): Auth, VideoPort, RTPOverRTSP,
// PTZPort and WEBPort of each StreamAccess child. 0; -2 not a
// MediaStreamConfig; -1 otherwise.
int TinyGetMediaStreamCfgByXml(MediaStreamConfig* cfg, const char* message);
int TinyGetMediaStreamCfg(MediaStreamConfig* cfg, const TiXmlNode* node);

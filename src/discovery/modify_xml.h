// The XML elements of the messages that change a camera (serial number,
// wired network, stream ports) and of the text that shows a found camera to
// the host (full stream access, users). Lines end in "\r\n".
//
// Each builder writes into buffer at most size - 1 characters (a longer text
// is cut without notice), terminates it and returns the length; -1 for a null
// buffer or record. Texts taken from the records are read no further than
// their fields.
#pragma once

#include <string>

#include "quorvel/quorvel.h"

// Size of the buffers the bodies are built in.
const int kModifyBodyBytes = 1024;

// <IPC_SERIALNUMBER SerialNumber="..."/>: how a camera knows a message is
// for it.
int MakeSerialNumberXml(char* buffer, int size, const char* serial);
// <LANConfig .../> with MAC, DHCP, address, mask, gateway (see
// LanGatewayText) and the two DNS servers.
int MakeNetworkLANCfgXml(char* buffer, int size, const LANConfig* lan);
// <MediaStreamConfig><StreamAccess .../></MediaStreamConfig> with the five
// settings a modification carries: Auth, VideoPort, RTPOverRTSP, PTZPort,
// WEBPort.
int MakeModifyMediaStreamCfgXml(char* buffer, int size, const MediaStreamConfig* stream);
// The same element with every stream access setting, for display.
int MakeMediaStreamCfgXml(char* buffer, int size, const MediaStreamConfig* stream);
// <UserConfig> with one <Account .../> per account.
int MakeUserCfgXml(char* buffer, int size, const UserConfig* users);
// Serial element, then the LAN element when lan is given, then the stream
// ports element when stream is given.
int MakeModifyIPCCfgXml(char* buffer, int size, const char* serial, const LANConfig* lan,
                        const MediaStreamConfig* stream);

// The gateway a LAN element carries: the record's own, unless it is
// 0.0.0.0, 255.255.255.255 or no address; then the first host address of the
// camera's subnet ((address AND mask) OR 1), or 192.168.1.1 when address
// and mask give none.
std::string LanGatewayText(const LANConfig* lan);

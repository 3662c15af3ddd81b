// The network section (NetworkConfig) and its ten children: readers from XML
// text, writers to XML text, the element-level readers and writers that the
// document load and save use, the Wi-Fi name tables, the network status
// reader and the file store.
//
// Readers from text return 0, or -1 when the text does not parse or holds no
// such element. Writers return a text the caller releases with free(), or
// null for a null record.
#pragma once

#include <upnp/ixml.h>

#include "quorvel/quorvel.h"

// ---- readers from XML text (the first element of the name is read)
int Network_getLANCfgByXml(LANConfig* cfg, const char* xml);
int Network_getWIFICfgByXml(WIFIConfig* cfg, const char* xml);
int Network_getWIFIApCfgByXml(WIFIApConfig* cfg, const char* xml);
int Network_getAlarmServerCfgByXml(AlarmServerConfig* cfg, const char* xml);
int Network_getADSLCfgByXml(ADSLConfig* cfg, const char* xml);
int Network_getG3CfgByXml(G3Config* cfg, const char* xml);
int Network_getPPTPCfgByXml(PPTPConfig* cfg, const char* xml);
int Network_getDDNSCfgByXml(DDNSConfig* cfg, const char* xml);
int Network_getUPNPCfgByXml(UPNPConfig* cfg, const char* xml);
int Network_getP2PCfgByXml(P2PConfig* cfg, const char* xml);
int GetNetworkCfgByXml(NetworkConfig* cfg, const char* xml);

// ---- writers
char* XMLGET_NetworkConfig(NetworkConfig* cfg);
char* XMLGET_NetworkLANConfig(LANConfig* cfg);
char* XMLGET_NetworkWIFIConfig(WIFIConfig* cfg);
char* XMLGET_NetworkWIFIApConfig(WIFIApConfig* cfg);
char* XMLGET_NetworkAlarmServerConfig(AlarmServerConfig* cfg);
char* XMLGET_NetworkADSLConfig(ADSLConfig* cfg);
char* XMLGET_NetworkDDNSConfig(DDNSConfig* cfg);
char* XMLGET_NetworkUPNPConfig(UPNPConfig* cfg);
char* XMLGET_NetworkP2PConfig(P2PConfig* cfg);
char* XMLGET_NetworkG3Config(G3Config* cfg);
char* XMLGET_NetworkPPTPConfig(PPTPConfig* cfg);


// Sets Enable and Type to 0.
void SetDefaultP2pCfg(P2PConfig* cfg);

// ---- name tables (exact, case-sensitive; any other text or null: -1)
int WirelessMacModeNameToInt(const char* name);    // MIXED 1, G 2, B 3, A 4
int WirelessRegionNameToInt(const char* name);     // USA 1, TAIWAN 2, FRANCE 3, ISRAEL 5
int WepEncryptAuthModeNameToInt(const char* name); // open system 0, shared key 1

// ---- status
// Reads WIRE_NETWORK, WIRELESS_NETWORK and CLOUD of a status reply into the
// cleared record. -1 when the text does not parse ("[%s:%u]xml error\n") or
// holds none of the three; else 0.
int GetNetworkStatusByXml(NetworkStatus* status, const char* xml);
// "<Network4GStatus Manufacturer=\"...\" ... nSignalLevel=\"%d\"/>".
char* XMLGET_4GNetworkStatus(Network4GStatus* status);

// ---- file store (section read and section write of NetworkConfig)
int GetNetworkConfig(NetworkConfig* cfg);
int SetNetworkConfig(NetworkConfig* cfg);

namespace qvconfig {

class XmlWriter;

// ---- element level: readers clear the record, set its defaults, read the
// attributes (and children) and apply the checks; 0.
int ReadLANConfig(const IXML_Node* element, LANConfig* cfg);
int ReadWIFIConfig(const IXML_Node* element, WIFIConfig* cfg);
int ReadWIFIApConfig(const IXML_Node* element, WIFIApConfig* cfg);
int ReadWirelessEncrypt(const IXML_Node* element, WirelessEncrypt* cfg);
int ReadPingWatchConfig(const IXML_Node* element, PingWatchConfig* cfg);
int ReadAlarmServerConfig(const IXML_Node* element, AlarmServerConfig* cfg);
int ReadADSLConfig(const IXML_Node* element, ADSLConfig* cfg);
int ReadDDNSConfig(const IXML_Node* element, DDNSConfig* cfg);
int ReadUPNPConfig(const IXML_Node* element, UPNPConfig* cfg);
int ReadG3Config(const IXML_Node* element, G3Config* cfg);
int ReadPPTPConfig(const IXML_Node* element, PPTPConfig* cfg);
int ReadP2PConfig(const IXML_Node* element, P2PConfig* cfg);
int ReadNetworkConfig(const IXML_Node* element, NetworkConfig* cfg);

void WriteLANConfig(XmlWriter& out, const LANConfig* cfg);
void WriteWIFIConfig(XmlWriter& out, const WIFIConfig* cfg);
void WriteWIFIApConfig(XmlWriter& out, const WIFIApConfig* cfg);
void WriteWirelessEncrypt(XmlWriter& out, const WirelessEncrypt* cfg);
void WritePingWatchConfig(XmlWriter& out, const PingWatchConfig* cfg);
void WriteAlarmServerConfig(XmlWriter& out, const AlarmServerConfig* cfg);
void WriteADSLConfig(XmlWriter& out, const ADSLConfig* cfg);
void WriteDDNSConfig(XmlWriter& out, const DDNSConfig* cfg);
void WriteUPNPConfig(XmlWriter& out, const UPNPConfig* cfg);
void WriteG3Config(XmlWriter& out, const G3Config* cfg);
void WritePPTPConfig(XmlWriter& out, const PPTPConfig* cfg);
void WriteP2PConfig(XmlWriter& out, const P2PConfig* cfg);
void WriteNetworkConfig(XmlWriter& out, const NetworkConfig* cfg);

}  // namespace qvconfig

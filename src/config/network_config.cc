// The NetworkConfig container and its file store.
#include "config/config_section.h"
#include "config/config_store.h"
#include "config/network_sections.h"

namespace qvconfig {
namespace {

template <typename Child, Child NetworkConfig::*member,
          int (*read)(const IXML_Node*, Child*)>
void ReadMember(const IXML_Node* element, NetworkConfig* cfg) {
  read(element, &(cfg->*member));
}

#define NETWORK_CHILD(name, Type, member) \
  { name, ReadMember<Type, &NetworkConfig::member, Read##Type> }

const ChildReader<NetworkConfig> kNetworkChildren[] = {
    NETWORK_CHILD("LANConfig", LANConfig, LAN),
    NETWORK_CHILD("WIFIConfig", WIFIConfig, WIFI),
    NETWORK_CHILD("WIFIApConfig", WIFIApConfig, WIFIAp),
    NETWORK_CHILD("AlarmServerConfig", AlarmServerConfig, AlarmServer),
    NETWORK_CHILD("ADSLConfig", ADSLConfig, ADSL),
    NETWORK_CHILD("DDNSConfig", DDNSConfig, DDNS),
    NETWORK_CHILD("UPNPConfig", UPNPConfig, UPNP),
    NETWORK_CHILD("P2PConfig", P2PConfig, P2P),
    NETWORK_CHILD("G3Config", G3Config, G3),
    NETWORK_CHILD("PPTPConfig", PPTPConfig, PPTP),
};

}  // namespace

int ReadNetworkConfig(const IXML_Node* element, NetworkConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  ReadChildren(element, kNetworkChildren, cfg);
  return 0;
}

void WriteNetworkConfig(XmlWriter& out, const NetworkConfig* cfg) {
  out.Append("<NetworkConfig>\r\n");
  WriteLANConfig(out, &cfg->LAN);
  WriteWIFIConfig(out, &cfg->WIFI);
  WriteWIFIApConfig(out, &cfg->WIFIAp);
  WriteAlarmServerConfig(out, &cfg->AlarmServer);
  WriteADSLConfig(out, &cfg->ADSL);
  WriteDDNSConfig(out, &cfg->DDNS);
  WriteUPNPConfig(out, &cfg->UPNP);
  WriteG3Config(out, &cfg->G3);
  WritePPTPConfig(out, &cfg->PPTP);
  WriteP2PConfig(out, &cfg->P2P);
  out.Append("</NetworkConfig>\r\n");
}

}  // namespace qvconfig

int GetNetworkCfgByXml(NetworkConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "NetworkConfig", qvconfig::ReadNetworkConfig);
}

char* XMLGET_NetworkConfig(NetworkConfig* cfg) {
  return qvconfig::WriteRecordText<NetworkConfig>(cfg, qvconfig::WriteNetworkConfig);
}

int GetNetworkConfig(NetworkConfig* cfg) {
  if (!cfg) return -1;
  memset(cfg, 0, sizeof(*cfg));
  return qvconfig::ReadConfigSection("NetworkConfig", [cfg](const IXML_Node* node) {
    return qvconfig::ReadNetworkConfig(node, cfg);
  });
}

int SetNetworkConfig(NetworkConfig* cfg) {
  return qvconfig::WriteConfigSectionText("NetworkConfig", XMLGET_NetworkConfig(cfg));
}

// The wired network element LANConfig.
#include "config/config_print.h"
#include "config/config_section.h"
#include "config/network_sections.h"

namespace qvconfig {
namespace {

const unsigned kDefaultMtu = 1400;
const unsigned kMaxMtu = 8192;

// Writing order.
const XmlField kLanFields[] = {
    XML_FIELD(LANConfig, MacAddress, "MacAddress"),
    XML_FIELD(LANConfig, DHCP, "DHCP"),
    XML_FIELD(LANConfig, dhcpOffTime, "dhcpOffTime"),
    XML_FIELD(LANConfig, ALLNET, "ALLNET"),
    XML_FIELD(LANConfig, IPAddress, "IPAddress"),
    XML_FIELD(LANConfig, Netmask, "Netmask"),
    XML_FIELD(LANConfig, Gateway, "Gateway"),
    XML_FIELD(LANConfig, DNS1, "DNS1"),
    XML_FIELD(LANConfig, DNS2, "DNS2"),
    XML_FIELD(LANConfig, hostname, "hostname"),
    XML_FIELD(LANConfig, MTU, "MTU"),
};

}  // namespace

int ReadLANConfig(const IXML_Node* element, LANConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  cfg->dhcpOffTime = -1;
  cfg->MTU = kDefaultMtu;
  ReadXmlFields(element, kLanFields, FieldCount(kLanFields), cfg);
  if (cfg->MTU == 0 || cfg->MTU > kMaxMtu) cfg->MTU = kDefaultMtu;
  CFG_PRINT(
      "[%s:%u]DHCP %d dhcpOffTime %d, ONVIF ALLNET %d, %s:%s:%s, MAC %s, "
      "DNS %s %s, hostname %s, mtu %u\n\n",
      cfg->DHCP, cfg->dhcpOffTime, cfg->ALLNET, cfg->IPAddress, cfg->Netmask,
      cfg->Gateway, cfg->MacAddress, cfg->DNS1, cfg->DNS2, cfg->hostname,
      cfg->MTU);
  return 0;
}

void WriteLANConfig(XmlWriter& out, const LANConfig* cfg) {
  out.Append("<LANConfig ");
  WriteXmlFields(out, kLanFields, FieldCount(kLanFields), cfg, " ");
  out.Append("/> ");
}

}  // namespace qvconfig

int Network_getLANCfgByXml(LANConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "LANConfig", qvconfig::ReadLANConfig);
}

char* XMLGET_NetworkLANConfig(LANConfig* cfg) {
  return qvconfig::WriteRecordText<LANConfig>(cfg, qvconfig::WriteLANConfig);
}

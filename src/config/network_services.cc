// The one-line network elements: AlarmServerConfig, ADSLConfig, DDNSConfig,
// UPNPConfig, G3Config, PPTPConfig and P2PConfig.
#include "config/config_section.h"
#include "config/network_sections.h"

namespace qvconfig {
namespace {

const int kPptpMinMtu = 1000;
const int kPptpMaxMtu = 1500;
const int kPptpDefaultMtu = 1460;

// Attributes in writing order.
const XmlField kAlarmServerFields[] = {
    XML_FIELD(AlarmServerConfig, url, "url"),
    XML_FIELD(AlarmServerConfig, withattachment, "withattachment"),
    XML_FIELD_FLAGS(AlarmServerConfig, Username, "Username", kFieldNoEscape),
    XML_FIELD_FLAGS(AlarmServerConfig, Password, "Password", kFieldNoEscape),
};

const XmlField kAdslFields[] = {
    XML_FIELD(ADSLConfig, Enable, "Enable"),
    XML_FIELD(ADSLConfig, Username, "Username"),
    XML_FIELD(ADSLConfig, Password, "Password"),
};

const XmlField kDdnsFields[] = {
    XML_FIELD(DDNSConfig, Enable, "Enable"),
    XML_FIELD(DDNSConfig, Server, "Server"),
    XML_FIELD(DDNSConfig, Domain, "Domain"),
    XML_FIELD(DDNSConfig, Username, "Username"),
    XML_FIELD(DDNSConfig, Password, "Password"),
    XML_FIELD(DDNSConfig, FreshInterval, "FreshInterval"),
};

const XmlField kUpnpFields[] = {
    XML_FIELD(UPNPConfig, Enable, "Enable"),
};

const XmlField kG3Fields[] = {
    XML_FIELD(G3Config, Enable, "Enable"),
    XML_FIELD_FLAGS(G3Config, Type, "Type", kFieldWriteOnly),
    XML_FIELD(G3Config, DialNumber, "DialNumber"),
    XML_FIELD(G3Config, APN, "APN"),
    XML_FIELD(G3Config, Username, "Username"),
    XML_FIELD(G3Config, Password, "Password"),
    XML_FIELD(G3Config, DialOption, "DialOption"),
    XML_FIELD(G3Config, CenterNumber, "CenterNumber"),
    XML_FIELD(G3Config, SMSC, "SMSC"),
};

const XmlField kPptpFields[] = {
    XML_FIELD(PPTPConfig, Enable, "Enable"),
    XML_FIELD(PPTPConfig, Server, "Server"),
    XML_FIELD(PPTPConfig, Username, "Username"),
    XML_FIELD(PPTPConfig, Password, "Password"),
    XML_FIELD(PPTPConfig, MTU, "MTU"),
};

const XmlField kP2pFields[] = {
    XML_FIELD(P2PConfig, Enable, "Enable"),
    XML_FIELD(P2PConfig, Type, "Type"),
    XML_FIELD(P2PConfig, Authcode, "Authcode"),
};

}  // namespace

// A plain element: reader and writer straight from its attribute table.
#define PLAIN_ELEMENT(Rec, fields, end)                                      \
  int Read##Rec(const IXML_Node* element, Rec* cfg) {                        \
    ReadPlainElement(element, fields, FieldCount(fields), cfg, sizeof(*cfg)); \
    return 0;                                                                \
  }                                                                          \
  void Write##Rec(XmlWriter& out, const Rec* cfg) {                          \
    WriteLineElement(out, #Rec, fields, FieldCount(fields), cfg, end);       \
  }

PLAIN_ELEMENT(AlarmServerConfig, kAlarmServerFields, " />\r\n")
PLAIN_ELEMENT(ADSLConfig, kAdslFields, "/>\r\n")
PLAIN_ELEMENT(DDNSConfig, kDdnsFields, "/>\r\n")
PLAIN_ELEMENT(UPNPConfig, kUpnpFields, "/>\r\n")
PLAIN_ELEMENT(G3Config, kG3Fields, "/>\r\n")
PLAIN_ELEMENT(P2PConfig, kP2pFields, "/>\r\n")

int ReadPPTPConfig(const IXML_Node* element, PPTPConfig* cfg) {
  ReadPlainElement(element, kPptpFields, FieldCount(kPptpFields), cfg,
                   sizeof(*cfg));
  if (cfg->MTU < kPptpMinMtu || cfg->MTU > kPptpMaxMtu)
    cfg->MTU = kPptpDefaultMtu;
  return 0;
}

void WritePPTPConfig(XmlWriter& out, const PPTPConfig* cfg) {
  WriteLineElement(out, "PPTPConfig", kPptpFields, FieldCount(kPptpFields),
                   cfg, "/>\r\n");
}

}  // namespace qvconfig

void SetDefaultP2pCfg(P2PConfig* cfg) {
  if (!cfg) return;
  cfg->Enable = 0;
  cfg->Type = 0;
}

int Network_getAlarmServerCfgByXml(AlarmServerConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "AlarmServerConfig", qvconfig::ReadAlarmServerConfig);
}
int Network_getADSLCfgByXml(ADSLConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "ADSLConfig", qvconfig::ReadADSLConfig);
}
int Network_getG3CfgByXml(G3Config* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "G3Config", qvconfig::ReadG3Config);
}
int Network_getPPTPCfgByXml(PPTPConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "PPTPConfig", qvconfig::ReadPPTPConfig);
}
int Network_getDDNSCfgByXml(DDNSConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "DDNSConfig", qvconfig::ReadDDNSConfig);
}
int Network_getUPNPCfgByXml(UPNPConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "UPNPConfig", qvconfig::ReadUPNPConfig);
}
int Network_getP2PCfgByXml(P2PConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "P2PConfig", qvconfig::ReadP2PConfig);
}

char* XMLGET_NetworkAlarmServerConfig(AlarmServerConfig* cfg) {
  return qvconfig::WriteRecordText<AlarmServerConfig>(cfg, qvconfig::WriteAlarmServerConfig);
}
char* XMLGET_NetworkADSLConfig(ADSLConfig* cfg) {
  return qvconfig::WriteRecordText<ADSLConfig>(cfg, qvconfig::WriteADSLConfig);
}
char* XMLGET_NetworkDDNSConfig(DDNSConfig* cfg) {
  return qvconfig::WriteRecordText<DDNSConfig>(cfg, qvconfig::WriteDDNSConfig);
}
char* XMLGET_NetworkUPNPConfig(UPNPConfig* cfg) {
  return qvconfig::WriteRecordText<UPNPConfig>(cfg, qvconfig::WriteUPNPConfig);
}
char* XMLGET_NetworkP2PConfig(P2PConfig* cfg) {
  return qvconfig::WriteRecordText<P2PConfig>(cfg, qvconfig::WriteP2PConfig);
}
char* XMLGET_NetworkG3Config(G3Config* cfg) {
  return qvconfig::WriteRecordText<G3Config>(cfg, qvconfig::WriteG3Config);
}
char* XMLGET_NetworkPPTPConfig(PPTPConfig* cfg) {
  return qvconfig::WriteRecordText<PPTPConfig>(cfg, qvconfig::WritePPTPConfig);
}

// The wireless elements: WIFIConfig, WIFIApConfig and their children
// WirelessEncrypt and PingWatchConfig.
#include <cstdio>
#include <string>

#include "config/config_print.h"
#include "config/config_section.h"
#include "config/network_sections.h"
#include "config/text_encoding.h"

namespace qvconfig {
namespace {

const char kWrittenVersion[] = "2.0";
const size_t kEssidSize = sizeof(WIFIConfig::ESSID);
// A converted text needs 200 bytes; a GB2312 value longer than this cannot
// add to it.
const size_t kConvertSize = 200;
const size_t kConvertInput = 2 * kConvertSize;

// WIFIConfig attributes, writing order: Version, the head, ESSID,
// ESSID_UTF8, the tail. Version is always written as "2.0".
const XmlField kWifiVersion = XML_FIELD(WIFIConfig, Version, "Version");
const XmlField kWifiHead[] = {
    XML_FIELD(WIFIConfig, Enable, "Enable"),
    XML_FIELD(WIFIConfig, DHCP, "DHCP"),
    XML_FIELD(WIFIConfig, IPAddress, "IPAddress"),
    XML_FIELD(WIFIConfig, Netmask, "Netmask"),
    XML_FIELD(WIFIConfig, Gateway, "Gateway"),
    XML_FIELD(WIFIConfig, OperationMode, "OperationMode"),
    XML_FIELD(WIFIConfig, MacAddress, "MacAddress"),
    XML_FIELD(WIFIConfig, ChannelNumber, "ChannelNumber"),
    XML_FIELD(WIFIConfig, Region, "Region"),
};
const XmlField kWifiTail[] = {
    XML_FIELD(WIFIConfig, BitRate, "BitRate"),
    XML_FIELD(WIFIConfig, MacMode, "MacMode"),
};

const XmlField kApVersion = XML_FIELD(WIFIApConfig, Version, "Version");
const XmlField kApFields[] = {
    XML_FIELD(WIFIApConfig, Enable, "Enable"),
    XML_FIELD(WIFIApConfig, IPAddress, "IPAddress"),
    XML_FIELD(WIFIApConfig, Netmask, "Netmask"),
    XML_FIELD(WIFIApConfig, MacAddress, "MacAddress"),
    XML_FIELD(WIFIApConfig, ChannelNumber, "ChannelNumber"),
    XML_FIELD(WIFIApConfig, Region, "Region"),
    XML_FIELD(WIFIApConfig, ESSID, "ESSID"),
    XML_FIELD(WIFIApConfig, BitRate, "BitRate"),
    XML_FIELD(WIFIApConfig, MacMode, "MacMode"),
};

const XmlField kEncryptFields[] = {
    XML_FIELD(WirelessEncrypt, Enable, "Enable"),
    XML_FIELD(WirelessEncrypt, EncryptType, "EncryptType"),
};
const XmlField kWepFields[] = {
    XML_FIELD(WirelessEncrypt, WEPAuthMode, "AuthMode"),
    XML_FIELD(WirelessEncrypt, WEPKeyIndex, "KeyIndex"),
    XML_FIELD(WirelessEncrypt, WEPEncryptType, "EncryptType"),
    XML_FIELD(WirelessEncrypt, WEPKeyMode, "KeyMode"),
    XML_FIELD(WirelessEncrypt, WEPKeyValue, "KeyValue"),
};
const XmlField kWpaFields[] = {
    XML_FIELD(WirelessEncrypt, WPAEncryptType, "EncryptType"),
    XML_FIELD(WirelessEncrypt, WPAAuthMode, "AuthMode"),
    XML_FIELD(WirelessEncrypt, WPAKeyValue, "KeyValue"),
};

const XmlField kPingFields[] = {
    XML_FIELD(PingWatchConfig, Enable, "Enable"),
    XML_FIELD(PingWatchConfig, PingAddress, "PingAddress"),
    XML_FIELD(PingWatchConfig, Interval, "Interval"),
    XML_FIELD(PingWatchConfig, MaxFail, "MaxFail"),
};

// Keeps at most size - 1 bytes of a UTF-8 text without cutting a character.
void CopyUtf8(char* dst, size_t size, const char* src) {
  size_t n = strnlen(src, size - 1);
  if (src[n]) {
    size_t start = n;  // back to the lead byte of the character that is cut
    while (start > 0 && (static_cast<unsigned char>(src[start]) & 0xC0) == 0x80)
      --start;
    n = start;
  }
  memcpy(dst, src, n);
  memset(dst + n, 0, size - n);
}

// ESSID: the network name in GB2312.
void ReadEssidGb2312(WIFIConfig* cfg, const char* value) {
  char gb[kConvertInput];
  StrCpy(gb, sizeof(gb), value);
  char utf8[kConvertSize];
  str_gb2312_2_utf8(gb, utf8, 0);
  CopyUtf8(cfg->ESSID, kEssidSize, utf8);
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// ESSID_UTF8: two hexadecimal digits per byte of the UTF-8 name. Reading
// stops at the first pair that is not hexadecimal.
void ReadEssidHex(WIFIConfig* cfg, const char* value) {
  memset(cfg->ESSID, 0, kEssidSize);
  size_t n = 0;
  for (const char* p = value; p && n + 1 < kEssidSize; p += 2) {
    int hi = HexDigit(p[0]);
    int lo = hi < 0 ? -1 : HexDigit(p[1]);
    if (lo < 0) break;
    cfg->ESSID[n++] = static_cast<char>(hi * 16 + lo);
  }
}

void WriteEssid(XmlWriter& out, const WIFIConfig* cfg) {
  char utf8[kEssidSize];
  CopyText(utf8, sizeof(utf8), cfg->ESSID);
  char gb[kConvertSize];
  str_utf8_2_gb2312(utf8, gb);
  out.AppendTextAttr("ESSID", gb, sizeof(gb), true, "\r\n");
  std::string hex;
  char pair[3];
  for (const char* p = utf8; *p; ++p) {
    snprintf(pair, sizeof(pair), "%02x", static_cast<unsigned char>(*p));
    hex += pair;
  }
  out.Append("ESSID_UTF8=\"%s\"\r\n", hex.c_str());
}

void ReadEncryptChild(const IXML_Node* element, WIFIConfig* cfg) {
  ReadWirelessEncrypt(element, &cfg->Encrypt);
}
void ReadPingChild(const IXML_Node* element, WIFIConfig* cfg) {
  ReadPingWatchConfig(element, &cfg->PingWatch);
}
void ReadApEncryptChild(const IXML_Node* element, WIFIApConfig* cfg) {
  ReadWirelessEncrypt(element, &cfg->Encrypt);
}

const ChildReader<WIFIConfig> kWifiChildren[] = {
    {"WirelessEncrypt", ReadEncryptChild},
    {"PingWatchConfig", ReadPingChild},
};
const ChildReader<WIFIApConfig> kApChildren[] = {
    {"WirelessEncrypt", ReadApEncryptChild},
};

void ReadWepChild(const IXML_Node* element, WirelessEncrypt* cfg) {
  ReadXmlFields(element, kWepFields, FieldCount(kWepFields), cfg);
}
void ReadWpaChild(const IXML_Node* element, WirelessEncrypt* cfg) {
  ReadXmlFields(element, kWpaFields, FieldCount(kWpaFields), cfg);
}
const ChildReader<WirelessEncrypt> kEncryptChildren[] = {
    {"WEPEncrypt", ReadWepChild},
    {"WPAEncrypt", ReadWpaChild},
};

}  // namespace

int ReadWirelessEncrypt(const IXML_Node* element, WirelessEncrypt* cfg) {
  ReadPlainElement(element, kEncryptFields, FieldCount(kEncryptFields), cfg,
                   sizeof(*cfg));
  ReadChildren(element, kEncryptChildren, cfg);
  return 0;
}

void WriteWirelessEncrypt(XmlWriter& out, const WirelessEncrypt* cfg) {
  WriteLineElement(out, "WirelessEncrypt", kEncryptFields,
                   FieldCount(kEncryptFields), cfg, ">\r\n");
  WriteLineElement(out, "WEPEncrypt", kWepFields, FieldCount(kWepFields), cfg,
                   "/>\r\n");
  WriteLineElement(out, "WPAEncrypt", kWpaFields, FieldCount(kWpaFields), cfg,
                   "/>\r\n");
  out.Append("</WirelessEncrypt>\r\n");
}

int ReadPingWatchConfig(const IXML_Node* element, PingWatchConfig* cfg) {
  ReadPlainElement(element, kPingFields, FieldCount(kPingFields), cfg,
                   sizeof(*cfg));
  return 0;
}

void WritePingWatchConfig(XmlWriter& out, const PingWatchConfig* cfg) {
  WriteLineElement(out, "PingWatchConfig", kPingFields, FieldCount(kPingFields),
                   cfg, "/>\r\n");
}

int ReadWIFIConfig(const IXML_Node* element, WIFIConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  cfg->Enable = 1;
  cfg->DHCP = 0;
  CopyText(cfg->OperationMode, sizeof(cfg->OperationMode), "managed");
  for (IXML_Node* a = FirstAttribute(element); a; a = NextAttribute(a)) {
    const char* name = AttributeName(a);
    const char* value = AttributeValue(a);
    const XmlField* field = nullptr;
    if (strcmp(name, "ESSID") == 0) {
      ReadEssidGb2312(cfg, value);
    } else if (strcmp(name, "ESSID_UTF8") == 0) {
      ReadEssidHex(cfg, value);
    } else if (strcmp(name, kWifiVersion.name) == 0) {
      StoreXmlField(kWifiVersion, cfg, value);
    } else if ((field = FindXmlField(kWifiHead, FieldCount(kWifiHead), name)) ||
               (field = FindXmlField(kWifiTail, FieldCount(kWifiTail), name))) {
      StoreXmlField(*field, cfg, value);
    }
  }
  if (!FindAttribute(element, kWifiVersion.name))
    CFG_PRINT("[%s:%u]no version attribute\n\n");
  cfg->PingWatch.Enable = 0;
  ReadChildren(element, kWifiChildren, cfg);
  return 0;
}

void WriteWIFIConfig(XmlWriter& out, const WIFIConfig* cfg) {
  out.Append("<WIFIConfig\r\nVersion=\"%s\"\r\n", kWrittenVersion);
  WriteXmlFields(out, kWifiHead, FieldCount(kWifiHead), cfg, "\r\n");
  WriteEssid(out, cfg);
  WriteXmlFields(out, kWifiTail, FieldCount(kWifiTail), cfg, "\r\n");
  out.Append(">\r\n");
  WriteWirelessEncrypt(out, &cfg->Encrypt);
  WritePingWatchConfig(out, &cfg->PingWatch);
  out.Append("</WIFIConfig>\r\n");
}

int ReadWIFIApConfig(const IXML_Node* element, WIFIApConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  for (IXML_Node* a = FirstAttribute(element); a; a = NextAttribute(a)) {
    const char* name = AttributeName(a);
    const XmlField* field = strcmp(name, kApVersion.name) == 0
                                ? &kApVersion
                                : FindXmlField(kApFields, FieldCount(kApFields), name);
    if (field) StoreXmlField(*field, cfg, AttributeValue(a));
  }
  ReadChildren(element, kApChildren, cfg);
  return 0;
}

void WriteWIFIApConfig(XmlWriter& out, const WIFIApConfig* cfg) {
  out.Append("<WIFIApConfig\r\nVersion=\"%s\"\r\n", kWrittenVersion);
  WriteXmlFields(out, kApFields, FieldCount(kApFields), cfg, "\r\n");
  out.Append(">\r\n");
  WriteWirelessEncrypt(out, &cfg->Encrypt);
  out.Append("</WIFIApConfig>\r\n");
}

}  // namespace qvconfig

int Network_getWIFICfgByXml(WIFIConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "WIFIConfig", qvconfig::ReadWIFIConfig);
}

int Network_getWIFIApCfgByXml(WIFIApConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "WIFIApConfig", qvconfig::ReadWIFIApConfig);
}

char* XMLGET_NetworkWIFIConfig(WIFIConfig* cfg) {
  return qvconfig::WriteRecordText<WIFIConfig>(cfg, qvconfig::WriteWIFIConfig);
}

char* XMLGET_NetworkWIFIApConfig(WIFIApConfig* cfg) {
  return qvconfig::WriteRecordText<WIFIApConfig>(cfg, qvconfig::WriteWIFIApConfig);
}

// The PlatformConfig and GB28181Config sections: a remote platform server
// and the GB/T 28181 platform client, each one child element.
#include "config/config_section.h"
#include "config/config_store.h"
#include "config/element_parts.h"
#include "config/service_sections.h"

namespace qvconfig {
namespace {

#define F(Rec, m) XML_FIELD(Rec, m, #m)

const XmlField kVexoraFields[] = {
    F(VexoraConfig, Enable), F(VexoraConfig, Server), F(VexoraConfig, Port),
    F(VexoraConfig, Username), F(VexoraConfig, Password), F(VexoraConfig, PlayTone),
    F(VexoraConfig, InRingTimes), F(VexoraConfig, reserved),
    F(VexoraConfig, keyPressTimeLen), F(VexoraConfig, FileName),
};
const XmlField kGbFields[] = {
    F(GB28181, Enable), F(GB28181, nstreams), F(GB28181, nChannelNum), F(GB28181, hcId),
    F(GB28181, hcIp), F(GB28181, hcName), F(GB28181, hcPwd), F(GB28181, hcPort),
    F(GB28181, lcId), F(GB28181, lcName), F(GB28181, lcPwd), F(GB28181, lcPort),
    F(GB28181, camId), F(GB28181, alarmId), F(GB28181, deviceName),
};

// A section holding one child element with plain attributes.
void ReadOnlyChild(const IXML_Node* section, const char* child, const XmlField* fields,
                   size_t count, void* record, size_t size) {
  memset(record, 0, size);
  IXML_Node* e = FirstChildNamed(section, child);
  if (e) ReadXmlFields(e, fields, count, record);
}

void WriteOnlyChild(XmlWriter& out, const char* section, const char* child,
                    const XmlField* fields, size_t count, const void* record) {
  out.Append("<%s>\r\n", section);
  WriteLineElement(out, child, fields, count, record, "/>\r\n");
  out.Append("</%s>\r\n", section);
}

}  // namespace

int ReadPlatformConfig(const IXML_Node* element, PlatformConfig* cfg) {
  ReadOnlyChild(element, "VexoraConfig", kVexoraFields, FieldCount(kVexoraFields), cfg,
                sizeof(*cfg));
  return 0;
}

void WritePlatformConfig(XmlWriter& out, const PlatformConfig* cfg) {
  WriteOnlyChild(out, "PlatformConfig", "VexoraConfig", kVexoraFields,
                 FieldCount(kVexoraFields), &cfg->Vexora);
}

int ReadGB28181Config(const IXML_Node* element, GB28181Config* cfg) {
  ReadOnlyChild(element, "GB28181", kGbFields, FieldCount(kGbFields), cfg, sizeof(*cfg));
  return 0;
}

void WriteGB28181Config(XmlWriter& out, const GB28181Config* cfg) {
  WriteOnlyChild(out, "GB28181Config", "GB28181", kGbFields, FieldCount(kGbFields), &cfg->Gb);
}

}  // namespace qvconfig

int GetPlatformCfgByXml(PlatformConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "PlatformConfig", qvconfig::ReadPlatformConfig);
}
int GetGB28181CfgByXml(GB28181Config* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "GB28181Config", qvconfig::ReadGB28181Config);
}

char* XMLGET_PlatformConfig(PlatformConfig* cfg) {
  return qvconfig::WriteRecordText<PlatformConfig>(cfg, qvconfig::WritePlatformConfig);
}
char* XMLGET_GB28181Config(GB28181Config* cfg) {
  return qvconfig::WriteRecordText<GB28181Config>(cfg, qvconfig::WriteGB28181Config);
}

int GetPlatformConfig(PlatformConfig* cfg) {
  if (!cfg) return -1;
  memset(cfg, 0, sizeof(*cfg));
  return qvconfig::ReadConfigSection("PlatformConfig", [cfg](const IXML_Node* node) {
    return qvconfig::ReadPlatformConfig(node, cfg);
  });
}
int SetPlatformConfig(PlatformConfig* cfg) {
  return qvconfig::WriteConfigSectionText("PlatformConfig", XMLGET_PlatformConfig(cfg));
}

int GetGB28181Config(GB28181Config* cfg) {
  if (!cfg) return -1;
  memset(cfg, 0, sizeof(*cfg));
  return qvconfig::ReadConfigSection("GB28181Config", [cfg](const IXML_Node* node) {
    return qvconfig::ReadGB28181Config(node, cfg);
  });
}
int SetGB28181Config(GB28181Config* cfg) {
  return qvconfig::WriteConfigSectionText("GB28181Config", XMLGET_GB28181Config(cfg));
}

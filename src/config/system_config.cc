// The SystemConfig container and its file store.
#include "config/config_section.h"
#include "config/config_store.h"
#include "config/system_sections.h"

namespace qvconfig {
namespace {

template <typename Child, Child SystemConfig::*member, int (*read)(const IXML_Node*, Child*)>
void ReadMember(const IXML_Node* element, SystemConfig* cfg) {
  read(element, &(cfg->*member));
}

#define SYSTEM_CHILD(name, Type, member) \
  { name, ReadMember<Type, &SystemConfig::member, Read##Type> }

const ChildReader<SystemConfig> kSystemChildren[] = {
    SYSTEM_CHILD("PTZConfig", PTZConfig, PTZ),
    SYSTEM_CHILD("TimeConfig", TimeConfig, Time),
    SYSTEM_CHILD("UserConfig", UserConfig, User),
    SYSTEM_CHILD("SystemLogConfig", SystemLogConfig, SystemLog),
    SYSTEM_CHILD("MiscConfig", MiscConfig, Misc),
    SYSTEM_CHILD("MaintainConfig", MaintainConfig, Maintain),
    SYSTEM_CHILD("AlowIpConfig", AlowIpConfig, AlowIp),
    SYSTEM_CHILD("AlarmClockConfig", AlarmClockConfig, AlarmClock),
};

}  // namespace

int ReadSystemConfig(const IXML_Node* element, SystemConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  ReadChildren(element, kSystemChildren, cfg);
  return 0;
}

void WriteSystemConfig(XmlWriter& out, const SystemConfig* cfg) {
  out.Append("<SystemConfig>\r\n");
  WritePTZConfig(out, &cfg->PTZ);
  WriteTimeConfig(out, &cfg->Time);
  WriteUserConfig(out, &cfg->User);
  WriteSystemLogConfig(out, &cfg->SystemLog);
  WriteMiscConfig(out, &cfg->Misc);
  WriteMaintainConfig(out, &cfg->Maintain);
  WriteAlowIpConfig(out, &cfg->AlowIp);
  WriteAlarmClockConfig(out, &cfg->AlarmClock);
  out.Append("</SystemConfig>\r\n");
}

}  // namespace qvconfig

int GetSystemConfigByXml(SystemConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "SystemConfig", qvconfig::ReadSystemConfig);
}

char* XMLGET_SystemConfig(SystemConfig* cfg) {
  return qvconfig::WriteRecordText<SystemConfig>(cfg, qvconfig::WriteSystemConfig);
}

int GetSystemConfig(SystemConfig* cfg) {
  if (!cfg) return -1;
  memset(cfg, 0, sizeof(*cfg));
  return qvconfig::ReadConfigSection("SystemConfig", [cfg](const IXML_Node* node) {
    return qvconfig::ReadSystemConfig(node, cfg);
  });
}

int SetSystemConfig(SystemConfig* cfg) {
  return qvconfig::WriteConfigSectionText("SystemConfig", XMLGET_SystemConfig(cfg));
}

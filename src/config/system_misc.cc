// The smaller SystemConfig children: users, system log, language,
// maintenance, allowed addresses and the alarm clock.
#include "config/config_section.h"
#include "config/element_parts.h"
#include "config/system_sections.h"

namespace qvconfig {
namespace {

#define F(Rec, m) XML_FIELD(Rec, m, #m)

const XmlField kAccountFields[] = {
    F(UserAccount, Username), F(UserAccount, Password), F(UserAccount, Group),
    F(UserAccount, Status),
};
const XmlField kLogFields[] = {
    F(SystemLogConfig, LogLevel), F(SystemLogConfig, MaxDay), F(SystemLogConfig, StoreMedia),
    F(SystemLogConfig, StorePolicy), F(SystemLogConfig, AutoBackup),
    F(SystemLogConfig, BackupWay),
};
const XmlField kMiscFields[] = {F(MiscConfig, Language)};
const XmlField kMaintainFields[] = {F(MaintainConfig, Enable), F(MaintainConfig, Day)};
const TimeAttr kMaintainTimes[] = {TIME_ATTR(MaintainConfig, Time, "Time")};
// Allowed address i + 1, held in ipaddr[i] and written with %u.
#define IPADDR_FIELD(name, i)                                                   \
  XmlField {                                                                    \
    name, XmlFieldType::kU32,                                                   \
        static_cast<unsigned>(offsetof(AlowIpConfig, ipaddr) + (i) * sizeof(unsigned)), \
        sizeof(unsigned), 0                                                     \
  }
const XmlField kAlowIpFields[] = {
    F(AlowIpConfig, Enable),
    IPADDR_FIELD("ipaddr1", 0), IPADDR_FIELD("ipaddr2", 1), IPADDR_FIELD("ipaddr3", 2),
    IPADDR_FIELD("ipaddr4", 3), IPADDR_FIELD("ipaddr5", 4),
};
const XmlField kEveryHourFields[] = {
    F(AlarmOnEveryHour, enable), F(AlarmOnEveryHour, from_hour),
    F(AlarmOnEveryHour, from_minute), F(AlarmOnEveryHour, from_second),
    F(AlarmOnEveryHour, to_hour), F(AlarmOnEveryHour, to_minute),
    F(AlarmOnEveryHour, to_second),
};
const XmlField kClockFields[] = {
    F(AlarmClock, enable), F(AlarmClock, hour), F(AlarmClock, minute), F(AlarmClock, second),
};

int ReadAccount(const IXML_Node* element, UserAccount* account) {
  ReadPlainElement(element, kAccountFields, FieldCount(kAccountFields), account,
                   sizeof(*account));
  return 0;
}

int ReadClock(const IXML_Node* element, AlarmClock* clock) {
  ReadPlainElement(element, kClockFields, FieldCount(kClockFields), clock, sizeof(*clock));
  return 0;
}

void ReadEveryHour(const IXML_Node* element, AlarmClockConfig* cfg) {
  ReadPlainElement(element, kEveryHourFields, FieldCount(kEveryHourFields), &cfg->EveryHour,
                   sizeof(cfg->EveryHour));
}
void ReadClockList(const IXML_Node* element, AlarmClockConfig* cfg) {
  memset(cfg->Clock, 0, sizeof(cfg->Clock));
  ReadListChildren(element, "clock", cfg->Clock, QV_ALARM_CLOCKS, ReadClock);
}
const ChildReader<AlarmClockConfig> kClockChildren[] = {
    {"AlarmOnEveryHour", ReadEveryHour},
    {"alarmclock", ReadClockList},
};

}  // namespace

int ReadUserConfig(const IXML_Node* element, UserConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  cfg->nAccount =
      ReadListChildren(element, "Account", cfg->Account, QV_MAX_USER_ACCOUNTS, ReadAccount);
  return 0;
}

void WriteUserConfig(XmlWriter& out, const UserConfig* cfg) {
  out.Append("<UserConfig>\r\n");
  for (int i = 0; i < ListCount(cfg->nAccount, QV_MAX_USER_ACCOUNTS); ++i)
    WriteLineElement(out, "Account", kAccountFields, FieldCount(kAccountFields),
                     &cfg->Account[i], "/>\r\n");
  out.Append("</UserConfig>\r\n");
}

int ReadSystemLogConfig(const IXML_Node* element, SystemLogConfig* cfg) {
  ReadPlainElement(element, kLogFields, FieldCount(kLogFields), cfg, sizeof(*cfg));
  return 0;
}

void WriteSystemLogConfig(XmlWriter& out, const SystemLogConfig* cfg) {
  WriteLineElement(out, "SystemLogConfig", kLogFields, FieldCount(kLogFields), cfg, "/>\r\n");
}

int ReadMiscConfig(const IXML_Node* element, MiscConfig* cfg) {
  ReadPlainElement(element, kMiscFields, FieldCount(kMiscFields), cfg, sizeof(*cfg));
  return 0;
}

void WriteMiscConfig(XmlWriter& out, const MiscConfig* cfg) {
  WriteLineElement(out, "MiscConfig", kMiscFields, FieldCount(kMiscFields), cfg, "/>\r\n");
}

int ReadMaintainConfig(const IXML_Node* element, MaintainConfig* cfg) {
  ReadPlainElement(element, kMaintainFields, FieldCount(kMaintainFields), cfg, sizeof(*cfg));
  ReadTimeAttrs(element, kMaintainTimes, FieldCount(kMaintainTimes), cfg);
  return 0;
}

void WriteMaintainConfig(XmlWriter& out, const MaintainConfig* cfg) {
  out.Append("<MaintainConfig\r\n");
  WriteXmlFields(out, kMaintainFields, FieldCount(kMaintainFields), cfg, "\r\n");
  WriteTimeAttrs(out, kMaintainTimes, FieldCount(kMaintainTimes), cfg, "\r\n");
  out.Append("/>\r\n");
}

int ReadAlowIpConfig(const IXML_Node* element, AlowIpConfig* cfg) {
  ReadPlainElement(element, kAlowIpFields, FieldCount(kAlowIpFields), cfg, sizeof(*cfg));
  return 0;
}

void WriteAlowIpConfig(XmlWriter& out, const AlowIpConfig* cfg) {
  WriteLineElement(out, "AlowIpConfig", kAlowIpFields, FieldCount(kAlowIpFields), cfg,
                   "/>\r\n");
}

int ReadAlarmClockConfig(const IXML_Node* element, AlarmClockConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  ReadChildren(element, kClockChildren, cfg);
  return 0;
}

void WriteAlarmClockConfig(XmlWriter& out, const AlarmClockConfig* cfg) {
  out.Append("<AlarmClockConfig>\r\n");
  WriteLineElement(out, "AlarmOnEveryHour", kEveryHourFields, FieldCount(kEveryHourFields),
                   &cfg->EveryHour, "/>\r\n");
  out.Append("<alarmclock>\r\n");
  for (const AlarmClock& clock : cfg->Clock)
    WriteLineElement(out, "clock", kClockFields, FieldCount(kClockFields), &clock, "/>\r\n");
  out.Append("</alarmclock>\r\n</AlarmClockConfig>\r\n");
}

}  // namespace qvconfig

#define SYSTEM_TEXT(reader, writer, Rec, tag)                          \
  int reader(Rec* cfg, const char* xml) {                              \
    return READ_RECORD_BY_XML(cfg, xml, tag, qvconfig::Read##Rec);     \
  }                                                                    \
  char* writer(Rec* cfg) {                                             \
    return qvconfig::WriteRecordText<Rec>(cfg, qvconfig::Write##Rec);  \
  }

SYSTEM_TEXT(System_getUserCfgByXml, XMLGET_UserConfig, UserConfig, "UserConfig")
SYSTEM_TEXT(System_getLogCfgByXml, XMLGET_SyslogConfig, SystemLogConfig, "SystemLogConfig")
SYSTEM_TEXT(System_getMiscCfgByXml, XMLGET_SysMiscConfig, MiscConfig, "MiscConfig")
SYSTEM_TEXT(System_getMaintainCfgByXml, XMLGET_SysMaintainConfig, MaintainConfig,
            "MaintainConfig")
SYSTEM_TEXT(System_getAlowIpByXml, XMLGET_SysAlowIpConfig, AlowIpConfig, "AlowIpConfig")
SYSTEM_TEXT(System_getAlarmClockByXml, XMLGET_SysAlarmClockConfig, AlarmClockConfig,
            "AlarmClockConfig")

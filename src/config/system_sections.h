// The system section (SystemConfig) and its children: PTZ, time, users,
// system log, language, maintenance, allowed addresses and alarm clock.
// Readers from XML text, writers to XML text, the element-level readers and
// writers that the document load and save use, and the file store.
//
// Every element is written one attribute per line: "<Name\r\n", each
// attribute as name="value"\r\n, then "/>\r\n", or ">\r\n", the children and
// "</Name>\r\n".
//
// Readers from text return 0, or -1 when the text does not parse or holds no
// such element. Writers return a text the caller releases with free(), or
// null for a null record.
#pragma once

#include <upnp/ixml.h>

#include "quorvel/quorvel.h"

// ---- readers from XML text (the first element of the name is read)
int System_getPTZCfgByXml(PTZConfig* cfg, const char* xml);
// The attributes of the first PTZConfig element.
int System_getPTZCommonCfgByXml(PTZCommonConfig* cfg, const char* xml);
int System_getPTZAfCfgByXml(PTZAfConfig* cfg, const char* xml);
int System_getPTZAdvanceCfgByXml(PTZAdvanceConfig* cfg, const char* xml);
int System_getTimeCfgByXml(TimeConfig* cfg, const char* xml);
int System_getUserCfgByXml(UserConfig* cfg, const char* xml);
int System_getLogCfgByXml(SystemLogConfig* cfg, const char* xml);
int System_getMiscCfgByXml(MiscConfig* cfg, const char* xml);
int System_getMaintainCfgByXml(MaintainConfig* cfg, const char* xml);
int System_getAlowIpByXml(AlowIpConfig* cfg, const char* xml);
int System_getAlarmClockByXml(AlarmClockConfig* cfg, const char* xml);
int GetSystemConfigByXml(SystemConfig* cfg, const char* xml);

// ---- writers
char* XMLGET_SystemConfig(SystemConfig* cfg);
char* XMLGET_UserConfig(UserConfig* cfg);
char* XMLGET_TimeConfig(TimeConfig* cfg);
char* XMLGET_SyslogConfig(SystemLogConfig* cfg);
char* XMLGET_SysMiscConfig(MiscConfig* cfg);
char* XMLGET_SysMaintainConfig(MaintainConfig* cfg);
char* XMLGET_SysAlowIpConfig(AlowIpConfig* cfg);
char* XMLGET_SysAlarmClockConfig(AlarmClockConfig* cfg);
char* XMLGET_PTZConfig(PTZConfig* cfg);
char* XMLGET_PTZAFConfig(PTZAfConfig* cfg);
char* XMLGET_PTZAdvanceConfig(PTZAdvanceConfig* cfg);

// ---- file store (section read and section write of SystemConfig)
int GetSystemConfig(SystemConfig* cfg);
int SetSystemConfig(SystemConfig* cfg);

namespace qvconfig {

class XmlWriter;

// ---- element level: readers clear the record and read the attributes and
// children; 0.
int ReadPTZConfig(const IXML_Node* element, PTZConfig* cfg);
int ReadPTZCommonConfig(const IXML_Node* element, PTZCommonConfig* cfg);
int ReadPTZAfConfig(const IXML_Node* element, PTZAfConfig* cfg);
int ReadPTZAdvanceConfig(const IXML_Node* element, PTZAdvanceConfig* cfg);
int ReadTimeConfig(const IXML_Node* element, TimeConfig* cfg);
int ReadUserConfig(const IXML_Node* element, UserConfig* cfg);
int ReadSystemLogConfig(const IXML_Node* element, SystemLogConfig* cfg);
int ReadMiscConfig(const IXML_Node* element, MiscConfig* cfg);
int ReadMaintainConfig(const IXML_Node* element, MaintainConfig* cfg);
int ReadAlowIpConfig(const IXML_Node* element, AlowIpConfig* cfg);
int ReadAlarmClockConfig(const IXML_Node* element, AlarmClockConfig* cfg);
int ReadSystemConfig(const IXML_Node* element, SystemConfig* cfg);

void WritePTZConfig(XmlWriter& out, const PTZConfig* cfg);
void WritePTZAfConfig(XmlWriter& out, const PTZAfConfig* cfg);
void WritePTZAdvanceConfig(XmlWriter& out, const PTZAdvanceConfig* cfg);
void WriteTimeConfig(XmlWriter& out, const TimeConfig* cfg);
void WriteUserConfig(XmlWriter& out, const UserConfig* cfg);
void WriteSystemLogConfig(XmlWriter& out, const SystemLogConfig* cfg);
void WriteMiscConfig(XmlWriter& out, const MiscConfig* cfg);
void WriteMaintainConfig(XmlWriter& out, const MaintainConfig* cfg);
void WriteAlowIpConfig(XmlWriter& out, const AlowIpConfig* cfg);
void WriteAlarmClockConfig(XmlWriter& out, const AlarmClockConfig* cfg);
void WriteSystemConfig(XmlWriter& out, const SystemConfig* cfg);

}  // namespace qvconfig

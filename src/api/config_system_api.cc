// Exported configuration exchange of the system section: readers, writers,
// get and set requests.
#include "api/config_exchange.h"
#include "config/system_sections.h"
#include "quorvel/quorvel.h"

QV_CONFIG_READER(System_getPTZCfgByXml, PTZConfig)
QV_CONFIG_READER(System_getPTZCommonCfgByXml, PTZCommonConfig)
QV_CONFIG_READER(System_getPTZAdvanceCfgByXml, PTZAdvanceConfig)
QV_CONFIG_READER(System_getTimeCfgByXml, TimeConfig)
QV_CONFIG_READER(System_getUserCfgByXml, UserConfig)
QV_CONFIG_READER(System_getLogCfgByXml, SystemLogConfig)
QV_CONFIG_READER(System_getMiscCfgByXml, MiscConfig)
QV_CONFIG_READER(GetSystemConfigByXml, SystemConfig)

QV_CONFIG_WRITER(SystemConfig, SystemConfig)
QV_CONFIG_WRITER(UserConfig, UserConfig)
QV_CONFIG_WRITER(TimeConfig, TimeConfig)
QV_CONFIG_WRITER(SyslogConfig, SystemLogConfig)
QV_CONFIG_WRITER(SysMiscConfig, MiscConfig)
QV_CONFIG_WRITER(PTZConfig, PTZConfig)

QV_CONFIG_GET(SystemConfig, QV_CFG_GET_SYSTEM)
QV_CONFIG_GET(PtzConfig, QV_CFG_GET_PTZ)
QV_CONFIG_GET(TimeConfig, QV_CFG_GET_TIME)
QV_CONFIG_GET(UserConfig, QV_CFG_GET_USER)
QV_CONFIG_GET(SyslogConfig, QV_CFG_GET_SYSLOG)
QV_CONFIG_GET(MiscConfig, QV_CFG_GET_MISC)

QV_CONFIG_SET(TimeConfig, QV_CFG_SET_TIME, TimeConfig, XMLGET_TimeConfig)
QV_CONFIG_SET(UserConfig, QV_CFG_SET_USER, UserConfig, XMLGET_UserConfig)
QV_CONFIG_SET(MiscConfig, QV_CFG_SET_MISC, MiscConfig, XMLGET_SysMiscConfig)

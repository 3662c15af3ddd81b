// Exported configuration exchange of the server, record, platform and
// GB28181 sections: readers, writers, get and set requests.
#include "api/config_exchange.h"
#include "config/service_sections.h"
#include "quorvel/quorvel.h"

QV_CONFIG_READER(Server_getFtpsByXml, FTPList)
QV_CONFIG_READER(Server_getSmtpsByXml, SMTPList)
QV_CONFIG_READER(GetServerCfgByXml, ServerConfig)
QV_CONFIG_READER(GetRecordCfgByXml, RecordConfig)
QV_CONFIG_READER(GetPlatformCfgByXml, PlatformConfig)
QV_CONFIG_READER(GetGB28181CfgByXml, GB28181Config)

QV_CONFIG_WRITER(ServerConfig, ServerConfig)
QV_CONFIG_WRITER(FtpConfig, FTPList)
QV_CONFIG_WRITER(SmtpConfig, SMTPList)
QV_CONFIG_WRITER(RecordConfig, RecordConfig)
QV_CONFIG_WRITER(PlatformConfig, PlatformConfig)
QV_CONFIG_WRITER(GB28181Config, GB28181Config)

QV_CONFIG_GET(ServerConfig, QV_CFG_GET_SERVER)
QV_CONFIG_GET(FtpServerConfig, QV_CFG_GET_FTP)
QV_CONFIG_GET(SmtpServerConfig, QV_CFG_GET_SMTP)
QV_CONFIG_GET(PlatformConfig, QV_CFG_GET_PLATFORM)
QV_CONFIG_GET(GB28181Config, QV_CFG_GET_GB28181)
QV_CONFIG_GET(RecordConfig, QV_CFG_GET_RECORD)

QV_CONFIG_SET(PlatformConfig, QV_CFG_SET_PLATFORM, PlatformConfig, XMLGET_PlatformConfig)
QV_CONFIG_SET(GB28181Config, QV_CFG_SET_GB28181, GB28181Config, XMLGET_GB28181Config)

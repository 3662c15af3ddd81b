// The ServerConfig section: FTP servers and the mail server with its
// receivers.
#include "config/config_section.h"
#include "config/config_store.h"
#include "config/element_parts.h"
#include "config/service_sections.h"

namespace qvconfig {
namespace {

#define F(Rec, m) XML_FIELD(Rec, m, #m)

const XmlField kFtpFields[] = {
    F(FTPConfig, Index), F(FTPConfig, ServerIP), F(FTPConfig, ServerPort),
    F(FTPConfig, Username), F(FTPConfig, Password), F(FTPConfig, FilePath),
    F(FTPConfig, FileSize),
};
const XmlField kSmtpListFields[] = {
    F(SMTPList, ServerIP), F(SMTPList, ServerPort), F(SMTPList, Auth),
    F(SMTPList, Username), F(SMTPList, Password), F(SMTPList, FromEmail),
};
const XmlField kSmtpFields[] = {
    F(SMTPConfig, Index), F(SMTPConfig, ToEmail), F(SMTPConfig, CcEmail),
    F(SMTPConfig, Subject),
};

int ReadFtp(const IXML_Node* element, FTPConfig* cfg) {
  ReadPlainElement(element, kFtpFields, FieldCount(kFtpFields), cfg, sizeof(*cfg));
  return 0;
}

void ReadFtpChild(const IXML_Node* e, ServerConfig* cfg) { ReadFTPList(e, &cfg->FTP); }
void ReadSmtpChild(const IXML_Node* e, ServerConfig* cfg) { ReadSMTPList(e, &cfg->SMTP); }
const ChildReader<ServerConfig> kServerChildren[] = {
    {"FTPList", ReadFtpChild},
    {"SMTPList", ReadSmtpChild},
};

}  // namespace

int ReadFTPList(const IXML_Node* element, FTPList* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  cfg->Count = ReadListChildren(element, "FTPConfig", cfg->Server, QV_MAX_FTP_SERVERS, ReadFtp);
  return 0;
}

void WriteFTPList(XmlWriter& out, const FTPList* cfg) {
  out.Append("<FTPList>\r\n");
  for (int i = 0; i < ListCount(cfg->Count, QV_MAX_FTP_SERVERS); ++i)
    WriteLineElement(out, "FTPConfig", kFtpFields, FieldCount(kFtpFields), &cfg->Server[i],
                     "/>\r\n");
  out.Append("</FTPList>\r\n");
}

int ReadSMTPConfig(const IXML_Node* element, SMTPConfig* cfg) {
  ReadPlainElement(element, kSmtpFields, FieldCount(kSmtpFields), cfg, sizeof(*cfg));
  return 0;
}

int ReadSMTPList(const IXML_Node* element, SMTPList* cfg) {
  ReadPlainElement(element, kSmtpListFields, FieldCount(kSmtpListFields), cfg, sizeof(*cfg));
  cfg->Count = ReadListChildren(element, "SMTPConfig", cfg->Receiver, QV_MAX_SMTP_RECEIVERS,
                                ReadSMTPConfig);
  return 0;
}

void WriteSMTPList(XmlWriter& out, const SMTPList* cfg) {
  WriteLineElement(out, "SMTPList", kSmtpListFields, FieldCount(kSmtpListFields), cfg,
                   ">\r\n");
  for (int i = 0; i < ListCount(cfg->Count, QV_MAX_SMTP_RECEIVERS); ++i)
    WriteLineElement(out, "SMTPConfig", kSmtpFields, FieldCount(kSmtpFields),
                     &cfg->Receiver[i], "/>\r\n");
  out.Append("</SMTPList>\r\n");
}

int ReadServerConfig(const IXML_Node* element, ServerConfig* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  ReadChildren(element, kServerChildren, cfg);
  return 0;
}

void WriteServerConfig(XmlWriter& out, const ServerConfig* cfg) {
  out.Append("<ServerConfig>\r\n");
  WriteFTPList(out, &cfg->FTP);
  WriteSMTPList(out, &cfg->SMTP);
  out.Append("</ServerConfig>\r\n");
}

}  // namespace qvconfig

int Server_getFtpsByXml(FTPList* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "FTPList", qvconfig::ReadFTPList);
}
int Server_getSmtpsByXml(SMTPList* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "SMTPList", qvconfig::ReadSMTPList);
}
int GetSmtpCfgByXml(SMTPConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "SMTPConfig", qvconfig::ReadSMTPConfig);
}
int GetServerCfgByXml(ServerConfig* cfg, const char* xml) {
  return READ_RECORD_BY_XML(cfg, xml, "ServerConfig", qvconfig::ReadServerConfig);
}

char* XMLGET_ServerConfig(ServerConfig* cfg) {
  return qvconfig::WriteRecordText<ServerConfig>(cfg, qvconfig::WriteServerConfig);
}
char* XMLGET_FtpConfig(FTPList* cfg) {
  return qvconfig::WriteRecordText<FTPList>(cfg, qvconfig::WriteFTPList);
}
char* XMLGET_SmtpConfig(SMTPList* cfg) {
  return qvconfig::WriteRecordText<SMTPList>(cfg, qvconfig::WriteSMTPList);
}

FTPConfig* GetFtpServerByID(FTPList* cfg, int id) {
  if (!cfg) return nullptr;
  return qvconfig::FindEntry(cfg->Server, cfg->Count, QV_MAX_FTP_SERVERS, &FTPConfig::Index, id);
}

SMTPConfig* GetSmtpServerByID(SMTPList* cfg, int id) {
  if (!cfg) return nullptr;
  return qvconfig::FindEntry(cfg->Receiver, cfg->Count, QV_MAX_SMTP_RECEIVERS,
                             &SMTPConfig::Index, id);
}

int GetServerConfig(ServerConfig* cfg) {
  if (!cfg) return -1;
  memset(cfg, 0, sizeof(*cfg));
  return qvconfig::ReadConfigSection("ServerConfig", [cfg](const IXML_Node* node) {
    return qvconfig::ReadServerConfig(node, cfg);
  });
}

int SetServerConfig(ServerConfig* cfg) {
  return qvconfig::WriteConfigSectionText("ServerConfig", XMLGET_ServerConfig(cfg));
}

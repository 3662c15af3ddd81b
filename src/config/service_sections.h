// The record (RecordConfig), server (ServerConfig), platform
// (PlatformConfig) and GB28181 (GB28181Config) sections: readers from XML
// text, writers to XML text, the element-level readers and writers that the
// document load and save use, the server lookups and the file store.
//
// Every element is written one attribute per line, as in system_sections.h.
// Readers from text return 0, or -1 when the text does not parse or holds no
// such element. Writers return a text the caller releases with free(), or
// null for a null record.
#pragma once

#include <upnp/ixml.h>

#include "quorvel/quorvel.h"

// ---- readers from XML text (the first element of the name is read)
int GetRecordCfgByXml(RecordConfig* cfg, const char* xml);
int Server_getFtpsByXml(FTPList* cfg, const char* xml);    // FTPList
int Server_getSmtpsByXml(SMTPList* cfg, const char* xml);  // SMTPList
int GetSmtpCfgByXml(SMTPConfig* cfg, const char* xml);     // one SMTPConfig
int GetServerCfgByXml(ServerConfig* cfg, const char* xml);
int GetPlatformCfgByXml(PlatformConfig* cfg, const char* xml);
int GetGB28181CfgByXml(GB28181Config* cfg, const char* xml);

// ---- writers
char* XMLGET_RecordConfig(RecordConfig* cfg);
char* XMLGET_ServerConfig(ServerConfig* cfg);
char* XMLGET_FtpConfig(FTPList* cfg);    // FTPList
char* XMLGET_SmtpConfig(SMTPList* cfg);  // SMTPList
char* XMLGET_PlatformConfig(PlatformConfig* cfg);
char* XMLGET_GB28181Config(GB28181Config* cfg);

// ---- lookups: the used entry with this Index, or null
FTPConfig* GetFtpServerByID(FTPList* cfg, int id);
SMTPConfig* GetSmtpServerByID(SMTPList* cfg, int id);

// ---- file store (section read and section write)
int GetRecordConfig(RecordConfig* cfg);
int SetRecordConfig(RecordConfig* cfg);
int GetServerConfig(ServerConfig* cfg);
int SetServerConfig(ServerConfig* cfg);
int GetPlatformConfig(PlatformConfig* cfg);
int SetPlatformConfig(PlatformConfig* cfg);
int GetGB28181Config(GB28181Config* cfg);
int SetGB28181Config(GB28181Config* cfg);

namespace qvconfig {

class XmlWriter;

// ---- element level: readers clear the record (a schedule becomes the full
// week) and read the attributes and children; 0.
int ReadRecordConfig(const IXML_Node* element, RecordConfig* cfg);
int ReadFTPList(const IXML_Node* element, FTPList* cfg);
int ReadSMTPList(const IXML_Node* element, SMTPList* cfg);
int ReadSMTPConfig(const IXML_Node* element, SMTPConfig* cfg);
int ReadServerConfig(const IXML_Node* element, ServerConfig* cfg);
int ReadPlatformConfig(const IXML_Node* element, PlatformConfig* cfg);
int ReadGB28181Config(const IXML_Node* element, GB28181Config* cfg);

void WriteRecordConfig(XmlWriter& out, const RecordConfig* cfg);
void WriteFTPList(XmlWriter& out, const FTPList* cfg);
void WriteSMTPList(XmlWriter& out, const SMTPList* cfg);
void WriteServerConfig(XmlWriter& out, const ServerConfig* cfg);
void WritePlatformConfig(XmlWriter& out, const PlatformConfig* cfg);
void WriteGB28181Config(XmlWriter& out, const GB28181Config* cfg);

}  // namespace qvconfig

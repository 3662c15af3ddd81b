#include "link/discovery_readers.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/debug_log.h"
#include "link/xml_util.h"

namespace {

// Cuts and parses one fragment. 0, or -1 (logged) when it is missing or
// does not parse.
int ParseFragment(TiXmlDocument& doc, const char* message, const char* open, const char* close,
                  bool quiet_open = false) {
  char* fragment = nullptr;
  if (CopyFragment(message, open, close, &fragment, quiet_open) != 0) return -1;
  bool ok = ParseXml(doc, fragment);
  free(fragment);
  if (!ok) {
    QV_LOG("[%s:%d]xml error\r\n\n");
    return -1;
  }
  return 0;
}

bool RootIs(TiXmlDocument& doc, const char* name) {
  TiXmlElement* root = doc.RootElement();
  return root != nullptr && strcmp(root->Value(), name) == 0;
}

int AttribInt(const TiXmlNode* node, const char* name) {
  const char* v = GetAttribValue(node, name);
  return v != nullptr ? atoi(v) : 0;
}

bool Contains(const char* message, const char* fmt, const std::string& root) {
  char tag[300];
  snprintf(tag, sizeof(tag), fmt, root.c_str());
  return strstr(message, tag) != nullptr;
}

}  // namespace

int TinyGetMessageRootType(std::string root, char* message) {
  if (message == nullptr) return -1;
  if (!root.empty()) {
    // Both search texts of a named root are its closing tag.
    if (Contains(message, "</%s>", root) && Contains(message, "</%s>", root)) return 2;
    return -1;
  }
  if (Contains(message, "<%s>", "XML_VEXORA") && Contains(message, "</%s>", "XML_VEXORA")) return 0;
  if (Contains(message, "<%s>", "XML_BRELLWICK") && Contains(message, "</%s>", "XML_BRELLWICK")) {
    return 1;
  }
  return -1;
}

int TinyGetDeviceParam(char* serial, char* platformId, char* p2pId, int* runtime, char* message) {
  TiXmlDocument doc;
  if (ParseFragment(doc, message, "<IPC_SERIALNUMBER", "/>") != 0) return -1;
  if (!RootIs(doc, "IPC_SERIALNUMBER")) return -2;
  TiXmlElement* root = doc.RootElement();
  CopyText(serial, 32, root->Attribute("SerialNumber"));
  CopyText(platformId, 32, root->Attribute("PLATFORMID"));
  CopyText(p2pId, 48, root->Attribute("P2PID"));
  *runtime = AttribInt(root, "runtime");
  if (serial[0] == '\0') {
    QV_LOG("[%s:%d]SerialNumber not found.\n\n");
    return -3;
  }
  return 0;
}

int TinyGetDeviceParam2(char* deviceType, unsigned char* osd, char* message) {
  TiXmlDocument doc;
  if (ParseFragment(doc, message, "<DEVICE_TYPE", "/>") != 0) return -1;
  if (!RootIs(doc, "DEVICE_TYPE")) return -2;
  TiXmlElement* root = doc.RootElement();
  CopyText(deviceType, 32, root->Attribute("DeviceType"));
  DecodeHex(root->Attribute("OSD"), osd, kOsdBytes);
  return deviceType[0] == '\0' ? -1 : 0;
}

int TinyNetwork_getLANCfg(LANConfig* cfg, const TiXmlNode* node) {
  CopyText(cfg->MacAddress, sizeof(cfg->MacAddress), GetAttribValue(node, "MacAddress"));
  cfg->DHCP = static_cast<unsigned char>(AttribInt(node, "DHCP"));
  CopyText(cfg->IPAddress, sizeof(cfg->IPAddress), GetAttribValue(node, "IPAddress"));
  CopyText(cfg->Netmask, sizeof(cfg->Netmask), GetAttribValue(node, "Netmask"));
  CopyText(cfg->Gateway, sizeof(cfg->Gateway), GetAttribValue(node, "Gateway"));
  CopyText(cfg->DNS1, sizeof(cfg->DNS1), GetAttribValue(node, "DNS1"));
  CopyText(cfg->DNS2, sizeof(cfg->DNS2), GetAttribValue(node, "DNS2"));
  return 0;
}

int TinyNetwork_getLANCfgByXml(LANConfig* cfg, const char* message) {
  memset(cfg, 0, sizeof(*cfg));
  TiXmlDocument doc;
  if (ParseFragment(doc, message, "<LANConfig", "/>") != 0) return -1;
  if (!RootIs(doc, "LANConfig")) return -2;
  return TinyNetwork_getLANCfg(cfg, doc.RootElement());
}

int TinyUser_getAccountConfig(UserAccount* account, const TiXmlNode* node) {
  CopyText(account->Username, sizeof(account->Username), GetAttribValue(node, "Username"));
  CopyText(account->Password, sizeof(account->Password), GetAttribValue(node, "Password"));
  CopyText(account->Group, sizeof(account->Group), GetAttribValue(node, "Group"));
  // The short last field is filled from the user name, as cameras expect.
  CopyText(account->Status, sizeof(account->Status), GetAttribValue(node, "Username"));
  return 0;
}

int TinySystem_getUserConfig(UserConfig* cfg, const TiXmlNode* node) {
  int count = 0;
  for (const TiXmlNode* child = node->FirstChild("Account");
       child != nullptr && count < QV_MAX_USER_ACCOUNTS; child = child->NextSibling("Account")) {
    TinyUser_getAccountConfig(&cfg->Account[count], child);
    ++count;
  }
  cfg->nAccount = count;
  return 0;
}

int TinySystem_getUserCfgByXml(UserConfig* cfg, const char* message) {
  memset(cfg, 0, sizeof(*cfg));
  TiXmlDocument doc;
  if (ParseFragment(doc, message, "<UserConfig>", "</UserConfig>", true) != 0) return -1;
  if (!RootIs(doc, "UserConfig")) return -2;
  return TinySystem_getUserConfig(cfg, doc.RootElement());
}

int TinyGetMediaStreamCfg(MediaStreamConfig* cfg, const TiXmlNode* node) {
  memset(cfg, 0, sizeof(*cfg));
  StreamAccessConfig* access = &cfg->StreamAccess;
  for (const TiXmlNode* child = node->FirstChild("StreamAccess"); child != nullptr;
       child = child->NextSibling("StreamAccess")) {
    access->Auth = AttribInt(child, "Auth");
    access->VideoPort = static_cast<unsigned short>(AttribInt(child, "VideoPort"));
    access->RTPOverRTSP = AttribInt(child, "RTPOverRTSP");
    access->PTZPort = static_cast<unsigned short>(AttribInt(child, "PTZPort"));
    access->WEBPort = static_cast<unsigned short>(AttribInt(child, "WEBPort"));
  }
  return 0;
}

int TinyGetMediaStreamCfgByXml(MediaStreamConfig* cfg, const char* message) {
  memset(cfg, 0, sizeof(*cfg));
  TiXmlDocument doc;
  if (ParseFragment(doc, message, "<MediaStreamConfig>", "</MediaStreamConfig>") != 0) return -1;
  if (!RootIs(doc, "MediaStreamConfig")) return -2;
  return TinyGetMediaStreamCfg(cfg, doc.RootElement());
}

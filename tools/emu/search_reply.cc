#include "emu/search_reply.h"

#include <tinyxml.h>

#include <cstring>
#include <vector>

#include "emu/envelope.h"
#include "link/discovery_readers.h"

namespace qvemu {
namespace {

const char* const kLanPath[] = {"NetworkConfig", "LANConfig"};
const char* const kStreamPath[] = {"MediaStreamConfig", "StreamAccess"};

TiXmlElement* Find(TiXmlDocument& doc, const char* const* path, int depth) {
  TiXmlElement* e = doc.RootElement();
  for (int i = 0; e != nullptr && i < depth; ++i) e = e->FirstChildElement(path[i]);
  return e;
}

std::string Print(const TiXmlElement* e) {
  if (e == nullptr) return "";
  TiXmlPrinter printer;
  printer.SetIndent("");
  printer.SetLineBreak("\n");
  e->Accept(&printer);
  std::string text = printer.Str();
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

bool Parse(const std::string& text, TiXmlDocument* doc) {
  doc->Parse(text.c_str(), nullptr, TIXML_ENCODING_LEGACY);
  return !doc->Error() && doc->RootElement() != nullptr;
}

std::string Printed(const TiXmlDocument& doc) {
  TiXmlPrinter printer;
  doc.Accept(&printer);
  return printer.Str();
}

// A mutable copy of the message for the library's fragment readers.
std::vector<char> Terminated(const std::string& message) {
  std::vector<char> text(message.begin(), message.end());
  text.push_back('\0');
  return text;
}

}  // namespace

std::string ReplySettings(const std::string& document) {
  TiXmlDocument doc;
  Parse(document, &doc);
  const char* const user_path[] = {"SystemConfig", "UserConfig"};
  const char* const stream_path[] = {"MediaStreamConfig"};
  return Print(Find(doc, kLanPath, 2)) + "\n" + Print(Find(doc, stream_path, 1)) + "\n" +
         Print(Find(doc, user_path, 2));
}

std::string SearchReplyText(const std::string& root, const DiscoveryIdentity& id,
                            const std::string& settings, long runtime_s) {
  return "<?xml version=\"1.0\" encoding=\"GB2312\"?>\n<" + root +
         ">\n<MESSAGE_HEADER\nMsg_type=\"SYSTEM_SEARCHIPC_MESSAGE\"\nMsg_code=\"3\"\n"
         "Msg_flag=\"0\"\n/>\n<MESSAGE_BODY>\n<IPC_SERIALNUMBER SerialNumber=\"" +
         EscapeAttr(id.serial) + "\" PLATFORMID=\"" + EscapeAttr(id.platform_id) +
         "\" P2PID=\"" + EscapeAttr(id.p2p_id) + "\" runtime=\"" + std::to_string(runtime_s) +
         "\" />\n<DEVICE_TYPE DeviceType=\"" + EscapeAttr(id.device_type) + "\" OSD=\"" +
         HexEncode(id.osd) + "\" />\n" + settings + "\n</MESSAGE_BODY>\n</" + root + ">";
}

std::string AddressedSerial(const std::string& message) {
  std::vector<char> text = Terminated(message);
  char serial[32] = "", platform[32] = "", p2p[48] = "";
  int runtime = 0;
  if (TinyGetDeviceParam(serial, platform, p2p, &runtime, text.data()) != 0) return "";
  return serial;
}

bool SetDocumentAttribute(std::string* document, const char* const* path, int depth,
                          const char* name, const std::string& value) {
  TiXmlDocument doc;
  if (!Parse(*document, &doc)) return false;
  TiXmlElement* e = Find(doc, path, depth);
  if (e == nullptr) return false;
  e->SetAttribute(name, value.c_str());
  *document = Printed(doc);
  return true;
}

bool ApplyModification(const std::string& message, std::string* document) {
  TiXmlDocument doc;
  if (!Parse(*document, &doc)) return false;
  std::vector<char> text = Terminated(message);
  bool changed = false;
  LANConfig lan;
  if (strstr(text.data(), "<LANConfig") != nullptr &&
      TinyNetwork_getLANCfgByXml(&lan, text.data()) == 0) {
    TiXmlElement* e = Find(doc, kLanPath, 2);
    if (e == nullptr) return false;
    e->SetAttribute("DHCP", lan.DHCP);
    e->SetAttribute("IPAddress", lan.IPAddress);
    e->SetAttribute("Netmask", lan.Netmask);
    e->SetAttribute("Gateway", lan.Gateway);
    e->SetAttribute("DNS1", lan.DNS1);
    e->SetAttribute("DNS2", lan.DNS2);
    changed = true;
  }
  MediaStreamConfig stream;
  if (strstr(text.data(), "<MediaStreamConfig>") != nullptr &&
      TinyGetMediaStreamCfgByXml(&stream, text.data()) == 0) {
    TiXmlElement* e = Find(doc, kStreamPath, 2);
    if (e == nullptr) return false;
    const StreamAccessConfig& s = stream.StreamAccess;
    e->SetAttribute("Auth", s.Auth);
    e->SetAttribute("VideoPort", s.VideoPort);
    e->SetAttribute("RTPOverRTSP", s.RTPOverRTSP);
    e->SetAttribute("PTZPort", s.PTZPort);
    e->SetAttribute("WEBPort", s.WEBPort);
    changed = true;
  }
  if (changed) *document = Printed(doc);
  return changed;
}

}  // namespace qvemu

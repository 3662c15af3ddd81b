// Search answers as an emulated camera writes them, for the tests of the
// table: one per serial number, device type, address and root.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "emu/config_store.h"
#include "emu/search_reply.h"

namespace qvtest {

struct ReplyShape {
  std::string serial = "SN-0001";
  std::string type = "IPC";
  std::string ip = "192.168.1.88";
  std::string root = "XML_BRELLWICK";
  std::string osd = "GATE";
};

// The settings part of an answer for a camera at ip (built once per address).
inline const std::string& SettingsFor(const std::string& ip) {
  static std::map<std::string, std::string> cache;
  auto it = cache.find(ip);
  if (it != cache.end()) return it->second;
  static const char* const kLan[] = {"NetworkConfig", "LANConfig"};
  std::string document = qvemu::ConfigStore::DefaultDocument();
  qvemu::SetDocumentAttribute(&document, kLan, 2, "IPAddress", ip);
  return cache[ip] = qvemu::ReplySettings(document);
}

inline std::string Reply(const ReplyShape& shape) {
  qvemu::DiscoveryIdentity id;
  id.serial = shape.serial;
  id.device_type = shape.type;
  id.osd = shape.osd;
  id.p2p_id = "P2P-" + shape.serial;
  return qvemu::SearchReplyText(shape.root, id, SettingsFor(shape.ip), 42);
}

inline std::string ReplyFrom(const std::string& serial, const std::string& ip = "192.168.1.88") {
  ReplyShape shape;
  shape.serial = serial;
  shape.ip = ip;
  return Reply(shape);
}

// A text in a writable, terminated buffer, as the search thread hands it on.
struct Writable {
  explicit Writable(const std::string& s) : bytes(s.begin(), s.end()) { bytes.push_back('\0'); }
  char* data() { return bytes.data(); }
  int length() const { return static_cast<int>(bytes.size()) - 1; }
  std::vector<char> bytes;
};

// Replaces the first occurrence of from with to.
inline std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  size_t at = text.find(from);
  if (at != std::string::npos) text.replace(at, from.size(), to);
  return text;
}

}  // namespace qvtest

#include "emu/config_store.h"

#include <tinyxml.h>

#include <map>

namespace qvemu {
namespace {

using Path = std::vector<std::string>;

const Path kVideo = {"MediaConfig", "Video"};
const Path kAudio = {"MediaConfig", "Audio"};

Path Under(const Path& parent, const char* name) {
  Path p = parent;
  p.push_back(name);
  return p;
}

// Sections a configuration get can ask for, by code.
const std::map<long, Path>& GetTable() {
  static const std::map<long, Path> kTable = {
      {200, {"SystemConfig"}},
      {201, {"SystemConfig", "PTZConfig"}},
      {202, {"SystemConfig", "TimeConfig"}},
      {203, {"SystemConfig", "UserConfig"}},
      {204, {"SystemConfig", "SystemLogConfig"}},
      {205, {"SystemConfig", "MiscConfig"}},
      {300, {"NetworkConfig"}},
      {305, {"NetworkConfig", "LANConfig"}},
      {306, {"NetworkConfig", "WIFIConfig"}},
      {310, {"NetworkConfig", "ADSLConfig"}},
      {311, {"NetworkConfig", "DDNSConfig"}},
      {312, {"NetworkConfig", "UPNPConfig"}},
      {315, {"NetworkConfig", "P2PConfig"}},
      {400, {"ServerConfig"}},
      {401, {"ServerConfig", "FTPList"}},
      {402, {"ServerConfig", "SMTPList"}},
      {500, {"MediaConfig"}},
      {501, kVideo},
      {502, kAudio},
      {503, Under(kVideo, "Encode")},
      {504, Under(kVideo, "Capture")},
      {505, Under(kVideo, "Overlay")},
      {507, Under(kAudio, "Capture")},
      {508, Under(kAudio, "Encode")},
      {509, Under(kVideo, "Mask")},
      {510, Under(kVideo, "ROI")},
      {600, {"MediaStreamConfig"}},
      {650, {"PlatformConfig"}},
      {680, {"GB28181Config"}},
      {700, {"RecordConfig"}},
      {800, {"AlarmConfig"}},
      {801, {"AlarmConfig", "InputAlarm"}},
      {802, {"AlarmConfig", "MotionDetectAlarm"}},
      {803, {"AlarmConfig", "VideoCoverAlarm"}},
      {804, {"AlarmConfig", "VideoLostAlarm"}},
      {805, {"AlarmConfig", "StorageFullAlarm"}},
      {808, {"AlarmConfig", "VideoPD"}},
  };
  return kTable;
}

// Sections a configuration set may replace, by code.
const std::map<long, Path>& SetTable() {
  static const std::map<long, Path> kTable = {
      {222, {"SystemConfig", "TimeConfig"}},
      {223, {"SystemConfig", "UserConfig"}},
      {227, {"SystemConfig", "MiscConfig"}},
      {320, {"NetworkConfig"}},
      {325, {"NetworkConfig", "LANConfig"}},
      {326, {"NetworkConfig", "WIFIConfig"}},
      {520, {"MediaConfig"}},
      {521, kVideo},
      {522, kAudio},
      {523, Under(kVideo, "Encode")},
      {524, Under(kVideo, "Capture")},
      {525, Under(kVideo, "Overlay")},
      {529, Under(kVideo, "Mask")},
      {531, Under(kVideo, "UserOverlay")},
      {620, {"MediaStreamConfig"}},
      {670, {"PlatformConfig"}},
      {681, {"GB28181Config"}},
      {820, {"AlarmConfig"}},
      {821, {"AlarmConfig", "InputAlarm"}},
      {822, {"AlarmConfig", "MotionDetectAlarm"}},
      {823, {"AlarmConfig", "VideoCoverAlarm"}},
      {824, {"AlarmConfig", "VideoLostAlarm"}},
      {828, {"AlarmConfig", "VideoGate"}},
      {829, {"AlarmConfig", "VideoPD"}},
      {830, {"AlarmConfig", "OutputAlarm"}},
  };
  return kTable;
}

Path Lookup(const std::map<long, Path>& table, long code) {
  auto it = table.find(code);
  return it == table.end() ? Path() : it->second;
}

bool IsConfigRoot(const TiXmlElement* root) {
  return root && (root->ValueStr() == "IPCConfig" || root->ValueStr() == "VEXORAConfig");
}

std::string Print(const TiXmlNode& node) {
  TiXmlPrinter printer;
  printer.SetIndent("");
  node.Accept(&printer);
  std::string text = printer.Str();
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

}  // namespace

ConfigStore::ConfigStore() : doc_(new TiXmlDocument) { Load(DefaultDocument()); }

ConfigStore::~ConfigStore() = default;

std::vector<std::string> ConfigStore::GetPath(long code) { return Lookup(GetTable(), code); }

std::vector<std::string> ConfigStore::SetPath(long code) { return Lookup(SetTable(), code); }

bool ConfigStore::Load(const std::string& xml) {
  std::unique_ptr<TiXmlDocument> doc(new TiXmlDocument);
  doc->Parse(xml.c_str());
  if (doc->Error() || !IsConfigRoot(doc->RootElement())) return false;
  doc_ = std::move(doc);
  return true;
}

std::string ConfigStore::Text() const { return Print(*doc_) + "\n"; }

TiXmlElement* ConfigStore::Find(const std::vector<std::string>& path) const {
  TiXmlElement* e = doc_->RootElement();
  for (const std::string& name : path) {
    if (!e) break;
    e = e->FirstChildElement(name);
  }
  return path.empty() ? nullptr : e;
}

bool ConfigStore::GetSection(long code, std::string* xml) const {
  const TiXmlElement* e = Find(GetPath(code));
  if (!e) return false;
  *xml = Print(*e);
  return true;
}

bool ConfigStore::SetSection(long code, const std::string& xml) {
  Path path = SetPath(code);
  if (path.empty()) return false;
  TiXmlDocument in;
  in.Parse(xml.c_str());
  const TiXmlElement* section = in.RootElement();
  if (in.Error() || !section || section->ValueStr() != path.back()) return false;
  // Walk down, creating missing containers, then replace or append.
  TiXmlElement* parent = doc_->RootElement();
  for (size_t i = 0; i + 1 < path.size(); ++i) {
    TiXmlElement* child = parent->FirstChildElement(path[i]);
    if (!child) {
      child = parent->InsertEndChild(TiXmlElement(path[i]))->ToElement();
    }
    parent = child;
  }
  TiXmlElement* old = parent->FirstChildElement(path.back());
  if (old) {
    parent->ReplaceChild(old, *section);
  } else {
    parent->InsertEndChild(*section);
  }
  return true;
}

std::string ConfigStore::Attribute(const std::vector<std::string>& path, const char* name) const {
  const TiXmlElement* e = Find(path);
  const char* v = e ? e->Attribute(name) : nullptr;
  return v ? v : "";
}

bool ConfigStore::SetAttribute(const std::vector<std::string>& path, const char* name,
                               const std::string& value) {
  TiXmlElement* e = Find(path);
  if (!e) return false;
  e->SetAttribute(name, value.c_str());
  return true;
}

}  // namespace qvemu

#include "config/config_store.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "config/config_file.h"
#include "config/config_print.h"
#include "config/alarm_sections.h"
#include "config/config_section.h"
#include "config/media_sections.h"
#include "config/network_sections.h"
#include "config/service_sections.h"
#include "config/system_sections.h"
#include "config/text_encoding.h"

namespace qvconfig {
namespace {

const char kRoot[] = "IPCConfig";
const char kOldRoot[] = "VEXORAConfig";
const char kProlog[] = "<?xml version=\"1.0\" encoding=\"GB2312\" ?>\r\n";

int ReadConfigVersion(const IXML_Node* element, ConfigVersion* cfg);
void WriteConfigVersion(XmlWriter& out, const ConfigVersion* cfg);

// A section's element reader and writer on the untyped member.
using SectionReader = int (*)(const IXML_Node*, void*);
using SectionWriter = void (*)(XmlWriter&, const void*);

template <typename Rec, int (*read)(const IXML_Node*, Rec*)>
int ReadSectionAs(const IXML_Node* element, void* member) {
  return read(element, static_cast<Rec*>(member));
}
template <typename Rec, void (*write)(XmlWriter&, const Rec*)>
void WriteSectionAs(XmlWriter& out, const void* member) {
  write(out, static_cast<const Rec*>(member));
}

struct Section {
  const char* tag;
  size_t offset;         // of the member in IPCConfig
  SectionReader read;
  SectionWriter write;
};

#define TYPED_SECTION(tag, member, read, write)                                    \
  Section {                                                                        \
    tag, offsetof(IPCConfig, member),                                              \
        ReadSectionAs<decltype(IPCConfig::member), read>,                          \
        WriteSectionAs<decltype(IPCConfig::member), write>                         \
  }

// Writing order of the document.
const Section kSections[] = {
    TYPED_SECTION("ConfigVersion", version, ReadConfigVersion, WriteConfigVersion),
    TYPED_SECTION("SystemConfig", system, ReadSystemConfig, WriteSystemConfig),
    TYPED_SECTION("NetworkConfig", network, ReadNetworkConfig, WriteNetworkConfig),
    TYPED_SECTION("ServerConfig", server, ReadServerConfig, WriteServerConfig),
    TYPED_SECTION("MediaConfig", media, ReadMediaConfig, WriteMediaConfig),
    TYPED_SECTION("MediaStreamConfig", mediaStream, ReadMediaStreamConfig,
                  WriteMediaStreamConfig),
    TYPED_SECTION("PlatformConfig", platform, ReadPlatformConfig, WritePlatformConfig),
    TYPED_SECTION("GB28181Config", gb28181, ReadGB28181Config, WriteGB28181Config),
    TYPED_SECTION("RecordConfig", record, ReadRecordConfig, WriteRecordConfig),
    TYPED_SECTION("AlarmConfig", alarm, ReadAlarmConfig, WriteAlarmConfig),
};
const size_t kSectionCount = sizeof(kSections) / sizeof(kSections[0]);

#undef TYPED_SECTION

void* Member(IPCConfig* cfg, const Section& s) {
  return reinterpret_cast<char*>(cfg) + s.offset;
}
const void* Member(const IPCConfig* cfg, const Section& s) {
  return reinterpret_cast<const char*>(cfg) + s.offset;
}

const Section* FindSection(const char* tag) {
  for (const Section& s : kSections)
    if (strcmp(s.tag, tag) == 0) return &s;
  return nullptr;
}

int ReadConfigVersion(const IXML_Node* element, ConfigVersion* cfg) {
  memset(cfg, 0, sizeof(*cfg));
  StrCpy(cfg->Version, sizeof(cfg->Version), FindAttribute(element, "Version"));
  return 0;
}

void WriteConfigVersion(XmlWriter& out, const ConfigVersion* cfg) {
  char raw[sizeof(cfg->Version)];
  CopyText(raw, sizeof(raw), cfg->Version);
  char escaped[sizeof(raw) * 6 + 1];
  copy_with_escape(escaped, raw);
  out.Append("\r\n<ConfigVersion Version=\"%s\"></ConfigVersion>\r\n", escaped);
}

// Fills the cleared record from a document text. *complete is false when a
// section reader failed. 0, or -1 when the text does not parse or lacks the
// root.
int LoadDocument(const std::string& text, IPCConfig* cfg, bool* complete) {
  *complete = true;
  ConfigXml doc;
  if (!doc.Parse(text.data(), text.size())) {
    CFG_PRINT("[%s:%u]ixmlParseBuffer error\r\n\n");
    return -1;
  }
  const IXML_Node* root = doc.First(kRoot);
  if (!root) root = doc.First(kOldRoot);
  if (!root) {
    CFG_PRINT("[%s:%u]xmlDocument_getElementsByTagName(NetworkConfig) return NULL!\n\n");
    return -1;
  }
  bool seen[kSectionCount] = {};
  for (IXML_Node* c = FirstChildElement(root); c; c = NextSiblingElement(c)) {
    const Section* s = FindSection(ElementName(c));
    if (!s || seen[s - kSections]) continue;
    seen[s - kSections] = true;
    if (s->read(c, Member(cfg, *s)) != 0) *complete = false;
  }
  return 0;
}

// Loads a file into the record; *complete as LoadDocument. -2 when the file
// cannot be read.
int LoadFile(const char* path, IPCConfig* cfg, bool* complete) {
  memset(cfg, 0, sizeof(*cfg));
  *complete = false;
  std::string text;
  if (!ReadConfigFile(path, &text)) {
    CFG_PRINT("[%s:%u]can not read config file\r\n\n");
    return -2;
  }
  return LoadDocument(text, cfg, complete);
}

std::string CurrentConfigPath() {
  std::lock_guard<std::mutex> hold(ConfigFileLock());
  return CONFIG_FILE_PATH();
}

// After a replaced section, everything but printable ASCII is skipped (line
// ends, tabs, and bytes from 0x7F up).
bool IsSkippedAfterSection(char c) {
  unsigned char b = static_cast<unsigned char>(c);
  return b < 0x20 || b >= 0x7F;
}

}  // namespace

int LoadConfigDocument(const std::string& text, IPCConfig* cfg) {
  if (!cfg) return -1;
  memset(cfg, 0, sizeof(*cfg));
  bool complete;
  return LoadDocument(text, cfg, &complete);
}

bool BuildConfigDocument(const IPCConfig* cfg, std::string* text) {
  if (!cfg || !text) return false;
  XmlWriter out(64 * 1024);
  out.Append("%s<%s>", kProlog, kRoot);
  for (const Section& s : kSections) s.write(out, Member(cfg, s));
  out.Append("</%s>\r\n", kRoot);
  if (!out.ok()) return false;
  text->assign(out.data(), out.size());
  return true;
}

int ReadConfigSection(const char* tag,
                      const std::function<int(const IXML_Node*)>& read) {
  std::string text;
  if (!ReadConfigFile(CurrentConfigPath().c_str(), &text)) {
    CFG_PRINT("[%s:%u]can not read config file\r\n\n");
    return -1;
  }
  ConfigXml doc;
  if (!doc.Parse(text.data(), text.size())) {
    CFG_PRINT("[%s:%u]ixmlParseBuffer error, cfgname=%s\r\n\n", tag);
    return -1;
  }
  const IXML_Node* node = doc.First(tag);
  if (!node) {
    CFG_PRINT("[%s:%u]xmlDocument_getElementsByTagName(NetworkConfig) return NULL!\n\n");
    return -1;
  }
  return read(node);
}

bool SpliceSection(const std::string& file, const char* tag, const char* text,
                   std::string* out) {
  if (!tag || !text || !out) return false;
  std::string start = std::string("<") + tag + ">";
  std::string end = std::string("</") + tag + ">";
  size_t from = file.find(start);
  size_t to;
  if (from != std::string::npos) {
    size_t end_at = file.find(end, from + start.size());
    if (end_at == std::string::npos) return false;
    to = end_at + end.size();
    while (to < file.size() && IsSkippedAfterSection(file[to])) ++to;
  } else {
    from = file.find(std::string("</") + kRoot + ">");
    if (from == std::string::npos) from = file.find(std::string("</") + kOldRoot + ">");
    if (from == std::string::npos) return false;
    to = from;
  }
  std::string spliced;
  spliced.reserve(file.size() + strlen(text));
  spliced.append(file, 0, from).append(text).append(file, to, std::string::npos);
  out->swap(spliced);
  return true;
}

int WriteConfigSection(const char* tag, const char* text) {
  std::lock_guard<std::mutex> hold(ConfigFileLock());
  std::string path = CONFIG_FILE_PATH();
  std::string file, spliced;
  if (!text || !ReadConfigFile(path.c_str(), &file) ||
      !SpliceSection(file, tag, text, &spliced) ||
      SaveConfigText(path.c_str(), std::move(spliced)) != 0) {
    CFG_PRINT("[%s:%u]can not save %s cfg\n", (std::string("<") + tag + ">").c_str());
    return -1;
  }
  return 0;
}

int WriteConfigSectionText(const char* tag, char* text) {
  if (!text) return -1;
  int rc = WriteConfigSection(tag, text);
  free(text);
  return rc;
}

}  // namespace qvconfig

using qvconfig::BuildConfigDocument;
using qvconfig::ConfigFileLock;
using qvconfig::CurrentConfigPath;
using qvconfig::LoadFile;
using qvconfig::ReadConfigSection;
using qvconfig::ReadConfigVersion;
using qvconfig::SaveConfigText;
using qvconfig::WriteConfigSectionText;
using qvconfig::WriteConfigVersion;
using qvconfig::WriteRecordText;

int ParseConfigXML(const char* path, IPCConfig* cfg) {
  if (!cfg) return -1;
  bool complete;
  return LoadFile(path, cfg, &complete) == 0 ? 0 : -1;
}

int GetConfigFromXml(IPCConfig* cfg) {
  return ParseConfigXML(CurrentConfigPath().c_str(), cfg);
}

int SetConfigToXML_Ex(IPCConfig* cfg, const char* path) {
  std::string text;
  int rc = -1;
  if (BuildConfigDocument(cfg, &text)) {
    std::lock_guard<std::mutex> hold(ConfigFileLock());
    rc = SaveConfigText(path, std::move(text));
  }
  if (rc != 0) CFG_PRINT("[%s:%u]can not save vexora cfg\r\n\n");
  return rc;
}

int SetConfigToXML(IPCConfig* cfg) {
  return SetConfigToXML_Ex(cfg, CurrentConfigPath().c_str());
}

int CheckUserConfigFileValidity(const char* path, int* valid) {
  if (!valid) return -1;
  *valid = 0;
  std::unique_ptr<IPCConfig> scratch(new (std::nothrow) IPCConfig);
  if (!scratch) return -1;
  bool complete = false;
  int rc = LoadFile(path, scratch.get(), &complete);
  if (rc == -2) return -1;
  *valid = (rc == 0 && complete) ? 1 : 0;
  return 0;
}

int GetConfigVersion(ConfigVersion* cfg) {
  if (!cfg) return -1;
  memset(cfg, 0, sizeof(*cfg));
  return ReadConfigSection("ConfigVersion", [cfg](const IXML_Node* node) {
    return ReadConfigVersion(node, cfg);
  });
}

char* XMLGET_ConfigVersion(ConfigVersion* cfg) {
  return WriteRecordText<ConfigVersion>(cfg, WriteConfigVersion);
}

int SetConfigVersion(ConfigVersion* cfg) {
  return WriteConfigSectionText("ConfigVersion", XMLGET_ConfigVersion(cfg));
}

void ShowSize() {
#define SHOW_SIZE(T) printf("sizeof(" #T ") = %zu\n", sizeof(T))
  SHOW_SIZE(IPCConfig);
  SHOW_SIZE(SystemConfig);
  SHOW_SIZE(ServerConfig);
  SHOW_SIZE(PlatformConfig);
  SHOW_SIZE(RecordConfig);
  SHOW_SIZE(GB28181Config);
  SHOW_SIZE(AlarmConfig);
  SHOW_SIZE(ConfigVersion);
  SHOW_SIZE(NetworkConfig);
  SHOW_SIZE(LANConfig);
  SHOW_SIZE(WIFIConfig);
  SHOW_SIZE(WIFIApConfig);
  SHOW_SIZE(WirelessEncrypt);
  SHOW_SIZE(PingWatchConfig);
  SHOW_SIZE(AlarmServerConfig);
  SHOW_SIZE(ADSLConfig);
  SHOW_SIZE(DDNSConfig);
  SHOW_SIZE(UPNPConfig);
  SHOW_SIZE(P2PConfig);
  SHOW_SIZE(G3Config);
  SHOW_SIZE(PPTPConfig);
  SHOW_SIZE(NetworkStatus);
  SHOW_SIZE(Network4GStatus);
  SHOW_SIZE(TimeSpanCfg);
  SHOW_SIZE(WorkDayList);
  SHOW_SIZE(UserConfig);
  SHOW_SIZE(MediaStreamConfig);
  SHOW_SIZE(MediaConfig);
  SHOW_SIZE(VideoConfig);
  SHOW_SIZE(VideoCaptureConfig);
  SHOW_SIZE(VideoEncodeConfig);
  SHOW_SIZE(VideoOverlayConfig);
  SHOW_SIZE(VideoUserOverlayConfig);
  SHOW_SIZE(VideoMaskConfig);
  SHOW_SIZE(VideoROIConfig);
  SHOW_SIZE(AudioConfig);
#undef SHOW_SIZE
}

void ShowString(const char* name, int size, const char* value) {
  int n = value && size > 0 ? static_cast<int>(strnlen(value, size)) : 0;
  printf("%s[%d]: %.*s\n", name ? name : "", size, n, value ? value : "");
}

// The configuration document: whole load and save, section read and write
// against the file, the version element and the validity check.
#include "config/config_store.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <cstring>
#include <memory>
#include <string>

#include "config/config_files_helper.h"
#include "config/media_fill_helper.h"
#include "config/network_fill_helper.h"
#include "config/network_sections.h"
#include "config/round_trip.h"
#include "config/section_fill_helper.h"

namespace {

using qvconfig::SpliceSection;

std::unique_ptr<IPCConfig> NewConfig() {
  std::unique_ptr<IPCConfig> cfg(new IPCConfig);
  memset(cfg.get(), 0x77, sizeof(IPCConfig));  // stale bytes a load must clear
  return cfg;
}

void Replace(std::string* text, const std::string& from, const std::string& to) {
  for (size_t at = text->find(from); at != std::string::npos; at = text->find(from, at + to.size()))
    text->replace(at, from.size(), to);
}

class ConfigDocument : public testing::Test {
 protected:
  void SetUp() override {
    fixture_ = ReadFile(FixturePath("full_config.xml"));
    ASSERT_FALSE(fixture_.empty());
    path_ = dir_ / "config.xml";
    WriteFile(path_, fixture_);
  }

  std::unique_ptr<IPCConfig> Load(const std::string& path) {
    auto cfg = NewConfig();
    EXPECT_EQ(ParseConfigXML(path.c_str(), cfg.get()), 0);
    return cfg;
  }

  ScratchDir dir_;
  std::string fixture_;
  std::string path_;
};

TEST_F(ConfigDocument, LoadsEverySection) {
  auto cfg = Load(path_);
  EXPECT_STREQ(cfg->version.Version, "3.1.7");
  const NetworkConfig& net = cfg->network;
  EXPECT_STREQ(net.LAN.IPAddress, "192.168.1.88");
  EXPECT_EQ(net.LAN.MTU, 1500u);
  EXPECT_EQ(net.LAN.dhcpOffTime, 5);
  EXPECT_STREQ(net.WIFI.ESSID, "\xE4\xB8\xAD\xE6\x96\x87-net");
  EXPECT_STREQ(net.WIFI.Encrypt.WPAKeyValue, "secret<>");
  EXPECT_EQ(net.WIFI.Encrypt.WEPKeyIndex, 2);
  EXPECT_EQ(net.WIFI.PingWatch.MaxFail, 3);
  EXPECT_STREQ(net.WIFIAp.Encrypt.WEPAuthMode, "shared key");
  EXPECT_STREQ(net.AlarmServer.url, "http://alarm.example/in");
  EXPECT_EQ(net.DDNS.FreshInterval, 600);
  EXPECT_EQ(net.G3.Type, 0);
  EXPECT_STREQ(net.G3.SMSC, "+8613800000001");
  EXPECT_EQ(net.PPTP.MTU, 1400);
  EXPECT_STREQ(net.P2P.Authcode, "ABCDEF123456");
  const VideoConfig& video = cfg->media.Video;
  EXPECT_EQ(video.Capture.Brightness, 61);
  EXPECT_EQ(video.Capture.WDRValue, 200);
  EXPECT_EQ(video.Capture.IrcutNightEndTime.Hour, 8);
  EXPECT_EQ(video.Encode.Stream[1].IsH265, 1);
  EXPECT_EQ(video.Encode.Stream[2].FrameRate, 15);
  EXPECT_STREQ(video.Overlay.Title.Title, "\xD6\xD0 gate & door");
  EXPECT_EQ(video.UserOverlay.Count, 2);
  EXPECT_STREQ(video.UserOverlay.UserOSD[1].TitleUtf8, "line two");
  EXPECT_STREQ(cfg->media.Audio.Encode.EncodeType, "G711A");
  const StreamAccessConfig& access = cfg->mediaStream.StreamAccess;
  EXPECT_EQ(access.hik_port, 8100);
  EXPECT_STREQ(access.rtmp_server, "rtmp://push.example/live");
  EXPECT_EQ(access.Rtmp.TimeSpan.day1, 255u);
  EXPECT_STREQ(cfg->system.PTZ.Common.Protocol, "PELCO-D");
  EXPECT_EQ(cfg->server.FTP.Server[0].FileSize, 10);
  EXPECT_STREQ(cfg->platform.Vexora.FileName, "ring.wav");
  EXPECT_EQ(cfg->alarm.MotionDetect.NightStartTime.Hour, 18);
  EXPECT_EQ(cfg->alarm.Audio.sensity_lsd, 3);
}

TEST_F(ConfigDocument, OlderRootReadsTheSameAndSavesAsIPCConfig) {
  auto expected = Load(path_);
  std::string old_root = fixture_;
  Replace(&old_root, "IPCConfig>", "VEXORAConfig>");
  std::string old_path = dir_ / "old.xml";
  WriteFile(old_path, old_root);
  auto cfg = Load(old_path);
  EXPECT_EQ(memcmp(cfg.get(), expected.get(), sizeof(IPCConfig)), 0);
  std::string saved_path = dir_ / "saved.xml";
  ASSERT_EQ(SetConfigToXML_Ex(cfg.get(), saved_path.c_str()), 0);
  std::string saved = ReadFile(saved_path);
  EXPECT_EQ(Occurrences(saved, "VEXORAConfig"), 0u);
  EXPECT_NE(saved.find("<IPCConfig> \n"), std::string::npos);
}

TEST_F(ConfigDocument, SaveAndReloadGiveAnEqualRecord) {
  auto cfg = Load(path_);
  std::string saved_path = dir_ / "saved.xml";
  ASSERT_EQ(SetConfigToXML_Ex(cfg.get(), saved_path.c_str()), 0);
  auto again = Load(saved_path);
  EXPECT_EQ(memcmp(cfg.get(), again.get(), sizeof(IPCConfig)), 0);
  // A second save writes the same bytes.
  std::string second_path = dir_ / "second.xml";
  ASSERT_EQ(SetConfigToXML_Ex(again.get(), second_path.c_str()), 0);
  EXPECT_EQ(ReadFile(second_path), ReadFile(saved_path));
}

TEST_F(ConfigDocument, FilledRecordRoundTripsThroughTheConfigurationFile) {
  // Every section with every member set: saved whole, loaded back equal.
  auto cfg = NewConfig();
  memset(cfg.get(), 0, sizeof(IPCConfig));
  FillSystemConfig(&cfg->system);
  FillServerConfig(&cfg->server);
  FillMediaStreamConfig(&cfg->mediaStream);
  FillPlatformConfig(&cfg->platform);
  FillRecordConfig(&cfg->record);
  FillNetworkConfig(&cfg->network);
  FillGB28181Config(&cfg->gb28181);
  strcpy(cfg->version.Version, "v\"1&2");
  FillMediaConfig(&cfg->media);
  FillAlarmConfig(&cfg->alarm);
  ScopedConfigPath use(path_);
  ASSERT_EQ(SetConfigToXML(cfg.get()), 0);
  auto back = NewConfig();
  ASSERT_EQ(GetConfigFromXml(back.get()), 0);
  EXPECT_TRUE(SameRecord(*cfg, *back));
}

// The ten sections once each, in writing order, up to the root's end.
void ExpectSectionsInOrder(const std::string& saved) {
  const char* order[] = {"<ConfigVersion",    "<SystemConfig>",   "<NetworkConfig>",
                         "<ServerConfig>",    "<MediaConfig>",    "<MediaStreamConfig>",
                         "<PlatformConfig>",  "<GB28181Config>",  "<RecordConfig>",
                         "<AlarmConfig>",     "</IPCConfig> \n"};
  size_t at = 0;
  for (const char* tag : order) {
    size_t found = saved.find(tag, at);
    ASSERT_NE(found, std::string::npos) << tag << " in\n" << saved;
    EXPECT_EQ(Occurrences(saved, tag), 1u) << tag;
    at = found;
  }
  EXPECT_EQ(at + strlen("</IPCConfig> \n"), saved.size());
}

TEST_F(ConfigDocument, WrittenFormOfAFreshAndALoadedRecord) {
  std::unique_ptr<IPCConfig> fresh(new IPCConfig());
  std::string fresh_path = dir_ / "fresh.xml";
  ASSERT_EQ(SetConfigToXML_Ex(fresh.get(), fresh_path.c_str()), 0);
  ExpectSectionsInOrder(ReadFile(fresh_path));
  int valid = 0;
  EXPECT_EQ(CheckUserConfigFileValidity(fresh_path.c_str(), &valid), 0);
  EXPECT_EQ(valid, 1);

  // Carriage returns in texts are written as blanks.
  auto cfg = Load(path_);
  strcpy(cfg->network.LAN.hostname, "a\rb");
  std::string saved_path = dir_ / "saved.xml";
  ASSERT_EQ(SetConfigToXML_Ex(cfg.get(), saved_path.c_str()), 0);
  std::string saved = ReadFile(saved_path);
  EXPECT_EQ(saved.find('\r'), std::string::npos);
  EXPECT_NE(saved.find("hostname=\"a b\""), std::string::npos);
  const std::string head =
      "<?xml version=\"1.0\" encoding=\"GB2312\" ?> \n<IPCConfig> \n"
      "<ConfigVersion Version=\"3.1.7\"></ConfigVersion> \n<SystemConfig>";
  EXPECT_EQ(saved.compare(0, head.size(), head), 0) << saved.substr(0, 200);
  ExpectSectionsInOrder(saved);
}

TEST_F(ConfigDocument, FirstOfRepeatedSectionsCounts) {
  std::string doubled = fixture_;
  Replace(&doubled, "</IPCConfig>",
          "<NetworkConfig><UPNPConfig Enable=\"7\"/></NetworkConfig>"
          "<AlarmConfig><AudioAlarm sensity_lsd=\"9\"/></AlarmConfig></IPCConfig>");
  WriteFile(path_, doubled);
  auto cfg = Load(path_);
  EXPECT_EQ(cfg->network.UPNP.Enable, 1);
  EXPECT_EQ(cfg->alarm.Audio.sensity_lsd, 3);
}

TEST_F(ConfigDocument, BadDocumentsFailWithTheirMessage) {
  const struct {
    const char* content;  // null: no file at all
    const char* message;
  } cases[] = {
      {nullptr, "]can not read config file\r\n\n"},
      {"<IPCConfig><NetworkConfig>", "]ixmlParseBuffer error\r\n\n"},
      {"<IPCConfig a=\"1\" a=\"2\"/>", "]ixmlParseBuffer error\r\n\n"},
      {"", "]ixmlParseBuffer error\r\n\n"},
      {"<Other><NetworkConfig/></Other>",
       "]xmlDocument_getElementsByTagName(NetworkConfig) return NULL!\n\n"},
  };
  for (const auto& c : cases) {
    std::string path = dir_ / "bad.xml";
    unlink(path.c_str());
    if (c.content) WriteFile(path, c.content);
    auto cfg = NewConfig();
    std::string printed =
        CapturedStdout([&] { EXPECT_EQ(ParseConfigXML(path.c_str(), cfg.get()), -1); });
    EXPECT_NE(printed.find(c.message), std::string::npos) << printed;
    std::unique_ptr<IPCConfig> zero(new IPCConfig());
    EXPECT_EQ(memcmp(cfg.get(), zero.get(), sizeof(IPCConfig)), 0) << "not cleared";
  }
  EXPECT_EQ(ParseConfigXML(path_.c_str(), nullptr), -1);
  EXPECT_EQ(ParseConfigXML(nullptr, NewConfig().get()), -1);
}

TEST_F(ConfigDocument, HostileButParsableDocuments) {
  std::string doc = "<IPCConfig>";
  for (int i = 0; i < 20000; ++i) doc += "<Junk n=\"" + std::to_string(i) + "\"/>";
  doc += "<NetworkConfig><LANConfig MTU=\"x9\" hostname=\"" + std::string(100000, 'h') +
         "\" DHCP=\"\xD6\xD0\"/><WIFIConfig ESSID=\"\xFF\xFF\x81\"/></NetworkConfig>";
  doc += "<SystemConfig>" + std::string(100000, 's') + "<UserConfig>";
  for (int i = 0; i < 5000; ++i) doc += "<Account Username=\"" + std::string(500, 'u') + "\"/>";
  doc += "</UserConfig></SystemConfig>";
  doc += "</IPCConfig>";
  WriteFile(path_, doc);
  auto cfg = Load(path_);
  EXPECT_EQ(cfg->network.LAN.MTU, 1400u);
  EXPECT_EQ(strlen(cfg->network.LAN.hostname), 63u);
  EXPECT_EQ(cfg->network.LAN.DHCP, 0);
  EXPECT_STREQ(cfg->network.WIFI.ESSID, "");
  EXPECT_EQ(cfg->system.User.nAccount, QV_MAX_USER_ACCOUNTS);
  EXPECT_EQ(strlen(cfg->system.User.Account[9].Username), 39u);
}

TEST_F(ConfigDocument, ValidityOfGoodPartialAndUnreadableFiles) {
  const struct {
    std::string name, content;  // empty name: the folder itself
    int ret, valid;
  } cases[] = {
      {"config.xml", fixture_, 0, 1},
      {"partial.xml", fixture_.substr(0, fixture_.size() / 2), 0, 0},
      {"rootless.xml", "<NetworkConfig/>", 0, 0},
      {"missing.xml", "", -1, 0},
      {"", "", -1, 0},
  };
  for (const auto& c : cases) {
    std::string path = c.name.empty() ? dir_.path() : dir_ / c.name;
    if (!c.content.empty()) WriteFile(path, c.content);
    int valid = -1;
    EXPECT_EQ(CheckUserConfigFileValidity(path.c_str(), &valid), c.ret) << c.name;
    EXPECT_EQ(valid, c.valid) << c.name;
  }
  EXPECT_EQ(CheckUserConfigFileValidity(path_.c_str(), nullptr), -1);
}

class SectionWrite : public ConfigDocument {
 protected:
  void SetUp() override {
    ConfigDocument::SetUp();
    use_.reset(new ScopedConfigPath(path_));
    FillNetworkConfig(&net_);
  }
  void TearDown() override { use_.reset(); }

  std::unique_ptr<ScopedConfigPath> use_;
  NetworkConfig net_;
};

TEST_F(SectionWrite, ReplacesTheSectionAndLeavesTheRest) {
  ASSERT_EQ(SetNetworkConfig(&net_), 0);
  std::string after = ReadFile(path_);
  size_t start = fixture_.find("<NetworkConfig>");
  size_t rest = fixture_.find("</NetworkConfig>") + strlen("</NetworkConfig>\n");
  EXPECT_EQ(after.compare(0, start, fixture_, 0, start), 0);
  std::string tail = fixture_.substr(rest);
  ASSERT_GE(after.size(), tail.size());
  EXPECT_EQ(after.substr(after.size() - tail.size()), tail);
  EXPECT_EQ(Occurrences(after, "<NetworkConfig>"), 1u);
  char* text = XMLGET_NetworkConfig(&net_);
  std::string written = text;
  free(text);
  Replace(&written, "\r", " ");
  EXPECT_EQ(after.substr(start, after.size() - tail.size() - start), written);

  NetworkConfig back;
  ASSERT_EQ(GetNetworkConfig(&back), 0);
  EXPECT_EQ(memcmp(&back, &net_, sizeof(back)), 0);
  int valid = 0;
  EXPECT_EQ(CheckUserConfigFileValidity(path_.c_str(), &valid), 0);
  EXPECT_EQ(valid, 1);
}

TEST_F(SectionWrite, InsertsAMissingSectionBeforeTheRootEnd) {
  for (const char* root : {"IPCConfig", "VEXORAConfig"}) {
    std::string doc = std::string("<?xml version=\"1.0\"?>\n<") + root + ">\n<SystemConfig/>\n</" +
                      root + ">\n";
    WriteFile(path_, doc);
    ASSERT_EQ(SetNetworkConfig(&net_), 0) << root;
    std::string after = ReadFile(path_);
    size_t at = after.find("<NetworkConfig>");
    ASSERT_NE(at, std::string::npos);
    EXPECT_EQ(after.substr(0, at), doc.substr(0, doc.find("</")));
    EXPECT_EQ(after.substr(after.size() - strlen(root) - 4), std::string("</") + root + ">\n");
    NetworkConfig back;
    ASSERT_EQ(GetNetworkConfig(&back), 0);
    EXPECT_EQ(memcmp(&back, &net_, sizeof(back)), 0);
  }
}

TEST_F(SectionWrite, NothingToSpliceIntoLeavesTheFileAlone) {
  const char* contents[] = {
      "<?xml version=\"1.0\"?>\n<Other/>\n",        // neither section nor root end
      "<IPCConfig>\n<NetworkConfig>\n<LANConfig/>\n",  // a start tag without its end
      "",
  };
  for (const char* content : contents) {
    WriteFile(path_, content);
    std::string printed = CapturedStdout([&] { EXPECT_EQ(SetNetworkConfig(&net_), -1); });
    EXPECT_NE(printed.find("]can not save <NetworkConfig> cfg\n"), std::string::npos);
    EXPECT_EQ(ReadFile(path_), content);
  }
  unlink(path_.c_str());
  EXPECT_EQ(SetNetworkConfig(&net_), -1);
  EXPECT_NE(access(path_.c_str(), F_OK), 0);
  EXPECT_EQ(SetNetworkConfig(nullptr), -1);
}

TEST_F(SectionWrite, FailedWriteKeepsTheOldFile) {
  // A file size limit below the new document's size makes the write fail
  // half way.
  struct sigaction ignore, old_action;
  memset(&ignore, 0, sizeof(ignore));
  ignore.sa_handler = SIG_IGN;
  sigaction(SIGXFSZ, &ignore, &old_action);
  struct rlimit old_limit;
  getrlimit(RLIMIT_FSIZE, &old_limit);
  struct rlimit small = old_limit;
  small.rlim_cur = 1024;
  setrlimit(RLIMIT_FSIZE, &small);
  int rc = SetNetworkConfig(&net_);
  auto cfg = Load(path_);
  int whole = SetConfigToXML(cfg.get());
  setrlimit(RLIMIT_FSIZE, &old_limit);
  sigaction(SIGXFSZ, &old_action, nullptr);
  EXPECT_EQ(rc, -1);
  EXPECT_EQ(whole, -1);
  EXPECT_EQ(ReadFile(path_), fixture_);
  // No temporary file is left behind.
  EXPECT_EQ(ListDir(dir_.path()), std::vector<std::string>{"config.xml"});
}

TEST_F(SectionWrite, ReadAndSaveFailuresSayWhy) {
  auto cfg = Load(path_);
  std::string printed = CapturedStdout([&] {
    EXPECT_EQ(SetConfigToXML_Ex(cfg.get(), (dir_ / "no/such/config.xml").c_str()), -1);
  });
  EXPECT_NE(printed.find("]open error\n\n"), std::string::npos);
  EXPECT_NE(printed.find("]can not save vexora cfg\r\n\n"), std::string::npos);

  const struct {
    const char* content;  // null: no file
    const char* message;
  } cases[] = {
      {"<IPCConfig><SystemConfig/></IPCConfig>",
       "]xmlDocument_getElementsByTagName(NetworkConfig) return NULL!\n\n"},
      {"<IPCConfig><NetworkConfig>", "]ixmlParseBuffer error, cfgname=NetworkConfig\r\n\n"},
      {nullptr, "]can not read config file\r\n\n"},
  };
  for (const auto& c : cases) {
    unlink(path_.c_str());
    if (c.content) WriteFile(path_, c.content);
    NetworkConfig back;
    printed = CapturedStdout([&] { EXPECT_EQ(GetNetworkConfig(&back), -1); });
    EXPECT_NE(printed.find(c.message), std::string::npos) << printed;
  }
}

TEST_F(SectionWrite, ConfigVersionIsAppendedOnEveryCall) {
  ConfigVersion v = {"4.0"};
  ASSERT_EQ(SetConfigVersion(&v), 0);
  strcpy(v.Version, "5.0");
  ASSERT_EQ(SetConfigVersion(&v), 0);
  std::string after = ReadFile(path_);
  EXPECT_EQ(Occurrences(after, "<ConfigVersion "), 3u);
  EXPECT_EQ(after.substr(after.find("</AlarmConfig>")),
            "</AlarmConfig>\n \n<ConfigVersion Version=\"4.0\"></ConfigVersion> \n"
            " \n<ConfigVersion Version=\"5.0\"></ConfigVersion> \n</IPCConfig>\n");
  ConfigVersion read;
  ASSERT_EQ(GetConfigVersion(&read), 0);
  EXPECT_STREQ(read.Version, "3.1.7");  // the first one
  auto cfg = Load(path_);
  EXPECT_STREQ(cfg->version.Version, "3.1.7");
}

TEST(SectionSplice, SpansAndSkippedLineEnds) {
  std::string out;
  ASSERT_TRUE(SpliceSection("<R>\n<A>\n<x/>\n</A>\r\n\t<B/></R>", "A", "<A/>\r\n", &out));
  EXPECT_EQ(out, "<R>\n<A/>\r\n<B/></R>");
  // Bytes from 0x7F up are not printable either.
  ASSERT_TRUE(SpliceSection("<R><A>x</A>\xA1\x7F <B/></R>", "A", "<A/>", &out));
  EXPECT_EQ(out, "<R><A/> <B/></R>");
  ASSERT_TRUE(SpliceSection("<VEXORAConfig><B/></VEXORAConfig>", "A", "<A/>", &out));
  EXPECT_EQ(out, "<VEXORAConfig><B/><A/></VEXORAConfig>");
  EXPECT_FALSE(SpliceSection("<R><A></R>", "A", "<A/>", &out));
  EXPECT_FALSE(SpliceSection("<R/>", "A", "<A/>", &out));
  EXPECT_FALSE(SpliceSection("<IPCConfig></IPCConfig>", "A", nullptr, &out));
}

}  // namespace

// The network section: round trips of every element, defaults and checks,
// the Wi-Fi name, the name tables and the status reader.
#include "config/network_sections.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "config/config_files_helper.h"
#include "config/network_fill_helper.h"
#include "config/round_trip.h"

namespace {

class NetworkRoundTrip : public testing::Test {
 protected:
  void SetUp() override { FillNetworkConfig(&cfg_); }
  NetworkConfig cfg_;
};

TEST_F(NetworkRoundTrip, WholeSectionAndEveryElementOnItsOwn) {
  ExpectRecordRoundTrip<NetworkConfig>(cfg_, XMLGET_NetworkConfig, GetNetworkCfgByXml);
  ExpectRecordRoundTrip<LANConfig>(cfg_.LAN, XMLGET_NetworkLANConfig, Network_getLANCfgByXml);
  ExpectRecordRoundTrip<WIFIConfig>(cfg_.WIFI, XMLGET_NetworkWIFIConfig, Network_getWIFICfgByXml);
  ExpectRecordRoundTrip<WIFIApConfig>(cfg_.WIFIAp, XMLGET_NetworkWIFIApConfig,
                                Network_getWIFIApCfgByXml);
  ExpectRecordRoundTrip<AlarmServerConfig>(cfg_.AlarmServer, XMLGET_NetworkAlarmServerConfig,
                                     Network_getAlarmServerCfgByXml);
  ExpectRecordRoundTrip<ADSLConfig>(cfg_.ADSL, XMLGET_NetworkADSLConfig, Network_getADSLCfgByXml);
  ExpectRecordRoundTrip<DDNSConfig>(cfg_.DDNS, XMLGET_NetworkDDNSConfig, Network_getDDNSCfgByXml);
  ExpectRecordRoundTrip<UPNPConfig>(cfg_.UPNP, XMLGET_NetworkUPNPConfig, Network_getUPNPCfgByXml);
  ExpectRecordRoundTrip<P2PConfig>(cfg_.P2P, XMLGET_NetworkP2PConfig, Network_getP2PCfgByXml);
  ExpectRecordRoundTrip<G3Config>(cfg_.G3, XMLGET_NetworkG3Config, Network_getG3CfgByXml);
  ExpectRecordRoundTrip<PPTPConfig>(cfg_.PPTP, XMLGET_NetworkPPTPConfig, Network_getPPTPCfgByXml);
}

TEST_F(NetworkRoundTrip, ChildrenInWritingOrder) {
  std::string xml = TakeText(XMLGET_NetworkConfig(&cfg_));
  const char* order[] = {"<NetworkConfig>\r\n<LANConfig ", "/> <WIFIConfig\r\n",
                         "<WIFIApConfig\r\n", "<AlarmServerConfig\r\n",
                         "<ADSLConfig\r\n", "<DDNSConfig\r\n", "<UPNPConfig\r\n",
                         "<G3Config\r\n", "<PPTPConfig\r\n", "<P2PConfig\r\n",
                         "</NetworkConfig>\r\n"};
  size_t at = 0;
  for (const char* piece : order) {
    size_t found = xml.find(piece, at);
    ASSERT_NE(found, std::string::npos) << piece;
    at = found;
  }
  EXPECT_EQ(xml.size(), at + strlen("</NetworkConfig>\r\n"));
}

TEST_F(NetworkRoundTrip, G3TypeIsWrittenButNotReadBack) {
  cfg_.G3.Type = 4;
  std::string xml = TakeText(XMLGET_NetworkG3Config(&cfg_.G3));
  EXPECT_NE(xml.find("Type=\"4\"\r\n"), std::string::npos);
  G3Config back;
  ASSERT_EQ(Network_getG3CfgByXml(&back, xml.c_str()), 0);
  EXPECT_EQ(back.Type, 0);
  EXPECT_EQ(back.DialOption, 4);
}

TEST(LanConfig, WrittenOnOneLine) {
  LANConfig lan;
  memset(&lan, 0, sizeof(lan));
  strcpy(lan.MacAddress, "00:11:22:33:44:55");
  lan.DHCP = 1;
  lan.dhcpOffTime = -1;
  lan.ALLNET = 2;
  strcpy(lan.IPAddress, "192.168.1.2");
  strcpy(lan.hostname, "a\"b");
  lan.MTU = 1400;
  EXPECT_EQ(TakeText(XMLGET_NetworkLANConfig(&lan)),
            "<LANConfig MacAddress=\"00:11:22:33:44:55\" DHCP=\"1\" "
            "dhcpOffTime=\"-1\" ALLNET=\"2\" IPAddress=\"192.168.1.2\" "
            "Netmask=\"\" Gateway=\"\" DNS1=\"\" DNS2=\"\" hostname=\"a&quot;b\" "
            "MTU=\"1400\" /> ");
}

TEST(LanConfig, DefaultsChecksAndClipping) {
  LANConfig lan;
  ASSERT_EQ(Network_getLANCfgByXml(&lan, "<LANConfig/>"), 0);
  EXPECT_EQ(lan.dhcpOffTime, -1);
  EXPECT_EQ(lan.MTU, 1400u);
  const struct {
    const char* mtu;
    unsigned expected;
  } cases[] = {{"0", 1400}, {"9000", 1400}, {"8192", 8192}, {"1", 1},
               {"8193", 1400}, {"-1", 1400}, {"abc", 1400}, {"1500x", 1500},
               {"99999999999", 1400}};
  for (const auto& c : cases) {
    std::string xml = std::string("<LANConfig MTU=\"") + c.mtu + "\"/>";
    ASSERT_EQ(Network_getLANCfgByXml(&lan, xml.c_str()), 0);
    EXPECT_EQ(lan.MTU, c.expected) << c.mtu;
  }
  // Narrowed to the member's width as atoi's result would be.
  ASSERT_EQ(Network_getLANCfgByXml(&lan, "<LANConfig DHCP=\"300\" ALLNET=\"65537\" "
                                         "dhcpOffTime=\"200\"/>"), 0);
  EXPECT_EQ(lan.DHCP, 44);
  EXPECT_EQ(lan.ALLNET, 1);
  EXPECT_EQ(lan.dhcpOffTime, -56);
  // Texts keep size - 1 bytes; unknown attributes are ignored.
  std::string long_host(5000, 'h');
  std::string xml = "<LANConfig Unknown=\"1\" hostname=\"" + long_host +
                    "\" MacAddress=\"00:11:22:33:44:55:66:77\"/>";
  ASSERT_EQ(Network_getLANCfgByXml(&lan, xml.c_str()), 0);
  EXPECT_EQ(std::string(lan.hostname), std::string(63, 'h'));
  EXPECT_STREQ(lan.MacAddress, "00:11:22:33:44:55");
}

TEST(LanConfig, ReaderLogsWhatItRead) {
  LANConfig lan;
  std::string printed = CapturedStdout([&] {
    Network_getLANCfgByXml(&lan, "<LANConfig DHCP=\"1\" IPAddress=\"1.2.3.4\" MTU=\"0\"/>");
  });
  EXPECT_NE(printed.find("]DHCP 1 dhcpOffTime -1, ONVIF ALLNET 0, 1.2.3.4::, MAC , "
                         "DNS  , hostname , mtu 1400\n\n"),
            std::string::npos)
      << printed;
}

TEST(WifiConfig, DefaultsWithoutAttributes) {
  WIFIConfig wifi;
  memset(&wifi, 0x33, sizeof(wifi));
  std::string printed = CapturedStdout(
      [&] { ASSERT_EQ(Network_getWIFICfgByXml(&wifi, "<WIFIConfig/>"), 0); });
  EXPECT_NE(printed.find("]no version attribute\n\n"), std::string::npos);
  EXPECT_EQ(wifi.Enable, 1);
  EXPECT_EQ(wifi.DHCP, 0);
  EXPECT_STREQ(wifi.OperationMode, "managed");
  EXPECT_STREQ(wifi.ESSID, "");
  EXPECT_EQ(wifi.PingWatch.Enable, 0);
  EXPECT_EQ(wifi.Encrypt.Enable, 0);
}

TEST(WifiConfig, VersionIsAlwaysWrittenAsTwoPointZero) {
  WIFIConfig wifi;
  memset(&wifi, 0, sizeof(wifi));
  strcpy(wifi.Version, "9.9");
  std::string xml = TakeText(XMLGET_NetworkWIFIConfig(&wifi));
  EXPECT_TRUE(StartsWith(xml, "<WIFIConfig\r\nVersion=\"2.0\"\r\nEnable=\"0\"\r\n")) << xml;
  EXPECT_NE(xml.find("\r\n>\r\n<WirelessEncrypt\r\nEnable=\"0\"\r\nEncryptType=\"\"\r\n>\r\n"
                     "<WEPEncrypt\r\nAuthMode=\"\"\r\nKeyIndex=\"0\"\r\n"),
            std::string::npos) << xml;
  EXPECT_EQ(xml.substr(xml.size() - 15), "</WIFIConfig>\r\n");
}

TEST(WifiConfig, EssidFromGb2312OrHexadecimalUtf8) {
  std::string zhong, gb;
  for (int i = 0; i < 200; ++i) gb += "\xD6\xD0";
  for (int i = 0; i < 21; ++i) zhong += "\xE4\xB8\xAD";
  const struct {
    std::string attributes;
    std::string essid;
  } cases[] = {
      {"ESSID_UTF8=\"E4B8AD\"", "\xE4\xB8\xAD"},
      {"ESSID=\"\xD6\xD0-x\"", "\xE4\xB8\xAD-x"},
      {"ESSID_UTF8=\"6162\" ESSID=\"cd\"", "cd"},  // the later attribute wins
      {"ESSID=\"cd\" ESSID_UTF8=\"6162\"", "ab"},
      {"ESSID=\"a\xFF\xFE" "b\"", "ab"},  // invalid GB2312 pairs are dropped
      // Long names: at most 63 bytes, never half a character.
      {"ESSID=\"" + gb + "\"", zhong},
      {"ESSID=\"x" + gb + "\"", "x" + zhong.substr(3)},
      {"ESSID_UTF8=\"" + std::string(1000, 'a') + "\"", std::string(63, '\xAA')},
      // Reading stops at the first pair that is not hexadecimal; an odd
      // digit at the end is ignored.
      {"ESSID_UTF8=\"4142zz43\"", "AB"},
      {"ESSID_UTF8=\"41424\"", "AB"},
  };
  for (const auto& c : cases) {
    WIFIConfig wifi;
    ASSERT_EQ(Network_getWIFICfgByXml(&wifi, ("<WIFIConfig " + c.attributes + "/>").c_str()), 0);
    EXPECT_EQ(std::string(wifi.ESSID), c.essid) << c.attributes.substr(0, 40);
  }
  WIFIConfig wifi;
  memset(&wifi, 0, sizeof(wifi));
  strcpy(wifi.ESSID, "\xE4\xB8\xAD");
  std::string xml = TakeText(XMLGET_NetworkWIFIConfig(&wifi));
  EXPECT_NE(xml.find("\r\nESSID=\"\xD6\xD0\"\r\nESSID_UTF8=\"e4b8ad\"\r\n"), std::string::npos) << xml;
}

TEST(WifiApConfig, EssidIsKeptAsItIs) {
  WIFIApConfig ap;
  ASSERT_EQ(Network_getWIFIApCfgByXml(&ap, "<WIFIApConfig ESSID=\"\xD6\xD0\"/>"), 0);
  EXPECT_STREQ(ap.ESSID, "\xD6\xD0");
  std::string xml = TakeText(XMLGET_NetworkWIFIApConfig(&ap));
  EXPECT_TRUE(StartsWith(xml, "<WIFIApConfig\r\nVersion=\"2.0\"\r\nEnable=\"0\"\r\nIPAddress")) << xml;
  EXPECT_NE(xml.find("ESSID=\"\xD6\xD0\"\r\n"), std::string::npos);
}

TEST(PptpConfig, MtuLimits) {
  const struct {
    const char* mtu;
    int expected;
  } cases[] = {{"999", 1460}, {"1000", 1000}, {"1500", 1500}, {"1501", 1460},
               {"-1200", 1460}, {"", 1460}};
  PPTPConfig pptp;
  for (const auto& c : cases) {
    std::string xml = std::string("<PPTPConfig MTU=\"") + c.mtu + "\"/>";
    ASSERT_EQ(Network_getPPTPCfgByXml(&pptp, xml.c_str()), 0);
    EXPECT_EQ(pptp.MTU, c.expected) << c.mtu;
  }
  ASSERT_EQ(Network_getPPTPCfgByXml(&pptp, "<PPTPConfig/>"), 0);
  EXPECT_EQ(pptp.MTU, 1460);
}

TEST(OneLineElements, ExactTextAndUnescapedAlarmAccount) {
  AlarmServerConfig as;
  memset(&as, 0, sizeof(as));
  strcpy(as.url, "u&v");
  strcpy(as.Username, "a&b");
  strcpy(as.Password, "<p>");
  as.withattachment = 1;
  EXPECT_EQ(TakeText(XMLGET_NetworkAlarmServerConfig(&as)),
            "<AlarmServerConfig\r\nurl=\"u&amp;v\"\r\nwithattachment=\"1\"\r\n"
            "Username=\"a&b\"\r\nPassword=\"<p>\"\r\n />\r\n");
  UPNPConfig upnp = {1};
  EXPECT_EQ(TakeText(XMLGET_NetworkUPNPConfig(&upnp)), "<UPNPConfig\r\nEnable=\"1\"\r\n/>\r\n");
  P2PConfig p2p = {1, 2, "code"};
  SetDefaultP2pCfg(&p2p);
  EXPECT_EQ(TakeText(XMLGET_NetworkP2PConfig(&p2p)),
            "<P2PConfig\r\nEnable=\"0\"\r\nType=\"0\"\r\nAuthcode=\"code\"\r\n/>\r\n");
}

TEST(OneLineElements, UnterminatedTextMembersAreBounded) {
  ADSLConfig adsl;
  memset(&adsl, 'x', sizeof(adsl));
  adsl.Enable = 0;
  std::string xml = TakeText(XMLGET_NetworkADSLConfig(&adsl));
  EXPECT_NE(xml.find("Username=\"" + std::string(32, 'x') + "\"\r\n"), std::string::npos);
  ADSLConfig back;
  ASSERT_EQ(Network_getADSLCfgByXml(&back, xml.c_str()), 0);
  EXPECT_EQ(std::string(back.Password), std::string(31, 'x'));
}

TEST(NameTables, ExactNamesOnly) {
  EXPECT_EQ(WirelessMacModeNameToInt("MIXED"), 1);
  EXPECT_EQ(WirelessMacModeNameToInt("G"), 2);
  EXPECT_EQ(WirelessMacModeNameToInt("B"), 3);
  EXPECT_EQ(WirelessMacModeNameToInt("A"), 4);
  EXPECT_EQ(WirelessMacModeNameToInt("mixed"), -1);
  EXPECT_EQ(WirelessRegionNameToInt("USA"), 1);
  EXPECT_EQ(WirelessRegionNameToInt("TAIWAN"), 2);
  EXPECT_EQ(WirelessRegionNameToInt("FRANCE"), 3);
  EXPECT_EQ(WirelessRegionNameToInt("ISRAEL"), 5);
  EXPECT_EQ(WirelessRegionNameToInt("usa"), -1);
  EXPECT_EQ(WirelessRegionNameToInt(""), -1);
  EXPECT_EQ(WirelessRegionNameToInt(nullptr), -1);
  EXPECT_EQ(WepEncryptAuthModeNameToInt("open system"), 0);
  EXPECT_EQ(WepEncryptAuthModeNameToInt("shared key"), 1);
  EXPECT_EQ(WepEncryptAuthModeNameToInt("shared  key"), -1);
}

TEST(NetworkReaders, BadTextsAndMissingElements) {
  NetworkConfig cfg;
  std::string printed = CapturedStdout(
      [&] { EXPECT_EQ(GetNetworkCfgByXml(&cfg, "<NetworkConfig><LANConfig"), -1); });
  EXPECT_NE(printed.find("]xml error\r\n\n"), std::string::npos);
  EXPECT_EQ(GetNetworkCfgByXml(&cfg, "<Other/>"), -1);
  EXPECT_EQ(GetNetworkCfgByXml(&cfg, nullptr), -1);
  EXPECT_EQ(GetNetworkCfgByXml(nullptr, "<NetworkConfig/>"), -1);
  EXPECT_EQ(XMLGET_NetworkConfig(nullptr), nullptr);
  // The element may sit anywhere in a reply.
  EXPECT_EQ(Network_getUPNPCfgByXml(&cfg.UPNP,
                                    "<XML_VEXORA><MESSAGE_BODY><UPNPConfig Enable=\"1\"/>"
                                    "</MESSAGE_BODY></XML_VEXORA>"), 0);
  EXPECT_EQ(cfg.UPNP.Enable, 1);
}

TEST(NetworkReaders, UnknownAndManyChildren) {
  std::string xml = "<NetworkConfig>";
  for (int i = 0; i < 5000; ++i) xml += "<Unknown a=\"1\"/><UPNPConfig Enable=\"" + std::to_string(i) + "\"/>";
  xml += "</NetworkConfig>";
  auto cfg = std::make_unique<NetworkConfig>();
  ASSERT_EQ(GetNetworkCfgByXml(cfg.get(), xml.c_str()), 0);
  EXPECT_EQ(cfg->UPNP.Enable, 4999);
  EXPECT_EQ(cfg->LAN.MTU, 0u);  // absent children stay cleared
}

TEST(NetworkStatus, ThreeElementsOfAReply) {
  NetworkStatus status;
  const char* reply =
      "<RESPONSE_PARAM><WIRE_NETWORK MacAddress=\"m\" IPType=\"DHCP\" "
      "IPAddress=\"1.2.3.4\" Netmask=\"n\" Gateway=\"g\" Dns1=\"d1\" Dns2=\"d2\"/>"
      "<WIRELESS_NETWORK ESSID=\"e\" EncrptType=\"WPA\" LinkQuality=\"70\" "
      "SignalLevel=\"-40\" Noise=\"-90\" Frequency=\"2.4\"/>"
      "<CLOUD Enable=\"1\" Type=\"2\" LoginStatus=\"3\" ID=\"cloud-id\"/></RESPONSE_PARAM>";
  ASSERT_EQ(GetNetworkStatusByXml(&status, reply), 0);
  EXPECT_STREQ(status.Wire.IPType, "DHCP");
  EXPECT_STREQ(status.Wire.Dns2, "d2");
  EXPECT_STREQ(status.Wireless.EncrptType, "WPA");
  EXPECT_STREQ(status.Wireless.Frequency, "2.4");
  EXPECT_EQ(status.Wireless.SignalLevel, -40);
  EXPECT_EQ(status.Wireless.Noise, -90);
  EXPECT_EQ(status.Cloud.LoginStatus, 3);
  EXPECT_STREQ(status.Cloud.ID, "cloud-id");

  std::string printed = CapturedStdout(
      [&] { EXPECT_EQ(GetNetworkStatusByXml(&status, "<WIRE_NETWORK"), -1); });
  EXPECT_NE(printed.find("]xml error\n"), std::string::npos);
  EXPECT_EQ(GetNetworkStatusByXml(&status, "<Nothing/>"), -1);
}

TEST(NetworkStatus, ModemStatusText) {
  Network4GStatus s;
  memset(&s, 0, sizeof(s));
  strcpy(s.Manufacturer, "M&M");
  strcpy(s.Operator, "op");
  s.nSvrStatus = 1;
  s.nSignalLevel = -3;
  EXPECT_EQ(TakeText(XMLGET_4GNetworkStatus(&s)),
            "<Network4GStatus Manufacturer=\"M&amp;M\" Model=\"\" ICCID=\"\" IMEI=\"\" "
            "IMSI=\"\" MSISDN=\"\" WorkMode=\"\" Operator=\"op\" nSvrStatus=\"1\" "
            "nDialStatus=\"0\" nSimStatus=\"0\" nSignalLevel=\"-3\" />");
}

}  // namespace

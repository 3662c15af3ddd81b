// Readers of search replies: root type, identity, network, users, streams.
#include "link/discovery_readers.h"

#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

std::vector<char> Mutable(const std::string& s) {
  std::vector<char> v(s.begin(), s.end());
  v.push_back('\0');
  return v;
}

TEST(DiscoveryRootType, TellsTheTwoRootsApart) {
  std::vector<char> vexora = Mutable("<XML_VEXORA><XML_BRELLWICK></XML_BRELLWICK></XML_VEXORA>");
  EXPECT_EQ(TinyGetMessageRootType("", vexora.data()), 0);
  std::vector<char> brell = Mutable("<XML_BRELLWICK>x</XML_BRELLWICK>");
  EXPECT_EQ(TinyGetMessageRootType("", brell.data()), 1);
  std::vector<char> other = Mutable("<XML_VEXORA>");
  EXPECT_EQ(TinyGetMessageRootType("", other.data()), -1);
  EXPECT_EQ(TinyGetMessageRootType("", nullptr), -1);
}

TEST(DiscoveryRootType, ANamedRootNeedsOnlyItsClosingTag) {
  std::vector<char> closing = Mutable("garbage</SEARCH_REPLY>");
  EXPECT_EQ(TinyGetMessageRootType("SEARCH_REPLY", closing.data()), 2);
  std::vector<char> opening = Mutable("<SEARCH_REPLY>");
  EXPECT_EQ(TinyGetMessageRootType("SEARCH_REPLY", opening.data()), -1);
}

TEST(DeviceIdentity, ReadsSerialPlatformPeerIdAndRuntime) {
  char serial[32], platform[32], p2p[48];
  int runtime = 0;
  std::vector<char> m = Mutable(
      "<XML_VEXORA><IPC_SERIALNUMBER SerialNumber=\"SN123\" PLATFORMID=\"P1\" P2PID=\"" +
      std::string(60, 'p') + "\" runtime=\"3600\"/></XML_VEXORA>");
  EXPECT_EQ(TinyGetDeviceParam(serial, platform, p2p, &runtime, m.data()), 0);
  EXPECT_STREQ(serial, "SN123");
  EXPECT_STREQ(platform, "P1");
  EXPECT_EQ(strlen(p2p), 47u);
  EXPECT_EQ(runtime, 3600);
  std::vector<char> noserial = Mutable("<IPC_SERIALNUMBER PLATFORMID=\"P1\"/>");
  EXPECT_EQ(TinyGetDeviceParam(serial, platform, p2p, &runtime, noserial.data()), -3);
  std::vector<char> wrongroot = Mutable("<IPC_SERIALNUMBERS SerialNumber=\"1\"/>");
  EXPECT_EQ(TinyGetDeviceParam(serial, platform, p2p, &runtime, wrongroot.data()), -2);
  std::vector<char> notail = Mutable("<IPC_SERIALNUMBER SerialNumber=\"1\"");
  EXPECT_EQ(TinyGetDeviceParam(serial, platform, p2p, &runtime, notail.data()), -1);
}

TEST(DeviceType, DecodesTheOsdTextWithinItsBuffer) {
  char type[32];
  unsigned char osd[256];
  memset(osd, 0, sizeof(osd));
  std::vector<char> m = Mutable("<DEVICE_TYPE DeviceType=\"IPC\" OSD=\"4142aF\"/>");
  EXPECT_EQ(TinyGetDeviceParam2(type, osd, m.data()), 0);
  EXPECT_STREQ(type, "IPC");
  EXPECT_EQ(osd[0], 0x41);
  EXPECT_EQ(osd[1], 0x42);
  EXPECT_EQ(osd[2], 0xAF);
  EXPECT_EQ(osd[3], 0);

  std::vector<unsigned char> guarded(300, 0xEE);
  std::vector<char> longosd = Mutable("<DEVICE_TYPE DeviceType=\"IPC\" OSD=\"" +
                                      std::string(2000, '1') + "\"/>");
  EXPECT_EQ(TinyGetDeviceParam2(type, guarded.data(), longosd.data()), 0);
  EXPECT_EQ(guarded[kOsdBytes - 1], 0x11);
  EXPECT_EQ(guarded[kOsdBytes], 0xEE);
  std::vector<char> notype = Mutable("<DEVICE_TYPE OSD=\"41\"/>");
  EXPECT_EQ(TinyGetDeviceParam2(type, osd, notype.data()), -1);
}

TEST(LanSettings, ReadsTheWiredNetwork) {
  LANConfig lan;
  memset(&lan, 0x55, sizeof(lan));
  std::vector<char> m = Mutable(
      "<x><LANConfig MacAddress=\"00:11:22:33:44:55:66\" DHCP=\"1\" IPAddress=\"10.0.0.2\" "
      "Netmask=\"255.0.0.0\" Gateway=\"10.0.0.1\" DNS1=\"1.1.1.1\" DNS2=\"8.8.8.8\"/></x>");
  EXPECT_EQ(TinyNetwork_getLANCfgByXml(&lan, m.data()), 0);
  EXPECT_STREQ(lan.MacAddress, "00:11:22:33:44:55");  // 17 characters kept
  EXPECT_EQ(lan.DHCP, 1);
  EXPECT_STREQ(lan.IPAddress, "10.0.0.2");
  EXPECT_STREQ(lan.DNS2, "8.8.8.8");
  EXPECT_EQ(lan.MTU, 0u);  // cleared, not read here
  EXPECT_EQ(TinyNetwork_getLANCfgByXml(&lan, "<LANConfigX a=\"1\"/>"), -2);
  EXPECT_EQ(TinyNetwork_getLANCfgByXml(&lan, "nothing"), -1);
}

TEST(UserSettings, StatusRepeatsTheUserNameAndAccountsAreBounded) {
  UserConfig users;
  std::string accounts;
  for (int i = 0; i < QV_MAX_USER_ACCOUNTS + 5; ++i) {
    accounts += "<Account Username=\"administrator" + std::to_string(i) +
                "\" Password=\"pw\" Group=\"Admin\" Status=\"on\"/>";
  }
  std::vector<char> m = Mutable("<UserConfig>" + accounts + "</UserConfig>");
  EXPECT_EQ(TinySystem_getUserCfgByXml(&users, m.data()), 0);
  EXPECT_EQ(users.nAccount, QV_MAX_USER_ACCOUNTS);
  EXPECT_STREQ(users.Account[0].Username, "administrator0");
  EXPECT_STREQ(users.Account[0].Password, "pw");
  EXPECT_STREQ(users.Account[0].Group, "Admin");
  EXPECT_STREQ(users.Account[0].Status, "adminis");
  EXPECT_EQ(TinySystem_getUserCfgByXml(&users, "<Other/>"), -1);
  EXPECT_EQ(TinySystem_getUserCfgByXml(&users, "<UserConfig><a></UserConfig>"), -1);
}

TEST(StreamSettings, ReadsTheStreamAccessPorts) {
  MediaStreamConfig media;
  std::vector<char> m = Mutable(
      "<MediaStreamConfig><StreamAccess Auth=\"1\" VideoPort=\"554\" RTPOverRTSP=\"1\" "
      "PTZPort=\"5000\" WEBPort=\"80\"/></MediaStreamConfig>");
  EXPECT_EQ(TinyGetMediaStreamCfgByXml(&media, m.data()), 0);
  EXPECT_EQ(media.StreamAccess.Auth, 1);
  EXPECT_EQ(media.StreamAccess.VideoPort, 554);
  EXPECT_EQ(media.StreamAccess.RTPOverRTSP, 1);
  EXPECT_EQ(media.StreamAccess.PTZPort, 5000);
  EXPECT_EQ(media.StreamAccess.WEBPort, 80);
  EXPECT_EQ(TinyGetMediaStreamCfgByXml(&media, "<MediaStreamConfig>"), -1);
}

}  // namespace

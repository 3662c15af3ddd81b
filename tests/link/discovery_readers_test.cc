// Readers of search replies: root type, identity, network, users, streams.
#include "link/discovery_readers.h"

#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

// A text in a buffer the readers may write into.
struct Text {
  explicit Text(const std::string& s) : bytes(s.begin(), s.end()) { bytes.push_back('\0'); }
  operator char*() { return bytes.data(); }
  std::vector<char> bytes;
};

TEST(DiscoveryRootType, TellsTheTwoRootsApart) {
  EXPECT_EQ(TinyGetMessageRootType("", Text("<XML_VEXORA><XML_BRELLWICK></XML_BRELLWICK></XML_VEXORA>")), 0);
  EXPECT_EQ(TinyGetMessageRootType("", Text("<XML_BRELLWICK>x</XML_BRELLWICK>")), 1);
  EXPECT_EQ(TinyGetMessageRootType("", Text("<XML_VEXORA>")), -1);
  EXPECT_EQ(TinyGetMessageRootType("", nullptr), -1);
}

TEST(DiscoveryRootType, ANamedRootNeedsOnlyItsClosingTag) {
  EXPECT_EQ(TinyGetMessageRootType("SEARCH_REPLY", Text("garbage</SEARCH_REPLY>")), 2);
  EXPECT_EQ(TinyGetMessageRootType("SEARCH_REPLY", Text("<SEARCH_REPLY>")), -1);
}

TEST(DeviceIdentity, ReadsSerialPlatformPeerIdAndRuntime) {
  char serial[32], platform[32], p2p[48];
  int runtime = 0;
  Text m(
      "<XML_VEXORA><IPC_SERIALNUMBER SerialNumber=\"SN123\" PLATFORMID=\"P1\" P2PID=\"" +
      std::string(60, 'p') + "\" runtime=\"3600\"/></XML_VEXORA>");
  EXPECT_EQ(TinyGetDeviceParam(serial, platform, p2p, &runtime, m), 0);
  EXPECT_STREQ(serial, "SN123");
  EXPECT_STREQ(platform, "P1");
  EXPECT_EQ(strlen(p2p), 47u);
  EXPECT_EQ(runtime, 3600);
  EXPECT_EQ(TinyGetDeviceParam(serial, platform, p2p, &runtime, Text("<IPC_SERIALNUMBER PLATFORMID=\"P1\"/>")), -3);
  EXPECT_EQ(TinyGetDeviceParam(serial, platform, p2p, &runtime, Text("<IPC_SERIALNUMBERS SerialNumber=\"1\"/>")), -2);
  EXPECT_EQ(TinyGetDeviceParam(serial, platform, p2p, &runtime, Text("<IPC_SERIALNUMBER SerialNumber=\"1\"")), -1);
}

TEST(DeviceType, DecodesTheOsdTextWithinItsBuffer) {
  char type[32];
  unsigned char osd[256];
  memset(osd, 0, sizeof(osd));
  Text m("<DEVICE_TYPE DeviceType=\"IPC\" OSD=\"4142aF\"/>");
  EXPECT_EQ(TinyGetDeviceParam2(type, osd, m), 0);
  EXPECT_STREQ(type, "IPC");
  EXPECT_EQ(osd[0], 0x41);
  EXPECT_EQ(osd[1], 0x42);
  EXPECT_EQ(osd[2], 0xAF);
  EXPECT_EQ(osd[3], 0);

  std::vector<unsigned char> guarded(300, 0xEE);
  Text longosd("<DEVICE_TYPE DeviceType=\"IPC\" OSD=\"" +
                                      std::string(2000, '1') + "\"/>");
  EXPECT_EQ(TinyGetDeviceParam2(type, guarded.data(), longosd), 0);
  EXPECT_EQ(guarded[kOsdBytes - 1], 0x11);
  EXPECT_EQ(guarded[kOsdBytes], 0xEE);
  EXPECT_EQ(TinyGetDeviceParam2(type, osd, Text("<DEVICE_TYPE OSD=\"41\"/>")), -1);
}

TEST(LanSettings, ReadsTheWiredNetwork) {
  LANConfig lan;
  memset(&lan, 0x55, sizeof(lan));
  Text m(
      "<x><LANConfig MacAddress=\"00:11:22:33:44:55:66\" DHCP=\"1\" IPAddress=\"10.0.0.2\" "
      "Netmask=\"255.0.0.0\" Gateway=\"10.0.0.1\" DNS1=\"1.1.1.1\" DNS2=\"8.8.8.8\"/></x>");
  EXPECT_EQ(TinyNetwork_getLANCfgByXml(&lan, m), 0);
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
  Text m("<UserConfig>" + accounts + "</UserConfig>");
  EXPECT_EQ(TinySystem_getUserCfgByXml(&users, m), 0);
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
  Text m(
      "<MediaStreamConfig><StreamAccess Auth=\"1\" VideoPort=\"554\" RTPOverRTSP=\"1\" "
      "PTZPort=\"5000\" WEBPort=\"80\"/></MediaStreamConfig>");
  EXPECT_EQ(TinyGetMediaStreamCfgByXml(&media, m), 0);
  EXPECT_EQ(media.StreamAccess.Auth, 1);
  EXPECT_EQ(media.StreamAccess.VideoPort, 554);
  EXPECT_EQ(media.StreamAccess.RTPOverRTSP, 1);
  EXPECT_EQ(media.StreamAccess.PTZPort, 5000);
  EXPECT_EQ(media.StreamAccess.WEBPort, 80);
  EXPECT_EQ(TinyGetMediaStreamCfgByXml(&media, "<MediaStreamConfig>"), -1);
}

}  // namespace

// The texts the library broadcasts: the search request, and the changes
// addressed to one camera, byte for byte.
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "discovery/modify_xml.h"
#include "discovery/reply_texts.h"
#include "discovery/search_ipc.h"
#include "discovery/search_message.h"

namespace {

const char kSearchRequest[] =
    "<?xml version=\"1.0\"encoding=\"GB2312\"?>\n"
    "<XML_BRELLWICK>\n"
    "<MESSAGE_HEADER\n"
    "Msg_type=\"SYSTEM_SEARCHIPC_MESSAGE\"\n"
    "Msg_code=\"1\"\n"
    "Msg_flag=\"0\"\n"
    "/>\n"
    "<MESSAGE_BODY>\n"
    "</MESSAGE_BODY>\n"
    "</XML_BRELLWICK>";

const char kSerialElement[] = "<IPC_SERIALNUMBER\r\nSerialNumber=\"QV-7\"\r\n/>\r\n";

// Keeps what would have been broadcast.
class CapturingSearch : public CCSearchIPC {
 public:
  void SendBroardcastDirectly(const char* message, unsigned short port) override {
    sent.push_back(message);
    ports.push_back(port);
  }
  std::vector<std::string> sent;
  std::vector<unsigned short> ports;
};

std::string Message(int code, const std::string& body) {
  return "<?xml version=\"1.0\"encoding=\"GB2312\"?>\n<XML_BRELLWICK>\n<MESSAGE_HEADER\n"
         "Msg_type=\"SYSTEM_SEARCHIPC_MESSAGE\"\nMsg_code=\"" +
         std::to_string(code) + "\"\nMsg_flag=\"0\"\n/>\n<MESSAGE_BODY>\n" + body +
         "\n</MESSAGE_BODY>\n</XML_BRELLWICK>";
}

LANConfig Lan(const char* ip, const char* mask, const char* gateway) {
  LANConfig lan;
  memset(&lan, 0, sizeof(lan));
  strcpy(lan.MacAddress, "02:51:56:00:00:07");
  lan.DHCP = 0;
  strcpy(lan.IPAddress, ip);
  strcpy(lan.Netmask, mask);
  strcpy(lan.Gateway, gateway);
  strcpy(lan.DNS1, "10.0.0.53");
  strcpy(lan.DNS2, "");
  return lan;
}

std::string LanElement(const char* ip, const char* mask, const char* gateway) {
  return std::string("<LANConfig\r\nMacAddress=\"02:51:56:00:00:07\"\r\nDHCP=\"0\"\r\nIPAddress=\"") +
         ip + "\"\r\nNetmask=\"" + mask + "\"\r\nGateway=\"" + gateway +
         "\"\r\nDNS1=\"10.0.0.53\"\r\nDNS2=\"\"\r\n/>\r\n";
}

MediaStreamConfig Ports() {
  MediaStreamConfig s;
  memset(&s, 0, sizeof(s));
  s.StreamAccess.Auth = 1;
  s.StreamAccess.VideoPort = 8554;
  s.StreamAccess.RTPOverRTSP = 1;
  s.StreamAccess.PTZPort = 6000;
  s.StreamAccess.WEBPort = 8080;
  return s;
}

const char kPortsElement[] =
    "<MediaStreamConfig>\r\n<StreamAccess\r\nAuth=\"1\"\r\nVideoPort=\"8554\"\r\n"
    "RTPOverRTSP=\"1\"\r\nPTZPort=\"6000\"\r\nWEBPort=\"8080\"\r\n/>\r\n</MediaStreamConfig>\r\n";

TEST(SearchRequest, IsTheFixedTextByteForByte) {
  char buffer[2048];
  int n = FormatSearchMessage(buffer, sizeof(buffer), kSearchCode, nullptr);
  EXPECT_EQ(std::string(buffer), kSearchRequest);
  EXPECT_EQ(n, static_cast<int>(strlen(kSearchRequest)));
  FormatSearchMessage(buffer, sizeof(buffer), kRebootCode, "<X/>");
  EXPECT_EQ(std::string(buffer), Message(7, "<X/>"));
}

TEST(SearchRequest, IsCutToItsBuffer) {
  char buffer[32];
  memset(buffer, 'x', sizeof(buffer));
  EXPECT_EQ(FormatSearchMessage(buffer, 20, kSearchCode, nullptr), 19);
  EXPECT_EQ(std::string(buffer), std::string(kSearchRequest).substr(0, 19));
  EXPECT_EQ(buffer[20], 'x');
}

TEST(SearchRequest, WithoutASearchGoesOutAtOnceWithItsPort) {
  CapturingSearch search;
  EXPECT_EQ(search.SendMsgToIPC(nullptr, 0, kSearchCode, nullptr, 4321), 0);
  ASSERT_EQ(search.sent.size(), 1u);
  EXPECT_EQ(search.sent[0], kSearchRequest);
  EXPECT_EQ(search.ports[0], 4321);
}

TEST(ChangeElements, AreWrittenLineByLine) {
  char buffer[kModifyBodyBytes];
  EXPECT_EQ(MakeSerialNumberXml(buffer, sizeof(buffer), "QV-7"),
            static_cast<int>(strlen(kSerialElement)));
  EXPECT_STREQ(buffer, kSerialElement);
  LANConfig lan = Lan("10.1.2.3", "255.255.0.0", "10.1.0.254");
  MakeNetworkLANCfgXml(buffer, sizeof(buffer), &lan);
  EXPECT_EQ(std::string(buffer), LanElement("10.1.2.3", "255.255.0.0", "10.1.0.254"));
  MediaStreamConfig ports = Ports();
  MakeModifyMediaStreamCfgXml(buffer, sizeof(buffer), &ports);
  EXPECT_STREQ(buffer, kPortsElement);
  EXPECT_EQ(MakeNetworkLANCfgXml(buffer, sizeof(buffer), nullptr), -1);
  EXPECT_EQ(MakeSerialNumberXml(buffer, sizeof(buffer), nullptr), -1);
}

TEST(ChangeElements, DisplayElementsCarryEverySetting) {
  MediaStreamConfig s = Ports();
  StreamAccessConfig& a = s.StreamAccess;
  a.enable_rtsp = 1;
  a.enable_hik = 1;
  a.hik_port = 8000;
  strcpy(a.rtmp_server, "rtmp.example");
  a.Multicast1_port = 9000;
  a.Multicast1_IP = 4026531841u;
  char buffer[kModifyBodyBytes];
  MakeMediaStreamCfgXml(buffer, sizeof(buffer), &s);
  EXPECT_STREQ(buffer,
               "<MediaStreamConfig>\r\n"
               "<StreamAccess Auth=\"1\" VideoPort=\"8554\" RTPOverRTSP=\"1\" enable_rtsp=\"1\" \r\n"
               "enable_onvif=\"0\" enable_web=\"0\" OnvifAuth=\"0\" WEBPort=\"8080\" \r\n"
               "enable_comm=\"0\" PTZPort=\"6000\" \r\n"
               "enable_hik=\"1\" hik_port=\"8000\" hik_auth=\"0\" \r\n"
               "enable_rtmp=\"0\" rtmp_port=\"0\" streamno=\"0\" rtmp_type=\"0\" "
               "rtmp_server=\"rtmp.example\" rtmp_appname=\"\" rtmp_streamid=\"\" \r\n"
               "Multicast0_enable=\"0\" Multicast0_port=\"0\" Multicast0_IP=\"0\" "
               "Multicast1_enable=\"0\" Multicast1_port=\"9000\" Multicast1_IP=\"4026531841\" \r\n"
               "/>\r\n</MediaStreamConfig>\r\n");

  UserConfig users;
  memset(&users, 0, sizeof(users));
  users.nAccount = 1;
  strcpy(users.Account[0].Username, "admin");
  strcpy(users.Account[0].Password, "secret");
  strcpy(users.Account[0].Group, "Administrators");
  strcpy(users.Account[0].Status, "admin");
  MakeUserCfgXml(buffer, sizeof(buffer), &users);
  EXPECT_STREQ(buffer,
               "<UserConfig>\r\n<Account\r\nUsername=\"admin\"\r\nPassword=\"secret\"\r\n"
               "Group=\"Administrators\"\r\nStatus=\"admin\"\r\n/>\r\n</UserConfig>\r\n");
}

TEST(ChangeElements, LongBodiesAreCutNotRefused) {
  MediaStreamConfig s;
  memset(&s, 'i', sizeof(s));  // unterminated texts, numbers at their widest
  std::vector<char> whole(8192);
  int full = MakeMediaStreamCfgXml(whole.data(), static_cast<int>(whole.size()), &s);
  ASSERT_GT(full, 1023);
  EXPECT_NE(std::string(whole.data()).find("rtmp_streamid=\"" + std::string(256, 'i') + "\""),
            std::string::npos);
  char buffer[kModifyBodyBytes];
  EXPECT_EQ(MakeMediaStreamCfgXml(buffer, sizeof(buffer), &s), 1023);
  EXPECT_EQ(std::string(buffer), std::string(whole.data(), 1023));

  UserConfig users;
  memset(&users, 'u', sizeof(users));  // unterminated texts, a wild count
  users.nAccount = 1000;
  ASSERT_GT(MakeUserCfgXml(whole.data(), static_cast<int>(whole.size()), &users), 1023);
  std::string all(whole.data());
  int accounts = 0;
  for (size_t at = all.find("<Account"); at != std::string::npos; at = all.find("<Account", at + 1)) {
    ++accounts;
  }
  EXPECT_EQ(accounts, QV_MAX_USER_ACCOUNTS);
  EXPECT_NE(all.find("Username=\"" + std::string(40, 'u') + "\"\r\n"), std::string::npos);
  EXPECT_EQ(MakeUserCfgXml(buffer, sizeof(buffer), &users), 1023);
}

TEST(ChangeElements, AnUnusableGatewayBecomesTheSubnetsFirstHost) {
  const struct {
    const char *ip, *mask, *gateway, *sent;
  } cases[] = {
      {"10.1.2.3", "255.255.0.0", "0.0.0.0", "10.1.0.1"},
      {"192.168.5.77", "255.255.255.0", "255.255.255.255", "192.168.5.1"},
      {"192.168.5.77", "255.255.255.0", "gateway", "192.168.5.1"},
      {"192.168.5.77", "255.255.255.0", "", "192.168.5.1"},
      {"", "", "0.0.0.0", "192.168.1.1"},
      {"10.1.2.3", "255.255.0.0", "10.1.9.9", "10.1.9.9"},
  };
  for (const auto& c : cases) {
    LANConfig lan = Lan(c.ip, c.mask, c.gateway);
    char buffer[kModifyBodyBytes];
    MakeNetworkLANCfgXml(buffer, sizeof(buffer), &lan);
    EXPECT_EQ(std::string(buffer), LanElement(c.ip, c.mask, c.sent))
        << c.ip << " " << c.mask << " " << c.gateway;
  }
}

TEST(ModifyBySerial, SendsTheNetworkThenThePorts) {
  CapturingSearch search;
  LANConfig lan = Lan("10.1.2.3", "255.255.0.0", "0.0.0.0");
  MediaStreamConfig ports = Ports();
  EXPECT_EQ(search.ModifyIPCbySN("QV-7", &lan, &ports, 0), 0);
  ASSERT_EQ(search.sent.size(), 2u);
  EXPECT_EQ(search.sent[0],
            Message(2, kSerialElement + LanElement("10.1.2.3", "255.255.0.0", "10.1.0.1")));
  EXPECT_EQ(search.sent[1], Message(2, std::string(kSerialElement) + kPortsElement));
  EXPECT_EQ(search.ModifyIPCbySN("QV-7", nullptr, &ports, 0), 0);
  EXPECT_EQ(search.sent.size(), 3u);
}

TEST(ModifyBySerial, RefusesMissingArgumentsWithoutSending) {
  CapturingSearch search;
  LANConfig lan = Lan("10.1.2.3", "255.255.0.0", "10.1.0.1");
  EXPECT_EQ(search.ModifyIPCbySN("QV-7", nullptr, nullptr, 0), QV_E_INVALID_ARG);
  EXPECT_EQ(search.ModifyIPCbySN(nullptr, &lan, nullptr, 0), QV_E_INVALID_ARG);
  EXPECT_EQ(search.RebootbySN(nullptr), QV_E_NO_MEMORY);
  EXPECT_TRUE(search.sent.empty());
}

TEST(ModifyBySerial, RebootAndRestoreCarryOnlyTheSerial) {
  CapturingSearch search;
  EXPECT_EQ(search.RebootbySN("QV-7"), 0);
  EXPECT_EQ(search.RestorebySN("QV-7"), 0);
  ASSERT_EQ(search.sent.size(), 2u);
  EXPECT_EQ(search.sent[0], Message(7, kSerialElement));
  EXPECT_EQ(search.sent[1], Message(5, kSerialElement));
}

class TableChange : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char* serial : {"QV-6", "QV-7"}) {
      qvtest::Writable w(qvtest::ReplyFrom(serial, "10.1.2.3"));
      ASSERT_EQ(search_.ResponseMessageHandle(w.data(), w.length(), "eth0"), 0);
    }
  }
  IPC_ENTRY Entry(long index) {
    IPC_ENTRY e;
    EXPECT_EQ(search_.GetIPCInfo(index, &e), 0);
    return e;
  }
  CapturingSearch search_;
};

TEST_F(TableChange, ByIndexTheTableTakesTheEntryAndTheCameraItsNetwork) {
  IPC_ENTRY e = Entry(1);
  LANConfig lan = Lan("10.1.2.4", "255.255.0.0", "10.1.0.1");
  e.lan = lan;
  EXPECT_EQ(search_.ModifyIPCbyIndex(1, &e), 0);
  EXPECT_STREQ(Entry(1).lan.IPAddress, "10.1.2.4");
  ASSERT_EQ(search_.sent.size(), 1u);
  EXPECT_EQ(search_.sent[0],
            Message(2, kSerialElement + LanElement("10.1.2.4", "255.255.0.0", "10.1.0.1")));
  EXPECT_EQ(search_.ModifyIPCbyIndex(2, &e), QV_E_INVALID_ARG);
  EXPECT_EQ(search_.ModifyIPCbyIndex(-1, &e), QV_E_INVALID_ARG);
  EXPECT_EQ(search_.ModifyIPCbyIndex(0, nullptr), QV_E_INVALID_ARG);
  EXPECT_EQ(search_.sent.size(), 1u);
}

TEST_F(TableChange, ByXmlTheEntryTakesTheNewNetwork) {
  EXPECT_EQ(search_.ModifyIPCXML(1, nullptr), 0);
  EXPECT_EQ(search_.ModifyIPCXML(5, "<LANConfig IPAddress=\"10.1.2.4\"/>"), QV_E_INVALID_ARG);
  EXPECT_EQ(search_.ModifyIPCXML(1, "<LANConfig IPAddress=\"10.1.2.4\""), QV_E_BAD_REPLY);
  EXPECT_EQ(search_.ModifyIPCXML(1, "<Lan IPAddress=\"10.1.2.4\"/>"), QV_E_BAD_REPLY);
  EXPECT_TRUE(search_.sent.empty());
  EXPECT_EQ(search_.ModifyIPCXML(1,
                                 "<LANConfig MacAddress=\"02:51:56:00:00:07\" DHCP=\"0\" "
                                 "IPAddress=\"10.1.2.4\" Netmask=\"255.255.0.0\" "
                                 "Gateway=\"10.1.0.1\" DNS1=\"10.0.0.53\" DNS2=\"\"/>"),
            0);
  EXPECT_STREQ(Entry(1).lan.IPAddress, "10.1.2.4");
  EXPECT_STREQ(Entry(0).lan.IPAddress, "10.1.2.3");
  ASSERT_EQ(search_.sent.size(), 1u);
  EXPECT_EQ(search_.sent[0],
            Message(2, kSerialElement + LanElement("10.1.2.4", "255.255.0.0", "10.1.0.1")));
}

TEST_F(TableChange, TheEntryAsXmlAnswersItsSize) {
  int needed = search_.GetIPCInfoXML(1, nullptr, 0);
  ASSERT_GT(needed, 1);
  std::vector<char> buffer(static_cast<size_t>(needed), 'x');
  EXPECT_EQ(search_.GetIPCInfoXML(1, buffer.data(), needed - 1), QV_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(search_.GetIPCInfoXML(1, buffer.data(), needed), needed - 1);
  std::string text(buffer.data());
  EXPECT_EQ(static_cast<int>(text.size()), needed - 1);
  EXPECT_EQ(text.rfind(std::string("<IPC_INFO>\n") + kSerialElement + "<LANConfig\r\n", 0), 0u);
  EXPECT_NE(text.find("/>\r\n\n<MediaStreamConfig>\r\n<StreamAccess Auth=\"1\" VideoPort=\"554\""),
            std::string::npos);
  EXPECT_NE(text.find("</MediaStreamConfig>\r\n\n<UserConfig>\r\n<Account\r\nUsername=\"admin\""),
            std::string::npos);
  EXPECT_EQ(text.substr(text.size() - 26), "</UserConfig>\r\n</IPC_INFO>");
  EXPECT_EQ(search_.GetIPCInfoXML(2, nullptr, 0), QV_E_INVALID_ARG);
  EXPECT_EQ(search_.GetIPCInfoXML(-1, buffer.data(), needed), QV_E_INVALID_ARG);
}

}  // namespace

// Searching a LAN of emulated cameras behind two interfaces, and changing
// them by serial number.
#include <arpa/inet.h>

#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "discovery/lan_fixture.h"
#include "discovery/search_message.h"

namespace {

using qvtest::LanFixture;

class SearchLan : public LanFixture {
 protected:
  void SetUp() override {
    LanFixture::SetUp();
    if (IsSkipped() || HasFatalFailure()) return;
    const qvnet::NetNamespace& a = Segment(1, 3);
    const qvnet::NetNamespace& b = Segment(2, 2);
    farm_a_ = &Farm(a, 1, 3, "A-0001");
    farm_b_ = &Farm(b, 2, 2, "B-0001");
  }

  static LANConfig NewLan(const char* ip) {
    LANConfig lan;
    memset(&lan, 0, sizeof(lan));
    strcpy(lan.MacAddress, "02:51:56:00:00:02");
    strcpy(lan.IPAddress, ip);
    strcpy(lan.Netmask, "255.255.255.0");
    strcpy(lan.Gateway, "0.0.0.0");
    strcpy(lan.DNS1, "10.90.1.1");
    return lan;
  }

  qvemu::CameraFarm* farm_a_ = nullptr;
  qvemu::CameraFarm* farm_b_ = nullptr;
};

TEST_F(SearchLan, FindsEveryCameraThroughItsOwnInterface) {
  ASSERT_EQ(IP_NET_DVR_StartSearchIPC(), 0);
  ASSERT_TRUE(WaitForCount(5));
  auto table = Table();
  for (int i = 0; i < 3; ++i) {
    const IPC_ENTRY& e = table[farm_a_->Identity(i).serial];
    EXPECT_STREQ(e.interface_name, "qvh1") << i;
    EXPECT_EQ(std::string(e.lan.IPAddress), SegmentAddress(1, 10 + i));
    EXPECT_EQ(e.stream.StreamAccess.PTZPort, farm_a_->At(i).Port());
    EXPECT_STREQ(e.device_type, "IPC");
    EXPECT_STREQ(reinterpret_cast<const char*>(e.osd), "EMULATED CAMERA");
  }
  for (int i = 0; i < 2; ++i) {
    const IPC_ENTRY& e = table[farm_b_->Identity(i).serial];
    EXPECT_STREQ(e.interface_name, "qvh2") << i;
    EXPECT_EQ(std::string(e.lan.IPAddress), SegmentAddress(2, 10 + i));
  }
  EXPECT_TRUE(table.count("A-0003") && table.count("B-0002"));

  // What the cameras heard is the request, byte for byte.
  auto heard = farm_a_->Responder().Received();
  ASSERT_FALSE(heard.empty());
  char request[2048];
  FormatSearchMessage(request, sizeof(request), kSearchCode, nullptr);
  EXPECT_EQ(heard[0].payload, request);
  EXPECT_EQ(heard[0].interface_name, "qvc1");
  EXPECT_EQ(heard[0].from.rfind(SegmentAddress(1, 1) + ":", 0), 0u) << heard[0].from;

  // What a camera announces is where a host logs in to it.
  const IPC_ENTRY& b2 = table["B-0002"];
  long id = IP_NET_DVR_Login(b2.lan.IPAddress, b2.stream.StreamAccess.PTZPort,
                             const_cast<char*>("admin"), const_cast<char*>("admin"), nullptr);
  ASSERT_GT(id, 0);
  EXPECT_TRUE(testsupport::WaitFor([&] { return farm_b_->At(1).Logins() == 1; }, qvtest::kLanWaitMs));
}

TEST_F(SearchLan, TheTableKeepsItsEntriesAfterAStopAndEmptiesOnTheNextStart) {
  ASSERT_EQ(IP_NET_DVR_StartSearchIPC(), 0);
  ASSERT_TRUE(WaitForCount(5));
  ASSERT_EQ(IP_NET_DVR_StopSearchIPC(), 0);
  EXPECT_EQ(IP_NET_DVR_GetSearchIPCCount(), 5);
  farm_b_->Stop();
  ASSERT_EQ(IP_NET_DVR_StartSearchIPC(), 0);
  EXPECT_LT(IP_NET_DVR_GetSearchIPCCount(), 5);
  EXPECT_TRUE(WaitForCount(3));
}

TEST_F(SearchLan, AModificationReaddressesOnlyItsCamera) {
  ASSERT_EQ(IP_NET_DVR_StartSearchIPC(), 0);
  ASSERT_TRUE(WaitForCount(5));
  LANConfig lan = NewLan("10.90.1.50");
  ASSERT_EQ(IP_NET_DVR_ModifyIPCBySN("A-0002", &lan, nullptr), 0);
  EXPECT_TRUE(WaitForAddress("A-0002", "10.90.1.50"));
  EXPECT_EQ(farm_a_->Responder().Modifications("A-0002"), 1);
  EXPECT_EQ(farm_a_->Responder().Modifications("A-0001"), 0);
  EXPECT_EQ(farm_b_->Responder().Modifications("A-0002"), 0);
  auto table = Table();
  EXPECT_STREQ(table["A-0001"].lan.IPAddress, "10.90.1.10");
  EXPECT_STREQ(table["A-0002"].lan.Gateway, "10.90.1.1");  // repaired from 0.0.0.0

  // The message went out on both interfaces; each camera saw it once.
  auto heard = farm_b_->Responder().Received();
  int modifications = 0;
  for (const auto& d : heard) modifications += d.code == "2" ? 1 : 0;
  EXPECT_EQ(modifications, 1);

  // Stream ports, while searching too.
  MediaStreamConfig ports;
  memset(&ports, 0, sizeof(ports));
  ports.StreamAccess.Auth = 1;
  ports.StreamAccess.VideoPort = 8554;
  ports.StreamAccess.PTZPort = 6000;
  ports.StreamAccess.WEBPort = 8080;
  ASSERT_EQ(IP_NET_DVR_ModifyIPCBySN("B-0001", nullptr, &ports), 0);
  EXPECT_TRUE(testsupport::WaitFor(
      [] { return Table()["B-0001"].stream.StreamAccess.PTZPort == 6000; }, qvtest::kLanWaitMs));
  EXPECT_EQ(Table()["B-0001"].stream.StreamAccess.VideoPort, 8554);
}

TEST_F(SearchLan, WithoutASearchChangesAreBroadcastAtOnce) {
  ASSERT_EQ(IP_NET_DVR_StartSearchIPC(), 0);
  ASSERT_TRUE(WaitForCount(5));
  ASSERT_EQ(IP_NET_DVR_StopSearchIPC(), 0);
  IPC_ENTRY e;
  long index = 0;
  for (; index < 5; ++index) {
    ASSERT_EQ(IP_NET_DVR_GetIPCInfo(index, &e), 0);
    if (std::string(e.serial) == "B-0002") break;
  }
  ASSERT_LT(index, 5);
  ASSERT_EQ(IP_NET_DVR_ModifyIPCXML(index,
                                    "<LANConfig MacAddress=\"02:51:56:00:00:02\" DHCP=\"0\" "
                                    "IPAddress=\"10.90.2.77\" Netmask=\"255.255.255.0\" "
                                    "Gateway=\"10.90.2.1\" DNS1=\"\" DNS2=\"\"/>"),
            0);
  ASSERT_TRUE(testsupport::WaitFor(
      [&] { return farm_b_->Responder().Modifications("B-0002") == 1; }, qvtest::kLanWaitMs));
  ASSERT_EQ(IP_NET_DVR_RebootIPCBySN("A-0003"), 0);
  ASSERT_TRUE(testsupport::WaitFor(
      [&] { return farm_a_->Responder().Reboots("A-0003") == 1; }, qvtest::kLanWaitMs));
  ASSERT_EQ(IP_NET_DVR_StartSearchIPC(), 0);
  EXPECT_TRUE(WaitForAddress("B-0002", "10.90.2.77"));
}

TEST_F(SearchLan, RebootAndRestoreReachOnlyTheAddressedCamera) {
  ASSERT_EQ(IP_NET_DVR_StartSearchIPC(), 0);
  ASSERT_TRUE(WaitForCount(5));
  // A logged-in session sees its camera go away and come back.
  long id = IP_NET_DVR_Login(qvtest::LanFixture::SegmentAddress(1, 10).c_str(),
                             farm_a_->At(0).Port(), const_cast<char*>("admin"),
                             const_cast<char*>("admin"), nullptr);
  ASSERT_GT(id, 0);
  ASSERT_TRUE(testsupport::WaitFor([&] { return farm_a_->At(0).Logins() == 1; },
                                   qvtest::kLanWaitMs));
  ASSERT_EQ(IP_NET_DVR_RebootIPCBySN("A-0001"), 0);
  EXPECT_TRUE(testsupport::WaitFor([&] { return farm_a_->At(0).Logins() == 2; },
                                   qvtest::kLanWaitMs));
  EXPECT_EQ(farm_a_->Responder().Reboots("A-0001"), 1);

  LANConfig lan = NewLan("10.90.1.60");
  ASSERT_EQ(IP_NET_DVR_ModifyIPCBySN("A-0002", &lan, nullptr), 0);
  ASSERT_TRUE(WaitForAddress("A-0002", "10.90.1.60"));
  ASSERT_EQ(IP_NET_DVR_RestoreIPCBySN("A-0002"), 0);
  EXPECT_TRUE(WaitForAddress("A-0002", "10.90.1.11"));
  EXPECT_EQ(farm_a_->Responder().Restores("A-0002"), 1);

  for (const char* serial : {"A-0001", "A-0002", "A-0003", "B-0001", "B-0002"}) {
    int reboots = farm_a_->Responder().Reboots(serial) + farm_b_->Responder().Reboots(serial);
    int restores = farm_a_->Responder().Restores(serial) + farm_b_->Responder().Restores(serial);
    EXPECT_EQ(reboots, std::string(serial) == "A-0001" ? 1 : 0) << serial;
    EXPECT_EQ(restores, std::string(serial) == "A-0002" ? 1 : 0) << serial;
  }
}

TEST_F(SearchLan, ANamedRootIsTheOnlyOneAccepted) {
  const qvnet::NetNamespace& c = Segment(3, 1);
  qvemu::DiscoveryOptions vendor;
  vendor.reply_root = "VENDOR_ROOT";
  qvemu::CameraFarm& v = Farm(c, 3, 1, "V-0001", vendor);
  ASSERT_EQ(IP_NET_DVR_StartSearchIPC(), 0);
  ASSERT_TRUE(WaitForCount(5));
  // Its answers were seen and dropped while the usual roots were found.
  ASSERT_TRUE(testsupport::WaitFor([&] { return v.Responder().Answers("V-0001") >= 3; },
                                   qvtest::kLanWaitMs));
  EXPECT_EQ(Table().count("V-0001"), 0u);

  ASSERT_EQ(IP_NET_DVR_Set_Search_ROOTNAME(" VENDOR_ROOT "), 0);
  ASSERT_EQ(IP_NET_DVR_StartSearchIPC(), 0);
  ASSERT_TRUE(WaitForCount(1));
  EXPECT_EQ(Table().count("V-0001"), 1u);
  int answered = farm_a_->Responder().Answers("A-0001");
  ASSERT_TRUE(testsupport::WaitFor(
      [&] { return farm_a_->Responder().Answers("A-0001") >= answered + 3; }, qvtest::kLanWaitMs));
  EXPECT_EQ(IP_NET_DVR_GetSearchIPCCount(), 1);
}

}  // namespace

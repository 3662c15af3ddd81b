// Address probing and this host's adapters, inside namespaces of the test's
// own.
#include <arpa/inet.h>

#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "api/ptz_object_list.h"
#include "discovery/adapter_info.h"
#include "discovery/lan_fixture.h"
#include "discovery/reply_texts.h"

namespace {

using qvtest::LanFixture;

// The host on segment 5 with a peer namespace that holds .2, .252, .253
// and .254.
class ProbeLan : public LanFixture {
 protected:
  void SetUp() override {
    LanFixture::SetUp();
    if (IsSkipped() || HasFatalFailure()) return;
    peer_ = &Segment(5, 0);
    ASSERT_TRUE(peer_->AddAddresses("qvc5", {"10.90.5.252/24", "10.90.5.253/24", "10.90.5.254/24"}));
  }
  const qvnet::NetNamespace* peer_ = nullptr;
  CCSearchIPC& Search() { return ObjectPtzList.Search(); }
};

TEST_F(ProbeLan, AnAddressInUseAnswersAFreeOneDoesNot) {
  EXPECT_EQ(Search().PintTest(inet_addr("10.90.5.2")), 0);
  EXPECT_EQ(Search().PintTest(inet_addr("10.90.5.254")), 0);
  EXPECT_EQ(Search().PintTest(inet_addr("10.90.5.99")), 1);
  // No route at all: the probe itself fails.
  EXPECT_EQ(Search().PintTest(inet_addr("10.200.0.1")), -1);
}

TEST_F(ProbeLan, TheExportedScanEndsWithAnEmptyText) {
  char buffer[64];
  memset(buffer, 'x', sizeof(buffer));
  EXPECT_EQ(IP_NET_DVR_GetOneIPAddress(buffer, sizeof(buffer)), 0);
  EXPECT_STREQ(buffer, "");
}

TEST_F(ProbeLan, TheSubnetScanSkipsAnsweredKnownAndGivenOutAddresses) {
  char buffer[64];
  EXPECT_EQ(Search().GetFreeIPAddress("qvh5", buffer, sizeof(buffer)), 11);
  EXPECT_STREQ(buffer, "10.90.5.251");
  // A found camera's address is not offered, nor one given out by XML.
  qvtest::Writable reply(qvtest::ReplyFrom("P-1", "10.90.5.251"));
  ASSERT_EQ(Search().ResponseMessageHandle(reply.data(), reply.length(), "qvh5"), 0);
  EXPECT_EQ(Search().GetFreeIPAddress("qvh5", buffer, sizeof(buffer)), 11);
  EXPECT_STREQ(buffer, "10.90.5.250");
  // Given out by XML: kept out even after the table is emptied.
  ASSERT_TRUE(peer_->AddAddresses("qvc5", {"10.90.5.251/24"}));
  ASSERT_TRUE(host_->Ip("neigh flush dev qvh5"));  // forget that .251 did not answer
  ASSERT_EQ(Search().ModifyIPCXML(0, "<LANConfig IPAddress=\"10.90.5.250\" Netmask=\"255.255.255.0\"/>"),
            0);
  ASSERT_EQ(Search().ReleaseIPCInfo(), 0);
  EXPECT_EQ(Search().GetFreeIPAddress("qvh5", buffer, sizeof(buffer)), 11);
  EXPECT_STREQ(buffer, "10.90.5.249");
  EXPECT_EQ(Search().GetFreeIPAddress(nullptr, nullptr, 0), 33);
  EXPECT_EQ(Search().GetFreeIPAddress(nullptr, buffer, 32), QV_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(Search().GetFreeIPAddress("qvnone", buffer, sizeof(buffer)), -1);
}

TEST_F(ProbeLan, TheHostsSettingsComeFromItsInterfaceAndFiles) {
  testsupport::ScratchDir dir;
  testsupport::WriteFile(dir / "route",
                         "Iface\tDestination\tGateway\n"
                         "qvh5\t00000000\t015A0A0A\t0003\t0\t0\t0\t00000000\n");
  testsupport::WriteFile(dir / "resolv", "nameserver 10.90.5.53\n");
  SetRouteTablePath((dir / "route").c_str());
  SetResolverPath((dir / "resolv").c_str());
  const struct {
    int index;
    const char* text;
  } fields[] = {{0, ""}, {1, "255.255.255.0"}, {2, "10.10.90.1"}, {3, "10.90.5.53"}, {4, ""},
                {5, "10.90.5.1"}};
  for (const auto& f : fields) {
    char buffer[64];
    EXPECT_EQ(IP_NET_DVR_GetNetworkParam(f.index, buffer, sizeof(buffer)),
              static_cast<long>(strlen(f.text)))
        << f.index;
    EXPECT_STREQ(buffer, f.text) << f.index;
  }
  char exact[10];  // "10.90.5.1" and its terminator
  EXPECT_EQ(IP_NET_DVR_GetNetworkParam(5, exact, 9), QV_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(IP_NET_DVR_GetNetworkParam(5, exact, sizeof(exact)), 9);
  SetRouteTablePath(nullptr);
  SetResolverPath(nullptr);
}

// Interfaces named like a host's, made of veth pairs whose other ends have
// skipped names.
class Adapters : public ::testing::Test {
 protected:
  void SetUp() override { QV_REQUIRE_NAMESPACES(); }
};

TEST_F(Adapters, TheLastUsableInterfaceIsTheDefaultOne) {
  qvnet::NetNamespace ns("adapters");
  ASSERT_TRUE(ns.ok());
  ASSERT_TRUE(ns.Ip("link add eth0 type veth peer name vmnet0"));
  ASSERT_TRUE(ns.Ip("link add wlan0 type veth peer name vmnet1"));
  ASSERT_TRUE(ns.Ip("addr add 10.91.0.5/16 dev eth0"));
  ASSERT_TRUE(ns.Ip("addr add 10.92.1.6/24 dev wlan0"));
  ASSERT_TRUE(ns.Ip("link set dev wlan0 address 02:00:00:aa:bb:cc"));
  ASSERT_TRUE(ns.Ip("addr add 10.93.0.1/24 dev vmnet0"));
  qvnet::NetNamespace::Inside in(ns);
  ASSERT_TRUE(in.ok());
  char name[32] = "x";
  EXPECT_EQ(get_NetethName(name), 0);
  EXPECT_STREQ(name, "wlan0");
  NetcardList cards = GetNetcardIPList();
  ASSERT_EQ(cards.size(), 2u);
  const IP_ADAPTER_INFO& wlan = cards.at(inet_addr("10.92.1.6"));
  EXPECT_STREQ(wlan.name, "wlan0");
  EXPECT_EQ(wlan.netmask, inet_addr("255.255.255.0"));
  const unsigned char mac[6] = {0x02, 0x00, 0x00, 0xaa, 0xbb, 0xcc};
  EXPECT_EQ(memcmp(wlan.mac, mac, 6), 0);
  EXPECT_EQ(cards.at(inet_addr("10.91.0.5")).netmask, inet_addr("255.255.0.0"));
}

TEST_F(Adapters, LoopbackAndDummyOnlyGiveNothing) {
  qvnet::NetNamespace ns("lodummy");
  ASSERT_TRUE(ns.ok());
  ASSERT_TRUE(ns.Ip("link add dummy0 type veth peer name dummy1"));
  ASSERT_TRUE(ns.Ip("addr add 10.94.0.1/24 dev dummy0"));
  qvnet::NetNamespace::Inside in(ns);
  ASSERT_TRUE(in.ok());
  char name[32] = "x";
  EXPECT_EQ(get_NetethName(name), 0);
  EXPECT_STREQ(name, "");
  EXPECT_TRUE(GetNetcardIPList().empty());
  // A search still runs, through one wildcard socket.
  CCSearchIPC search;
  EXPECT_EQ(search.StartSearch(200), 0);
  EXPECT_TRUE(search.Searching());
  EXPECT_EQ(search.StopSearch(), 0);
  EXPECT_EQ(search.GetIPCCount(), 0);
}

}  // namespace

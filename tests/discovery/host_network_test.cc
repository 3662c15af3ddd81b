// This host's own network from the files the kernel and the resolver keep,
// the interface name rule and the ICMP checksum.
#include <arpa/inet.h>

#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "discovery/adapter_info.h"
#include "discovery/search_ipc.h"
#include "support/scratch.h"

namespace {

const char kRouteTitle[] =
    "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n";

class HostFiles : public ::testing::Test {
 protected:
  void TearDown() override {
    SetRouteTablePath(nullptr);
    SetResolverPath(nullptr);
  }
  std::string Write(const std::string& name, const std::string& text) {
    std::string path = dir_ / name;
    testsupport::WriteFile(path, text);
    return path;
  }
  testsupport::ScratchDir dir_;
};

TEST_F(HostFiles, TheGatewayIsTheFirstDefaultRoute) {
  const struct {
    const char* what;
    std::string table;
    const char* gateway;  // null: none
  } cases[] = {
      {"default after a subnet route",
       std::string(kRouteTitle) +
           "eth0\t0001A8C0\t00000000\t0001\t0\t0\t100\t00FFFFFF\t0\t0\t0\n"
           "eth0\t00000000\t0101A8C0\t0003\t0\t0\t100\t00000000\t0\t0\t0\n"
           "wlan0\t00000000\t0102A8C0\t0003\t0\t0\t600\t00000000\t0\t0\t0\n",
       "192.168.1.1"},
      {"no default route",
       std::string(kRouteTitle) + "eth0\t0001A8C0\t00000000\t0001\t0\t0\t100\t00FFFFFF\t0\t0\t0\n",
       nullptr},
      {"only the title", kRouteTitle, nullptr},
      {"a line too short, then a default", std::string(kRouteTitle) + "eth0\n" +
           "eth1\t00000000\t0A00000A\t0003\n", "10.0.0.10"},
      {"an overlong line", std::string(kRouteTitle) + std::string(1000, 'x') + "\t00000000\t01010101\n",
       nullptr},
  };
  for (const auto& c : cases) {
    SetRouteTablePath(Write("route", c.table).c_str());
    uint32_t gateway = 0;
    EXPECT_EQ(get_gateway(&gateway), 0) << c.what;
    EXPECT_EQ(gateway, c.gateway ? inet_addr(c.gateway) : 0xFFFFFFFFu) << c.what;
  }
  SetRouteTablePath((dir_ / "missing").c_str());
  uint32_t gateway = 0;
  EXPECT_EQ(get_gateway(&gateway), -1);
  EXPECT_EQ(gateway, 0xFFFFFFFFu);
}

TEST_F(HostFiles, TheFirstTwoNameServersAreKept) {
  const struct {
    const char* what;
    std::string text;
    const char *dns1, *dns2;
  } cases[] = {
      {"three servers",
       "# generated\nsearch lan\nnameserver 10.0.0.1\nnameserver\t10.0.0.2\nnameserver 10.0.0.3\n",
       "10.0.0.1", "10.0.0.2"},
      {"one server", "options ndots:1\nnameserver 10.0.0.1\n", "10.0.0.1", ""},
      {"none", "search lan\n", "", ""},
      {"a server text too long", "nameserver " + std::string(300, '9') + "\n",
       "999999999999999999999999999999999999999999999999999999999999999", ""},
  };
  for (const auto& c : cases) {
    SetResolverPath(Write("resolv.conf", c.text).c_str());
    char dns1[64] = "old1", dns2[64] = "old2";
    EXPECT_EQ(get_DNS(dns1, dns2), 0) << c.what;
    EXPECT_STREQ(dns1, c.dns1) << c.what;
    EXPECT_STREQ(dns2, c.dns2) << c.what;
  }
  SetResolverPath((dir_ / "missing").c_str());
  char dns1[64] = "old1", dns2[64] = "old2";
  EXPECT_EQ(get_DNS(dns1, dns2), 0);
  EXPECT_STREQ(dns1, "old1");
  EXPECT_STREQ(dns2, "old2");
}

TEST(InterfaceNames, SkippedPrefixes) {
  for (const char* name : {"lo", "lo:1", "local0", "stf0", "gif0", "dummy0", "vmnet8"}) {
    EXPECT_TRUE(IsSkippedInterface(name)) << name;
  }
  for (const char* name : {"eth0", "wlan0", "enp3s0", "br0", "veth1", "l0"}) {
    EXPECT_FALSE(IsSkippedInterface(name)) << name;
  }
}

TEST(ChkSum, MatchesKnownIcmpChecksums) {
  // Echo requests as they appear on the wire, checksum bytes included.
  const struct {
    std::string packet;  // with the checksum field filled
  } cases[] = {
      {std::string("\x08\x00\xe5\xca\x12\x34\x00\x01", 8)},
      {std::string("\x08\x00\xf7\xff\x00\x00\x00\x00", 8)},
      {std::string("\x08\x00\x4d\x56\x00\x01\x00\x05" "abcdefghijklmnopqrstuvwabcdefghi", 40)},
      {std::string("\x00\x00\xac\x36\x0f\x62\x00\x01" "\x11\x22\x33\x44", 12)},
  };
  for (const auto& c : cases) {
    std::string zeroed = c.packet;
    zeroed[2] = zeroed[3] = '\0';
    unsigned short sum = ChkSum(reinterpret_cast<const unsigned short*>(zeroed.data()),
                                static_cast<int>(zeroed.size()));
    EXPECT_EQ(memcmp(&sum, c.packet.data() + 2, 2), 0);
    // Over a packet with its checksum in place, the sum comes out as 0.
    EXPECT_EQ(ChkSum(reinterpret_cast<const unsigned short*>(c.packet.data()),
                     static_cast<int>(c.packet.size())),
              0);
  }
}

TEST(ChkSum, AnOddByteIsAddedUnshifted) {
  const unsigned char odd[] = {0x01, 0x00, 0x02};
  // 0x0001 + 0x02 = 0x0003 on a little-endian host.
  EXPECT_EQ(ChkSum(reinterpret_cast<const unsigned short*>(odd), 3),
            static_cast<unsigned short>(~0x0003u));
  const unsigned char carries[] = {0xFF, 0xFF, 0xFF, 0xFF, 0x02};
  // 0xFFFF + 0xFFFF + 0x02 = 0x20000 -> 0x0002 -> complement 0xFFFD.
  EXPECT_EQ(ChkSum(reinterpret_cast<const unsigned short*>(carries), 5), 0xFFFD);
}

}  // namespace

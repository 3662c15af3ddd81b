// quorvel-emu --cameras N started in a namespace of its own: a host program
// finds the whole farm.
#include <string>

#include <gtest/gtest.h>

#include "discovery/lan_fixture.h"

namespace {

using qvtest::LanFixture;

class FarmProgram : public LanFixture {};

TEST_F(FarmProgram, AHostFindsEveryCameraOfTheFarm) {
  const qvnet::NetNamespace& ns = Segment(7, 8);
  qvnet::NamespaceProcess emu;
  ASSERT_TRUE(emu.Start(ns, {std::string(QUORVEL_BINARY_DIR) + "/quorvel-emu", "--cameras", "8",
                             "--address", SegmentAddress(7, 10), "--serial", "FARM-0100",
                             "--port", "7000"}));
  ASSERT_TRUE(emu.WaitForLine("quorvel-emu farm: 8 cameras", qvtest::kLanWaitMs)) << emu.Output();
  ASSERT_EQ(IP_NET_DVR_StartSearchIPC(), 0);
  ASSERT_TRUE(WaitForCount(8));
  auto table = Table();
  for (int i = 0; i < 8; ++i) {
    std::string serial = "FARM-0" + std::to_string(100 + i);
    ASSERT_EQ(table.count(serial), 1u) << serial;
    const IPC_ENTRY& e = table[serial];
    EXPECT_EQ(std::string(e.lan.IPAddress), SegmentAddress(7, 10 + i));
    EXPECT_EQ(e.stream.StreamAccess.PTZPort, 7000 + i);
    EXPECT_STREQ(e.interface_name, "qvh7");
  }
  EXPECT_EQ(emu.Stop(), 0) << emu.Output();
  EXPECT_NE(emu.Output().find("discovery <- search from 10.90.7.1:"), std::string::npos);
}

}  // namespace

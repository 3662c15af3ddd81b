// A LAN of network namespaces for the discovery tests: a host namespace,
// where the library runs (the test thread works inside it from SetUp to
// TearDown), and camera namespaces joined to it by veth pairs, each with a
// farm of emulated cameras. Segment n is 10.90.n.0/24: the host's end is .1,
// the cameras' end .2, camera i listens on .10 + i.
#pragma once

#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/time_scale.h"
#include "support/netns.h"
#include "emu/camera_farm.h"
#include "quorvel/quorvel.h"
#include "support/scratch.h"

// Skips the test with a clear message when namespaces cannot be made.
#define QV_REQUIRE_NAMESPACES()                                            \
  do {                                                                     \
    std::string why_ = ::qvnet::NamespacesUnavailable();                   \
    if (!why_.empty()) GTEST_SKIP() << "network namespace test: " << why_; \
  } while (0)

namespace qvtest {

const int kLanWaitMs = 15000;

class LanFixture : public ::testing::Test {
 protected:
  void SetUp() override {
    QV_REQUIRE_NAMESPACES();
    SetTimerScale(0.05);
    host_.reset(new qvnet::NetNamespace("host"));
    ASSERT_TRUE(host_->ok());
    inside_.reset(new qvnet::NetNamespace::Inside(*host_));
    ASSERT_TRUE(inside_->ok());
    IP_NET_DVR_Init();
    IP_NET_DVR_SetSearchInterval(200);
  }

  void TearDown() override {
    if (inside_) IP_NET_DVR_Cleanup();
    farms_.clear();
    inside_.reset();
  }

  static std::string SegmentAddress(int segment, int host) {
    return "10.90." + std::to_string(segment) + "." + std::to_string(host);
  }
  static std::string HostDevice(int segment) { return "qvh" + std::to_string(segment); }

  // A camera namespace on segment n with `cameras` addresses for a farm.
  const qvnet::NetNamespace& Segment(int n, int cameras) {
    segments_.emplace_back(new qvnet::NetNamespace("cam" + std::to_string(n)));
    const qvnet::NetNamespace& ns = *segments_.back();
    EXPECT_TRUE(ns.ok());
    std::string device = "qvc" + std::to_string(n);
    EXPECT_TRUE(qvnet::Link(*host_, HostDevice(n), SegmentAddress(n, 1) + "/24", ns, device,
                            SegmentAddress(n, 2) + "/24"));
    std::vector<std::string> addresses;
    for (int i = 0; i < cameras; ++i) addresses.push_back(SegmentAddress(n, 10 + i) + "/24");
    if (!addresses.empty()) {
      EXPECT_TRUE(ns.AddAddresses(device, addresses));
    }
    return ns;
  }

  // A farm of `cameras` in namespace ns of segment n, serials from `serial`.
  qvemu::CameraFarm& Farm(const qvnet::NetNamespace& ns, int n, int cameras,
                          const std::string& serial,
                          qvemu::DiscoveryOptions discovery = qvemu::DiscoveryOptions()) {
    qvemu::FarmOptions options;
    options.cameras = cameras;
    options.serial = serial;
    options.first_address = SegmentAddress(n, 10);
    options.discovery = discovery;
    qvnet::NetNamespace::Inside in(ns);
    EXPECT_TRUE(in.ok());
    farms_.emplace_back(new qvemu::CameraFarm(options));
    std::string error;
    EXPECT_TRUE(farms_.back()->Start(&error)) << error;
    return *farms_.back();
  }

  // The library's table by serial number.
  static std::map<std::string, IPC_ENTRY> Table() {
    std::map<std::string, IPC_ENTRY> table;
    long count = IP_NET_DVR_GetSearchIPCCount();
    for (long i = 0; i < count; ++i) {
      IPC_ENTRY e;
      if (IP_NET_DVR_GetIPCInfo(i, &e) == 0) table[e.serial] = e;
    }
    return table;
  }

  // Waits until the table holds serial with the address ip.
  static bool WaitForAddress(const std::string& serial, const std::string& ip,
                             int timeout_ms = kLanWaitMs) {
    return testsupport::WaitFor(
        [&] {
          auto table = Table();
          auto it = table.find(serial);
          return it != table.end() && ip == it->second.lan.IPAddress;
        },
        timeout_ms);
  }

  static bool WaitForCount(long count, int timeout_ms = kLanWaitMs) {
    return testsupport::WaitFor([&] { return IP_NET_DVR_GetSearchIPCCount() == count; },
                                timeout_ms);
  }

  std::unique_ptr<qvnet::NetNamespace> host_;
  std::vector<std::unique_ptr<qvnet::NetNamespace>> segments_;
  std::unique_ptr<qvnet::NetNamespace::Inside> inside_;
  std::vector<std::unique_ptr<qvemu::CameraFarm>> farms_;
};

}  // namespace qvtest

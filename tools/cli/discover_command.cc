// quorvel discover: cameras on the LAN found by broadcast, as a table or
// JSON; or, with --free-address IFACE, an address of that interface's subnet
// that nobody answers.
#include <chrono>
#include <cstdio>
#include <memory>
#include <thread>

#include <nlohmann/json.hpp>

#include "camera_session.h"
#include "discovery/search_ipc.h"
#include "report.h"

namespace {

struct DiscoverOptions {
  double seconds = 3;
  int expect = 0;
  bool json = false;
  std::string free_interface;
};

nlohmann::json EntryJson(const IPC_ENTRY& e) {
  const StreamAccessConfig& s = e.stream.StreamAccess;
  return {{"serial", e.serial},
          {"device_type", e.device_type},
          {"address", e.lan.IPAddress},
          {"netmask", e.lan.Netmask},
          {"gateway", e.lan.Gateway},
          {"mac", e.lan.MacAddress},
          {"dhcp", e.lan.DHCP != 0},
          {"control_port", s.PTZPort},
          {"rtsp_port", s.VideoPort},
          {"web_port", s.WEBPort},
          {"interface", e.interface_name}};
}

// Searches until seconds pass (or expect cameras answered).
int RunSearch(const Cli& cli, const DiscoverOptions& o) {
  Library library(cli.log);
  long started = IP_NET_DVR_StartSearchIPC();
  if (started != 0) return FailResult("discover", started);
  auto end = std::chrono::steady_clock::now() +
             std::chrono::milliseconds(static_cast<long>(o.seconds * 1000));
  while (std::chrono::steady_clock::now() < end && !Interrupted()) {
    if (o.expect > 0 && IP_NET_DVR_GetSearchIPCCount() >= o.expect) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  IP_NET_DVR_StopSearchIPC();
  long count = IP_NET_DVR_GetSearchIPCCount();
  nlohmann::json cameras = nlohmann::json::array();
  for (long i = 0; i < count; ++i) {
    IPC_ENTRY entry;
    if (IP_NET_DVR_GetIPCInfo(i, &entry) == 0) cameras.push_back(EntryJson(entry));
  }
  IP_NET_DVR_SearchIPCReleaseInfo();
  if (o.json) {
    printf("%s\n", nlohmann::json{{"cameras", cameras}}.dump(2).c_str());
    return 0;
  }
  printf("%ld camera%s found\n", count, count == 1 ? "" : "s");
  if (cameras.empty()) return 0;
  printf("%-16s %-8s %-15s %-15s %-17s %5s %5s %s\n", "SERIAL", "TYPE", "ADDRESS", "NETMASK",
         "MAC", "PORT", "RTSP", "INTERFACE");
  for (const auto& c : cameras) {
    printf("%-16s %-8s %-15s %-15s %-17s %5d %5d %s\n", c["serial"].get<std::string>().c_str(),
           c["device_type"].get<std::string>().c_str(), c["address"].get<std::string>().c_str(),
           c["netmask"].get<std::string>().c_str(), c["mac"].get<std::string>().c_str(),
           c["control_port"].get<int>(), c["rtsp_port"].get<int>(),
           c["interface"].get<std::string>().c_str());
  }
  return 0;
}

// The library's own free-address search is based on an address field that
// is always empty; this one runs the same scan from the interface's address.
int RunFreeAddress(const DiscoverOptions& o) {
  CCSearchIPC search;
  char address[33];
  int length = search.GetFreeIPAddress(o.free_interface.c_str(), address, sizeof(address));
  if (length < 0) {
    return Fail("free address on " + o.free_interface +
                " failed: the interface has no IPv4 address");
  }
  if (length == 0) {
    return Fail("free address on " + o.free_interface +
                " failed: every address answered (or ICMP probes need root)");
  }
  if (o.json) {
    printf("%s\n",
           nlohmann::json{{"interface", o.free_interface}, {"address", address}}.dump(2).c_str());
  } else {
    printf("free address on %s: %s\n", o.free_interface.c_str(), address);
  }
  return 0;
}

}  // namespace

void AddDiscoverCommand(Cli& cli) {
  auto o = std::make_shared<DiscoverOptions>();
  CLI::App* discover = cli.Add(
      &cli.app, "discover", "find cameras on the LAN by broadcast (needs no login)",
      [&cli, o] { return o->free_interface.empty() ? RunSearch(cli, *o) : RunFreeAddress(*o); });
  discover->add_option("--seconds", o->seconds, "how long to listen for answers")
      ->check(CLI::PositiveNumber)->capture_default_str();
  discover->add_option("--expect", o->expect, "stop as soon as N cameras answered")
      ->type_name("N")->check(CLI::PositiveNumber);
  discover->add_flag("--json", o->json, "print JSON");
  discover->add_option("--free-address", o->free_interface,
                       "instead: find an address of IFACE's subnet that no one answers (ICMP, "
                       "needs root)")
      ->type_name("IFACE");
}

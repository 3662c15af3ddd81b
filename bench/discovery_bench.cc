// LAN discovery figures, measured inside network namespaces that the
// program makes (root only; otherwise every benchmark is skipped):
//  - time from IP_NET_DVR_StartSearchIPC until all of N emulated cameras
//    (1, 10, 100) are in the table, against the search interval;
//  - CPU of the search thread over 20 s: idle (nobody answers) and with 100
//    cameras answering every search.
// The cameras are an in-process farm in a namespace of their own behind a
// veth pair; the library runs in the host namespace.
#include <dirent.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "base/compat.h"
#include "emu/camera_farm.h"
#include "quorvel/quorvel.h"
#include "support/netns.h"

namespace {

// Host namespace with one interface (10.95.0.1/16) to a camera namespace
// holding a farm of `cameras` at 10.95.1.1 upwards.
class BenchLan {
 public:
  explicit BenchLan(int cameras) : host_("bhost"), cams_("bcams") {
    ok_ = host_.ok() && cams_.ok() &&
          qvnet::Link(host_, "qvbh", "10.95.0.1/16", cams_, "qvbc", "10.95.0.2/16");
    if (!ok_ || cameras == 0) return;
    std::vector<std::string> addresses;
    for (int i = 0; i < cameras; ++i) {
      addresses.push_back(qvemu::CameraFarm::NthAddress("10.95.1.1", i) + "/16");
    }
    ok_ = cams_.AddAddresses("qvbc", addresses);
    qvemu::FarmOptions options;
    options.cameras = cameras;
    options.first_address = "10.95.1.1";
    options.netmask = "255.255.0.0";
    qvnet::NetNamespace::Inside in(cams_);
    farm_.reset(new qvemu::CameraFarm(options));
    std::string error;
    ok_ = ok_ && in.ok() && farm_->Start(&error);
    if (!error.empty()) fprintf(stderr, "farm: %s\n", error.c_str());
  }
  ~BenchLan() { farm_.reset(); }
  bool ok() const { return ok_; }
  const qvnet::NetNamespace& host() const { return host_; }

 private:
  qvnet::NetNamespace host_;
  qvnet::NetNamespace cams_;
  std::unique_ptr<qvemu::CameraFarm> farm_;
  bool ok_ = false;
};

// Nanoseconds the search thread has run (its schedstat); -1 when it is not
// found.
double SearchThreadCpuNs() {
  DIR* d = opendir("/proc/self/task");
  if (d == nullptr) return -1;
  double ns = -1;
  while (struct dirent* e = readdir(d)) {
    std::string dir = std::string("/proc/self/task/") + e->d_name;
    std::ifstream comm(dir + "/comm");
    std::string name;
    if (!std::getline(comm, name) || name != "SearchIPCThread") continue;
    std::ifstream stat(dir + "/schedstat");
    stat >> ns;
  }
  closedir(d);
  return ns;
}

// The library inside the host namespace of a LAN with range(0) cameras and
// range(1) as its search interval; ok() false (the benchmark skipped) when
// the LAN cannot be made.
class LibraryOnLan {
 public:
  explicit LibraryOnLan(benchmark::State& state)
      : cameras(static_cast<int>(state.range(0))),
        interval(static_cast<unsigned>(state.range(1))) {
    std::string why = qvnet::NamespacesUnavailable();
    if (!why.empty()) {
      state.SkipWithError(("skipped, " + why).c_str());
      return;
    }
    lan_.reset(new BenchLan(cameras));
    if (!lan_->ok()) {
      state.SkipWithError("the namespaces could not be set up");
      return;
    }
    inside_.reset(new qvnet::NetNamespace::Inside(lan_->host()));
    IP_NET_DVR_Init();
    IP_NET_DVR_SetSearchInterval(interval);
  }
  ~LibraryOnLan() {
    if (inside_) IP_NET_DVR_Cleanup();
    inside_.reset();
  }
  bool ok() const { return inside_ != nullptr; }

  const int cameras;
  const unsigned interval;

 private:
  std::unique_ptr<BenchLan> lan_;
  std::unique_ptr<qvnet::NetNamespace::Inside> inside_;
};

void BM_TimeToFindAll(benchmark::State& state) {
  LibraryOnLan library(state);
  if (!library.ok()) {
    for (auto _ : state) {
    }
    return;
  }
  const int cameras = library.cameras;
  const unsigned interval = library.interval;
  double worst = 0, total = 0;
  int runs = 0, complete = 0;
  for (auto _ : state) {
    auto t0 = std::chrono::steady_clock::now();
    IP_NET_DVR_StartSearchIPC();
    double ms = 0;
    while (IP_NET_DVR_GetSearchIPCCount() < cameras && ms < 10.0 * interval) {
      SleepMs(1);
      ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0).count();
    }
    ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0).count();
    complete += IP_NET_DVR_GetSearchIPCCount() == cameras ? 1 : 0;
    IP_NET_DVR_StopSearchIPC();
    state.SetIterationTime(ms / 1000.0);
    worst = ms > worst ? ms : worst;
    total += ms;
    ++runs;
  }
  state.counters["mean_ms"] = total / runs;
  state.counters["worst_ms"] = worst;
  state.counters["worst_intervals"] = worst / interval;
  state.counters["complete_runs"] = complete;
}
BENCHMARK(BM_TimeToFindAll)
    ->Args({1, 1000})
    ->Args({10, 1000})
    ->Args({100, 1000})
    ->Args({100, 3000})
    ->Iterations(5)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

void BM_SearchThreadCpu(benchmark::State& state) {
  LibraryOnLan library(state);
  if (!library.ok()) {
    for (auto _ : state) {
    }
    return;
  }
  const unsigned interval = library.interval;
  IP_NET_DVR_StartSearchIPC();
  SleepMs(interval + 500);  // the first answers are in
  for (auto _ : state) {
    double cpu0 = SearchThreadCpuNs();
    auto t0 = std::chrono::steady_clock::now();
    SleepMs(20000);
    double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    state.counters["cpu_pct_of_core"] = 100.0 * (SearchThreadCpuNs() - cpu0) / 1e9 / wall;
  }
  state.counters["in_table"] = static_cast<double>(IP_NET_DVR_GetSearchIPCCount());
}
BENCHMARK(BM_SearchThreadCpu)
    ->Args({0, 3000})
    ->Args({100, 3000})
    ->Args({100, 1000})
    ->Iterations(1)
    ->UseRealTime()
    ->Unit(benchmark::kSecond);

}  // namespace

BENCHMARK_MAIN();

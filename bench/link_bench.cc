// Control-link figures against the emulated camera:
//  - PTZ round trip: IP_NET_DVR_PTZControl until the status callback reports
//    the camera's reply (status 22), median and 99th percentile;
//  - logins per second: one after another (login until status 4), and 128
//    started at once;
//  - 128 idle logged-in sessions: CPU share and resident memory of this
//    process over 30 s, with the camera in a separate quorvel-emu process so
//    that only the library is measured.
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "base/compat.h"
#include "emu_process.h"
#include "emu/camera.h"
#include "quorvel/quorvel.h"
#include "status_events.h"

extern char** environ;

namespace {

const int kSessions = 128;

// The library started, an in-process camera and the status events counted;
// everything released at the end.
struct Setup {
  Setup() {
    IP_NET_DVR_Init();
    camera.Start();
    events.Install();
  }
  ~Setup() { IP_NET_DVR_Cleanup(); }
  qvemu::Camera camera;
  StatusEvents events;
};

long Login(uint16_t port) {
  return IP_NET_DVR_Login("127.0.0.1", port, const_cast<char*>("admin"),
                          const_cast<char*>("admin"), nullptr);
}

double Percentile(std::vector<double> v, double p) {
  if (v.empty()) return 0;
  std::sort(v.begin(), v.end());
  size_t i = static_cast<size_t>(p * static_cast<double>(v.size() - 1) + 0.5);
  return v[std::min(i, v.size() - 1)];
}

void BM_PtzRoundTrip(benchmark::State& state) {
  Setup setup;
  StatusEvents& events = setup.events;
  long id = Login(setup.camera.Port());
  events.WaitCount(EVENT_LOGINOK, 1, 10000);
  std::vector<double> micros;
  int done = 0;
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    IP_NET_DVR_PTZControl(id, 17, 1, 1);
    if (!events.WaitCount(EVNET_PTZNOPRESETINFO, ++done, 10000)) {
      state.SkipWithError("no PTZ reply");
      break;
    }
    micros.push_back(std::chrono::duration<double, std::micro>(
                         std::chrono::steady_clock::now() - start).count());
  }
  state.counters["median_us"] = Percentile(micros, 0.5);
  state.counters["p99_us"] = Percentile(micros, 0.99);
}
BENCHMARK(BM_PtzRoundTrip)->Iterations(2000)->UseRealTime()->Unit(benchmark::kMicrosecond);

void BM_LoginOneAfterAnother(benchmark::State& state) {
  Setup setup;
  int done = 0;
  for (auto _ : state) {
    long id = Login(setup.camera.Port());
    setup.events.WaitCount(EVENT_LOGINOK, ++done, 10000);
    state.PauseTiming();
    IP_NET_DVR_Logout(id);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_LoginOneAfterAnother)->Iterations(300)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_Login128AtOnce(benchmark::State& state) {
  Setup setup;
  for (auto _ : state) {
    setup.events.Reset();
    for (int i = 0; i < kSessions; ++i) Login(setup.camera.Port());
    setup.events.WaitCount(EVENT_LOGINOK, kSessions, 60000);
    state.PauseTiming();
    IP_NET_DVR_LogoutAll();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kSessions);
}
BENCHMARK(BM_Login128AtOnce)->Iterations(5)->UseRealTime()->Unit(benchmark::kMillisecond);

// ---- idle sessions, camera in its own process --------------------------

long ResidentKiB() {
  FILE* f = fopen("/proc/self/status", "r");
  if (f == nullptr) return 0;
  char line[256];
  long kib = 0;
  while (fgets(line, sizeof(line), f) != nullptr) {
    if (strncmp(line, "VmRSS:", 6) == 0) kib = atol(line + 6);
  }
  fclose(f);
  return kib;
}

void BM_IdleSessions(benchmark::State& state) {
  benchsupport::EmulatorProcess emu;
  int emu_port = 0;
  if (!emu.Start({}, "quorvel-emu listening on 127.0.0.1:%d", &emu_port)) {
    state.SkipWithError("quorvel-emu did not start");
    for (auto _ : state) {
    }
    return;
  }
  IP_NET_DVR_Init();
  StatusEvents events;
  events.Install();
  long rss_before = ResidentKiB();
  for (int i = 0; i < kSessions; ++i) Login(static_cast<uint16_t>(emu_port));
  bool all = events.WaitCount(EVENT_LOGINOK, kSessions, 60000);
  SleepMs(2000);  // the ability replies and the first turns settle
  for (auto _ : state) {
    double cpu0 = benchsupport::CpuSeconds();
    auto t0 = std::chrono::steady_clock::now();
    SleepMs(static_cast<unsigned long>(state.range(0)) * 1000UL);
    double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    state.counters["cpu_share_pct"] = 100.0 * (benchsupport::CpuSeconds() - cpu0) / wall;
  }
  state.counters["rss_kib"] = static_cast<double>(ResidentKiB());
  state.counters["rss_added_kib"] = static_cast<double>(ResidentKiB() - rss_before);
  state.counters["logged_in"] = all ? kSessions : 0;
  IP_NET_DVR_Cleanup();
}
BENCHMARK(BM_IdleSessions)->Arg(30)->Iterations(1)->UseRealTime()->Unit(benchmark::kSecond);

}  // namespace

BENCHMARK_MAIN();

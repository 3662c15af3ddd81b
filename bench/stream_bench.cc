// Live-stream figures: frames per second and CPU per stream delivered to a
// callback, and how many 1080p-class streams one core receives.
//
// The camera is the emulator program (build/quorvel-emu --rtsp-port 0) in a
// process of its own, so that the CPU time measured here is the library's
// alone. Each benchmark plays N streams for a fixed time and reports:
//   fps_per_stream   video frames per second delivered to each callback
//   cpu_pct_per_stream  CPU time of this process per stream, in % of a core
//   mbit_per_stream  bytes delivered per stream, in Mbit/s
//   streams_per_core 100 / cpu_pct_per_stream
#include <benchmark/benchmark.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "base/compat.h"
#include "quorvel/quorvel.h"

extern char** environ;

namespace {

struct Emulator {
  pid_t pid = -1;
  int rtsp_port = 0;

  bool Start(const std::vector<std::string>& extra) {
    char self[4096] = {};
    if (readlink("/proc/self/exe", self, sizeof(self) - 1) <= 0) return false;
    std::string dir(self);
    dir = dir.substr(0, dir.rfind('/'));
    std::string program = dir + "/../quorvel-emu";
    std::vector<std::string> args = {program, "--quiet", "--rtsp-port", "0"};
    args.insert(args.end(), extra.begin(), extra.end());
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(&a[0]);
    argv.push_back(nullptr);
    int out[2];
    if (pipe(out) != 0) return false;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    posix_spawn_file_actions_addclose(&actions, out[0]);
    int rc = posix_spawn(&pid, program.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(out[1]);
    if (rc != 0) {
      close(out[0]);
      return false;
    }
    FILE* in = fdopen(out[0], "r");
    char line[256];
    while (fgets(line, sizeof(line), in) != nullptr) {
      if (sscanf(line, "quorvel-emu rtsp on 127.0.0.1:%d", &rtsp_port) == 1) break;
    }
    fclose(in);
    return rtsp_port > 0;
  }

  ~Emulator() {
    if (pid > 0) {
      kill(pid, SIGTERM);
      waitpid(pid, nullptr, 0);
    }
  }
};

struct StreamCounter {
  std::atomic<long> video{0};
  std::atomic<long> bytes{0};
};

long CountFrame(long, unsigned long type, char*, unsigned long length, FRAME_EXTDATA* extra) {
  StreamCounter* c = static_cast<StreamCounter*>(extra->user);
  if (type == QV_FRAME_VIDEO) ++c->video;
  if (type != QV_FRAME_AVPARAM) c->bytes += static_cast<long>(length);
  return 0;
}

double CpuSeconds() {
  struct rusage u;
  getrusage(RUSAGE_SELF, &u);
  return static_cast<double>(u.ru_utime.tv_sec + u.ru_stime.tv_sec) +
         static_cast<double>(u.ru_utime.tv_usec + u.ru_stime.tv_usec) / 1e6;
}

// Plays `streams` streams from an emulator started with `emu_args` for
// `seconds` after the first frames arrived; fills the counters.
void PlayStreams(benchmark::State& state, const std::vector<std::string>& emu_args, int streams,
                 int seconds) {
  Emulator emu;
  if (!emu.Start(emu_args)) {
    state.SkipWithError("emulator did not start");
    return;
  }
  std::vector<StreamCounter> counters(static_cast<size_t>(streams));
  std::vector<long> handles;
  for (int i = 0; i < streams; ++i) {
    ClientInfo info;
    memset(&info, 0, sizeof(info));
    info.port = emu.rtsp_port;
    info.codec_family = 1;
    info.user_data = &counters[static_cast<size_t>(i)];
    handles.push_back(IP_NET_DVR_RealPlayEx("127.0.0.1", "admin", "admin", &CountFrame, &info, 0));
  }
  // Warm-up: every stream delivers.
  unsigned long deadline = GetTickCount() + 20000;
  for (;;) {
    bool all = true;
    for (StreamCounter& c : counters) all = all && c.video > 25;
    if (all || GetTickCount() > deadline) break;
    SleepMs(50);
  }
  long video0 = 0, bytes0 = 0;
  for (StreamCounter& c : counters) {
    video0 += c.video;
    bytes0 += c.bytes;
  }
  double cpu0 = CpuSeconds();
  unsigned long t0 = GetTickCount();
  for (auto _ : state) SleepMs(static_cast<unsigned long>(seconds) * 1000);
  double wall = static_cast<double>(GetTickCount() - t0) / 1000.0;
  double cpu = CpuSeconds() - cpu0;
  long video = 0, bytes = 0;
  for (StreamCounter& c : counters) {
    video += c.video;
    bytes += c.bytes;
  }
  for (long h : handles) IP_NET_DVR_StopRealPlay(h);
  double cpu_pct = 100.0 * cpu / wall / streams;
  state.counters["fps_per_stream"] = static_cast<double>(video - video0) / wall / streams;
  state.counters["cpu_pct_per_stream"] = cpu_pct;
  state.counters["mbit_per_stream"] = static_cast<double>(bytes - bytes0) * 8 / 1e6 / wall / streams;
  state.counters["streams_per_core"] = cpu_pct > 0 ? 100.0 / cpu_pct : 0;
}

// 320x240 H.264 at 25 fps with G.711, one encoder per stream.
void BM_LiveStreamSmall(benchmark::State& state) {
  PlayStreams(state, {}, static_cast<int>(state.range(0)), 8);
}
BENCHMARK(BM_LiveStreamSmall)->Arg(1)->Arg(4)->Iterations(1)->Unit(benchmark::kSecond)
    ->UseRealTime();

// 1920x1080 H.264 at 25 fps, 4 Mbit/s, with G.711; one shared encoder, so
// the emulator's cost does not grow with the number of streams.
void BM_LiveStream1080p(benchmark::State& state) {
  PlayStreams(state,
              {"--rtsp-size", "1920x1080", "--rtsp-bitrate", "4000", "--rtsp-pattern", "snow",
               "--rtsp-shared"},
              static_cast<int>(state.range(0)), 8);
}
BENCHMARK(BM_LiveStream1080p)->Arg(1)->Arg(8)->Arg(32)->Iterations(1)->Unit(benchmark::kSecond)
    ->UseRealTime();

}  // namespace

BENCHMARK_MAIN();

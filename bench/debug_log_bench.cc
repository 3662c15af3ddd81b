// Cost of one log line: console switch off (the common case), and into the
// log file (each line is flushed).
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "base/debug_log.h"

static void BM_LogLineSinksOff(benchmark::State& state) {
  DebugLogSwitch(0);
  SetLogToFile(0, nullptr, 0);
  for (auto _ : state) QV_LOG("[%s:%d]%s(%d)\n", "IP_NET_DVR_Bench", 1);
}
BENCHMARK(BM_LogLineSinksOff);

static void BM_LogLineToFile(benchmark::State& state) {
  char dir[] = "/tmp/quorvel-bench.XXXXXX";
  if (mkdtemp(dir) == nullptr) {
    state.SkipWithError("no temporary folder");
    return;
  }
  DebugInit();
  SetLogToFile(1, dir, 0);
  // The file sink also prints each line; keep the benchmark's output clean.
  FILE* saved = fdopen(dup(fileno(stdout)), "w");
  if (freopen("/dev/null", "w", stdout) == nullptr) return;
  for (auto _ : state) QV_LOG("[%s:%d]%s(%d)\n", "IP_NET_DVR_Bench", 1);
  fflush(stdout);
  dup2(fileno(saved), fileno(stdout));
  fclose(saved);
  DebugRelease();
  std::string cmd = std::string("rm -rf ") + dir;
  if (system(cmd.c_str()) != 0) state.SkipWithError("cleanup failed");
}
BENCHMARK(BM_LogLineToFile);

BENCHMARK_MAIN();

// Load and save of a full configuration document (every built section
// filled, the other sections kept as text), and one section write.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "config/config_file.h"
#include "config/config_store.h"
#include "config/network_sections.h"

namespace {

std::string SourceFixture() {
  std::string here = __FILE__;
  return here.substr(0, here.rfind('/')) + "/../tests/config/data/full_config.xml";
}

// A scratch folder holding a copy of the full document.
class Scratch {
 public:
  Scratch() {
    char pattern[] = "/tmp/qvbenchXXXXXX";
    dir_ = mkdtemp(pattern) ? pattern : "/tmp";
    path_ = dir_ + "/config.xml";
    std::ifstream in(SourceFixture(), std::ios::binary);
    std::ostringstream all;
    all << in.rdbuf();
    std::ofstream(path_, std::ios::binary) << all.str();
  }
  ~Scratch() {
    unlink(path_.c_str());
    rmdir(dir_.c_str());
  }
  const std::string& path() const { return path_; }

 private:
  std::string dir_, path_;
};

// The readers print what they read; while a benchmark runs, that goes to
// /dev/null rather than between the results.
class QuietStdout {
 public:
  QuietStdout() {
    fflush(stdout);
    saved_ = dup(STDOUT_FILENO);
    int null = open("/dev/null", O_WRONLY);
    if (null >= 0) {
      dup2(null, STDOUT_FILENO);
      close(null);
    }
  }
  ~QuietStdout() {
    fflush(stdout);
    if (saved_ >= 0) {
      dup2(saved_, STDOUT_FILENO);
      close(saved_);
    }
  }

 private:
  int saved_;
};

void BM_LoadFullDocument(benchmark::State& state) {
  QuietStdout quiet;
  Scratch scratch;
  std::unique_ptr<IPCConfig> cfg(new IPCConfig);
  for (auto _ : state) {
    if (ParseConfigXML(scratch.path().c_str(), cfg.get()) != 0) state.SkipWithError("load");
  }
}
BENCHMARK(BM_LoadFullDocument)->Unit(benchmark::kMicrosecond);

void BM_SaveFullDocument(benchmark::State& state) {
  QuietStdout quiet;
  Scratch scratch;
  std::unique_ptr<IPCConfig> cfg(new IPCConfig);
  if (ParseConfigXML(scratch.path().c_str(), cfg.get()) != 0) state.SkipWithError("load");
  for (auto _ : state) {
    if (SetConfigToXML_Ex(cfg.get(), scratch.path().c_str()) != 0) state.SkipWithError("save");
  }
}
BENCHMARK(BM_SaveFullDocument)->Unit(benchmark::kMicrosecond);

void BM_WriteNetworkSection(benchmark::State& state) {
  QuietStdout quiet;
  Scratch scratch;
  SetConfigFilePath(scratch.path().c_str());
  NetworkConfig net;
  if (GetNetworkConfig(&net) != 0) state.SkipWithError("read");
  for (auto _ : state) {
    if (SetNetworkConfig(&net) != 0) state.SkipWithError("write");
  }
  SetConfigFilePath(nullptr);
}
BENCHMARK(BM_WriteNetworkSection)->Unit(benchmark::kMicrosecond);

void BM_NetworkSectionToXmlAndBack(benchmark::State& state) {
  QuietStdout quiet;
  Scratch scratch;
  SetConfigFilePath(scratch.path().c_str());
  NetworkConfig net;
  if (GetNetworkConfig(&net) != 0) state.SkipWithError("read");
  SetConfigFilePath(nullptr);
  for (auto _ : state) {
    char* xml = XMLGET_NetworkConfig(&net);
    NetworkConfig back;
    GetNetworkCfgByXml(&back, xml);
    free(xml);
    benchmark::DoNotOptimize(back);
  }
}
BENCHMARK(BM_NetworkSectionToXmlAndBack)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();

// Load and save of a full configuration document (every section: version,
// network, media and stream typed, the others kept as text), beside xmllint
// parsing the same file; section writes and in-memory round trips.
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
#include "config/media_sections.h"
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

// xmllint's own parse of the same file: `--repeat` parses it 100 times and
// `--timing` prints how long that took (in whole milliseconds, hence the 100
// parses per run). The time per parse is the benchmark's time.
void BM_XmllintParse(benchmark::State& state) {
  Scratch scratch;
  std::string command = "xmllint --noout --timing --repeat '" + scratch.path() + "' 2>&1";
  const int kParses = 100;
  for (auto _ : state) {
    FILE* p = popen(command.c_str(), "r");
    if (!p) {
      state.SkipWithError("xmllint");
      break;
    }
    char line[256];
    double ms = -1;
    while (fgets(line, sizeof(line), p)) {
      int n;
      double took;
      if (sscanf(line, "%d iterations took %lf ms", &n, &took) == 2 && n == kParses) ms = took;
    }
    if (pclose(p) != 0 || ms < 0) {
      state.SkipWithError("xmllint gave no timing");
      break;
    }
    state.SetIterationTime(ms / 1000.0 / kParses);
  }
}
BENCHMARK(BM_XmllintParse)->UseManualTime()->Iterations(20)->Unit(benchmark::kMicrosecond);

// The xmllint program on the file, process start included.
void BM_XmllintProcess(benchmark::State& state) {
  Scratch scratch;
  std::string command = "xmllint --noout '" + scratch.path() + "' 2>/dev/null";
  for (auto _ : state) {
    if (system(command.c_str()) != 0) state.SkipWithError("xmllint");
  }
}
BENCHMARK(BM_XmllintProcess)->UseRealTime()->Unit(benchmark::kMicrosecond);

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

void BM_WriteMediaSection(benchmark::State& state) {
  QuietStdout quiet;
  Scratch scratch;
  SetConfigFilePath(scratch.path().c_str());
  MediaConfig media;
  if (GetMediaConfig(&media) != 0) state.SkipWithError("read");
  for (auto _ : state) {
    if (SetMediaConfig(&media) != 0) state.SkipWithError("write");
  }
  SetConfigFilePath(nullptr);
}
BENCHMARK(BM_WriteMediaSection)->Unit(benchmark::kMicrosecond);

void BM_MediaSectionToXmlAndBack(benchmark::State& state) {
  QuietStdout quiet;
  Scratch scratch;
  SetConfigFilePath(scratch.path().c_str());
  MediaConfig media;
  if (GetMediaConfig(&media) != 0) state.SkipWithError("read");
  SetConfigFilePath(nullptr);
  for (auto _ : state) {
    char* xml = XMLGET_MediaConfig(&media);
    MediaConfig back;
    GetMediaCfgByXml(&back, xml);
    free(xml);
    benchmark::DoNotOptimize(back);
  }
}
BENCHMARK(BM_MediaSectionToXmlAndBack)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();

// Load and save of a full configuration document (every section typed),
// beside xmllint
// parsing the same file; section writes and in-memory round trips.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "config/config_file.h"
#include "config/config_store.h"
#include "config/config_xml.h"
#include "config/media_sections.h"
#include "config/network_sections.h"

#include <upnp/ixml.h>

namespace {

std::string SourceFixture() {
  return std::string(QUORVEL_SOURCE_DIR) + "/tests/config/data/full_config.xml";
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

// CPU seconds (user + system) of one run of xmllint with these arguments
// and the file; -1 when it cannot be run or fails.
double XmllintCpu(const std::vector<std::string>& args, const std::string& path) {
  std::vector<char*> argv;
  std::vector<std::string> all = {"xmllint", "--noout"};
  all.insert(all.end(), args.begin(), args.end());
  all.push_back(path);
  for (std::string& a : all) argv.push_back(&a[0]);
  argv.push_back(nullptr);
  pid_t pid = fork();
  if (pid < 0) return -1;
  if (pid == 0) {
    int null = open("/dev/null", O_WRONLY);
    if (null >= 0) {
      dup2(null, STDOUT_FILENO);
      dup2(null, STDERR_FILENO);
    }
    execvp("xmllint", argv.data());
    _exit(127);
  }
  int status = 0;
  struct rusage usage;
  if (wait4(pid, &status, 0, &usage) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
    return -1;
  return usage.ru_utime.tv_sec + usage.ru_utime.tv_usec / 1e6 + usage.ru_stime.tv_sec +
         usage.ru_stime.tv_usec / 1e6;
}

// xmllint's own parse of the same file, in CPU time: "--repeat" given twice
// parses it 1000 times in one run; a run that parses it once is taken off
// for the program's start. The time per parse is the benchmark's time, to
// set beside the CPU time of BM_LoadFullDocument.
void BM_XmllintParse(benchmark::State& state) {
  Scratch scratch;
  const int kParses = 1000;
  for (auto _ : state) {
    double many = XmllintCpu({"--repeat", "--repeat"}, scratch.path());
    double once = XmllintCpu({}, scratch.path());
    if (many < 0 || once < 0) {
      state.SkipWithError("xmllint");
      break;
    }
    state.SetIterationTime((many - once) / (kParses - 1));
  }
}
BENCHMARK(BM_XmllintParse)->UseManualTime()->Iterations(5)->Unit(benchmark::kMicrosecond);

// The xmllint program on the file, start included (wall time).
void BM_XmllintProcess(benchmark::State& state) {
  Scratch scratch;
  std::string command = "xmllint --noout '" + scratch.path() + "' 2>/dev/null";
  for (auto _ : state) {
    if (system(command.c_str()) != 0) state.SkipWithError("xmllint");
  }
}
BENCHMARK(BM_XmllintProcess)->UseRealTime()->Unit(benchmark::kMicrosecond);

// ixml's own parse of the same text (ixmlParseBufferEx, then the document
// freed), for the share of the load that is the parser's: what the load
// does beyond it is the library's own.
void BM_IxmlParseOnly(benchmark::State& state) {
  Scratch scratch;
  std::string raw, text;
  if (!qvconfig::ReadConfigFile(scratch.path().c_str(), &raw)) state.SkipWithError("read");
  // The parser takes UTF-8 only: bytes from 0x80 up are handed to it as the
  // two-byte sequences of the same code points, as the load does (untimed).
  for (unsigned char c : raw) {
    if (c < 0x80) {
      text.push_back(static_cast<char>(c));
    } else {
      text.push_back(static_cast<char>(0xC0 | (c >> 6)));
      text.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
  }
  for (auto _ : state) {
    IXML_Document* doc = nullptr;
    if (ixmlParseBufferEx(text.c_str(), &doc) != IXML_SUCCESS) state.SkipWithError("parse");
    ixmlDocument_free(doc);
  }
}
BENCHMARK(BM_IxmlParseOnly)->Unit(benchmark::kMicrosecond);

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

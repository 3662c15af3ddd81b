// File transfer throughput over loopback: a 64 MB file downloaded from and
// uploaded to an in-process emulated camera, over the data channel and
// inside the control link, beside a plain TCP copy of the same bytes (a
// sender writing 64 KB pieces read from the file, a receiver writing what
// arrives to a file). Timers run at their real length: an upload over the
// data channel pauses 10 ms after every 4096 bytes (about 400 KB/s), so
// that case sends the first 4 MB of the file instead (about ten seconds).
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>

#include "emu/camera.h"
#include "emu/file_service.h"
#include "quorvel/quorvel.h"
#include "status_events.h"

namespace {

const size_t kFileSize = 64u << 20;
const size_t kPacedFileSize = 4u << 20;  // the data-channel upload
const size_t kPiece = 65536;
const int kTransferTimeoutMs = 600000;

// A scratch folder holding the 64 MB source file, a logged-in session with
// an in-process camera that offers the same bytes; all removed at the end.
class Setup {
 public:
  Setup() {
    char tmpl[] = "/tmp/quorvel-bench.XXXXXX";
    if (mkdtemp(tmpl) != nullptr) dir_ = tmpl;
    bytes_.resize(kFileSize);
    uint32_t x = 12345;
    for (char& c : bytes_) {
      x = x * 1664525u + 1013904223u;
      c = static_cast<char>(x >> 24);
    }
    std::ofstream(Source(), std::ios::binary) << bytes_;
    std::ofstream(PacedSource(), std::ios::binary) << bytes_.substr(0, kPacedFileSize);
    qvemu::CameraOptions options;
    options.record_limit = 16;  // the link-mode upload's 32 KB frames need not be kept
    camera_.reset(new qvemu::Camera(options));
    camera_->Start();
    camera_->Files().Store().Put("/mnt/sd/big.bin", bytes_);
    IP_NET_DVR_Init();
    events_.Install();
    id_ = IP_NET_DVR_Login("127.0.0.1", camera_->Port(), const_cast<char*>("admin"),
                           const_cast<char*>("admin"), nullptr);
    ok_ = events_.WaitCount(EVENT_LOGINOK, 1, 10000);
  }
  ~Setup() {
    IP_NET_DVR_Cleanup();
    camera_->Stop();
    std::string cmd = "rm -rf '" + dir_ + "'";
    if (!dir_.empty() && system(cmd.c_str()) != 0) perror("rm");
  }

  bool ok() const { return ok_; }
  std::string Source() const { return dir_ + "/source.bin"; }
  std::string PacedSource() const { return dir_ + "/source-4m.bin"; }
  const std::string& dir() const { return dir_; }
  long id() const { return id_; }
  StatusEvents& events() { return events_; }
  qvemu::Camera& camera() { return *camera_; }

 private:
  std::string dir_;
  std::string bytes_;
  std::unique_ptr<qvemu::Camera> camera_;
  StatusEvents events_;
  long id_ = 0;
  bool ok_ = false;
};

Setup& Shared() {
  static Setup setup;
  return setup;
}

// The plain copy: file -> socket -> file, 64 KB at a time.
bool PlainCopy(const std::string& source, const std::string& target) {
  int listener = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in addr{};
  addr.sin_family = AF_INET;
  addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t len = sizeof addr;
  if (bind(listener, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0 ||
      listen(listener, 1) != 0 ||
      getsockname(listener, reinterpret_cast<sockaddr*>(&addr), &len) != 0) {
    close(listener);
    return false;
  }
  std::thread sender([&] {
    int s = socket(AF_INET, SOCK_STREAM, 0);
    if (connect(s, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0) {
      FILE* in = fopen(source.c_str(), "rb");
      std::vector<char> buf(kPiece);
      size_t n;
      while (in != nullptr && (n = fread(buf.data(), 1, buf.size(), in)) > 0) {
        for (size_t at = 0; at < n;) {
          ssize_t w = send(s, buf.data() + at, n - at, MSG_NOSIGNAL);
          if (w <= 0) break;
          at += static_cast<size_t>(w);
        }
      }
      if (in != nullptr) fclose(in);
    }
    close(s);
  });
  int c = accept(listener, nullptr, nullptr);
  FILE* out = fopen(target.c_str(), "wb");
  std::vector<char> buf(kPiece);
  size_t total = 0;
  ssize_t n;
  while ((n = recv(c, buf.data(), buf.size(), 0)) > 0) {
    fwrite(buf.data(), 1, static_cast<size_t>(n), out);
    total += static_cast<size_t>(n);
  }
  fclose(out);
  close(c);
  close(listener);
  sender.join();
  return total == kFileSize;
}

// Until the session's transfer has ended on its side too.
bool WaitIdle(long id) {
  auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (IP_NET_DVR_GetUpgradeProgress(id) != 101) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

void BM_PlainTcpCopy(benchmark::State& state) {
  Setup& s = Shared();
  for (auto _ : state) {
    if (!PlainCopy(s.Source(), s.dir() + "/plain.bin")) state.SkipWithError("copy failed");
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kFileSize));
}

void BM_Download(benchmark::State& state) {
  Setup& s = Shared();
  if (!s.ok()) return state.SkipWithError("no login");
  s.camera().Files().SetMode(state.range(0) ? qvemu::FileMode::kLink : qvemu::FileMode::kChannel);
  for (auto _ : state) {
    int done = s.events().Count(EVENT_DOWNLOADOK);
    char remote[] = "/mnt/sd/big.bin";
    if (IP_NET_DVR_GetFileByName(s.id(), 2, remote, s.dir().c_str()) != 0 ||
        !s.events().WaitCount(EVENT_DOWNLOADOK, done + 1, kTransferTimeoutMs)) {
      state.SkipWithError("download failed");
    }
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kFileSize));
}

void BM_Upload(benchmark::State& state) {
  Setup& s = Shared();
  if (!s.ok()) return state.SkipWithError("no login");
  s.camera().Files().SetMode(state.range(0) ? qvemu::FileMode::kLink : qvemu::FileMode::kChannel);
  const bool paced = state.range(0) == 0;
  const std::string source = paced ? s.PacedSource() : s.Source();
  const size_t size = paced ? kPacedFileSize : kFileSize;
  for (auto _ : state) {
    int uploads = s.camera().Files().Uploads();
    if (IP_NET_DVR_UploadFile(s.id(), 2, source.c_str()) != 0 ||
        !s.camera().Files().WaitUploads(uploads + 1, kTransferTimeoutMs) ||
        !WaitIdle(s.id())) {
      state.SkipWithError("upload failed");
    }
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * size));
}

}  // namespace

BENCHMARK(BM_PlainTcpCopy)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_Download)->ArgName("link")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)
    ->UseRealTime()->Iterations(3);
BENCHMARK(BM_Upload)->ArgName("link")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)
    ->UseRealTime()->Iterations(1);

BENCHMARK_MAIN();

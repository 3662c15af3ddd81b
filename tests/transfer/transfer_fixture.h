// A logged-in session with an emulated camera that serves and takes files,
// a scratch folder for the host's side, and helpers to run a transfer to
// its final status.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>

#include "emu/file_service.h"
#include "link/camera_fixture.h"
#include "support/scratch.h"

namespace qvtest {

// Deterministic bytes of every value, different for each seed.
inline std::string TestBytes(size_t n, uint32_t seed = 1) {
  std::string out(n, '\0');
  uint32_t x = seed * 2654435761u + 1;
  for (size_t i = 0; i < n; ++i) {
    x = x * 1664525u + 1013904223u;
    out[i] = static_cast<char>(x >> 24);
  }
  return out;
}

inline bool FileExists(const std::string& path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0;
}

class TransferFixture : public CameraFixture {
 protected:
  // 1 s data-channel waits take 100 ms, 60 s stall 6 s.
  double Scale() const override { return 0.1; }

  void SetUp() override {
    CameraFixture::SetUp();
    id_ = LoginReady();
  }

  qvemu::FileService& Files() { return camera_->Files(); }

  // Offers bytes on the camera as "/mnt/sd/<name>" and fetches it into the
  // scratch folder; waits for status 16 or 17, which it returns.
  long Download(const std::string& name, const std::string& bytes, long* result = nullptr) {
    Files().Store().Put("/mnt/sd/" + name, bytes);
    std::string remote = "/mnt/sd/" + name;
    long r = IP_NET_DVR_GetFileByName(id_, 2, &remote[0], dir_.path().c_str());
    if (result != nullptr) *result = r;
    return r == 0 ? WaitDownloadEnd() : -1;
  }

  // The first of status 16 and 17, or -1 when neither came.
  long WaitDownloadEnd() { return WaitFirst(EVENT_DOWNLOADOK, EVENT_DOWNLOADFAILED); }
  long WaitFirst(long a, long b) {
    testsupport::WaitFor([&] { return events_.Count(id_, a) + events_.Count(id_, b) > 0; },
                         kWaitMs);
    for (const StatusEvent& e : events_.Status()) {
      if (e.id == id_ && (e.code == a || e.code == b)) return e.code;
    }
    return -1;
  }

  // Writes bytes to the scratch folder as name and uploads it with type 2.
  std::string UploadPath(const std::string& name, const std::string& bytes) {
    std::string path = dir_ / name;
    testsupport::WriteFile(path, bytes);
    return path;
  }

  // Waits until the transfer has ended (progress 101) and then for `count`
  // status events `code`.
  bool WaitEnd(long code, int count = 1) {
    bool ended = testsupport::WaitFor(
        [&] {
          return IP_NET_DVR_GetUpgradeProgress(id_) == 101 &&
                 IP_NET_DVR_GetDownloadPos(id_) == 101;
        },
        kWaitMs);
    return ended && events_.WaitStatus(id_, code, kWaitMs, count);
  }

  long id_ = 0;
  testsupport::ScratchDir dir_;
};

}  // namespace qvtest

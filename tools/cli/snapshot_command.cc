// quorvel snapshot FILE: a picture from the camera, stored in FILE.
#include <sys/stat.h>

#include <cstdio>
#include <memory>

#include "camera_session.h"
#include "report.h"

namespace {

struct SnapshotOptions {
  std::string path;
  int stream = 0;
  int quality = 80;
};

int RunSnapshot(const Cli& cli, const SnapshotOptions& o) {
  std::string what = "snapshot " + o.path;
  Library library(cli.log);
  CameraSession session(cli.connection);
  if (!session.Open()) return 1;
  long result;
  {
    LibraryPrints quiet;  // the library announces the picture's download there
    result = IP_NET_DVR_SnapPic(session.id(), o.stream, o.quality, o.path.c_str(),
                                session.TimeoutMs());
  }
  if (result != 0) return FailResult(what, result);
  struct stat st;
  if (stat(o.path.c_str(), &st) != 0) return Fail(what + " failed: no picture arrived");
  printf("%s: %ld bytes (stream %d, quality %d)\n", what.c_str(),
         static_cast<long>(st.st_size), o.stream, o.quality);
  return 0;
}

}  // namespace

void AddSnapshotCommand(Cli& cli) {
  auto o = std::make_shared<SnapshotOptions>();
  CLI::App* snap = cli.Add(&cli.app, "snapshot", "take a picture and store it in a file",
                           [&cli, o] { return RunSnapshot(cli, *o); });
  snap->add_option("FILE", o->path, "where to store the picture")->required();
  snap->add_option("--stream", o->stream, "0 main stream, 1 sub stream")
      ->check(CLI::Range(0, 1))->capture_default_str();
  snap->add_option("--quality", o->quality, "picture quality, 0 to 100")
      ->check(CLI::Range(0, 100))->capture_default_str();
}

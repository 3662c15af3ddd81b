// quorvel upload | download | upgrade | config-file get/put: files moved
// between this machine and the camera, with progress.
#include <sys/stat.h>

#include <chrono>
#include <cstdio>
#include <memory>

#include "camera_session.h"
#include "progress.h"
#include "report.h"

namespace {

enum class Direction { kUpload, kDownload };

struct FileOptions {
  std::string local;
  std::string remote;
  std::string dir = ".";
  long type = 2;
};

// How long to wait for the camera after a stop before giving up on its
// final status.
const int kStopWaitMs = 2000;
const int kPollMs = 100;

// The number in attribute="N" of a status text; -1000 when absent.
long Attribute(const std::string& text, const std::string& name) {
  size_t at = text.find(name + "=\"");
  if (at == std::string::npos) return -1000;
  return strtol(text.c_str() + at + name.size() + 2, nullptr, 10);
}

bool TransferEvent(long code) {
  return code == EVENT_UPLOADOK || code == EVENT_UPLOADFAILED || code == EVENT_DOWNLOADOK ||
         code == EVENT_DOWNLOADFAILED || code == EVENT_CONNECTFAILED ||
         code == EVENT_SOCKETERROR || code == EVENT_LOGIN_RECONNECT;
}

long FileSize(const std::string& path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0 ? static_cast<long>(st.st_size) : -1;
}

// Starts the transfer with start and follows it to its end: the camera's
// status events, and the library's percentage in between. Ctrl-C stops it.
// explain words a refusal of start that is not a result code of the series.
int Follow(CameraSession& session, const std::string& what, Direction direction,
           const std::function<long(long id)>& start,
           const std::function<std::string(long)>& explain = nullptr) {
  long id = session.id();
  size_t cursor = Notices::Instance().End();
  long started;
  {
    LibraryPrints quiet;  // a download announces its local name there
    started = start(id);
  }
  if (started < 0) {
    std::string text = explain ? explain(started) : "";
    return text.empty() ? FailResult(what, started) : Fail(what + " failed: " + text);
  }
  Progress progress(what);
  progress.Update(0);
  auto last_move = std::chrono::steady_clock::now();
  long last_percent = -1;
  for (;;) {
    Notice n;
    bool seen = Notices::Instance().WaitFor(
        &cursor, [&](const Notice& x) { return x.kind == Notice::kStatus && x.id == id &&
                                               TransferEvent(x.code); },
        kPollMs, &n);
    if (seen) {
      if (n.code == EVENT_UPLOADOK) {
        long percent = Attribute(n.text, "Progress");
        if (percent >= 0 && percent < 100) {
          progress.Update(static_cast<int>(percent));
          last_move = std::chrono::steady_clock::now();
          continue;
        }
      }
      if (n.code == EVENT_UPLOADOK || n.code == EVENT_DOWNLOADOK) {
        progress.Update(100);
        progress.Finish();
        return 0;
      }
      progress.Finish();
      return FailEvent(what, n);
    }
    if (Interrupted()) {
      progress.Finish();
      cursor = Notices::Instance().End();
      IP_NET_DVR_CloseUpgradeHandle(id);
      Notices::Instance().WaitFor(
          &cursor, [&](const Notice& x) { return x.id == id && TransferEvent(x.code); },
          kStopWaitMs, &n);
      return Fail(what + " interrupted: the transfer was stopped");
    }
    long percent = direction == Direction::kUpload ? IP_NET_DVR_GetUpgradeProgress(id)
                                                   : IP_NET_DVR_GetDownloadPos(id);
    auto now = std::chrono::steady_clock::now();
    if (percent >= 0 && percent <= 100 && percent != last_percent) {
      progress.Update(static_cast<int>(percent));
      last_percent = percent;
      last_move = now;
    } else if (now - last_move > std::chrono::milliseconds(session.TimeoutMs())) {
      progress.Finish();
      IP_NET_DVR_CloseUpgradeHandle(id);
      return Fail(what + " failed: no progress for " +
                  std::to_string(session.TimeoutMs() / 1000) + " s; stopped");
    }
  }
}

int Transfer(const Cli& cli, const std::string& what, Direction direction,
             const std::function<long(long id)>& start, const std::string& local) {
  Library library(cli.log);
  CameraSession session(cli.connection);
  if (!session.Open()) return 1;
  if (Follow(session, what, direction, start) != 0) return 1;
  long size = FileSize(local);
  printf("%s: done (%s, %ld bytes)\n", what.c_str(), local.c_str(), size < 0 ? 0 : size);
  return 0;
}

// The local name of a download: the folder and the remote name's last part.
std::string DownloadName(const std::string& dir, const std::string& remote) {
  std::string name = remote;
  size_t cut = name.find_last_of('\\');
  if (cut != std::string::npos) name = name.substr(cut + 1);
  cut = name.find_last_of('/');
  if (cut != std::string::npos) name = name.substr(cut + 1);
  return dir + "/" + name;
}

// SetConfigFile reads the file as XML before it asks the camera; -1 and -2
// are its verdicts on the file, not result codes of the series.
int RunConfigFilePut(const Cli& cli, const FileOptions& o) {
  std::string what = "config-file put " + o.local;
  if (FileSize(o.local) < 0) return Fail(what + " failed: cannot read " + o.local);
  Library library(cli.log);
  CameraSession session(cli.connection);
  if (!session.Open()) return 1;
  auto explain = [](long code) -> std::string {
    if (code == -1) return "the file does not parse as XML";
    if (code == -2) return "the file has no root element";
    return "";
  };
  auto start = [&](long id) { return IP_NET_DVR_SetConfigFile(id, o.local.c_str()); };
  if (Follow(session, what, Direction::kUpload, start, explain) != 0) return 1;
  printf("%s: done (%ld bytes)\n", what.c_str(), FileSize(o.local));
  return 0;
}

}  // namespace

void AddFileCommands(Cli& cli) {
  auto o = std::make_shared<FileOptions>();
  CLI::App* upload = cli.Add(&cli.app, "upload", "send a file to the camera", [&cli, o] {
    return Transfer(cli, "upload " + o->local, Direction::kUpload,
                    [o](long id) { return IP_NET_DVR_UploadFile(id, o->type, o->local.c_str()); },
                    o->local);
  });
  upload->add_option("FILE", o->local, "the local file")->required();
  upload->add_option("--type", o->type, "file type announced: 0 configuration file, 1 firmware, others plain files")
      ->check(CLI::Range(0, 255))->capture_default_str();

  CLI::App* download = cli.Add(
      &cli.app, "download", "fetch a file from the camera into a folder", [&cli, o] {
        std::string local = DownloadName(o->dir, o->remote);
        return Transfer(cli, "download " + o->remote, Direction::kDownload,
                        [o](long id) {
                          std::vector<char> remote(o->remote.begin(), o->remote.end());
                          remote.push_back('\0');
                          return IP_NET_DVR_GetFileByName(id, o->type, remote.data(),
                                                          o->dir.c_str());
                        },
                        local);
      });
  download->add_option("REMOTE", o->remote, "the file's name on the camera")->required();
  download->add_option("--to", o->dir, "the local folder")->type_name("DIR")
      ->check(CLI::ExistingDirectory)->capture_default_str();
  download->add_option("--type", o->type, "file type asked for")->check(CLI::Range(0, 255))
      ->capture_default_str();

  CLI::App* upgrade = cli.Add(&cli.app, "upgrade", "send a firmware image to the camera",
                              [&cli, o] {
                                return Transfer(cli, "upgrade " + o->local, Direction::kUpload,
                                                [o](long id) {
                                                  return IP_NET_DVR_Upgrade(id, o->local.c_str());
                                                },
                                                o->local);
                              });
  upgrade->add_option("FILE", o->local, "the firmware image")->required();

  CLI::App* config_file =
      cli.app.add_subcommand("config-file", "fetch or send the camera's whole configuration file");
  config_file->require_subcommand(1);
  CLI::App* get = cli.Add(config_file, "get", "fetch the configuration file", [&cli, o] {
    return Transfer(cli, "config-file get", Direction::kDownload,
                    [o](long id) { return IP_NET_DVR_GetConfigFile(id, o->local.c_str()); },
                    o->local);
  });
  get->add_option("FILE", o->local, "where to store it")->required();
  CLI::App* put = cli.Add(config_file, "put", "send a configuration file (XML)",
                          [&cli, o] { return RunConfigFilePut(cli, *o); });
  put->add_option("FILE", o->local, "the configuration file")->required();
}

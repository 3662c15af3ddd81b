// quorvel time get | set: the camera's clock.
#include <cstdio>
#include <ctime>
#include <memory>

#include <nlohmann/json.hpp>

#include "camera_session.h"
#include "report.h"

namespace {

const long kTimeGetCode = 1048;
const long kTimeSetCode = 1005;

struct TimeOptions {
  std::string at;   // "YYYY-MM-DD HH:MM:SS"; empty: this machine's local time
  int zone = -1;    // the camera's time zone number; -1: keep the camera's
  bool json = false;
};

// The seven values of the library: zone, year, month, day, hour, minute,
// second.
struct CameraTime {
  int v[7] = {};
  std::string Text() const {
    char text[32];
    snprintf(text, sizeof(text), "%04d-%02d-%02d %02d:%02d:%02d", v[1], v[2], v[3], v[4], v[5],
             v[6]);
    return text;
  }
};

bool ReadCameraTime(CameraSession& session, CameraTime* out) {
  Notice reply;
  if (!session.Ask("time get", [&] { return IP_NET_DVR_GET_SYSTEMTIME(session.id()); },
                   kTimeGetCode, &reply)) {
    return false;
  }
  long read = IP_NET_DVR_XMLGET_SYSTEMTIME(reply.text.c_str(), out->v);
  if (read != 0) return FailResult("reading the camera's time", read) == 0;
  return true;
}

int RunGet(const Cli& cli, const TimeOptions& o) {
  Library library(cli.log);
  CameraSession session(cli.connection);
  if (!session.Open()) return 1;
  CameraTime t;
  if (!ReadCameraTime(session, &t)) return 1;
  if (o.json) {
    printf("%s\n", nlohmann::json{{"time", t.Text()}, {"zone", t.v[0]}}.dump(2).c_str());
  } else {
    printf("camera time: %s (time zone %d)\n", t.Text().c_str(), t.v[0]);
  }
  return 0;
}

// "2024-03-05 07:08:09" into values 1 to 6; false when it is no such time.
bool ParseTime(const std::string& text, CameraTime* t) {
  char end = 0;
  int* v = t->v;
  if (sscanf(text.c_str(), "%d-%d-%d %d:%d:%d%c", &v[1], &v[2], &v[3], &v[4], &v[5], &v[6],
             &end) != 6) {
    return false;
  }
  return v[1] >= 1970 && v[1] <= 2099 && v[2] >= 1 && v[2] <= 12 && v[3] >= 1 && v[3] <= 31 &&
         v[4] >= 0 && v[4] <= 23 && v[5] >= 0 && v[5] <= 59 && v[6] >= 0 && v[6] <= 59;
}

int RunSet(const Cli& cli, const TimeOptions& o) {
  CameraTime t;
  if (o.at.empty()) {
    time_t now = time(nullptr);
    struct tm tm;
    localtime_r(&now, &tm);
    int values[7] = {0, tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min,
                     tm.tm_sec};
    std::copy(values, values + 7, t.v);
  } else if (!ParseTime(o.at, &t)) {
    return Fail("time set: '" + o.at + "' is not a time like 2024-03-05 07:08:09");
  }
  Library library(cli.log);
  CameraSession session(cli.connection);
  if (!session.Open()) return 1;
  if (o.zone >= 0) {
    t.v[0] = o.zone;
  } else {
    CameraTime current;
    if (!ReadCameraTime(session, &current)) return 1;
    t.v[0] = current.v[0];
  }
  if (!session.Ask("time set", [&] { return IP_NET_DVR_SET_SYSTEMTIME(session.id(), t.v); },
                   kTimeSetCode)) {
    return 1;
  }
  printf("camera time set to %s (time zone %d)\n", t.Text().c_str(), t.v[0]);
  return 0;
}

}  // namespace

void AddTimeCommands(Cli& cli) {
  auto o = std::make_shared<TimeOptions>();
  CLI::App* time = cli.app.add_subcommand("time", "read or set the camera's clock");
  time->require_subcommand(1);
  CLI::App* get = cli.Add(time, "get", "print the camera's time and time zone",
                          [&cli, o] { return RunGet(cli, *o); });
  get->add_flag("--json", o->json, "print JSON");
  CLI::App* set = cli.Add(time, "set", "set the camera's clock (default: this machine's time)",
                          [&cli, o] { return RunSet(cli, *o); });
  set->add_option("--at", o->at, "the time to set, as \"2024-03-05 07:08:09\"")
      ->type_name("TIME");
  set->add_option("--zone", o->zone, "the camera's time zone number (default: keep the camera's)")
      ->check(CLI::Range(0, 99));
}

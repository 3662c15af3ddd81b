// quorvel replay days | day DATE | play: which days and minutes hold
// recordings on the camera, and a recording played into a local file.
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <memory>
#include <mutex>
#include <thread>

#include <nlohmann/json.hpp>

#include "camera_session.h"
#include "progress.h"
#include "report.h"

namespace {

const long kReplayQueryCode = 1021;
const unsigned kMaxDays = 366;
const unsigned kMinutesPerDay = 1440;

struct ReplayOptions {
  std::string date;
  bool json = false;
  std::string from;    // "YYYY-MM-DD HH:MM:SS" or "YYYY-MM-DD", camera clock
  double seconds = 5;
  std::string out;
};

// "2024-03-05" of UTC seconds (the camera's own clock, unshifted).
std::string DayText(unsigned seconds) {
  time_t t = static_cast<time_t>(seconds);
  struct tm tm;
  gmtime_r(&t, &tm);
  char text[16];
  strftime(text, sizeof(text), "%Y-%m-%d", &tm);
  return text;
}

std::string MinuteText(unsigned minute) {
  char text[16];
  snprintf(text, sizeof(text), "%02u:%02u", minute / 60, minute % 60);
  return text;
}

int RunDays(const Cli& cli, const ReplayOptions& o) {
  Library library(cli.log);
  CameraSession session(cli.connection);
  if (!session.Open()) return 1;
  Notice reply;
  if (!session.Ask("replay days", [&] { return IP_NET_DVR_GetReplay_Dates_Distribute(session.id()); },
                   kReplayQueryCode, &reply)) {
    return 1;
  }
  unsigned dates[kMaxDays];
  long read = IP_NET_DVR_GetReplay_Dates_DistributeByXml(reply.text.c_str(), dates, kMaxDays);
  if (read != 0) return FailResult("reading the replay days", read);
  nlohmann::json days = nlohmann::json::array();
  for (unsigned i = 0; i < kMaxDays && dates[i] != 0; ++i) days.push_back(DayText(dates[i]));
  if (o.json) {
    printf("%s\n", nlohmann::json{{"days", days}}.dump(2).c_str());
    return 0;
  }
  printf("%zu days with recordings, newest first:\n", days.size());
  for (const auto& d : days) printf("  %s\n", d.get<std::string>().c_str());
  return 0;
}

int RunDay(const Cli& cli, const ReplayOptions& o) {
  int year = 0, month = 0, day = 0;
  char end = 0;
  if (sscanf(o.date.c_str(), "%d-%d-%d%c", &year, &month, &day, &end) != 3 || month < 1 ||
      month > 12 || day < 1 || day > 31) {
    return Fail("replay day: '" + o.date + "' is not a date like 2024-03-05");
  }
  Library library(cli.log);
  CameraSession session(cli.connection);
  if (!session.Open()) return 1;
  Notice reply;
  std::string what = "replay day " + o.date;
  if (!session.Ask(what,
                   [&] {
                     return IP_NET_DVR_GetReplay_OneDay_Distribute(session.id(), year, month, day);
                   },
                   kReplayQueryCode, &reply)) {
    return 1;
  }
  char minutes[kMinutesPerDay + 1];
  long read =
      IP_NET_DVR_GetReplay_OneDay_DistributeByXml(reply.text.c_str(), minutes, sizeof(minutes));
  if (read != 0) return FailResult("reading the day's recordings", read);
  // Runs of recorded minutes ('1') as spans, the end minute exclusive.
  nlohmann::json spans = nlohmann::json::array();
  unsigned recorded = 0;
  for (unsigned m = 0; m < kMinutesPerDay && minutes[m] != '\0';) {
    if (minutes[m] != '1') {
      ++m;
      continue;
    }
    unsigned start = m;
    while (m < kMinutesPerDay && minutes[m] == '1') ++m;
    recorded += m - start;
    spans.push_back({{"from", MinuteText(start)}, {"to", MinuteText(m)}});
  }
  if (o.json) {
    printf("%s\n",
           nlohmann::json{{"date", o.date}, {"minutes", recorded}, {"spans", spans}}.dump(2).c_str());
    return 0;
  }
  printf("%s: %u minutes recorded in %zu spans\n", o.date.c_str(), recorded, spans.size());
  for (const auto& s : spans) {
    printf("  %s - %s\n", s["from"].get<std::string>().c_str(), s["to"].get<std::string>().c_str());
  }
  return 0;
}

// What a play delivered; filled on the session's link thread.
struct PlayStats {
  std::mutex mu;
  std::ofstream* out = nullptr;
  bool have_param = false;
  QV_REPLAY_PARAM param{};
  long video_frames = 0, key_frames = 0, audio_frames = 0, video_bytes = 0;
  bool write_failed = false;
};

// Video frames go to the file as they come (the camera's elementary
// stream); audio is counted.
long OnReplayData(long, unsigned long kind, char* data, unsigned long length,
                  FRAME_EXTDATA* extra) {
  PlayStats* s = static_cast<PlayStats*>(extra->user);
  if (s == nullptr || data == nullptr) return 0;
  std::lock_guard<std::mutex> lock(s->mu);
  if (kind == QV_REPLAY_KIND_PARAM) {
    if (length >= sizeof(s->param)) {
      memcpy(&s->param, data, sizeof(s->param));
      s->have_param = true;
    }
    return 0;
  }
  if (length < sizeof(QV_REPLAY_TRAILER)) return 0;
  unsigned long bytes = length - sizeof(QV_REPLAY_TRAILER);
  if (kind == QV_REPLAY_KIND_VIDEO) {
    ++s->video_frames;
    if (extra->flag != 0) ++s->key_frames;
    s->video_bytes += static_cast<long>(bytes);
    if (s->out != nullptr && !s->out->write(data, static_cast<std::streamsize>(bytes))) {
      s->write_failed = true;
    }
  } else {
    ++s->audio_frames;
  }
  return 0;
}

// "2024-03-05 07:08:09" or "2024-03-05" as seconds on the camera's clock
// (counted as UTC, like the days of the distribution replies); -1 when it
// is no such time.
long PlayTime(const std::string& text) {
  struct tm tm = {};
  char end = 0;
  int n = sscanf(text.c_str(), "%d-%d-%d %d:%d:%d%c", &tm.tm_year, &tm.tm_mon, &tm.tm_mday,
                 &tm.tm_hour, &tm.tm_min, &tm.tm_sec, &end);
  if (n != 3 && n != 6) return -1;
  if (tm.tm_mon < 1 || tm.tm_mon > 12 || tm.tm_mday < 1 || tm.tm_mday > 31 ||
      tm.tm_hour > 23 || tm.tm_min > 59 || tm.tm_sec > 59 || tm.tm_year < 1970) {
    return -1;
  }
  tm.tm_year -= 1900;
  tm.tm_mon -= 1;
  return static_cast<long>(timegm(&tm));
}

int RunPlay(const Cli& cli, const ReplayOptions& o) {
  std::string what = "replay play " + o.from;
  long at = PlayTime(o.from);
  if (at < 0) return Fail("replay play: '" + o.from + "' is not a time like 2024-03-05 07:08:09");
  std::ofstream file(o.out, std::ios::binary | std::ios::trunc);
  if (!file) return Fail(what + " failed: cannot write " + o.out);
  PlayStats stats;
  stats.out = &file;
  Library library(cli.log);
  IP_NET_DVR_SetReplayDataCallBack(OnReplayData, &stats);
  CameraSession session(cli.connection);
  if (!session.Open()) return 1;
  long id = session.id();
  // The camera's replay ability comes with its ability list after login.
  auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(session.TimeoutMs());
  long ability;
  while ((ability = IP_NET_DVR_GetReplayAblity(id)) == -1 &&
         std::chrono::steady_clock::now() < deadline && !Interrupted()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  if (ability != 1) return Fail(what + " failed: the camera cannot play recordings");
  long started = IP_NET_DVR_ReplayByTime(id, at);
  if (started != 0) return FailResult(what, started);
  {
    Progress progress("playing into " + o.out);
    auto start = std::chrono::steady_clock::now();
    for (;;) {
      double done = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
      long frames;
      {
        std::lock_guard<std::mutex> lock(stats.mu);
        frames = stats.video_frames;
      }
      char detail[64];
      snprintf(detail, sizeof(detail), "%ld video frames", frames);
      progress.Update(static_cast<int>(std::min(done, o.seconds) * 100 / o.seconds), detail);
      if (done >= o.seconds || Interrupted()) break;
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
  }
  IP_NET_DVR_ControlReplay(id, QV_REPLAY_STOP, 0);
  std::lock_guard<std::mutex> lock(stats.mu);
  stats.out = nullptr;
  file.close();
  if (stats.write_failed || !file) return Fail(what + " failed: writing " + o.out + " failed");
  if (stats.video_frames == 0) return Fail(what + " failed: no video frame came");
  const char* codec = stats.have_param && stats.param.av.video.codec[0] != '\0'
                          ? stats.param.av.video.codec
                          : "video";
  printf("played %g s from %s into %s: %ld %s frames (%ld key frames, %ld bytes), %ld audio "
         "frames\n",
         o.seconds, o.from.c_str(), o.out.c_str(), stats.video_frames, codec, stats.key_frames,
         stats.video_bytes, stats.audio_frames);
  return Interrupted() ? Fail(what + " interrupted") : 0;
}

}  // namespace

void AddReplayCommands(Cli& cli) {
  auto o = std::make_shared<ReplayOptions>();
  CLI::App* replay = cli.app.add_subcommand("replay", "recordings stored on the camera");
  replay->require_subcommand(1);
  CLI::App* days = cli.Add(replay, "days", "list the days that hold recordings",
                           [&cli, o] { return RunDays(cli, *o); });
  days->add_flag("--json", o->json, "print JSON");
  CLI::App* day = cli.Add(replay, "day", "show which minutes of a day hold recordings",
                          [&cli, o] { return RunDay(cli, *o); });
  day->add_option("DATE", o->date, "the day, as 2024-03-05")->required();
  day->add_flag("--json", o->json, "print JSON");
  CLI::App* play = cli.Add(replay, "play",
                           "play the camera's recordings from a time into a local file",
                           [&cli, o] { return RunPlay(cli, *o); });
  play->add_option("--from", o->from, "where to start: \"2024-03-05 07:08:09\" or a day")
      ->type_name("TIME")->required();
  play->add_option("--seconds", o->seconds, "how long to play")->check(CLI::PositiveNumber)
      ->capture_default_str();
  play->add_option("--to", o->out, "the file for the video (the camera's elementary stream)")
      ->type_name("FILE")->required();
}

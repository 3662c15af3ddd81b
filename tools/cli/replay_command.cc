// quorvel replay days | day DATE: which days and minutes hold recordings on
// the camera.
#include <cstdio>
#include <ctime>
#include <memory>

#include <nlohmann/json.hpp>

#include "camera_session.h"
#include "report.h"

namespace {

const long kReplayQueryCode = 1021;
const unsigned kMaxDays = 366;
const unsigned kMinutesPerDay = 1440;

struct ReplayOptions {
  std::string date;
  bool json = false;
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
  char text[8];
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
}

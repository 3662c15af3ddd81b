// quorvel status: log in and print what the camera and the library report,
// by name, until Ctrl-C (or for a given time).
#include <chrono>
#include <cstdio>
#include <memory>

#include "camera_session.h"
#include "names.h"

namespace {

void PrintNotice(const Notice& n) {
  if (n.kind == Notice::kReply) {
    printf("reply %ld%s: %s\n", n.ReplyCode(), n.Refused() ? " (refused)" : "", n.text.c_str());
  } else if (n.has_alarm) {
    const ALARM_ENTRY& a = n.alarm;
    printf("%3ld %-24s alarm code %d, flag %d, level %d at %04d-%02d-%02d %02d:%02d:%02d%s%s\n",
           n.code, EventName(n.code).c_str(), a.alarm_code, a.alarm_flag, a.alarm_level, a.year,
           a.month, a.day, a.hour, a.minute, a.second, a.alarm_data[0] ? ": " : "", a.alarm_data);
  } else {
    printf("%3ld %-24s %s\n", n.code, EventName(n.code).c_str(), n.text.c_str());
  }
  fflush(stdout);
}

int RunStatus(const Cli& cli, double seconds) {
  Library library(cli.log);
  CameraSession session(cli.connection);
  size_t cursor = Notices::Instance().End();
  if (!session.Open()) return 1;
  printf("logged in to %s as %s (user ID %ld); events follow, %s\n", session.Address().c_str(),
         cli.connection.user.c_str(), session.id(),
         seconds > 0 ? "for the time given" : "Ctrl-C stops");
  auto end = std::chrono::steady_clock::now() +
             std::chrono::milliseconds(static_cast<long>(seconds * 1000));
  for (;;) {
    int wait_ms = 1000;
    if (seconds > 0) {
      auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
          end - std::chrono::steady_clock::now());
      if (left.count() <= 0) break;
      wait_ms = static_cast<int>(std::min<long>(left.count(), 1000));
    }
    Notice n;
    if (Notices::Instance().WaitFor(&cursor, [&](const Notice& x) { return x.id == session.id(); },
                                    wait_ms, &n)) {
      PrintNotice(n);
    } else if (Interrupted()) {
      break;
    }
  }
  return 0;
}

}  // namespace

void AddStatusCommand(Cli& cli) {
  auto seconds = std::make_shared<double>(0);
  CLI::App* sub = cli.Add(&cli.app, "status",
                          "log in and print the camera's events by name until Ctrl-C",
                          [&cli, seconds] { return RunStatus(cli, *seconds); });
  sub->add_option("--for", *seconds, "stop after SECONDS instead of waiting for Ctrl-C")
      ->type_name("SECONDS")->check(CLI::PositiveNumber);
}

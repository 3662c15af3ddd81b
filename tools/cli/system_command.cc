// The system commands: reboot, restore, format, ircut, scare-off, key-frame,
// abilities, logs and user-data. Each asks the camera and reports its reply.
#include <cstdio>
#include <memory>

#include "camera_session.h"
#include "report.h"

namespace {

struct SystemOptions {
  std::string disk = "sd1";
  std::string mode;
  int sound = 0;
  int led = 0;
  int seconds = 0;
  int stream = 0;
};

// Logs in, queues the request with send, waits for the reply to code and
// prints what came back (the reply's text too when show_body).
int AskCamera(const Cli& cli, const std::string& what, long code, bool show_body,
              const std::function<long(long)>& send) {
  Library library(cli.log);
  CameraSession session(cli.connection);
  if (!session.Open()) return 1;
  Notice reply;
  if (!session.Ask(what, [&] { return send(session.id()); }, code, &reply)) return 1;
  printf("%s: the camera took it (reply %ld)\n", what.c_str(), code);
  if (show_body) printf("%s\n", reply.text.c_str());
  return 0;
}

int RunUserData(const Cli& cli) {
  Library library(cli.log);
  CameraSession session(cli.connection);
  if (!session.Open()) return 1;
  char buffer[4096];
  int length = sizeof(buffer);
  long result = IP_NET_DVR_GetUserData(session.id(), buffer, &length);
  if (result < 0) return FailResult("user-data", result);
  if (length == 0) return Fail("user-data failed: no answer within 5 s");
  printf("user data (%d bytes): %s\n", length, buffer);
  return 0;
}

long FormatDisk(long id, const std::string& disk) {
  long index = disk == "sd1" ? 0 : disk == "sd2" ? 1 : 2;
  return IP_NET_DVR_FormatDisk(id, index);
}

}  // namespace

void AddSystemCommands(Cli& cli) {
  auto o = std::make_shared<SystemOptions>();
  CLI::App* app = &cli.app;
  cli.Add(app, "reboot", "restart the camera", [&cli] {
    return AskCamera(cli, "reboot", 1007, false, IP_NET_DVR_RebootDVR);
  });
  cli.Add(app, "restore", "put the camera's configuration back to its factory settings", [&cli] {
    return AskCamera(cli, "restore", 1002, false, IP_NET_DVR_RestoreConfig);
  });
  CLI::App* format = cli.Add(app, "format", "format one of the camera's disks", [&cli, o] {
    return AskCamera(cli, "format " + o->disk, 1017, false,
                     [o](long id) { return FormatDisk(id, o->disk); });
  });
  format->add_option("--disk", o->disk, "sd1, sd2 or usb")
      ->check(CLI::IsMember({"sd1", "sd2", "usb"}))->capture_default_str();

  CLI::App* ircut = cli.Add(app, "ircut", "switch the infrared-cut filter to day or night",
                            [&cli, o] {
                              return AskCamera(cli, "ircut " + o->mode, 1046, false, [o](long id) {
                                return IP_NET_DVR_Ircut_switch_daynight(id, o->mode == "day");
                              });
                            });
  ircut->add_option("MODE", o->mode, "day or night")->required()
      ->check(CLI::IsMember({"day", "night"}));

  CLI::App* scare = cli.Add(app, "scare-off", "set the deterrence sound and light", [&cli, o] {
    return AskCamera(cli, "scare-off", 1112, false, [o](long id) {
      return IP_NET_DVR_SCARE_OFF(id, o->sound, o->led, o->seconds);
    });
  });
  scare->add_option("--sound", o->sound, "1: play the sound")->check(CLI::Range(0, 1))
      ->capture_default_str();
  scare->add_option("--led", o->led, "1: turn the light on")->check(CLI::Range(0, 1))
      ->capture_default_str();
  scare->add_option("--time", o->seconds, "how long, in seconds")->check(CLI::NonNegativeNumber)
      ->capture_default_str();

  CLI::App* key = cli.Add(app, "key-frame", "ask for a key frame on a stream", [&cli, o] {
    return AskCamera(cli, "key-frame", 1032, false,
                     [o](long id) { return IP_NET_DVR_CreateIFrame(id, o->stream); });
  });
  key->add_option("--stream", o->stream, "stream number")->check(CLI::Range(0, 4))
      ->capture_default_str();

  cli.Add(app, "abilities", "print the camera's ability list", [&cli] {
    return AskCamera(cli, "abilities", 1020, true, IP_NET_DVR_GetDeviceAbility);
  });
  cli.Add(app, "logs", "print the camera's log", [&cli] {
    return AskCamera(cli, "logs", 1025, true, IP_NET_DVR_FindDVRLogFile);
  });
  cli.Add(app, "user-data", "print the camera's user data", [&cli] { return RunUserData(cli); });
}

// quorvel ptz and quorvel preset: move the camera's head, and set, clear or
// call its presets.
#include <chrono>
#include <cstdio>
#include <map>
#include <memory>
#include <thread>

#include "camera_session.h"
#include "names.h"
#include "report.h"

namespace {

const std::map<std::string, long> kMoves = {
    {"up", QV_PTZ_UP},
    {"down", QV_PTZ_DOWN},
    {"left", QV_PTZ_LEFT},
    {"right", QV_PTZ_RIGHT},
    {"left-up", QV_PTZ_LEFT_UP},
    {"right-up", QV_PTZ_RIGHT_UP},
    {"left-down", QV_PTZ_LEFT_DOWN},
    {"right-down", QV_PTZ_RIGHT_DOWN},
    {"zoom-in", QV_PTZ_ZOOM_TELE},
    {"zoom-out", QV_PTZ_ZOOM_WIDE},
    {"focus-near", QV_PTZ_FOCUS_NEAR},
    {"focus-far", QV_PTZ_FOCUS_FAR},
    {"iris-open", QV_PTZ_IRIS_OPEN},
    {"iris-close", QV_PTZ_IRIS_CLOSE},
    {"stop", QV_PTZ_STOP},
};

const std::map<std::string, long> kPresetActions = {
    {"set", QV_PRESET_SET}, {"clear", QV_PRESET_CLEAR}, {"call", QV_PRESET_CALL}};

struct PtzOptions {
  std::string move;
  int speed = 5;
  double seconds = 0.5;
  bool keep_moving = false;
  std::string action;
  int preset = 0;
};

// The camera's answer to a PTZ request: 21 or 22 when it took it, 11 when
// it refused it.
bool IsPtzAnswer(const Notice& n) {
  return n.code == EVENT_SENDPTZFAILED || n.code == EVENT_PTZPRESETINFO ||
         n.code == EVNET_PTZNOPRESETINFO;
}

// Sends one request and waits for the camera's answer.
bool SendPtz(CameraSession& session, const std::string& what, const std::function<long()>& send) {
  size_t since = Notices::Instance().End();
  long result = send();
  if (result < 0) return FailResult(what, result) == 0;
  Notice answer;
  if (!session.AwaitEvent(what, since, IsPtzAnswer, session.TimeoutMs(), &answer)) return false;
  if (answer.code == EVENT_SENDPTZFAILED) return FailEvent(what, answer) == 0;
  printf("%s: the camera took it (%s)\n", what.c_str(), EventName(answer.code).c_str());
  return true;
}

int RunPtz(const Cli& cli, const PtzOptions& o) {
  long command = kMoves.at(o.move);
  Library library(cli.log);
  CameraSession session(cli.connection);
  if (!session.Open()) return 1;
  long id = session.id();
  if (!SendPtz(session, "ptz " + o.move, [&] {
        return IP_NET_DVR_PTZControl(id, command, o.speed, o.speed);
      })) {
    return 1;
  }
  if (command == QV_PTZ_STOP || o.keep_moving) return 0;
  std::this_thread::sleep_for(std::chrono::milliseconds(static_cast<long>(o.seconds * 1000)));
  return SendPtz(session, "ptz stop", [&] { return IP_NET_DVR_PTZControl(id, QV_PTZ_STOP, 0, 0); })
             ? 0
             : 1;
}

int RunPreset(const Cli& cli, const PtzOptions& o) {
  Library library(cli.log);
  CameraSession session(cli.connection);
  if (!session.Open()) return 1;
  long id = session.id();
  long command = kPresetActions.at(o.action);
  std::string what = "preset " + o.action + " " + std::to_string(o.preset);
  return SendPtz(session, what, [&] { return IP_NET_DVR_PTZPreset(id, command, o.preset); }) ? 0
                                                                                              : 1;
}

}  // namespace

void AddPtzCommands(Cli& cli) {
  auto o = std::make_shared<PtzOptions>();
  CLI::App* ptz = cli.Add(&cli.app, "ptz", "move the camera's head, zoom, focus or iris",
                          [&cli, o] { return RunPtz(cli, *o); });
  std::vector<std::string> moves;
  for (const auto& m : kMoves) moves.push_back(m.first);
  ptz->add_option("MOVE", o->move, "what to do")->required()->check(CLI::IsMember(moves));
  ptz->add_option("--speed", o->speed, "pan and tilt speed")->check(CLI::Range(0, 255))
      ->capture_default_str();
  ptz->add_option("--for", o->seconds, "seconds to move before the stop")
      ->type_name("SECONDS")->check(CLI::NonNegativeNumber)->capture_default_str();
  ptz->add_flag("--keep-moving", o->keep_moving, "send no stop afterwards");

  CLI::App* preset = cli.Add(&cli.app, "preset", "set, clear or call a PTZ preset",
                             [&cli, o] { return RunPreset(cli, *o); });
  preset->add_option("ACTION", o->action, "set, clear or call")->required()
      ->check(CLI::IsMember({"set", "clear", "call"}));
  preset->add_option("NUMBER", o->preset, "preset number")->required()
      ->check(CLI::Range(0, 255));
}

// The quorvel program end to end against an emulated camera: each
// subcommand's exit status and the lines a person reads, the failures a
// person meets, and the JSON views parsed back.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "cli/cli_runner.h"
#include "emu/camera.h"
#include "emu/file_service.h"
#include "emu/firmware_image.h"
#include "support/scratch.h"

namespace {

using qvcli::CliRun;
using qvcli::RunCli;

class CliTest : public ::testing::Test {
 protected:
  void SetUp() override {
    qvemu::CameraOptions options;
    options.files_dir = files_.path();
    camera_.reset(new qvemu::Camera(options));
    ASSERT_TRUE(camera_->Start());
  }

  // The camera's address and login, as a script passes them.
  std::map<std::string, std::string> Env() const {
    return {{"QUORVEL_HOST", "127.0.0.1"},
            {"QUORVEL_PORT", std::to_string(camera_->Port())},
            {"QUORVEL_USER", "admin"},
            {"QUORVEL_PASSWORD", "admin"}};
  }
  CliRun Run(const std::vector<std::string>& args) { return RunCli(args, Env()); }

  // Whether the camera received a message of this code whose body holds text.
  bool Received(const std::string& code, const std::string& text = "") {
    for (const qvemu::ReceivedFrame& f : camera_->Received()) {
      if (f.code == code && f.body.find(text) != std::string::npos) return true;
    }
    return false;
  }

  testsupport::ScratchDir files_;  // the camera's file folder
  testsupport::ScratchDir local_;  // this machine's side
  std::unique_ptr<qvemu::Camera> camera_;
};

#define EXPECT_RUN_OK(run)                                                   \
  EXPECT_EQ((run).status, 0) << "out:\n" << (run).out << "err:\n" << (run).err

TEST_F(CliTest, HelpNamesEverySubcommandAndEachExplainsItself) {
  CliRun top = RunCli({"--help"});
  EXPECT_RUN_OK(top);
  const char* subcommands[] = {
      "discover", "status",   "ptz",     "preset",      "reboot",    "restore",  "format",
      "ircut",    "scare-off", "key-frame", "abilities", "logs",     "user-data", "config",
      "time",     "upload",   "download", "upgrade",    "config-file", "snapshot", "talk",
      "replay",   "live",     "convert"};
  for (const char* name : subcommands) {
    SCOPED_TRACE(name);
    EXPECT_NE(top.out.find(std::string("  ") + name + " "), std::string::npos);
    CliRun sub = RunCli({name, "--help"});
    EXPECT_RUN_OK(sub);
    EXPECT_NE(sub.out.find("Usage:"), std::string::npos);
  }
  CliRun spelled = RunCli({"help", "config", "set"});
  EXPECT_RUN_OK(spelled);
  EXPECT_NE(spelled.out.find("SECTION"), std::string::npos) << spelled.out;
  EXPECT_EQ(RunCli({"no-such-command"}).status, 2);
}

// Commands that ask the camera one thing: the line printed, and what the
// camera received (so that each subcommand reaches the request it names).
TEST_F(CliTest, CameraCommandsReachTheCameraAndSayWhatCameBack) {
  struct Case {
    std::vector<std::string> args;
    std::string line;           // in standard output
    std::string code, body;     // a message the camera received
  } cases[] = {
      {{"status", "--for", "0.5"}, "logged in to 127.0.0.1:", "", ""},
      {{"ptz", "left", "--for", "0.1", "--speed", "3"}, "ptz left: the camera took it", "PTZ_CMD",
       "<cmd>left</cmd><panspeed>3</panspeed>"},
      {{"preset", "call", "5"}, "preset call 5: the camera took it", "PTZ_CMD",
       "<cmd>callpreset</cmd><preset>5</preset>"},
      {{"reboot"}, "reboot: the camera took it", "1007", ""},
      {{"restore"}, "restore: the camera took it", "1002", ""},
      {{"format", "--disk", "sd2"}, "format sd2: the camera took it", "1017", "DevName=\"sd2\""},
      {{"ircut", "night"}, "ircut night: the camera took it", "1046", "NightMode"},
      {{"scare-off", "--sound", "1", "--led", "1", "--time", "5"}, "scare-off: the camera took it",
       "1112", "play_sound=\"1\" led_on=\"1\" time=\"5\""},
      {{"key-frame", "--stream", "1"}, "key-frame: the camera took it", "1032", ""},
      {{"abilities"}, "abilities: the camera took it", "1020", ""},
      {{"logs"}, "logs: the camera took it", "1025", ""},
      {{"user-data"}, "user data (11 bytes): QV-EMU-0001", "1034", ""},
      {{"time", "get"}, "camera time: ", "1048", ""},
      {{"time", "set", "--at", "2024-03-05 07:08:09", "--zone", "8"},
       "camera time set to 2024-03-05 07:08:09 (time zone 8)", "1005",
       "Time=\"20240305 07:08:09\" TimeZone=\"8\""},
      {{"replay", "days"}, "days with recordings, newest first", "1021", "SearchMode=\"10\""},
      {{"replay", "day", "2024-03-05"}, "2024-03-05: ", "1021", "StartTime=\"20240305 00:00:00\""},
      {{"config", "get", "video-encode"}, "<", "503", ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.args[0] + (c.args.size() > 1 ? " " + c.args[1] : ""));
    camera_->ClearReceived();
    CliRun run = Run(c.args);
    EXPECT_RUN_OK(run);
    EXPECT_NE(run.out.find(c.line), std::string::npos) << run.out;
    if (!c.code.empty()) {
      EXPECT_TRUE(Received(c.code, c.body));
    }
  }
}

// What a person meets when something is wrong: exit status 1 and the
// reason, with the library's result code or event by name.
TEST_F(CliTest, FailuresSayWhyWithTheCodeAndItsName) {
  qvemu::CameraOptions refusing;
  refusing.user = "admin";
  qvemu::Camera busy(refusing);
  ASSERT_TRUE(busy.Start());
  busy.SetTalkRefusal(-1);
  testsupport::ScratchDir dir;
  testsupport::WriteFile(dir / "tone.wav", std::string("RIFF\x24\x00\x00\x00WAVEfmt ", 16) +
                                               std::string("\x10\x00\x00\x00\x01\x00\x01\x00"
                                                           "\x40\x1f\x00\x00\x80\x3e\x00\x00"
                                                           "\x02\x00\x10\x00",
                                                           20) +
                                               std::string("data\x00\x00\x00\x00", 8));
  // A loopback port that nobody listens on: bind one, then let it go.
  int unused_port;
  {
    qvemu::Camera gone;
    ASSERT_TRUE(gone.Start());
    unused_port = gone.Port();
  }
  std::string port = std::to_string(camera_->Port());
  struct Case {
    std::string name;
    std::vector<std::string> args;
    std::string reason;  // in standard error
  } cases[] = {
      {"wrong password", {"--port", port, "--password", "wrong", "reboot"},
       "EVENT_LOGIN_USERERROR"},
      {"unreachable camera", {"--port", std::to_string(unused_port), "--timeout", "5", "reboot"},
       "EVENT_CONNECTFAILED"},
      {"missing local file", {"--port", port, "upload", dir / "absent.bin"},
       "-8999982 QV_E_FILE_MISSING"},
      {"unknown section", {"--port", port, "config", "get", "colours"},
       "unknown configuration section 'colours'"},
      {"refused talk", {"--port", std::to_string(busy.Port()), "talk", dir / "tone.wav"},
       "EVENT_STARTAUDIO_ISBUSY"},
      {"no port", {"reboot"}, "no camera port"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    CliRun run = RunCli(c.args);
    EXPECT_EQ(run.status, 1) << run.out << run.err;
    EXPECT_NE(run.err.find(c.reason), std::string::npos) << run.err;
  }
}

TEST_F(CliTest, ConfigSectionReadEditedSentAndReadBack) {
  CliRun list = Run({"config", "list"});
  EXPECT_RUN_OK(list);
  EXPECT_NE(list.out.find("person-detect   808  829"), std::string::npos) << list.out;

  CliRun before = Run({"config", "get", "misc", "--json"});
  EXPECT_RUN_OK(before);
  nlohmann::json j = nlohmann::json::parse(before.out);
  ASSERT_TRUE(j.is_object() && j.size() == 1) << before.out;

  CliRun xml = Run({"config", "get", "time"});
  EXPECT_RUN_OK(xml);
  std::string text = xml.out;
  size_t zone = text.find("TimeZone=\"");
  ASSERT_NE(zone, std::string::npos) << text;
  size_t value = zone + 10;
  text.replace(value, text.find('"', value) - value, "21");
  testsupport::WriteFile(local_ / "time.xml", text);
  CliRun set = Run({"config", "set", "time", local_ / "time.xml"});
  EXPECT_RUN_OK(set);
  EXPECT_TRUE(Received("222", "TimeZone=\"21\""));

  CliRun after = Run({"config", "get", "time", "--json"});
  EXPECT_RUN_OK(after);
  EXPECT_NE(after.out.find("\"TimeZone\": \"21\""), std::string::npos) << after.out;

  testsupport::WriteFile(local_ / "other.xml", "<Nothing/>");
  CliRun wrong = Run({"config", "set", "time", local_ / "other.xml"});
  EXPECT_EQ(wrong.status, 1);
  EXPECT_NE(wrong.err.find("holds no usable time section"), std::string::npos) << wrong.err;
}

TEST_F(CliTest, FilesGoUpAndComeBackWithProgressLines) {
  std::string bytes(300 * 1024, '\0');
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 7 + i / 1000);
  testsupport::WriteFile(local_ / "payload.bin", bytes);
  CliRun up = Run({"upload", local_ / "payload.bin"});
  EXPECT_RUN_OK(up);
  // Not a terminal: plain lines, the start and the end at least.
  EXPECT_NE(up.out.find("upload " + (local_ / "payload.bin") + ": 0%"), std::string::npos)
      << up.out;
  EXPECT_NE(up.out.find(": 100%"), std::string::npos) << up.out;

  testsupport::ScratchDir back;
  CliRun down = Run({"download", "payload.bin", "--to", back.path()});
  EXPECT_RUN_OK(down);
  EXPECT_NE(down.out.find("download payload.bin: done (" + (back / "payload.bin") +
                          ", 307200 bytes)"),
            std::string::npos)
      << down.out;
  EXPECT_EQ(testsupport::ReadFile(back / "payload.bin"), bytes);

  testsupport::WriteFile(local_ / "fw.bin", qvemu::MakeFirmwareImage(7, std::string(5000, 'f')));
  CliRun upgrade = Run({"upgrade", local_ / "fw.bin"});
  EXPECT_RUN_OK(upgrade);
  EXPECT_TRUE(camera_->Files().LastFirmware().check.ok);

  CliRun get = Run({"config-file", "get", local_ / "config.xml"});
  EXPECT_RUN_OK(get);
  std::string config = testsupport::ReadFile(local_ / "config.xml");
  EXPECT_NE(config.find("<?xml"), std::string::npos) << config.substr(0, 200);
  CliRun put = Run({"config-file", "put", local_ / "config.xml"});
  EXPECT_RUN_OK(put);

  testsupport::WriteFile(local_ / "broken.xml", "<open");
  CliRun broken = Run({"config-file", "put", local_ / "broken.xml"});
  EXPECT_EQ(broken.status, 1);
  EXPECT_NE(broken.err.find("does not parse as XML"), std::string::npos) << broken.err;
}

TEST_F(CliTest, TransferCutByTheCameraOrByCtrlCEndsWithStatusOne) {
  camera_->Files().Store().Put("/mnt/sd/big.bin", std::string(400 * 1024, 'b'));
  qvemu::DataChannelFault cut;
  cut.kind = qvemu::DataChannelFault::kCloseEarly;
  cut.value = 100 * 1024;
  camera_->Files().SetFault(cut);
  CliRun dropped = Run({"download", "/mnt/sd/big.bin", "--to", local_.path()});
  EXPECT_EQ(dropped.status, 1);
  EXPECT_NE(dropped.err.find("17 EVENT_DOWNLOADFAILED"), std::string::npos) << dropped.err;

  qvemu::DataChannelFault stall;
  stall.kind = qvemu::DataChannelFault::kStall;
  stall.value = 100 * 1024;
  camera_->Files().SetFault(stall);
  CliRun stopped = RunCli({"download", "/mnt/sd/big.bin", "--to", local_.path()}, Env(),
                          [](const std::string& out) { return out.find(": 0%") != std::string::npos; });
  EXPECT_EQ(stopped.status, 1);
  EXPECT_NE(stopped.err.find("interrupted: the transfer was stopped"), std::string::npos)
      << stopped.err;
}

TEST_F(CliTest, SnapshotAndTalkReachTheCamera) {
  CliRun snap = Run({"snapshot", local_ / "picture.jpg"});
  EXPECT_RUN_OK(snap);
  EXPECT_NE(snap.out.find("snapshot " + (local_ / "picture.jpg") + ": "), std::string::npos);
  EXPECT_GT(testsupport::ReadFile(local_ / "picture.jpg").size(), 0u);

  // A quarter second of 16-bit mono at 8000 Hz.
  std::string samples(4000, '\x11');
  uint32_t n = static_cast<uint32_t>(samples.size());
  std::string wav = "RIFF" + std::string(4, '\0') + "WAVEfmt " +
                    std::string("\x10\x00\x00\x00\x01\x00\x01\x00\x40\x1f\x00\x00"
                                "\x80\x3e\x00\x00\x02\x00\x10\x00",
                                20) +
                    "data" + std::string(reinterpret_cast<const char*>(&n), 4) + samples;
  testsupport::WriteFile(local_ / "voice.wav", wav);
  CliRun talk = Run({"talk", local_ / "voice.wav"});
  EXPECT_RUN_OK(talk);
  EXPECT_NE(talk.out.find("talk: the camera accepted 8000 Hz, 1 channel"), std::string::npos);
  EXPECT_NE(talk.out.find("sent 0.2 s of audio (4000 bytes"), std::string::npos) << talk.out;
  // The camera hears the samples as they were, in order; the library may
  // drop a frame that waits when talk stops, so the tail may be missing.
  qvemu::TalkStats heard = camera_->Talk();
  EXPECT_GT(heard.audio.size(), 0u);
  EXPECT_TRUE(samples.compare(0, heard.audio.size(), heard.audio) == 0)
      << "the audio changed on the way";

  testsupport::WriteFile(local_ / "noise.wav", "RIFF....WAVEjunk");
  CliRun bad = Run({"talk", local_ / "noise.wav"});
  EXPECT_EQ(bad.status, 1);
  EXPECT_NE(bad.err.find("holds no 16-bit PCM audio"), std::string::npos) << bad.err;
}

TEST_F(CliTest, RecordingsListedByDayAndPlayedIntoAFile) {
  CliRun days = Run({"replay", "days", "--json"});
  EXPECT_RUN_OK(days);
  nlohmann::json j = nlohmann::json::parse(days.out, nullptr, false);
  ASSERT_TRUE(j.contains("days") && j["days"].size() == 3u) << days.out;
  std::string newest = j["days"][0].get<std::string>();

  CliRun day = Run({"replay", "day", newest});
  EXPECT_RUN_OK(day);
  EXPECT_NE(day.out.find(newest + ": 480 minutes recorded in 2 spans\n  08:00 - 12:00\n"
                         "  14:00 - 18:00\n"),
            std::string::npos)
      << day.out;

  CliRun play = Run({"replay", "play", "--from", newest + " 08:00:10", "--seconds", "1", "--to",
                     local_ / "replay.h264"});
  EXPECT_RUN_OK(play);
  EXPECT_NE(play.out.find("H264 frames"), std::string::npos) << play.out;
  size_t at = play.out.find("key frames, ");
  ASSERT_NE(at, std::string::npos) << play.out;
  long bytes = 0;
  ASSERT_EQ(sscanf(play.out.c_str() + at, "key frames, %ld bytes", &bytes), 1) << play.out;
  EXPECT_GT(bytes, 0);
  EXPECT_EQ(testsupport::ReadFile(local_ / "replay.h264").size(), static_cast<size_t>(bytes));

  CliRun nothing = Run({"replay", "play", "--from", "2001-01-01", "--seconds", "1", "--to",
                        local_ / "none.h264"});
  EXPECT_EQ(nothing.status, 1);
}

TEST_F(CliTest, JsonViewsParseBack) {
  struct Case {
    std::vector<std::string> args;
    std::string key;
  } cases[] = {
      {{"time", "get", "--json"}, "zone"},
      {{"replay", "day", "2024-03-05", "--json"}, "spans"},
      {{"config", "get", "lan", "--json"}, "LANConfig"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.args[0] + " " + c.args[1]);
    CliRun run = Run(c.args);
    EXPECT_RUN_OK(run);
    nlohmann::json j = nlohmann::json::parse(run.out, nullptr, false);
    ASSERT_FALSE(j.is_discarded()) << run.out;
    EXPECT_TRUE(j.contains(c.key)) << run.out;
  }
}

}  // namespace

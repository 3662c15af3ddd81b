// quorvel-emu: an emulated camera on the control link, for trying the
// library and testing host programs without hardware.
#include <getopt.h>
#include <signal.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <sstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <atomic>
#include <mutex>

#include "base/compat.h"
#include "config/config_print.h"
#include "emu/camera.h"
#include "emu/camera_farm.h"
#include "emu/config_store.h"
#include "emu/file_service.h"
#include "emu/firmware_image.h"
#include "emu/hostile_rtsp.h"
#include "emu/rtsp_server.h"
#include "emu/rtsp_settings.h"
#include "emu/system_replies.h"

namespace {

volatile sig_atomic_t g_stop = 0;

void OnSignal(int) { g_stop = 1; }

void Usage(FILE* out) {
  fprintf(out,
          "usage: quorvel-emu [options]\n"
          "  --port N             control port (default: a free port, printed on start)\n"
          "  --bind ADDR          address to listen on (default 127.0.0.1)\n"
          "  --user NAME          login user (default admin)\n"
          "  --password TEXT      login password (default admin)\n"
          "  --session-id TEXT    session id given in the login reply\n"
          "  --config FILE        configuration document (default: built-in)\n"
          "  --user-data TEXT     user data answered to code 1034\n"
          "  --no-front-replay    leave front_replay out of the ability list\n"
          "  --alarm-every N      send an alarm to every logged-in link each N seconds\n"
          "  --alarm-code N       Alarm_code of those alarms (default 1)\n"
          "  --talk-save FILE     write the talk audio received to FILE\n"
          "files:\n"
          "  --files DIR          serve downloads from DIR and keep uploads there\n"
          "  --file-mode MODE     channel (default: a data connection per file) or link\n"
          "                       (files inside the control link)\n"
          "  --put-file NAME=FILE offer FILE's bytes for download as NAME\n"
          "  --data-fault KIND:N  wrong-length:N (announce N bytes more), stall:N or\n"
          "                       close:N (after N bytes of the file), wrong-flag:0\n"
          "  --silent-files       leave transfer requests unanswered\n"
          "  --make-firmware FILE write a firmware image this camera accepts to FILE, and exit\n"
          "replay:\n"
          "  --recording-seconds N  length of each recording file (default 60)\n"
          "  --replay-fragment N  data bytes in one media packet at most (default 8192)\n"
          "  --replay-fault KIND:N  hit video frame N of every play: skip-sequence,\n"
          "                       long-packet (claims more data than it has),\n"
          "                       long-message (announces more than the message holds)\n"
          "                       or oversize (a 2.5 MiB frame)\n"
          "faults:\n"
          "  --silent-login       never answer a login\n"
          "  --refuse-login[=F]   refuse every login with flag F (default -1)\n"
          "  --no-heartbeat       leave heartbeats unanswered\n"
          "  --delay-ms N         delay every reply by N milliseconds\n"
          "  --no-talk            refuse every talk start as audio disabled (-3)\n"
          "  --talk-refuse F      refuse every talk start with flag F (-1 busy, -2 parameters)\n"
          "  --drop-links-every MS  drop every control link each MS milliseconds\n"
          "  --hostile SEED       now and then send hostile replies, frames, files,\n"
          "                       discovery answers and RTSP bytes; the same SEED\n"
          "                       gives the same faults for the same traffic\n"
          "  --quiet              print only the first line (and the RTSP line)\n"
          "live stream:\n"
          "  --rtsp-port N        also serve RTSP on port N (0: a free port, printed on\n"
          "                       start) with the login user and password\n"
          "  --rtsp-audio KIND    audio of the RTSP streams: g711 (default), aac, none\n"
          "  --rtsp-size WxH      H.264 and /mpeg4 picture size (default 320x240)\n"
          "  --rtsp-silent-after MS  every stream stops sending MS ms after it starts\n"
          "  --rtsp-bitrate KBPS  encoder bit rate (default 512)\n"
          "  --rtsp-pattern NAME  test picture (videotestsrc pattern, default ball)\n"
          "  --rtsp-shared        one encoder per path, shared by all clients\n"
          "discovery and farm:\n"
          "  --discovery          answer LAN discovery (UDP broadcast) as a camera does\n"
          "  --cameras N          run N cameras in this process, all answering discovery\n"
          "  --serial TEXT        serial number of the (first) camera (default QVEMU-0001);\n"
          "                       the next ones count up its trailing digits\n"
          "  --address ADDR       the first camera listens on ADDR, the next on ADDR+1, ...\n"
          "                       (the addresses must be local to this machine)\n"
          "  --device-type TEXT   device type announced (default IPC)\n"
          "  --discovery-port N   discovery port (default 3001)\n"
          "  --search-root NAME   root element of the discovery answers (default XML_BRELLWICK)\n"
          "  --reply-spread MS    spread the farm's answers over MS milliseconds\n"
          "  --help\n");
}

bool ParseInt(const char* text, long min, long max, long* out) {
  errno = 0;
  char* end = nullptr;
  long v = strtol(text, &end, 10);
  if (errno || end == text || *end || v < min || v > max) return false;
  *out = v;
  return true;
}

bool ReadFile(const char* path, std::string* text) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  std::ostringstream s;
  s << in.rdbuf();
  *text = s.str();
  return true;
}

// KIND:N with KIND wrong-length, stall or close.
bool ParseDataFault(const char* text, qvemu::DataChannelFault* fault) {
  std::string arg = text;
  size_t colon = arg.find(':');
  if (colon == std::string::npos) return false;
  std::string kind = arg.substr(0, colon);
  long value = 0;
  if (!ParseInt(arg.c_str() + colon + 1, INT_MIN, INT_MAX, &value)) return false;
  if (kind == "wrong-length") {
    fault->kind = qvemu::DataChannelFault::kWrongLength;
  } else if (kind == "stall" && value >= 0) {
    fault->kind = qvemu::DataChannelFault::kStall;
  } else if (kind == "close" && value >= 0) {
    fault->kind = qvemu::DataChannelFault::kCloseEarly;
  } else if (kind == "wrong-flag") {
    fault->kind = qvemu::DataChannelFault::kWrongFlag;
  } else {
    return false;
  }
  fault->value = value;
  return true;
}

// KIND:N with KIND skip-sequence, long-packet, long-message or oversize.
bool ParseReplayFault(const char* text, qvemu::ReplayFault* fault, long* frame) {
  static const struct {
    const char* name;
    qvemu::ReplayFault fault;
  } kKinds[] = {{"skip-sequence", qvemu::ReplayFault::kSkipSequence},
                {"long-packet", qvemu::ReplayFault::kPacketLongerThanData},
                {"long-message", qvemu::ReplayFault::kPosBeyondMessage},
                {"oversize", qvemu::ReplayFault::kOversizeFrame}};
  std::string arg = text;
  size_t colon = arg.find(':');
  if (colon == std::string::npos || !ParseInt(arg.c_str() + colon + 1, 0, INT_MAX, frame)) {
    return false;
  }
  for (const auto& k : kKinds) {
    if (arg.compare(0, colon, k.name) == 0 && strlen(k.name) == colon) {
      *fault = k.fault;
      return true;
    }
  }
  return false;
}

qvemu::AlarmSpec AlarmNow(int code, unsigned count) {
  time_t now = time(nullptr);
  struct tm t;
  localtime_r(&now, &t);
  qvemu::AlarmSpec a = qvemu::AlarmAt(t, code);
  a.level = 1;
  a.data = "emulated alarm " + std::to_string(count);
  return a;
}

// Starts the cameras of a farm (one unless --cameras) with the camera
// options and prints where each listens; the first line stays
// "quorvel-emu listening on ADDRESS:PORT" (the first camera).
bool StartFarm(const qvemu::CameraOptions& options, qvemu::FarmOptions* farm,
               std::unique_ptr<qvemu::CameraFarm>* out) {
  farm->camera = options;
  farm->bind_address = options.bind_address;
  farm->first_port = options.port;
  farm->discovery.verbose = options.verbose;
  out->reset(new qvemu::CameraFarm(*farm));
  std::string error;
  if (!(*out)->Start(&error)) {
    fprintf(stderr, "quorvel-emu: %s\n", error.c_str());
    return false;
  }
  printf("quorvel-emu listening on %s:%u\n", (*out)->Address(0).c_str(), (*out)->At(0).Port());
  printf("quorvel-emu farm: %d cameras, discovery on UDP port %u\n", (*out)->Size(),
         farm->discovery.port);
  for (int i = 0; options.verbose && i < (*out)->Size(); ++i) {
    printf("camera %s on %s:%u\n", (*out)->Identity(i).serial.c_str(),
           (*out)->Address(i).c_str(), (*out)->At(i).Port());
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  enum {
    kPort = 1000, kBind, kUser, kPassword, kSessionId, kConfig, kUserData, kNoFrontReplay,
    kAlarmEvery, kAlarmCode, kSilentLogin, kRefuseLogin, kNoHeartbeat, kDelayMs, kQuiet, kHelp,
    kRtspPort, kRtspAudio, kRtspSize, kRtspSilentAfter, kRtspBitrate, kRtspPattern, kRtspShared,
    kTalkSave, kNoTalk, kTalkRefuse, kDiscovery, kCameras, kSerial, kAddress, kDeviceType,
    kDiscoveryPort, kSearchRoot, kReplySpread,
    kFiles, kFileMode, kPutFile, kDataFault, kSilentFiles,
    kRecordingSeconds, kReplayFragment, kReplayFault, kHostile, kDropLinksEvery, kMakeFirmware
  };
  static const option kOptions[] = {
      {"port", required_argument, nullptr, kPort},
      {"bind", required_argument, nullptr, kBind},
      {"user", required_argument, nullptr, kUser},
      {"password", required_argument, nullptr, kPassword},
      {"session-id", required_argument, nullptr, kSessionId},
      {"config", required_argument, nullptr, kConfig},
      {"user-data", required_argument, nullptr, kUserData},
      {"no-front-replay", no_argument, nullptr, kNoFrontReplay},
      {"alarm-every", required_argument, nullptr, kAlarmEvery},
      {"alarm-code", required_argument, nullptr, kAlarmCode},
      {"silent-login", no_argument, nullptr, kSilentLogin},
      {"refuse-login", optional_argument, nullptr, kRefuseLogin},
      {"no-heartbeat", no_argument, nullptr, kNoHeartbeat},
      {"delay-ms", required_argument, nullptr, kDelayMs},
      {"quiet", no_argument, nullptr, kQuiet},
      {"help", no_argument, nullptr, kHelp},
      {"rtsp-port", required_argument, nullptr, kRtspPort},
      {"rtsp-audio", required_argument, nullptr, kRtspAudio},
      {"rtsp-size", required_argument, nullptr, kRtspSize},
      {"rtsp-silent-after", required_argument, nullptr, kRtspSilentAfter},
      {"rtsp-bitrate", required_argument, nullptr, kRtspBitrate},
      {"rtsp-pattern", required_argument, nullptr, kRtspPattern},
      {"rtsp-shared", no_argument, nullptr, kRtspShared},
      {"talk-save", required_argument, nullptr, kTalkSave},
      {"no-talk", no_argument, nullptr, kNoTalk},
      {"talk-refuse", required_argument, nullptr, kTalkRefuse},
      {"discovery", no_argument, nullptr, kDiscovery},
      {"cameras", required_argument, nullptr, kCameras},
      {"serial", required_argument, nullptr, kSerial},
      {"address", required_argument, nullptr, kAddress},
      {"device-type", required_argument, nullptr, kDeviceType},
      {"discovery-port", required_argument, nullptr, kDiscoveryPort},
      {"search-root", required_argument, nullptr, kSearchRoot},
      {"reply-spread", required_argument, nullptr, kReplySpread},
      {"files", required_argument, nullptr, kFiles},
      {"file-mode", required_argument, nullptr, kFileMode},
      {"put-file", required_argument, nullptr, kPutFile},
      {"data-fault", required_argument, nullptr, kDataFault},
      {"silent-files", no_argument, nullptr, kSilentFiles},
      {"recording-seconds", required_argument, nullptr, kRecordingSeconds},
      {"replay-fragment", required_argument, nullptr, kReplayFragment},
      {"replay-fault", required_argument, nullptr, kReplayFault},
      {"hostile", required_argument, nullptr, kHostile},
      {"drop-links-every", required_argument, nullptr, kDropLinksEvery},
      {"make-firmware", required_argument, nullptr, kMakeFirmware},
      {nullptr, 0, nullptr, 0},
  };

  // The configuration model's own messages would mix into the camera's output.
  qvconfig::SetConfigMessages(false);
  qvemu::CameraOptions options;
  options.verbose = true;
  qvemu::LoginReply login = qvemu::LoginReply::Accept;
  long refuse_flag = -1, alarm_every = 0, alarm_code = 1, delay_ms = 0, number = 0;
  bool heartbeat = true;
  const char* config_path = nullptr;
  long rtsp_port = -1;
  long drop_every = 0;
  qvemu::RtspOptions rtsp;
  const char* talk_save = nullptr;
  bool talk = true;
  long talk_refuse = 0;
  qvemu::FarmOptions farm;
  bool discovery = false;
  qvemu::DataChannelFault data_fault;
  bool silent_files = false;
  std::vector<std::pair<std::string, std::string>> put_files;
  long replay_fragment = 8192, replay_fault_frame = -1;
  qvemu::ReplayFault replay_fault = qvemu::ReplayFault::kNone;
  int c;
  while ((c = getopt_long(argc, argv, "", kOptions, nullptr)) != -1) {
    bool ok = true;
    switch (c) {
      case kPort:
        ok = ParseInt(optarg, 0, 65535, &number);
        options.port = static_cast<uint16_t>(number);
        break;
      case kBind: options.bind_address = optarg; break;
      case kUser: options.user = optarg; break;
      case kPassword: options.password = optarg; break;
      case kSessionId: options.session_id = optarg; break;
      case kConfig: config_path = optarg; break;
      case kUserData: options.user_data = optarg; break;
      case kNoFrontReplay: options.front_replay = false; break;
      case kAlarmEvery: ok = ParseInt(optarg, 1, 86400, &alarm_every); break;
      case kAlarmCode: ok = ParseInt(optarg, INT_MIN, INT_MAX, &alarm_code); break;
      case kSilentLogin: login = qvemu::LoginReply::Silent; break;
      case kRefuseLogin:
        login = qvemu::LoginReply::Refuse;
        ok = !optarg || ParseInt(optarg, INT_MIN, INT_MAX, &refuse_flag);
        break;
      case kNoHeartbeat: heartbeat = false; break;
      case kDelayMs: ok = ParseInt(optarg, 0, 600000, &delay_ms); break;
      case kQuiet: options.verbose = false; break;
      case kHelp: Usage(stdout); return 0;
      case kRtspPort: ok = ParseInt(optarg, 0, 65535, &rtsp_port); break;
      case kRtspAudio:
        ok = std::string(optarg) == "g711" || std::string(optarg) == "aac" ||
             std::string(optarg) == "none";
        rtsp.audio = std::string(optarg) == "aac"    ? qvemu::RtspAudio::kAac
                     : std::string(optarg) == "none" ? qvemu::RtspAudio::kNone
                                                     : qvemu::RtspAudio::kG711;
        break;
      case kRtspSize:
        ok = sscanf(optarg, "%dx%d", &rtsp.width, &rtsp.height) == 2 && rtsp.width >= 16 &&
             rtsp.height >= 16 && rtsp.width <= 4096 && rtsp.height <= 4096;
        break;
      case kRtspBitrate:
        ok = ParseInt(optarg, 16, 100000, &number);
        rtsp.bitrate_kbps = static_cast<int>(number);
        break;
      case kRtspPattern:
        rtsp.pattern = optarg;
        ok = rtsp.pattern.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-") ==
                 std::string::npos && !rtsp.pattern.empty();
        break;
      case kRtspShared: rtsp.shared = true; break;
      case kRtspSilentAfter:
        ok = ParseInt(optarg, 1, 86400000, &number);
        rtsp.silent_after_ms = static_cast<int>(number);
        break;
      case kTalkSave: talk_save = optarg; break;
      case kNoTalk: talk = false; break;
      case kTalkRefuse: ok = ParseInt(optarg, -3, -1, &talk_refuse); break;
      case kDiscovery: discovery = true; break;
      case kCameras:
        ok = ParseInt(optarg, 1, 1000, &number);
        farm.cameras = static_cast<int>(number);
        discovery = true;
        break;
      case kSerial: farm.serial = optarg; ok = !farm.serial.empty(); break;
      case kAddress:
        farm.first_address = optarg;
        ok = !qvemu::CameraFarm::NthAddress(optarg, 0).empty();
        break;
      case kDeviceType: farm.identity.device_type = optarg; break;
      case kDiscoveryPort:
        ok = ParseInt(optarg, 1, 65535, &number);
        farm.discovery.port = static_cast<uint16_t>(number);
        break;
      case kSearchRoot: farm.discovery.reply_root = optarg; ok = !farm.discovery.reply_root.empty(); break;
      case kReplySpread:
        ok = ParseInt(optarg, 0, 60000, &number);
        farm.discovery.reply_spread_ms = static_cast<int>(number);
        break;
      case kFiles: options.files_dir = optarg; break;
      case kFileMode:
        ok = std::string(optarg) == "channel" || std::string(optarg) == "link";
        options.file_mode =
            std::string(optarg) == "link" ? qvemu::FileMode::kLink : qvemu::FileMode::kChannel;
        break;
      case kPutFile: {
        std::string arg = optarg;
        size_t eq = arg.find('=');
        ok = eq != std::string::npos && eq > 0 && eq + 1 < arg.size();
        if (ok) put_files.emplace_back(arg.substr(0, eq), arg.substr(eq + 1));
        break;
      }
      case kDataFault: ok = ParseDataFault(optarg, &data_fault); break;
      case kSilentFiles: silent_files = true; break;
      case kMakeFirmware: {
        std::string payload(64 * 1024, '\0');
        for (size_t i = 0; i < payload.size(); ++i) payload[i] = static_cast<char>(i * 31 + 7);
        std::ofstream out(optarg, std::ios::binary);
        out << qvemu::MakeFirmwareImage(2, payload);
        if (!out.flush()) {
          fprintf(stderr, "quorvel-emu: cannot write %s\n", optarg);
          return 1;
        }
        return 0;
      }
      case kRecordingSeconds:
        ok = ParseInt(optarg, 1, 86400, &number);
        options.recording_seconds = static_cast<int>(number);
        break;
      case kReplayFragment: ok = ParseInt(optarg, 1, 65535, &replay_fragment); break;
      case kReplayFault: ok = ParseReplayFault(optarg, &replay_fault, &replay_fault_frame); break;
      case kDropLinksEvery: ok = ParseInt(optarg, 1, 86400000, &drop_every); break;
      case kHostile: {
        errno = 0;
        char* end = nullptr;
        options.hostile_seed = strtoull(optarg, &end, 0);
        options.hostile = true;
        ok = errno == 0 && end != optarg && *end == '\0';
        break;
      }
      default: ok = false;
    }
    if (!ok) {
      if (c != '?') fprintf(stderr, "quorvel-emu: bad value for --%s\n", kOptions[c - kPort].name);
      Usage(stderr);
      return 2;
    }
  }
  if (optind < argc) {
    fprintf(stderr, "quorvel-emu: unexpected argument %s\n", argv[optind]);
    Usage(stderr);
    return 2;
  }
  if (config_path) {
    if (!ReadFile(config_path, &options.config_document)) {
      fprintf(stderr, "quorvel-emu: cannot read %s\n", config_path);
      return 2;
    }
    if (!qvemu::ConfigStore().Load(options.config_document)) {
      fprintf(stderr, "quorvel-emu: %s is not a configuration document (root IPCConfig)\n",
              config_path);
      return 2;
    }
  }

  struct sigaction sa = {};
  sa.sa_handler = OnSignal;
  sigaction(SIGINT, &sa, nullptr);
  sigaction(SIGTERM, &sa, nullptr);
  signal(SIGPIPE, SIG_IGN);

  // One camera, or a farm of them answering discovery.
  std::unique_ptr<qvemu::Camera> single;
  std::unique_ptr<qvemu::CameraFarm> cameras;
  std::vector<qvemu::Camera*> all;
  if (discovery) {
    if (!StartFarm(options, &farm, &cameras)) return 1;
    for (int i = 0; i < cameras->Size(); ++i) all.push_back(&cameras->At(i));
  } else {
    single.reset(new qvemu::Camera(options));
    if (!single->Start()) {
      fprintf(stderr, "quorvel-emu: cannot listen on %s:%u\n", options.bind_address.c_str(),
              options.port);
      return 1;
    }
    all.push_back(single.get());
    printf("quorvel-emu listening on %s:%u\n", options.bind_address.c_str(), single->Port());
  }
  for (qvemu::Camera* camera : all) {
    camera->SetLoginReply(login, static_cast<int>(refuse_flag));
    camera->SetHeartbeatReplies(heartbeat);
    camera->SetReplyDelayMs(static_cast<int>(delay_ms));
    camera->SetTalkEnabled(talk);
    camera->SetTalkRefusal(static_cast<int>(talk_refuse));
    if (talk_save != nullptr && !camera->SetTalkSaveFile(talk_save)) {
      fprintf(stderr, "quorvel-emu: cannot write %s\n", talk_save);
      return 2;
    }
    camera->Files().SetFault(data_fault);
    camera->Files().SetAnswerRequests(!silent_files);
    camera->SetReplayFragment(static_cast<int>(replay_fragment));
    camera->SetReplayFault(replay_fault, static_cast<int>(replay_fault_frame));
    for (const auto& put : put_files) {
      std::string bytes;
      if (!ReadFile(put.second.c_str(), &bytes) || !camera->Files().Store().Put(put.first, bytes)) {
        fprintf(stderr, "quorvel-emu: cannot offer %s as %s\n", put.second.c_str(),
                put.first.c_str());
        return 2;
      }
    }
  }
  qvemu::RtspServer rtsp_server;
  qvemu::HostileRtspProxy rtsp_proxy;
  if (rtsp_port >= 0) {
    rtsp.user = options.user;
    rtsp.password = options.password;
    if (!rtsp_server.Start(rtsp, static_cast<int>(rtsp_port))) {
      fprintf(stderr, "quorvel-emu: cannot serve RTSP on 127.0.0.1:%ld\n", rtsp_port);
      return 1;
    }
    int announced = rtsp_server.Port();
    if (options.hostile) {
      if (!rtsp_proxy.Start(rtsp_server.Port(), options.hostile_seed)) {
        fprintf(stderr, "quorvel-emu: cannot start the hostile RTSP relay\n");
        return 1;
      }
      announced = rtsp_proxy.Port();
    }
    printf("quorvel-emu rtsp on 127.0.0.1:%d\n", announced);
  }
  // A configuration set that changes the stream settings restarts the RTSP
  // server with them, on the same port, from the main loop.
  std::mutex rtsp_mu;
  qvemu::RtspOptions rtsp_next = rtsp;
  std::atomic<bool> rtsp_changed{false};
  if (rtsp_port >= 0) {
    for (qvemu::Camera* camera : all) camera->SetConfigListener([&](long code, const IPCConfig& cfg) {
      if (!qvemu::SetCodeTouchesRtsp(code)) return;
      std::lock_guard<std::mutex> hold(rtsp_mu);
      rtsp_next = qvemu::RtspOptionsFromConfig(cfg, rtsp_next, options.user, options.password);
      rtsp_changed = true;
    });
  }
  if (options.verbose) {
    printf("login: user \"%s\", password \"%s\"; stop with Ctrl-C\n", options.user.c_str(),
           options.password.c_str());
  }
  fflush(stdout);

  unsigned long next_alarm = GetTickCount() + static_cast<unsigned long>(alarm_every) * 1000;
  unsigned alarms = 0;
  unsigned long next_drop = GetTickCount() + static_cast<unsigned long>(drop_every);
  while (!g_stop) {
    SleepMs(100);
    if (rtsp_changed.exchange(false)) {
      std::lock_guard<std::mutex> hold(rtsp_mu);
      int port = rtsp_server.Port();
      rtsp_server.Stop();
      if (!rtsp_server.Start(rtsp_next, port)) {
        fprintf(stderr, "quorvel-emu: cannot serve RTSP on 127.0.0.1:%d again\n", port);
      } else if (options.verbose) {
        printf("rtsp restarted: %dx%d, %d fps, %d kbit/s, %s\n", rtsp_next.width,
               rtsp_next.height, rtsp_next.fps, rtsp_next.bitrate_kbps,
               rtsp_next.user.empty() ? "no authentication" : "authentication");
        fflush(stdout);
      }
    }
    if (drop_every > 0 && GetTickCount() >= next_drop) {
      next_drop = GetTickCount() + static_cast<unsigned long>(drop_every);
      for (qvemu::Camera* each : all) each->CloseLinks();
    }
    if (alarm_every > 0 && GetTickCount() >= next_alarm) {
      next_alarm += static_cast<unsigned long>(alarm_every) * 1000;
      qvemu::AlarmSpec alarm = AlarmNow(static_cast<int>(alarm_code), ++alarms);
      for (qvemu::Camera* each : all) each->SendAlarm({alarm});
    }
  }
  rtsp_proxy.Stop();
  rtsp_server.Stop();
  if (cameras) cameras->Stop();
  if (single) single->Stop();
  if (options.verbose) printf("quorvel-emu stopped\n");
  return 0;
}

#include "emu/replay_server.h"

#include <algorithm>
#include <climits>

#include <tinyxml.h>

#include <cstdlib>

#include "emu/camera_behaviour.h"
#include "emu/envelope.h"
#include "emu/frame_io.h"
#include "emu/hostile.h"

namespace qvemu {
namespace {

constexpr long kPlay = 0;
constexpr long kSeek = 5;
const char kTimeline[] = "TIMELINE_REPLAY_CONTROL_MESSAGE";

Reply Answer(const ReceivedFrame& f, int flag) {
  return Reply{f.type, f.code, std::to_string(flag), ""};
}

}  // namespace

ReplayServer::ReplayServer(const CameraOptions& options)
    : front_replay_(options.front_replay), store_(options.recording_seconds) {
  settings_.hostile = options.hostile || options.hostile_replay;
  settings_.hostile_seed = options.hostile_seed;
}

void ReplayServer::Install(CameraBehaviour* behaviour) {
  auto handler = [this, behaviour](LinkState* link, const ReceivedFrame& f,
                                   std::vector<Reply>* out) {
    OnRequest(behaviour, link, f, out);
  };
  behaviour->SetTypeHandler("REPLAY_CONTROL_MESSAGE", handler);
  behaviour->SetTypeHandler(kTimeline, handler);
}

void ReplayServer::OnRequest(CameraBehaviour* behaviour, LinkState* link, const ReceivedFrame& f,
                             std::vector<Reply>* out) {
  BodyXml body(f.body);
  const TiXmlElement* param = body.Find("REQUEST_PARAM");
  long code = atol(f.code.c_str());
  if (code == kPlay && BodyXml::Attr(param, "PlayParam") == "1") {
    Start(behaviour->CameraNowLocked(), link, f, out);
    return;
  }
  auto part = link->parts.find("replay");
  std::shared_ptr<ReplayPlayer> player =
      part != link->parts.end() ? std::static_pointer_cast<ReplayPlayer>(part->second) : nullptr;
  bool ok = false;
  if (player) {
    long value = atol(BodyXml::Attr(param, "PlayParam").c_str());
    if (code == kSeek) {
      bool timeline = f.type == kTimeline;
      long at = atol(BodyXml::Attr(param, timeline ? "PlayTimestampInsec" : "StartPos").c_str());
      long seconds = timeline ? at - static_cast<long>(player->Current().start) : at;
      value = seconds * RecordingStore::kFramesPerSecond;
    }
    ok = player->Control(static_cast<int>(code), value);
  }
  std::lock_guard<std::mutex> lock(mu_);
  ++stats_.controls;
  out->push_back(Answer(f, ok ? 0 : -1));
}

void ReplayServer::Start(time_t camera_now, LinkState* link, const ReceivedFrame& f,
                         std::vector<Reply>* out) {
  BodyXml body(f.body);
  const TiXmlElement* param = body.Find("REQUEST_PARAM");
  Recording r;
  int frame = 0;
  bool found = false;
  if (front_replay_ && f.type == kTimeline) {
    time_t when = atol(BodyXml::Attr(param, "PlayTimestampInsec").c_str());
    found = store_.ByTime(when, camera_now, &r);
    // A time outside every recording finds nothing; only a found one sets the frame.
    if (found) {
      long long offset = static_cast<long long>(when - r.start) * RecordingStore::kFramesPerSecond;
      frame = static_cast<int>(std::max(0LL, std::min(offset, static_cast<long long>(INT_MAX))));
    }
  } else if (front_replay_) {
    found = store_.ByName(BodyXml::Attr(param, "FileName"), camera_now, &r);
  }
  std::lock_guard<std::mutex> lock(mu_);
  if (!found) {
    ++stats_.refusals;
    out->push_back(Answer(f, -1));
    return;
  }
  auto& part = link->parts["replay"];
  if (!part) part = std::make_shared<ReplayPlayer>(link->send);
  std::shared_ptr<ReplayPlayer> player = std::static_pointer_cast<ReplayPlayer>(part);
  ReplaySettings settings = settings_;
  settings.hostile_play = ++plays_;
  std::string start_body;
  if (settings.hostile) {
    HostileDice dice = DiceFor(settings.hostile_seed, "replay-start", settings.hostile_play);
    start_body = HostileReplayStart(&dice, RecordingStore::VideoParamBlock(),
                                    RecordingStore::AudioParamBlock(), r.name);
  } else {
    start_body = "<RESPONSE_PARAM VideoSeconds=\"" + std::to_string(r.seconds) + "\" VideoParam=\"" +
                 Base64Encode(RecordingStore::VideoParamBlock()) + "\" AudioParam=\"" +
                 Base64Encode(RecordingStore::AudioParamBlock()) + "\" FileName=\"" +
                 EscapeAttr(r.name) + "\" />";
  }
  std::string start = EncodeFrame(MakeEnvelope(f.type, "0", "0", start_body));
  std::string end = EncodeFrame(MakeEnvelope(f.type, "7", "1", ""));
  player->Open(r, frame, settings, start, end);
  ++stats_.starts;
  stats_.recording = r.name;
  last_ = player->StateCell();
}

void ReplayServer::SetFragment(int bytes) {
  std::lock_guard<std::mutex> lock(mu_);
  settings_.fragment = bytes;
}

void ReplayServer::SetSequenceStart(uint16_t sequence) {
  std::lock_guard<std::mutex> lock(mu_);
  settings_.sequence_start = sequence;
}

void ReplayServer::SetFault(ReplayFault fault, int video_frame) {
  std::lock_guard<std::mutex> lock(mu_);
  settings_.fault = fault;
  settings_.fault_frame = video_frame;
}

ReplayStats ReplayServer::Stats() const {
  std::lock_guard<std::mutex> lock(mu_);
  ReplayStats stats = stats_;
  if (last_) stats.state = last_->Get();
  return stats;
}

}  // namespace qvemu

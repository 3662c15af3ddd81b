#include "emu/replay_player.h"

#include <algorithm>
#include <cstdio>
#include <optional>

#include "emu/envelope.h"
#include "emu/frame_io.h"

namespace qvemu {
namespace {

constexpr int kHeaderSize = 20;
constexpr int kWhole = 17, kFirst = 1, kMiddle = 0, kLast = 16;
constexpr int kMaxSpeed = 65536;
constexpr int kMaxSlowDown = 64;
constexpr size_t kOversizeBytes = 2621440;  // 2.5 MiB: more than the host's assembly buffer

void Put(std::string* out, uint32_t v, int bytes) {
  for (int i = 0; i < bytes; ++i) out->push_back(static_cast<char>((v >> (8 * i)) & 0xFF));
}

std::string PacketHeader(uint32_t tick, uint16_t sequence, uint32_t length, int type, bool key,
                         int kind, uint32_t index) {
  std::string h;
  h.reserve(kHeaderSize);
  Put(&h, tick, 4);
  Put(&h, tick, 4);
  Put(&h, sequence, 2);
  Put(&h, length, 2);
  h.push_back(static_cast<char>(type));
  h.push_back(key ? 1 : 0);
  h.push_back(static_cast<char>(kind));
  h.push_back(0);
  Put(&h, index, 4);
  return h;
}

// A media message: the envelope naming where the packet starts in the
// payload (behind the text and 4 zero bytes) and its length, then the packet.
std::string MediaMessage(const std::string& code, const std::string& packet, int announced) {
  int start = 0;
  std::string text;
  for (;;) {  // the offset is part of the text it follows: settle it
    text = MakeEnvelope("MEDIA_DATA_MESSAGE", code, "0",
                        "<POS StartPos=\"" + std::to_string(start) + "\" DataLen=\"" +
                            std::to_string(announced) + "\" />");
    if (static_cast<int>(text.size()) + 4 == start) break;
    start = static_cast<int>(text.size()) + 4;
  }
  return EncodeFrame(text + std::string(4, '\0') + packet);
}

}  // namespace

ReplayPlayer::ReplayPlayer(Sender send) : send_(std::move(send)) {
  thread_ = std::thread(&ReplayPlayer::Run, this);
}

ReplayPlayer::~ReplayPlayer() {
  {
    std::lock_guard<std::mutex> lock(mu_);
    stop_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void ReplayPlayer::Open(const Recording& r, int frame, const ReplaySettings& settings,
                        const std::string& start_reply, const std::string& end_message) {
  std::lock_guard<std::mutex> lock(mu_);
  recording_ = r;
  settings_ = settings;
  pending_ = start_reply;
  end_message_ = end_message;
  sequence_ = settings.sequence_start;
  ReplayState fresh;
  fresh.open = true;
  fresh.next_frame = frame;
  fresh.frames = state_.frames;
  fresh.packets = state_.packets;
  state_ = fresh;
  steps_ = 0;
  ++generation_;
  due_ = std::chrono::steady_clock::now();
  cell_->Set(state_);
  changed_.notify_all();
}

bool ReplayPlayer::Control(int action, long parameter) {
  std::lock_guard<std::mutex> lock(mu_);
  if (!state_.open) return false;
  switch (action) {
    case 0:
      state_.paused = false;
      state_.speed_num = state_.speed_den = 1;
      steps_ = 0;
      break;
    case 1: state_.paused = true; break;
    case 2:
      state_.paused = false;
      steps_ = 0;
      break;
    case 3:
      state_.speed_num = static_cast<int>(std::min<long>(std::max<long>(parameter, 1), kMaxSpeed));
      state_.speed_den = 1;
      break;
    case 4:
      state_.speed_num = 1;
      state_.speed_den = static_cast<int>(std::min<long>(std::max<long>(parameter, 1), kMaxSlowDown));
      break;
    case 5:
      if (parameter < 0 || parameter >= RecordingStore::VideoFrames(recording_)) return false;
      state_.next_frame = static_cast<int>(parameter);
      break;
    case 6: steps_ += static_cast<int>(std::min<long>(std::max<long>(parameter, 1), 1000)); break;
    case 7: state_.open = false; break;
    default: return false;
  }
  due_ = std::chrono::steady_clock::now();
  cell_->Set(state_);
  changed_.notify_all();
  return true;
}

std::chrono::steady_clock::duration ReplayPlayer::Interval() const {
  return std::chrono::microseconds(1000LL * RecordingStore::kFrameMs * state_.speed_den /
                                   state_.speed_num);
}

void ReplayPlayer::Run() {
  std::optional<HostileDice> dice;  // of the play of dice_generation
  uint64_t dice_generation = 0;
  std::unique_lock<std::mutex> lock(mu_);
  for (;;) {
    changed_.wait(lock, [this] {
      return stop_ || !pending_.empty() ||
             (state_.open && !state_.ended && (!state_.paused || steps_ > 0));
    });
    if (stop_) return;
    if (!pending_.empty()) {
      std::string reply;
      reply.swap(pending_);
      lock.unlock();
      bool sent = send_(reply);
      lock.lock();
      if (!sent) state_.open = false;
      cell_->Set(state_);
      continue;
    }
    auto now = std::chrono::steady_clock::now();
    if (due_ > now) {
      changed_.wait_until(lock, due_);
      continue;  // the state may have changed meanwhile
    }
    int index = state_.next_frame++;
    if (state_.paused && steps_ > 0) --steps_;
    due_ += Interval();
    if (due_ < now - std::chrono::seconds(1)) due_ = now;  // do not race to catch up after a stall
    ReplaySettings settings = settings_;
    uint16_t sequence = sequence_;
    uint64_t generation = generation_;
    bool last = state_.next_frame >= RecordingStore::VideoFrames(recording_);
    std::string end = last ? end_message_ : std::string();
    lock.unlock();
    if (!settings.hostile) {
      dice.reset();
    } else if (!dice || dice_generation != generation) {
      dice.emplace(DiceFor(settings.hostile_seed, "replay", settings.hostile_play));
      dice_generation = generation;
    }
    bool sent = SendStep(index, settings, dice ? &*dice : nullptr, &sequence);
    if (sent && last) sent = send_(end);
    lock.lock();
    if (generation != generation_) continue;  // a new play began meanwhile
    sequence_ = sequence;
    if (!sent || last) {
      state_.ended = last;
      state_.open = false;
    }
    cell_->Set(state_);
  }
}

bool ReplayPlayer::SendStep(int index, const ReplaySettings& settings, HostileDice* dice,
                            uint16_t* sequence) {
  bool faulty = settings.fault != ReplayFault::kNone && index == settings.fault_frame;
  std::string video = faulty && settings.fault == ReplayFault::kOversizeFrame
                          ? std::string(kOversizeBytes, 'O')
                          : RecordingStore::VideoFrame(index);
  uint64_t packets = 0;
  bool ok = SendFrame(video, index, 0, RecordingStore::IsKeyFrame(index), settings, dice,
                      sequence, &packets) &&
            SendFrame(RecordingStore::AudioFrame(index), index, 1, false, settings, dice,
                      sequence, &packets);
  std::lock_guard<std::mutex> lock(mu_);
  state_.packets += packets;
  if (ok) state_.frames += 2;
  return ok;
}

bool ReplayPlayer::SendFrame(const std::string& data, int index, int kind, bool key,
                             const ReplaySettings& settings, HostileDice* dice,
                             uint16_t* sequence, uint64_t* packets) {
  bool faulty = kind == 0 && index == settings.fault_frame;
  uint32_t tick = static_cast<uint32_t>(index) * RecordingStore::kFrameMs;
  size_t piece = static_cast<size_t>(std::max(1, std::min(settings.fragment, 65535)));
  size_t pieces = data.empty() ? 1 : (data.size() + piece - 1) / piece;
  for (size_t p = 0; p < pieces; ++p) {
    size_t offset = p * piece;
    size_t len = std::min(piece, data.size() - offset);
    int type = pieces == 1 ? kWhole : p == 0 ? kFirst : p + 1 == pieces ? kLast : kMiddle;
    if (faulty && p == 1 && settings.fault == ReplayFault::kSkipSequence) ++*sequence;
    uint32_t claimed = static_cast<uint32_t>(len);
    if (faulty && p == 0 && settings.fault == ReplayFault::kPacketLongerThanData) claimed += 100;
    std::string packet = PacketHeader(tick, *sequence, claimed, type, key, kind,
                                      static_cast<uint32_t>(index)) +
                         data.substr(offset, len);
    int announced = static_cast<int>(packet.size());
    if (faulty && p == 0 && settings.fault == ReplayFault::kPosBeyondMessage) announced += 1000;
    ++*sequence;
    if (dice != nullptr) {
      for (const HostileMediaPacket& p : HostileMedia(dice, packet, sequence)) {
        if (!send_(MediaMessage(settings.message_code, p.packet, p.announced))) return false;
        ++*packets;
      }
      continue;
    }
    if (!send_(MediaMessage(settings.message_code, packet, announced))) return false;
    ++*packets;
  }
  return true;
}

}  // namespace qvemu

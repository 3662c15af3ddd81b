// Remote playback figures:
//  - reassembly alone: media packets of a 1080p-class stream (a 150 KB key
//    frame each second, 20-40 KB frames between, 25 fps, 8 KB packets) put
//    back into frames by CReplayAssembler, frames/s, MB/s and CPU per frame;
//  - over the control link: a recording replayed as fast as the camera
//    sends, the camera in its own quorvel-emu process, the frames counted
//    in the replay data callback; frames/s, MB/s and this process's CPU.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <ctime>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>

#include "base/compat.h"
#include "emu/recordings.h"
#include "emu_process.h"
#include "link/replay_assembler.h"
#include "quorvel/quorvel.h"

namespace {

const int kFragment = 8192;

void Put(std::string* out, uint32_t v, int bytes) {
  for (int i = 0; i < bytes; ++i) out->push_back(static_cast<char>((v >> (8 * i)) & 0xFF));
}

// The packets of `frames` video frames of a 1080p-class stream.
std::vector<std::string> StreamPackets(int frames, size_t* payload) {
  std::vector<std::string> packets;
  uint16_t sequence = 0;
  *payload = 0;
  for (int i = 0; i < frames; ++i) {
    size_t size = i % 25 == 0 ? 150000 : 20000 + static_cast<size_t>(i * 7919 % 20000);
    *payload += size;
    size_t pieces = (size + kFragment - 1) / kFragment;
    for (size_t p = 0; p < pieces; ++p) {
      size_t len = std::min<size_t>(kFragment, size - p * kFragment);
      int type = pieces == 1 ? 17 : p == 0 ? 1 : p + 1 == pieces ? 16 : 0;
      std::string packet;
      Put(&packet, static_cast<uint32_t>(i * 40), 4);
      Put(&packet, static_cast<uint32_t>(i * 40), 4);
      Put(&packet, sequence++, 2);
      Put(&packet, static_cast<uint32_t>(len), 2);
      packet.push_back(static_cast<char>(type));
      packet.push_back(i % 25 == 0 ? 1 : 0);
      packet.push_back(0);
      packet.push_back(0);
      Put(&packet, static_cast<uint32_t>(i), 4);
      packet.append(len, static_cast<char>(i));
      packets.push_back(std::move(packet));
    }
  }
  return packets;
}

void BM_ReassembleFragments(benchmark::State& state) {
  size_t payload = 0;
  const int frames = 250;  // 10 s of stream
  std::vector<std::string> packets = StreamPackets(frames, &payload);
  CReplayAssembler assembler;
  assembler.Allocate();
  int64_t delivered = 0;
  double cpu0 = benchsupport::CpuSeconds();
  for (auto _ : state) {
    for (const std::string& p : packets) {
      CReplayAssembler::Frame f;
      if (assembler.Add(reinterpret_cast<const unsigned char*>(p.data()),
                        static_cast<int>(p.size()), &f)) {
        ++delivered;
        benchmark::DoNotOptimize(f.data);
      }
    }
  }
  double cpu = benchsupport::CpuSeconds() - cpu0;  // getrusage: user + system
  state.SetItemsProcessed(delivered);
  state.SetBytesProcessed(static_cast<int64_t>(payload) * state.iterations());
  state.counters["packets"] = static_cast<double>(packets.size());
  state.counters["cpu_us_per_frame"] = delivered > 0 ? 1e6 * cpu / static_cast<double>(delivered) : 0;
}
BENCHMARK(BM_ReassembleFragments)->UseRealTime()->Unit(benchmark::kMillisecond);

// Counts what the replay data callback receives.
struct Counter {
  std::atomic<int64_t> frames{0};
  std::atomic<int64_t> bytes{0};
  static long OnData(long, unsigned long kind, char*, unsigned long length,
                     FRAME_EXTDATA* extra) {
    Counter* self = static_cast<Counter*>(extra->user);
    if (kind != QV_REPLAY_KIND_PARAM) {
      ++self->frames;
      self->bytes += static_cast<int64_t>(length);
    }
    return 0;
  }
};

std::atomic<int> g_logged_in{0};
long OnStatus(long, long code, const char*, void*) {
  if (code == EVENT_LOGINOK) ++g_logged_in;
  return 0;
}

void BM_ReplayOverLink(benchmark::State& state) {
  const int seconds = static_cast<int>(state.range(0));
  benchsupport::EmulatorProcess emu;
  int port = 0;
  if (!emu.Start({"--recording-seconds", "3600"}, "quorvel-emu listening on 127.0.0.1:%d",
                 &port)) {
    state.SkipWithError("no emulator");
    return;
  }
  IP_NET_DVR_Init();
  Counter counter;
  IP_NET_DVR_SetStatusEventCallBack(&OnStatus, nullptr);
  IP_NET_DVR_SetReplayDataCallBack(&Counter::OnData, &counter);
  long id = IP_NET_DVR_Login("127.0.0.1", static_cast<unsigned short>(port),
                             const_cast<char*>("admin"), const_cast<char*>("admin"), nullptr);
  for (int i = 0; i < 1000 && IP_NET_DVR_GetReplayAblity(id) != 1; ++i) SleepMs(10);
  // 08:00 of the camera's day; its clock runs on local time.
  time_t now = time(nullptr);
  struct tm local;
  localtime_r(&now, &local);
  time_t camera_now = now + local.tm_gmtoff;
  long start = static_cast<long>(camera_now - camera_now % 86400 + 8 * 3600);
  for (auto _ : state) {
    IP_NET_DVR_ReplayByTime(id, start);
    IP_NET_DVR_ControlReplay(id, QV_REPLAY_FAST, 65536);
    for (int i = 0; i < 10000 && counter.frames == 0; ++i) SleepMs(1);
    if (counter.frames == 0) {
      state.SkipWithError("no replay frames");
      break;
    }
    int64_t frames0 = counter.frames, bytes0 = counter.bytes;
    double cpu0 = benchsupport::CpuSeconds();
    auto t0 = std::chrono::steady_clock::now();
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    double cpu = benchsupport::CpuSeconds() - cpu0;
    double frames = static_cast<double>(counter.frames - frames0);
    double bytes = static_cast<double>(counter.bytes - bytes0);
    state.counters["frames_per_s"] = frames / wall;
    state.counters["MB_per_s"] = bytes / wall / 1e6;
    state.counters["cpu_percent"] = 100.0 * cpu / wall;
    state.counters["cpu_us_per_frame"] = frames > 0 ? 1e6 * cpu / frames : 0;
    IP_NET_DVR_ControlReplay(id, QV_REPLAY_STOP, 0);
  }
  IP_NET_DVR_Logout(id);
  IP_NET_DVR_Cleanup();
}
BENCHMARK(BM_ReplayOverLink)->Arg(5)->Iterations(1)->UseRealTime()->Unit(benchmark::kSecond);

}  // namespace

BENCHMARK_MAIN();

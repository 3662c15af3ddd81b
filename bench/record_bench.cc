// Recorder and converter throughput.
//
// BM_RecordStream: one 1080p-class stream (25 fps, a 150 KB key frame each
// second and 10-40 KB frames between, 8 kHz G.711 in 20 ms frames) recorded
// to AVI as fast as the record task takes it. cpu_per_stream_pct is the CPU
// (feeding thread and record thread) that one real-time stream costs, and
// streams_per_core how many such streams one core records.
//
// BM_Convert/avi, /mp4: a 10 s 1080p H.264 recording with G.711 (made with
// the ffmpeg program and recorded through the record task) converted to a
// standard file; x_realtime is the stream seconds converted per second.
#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

extern "C" {
#include <libavformat/avformat.h>
}

#include "base/time_scale.h"
#include "stream/avi_converter.h"
#include "stream/disk_space.h"
#include "stream/frame_action.h"
#include "stream/record_task.h"

namespace {

const int kFps = 25;
const int kAudioFrameBytes = 160;  // 20 ms at 8 kHz

class NoEvents : public CGetFrameActionClass {
 public:
  int OnGetVideoFrame(unsigned char*, int, int, double) override { return 0; }
  int OnGetAudioFrame(unsigned char*, int, int, double) override { return 0; }
  int OnRecordEvent(int, const char*) override { return 0; }
};

struct Frame {
  std::vector<unsigned char> data;
  bool key;
};

double CpuSeconds() {
  struct rusage ru;
  getrusage(RUSAGE_SELF, &ru);
  return ru.ru_utime.tv_sec + ru.ru_stime.tv_sec + (ru.ru_utime.tv_usec + ru.ru_stime.tv_usec) / 1e6;
}

std::string BenchDir() {
  char templ[] = "/tmp/quorvel-record-bench-XXXXXX";
  char* dir = mkdtemp(templ);
  return dir != nullptr ? dir : "/tmp";
}

__STREAM_AV_PARAM Params(const char* video, int width, int height) {
  __STREAM_AV_PARAM p;
  memset(&p, 0, sizeof(p));
  snprintf(p.video.codec, sizeof(p.video.codec), "%s", video);
  p.video.width = width;
  p.video.height = height;
  p.video.frame_rate = kFps;
  p.video.bit_rate = 4000000;
  snprintf(p.audio.codec, sizeof(p.audio.codec), "G711U");
  p.audio.sample_rate = 8000;
  p.audio.bits_per_sample = 8;
  p.audio.channels = 1;
  return p;
}

void WaitForRoom(CRingBuffer* ring) {
  while (ring->BufferIsFull()) std::this_thread::sleep_for(std::chrono::microseconds(200));
}

// Records video (25 fps) and audio frames (20 ms) into `file` through a
// record task, feeding as fast as it takes them; returns when all is
// written and the file is closed.
void Record(const std::vector<Frame>& video, const std::vector<Frame>& audio,
            const __STREAM_AV_PARAM& params, const std::string& file) {
  NoEvents events;
  CRecordTask task(&params, 3600, 3600, &events, 1);
  task.SetStorageBase(file.c_str(), 1);
  task.Start();
  size_t v = 0, a = 0;
  while (v < video.size() || a < audio.size()) {
    double vts = v < video.size() ? v * 1000.0 / kFps : 1e18;
    double ats = a < audio.size() ? a * 20.0 : 1e18;
    bool is_audio = ats <= vts;
    CRingBuffer* ring = is_audio ? task.AudioRing() : task.VideoRing();
    const Frame& f = is_audio ? audio[a++] : video[v++];
    WaitForRoom(ring);
    ring->Write(f.data.data(), static_cast<int>(f.data.size()), f.key ? 1 : 0, is_audio ? ats : vts);
    task.FramesArrived();  // as the stream's owner does after each frame
  }
  while (task.VideoFrames() < static_cast<int>(video.size()) ||
         task.AudioFrames() < static_cast<int>(audio.size())) {
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  task.Stop();
}

std::vector<Frame> AudioFrames(int seconds) {
  std::vector<Frame> audio(static_cast<size_t>(seconds) * 50);
  for (size_t i = 0; i < audio.size(); ++i) {
    audio[i].data.assign(kAudioFrameBytes, static_cast<unsigned char>(0x80 + i % 64));
    audio[i].key = false;
  }
  return audio;
}

void BM_RecordStream(benchmark::State& state) {
  const int seconds = 20;
  std::vector<Frame> video;
  for (int i = 0; i < seconds * kFps; ++i) {
    bool key = i % kFps == 0;
    size_t size = key ? 150 * 1024 : (10 + (i * 7) % 31) * 1024;
    video.push_back({std::vector<unsigned char>(size, static_cast<unsigned char>(i)), key});
  }
  std::vector<Frame> audio = AudioFrames(seconds);
  uint64_t bytes = 0;
  for (const Frame& f : video) bytes += f.data.size();
  for (const Frame& f : audio) bytes += f.data.size();

  SetDiskFreeCommand("echo 99999999 #%s");
  SetTimerScale(0.02);  // idle polls of the record thread: 1 ms
  std::string dir = BenchDir();
  __STREAM_AV_PARAM params = Params("H264", 1920, 1080);
  double cpu = 0;
  for (auto _ : state) {
    double before = CpuSeconds();
    Record(video, audio, params, dir + "/bench.avi");
    cpu += CpuSeconds() - before;
    state.PauseTiming();
    unlink((dir + "/bench.avi").c_str());
    state.ResumeTiming();
  }
  rmdir(dir.c_str());
  SetTimerScale(1.0);
  SetDiskFreeCommand(nullptr);
  double stream_seconds = static_cast<double>(seconds) * state.iterations();
  state.SetBytesProcessed(static_cast<int64_t>(bytes) * state.iterations());
  state.counters["cpu_per_stream_pct"] = 100.0 * cpu / stream_seconds;
  state.counters["streams_per_core"] = stream_seconds / cpu;
  state.counters["video_fps"] =
      benchmark::Counter(static_cast<double>(video.size()) * state.iterations(),
                         benchmark::Counter::kIsRate);
}
BENCHMARK(BM_RecordStream)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3);

std::string convert_dir;

void RemoveConvertSource() {
  unlink((convert_dir + "/src.avi").c_str());
  rmdir(convert_dir.c_str());
}

// A 10 s 1080p H.264 + G.711 recording, made once per run.
std::string ConvertSource() {
  static std::string path;
  if (!path.empty()) return path;
  std::string dir = BenchDir();
  convert_dir = dir;
  atexit(RemoveConvertSource);
  std::string es = dir + "/src.h264";
  std::string cmd =
      "ffmpeg -nostdin -v error -y -f lavfi -i testsrc2=size=1920x1080:rate=25 -t 10 "
      "-c:v libx264 -preset ultrafast -bf 0 -g 25 -b:v 4M -pix_fmt yuv420p "
      "-x264-params repeat-headers=1 -f h264 " + es;
  if (system(cmd.c_str()) != 0) return "";
  std::vector<Frame> video;
  AVFormatContext* ctx = nullptr;
  if (avformat_open_input(&ctx, es.c_str(), av_find_input_format("h264"), nullptr) < 0) return "";
  AVPacket* p = av_packet_alloc();
  while (av_read_frame(ctx, p) >= 0) {
    video.push_back({std::vector<unsigned char>(p->data, p->data + p->size),
                     (p->flags & AV_PKT_FLAG_KEY) != 0});
    av_packet_unref(p);
  }
  av_packet_free(&p);
  avformat_close_input(&ctx);
  unlink(es.c_str());
  SetDiskFreeCommand("echo 99999999 #%s");
  SetTimerScale(0.02);
  path = dir + "/src.avi";
  Record(video, AudioFrames(10), Params("H264", 1920, 1080), path);
  SetTimerScale(1.0);
  SetDiskFreeCommand(nullptr);
  return path;
}

void BM_Convert(benchmark::State& state, const char* extension) {
  av_log_set_level(AV_LOG_ERROR);
  std::string in = ConvertSource();
  if (in.empty()) {
    state.SkipWithError("could not make the source recording with ffmpeg");
    return;
  }
  struct stat st;
  stat(in.c_str(), &st);
  std::string out = in.substr(0, in.size() - 4) + "-out" + extension;
  double seconds = 0;
  for (auto _ : state) {
    CAviConverter converter;
    if (converter.Convert(in, out) != 0) {
      state.SkipWithError(converter.Error().c_str());
      return;
    }
    seconds += converter.Report().seconds;
  }
  unlink(out.c_str());
  state.SetBytesProcessed(static_cast<int64_t>(st.st_size) * state.iterations());
  state.counters["x_realtime"] = benchmark::Counter(seconds, benchmark::Counter::kIsRate);
}
BENCHMARK_CAPTURE(BM_Convert, avi, ".avi")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_Convert, mp4, ".mp4")->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();

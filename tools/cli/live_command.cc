// quorvel live: receive the camera's live stream for some seconds and print
// frame statistics, or record it to an AVI file with progress.
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>

#include <chrono>
#include <cstdio>
#include <memory>
#include <mutex>
#include <thread>

#include <nlohmann/json.hpp>

#include "camera_session.h"
#include "names.h"
#include "progress.h"
#include "report.h"

namespace {

struct LiveOptions {
  int rtsp_port = 554;
  double seconds = 5;
  int stream = 0;
  std::string codec = "h264";
  std::string record;
  bool json = false;
};

// What the stream's callback saw; filled on the stream's thread.
struct FrameStats {
  std::mutex mu;
  long video_frames = 0;
  long key_frames = 0;
  long audio_frames = 0;
  long bytes = 0;
  double first_video_ms = -1;
  double last_video_ms = -1;
  bool have_params = false;
  __STREAM_AV_PARAM params{};
};

long OnFrame(long, unsigned long type, char* data, unsigned long length, FRAME_EXTDATA* extra) {
  FrameStats* s = static_cast<FrameStats*>(extra->user);
  std::lock_guard<std::mutex> lock(s->mu);
  if (type == QV_FRAME_AVPARAM) {
    if (length >= sizeof(s->params)) {
      memcpy(&s->params, data, sizeof(s->params));
      s->have_params = true;
    }
    return 0;
  }
  s->bytes += static_cast<long>(length);
  if (type == QV_FRAME_VIDEO) {
    ++s->video_frames;
    if (extra->flag != 0) ++s->key_frames;
    if (s->first_video_ms < 0) s->first_video_ms = extra->timestamp;
    s->last_video_ms = extra->timestamp;
  } else if (type == QV_FRAME_AUDIO) {
    ++s->audio_frames;
  }
  return 0;
}

// Connection trouble of a stream: the events that end the wait for it.
bool StreamFailed(long code) {
  return code == EVENT_CONNECTRTSPERROR || code == EVENT_URLERROR ||
         code == EVENT_RTSP_AUTHERROR || code == EVENT_CONNECT_RTSPSERVER_ERROR ||
         code == EVENT_CREATE_RTSPCLIENT_ERROR || code == EVENT_GET_RTSP_CMDOPTION_ERROR;
}

bool RecordFailed(long code) {
  return code == EVENT_RECORD_DISKFREESPACE_TOOLOW || code == EVNET_RECORD_FILEBEGIN_ERROR ||
         code == EVNET_RECORD_WRITE_FILE_ERROR || code == EVENT_RECORD_INITAVIHEAD_ERROR ||
         code == EVENT_RECORD_MEDIA_PARAM_ERROR;
}

nlohmann::json StatsJson(FrameStats& s, double seconds) {
  std::lock_guard<std::mutex> lock(s.mu);
  double span_s = (s.last_video_ms - s.first_video_ms) / 1000.0;
  double fps = s.video_frames > 1 && span_s > 0 ? (s.video_frames - 1) / span_s : 0;
  nlohmann::json j;
  j["seconds"] = seconds;
  j["bytes"] = s.bytes;
  j["video"] = {{"codec", s.params.video.codec},    {"width", s.params.video.width},
                {"height", s.params.video.height},  {"frames", s.video_frames},
                {"key_frames", s.key_frames},       {"fps", static_cast<int>(fps * 10 + 0.5) / 10.0}};
  j["audio"] = {{"codec", s.params.audio.codec},
                {"sample_rate", s.params.audio.sample_rate},
                {"frames", s.audio_frames}};
  return j;
}

void PrintStats(const nlohmann::json& j) {
  const auto& v = j["video"];
  const auto& a = j["audio"];
  double seconds = j["seconds"].get<double>();
  printf("video: %s %dx%d, %ld frames (%ld key frames), %.1f fps\n",
         v["codec"].get<std::string>().c_str(), v["width"].get<int>(), v["height"].get<int>(),
         v["frames"].get<long>(), v["key_frames"].get<long>(), v["fps"].get<double>());
  printf("audio: %s %d Hz, %ld frames\n", a["codec"].get<std::string>().c_str(),
         a["sample_rate"].get<int>(), a["frames"].get<long>());
  printf("%ld bytes in %.1f s (%.0f kbit/s)\n", j["bytes"].get<long>(), seconds,
         seconds > 0 ? j["bytes"].get<long>() * 8 / seconds / 1000 : 0.0);
}

// Waits for an event of the stream; false after reporting a failure event,
// a time-out or an interruption.
bool AwaitStreamEvent(const std::string& what, long handle, size_t since,
                      const std::function<bool(long)>& wanted,
                      const std::function<bool(long)>& failed, int timeout_ms) {
  Notice n;
  bool seen = Notices::Instance().WaitFor(
      &since,
      [&](const Notice& x) {
        return x.kind == Notice::kStatus && x.id == handle && (wanted(x.code) || failed(x.code));
      },
      timeout_ms, &n);
  if (!seen) {
    if (Interrupted()) return Fail(what + " interrupted") == 0;
    return Fail(what + " failed: no answer in time") == 0;
  }
  if (failed(n.code)) return FailEvent(what, n) == 0;
  return true;
}

// Sleeps in slices until seconds have passed (or stop is set), updating
// progress; false when interrupted.
bool Run(double seconds, Progress* progress, FrameStats& stats,
         const std::atomic<bool>* stop = nullptr) {
  auto start = std::chrono::steady_clock::now();
  for (;;) {
    double done = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (progress != nullptr) {
      long frames;
      {
        std::lock_guard<std::mutex> lock(stats.mu);
        frames = stats.video_frames;
      }
      char detail[64];
      snprintf(detail, sizeof(detail), "%.1f of %g s, %ld video frames", std::min(done, seconds),
               seconds, frames);
      progress->Update(static_cast<int>(std::min(done, seconds) * 100 / seconds), detail);
    }
    if (done >= seconds || (stop != nullptr && *stop)) return true;
    if (Interrupted()) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
}

std::string AbsolutePath(const std::string& path) {
  if (!path.empty() && path[0] == '/') return path;
  char cwd[4096];
  if (getcwd(cwd, sizeof(cwd)) == nullptr) return path;
  return std::string(cwd) + "/" + path;
}

int RunLive(const Cli& cli, const LiveOptions& o) {
  const ConnectionOptions& c = cli.connection;
  Library library(cli.log);
  FrameStats stats;
  ClientInfo info{};
  info.port = o.rtsp_port;
  info.link_mode = QV_LINK_TCP;
  info.stream_index = static_cast<unsigned short>(o.stream);
  info.codec_family = o.codec == "mpeg4" ? 0 : 1;
  info.user_data = &stats;
  size_t since = Notices::Instance().End();
  std::string where = c.host + ":" + std::to_string(o.rtsp_port);
  long handle = IP_NET_DVR_RealPlayEx(c.host.c_str(), c.user.c_str(), c.password.c_str(), OnFrame,
                                      &info, 0);
  if (handle < 0 || handle == 0) return FailResult("live " + where, handle);
  struct Stop {
    long handle;
    ~Stop() { IP_NET_DVR_StopRealPlay(handle); }
  } stop{handle};
  if (!AwaitStreamEvent("live " + where, handle, since,
                        [](long code) { return code == EVENT_CONNECTRTSPOK; }, StreamFailed,
                        c.TimeoutMs())) {
    return 1;
  }
  if (!o.json) fprintf(stderr, "stream of %s connected\n", where.c_str());

  if (o.record.empty()) {
    Progress progress("receiving", true);
    bool whole = Run(o.seconds, &progress, stats);
    progress.Finish();
    nlohmann::json j = StatsJson(stats, o.seconds);
    if (o.json) {
      printf("%s\n", j.dump(2).c_str());
    } else {
      PrintStats(j);
    }
    if (!whole) return Fail("live interrupted");
    return j["video"]["frames"].get<long>() > 0 ? 0 : Fail("live failed: no video frame came");
  }

  // A recording describes the stream by its parameters, so wait for them.
  since = Notices::Instance().End();
  bool have_params;
  {
    std::lock_guard<std::mutex> lock(stats.mu);
    have_params = stats.have_params;
  }
  if (!have_params &&
      !AwaitStreamEvent("live " + where, handle, 0,
                        [](long code) { return code == EVENT_RECVVIDEOAUDIOPARAM; }, StreamFailed,
                        c.TimeoutMs())) {
    return 1;
  }
  // The recorder makes no file shorter than 10 s: a shorter recording runs
  // for 10 s, and the progress and statistics say so.
  const int kShortestRecording = 10;
  int seconds = static_cast<int>(o.seconds + 0.5);
  if (seconds < kShortestRecording) {
    if (!o.json) {
      fprintf(stderr, "recordings last at least %d s: recording %d s\n", kShortestRecording,
              kShortestRecording);
    }
    seconds = kShortestRecording;
  }
  {
    // The statistics of a recording count from its start.
    std::lock_guard<std::mutex> lock(stats.mu);
    stats.video_frames = stats.key_frames = stats.audio_frames = stats.bytes = 0;
    stats.first_video_ms = stats.last_video_ms = -1;
  }
  // The recorder checks the free space of the file's folder, so it gets a
  // name with one.
  std::string path = AbsolutePath(o.record);
  long started = IP_NET_DVR_StartRecord(handle, path.c_str(), seconds, 0);
  if (started != 0) return FailResult("recording " + o.record, started);
  Progress progress("recording " + o.record);
  std::atomic<bool> stop_ticker{false};
  std::thread ticker([&] { Run(seconds, &progress, stats, &stop_ticker); });
  bool ended = AwaitStreamEvent("recording " + o.record, handle, since,
                                [](long code) { return code == EVENT_RECORD_TASKEND; },
                                RecordFailed, (seconds + 10) * 1000 + c.TimeoutMs());
  stop_ticker = true;
  ticker.join();
  progress.Finish();
  if (!ended) {
    IP_NET_DVR_StopRecord(handle);
    return 1;
  }
  struct stat st;
  if (stat(o.record.c_str(), &st) != 0) return Fail("recording " + o.record + " left no file");
  nlohmann::json j = StatsJson(stats, seconds);
  if (o.json) {
    j["file"] = o.record;
    j["file_bytes"] = static_cast<long>(st.st_size);
    printf("%s\n", j.dump(2).c_str());
  } else {
    printf("recorded %s: %ld bytes, %d s\n", o.record.c_str(), static_cast<long>(st.st_size),
           seconds);
    PrintStats(j);
  }
  return 0;
}

}  // namespace

void AddLiveCommand(Cli& cli) {
  auto o = std::make_shared<LiveOptions>();
  CLI::App* live = cli.Add(&cli.app, "live",
                           "receive the live stream and print frame statistics, or record it",
                           [&cli, o] { return RunLive(cli, *o); });
  live->add_option("--rtsp-port", o->rtsp_port, "the camera's RTSP port")
      ->check(CLI::Range(1, 65535))->capture_default_str();
  live->add_option("--seconds", o->seconds, "how long to receive or record")
      ->check(CLI::PositiveNumber)->capture_default_str();
  live->add_option("--stream", o->stream, "0 main stream, 1 to 4 sub streams")
      ->check(CLI::Range(0, 4))->capture_default_str();
  live->add_option("--codec", o->codec, "h264 or mpeg4")->check(CLI::IsMember({"h264", "mpeg4"}))
      ->capture_default_str();
  live->add_option("--record", o->record, "record into this AVI file (name ends in .avi)")
      ->type_name("FILE");
  live->add_flag("--json", o->json, "print the statistics as JSON");
}

#include "media_helper.h"

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <sstream>

extern "C" {
#include <libavformat/avformat.h>
}

#include "base/time_scale.h"
#include "stream/disk_space.h"
#include "stream/record_task.h"

namespace {

std::string Quote(const std::string& s) { return "'" + s + "'"; }

std::string Trim(std::string s) {
  while (!s.empty() && (s.back() == '\n' || s.back() == '\r' || s.back() == ' ')) s.pop_back();
  return s;
}

// Hands the feed to the task's rings in time order, waiting for room.
bool Feed(CRecordTask& task, const RecordFeed& feed) {
  size_t v = 0, a = 0;
  while (v < feed.video.size() || a < feed.audio.size()) {
    double vts = v < feed.video.size() ? v * 40.0 : 1e18;
    double ats = a < feed.audio.size() ? a * feed.audio_ms : 1e18;
    bool audio = ats <= vts;
    CRingBuffer* ring = audio ? task.AudioRing() : task.VideoRing();
    if (!WaitUntil([&] { return !ring->BufferIsFull(); }, 30000)) return false;
    const MediaFrame& f = audio ? feed.audio[a++] : feed.video[v++];
    ring->Write(f.data.data(), static_cast<int>(f.data.size()), f.key ? 1 : 0, audio ? ats : vts);
  }
  return true;
}

// Records the feed; returns the video frames written once all frames are
// in the file (the task still open), or -1.
int RecordAll(CRecordTask& task, const RecordFeed& feed, const std::string& file) {
  SetDiskFreeCommand("echo 99999999 #%s");
  task.SetStorageBase(file.c_str(), 1);
  if (task.Start() != 0 || !Feed(task, feed)) return -1;
  size_t first_key = 0;
  while (first_key < feed.video.size() && !feed.video[first_key].key) ++first_key;
  int video = static_cast<int>(feed.video.size() - first_key);
  int audio = static_cast<int>(feed.audio.size());
  bool done = WaitUntil(
      [&] {
        return task.VideoFrames() == video && task.AudioFrames() == audio &&
               task.VideoRing()->GetReadCount() == 0 && task.AudioRing()->GetReadCount() == 0;
      },
      60000);
  return done ? video : -1;
}

}  // namespace

void RecordingTest::SetUp() {
  ASSERT_FALSE(dir_.path().empty());
  SetTimerScale(0.02);
}

void RecordingTest::TearDown() { SetTimerScale(1.0); }

std::string MakeMedia(const std::string& file, const std::string& args) {
  std::string dir = std::string(QUORVEL_BINARY_DIR) + "/tests/media";
  mkdir(dir.c_str(), 0755);
  std::string path = dir + "/" + file;
  if (FileExists(path)) return path;
  // Made under a private name and renamed, so parallel tests never see half a file.
  std::string temp = path + "." + std::to_string(getpid()) + ".part";
  std::string ext = file.substr(file.find_last_of('.') + 1);
  std::string format = ext == "aac"  ? "adts"
                       : ext == "ul" ? "mulaw"
                       : ext == "al" ? "alaw"
                                     : ext;
  std::string out;
  int status = RunCommand("ffmpeg -nostdin -v error -y " + args + " -f " + format + " " + Quote(temp),
                          &out);
  if (status != 0 || rename(temp.c_str(), path.c_str()) != 0) {
    fprintf(stderr, "ffmpeg failed: %s\n", out.c_str());
    unlink(temp.c_str());
    return "";
  }
  return path;
}

std::string H264Media() {
  return MakeMedia("testsrc.h264",
                   "-f lavfi -i testsrc=size=320x240:rate=25 -t 4 -c:v libx264 -bf 0 -g 25 "
                   "-pix_fmt yuv420p -x264-params repeat-headers=1");
}

std::string NoisyH264Media() {
  return MakeMedia("noise.h264",
                   "-f lavfi -i testsrc2=size=320x240:rate=25 -t 4 -vf noise=alls=20:allf=t "
                   "-c:v libx264 -preset ultrafast -bf 0 -g 25 -qp 20 -pix_fmt yuv420p");
}

std::string Mpeg4Media() {
  return MakeMedia("testsrc.m4v",
                   "-f lavfi -i testsrc=size=352x288:rate=25 -t 4 -c:v mpeg4 -bf 0 -g 25");
}

std::string ToneMedia(const std::string& codec) {
  const char* file = codec == "pcm_mulaw" ? "tone.ul" : codec == "pcm_alaw" ? "tone.al" : "tone.aac";
  return MakeMedia(file, "-f lavfi -i sine=frequency=440:sample_rate=8000 -t 4 -c:a " + codec);
}

std::vector<MediaFrame> DemuxFrames(const std::string& path, const char* format) {
  std::vector<MediaFrame> frames;
  AVFormatContext* ctx = nullptr;
  if (avformat_open_input(&ctx, path.c_str(), av_find_input_format(format), nullptr) < 0) {
    return frames;
  }
  AVPacket* p = av_packet_alloc();
  while (av_read_frame(ctx, p) >= 0) {
    MediaFrame f;
    f.data.assign(p->data, p->data + p->size);
    f.key = (p->flags & AV_PKT_FLAG_KEY) != 0;
    frames.push_back(std::move(f));
    av_packet_unref(p);
  }
  av_packet_free(&p);
  avformat_close_input(&ctx);
  return frames;
}

std::vector<MediaFrame> SplitBytes(const std::string& path, size_t bytes) {
  std::vector<uint8_t> all = ReadFileBytes(path);
  std::vector<MediaFrame> frames;
  for (size_t at = 0; at + bytes <= all.size(); at += bytes) {
    MediaFrame f;
    f.data.assign(all.begin() + static_cast<long>(at), all.begin() + static_cast<long>(at + bytes));
    frames.push_back(std::move(f));
  }
  return frames;
}

std::vector<MediaFrame> StripAdts(const std::vector<MediaFrame>& frames) {
  std::vector<MediaFrame> raw;
  for (const MediaFrame& f : frames) {
    MediaFrame r;
    r.data.assign(f.data.begin() + 7, f.data.end());
    raw.push_back(std::move(r));
  }
  return raw;
}

__STREAM_AV_PARAM AvParams(const char* video, int width, int height, const char* audio,
                           int sample_rate) {
  __STREAM_AV_PARAM p;
  memset(&p, 0, sizeof(p));
  snprintf(p.video.codec, sizeof(p.video.codec), "%s", video);
  p.video.width = width;
  p.video.height = height;
  p.video.frame_rate = 25;
  snprintf(p.audio.codec, sizeof(p.audio.codec), "%s", audio);
  bool aac = strcmp(audio, "AAC") == 0;
  p.audio.sample_rate = sample_rate;
  p.audio.bits_per_sample = aac ? 16 : 8;
  p.audio.channels = 1;
  return p;
}

int RecordFeedTo(const RecordFeed& feed, const std::string& file) {
  EventLog events;
  CRecordTask task(&feed.params, 3600, 3600, &events, 0);
  int video = RecordAll(task, feed, file);
  task.Stop();
  SetDiskFreeCommand(nullptr);
  return FileExists(file) ? video : -1;
}

bool RecordFeedAndKill(const RecordFeed& feed, const std::string& file) {
  fflush(nullptr);
  pid_t child = fork();
  if (child < 0) return false;
  if (child == 0) {
    EventLog events;
    CRecordTask task(&feed.params, 3600, 3600, &events, 0);
    if (RecordAll(task, feed, file) < 0) _exit(3);
    kill(getpid(), SIGKILL);
    _exit(4);
  }
  int status = 0;
  if (waitpid(child, &status, 0) != child) return false;
  return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}

int RunCommand(const std::string& command, std::string* out) {
  out->clear();
  FILE* pipe = popen((command + " 2>&1").c_str(), "r");
  if (pipe == nullptr) return -1;
  char buf[4096];
  size_t n;
  while ((n = fread(buf, 1, sizeof(buf), pipe)) > 0) out->append(buf, n);
  int status = pclose(pipe);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string ProbeStreams(const std::string& path) {
  std::string out;
  RunCommand("ffprobe -v error -show_entries stream=codec_type,codec_name -of csv=p=0 " +
                 Quote(path),
             &out);
  std::istringstream lines(out);
  std::string line, result;
  while (std::getline(lines, line)) {
    size_t comma = line.find(',');
    if (comma == std::string::npos) continue;
    if (!result.empty()) result += ",";
    result += line.substr(comma + 1) + ":" + line.substr(0, comma);
  }
  return result;
}

int CountVideoFrames(const std::string& path) {
  std::string out;
  if (RunCommand("ffprobe -v error -count_frames -select_streams v:0 -show_entries "
                 "stream=nb_read_frames -of csv=p=0 " + Quote(path),
                 &out) != 0) {
    return -1;
  }
  return atoi(out.c_str());
}

double StreamSeconds(const std::string& path, int index) {
  std::string out;
  RunCommand("ffprobe -v error -select_streams " + std::to_string(index) +
                 " -show_entries stream=duration -of csv=p=0 " + Quote(path),
             &out);
  out = Trim(out);
  return out.empty() || out == "N/A" ? -1 : atof(out.c_str());
}

std::string DecodeErrors(const std::string& path) {
  std::string out;
  int status = RunCommand("ffmpeg -nostdin -v error -i " + Quote(path) + " -f null -", &out);
  if (status != 0 && out.empty()) out = "exit status " + std::to_string(status);
  return Trim(out);
}

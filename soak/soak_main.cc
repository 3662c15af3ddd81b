// quorvel-soak: 128 sessions against several emulated cameras, each a
// quorvel-emu process of its own with a fault of its own (dropped links,
// stalls, hostile bytes, refused logins, restarts), while worker threads
// issue commands, move files, talk and record live streams. At the end
// everything is logged out and cleaned up, then checked: no call overran its
// bound (the watchdog prints the stuck call and its thread's stack), file
// descriptors and threads are back to their starting counts, resident memory
// grew less than 1 % from the end of the first minute, every completed
// download equals its source and every closed recording that a key frame
// reached in time converts and decodes (the others hold no video). Prints
// its figures; exits 0 when every check holds.
#include <dirent.h>
#include <getopt.h>
#include <malloc.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "quorvel/quorvel.h"
#include "soak/emu_process.h"
#include "stream/avi_converter.h"
#include "stream/disk_space.h"
#include "support/call_watchdog.h"

namespace {

using Clock = std::chrono::steady_clock;
using qvtest::CallWatchdog;

constexpr int kSessions = 128;
constexpr int kCallBoundMs = 60000;  // every call returns within this
constexpr int kTransferWaitMs = 40000;

// What each camera process does wrong.
struct Profile {
  const char* name;
  std::vector<std::string> args;
  bool rtsp;
  bool intact;  // serves its files and stream unchanged
};

std::vector<Profile> Profiles(uint64_t seed) {
  return {
      {"clean", {"--rtsp-shared"}, true, true},
      {"drops", {"--drop-links-every", "7000", "--rtsp-shared"}, true, true},
      {"stalls", {"--delay-ms", "1500", "--data-fault", "stall:40000"}, false, true},
      {"hostile", {"--hostile", std::to_string(seed), "--rtsp-shared"}, true, false},
      {"refuses", {"--refuse-login"}, false, true},
      {"restarts", {"--rtsp-shared"}, true, true},
  };
}

int CountEntries(const char* dir) {
  int n = 0;
  if (DIR* d = opendir(dir)) {
    while (dirent* e = readdir(d)) n += e->d_name[0] != '.' ? 1 : 0;
    closedir(d);
  }
  return n;
}

long RssKb() {
  std::ifstream in("/proc/self/statm");
  long size = 0, resident = 0;
  in >> size >> resident;
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

// Bytes the allocator has handed out and not had back.
long HeapInUseKb() {
  struct mallinfo2 info = mallinfo2();
  return static_cast<long>((info.uordblks + info.hblkhd) / 1024);
}

// Resident memory at one moment. The allocator keeps pages that were freed
// (in the arenas of the many threads) instead of handing them back, so
// resident memory alone grows with the churn of large buffers even when
// nothing is held; malloc_trim hands them back first, so that what is
// compared is what the process holds. Both figures are kept.
struct MemorySample {
  long untrimmed_kb = 0;  // resident before the trim
  long resident_kb = 0;   // resident after it
  long heap_kb = 0;       // handed out by the allocator
};

MemorySample SampleMemory() {
  MemorySample m;
  m.untrimmed_kb = RssKb();
  malloc_trim(0);
  m.resident_kb = RssKb();
  m.heap_kb = HeapInUseKb();
  return m;
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

// Status events by session, for the workers to wait on.
class Events {
 public:
  static long OnStatus(long id, long code, const char* data, void* self) {
    static_cast<Events*>(self)->Add(id, code, code == EVENT_PTZALARM || data == nullptr ? "" : data);
    return 0;
  }
  void Add(long id, long code, const std::string& text) {
    std::lock_guard<std::mutex> lock(mu_);
    ++counts_[code];
    if (id > 0 && id <= kSessions) last_[id].push_back({code, text});
    if (last_[id].size() > 64) last_[id].erase(last_[id].begin());
    cv_.notify_all();
  }
  void Clear(long id) {
    std::lock_guard<std::mutex> lock(mu_);
    last_[id].clear();
  }
  // Waits for one of the codes on session id; its code and text, or -1.
  long Wait(long id, std::initializer_list<long> codes, int timeout_ms, std::string* text) {
    std::unique_lock<std::mutex> lock(mu_);
    long found = -1;
    cv_.wait_for(lock, std::chrono::milliseconds(timeout_ms), [&] {
      for (auto& e : last_[id]) {
        for (long c : codes) {
          if (e.first == c) {
            found = c;
            if (text) *text = e.second;
            return true;
          }
        }
      }
      return false;
    });
    return found;
  }
  std::map<long, long> Counts() const {
    std::lock_guard<std::mutex> lock(mu_);
    return counts_;
  }

 private:
  mutable std::mutex mu_;
  std::condition_variable cv_;
  std::map<long, long> counts_;
  std::map<long, std::vector<std::pair<long, std::string>>> last_;
};

// When each live stream handed a video key frame to the host, by handle. The
// pull puts a frame into the recording's ring before it calls the host, so
// a key frame seen here while the recording runs has reached the recorder.
class KeyFrameLog {
 public:
  void Add(long handle) {
    Clock::time_point now = Clock::now();
    std::lock_guard<std::mutex> lock(mu_);
    // A handle may name a later stream once this one is gone; a recording
    // lasts well under the time kept.
    std::deque<Clock::time_point>& times = seen_[handle];
    while (!times.empty() && now - times.front() > kKeptFor) times.pop_front();
    times.push_back(now);
  }
  // Whether one arrived within [from, to].
  bool Between(long handle, Clock::time_point from, Clock::time_point to) {
    std::lock_guard<std::mutex> lock(mu_);
    for (Clock::time_point t : seen_[handle]) {
      if (t >= from && t <= to) return true;
    }
    return false;
  }

 private:
  static constexpr std::chrono::seconds kKeptFor{30};
  std::mutex mu_;
  std::map<long, std::deque<Clock::time_point>> seen_;
};

KeyFrameLog g_key_frames;

long NoteKeyFrame(long handle, unsigned long type, char*, unsigned long, FRAME_EXTDATA* extra) {
  if (type == 0 && extra != nullptr && extra->flag != 0) g_key_frames.Add(handle);
  return 0;
}

struct Figures {
  std::atomic<long> calls{0}, downloads_ok{0}, downloads_bad{0}, downloads_failed{0};
  std::atomic<long> talks{0}, streams{0}, recordings{0}, commands{0};
  std::mutex mu;
  struct Recorded {
    std::string path;
    const char* camera;
    bool intact;  // from a camera that serves its stream unchanged
    // A video key frame reached the recorder early enough to be written:
    // the file must then hold video.
    bool key_frame_in_time;
  };
  std::vector<Recorded> recorded;
  std::vector<std::string> mismatches;
};

struct Session {
  long id = 0;
  int camera = 0;
};

class Soak {
 public:
  Soak(std::string emu, std::string dir, int seconds, int threads, uint64_t seed)
      : emu_(std::move(emu)), dir_(std::move(dir)), seconds_(seconds), threads_(threads),
        seed_(seed), profiles_(Profiles(seed)) {}

  int Run();

 private:
  bool StartCameras();
  void Worker(int index);
  void Download(std::mt19937_64& rng, const Session& s, int worker);
  void Talk(const Session& s);
  void Record(std::mt19937_64& rng, const Session& s, int worker);
  void Command(std::mt19937_64& rng, const Session& s);
  bool CheckRecordings();
  bool Running() const { return Clock::now() < end_; }

  const std::string emu_, dir_;
  const int seconds_, threads_;
  const uint64_t seed_;
  const std::vector<Profile> profiles_;
  std::vector<std::unique_ptr<qvsoak::EmuProcess>> cameras_;
  std::map<std::string, std::string> sources_;  // camera path -> bytes
  std::vector<Session> sessions_;
  Events events_;
  Figures fig_;
  CallWatchdog dog_;
  Clock::time_point end_;
  std::atomic<int> restarts_{0};
};

#define WATCHED(call) \
  (++fig_.calls, CallWatchdog::Guard(&dog_, #call, kCallBoundMs), (call))

bool Soak::StartCameras() {
  // Three files of different sizes, the same bytes for every camera.
  std::mt19937_64 rng(seed_);
  const size_t sizes[] = {12345, 200000, 1500000};
  std::vector<std::string> puts;
  for (size_t i = 0; i < 3; ++i) {
    std::string bytes(sizes[i], '\0');
    for (auto& c : bytes) c = static_cast<char>(rng());
    std::string local = dir_ + "/source-" + std::to_string(i);
    std::ofstream(local, std::ios::binary) << bytes;
    std::string remote = "/mnt/sd/rec/clip-" + std::to_string(i) + ".avi";
    sources_[remote] = bytes;
    puts.push_back("--put-file");
    puts.push_back(remote + "=" + local);
  }
  for (size_t i = 0; i < profiles_.size(); ++i) {
    std::vector<std::string> args = profiles_[i].args;
    args.insert(args.end(), puts.begin(), puts.end());
    cameras_.emplace_back(new qvsoak::EmuProcess(
        emu_, args, dir_ + "/emu-" + profiles_[i].name + ".log", profiles_[i].rtsp));
    if (!cameras_.back()->Start()) {
      fprintf(stderr, "soak: camera %s did not start\n", profiles_[i].name);
      return false;
    }
  }
  return true;
}

void Soak::Command(std::mt19937_64& rng, const Session& s) {
  char buffer[16384];
  unsigned long returned = 0;
  int length = sizeof buffer;
  ++fig_.commands;
  switch (rng() % 6) {
    case 0: WATCHED(IP_NET_DVR_PTZControl(s.id, QV_PTZ_ZOOM_TELE, 4, 4)); break;
    case 1: WATCHED(IP_NET_DVR_GetDVRConfig(s.id, 1040 + rng() % 20, 0, buffer, sizeof buffer, &returned)); break;
    case 2: WATCHED(IP_NET_DVR_GetUserData(s.id, buffer, &length)); break;
    case 3: WATCHED(IP_NET_DVR_GetDeviceAbility(s.id)); break;
    case 4: WATCHED(IP_NET_DVR_CreateIFrame(s.id, 0)); break;
    default: WATCHED(IP_NET_DVR_PTZPreset(s.id, 39, static_cast<long>(rng() % 255))); break;
  }
}

void Soak::Download(std::mt19937_64& rng, const Session& s, int worker) {
  auto it = sources_.begin();
  std::advance(it, rng() % sources_.size());
  std::string local_dir = dir_ + "/w" + std::to_string(worker);
  std::string remote = it->first;
  events_.Clear(s.id);
  if (WATCHED(IP_NET_DVR_GetFileByName(s.id, 2, &remote[0], local_dir.c_str())) != 0) return;
  std::string text;
  long code = events_.Wait(s.id, {EVENT_DOWNLOADOK, EVENT_DOWNLOADFAILED}, kTransferWaitMs, &text);
  if (code != EVENT_DOWNLOADOK) {
    WATCHED(IP_NET_DVR_CloseUpgradeHandle(s.id));
    ++fig_.downloads_failed;
    return;
  }
  if (!profiles_[s.camera].intact) return;
  std::string local = local_dir + remote.substr(remote.rfind('/'));
  if (ReadFile(local) == it->second) {
    ++fig_.downloads_ok;
  } else {
    ++fig_.downloads_bad;
    std::lock_guard<std::mutex> lock(fig_.mu);
    fig_.mismatches.push_back(profiles_[s.camera].name + std::string(": ") + local);
  }
  unlink(local.c_str());
}

void Soak::Talk(const Session& s) {
  ++fig_.talks;
  if (WATCHED(IP_NET_DVR_StartVoiceCom(s.id, 0, 8000, 1)) != 0) return;
  std::string audio(320, '\x55');
  for (int i = 0; i < 25 && Running(); ++i) {
    WATCHED(IP_NET_DVR_InputAudioData(s.id, audio.data(), static_cast<int>(audio.size())));
    std::this_thread::sleep_for(std::chrono::milliseconds(40));
  }
  WATCHED(IP_NET_DVR_StopVoiceCom(s.id));
}

void Soak::Record(std::mt19937_64& rng, const Session& s, int worker) {
  if (!profiles_[s.camera].rtsp) return;
  ClientInfo info{};
  info.port = cameras_[s.camera]->rtsp_port();
  info.codec_family = 1;
  long handle = WATCHED(IP_NET_DVR_RealPlay(s.id, 0, &NoteKeyFrame, &info, 0));
  if (handle <= 0) return;
  ++fig_.streams;
  std::string file = dir_ + "/w" + std::to_string(worker) + "/rec-" +
                     std::to_string(fig_.recordings++) + ".avi";
  // Records for a few seconds once the stream is up. When the run ends
  // meanwhile, the recording is stopped as soon as it has started.
  std::this_thread::sleep_for(std::chrono::milliseconds(1500));
  bool recording = WATCHED(IP_NET_DVR_StartRecord(handle, file.c_str(), 60, 0)) == 0;
  Clock::time_point started = Clock::now();
  auto until = started + std::chrono::milliseconds(3000 + rng() % 4000);
  while (Running() && Clock::now() < until) std::this_thread::sleep_for(std::chrono::milliseconds(100));
  Clock::time_point stopping = Clock::now();
  if (recording) WATCHED(IP_NET_DVR_StopRecord(handle));
  WATCHED(IP_NET_DVR_StopRealPlay(handle));
  // The recorder writes what its rings hold a few times a second, and a
  // stop drops what is still waiting there: a key frame counts when it came
  // a second before the stop. The first 200 ms after the start are left
  // out, for a frame handed to the host just after the ring was passed by.
  bool in_time = g_key_frames.Between(handle, started + std::chrono::milliseconds(200),
                                      stopping - std::chrono::seconds(1));
  if (recording) {
    std::lock_guard<std::mutex> lock(fig_.mu);
    fig_.recorded.push_back({file, profiles_[s.camera].name, profiles_[s.camera].intact, in_time});
  }
}

void Soak::Worker(int index) {
  std::mt19937_64 rng(seed_ * 1000 + static_cast<uint64_t>(index));
  // Each worker owns the sessions whose position matches its index, so no
  // two workers drive one session at once.
  std::vector<Session> mine;
  for (size_t i = 0; i < sessions_.size(); ++i) {
    if (static_cast<int>(i % threads_) == index) mine.push_back(sessions_[i]);
  }
  while (Running() && !mine.empty()) {
    const Session& s = mine[rng() % mine.size()];
    unsigned pick = rng() % 100;
    // Live streams from two workers only: the cameras encode on this machine.
    if (index < 2 && pick < 20) {
      Record(rng, s, index);
    } else if (pick < 45) {
      Download(rng, s, index);
    } else if (pick < 55) {
      Talk(s);
    } else {
      Command(rng, s);
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  }
}

// A recording holds video from the first key frame that reached its
// recorder; one that none reached in time is a well-formed file with no
// video (its header and an empty index, perhaps some audio), and one stopped
// before the recorder began its file leaves no file. Every other closed
// recording from a camera that serves its stream intact must convert and
// decode.
bool Soak::CheckRecordings() {
  int converted = 0, failed = 0, missing = 0, without_video = 0;
  for (const auto& rec : fig_.recorded) {
    std::string why;
    if (access(rec.path.c_str(), F_OK) != 0) {
      if (!rec.key_frame_in_time) {
        ++missing;
        continue;
      }
      why = "is missing";
    }
    std::string out = rec.path + ".mkv";
    CAviConverter converter;
    bool converts = false, decodes = false;
    if (why.empty()) {
      converts = converter.Convert(rec.path, out) == 0 && converter.Report().video_frames > 0;
      if (converts) {
        std::string cmd = "ffmpeg -nostdin -v error -i '" + out + "' -f null - >/dev/null 2>&1";
        decodes = system(cmd.c_str()) == 0;
      }
      unlink(out.c_str());
    }
    if (converts && decodes) {
      ++converted;
      continue;
    }
    if (why.empty() && !converts && !rec.key_frame_in_time) {
      CAviReader reader;
      if (reader.Open(rec.path) == 0 && reader.HasIndex() && reader.Damage().empty() &&
          reader.VideoChunks() == 0) {
        ++without_video;
        continue;
      }
      why = "is not a well-formed recording without video";
    }
    if (!rec.intact) continue;
    ++failed;
    if (why.empty()) {
      why = std::string(converts ? "does not decode" : "does not convert") + " (" +
            std::to_string(converter.Report().video_frames) + " video frames" +
            (converter.Error().empty() ? "" : ", " + converter.Error()) + ")";
    }
    // Kept for a look: the run's folder goes at the end.
    std::string kept = "/tmp/quorvel-soak-failed-" + std::to_string(getpid()) + "-" +
                       std::to_string(failed) + ".avi";
    std::string cp = "cp '" + rec.path + "' '" + kept + "' 2>/dev/null";
    bool copied = system(cp.c_str()) == 0;
    fprintf(stderr, "soak: recording %s from camera %s %s%s; kept as %s\n", rec.path.c_str(),
            rec.camera, why.c_str(), rec.key_frame_in_time ? "" : " (no key frame in time)",
            copied ? kept.c_str() : "(not kept)");
  }
  printf("recordings: %zu closed, %d converted and decoded, %d without video (no key frame in "
         "time), %d without a file (stopped before it began), %d failed\n",
         fig_.recorded.size(), converted, without_video, missing, failed);
  return failed == 0;
}

int Soak::Run() {
  if (!StartCameras()) return 1;
  for (int w = 0; w < threads_; ++w) mkdir((dir_ + "/w" + std::to_string(w)).c_str(), 0755);
  SetDiskFreeCommand("echo 99999999 #%s");
  IP_NET_DVR_Init();
  IP_NET_DVR_SetStatusEventCallBack(&Events::OnStatus, &events_);
  int fds_start = CountEntries("/proc/self/fd");
  int threads_start = CountEntries("/proc/self/task");
  MemorySample mem_start = SampleMemory();
  auto started = Clock::now();
  end_ = started + std::chrono::seconds(seconds_);

  char user[] = "admin", password[] = "admin";
  for (int i = 0; i < kSessions; ++i) {
    Session s;
    s.camera = i % static_cast<int>(cameras_.size());
    s.id = WATCHED(IP_NET_DVR_Login("127.0.0.1", static_cast<unsigned short>(cameras_[s.camera]->port()),
                                    user, password, nullptr));
    if (s.id <= 0) {
      fprintf(stderr, "soak: login %d refused by the library (%ld)\n", i, s.id);
      return 1;
    }
    sessions_.push_back(s);
  }

  std::vector<std::thread> workers;
  for (int w = 0; w < threads_; ++w) workers.emplace_back(&Soak::Worker, this, w);
  // The restarting camera goes down hard every 15 s; memory is sampled once
  // the first minute (or a third of a shorter run) is over.
  MemorySample mem_mark;
  bool marked = false;
  auto mark_at = started + std::chrono::seconds(seconds_ >= 120 ? 60 : seconds_ / 3);
  auto next_restart = started + std::chrono::seconds(15);
  size_t restarting = profiles_.size() - 1;
  while (Running()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    if (!marked && Clock::now() >= mark_at) {
      mem_mark = SampleMemory();
      marked = true;
    }
    if (Clock::now() >= next_restart) {
      next_restart += std::chrono::seconds(15);
      if (cameras_[restarting]->Restart()) ++restarts_;
    }
  }
  for (auto& w : workers) w.join();
  MemorySample mem_end = SampleMemory();

  for (const Session& s : sessions_) WATCHED(IP_NET_DVR_Logout(s.id));
  WATCHED(IP_NET_DVR_Cleanup());
  // The library's threads are joined by now; give the kernel a moment to
  // reap them from /proc.
  int threads_end = 0, fds_end = 0;
  for (int i = 0; i < 50; ++i) {
    threads_end = CountEntries("/proc/self/task");
    fds_end = CountEntries("/proc/self/fd");
    if (threads_end <= threads_start && fds_end <= fds_start) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  for (auto& c : cameras_) c->Stop();

  double growth = mem_mark.resident_kb > 0
                      ? 100.0 * (mem_end.resident_kb - mem_mark.resident_kb) / mem_mark.resident_kb
                      : 0;
  auto counts = events_.Counts();
  printf("soak: %d s, %d sessions on %zu cameras, %d worker threads, seed %llu\n", seconds_,
         kSessions, cameras_.size(), threads_, static_cast<unsigned long long>(seed_));
  printf("calls: %ld watched, %d overran %d ms\n", fig_.calls.load(), dog_.Stuck(), kCallBoundMs);
  printf("work: %ld commands, %ld downloads compared equal, %ld differing, %ld not completed, "
         "%ld talks, %ld live streams, %ld recordings\n",
         fig_.commands.load(), fig_.downloads_ok.load(), fig_.downloads_bad.load(),
         fig_.downloads_failed.load(), fig_.talks.load(), fig_.streams.load(),
         fig_.recordings.load());
  printf("faults survived: %d camera restarts, %ld links lost (33), %ld socket errors (3), "
         "%ld connects failed (2), %ld logins refused (5/31), %ld heartbeats lost (34), "
         "%ld downloads failed (17), %ld talk refusals (7)\n",
         restarts_.load(), counts[EVENT_LOGIN_RECONNECT], counts[EVENT_SOCKETERROR],
         counts[EVENT_CONNECTFAILED], counts[EVENT_LOGINFAILED] + counts[EVENT_LOGIN_USERERROR],
         counts[EVENT_LOGIN_HEARTBEAT_LOST], counts[EVENT_DOWNLOADFAILED],
         counts[EVENT_STARTAUDIOFAILED]);
  printf("descriptors: %d at start, %d at end\n", fds_start, fds_end);
  printf("threads: %d at start, %d at end\n", threads_start, threads_end);
  const char* mark = seconds_ >= 120 ? "minute" : "third";
  printf("resident memory: %ld KB at start, %ld KB after the first %s, %ld KB at the end "
         "(%+.2f %%)\n",
         mem_start.resident_kb, mem_mark.resident_kb, mark, mem_end.resident_kb, growth);
  printf("resident before handing free allocator pages back: %ld, %ld, %ld KB\n",
         mem_start.untrimmed_kb, mem_mark.untrimmed_kb, mem_end.untrimmed_kb);
  printf("heap in use: %ld KB at start, %ld KB after the first %s, %ld KB at the end\n",
         mem_start.heap_kb, mem_mark.heap_kb, mark, mem_end.heap_kb);
  bool ok = true;
  ok &= CheckRecordings();
  if (dog_.Stuck() > 0) ok = false;
  if (fig_.downloads_bad > 0) {
    ok = false;
    for (auto& m : fig_.mismatches) fprintf(stderr, "soak: download differs: %s\n", m.c_str());
  }
  // Fewer at the end is fine: the stream registry's watchdog thread, started
  // with the process, ends with the cleanup.
  if (fds_end > fds_start || threads_end > threads_start) {
    fprintf(stderr, "soak: descriptors or threads not back to their starting counts\n");
    ok = false;
  }
#if defined(__SANITIZE_ADDRESS__)
  // AddressSanitizer's quarantine holds freed memory back on purpose; its
  // leak check at exit judges memory instead.
  printf("resident memory not judged under AddressSanitizer\n");
#else
  if (growth >= 1.0) {
    fprintf(stderr, "soak: resident memory grew %.2f %%\n", growth);
    ok = false;
  }
#endif
  printf("soak: %s\n", ok ? "PASS" : "FAIL");
  return ok ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  int seconds = 180, threads = 6;
  uint64_t seed = 1;
  // Threads come and go all the time here (talk senders, transfers, pulls,
  // record tasks). The C library keeps the stacks of ended threads (up to
  // 40 MB) and an allocator arena for each of many threads, resident and
  // filled in a different order every run, so resident memory would measure
  // those caches rather than what the process holds. The soak starts itself
  // again with the stack cache off and two arenas, as a host on a small
  // device may set them too.
  if (getenv("QUORVEL_SOAK_TUNED") == nullptr) {
    std::string tunables = "glibc.pthread.stack_cache_size=0:glibc.malloc.arena_max=2";
    if (const char* own = getenv("GLIBC_TUNABLES")) tunables = std::string(own) + ":" + tunables;
    setenv("GLIBC_TUNABLES", tunables.c_str(), 1);
    setenv("QUORVEL_SOAK_TUNED", "1", 1);
    execv("/proc/self/exe", argv);
    perror("quorvel-soak: running again with the C library's caches off");
  }
  std::string emu;
  static const option kOptions[] = {
      {"seconds", required_argument, nullptr, 's'}, {"threads", required_argument, nullptr, 't'},
      {"seed", required_argument, nullptr, 'r'},    {"emu", required_argument, nullptr, 'e'},
      {nullptr, 0, nullptr, 0}};
  for (int c; (c = getopt_long(argc, argv, "", kOptions, nullptr)) != -1;) {
    switch (c) {
      case 's': seconds = atoi(optarg); break;
      case 't': threads = atoi(optarg); break;
      case 'r': seed = strtoull(optarg, nullptr, 0); break;
      case 'e': emu = optarg; break;
      default:
        fprintf(stderr, "usage: quorvel-soak [--seconds N] [--threads N] [--seed N] [--emu PATH]\n");
        return 2;
    }
  }
  if (seconds < 10 || threads < 1 || threads > 64) {
    fprintf(stderr, "quorvel-soak: --seconds at least 10, --threads 1..64\n");
    return 2;
  }
  if (emu.empty()) {
    std::string self = argv[0];
    emu = (self.find('/') == std::string::npos ? "." : self.substr(0, self.rfind('/'))) +
          "/quorvel-emu";
  }
  signal(SIGPIPE, SIG_IGN);
  char tmpl[] = "/tmp/quorvel-soak.XXXXXX";
  if (mkdtemp(tmpl) == nullptr) return 1;
  int result = Soak(emu, tmpl, seconds, threads, seed).Run();
  std::string rm = std::string("rm -rf '") + tmpl + "'";
  if (system(rm.c_str()) != 0) perror("rm");
  return result;
}

// qvemu::RtspServer: the emulated camera's RTSP server (GStreamer). It serves
// generated test video and audio on a loopback port at the paths real play
// builds: H.264 at the root (the empty path, used for every non-zero codec
// family), MPEG-4 Part 2 at "/mpeg4" (main stream, the configured size) and
// "/mpeg4cif" (352x288). Every path carries the configured audio. With a user
// name set, clients must authenticate (basic or digest).
#pragma once

#include <atomic>
#include <string>
#include <thread>

typedef struct _GMainContext GMainContext;
typedef struct _GMainLoop GMainLoop;
typedef struct _GstRTSPServer GstRTSPServer;

namespace qvemu {

enum class RtspAudio { kNone, kG711, kAac };

struct RtspOptions {
  std::string user = "admin";  // empty: no authentication
  std::string password = "admin";
  RtspAudio audio = RtspAudio::kG711;
  int width = 320;             // H.264 and "/mpeg4" picture size
  int height = 240;
  int fps = 25;
  int key_interval = 25;       // frames between key frames
  int bitrate_kbps = 512;
  std::string pattern = "ball";  // videotestsrc pattern (e.g. "snow" for busy pictures)
  // One media (one encoder) shared by every client of a path, instead of one
  // per client.
  bool shared = false;
  // > 0: every media stops sending (the session stays open) this many
  // milliseconds after it started. 0: the media never starts, so the camera
  // accepts connections but leaves DESCRIBE unanswered. -1: never silent.
  int silent_after_ms = -1;
  // Non-empty: the root path serves this H.264 file (MP4 or Matroska) as it
  // is, paced in real time, instead of encoding test video; no audio.
  std::string h264_clip;
};

class RtspServer {
 public:
  RtspServer() = default;
  ~RtspServer();
  RtspServer(const RtspServer&) = delete;
  RtspServer& operator=(const RtspServer&) = delete;

  // Listens on 127.0.0.1:port (0: a free port). False when the server
  // cannot start.
  bool Start(const RtspOptions& options, int port = 0);
  // The bound port; 0 before Start.
  int Port() const { return port_; }
  // "rtsp://127.0.0.1:<port><path>" (no credentials).
  std::string Url(const std::string& path) const;
  // RTSP connections accepted so far.
  int ClientsConnected() const { return clients_; }
  // Closes every client and session and stops serving. Idempotent.
  void Stop();

 private:
  static void OnClientConnected(GstRTSPServer* server, void* client, void* self);

  RtspOptions options_;
  GMainContext* context_ = nullptr;
  GMainLoop* loop_ = nullptr;
  GstRTSPServer* server_ = nullptr;
  unsigned source_id_ = 0;
  int port_ = 0;
  std::atomic<int> clients_{0};
  std::thread thread_;
};

// The GStreamer launch description of one path ("", "/mpeg4", "/mpeg4cif").
std::string RtspLaunchLine(const RtspOptions& options, const std::string& path);

}  // namespace qvemu

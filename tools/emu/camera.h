// An emulated camera on the control link, for tests (started in-process on
// a free loopback port) and for the quorvel-emu program.
//
// One Camera listens on one TCP port and serves any number of control links
// at once, one thread a link. It checks user and password on login, answers
// heartbeats, PTZ commands, system control codes, configuration get and set
// (from and into its own configuration document), user data and the key
// exchange, voice talk, and pushes alarms when asked. It serves and takes
// files (file_service.h): downloads, uploads, firmware upgrades and
// snapshots, and plays its recordings (replay_server.h) as media packets
// on the asking link. Fault switches make it stay silent,
// refuse, drop links, send stray bytes or delay its replies. Every frame it
// receives is recorded so that tests can assert the exact bytes.
//
// Messages other than a login are ignored on a link that has not logged in.
// Every setter may be called at any time from any thread; it applies to the
// messages that follow.
#pragma once

#include <cstdint>
#include <ctime>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "quorvel/quorvel.h"

namespace qvemu {

// How the camera's files travel: over a data channel of their own, or
// inside the control link.
enum class FileMode { kChannel, kLink };

struct CameraOptions {
  std::string user = "admin";
  std::string password = "admin";
  std::string bind_address = "127.0.0.1";
  uint16_t port = 0;              // 0: a free port, read back with Port()
  bool front_replay = true;       // the ability list holds "front_replay"
  std::string session_id = "emu-session-1";  // sent in the login reply
  std::string config_document;    // initial configuration document; empty: a built-in default
  bool verbose = false;           // print what it does (the program turns this on)
  std::string key = "0123456789abcdef0123456789abcdef";  // KeyValue of the key reply
  std::string user_data = "QV-EMU-0001";  // initial answer to code 1034
  size_t record_limit = 10000;    // frames kept by Received(); the oldest go first
  std::string files_dir;          // folder the file store serves and keeps uploads in; "": memory only
  FileMode file_mode = FileMode::kChannel;
  int recording_seconds = 60;     // length of each recording file of the recordings store
  // Hostile mode (hostile.h): replies, pushed frames and served files turn
  // hostile now and then, in a sequence fixed by the seed.
  bool hostile = false;
  uint64_t hostile_seed = 0;
  bool hostile_replay = false;    // replay media and start answers only, by hostile_seed
};

struct ReceivedFrame {
  uint32_t flag = 0;              // frame flag as received: 0x51589158 plain, 0x52598157 encrypted
  std::string payload;            // the exact payload bytes
  std::string type, code, msg_flag;  // MESSAGE_HEADER attributes (empty when not parsable)
  // Text between <MESSAGE_BODY> and </MESSAGE_BODY>, so with the line feeds
  // the envelope puts around it; empty for "<MESSAGE_BODY/>".
  std::string body;
  int connection = 0;             // 1 for the first accepted link, 2 for the next, ...
  unsigned long tick = 0;         // GetTickCount() at receipt
};

struct AlarmSpec {
  int year = 2024, month = 1, day = 1, wday = 1, hour = 0, minute = 0, second = 0;
  int code = 0, flag = 0, level = 0;
  std::string data;
};

enum class LoginReply { Accept, Silent, Refuse };

// What the camera's voice talk saw.
struct TalkStats {
  int starts = 0;          // talk start requests accepted
  int refusals = 0;        // ... refused (busy, parameters, disabled)
  int stops = 0;           // stop requests of the talking link
  uint64_t packets = 0;    // well-formed talk packets of the talking link
  uint64_t bytes = 0;      // audio bytes in them
  int bad_packets = 0;     // talk packets that did not parse, or from a link not talking
  std::string audio;       // the audio itself, in order (the first 16 MB)
};

// Replay faults, each hitting one video frame of a play (SetReplayFault).
enum class ReplayFault {
  kNone,
  kSkipSequence,          // the frame's second packet skips a sequence number
  kPacketLongerThanData,  // its first packet claims 100 bytes more than it carries
  kPosBeyondMessage,      // its first message announces 1000 bytes more than it holds
  kOversizeFrame,         // the frame is 2.5 MiB: more than a host's assembly buffer
};

// Where the most recent play stands.
struct ReplayState {
  bool open = false;       // a recording is being played (not stopped, not ended)
  bool paused = false;
  bool ended = false;      // its last frame went out
  int speed_num = 1;       // pace: speed_num / speed_den of real time
  int speed_den = 1;
  int next_frame = 0;      // video frame index sent next
  uint64_t frames = 0;     // video and audio frames sent
  uint64_t packets = 0;    // media packets sent
};

// What the camera's remote playback saw.
struct ReplayStats {
  int starts = 0;          // plays started
  int refusals = 0;        // starts refused (no such recording, or no front_replay)
  int controls = 0;        // other replay requests
  std::string recording;   // name of the recording played last
  ReplayState state;
};

class FileService;

class Camera {
 public:
  explicit Camera(CameraOptions options = {});
  ~Camera();                       // stops
  bool Start();                    // listens; false on failure (or when already started)
  void Stop();                     // closes every link and the listener
  uint16_t Port() const;
  const CameraOptions& Options() const;

  // Faults; each takes effect for the messages that follow.
  void SetLoginReply(LoginReply mode, int refuse_flag = -1);   // Silent: never answer login
  void SetHeartbeatReplies(bool on);                           // off: heartbeats go unanswered
  void SetReplyDelayMs(int ms);                                // every reply waits this long
  void SetPtzReply(int flag, const std::string& code = "PTZ_CMD", const std::string& body = "");
  void InjectBeforeNextReply(const std::string& raw_bytes);    // stray bytes or a crafted 8-byte header ahead of the next reply frame
  void CloseLinks();                                           // drop every connected link now
  void SetUserData(const std::string& bytes);                  // answered to code 1034 as UserDevData (hex)
  // A canned reply body (and flag) for one Msg_type/Msg_code, overriding the
  // built-in answer. A canned login reply with flag 0 logs the link in.
  void SetReply(const std::string& type, long code, int flag, const std::string& body);
  void SetReply(const std::string& type, const std::string& code, int flag,
                const std::string& body);
  void ClearReplies();                                         // forget every canned reply

  // Pushed by the camera to every logged-in link; true when at least one
  // link took the whole frame.
  bool SendAlarm(const std::vector<AlarmSpec>& items);
  bool SendFrame(const std::string& payload, uint32_t flag = 0x51589158);
  bool SendRaw(const std::string& bytes);
  // The same to one link by its connection number, logged in or not.
  bool SendRawTo(int connection, const std::string& bytes);

  // What it received, in order.
  std::vector<ReceivedFrame> Received() const;
  std::vector<ReceivedFrame> ReceivedOfType(const std::string& type) const;
  // Waits until done(received frames) is true or the timeout passes; returns
  // done's last answer. done runs on the calling thread on a copy.
  bool WaitForFrames(const std::function<bool(const std::vector<ReceivedFrame>&)>& done,
                     int timeout_ms) const;
  void ClearReceived();
  int Connections() const;         // links accepted so far
  int OpenLinks() const;           // links open now
  int Logins() const;              // successful logins so far
  uint64_t SkippedBytes() const;   // stray bytes its reader hunted over
  int BadLengths() const;          // frame headers dropped for their length

  // Voice talk: off refuses every start as disabled (-3); a refusal flag
  // (-1 busy, -2 parameter error, -3 disabled) refuses every start with it,
  // 0 decides by the rules (one talking link; G.711 or PCM).
  void SetTalkEnabled(bool on);
  void SetTalkRefusal(int flag);
  // Also writes the talk audio to this file as it arrives; false when it
  // cannot be created.
  bool SetTalkSaveFile(const std::string& path);
  TalkStats Talk() const;
  void ClearTalk();

  // Remote playback: the data bytes of one media packet at most (a frame
  // is cut into fragments of this size), the sequence number of the first
  // packet of each play, and a fault hitting video frame `video_frame` of
  // every play (kNone: off).
  void SetReplayFragment(int bytes);
  void SetReplaySequenceStart(uint16_t sequence);
  void SetReplayFault(ReplayFault fault, int video_frame);
  ReplayStats Replay() const;
  time_t CameraTime() const;       // the camera's wall clock (what recordings are timed by)

  // File store, transfer mode and faults, data channel records, firmware
  // and snapshots.
  FileService& Files();

  std::string ConfigDocument() const;
  // Replaces the document; false (keeping the old one) when the text does
  // not parse or its root is neither IPCConfig nor VEXORAConfig.
  bool SetConfigDocument(const std::string& xml);
  // Called on the link's thread after a configuration set (code) changed the
  // configuration, with the whole record as it now is; it must not call
  // back into the camera.
  void SetConfigListener(std::function<void(long code, const IPCConfig& cfg)> listener);

  Camera(const Camera&) = delete;
  Camera& operator=(const Camera&) = delete;

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace qvemu

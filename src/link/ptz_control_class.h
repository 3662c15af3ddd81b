// CPTZControlClass: one logged-in camera.
//
// The session owns the TCP control link and the link thread that does all
// network work: connect, log in, then one queued request per turn,
// heartbeats, receive and dispatch. Host threads only append requests to the
// three queues (action, PTZ, aux) and learn results through the events the
// link thread posts to the owner (the session registry).
#pragma once

#include <netinet/in.h>

#include <atomic>
#include <condition_variable>
#include <list>
#include <mutex>
#include <string>

#include "base/bk_mutex.h"
#include "link/aux_msg_buffer.h"
#include "link/packet_framing.h"
#include "link/replay_assembler.h"
#include "quorvel/quorvel.h"
#include "voice/talk_audio_list.h"
#include "voice/talk_state.h"
#include "transfer/file_transfer_record.h"

class CPTZObjectList;
class CAudioThread;
class CIpcLinkThread;
class CThreadClass;
class CFileTransportThread;

class CPTZControlClass {
 public:
  enum LinkState { kNotConnected = 0, kConnected = 1, kLoggedIn = 2 };

  // Stores the arguments; starts nothing.
  CPTZControlClass(CPTZObjectList* owner, int auto_reconnect, int encrypt, const char* key);
  virtual ~CPTZControlClass();  // Kill(-1), then frees threads and queues
  CPTZControlClass(const CPTZControlClass&) = delete;
  CPTZControlClass& operator=(const CPTZControlClass&) = delete;

  // Stops the audio send, file send and link threads, in that order.
  // wait 0 only asks them to stop; any other value also waits for them. 0.
  virtual int Kill(int wait);

  // ---- set-up and link control ------------------------------------------
  // Device address (dotted IPv4 or host name), port and credentials; the
  // last argument is unused. 0.
  int SetParam(const char* host, long port, const char* user, const char* password, int mode);
  // Creates the link thread if needed and starts it unless it runs. 0, or
  // the start failure.
  int StartThread();
  // Starts the link thread again. -8999996 without a link thread, -8999990
  // when it cannot start or when asked from the link thread itself,
  // -9000002 when the session was logged out meanwhile. Waits for the old
  // thread: call it pinned and without the registry lock, so that the
  // thread's last callbacks may still use the registry.
  int Reconnect();
  // Pinned, the session is not deleted (Shutdown waits) even while the
  // registry lock is not held. Pin under the registry lock.
  void Pin();
  void Unpin();
  // Teardown by the registry: MarkRetired when the session leaves the table
  // (a restart in progress then starts nothing), Shutdown to stop and wait
  // for every thread and for every pin, before deletion.
  void MarkRetired() { retired_ = true; }
  void Shutdown();
  int SetAutoReconnect(int on);  // 0
  int GetReplayAblity() const { return replay_ability_; }  // -1 unknown, 0 no, 1 yes
  int LinkStateValue() const { return link_state_; }
  // 1 from StartAudio until StopAudio or the end of the link thread: voice
  // talk is wanted (file transfers are refused meanwhile).
  int TalkRequested() const { return talk_.requested; }

  void SetUserID(long id) { user_id_ = id; }
  long UserID() const { return user_id_; }
  void SetAddressText(const std::string& text) { address_text_ = text; }
  const std::string& AddressText() const { return address_text_; }
  const std::string& Host() const { return host_; }
  long Port() const { return port_; }
  const std::string& UserName() const { return user_; }
  const std::string& Password() const { return password_; }
  std::string SessionID() const;
  std::string AbilityList() const;
  // True on the session's own link thread or file send thread (inside its
  // callbacks).
  bool OnLinkThread() const;
  // True on the link thread of any session.
  static bool OnAnyLinkThread();
  // Ends the link thread's current receive wait, so that work queued for it
  // (a request, talk packets, upload data) goes out on its next turn at once.
  // Any thread may call it; the session's own queueing operations do. A step
  // of the turn that leaves work for the next turn calls it as well.
  void WakeLinkThread();

  void AuxMsgLock() { aux_lock_.Lock(); }
  void AuxMsgUnLock() { aux_lock_.Unlock(); }
  void PtzCmdLock() { ptz_lock_.Lock(); }
  void PtzCmdUnLock() { ptz_lock_.Unlock(); }
  void ActionLock() { action_lock_.Lock(); }
  void ActionUnLock() { action_lock_.Unlock(); }

  // ---- requests ------------------------------------------------------------
  // Every queueing operation first checks the link state: -8999997 before
  // the TCP link is up, -8999996 before login.

  // PTZ command XML, wrapped and queued on the PTZ queue; a "stop" command
  // is queued 6 times, 50 ms apart. 0, -8999992 for null.
  int WritePTZString(const char* xml);
  // A finished message, queued on the aux queue as it is. 0.
  int WriteAUXString(const char* message, int encrypted);
  // type must be a system control, configuration, VOD or encryption
  // message type (else -8999995); wrapped and queued on the aux queue. 0.
  int WriteAUXStringEx(const char* type, long code, long flag, const char* body);
  // length bytes queued as they are on the aux queue. 0.
  int WriteAUXStringEx1(const char* data, int length);
  // A finished message queued on the action queue, which the link thread
  // serves first (talk, replay and transfer requests). 0.
  int WriteActionString(const char* data, int length);
  // A finished message sent in an encrypted frame. 0.
  int SendEncryptRawData(const char* message);

  int SystemControl(unsigned long code, int flag, const char* body);
  int VodControl(unsigned long code, int flag, const char* body);
  // Configuration set / get: the code and the body text; the other
  // arguments are unused and the reply arrives as an aux response.
  int SetDVRConfig(unsigned long code, long channel, const void* body, unsigned long size);
  int GetDVRConfig(unsigned long code, long channel, void* body, unsigned long size,
                   unsigned long* returned);
  int CreateIFrame(int stream);  // code 1032
  int GetRecordFileList();       // code 1021, record mode 1
  int ExchangeEncrypt();         // the session key, code 150

  // Builds the snapshot request (code 1043) into buffer; queues nothing.
  // Its length.
  int SnapPicMakeRequest(int stream, int quality, char* buffer, int size);
  // Marks a snapshot pending for buffer/size and queues message on the aux
  // queue without state checks. 1.
  int SnapPicEx(const char* message, char* buffer, int size);
  // Asks for a snapshot to be stored at local_file. wait_ms < 1: returns 0
  // once queued. Otherwise waits for the camera's snapshot-ready alarm: 0
  // when the picture transfer started, the transfer's error, or -8999961.
  int SnapPic(int stream, int quality, const char* local_file, int wait_ms);
  // Asks for the user data (code 1034) and waits up to 5 s for it: at most
  // *size - 1 bytes, terminated, *size becomes the count (0 on time-out).
  // Without a buffer or a positive size only asks. 0 or the queue error.
  int GetUserData(char* buffer, int* size);
  // Prints a note and does nothing. 0.
  int SetUserData(char* data, int length);
  // The last PTZ / aux reply body. Its length; -3 before login.
  int GetLastPTZResponse(std::string& out);
  int GetLastAUXResponse(std::string& out);

  // ---- voice talk --------------------------------------------------------
  // Asks the camera to take talk (G.711 for audio types below 3, else PCM
  // with the rate and channels) and marks talk requested. 0; -8999986 when
  // talk is already requested; -8999997 / -8999996 before login.
  int StartAudio(int audio_type, int sample_rate, int channels);
  // Asks the camera to stop, stops the audio send thread and clears the
  // talk values. 0; -8999998 when talk is not requested.
  int StopAudio();
  // One frame of host audio for the audio send thread. length; -1 while
  // that thread does not run (before the camera accepted talk).
  long AudioFrameData(const char* data, long length);
  TalkAudioList& TalkAudio() { return talk_audio_; }
  void SetAudioSendTick(unsigned long tick) { talk_.last_send_tick = tick; }

  // ---- file transfers: one at a time, the data over the data channel or
  // inside the control link, as the camera's reply says ----------------------
  // Uploads local_file, announced with file_type (1 firmware, 0 configuration).
  // 0; -8999982 no name or not readable; -8999988 / -8999987 while an upload /
  // a download runs.
  int UploadFile(long file_type, const char* local_file);
  // Downloads remote_file into local_file. 0; -8999992 a null name; -8999997,
  // -8999996 before login; -8999987 / -8999988 while a download / an upload
  // runs; -8999986 while talk is requested.
  int DownloadFile(long file_type, const char* remote_file, const char* local_file);
  // Percent moved of the running transfer in that direction (1 upload, 0
  // download): 101 when no transfer runs, -8999984 for the other direction.
  long GetDownloadPos(long direction);
  // Percent moved; -1 no name, -2 not connected, -3 not logged in.
  int GetUploadFileProgress(const char* name);
  int GetDownloadFileProgress(const char*) { return 0; }
  int DownloadFileStop(const char*) { return 0; }
  int RemoveFile(const char*) { return 0; }
  // Stops the file send thread of a running transfer. 0.
  int UploadFileStop();
  // Ends the running transfer, either direction (the argument is unused).
  // 0, or -8999985 when none runs.
  int StopDownload(int direction);
  // Ends a link-mode transfer with code (0 success) and posts its status
  // (14 / 15 upload, 16 / 17 download). 0.
  int OnFileTransportStatus(int code, const char* text);
  // Tests mark talk as asked for (no downloads meanwhile).
  void SetTalkRequested(bool on) { talk_.requested = on ? 1 : 0; }

  // ---- remote playback ----------------------------------------------------
  // Asks the camera to play a recording by name / from a time (seconds);
  // the time form makes later actions possible under the play name "test".
  // 0; -8999979 unless the camera can replay; -8999997 / -8999996 before
  // login; -8999992 for a null or overlong name.
  int PlayFile(const char* name);
  int PlayFile(long time);
  // A replay action with its parameter; mode 0 names the play file, mode 1
  // is the time-line form. 0; -8999981 without a play file; -8999980 for
  // an action outside 0..7; -8999992 for another mode.
  int ControlPlay(long action, int mode, long parameter);
  int VideoSeconds() const { return video_seconds_; }

  // ---- events (link thread) -------------------------------------------------
  long PostStatusMsg(long code, const char* text);
  long PostPTZResponseMsg(long code, long flag, const char* body);
  // Decodes user data (1034) before forwarding.
  long PostAuxResponseMsg(long code, long flag, const char* body);
  // Completes a pending snapshot (alarm code 23) before forwarding.
  long PostAlarmMsg(ALARM_ENTRY* entry);

  // ---- link thread ------------------------------------------------------------
  int LinkThread();  // the body of CIpcLinkThread
  CPacketFraming& Framing() { return framing_; }

 private:
  enum RoundResult { kRoundReady, kRoundRetry, kRoundStop };

  // Connection phase: socket, options, connect, first login request.
  RoundResult ConnectPhase(char* request, int request_size);
  int OpenSocket();
  in_addr_t ResolveHost();
  bool Connect(int sock);
  bool SendLogin(char* request, int request_size, bool first);
  // Main loop of one connected round; returns when the round ends.
  void MainLoop(char* request, int request_size);
  bool LoginWatch(char* request, int request_size, bool* sent);
  bool SendOneRequest(bool* sent);
  bool PopRequest(CAuxMsgBuffer* out, int* origin);
  bool Heartbeat(char* request, int request_size);
  bool ReceiveTurn();
  // How long this turn's receive may wait: 0 with work pending or a timer
  // due, else until the loop's next deadline (heartbeat or login resend),
  // at most 300 ms while talk or a transfer needs the turn.
  int TurnWaitMs();
  // A transfer is waiting for its port or moves its data in the link.
  bool TransferNeedsTurns();
  bool RequestsQueued();
  void DrainWake();
  // Ends a round; false when the outer loop must end.
  bool EndRound();
  void ThreadExit();
  bool Running();
  void CloseSocket();

  // Dispatch of one received message (terminated payload); false when the
  // round must end.
  bool Dispatch(char* message, int length);
  bool OnLoginReply(long flag, char* message, const char* flag_text);
  void OnKeyReply(const char* body);
  void OnPtzReply(const char* code, long flag, const char* flag_text, const char* body);
  void OnAlarmReport(char* message);
  void OnSystemReply(long code, long flag, const char* body);
  void UpdateAbility(const char* body);

  // Remote playback on the link thread: replay control replies, media
  // messages and the packets they carry.
  void OnReplayReply(long code, long flag, char* body);
  void OnMediaDataMessage(char* message, int length);
  int OnRecvMediaData(const unsigned char* packet, int length);
  int QueueReplayRequest(const char* format, ...) __attribute__((format(printf, 2, 3)));

  // Voice talk on the link thread: the camera's talk replies, the upkeep
  // (repeated start, 8 s silence), the packets of one turn, the thread's end.
  void OnTalkReply(const char* code, long flag, const char* flag_text, char* message);
  void OnTalkStartReply(long flag, char* message);
  void TalkUpkeep();
  void SendTalkPackets();
  void TalkAtThreadExit();
  // The talk start and stop request messages.
  std::string TalkStartRequest();
  std::string TalkStopRequest(const char* body_format);
  int QueueAction(const std::string& message);
  bool AudioThreadRunning();

  // Formats a status text (kept as the last status text) and posts it.
  long PostStatus(long code, const char* fmt, ...) __attribute__((format(printf, 3, 4)));
  int CheckLoggedIn();
  int CopyResponse(const std::string& response, std::string& out);
  int Queue(std::list<CAuxMsgBuffer>& queue, CBkMutex& lock, const CAuxMsgBuffer& msg);
  // Fetches a ready snapshot. The download's start result.
  int StartSnapshotDownload(const char* remote, const char* local);
  // Waits, within the snapshot's wait from start, for its download to end.
  void WaitSnapshotStored(unsigned long start, unsigned long wait_ms);

  // File transfers (link thread): the camera's reply to an upload (1022) or
  // download (1023) request; re-announcement, stall rule and link-mode
  // upload data of one turn (sent: something else went out this turn); the
  // data of a link-mode download (false when no such download runs).
  long OnTransferReply(long code, long flag, const char* body);
  void FileTransferUpkeep(bool sent);
  void SendUploadPacket();
  bool OnFileMediaData(char* message, int length);
  // Creates the file send thread object when there is none (transfer lock held).
  void EnsureFileThread();
  // Moved bytes of the file send thread's transfer, and its end.
  void SetTransferProgress(unsigned generation, uint32_t position, uint32_t total);
  void EndChannelTransfer(unsigned generation);
  // The link thread's lock of a link-mode transfer's open file.
  void LockTransferFile();
  void UnlockTransferFile();
  friend class CFileTransportThread;
  // The fuzz targets hand received messages straight to Dispatch.
  friend struct FuzzLinkAccess;

  CPTZObjectList* owner_;
  std::string host_;
  long port_ = 0;
  std::string user_;
  std::string password_;
  std::string session_id_;
  std::string log_label_;
  std::string address_text_;
  long user_id_ = 0;
  int encrypt_ = 0;
  std::string key_;

  // Restarts (Reconnect) and the final Shutdown one at a time; pins.
  std::mutex restart_mu_;
  std::atomic<bool> retired_{false};
  std::mutex pin_mu_;
  std::condition_variable pin_cv_;
  int pins_ = 0;

  CAudioThread* audio_send_thread_ = nullptr;  // voice talk sender
  CFileTransportThread* file_send_thread_ = nullptr;  // file transport channel
  CIpcLinkThread* link_thread_ = nullptr;

  int wake_fd_ = -1;  // eventfd watched beside the socket

  std::list<CAuxMsgBuffer> ptz_queue_;
  std::list<CAuxMsgBuffer> aux_queue_;
  std::list<CAuxMsgBuffer> action_queue_;
  CBkMutex aux_lock_;
  CBkMutex ptz_lock_;
  CBkMutex action_lock_;
  mutable CBkMutex state_lock_;  // texts shared with host threads

  std::atomic<int> link_state_{kNotConnected};
  std::atomic<int> replay_ability_{-1};
  std::string ability_list_;
  std::atomic<int> auto_reconnect_;
  std::atomic<unsigned> last_ptz_tick_{0};

  // Link thread state of the current round.
  int sock_ = -1;
  unsigned long last_recv_tick_ = 0;
  unsigned long heartbeat_tick_ = 0;
  unsigned long login_send_tick_ = 0;
  int login_resends_ = 0;
  unsigned long reconnect_pause_ = 10;
  std::string status_text_;  // last formatted status text

  // User data (code 1034): length -1 while no reply has come.
  char* user_data_ = nullptr;
  std::atomic<int> user_data_len_{-1};
  // Snapshot: result 0 while waiting, >0 started, <0 failed.
  std::atomic<int> snap_result_{0};
  std::string snap_local_file_;
  char* snap_buffer_ = nullptr;
  int snap_buffer_size_ = 0;
  int snap_pending_ = 0;

  // Voice talk; the lock guards the talk values and the audio send
  // thread's start and stop.
  TalkState talk_;
  CBkMutex talk_lock_;
  TalkAudioList talk_audio_;

  // The file transfer record; the open file of a link-mode transfer is also
  // guarded by the link thread's lock "download_file_handle" (taken first).
  FileTransferRecord transfer_;
  CBkMutex transfer_lock_;
  char* upload_packet_ = nullptr;  // link-mode upload frames, allocated on first use

  // Remote playback: the play file name (host threads), the assembler and
  // the recording's length (link thread).
  std::string play_file_name_;
  CReplayAssembler replay_;
  std::atomic<int> video_seconds_{0};

  std::string last_ptz_response_;
  std::string last_aux_response_;

  CPacketFraming framing_;
};

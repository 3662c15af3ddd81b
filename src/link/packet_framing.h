// CPacketFraming: the framed packets of the control link and the socket
// waits under them.
//
// A frame is an 8-byte header (32-bit flag, 32-bit signed payload length,
// both little-endian) and the payload. Every wait is sliced into polls of
// at most 300 ms that re-check the clock and the watched thread, so a
// session that is being stopped leaves any send or receive within one slice.
// Time-outs are in milliseconds from one start tick; -1 means no limit.
#pragma once

#include <cstdint>
#include <string>

class CThreadClass;

class CPacketFraming {
 public:
  static constexpr uint32_t kPlainFlag = 0x51589158u;      // bytes 58 91 58 51
  static constexpr uint32_t kEncryptedFlag = 0x52598157u;  // bytes 57 81 59 52
  static constexpr int kMaxPayload = 15728640;             // 0xF00001 - 1
  static constexpr int kHeaderSize = 8;
  static constexpr int kSpareBytes = 20;                   // behind every received payload

  // Results shared by the routines (besides counts of bytes).
  static constexpr int kSocketError = -1234567;  // select/poll failed, exception, recv <= 0
  static constexpr int kHeaderNotSent = -1;      // send_with_header: header short
  static constexpr int kLengthTooSmall = -4;     // received length 0 or negative
  static constexpr int kLengthTooLarge = -5;     // received length 0xF00001 or more
  static constexpr int kWaitSliceMs = 300;

  // The thread whose stop ends every wait; null: waits end only by time.
  void WatchThread(CThreadClass* thread) { watched_ = thread; }
  // The device name that log lines carry.
  void SetDeviceName(const std::string& name) { device_name_ = name; }
  const char* DeviceName() const { return device_name_.c_str(); }

  // One poll of wait_ms: 1 ready, 0 nothing yet, kSocketError otherwise.
  int SocketCanRead(int sock, int wait_ms);
  int SocketCanWrite(int sock, int wait_ms);

  // Waits in slices until the socket is ready (1), fails (kSocketError),
  // the time-out passes or the watched thread stops (0).
  int WaitForSock(int for_write, int sock, unsigned long start_tick, int timeout_ms);

  // Sends all of data. len when done; 0 for len <= 0; a failed wait's
  // result; the count sent so far when send fails. extra_flags are added to
  // every send (MSG_MORE keeps a frame's header with its payload).
  int SendData(int sock, const char* data, int len, unsigned long start_tick, int timeout_ms,
               int extra_flags = 0);

  // One frame, plain or encrypted flag. Payload bytes sent, 0, kSocketError,
  // or kHeaderNotSent.
  int send_with_header(int sock, const char* payload, int len, int timeout_ms, int encrypted);

  // One frame. Hunts for a flag byte by byte (bytes before it are skipped),
  // checks the length, then reads the payload into a new char array of
  // length + 20 stored in *payload (delete[] by the caller, whatever the
  // result). The payload length, or 0, kSocketError, kLengthTooSmall,
  // kLengthTooLarge.
  int recv_with_header(int sock, char** payload, int timeout_ms);

 private:
  int Poll(int sock, bool for_write, int wait_ms);
  bool WatchedStopped();

  CThreadClass* watched_ = nullptr;
  std::string device_name_;
};

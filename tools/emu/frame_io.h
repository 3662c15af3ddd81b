// Server side of the control-link framing: an 8-byte header (flag, payload
// length, both little-endian) and the payload. Blocking reads and writes in
// short poll slices, so that a stop request ends every wait promptly.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace qvemu {

constexpr uint32_t kPlainFlag = 0x51589158;      // bytes 58 91 58 51
constexpr uint32_t kEncryptedFlag = 0x52598157;  // bytes 57 81 59 52
constexpr int32_t kMaxPayload = 15728640;        // largest accepted length

// Header and payload as they go on the wire.
std::string EncodeFrame(const std::string& payload, uint32_t flag = kPlainFlag);

// Writes every byte within timeout_ms; false on a socket error, time-out or
// when *stop becomes true (stop may be null).
bool WriteAll(int fd, const std::string& bytes, int timeout_ms,
              const std::atomic<bool>* stop);

// Reads frames from one connected socket. Bytes before a flag are skipped
// (the reader resynchronises on the next flag); a header whose length is
// outside 1..kMaxPayload is consumed and reported, and the hunt starts again
// behind it. Memory held: the largest payload plus one read chunk.
class FrameReader {
 public:
  enum class Result {
    kFrame,       // *flag and *payload hold one frame
    kBadLength,   // a header with an unusable length was dropped
    kIncomplete,  // the payload did not arrive within the frame time-out
    kClosed,      // the peer closed the connection or the socket failed
    kStopped,     // *stop became true
  };

  // frame_timeout_ms: time allowed from a complete header to the payload's
  // last byte.
  explicit FrameReader(int fd, int frame_timeout_ms = 5000);

  // Waits for the next frame without limit, until the peer closes or stop.
  Result Next(const std::atomic<bool>& stop, uint32_t* flag, std::string* payload);

  uint64_t skipped_bytes() const { return skipped_; }  // total bytes hunted over
  int32_t last_bad_length() const { return last_bad_length_; }

 private:
  // Appends what the socket has; waits at most wait_ms. false on close/error.
  bool Fill(int wait_ms, bool* got);
  // Drops bytes before the first flag in the buffer; true when one is there.
  bool HuntFlag();
  void Consume(size_t n);

  int fd_;
  int frame_timeout_ms_;
  std::string buf_;
  size_t pos_ = 0;
  uint64_t skipped_ = 0;
  int32_t last_bad_length_ = 0;
};

}  // namespace qvemu

// CReplayAssembler: puts replay media packets back together into whole
// frames.
//
// A media packet is a 20-byte header (little-endian: tick, tick again,
// 16-bit sequence, 16-bit data length, packet type, key-frame flag, media
// kind, reserved, frame index) and its data. Type 17 carries a whole frame;
// 1, 0 and 16 the first, a middle and the last fragment of one. Fragments
// must follow one another with consecutive sequence numbers (16-bit, so
// 65535 is followed by 0) and the same frame index; a packet that breaks
// the run is dropped, and so is the rest of its frame: the frame in the
// buffer is only handed out once its last fragment arrived in order.
//
// The assembly buffer holds the first packet's header, the data of all the
// frame's packets and a 16-byte trailer (0x1A2B3C4D, 0, frame index,
// key-frame index). It is 2 MiB, allocated once by Allocate() and kept.
#pragma once

#include <atomic>
#include <cstdint>

class CReplayAssembler {
 public:
  static const int kBufferSize = 0x200000;
  static const int kHeaderSize = 20;
  static const int kTrailerSize = 16;

  enum PacketType { kMiddle = 0, kFirst = 1, kLast = 16, kWhole = 17 };

  // A whole frame: data and length cover the frame's bytes and the trailer.
  struct Frame {
    int kind;                 // media kind byte: 0 video, non-zero audio
    int key;                  // key-frame flag byte
    uint32_t tick;            // the first packet's tick
    uint32_t index;           // frame index
    const char* data;
    unsigned long length;
  };

  CReplayAssembler() = default;
  ~CReplayAssembler();
  CReplayAssembler(const CReplayAssembler&) = delete;
  CReplayAssembler& operator=(const CReplayAssembler&) = delete;

  // Allocates the buffer if it is not there yet (retrying until it is).
  void Allocate();
  bool Allocated() const { return buffer_.load(std::memory_order_acquire) != nullptr; }

  // Takes one packet (header and data, length bytes). True when it
  // completed a frame, which *frame then describes until the next call.
  // A packet that cannot be used is logged and dropped. Call Allocate()
  // first; one thread at a time.
  bool Add(const unsigned char* packet, int length, Frame* frame);

  // Forgets the video ticks (a new start of playback).
  void ClearFirstVideoTick() { first_video_tick_ = 0; }
  uint32_t FirstVideoTick() const { return first_video_tick_; }
  uint32_t LatestVideoTick() const { return latest_video_tick_; }

 private:
  // Appends data and, for a last fragment, closes the frame.
  bool Append(const unsigned char* packet, int data_len, bool last, Frame* frame);
  // Writes the trailer behind the data and fills *frame.
  void Finish(Frame* frame);
  bool Fits(int more) const;

  std::atomic<unsigned char*> buffer_{nullptr};
  int count_ = 0;               // bytes in the buffer, header included
  bool assembling_ = false;     // a first fragment waits for its last
  bool has_header_ = false;     // the buffer holds an earlier packet's header
  uint32_t last_key_index_ = 0;
  uint32_t first_video_tick_ = 0;
  uint32_t latest_video_tick_ = 0;
};

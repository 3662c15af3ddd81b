// CRingBuffer: a fixed ring of frame slots between one producer thread and
// one consumer thread.
//
// Each slot keeps its own heap buffer, reused from frame to frame and only
// re-allocated when a frame does not fit (buffers grow, never shrink). A ring
// of n slots holds at most n - 1 unread frames; when it is full the oldest
// unread frame is dropped, never the new one. After the reader found the
// ring empty it waits until `delay_count` frames have gathered again.
//
// Limits of Write: a frame over 131,072 bytes gets a slot of its size plus
// 10,240 bytes; a frame whose slot would exceed 524,288 bytes (that is,
// 514,049 bytes or more) is discarded and Write still answers 0.
#pragma once

#include <atomic>

#include "base/critical_section.h"

struct RING_BUFFER_ITEM {
  unsigned char* data;  // the slot's own buffer; null after a failed re-allocation
  int length;           // valid bytes; 0 = empty
  int flag;             // caller's per-frame flag (the key-frame mark for video)
  double timestamp;     // caller's time stamp, in the caller's unit
  RING_BUFFER_ITEM* next;
  RING_BUFFER_ITEM* prev;
  int alloc_size;       // bytes allocated for data
};

class CRingBuffer {
 public:
  explicit CRingBuffer(int slots);
  ~CRingBuffer();
  CRingBuffer(const CRingBuffer&) = delete;
  CRingBuffer& operator=(const CRingBuffer&) = delete;

  // Re-creates the ring with n slots of 65,536 bytes each. When the slot
  // array cannot be had (or n < 1) the ring is left empty with capacity 0.
  void Init(int slots);
  // Frees every buffer and the slot array; capacity and count become 0.
  int Release();
  // Name used in log lines; keeps 99 characters; null or "" changes nothing.
  void SetBufferName(const char* name);

  // Frames needed before reading resumes after the ring ran dry; at most
  // capacity - 1.
  void SetDelayCount(int n);
  int GetDelayCount() const { return delay_count_; }
  int GetReadCount() const { return count_; }
  int GetCapacity() const { return capacity_; }
  bool BufferIsFull() const;
  bool CanRead() const;

  // Copies one frame in (an empty one too: it is counted and read back with
  // length 0). 0 = stored, or deliberately not stored (too big, a negative
  // length, or null bytes with a length); -1 = no memory.
  int Write(const unsigned char* data, int length, int flag, double timestamp);
  // The write slot's buffer, at least `length` bytes, to fill in place; null
  // when no memory could be had.
  unsigned char* LockWriteBuffer(int length);
  // Commits the slot filled in place. -1 when buf is not the one handed out.
  int UnLockWriteBuffer(unsigned char* buf, int length, int flag, double timestamp);

  // Copies out and consumes the oldest frame; returns its length, 0 when
  // nothing may be read. The size is not checked: dest must hold the largest
  // frame the ring can carry.
  int Read(unsigned char* dest, int dest_size, int* flag, double* timestamp);
  // Exposes the oldest frame in place without consuming it; null when
  // nothing may be read. Finish with it quickly: overflow may reuse the slot.
  unsigned char* LockReadBuffer(int* length, int* flag, double* timestamp);
  // Consumes the frame from LockReadBuffer. -1 for any other pointer.
  int UnLockReadBuffer(unsigned char* buf);
  // Consumes the oldest frame as Read does, but hands over its buffer
  // instead of copying it out: the slot takes `spare` (spare_size bytes,
  // allocated with new[]; null leaves the slot to allocate on its next
  // frame) in exchange. Returns the buffer (the caller's to keep or give
  // back as a spare; *size is its allocation) with the frame's length,
  // flag and time stamp; null when nothing may be read (the spare is then
  // still the caller's).
  unsigned char* TakeReadBuffer(unsigned char* spare, int spare_size, int* length, int* flag,
                                double* timestamp, int* size);

  // The oldest frame's time stamp or flag: 1, or 0 while fewer than
  // delay_count frames are unread.
  int GetReadTimeStamp(double* timestamp);
  int IsKeyFrame(int* flag);

  // Empties the ring, keeping its buffers and the waiting state. 0.
  int ResetContent();

 private:
  // Takes a filled write slot into the ring (steps shared by Write and
  // UnLockWriteBuffer, which logs overflow in its own words); called under
  // the lock.
  void CommitWriteSlot(int length, int flag, double timestamp, bool copied);

  RING_BUFFER_ITEM* items_ = nullptr;
  RING_BUFFER_ITEM* write_item_ = nullptr;
  RING_BUFFER_ITEM* read_item_ = nullptr;
  int capacity_ = 0;
  std::atomic<int> count_{0};
  int delay_count_ = 1;
  int reserved_ = 0;
  std::atomic<int> waiting_{1};
  CRITICAL_SECTION lock_;
  unsigned char* locked_write_ = nullptr;
  char name_[100];
  unsigned char* locked_read_ = nullptr;
};

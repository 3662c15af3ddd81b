// CAviChunkWriter: the open recording file, written with few copies and few
// calls. Small pieces (chunk heads) are copied into a buffer of its own;
// frame bytes are referred to where they lie, and their owner keeps them
// unchanged until they are written (see FlushBlocks).
//
// The kernel takes a file most cheaply in whole, aligned blocks (it can put
// them into large page-cache folios), so FlushBlocks writes up to the last
// block boundary reached and keeps the rest queued, within a time bound.
#pragma once

#include <sys/uio.h>

#include <cstddef>
#include <cstdint>

class CAviChunkWriter {
 public:
  CAviChunkWriter() = default;
  ~CAviChunkWriter();
  CAviChunkWriter(const CAviChunkWriter&) = delete;
  CAviChunkWriter& operator=(const CAviChunkWriter&) = delete;

  // Opens the file with open(2) flags (and mode 0644). 0, or -1 (errno).
  int Open(const char* path, int flags);
  bool IsOpen() const { return fd_ >= 0; }

  // Room for `pieces` more pieces (and `copied` more copied bytes) before
  // a flush is due.
  bool HasRoom(int pieces, size_t copied) const;
  // Queues a copy of the bytes; false without room.
  bool Copy(const void* data, size_t length);
  // Queues the bytes where they lie; false without room.
  bool Refer(const void* data, size_t length);
  // Writes everything queued, in order. False when the file did not take
  // all of it (errno tells why); the queue is empty either way.
  bool Flush();
  // Writes what is queued up to the last multiple of kBlockBytes in the
  // file; the rest stays queued, unless some of it has waited hold_ms since
  // the first call that found it queued: then everything is written.
  // *referred_done receives how many referred pieces, oldest first, are now
  // written in full (their owner may reuse them). False as for Flush (the
  // queue is then empty and every referred piece done).
  bool FlushBlocks(unsigned long now_ms, unsigned long hold_ms, int* referred_done);
  // Bytes queued and not yet written.
  size_t Queued() const { return queued_; }

  // Writes bytes at an offset without moving the end of the file.
  bool WriteAt(uint64_t offset, const void* data, size_t length);
  // Closes the file, dropping anything still queued. 0, or -1 (errno).
  int Close();

  // Bytes that Copy takes while they wait.
  static const size_t kCopyBytes = 32768;
  static const size_t kBlockBytes = 262144;

 private:
  static const int kMaxPieces = 512;
  static const int kMaxMarks = 16;
  struct Mark {
    uint64_t end;  // file offset the queue reached at a FlushBlocks call
    unsigned long ms;
  };

  // Writes the first `bytes` of the queue (a piece may be cut) and drops
  // what was written from it; *referred_done as for FlushBlocks.
  bool WriteFront(size_t bytes, int* referred_done);
  // Hands iovecs to the kernel until all are written.
  bool WriteAll(struct iovec* pieces, int count);
  bool IsCopied(const struct iovec& piece) const;
  void Reset();

  int fd_ = -1;
  uint64_t written_ = 0;  // bytes appended to the file so far
  size_t queued_ = 0;
  struct iovec pieces_[kMaxPieces];
  bool referred_[kMaxPieces];
  int piece_count_ = 0;
  unsigned char copied_[kCopyBytes];
  size_t copied_used_ = 0;
  Mark marks_[kMaxMarks];
  int mark_count_ = 0;
};

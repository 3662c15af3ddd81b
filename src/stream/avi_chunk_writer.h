// CAviChunkWriter: the open recording file, written with few copies and few
// calls. Small pieces (chunk heads) are copied into a buffer of its own;
// frame bytes are referred to where they lie, and their owner keeps them
// unchanged until the next Flush, which hands everything queued to the
// kernel with one writev.
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
  // a Flush is due.
  bool HasRoom(int pieces, size_t copied) const;
  // Queues a copy of the bytes; false without room.
  bool Copy(const void* data, size_t length);
  // Queues the bytes where they lie; false without room.
  bool Refer(const void* data, size_t length);
  // Writes what is queued, in order. False when the file did not take all
  // of it (errno tells why); the queue is empty either way.
  bool Flush();

  // Writes bytes at an offset without moving the end of the file.
  bool WriteAt(uint64_t offset, const void* data, size_t length);
  // Closes the file, dropping anything still queued. 0, or -1 (errno).
  int Close();

 // Bytes that Copy takes between two flushes.
  static const size_t kCopyBytes = 4096;

 private:
  static const int kMaxPieces = 256;

  int fd_ = -1;
  struct iovec pieces_[kMaxPieces];
  int piece_count_ = 0;
  unsigned char copied_[kCopyBytes];
  size_t copied_used_ = 0;
};

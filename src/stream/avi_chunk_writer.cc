#include "stream/avi_chunk_writer.h"

#include <fcntl.h>
#include <limits.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

CAviChunkWriter::~CAviChunkWriter() { Close(); }

int CAviChunkWriter::Open(const char* path, int flags) {
  Close();
  fd_ = open(path, flags, 0644);
  return fd_ >= 0 ? 0 : -1;
}

bool CAviChunkWriter::HasRoom(int pieces, size_t copied) const {
  return piece_count_ + pieces <= kMaxPieces && copied_used_ + copied <= kCopyBytes;
}

bool CAviChunkWriter::Copy(const void* data, size_t length) {
  if (!HasRoom(1, length)) return false;
  unsigned char* at = copied_ + copied_used_;
  memcpy(at, data, length);
  copied_used_ += length;
  // Consecutive copies make one piece.
  if (piece_count_ > 0 &&
      static_cast<unsigned char*>(pieces_[piece_count_ - 1].iov_base) +
              pieces_[piece_count_ - 1].iov_len == at) {
    pieces_[piece_count_ - 1].iov_len += length;
  } else {
    pieces_[piece_count_++] = {at, length};
  }
  return true;
}

bool CAviChunkWriter::Refer(const void* data, size_t length) {
  if (!HasRoom(1, 0)) return false;
  if (length > 0) pieces_[piece_count_++] = {const_cast<void*>(data), length};
  return true;
}

bool CAviChunkWriter::Flush() {
  bool ok = fd_ >= 0;
  struct iovec* next = pieces_;
  int left = piece_count_;
  while (ok && left > 0) {
    ssize_t n = writev(fd_, next, left > IOV_MAX ? IOV_MAX : left);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      if (n == 0) errno = EIO;
      ok = false;
      break;
    }
    // Skip what was written; a piece written in part is resumed.
    size_t written = static_cast<size_t>(n);
    while (left > 0 && written >= next->iov_len) {
      written -= next->iov_len;
      ++next;
      --left;
    }
    if (left > 0) {
      next->iov_base = static_cast<unsigned char*>(next->iov_base) + written;
      next->iov_len -= written;
    }
  }
  piece_count_ = 0;
  copied_used_ = 0;
  return ok;
}

bool CAviChunkWriter::WriteAt(uint64_t offset, const void* data, size_t length) {
  const unsigned char* p = static_cast<const unsigned char*>(data);
  while (fd_ >= 0 && length > 0) {
    ssize_t n = pwrite(fd_, p, length, static_cast<off_t>(offset));
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      if (n == 0) errno = EIO;
      return false;
    }
    p += n;
    offset += static_cast<uint64_t>(n);
    length -= static_cast<size_t>(n);
  }
  return fd_ >= 0;
}

int CAviChunkWriter::Close() {
  piece_count_ = 0;
  copied_used_ = 0;
  if (fd_ < 0) return 0;
  int ret = close(fd_);
  fd_ = -1;
  return ret == 0 ? 0 : -1;
}

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

bool CAviChunkWriter::IsCopied(const struct iovec& piece) const {
  const unsigned char* p = static_cast<const unsigned char*>(piece.iov_base);
  return p >= copied_ && p < copied_ + kCopyBytes;
}

bool CAviChunkWriter::Copy(const void* data, size_t length) {
  if (!HasRoom(1, length)) return false;
  unsigned char* at = copied_ + copied_used_;
  memcpy(at, data, length);
  copied_used_ += length;
  queued_ += length;
  // Consecutive copies make one piece.
  if (piece_count_ > 0 && !referred_[piece_count_ - 1] &&
      static_cast<unsigned char*>(pieces_[piece_count_ - 1].iov_base) +
              pieces_[piece_count_ - 1].iov_len == at) {
    pieces_[piece_count_ - 1].iov_len += length;
  } else {
    referred_[piece_count_] = false;
    pieces_[piece_count_++] = {at, length};
  }
  return true;
}

bool CAviChunkWriter::Refer(const void* data, size_t length) {
  if (!HasRoom(1, 0)) return false;
  if (length > 0) {
    referred_[piece_count_] = true;
    pieces_[piece_count_++] = {const_cast<void*>(data), length};
    queued_ += length;
  }
  return true;
}

bool CAviChunkWriter::WriteAll(struct iovec* next, int left) {
  while (left > 0) {
    ssize_t n = writev(fd_, next, left > IOV_MAX ? IOV_MAX : left);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      if (n == 0) errno = EIO;
      return false;
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
  return true;
}

bool CAviChunkWriter::WriteFront(size_t bytes, int* referred_done) {
  *referred_done = 0;
  if (bytes == 0) return fd_ >= 0;
  // Pieces [0, count) hold the bytes; of the last, `kept` stay queued.
  int count = 0;
  size_t covered = 0;
  while (count < piece_count_ && covered < bytes) covered += pieces_[count++].iov_len;
  size_t kept = covered > bytes ? covered - bytes : 0;
  struct iovec last = pieces_[count - 1];
  pieces_[count - 1].iov_len -= kept;
  bool ok = fd_ >= 0 && WriteAll(pieces_, count);
  if (!ok) {
    for (int i = 0; i < piece_count_; ++i) *referred_done += referred_[i] ? 1 : 0;
    Reset();
    return false;
  }
  written_ += bytes;
  queued_ -= bytes;
  int done = count;
  if (kept > 0) {
    --done;
    pieces_[count - 1] = {static_cast<unsigned char*>(last.iov_base) + last.iov_len - kept, kept};
  }
  for (int i = 0; i < done; ++i) *referred_done += referred_[i] ? 1 : 0;
  piece_count_ -= done;
  memmove(pieces_, pieces_ + done, sizeof(pieces_[0]) * static_cast<size_t>(piece_count_));
  memmove(referred_, referred_ + done, sizeof(referred_[0]) * static_cast<size_t>(piece_count_));
  // The copies still queued move to the front of their buffer.
  size_t shift = copied_used_;
  for (int i = 0; i < piece_count_; ++i) {
    if (IsCopied(pieces_[i])) {
      shift = static_cast<size_t>(static_cast<unsigned char*>(pieces_[i].iov_base) - copied_);
      break;
    }
  }
  if (shift > 0) {
    memmove(copied_, copied_ + shift, copied_used_ - shift);
    copied_used_ -= shift;
    for (int i = 0; i < piece_count_; ++i) {
      if (IsCopied(pieces_[i])) {
        pieces_[i].iov_base = static_cast<unsigned char*>(pieces_[i].iov_base) - shift;
      }
    }
  }
  return true;
}

bool CAviChunkWriter::Flush() {
  int done = 0;
  bool ok = WriteFront(queued_, &done);
  mark_count_ = 0;
  return ok;
}

bool CAviChunkWriter::FlushBlocks(unsigned long now_ms, unsigned long hold_ms, int* referred_done) {
  *referred_done = 0;
  if (queued_ == 0) {
    mark_count_ = 0;
    return fd_ >= 0;
  }
  uint64_t end = written_ + queued_;
  bool all = false;
  if (mark_count_ == 0 || marks_[mark_count_ - 1].end != end) {
    if (mark_count_ < kMaxMarks) {
      marks_[mark_count_++] = {end, now_ms};
    } else {
      all = true;
    }
  }
  // The first mark is the oldest call that found bytes still queued.
  if (now_ms - marks_[0].ms >= hold_ms) all = true;
  uint64_t target = all ? end : end / kBlockBytes * kBlockBytes;
  if (target <= written_) return true;
  bool ok = WriteFront(static_cast<size_t>(target - written_), referred_done);
  int passed = 0;
  while (passed < mark_count_ && marks_[passed].end <= written_) ++passed;
  mark_count_ = ok ? mark_count_ - passed : 0;
  memmove(marks_, marks_ + passed, sizeof(marks_[0]) * static_cast<size_t>(mark_count_));
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

void CAviChunkWriter::Reset() {
  piece_count_ = 0;
  copied_used_ = 0;
  queued_ = 0;
  mark_count_ = 0;
}

int CAviChunkWriter::Close() {
  Reset();
  written_ = 0;
  if (fd_ < 0) return 0;
  int ret = close(fd_);
  fd_ = -1;
  return ret == 0 ? 0 : -1;
}

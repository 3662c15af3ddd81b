// CRecordTask: the AVI side (header image, chunks, index).
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

#include "base/debug_log.h"
#include "stream/avi_header.h"
#include "stream/record_task.h"

namespace {

const uint64_t kTrailerMark = 0x1A2B3C4D;
const int kTrailerSize = 32;
const uint32_t kKeyFlag = 16;
// Entries that still give an index length within 31 bits.
const size_t kMaxIndexEntries = (0x7FFFFFFF - 16) / 32;
// Frames up to this size (audio) are copied into the file's queue; larger
// ones are written from the buffer they arrived in.
const int kCopiedFrameBytes = 512;
// Frame buffers held until written (about a block's and a batch's worth),
// and spares kept for the rings.
const size_t kMaxInFlight = 48;
const size_t kMaxSpares = 32;
static_assert(12 + sizeof(QV_VIDEO_PARAM::config) + kCopiedFrameBytes <= CAviChunkWriter::kCopyBytes,
              "a chunk's copied bytes fit the writer's buffer");

void PutLe32(unsigned char* p, uint32_t value) {
  for (int i = 0; i < 4; ++i) p[i] = static_cast<unsigned char>((value >> (8 * i)) & 0xFF);
}

// Length of a video frame without the trailer some encoders append: four
// 64-bit words, the first 0x1A2B3C4D and the third not less than the fourth.
int WithoutTrailer(const unsigned char* data, int length) {
  if (length <= 20 || length < kTrailerSize) return length;
  const unsigned char* t = data + length - kTrailerSize;
  if (AviGetWord(t) == kTrailerMark && AviGetWord(t + 16) >= AviGetWord(t + 24)) {
    return length - kTrailerSize;
  }
  return length;
}

}  // namespace

int CRecordTask::InitAVIHeader() {
  int size = audio_enable_ ? kAviAvHeaderSize : kAviVideoHeaderSize;
  try {
    header_.assign(static_cast<size_t>(size), 0);
  } catch (const std::bad_alloc&) {
    header_.clear();
    return -1;
  }
  int built = audio_enable_
                  ? init_avi_header(header_.data(), size, video_codec_, audio_codec_, width_,
                                    height_, bit_rate_, frame_rate_, sample_rate_,
                                    bits_per_sample_, channels_)
                  : init_avi_header_video(header_.data(), size, video_codec_, width_, height_,
                                          bit_rate_, frame_rate_);
  return built == size ? 0 : -1;
}

int CRecordTask::UpdateAVIHeader() {
  if (header_.size() < 16) return -1;
  uint64_t index_bytes = 16 + 32 * static_cast<uint64_t>(index_.size());
  uint64_t file_size = header_.size() + movie_offset_ + index_bytes;
  AviPutWord(header_.data() + avi_offset::kRiffSize, file_size - 8);
  AviPutWord(header_.data() + avi_offset::kTotalFrames, static_cast<uint64_t>(video_frames_));
  AviPutWord(header_.data() + header_.size() - 16, 8 + movie_bytes_);
  return 0;
}

int CRecordTask::WriteAVIHeader() {
  if (!file_.IsOpen() || header_.empty()) return -1;
  if (header_written_) return file_.WriteAt(0, header_.data(), header_.size()) ? 0 : -1;
  // A new file starts with it; the chunks follow.
  header_written_ = file_.Refer(header_.data(), header_.size()) && file_.Flush();
  return header_written_ ? 0 : -1;
}

int CRecordTask::InitAVIIndex() {
  index_.clear();
  return 0;
}

// Only video chunks are indexed, so the identifier is always "00dc".
int CRecordTask::AddAVIIndex(const char*, int flags, int length) {
  if (index_.size() >= kMaxIndexEntries) return -1;
  IndexEntry entry;
  entry.flags = static_cast<uint32_t>(flags);
  entry.offset = 8 + movie_offset_;
  entry.length = static_cast<uint32_t>(length);
  try {
    index_.push_back(entry);
  } catch (const std::bad_alloc&) {
    return -1;
  }
  return 0;
}

int CRecordTask::WriteAVIIndex() {
  size_t count = index_.size();
  if (count > kMaxIndexEntries) {
    QV_LOG("[%s:%d]bad entry count: %d.\n", static_cast<int>(count));
    return -1;
  }
  if (count == 0) QV_LOG("[%s:%d]bad entry count!\n");
  size_t length = 16 + 32 * count;
  unsigned char* buf = new (std::nothrow) unsigned char[length];
  if (buf == nullptr) {
    QV_LOG("[%s:%d]memory is not enough! index_length=%d\n", static_cast<int>(length));
    return -1;
  }
  AviPutCode(buf, "idx1");
  AviPutWord(buf + 8, 32 * static_cast<uint64_t>(count));
  unsigned char* p = buf + 16;
  for (const IndexEntry& e : index_) {
    AviPutCode(p, "00dc");
    AviPutWord(p + 8, e.flags);
    AviPutWord(p + 16, e.offset);
    AviPutWord(p + 24, e.length);
    p += 32;
  }
  bool ok = FlushChunks() && file_.Refer(buf, length) && file_.Flush();
  delete[] buf;
  if (!ok) {
    QV_LOG("[%s:%d]write avi index failed, errno=%d\n", errno);
    return -1;
  }
  return 0;
}

bool CRecordTask::FlushChunks() {
  return Flushed(!file_.IsOpen() || file_.Flush(), in_flight_.size());
}

bool CRecordTask::FlushBlocks() {
  int done = 0;
  bool ok = !file_.IsOpen() || file_.FlushBlocks(NowMs(), kHoldMs, &done);
  return Flushed(ok, file_.IsOpen() ? static_cast<size_t>(done) : in_flight_.size());
}

bool CRecordTask::Flushed(bool ok, size_t done) {
  if (!ok) {
    QV_LOG("[%s:%d]write frame data failed, errno=%d\n", errno);
    GiveUpFile();
    done = in_flight_.size();
  }
  done = std::min(done, in_flight_.size());
  for (size_t i = 0; i < done; ++i) Recycle(in_flight_[i]);
  in_flight_.erase(in_flight_.begin(), in_flight_.begin() + static_cast<long>(done));
  return ok;
}

void CRecordTask::FrameDone(const FrameBuffer& taken) {
  if (referred_) {
    in_flight_.push_back(taken);
  } else {
    Recycle(taken);
  }
  referred_ = false;
}

void CRecordTask::Recycle(const FrameBuffer& buffer) {
  if (buffer.data == nullptr) return;
  std::vector<FrameBuffer>& spares = spares_[buffer.ring];
  if (spares.size() < kMaxSpares) {
    spares.push_back(buffer);
  } else {
    delete[] buffer.data;
  }
}

void CRecordTask::ReleaseBuffers() {
  for (const FrameBuffer& b : in_flight_) delete[] b.data;
  for (std::vector<FrameBuffer>& spares : spares_) {
    for (const FrameBuffer& b : spares) delete[] b.data;
    spares.clear();
  }
  in_flight_.clear();
}

unsigned char* CRecordTask::TakeFrame(CRingBuffer* ring, int* length, int* flag, double* ts,
                                      FrameBuffer* taken) {
  int which = ring == &audio_ring_ ? 1 : 0;
  std::vector<FrameBuffer>& spares = spares_[which];
  FrameBuffer spare;
  spare.ring = which;
  if (!spares.empty()) {
    spare = spares.back();
    spares.pop_back();
  }
  int size = 0;
  unsigned char* data = ring->TakeReadBuffer(spare.data, spare.size, length, flag, ts, &size);
  if (data == nullptr) {
    Recycle(spare);  // nothing taken: the spare is still ours
    return nullptr;
  }
  *taken = {data, size, which};
  return data;
}

int CRecordTask::QueueChunk(const char* id, const unsigned char* vol, int vol_length,
                            const unsigned char* data, int length) {
  // A tiny frame (audio) is copied; a larger one stays where it lies until
  // a flush has written it. With no room left, whole blocks go first; only
  // when that frees nothing is everything written.
  bool copy = length <= kCopiedFrameBytes;
  size_t copied = 12 + static_cast<size_t>(vol_length) + (copy ? static_cast<size_t>(length) : 0);
  auto full = [&] { return !file_.HasRoom(3, copied) || (!copy && in_flight_.size() >= kMaxInFlight); };
  if (full() && (!FlushBlocks() || (full() && !FlushChunks()))) return -1;
  unsigned char head[12];
  AviPutCode(head, id);
  PutLe32(head + 8, static_cast<uint32_t>(vol_length + length));
  file_.Copy(head, sizeof(head));
  if (vol_length > 0) file_.Copy(vol, static_cast<size_t>(vol_length));
  if (copy) {
    file_.Copy(data, static_cast<size_t>(length));
  } else {
    file_.Refer(data, static_cast<size_t>(length));
    referred_ = true;
  }
  return 0;
}

int CRecordTask::RecordOneVideoFrame(const unsigned char* data, int length, int flag) {
  if (!file_.IsOpen() || data == nullptr || length <= 0) return -1;
  bool key = flag != 0;
  if (!first_key_seen_) {
    if (!key) return 0;
    first_key_seen_ = true;
  }
  length = WithoutTrailer(data, length);
  if (length <= 0) return 0;

  int vol_length = 0;
  if (video_codec_ == kAviVideoMpeg4 && !vol_written_) {
    vol_length = params_.video.config_len;
    if (vol_length < 0) vol_length = 0;
    if (vol_length > static_cast<int>(sizeof(params_.video.config))) {
      vol_length = static_cast<int>(sizeof(params_.video.config));
    }
  }
  if (QueueChunk("00dc", params_.video.config, vol_length, data, length) != 0) return -1;
  vol_written_ = true;
  if (AddAVIIndex("00dc", key ? kKeyFlag : 0, vol_length + length) != 0) {
    QV_LOG("[%s:%d]AddAVIIndex failed!\n");
  }
  movie_offset_ += 12 + static_cast<uint64_t>(vol_length + length);
  movie_bytes_ += 16 + static_cast<uint64_t>(vol_length + length);
  ++video_frames_;
  return 0;
}

int CRecordTask::RecordOneAudioFrame(const unsigned char* data, int length, int) {
  if (!file_.IsOpen()) {
    QV_LOG("[%s:%d]m_record_fp==NULL Error!\n");
    return -1;
  }
  if (data == nullptr || length <= 0) return 0;
  if (QueueChunk("01wb", nullptr, 0, data, length) != 0) return -1;
  movie_offset_ += 12 + static_cast<uint64_t>(length);
  ++audio_frames_;
  return 0;
}

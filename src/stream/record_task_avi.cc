// CRecordTask: the AVI side (header image, chunks, index).
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

bool CRecordTask::WriteBytes(const void* data, size_t length) {
  return record_fp_ != nullptr && fwrite(data, 1, length, record_fp_) == length;
}

int CRecordTask::WriteAVIHeader() {
  if (record_fp_ == nullptr || header_.empty()) return -1;
  if (fseek(record_fp_, 0, SEEK_SET) != 0) return -1;
  bool ok = WriteBytes(header_.data(), header_.size());
  if (fseek(record_fp_, 0, SEEK_END) != 0) ok = false;
  return ok ? 0 : -1;
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
  bool ok = WriteBytes(buf, length);
  delete[] buf;
  if (!ok) {
    QV_LOG("[%s:%d]write avi index failed, errno=%d\n", errno);
    return -1;
  }
  return 0;
}

int CRecordTask::WriteChunkHead(const char* id, int length) {
  unsigned char head[12];
  AviPutCode(head, id);
  PutLe32(head + 8, static_cast<uint32_t>(length));
  if (!WriteBytes(head, 8)) {
    QV_LOG("[%s:%d]write flag_xxdc failed, errno=%d\n", errno);
    GiveUpFile();
    return -1;
  }
  if (!WriteBytes(head + 8, 4)) {
    QV_LOG("[%s:%d]write len failed, errno=%d\n", errno);
    GiveUpFile();
    return -1;
  }
  return 0;
}

int CRecordTask::RecordOneVideoFrame(const unsigned char* data, int length, int flag) {
  if (record_fp_ == nullptr || data == nullptr || length <= 0) return -1;
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
  if (WriteChunkHead("00dc", vol_length + length) != 0) return -1;
  if (vol_length > 0 && !WriteBytes(params_.video.config, static_cast<size_t>(vol_length))) {
    QV_LOG("[%s:%d]write vol data failed, errno=%d\n", errno);
    GiveUpFile();
    return -1;
  }
  vol_written_ = true;
  if (!WriteBytes(data, static_cast<size_t>(length))) {
    QV_LOG("[%s:%d]write frame data failed, errno=%d\n", errno);
    GiveUpFile();
    return -1;
  }
  if (AddAVIIndex("00dc", key ? kKeyFlag : 0, vol_length + length) != 0) {
    QV_LOG("[%s:%d]AddAVIIndex failed!\n");
  }
  movie_offset_ += 12 + static_cast<uint64_t>(vol_length + length);
  movie_bytes_ += 16 + static_cast<uint64_t>(vol_length + length);
  ++video_frames_;
  return 0;
}

int CRecordTask::RecordOneAudioFrame(const unsigned char* data, int length, int) {
  if (record_fp_ == nullptr) {
    QV_LOG("[%s:%d]m_record_fp==NULL Error!\n");
    return -1;
  }
  if (data == nullptr || length <= 0) return 0;
  if (WriteChunkHead("01wb", length) != 0) return -1;
  if (!WriteBytes(data, static_cast<size_t>(length))) {
    QV_LOG("[%s:%d]write frame data failed, errno=%d\n", errno);
    GiveUpFile();
    return -1;
  }
  movie_offset_ += 12 + static_cast<uint64_t>(length);
  ++audio_frames_;
  return 0;
}

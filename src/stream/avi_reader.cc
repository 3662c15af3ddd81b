#include "stream/avi_reader.h"

#include <sys/stat.h>

#include <cctype>
#include <cstring>

#include "stream/avi_header.h"

namespace {

const int kMaxPictureSide = 16384;
const int kMaxFrameRate = 1000;
const int kMaxSampleRate = 384000;
const int kMaxChannels = 8;

// A four-character code for a message: printable, else in hexadecimal.
std::string CodeText(const unsigned char* p) {
  std::string text;
  bool printable = true;
  for (int i = 0; i < 4; ++i) printable = printable && isprint(p[i]) != 0;
  if (printable) return "'" + std::string(reinterpret_cast<const char*>(p), 4) + "'";
  char hex[24];
  snprintf(hex, sizeof(hex), "0x%02x%02x%02x%02x", p[0], p[1], p[2], p[3]);
  return hex;
}

uint32_t Le32(const unsigned char* p) {
  return p[0] | (p[1] << 8) | (p[2] << 16) | (static_cast<uint32_t>(p[3]) << 24);
}

// A header word that must lie in [low, high]; -1 otherwise.
int Bounded(const std::vector<uint8_t>& h, int at, int low, int high) {
  uint64_t v = AviGetWord(&h[static_cast<size_t>(at)]);
  return v >= static_cast<uint64_t>(low) && v <= static_cast<uint64_t>(high) ? static_cast<int>(v)
                                                                              : -1;
}

}  // namespace

CAviReader::~CAviReader() { Close(); }

void CAviReader::Close() {
  if (fp_ != nullptr) fclose(fp_);
  fp_ = nullptr;
}

int CAviReader::Fail(const std::string& text) {
  error_ = text;
  Close();
  return -1;
}

bool CAviReader::ReadAt(uint64_t offset, void* buf, size_t length) {
  if (fp_ == nullptr || offset > file_size_ || length > file_size_ - offset) return false;
  if (fseeko(fp_, static_cast<off_t>(offset), SEEK_SET) != 0) return false;
  return fread(buf, 1, length, fp_) == length;
}

int CAviReader::Open(const std::string& path) {
  Close();
  info_ = AviStreamInfo();
  chunks_.clear();
  video_chunks_ = audio_chunks_ = 0;
  has_index_ = false;
  damage_.clear();
  damage_offset_ = 0;
  error_.clear();

  fp_ = fopen(path.c_str(), "rb");
  if (fp_ == nullptr) return Fail("cannot open " + path + ": " + strerror(errno));
  struct stat st;
  if (fstat(fileno(fp_), &st) != 0 || !S_ISREG(st.st_mode)) {
    return Fail(path + " is not a regular file");
  }
  file_size_ = static_cast<uint64_t>(st.st_size);
  if (file_size_ < static_cast<uint64_t>(kAviVideoHeaderSize)) {
    return Fail("not a recording: shorter than a recording header");
  }
  std::vector<uint8_t> h(static_cast<size_t>(kAviAvHeaderSize), 0);
  size_t have = file_size_ < h.size() ? static_cast<size_t>(file_size_) : h.size();
  if (!ReadAt(0, h.data(), have)) return Fail("cannot read the header of " + path);
  h.resize(have);
  if (ParseHeader(h) != 0) return -1;
  ScanChunks();
  return 0;
}

int CAviReader::ParseHeader(const std::vector<uint8_t>& h) {
  if (!AviIsCode(&h[0], "RIFF") || !AviIsCode(&h[16], "AVI ") || !AviIsCode(&h[24], "LIST") ||
      !AviIsCode(&h[40], "hdrl") || !AviIsCode(&h[48], "avih")) {
    return Fail("not a recording: no RIFF AVI header of 64-bit words");
  }
  int streams = Bounded(h, avi_offset::kStreams, 1, 2);
  if (streams < 0) return Fail("not a recording: stream count is not 1 or 2");
  info_.header_size = static_cast<size_t>(streams == 2 ? kAviAvHeaderSize : kAviVideoHeaderSize);
  if (h.size() < info_.header_size) return Fail("truncated: shorter than its header");
  const unsigned char* end = &h[info_.header_size];
  if (!AviIsCode(end - 24, "LIST") || !AviIsCode(end - 8, "movi")) {
    return Fail("not a recording: no movie list at the end of the header");
  }
  if (!AviIsCode(&h[192], "strl") || !AviIsCode(&h[200], "strh") || !AviIsCode(&h[216], "vids")) {
    return Fail("not a recording: no video stream header");
  }
  const unsigned char* handler = &h[avi_offset::kVideoHandler];
  if (AviIsCode(handler, "H264")) {
    info_.video_codec = kAviVideoH264;
  } else if (AviIsCode(handler, "XVID")) {
    info_.video_codec = kAviVideoMpeg4;
  } else {
    return Fail("unknown video handler " + CodeText(handler));
  }
  info_.width = Bounded(h, avi_offset::kWidth, 1, kMaxPictureSide);
  info_.height = Bounded(h, avi_offset::kHeight, 1, kMaxPictureSide);
  if (info_.width < 0 || info_.height < 0) return Fail("bad picture size in the header");
  info_.scale = Bounded(h, 256, 1, 1000000);
  info_.rate = Bounded(h, avi_offset::kVideoRate, 1, 1000000);
  if (info_.scale < 0 || info_.rate < 0 ||
      info_.rate > static_cast<int64_t>(info_.scale) * kMaxFrameRate) {
    return Fail("bad frame rate in the header");
  }
  int byte_rate = Bounded(h, 72, 0, 0x7FFFFFFF / 8);
  info_.bit_rate = byte_rate > 0 ? byte_rate * 8 : 0;
  return streams == 2 ? ParseAudioHeader(h) : 0;
}

int CAviReader::ParseAudioHeader(const std::vector<uint8_t>& h) {
  if (!AviIsCode(&h[4560], "LIST") || !AviIsCode(&h[4576], "strl") ||
      !AviIsCode(&h[4584], "strh") || !AviIsCode(&h[4600], "auds") ||
      !AviIsCode(&h[4704], "strf")) {
    return Fail("not a recording: no audio stream header");
  }
  const unsigned char* handler = &h[avi_offset::kAudioHandler];
  unsigned tag = AviGet16(&h[avi_offset::kAudioFormatTag]);
  if (AviIsCode(handler, "MP4A") && tag == 255) {
    info_.audio_codec = kAviAudioAac;
  } else if (AviGetWord(handler) == 1 && tag == 7) {
    info_.audio_codec = kAviAudioG711;
  } else {
    return Fail("unknown audio format " + CodeText(handler) + " tag " + std::to_string(tag));
  }
  // A stream that did not tell its channels or rate is recorded with 0.
  info_.channels = static_cast<int>(AviGet16(&h[avi_offset::kAudioChannels]));
  info_.sample_rate = AviGetWord(&h[avi_offset::kAudioSampleRate]) == 0
                          ? 0
                          : Bounded(h, avi_offset::kAudioSampleRate, 1000, kMaxSampleRate);
  info_.bits_per_sample = static_cast<int>(AviGet16(&h[avi_offset::kAudioBitsPerSample]));
  if (info_.channels > kMaxChannels || info_.sample_rate < 0) {
    return Fail("bad audio format in the header");
  }
  info_.has_audio = true;
  return 0;
}

void CAviReader::Stop(uint64_t at, const std::string& why) {
  damage_offset_ = at;
  damage_ = why + " at offset " + std::to_string(at);
}

void CAviReader::ScanChunks() {
  uint64_t at = info_.header_size;
  unsigned char head[12];
  while (at < file_size_) {
    if (!ReadAt(at, head, 12)) {
      Stop(at, "truncated chunk head");
      return;
    }
    if (AviIsCode(head, "idx1")) {
      if (!ReadIndex(at)) Stop(at, "index does not match the chunks");
      return;
    }
    bool video = AviIsCode(head, "00dc");
    bool audio = AviIsCode(head, "01wb") && info_.has_audio;
    if (!video && !audio) {
      Stop(at, "unknown chunk " + CodeText(head));
      return;
    }
    uint32_t size = Le32(head + 8);
    if (size == 0 || size > kAviMaxChunkBytes) {
      Stop(at, "bad chunk length " + std::to_string(size));
      return;
    }
    if (size > file_size_ - at - 12) {
      Stop(at, "chunk runs past the end of the file");
      return;
    }
    if (chunks_.size() >= kAviMaxChunks) {
      Stop(at, "too many chunks");
      return;
    }
    chunks_.push_back({video, at + 12, size, -1});
    ++(video ? video_chunks_ : audio_chunks_);
    at += 12 + static_cast<uint64_t>(size);
  }
}

bool CAviReader::ReadIndex(uint64_t at) {
  unsigned char word[8];
  if (!ReadAt(at + 8, word, 8)) return false;
  uint64_t length = AviGetWord(word);
  if (length % 32 != 0 || length > file_size_ - at - 16) return false;
  // Recordings index their video chunks; earlier ones indexed every chunk.
  std::vector<size_t> indexed;
  if (length / 32 == chunks_.size()) {
    for (size_t i = 0; i < chunks_.size(); ++i) indexed.push_back(i);
  } else if (length / 32 == static_cast<uint64_t>(video_chunks_)) {
    for (size_t i = 0; i < chunks_.size(); ++i) {
      if (chunks_[i].video) indexed.push_back(i);
    }
  } else {
    return false;
  }
  // Index offsets count from the "movi" word, 8 bytes before the chunks.
  const uint64_t movi = info_.header_size - 8;
  std::vector<int> keys(chunks_.size(), -1);
  const size_t kBatch = 4096;
  std::vector<unsigned char> rows(kBatch * 32);
  for (size_t first = 0; first < indexed.size(); first += kBatch) {
    size_t n = indexed.size() - first < kBatch ? indexed.size() - first : kBatch;
    if (!ReadAt(at + 16 + 32 * static_cast<uint64_t>(first), rows.data(), n * 32)) return false;
    for (size_t i = 0; i < n; ++i) {
      const unsigned char* row = &rows[i * 32];
      const AviChunk& c = chunks_[indexed[first + i]];
      if (!AviIsCode(row, c.video ? "00dc" : "01wb") || AviGetWord(row + 16) != c.offset - 12 - movi ||
          AviGetWord(row + 24) != c.size) {
        return false;
      }
      keys[indexed[first + i]] = (AviGetWord(row + 8) & 16) != 0 ? 1 : 0;
    }
  }
  for (size_t i = 0; i < chunks_.size(); ++i) chunks_[i].index_key = keys[i];
  has_index_ = true;
  return true;
}

int CAviReader::ReadChunk(size_t i, std::vector<uint8_t>* out) {
  if (i >= chunks_.size() || out == nullptr) {
    error_ = "no chunk " + std::to_string(i);
    return -1;
  }
  out->resize(chunks_[i].size);
  return ReadChunk(i, out->data());
}

int CAviReader::ReadChunk(size_t i, uint8_t* dest) {
  if (i >= chunks_.size() || dest == nullptr) {
    error_ = "no chunk " + std::to_string(i);
    return -1;
  }
  const AviChunk& c = chunks_[i];
  if (!ReadAt(c.offset, dest, c.size)) {
    error_ = "cannot read the chunk at offset " + std::to_string(c.offset);
    return -1;
  }
  return 0;
}

// CAviReader: reads back a recording written by CRecordTask.
//
// The header image (video only, or audio + video) gives the streams; the
// chunks follow the "movi" word, each an 8-byte identifier ("00dc" video,
// "01wb" audio), a 4-byte little-endian length and the frame bytes; a file
// that was closed normally ends with the "idx1" index, of its video chunks
// (or, in recordings of earlier versions, of every chunk). A file that was not
// closed (a ".tmp" left by a crash or a full disk) has no index and stale
// sizes in its header: its chunks are read up to the end of the file.
//
// Nothing read from the file is trusted: the header must be one of the two
// images with sane values (else Open fails), and the chunk scan stops at the
// first chunk that is damaged (an unknown identifier, a length of 0 or over
// kAviMaxChunkBytes, a chunk running past the end of the file), keeping the
// whole chunks before it; Damage() says where and why. Chunk payloads are
// only read on request, so a recording of any length costs memory for its
// chunk list alone (at most kAviMaxChunks entries).
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

// Largest frame a chunk may hold: the recorder's frame buffer and the VOL
// header, with room to spare.
const uint32_t kAviMaxChunkBytes = 8u << 20;
// Most chunks a file may hold (over ten hours at 100 chunks a second;
// recordings are cut at 3,600 s).
const size_t kAviMaxChunks = 4000000;

struct AviStreamInfo {
  size_t header_size = 0;  // kAviVideoHeaderSize or kAviAvHeaderSize
  int video_codec = 0;     // kAviVideoH264 or kAviVideoMpeg4 (avi_header.h)
  int width = 0;
  int height = 0;
  int rate = 0;            // frames per second = rate / scale
  int scale = 1;
  int bit_rate = 0;        // bits per second, 0 when not given
  bool has_audio = false;
  int audio_codec = 0;     // kAviAudioG711 or kAviAudioAac
  int sample_rate = 0;     // 0 when the recording did not know it
  int channels = 0;        // 0 when the recording did not know it
  int bits_per_sample = 0;
};

struct AviChunk {
  bool video;          // "00dc"; else "01wb"
  uint64_t offset;     // file offset of the frame bytes
  uint32_t size;       // frame bytes
  int index_key;       // key-frame mark from the index: 1, 0, or -1 when not indexed
};

class CAviReader {
 public:
  CAviReader() = default;
  ~CAviReader();
  CAviReader(const CAviReader&) = delete;
  CAviReader& operator=(const CAviReader&) = delete;

  // Reads the header and the chunk list. 0; -1 when the file cannot be
  // opened or is not a recording (Error() tells which).
  int Open(const std::string& path);
  void Close();

  const AviStreamInfo& Info() const { return info_; }
  const std::vector<AviChunk>& Chunks() const { return chunks_; }
  int VideoChunks() const { return video_chunks_; }
  int AudioChunks() const { return audio_chunks_; }

  // True when the chunks end in an index that agrees with them: the file
  // was closed normally.
  bool HasIndex() const { return has_index_; }
  // Why the chunk scan stopped before a clean end ("" when it did not), and
  // the file offset where it stopped.
  const std::string& Damage() const { return damage_; }
  uint64_t DamageOffset() const { return damage_offset_; }

  // The frame bytes of chunk i into *out, or into dest (room for
  // Chunks()[i].size bytes). 0; -1 with Error().
  int ReadChunk(size_t i, std::vector<uint8_t>* out);
  int ReadChunk(size_t i, uint8_t* dest);

  const std::string& Error() const { return error_; }

 private:
  int Fail(const std::string& text);
  int ParseHeader(const std::vector<uint8_t>& h);
  int ParseAudioHeader(const std::vector<uint8_t>& h);
  void ScanChunks();
  // The index at `at` (its "idx1" word); true when it agrees with the chunks.
  bool ReadIndex(uint64_t at);
  bool ReadAt(uint64_t offset, void* buf, size_t length);
  void Stop(uint64_t at, const std::string& why);

  FILE* fp_ = nullptr;
  uint64_t file_size_ = 0;
  AviStreamInfo info_;
  std::vector<AviChunk> chunks_;
  int video_chunks_ = 0;
  int audio_chunks_ = 0;
  bool has_index_ = false;
  std::string damage_;
  uint64_t damage_offset_ = 0;
  std::string error_;
};

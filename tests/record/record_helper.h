// Shared pieces of the recorder and converter tests.
#pragma once

#include <condition_variable>
#include <functional>
#include <cstdint>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "stream/frame_action.h"
#include "support/scratch.h"

// A fresh folder, removed at the end; waiting on a condition with a deadline.
using TempDir = testsupport::ScratchDir;
inline bool WaitUntil(const std::function<bool()>& cond, int timeout_ms = 20000) {
  return testsupport::WaitFor(cond, timeout_ms);
}

// Collects record events; waits for them with a deadline.
class EventLog : public CGetFrameActionClass {
 public:
  int OnGetVideoFrame(unsigned char*, int, int, double) override { return 0; }
  int OnGetAudioFrame(unsigned char*, int, int, double) override { return 0; }
  int OnRecordEvent(int event, const char* text) override;

  // True when `event` has been seen `times` times within timeout_ms.
  bool WaitFor(int event, int times = 1, int timeout_ms = 20000);
  int Count(int event);
  std::vector<std::pair<int, std::string>> Events();

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::pair<int, std::string>> events_;
};

// A recording read back chunk by chunk, independently of the library's
// reader.
struct RecordedChunk {
  std::string id;           // "00dc" or "01wb"
  uint64_t offset;          // from the "movi" word
  std::vector<uint8_t> data;
};
struct RecordedIndexRow {
  std::string id;
  uint64_t flags, offset, length;
};
struct RecordedFile {
  std::vector<uint8_t> bytes;
  size_t header_size = 0;
  std::vector<RecordedChunk> chunks;
  std::vector<RecordedIndexRow> index;
  bool has_index = false;
  std::string error;  // empty when the file parsed cleanly
  int Count(const std::string& id) const;
};
RecordedFile ReadRecording(const std::string& path);
// Checks that a closed recording agrees with itself: the RIFF size is the
// file's, the header counts its video chunks, the movie list size is 8 plus
// every video chunk's length + 16, and the index lists the video chunks in
// order (offset from the "movi" word, length). The video chunks' index rows,
// in chunk order, for checks of their flags.
std::vector<RecordedIndexRow> ExpectSelfConsistent(const RecordedFile& f);

std::vector<uint8_t> ReadFileBytes(const std::string& path);
bool WriteFileBytes(const std::string& path, const std::vector<uint8_t>& bytes);
bool FileExists(const std::string& path);
// Regular files below dir (recursively), sorted.
std::vector<std::string> ListFiles(const std::string& dir);
// 64-bit little-endian word and four-character code at an offset.
uint64_t WordAt(const std::vector<uint8_t>& b, size_t at);
std::string CodeAt(const std::vector<uint8_t>& b, size_t at);

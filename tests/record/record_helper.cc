#include "record_helper.h"

#include <gtest/gtest.h>

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>

namespace {

void Collect(const std::string& dir, std::vector<std::string>* out) {
  DIR* d = opendir(dir.c_str());
  if (d == nullptr) return;
  while (struct dirent* e = readdir(d)) {
    if (strcmp(e->d_name, ".") == 0 || strcmp(e->d_name, "..") == 0) continue;
    std::string p = dir + "/" + e->d_name;
    struct stat st;
    if (stat(p.c_str(), &st) != 0) continue;
    if (S_ISDIR(st.st_mode)) {
      Collect(p, out);
    } else {
      out->push_back(p);
    }
  }
  closedir(d);
}

}  // namespace

int EventLog::OnRecordEvent(int event, const char* text) {
  std::lock_guard<std::mutex> guard(mutex_);
  events_.emplace_back(event, text != nullptr ? text : "");
  changed_.notify_all();
  return 0;
}

bool EventLog::WaitFor(int event, int times, int timeout_ms) {
  std::unique_lock<std::mutex> lock(mutex_);
  return changed_.wait_for(lock, std::chrono::milliseconds(timeout_ms), [&] {
    return std::count_if(events_.begin(), events_.end(),
                         [&](const std::pair<int, std::string>& e) { return e.first == event; }) >=
           times;
  });
}

int EventLog::Count(int event) {
  std::lock_guard<std::mutex> guard(mutex_);
  return static_cast<int>(
      std::count_if(events_.begin(), events_.end(),
                    [&](const std::pair<int, std::string>& e) { return e.first == event; }));
}

std::vector<std::pair<int, std::string>> EventLog::Events() {
  std::lock_guard<std::mutex> guard(mutex_);
  return events_;
}

uint64_t WordAt(const std::vector<uint8_t>& b, size_t at) {
  uint64_t v = 0;
  if (at + 8 > b.size()) return ~0ULL;
  for (int i = 7; i >= 0; --i) v = (v << 8) | b[at + static_cast<size_t>(i)];
  return v;
}

std::string CodeAt(const std::vector<uint8_t>& b, size_t at) {
  if (at + 8 > b.size()) return "";
  if (WordAt(b, at) >> 32 != 0) return "?";
  return std::string(reinterpret_cast<const char*>(&b[at]), 4);
}

int RecordedFile::Count(const std::string& id) const {
  return static_cast<int>(std::count_if(chunks.begin(), chunks.end(),
                                        [&](const RecordedChunk& c) { return c.id == id; }));
}

RecordedFile ReadRecording(const std::string& path) {
  RecordedFile f;
  f.bytes = ReadFileBytes(path);
  const std::vector<uint8_t>& b = f.bytes;
  if (CodeAt(b, 0) != "RIFF") {
    f.error = "no RIFF word";
    return f;
  }
  uint64_t streams = WordAt(b, 112);
  f.header_size = streams == 2 ? 10296 : 5960;
  if (CodeAt(b, f.header_size - 8) != "movi") {
    f.error = "no movi word";
    return f;
  }
  size_t at = f.header_size;
  while (at + 12 <= b.size()) {
    std::string id = CodeAt(b, at);
    if (id == "idx1") break;
    if (id != "00dc" && id != "01wb") {
      f.error = "bad chunk id at " + std::to_string(at);
      return f;
    }
    uint32_t len = b[at + 8] | (b[at + 9] << 8) | (b[at + 10] << 16) |
                   (static_cast<uint32_t>(b[at + 11]) << 24);
    if (at + 12 + len > b.size()) {
      f.error = "chunk past the end";
      return f;
    }
    RecordedChunk c;
    c.id = id;
    c.offset = at - (f.header_size - 8);
    c.data.assign(b.begin() + static_cast<long>(at + 12),
                  b.begin() + static_cast<long>(at + 12 + len));
    f.chunks.push_back(std::move(c));
    at += 12 + len;
  }
  if (at + 16 <= b.size() && CodeAt(b, at) == "idx1") {
    f.has_index = true;
    uint64_t len = WordAt(b, at + 8);
    if (at + 16 + len != b.size() || len % 32 != 0) {
      f.error = "index length does not match the file";
      return f;
    }
    for (size_t p = at + 16; p < b.size(); p += 32) {
      f.index.push_back({CodeAt(b, p), WordAt(b, p + 8), WordAt(b, p + 16), WordAt(b, p + 24)});
    }
  }
  return f;
}

std::vector<RecordedIndexRow> ExpectSelfConsistent(const RecordedFile& f) {
  EXPECT_EQ(f.error, "");
  EXPECT_TRUE(f.has_index);
  EXPECT_EQ(WordAt(f.bytes, 8), f.bytes.size() - 8);
  EXPECT_EQ(WordAt(f.bytes, 96), static_cast<uint64_t>(f.Count("00dc")));
  uint64_t movie = 8;
  std::vector<const RecordedChunk*> video;
  for (const RecordedChunk& c : f.chunks) {
    if (c.id != "00dc") continue;
    movie += 16 + c.data.size();
    video.push_back(&c);
  }
  EXPECT_EQ(WordAt(f.bytes, f.header_size - 16), movie);
  EXPECT_EQ(f.index.size(), video.size());
  for (size_t i = 0; i < video.size() && i < f.index.size(); ++i) {
    EXPECT_EQ(f.index[i].id, "00dc") << i;
    EXPECT_EQ(f.index[i].offset, video[i]->offset) << i;
    EXPECT_EQ(f.index[i].length, video[i]->data.size()) << i;
  }
  return f.index;
}

std::vector<uint8_t> ReadFileBytes(const std::string& path) {
  std::string bytes = testsupport::ReadFile(path);
  return std::vector<uint8_t>(bytes.begin(), bytes.end());
}

bool WriteFileBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  out.close();
  return !out.fail();
}

bool FileExists(const std::string& path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0;
}

std::vector<std::string> ListFiles(const std::string& dir) {
  std::vector<std::string> out;
  Collect(dir, &out);
  std::sort(out.begin(), out.end());
  return out;
}

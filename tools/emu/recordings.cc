#include "emu/recordings.h"

#include <cstdio>
#include <cstring>

namespace qvemu {
namespace {

constexpr time_t kDay = 86400;
constexpr int kRecordedDays = 3;
// Recorded spans of a day, in seconds from midnight.
constexpr time_t kSpans[][2] = {{8 * 3600, 12 * 3600}, {14 * 3600, 18 * 3600}};

time_t Midnight(time_t t) { return t - t % kDay; }

void PutInt(std::string* block, size_t at, int v) { memcpy(&(*block)[at], &v, sizeof v); }

}  // namespace

RecordingStore::RecordingStore(int seconds) : seconds_(seconds < 1 ? 1 : seconds) {}

Recording RecordingStore::Make(time_t start) const {
  struct tm t;
  gmtime_r(&start, &t);
  char name[64];
  snprintf(name, sizeof(name), "/mnt/sd/record/%04d%02d%02d/%02d%02d%02d.h264",
           t.tm_year + 1900, t.tm_mon + 1, t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec);
  Recording r;
  r.name = name;
  r.start = start;
  r.seconds = seconds_;
  return r;
}

bool RecordingStore::ByTime(time_t when, time_t camera_now, Recording* out) const {
  time_t today = Midnight(camera_now);
  time_t day = Midnight(when);
  if (when < 0 || day > today || day <= today - kRecordedDays * kDay) return false;
  time_t second = when - day;
  for (const auto& span : kSpans) {
    if (second < span[0] || second >= span[1]) continue;
    // Files start at the span's start and every seconds_ after it; the
    // last one may run past the span's end.
    time_t file = span[0] + (second - span[0]) / seconds_ * seconds_;
    *out = Make(day + file);
    return true;
  }
  return false;
}

bool RecordingStore::ByName(const std::string& name, time_t camera_now, Recording* out) const {
  int y, mo, d, h, mi, s;
  char tail[16];
  if (sscanf(name.c_str(), "/mnt/sd/record/%4d%2d%2d/%2d%2d%2d.%15s", &y, &mo, &d, &h, &mi, &s,
             tail) != 7) {
    return false;
  }
  struct tm t = {};
  t.tm_year = y - 1900;
  t.tm_mon = mo - 1;
  t.tm_mday = d;
  t.tm_hour = h;
  t.tm_min = mi;
  t.tm_sec = s;
  Recording found;
  if (!ByTime(timegm(&t), camera_now, &found) || found.name != name) return false;
  *out = found;
  return true;
}

Recording RecordingStore::FirstOfDay(time_t camera_now) const {
  return Make(Midnight(camera_now) + kSpans[0][0]);
}

std::string RecordingStore::VideoFrame(int index) {
  size_t size = IsKeyFrame(index) ? 24000 + static_cast<size_t>(index / kFramesPerSecond % 7) * 3000
                                  : 1500 + static_cast<size_t>(index * 7919 % 9000);
  std::string frame(size, '\0');
  for (size_t j = 0; j < size; ++j) frame[j] = static_cast<char>((index * 131 + j * 7) & 0xFF);
  memcpy(&frame[0], &index, sizeof index);
  return frame;
}

std::string RecordingStore::AudioFrame(int index) {
  std::string frame(kAudioFrameBytes, '\0');
  for (int j = 0; j < kAudioFrameBytes; ++j) frame[j] = static_cast<char>((index * 17 + j) ^ 0x55);
  return frame;
}

std::string RecordingStore::VideoParamBlock() {
  std::string block(536, '\0');
  strcpy(&block[0], "H264");
  PutInt(&block, 32, 1280);   // width
  PutInt(&block, 36, 720);    // height
  PutInt(&block, 40, kFramesPerSecond);
  PutInt(&block, 44, 2000000);
  static const unsigned char kConfig[] = {0, 0, 0, 1, 0x67, 0x42, 0x00, 0x1f,
                                          0, 0, 0, 1, 0x68, 0xce, 0x3c, 0x80};
  PutInt(&block, 48, sizeof kConfig);
  memcpy(&block[52], kConfig, sizeof kConfig);
  return block;
}

std::string RecordingStore::AudioParamBlock() {
  std::string block(276, '\0');
  strcpy(&block[0], "G711U");
  PutInt(&block, 32, 8000);
  PutInt(&block, 36, 16);
  PutInt(&block, 40, 1);
  PutInt(&block, 44, 64000);
  return block;
}

}  // namespace qvemu

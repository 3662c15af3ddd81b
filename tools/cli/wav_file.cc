#include "wav_file.h"

#include <cstdint>
#include <cstring>
#include <fstream>

namespace {

const size_t kMaxFileBytes = 64u << 20;

uint32_t Le32(const unsigned char* p) {
  return p[0] | (p[1] << 8) | (p[2] << 16) | (static_cast<uint32_t>(p[3]) << 24);
}

uint16_t Le16(const unsigned char* p) { return static_cast<uint16_t>(p[0] | (p[1] << 8)); }

}  // namespace

bool ReadWav(const std::string& path, WavAudio* out, std::string* error) {
  std::ifstream in(path, std::ios::binary | std::ios::ate);
  if (!in) {
    *error = "cannot open " + path;
    return false;
  }
  std::streamoff size = in.tellg();
  if (size < 12 || static_cast<size_t>(size) > kMaxFileBytes) {
    *error = path + " is not a WAV file of at most 64 MiB";
    return false;
  }
  std::vector<unsigned char> bytes(static_cast<size_t>(size));
  in.seekg(0);
  in.read(reinterpret_cast<char*>(bytes.data()), size);
  if (memcmp(bytes.data(), "RIFF", 4) != 0 || memcmp(bytes.data() + 8, "WAVE", 4) != 0) {
    *error = path + " is not a WAV file";
    return false;
  }
  bool have_format = false;
  size_t at = 12;
  while (at + 8 <= bytes.size()) {
    const unsigned char* chunk = bytes.data() + at;
    uint32_t length = Le32(chunk + 4);
    size_t body = at + 8;
    size_t available = bytes.size() - body;
    if (memcmp(chunk, "fmt ", 4) == 0) {
      if (length < 16 || available < 16) break;
      uint16_t format = Le16(chunk + 8);
      out->channels = Le16(chunk + 10);
      out->sample_rate = static_cast<int>(Le32(chunk + 12));
      uint16_t bits = Le16(chunk + 22);
      if ((format != 1 && format != 0xFFFE) || bits != 16 || out->channels < 1 ||
          out->channels > 2 || out->sample_rate < 1000 || out->sample_rate > 192000) {
        *error = path + " is not 16-bit PCM in one or two channels";
        return false;
      }
      have_format = true;
    } else if (memcmp(chunk, "data", 4) == 0) {
      if (!have_format) break;
      size_t n = length < available ? length : available;  // a cut file keeps what it has
      n -= n % (2 * static_cast<size_t>(out->channels));
      out->samples.assign(bytes.begin() + body, bytes.begin() + body + n);
      return true;
    }
    if (length > available) break;
    at = body + length + (length & 1);
  }
  *error = path + " holds no 16-bit PCM audio";
  return false;
}

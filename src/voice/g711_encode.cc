// G.711 mu-law encoding of 16-bit linear samples.
#include <cstdint>

#include "voice/audio_thread.h"

namespace {

// The segment and step of a 14-bit magnitude: the 8-bit code before
// inversion (0 for silence, 127 for the loudest).
int MuLawCode(int m) {
  if (m <= 1) return m;
  if (m < 32) return ((m - 1) >> 1) + 1;
  if (m < 96) return ((m - 31) >> 2) + 16;
  if (m < 224) return ((m - 95) >> 3) + 32;
  if (m < 480) return ((m - 223) >> 4) + 48;
  if (m < 992) return ((m - 479) >> 5) + 64;
  if (m < 2016) return ((m - 991) >> 6) + 80;
  if (m <= 4063) return ((m - 2015) >> 7) + 96;
  if (m < 7904) return ((m - 4063) >> 8) + 112;
  return 127;
}

}  // namespace

short CAudioThread::AUDIO_g711Encode(short* out, const short* in, short byte_count) {
  int samples = byte_count / 2;
  uint16_t* words = reinterpret_cast<uint16_t*>(out);
  for (int i = 0; i < samples; ++i) {
    int x = in[i] >> 2;  // 14 significant bits
    int code = MuLawCode(x < 0 ? -x : x);
    uint16_t byte = static_cast<uint16_t>((x < 0 ? 127 : 255) - code);
    if (i % 2 == 0) {
      words[i / 2] = byte;
    } else {
      words[i / 2] = static_cast<uint16_t>((words[i / 2] & 0x00FF) | (byte << 8));
    }
  }
  return static_cast<short>(samples);
}

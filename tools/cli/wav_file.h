// A WAV file of 16-bit PCM samples, read whole.
#pragma once

#include <string>
#include <vector>

struct WavAudio {
  int sample_rate = 0;
  int channels = 0;
  std::vector<char> samples;  // interleaved 16-bit little-endian samples
};

// Reads path; false with *error set when it is missing, too large (over
// 64 MiB) or not 16-bit PCM in a RIFF/WAVE container.
bool ReadWav(const std::string& path, WavAudio* out, std::string* error);

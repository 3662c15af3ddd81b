// What a recorded frame holds: the codec facts the converter needs from the
// frame bytes themselves (a recording stores frames, not their parameters).
// Every function reads only within [data, data + size).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace frame_probe {

// ---- H.264 in Annex-B form (NAL units: stream/h264_nal.h)

// True for an access unit a decoder can start at: an IDR slice, or an intra
// slice (its slice header read) preceded by a sequence parameter set.
bool H264IsKeyFrame(const uint8_t* data, size_t size);

// ---- MPEG-4 Part 2

// Length of the configuration ahead of the first picture (visual object
// sequence, object and the VOL header, up to the first GOV or VOP start
// code); 0 when the buffer does not begin with one holding a VOL.
size_t Mpeg4ConfigLength(const uint8_t* data, size_t size);

// True when the first picture (VOP) in the buffer is intra coded.
bool Mpeg4IsKeyFrame(const uint8_t* data, size_t size);

// ---- AAC

struct Adts {
  int object_type;        // 1 main, 2 LC, 3 SSR, 4 LTP
  int sample_rate_index;  // 0..12
  int channel_config;     // 0..7
  size_t header_size;     // 7, or 9 with a CRC
  size_t frame_size;      // header and payload
};
// The ADTS header at data; false when there is none or it runs past size,
// or when it carries more than one raw data block.
bool ParseAdts(const uint8_t* data, size_t size, Adts* out);

// True when the buffer is a whole number of ADTS frames.
bool IsAdtsStream(const uint8_t* data, size_t size);

// Sample rate of an ADTS / AudioSpecificConfig rate index; 0 when invalid.
int AacSampleRate(int index);

// A 2-byte AudioSpecificConfig (5 bytes when the rate has no index).
// Empty for a rate or channel count out of range.
std::vector<uint8_t> AacConfig(int object_type, int sample_rate, int channels);

// Sample rate and channel count of an AudioSpecificConfig; false when it is
// too short or names neither (channel configuration 0).
bool AacConfigFacts(const uint8_t* config, size_t size, int* sample_rate, int* channels);

// Samples per frame that an AudioSpecificConfig announces: 1024, or 960 with
// the frame length flag. 1024 for a config too short to tell.
int AacFrameSamples(const uint8_t* config, size_t size);

// ---- G.711

int16_t MulawToLinear(uint8_t code);
int16_t AlawToLinear(uint8_t code);

// Recordings mark G.711 as mu-law whatever the camera sent. Decoded with the
// wrong law, sound turns into broadband distortion that a linear predictor
// cannot follow; true when the A-law reading of the samples is clearly the
// more predictable one. Silence, white noise and too few samples read as
// mu-law.
bool G711LooksALaw(const uint8_t* data, size_t size);

}  // namespace frame_probe

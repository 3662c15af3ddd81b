// The AVI header images of this system's recordings.
//
// Every header word is a 64-bit little-endian value, four-character codes
// included (the code in the low four bytes, four zero bytes after it). The
// file carries the image as it stands, so these offsets are the file format:
// a recording is read back with the same tables (see avi_reader.h).
#pragma once

#include <cstdint>

// Image sizes: video only, and audio + video.
const int kAviVideoHeaderSize = 5960;
const int kAviAvHeaderSize = 10296;

// Codes of the builders' codec arguments.
const int kAviVideoMpeg4 = 0;
const int kAviVideoH264 = 1;
const int kAviAudioG711 = 0;
const int kAviAudioAac = 1;

// Offsets of the words a writer updates or a reader needs.
namespace avi_offset {
const int kRiffSize = 8;
const int kMicroSecPerFrame = 64;
const int kTotalFrames = 96;
const int kStreams = 112;
const int kWidth = 128;
const int kHeight = 136;
const int kVideoHandler = 224;
const int kVideoRate = 264;
const int kAudioHandler = 4608;
const int kAudioFormatTag = 4720;  // 16 bits
const int kAudioChannels = 4722;   // 16 bits
const int kAudioSampleRate = 4728;
const int kAudioBlockAlign = 4744;     // 16 bits
const int kAudioBitsPerSample = 4746;  // 16 bits
// The movie list: "LIST", its size, "movi" (the size word sits 8 bytes
// before the end of the image, "movi" in the last word).
const int kVideoMovieSize = 5944;
const int kAvMovieSize = 10280;
}  // namespace avi_offset

// 64-bit little-endian words.
void AviPutWord(unsigned char* p, uint64_t value);
void AviPutCode(unsigned char* p, const char* fourcc);
uint64_t AviGetWord(const unsigned char* p);
// 1 when the word at p is the four-character code (and four zero bytes).
bool AviIsCode(const unsigned char* p, const char* fourcc);
// Little-endian 16-bit field.
unsigned AviGet16(const unsigned char* p);

// The video-only image into buf (at least kAviVideoHeaderSize bytes).
// video_codec: kAviVideoH264 or kAviVideoMpeg4. Returns the image size, or
// -1 when buf is null or too small.
int init_avi_header_video(unsigned char* buf, int size, int video_codec, int width, int height,
                          int bit_rate, int frame_rate);

// The audio + video image into buf (at least kAviAvHeaderSize bytes).
// audio_codec: kAviAudioAac or kAviAudioG711. Returns the image size or -1.
int init_avi_header(unsigned char* buf, int size, int video_codec, int audio_codec, int width,
                    int height, int bit_rate, int frame_rate, int sample_rate,
                    int bits_per_sample, int channels);

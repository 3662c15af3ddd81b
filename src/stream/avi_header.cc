#include "stream/avi_header.h"

#include <cstring>

namespace {

void Put16(unsigned char* p, unsigned value) {
  p[0] = static_cast<unsigned char>(value & 0xFF);
  p[1] = static_cast<unsigned char>((value >> 8) & 0xFF);
}

uint64_t Signed(int64_t v) { return static_cast<uint64_t>(v); }

// Offsets 0 to 4559: the RIFF head, the main header and the video stream
// list. `av` selects the sizes of the audio + video image.
void WriteVideoPart(unsigned char* b, bool av, int video_codec, int width, int height,
                    int bit_rate, int frame_rate) {
  const char* handler = video_codec == kAviVideoH264 ? "H264" : "XVID";
  AviPutCode(b + 0, "RIFF");
  AviPutWord(b + 8, av ? 10288 : 5952);
  AviPutCode(b + 16, "AVI ");
  AviPutCode(b + 24, "LIST");
  AviPutWord(b + 32, av ? 10232 : 4584);
  AviPutCode(b + 40, "hdrl");
  AviPutCode(b + 48, "avih");
  AviPutWord(b + 56, av ? 112 : 56);
  AviPutWord(b + 64, frame_rate != 0 ? Signed(1000000 / frame_rate) : 0);
  AviPutWord(b + 72, Signed(bit_rate / 8));
  AviPutWord(b + 88, 0x910);
  AviPutWord(b + 112, av ? 2 : 1);
  AviPutWord(b + 120, 0x100000);
  AviPutWord(b + 128, Signed(width));
  AviPutWord(b + 136, Signed(height));
  AviPutCode(b + 176, "LIST");
  AviPutWord(b + 184, 4376);
  AviPutCode(b + 192, "strl");
  AviPutCode(b + 200, "strh");
  AviPutWord(b + 208, av ? 104 : 56);
  AviPutCode(b + 216, "vids");
  AviPutCode(b + 224, handler);
  AviPutWord(b + 256, 1);
  AviPutWord(b + 264, Signed(frame_rate));
  AviPutWord(b + 280, 1801);
  AviPutWord(b + 288, 0x100000);
  AviPutWord(b + 296, 0xFFFFFFFFu);
  Put16(b + 316, static_cast<unsigned>(width));
  Put16(b + 318, static_cast<unsigned>(height));
  AviPutCode(b + 320, "strf");
  AviPutWord(b + 328, av ? 80 : 40);
  AviPutWord(b + 336, 40);
  AviPutWord(b + 344, Signed(width));
  AviPutWord(b + 352, Signed(height));
  Put16(b + 360, 1);
  Put16(b + 362, 24);
  AviPutCode(b + 368, handler);
  AviPutWord(b + 376, Signed(static_cast<int64_t>(width) * height * 24 / 8));
  AviPutCode(b + 416, "JUNK");
  AviPutWord(b + 424, 4116);
  AviPutWord(b + 432, 4);
  AviPutCode(b + 448, "00dc");
}

// The audio stream list, offsets 4560 to 8895 of the audio + video image.
void WriteAudioPart(unsigned char* b, int audio_codec, int sample_rate, int bits_per_sample,
                    int channels) {
  bool aac = audio_codec == kAviAudioAac;
  int64_t block_align = aac ? static_cast<int64_t>(bits_per_sample) * channels / 8 : 1;
  int64_t rate = 8000;
  if (aac) rate = channels != 0 ? (static_cast<int64_t>(sample_rate) * 1000 / channels) / 16000 : 0;
  AviPutCode(b + 4560, "LIST");
  AviPutWord(b + 4568, 4328);
  AviPutCode(b + 4576, "strl");
  AviPutCode(b + 4584, "strh");
  AviPutWord(b + 4592, 104);
  AviPutCode(b + 4600, "auds");
  if (aac) {
    AviPutCode(b + 4608, "MP4A");
  } else {
    AviPutWord(b + 4608, 1);
  }
  AviPutWord(b + 4640, 1);
  AviPutWord(b + 4648, Signed(rate));
  AviPutWord(b + 4664, 480256);
  AviPutWord(b + 4672, 12288);
  AviPutWord(b + 4680, 0xFFFFFFFFu);
  AviPutWord(b + 4688, Signed(block_align));
  AviPutCode(b + 4704, "strf");
  AviPutWord(b + 4712, 32);
  Put16(b + 4720, aac ? 255 : 7);
  Put16(b + 4722, static_cast<unsigned>(channels));
  AviPutWord(b + 4728, Signed(sample_rate));
  AviPutWord(b + 4736, Signed(block_align * sample_rate));
  Put16(b + 4744, static_cast<unsigned>(block_align));
  Put16(b + 4746, static_cast<unsigned>(aac ? bits_per_sample : 8));
  AviPutCode(b + 4752, "JUNK");
  AviPutWord(b + 4760, 4116);
  AviPutWord(b + 4768, 4);
  AviPutCode(b + 4784, "01wb");
}

// The OpenDML, INFO and padding lists and the movie list head, starting at
// `at` (4560 in the video-only image, 8896 in the other).
void WriteTail(unsigned char* b, int at) {
  static const char kSoftware[] = "Lavf52.7.0";
  AviPutCode(b + at, "JUNK");
  AviPutWord(b + at + 8, 260);
  AviPutCode(b + at + 16, "odml");
  AviPutCode(b + at + 24, "dmlh");
  AviPutWord(b + at + 32, 248);
  AviPutCode(b + at + 288, "LIST");
  AviPutWord(b + at + 296, 24);
  AviPutCode(b + at + 304, "INFO");
  AviPutCode(b + at + 312, "ISFT");
  AviPutWord(b + at + 320, 11);
  memcpy(b + at + 328, kSoftware, sizeof(kSoftware));
  AviPutCode(b + at + 344, "JUNK");
  AviPutWord(b + at + 352, 1016);
  AviPutCode(b + at + 1376, "LIST");
  AviPutWord(b + at + 1384, 0);
  AviPutCode(b + at + 1392, "movi");
}

}  // namespace

void AviPutWord(unsigned char* p, uint64_t value) {
  for (int i = 0; i < 8; ++i) p[i] = static_cast<unsigned char>((value >> (8 * i)) & 0xFF);
}

void AviPutCode(unsigned char* p, const char* fourcc) {
  memset(p, 0, 8);
  memcpy(p, fourcc, 4);
}

uint64_t AviGetWord(const unsigned char* p) {
  uint64_t v = 0;
  for (int i = 7; i >= 0; --i) v = (v << 8) | p[i];
  return v;
}

bool AviIsCode(const unsigned char* p, const char* fourcc) {
  static const unsigned char kZero[4] = {0, 0, 0, 0};
  return memcmp(p, fourcc, 4) == 0 && memcmp(p + 4, kZero, 4) == 0;
}

unsigned AviGet16(const unsigned char* p) { return p[0] | (static_cast<unsigned>(p[1]) << 8); }

int init_avi_header_video(unsigned char* buf, int size, int video_codec, int width, int height,
                          int bit_rate, int frame_rate) {
  if (buf == nullptr || size < kAviVideoHeaderSize) return -1;
  memset(buf, 0, kAviVideoHeaderSize);
  WriteVideoPart(buf, false, video_codec, width, height, bit_rate, frame_rate);
  WriteTail(buf, 4560);
  return kAviVideoHeaderSize;
}

int init_avi_header(unsigned char* buf, int size, int video_codec, int audio_codec, int width,
                    int height, int bit_rate, int frame_rate, int sample_rate,
                    int bits_per_sample, int channels) {
  if (buf == nullptr || size < kAviAvHeaderSize) return -1;
  memset(buf, 0, kAviAvHeaderSize);
  WriteVideoPart(buf, true, video_codec, width, height, bit_rate, frame_rate);
  WriteAudioPart(buf, audio_codec, sample_rate, bits_per_sample, channels);
  WriteTail(buf, 8896);
  return kAviAvHeaderSize;
}

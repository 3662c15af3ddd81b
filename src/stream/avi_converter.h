// CAviConverter: turns a recording (CRecordTask's AVI layout, see
// avi_reader.h) into a file every player reads, remuxed through libavformat.
// The output's extension picks the container: ".avi", ".mp4", ".mov" or
// ".mkv" (any case).
//
// Streams: H.264 (Annex-B access units) and MPEG-4 Part 2 video are copied
// as they are; the codec configuration comes from the first key frame that
// carries it (SPS and PPS, or the VOL header the recorder writes ahead of
// the first frame), and video before it is left out. G.711 is copied (the
// recording marks A-law as mu-law too: the law is told from the samples
// unless the options say), or encoded to AAC for a container that cannot
// hold G.711 (MP4). AAC is copied, stored frames being raw access units
// (their AudioSpecificConfig from the options, else AAC-LC at the header's
// rate and channels) or ADTS frames (the config from their headers).
//
// Time: a recording holds no time stamps. Video frames follow each other at
// the header's frame rate (or the options'); audio runs on its sample count.
// Audio stored ahead of the first kept video frame is left out, but for the
// one frame just before it (audio goes first on equal time stamps), so both
// streams start together. Streams with B-frames are not supported (cameras
// do not send them): frames keep the stored order as their display order.
//
// A recording that was never closed (no index) is converted from the whole
// chunks it holds, up to the first damaged one; the report says so.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "stream/avi_reader.h"

enum AviG711Law { kG711Auto = 0, kG711MuLaw = 1, kG711ALaw = 2 };

struct AviConvertOptions {
  int frame_rate = 0;               // video frames per second; 0: the recording's
  int g711_law = kG711Auto;         // AviG711Law
  std::vector<uint8_t> aac_config;  // config of raw AAC frames (QV_AUDIO_PARAM.config)
};

struct AviConvertReport {
  std::string container;    // "avi", "mp4", "mov", "matroska"
  std::string video_codec;  // "h264", "mpeg4"; empty: no video written
  int width = 0;
  int height = 0;
  double frame_rate = 0;
  std::string audio_in;     // "pcm_mulaw", "pcm_alaw", "aac", "aac (ADTS)"; empty: none
  std::string audio_out;    // codec written: the same, or "aac" when encoded
  int video_frames = 0;     // video frames written
  int audio_frames = 0;     // audio chunks taken in (G.711, AAC frames)
  int skipped_video = 0;    // left out: before the first usable key frame, or unusable
  int skipped_audio = 0;    // left out: before the first video frame, or unusable
  double seconds = 0;       // length of the longer stream
  bool recovered = false;   // the recording had no index (not closed)
  std::string damage;       // where reading stopped early, "" when it did not
};

struct AVFormatContext;
struct AVPacket;
class CAacEncoder;

class CAviConverter {
 public:
  explicit CAviConverter(const AviConvertOptions& options = AviConvertOptions());
  ~CAviConverter();
  CAviConverter(const CAviConverter&) = delete;
  CAviConverter& operator=(const CAviConverter&) = delete;

  // Converts `in` into `out` (replaced if it exists). 0; -1 with Error(),
  // and no output file is left behind.
  int Convert(const std::string& in, const std::string& out);

  const AviConvertReport& Report() const { return report_; }
  const std::string& Error() const { return error_; }

 private:
  int Fail(const std::string& text);
  int FailAv(const std::string& what, int av_error);
  int PlanVideo();
  int PlanAudio();
  int OpenOutput(const std::string& out);
  int AddVideoStream();
  int AddAudioStream();
  int WriteChunks();
  int WriteVideo(const std::vector<uint8_t>& frame);
  int WriteAudio(std::vector<uint8_t>& frame);
  int WriteG711(const std::vector<uint8_t>& frame);
  int WriteAac(const std::vector<uint8_t>& frame);
  int WriteAacFrame(const uint8_t* data, size_t size);
  // One packet of `stream` with times in its source time base.
  int WritePacket(int stream, const uint8_t* data, size_t size, int64_t pts, int64_t duration,
                  bool key);
  int WriteEncoded(AVPacket* packet);
  void Cleanup();

  AviConvertOptions options_;
  AviConvertReport report_;
  std::string error_;
  CAviReader reader_;

  // Video plan.
  bool video_ = false;
  size_t video_start_ = 0;      // chunk index of the first frame written
  size_t audio_start_ = 0;      // chunk index of the first audio frame written
  std::vector<uint8_t> video_config_;
  int video_rate_ = 0, video_scale_ = 1;
  int64_t video_pts_ = 0;

  // Audio plan.
  bool audio_ = false;
  int audio_codec_id_ = 0;      // AVCodecID of the stored frames
  bool adts_ = false;
  bool encode_ = false;         // G.711 to AAC
  std::vector<uint8_t> audio_config_;
  int sample_rate_ = 0;
  int channels_ = 0;
  int frame_samples_ = 1024;
  int64_t audio_pts_ = 0;       // in samples
  std::unique_ptr<CAacEncoder> encoder_;
  std::vector<int16_t> pcm_;

  AVFormatContext* oc_ = nullptr;
  AVPacket* packet_ = nullptr;
  int video_stream_ = -1;
  int audio_stream_ = -1;
  std::string out_path_;
};

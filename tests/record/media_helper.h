// Real encoded media for the converter tests: elementary streams made by the
// ffmpeg program, split into frames, recorded through CRecordTask, and the
// converted files checked with ffprobe and ffmpeg.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "quorvel/quorvel.h"
#include "record_helper.h"

// A fresh folder per test, and the record thread's idle polls at 1 ms.
class RecordingTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;
  TempDir dir_;
};

struct MediaFrame {
  std::vector<uint8_t> data;
  bool key = false;
};

// Runs `ffmpeg -v error -y <args> <file>` once and keeps the file in
// build/tests/media/ for later test processes. Returns its path, or "" when
// ffmpeg failed.
std::string MakeMedia(const std::string& file, const std::string& args);

// The streams the tests record, 4 s each (made through MakeMedia): H.264
// 320x240 with a key frame each second and SPS and PPS ahead of each, as a
// stream source delivers it; the same with noise (about 50 KB a frame);
// MPEG-4 Part 2 352x288; a 440 Hz tone at 8 kHz as "pcm_mulaw", "pcm_alaw"
// (raw bytes) or "aac" (ADTS).
std::string H264Media();
std::string NoisyH264Media();
std::string Mpeg4Media();
std::string ToneMedia(const std::string& codec);

// The frames of an elementary stream, split by libavformat's demuxer of that
// format ("h264", "m4v", "aac").
std::vector<MediaFrame> DemuxFrames(const std::string& path, const char* format);
// Raw G.711 bytes in frames of `bytes`.
std::vector<MediaFrame> SplitBytes(const std::string& path, size_t bytes);
// ADTS frames without their 7-byte headers.
std::vector<MediaFrame> StripAdts(const std::vector<MediaFrame>& frames);

// Stream parameter blocks as a stream source fills them.
__STREAM_AV_PARAM AvParams(const char* video, int width, int height, const char* audio,
                           int sample_rate);

// What a recording is fed with: video at 25 fps, audio frames of
// `audio_ms` each, both from time 0, handed to the rings in time order.
struct RecordFeed {
  __STREAM_AV_PARAM params;
  std::vector<MediaFrame> video;
  std::vector<MediaFrame> audio;
  double audio_ms = 20;
};

// Records the feed into `file` (a file name recording) and stops once every
// frame is written. Returns the number of video frames in the file, or -1.
int RecordFeedTo(const RecordFeed& feed, const std::string& file);
// The same, then SIGKILLs the recording process after the frames were
// taken: returns with `file`.tmp left as a crash leaves it. False when the
// child did not end as expected.
bool RecordFeedAndKill(const RecordFeed& feed, const std::string& file);

// Runs a shell command; its exit status, standard output and error in *out.
int RunCommand(const std::string& command, std::string* out);
// "codec_type:codec_name" of every stream, comma separated.
std::string ProbeStreams(const std::string& path);
// Frames decoded from the first video stream (ffprobe -count_frames).
int CountVideoFrames(const std::string& path);
// Duration of stream `index` in seconds; -1 when unknown.
double StreamSeconds(const std::string& path, int index);
// Whatever `ffmpeg -v error -i path -f null -` prints; "" for a clean decode.
std::string DecodeErrors(const std::string& path);

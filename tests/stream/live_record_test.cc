// A few seconds of the emulator's live streams recorded through
// IP_NET_DVR_StartRecord, read back chunk by chunk, converted with the
// command-line client and the converter, and checked with ffprobe and
// ffmpeg: the files open, decode without an error and hold every recorded
// video frame.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "emu/rtsp_server.h"
#include "frame_log_helper.h"
#include "media_helper.h"
#include "quorvel/quorvel.h"
#include "record_helper.h"
#include "stream/avi_converter.h"
#include "stream/disk_space.h"
#include "stream/h264_nal.h"
#include "stream/pull_class.h"
#include "stream/rtsp_object_list.h"

namespace {

const int kWaitMs = 30000;

bool H264Key(const std::vector<uint8_t>& frame) {
  for (const NalUnit& u : SplitAnnexB(frame.data(), frame.size())) {
    if (u.type == 5) return true;
  }
  return false;
}

// An intra-coded VOP anywhere in the frame (after the VOL header, if any).
bool Mpeg4Key(const std::vector<uint8_t>& frame) {
  for (size_t i = 0; i + 4 < frame.size(); ++i) {
    if (frame[i] == 0 && frame[i + 1] == 0 && frame[i + 2] == 1 && frame[i + 3] == 0xB6)
      return (frame[i + 4] >> 6) == 0;
  }
  return false;
}

std::string Hex(const uint8_t* data, int length) {
  std::string out;
  char byte[3];
  for (int i = 0; i < length; ++i) {
    snprintf(byte, sizeof(byte), "%02x", data[i]);
    out += byte;
  }
  return out;
}

// The first audio stream's codec configuration as ffprobe dumps it, in hex.
std::string ProbedAudioConfig(const std::string& path) {
  std::string out;
  RunCommand("ffprobe -v error -select_streams a:0 -show_entries stream=extradata -show_data "
             "-of default=nw=1 '" + path + "'",
             &out);
  // "extradata=\n00000000: 1408     ..\n"
  std::string hex;
  size_t at = out.find("00000000: ");
  if (at == std::string::npos) return hex;
  for (at += 10; at < out.size() && out.compare(at, 2, "  ") != 0 && out[at] != '\n'; ++at) {
    if (out[at] != ' ') hex += out[at];
  }
  return hex;
}

class LiveRecording : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_FALSE(dir_.path().empty());
    // The free space is not what these cases are about.
    SetDiskFreeCommand("echo 99999999 #%s");
    IP_NET_DVR_SetStatusEventCallBack(&FrameLog::OnStatus, &log_);
  }
  void TearDown() override {
    IP_NET_DVR_SetStatusEventCallBack(nullptr, nullptr);
    server_.Stop();
    SetDiskFreeCommand(nullptr);
  }

  // Plays the path of (family, index), records while `video_frames` video
  // frames are delivered (the file starts at the next key frame, one a
  // second) into dir/live.avi and stops; the recording's path.
  std::string Record(qvemu::RtspAudio audio, unsigned short family, unsigned short index,
                     int video_frames) {
    qvemu::RtspOptions options;
    options.audio = audio;
    EXPECT_TRUE(server_.Start(options));
    ClientInfo info = StreamInfo(server_.Port(), family, index, &log_);
    long handle = IP_NET_DVR_RealPlayEx("127.0.0.1", "admin", "admin", &FrameLog::OnFrame, &info, 0);
    EXPECT_GT(handle, 0);
    EXPECT_TRUE(log_.WaitFor([](const std::vector<Frame>& f) { return CountType(f, 2) >= 1; },
                             kWaitMs));
    std::string file = dir_ / "live.avi";
    int start = log_.Count(0);
    EXPECT_EQ(IP_NET_DVR_StartRecord(handle, file.c_str(), 60, 0), 0);
    EXPECT_TRUE(log_.WaitForStatus(EVNET_RECORD_FILEBEGIN, kWaitMs));
    EXPECT_TRUE(log_.WaitFor(
        [=](const std::vector<Frame>& f) { return CountType(f, 0) >= start + video_frames; },
        kWaitMs));
    // Frames still waiting in the recorder's rings when it stops are not
    // written: a slow machine gets the time to write them.
    CPullClass* pull = OjbectRtspList.GetRtspObject(handle, 0);
    EXPECT_TRUE(testsupport::WaitFor([pull] { return pull->PendingRecordFrames() == 0; }, kWaitMs));
    EXPECT_EQ(IP_NET_DVR_StopRecord(handle), 0);
    EXPECT_EQ(IP_NET_DVR_GetAudioParam(handle, &audio_param_), 0);
    EXPECT_EQ(IP_NET_DVR_StopRealPlay(handle), 0);
    delivered_video_ = log_.Count(0) - start;
    return file;
  }

  // The recording as the recorder wrote it: it agrees with itself, video
  // starts at a key frame and every video entry's key mark matches its
  // frame.
  RecordedFile CheckRecording(const std::string& path, bool (*is_key)(const std::vector<uint8_t>&)) {
    RecordedFile rec = ReadRecording(path);
    std::vector<RecordedIndexRow> rows = ExpectSelfConsistent(rec);
    EXPECT_GE(rec.Count("00dc"), 25);
    EXPECT_LE(rec.Count("00dc"), delivered_video_);
    size_t row = 0;
    for (const RecordedChunk& c : rec.chunks) {
      if (c.id != "00dc" || row >= rows.size()) continue;
      EXPECT_EQ(rows[row].flags, is_key(c.data) ? 16u : 0u) << row;
      if (row == 0) {
        EXPECT_TRUE(is_key(c.data)) << "the file starts at a key frame";
      }
      ++row;
    }
    return rec;
  }

  // Converts with `quorvel convert` and checks the output with ffprobe and
  // ffmpeg against the recording.
  void CheckConverted(const RecordedFile& rec, const std::string& in, const std::string& out,
                      const std::string& streams, const std::string& options = "") {
    std::string cli = std::string(QUORVEL_BINARY_DIR) + "/quorvel convert " + options;
    std::string printed;
    ASSERT_EQ(RunCommand(cli + " '" + in + "' '" + out + "'", &printed), 0) << printed;
    EXPECT_EQ(ProbeStreams(out), streams);
    EXPECT_EQ(DecodeErrors(out), "") << out;
    EXPECT_EQ(CountVideoFrames(out), rec.Count("00dc")) << out;
    std::string counted = ", " + std::to_string(rec.Count("00dc")) + " frames\n";
    EXPECT_NE(printed.find(counted), std::string::npos) << printed;
  }

  TempDir dir_;
  FrameLog log_;
  qvemu::RtspServer server_;
  QV_AUDIO_PARAM audio_param_{};
  int delivered_video_ = 0;
};

TEST_F(LiveRecording, H264WithG711) {
  std::string file = Record(qvemu::RtspAudio::kG711, 1, 0, 100);
  RecordedFile rec = CheckRecording(file, &H264Key);
  EXPECT_EQ(rec.header_size, 10296u);
  EXPECT_GT(rec.Count("01wb"), 0);
  CheckConverted(rec, file, dir_ / "out.avi", "video:h264,audio:pcm_mulaw");
  CheckConverted(rec, file, dir_ / "out.mp4", "video:h264,audio:aac");
}

TEST_F(LiveRecording, H264WithAacKeepsTheStreamsAudioConfig) {
  std::string file = Record(qvemu::RtspAudio::kAac, 1, 0, 100);
  RecordedFile rec = CheckRecording(file, &H264Key);
  ASSERT_GT(rec.Count("01wb"), 0);
  ASSERT_STREQ(audio_param_.codec, "AAC");
  ASSERT_GE(audio_param_.config_len, 2);
  std::string config = Hex(audio_param_.config, audio_param_.config_len);

  // The recording keeps no AudioSpecificConfig. Without one the converter
  // describes AAC-LC at the header's rate and channels: the stream's own
  // first two bytes (object type, rate, channels), without the explicit
  // "no SBR" extension the encoder appends.
  CheckConverted(rec, file, dir_ / "out.avi", "video:h264,audio:aac");
  EXPECT_EQ(ProbedAudioConfig(dir_ / "out.avi"), config.substr(0, 4));
  // Given the stream's block, the command line keeps it as it is.
  CheckConverted(rec, file, dir_ / "out.mkv", "video:h264,audio:aac", "--aac-config " + config);
  EXPECT_EQ(ProbedAudioConfig(dir_ / "out.mkv"), config);
  std::string cli = std::string(QUORVEL_BINARY_DIR) + "/quorvel convert --aac-config ";
  std::string printed;
  for (const char* bad : {"14g8", "140", "", "0x1408"}) {
    EXPECT_EQ(RunCommand(cli + "'" + bad + "' '" + file + "' '" + (dir_ / "bad.mkv") + "'", &printed), 2)
        << bad;
  }

  // A program that has the stream's block hands the config over itself.
  AviConvertOptions options;
  options.aac_config.assign(audio_param_.config, audio_param_.config + audio_param_.config_len);
  CAviConverter converter(options);
  ASSERT_EQ(converter.Convert(file, dir_ / "out.mp4"), 0) << converter.Error();
  const AviConvertReport& r = converter.Report();
  EXPECT_EQ(r.video_frames, rec.Count("00dc"));
  EXPECT_EQ(r.skipped_video, 0);
  EXPECT_EQ(r.audio_frames + r.skipped_audio, rec.Count("01wb"));
  EXPECT_EQ(ProbedAudioConfig(dir_ / "out.mp4"), config);
  EXPECT_EQ(DecodeErrors(dir_ / "out.mp4"), "");
  EXPECT_EQ(CountVideoFrames(dir_ / "out.mp4"), rec.Count("00dc"));
}

TEST_F(LiveRecording, Mpeg4MainStreamWithItsVolHeader) {
  std::string file = Record(qvemu::RtspAudio::kG711, 0, 0, 100);
  RecordedFile rec = CheckRecording(file, &Mpeg4Key);
  ASSERT_GT(rec.chunks.size(), 0u);
  size_t first_video = 0;
  while (rec.chunks[first_video].id != "00dc") ++first_video;
  const std::vector<uint8_t>& f = rec.chunks[first_video].data;
  ASSERT_GE(f.size(), 4u);
  EXPECT_TRUE(f[0] == 0 && f[1] == 0 && f[2] == 1 && f[3] != 0xB6)
      << "the VOL header ahead of the first frame";
  EXPECT_EQ(WordAt(rec.bytes, 224) & 0xFFFFFFFF, 0x44495658u) << "XVID";
  EXPECT_EQ(WordAt(rec.bytes, 264), 25u) << "frame rate";
  CheckConverted(rec, file, dir_ / "out.avi", "video:mpeg4,audio:pcm_mulaw");
  CheckConverted(rec, file, dir_ / "out.mp4", "video:mpeg4,audio:aac");
}

}  // namespace

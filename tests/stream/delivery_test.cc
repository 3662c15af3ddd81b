// Frames from the emulator's RTSP camera through real play to the host's
// callbacks: types, key-frame marks, time stamps, parameter blocks,
// credentials, and the ways a stream ends.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "base/compat.h"
#include "frame_log_helper.h"
#include "quorvel/quorvel.h"
#include "emu/rtsp_server.h"
#include "stream/h264_nal.h"
#include "stream/rtsp_object_list.h"

namespace {

const int kWaitMs = 20000;

class DeliveryTest : public ::testing::Test {
 protected:
  void SetUp() override {
    IP_NET_DVR_SetStatusEventCallBack(&FrameLog::OnStatus, &log_);
  }
  void TearDown() override {
    for (long h : handles_) IP_NET_DVR_StopRealPlay(h);
    IP_NET_DVR_SetStatusEventCallBack(nullptr, nullptr);
    IP_NET_DVR_SetRealDataCallBack(nullptr, nullptr);
    server_.Stop();
  }

  void Serve(const qvemu::RtspOptions& options) { ASSERT_TRUE(server_.Start(options)); }

  long Play(unsigned short codec_family, unsigned short stream_index, const char* user = "admin",
            const char* password = "admin", QV_RealDataCallBack cb = &FrameLog::OnFrame) {
    ClientInfo info = StreamInfo(server_.Port(), codec_family, stream_index, &log_);
    long handle = IP_NET_DVR_RealPlayEx("127.0.0.1", user, password, cb, &info, 0);
    EXPECT_GT(handle, 0);
    handles_.push_back(handle);
    return handle;
  }

  bool WaitVideo(int n) {
    return log_.WaitFor([n](const std::vector<Frame>& f) { return CountType(f, 0) >= n; },
                        kWaitMs);
  }

  qvemu::RtspServer server_;
  FrameLog log_;
  std::vector<long> handles_;
};

TEST_F(DeliveryTest, H264WithG711ReachesThePerStreamCallback) {
  Serve(qvemu::RtspOptions());
  long handle = Play(1, 0);
  ASSERT_TRUE(log_.WaitFor(
      [](const std::vector<Frame>& f) { return CountType(f, 0) >= 60 && CountType(f, 1) >= 20; },
      kWaitMs));
  ASSERT_EQ(IP_NET_DVR_StopRealPlay(handle), 0);
  handles_.clear();

  std::vector<Frame> frames = log_.Frames();
  ASSERT_EQ(frames.front().type, 2u) << "parameters come first";
  ASSERT_EQ(frames.front().bytes.size(), sizeof(__STREAM_AV_PARAM));
  __STREAM_AV_PARAM param;
  memcpy(&param, frames.front().bytes.data(), sizeof(param));
  EXPECT_STREQ(param.video.codec, "H264");
  EXPECT_EQ(param.video.width, 320);
  EXPECT_EQ(param.video.height, 240);
  EXPECT_EQ(param.video.frame_rate, 25);
  ASSERT_GT(param.video.config_len, 8);
  EXPECT_EQ(param.video.config[4] & 0x1F, 7) << "SPS first";
  EXPECT_STREQ(param.audio.codec, "G711U");
  EXPECT_EQ(param.audio.sample_rate, 8000);
  EXPECT_EQ(param.audio.channels, 1);
  EXPECT_EQ(param.audio.bits_per_sample, 8);

  double last_video = -1, last_audio = -1;
  int keys = 0;
  for (const Frame& f : frames) {
    EXPECT_EQ(f.handle, handle);
    EXPECT_EQ(f.user, &log_);
    if (f.type == 0) {
      EXPECT_GT(f.timestamp, last_video);
      last_video = f.timestamp;
      bool idr = false, sps = false, pps = false;
      for (const NalUnit& u : SplitAnnexB(f.bytes.data(), f.bytes.size())) {
        idr |= u.type == 5;
        sps |= u.type == 7;
        pps |= u.type == 8;
      }
      EXPECT_EQ(f.flag, idr ? 1 : 0);
      if (idr) {
        ++keys;
        EXPECT_TRUE(sps && pps) << "parameter sets ahead of every key frame";
        EXPECT_EQ(IsH264KeyFrame(f.bytes.data(), static_cast<int>(f.bytes.size())), 1)
            << int(f.bytes[0]) << " " << int(f.bytes[1]) << " " << int(f.bytes[2]) << " "
            << int(f.bytes[3]) << " " << int(f.bytes[4]) << " " << int(f.bytes[5]);
      }
    } else if (f.type == 1) {
      EXPECT_GE(f.timestamp, last_audio);
      last_audio = f.timestamp;
      EXPECT_EQ(f.flag, 0);
    }
  }
  EXPECT_GE(keys, 2);
  // Audio and video share one clock: after 60 frames at 25 fps both are
  // a few seconds in, within a second of each other.
  EXPECT_LT(std::abs(last_video - last_audio), 1000.0);
  EXPECT_GT(last_video, 1500.0);
}

TEST_F(DeliveryTest, ParameterBlocksAreReadableByHandle) {
  qvemu::RtspOptions options;
  options.audio = qvemu::RtspAudio::kAac;
  Serve(options);
  long handle = Play(1, 0);
  ASSERT_TRUE(WaitVideo(3));
  QV_VIDEO_PARAM video;
  QV_AUDIO_PARAM audio;
  ASSERT_EQ(IP_NET_DVR_GetVideoParam(handle, &video), 0);
  ASSERT_EQ(IP_NET_DVR_GetAudioParam(handle, &audio), 0);
  EXPECT_STREQ(video.codec, "H264");
  EXPECT_EQ(video.width, 320);
  EXPECT_STREQ(audio.codec, "AAC");
  EXPECT_EQ(audio.sample_rate, 16000);
  EXPECT_EQ(audio.bits_per_sample, 16);
  EXPECT_GE(audio.config_len, 2) << "AudioSpecificConfig";
  ASSERT_TRUE(log_.WaitFor([](const std::vector<Frame>& f) { return CountType(f, 1) >= 5; },
                           kWaitMs));
}

TEST_F(DeliveryTest, Mpeg4PathsCarryTheVolHeaderAndKeyFrames) {
  Serve(qvemu::RtspOptions());
  long main_handle = Play(0, 0);
  long cif_handle = Play(0, 3);
  ASSERT_TRUE(log_.WaitFor(
      [=](const std::vector<Frame>& f) {
        int main_frames = 0, cif_frames = 0;
        for (const Frame& x : f) {
          if (x.type != 0) continue;
          main_frames += x.handle == main_handle;
          cif_frames += x.handle == cif_handle;
        }
        return main_frames >= 30 && cif_frames >= 30;
      },
      kWaitMs));
  QV_VIDEO_PARAM main_video, cif_video;
  ASSERT_EQ(IP_NET_DVR_GetVideoParam(main_handle, &main_video), 0);
  ASSERT_EQ(IP_NET_DVR_GetVideoParam(cif_handle, &cif_video), 0);
  EXPECT_STREQ(main_video.codec, "MPEG4");
  EXPECT_EQ(main_video.width, 320);
  EXPECT_EQ(cif_video.width, 352);
  EXPECT_EQ(cif_video.height, 288);
  // The emulator's VOL header names no usable rate: it comes from the stamps.
  EXPECT_EQ(main_video.frame_rate, 25);
  EXPECT_EQ(cif_video.frame_rate, 25);
  ASSERT_GE(main_video.config_len, 4);
  const unsigned char vol_start[] = {0, 0, 1};
  EXPECT_EQ(memcmp(main_video.config, vol_start, 3), 0);
  int keys = 0;
  double last[2] = {-1, -1};
  for (const Frame& f : log_.Frames()) {
    if (f.type != 0) continue;
    keys += f.flag == 1 ? 1 : 0;
    double& previous = last[f.handle == main_handle ? 0 : 1];
    EXPECT_GT(f.timestamp, previous);
    previous = f.timestamp;
  }
  EXPECT_GE(keys, 2);
  EXPECT_GT(last[0], 800.0) << "30 frames at 25 fps";
  EXPECT_GT(last[1], 800.0);
}

TEST_F(DeliveryTest, GlobalCallbackTakesStreamsWithoutTheirOwn) {
  // A pull registered without a callback hands its frames to the global one
  // with the global user pointer.
  Serve(qvemu::RtspOptions());
  IP_NET_DVR_SetRealDataCallBack(&FrameLog::OnFrame, &log_);
  long handle = OjbectRtspList.Add(server_.Url("").c_str(), "admin", "admin", 0, 0, nullptr,
                                   nullptr);
  handles_.push_back(handle);
  ASSERT_TRUE(WaitVideo(5));
  for (const Frame& f : log_.Frames()) {
    EXPECT_EQ(f.handle, handle);
    EXPECT_EQ(f.user, &log_);
  }
}

TEST_F(DeliveryTest, ReservedCharactersInCredentialsArePercentEncoded) {
  qvemu::RtspOptions options;
  options.user = "ad min@cam";
  options.password = "p:ss/w@rd#?%";
  options.audio = qvemu::RtspAudio::kNone;
  Serve(options);
  Play(1, 0, options.user.c_str(), options.password.c_str());
  ASSERT_TRUE(WaitVideo(3));
  EXPECT_EQ(log_.StatusCount(EVENT_RTSP_AUTHERROR), 0);
}

TEST_F(DeliveryTest, WrongPasswordIsReportedAsAnAuthenticationError) {
  Serve(qvemu::RtspOptions());
  long handle = Play(1, 0, "admin", "wrong");
  ASSERT_TRUE(log_.WaitForStatus(EVENT_RTSP_AUTHERROR, kWaitMs));
  EXPECT_EQ(log_.Count(0), 0);
  for (const StatusEvent& e : log_.Statuses()) EXPECT_EQ(e.id, handle);
}

}  // namespace

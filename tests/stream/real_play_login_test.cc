// Real play by login handle: the stream of a logged-in camera is opened with
// the session's address, user name and password, end to end against the
// emulated camera's control link and its RTSP server.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "emu/camera.h"
#include "emu/rtsp_server.h"
#include "frame_log_helper.h"
#include "quorvel/quorvel.h"
#include "stream/pull_class.h"
#include "stream/rtsp_object_list.h"

namespace {

const int kWaitMs = 20000;

long Ignore(long, unsigned long, char*, unsigned long, FRAME_EXTDATA*) { return 0; }

class RealPlayByLogin : public ::testing::Test {
 protected:
  // Credentials with characters that must be escaped in an RTSP address.
  const std::string user_ = "cam op";
  const std::string password_ = "p@ss:w/rd";

  void SetUp() override {
    IP_NET_DVR_Init();
    IP_NET_DVR_SetStatusEventCallBack(&FrameLog::OnStatus, &log_);
    qvemu::CameraOptions camera_options;
    camera_options.user = user_;
    camera_options.password = password_;
    camera_.reset(new qvemu::Camera(camera_options));
    ASSERT_TRUE(camera_->Start());
    qvemu::RtspOptions rtsp_options;
    rtsp_options.user = user_;
    rtsp_options.password = password_;
    ASSERT_TRUE(rtsp_.Start(rtsp_options));
  }
  void TearDown() override {
    IP_NET_DVR_Cleanup();
    rtsp_.Stop();
    camera_->Stop();
  }

  long Login() {
    return IP_NET_DVR_Login("127.0.0.1", camera_->Port(), const_cast<char*>(user_.c_str()),
                            const_cast<char*>(password_.c_str()), nullptr);
  }

  ClientInfo Info(unsigned short family, unsigned short index) {
    return StreamInfo(rtsp_.Port(), family, index, &log_);
  }

  FrameLog log_;
  std::unique_ptr<qvemu::Camera> camera_;
  qvemu::RtspServer rtsp_;
};

TEST_F(RealPlayByLogin, PlaysWithTheSessionsAddressAndCredentials) {
  long id = Login();
  ASSERT_GT(id, 0);
  ASSERT_TRUE(log_.WaitForStatus(EVENT_LOGINOK, kWaitMs));
  ClientInfo info = Info(1, 0);
  long handle = IP_NET_DVR_RealPlay(id, 0, &FrameLog::OnFrame, &info, 0);
  ASSERT_GT(handle, 0);
  CPullClass* pull = OjbectRtspList.GetRtspObject(handle, 0);
  ASSERT_NE(pull, nullptr);
  EXPECT_EQ(pull->Address(), "rtsp://127.0.0.1:" + std::to_string(rtsp_.Port()));
  EXPECT_EQ(pull->UserName(), user_);
  EXPECT_EQ(pull->Password(), password_);
  EXPECT_EQ(pull->IsMainStream(), 1);

  ASSERT_TRUE(log_.WaitFor(
      [](const std::vector<Frame>& f) { return CountType(f, 0) >= 10 && CountType(f, 1) >= 3; },
      kWaitMs));
  EXPECT_EQ(log_.StatusCount(EVENT_RTSP_AUTHERROR), 0);
  for (const Frame& f : log_.Frames()) {
    EXPECT_EQ(f.handle, handle);
    EXPECT_EQ(f.user, &log_);
  }

  // The MPEG-4 paths follow the stream index as for any address.
  ClientInfo cif_info = Info(0, 2);
  long cif = IP_NET_DVR_RealPlay(id, 0, &FrameLog::OnFrame, &cif_info, 0);
  ASSERT_GT(cif, 0);
  EXPECT_EQ(OjbectRtspList.GetRtspObject(cif, 0)->Address(),
            "rtsp://127.0.0.1:" + std::to_string(rtsp_.Port()) + "/mpeg4cif");
  EXPECT_EQ(OjbectRtspList.GetRtspObject(cif, 0)->IsMainStream(), 0);
  EXPECT_EQ(IP_NET_DVR_StopRealPlay(cif), 0);

  // The session only lent its address: the stream outlives the logout.
  EXPECT_EQ(IP_NET_DVR_Logout(id), 0);
  int frames = log_.Count(0);
  ASSERT_TRUE(log_.WaitFor(
      [frames](const std::vector<Frame>& f) { return CountType(f, 0) >= frames + 10; }, kWaitMs));
  EXPECT_EQ(IP_NET_DVR_StopRealPlay(handle), 0);
}

TEST_F(RealPlayByLogin, UnknownLoginsAndMissingArgumentsAreRefused) {
  ClientInfo info = Info(1, 0);
  for (long id : {0L, -1L, 5L, 129L, 100000L})
    EXPECT_EQ(IP_NET_DVR_RealPlay(id, 0, &Ignore, &info, 0), -100234) << id;

  long id = Login();
  ASSERT_GT(id, 0);
  IP_NET_DVR_LOG_OPEN();
  testing::internal::CaptureStdout();
  EXPECT_EQ(IP_NET_DVR_RealPlay(id + 1, 0, &Ignore, &info, 0), -100234);
  EXPECT_EQ(IP_NET_DVR_RealPlay(id, 0, &Ignore, nullptr, 0), -100234);
  EXPECT_EQ(IP_NET_DVR_RealPlay(id, 0, nullptr, &info, 0), -100234);
  std::string out = testing::internal::GetCapturedStdout();
  IP_NET_DVR_LOG_CLOSE();
  std::string unknown = "]not find user login data " + std::to_string(id + 1) + "\r\n";
  size_t at = out.find(unknown);
  EXPECT_NE(at, std::string::npos) << out;
  at = out.find("]pUser is null error\r\n", at);
  EXPECT_NE(at, std::string::npos) << out;
  EXPECT_NE(out.find("]callback function not allow empty error\r\n", at), std::string::npos)
      << out;
  EXPECT_NE(out.find("]IP_NET_DVR_RealPlay(" + std::to_string(id) + ") start...\r\n"),
            std::string::npos)
      << out;

  // A logged-out session is no longer a source of addresses.
  EXPECT_EQ(IP_NET_DVR_Logout(id), 0);
  EXPECT_EQ(IP_NET_DVR_RealPlay(id, 0, &Ignore, &info, 0), -100234);
}

}  // namespace

// Stream addresses, argument checks, unknown handles and the registry's
// deliberate quirks, without any stream data.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include "frame_log_helper.h"
#include "quorvel/quorvel.h"
#include "stream/pull_class.h"
#include "stream/rtsp_object_list.h"
#include "stream/stream_address.h"

namespace {

long Ignore(long, unsigned long, char*, unsigned long, FRAME_EXTDATA*) { return 0; }

ClientInfo Info(int port, unsigned short family, unsigned short index) {
  return StreamInfo(port, family, index, nullptr);
}

// Builds the address the way real play does.
std::string AddressFor(const char* ip, const ClientInfo& info) {
  return BuildStreamAddress(ip, info.port, StreamPathFor(info.codec_family, info.stream_index),
                            true);
}

TEST(StreamAddress, CodecFamilyAndStreamIndexChooseThePath) {
  EXPECT_EQ(AddressFor("192.168.1.10", Info(554, 0, 0)), "rtsp://192.168.1.10:554/mpeg4");
  for (unsigned short index : {1, 2, 3, 4, 9})
    EXPECT_EQ(AddressFor("192.168.1.10", Info(554, 0, index)), "rtsp://192.168.1.10:554/mpeg4cif");
  // Every non-zero family is addressed without a path, whatever the index.
  for (unsigned short family : {1, 2, 0x100, 0xFFFF}) {
    for (unsigned short index : {0, 1, 4, 7})
      EXPECT_EQ(AddressFor("192.168.1.10", Info(554, family, index)), "rtsp://192.168.1.10:554");
  }
  EXPECT_EQ(AddressFor("cam.local", Info(-1, 0, 0)), "rtsp://cam.local:-1/mpeg4");
}

TEST(StreamAddress, VxrAddressesKeepTheirSchemeOnlyWhereAllowed) {
  EXPECT_EQ(BuildStreamAddress("vxr://10.0.0.5", 8554, "/mpeg4", true), "vxr://10.0.0.5:8554/mpeg4");
  EXPECT_EQ(BuildStreamAddress("relay/vxr://x", 1, "", true), "relay/vxr://x:1");
  // Real play by login handle never tests for the scheme.
  EXPECT_EQ(BuildStreamAddress("vxr://10.0.0.5", 8554, "", false), "rtsp://vxr://10.0.0.5:8554");
}

TEST(StreamAddress, CredentialsArePercentEncodedIntoTheAuthority) {
  EXPECT_EQ(PercentEncode("aZ09-._~"), "aZ09-._~");
  EXPECT_EQ(PercentEncode("a b@c:d/e#f?g%h"), "a%20b%40c%3Ad%2Fe%23f%3Fg%25h");
  EXPECT_EQ(PercentEncode("\xE4"), "%E4");
  EXPECT_EQ(AddressWithCredentials("rtsp://h:554/mpeg4", "ad@m", "p:w"),
            "rtsp://ad%40m:p%3Aw@h:554/mpeg4");
  EXPECT_EQ(AddressWithCredentials("rtsp://h:554", "u", ""), "rtsp://u@h:554");
  EXPECT_EQ(AddressWithCredentials("rtsp://h:554", "", "secret"), "rtsp://h:554");
  EXPECT_EQ(AddressWithCredentials("rtsp://x:y@h:554/a", "u", "p"), "rtsp://x:y@h:554/a");
  // An '@' in the path is not taken for credentials.
  EXPECT_EQ(AddressWithCredentials("rtsp://h:554/a@b", "u", "p"), "rtsp://u:p@h:554/a@b");
}

class RealPlayArgs : public ::testing::Test {
 protected:
  void TearDown() override {
    for (long h : handles_) IP_NET_DVR_StopRealPlay(h);
  }
  long Play(const ClientInfo& info) {
    ClientInfo copy = info;
    // Port 9 on loopback: the connection is refused, nothing is sent.
    long handle = IP_NET_DVR_RealPlayEx("127.0.0.1", "admin", "admin", &Ignore, &copy, 0);
    EXPECT_GT(handle, 0);
    handles_.push_back(handle);
    return handle;
  }
  std::vector<long> handles_;
};

TEST_F(RealPlayArgs, MissingArgumentsAreRefused) {
  ClientInfo info = Info(9, 1, 0);
  EXPECT_EQ(IP_NET_DVR_RealPlayEx("127.0.0.1", "u", "p", &Ignore, nullptr, 0), -100234);
  EXPECT_EQ(IP_NET_DVR_RealPlayEx(nullptr, "u", "p", &Ignore, &info, 0), -100234);
  EXPECT_EQ(IP_NET_DVR_RealPlayEx("127.0.0.1", "u", "p", nullptr, &info, 0), -100234);
  // Null credentials are allowed: no user in the address.
  long handle = IP_NET_DVR_RealPlayEx("127.0.0.1", nullptr, nullptr, &Ignore, &info, 0);
  ASSERT_GT(handle, 0);
  EXPECT_EQ(IP_NET_DVR_StopRealPlay(handle), 0);
}

TEST_F(RealPlayArgs, HandleIsThePullAndCarriesTheBuiltAddress) {
  long a = Play(Info(9, 0, 0));
  long b = Play(Info(9, 0, 2));
  long c = Play(Info(9, 1, 3));
  CPullClass* pull = OjbectRtspList.GetRtspObject(a, 0);
  ASSERT_NE(pull, nullptr);
  EXPECT_EQ(reinterpret_cast<long>(pull), a);
  EXPECT_EQ(pull->Address(), "rtsp://127.0.0.1:9/mpeg4");
  EXPECT_EQ(pull->IsMainStream(), 1);
  EXPECT_EQ(pull->PullMode(), 0);
  EXPECT_EQ(OjbectRtspList.GetRtspObject(b, 0)->Address(), "rtsp://127.0.0.1:9/mpeg4cif");
  EXPECT_EQ(OjbectRtspList.GetRtspObject(b, 0)->IsMainStream(), 0);
  EXPECT_EQ(OjbectRtspList.GetRtspObject(c, 0)->Address(), "rtsp://127.0.0.1:9");
  EXPECT_NE(a, b);
}

TEST_F(RealPlayArgs, UnknownHandlesAnswerUnknownHandle) {
  QV_VIDEO_PARAM video;
  QV_AUDIO_PARAM audio;
  for (long handle : {0L, 1L, -5L, 0x12345678L}) {
    EXPECT_EQ(IP_NET_DVR_StopRealPlay(handle), -8999989);
    EXPECT_EQ(IP_NET_DVR_GetVideoParam(handle, &video), -8999989);
    EXPECT_EQ(IP_NET_DVR_GetAudioParam(handle, &audio), -8999989);
  }
  // The handle is looked up first: a null destination is only wrong for a
  // stream that exists.
  EXPECT_EQ(IP_NET_DVR_GetVideoParam(0x12345678L, nullptr), -8999989);
  EXPECT_EQ(IP_NET_DVR_GetAudioParam(0x12345678L, nullptr), -8999989);
  long handle = Play(Info(9, 1, 0));
  EXPECT_EQ(IP_NET_DVR_GetVideoParam(handle, nullptr), QV_E_INVALID_ARG);
  EXPECT_EQ(IP_NET_DVR_GetAudioParam(handle, nullptr), QV_E_INVALID_ARG);
  EXPECT_EQ(IP_NET_DVR_GetVideoParam(handle, &video), 0);
  EXPECT_EQ(video.codec[0], '\0') << "nothing known before the stream answers";
  handles_.clear();
  EXPECT_EQ(IP_NET_DVR_StopRealPlay(handle), 0);
  EXPECT_EQ(IP_NET_DVR_StopRealPlay(handle), -8999989) << "a stopped handle is forgotten";
}

// SetAutoReconnect and Reconnect forget a live handle, as designed: the
// stream runs on, out of reach, until everything is released -- and then it
// is stopped and its thread joined before the release returns.
TEST_F(RealPlayArgs, ForgottenHandlesRunOnUntilEverythingIsReleased) {
  for (bool cleanup : {false, true}) {
    int live = CPullClass::LiveCount();
    long a = Play(Info(9, 1, 0));
    long b = Play(Info(9, 1, 0));
    handles_.clear();
    CPullClass* pull_a = OjbectRtspList.GetRtspObject(a, 0);
    EXPECT_EQ(IP_NET_DVR_SetAutoReconnect(a, 1), 0);
    EXPECT_EQ(IP_NET_DVR_Reconnect(b), 0);
    EXPECT_EQ(IP_NET_DVR_StopRealPlay(a), -8999989);
    EXPECT_EQ(IP_NET_DVR_StopRealPlay(b), -8999989);
    EXPECT_EQ(OjbectRtspList.SetAutoReconnect(a, 1), -8999989);
    EXPECT_EQ(OjbectRtspList.Reconnect(b), -8999989);
    // The exported calls then ask the device sessions, which know no such ID.
    EXPECT_EQ(IP_NET_DVR_SetAutoReconnect(a, 1), -9000002);
    EXPECT_EQ(IP_NET_DVR_Reconnect(b), -9000002);
    EXPECT_TRUE(pull_a->IsRunning());
    EXPECT_EQ(CPullClass::LiveCount(), live + 2);
    if (cleanup) {
      EXPECT_EQ(IP_NET_DVR_Cleanup(), 0);
    } else {
      EXPECT_EQ(IP_NET_DVR_StopAllRealPlay(), 0);
    }
    EXPECT_EQ(CPullClass::LiveCount(), live) << (cleanup ? "Cleanup" : "StopAllRealPlay");
  }
}

TEST_F(RealPlayArgs, HandleZeroSetsTheDefaultForNewStreams) {
  EXPECT_EQ(OjbectRtspList.SetAutoReconnect(0, 0), -8999989);
  long handle = Play(Info(9, 1, 0));
  EXPECT_EQ(OjbectRtspList.GetRtspObject(handle, 0)->AutoReconnect(), 0);
  EXPECT_EQ(OjbectRtspList.SetAutoReconnect(0, 1), -8999989);
  handle = Play(Info(9, 1, 0));
  EXPECT_EQ(OjbectRtspList.GetRtspObject(handle, 0)->AutoReconnect(), 1);
}

TEST_F(RealPlayArgs, FrameTypesOutsideZeroToTwoAreABug) {
  long handle = Play(Info(9, 1, 0));
  CPullClass* pull = OjbectRtspList.GetRtspObject(handle, 0);
  unsigned char byte = 0;
  testing::internal::CaptureStdout();
  EXPECT_EQ(pull->OnGetMediaType(&byte, 1, 0, 0, 3), -1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "bug, type:3");
}

TEST_F(RealPlayArgs, GlobalDeliveryWithoutACallbackAnswersNoCallback) {
  IP_NET_DVR_SetRealDataCallBack(nullptr, nullptr);
  FRAME_EXTDATA extra = {0, 0, nullptr};
  char byte = 0;
  EXPECT_EQ(OjbectRtspList.OnGetFrame(1, 0, &byte, 1, &extra), -1234567);
}

TEST(RealPlayRegistry, LastErrorIsReadAndCleared) {
  OjbectRtspList.SetLastError(-8999970);
  EXPECT_EQ(IP_NET_DVR_GetLastErrorCode(), -8999970);
  EXPECT_EQ(IP_NET_DVR_GetLastErrorCode(), 0);
}

TEST(RealPlayRegistry, TestResultFileGetsTheStatisticsHeader) {
  EXPECT_EQ(IP_NET_DVR_WriteTestResult(nullptr), -1);
  EXPECT_EQ(IP_NET_DVR_WriteTestResult(""), -1);
  EXPECT_EQ(IP_NET_DVR_WriteTestResult("/nonexistent-dir/stat.txt"), -1);
  std::string path = std::string(QUORVEL_BINARY_DIR) + "/tests/stream_stat_test.txt";
  remove(path.c_str());
  testing::internal::CaptureStdout();
  ASSERT_EQ(IP_NET_DVR_WriteTestResult(path.c_str()), 0);
  ASSERT_EQ(IP_NET_DVR_WriteTestResult(path.c_str()), 0);
  std::string printed = testing::internal::GetCapturedStdout();
  const std::string header =
      "|Index|              IP| Rtsp|  Tcp|  Lstkeyid| Lstframid|Lstframeer| Lostframe|   "
      "Lostkey|TotalFrames|  Lostrate|\n\n";
  std::ifstream in(path);
  std::stringstream content;
  content << in.rdbuf();
  EXPECT_EQ(content.str(), header + header) << "appended";
  EXPECT_EQ(printed, header + header);
  remove(path.c_str());
}

}  // namespace

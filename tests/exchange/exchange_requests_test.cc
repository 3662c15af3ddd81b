// The get and set requests of the configuration exchange on the wire: every
// get code with its empty body, sets that cannot be written, unknown users,
// and the system time and media capability requests with their replies
// read back from the emulated camera.
#include <gtest/gtest.h>

#include <cstring>

#include "link/camera_fixture.h"
#include "quorvel/quorvel.h"

namespace {

using qvtest::Envelope;
using qvtest::kWaitMs;

class ExchangeRequests : public qvtest::CameraFixture {};

const struct {
  long (*get)(long);
  long code;
} kGets[] = {
    {IP_NET_DVR_GET_SystemConfig, 200},      {IP_NET_DVR_GET_PtzConfig, 201},
    {IP_NET_DVR_GET_TimeConfig, 202},        {IP_NET_DVR_GET_UserConfig, 203},
    {IP_NET_DVR_GET_SyslogConfig, 204},      {IP_NET_DVR_GET_MiscConfig, 205},
    {IP_NET_DVR_GET_NetworkConfig, 300},     {IP_NET_DVR_GET_NetworkLANConfig, 305},
    {IP_NET_DVR_GET_NetworkWIFIConfig, 306}, {IP_NET_DVR_GET_NetworkADSLConfig, 310},
    {IP_NET_DVR_GET_NetworkDDNSConfig, 311}, {IP_NET_DVR_GET_NetworkUPNPConfig, 312},
    {IP_NET_DVR_GET_NetworkP2PConfig, 315},  {IP_NET_DVR_GET_ServerConfig, 400},
    {IP_NET_DVR_GET_FtpServerConfig, 401},   {IP_NET_DVR_GET_SmtpServerConfig, 402},
    {IP_NET_DVR_GET_MediaConfig, 500},       {IP_NET_DVR_GET_VideoConfig, 501},
    {IP_NET_DVR_GET_AudioConfig, 502},       {IP_NET_DVR_GET_VideoEncodeConfig, 503},
    {IP_NET_DVR_GET_VideoCaptureConfig, 504}, {IP_NET_DVR_GET_VideoOverlayConfig, 505},
    {IP_NET_DVR_GET_AudioCapture, 507},      {IP_NET_DVR_GET_AudioEncode, 508},
    {IP_NET_DVR_GET_VideoMaskConfig, 509},   {IP_NET_DVR_GET_VideoROIConfig, 510},
    {IP_NET_DVR_GET_MediaStreamConfig, 600}, {IP_NET_DVR_GET_PlatformConfig, 650},    {IP_NET_DVR_GET_GB28181Config, 680},
    {IP_NET_DVR_GET_RecordConfig, 700},      {IP_NET_DVR_GET_AlarmConfig, 800},
    {IP_NET_DVR_GET_InputAlarm, 801},        {IP_NET_DVR_GET_MotionDetectAlarm, 802},
    {IP_NET_DVR_GET_VideoCoverAlarm, 803},   {IP_NET_DVR_GET_VideoLostAlarm, 804},
    {IP_NET_DVR_GET_StorageFullAlarm, 805},  {IP_NET_DVR_GET_PersonDetectAlarm, 808},
};

TEST_F(ExchangeRequests, EveryGetSendsItsCodeWithAnEmptyBodyAndIsAnswered) {
  long id = LoginReady();
  for (const auto& g : kGets) {
    SCOPED_TRACE(g.code);
    camera_->ClearReceived();
    ASSERT_EQ(g.get(id), 0);
    auto frames = Frames("SYSTEM_CONFIG_GET_MESSAGE");
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].payload,
              Envelope("SYSTEM_CONFIG_GET_MESSAGE", std::to_string(g.code), ""));
    qvtest::AuxEvent reply;
    ASSERT_TRUE(events_.WaitAux(id, g.code, kWaitMs, &reply));
    EXPECT_FALSE(reply.xml.empty());
  }
}

TEST_F(ExchangeRequests, ASetWithoutARecordSendsNothing) {
  long id = LoginReady();
  const long results[] = {
      IP_NET_DVR_SET_TimeConfig(id, nullptr),     IP_NET_DVR_SET_UserConfig(id, nullptr),
      IP_NET_DVR_SET_MiscConfig(id, nullptr),     IP_NET_DVR_SET_NetworkConfig(id, nullptr),
      IP_NET_DVR_SET_NetworkLANConfig(id, nullptr), IP_NET_DVR_SET_NetworkWIFIConfig(id, nullptr),
      IP_NET_DVR_SET_PlatformConfig(id, nullptr), IP_NET_DVR_SET_GB28181Config(id, nullptr),
      IP_NET_DVR_SET_AlarmConfig(id, nullptr),    IP_NET_DVR_SET_InputAlarmConfig(id, nullptr),
      IP_NET_DVR_SET_MotionDetectAlarm(id, nullptr), IP_NET_DVR_SET_VCAlarmConfig(id, nullptr),
      IP_NET_DVR_SET_VlAlarmConfig(id, nullptr),  IP_NET_DVR_SET_VideoGateAlarmConfig(id, nullptr),
      IP_NET_DVR_SET_PersonDetectAlarm(id, nullptr), IP_NET_DVR_SET_OutputAlarmConfig(id, nullptr),
      IP_NET_DVR_SET_SYSTEMTIME(id, nullptr),     IP_NET_DVR_SET_MediaConfig(id, nullptr),
      IP_NET_DVR_SET_MediaStreamConfig(id, nullptr), IP_NET_DVR_SET_VideoUserOSDConfig(id, nullptr),
  };
  for (long r : results) EXPECT_EQ(r, QV_E_INVALID_ARG);
  // Requests go out in order: once a later get has arrived, nothing was
  // queued before it.
  ASSERT_EQ(IP_NET_DVR_GET_MiscConfig(id), 0);
  ASSERT_EQ(Frames("SYSTEM_CONFIG_GET_MESSAGE").size(), 1u);
  for (const auto& f : Requests()) EXPECT_EQ(f.type, "SYSTEM_CONFIG_GET_MESSAGE");
}

TEST_F(ExchangeRequests, UnknownUsersAreRefused) {
  MiscConfig misc;
  memset(&misc, 0, sizeof(misc));
  MediaStreamConfig stream = {};
  int time[7] = {8, 2024, 3, 5, 7, 8, 9};
  for (long id : {0L, -1L, 129L, 7L}) {
    EXPECT_EQ(IP_NET_DVR_GET_AlarmConfig(id), QV_E_UNKNOWN_USER);
    EXPECT_EQ(IP_NET_DVR_SET_MiscConfig(id, &misc), QV_E_UNKNOWN_USER);
    EXPECT_EQ(IP_NET_DVR_GET_SYSTEMTIME(id), QV_E_UNKNOWN_USER);
    EXPECT_EQ(IP_NET_DVR_SET_SYSTEMTIME(id, time), QV_E_UNKNOWN_USER);
    EXPECT_EQ(IP_NET_DVR_GET_MediaCapability(id), QV_E_UNKNOWN_USER);
    EXPECT_EQ(IP_NET_DVR_GET_AudioCapture(id), QV_E_UNKNOWN_USER);
    EXPECT_EQ(IP_NET_DVR_SET_MediaStreamConfig(id, &stream), QV_E_UNKNOWN_USER);
  }
}

TEST_F(ExchangeRequests, SystemTimeIsSetAndReadBack) {
  long id = LoginReady();
  int time[7] = {8, 2024, 3, 5, 7, 8, 9};
  ASSERT_EQ(IP_NET_DVR_SET_SYSTEMTIME(id, time), 0);
  auto sets = Frames("SYSTEM_CONTROL_MESSAGE");
  ASSERT_EQ(sets.size(), 1u);
  EXPECT_EQ(sets[0].payload,
            Envelope("SYSTEM_CONTROL_MESSAGE", "1005",
                     "<REQUEST_PARAM Time=\"20240305 07:08:09\" TimeZone=\"8\"/>"));
  ASSERT_TRUE(events_.WaitAux(id, 1005, kWaitMs));

  ASSERT_EQ(IP_NET_DVR_GET_SYSTEMTIME(id), 0);
  qvtest::AuxEvent reply;
  ASSERT_TRUE(events_.WaitAux(id, 1048, kWaitMs, &reply));
  EXPECT_EQ(Frames("SYSTEM_CONTROL_MESSAGE", 2).back().payload,
            Envelope("SYSTEM_CONTROL_MESSAGE", "1048", ""));
  int got[7];
  ASSERT_EQ(IP_NET_DVR_XMLGET_SYSTEMTIME(reply.xml.c_str(), got), 0) << reply.xml;
  EXPECT_EQ(got[0], 8);
  EXPECT_EQ(got[1], 2024);
  EXPECT_EQ(got[2], 3);
  EXPECT_EQ(got[3], 5);
  // The camera's clock runs on: a few seconds at most on a busy machine.
  EXPECT_EQ(got[4], 7);
  EXPECT_GE(got[6] + 60 * got[5], 9 + 60 * 8);
  EXPECT_LE(got[6] + 60 * got[5], 9 + 60 * 8 + 30);
}

TEST_F(ExchangeRequests, MediaCapabilitiesOfTheCamera) {
  long id = LoginReady();
  ASSERT_EQ(IP_NET_DVR_GET_MediaCapability(id), 0);
  EXPECT_EQ(Frames("SYSTEM_CONTROL_MESSAGE")[0].payload,
            Envelope("SYSTEM_CONTROL_MESSAGE", "1031", ""));
  qvtest::AuxEvent reply;
  ASSERT_TRUE(events_.WaitAux(id, 1031, kWaitMs, &reply));
  int nvideo = 0, naudio = 0;
  VideoCap* video = nullptr;
  AudioCap* audio = nullptr;
  ASSERT_EQ(IP_NET_DVR_XMLGET_MediaCapability(reply.xml.c_str(), &nvideo, &video, &naudio,
                                              &audio),
            0);
  ASSERT_GT(nvideo, 0);
  ASSERT_GT(naudio, 0);
  EXPECT_STREQ(video[0].name, "MainStream");
  EXPECT_GT(video[0].value[2], 0);  // a picture size
  EXPECT_GT(audio[0].value[0], 0);  // a sample rate
  delete[] video;
  delete[] audio;
}

}  // namespace

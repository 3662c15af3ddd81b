// What comes back from the camera and how it reaches the host: AUX response
// codes, PTZ replies, alarms, user data, snapshots, and a link that survives
// garbage ahead of a frame.
#include <algorithm>
#include <cstring>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "link/camera_fixture.h"

namespace qvtest {
namespace {

using ::testing::HasSubstr;

class RepliesTest : public CameraFixture {};

TEST_F(RepliesTest, AuxCodeTakesLow24BitsOfTheCodeAndHigh8OfTheFlag) {
  long id = LoginReady();
  camera_->SetReply("SYSTEM_CONTROL_MESSAGE", 1025, -1, "<RESPONSE_PARAM Error=\"1\" />");
  camera_->SetReply("SYSTEM_CONTROL_MESSAGE", 0x1234567, 0x7F000001, "");
  ASSERT_EQ(IP_NET_DVR_FindDVRLogFile(id), 0);
  ASSERT_EQ(IP_NET_DVR_SystemControl(id, 0x1234567, 0, ""), 0);
  AuxEvent refused;
  ASSERT_TRUE(events_.WaitAux(id, static_cast<long>(static_cast<int32_t>(0xFF000401u)), kWaitMs,
                              &refused));
  EXPECT_EQ(refused.xml, "\n<RESPONSE_PARAM Error=\"1\" />\n");
  EXPECT_TRUE(events_.WaitAux(id, 0x7F234567L, kWaitMs));
  // Configuration replies carry the section body; a refused set code is
  // composed the same way.
  ASSERT_EQ(IP_NET_DVR_GetDVRConfig(id, 305, 0, nullptr, 0, nullptr), 0);
  AuxEvent reply;
  ASSERT_TRUE(events_.WaitAux(id, 305, kWaitMs, &reply));
  EXPECT_THAT(reply.xml, HasSubstr("<LANConfig"));
  ASSERT_EQ(IP_NET_DVR_SetDVRConfig(id, 9999, 0, "<Nothing/>", 0), 0);
  EXPECT_TRUE(events_.WaitAux(id, static_cast<long>(static_cast<int32_t>(0xFF00270Fu)), kWaitMs));
}

// A remove reply (1024) is a status event, 18 or 19 by its flag, with the
// session's last formatted status text; it never reaches the AUX callback.
TEST_F(RepliesTest, RemoveReplyIsStatus18Or19WithTheLastStatusText) {
  long id = LoginReady();
  for (int flag : {0, -1}) {
    long code = flag == 0 ? EVENT_REMOVEOK : EVENT_REMOVEFAILED;
    camera_->SetReply("SYSTEM_CONTROL_MESSAGE", 1024, flag, "<RESPONSE_PARAM />");
    ASSERT_EQ(IP_NET_DVR_SystemControl(id, 1024, 0, ""), 0);
    ASSERT_TRUE(events_.WaitStatus(id, code, kWaitMs)) << flag;
    EXPECT_EQ(events_.First(id, code).text, Label() + ": OK: authentication OK!");
  }
  // The reboot's reply comes after both: had either gone to the AUX
  // callback, it would be there by now.
  ASSERT_EQ(IP_NET_DVR_RebootDVR(id), 0);
  ASSERT_TRUE(events_.WaitAux(id, 1007, kWaitMs));
  EXPECT_FALSE(events_.WaitAux(id, 1024, 0));
  EXPECT_FALSE(events_.WaitAux(id, static_cast<long>(static_cast<int32_t>(0xFF000400u)), 0));
}

TEST_F(RepliesTest, PtzRepliesByFlagCodeAndBody) {
  long id = LoginReady();
  // Flag 0 with a body: status 21 with the body; without: 22 and no text.
  // Each comes after status 10 twice: the request leaving (no text), then
  // the reply's flag 0.
  for (bool body : {true, false}) {
    camera_->SetPtzReply(0, "PTZ_CMD", body ? "<PRESET_INFO Count=\"2\"/>" : "");
    events_.Clear();
    ASSERT_EQ(body ? IP_NET_DVR_PTZPreset(id, QV_PRESET_SET, 3)
                   : IP_NET_DVR_PTZControl(id, QV_PTZ_DOWN, 1, 1), 0);
    long code = body ? EVENT_PTZPRESETINFO : EVNET_PTZNOPRESETINFO;
    ASSERT_TRUE(events_.WaitStatus(id, code, kWaitMs));
    EXPECT_EQ(events_.First(id, code).text, body ? "\n<PRESET_INFO Count=\"2\"/>\n" : "");
    std::vector<StatusEvent> all = events_.Status();
    ASSERT_GE(all.size(), 3u);
    EXPECT_EQ(all[all.size() - 3].code, EVENT_SENDPTZOK);
    EXPECT_EQ(all[all.size() - 3].text, "");
    EXPECT_EQ(all[all.size() - 2].code, EVENT_SENDPTZOK);
    EXPECT_EQ(all[all.size() - 2].text, Label() + ": send PTZ control command ok!");
  }
  // Refused: status 11 with the flag, and no 22.
  camera_->SetPtzReply(-3);
  events_.Clear();
  ASSERT_EQ(IP_NET_DVR_PTZControl(id, QV_PTZ_DOWN, 1, 1), 0);
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_SENDPTZFAILED, kWaitMs));
  EXPECT_EQ(events_.First(id, EVENT_SENDPTZFAILED).text,
            Label() + ": ERR -3: send PTZ control command failed!");
  EXPECT_EQ(events_.Count(id, EVNET_PTZNOPRESETINFO), 0);
  // Another code goes to the AUX callback.
  camera_->SetPtzReply(0, "77", "<PTZ_STATE Pan=\"10\"/>");
  ASSERT_EQ(IP_NET_DVR_PTZControl(id, QV_PTZ_DOWN, 1, 1), 0);
  AuxEvent reply;
  ASSERT_TRUE(events_.WaitAux(id, 77, kWaitMs, &reply));
  EXPECT_EQ(reply.xml, "\n<PTZ_STATE Pan=\"10\"/>\n");
}

// Every field of an alarm record, as text.
std::string AlarmText(const ALARM_ENTRY& a) {
  char text[256];
  snprintf(text, sizeof(text), "%d-%d-%d w%d %d:%d:%d code %d flag %d level %d data %s", a.year,
           a.month, a.day, a.wday, a.hour, a.minute, a.second, a.alarm_code, a.alarm_flag,
           a.alarm_level, a.alarm_data);
  return text;
}

TEST_F(RepliesTest, TwoAlarmItemsAreTwoStatusEventsWithFilledRecords) {
  long id = LoginReady();
  qvemu::AlarmSpec a = {2024, 3, 9, 6, 13, 14, 15, 5, 1, 2, "motion"};
  qvemu::AlarmSpec b;
  b.code = 7;
  b.data = std::string(300, 'x');
  ASSERT_TRUE(camera_->SendAlarm({a, b}));
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_PTZALARM, kWaitMs, 2));
  std::vector<std::string> alarms;
  for (const auto& e : events_.Status()) {
    if (e.code == EVENT_PTZALARM) alarms.push_back(AlarmText(e.alarm));
  }
  EXPECT_EQ(alarms, (std::vector<std::string>{
                        "2024-3-9 w6 13:14:15 code 5 flag 1 level 2 data motion",
                        "2024-1-1 w1 0:0:0 code 7 flag 0 level 0 data " + std::string(127, 'x')}));
}

TEST_F(RepliesTest, UserDataIsCutToTheCallersBufferAndDecodedByPairs) {
  camera_->SetUserData("0123456789");
  long id = LoginReady();
  char buffer[4];
  int length = sizeof(buffer);
  ASSERT_EQ(IP_NET_DVR_GetUserData(id, buffer, &length), 0);
  EXPECT_EQ(length, 3);
  EXPECT_STREQ(buffer, "012");
  char whole[64];
  length = sizeof(whole);
  ASSERT_EQ(IP_NET_DVR_GetUserData(id, whole, &length), 0);
  EXPECT_EQ(length, 10);
  EXPECT_STREQ(whole, "0123456789");
  EXPECT_TRUE(events_.WaitAux(id, 1034, kWaitMs));
  EXPECT_EQ(IP_NET_DVR_SetUserData(id, nullptr, 0), -1);
  EXPECT_EQ(IP_NET_DVR_SetUserData(id, whole, 1), 0);
  // Pairs read as "%02x" reads them: an odd trailing digit is dropped, a
  // pair ends at its first non-digit; missing data is empty.
  const struct {
    const char* attribute;
    std::string bytes;
  } cases[] = {
      {"UserDevData=\"41424\"", "AB"},
      {"UserDevData=\"4g42\"", std::string("\x04" "B")},
      {"UserDevData=\"zz41\"", std::string("\0A", 2)},
      {"", ""},
  };
  for (const auto& c : cases) {
    camera_->SetReply("SYSTEM_CONTROL_MESSAGE", 1034, 0,
                      std::string("<RESPONSE_PARAM ") + c.attribute + " />");
    length = sizeof(whole);
    ASSERT_EQ(IP_NET_DVR_GetUserData(id, whole, &length), 0);
    EXPECT_EQ(std::string(whole, static_cast<size_t>(length)), c.bytes) << c.attribute;
    EXPECT_EQ(whole[length], '\0');
  }
}

TEST_F(RepliesTest, SnapshotWaitsForItsAlarm) {
  long id = LoginReady();
  // A camera that acknowledges snapshots without taking them.
  camera_->SetReply("SYSTEM_CONTROL_MESSAGE", 1043, 0, "");
  // Without waiting: asked and back at once.
  ASSERT_EQ(IP_NET_DVR_SnapPic(id, 1, 80, "/tmp/qv-snap.jpg", 0), 0);
  auto frames = Frames("SYSTEM_CONTROL_MESSAGE");
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].body, "\n<REQUEST_PARAM Stream=\"1\" Quality=\"80\"/>\n");
  // A negative wait means 200 ms; the camera never announces a picture.
  EXPECT_EQ(IP_NET_DVR_SnapPic(id, 0, 50, "/tmp/qv-snap.jpg", -5), QV_E_SNAP_TIMEOUT);
  // Announced: the wait ends once the picture's download has ended, here
  // with status 17, as the camera has no such file.
  qvemu::AlarmSpec ready;
  ready.code = 23;
  ready.data = "/mnt/snap/0001.jpg";
  std::thread announcer([&] {
    camera_->WaitForFrames(
        [](const std::vector<qvemu::ReceivedFrame>& all) {
          return WithoutHeartbeats(all).size() >= 3;
        },
        kWaitMs);
    camera_->SendAlarm({ready});
  });
  EXPECT_EQ(IP_NET_DVR_SnapPic(id, 0, 50, "/tmp/qv-snap.jpg", kWaitMs), 0);
  announcer.join();
  EXPECT_TRUE(events_.WaitStatus(id, EVENT_PTZALARM, kWaitMs));
  EXPECT_TRUE(events_.WaitStatus(id, EVENT_DOWNLOADFAILED, kWaitMs));
}

TEST_F(RepliesTest, SnapshotTaskAsksEachCameraUntilStopped) {
  long id = LoginReady();
  SNAPPIC_TASK task = {};
  char picture[16];
  task.userID[0] = id;
  task.userID[1] = 77;  // unknown: skipped
  task.count = 2;
  task.stream = 1;
  task.quality = 60;
  task.buffer[0] = picture;
  task.bufferSize[0] = sizeof(picture);
  task.interval = 20;
  EXPECT_EQ(IP_NET_DVR_SnapPicTaskStart(nullptr), -1);
  ASSERT_EQ(IP_NET_DVR_SnapPicTaskStart(&task), 0);
  EXPECT_EQ(IP_NET_DVR_SnapPicTaskStart(&task), -1);
  auto frames = Frames("SYSTEM_CONTROL_MESSAGE", 2);
  EXPECT_EQ(IP_NET_DVR_SnapPicTaskStop(), 0);
  ASSERT_GE(frames.size(), 2u);
  EXPECT_EQ(frames[0].body, "\n<REQUEST_PARAM Stream=\"1\" Quality=\"60\"/>\n");
  // Stopped: a new task may start. Each entry is followed by exactly its
  // interval, however short.
  camera_->ClearReceived();
  task.count = 1;
  task.interval = 2;
  ASSERT_EQ(IP_NET_DVR_SnapPicTaskStart(&task), 0);
  frames = Frames("SYSTEM_CONTROL_MESSAGE", 20);
  EXPECT_EQ(IP_NET_DVR_SnapPicTaskStop(), 0);
  ASSERT_GE(frames.size(), 20u);
  unsigned long shortest = ~0ul;
  for (size_t i = 1; i < frames.size(); ++i) {
    shortest = std::min(shortest, frames[i].tick - frames[i - 1].tick);
  }
  EXPECT_LT(shortest, 10u);
}

TEST_F(RepliesTest, GarbageAheadOfAFrameLeavesTheLinkWorking) {
  long id = LoginReady();
  const std::string flag("\x58\x91\x58\x51", 4);
  const std::string bad_headers[] = {
      std::string("\x01\x02\x03", 3),                    // stray bytes
      flag + std::string("\x00\x00\x00\x00", 4),          // length 0
      flag + std::string("\x01\x00\xF0\x00", 4),          // length 0xF00001
  };
  for (const std::string& garbage : bad_headers) {
    events_.Clear();
    camera_->InjectBeforeNextReply(garbage);
    ASSERT_EQ(IP_NET_DVR_RebootDVR(id), 0);
    EXPECT_TRUE(events_.WaitAux(id, 1007, kWaitMs));
  }
  EXPECT_EQ(events_.Count(id, EVENT_SOCKETERROR), 0);
  EXPECT_EQ(camera_->Connections(), 1);
}

}  // namespace
}  // namespace qvtest

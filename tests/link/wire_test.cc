// What the library puts on the wire for each device command, byte for byte,
// which arguments it refuses, the order in which queued requests leave, and
// the answers before the link is up or logged in.
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "api/ptz_object_list.h"
#include "link/camera_fixture.h"
#include "link/ptz_control_class.h"
#include "support/loopback.h"
#include "support/scratch.h"

namespace qvtest {
namespace {

using ::testing::ElementsAre;

class WireTest : public CameraFixture {};

TEST_F(WireTest, RebootIsASevenLineEnvelopeInAPlainFrame) {
  long id = LoginReady();
  ASSERT_EQ(IP_NET_DVR_RebootDVR(id), 0);
  auto frames = Frames("SYSTEM_CONTROL_MESSAGE");
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].flag, 0x51589158u);  // bytes 58 91 58 51
  EXPECT_EQ(frames[0].payload,
            "<?xml version=\"1.0\" encoding=\"GB2312\" ?><XML_VEXORA>\n"
            "<MESSAGE_HEADER\n"
            "Msg_type=\"SYSTEM_CONTROL_MESSAGE\"\n"
            "Msg_code=\"1007\"\n"
            "Msg_flag=\"0\"\n"
            "/><MESSAGE_BODY/>\n"
            "</XML_VEXORA>");
}

TEST_F(WireTest, PtzStopIsSentSixTimesWithTheSpeedsCrossed) {
  long id = LoginReady();
  ASSERT_EQ(IP_NET_DVR_PTZControl(id, QV_PTZ_STOP, 3, 5), 0);  // tilt 3, pan 5
  auto frames = Frames("PTZ_CONTROL_MESSAGE", 6);
  ASSERT_EQ(frames.size(), 6u);
  std::string expected = Envelope(
      "PTZ_CONTROL_MESSAGE", "PTZ_CMD",
      "<xml>\n<cmd>stop</cmd><panspeed>5</panspeed><tiltspeed>3</tiltspeed></xml>");
  for (const auto& f : frames) EXPECT_EQ(f.payload, expected);
}

TEST_F(WireTest, PtzMovesAreSentOnceAndUnknownCommandsRefused) {
  long id = LoginReady();
  ASSERT_EQ(IP_NET_DVR_PTZControl(id, QV_PTZ_LEFT_UP, 7, 2), 0);
  auto frames = Frames("PTZ_CONTROL_MESSAGE");
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].body,
            "\n<xml>\n<cmd>left_up</cmd><panspeed>2</panspeed><tiltspeed>7</tiltspeed></xml>\n");
  for (long refused : {10L, 25L, 27L, -1L}) {
    EXPECT_EQ(IP_NET_DVR_PTZControl(id, refused, 1, 1), QV_E_UNKNOWN_PTZ_CMD) << refused;
  }
}

TEST_F(WireTest, PresetsCarryNumberAndFlagAndRefuseBadArguments) {
  long id = LoginReady();
  ASSERT_EQ(IP_NET_DVR_PTZPreset(id, QV_PRESET_CALL, 5), 0);
  auto frames = Frames("PTZ_CONTROL_MESSAGE");
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].payload,
            Envelope("PTZ_CONTROL_MESSAGE", "PTZ_CMD",
                     "<xml>\n<cmd>callpreset</cmd><preset>5</preset><flag>1</flag></xml>\n"));
  EXPECT_EQ(IP_NET_DVR_PTZPreset(id, QV_PRESET_SET, 256), QV_E_INVALID_ARG);
  EXPECT_EQ(IP_NET_DVR_PTZPreset(id, QV_PRESET_SET, -1), QV_E_INVALID_ARG);
  EXPECT_EQ(IP_NET_DVR_PTZPreset(id, 7, 1), QV_E_UNKNOWN_PTZ_CMD);
  EXPECT_EQ(IP_NET_DVR_PTZPreset(id, QV_PRESET_CLEAR, 255), 0);
}

struct Command {
  const char* name;
  std::function<long(long)> call;
  const char* type;
  const char* code;
  const char* body;
};

TEST_F(WireTest, ThinCommandsSendTheirCodeAndBody) {
  char config_body[] = "<REQUEST_PARAM Channel=\"0\" />";
  const Command commands[] = {
      {"FormatDisk 7", [](long id) { return IP_NET_DVR_FormatDisk(id, 7); },
       "SYSTEM_CONTROL_MESSAGE", "1017", ""},
      {"FormatDisk 0", [](long id) { return IP_NET_DVR_FormatDisk(id, 0); },
       "SYSTEM_CONTROL_MESSAGE", "1017", "<REQUEST_PARAM\nDevName=\"sd1\" \n/>"},
      {"FormatDisk 2", [](long id) { return IP_NET_DVR_FormatDisk(id, 2); },
       "SYSTEM_CONTROL_MESSAGE", "1017", "<REQUEST_PARAM\nDevName=\"usb\" \n/>"},
      {"night", [](long id) { return IP_NET_DVR_Ircut_switch_daynight(id, 0); },
       "SYSTEM_CONTROL_MESSAGE", "1046", "<REQUEST_PARAM Mode=\"NightMode\" />"},
      {"day", [](long id) { return IP_NET_DVR_Ircut_switch_daynight(id, 1); },
       "SYSTEM_CONTROL_MESSAGE", "1046", "<REQUEST_PARAM Mode=\"DayMode\" />"},
      {"restore", [](long id) { return IP_NET_DVR_RestoreConfig(id); }, "SYSTEM_CONTROL_MESSAGE",
       "1002", ""},
      {"log file", [](long id) { return IP_NET_DVR_FindDVRLogFile(id); },
       "SYSTEM_CONTROL_MESSAGE", "1025", ""},
      {"scare off", [](long id) { return IP_NET_DVR_SCARE_OFF(id, 1, 0, 30); },
       "SYSTEM_CONTROL_MESSAGE", "1112",
       "<REQUEST_PARAM play_sound=\"1\" led_on=\"0\" time=\"30\"/>"},
      {"key frame", [](long id) { return IP_NET_DVR_CreateIFrame(id, 1); },
       "SYSTEM_CONTROL_MESSAGE", "1032", "<REQUEST_PARAM\nCamera=\"0\" Stream=\"1\" />\n"},
      {"system control", [](long id) { return IP_NET_DVR_SystemControl(id, 1048, 0, nullptr); },
       "SYSTEM_CONTROL_MESSAGE", "1048", ""},
      {"ability", [](long id) { return IP_NET_DVR_GetDeviceAbility(id); },
       "SYSTEM_CONFIG_GET_MESSAGE", "1020", ""},
      {"config get",
       [&](long id) {
         return IP_NET_DVR_GetDVRConfig(id, 305, 0, config_body, sizeof(config_body), nullptr);
       },
       "SYSTEM_CONFIG_GET_MESSAGE", "305", "<REQUEST_PARAM Channel=\"0\" />"},
      {"config set",
       [](long id) { return IP_NET_DVR_SetDVRConfig(id, 325, 0, "<LANConfig DHCP=\"0\" />", 0); },
       "SYSTEM_CONFIG_SET_MESSAGE", "325", "<LANConfig DHCP=\"0\" />"},
      // Size and length are not looked at: the body is the whole text.
      {"config get, short size",
       [&](long id) { return IP_NET_DVR_GetDVRConfig(id, 305, 0, config_body, 8, nullptr); },
       "SYSTEM_CONFIG_GET_MESSAGE", "305", "<REQUEST_PARAM Channel=\"0\" />"},
      {"config set, short length",
       [](long id) { return IP_NET_DVR_SetDVRConfig(id, 325, 0, "<LANConfig DHCP=\"0\" />", 8); },
       "SYSTEM_CONFIG_SET_MESSAGE", "325", "<LANConfig DHCP=\"0\" />"},
      {"aux ex",
       [](long id) {
         return IP_NET_DVR_WriteAUXStringEx(id, const_cast<char*>("VOD_CONTROL_MESSAGE"), 12, 0,
                                            "<A/>");
       },
       "VOD_CONTROL_MESSAGE", "12", "<A/>"},
      {"one day",
       [](long id) { return IP_NET_DVR_GetReplay_OneDay_Distribute(id, 2024, 5, 6); },
       "SYSTEM_CONTROL_MESSAGE", "1021",
       "<REQUEST_PARAM SearchMode=\"1\" RecordMode=\"ALL\" StartTime=\"20240506 00:00:00\" "
       "EndTime=\"20240506 23:59:59\"MediaType=\"VIDEO\" MinSize=\"-1\" MaxSize=\"-1\" "
       "Page=\"0\"/>"},
      {"dates", [](long id) { return IP_NET_DVR_GetReplay_Dates_Distribute(id); },
       "SYSTEM_CONTROL_MESSAGE", "1021",
       "<REQUEST_PARAM SearchMode=\"10\" RecordMode=\"ALL\" MediaType=\"VIDEO\" Page=\"0\"/>"},
  };
  long id = LoginReady();
  for (const Command& c : commands) {
    SCOPED_TRACE(c.name);
    camera_->ClearReceived();
    ASSERT_EQ(c.call(id), 0);
    auto frames = Frames(c.type);
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].payload, Envelope(c.type, c.code, c.body));
  }
}

TEST_F(WireTest, RawAndEncryptedMessagesLeaveAsGiven) {
  long id = LoginReady();
  const std::string raw = Envelope("SYSTEM_CONTROL_MESSAGE", "1007", "");
  ASSERT_EQ(IP_NET_DVR_SendRawMsg(id, raw.data(), static_cast<int>(raw.size())), 0);
  ASSERT_EQ(IP_NET_DVR_SEND_ENCRYPPT_RAWDATA(id, const_cast<char*>(raw.c_str())), 0);
  auto frames = Frames("SYSTEM_CONTROL_MESSAGE", 2);
  ASSERT_EQ(frames.size(), 2u);
  EXPECT_EQ(frames[0].flag, 0x51589158u);
  EXPECT_EQ(frames[0].payload, raw);
  EXPECT_EQ(frames[1].flag, 0x52598157u);  // bytes 57 81 59 52
  EXPECT_EQ(frames[1].payload, raw);
}

TEST_F(WireTest, RefusedTypesAndUnsupportedCommandsSendNothing) {
  long id = LoginReady();
  EXPECT_EQ(IP_NET_DVR_WriteAUXStringEx(id, const_cast<char*>("PTZ_CONTROL_MESSAGE"), 1, 0, ""),
            QV_E_MSG_TYPE);
  EXPECT_EQ(IP_NET_DVR_ShutDownDVR(id), QV_E_UNSUPPORTED);
  EXPECT_EQ(IP_NET_DVR_GetFormatProgress(id, 0, nullptr, nullptr), QV_E_UNSUPPORTED);
  EXPECT_EQ(IP_NET_DVR_SnapPic(id, 2, 50, "/tmp/x.jpg", 0), QV_E_INVALID_ARG);
  EXPECT_EQ(IP_NET_DVR_SnapPic(id, 0, 101, "/tmp/x.jpg", 0), QV_E_INVALID_ARG);
  EXPECT_EQ(IP_NET_DVR_SnapPic(id, 0, 50, "", 0), QV_E_INVALID_ARG);
  // A request that did go out is the last thing the camera saw.
  ASSERT_EQ(IP_NET_DVR_RebootDVR(id), 0);
  Frames("SYSTEM_CONTROL_MESSAGE");
  auto all = Requests();
  ASSERT_EQ(all.size(), 1u);
  EXPECT_EQ(all[0].code, "1007");
}

// Missing texts are the session's to refuse: an unknown ID answers first.
TEST_F(WireTest, MissingTextsAreRefusedAfterTheLookup) {
  long id = LoginReady();
  const long unknown = 99;
  for (long user : {unknown, id}) {
    long expected = user == unknown ? QV_E_UNKNOWN_USER : QV_E_INVALID_ARG;
    EXPECT_EQ(IP_NET_DVR_PTZControlEx(user, nullptr), expected) << user;
    EXPECT_EQ(IP_NET_DVR_WriteAUXStringEx(user, nullptr, 1007, 0, ""), expected) << user;
    EXPECT_EQ(IP_NET_DVR_SEND_ENCRYPPT_RAWDATA(user, nullptr), expected) << user;
    EXPECT_EQ(IP_NET_DVR_SendRawMsg(user, nullptr, 5), expected) << user;
  }
}

// An aux request is built into a buffer of 51,200 bytes: a longer one is
// cut, and every request is logged as it is built.
TEST_F(WireTest, AuxRequestsAreCutAt51199CharactersAndLogged) {
  long id = LoginReady();
  std::string body(55000, 'b');
  std::string out = testsupport::CapturedStdout([&] {
    IP_NET_DVR_LOG_OPEN();
    ASSERT_EQ(IP_NET_DVR_SystemControl(id, 1048, 0, body.c_str()), 0);
    IP_NET_DVR_LOG_CLOSE();
  });
  std::string whole = Envelope("SYSTEM_CONTROL_MESSAGE", "1048", body);
  auto frames = Frames("SYSTEM_CONTROL_MESSAGE");
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].payload, whole.substr(0, 51199));
  // (The console keeps the first 10,239 characters of a line.)
  EXPECT_NE(out.find("[MakeXMLRequest:"), std::string::npos);
  EXPECT_NE(out.find("]" + whole.substr(0, 1000)), std::string::npos);
}

// Raw messages are queued with whatever length they are given: 0 sends a
// bare header, a negative length a header without its payload, which ends
// the link with status 20.
TEST_F(WireTest, EmptyAndNegativeRawLengthsAreQueuedAsGiven) {
  long id = LoginReady();
  events_.Clear();
  EXPECT_EQ(IP_NET_DVR_SendRawMsg(id, "x", 0), 0);
  ASSERT_TRUE(camera_->WaitForFrames(
      [&](const std::vector<qvemu::ReceivedFrame>&) { return camera_->BadLengths() == 1; },
      kWaitMs));
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_SENDPTZOK, kWaitMs));
  EXPECT_EQ(events_.First(id, EVENT_SENDPTZOK).text, "");
  EXPECT_EQ(IP_NET_DVR_SendRawMsg(id, "x", -5), 0);
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_SENDPTZERROR, kWaitMs));
  EXPECT_EQ(events_.First(id, EVENT_SENDPTZERROR).text, "");
  EXPECT_TRUE(events_.WaitStatus(id, EVENT_LOGIN_RECONNECT, kWaitMs));
}

// Requests queued from inside the login event, before the link thread's
// next turn, leave as: action queue, PTZ queue, aux queue, one a turn.
TEST_F(WireTest, QueuesAreServedActionThenPtzThenAux) {
  const std::string action = Envelope("VOD_CONTROL_MESSAGE", "1", "");
  events_.SetStatusHook([&](long id, long code) {
    if (code != EVENT_LOGINOK) return;
    IP_NET_DVR_SystemControl(id, 1025, 0, "");
    IP_NET_DVR_PTZControl(id, QV_PTZ_UP, 1, 1);
    CPTZControlClass* session = ObjectPtzList.FindObjectByID(id, 0);
    ASSERT_NE(session, nullptr);
    session->WriteActionString(action.data(), static_cast<int>(action.size()));
    ObjectPtzList.ReleaseObjLock();
  });
  long id = Login();
  ASSERT_GT(id, 0);
  ASSERT_TRUE(camera_->WaitForFrames(
      [](const std::vector<qvemu::ReceivedFrame>& all) {
        return WithoutHeartbeats(all).size() >= 5;
      },
      kWaitMs));
  std::vector<std::string> order;
  for (const auto& f : Requests()) order.push_back(f.type + " " + f.code);
  EXPECT_THAT(order, ElementsAre("USER_AUTH_MESSAGE CMD_USER_AUTH", "VOD_CONTROL_MESSAGE 1",
                                 "PTZ_CONTROL_MESSAGE PTZ_CMD", "SYSTEM_CONTROL_MESSAGE 1025",
                                 "SYSTEM_CONTROL_MESSAGE 1020"));
  // Each sent request is reported once, with an empty text.
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_SENDPTZOK, kWaitMs, 4));
}

// Every queueing command against a session whose link is not up yet, and
// against one that is connected but not logged in.
void ExpectAllCommandsAnswer(long id, long code) {
  char buffer[16];
  int length = sizeof(buffer);
  EXPECT_EQ(IP_NET_DVR_PTZControl(id, QV_PTZ_UP, 1, 1), code);
  EXPECT_EQ(IP_NET_DVR_PTZPreset(id, QV_PRESET_CALL, 1), code);
  EXPECT_EQ(IP_NET_DVR_RebootDVR(id), code);
  EXPECT_EQ(IP_NET_DVR_GetDeviceAbility(id), code);
  EXPECT_EQ(IP_NET_DVR_SetDVRConfig(id, 325, 0, "<a/>", 4), code);
  EXPECT_EQ(IP_NET_DVR_SendRawMsg(id, "abc", 3), code);
  EXPECT_EQ(IP_NET_DVR_SEND_ENCRYPPT_RAWDATA(id, const_cast<char*>("abc")), code);
  EXPECT_EQ(IP_NET_DVR_EXCHANGE_Encrypt(id), code);
  EXPECT_EQ(IP_NET_DVR_GetUserData(id, buffer, &length), code);
  EXPECT_EQ(IP_NET_DVR_SnapPic(id, 0, 50, "/tmp/x.jpg", 0), code);
}

TEST_F(WireTest, CommandsBeforeTheLinkIsUpAreNotConnected) {
  int port = 0;
  int probe = testsupport::BindLoopback(&port);  // bound, nobody listening
  long id = IP_NET_DVR_Login("127.0.0.1", port, const_cast<char*>("admin"),
                             const_cast<char*>("admin"), nullptr);
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_CONNECTFAILED, kWaitMs));
  ExpectAllCommandsAnswer(id, QV_E_NOT_CONNECTED);
  close(probe);
}

// Real timers: the silent camera must not reach its resend limit meanwhile.
class RealSpeedWireTest : public WireTest {
  double Scale() const override { return 1.0; }
};

TEST_F(RealSpeedWireTest, CommandsBeforeLoginAreNotLoggedIn) {
  camera_->SetLoginReply(qvemu::LoginReply::Silent);
  long id = Login();
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_CONNECTOK, kWaitMs));
  ExpectAllCommandsAnswer(id, QV_E_NOT_LOGGED_IN);
}

}  // namespace
}  // namespace qvtest

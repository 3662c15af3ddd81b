// An emulated camera over loopback, driven by a bare client: login, replies,
// recording, faults and the life of its links.
#include "emu/camera.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>

#include "emu/frame_io.h"
#include "raw_client_helper.h"

namespace qvemu {
namespace {

using qvemu_test::FlagOf;
using qvemu_test::RawClient;

constexpr int kWaitMs = 10000;
const char kDeclaration[] = "<?xml version=\"1.0\" encoding=\"GB2312\" ?>";

std::string Envelope(const std::string& type, const std::string& code, const std::string& flag,
                     const std::string& body) {
  std::string head = std::string(kDeclaration) + "<XML_VEXORA>\n<MESSAGE_HEADER\nMsg_type=\"" +
                     type + "\"\nMsg_code=\"" + code + "\"\nMsg_flag=\"" + flag + "\"\n/>";
  return head + (body.empty() ? "<MESSAGE_BODY/>\n</XML_VEXORA>"
                              : "<MESSAGE_BODY>\n" + body + "\n</MESSAGE_BODY>\n</XML_VEXORA>");
}

// The envelope up to the end of its header element.
std::string Head(const std::string& type, const std::string& code, const std::string& flag) {
  std::string e = Envelope(type, code, flag, "");
  return e.substr(0, e.find("/>") + 2);
}

bool StartsWith(const std::string& text, const std::string& prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

class CameraTest : public ::testing::Test {
 protected:
  void StartCamera(CameraOptions options = {}) {
    camera_ = std::make_unique<Camera>(options);
    ASSERT_TRUE(camera_->Start());
    ASSERT_NE(camera_->Port(), 0);
  }
  void SetUp() override { StartCamera(); }
  void Connect(RawClient* c) { ASSERT_TRUE(c->Connect(camera_->Port())); }
  void LoggedIn(RawClient* c) {
    Connect(c);
    ASSERT_TRUE(c->Login());
  }
  // True once the camera has recorded n frames of that type.
  bool WaitForType(const std::string& type, size_t n = 1) {
    return camera_->WaitForFrames(
        [&](const std::vector<ReceivedFrame>& all) {
          size_t count = 0;
          for (const auto& f : all) count += f.type == type;
          return count >= n;
        },
        kWaitMs);
  }

  std::unique_ptr<Camera> camera_;
};

// --- login -----------------------------------------------------------------

TEST_F(CameraTest, LoginAcceptedWithTheSessionIdInTheExactEnvelope) {
  RawClient c;
  Connect(&c);
  std::string reply = c.Request("USER_AUTH_MESSAGE", "CMD_USER_AUTH",
                                "<USER_AUTH_PARAM\nUsername=\"admin\" Password=\"admin\" "
                                "AuthMethod=\"1\"/>");
  EXPECT_EQ(reply, std::string(kDeclaration) +
                       "<XML_VEXORA>\n<MESSAGE_HEADER\nMsg_type=\"USER_AUTH_MESSAGE\"\n"
                       "Msg_code=\"CMD_USER_AUTH\"\nMsg_flag=\"0\"\n/><MESSAGE_BODY>\n"
                       "<USER_AUTH_RESPONSE Sessionid=\"emu-session-1\" />\n"
                       "</MESSAGE_BODY>\n</XML_VEXORA>");
  EXPECT_EQ(camera_->Logins(), 1);
}

TEST_F(CameraTest, LoginRefusals) {
  RawClient c;
  Connect(&c);
  EXPECT_FALSE(c.Login("admin", "wrong"));
  EXPECT_FALSE(c.Login("root", "admin"));
  // The resend form without AuthMethod, with the encryption element behind.
  std::string reply = c.Request("USER_AUTH_MESSAGE", "CMD_USER_AUTH",
                                "<USER_AUTH_PARAM\nUsername=\"admin\" Password=\"x\"/>"
                                "<ENCRYPT Capbility=\"SUPPORT_VXE\" Version=\"1\" />");
  EXPECT_EQ(reply, Envelope("USER_AUTH_MESSAGE", "CMD_USER_AUTH", "-1", ""));

  camera_->SetLoginReply(LoginReply::Refuse, 7);
  EXPECT_EQ(FlagOf(c.Request("USER_AUTH_MESSAGE", "CMD_USER_AUTH",
                             "<USER_AUTH_PARAM\nUsername=\"admin\" Password=\"admin\"/>")),
            "7");
  EXPECT_EQ(camera_->Logins(), 0);
  // Refused links stay unheard.
  EXPECT_EQ(c.Request("AUXPTZ_HEARTBEAT_MESSAGE", "CMD_HEARTBEAT", "", 300), "");
}

TEST_F(CameraTest, SilentLoginIsRecordedButNeverAnswered) {
  camera_->SetLoginReply(LoginReply::Silent);
  RawClient c;
  Connect(&c);
  ASSERT_TRUE(c.SendMessage("USER_AUTH_MESSAGE", "CMD_USER_AUTH",
                            "<USER_AUTH_PARAM\nUsername=\"admin\" Password=\"admin\"/>"));
  ASSERT_TRUE(WaitForType("USER_AUTH_MESSAGE"));
  std::string reply;
  EXPECT_FALSE(c.ReadFrame(&reply, 300));
  camera_->SetLoginReply(LoginReply::Accept);
  EXPECT_TRUE(c.Login());
}

TEST_F(CameraTest, CannedLoginReplyOverridesAndStillLogsIn) {
  camera_->SetReply("USER_AUTH_MESSAGE", "CMD_USER_AUTH", 0, "<USER_AUTH_RESPONSE Sessionid=\"s9\" />");
  RawClient c;
  Connect(&c);
  EXPECT_NE(c.Request("USER_AUTH_MESSAGE", "CMD_USER_AUTH", "").find("Sessionid=\"s9\""),
            std::string::npos);
  EXPECT_EQ(camera_->Logins(), 1);
  EXPECT_EQ(FlagOf(c.Request("AUXPTZ_HEARTBEAT_MESSAGE", "CMD_HEARTBEAT")), "0");
}

// --- replies ---------------------------------------------------------------

TEST_F(CameraTest, HeartbeatsAnsweredUntilSwitchedOff) {
  RawClient c;
  LoggedIn(&c);
  EXPECT_EQ(c.Request("AUXPTZ_HEARTBEAT_MESSAGE", "CMD_HEARTBEAT"),
            Envelope("AUXPTZ_HEARTBEAT_MESSAGE", "CMD_HEARTBEAT", "0", ""));
  camera_->SetHeartbeatReplies(false);
  EXPECT_EQ(c.Request("AUXPTZ_HEARTBEAT_MESSAGE", "CMD_HEARTBEAT", "", 300), "");
  camera_->SetHeartbeatReplies(true);
  EXPECT_EQ(FlagOf(c.Request("AUXPTZ_HEARTBEAT_MESSAGE", "CMD_HEARTBEAT")), "0");
}

TEST_F(CameraTest, AbilityListWithAndWithoutFrontReplay) {
  RawClient c;
  LoggedIn(&c);
  for (const char* type : {"SYSTEM_CONTROL_MESSAGE", "SYSTEM_CONFIG_GET_MESSAGE"}) {
    std::string reply = c.Request(type, "1020");
    EXPECT_TRUE(StartsWith(reply, Head(type, "1020", "0"))) << reply;
    EXPECT_NE(reply.find("+ front_replay"), std::string::npos) << type;
  }
  CameraOptions options;
  options.front_replay = false;
  StartCamera(options);
  RawClient d;
  LoggedIn(&d);
  EXPECT_EQ(d.Request("SYSTEM_CONTROL_MESSAGE", "1020").find("front_replay"), std::string::npos);
  // No recordings to distribute either.
  EXPECT_EQ(FlagOf(d.Request("SYSTEM_CONTROL_MESSAGE", "1021",
                             "<REQUEST_PARAM SearchMode=\"10\" />")),
            "-1");
}

TEST_F(CameraTest, PtzReplyIsConfigurable) {
  RawClient c;
  LoggedIn(&c);
  const std::string cmd = "<xml>\n<cmd>up</cmd><panspeed>5</panspeed><tiltspeed>3</tiltspeed></xml>";
  EXPECT_EQ(c.Request("PTZ_CONTROL_MESSAGE", "PTZ_CMD", cmd),
            Envelope("PTZ_CONTROL_MESSAGE", "PTZ_CMD", "0", ""));
  camera_->SetPtzReply(0, "PRESET_INFO", "<PRESET Number=\"3\"/>");
  EXPECT_EQ(c.Request("PTZ_CONTROL_MESSAGE", "PTZ_CMD", cmd),
            Envelope("PTZ_CONTROL_MESSAGE", "PRESET_INFO", "0", "<PRESET Number=\"3\"/>"));
  camera_->SetPtzReply(-1);
  EXPECT_EQ(FlagOf(c.Request("PTZ_CONTROL_MESSAGE", "PTZ_CMD", cmd)), "-1");
}

TEST_F(CameraTest, SystemControlCodesAnswerWithTheirOwnTypeAndCode) {
  RawClient c;
  LoggedIn(&c);
  struct Case {
    const char* code;
    const char* body;
    const char* flag;
  } cases[] = {
      {"1002", "", "0"}, {"1007", "", "0"}, {"1025", "", "0"}, {"1031", "", "0"},
      {"1032", "<REQUEST_PARAM\nCamera=\"0\" Stream=\"1\" />\n", "0"},
      {"1043", "<REQUEST_PARAM Stream=\"0\" Quality=\"80\"/>", "0"},
      {"1046", "<REQUEST_PARAM Mode=\"NightMode\" />", "0"},
      {"1112", "<REQUEST_PARAM play_sound=\"1\" led_on=\"1\" time=\"10\"/>", "0"},
      {"1017", "<REQUEST_PARAM\nDevName=\"sd1\" \n/>", "0"},
      {"1017", "", "-1"},  // no disk named
      {"1046", "<REQUEST_PARAM Mode=\"Dusk\" />", "-1"},
      {"1005", "<REQUEST_PARAM Time=\"2024 7:8\" TimeZone=\"8\"/>", "-1"},
      {"4711", "", "-1"},  // unknown code
  };
  for (const Case& k : cases) {
    std::string reply = c.Request("SYSTEM_CONTROL_MESSAGE", k.code, k.body);
    EXPECT_TRUE(StartsWith(reply, Head("SYSTEM_CONTROL_MESSAGE", k.code, k.flag)))
        << k.code << " " << k.body << "\n" << reply;
  }
  EXPECT_NE(c.Request("SYSTEM_CONTROL_MESSAGE", "1031").find("<VideoCap CapList=\"MainStream,H264,"),
            std::string::npos);
}

TEST_F(CameraTest, SystemTimeFollowsASetTime) {
  RawClient c;
  LoggedIn(&c);
  EXPECT_EQ(FlagOf(c.Request("SYSTEM_CONTROL_MESSAGE", "1005",
                             "<REQUEST_PARAM Time=\"20240305 07:08:09\" TimeZone=\"3\"/>")),
            "0");
  std::string reply = c.Request("SYSTEM_CONTROL_MESSAGE", "1048");
  EXPECT_NE(reply.find("<RESPONSE_PARAM TimeZone=\"3\" Year=\"2024\" Month=\"3\" Day=\"5\" Hour=\"7\""),
            std::string::npos)
      << reply;
}

TEST_F(CameraTest, UserDataAndKeyReplies) {
  RawClient c;
  LoggedIn(&c);
  camera_->SetUserData(std::string("AB\x00\xff", 4));
  EXPECT_EQ(c.Request("SYSTEM_CONTROL_MESSAGE", "1034"),
            Envelope("SYSTEM_CONTROL_MESSAGE", "1034", "0",
                     "<RESPONSE_PARAM UserDevData=\"414200ff\" />"));
  EXPECT_EQ(c.Request("SYSTEM_ENCRYPT_MESSAGE", "150",
                      "<KeyConfig KeyLen=\"32\" KeyValue=\"hostkey\"/>"),
            Envelope("SYSTEM_ENCRYPT_MESSAGE", "150", "0",
                     "<KeyConfig KeyLen=\"32\" KeyValue=\"0123456789abcdef0123456789abcdef\"/>"));
}

TEST_F(CameraTest, CannedReplyOverridesABuiltInAnswer) {
  RawClient c;
  LoggedIn(&c);
  camera_->SetReply("SYSTEM_CONTROL_MESSAGE", 1007, 5, "<RESPONSE_PARAM Busy=\"1\" />");
  EXPECT_EQ(c.Request("SYSTEM_CONTROL_MESSAGE", "1007"),
            Envelope("SYSTEM_CONTROL_MESSAGE", "1007", "5", "<RESPONSE_PARAM Busy=\"1\" />"));
  camera_->ClearReplies();
  EXPECT_EQ(FlagOf(c.Request("SYSTEM_CONTROL_MESSAGE", "1007")), "0");
}

// --- configuration ---------------------------------------------------------

TEST_F(CameraTest, ConfigurationSetThenGetRoundTripsAndRestoreUndoesIt) {
  RawClient c;
  LoggedIn(&c);
  const std::string lan = "<LANConfig DHCP=\"1\" IPAddress=\"10.1.2.3\" />";
  EXPECT_EQ(c.Request("SYSTEM_CONFIG_SET_MESSAGE", "325", lan),
            Envelope("SYSTEM_CONFIG_SET_MESSAGE", "325", "0", ""));
  EXPECT_EQ(c.Request("SYSTEM_CONFIG_GET_MESSAGE", "305"),
            Envelope("SYSTEM_CONFIG_GET_MESSAGE", "305", "0", lan));
  EXPECT_NE(camera_->ConfigDocument().find("IPAddress=\"10.1.2.3\""), std::string::npos);
  EXPECT_EQ(FlagOf(c.Request("SYSTEM_CONFIG_SET_MESSAGE", "325", "<UPNPConfig/>")), "-1");
  EXPECT_EQ(FlagOf(c.Request("SYSTEM_CONFIG_GET_MESSAGE", "999")), "-1");

  EXPECT_EQ(FlagOf(c.Request("SYSTEM_CONTROL_MESSAGE", "1002")), "0");
  EXPECT_NE(c.Request("SYSTEM_CONFIG_GET_MESSAGE", "305").find("192.168.1.88"), std::string::npos);
}

TEST_F(CameraTest, ConfigurationDocumentFromOptionsOrSetter) {
  CameraOptions options;
  options.config_document = "<IPCConfig><NetworkConfig><UPNPConfig Enable=\"0\"/></NetworkConfig></IPCConfig>";
  StartCamera(options);
  RawClient c;
  LoggedIn(&c);
  EXPECT_EQ(c.Request("SYSTEM_CONFIG_GET_MESSAGE", "312"),
            Envelope("SYSTEM_CONFIG_GET_MESSAGE", "312", "0", "<UPNPConfig Enable=\"0\" />"));
  EXPECT_FALSE(camera_->SetConfigDocument("<broken"));
  EXPECT_TRUE(camera_->SetConfigDocument("<IPCConfig/>"));
  EXPECT_EQ(FlagOf(c.Request("SYSTEM_CONFIG_GET_MESSAGE", "312")), "-1");
}

// --- recording -------------------------------------------------------------

TEST_F(CameraTest, RecordsExactBytesFlagsAndConnections) {
  RawClient a, b;
  LoggedIn(&a);
  LoggedIn(&b);
  const std::string raw = "<raw message, not xml>";
  ASSERT_TRUE(a.SendFrame(raw, kEncryptedFlag));
  ASSERT_TRUE(b.SendMessage("SYSTEM_CONTROL_MESSAGE", "1007", ""));
  ASSERT_TRUE(a.SendMessage("SYSTEM_CONFIG_SET_MESSAGE", "222", "<TimeConfig TimeZone=\"1\"/>"));
  ASSERT_TRUE(camera_->WaitForFrames([](const std::vector<ReceivedFrame>& f) { return f.size() >= 5; },
                                     kWaitMs));
  std::vector<ReceivedFrame> all = camera_->Received();
  ASSERT_EQ(all.size(), 5u);
  EXPECT_EQ(all[0].connection, 1);
  EXPECT_EQ(all[1].connection, 2);
  EXPECT_EQ(all[0].type, "USER_AUTH_MESSAGE");

  const ReceivedFrame* enc = nullptr;
  const ReceivedFrame* reboot = nullptr;
  const ReceivedFrame* set = nullptr;
  for (const auto& f : all) {
    if (f.flag == kEncryptedFlag) enc = &f;
    if (f.code == "1007") reboot = &f;
    if (f.code == "222") set = &f;
  }
  ASSERT_TRUE(enc && reboot && set);
  EXPECT_EQ(enc->payload, raw);
  EXPECT_EQ(enc->type, "");
  EXPECT_EQ(enc->connection, 1);
  EXPECT_EQ(reboot->flag, kPlainFlag);
  EXPECT_EQ(reboot->payload, Envelope("SYSTEM_CONTROL_MESSAGE", "1007", "0", ""));
  EXPECT_EQ(reboot->msg_flag, "0");
  EXPECT_EQ(reboot->body, "");
  EXPECT_EQ(reboot->connection, 2);
  EXPECT_EQ(set->body, "\n<TimeConfig TimeZone=\"1\"/>\n");
  EXPECT_LE(all.front().tick, all.back().tick);

  EXPECT_EQ(camera_->ReceivedOfType("USER_AUTH_MESSAGE").size(), 2u);
  camera_->ClearReceived();
  EXPECT_TRUE(camera_->Received().empty());
}

TEST_F(CameraTest, RecordKeepsTheNewestFramesWithinItsLimit) {
  CameraOptions options;
  options.record_limit = 3;
  StartCamera(options);
  RawClient c;
  LoggedIn(&c);
  for (int i = 0; i < 5; ++i) ASSERT_EQ(FlagOf(c.Request("AUXPTZ_HEARTBEAT_MESSAGE", "CMD_HEARTBEAT")), "0");
  std::vector<ReceivedFrame> all = camera_->Received();
  ASSERT_EQ(all.size(), 3u);
  for (const auto& f : all) EXPECT_EQ(f.type, "AUXPTZ_HEARTBEAT_MESSAGE");
}

TEST_F(CameraTest, OwnReaderSurvivesStrayBytesAndBadLengths) {
  RawClient c;
  LoggedIn(&c);
  std::string zero_len("\x58\x91\x58\x51\x00\x00\x00\x00", 8);
  std::string huge_len("\x57\x81\x59\x52\x01\x00\xf0\x00", 8);  // 0xF00001
  ASSERT_TRUE(c.Send("junk" + zero_len + huge_len + "\x01\x02"));
  EXPECT_EQ(FlagOf(c.Request("AUXPTZ_HEARTBEAT_MESSAGE", "CMD_HEARTBEAT")), "0");
  EXPECT_EQ(camera_->BadLengths(), 2);
  EXPECT_EQ(camera_->SkippedBytes(), 6u);
  EXPECT_EQ(camera_->OpenLinks(), 1);
}

// --- pushed messages and faults --------------------------------------------

TEST_F(CameraTest, AlarmsGoToLoggedInLinksOnly) {
  RawClient idle;
  Connect(&idle);
  EXPECT_FALSE(camera_->SendAlarm({AlarmSpec()}));
  RawClient c;
  LoggedIn(&c);
  AlarmSpec a, b;
  a.code = 23;
  a.data = "/mnt/sd/snap.jpg";
  b.hour = 12;
  ASSERT_TRUE(camera_->SendAlarm({a, b}));
  std::string payload;
  ASSERT_TRUE(c.ReadFrame(&payload));
  const std::string item_time =
      "<ALARM_TIME Year=\"2024\" Month=\"1\" Day=\"1\" WDay=\"1\" Hour=\"%s\" Minute=\"0\" "
      "Second=\"0\" />\n";
  std::string first = item_time, second = item_time;
  first.replace(first.find("%s"), 2, "0");
  second.replace(second.find("%s"), 2, "12");
  EXPECT_EQ(payload,
            Envelope("ALARM_REPORT_MESSAGE", "CMD_REPORT_ALARM", "0",
                     "<ALARM_REPORT_PARAM>\n<ALARM_ITEM>\n" + first +
                         "<ALARM_INFO Alarm_code=\"23\" Alarm_flag=\"0\" Alarm_level=\"0\" "
                         "Alarm_data=\"/mnt/sd/snap.jpg\" />\n</ALARM_ITEM>\n<ALARM_ITEM>\n" +
                         second +
                         "<ALARM_INFO Alarm_code=\"0\" Alarm_flag=\"0\" Alarm_level=\"0\" "
                         "Alarm_data=\"\" />\n</ALARM_ITEM>\n</ALARM_REPORT_PARAM>"));
  // The unlogged link got nothing; raw bytes reach it only by number.
  EXPECT_TRUE(camera_->SendRawTo(1, "xy"));
  std::string got;
  ASSERT_TRUE(idle.ReadBytes(2, &got));
  EXPECT_EQ(got, "xy");
}

TEST_F(CameraTest, InjectedBytesPrecedeTheNextReplyOnly) {
  RawClient c;
  LoggedIn(&c);
  const std::string stray = std::string("\x01\x02\x03", 3) + std::string("\x58\x91\x58\x51\x00\x00\x00\x00", 8);
  camera_->InjectBeforeNextReply(stray);
  ASSERT_TRUE(c.SendMessage("AUXPTZ_HEARTBEAT_MESSAGE", "CMD_HEARTBEAT", ""));
  std::string got;
  ASSERT_TRUE(c.ReadBytes(stray.size(), &got));
  EXPECT_EQ(got, stray);
  std::string reply;
  ASSERT_TRUE(c.ReadFrame(&reply));
  EXPECT_EQ(FlagOf(reply), "0");
  // Only once.
  ASSERT_TRUE(c.SendMessage("AUXPTZ_HEARTBEAT_MESSAGE", "CMD_HEARTBEAT", ""));
  uint32_t flag = 0;
  ASSERT_TRUE(c.ReadFrame(&reply, 5000, &flag));
  EXPECT_EQ(flag, kPlainFlag);
}

TEST_F(CameraTest, DelayedRepliesWaitAtLeastTheDelay) {
  RawClient c;
  LoggedIn(&c);
  camera_->SetReplyDelayMs(300);
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(FlagOf(c.Request("AUXPTZ_HEARTBEAT_MESSAGE", "CMD_HEARTBEAT")), "0");
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(300));
}

// --- links -----------------------------------------------------------------

TEST_F(CameraTest, ServesSeveralLinksAtOnce) {
  constexpr int kLinks = 8;
  std::vector<std::thread> threads;
  std::atomic<int> ok{0};
  for (int i = 0; i < kLinks; ++i) {
    threads.emplace_back([&] {
      RawClient c;
      if (!c.Connect(camera_->Port()) || !c.Login()) return;
      if (FlagOf(c.Request("SYSTEM_CONFIG_GET_MESSAGE", "305")) == "0") ++ok;
    });
  }
  for (auto& t : threads) t.join();
  EXPECT_EQ(ok, kLinks);
  EXPECT_EQ(camera_->Connections(), kLinks);
  EXPECT_EQ(camera_->Logins(), kLinks);
}

TEST_F(CameraTest, CloseLinksDropsThemAndNewLinksAreServed) {
  RawClient a, b;
  LoggedIn(&a);
  LoggedIn(&b);
  EXPECT_EQ(camera_->OpenLinks(), 2);
  camera_->CloseLinks();
  EXPECT_TRUE(a.WaitClosed());
  EXPECT_TRUE(b.WaitClosed());
  ASSERT_TRUE(camera_->WaitForFrames([&](const std::vector<ReceivedFrame>&) {
    return camera_->OpenLinks() == 0;
  }, kWaitMs));
  RawClient c;
  LoggedIn(&c);
  EXPECT_EQ(camera_->Connections(), 3);
}

TEST_F(CameraTest, StopClosesOpenLinksAndTheCameraCanStartAgain) {
  RawClient a, b;
  LoggedIn(&a);
  Connect(&b);
  ASSERT_TRUE(b.Send("\x58\x91\x58\x51\x10\x00\x00\x00partial"));  // mid-frame
  camera_->Stop();
  EXPECT_TRUE(a.WaitClosed());
  EXPECT_TRUE(b.WaitClosed());
  EXPECT_EQ(camera_->OpenLinks(), 0);
  EXPECT_FALSE(camera_->SendAlarm({AlarmSpec()}));
  ASSERT_TRUE(camera_->Start());
  RawClient c;
  LoggedIn(&c);
}

TEST_F(CameraTest, StartFailsOnABadAddressOrAPortInUse) {
  CameraOptions taken;
  taken.port = camera_->Port();
  EXPECT_FALSE(Camera(taken).Start());
  CameraOptions bad;
  bad.bind_address = "not-an-address";
  EXPECT_FALSE(Camera(bad).Start());
  EXPECT_FALSE(camera_->Start());  // already listening
}

}  // namespace
}  // namespace qvemu

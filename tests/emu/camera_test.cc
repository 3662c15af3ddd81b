// An emulated camera over loopback, driven by a bare client: login, replies,
// recording, faults and the life of its links.
#include "emu/camera.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>

#include "emu/frame_io.h"
#include "emu/system_replies.h"
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

// What the library's own tests against the camera do not show: the exact
// login reply, refusals by user name, replies per code and their refusals,
// the camera's state across requests.

TEST_F(CameraTest, LoginRepliesAndRefusals) {
  RawClient c;
  Connect(&c);
  EXPECT_FALSE(c.Login("admin", "wrong"));
  EXPECT_FALSE(c.Login("root", "admin"));
  // The resend form without AuthMethod, with the encryption element behind.
  EXPECT_EQ(c.Request("USER_AUTH_MESSAGE", "CMD_USER_AUTH",
                      "<USER_AUTH_PARAM\nUsername=\"admin\" Password=\"x\"/>"
                      "<ENCRYPT Capbility=\"SUPPORT_VXE\" Version=\"1\" />"),
            Envelope("USER_AUTH_MESSAGE", "CMD_USER_AUTH", "-1", ""));
  EXPECT_EQ(c.Request("USER_AUTH_MESSAGE", "CMD_USER_AUTH",
                      "<USER_AUTH_PARAM\nUsername=\"admin\" Password=\"admin\" AuthMethod=\"1\"/>"),
            Envelope("USER_AUTH_MESSAGE", "CMD_USER_AUTH", "0",
                     "<USER_AUTH_RESPONSE Sessionid=\"emu-session-1\" />"));
  EXPECT_EQ(camera_->Logins(), 1);

  RawClient d;
  Connect(&d);
  camera_->SetLoginReply(LoginReply::Refuse, 7);
  EXPECT_EQ(FlagOf(d.Request("USER_AUTH_MESSAGE", "CMD_USER_AUTH",
                             "<USER_AUTH_PARAM\nUsername=\"admin\" Password=\"admin\"/>")),
            "7");
  EXPECT_EQ(camera_->Logins(), 1);
  // Refused links stay unheard.
  EXPECT_EQ(d.Request("AUXPTZ_HEARTBEAT_MESSAGE", "CMD_HEARTBEAT", "", 300), "");
}

TEST_F(CameraTest, AbilityListAndReplayDistributionFollowFrontReplay) {
  for (bool front : {true, false}) {
    CameraOptions options;
    options.front_replay = front;
    StartCamera(options);
    RawClient c;
    LoggedIn(&c);
    for (const char* type : {"SYSTEM_CONTROL_MESSAGE", "SYSTEM_CONFIG_GET_MESSAGE"}) {
      std::string reply = c.Request(type, "1020");
      EXPECT_TRUE(StartsWith(reply, Head(type, "1020", "0"))) << reply;
      EXPECT_EQ(reply.find("+ front_replay") != std::string::npos, front) << type;
    }
    EXPECT_EQ(FlagOf(c.Request("SYSTEM_CONTROL_MESSAGE", "1021",
                               "<REQUEST_PARAM SearchMode=\"10\" />")),
              front ? "0" : "-1");
  }
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
    // A snapshot is followed by the alarm that names its picture.
    std::string alarm;
    if (std::string(k.code) == "1043") {
      EXPECT_TRUE(c.ReadFrame(&alarm));
      EXPECT_NE(alarm.find("Alarm_code=\"23\""), std::string::npos) << alarm;
    }
  }
  EXPECT_NE(c.Request("SYSTEM_CONTROL_MESSAGE", "1031").find("<VideoCap CapList=\"MainStream,H264,"),
            std::string::npos);
  // The system time follows a set time.
  EXPECT_EQ(FlagOf(c.Request("SYSTEM_CONTROL_MESSAGE", "1005",
                             "<REQUEST_PARAM Time=\"20240305 07:08:09\" TimeZone=\"3\"/>")),
            "0");
  EXPECT_NE(c.Request("SYSTEM_CONTROL_MESSAGE", "1048")
                .find("<RESPONSE_PARAM TimeZone=\"3\" Year=\"2024\" Month=\"3\" Day=\"5\" Hour=\"7\""),
            std::string::npos);
  // A canned reply overrides a built-in answer until cleared.
  camera_->SetReply("SYSTEM_CONTROL_MESSAGE", 1007, 5, "<RESPONSE_PARAM Busy=\"1\" />");
  EXPECT_EQ(c.Request("SYSTEM_CONTROL_MESSAGE", "1007"),
            Envelope("SYSTEM_CONTROL_MESSAGE", "1007", "5", "<RESPONSE_PARAM Busy=\"1\" />"));
  camera_->ClearReplies();
  EXPECT_EQ(FlagOf(c.Request("SYSTEM_CONTROL_MESSAGE", "1007")), "0");
}

TEST_F(CameraTest, ConfigurationSetGetRestoreAndReplacedDocument) {
  RawClient c;
  LoggedIn(&c);
  // A set is read with the configuration model; later gets answer with the
  // model's writer.
  const std::string lan = "<LANConfig DHCP=\"1\" IPAddress=\"10.1.2.3\" />";
  EXPECT_EQ(c.Request("SYSTEM_CONFIG_SET_MESSAGE", "325", lan),
            Envelope("SYSTEM_CONFIG_SET_MESSAGE", "325", "0", ""));
  std::string got = c.Request("SYSTEM_CONFIG_GET_MESSAGE", "305");
  EXPECT_NE(got.find("<LANConfig MacAddress=\"\" DHCP=\"1\" dhcpOffTime=\"-1\" ALLNET=\"0\" "
                     "IPAddress=\"10.1.2.3\" "),
            std::string::npos) << got;
  EXPECT_EQ(FlagOf(c.Request("SYSTEM_CONFIG_SET_MESSAGE", "325", "<UPNPConfig/>")), "-1");
  EXPECT_EQ(FlagOf(c.Request("SYSTEM_CONTROL_MESSAGE", "1002")), "0");  // restore
  EXPECT_NE(c.Request("SYSTEM_CONFIG_GET_MESSAGE", "305").find("192.168.1.88"), std::string::npos);

  EXPECT_FALSE(camera_->SetConfigDocument("<broken"));
  EXPECT_TRUE(camera_->SetConfigDocument(
      "<IPCConfig><NetworkConfig><UPNPConfig Enable=\"0\"/></NetworkConfig></IPCConfig>"));
  EXPECT_EQ(c.Request("SYSTEM_CONFIG_GET_MESSAGE", "312"),
            Envelope("SYSTEM_CONFIG_GET_MESSAGE", "312", "0", "<UPNPConfig\r\nEnable=\"0\"\r\n/>\r\n"));
  // Sections the document lacks answer as cleared records.
  EXPECT_NE(c.Request("SYSTEM_CONFIG_GET_MESSAGE", "305").find("IPAddress=\"\""),
            std::string::npos);
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
  EXPECT_EQ(all[0].type, "USER_AUTH_MESSAGE");
  auto by_code = [&](const std::string& code) {
    for (const auto& f : all) {
      if (f.code == code) return f;
    }
    return ReceivedFrame();
  };
  ReceivedFrame enc = by_code(""), reboot = by_code("1007"), set = by_code("222");
  EXPECT_EQ(enc.flag, kEncryptedFlag);
  EXPECT_EQ(enc.payload, raw);
  EXPECT_EQ(enc.type, "");
  EXPECT_EQ(enc.connection, 1);
  EXPECT_EQ(reboot.flag, kPlainFlag);
  EXPECT_EQ(reboot.payload, Envelope("SYSTEM_CONTROL_MESSAGE", "1007", "0", ""));
  EXPECT_EQ(reboot.msg_flag, "0");
  EXPECT_EQ(reboot.body, "");
  EXPECT_EQ(reboot.connection, 2);
  EXPECT_EQ(set.body, "\n<TimeConfig TimeZone=\"1\"/>\n");
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

// --- pushed messages and faults --------------------------------------------

TEST_F(CameraTest, AlarmsGoToLoggedInLinksOnly) {
  RawClient idle;
  Connect(&idle);
  EXPECT_FALSE(camera_->SendAlarm({AlarmSpec()}));
  RawClient c;
  LoggedIn(&c);
  AlarmSpec a, b;
  a.code = 23;
  b.hour = 12;
  ASSERT_TRUE(camera_->SendAlarm({a, b}));
  std::string payload;
  ASSERT_TRUE(c.ReadFrame(&payload));
  EXPECT_EQ(payload, Envelope("ALARM_REPORT_MESSAGE", "CMD_REPORT_ALARM", "0", AlarmBody({a, b})));
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

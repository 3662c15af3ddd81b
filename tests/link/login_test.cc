// Login and the life of the link against the emulated camera: status texts,
// refusals and their pause, login resends, heartbeats and their watch,
// reconnects, encrypted login.
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "api/ptz_object_list.h"
#include "base/compat.h"
#include "link/camera_fixture.h"
#include "support/loopback.h"

namespace qvtest {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

std::vector<qvemu::ReceivedFrame> OfConnection(const std::vector<qvemu::ReceivedFrame>& frames,
                                               int connection) {
  std::vector<qvemu::ReceivedFrame> out;
  for (const auto& f : frames) {
    if (f.connection == connection) out.push_back(f);
  }
  return out;
}

class LoginTest : public CameraFixture {};

TEST_F(LoginTest, ReportsConnectedThenLoggedInWithExactTexts) {
  long id = Login();
  ASSERT_EQ(id, 1);
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_LOGINOK, kWaitMs));
  std::vector<long> codes = events_.Codes(id);
  ASSERT_GE(codes.size(), 2u);  // the ability request may already have gone out too
  EXPECT_EQ(codes[0], EVENT_CONNECTOK);
  EXPECT_EQ(codes[1], EVENT_LOGINOK);
  EXPECT_EQ(events_.First(id, EVENT_CONNECTOK).text, Label() + " connect socket OK!");
  EXPECT_EQ(events_.First(id, EVENT_LOGINOK).text, Label() + ": OK: authentication OK!");

  auto logins = Frames("USER_AUTH_MESSAGE");
  ASSERT_EQ(logins.size(), 1u);
  EXPECT_EQ(logins[0].payload,
            Envelope("USER_AUTH_MESSAGE", "CMD_USER_AUTH",
                     "<USER_AUTH_PARAM\nUsername=\"admin\" Password=\"admin\" AuthMethod=\"1\"/>"));
  // The session asks for the camera's abilities right after login.
  auto ability = Frames("SYSTEM_CONTROL_MESSAGE");
  ASSERT_EQ(ability.size(), 1u);
  EXPECT_EQ(ability[0].payload, Envelope("SYSTEM_CONTROL_MESSAGE", "1020", ""));
  ASSERT_TRUE(events_.WaitAux(id, 1020, kWaitMs));
  EXPECT_EQ(ObjectPtzList.GetReplayAblity(id), 1);
}

class NoReplayCameraTest : public CameraFixture {
  qvemu::CameraOptions Options() const override {
    qvemu::CameraOptions o;
    o.front_replay = false;
    return o;
  }
};

TEST_F(NoReplayCameraTest, AbilityListWithoutFrontReplayMeansNoReplay) {
  long id = LoginReady();
  EXPECT_EQ(ObjectPtzList.GetReplayAblity(id), 0);
}

TEST_F(LoginTest, WrongPasswordReportsUserErrorAndRetriesAfterThePause) {
  long id = Login("admin", "wrong");
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_LOGIN_USERERROR, kWaitMs));
  EXPECT_EQ(events_.First(id, EVENT_LOGIN_USERERROR).text,
            Label() + ": ERR -1: authentication failed, username or passwords errror!");
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_LOGIN_RECONNECT, kWaitMs));
  ASSERT_EQ(Frames("USER_AUTH_MESSAGE", 2).size(), 2u);
  EXPECT_EQ(ObjectPtzList.GetReplayAblity(id), -1);
}

// The one case at real speed: the 10 s pause after a refusal.
class RealSpeedLoginTest : public CameraFixture {
  double Scale() const override { return 1.0; }
};

TEST_F(RealSpeedLoginTest, WrongPasswordCostsTenSecondsBetweenAttempts) {
  long id = Login("admin", "wrong");
  auto logins = Frames("USER_AUTH_MESSAGE", 2, 30000);
  ASSERT_GE(logins.size(), 2u);
  ASSERT_GE(events_.Count(id, EVENT_LOGIN_USERERROR), 1);
  // The refusal is reported before the pause begins and the next login is
  // received after it ends, however late either is seen (10 ms for rounding).
  EXPECT_GE(logins[1].tick - events_.First(id, EVENT_LOGIN_USERERROR).tick, 10000u - 10u);
}

// A receive error reports status 3 with the last formatted status text:
// here the login's, as the empty texts of sent requests do not count. (Real
// timers keep heartbeats out of the way.)
TEST_F(RealSpeedLoginTest, ALostLinkReportsTheLastFormattedStatusText) {
  long id = LoginReady();
  ASSERT_EQ(IP_NET_DVR_RebootDVR(id), 0);
  ASSERT_TRUE(events_.WaitAux(id, 1007, kWaitMs));
  camera_->CloseLinks();
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_SOCKETERROR, kWaitMs));
  EXPECT_EQ(events_.First(id, EVENT_SOCKETERROR).text, Label() + ": OK: authentication OK!");
}

// An idle link waits for its next heartbeat; a logout must end that wait at
// once, not when the heartbeat falls due (it would go out first).
TEST_F(RealSpeedLoginTest, LogoutOfAnIdleSessionDoesNotWaitForTheNextHeartbeat) {
  long id = LoginReady();
  ASSERT_EQ(IP_NET_DVR_Logout(id), 0);
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_LOGOUT_FINISH, kWaitMs));
  EXPECT_TRUE(camera_->ReceivedOfType("AUXPTZ_HEARTBEAT_MESSAGE").empty());
}

// Urgent data on the link is an exception on the socket, even with normal
// data beside it.
TEST_F(LoginTest, UrgentDataEndsTheRoundWithStatus3) {
  testsupport::BlackHole listener(1);
  IP_NET_DVR_SetAutoReconnect(0, 0);
  long id = IP_NET_DVR_Login("127.0.0.1", listener.Port(), const_cast<char*>("admin"),
                             const_cast<char*>("admin"), nullptr);
  ASSERT_TRUE(listener.Accept(kWaitMs));
  int link = listener.Connection();
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_CONNECTOK, kWaitMs));
  // One segment: an ordinary byte and an urgent one.
  ASSERT_EQ(send(link, "x", 1, MSG_MORE), 1);
  ASSERT_EQ(send(link, "!", 1, MSG_OOB), 1);
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_LOGOUT_FINISH, kWaitMs));
  std::string label = "ipc[127.0.0.1:" + std::to_string(listener.Port()) + "]";
  EXPECT_EQ(events_.First(id, EVENT_SOCKETERROR).text,
            label + " send auth request failed, error code =100863");
}

TEST_F(LoginTest, WrongPasswordWithoutAutoReconnectEndsTheThread) {
  IP_NET_DVR_SetAutoReconnect(0, 0);
  long id = Login("admin", "wrong");
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_LOGOUT_FINISH, kWaitMs));
  EXPECT_THAT(events_.Codes(id),
              ElementsAre(EVENT_CONNECTOK, EVENT_LOGIN_USERERROR, EVENT_LOGOUT_FINISH));
  EXPECT_EQ(events_.First(id, EVENT_LOGOUT_FINISH).text, Label() + " login thread exit.\n");
  EXPECT_EQ(camera_->Connections(), 1);
  EXPECT_EQ(IP_NET_DVR_Logout(id), 0);  // still in the table until logged out
}

TEST_F(LoginTest, OtherRefusalFlagsReportLoginFailed) {
  camera_->SetLoginReply(qvemu::LoginReply::Refuse, -2);
  long id = Login();
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_LOGINFAILED, kWaitMs));
  EXPECT_EQ(events_.First(id, EVENT_LOGINFAILED).text,
            Label() + ": ERR -2: authentication failed, close link!");
}

class SilentCameraTest : public CameraFixture {
  double Scale() const override { return 0.01; }  // resends every 50 ms
};

TEST_F(SilentCameraTest, TenResendsThenStatus34AndANewRound) {
  camera_->SetLoginReply(qvemu::LoginReply::Silent);
  unsigned long before_login = GetTickCount();
  long id = Login();
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_LOGIN_HEARTBEAT_LOST, kWaitMs));
  EXPECT_EQ(events_.First(id, EVENT_LOGIN_HEARTBEAT_LOST).text,
            Label() + " Not got auth response after 10 times resend,connection need to be reset!");
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_CONNECTOK, kWaitMs, 2));
  EXPECT_EQ(events_.First(id, EVENT_LOGIN_RECONNECT).text,
            Label() + " login thread reconnecting...\n");

  // The first connection is closed: everything it carried has been read
  // once the camera saw it end.
  ASSERT_TRUE(camera_->WaitForFrames(
      [&](const std::vector<qvemu::ReceivedFrame>&) { return camera_->OpenLinks() <= 1; },
      kWaitMs));
  auto first = OfConnection(camera_->ReceivedOfType("USER_AUTH_MESSAGE"), 1);
  ASSERT_EQ(first.size(), 11u);
  const std::string resend = "<USER_AUTH_PARAM\nUsername=\"admin\" Password=\"admin\"/>";
  for (size_t i = 1; i < first.size(); ++i) EXPECT_EQ(first[i].body, "\n" + resend + "\n") << i;
  // The login and ten resends, each more than the resend interval after the
  // last, then one more interval: measured on this side, where load can
  // only lengthen it.
  EXPECT_GE(events_.First(id, EVENT_LOGIN_HEARTBEAT_LOST).tick - before_login,
            ScaledMs(5000) * 11);
}

class HeartbeatTest : public CameraFixture {
  double Scale() const override { return 0.01; }  // heartbeat every 100 ms
};

TEST_F(HeartbeatTest, IdleLinkSendsHeartbeatsAndStaysUpWhileTheyAreAnswered) {
  long id = LoginReady();
  auto beats = Frames("AUXPTZ_HEARTBEAT_MESSAGE", 5);
  ASSERT_GE(beats.size(), 5u);
  EXPECT_EQ(beats[0].payload, Envelope("AUXPTZ_HEARTBEAT_MESSAGE", "CMD_HEARTBEAT", ""));
  EXPECT_EQ(events_.Count(id, EVENT_CONNECTFAILED), 0);
  EXPECT_EQ(camera_->Connections(), 1);
}

TEST_F(HeartbeatTest, UnansweredHeartbeatsDropTheLinkAndReconnect) {
  long id = LoginReady();
  camera_->SetHeartbeatReplies(false);
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_CONNECTFAILED, kWaitMs));
  EXPECT_THAT(events_.First(id, EVENT_CONNECTFAILED).text,
              StartsWith(Label() + ": no heartbeat long time, last_heartbeat_tick:"));
  EXPECT_THAT(events_.First(id, EVENT_CONNECTFAILED).text, HasSubstr(" m_nLastRecvHeartBeatTick:"));
  camera_->SetHeartbeatReplies(true);
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_LOGINOK, kWaitMs, 2));
  std::vector<long> codes = events_.Codes(id);
  auto lost = std::find(codes.begin(), codes.end(), EVENT_CONNECTFAILED);
  ASSERT_NE(lost, codes.end());
  ASSERT_NE(lost + 1, codes.end());
  EXPECT_EQ(*(lost + 1), EVENT_LOGIN_RECONNECT);
  EXPECT_EQ(camera_->Connections(), 2);
}

TEST_F(HeartbeatTest, UnansweredHeartbeatsWithoutAutoReconnectEndTheThread) {
  long id = LoginReady();
  ASSERT_EQ(IP_NET_DVR_SetAutoReconnect(id, 0), 0);
  camera_->SetHeartbeatReplies(false);
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_LOGOUT_FINISH, kWaitMs));
  std::vector<long> codes = events_.Codes(id);
  ASSERT_GE(codes.size(), 2u);
  EXPECT_EQ(codes[codes.size() - 2], EVENT_CONNECTFAILED);
  EXPECT_EQ(events_.Count(id, EVENT_LOGIN_RECONNECT), 0);
  EXPECT_EQ(IP_NET_DVR_PTZControl(id, QV_PTZ_UP, 1, 1), QV_E_NOT_CONNECTED);
  // A stopped session can be started again by hand.
  EXPECT_EQ(IP_NET_DVR_Reconnect(id), 0);
  EXPECT_TRUE(events_.WaitStatus(id, EVENT_LOGINOK, kWaitMs, 2));
}

TEST_F(LoginTest, ACameraThatClosesTheLinkIsReconnected) {
  long id = LoginReady();
  camera_->CloseLinks();
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_LOGINOK, kWaitMs, 2));
  EXPECT_GE(events_.Count(id, EVENT_SOCKETERROR), 1);
  EXPECT_EQ(events_.Count(id, EVENT_LOGIN_RECONNECT), 1);
}

TEST_F(LoginTest, EncryptedLoginAdvertisesEncryptionThenExchangesTheKey) {
  const char key[] = "00112233445566778899aabbccddeeff";
  long id = IP_NET_DVR_Login_Encrypt("127.0.0.1", camera_->Port(), const_cast<char*>("admin"),
                                     const_cast<char*>("admin"), nullptr, key);
  ASSERT_GT(id, 0);
  AuxEvent reply;
  ASSERT_TRUE(events_.WaitAux(id, 150, kWaitMs, &reply));
  EXPECT_THAT(reply.xml, HasSubstr("KeyValue=\"0123456789abcdef0123456789abcdef\""));

  auto logins = Frames("USER_AUTH_MESSAGE");
  ASSERT_EQ(logins.size(), 1u);
  EXPECT_EQ(logins[0].body,
            "\n<USER_AUTH_PARAM\nUsername=\"admin\" Password=\"admin\" AuthMethod=\"1\"/>"
            "<ENCRYPT Capbility=\"SUPPORT_VXE\" Version=\"1\" />\n");
  auto all = Requests();
  ASSERT_GE(all.size(), 3u);
  EXPECT_EQ(all[1].code, "1020");
  EXPECT_EQ(all[2].payload,
            Envelope("SYSTEM_ENCRYPT_MESSAGE", "150",
                     std::string("<KeyConfig KeyLen=\"32\" KeyValue=\"") + key + "\"/>"));

  camera_->ClearReceived();
  EXPECT_EQ(IP_NET_DVR_EXCHANGE_Encrypt(id), 0);
  EXPECT_EQ(Frames("SYSTEM_ENCRYPT_MESSAGE").size(), 1u);
}

}  // namespace
}  // namespace qvtest

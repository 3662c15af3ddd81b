// The session table with live sessions against the emulated camera: user
// IDs, the full table, logout in its various situations, global release.
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <vector>

#include <gtest/gtest.h>

#include "api/ptz_object_list.h"
#include "base/compat.h"
#include "link/camera_fixture.h"

namespace qvtest {
namespace {

class RegistrySessions : public CameraFixture {};

TEST_F(RegistrySessions, IdsAreTheLowestFreeSlotAndAreReused) {
  EXPECT_EQ(Login(), 1);
  EXPECT_EQ(Login(), 2);
  EXPECT_EQ(Login(), 3);  // the same camera again: a session of its own
  EXPECT_EQ(IP_NET_DVR_Logout(1), 0);
  EXPECT_EQ(Login(), 1);
  EXPECT_EQ(IP_NET_DVR_Logout(2), 0);
  EXPECT_EQ(IP_NET_DVR_Logout(2), QV_E_UNKNOWN_USER);
  EXPECT_EQ(Login(), 2);
  ASSERT_TRUE(events_.WaitStatus(3, EVENT_LOGINOK, kWaitMs));
  EXPECT_GE(camera_->Connections(), 3);
}

TEST_F(RegistrySessions, PortsOneTo65534AndAnAddressAreNeeded) {
  auto login = [](const char* ip, unsigned short port) {
    return IP_NET_DVR_Login(ip, port, const_cast<char*>("a"), const_cast<char*>("b"), nullptr);
  };
  EXPECT_EQ(login("127.0.0.1", 0), 0);
  EXPECT_EQ(login("127.0.0.1", 65535), 0);
  EXPECT_EQ(login(nullptr, 5000), 0);
  EXPECT_EQ(ObjectPtzList.LastError(), QV_E_INVALID_ARG);
  EXPECT_EQ(ObjectPtzList.SessionCount(), 0);
  // Only the stream registry's error is what the host reads.
  EXPECT_EQ(IP_NET_DVR_GetLastErrorCode(), 0);
  EXPECT_EQ(login("127.0.0.1", 65534), 1);
}

TEST_F(RegistrySessions, The129thLoginFails) {
  for (long i = 1; i <= CPTZObjectList::kMaxSessions; ++i) ASSERT_EQ(Login(), i);
  EXPECT_EQ(Login(), 0);
  EXPECT_EQ(IP_NET_DVR_Logout(77), 0);
  EXPECT_EQ(Login(), 77);
}

TEST_F(RegistrySessions, LogoutEndsTheLinkWithStatus32) {
  long id = LoginReady();
  ASSERT_EQ(IP_NET_DVR_Logout(id), 0);
  EXPECT_EQ(events_.First(id, EVENT_LOGOUT_FINISH).text, Label() + " login thread exit.\n");
  EXPECT_EQ(IP_NET_DVR_RebootDVR(id), QV_E_UNKNOWN_USER);
  EXPECT_TRUE(camera_->WaitForFrames([&](const std::vector<qvemu::ReceivedFrame>&) {
    return camera_->OpenLinks() == 0;
  }, kWaitMs));
}

TEST_F(RegistrySessions, LogoutWhileConnectingReturnsPromptly) {
  // A listener whose queue is full and that never accepts: the connect hangs.
  int listener = socket(AF_INET, SOCK_STREAM, 0);
  struct sockaddr_in addr = {};
  addr.sin_family = AF_INET;
  addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&addr), sizeof(addr)), 0);
  ASSERT_EQ(listen(listener, 0), 0);
  socklen_t len = sizeof(addr);
  getsockname(listener, reinterpret_cast<sockaddr*>(&addr), &len);
  std::vector<int> fillers;
  for (int i = 0; i < 3; ++i) {
    int s = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
    connect(s, reinterpret_cast<sockaddr*>(&addr), sizeof(addr));
    fillers.push_back(s);
  }
  long id = IP_NET_DVR_Login("127.0.0.1", ntohs(addr.sin_port), const_cast<char*>("admin"),
                             const_cast<char*>("admin"), nullptr);
  ASSERT_GT(id, 0);
  SleepMs(300);  // let the link thread get into its connect
  unsigned long start = GetTickCount();
  EXPECT_EQ(IP_NET_DVR_Logout(id), 0);
  EXPECT_LT(GetTickCount() - start, 3000u);  // well before the 5 s connect limit
  EXPECT_EQ(events_.Count(id, EVENT_CONNECTOK), 0);
  for (int s : fillers) close(s);
  close(listener);
}

TEST_F(RegistrySessions, LogoutFromTheSessionsOwnCallback) {
  std::atomic<long> result{1};
  events_.SetStatusHook([&](long id, long code) {
    if (code == EVENT_LOGINOK) result = IP_NET_DVR_Logout(id);
  });
  long id = Login();
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_LOGOUT_FINISH, kWaitMs));
  EXPECT_EQ(result, 0);
  EXPECT_EQ(IP_NET_DVR_RebootDVR(id), QV_E_UNKNOWN_USER);
  events_.SetStatusHook(nullptr);
  EXPECT_EQ(Login(), id);  // the slot is free again
}

TEST_F(RegistrySessions, CleanupReleasesLiveSessions) {
  std::vector<long> ids;
  for (int i = 0; i < 3; ++i) ids.push_back(LoginReady());
  EXPECT_EQ(IP_NET_DVR_Cleanup(), 0);
  for (long id : ids) EXPECT_EQ(IP_NET_DVR_RebootDVR(id), QV_E_UNKNOWN_USER);
  EXPECT_TRUE(camera_->WaitForFrames([&](const std::vector<qvemu::ReceivedFrame>&) {
    return camera_->OpenLinks() == 0;
  }, kWaitMs));
  EXPECT_EQ(IP_NET_DVR_Cleanup(), 0);  // twice is harmless
  IP_NET_DVR_Init();
  events_.Install();
  EXPECT_EQ(Login(), 1);
}

TEST_F(RegistrySessions, LogoutAllAndStopAllRealPlayEndEverySession) {
  long a = LoginReady();
  long b = LoginReady();
  EXPECT_EQ(IP_NET_DVR_LogoutAll(), 0);
  EXPECT_EQ(IP_NET_DVR_RebootDVR(a), QV_E_UNKNOWN_USER);
  EXPECT_EQ(events_.Count(b, EVENT_LOGOUT_FINISH), 1);
  long c = LoginReady();
  EXPECT_EQ(IP_NET_DVR_StopAllRealPlay(), 0);
  EXPECT_EQ(IP_NET_DVR_RebootDVR(c), QV_E_UNKNOWN_USER);
}

}  // namespace
}  // namespace qvtest

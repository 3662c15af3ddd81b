// The session table with live sessions against the emulated camera: user
// IDs, the full table, logout in its various situations, global release.
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "api/ptz_object_list.h"
#include "base/compat.h"
#include "link/camera_fixture.h"
#include "link/host_lookup.h"
#include "support/loopback.h"
#include "support/scratch.h"

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
  // Three sessions of the same camera, each with a link of its own.
  EXPECT_TRUE(camera_->WaitForFrames(
      [&](const std::vector<qvemu::ReceivedFrame>&) { return camera_->OpenLinks() >= 3; },
      kWaitMs));
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
  testsupport::BlackHole listener(0);
  sockaddr_in addr = listener.Address();
  std::vector<int> fillers;
  for (int i = 0; i < 3; ++i) {
    int s = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
    connect(s, reinterpret_cast<sockaddr*>(&addr), sizeof(addr));
    fillers.push_back(s);
  }
  long id = IP_NET_DVR_Login("127.0.0.1", listener.Port(), const_cast<char*>("admin"),
                             const_cast<char*>("admin"), nullptr);
  ASSERT_GT(id, 0);
  SleepMs(300);  // let the link thread get into its connect
  unsigned long start = GetTickCount();
  EXPECT_EQ(IP_NET_DVR_Logout(id), 0);
  EXPECT_LT(GetTickCount() - start, 3000u);  // well before the 5 s connect limit
  EXPECT_EQ(events_.Count(id, EVENT_CONNECTOK), 0);
  for (int s : fillers) close(s);
}

// A logout from a callback of the same session: the ID is gone at once,
// but not handed out again before the old session has posted its last
// event, and clean-up waits for that session to end.
TEST_F(RegistrySessions, LogoutFromTheSessionsOwnCallback) {
  std::atomic<long> result{1};
  std::atomic<long> next_id{0};
  events_.SetStatusHook([&](long id, long code) {
    if (code != EVENT_LOGINOK || id != 1) return;
    result = IP_NET_DVR_Logout(id);
    next_id = Login();  // the old session is still running
  });
  long id = Login();
  ASSERT_TRUE(events_.WaitStatus(id, EVENT_LOGOUT_FINISH, kWaitMs));
  EXPECT_EQ(result, 0);
  EXPECT_EQ(next_id, 2);
  EXPECT_EQ(events_.Count(2, EVENT_LOGOUT_FINISH), 0);
  EXPECT_EQ(IP_NET_DVR_RebootDVR(id), QV_E_UNKNOWN_USER);
  events_.SetStatusHook(nullptr);
  ASSERT_TRUE(testsupport::WaitFor([] { return ObjectPtzList.PendingLogouts() == 0; }));
  EXPECT_EQ(Login(), id);  // the slot is free again
}

// The same for sessions ended all at once: their last events still come
// after the table was emptied, and their IDs are not handed out before.
TEST_F(RegistrySessions, LogoutAllKeepsIdsUntilTheirSessionsHaveEnded) {
  long id = LoginReady();
  std::atomic<long> during{-1};
  events_.SetStatusHook([&](long sid, long code) {
    if (code == EVENT_LOGOUT_FINISH && sid == id) during = Login();
  });
  EXPECT_EQ(IP_NET_DVR_LogoutAll(), 0);
  events_.SetStatusHook(nullptr);
  EXPECT_EQ(during, id + 1);
  EXPECT_EQ(Login(), id);
}

TEST_F(RegistrySessions, CleanupWaitsForALogoutFinishingAfterACallback) {
  std::mutex mu;
  std::condition_variable cv;
  bool cleaned_up = false;
  std::atomic<bool> logged_out{false}, callback_done{false};
  events_.SetStatusHook([&](long id, long code) {
    if (code != EVENT_LOGINOK) return;
    IP_NET_DVR_Logout(id);
    logged_out = true;
    // The session's thread stays in this callback a while (until clean-up
    // returned, at most 300 ms).
    std::unique_lock<std::mutex> lock(mu);
    cv.wait_for(lock, std::chrono::milliseconds(300), [&] { return cleaned_up; });
    callback_done = true;
  });
  Login();
  ASSERT_TRUE(testsupport::WaitFor([&] { return logged_out.load(); }));
  EXPECT_EQ(IP_NET_DVR_Cleanup(), 0);
  EXPECT_TRUE(callback_done);  // the session ended before clean-up returned
  EXPECT_EQ(ObjectPtzList.PendingLogouts(), 0);
  {
    std::lock_guard<std::mutex> lock(mu);
    cleaned_up = true;
  }
  cv.notify_all();
  events_.SetStatusHook(nullptr);
  IP_NET_DVR_Init();
}

// IP_NET_DVR_Reconnect waits for the old link thread, whose last event
// reaches a host callback that calls into the library.
TEST_F(RegistrySessions, ReconnectWhileTheOldThreadsCallbackUsesTheLibrary) {
  long id = LoginReady();
  std::atomic<long> from_callback{1};
  events_.SetStatusHook([&](long sid, long code) {
    if (code == EVENT_LOGOUT_FINISH) from_callback = IP_NET_DVR_CreateIFrame(sid, 0);
  });
  std::atomic<bool> returned{false};
  std::atomic<long> result{1};
  std::thread host([&] {
    result = IP_NET_DVR_Reconnect(id);
    returned = true;
  });
  if (!testsupport::WaitFor([&] { return returned.load(); }, kWaitMs)) {
    ADD_FAILURE() << "IP_NET_DVR_Reconnect did not return";
    fflush(nullptr);
    _exit(1);  // both threads wait for each other: nothing else can end
  }
  host.join();
  EXPECT_EQ(result, 0);
  EXPECT_EQ(from_callback, QV_E_NOT_CONNECTED);
  EXPECT_TRUE(events_.WaitStatus(id, EVENT_LOGINOK, kWaitMs, 2));
  events_.SetStatusHook(nullptr);
}

// A resolver that does not answer until the test lets it; names under
// ".test" resolve to the loopback address.
std::mutex g_resolver_mu;
std::condition_variable g_resolver_cv;
bool g_resolver_open = false;
int g_resolver_waiting = 0;

bool StandInLookup(const char* name, in_addr_t* addr) {
  std::string host(name);
  if (host.size() > 5 && host.compare(host.size() - 5, 5, ".test") == 0) {
    *addr = htonl(INADDR_LOOPBACK);
    return true;
  }
  std::unique_lock<std::mutex> lock(g_resolver_mu);
  ++g_resolver_waiting;
  g_resolver_cv.notify_all();
  g_resolver_cv.wait_for(lock, std::chrono::seconds(30), [] { return g_resolver_open; });
  --g_resolver_waiting;
  g_resolver_cv.notify_all();
  return false;
}

TEST_F(RegistrySessions, HostNamesAreResolvedAndLogoutDoesNotWaitForTheResolver) {
  SetHostLookup(StandInLookup);
  long id = IP_NET_DVR_Login("camera.test", camera_->Port(), const_cast<char*>("admin"),
                             const_cast<char*>("admin"), nullptr);
  EXPECT_TRUE(events_.WaitStatus(id, EVENT_LOGINOK, kWaitMs));

  long hung = IP_NET_DVR_Login("camera.unanswered", camera_->Port(), const_cast<char*>("admin"),
                               const_cast<char*>("admin"), nullptr);
  {
    std::unique_lock<std::mutex> lock(g_resolver_mu);
    ASSERT_TRUE(g_resolver_cv.wait_for(lock, std::chrono::milliseconds(kWaitMs),
                                       [] { return g_resolver_waiting > 0; }));
  }
  EXPECT_EQ(IP_NET_DVR_Logout(hung), 0);
  {
    std::unique_lock<std::mutex> lock(g_resolver_mu);
    EXPECT_EQ(g_resolver_waiting, 1);  // logout did not wait for the resolver
    g_resolver_open = true;
    g_resolver_cv.notify_all();
    g_resolver_cv.wait_for(lock, std::chrono::milliseconds(kWaitMs),
                           [] { return g_resolver_waiting == 0; });
  }
  EXPECT_EQ(events_.Count(hung, EVENT_CONNECTOK), 0);
  SetHostLookup(nullptr);
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

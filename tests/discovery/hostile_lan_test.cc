// A hostile device on the LAN answers every search with broken, oversized,
// disguised and endless answers: the library keeps running and its table
// keeps its bounds.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "discovery/lan_fixture.h"
#include "discovery/reply_texts.h"

namespace {

using qvtest::LanFixture;
using qvtest::Replaced;
using qvtest::ReplyFrom;

// Answers each search request on port 3001 with `answers`, 1 ms apart,
// straight to the requester.
class HostileDevice {
 public:
  HostileDevice(const qvnet::NetNamespace& ns, std::vector<std::string> answers)
      : answers_(std::move(answers)) {
    qvnet::NetNamespace::Inside in(ns);
    fd_ = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    int on = 1;
    setsockopt(fd_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on));
    sockaddr_in local = {};
    local.sin_family = AF_INET;
    local.sin_port = htons(3001);
    ok_ = in.ok() && bind(fd_, reinterpret_cast<sockaddr*>(&local), sizeof(local)) == 0;
    if (ok_) thread_ = std::thread([this] { Loop(); });
  }
  ~HostileDevice() {
    stop_ = true;
    if (thread_.joinable()) thread_.join();
    close(fd_);
  }
  bool ok() const { return ok_; }
  int Rounds() const { return rounds_; }

 private:
  void Loop() {
    std::vector<char> buffer(65536);
    while (!stop_) {
      pollfd p = {fd_, POLLIN, 0};
      if (poll(&p, 1, 50) <= 0) continue;
      sockaddr_in from = {};
      socklen_t len = sizeof(from);
      ssize_t n = recvfrom(fd_, buffer.data(), buffer.size(), 0,
                           reinterpret_cast<sockaddr*>(&from), &len);
      if (n <= 0 || std::string(buffer.data(), n).find("Msg_code=\"1\"") == std::string::npos) {
        continue;
      }
      for (const std::string& a : answers_) {
        sendto(fd_, a.data(), a.size(), 0, reinterpret_cast<sockaddr*>(&from), sizeof(from));
        std::this_thread::sleep_for(std::chrono::milliseconds(1));  // pacing, not synchronisation
      }
      ++rounds_;
    }
  }

  std::vector<std::string> answers_;
  int fd_ = -1;
  bool ok_ = false;
  std::atomic<bool> stop_{false};
  std::atomic<int> rounds_{0};
  std::thread thread_;
};

class HostileLan : public LanFixture {};

TEST_F(HostileLan, BrokenAndEndlessAnswersLeaveABoundedTable) {
  const std::string good = ReplyFrom("BAD-0");
  std::string nested;
  for (int i = 0; i < 20000; ++i) nested += "<a>";
  std::vector<std::string> answers = {
      ReplyFrom("BIG-TAIL") + std::string(60000, 'x'),  // cut at 5120 bytes, all it needs before
      good.substr(0, good.size() / 3),                                        // truncated
      Replaced(good, "SerialNumber=\"BAD-0\"", "SerialNumber=\"\""),          // no serial
      Replaced(ReplyFrom("BAD-1"), "<LANConfig ", "<LANConfig <<"),            // broken XML
      Replaced(Replaced(ReplyFrom("BAD-2"), "XML_BRELLWICK>", "EVIL>"), "XML_BRELLWICK>",
               "EVIL>"),                                                      // foreign root
      Replaced(ReplyFrom("BAD-3"), "DeviceType=\"IPC\"", "DeviceType=\"NVR\""),  // a recorder
      Replaced(ReplyFrom("BAD-4"), "<UserConfig>", "<UserConfig>" + nested),   // nesting bomb
      Replaced(ReplyFrom("BAD-5"), "<MESSAGE_BODY>", "<MESSAGE_BODY>" + std::string(60000, ' ')),
      Replaced(ReplyFrom("BAD-6"), "Msg_code=\"3\"", "Msg_code=\"4\""),      // not an answer
      std::string("\0\0\0\xff", 4),
  };
  for (int i = 0; i < 150; ++i) answers.push_back(ReplyFrom("FLOOD-" + std::to_string(i)));
  const qvnet::NetNamespace& ns = Segment(6, 0);
  HostileDevice device(ns, answers);
  ASSERT_TRUE(device.ok());

  ASSERT_EQ(IP_NET_DVR_StartSearchIPC(), 0);
  ASSERT_TRUE(WaitForCount(100));
  int rounds = device.Rounds();
  ASSERT_TRUE(testsupport::WaitFor([&] { return device.Rounds() >= rounds + 2; },
                                   qvtest::kLanWaitMs));
  EXPECT_EQ(IP_NET_DVR_GetSearchIPCCount(), 100);
  auto table = Table();
  EXPECT_EQ(table.size(), 100u);
  EXPECT_EQ(table.count("BIG-TAIL"), 1u);
  for (const auto& entry : table) {
    EXPECT_EQ(entry.first.rfind("BAD-", 0), std::string::npos) << entry.first;
  }
  IPC_ENTRY e;
  EXPECT_EQ(IP_NET_DVR_GetIPCInfo(100, &e), QV_E_INVALID_ARG);
  EXPECT_EQ(IP_NET_DVR_StopSearchIPC(), 0);
}

}  // namespace

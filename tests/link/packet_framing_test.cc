// Framing over a connected socket pair: the exact header bytes, the flag hunt
// and its resynchronisation, the length limits, and the waits.
#include "link/packet_framing.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/compat.h"
#include "base/debug_log.h"
#include "base/thread_class.h"
#include "support/scratch.h"

namespace {

using ::testing::HasSubstr;

std::string Le32(uint32_t v) {
  std::string s(4, '\0');
  for (int i = 0; i < 4; ++i) s[i] = static_cast<char>((v >> (8 * i)) & 0xFF);
  return s;
}

std::string Frame(const std::string& payload, uint32_t flag = CPacketFraming::kPlainFlag) {
  return Le32(flag) + Le32(static_cast<uint32_t>(payload.size())) + payload;
}

class FramingTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, fds_), 0);
    io_.SetDeviceName("ipc[test:1]");
  }
  void TearDown() override {
    if (fds_[0] >= 0) close(fds_[0]);
    if (fds_[1] >= 0) close(fds_[1]);
  }

  void PeerWrite(const std::string& bytes) {
    ASSERT_EQ(write(fds_[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  }

  std::string PeerRead(size_t n) {
    std::string out(n, '\0');
    size_t got = 0;
    while (got < n) {
      ssize_t r = read(fds_[1], &out[got], n - got);
      if (r <= 0) break;
      got += static_cast<size_t>(r);
    }
    out.resize(got);
    return out;
  }

  // Receives one frame; the payload as text (empty when none was handed over).
  int Receive(std::string* payload, int timeout_ms = 2000) {
    char* data = nullptr;
    int ret = io_.recv_with_header(fds_[0], &data, timeout_ms);
    if (data != nullptr && ret > 0) payload->assign(data, static_cast<size_t>(ret));
    delete[] data;
    return ret;
  }

  int fds_[2] = {-1, -1};
  CPacketFraming io_;
};

TEST_F(FramingTest, SendWritesPlainOrEncryptedFlagThenLengthThenPayload) {
  EXPECT_EQ(io_.send_with_header(fds_[0], "hello", 5, 5000, 0), 5);
  EXPECT_EQ(PeerRead(13), std::string("\x58\x91\x58\x51\x05\x00\x00\x00hello", 13));
  EXPECT_EQ(io_.send_with_header(fds_[0], "ab", 2, 5000, 1), 2);
  EXPECT_EQ(PeerRead(10), std::string("\x57\x81\x59\x52\x02\x00\x00\x00" "ab", 10));
  EXPECT_EQ(io_.SendData(fds_[0], "x", 0, GetTickCount(), 1000), 0);  // nothing to send
}

TEST_F(FramingTest, ReceivesEitherFlag) {
  PeerWrite(Frame("one") + Frame("two", CPacketFraming::kEncryptedFlag));
  std::string payload;
  EXPECT_EQ(Receive(&payload), 3);
  EXPECT_EQ(payload, "one");
  EXPECT_EQ(Receive(&payload), 3);
  EXPECT_EQ(payload, "two");
}

TEST_F(FramingTest, StrayBytesBeforeAFrameAreSkippedAndLoggedOnce) {
  DebugLogSwitch(1);
  PeerWrite(std::string("\x01\x58\x91", 3) + Frame("<x/>"));
  std::string payload;
  int ret = 0;
  std::string log = testsupport::CapturedStdout([&] { ret = Receive(&payload); });
  DebugLogSwitch(0);
  EXPECT_EQ(ret, 4);
  EXPECT_EQ(payload, "<x/>");
  EXPECT_THAT(log, HasSubstr("ipc[test:1] recv pack skip buffer size=3"));
}

TEST_F(FramingTest, FlagSplitAcrossWritesIsFound) {
  std::string frame = Frame("split");
  std::thread writer([&] {
    PeerWrite(frame.substr(0, 2));
    SleepMs(50);
    PeerWrite(frame.substr(2));
  });
  std::string payload;
  EXPECT_EQ(Receive(&payload), 5);
  writer.join();
  EXPECT_EQ(payload, "split");
}

TEST_F(FramingTest, BadLengthsAreRefusedAndTheNextFrameStillArrives) {
  std::string payload;
  PeerWrite(Le32(CPacketFraming::kPlainFlag) + Le32(0));
  EXPECT_EQ(Receive(&payload), CPacketFraming::kLengthTooSmall);
  PeerWrite(Le32(CPacketFraming::kPlainFlag) + Le32(0xFFFFFFFFu));
  EXPECT_EQ(Receive(&payload), CPacketFraming::kLengthTooSmall);
  PeerWrite(Le32(CPacketFraming::kPlainFlag) + Le32(0xF00001u) + "junk");
  EXPECT_EQ(Receive(&payload), CPacketFraming::kLengthTooLarge);
  PeerWrite(Frame("after"));
  EXPECT_EQ(Receive(&payload), 5);
  EXPECT_EQ(payload, "after");
}

TEST_F(FramingTest, LargestPayloadIsAccepted) {
  std::string big(CPacketFraming::kMaxPayload, 'x');
  std::thread writer([&] { PeerWrite(Frame(big)); });
  std::string payload;
  EXPECT_EQ(Receive(&payload, 20000), CPacketFraming::kMaxPayload);
  writer.join();
  EXPECT_EQ(payload.size(), big.size());
}

TEST_F(FramingTest, StalledPayloadTimesOutFromTheStartOfTheCallWithBufferHandedOver) {
  PeerWrite(Le32(CPacketFraming::kPlainFlag) + Le32(10) + "abc");
  char* data = nullptr;
  unsigned long start = GetTickCount();
  EXPECT_EQ(io_.recv_with_header(fds_[0], &data, 400), 0);
  EXPECT_GE(GetTickCount() - start, 400u);
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(std::string(data, 3), "abc");
  delete[] data;
}

TEST_F(FramingTest, NoLimitWaitsForData) {
  std::thread writer([&] {
    SleepMs(400);
    PeerWrite(Frame("late"));
  });
  std::string payload;
  EXPECT_EQ(Receive(&payload, -1), 4);
  writer.join();
}

class IdleThread : public CThreadClass {
 public:
  ~IdleThread() override { Kill(-1); }
  int Thread() override {
    while (IsRunning()) SleepMs(5);
    return 0;
  }
};

TEST_F(FramingTest, WaitsEndWhenTheWatchedThreadStops) {
  IdleThread watched;
  ASSERT_EQ(watched.Start(0), 0);
  io_.WatchThread(&watched);
  std::thread stopper([&] {
    SleepMs(100);
    watched.Kill(0);
  });
  std::string payload;
  unsigned long start = GetTickCount();
  EXPECT_EQ(Receive(&payload, -1), 0);
  stopper.join();
  EXPECT_LT(GetTickCount() - start, 5000u);
}

TEST_F(FramingTest, ClosedPeerIsASocketErrorAndSendingFailsWithoutEndingTheProcess) {
  PeerWrite(std::string("\x58\x91", 2));
  close(fds_[1]);
  fds_[1] = -1;
  std::string payload;
  EXPECT_EQ(Receive(&payload), CPacketFraming::kSocketError);
  EXPECT_EQ(io_.send_with_header(fds_[0], "x", 1, 1000, 0), CPacketFraming::kHeaderNotSent);
}

}  // namespace

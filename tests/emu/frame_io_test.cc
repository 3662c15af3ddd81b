// The emulator's own frame reader: resynchronisation, length limits and
// partial frames, over a socket pair.
#include "emu/frame_io.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <thread>

#include "support/time_factor.h"

namespace qvemu {
namespace {

using Result = FrameReader::Result;

std::string Header(uint32_t flag, int32_t len) {
  std::string h = EncodeFrame("x", flag).substr(0, 4);
  for (int i = 0; i < 4; ++i) h.push_back(static_cast<char>((static_cast<uint32_t>(len) >> (8 * i)) & 0xff));
  return h;
}

class FrameIoTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, fds_), 0); }
  void TearDown() override {
    close(fds_[0]);
    if (fds_[1] >= 0) close(fds_[1]);
  }
  void Write(const std::string& bytes) { ASSERT_TRUE(WriteAll(fds_[1], bytes, 5000, nullptr)); }
  Result Next(FrameReader* r, uint32_t* flag, std::string* payload) {
    return r->Next(stop_, flag, payload);
  }

  int fds_[2];
  std::atomic<bool> stop_{false};
};

TEST_F(FrameIoTest, ReadsBothFlagsAndSkipsStrayBytes) {
  EXPECT_EQ(EncodeFrame("abc"), std::string("\x58\x91\x58\x51\x03\x00\x00\x00" "abc", 11));
  EXPECT_EQ(EncodeFrame("abc", kEncryptedFlag).substr(0, 4), "\x57\x81\x59\x52");
  FrameReader reader(fds_[0]);
  Write("\x01\x02\x03" + EncodeFrame("one") + EncodeFrame("two", kEncryptedFlag));
  uint32_t flag = 0;
  std::string payload;
  ASSERT_EQ(Next(&reader, &flag, &payload), Result::kFrame);
  EXPECT_EQ(payload, "one");
  EXPECT_EQ(flag, kPlainFlag);
  EXPECT_EQ(reader.skipped_bytes(), 3u);
  ASSERT_EQ(Next(&reader, &flag, &payload), Result::kFrame);
  EXPECT_EQ(payload, "two");
  EXPECT_EQ(flag, kEncryptedFlag);
  EXPECT_EQ(reader.skipped_bytes(), 3u);
}

TEST_F(FrameIoTest, FindsAFlagSplitAcrossWrites) {
  FrameReader reader(fds_[0]);
  std::string frame = EncodeFrame("split");
  std::thread writer([&] {
    Write("zz" + frame.substr(0, 2));
    std::this_thread::sleep_for(std::chrono::milliseconds(150));  // two separate reads
    Write(frame.substr(2));
  });
  uint32_t flag;
  std::string payload;
  EXPECT_EQ(Next(&reader, &flag, &payload), Result::kFrame);
  writer.join();
  EXPECT_EQ(payload, "split");
  EXPECT_EQ(reader.skipped_bytes(), 2u);
}

TEST_F(FrameIoTest, RefusesBadLengthsAndResynchronises) {
  FrameReader reader(fds_[0]);
  Write(Header(kPlainFlag, 0) + Header(kPlainFlag, -7) + Header(kPlainFlag, kMaxPayload + 1) +
        EncodeFrame("after"));
  uint32_t flag;
  std::string payload;
  EXPECT_EQ(Next(&reader, &flag, &payload), Result::kBadLength);
  EXPECT_EQ(reader.last_bad_length(), 0);
  EXPECT_EQ(Next(&reader, &flag, &payload), Result::kBadLength);
  EXPECT_EQ(reader.last_bad_length(), -7);
  EXPECT_EQ(Next(&reader, &flag, &payload), Result::kBadLength);
  EXPECT_EQ(reader.last_bad_length(), kMaxPayload + 1);
  ASSERT_EQ(Next(&reader, &flag, &payload), Result::kFrame);
  EXPECT_EQ(payload, "after");
}

TEST_F(FrameIoTest, AcceptsTheLargestPayload) {
  // 15 MB through a socket pair takes a while under a sanitizer.
  FrameReader reader(fds_[0], static_cast<int>(5000 * qvtest::TestTimeFactor()));
  std::string big(kMaxPayload, 'q');
  big[0] = 'a';
  big.back() = 'z';
  std::thread writer([&] { Write(EncodeFrame(big)); });
  uint32_t flag;
  std::string payload;
  EXPECT_EQ(Next(&reader, &flag, &payload), Result::kFrame);
  shutdown(fds_[0], SHUT_RDWR);  // a writer left halfway (a failed case) ends
  writer.join();
  EXPECT_EQ(payload.size(), big.size());
  EXPECT_TRUE(payload == big);
}

TEST_F(FrameIoTest, DropsAPayloadThatStallsAndReadsTheNextFrame) {
  FrameReader reader(fds_[0], 200);
  Write(Header(kPlainFlag, 100) + "only part");
  uint32_t flag;
  std::string payload;
  EXPECT_EQ(Next(&reader, &flag, &payload), Result::kIncomplete);
  Write(EncodeFrame("next"));
  ASSERT_EQ(Next(&reader, &flag, &payload), Result::kFrame);
  EXPECT_EQ(payload, "next");
}

TEST_F(FrameIoTest, ReportsCloseAndStop) {
  FrameReader reader(fds_[0]);
  uint32_t flag;
  std::string payload;
  stop_ = true;
  EXPECT_EQ(Next(&reader, &flag, &payload), Result::kStopped);
  stop_ = false;
  Write("\x58\x91");  // half a flag, then the peer goes away
  close(fds_[1]);
  fds_[1] = -1;
  EXPECT_EQ(Next(&reader, &flag, &payload), Result::kClosed);
}

}  // namespace
}  // namespace qvemu

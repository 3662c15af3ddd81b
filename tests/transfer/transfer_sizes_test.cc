// Whole transfers of several sizes in both modes: the bytes arrive
// unchanged, progress events come at every 204,800 bytes of an upload over
// the data channel, and the final status carries the exact text.
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "transfer/transfer_fixture.h"

namespace qvtest {
namespace {

struct SizeCase {
  qvemu::FileMode mode;
  size_t size;
};

void PrintTo(const SizeCase& c, std::ostream* os) {
  *os << (c.mode == qvemu::FileMode::kLink ? "link, " : "channel, ") << c.size << " bytes";
}

std::string CaseName(const testing::TestParamInfo<SizeCase>& info) {
  return std::string(info.param.mode == qvemu::FileMode::kLink ? "Link" : "Channel") +
         std::to_string(info.param.size);
}

class TransferSizes : public TransferFixture, public testing::WithParamInterface<SizeCase> {
 protected:
  bool Link() const { return GetParam().mode == qvemu::FileMode::kLink; }
};

TEST_P(TransferSizes, DownloadArrivesWhole) {
  Files().SetMode(GetParam().mode);
  std::string bytes = TestBytes(GetParam().size);
  ASSERT_EQ(EVENT_DOWNLOADOK, Download("clip.bin", bytes));
  std::string local = dir_ / "clip.bin";
  EXPECT_EQ(bytes, testsupport::ReadFile(local));
  EXPECT_FALSE(FileExists(local + ".tmp"));
  EXPECT_EQ(101, IP_NET_DVR_GetDownloadPos(id_));
  std::string expected =
      Link() ? "<RESPONSE_PARAM\nRemoteFileName=\"/mnt/sd/clip.bin\" LocalFileName=\"" + local +
                   "\" StartPos=\"0\" ErrorCode=\"0\" />"
             : "<RESPONSE_PARAM\nRemoteFileName=\"/mnt/sd/clip.bin\"\nLocalFileName=\"" + local +
                   "\"\n/>";
  EXPECT_EQ(expected, events_.First(id_, EVENT_DOWNLOADOK).text);
}

TEST_P(TransferSizes, UploadArrivesWhole) {
  Files().SetMode(GetParam().mode);
  const size_t size = GetParam().size;
  std::string bytes = TestBytes(size, 7);
  std::string path = UploadPath("part.bin", bytes);
  ASSERT_EQ(0, IP_NET_DVR_UploadFile(id_, 2, path.c_str()));

  // Over the data channel: one event at every 204,800 bytes, then the
  // final one with 100. Inside the link: the final one only.
  std::vector<std::string> expected;
  if (!Link()) {
    for (size_t at = 204800; at <= size && size > 0; at += 204800) {
      expected.push_back("<RESPONSE_PARAM\nFileType=\"2\"\nFileName=\"" + path + "\"\nProgress=\"" +
                         std::to_string(at * 100 / size) + "\"\n/>");
    }
    expected.push_back("<RESPONSE_PARAM\nFileType=\"2\"\nFileName=\"" + path +
                       "\"\nProgress=\"100\"\n/>");
  } else {
    expected.push_back("<RESPONSE_PARAM\nFileType=\"2\" FileName=\"" + path +
                       "\" StartPos=\"0\" ErrorCode=\"0\"  \n/>");
  }
  ASSERT_TRUE(WaitEnd(EVENT_UPLOADOK, static_cast<int>(expected.size())));
  ASSERT_TRUE(Files().WaitUploads(1, kWaitMs));
  std::string stored;
  ASSERT_TRUE(Files().Store().Get("part.bin", &stored));
  EXPECT_EQ(bytes, stored);

  std::vector<std::string> got;
  for (const StatusEvent& e : events_.Status()) {
    if (e.id == id_ && e.code == EVENT_UPLOADOK) got.push_back(e.text);
  }
  EXPECT_EQ(expected, got);
  EXPECT_EQ(0, events_.Count(id_, EVENT_UPLOADFAILED));
}

const SizeCase kSizes[] = {
    {qvemu::FileMode::kChannel, 0},      {qvemu::FileMode::kChannel, 1},
    {qvemu::FileMode::kChannel, 204800}, {qvemu::FileMode::kChannel, 3000007},
    {qvemu::FileMode::kLink, 0},         {qvemu::FileMode::kLink, 1},
    {qvemu::FileMode::kLink, 204800},    {qvemu::FileMode::kLink, 3000007},
};

INSTANTIATE_TEST_SUITE_P(Modes, TransferSizes, testing::ValuesIn(kSizes), CaseName);

}  // namespace
}  // namespace qvtest

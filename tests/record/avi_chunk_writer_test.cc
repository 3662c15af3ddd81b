#include "stream/avi_chunk_writer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace {

const size_t kBlock = CAviChunkWriter::kBlockBytes;
const unsigned long kHold = 1000;

class ChunkWriterTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char templ[] = "/tmp/quorvel-chunk-writer-XXXXXX";
    ASSERT_NE(mkdtemp(templ), nullptr);
    dir_ = templ;
    path_ = dir_ + "/out.avi";
    ASSERT_EQ(writer_.Open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC), 0);
  }
  void TearDown() override {
    writer_.Close();
    unlink(path_.c_str());
    rmdir(dir_.c_str());
  }
  long FileSize() {
    struct stat st;
    return stat(path_.c_str(), &st) == 0 ? static_cast<long>(st.st_size) : -1;
  }
  std::vector<unsigned char> FileBytes() {
    std::ifstream in(path_, std::ios::binary);
    return std::vector<unsigned char>(std::istreambuf_iterator<char>(in), {});
  }

  std::string dir_, path_;
  CAviChunkWriter writer_;
};

// Frames of a recorder's shape: a copied head, then a referred frame (or a
// copied small one). The owner overwrites a frame buffer as soon as the
// writer says it is done with it, so a byte written from a freed buffer
// would show in the file.
TEST_F(ChunkWriterTest, BlocksAreWholeAndEveryByteArrivesOnceInOrder) {
  std::vector<unsigned char> expected;
  std::vector<std::unique_ptr<std::vector<unsigned char>>> owned;  // oldest first
  srand(7);
  unsigned long now = 0;
  for (int frame = 0; frame < 400; ++frame) {
    unsigned char head[12];
    for (int i = 0; i < 12; ++i) head[i] = static_cast<unsigned char>(frame + i);
    size_t length = frame % 3 == 0 ? 160 : 1000 + static_cast<size_t>(rand() % 40000);
    auto data = std::make_unique<std::vector<unsigned char>>(length);
    for (size_t i = 0; i < length; ++i) (*data)[i] = static_cast<unsigned char>(rand());
    if (!writer_.HasRoom(2, 12 + length)) {
      int done = 0;
      ASSERT_TRUE(writer_.FlushBlocks(now, kHold, &done));
    }
    ASSERT_TRUE(writer_.Copy(head, sizeof(head)));
    expected.insert(expected.end(), head, head + sizeof(head));
    if (length <= 512) {
      ASSERT_TRUE(writer_.Copy(data->data(), length));
    } else {
      ASSERT_TRUE(writer_.Refer(data->data(), length));
      owned.push_back(std::move(data));
      data = nullptr;
    }
    if (data != nullptr) expected.insert(expected.end(), data->begin(), data->end());
    else expected.insert(expected.end(), owned.back()->begin(), owned.back()->end());

    if (frame % 7 == 6) {  // the recorder's turn ends
      now += 100;
      int done = 0;
      size_t before = writer_.Queued();
      ASSERT_TRUE(writer_.FlushBlocks(now, kHold, &done));
      long size = FileSize();
      // Nothing waits longer than the hold; short of it, only whole blocks.
      if (before > 0 && size % static_cast<long>(kBlock) != 0) {
        EXPECT_EQ(writer_.Queued(), 0u);
      }
      ASSERT_LE(static_cast<size_t>(done), owned.size());
      for (int i = 0; i < done; ++i) std::fill(owned[i]->begin(), owned[i]->end(), 0xEE);
      owned.erase(owned.begin(), owned.begin() + done);
    }
  }
  EXPECT_GT(FileSize(), static_cast<long>(kBlock));
  ASSERT_TRUE(writer_.Flush());
  EXPECT_EQ(writer_.Queued(), 0u);
  std::vector<unsigned char> got = FileBytes();
  ASSERT_EQ(got.size(), expected.size());
  EXPECT_TRUE(got == expected);
}

TEST_F(ChunkWriterTest, AShortTailWaitsForItsBlockOrTheHold) {
  std::vector<unsigned char> small(1000, 0x11), big(kBlock, 0x22);
  int done = -1;
  ASSERT_TRUE(writer_.Refer(small.data(), small.size()));
  ASSERT_TRUE(writer_.FlushBlocks(5000, kHold, &done));
  EXPECT_EQ(done, 0);
  EXPECT_EQ(FileSize(), 0);
  ASSERT_TRUE(writer_.FlushBlocks(5000 + kHold - 1, kHold, &done));
  EXPECT_EQ(FileSize(), 0);

  // A block filled before the hold runs out goes alone; the small piece is
  // done, the big one written in part stays referred.
  ASSERT_TRUE(writer_.Refer(big.data(), big.size()));
  ASSERT_TRUE(writer_.FlushBlocks(5000 + kHold - 1, kHold, &done));
  EXPECT_EQ(FileSize(), static_cast<long>(kBlock));
  EXPECT_EQ(done, 1);
  EXPECT_EQ(writer_.Queued(), small.size());

  // The rest was first seen queued by the last call: it has its own hold.
  ASSERT_TRUE(writer_.FlushBlocks(5000 + kHold, kHold, &done));
  EXPECT_EQ(FileSize(), static_cast<long>(kBlock));
  ASSERT_TRUE(writer_.FlushBlocks(5000 + 2 * kHold - 1, kHold, &done));
  EXPECT_EQ(done, 1);
  EXPECT_EQ(FileSize(), static_cast<long>(kBlock + small.size()));
  EXPECT_EQ(writer_.Queued(), 0u);

  // The header rewrite does not move the end.
  ASSERT_TRUE(writer_.WriteAt(0, "RIFF", 4));
  EXPECT_EQ(FileSize(), static_cast<long>(kBlock + small.size()));
}

TEST_F(ChunkWriterTest, AFailedWriteEmptiesTheQueueAndReleasesEveryFrame) {
  writer_.Close();
  ASSERT_EQ(writer_.Open("/dev/full", O_WRONLY), 0);
  std::vector<unsigned char> frame(kBlock + 10, 1);
  ASSERT_TRUE(writer_.Copy("00dc", 4));
  ASSERT_TRUE(writer_.Refer(frame.data(), frame.size()));
  ASSERT_TRUE(writer_.Refer(frame.data(), 20));
  int done = 0;
  EXPECT_FALSE(writer_.FlushBlocks(0, kHold, &done));
  EXPECT_EQ(done, 2);
  EXPECT_EQ(writer_.Queued(), 0u);
}

}  // namespace

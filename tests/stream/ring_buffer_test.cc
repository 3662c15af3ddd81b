#include "stream/ring_buffer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <cstring>
#include <thread>
#include <vector>

namespace {

std::vector<unsigned char> Frame(int length, unsigned char fill) {
  return std::vector<unsigned char>(static_cast<size_t>(length), fill);
}

int WriteByte(CRingBuffer& ring, unsigned char value, int flag = 0, double ts = 0) {
  return ring.Write(&value, 1, flag, ts);
}

// Reads one frame and returns its first byte, or -1 when nothing was read.
int ReadByte(CRingBuffer& ring, int* flag = nullptr, double* ts = nullptr) {
  std::vector<unsigned char> dest(600000);
  int f = 0;
  double t = 0;
  int n = ring.Read(dest.data(), static_cast<int>(dest.size()), &f, &t);
  if (flag) *flag = f;
  if (ts) *ts = t;
  return n > 0 ? dest[0] : -1;
}

TEST(RingBufferOverflow, FullRingDropsTheOldestAndKeepsTheNewest) {
  CRingBuffer ring(4);
  EXPECT_EQ(WriteByte(ring, 1), 0);
  EXPECT_EQ(WriteByte(ring, 2), 0);
  EXPECT_EQ(WriteByte(ring, 3), 0);
  EXPECT_TRUE(ring.BufferIsFull());
  EXPECT_EQ(WriteByte(ring, 4, 7, 40.5), 0);
  EXPECT_EQ(ring.GetReadCount(), 3);
  EXPECT_EQ(WriteByte(ring, 5), 0);
  EXPECT_EQ(ring.GetReadCount(), 3);

  EXPECT_EQ(ReadByte(ring), 3);
  int flag = 0;
  double ts = 0;
  EXPECT_EQ(ReadByte(ring, &flag, &ts), 4);
  EXPECT_EQ(flag, 7);
  EXPECT_DOUBLE_EQ(ts, 40.5);
  EXPECT_EQ(ReadByte(ring), 5);
  EXPECT_EQ(ReadByte(ring), -1);
}

TEST(RingBufferOverflow, InPlaceWritesOverflowTheSameWay) {
  CRingBuffer ring(3);
  for (unsigned char v = 1; v <= 3; ++v) {
    unsigned char* p = ring.LockWriteBuffer(10);
    ASSERT_NE(p, nullptr);
    p[0] = v;
    EXPECT_EQ(ring.UnLockWriteBuffer(p, 10, 0, v), 0);
  }
  EXPECT_EQ(ring.GetReadCount(), 2);
  EXPECT_EQ(ReadByte(ring), 2);
  EXPECT_EQ(ReadByte(ring), 3);
}

TEST(RingBufferDelay, FirstFrameIsReadableRightAfterConstruction) {
  CRingBuffer ring(30);
  EXPECT_EQ(ring.GetDelayCount(), 1);
  EXPECT_FALSE(ring.CanRead());
  EXPECT_EQ(ReadByte(ring), -1);
  WriteByte(ring, 9);
  EXPECT_TRUE(ring.CanRead());
  EXPECT_EQ(ReadByte(ring), 9);
}

TEST(RingBufferDelay, AfterRunningDryReadingWaitsForDelayCountFrames) {
  CRingBuffer ring(30);
  ring.SetDelayCount(5);
  WriteByte(ring, 1);
  WriteByte(ring, 2);
  WriteByte(ring, 3);
  WriteByte(ring, 4);
  double ts = 0;
  int flag = 0;
  EXPECT_FALSE(ring.CanRead());
  EXPECT_EQ(ring.GetReadTimeStamp(&ts), 0);
  EXPECT_EQ(ring.IsKeyFrame(&flag), 0);
  EXPECT_EQ(ReadByte(ring), -1);
  WriteByte(ring, 5, 1, 55);
  EXPECT_TRUE(ring.CanRead());
  EXPECT_EQ(ring.GetReadTimeStamp(&ts), 1);
  EXPECT_EQ(ring.IsKeyFrame(&flag), 1);
  EXPECT_EQ(flag, 0);  // the oldest frame, not the fifth
  for (int v = 1; v <= 5; ++v) EXPECT_EQ(ReadByte(ring), v);

  // Empty now: the reader starts waiting again.
  EXPECT_EQ(ReadByte(ring), -1);
  for (unsigned char v = 6; v <= 9; ++v) WriteByte(ring, v);
  EXPECT_EQ(ReadByte(ring), -1);
  int length = 0;
  EXPECT_EQ(ring.LockReadBuffer(&length, &flag, &ts), nullptr);
  WriteByte(ring, 10);
  EXPECT_EQ(ReadByte(ring), 6);
  // Not dry yet: the rest is readable one by one.
  EXPECT_EQ(ReadByte(ring), 7);
}

TEST(RingBufferDelay, DelayCountIsLimitedToCapacityMinusOne) {
  CRingBuffer ring(30);
  ring.SetDelayCount(30);
  EXPECT_EQ(ring.GetDelayCount(), 29);
  ring.SetDelayCount(12);
  EXPECT_EQ(ring.GetDelayCount(), 12);
}

TEST(RingBufferSizes, FrameOver128KGetsItsOwnSizePlusMargin) {
  CRingBuffer ring(2);
  std::vector<unsigned char> big = Frame(131073, 0x5A);
  big[131072] = 0xA5;
  ASSERT_EQ(ring.Write(big.data(), 131073, 1, 1), 0);

  int length = 0, flag = 0;
  double ts = 0;
  unsigned char* slot0 = ring.LockReadBuffer(&length, &flag, &ts);
  ASSERT_NE(slot0, nullptr);
  EXPECT_EQ(length, 131073);
  EXPECT_EQ(memcmp(slot0, big.data(), big.size()), 0);
  EXPECT_EQ(ring.UnLockReadBuffer(slot0), 0);

  // Back on slot 0: a fill of 131,073 + 10,240 bytes fits the grown buffer.
  WriteByte(ring, 1);
  EXPECT_EQ(ring.LockWriteBuffer(141313), slot0);
}

TEST(RingBufferSizes, FramesFrom514049BytesAreDiscardedWithSuccess) {
  CRingBuffer ring(30);
  std::vector<unsigned char> limit = Frame(514048, 0x11);
  std::vector<unsigned char> cut = Frame(514049, 0x22);
  EXPECT_EQ(ring.Write(cut.data(), 514049, 1, 1), 0);
  EXPECT_EQ(ring.GetReadCount(), 0);
  EXPECT_EQ(ring.Write(limit.data(), 514048, 1, 2), 0);
  EXPECT_EQ(ring.GetReadCount(), 1);
  // The slot whose buffer was given up for the cut frame still works.
  EXPECT_EQ(WriteByte(ring, 3), 0);

  std::vector<unsigned char> dest(600000);
  EXPECT_EQ(ring.Read(dest.data(), 0, nullptr, nullptr), 514048);
  EXPECT_EQ(dest[514047], 0x11);
  EXPECT_EQ(ReadByte(ring), 3);
}

// Lengths come from hosts (recording of host-fed frames): an empty frame is
// a frame; a length too big for a slot is discarded at once, whatever its
// size, without touching the bytes.
TEST(RingBufferSizes, EmptyFramesCountAndOversizedLengthsAreDiscarded) {
  CRingBuffer ring(30);
  unsigned char byte = 7;
  EXPECT_EQ(ring.Write(&byte, 0, 3, 1.5), 0);
  EXPECT_EQ(ring.Write(nullptr, 0, 4, 2.5), 0);
  EXPECT_EQ(ring.GetReadCount(), 2);
  int flag = 0;
  double ts = 0;
  EXPECT_EQ(ring.Read(&byte, 1, &flag, &ts), 0);
  EXPECT_EQ(flag, 3);
  EXPECT_DOUBLE_EQ(ts, 1.5);
  EXPECT_EQ(ring.GetReadCount(), 1) << "the empty frame was consumed";

  for (int length : {514049, INT_MAX - 10240, INT_MAX - 10239, INT_MAX}) {
    EXPECT_EQ(ring.Write(&byte, length, 1, 0), 0) << length;
  }
  EXPECT_EQ(ring.Write(&byte, -1, 0, 0), 0);
  EXPECT_EQ(ring.Write(nullptr, 5, 0, 0), 0);
  EXPECT_EQ(ring.GetReadCount(), 1);
}

TEST(RingBufferInPlace, LockedFramesRoundTripWithoutCopy) {
  CRingBuffer ring(30);
  unsigned char* w = ring.LockWriteBuffer(300000);
  ASSERT_NE(w, nullptr);
  memset(w, 0x77, 300000);
  ASSERT_EQ(ring.UnLockWriteBuffer(w, 300000, 1, 12.0), 0);

  int length = 0, flag = 0;
  double ts = 0;
  unsigned char* r = ring.LockReadBuffer(&length, &flag, &ts);
  ASSERT_EQ(r, w);
  EXPECT_EQ(length, 300000);
  EXPECT_EQ(flag, 1);
  EXPECT_DOUBLE_EQ(ts, 12.0);
  EXPECT_EQ(ring.GetReadCount(), 1);  // locked, not consumed
  EXPECT_EQ(ring.UnLockReadBuffer(r), 0);
  EXPECT_EQ(ring.GetReadCount(), 0);
}

TEST(RingBufferInPlace, ForeignPointersAreRefusedAndChangeNothing) {
  CRingBuffer ring(30);
  unsigned char foreign[16] = {};
  unsigned char* w = ring.LockWriteBuffer(100);
  ASSERT_NE(w, nullptr);
  w[0] = 42;
  EXPECT_EQ(ring.UnLockWriteBuffer(foreign, 100, 0, 0), -1);
  EXPECT_EQ(ring.UnLockWriteBuffer(nullptr, 100, 0, 0), -1);
  EXPECT_EQ(ring.GetReadCount(), 0);
  EXPECT_EQ(ring.UnLockWriteBuffer(w, 1, 0, 0), 0);

  int length = 0, flag = 0;
  double ts = 0;
  unsigned char* r = ring.LockReadBuffer(&length, &flag, &ts);
  ASSERT_NE(r, nullptr);
  EXPECT_EQ(ring.UnLockReadBuffer(foreign), -1);
  EXPECT_EQ(ring.GetReadCount(), 1);
  EXPECT_EQ(ring.UnLockReadBuffer(r), 0);
  EXPECT_EQ(ring.UnLockReadBuffer(r), -1);  // already consumed
}

// The recorder takes frames out with their buffers, giving spares back: the
// frames are whole and in order, and the slots go on with the spares.
TEST(RingBufferTake, BuffersAreExchangedNotCopied) {
  CRingBuffer ring(4);
  int length = 0, flag = 0, size = 0;
  double ts = 0;
  EXPECT_EQ(ring.TakeReadBuffer(nullptr, 0, &length, &flag, &ts, &size), nullptr);
  WriteByte(ring, 1, 5, 1.5);
  unsigned char* spare = new unsigned char[70000];
  unsigned char* first = ring.TakeReadBuffer(spare, 70000, &length, &flag, &ts, &size);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first[0], 1);
  EXPECT_EQ(length, 1);
  EXPECT_EQ(flag, 5);
  EXPECT_DOUBLE_EQ(ts, 1.5);
  EXPECT_EQ(size, 65536);
  EXPECT_EQ(ring.GetReadCount(), 0);

  // Three frames fill the other slots; the fourth write lands in the spare.
  for (unsigned char v = 2; v <= 4; ++v) WriteByte(ring, v);
  EXPECT_EQ(ring.LockWriteBuffer(10), spare);
  // Taken without a spare, a slot gets a buffer again with its next frame.
  unsigned char* second = ring.TakeReadBuffer(nullptr, 0, &length, &flag, &ts, &size);
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(second[0], 2);
  EXPECT_EQ(ReadByte(ring), 3);
  for (unsigned char v = 5; v <= 6; ++v) EXPECT_EQ(WriteByte(ring, v), 0);
  for (int v = 4; v <= 6; ++v) EXPECT_EQ(ReadByte(ring), v);
  delete[] first;
  delete[] second;
}

TEST(RingBufferReset, ResetEmptiesButKeepsWorking) {
  CRingBuffer ring(5);
  WriteByte(ring, 1);
  WriteByte(ring, 2);
  EXPECT_EQ(ring.ResetContent(), 0);
  EXPECT_EQ(ring.GetReadCount(), 0);
  EXPECT_EQ(ReadByte(ring), -1);
  WriteByte(ring, 3);
  EXPECT_EQ(ReadByte(ring), 3);
}

TEST(RingBufferReset, EmptyRingAnswersWithoutCrashing) {
  CRingBuffer ring(0);
  EXPECT_EQ(ring.GetCapacity(), 0);
  unsigned char byte = 1;
  EXPECT_EQ(ring.Write(&byte, 1, 0, 0), -1);
  EXPECT_EQ(ring.LockWriteBuffer(10), nullptr);
  EXPECT_EQ(ring.UnLockWriteBuffer(&byte, 1, 0, 0), -1);
  EXPECT_EQ(ReadByte(ring), -1);
  int length = 0, flag = 0;
  double ts = 0;
  EXPECT_EQ(ring.LockReadBuffer(&length, &flag, &ts), nullptr);
  EXPECT_EQ(ring.UnLockReadBuffer(&byte), -1);
  EXPECT_EQ(ring.GetReadTimeStamp(&ts), 0);
  EXPECT_EQ(ring.IsKeyFrame(&flag), 0);
  EXPECT_EQ(ring.ResetContent(), 0);
  ring.Init(3);  // and it can be given slots again
  EXPECT_EQ(WriteByte(ring, 8), 0);
  EXPECT_EQ(ReadByte(ring), 8);
}

// One producer and one consumer: every frame read is intact and frames come
// out in the order written (overflow may skip some, never reorder them).
TEST(RingBufferThreads, ProducerAndConsumerSeeWholeFramesInOrder) {
  CRingBuffer ring(30);
  const int kFrames = 20000;
  std::atomic<bool> done{false};
  std::thread producer([&] {
    std::vector<unsigned char> frame(200000);
    for (int i = 0; i < kFrames; ++i) {
      int length = 8 + (i * 7919) % 190000;
      memcpy(frame.data(), &i, sizeof(i));
      memset(frame.data() + sizeof(i), i & 0xFF, static_cast<size_t>(length) - sizeof(i));
      ring.Write(frame.data(), length, i & 1, i);
    }
    done = true;
  });
  std::vector<unsigned char> dest(600000);
  int last = -1, read = 0, idle_after_done = 0;
  bool intact = true;
  // A reader that found the ring dry just as the last frame went in waits
  // for one more write; so after the producer ends, stop once idle a while.
  while (!done || (ring.GetReadCount() > 0 && idle_after_done < 10000)) {
    int flag = 0;
    double ts = 0;
    int n = ring.Read(dest.data(), 0, &flag, &ts);
    if (n == 0) {
      if (done) ++idle_after_done;
      std::this_thread::yield();
      continue;
    }
    int seq = 0;
    memcpy(&seq, dest.data(), sizeof(seq));
    intact = intact && seq > last && n == 8 + (seq * 7919) % 190000 && flag == (seq & 1) &&
             ts == seq && dest[n - 1] == (seq & 0xFF);
    last = seq;
    ++read;
  }
  producer.join();
  EXPECT_TRUE(intact);
  EXPECT_GT(read, 0);
  EXPECT_GE(last, kFrames - 30);
}

}  // namespace

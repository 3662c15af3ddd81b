#include "stream/record_task.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstring>
#include <regex>
#include <thread>

#include "base/time_scale.h"
#include "media_helper.h"
#include "record_helper.h"
#include "stream/disk_space.h"

namespace {

__STREAM_AV_PARAM Params(const char* video, const char* audio, int w = 1280, int h = 720) {
  return AvParams(video, w, h, audio, 8000);
}

// A frame whose bytes say which one it is: first byte = kind, then the
// sequence number, then filler.
std::vector<unsigned char> Frame(unsigned char kind, int seq, int length = 64) {
  std::vector<unsigned char> f(static_cast<size_t>(length), static_cast<unsigned char>(seq));
  f[0] = kind;
  memcpy(&f[1], &seq, sizeof(seq));
  return f;
}

int SeqOf(const std::vector<uint8_t>& data) {
  int seq = -1;
  if (data.size() >= 5) memcpy(&seq, &data[1], sizeof(seq));
  return seq;
}

void WriteVideo(CRecordTask& task, int seq, bool key, double ts, int length = 64) {
  std::vector<unsigned char> f = Frame('V', seq, length);
  task.VideoRing()->Write(f.data(), length, key ? 1 : 0, ts);
}

void WriteAudio(CRecordTask& task, int seq, double ts) {
  std::vector<unsigned char> f = Frame('A', seq, 160);
  task.AudioRing()->Write(f.data(), 160, 0, ts);
}

bool RingsEmpty(CRecordTask& task) {
  return task.VideoRing()->GetReadCount() == 0 && task.AudioRing()->GetReadCount() == 0;
}

void ExpectConsistent(const RecordedFile& f) {
  std::vector<RecordedIndexRow> rows = ExpectSelfConsistent(f);
  EXPECT_EQ(rows.size(), static_cast<size_t>(f.Count("00dc"))) << "audio is not indexed";
}

class RecordTaskTest : public RecordingTest {
 protected:
  void SetUp() override {
    RecordingTest::SetUp();
    SetDiskFreeCommand("echo 2097152 #%s");
  }
  void TearDown() override {
    SetDiskFreeCommand(nullptr);
    RecordingTest::TearDown();
  }
  EventLog events_;
};

TEST_F(RecordTaskTest, AudioAndVideoInTimeOrderFromTheFirstKeyFrame) {
  __STREAM_AV_PARAM p = Params("H264", "G711U");
  CRecordTask task(&p, 300, 300, &events_, 0);
  task.SetStorageBase(dir_.path().c_str(), 0);
  // Queued before the thread starts, so the order is the recorder's alone.
  WriteVideo(task, 0, false, 0);   // before the first key frame: dropped
  WriteAudio(task, 100, 0);
  WriteVideo(task, 1, true, 40);
  WriteAudio(task, 101, 40);       // same stamp as video 1: goes first
  WriteVideo(task, 2, false, 80);
  WriteAudio(task, 102, 100);
  WriteVideo(task, 3, true, 120);
  std::vector<unsigned char> huge(600000, 1);  // beyond the ring: not stored
  task.VideoRing()->Write(huge.data(), 600000, 1, 130);
  WriteVideo(task, 4, false, 160);
  ASSERT_EQ(task.Start(), 0);
  ASSERT_TRUE(WaitUntil([&] { return RingsEmpty(task) && task.VideoFrames() == 4; }));
  task.Stop();

  std::vector<std::string> files = ListFiles(dir_.path());
  ASSERT_EQ(files.size(), 1u);
  EXPECT_TRUE(std::regex_match(files[0], std::regex(".*/\\d{4}-\\d{2}-\\d{2}/\\d{6}-av-1\\.avi")))
      << files[0];
  EXPECT_EQ(task.FinishedFiles(), files);

  RecordedFile f = ReadRecording(files[0]);
  ExpectConsistent(f);
  std::vector<std::string> order;
  for (const RecordedChunk& c : f.chunks) order.push_back(c.id + std::to_string(SeqOf(c.data)));
  EXPECT_EQ(order, (std::vector<std::string>{"01wb100", "01wb101", "00dc1", "00dc2", "01wb102",
                                             "00dc3", "00dc4"}));
  ASSERT_EQ(f.index.size(), 4u);
  EXPECT_EQ(f.index[0].flags, 16u);  // video 1, a key frame
  EXPECT_EQ(f.index[1].flags, 0u);
  EXPECT_EQ(f.chunks[2].data, Frame('V', 1));

  EXPECT_TRUE(events_.WaitFor(EVENT_RECORD_TASKEND));
  auto ev = events_.Events();
  ASSERT_EQ(ev.size(), 2u);
  EXPECT_EQ(ev[0], std::make_pair(static_cast<int>(EVNET_RECORD_FILEBEGIN), files[0]));
  EXPECT_EQ(ev[1], std::make_pair(static_cast<int>(EVENT_RECORD_TASKEND), std::string()));
}

TEST_F(RecordTaskTest, VideoOnlyNameSmallPictureAndStreamKind) {
  __STREAM_AV_PARAM p = Params("H264", "", 352, 288);
  {
    CRecordTask task(&p, 300, 300, &events_, 0);
    task.SetStorageBase(dir_.path().c_str(), 0);
    WriteVideo(task, 1, true, 0);
    task.Start();
    ASSERT_TRUE(WaitUntil([&] { return task.VideoFrames() == 1; }));
    task.Stop();
    ASSERT_EQ(task.FinishedFiles().size(), 1u);
    EXPECT_TRUE(std::regex_match(task.FinishedFiles()[0], std::regex(".*/\\d{6}-vv-2\\.avi")));
    RecordedFile f = ReadRecording(task.FinishedFiles()[0]);
    EXPECT_EQ(f.header_size, 5960u);
    ExpectConsistent(f);
  }
  // Stream kind 1 names the file whatever the picture size; a name already
  // taken in the same second gets a suffix instead of being overwritten.
  std::vector<std::string> names;
  for (int i = 0; i < 2; ++i) {
    CRecordTask task(&p, 300, 300, &events_, 1);
    task.SetStorageBase(dir_.path().c_str(), 0);
    WriteVideo(task, 1, true, 0);
    task.Start();
    ASSERT_TRUE(WaitUntil([&] { return task.VideoFrames() == 1; }));
    task.Stop();
    names.push_back(task.FinishedFiles().at(0));
  }
  EXPECT_TRUE(std::regex_match(names[0], std::regex(".*/\\d{6}-vv-1(_2)?\\.avi"))) << names[0];
  EXPECT_NE(names[0], names[1]);
  EXPECT_EQ(ListFiles(dir_.path()).size(), 3u);
}

TEST_F(RecordTaskTest, TrailerIsCutOnlyWhenItsWordsSaySo) {
  __STREAM_AV_PARAM p = Params("H264", "");
  CRecordTask task(&p, 300, 300, &events_, 0);
  task.SetStorageBase(dir_.path().c_str(), 0);
  auto with_trailer = [](int seq, uint64_t third, uint64_t fourth) {
    std::vector<unsigned char> f = Frame('V', seq, 100);
    uint64_t words[4] = {0x1A2B3C4D, 7, third, fourth};
    f.resize(132);
    memcpy(&f[100], words, sizeof(words));
    return f;
  };
  std::vector<unsigned char> cut = with_trailer(1, 9, 9);
  std::vector<unsigned char> kept = with_trailer(2, 8, 9);
  task.VideoRing()->Write(cut.data(), 132, 1, 0);
  task.VideoRing()->Write(kept.data(), 132, 0, 40);
  task.Start();
  ASSERT_TRUE(WaitUntil([&] { return task.VideoFrames() == 2; }));
  task.Stop();
  RecordedFile f = ReadRecording(task.FinishedFiles().at(0));
  ExpectConsistent(f);
  ASSERT_EQ(f.chunks.size(), 2u);
  EXPECT_EQ(f.chunks[0].data, std::vector<uint8_t>(cut.begin(), cut.begin() + 100));
  EXPECT_EQ(f.chunks[1].data, std::vector<uint8_t>(kept.begin(), kept.end()));
}

TEST_F(RecordTaskTest, Mpeg4VolHeaderGoesAheadOfTheFirstFrameOnly) {
  __STREAM_AV_PARAM p = Params("MPEG4", "");
  const unsigned char vol[] = {0, 0, 1, 0xB0, 1, 0, 0, 1, 0xB5, 0x89, 0, 0, 1, 0, 0, 0, 1, 0x20};
  memcpy(p.video.config, vol, sizeof(vol));
  p.video.config_len = sizeof(vol);
  CRecordTask task(&p, 300, 300, &events_, 0);
  task.SetStorageBase(dir_.path().c_str(), 0);
  WriteVideo(task, 1, true, 0);
  WriteVideo(task, 2, false, 40);
  task.Start();
  ASSERT_TRUE(WaitUntil([&] { return task.VideoFrames() == 2; }));
  task.Stop();
  RecordedFile f = ReadRecording(task.FinishedFiles().at(0));
  ExpectConsistent(f);
  EXPECT_EQ(CodeAt(f.bytes, 224), "XVID");
  std::vector<uint8_t> first(vol, vol + sizeof(vol));
  std::vector<unsigned char> frame1 = Frame('V', 1);
  first.insert(first.end(), frame1.begin(), frame1.end());
  EXPECT_EQ(f.chunks.at(0).data, first);
  EXPECT_EQ(f.chunks.at(1).data, Frame('V', 2));
}

TEST_F(RecordTaskTest, FileNameIsWrittenAsTmpAndRenamedAtTheEnd) {
  __STREAM_AV_PARAM p = Params("H264", "AAC");
  std::string name = dir_ / "clip.AVI";
  CRecordTask task(&p, 60, 60, &events_, 0);
  task.SetStorageBase(name.c_str(), 1);
  EXPECT_STREQ(task.GetStorageBase(), name.c_str());
  EXPECT_EQ(task.FreeSpaceFolder(), dir_.path());
  task.Start();
  ASSERT_TRUE(events_.WaitFor(EVNET_RECORD_FILEBEGIN));
  EXPECT_TRUE(FileExists(name + ".tmp"));
  EXPECT_FALSE(FileExists(name));
  WriteVideo(task, 1, true, 0);
  ASSERT_TRUE(WaitUntil([&] { return task.VideoFrames() == 1; }));
  task.Stop();
  EXPECT_TRUE(FileExists(name));
  EXPECT_FALSE(FileExists(name + ".tmp"));
  EXPECT_EQ(ListFiles(dir_.path()), std::vector<std::string>{name});
  RecordedFile f = ReadRecording(name);
  EXPECT_EQ(f.header_size, 10296u);
  EXPECT_EQ(CodeAt(f.bytes, 4608), "MP4A");
  ExpectConsistent(f);
}

TEST_F(RecordTaskTest, FreeSpaceBelow2048MegabytesRefusesToStartAFile) {
  EXPECT_EQ(CheckDiskFreeSpace("/"), -2);
  EXPECT_EQ(CheckDiskFreeSpace(""), -2);
  SetDiskFreeCommand("echo 2097151 #%s");
  EXPECT_EQ(CheckDiskFreeSpace(dir_.path().c_str()), -4);
  SetDiskFreeCommand("echo 2097152 #%s");
  EXPECT_EQ(CheckDiskFreeSpace(dir_.path().c_str()), 0);
  SetDiskFreeCommand("true #%s");  // no output reads as 0 KB
  EXPECT_EQ(CheckDiskFreeSpace(dir_.path().c_str()), -4);
  EXPECT_EQ(SetDiskFreeCommand("echo %d %s"), -1);
  EXPECT_EQ(SetDiskFreeCommand("echo 1"), -1);

  SetDiskFreeCommand("echo 2097151 #%s");
  __STREAM_AV_PARAM p = Params("H264", "");
  CRecordTask task(&p, 300, 300, &events_, 0);
  task.SetStorageBase(dir_.path().c_str(), 0);
  task.Start();
  ASSERT_TRUE(events_.WaitFor(EVENT_RECORD_DISKFREESPACE_TOOLOW, 2));
  EXPECT_EQ(events_.Count(EVNET_RECORD_FILEBEGIN), 0);
  EXPECT_TRUE(ListFiles(dir_.path()).empty());
  // Space comes back: the next check starts a file.
  SetDiskFreeCommand("echo 2097152 #%s");
  ASSERT_TRUE(events_.WaitFor(EVNET_RECORD_FILEBEGIN));
  task.Stop();
  EXPECT_EQ(task.FinishedFiles().size(), 1u);
}

TEST_F(RecordTaskTest, RealDfReadsTheFolderAndQuotesItsPath) {
  SetDiskFreeCommand(nullptr);
  std::string odd = dir_ / "it's here";
  ASSERT_EQ(mkdir(odd.c_str(), 0755), 0);
  EXPECT_GT(ReadDiskFreeKB(odd.c_str()), 0);
  EXPECT_EQ(ReadDiskFreeKB((dir_ / "missing").c_str()), 0) << "df prints nothing for it";
}

// A storage folder that does not exist -- a card that is not mounted -- is
// never made: like df, the stand-in command reports no space for it, so the
// task waits with event 45 and starts once the folder is there. Only the
// day folder is made under it.
TEST_F(RecordTaskTest, MissingStorageFolderIsWaitedForNotMade) {
  SetDiskFreeCommand("test -d %s && echo 2097152");
  std::string blocker = dir_ / "plain-file";
  ASSERT_TRUE(WriteFileBytes(blocker, {1, 2, 3}));
  const struct {
    const char* what;
    std::string base;
    int by_file_name;
  } cases[] = {
      {"missing folder", dir_ / "card/rec", 0},
      {"below a plain file", blocker + "/rec", 0},
      {"file in a missing folder", dir_ / "card/clip.avi", 1},
      {"no storage base", "", 0},
  };
  __STREAM_AV_PARAM p = Params("H264", "");
  for (const auto& c : cases) {
    EventLog events;
    CRecordTask task(&p, 300, 300, &events, 0);
    task.SetStorageBase(c.base.c_str(), c.by_file_name);
    task.Start();
    EXPECT_TRUE(events.WaitFor(EVENT_RECORD_DISKFREESPACE_TOOLOW, 2)) << c.what;
    task.Stop();
    EXPECT_EQ(events.Count(EVNET_RECORD_FILEBEGIN), 0) << c.what;
  }
  EXPECT_EQ(ListFiles(dir_.path()), std::vector<std::string>{blocker});
  EXPECT_FALSE(FileExists(dir_ / "card"));

  // The card appears: the next look starts a file in a day folder.
  std::string card = dir_ / "card";
  EventLog events;
  CRecordTask task(&p, 300, 300, &events, 0);
  task.SetStorageBase(card.c_str(), 0);
  task.Start();
  ASSERT_TRUE(events.WaitFor(EVENT_RECORD_DISKFREESPACE_TOOLOW));
  ASSERT_EQ(mkdir(card.c_str(), 0755), 0);
  ASSERT_TRUE(events.WaitFor(EVNET_RECORD_FILEBEGIN));
  task.Stop();
  ASSERT_EQ(task.FinishedFiles().size(), 1u);
  EXPECT_TRUE(std::regex_match(task.FinishedFiles()[0],
                               std::regex(card + "/\\d{4}-\\d{2}-\\d{2}/\\d{6}-vv-1\\.avi")));
}

// A stop that arrives while the task reads the free space (a command that
// takes its time) ends the task there: no file is begun that could hold
// nothing but its header. The command is held on a FIFO until the stop has
// been asked.
TEST_F(RecordTaskTest, StopDuringTheFreeSpaceCheckBeginsNoFile) {
  std::string gate = dir_ / "gate";
  std::string asked = dir_ / "asked";
  std::string card = dir_ / "card";
  ASSERT_EQ(mkfifo(gate.c_str(), 0600), 0);
  ASSERT_EQ(mkdir(card.c_str(), 0755), 0);
  std::string command =
      "touch '" + asked + "'; read line < '" + gate + "'; echo 2097152 #%s";
  ASSERT_EQ(SetDiskFreeCommand(command.c_str()), 0);
  // Lets the command go on; the open waits for its reader.
  auto open_gate = [&] {
    int fd = open(gate.c_str(), O_WRONLY);
    if (fd < 0) return;
    EXPECT_EQ(write(fd, "go\n", 3), 3);
    close(fd);
  };
  __STREAM_AV_PARAM p = Params("H264", "G711U");
  const struct {
    const char* what;
    std::string base;
    int by_file_name;
  } cases[] = {{"storage folder", card, 0}, {"file name", card + "/clip.avi", 1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    unlink(asked.c_str());
    EventLog events;
    CRecordTask task(&p, 60, 60, &events, 0);
    task.SetStorageBase(c.base.c_str(), c.by_file_name);
    task.Start();
    ASSERT_TRUE(WaitUntil([&] { return FileExists(asked); }));
    std::thread stopper([&] { task.Stop(); });
    bool stop_seen = WaitUntil([&] { return task.IsRunning() == 0; });
    open_gate();
    stopper.join();
    ASSERT_TRUE(stop_seen);
    EXPECT_EQ(events.Count(EVNET_RECORD_FILEBEGIN), 0);
    EXPECT_EQ(events.Count(EVENT_RECORD_TASKEND), 1);
    EXPECT_TRUE(task.FinishedFiles().empty());
    EXPECT_TRUE(ListFiles(card).empty());
  }

  // Without a stop the same check lets the file begin.
  unlink(asked.c_str());
  CRecordTask task(&p, 60, 60, &events_, 0);
  task.SetStorageBase(card.c_str(), 0);
  task.Start();
  ASSERT_TRUE(WaitUntil([&] { return FileExists(asked); }));
  open_gate();
  ASSERT_TRUE(events_.WaitFor(EVNET_RECORD_FILEBEGIN));
  SetDiskFreeCommand("echo 2097152 #%s");
  task.Stop();
  EXPECT_EQ(task.FinishedFiles().size(), 1u);
}

TEST_F(RecordTaskTest, VanishedFileIsNotReportedAsFinished) {
  __STREAM_AV_PARAM p = Params("H264", "");
  std::string name = dir_ / "gone.avi";
  CRecordTask task(&p, 60, 60, &events_, 0);
  task.SetStorageBase(name.c_str(), 1);
  task.Start();
  ASSERT_TRUE(events_.WaitFor(EVNET_RECORD_FILEBEGIN));
  WriteVideo(task, 1, true, 0);
  ASSERT_TRUE(WaitUntil([&] { return task.VideoFrames() == 1; }));
  ASSERT_EQ(unlink((name + ".tmp").c_str()), 0);
  task.Stop();
  EXPECT_TRUE(task.FinishedFiles().empty());
  EXPECT_FALSE(FileExists(name));
}

// A chunk that cannot be written (the disk is full) gives the file up under
// its temporary name; the rest of its frames are dropped, and no new file is
// tried before the file's length has passed.
TEST_F(RecordTaskTest, FullDiskGivesUpTheFileAndWaitsOutItsLength) {
  struct rlimit old_limit;
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old_limit), 0);
  signal(SIGXFSZ, SIG_IGN);
  struct rlimit small = old_limit;
  small.rlim_cur = 3 * 1024 * 1024;  // the header fits; a few frames do not
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);

  __STREAM_AV_PARAM p = Params("H264", "");
  std::atomic<unsigned long> now{1000000};
  CRecordTask task(&p, 60, 120, &events_, 0);
  task.SetStorageBase(dir_.path().c_str(), 0);
  task.SetClock([&now] { return now.load(); });
  task.Start();
  ASSERT_TRUE(events_.WaitFor(EVNET_RECORD_FILEBEGIN));
  // 6 MB of frames: at least 4 MB of them leave the 2 MB write buffer.
  for (int i = 0; i < 15; ++i) {
    WriteVideo(task, i, true, i * 40, 400000);
    ASSERT_TRUE(WaitUntil([&] { return RingsEmpty(task); }));
  }
  EXPECT_LT(task.VideoFrames(), 15) << "the write failed";
  EXPECT_EQ(events_.Count(EVNET_RECORD_FILEBEGIN), 1) << "no new file within the length";
  std::vector<std::string> files = ListFiles(dir_.path());
  ASSERT_EQ(files.size(), 1u);
  EXPECT_NE(files[0].find(".avi.tmp"), std::string::npos) << files[0];

  now += 61000;
  WriteVideo(task, 15, true, 15 * 40);
  ASSERT_TRUE(events_.WaitFor(EVNET_RECORD_FILEBEGIN, 2)) << "the next file after the length";
  task.Stop();
  setrlimit(RLIMIT_FSIZE, &old_limit);
  EXPECT_TRUE(FileExists(files[0])) << "the given-up file keeps its temporary name";
  EXPECT_EQ(task.FinishedFiles().size(), 1u);
  EXPECT_EQ(events_.Count(EVNET_RECORD_WRITE_FILE_ERROR), 0);
}

// Codecs the recorder cannot describe are only logged; audio it cannot
// describe is left out.
TEST_F(RecordTaskTest, UnknownCodecsAreLeftToTheLog) {
  __STREAM_AV_PARAM p = Params("VP8", "OPUS");
  CRecordTask task(&p, 300, 300, &events_, 0);
  task.SetStorageBase(dir_.path().c_str(), 0);
  task.Start();
  ASSERT_TRUE(events_.WaitFor(EVNET_RECORD_FILEBEGIN));
  task.Stop();
  EXPECT_EQ(events_.Events().at(0).first, EVNET_RECORD_FILEBEGIN);
  ASSERT_EQ(task.FinishedFiles().size(), 1u);
  EXPECT_TRUE(std::regex_match(task.FinishedFiles()[0], std::regex(".*-vv-1\\.avi")));
  EXPECT_EQ(CodeAt(ReadRecording(task.FinishedFiles()[0]).bytes, 224), "XVID");
}

// Audio is described as the stream gives it: what it does not tell stays 0
// (the AAC rate word too); picture values it does not tell take the
// defaults.
TEST_F(RecordTaskTest, HeaderTakesDefaultsForThePictureOnly) {
  __STREAM_AV_PARAM p;
  memset(&p, 0, sizeof(p));
  strcpy(p.audio.codec, "AAC");
  CRecordTask task(&p, 300, 300, &events_, 0);
  task.SetStorageBase(dir_.path().c_str(), 0);
  task.Start();
  ASSERT_TRUE(events_.WaitFor(EVNET_RECORD_FILEBEGIN));
  task.Stop();
  RecordedFile f = ReadRecording(task.FinishedFiles().at(0));
  ASSERT_EQ(f.header_size, 10296u);
  const struct {
    size_t at;
    uint64_t value;
  } words[] = {
      {64, 40000},      // 1,000,000 / 25 fps
      {72, 262144},     // 2,097,152 bits / 8
      {128, 704}, {136, 576}, {264, 25},
      {4648, 0},        // AAC rate word without channels
      {4688, 0},        // sample size
      {4728, 0},        // sample rate
  };
  for (const auto& w : words) EXPECT_EQ(WordAt(f.bytes, w.at), w.value) << w.at;
  EXPECT_EQ(f.bytes[4722] | f.bytes[4723] << 8, 0) << "channels";
}

}  // namespace

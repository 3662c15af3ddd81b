// Reading recordings back, and what damaged or hostile files do to the
// reader and the converter.
#include "stream/avi_reader.h"

#include <gtest/gtest.h>

#include <random>

extern "C" {
#include <libavutil/log.h>
}

#include "media_helper.h"
#include "record_helper.h"
#include "stream/avi_converter.h"
#include "stream/avi_header.h"

namespace {

MediaFrame Synthetic(size_t size, bool key, uint8_t fill) {
  MediaFrame f;
  f.data.assign(size, fill);
  f.key = key;
  return f;
}

void PutLe32(std::vector<uint8_t>& b, size_t at, uint32_t v) {
  for (int i = 0; i < 4; ++i) b[at + static_cast<size_t>(i)] = static_cast<uint8_t>(v >> (8 * i));
}

using AviReaderTest = RecordingTest;

TEST_F(AviReaderTest, BothHeaderImagesChunksAndIndex) {
  RecordFeed av;
  av.params = AvParams("H264", 1920, 1080, "AAC", 44100);
  av.params.audio.channels = 2;
  for (int i = 0; i < 6; ++i) av.video.push_back(Synthetic(100 + i, i % 3 == 0, 1));
  for (int i = 0; i < 4; ++i) av.audio.push_back(Synthetic(50 + i, false, 2));
  av.audio_ms = 60;
  ASSERT_EQ(RecordFeedTo(av, dir_ / "av.avi"), 6);

  CAviReader r;
  ASSERT_EQ(r.Open(dir_ / "av.avi"), 0) << r.Error();
  EXPECT_EQ(r.Info().header_size, static_cast<size_t>(kAviAvHeaderSize));
  EXPECT_EQ(r.Info().video_codec, kAviVideoH264);
  EXPECT_EQ(r.Info().width, 1920);
  EXPECT_EQ(r.Info().height, 1080);
  EXPECT_EQ(r.Info().rate, 25);
  EXPECT_EQ(r.Info().scale, 1);
  EXPECT_TRUE(r.Info().has_audio);
  EXPECT_EQ(r.Info().audio_codec, kAviAudioAac);
  EXPECT_EQ(r.Info().sample_rate, 44100);
  EXPECT_EQ(r.Info().channels, 2);
  EXPECT_TRUE(r.HasIndex());
  EXPECT_EQ(r.Damage(), "");
  ASSERT_EQ(r.VideoChunks(), 6);
  ASSERT_EQ(r.AudioChunks(), 4);
  // Time order: audio at 0, 60, 120, 180 ms among video at 0, 40, ... 200 ms.
  std::string order;
  std::vector<int> keys;
  std::vector<uint8_t> data;
  for (size_t i = 0; i < r.Chunks().size(); ++i) {
    const AviChunk& c = r.Chunks()[i];
    order += c.video ? 'v' : 'a';
    if (c.video) keys.push_back(c.index_key);
    ASSERT_EQ(r.ReadChunk(i, &data), 0);
    EXPECT_EQ(data, c.video ? av.video[keys.size() - 1].data : av.audio[order.size() - keys.size() - 1].data);
  }
  EXPECT_EQ(order, "avvavavvav");
  EXPECT_EQ(keys, (std::vector<int>{1, 0, 0, 1, 0, 0}));

  RecordFeed vv;
  vv.params = AvParams("MPEG4", 352, 288, "", 0);
  vv.video.push_back(Synthetic(80, true, 3));
  ASSERT_EQ(RecordFeedTo(vv, dir_ / "vv.avi"), 1);
  ASSERT_EQ(r.Open(dir_ / "vv.avi"), 0) << r.Error();
  EXPECT_EQ(r.Info().header_size, static_cast<size_t>(kAviVideoHeaderSize));
  EXPECT_EQ(r.Info().video_codec, kAviVideoMpeg4);
  EXPECT_FALSE(r.Info().has_audio);
  EXPECT_EQ(r.VideoChunks(), 1);
  EXPECT_TRUE(r.HasIndex());
}

// Recordings of earlier versions indexed audio chunks too: their index is
// read as well, and gives the same key marks.
TEST_F(AviReaderTest, IndexOfEveryChunkFromEarlierRecordingsIsRead) {
  RecordFeed av;
  av.params = AvParams("H264", 640, 480, "G711U", 8000);
  for (int i = 0; i < 6; ++i) av.video.push_back(Synthetic(100 + i, i % 3 == 0, 1));
  for (int i = 0; i < 4; ++i) av.audio.push_back(Synthetic(160, false, 2));
  ASSERT_EQ(RecordFeedTo(av, dir_ / "new.avi"), 6);
  RecordedFile f = ReadRecording(dir_ / "new.avi");
  ASSERT_EQ(f.index.size(), 6u);
  // The same file as an earlier version wrote it: every chunk indexed.
  std::vector<uint8_t> old(f.bytes.begin(), f.bytes.end() - static_cast<long>(16 + 32 * 6));
  auto put_word = [&old](uint64_t v) {
    for (int i = 0; i < 8; ++i) old.push_back(static_cast<uint8_t>(v >> (8 * i)));
  };
  put_word(0x31786469);  // "idx1"
  put_word(32 * f.chunks.size());
  size_t video = 0;
  for (const RecordedChunk& c : f.chunks) {
    bool is_video = c.id == "00dc";
    put_word(is_video ? 0x63643030 : 0x62773130);  // "00dc" / "01wb"
    put_word(is_video ? f.index[video++].flags : 16);
    put_word(c.offset);
    put_word(c.data.size());
  }
  ASSERT_TRUE(WriteFileBytes(dir_ / "old.avi", old));
  for (const char* name : {"new.avi", "old.avi"}) {
    CAviReader r;
    ASSERT_EQ(r.Open(dir_ / name), 0) << r.Error();
    EXPECT_TRUE(r.HasIndex()) << name;
    std::vector<int> keys;
    for (const AviChunk& c : r.Chunks()) {
      if (c.video) keys.push_back(c.index_key);
    }
    EXPECT_EQ(keys, (std::vector<int>{1, 0, 0, 1, 0, 0})) << name;
  }
}

TEST_F(AviReaderTest, ScanStopsAtTheFirstDamagedChunk) {
  RecordFeed feed;
  feed.params = AvParams("H264", 640, 480, "", 0);
  for (int i = 0; i < 5; ++i) feed.video.push_back(Synthetic(100, i == 0, 1));
  ASSERT_EQ(RecordFeedTo(feed, dir_ / "v.avi"), 5);
  const std::vector<uint8_t> good = ReadFileBytes(dir_ / "v.avi");
  const size_t third = kAviVideoHeaderSize + 2 * 112;  // head of the third chunk
  struct Case {
    const char* what;
    std::function<void(std::vector<uint8_t>&)> damage;
    int chunks;
    const char* note;
  } cases[] = {
      {"unknown id", [&](std::vector<uint8_t>& b) { b[third] = 'x'; }, 2, "unknown chunk 'x0dc'"},
      {"code not 64-bit", [&](std::vector<uint8_t>& b) { b[third + 5] = 1; }, 2, "unknown chunk"},
      {"audio without audio", [&](std::vector<uint8_t>& b) { memcpy(&b[third], "01wb", 4); }, 2,
       "unknown chunk"},
      {"huge length", [&](std::vector<uint8_t>& b) { PutLe32(b, third + 8, 0xFFFFFFF0u); }, 2,
       "bad chunk length 4294967280"},
      {"zero length", [&](std::vector<uint8_t>& b) { PutLe32(b, third + 8, 0); }, 2,
       "bad chunk length 0"},
      {"length past the end", [&](std::vector<uint8_t>& b) { PutLe32(b, third + 8, 4000); }, 2,
       "past the end"},
      {"index too long", [&](std::vector<uint8_t>& b) { b[b.size() - 5 * 32 - 8] = 0xC0; }, 5,
       "index does not match"},
      {"index entry moved", [&](std::vector<uint8_t>& b) { b[b.size() - 16]++; }, 5,
       "index does not match"},
      {"cut in a chunk head", [&](std::vector<uint8_t>& b) { b.resize(third + 6); }, 2,
       "truncated chunk head"},
  };
  for (const Case& c : cases) {
    std::vector<uint8_t> bad = good;
    c.damage(bad);
    ASSERT_TRUE(WriteFileBytes(dir_ / "bad.avi", bad));
    CAviReader r;
    ASSERT_EQ(r.Open(dir_ / "bad.avi"), 0) << c.what;
    EXPECT_EQ(static_cast<int>(r.Chunks().size()), c.chunks) << c.what;
    EXPECT_NE(r.Damage().find(c.note), std::string::npos) << c.what << ": " << r.Damage();
    EXPECT_FALSE(r.HasIndex()) << c.what;
  }
}

TEST_F(AviReaderTest, HeadersThatAreNotRecordingsAreRefused) {
  RecordFeed feed;
  feed.params = AvParams("H264", 640, 480, "G711U", 8000);
  feed.video.push_back(Synthetic(100, true, 1));
  ASSERT_EQ(RecordFeedTo(feed, dir_ / "ok.avi"), 1);
  const std::vector<uint8_t> good = ReadFileBytes(dir_ / "ok.avi");
  struct Case {
    size_t at;
    uint64_t word;
    const char* error;
  } cases[] = {
      {0, 0x46464952ULL << 8, "no RIFF"},  {112, 3, "stream count"},
      {112, 1, "no movie list"},           {224, 0x34363248ULL << 8, "unknown video handler"},
      {128, 0, "picture size"},            {136, 1ULL << 40, "picture size"},
      {264, 0, "frame rate"},              {264, 5000, "frame rate"},
      {4608, 2, "unknown audio format"},   {4722, 9, "audio format"},
      {4728, 1ULL << 33, "audio format"},  {10288, 0, "movie list"},
  };
  for (const Case& c : cases) {
    std::vector<uint8_t> bad = good;
    if (c.at == 4722) {
      bad[c.at] = static_cast<uint8_t>(c.word);  // 16-bit channel count
      bad[c.at + 1] = 0;
    } else {
      for (int i = 0; i < 8; ++i) bad[c.at + static_cast<size_t>(i)] = static_cast<uint8_t>(c.word >> (8 * i));
    }
    ASSERT_TRUE(WriteFileBytes(dir_ / "bad.avi", bad));
    CAviReader r;
    EXPECT_EQ(r.Open(dir_ / "bad.avi"), -1) << c.at;
    EXPECT_NE(r.Error().find(c.error), std::string::npos) << c.at << ": " << r.Error();
  }
  for (size_t size : {size_t{0}, size_t{100}, size_t{5959}, size_t{10295}}) {
    ASSERT_TRUE(WriteFileBytes(dir_ / "short.avi",
                               std::vector<uint8_t>(good.begin(), good.begin() + static_cast<long>(size))));
    CAviReader r;
    EXPECT_EQ(r.Open(dir_ / "short.avi"), -1) << size;
  }
  CAviReader r;
  EXPECT_EQ(r.Open(dir_.path()), -1);
  EXPECT_NE(r.Error().find("not a regular file"), std::string::npos);
}

// Cuts and random damage over a real recording: the reader and the
// converter either work or fail with a message, and never leave a broken
// output behind (the ASan build checks the memory side).
TEST_F(AviReaderTest, TruncatedAndCorruptedFilesNeverCrashTheConverter) {
  av_log_set_level(AV_LOG_QUIET);
  RecordFeed feed;
  feed.params = AvParams("H264", 320, 240, "G711U", 8000);
  feed.video = DemuxFrames(H264Media(), "h264");
  feed.video.resize(30);
  feed.audio = SplitBytes(ToneMedia("pcm_mulaw"), 160);
  feed.audio.resize(60);
  ASSERT_EQ(RecordFeedTo(feed, dir_ / "src.avi"), 30);
  const std::vector<uint8_t> good = ReadFileBytes(dir_ / "src.avi");
  const RecordedFile parsed = ReadRecording(dir_ / "src.avi");
  ASSERT_EQ(parsed.error, "");

  std::vector<std::vector<uint8_t>> inputs;
  std::vector<size_t> cuts = {1, 8, 200, 4600, 10295, 10296, 10300, good.size() - 1};
  for (const RecordedChunk& c : parsed.chunks) {
    size_t head = parsed.header_size - 8 + c.offset;
    for (size_t at : {head + 1, head + 11, head + 12 + c.data.size() / 2}) cuts.push_back(at);
  }
  for (size_t at : cuts) inputs.emplace_back(good.begin(), good.begin() + static_cast<long>(at));
  std::mt19937 random(20240611);
  for (int i = 0; i < 300; ++i) {
    std::vector<uint8_t> bad = good;
    int flips = 1 + static_cast<int>(random() % 8);
    for (int k = 0; k < flips; ++k) {
      // Half of the damage in the header and the first chunks, where it
      // reaches the most code.
      size_t span = i % 2 == 0 ? 12000 : bad.size();
      bad[random() % span] = static_cast<uint8_t>(random());
    }
    if (i % 5 == 0) PutLe32(bad, parsed.header_size - 8 + parsed.chunks[random() % parsed.chunks.size()].offset + 8,
                            static_cast<uint32_t>(random()));
    inputs.push_back(std::move(bad));
  }

  int converted = 0;
  for (size_t i = 0; i < inputs.size(); ++i) {
    const std::string in = dir_ / "in.avi";
    const std::string out = dir_ / (i % 2 == 0 ? "out.mp4" : "out.avi");
    ASSERT_TRUE(WriteFileBytes(in, inputs[i]));
    CAviReader r;
    if (r.Open(in) == 0) {
      for (const AviChunk& c : r.Chunks()) {
        ASSERT_LE(c.offset + c.size, inputs[i].size()) << "input " << i;
        ASSERT_LE(c.size, kAviMaxChunkBytes);
      }
    } else {
      EXPECT_NE(r.Error(), "");
    }
    CAviConverter converter;
    if (converter.Convert(in, out) == 0) {
      ++converted;
      unlink(out.c_str());
    } else {
      EXPECT_NE(converter.Error(), "") << "input " << i;
      EXPECT_FALSE(FileExists(out)) << "input " << i << ": " << converter.Error();
    }
  }
  // Damage in frame bytes still converts: the test reached the writer.
  EXPECT_GT(converted, 50);
}

}  // namespace

// Recordings of real encoded streams, converted and checked with ffprobe
// and ffmpeg.
#include "stream/avi_converter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "media_helper.h"
#include "record_helper.h"

namespace {

class ConverterTest : public RecordingTest {
 protected:

  // Converts and checks what every converted file must satisfy.
  AviConvertReport Convert(const std::string& in, const std::string& out,
                           const AviConvertOptions& options = AviConvertOptions()) {
    CAviConverter converter(options);
    EXPECT_EQ(converter.Convert(in, out), 0) << converter.Error();
    EXPECT_EQ(DecodeErrors(out), "") << out;
    EXPECT_EQ(CountVideoFrames(out), converter.Report().video_frames) << out;
    return converter.Report();
  }

  RecordFeed H264Feed(const char* audio_codec) {
    RecordFeed feed;
    feed.params = AvParams("H264", 320, 240, audio_codec, 8000);
    feed.video = DemuxFrames(H264Media(), "h264");
    EXPECT_EQ(feed.video.size(), 100u);
    return feed;
  }
};

TEST_F(ConverterTest, H264WithMuLawToAviAndMp4) {
  RecordFeed feed = H264Feed("G711U");
  feed.audio = SplitBytes(ToneMedia("pcm_mulaw"), 160);
  // The recording joins the stream in the middle of its first second:
  // video waits for the key frame at 1 s, audio is taken from 0. The
  // picture and the sound of the converted file must still start together.
  feed.video[0].key = false;
  std::string rec = dir_ / "clip.avi";
  ASSERT_EQ(RecordFeedTo(feed, rec), 75);

  AviConvertReport avi = Convert(rec, dir_ / "out.avi");
  EXPECT_EQ(ProbeStreams(dir_ / "out.avi"), "video:h264,audio:pcm_mulaw");
  EXPECT_EQ(avi.video_frames, 75);
  EXPECT_EQ(avi.audio_in, "pcm_mulaw");
  EXPECT_EQ(avi.skipped_audio, 50);  // 0..980 ms, ahead of the key frame at 1000 ms
  EXPECT_EQ(avi.audio_frames, 150);
  EXPECT_FALSE(avi.recovered);

  // MP4 cannot hold G.711: the sound is encoded to AAC.
  AviConvertReport mp4 = Convert(rec, dir_ / "out.mp4");
  EXPECT_EQ(ProbeStreams(dir_ / "out.mp4"), "video:h264,audio:aac");
  EXPECT_EQ(mp4.video_frames, 75);
  EXPECT_EQ(mp4.audio_out, "aac");
  EXPECT_NEAR(StreamSeconds(dir_ / "out.mp4", 0), 3.0, 0.05);
  EXPECT_NEAR(StreamSeconds(dir_ / "out.mp4", 1), 3.0, 0.15);
}

TEST_F(ConverterTest, AacStoredRawOrAsAdts) {
  std::vector<MediaFrame> adts =
      DemuxFrames(ToneMedia("aac"), "aac");
  ASSERT_GT(adts.size(), 30u);

  // Raw access units as an RTSP source hands them, their config from the
  // stream parameters.
  RecordFeed raw = H264Feed("AAC");
  raw.audio = StripAdts(adts);
  raw.audio_ms = 128;  // 1024 samples at 8 kHz
  std::string rec = dir_ / "raw.avi";
  ASSERT_EQ(RecordFeedTo(raw, rec), 100);
  AviConvertOptions options;
  options.aac_config = {0x15, 0x88};  // AAC-LC, 8 kHz, mono
  AviConvertReport r = Convert(rec, dir_ / "raw.mp4", options);
  EXPECT_EQ(ProbeStreams(dir_ / "raw.mp4"), "video:h264,audio:aac");
  EXPECT_EQ(r.audio_in, "aac");
  EXPECT_EQ(r.audio_frames, static_cast<int>(adts.size()));
  // Without the config the header's rate and channels describe AAC-LC.
  Convert(rec, dir_ / "raw-out.avi");
  EXPECT_EQ(ProbeStreams(dir_ / "raw-out.avi"), "video:h264,audio:aac");

  RecordFeed with_headers = raw;
  with_headers.audio = adts;
  rec = dir_ / "adts.avi";
  ASSERT_EQ(RecordFeedTo(with_headers, rec), 100);
  r = Convert(rec, dir_ / "adts.mp4");
  EXPECT_EQ(r.audio_in, "aac (ADTS)");
  EXPECT_EQ(ProbeStreams(dir_ / "adts.mp4"), "video:h264,audio:aac");
  EXPECT_EQ(r.audio_frames, static_cast<int>(adts.size()));
}

TEST_F(ConverterTest, Mpeg4WithALawToldFromTheSamples) {
  RecordFeed feed;
  feed.params = AvParams("MPEG4", 352, 288, "G711A", 8000);
  feed.video = DemuxFrames(Mpeg4Media(), "m4v");
  ASSERT_EQ(feed.video.size(), 100u);
  // The VOL header travels in the parameters; the recorder writes it ahead
  // of the first frame.
  std::vector<uint8_t>& first = feed.video[0].data;
  size_t vop = 0;
  while (vop + 4 < first.size() && !(first[vop] == 0 && first[vop + 1] == 0 && first[vop + 2] == 1 && first[vop + 3] == 0xB6)) ++vop;
  ASSERT_LT(vop, sizeof(feed.params.video.config));
  memcpy(feed.params.video.config, first.data(), vop);
  feed.params.video.config_len = static_cast<int>(vop);
  first.erase(first.begin(), first.begin() + static_cast<long>(vop));
  feed.audio = SplitBytes(ToneMedia("pcm_alaw"), 320);
  feed.audio_ms = 40;
  std::string rec = dir_ / "m4.avi";
  ASSERT_EQ(RecordFeedTo(feed, rec), 100);

  AviConvertReport r = Convert(rec, dir_ / "m4.avi.avi");
  EXPECT_EQ(ProbeStreams(dir_ / "m4.avi.avi"), "video:mpeg4,audio:pcm_alaw");
  EXPECT_EQ(r.video_frames, 100);
  r = Convert(rec, dir_ / "m4.mp4");
  EXPECT_EQ(ProbeStreams(dir_ / "m4.mp4"), "video:mpeg4,audio:aac");
  EXPECT_EQ(r.audio_in, "pcm_alaw");
}

// What a recording does not know of its stream: started before the stream's
// parameters came (video marked MPEG-4 704x576, whatever it holds), or with
// audio whose rate and channels were not told. The frames tell the rest.
TEST_F(ConverterTest, RecordingsThatDidNotKnowTheirStreamConvert) {
  RecordFeed unknown = H264Feed("");
  memset(&unknown.params, 0, sizeof(unknown.params));
  std::string rec = dir_ / "unknown.avi";
  ASSERT_EQ(RecordFeedTo(unknown, rec), 100);
  EXPECT_EQ(CodeAt(ReadFileBytes(rec), 224), "XVID");
  AviConvertReport r = Convert(rec, dir_ / "unknown.mp4");
  EXPECT_EQ(r.video_codec, "h264");
  EXPECT_EQ(r.video_frames, 100);
  EXPECT_EQ(ProbeStreams(dir_ / "unknown.mp4"), "video:h264");

  RecordFeed untold = H264Feed("G711U");
  untold.params.audio.sample_rate = 0;
  untold.params.audio.channels = 0;
  untold.audio = SplitBytes(ToneMedia("pcm_mulaw"), 160);
  rec = dir_ / "untold.avi";
  ASSERT_EQ(RecordFeedTo(untold, rec), 100);
  r = Convert(rec, dir_ / "untold.mp4");
  EXPECT_EQ(r.audio_in, "pcm_mulaw");
  EXPECT_NEAR(StreamSeconds(dir_ / "untold.mp4", 1), 4.0, 0.15) << "8 kHz, one channel";
}

TEST_F(ConverterTest, TmpOfAKilledRecordingIsRecovered) {
  // Killed once every frame was taken from the rings: what had reached the
  // file by then is in the .tmp, without index or final sizes.
  RecordFeed feed;
  feed.params = AvParams("H264", 320, 240, "", 0);
  feed.video = DemuxFrames(NoisyH264Media(), "h264");
  ASSERT_EQ(feed.video.size(), 100u);
  std::string rec = dir_ / "killed.avi";
  ASSERT_TRUE(RecordFeedAndKill(feed, rec));
  ASSERT_FALSE(FileExists(rec));
  ASSERT_TRUE(FileExists(rec + ".tmp"));

  AviConvertReport r = Convert(rec + ".tmp", dir_ / "killed.mp4");
  EXPECT_TRUE(r.recovered);
  EXPECT_GT(r.video_frames, 20);
  EXPECT_LE(r.video_frames, 100);
  EXPECT_EQ(ProbeStreams(dir_ / "killed.mp4"), "video:h264");
}

TEST_F(ConverterTest, CopyCutInsideAChunkKeepsTheWholeChunks) {
  RecordFeed feed = H264Feed("G711U");
  feed.audio = SplitBytes(ToneMedia("pcm_mulaw"), 160);
  std::string rec = dir_ / "whole.avi";
  ASSERT_EQ(RecordFeedTo(feed, rec), 100);
  RecordedFile f = ReadRecording(rec);
  ASSERT_EQ(f.error, "");

  // Cut in the middle of the 60th video chunk.
  int video = 0;
  size_t cut = 0;
  for (const RecordedChunk& c : f.chunks) {
    if (c.id == "00dc" && ++video == 60) {
      cut = f.header_size - 8 + c.offset + 12 + c.data.size() / 2;
      break;
    }
  }
  std::vector<uint8_t> part(f.bytes.begin(), f.bytes.begin() + static_cast<long>(cut));
  ASSERT_TRUE(WriteFileBytes(dir_ / "cut.avi.tmp", part));
  AviConvertReport r = Convert(dir_ / "cut.avi.tmp", dir_ / "cut.avi");
  EXPECT_TRUE(r.recovered);
  EXPECT_EQ(r.video_frames, 59);
  EXPECT_NE(r.damage.find("past the end"), std::string::npos) << r.damage;
  EXPECT_EQ(ProbeStreams(dir_ / "cut.avi"), "video:h264,audio:pcm_mulaw");
}

// A recording stopped before its first key frame reached the recorder (a
// stop right after the start, a camera down meanwhile) is closed as usual
// with no video: its header, the audio that came, an empty index. The
// reader takes it as whole, the converter writes its audio alone and
// refuses one that holds nothing, leaving no output behind.
TEST_F(ConverterTest, RecordingStoppedBeforeItsFirstKeyFrameHoldsNoVideo) {
  RecordFeed feed = H264Feed("G711U");
  size_t next_key = 1;
  while (next_key < feed.video.size() && !feed.video[next_key].key) ++next_key;
  ASSERT_LT(next_key, feed.video.size());
  ASSERT_TRUE(feed.video[0].key);
  feed.video.assign(feed.video.begin() + 1, feed.video.begin() + static_cast<long>(next_key));
  feed.audio = SplitBytes(ToneMedia("pcm_mulaw"), 160);
  feed.audio.resize(20);
  std::string rec = dir_ / "audio-only.avi";
  ASSERT_EQ(RecordFeedTo(feed, rec), 0);
  RecordedFile f = ReadRecording(rec);
  EXPECT_EQ(f.error, "");
  ExpectSelfConsistent(f);
  EXPECT_EQ(f.Count("00dc"), 0);
  EXPECT_EQ(f.Count("01wb"), 20);
  CAviReader reader;
  ASSERT_EQ(reader.Open(rec), 0) << reader.Error();
  EXPECT_TRUE(reader.HasIndex());
  EXPECT_EQ(reader.Damage(), "");
  EXPECT_EQ(reader.AudioChunks(), 20);
  AviConvertReport r = Convert(rec, dir_ / "audio-only.out.avi");
  EXPECT_EQ(r.video_frames, 0);
  EXPECT_EQ(r.audio_frames, 20);
  EXPECT_EQ(ProbeStreams(dir_ / "audio-only.out.avi"), "audio:pcm_mulaw");

  feed.audio.clear();
  rec = dir_ / "empty.avi";
  ASSERT_EQ(RecordFeedTo(feed, rec), 0);
  ASSERT_EQ(reader.Open(rec), 0) << reader.Error();
  EXPECT_TRUE(reader.HasIndex());
  EXPECT_EQ(reader.VideoChunks() + reader.AudioChunks(), 0);
  CAviConverter converter;
  EXPECT_EQ(converter.Convert(rec, dir_ / "empty.mkv"), -1);
  EXPECT_NE(converter.Error().find("no frames"), std::string::npos) << converter.Error();
  EXPECT_FALSE(FileExists(dir_ / "empty.mkv"));
}

TEST_F(ConverterTest, CommandLinePrintsWhatItWroteAndFailsCleanly) {
  RecordFeed feed = H264Feed("G711U");
  feed.audio = SplitBytes(ToneMedia("pcm_mulaw"), 160);
  std::string rec = dir_ / "rec.avi";
  ASSERT_EQ(RecordFeedTo(feed, rec), 100);
  std::string cli = std::string(QUORVEL_BINARY_DIR) + "/quorvel";
  std::string out;
  ASSERT_EQ(RunCommand(cli + " convert " + rec + " " + (dir_ / "cli.mp4"), &out), 0) << out;
  EXPECT_NE(out.find("video: h264 320x240 at 25 fps, 100 frames"), std::string::npos) << out;
  EXPECT_NE(out.find("audio: pcm_mulaw -> aac, 200 frames"), std::string::npos) << out;
  EXPECT_EQ(RunCommand(cli + " convert " + (dir_ / "none.avi") + " " + (dir_ / "x.mp4"), &out), 1);
  EXPECT_NE(out.find("cannot open"), std::string::npos) << out;
  EXPECT_EQ(RunCommand(cli + " convert " + rec + " " + (dir_ / "x.webm"), &out), 1);
  EXPECT_NE(out.find("unsupported output type"), std::string::npos) << out;
  EXPECT_FALSE(FileExists(dir_ / "x.mp4"));
  EXPECT_EQ(RunCommand(cli + " convert " + rec + " " + rec, &out), 1);  // onto itself
  EXPECT_NE(out.find("overwrite the input"), std::string::npos) << out;
  EXPECT_TRUE(FileExists(rec));
  EXPECT_EQ(RunCommand(cli + " convert " + rec, &out), 2);
  EXPECT_EQ(RunCommand(cli + " frobnicate", &out), 2);
  EXPECT_EQ(RunCommand(cli + " help", &out), 0);
  EXPECT_NE(out.find("convert"), std::string::npos);
}

}  // namespace

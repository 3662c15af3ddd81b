// Writes starting inputs for the fuzz targets into <folder>/<target>/: what
// the emulated camera sends (envelopes, alarm reports, search answers, its
// configuration document), the configuration and time-zone files of the
// tests, and small recordings in the recorder's layout (of a real encoded
// stream when one is given). `make fuzz` runs it
// ahead of the targets; the small hand-picked inputs of fuzz/corpus/ come
// on top.
//
//   fuzz_seeds <folder> [source folder] [H.264 elementary stream]
#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "emu/config_store.h"
#include "emu/envelope.h"
#include "emu/recordings.h"
#include "emu/search_reply.h"
#include "emu/system_replies.h"
#include "base/base64.h"
#include "link/packet_framing.h"
#include "stream/avi_header.h"

namespace {

std::string out_dir;
int written = 0;

void Put(const std::string& target, const std::string& name, const std::string& bytes) {
  std::string dir = out_dir + "/" + target;
  mkdir(out_dir.c_str(), 0755);
  mkdir(dir.c_str(), 0755);
  std::ofstream f(dir + "/" + name, std::ios::binary);
  f.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  ++written;
}

std::string ReadAll(const std::string& path) {
  std::ifstream f(path, std::ios::binary);
  std::stringstream s;
  s << f.rdbuf();
  return s.str();
}

std::string Le32(uint32_t v) {
  std::string s(4, '\0');
  for (int i = 0; i < 4; ++i) s[i] = static_cast<char>(v >> (8 * i));
  return s;
}

std::string Framed(const std::string& payload) {
  return Le32(CPacketFraming::kPlainFlag) + Le32(static_cast<uint32_t>(payload.size())) + payload;
}

struct Frame {
  std::string bytes;
  bool key;
};

// Made-up frames shaped like H.264 (SPS, PPS and a slice), for when no
// encoded stream is at hand.
std::vector<Frame> ShapedFrames() {
  const std::string sps("\x00\x00\x00\x01\x67\x42\xc0\x0a\xd9\x1e\x84\x00\x00\x03\x00\x04"
                        "\x00\x00\x03\x00\xc8\x3c\x48\x99\x20", 25);
  const std::string pps("\x00\x00\x00\x01\x68\xcb\x83\xcb\x20", 9);
  return {{sps + pps + std::string("\x00\x00\x00\x01\x65\x88\x84\x00\x33\xff", 10), true},
          {std::string("\x00\x00\x00\x01\x41\x9a\x02\x04\x01", 9), false},
          {std::string("\x00\x00\x00\x01\x41\x9a\x04\x08\x02", 9), false}};
}

// The access units of an Annex-B stream (one slice a picture), as a stream
// source delivers them: every NAL unit up to and including a slice.
std::vector<Frame> SplitAnnexB(const std::string& s) {
  std::vector<size_t> starts;
  for (size_t i = 0; i + 3 <= s.size(); ++i) {
    if (s[i] == 0 && s[i + 1] == 0 && s[i + 2] == 1) {
      starts.push_back(i > 0 && s[i - 1] == 0 ? i - 1 : i);
      i += 2;
    }
  }
  std::vector<Frame> frames;
  Frame current{"", false};
  for (size_t n = 0; n < starts.size(); ++n) {
    size_t end = n + 1 < starts.size() ? starts[n + 1] : s.size();
    std::string nal = s.substr(starts[n], end - starts[n]);
    size_t head = nal[2] == 1 ? 3 : 4;
    int type = head < nal.size() ? nal[head] & 0x1f : 0;
    current.bytes += nal;
    if (type == 5) current.key = true;
    if (type == 1 || type == 5) {
      frames.push_back(current);
      current = Frame{"", false};
    }
  }
  return frames;
}

// A recording in the recorder's layout: the header image, a chunk per
// frame (and a G.711 chunk after each with audio) and, when closed, the
// index of the video chunks.
std::string Recording(const std::vector<Frame>& frames, bool audio, bool closed) {
  std::vector<unsigned char> head(kAviAvHeaderSize);
  int n = audio ? init_avi_header(head.data(), kAviAvHeaderSize, kAviVideoH264, kAviAudioG711,
                                  64, 48, 64000, 5, 8000, 16, 1)
                : init_avi_header_video(head.data(), kAviAvHeaderSize, kAviVideoH264, 64, 48,
                                        64000, 5);
  std::string file(reinterpret_cast<const char*>(head.data()), static_cast<size_t>(n));
  std::string index;
  uint64_t movi = 8;  // index offsets count from the "movi" word
  const std::string pad(4, '\0');
  for (const Frame& f : frames) {
    uint32_t size = static_cast<uint32_t>(f.bytes.size());
    index += "00dc" + pad + Le32(f.key ? 16 : 0) + pad + Le32(static_cast<uint32_t>(movi)) + pad +
             Le32(size) + pad;
    file += "00dc" + pad + Le32(size) + f.bytes;
    movi += 12 + size;
    if (audio) {
      file += "01wb" + pad + Le32(1600) + std::string(1600, '\xd5');
      movi += 12 + 1600;
    }
  }
  if (closed) {
    file += "idx1" + pad + Le32(static_cast<uint32_t>(index.size())) + pad + index;
  }
  return file;
}

// A replay media packet: the 20-byte header and the data.
std::string ReplayPacket(uint16_t sequence, int type, bool key, int kind, uint32_t index,
                         const std::string& data) {
  std::string h = Le32(1000 + index) + Le32(1000 + index);
  h += std::string(1, static_cast<char>(sequence)) + std::string(1, static_cast<char>(sequence >> 8));
  h += std::string(1, static_cast<char>(data.size())) +
       std::string(1, static_cast<char>(data.size() >> 8));
  h += std::string(1, static_cast<char>(type)) + std::string(1, key ? 1 : 0) +
       std::string(1, static_cast<char>(kind)) + std::string(1, '\0') + Le32(index);
  return h + data;
}

// Packets as the replay target takes them: each behind its 16-bit length.
std::string PacketRun(const std::vector<std::string>& packets) {
  std::string run;
  for (const std::string& p : packets) {
    run += std::string(1, static_cast<char>(p.size())) + std::string(1, static_cast<char>(p.size() >> 8)) + p;
  }
  return run;
}

std::string Base64(const std::string& bytes) {
  CBase64 codec;
  std::string out(static_cast<size_t>(codec.GetOutSize(static_cast<int>(bytes.size()), true)) + 1, '\0');
  int n = codec.Encode(bytes.data(), &out[0], static_cast<int>(bytes.size()));
  out.resize(static_cast<size_t>(n));
  return out;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    fprintf(stderr, "usage: fuzz_seeds <folder> [source folder] [stream.h264]\n");
    return 2;
  }
  out_dir = argv[1];
  std::string source = argc > 2 ? argv[2] : ".";
  using qvemu::MakeEnvelope;

  // Control-link messages, as a camera sends them.
  qvemu::AlarmSpec alarm;
  alarm.code = 23;
  alarm.data = "/snap/1.jpg";
  qvemu::AlarmSpec motion;
  motion.code = 3;
  motion.level = 2;
  const std::vector<std::string> messages = {
      MakeEnvelope("USER_AUTH_MESSAGE", "CMD_USER_AUTH", "0",
                   "<USER_AUTH_RESPONSE Sessionid=\"emu-session-1\" />"),
      MakeEnvelope("AUXPTZ_HEARTBEAT_MESSAGE", "0", "0", ""),
      MakeEnvelope("ALARM_REPORT_MESSAGE", "CMD_REPORT_ALARM", "0",
                   qvemu::AlarmBody({alarm, motion})),
      MakeEnvelope("SYSTEM_CONTROL_MESSAGE", "1020", "0", qvemu::AbilityText(true)),
      MakeEnvelope("SYSTEM_CONTROL_MESSAGE", "1034", "0",
                   "<RESPONSE_PARAM UserDevData=\"" + qvemu::HexEncode("user data 1") + "\" />"),
      MakeEnvelope("SYSTEM_CONTROL_MESSAGE", "1022", "0",
                   "<RESPONSE_PARAM Port=\"6001\" Type=\"1\" FileLength=\"4096\" />"),
      MakeEnvelope("REVERSE_AUDIO_MESSAGE", "CMD_RA_START", "0",
                   "<RA_START_RESPONSE AudioCodec=\"G711\" Samplerate=\"8000\" "
                   "BitsPerSample=\"16\" Channels=\"1\" Port=\"7000\" ConnectionType=\"1\" />"),
      MakeEnvelope("MEDIA_DATA_MESSAGE", "2", "0",
                   "<POS StartPos=\"400\" DataLen=\"16\" />") + std::string(4, '\0') +
          std::string(16, 'x'),
      MakeEnvelope("SYSTEM_CONTROL_MESSAGE", "1048", "0", qvemu::SystemTimeBody(0, "8")),
  };
  std::string stream;
  for (size_t i = 0; i < messages.size(); ++i) {
    const std::string& m = messages[i];
    std::string name = "m" + std::to_string(i);
    Put("message_header", name, m);
    Put("frame_receive", name, Framed(m));
    // Lost bytes ahead of a frame, a refused length, then the frame.
    stream += std::string("\x58\x91junk", 6) + Framed(m);
  }
  stream += Le32(CPacketFraming::kPlainFlag) + Le32(0) + Le32(CPacketFraming::kEncryptedFlag) +
            Le32(0xFFFFFFF0u) + Framed(messages[1]);
  Put("frame_receive", "stream", stream);
  Put("alarm_list", "report", messages[2]);
  Put("ability_list", "list", qvemu::AbilityText(true));
  Put("user_data", "reply", "<RESPONSE_PARAM UserDevData=\"41424g3\" />");
  Put("talk_reply", "start", messages[6]);
  Put("file_port", "reply", "<RESPONSE_PARAM Port=\"6001\" Type=\"1\" FileLength=\"4096\" />");
  Put("live_stream", "param",
      MakeEnvelope("LIVE_STREAM_MESSAGE", "1", "0",
                   "<TRANS_PARAM StreamID=\"1\" VideoStream=\"0\" AudioEnable=\"1\" "
                   "Multicast=\"1\" MulticastAddress=\"239.1.2.3\" VideoPort=\"5000\" "
                   "AudioPort=\"5002\" UseTcp=\"0\"/><VIDEO_PARAM Encoder=\"H264\" "
                   "Width=\"1920\" Height=\"1080\" Framerate=\"25\" Bitrate=\"4096\" "
                   "Config=\"0a0B\"/><AUDIO_PARAM Encoder=\"G711\" SampleRate=\"8000\" "
                   "SampleWidth=\"16\" Channels=\"1\" Bitrate=\"64\"/>"));

  // Search answers of two cameras (one in the other root), one datagram
  // each.
  const std::string& document = qvemu::ConfigStore::DefaultDocument();
  std::string settings = qvemu::ReplySettings(document);
  qvemu::DiscoveryIdentity one, two;
  two.serial = "QVEMU-0002";
  two.p2p_id = "P2P-2";
  std::string a = qvemu::SearchReplyText("XML_BRELLWICK", one, settings, 10);
  std::string b = qvemu::SearchReplyText("XML_VEXORA", two, settings, 20);
  Put("discovery_reply", "one", a);
  Put("discovery_reply", "two", a + "\n--\n" + b + "\n--\n" + a);

  // Configuration: the emulator's document and the tests' full one.
  Put("config_document", "emulator", document);
  std::string full = ReadAll(source + "/tests/config/data/full_config.xml");
  if (!full.empty()) Put("config_document", "full", full);
  // Each section reader (picked by the first byte) on the full document.
  const std::string& sections = full.empty() ? document : full;
  for (int i = 0; i < 64; ++i) {
    Put("config_readers", "reader" + std::to_string(i), std::string(1, static_cast<char>(i)) + sections);
  }
  Put("time_zone", "table", ReadAll(source + "/tests/config/data/qmr_tz.xml"));

  // Recordings: closed and left open, video only and with audio, of an
  // encoded stream when one is given.
  std::vector<Frame> frames = ShapedFrames();
  if (argc > 3) {
    std::vector<Frame> encoded = SplitAnnexB(ReadAll(argv[3]));
    if (!encoded.empty()) frames = encoded;
  }
  Put("avi_reader", "video", Recording(frames, false, true));
  Put("avi_reader", "av_open", Recording(frames, true, false));
  Put("avi_convert", "video", Recording(frames, false, true));
  Put("avi_convert", "av", Recording(frames, true, true));

  // Replay: the start answer with the emulator's parameter blocks, and
  // media packets of whole frames and of a frame in three fragments.
  Put("replay_start", "start",
      "<RESPONSE_PARAM VideoSeconds=\"60\" VideoParam=\"" +
          Base64(qvemu::RecordingStore::VideoParamBlock()) + "\" AudioParam=\"" +
          Base64(qvemu::RecordingStore::AudioParamBlock()) + "\" FileName=\"rec-1.avi\" />");
  std::vector<std::string> packets;
  uint16_t sequence = 65533;  // runs over the 16-bit wrap
  uint32_t index = 0;
  for (const Frame& f : frames) {
    if (f.bytes.size() < 3) continue;
    size_t third = f.bytes.size() / 3;
    packets.push_back(ReplayPacket(sequence++, 1, f.key, 0, index, f.bytes.substr(0, third)));
    packets.push_back(ReplayPacket(sequence++, 0, f.key, 0, index, f.bytes.substr(third, third)));
    packets.push_back(ReplayPacket(sequence++, 16, f.key, 0, index, f.bytes.substr(2 * third)));
    ++index;
    packets.push_back(ReplayPacket(sequence++, 17, false, 1, index++, std::string(160, '\xd5')));
  }
  Put("replay_packets", "frames", PacketRun(packets));

  printf("fuzz_seeds: %d inputs in %s\n", written, out_dir.c_str());
  return 0;
}

#include "emu/hostile.h"

#include <algorithm>
#include <cstring>

#include "emu/data_channel.h"
#include "emu/envelope.h"
#include "emu/frame_io.h"

namespace qvemu {
namespace {

// Element and attribute names the host's readers look for, so that hostile
// values reach the readers instead of being skipped as unknown.
const char* const kNames[] = {
    "ALARM_INFO", "ALARM_ITEM", "ALARM_TIME", "Alarm_code", "Alarm_data", "Alarm_flag",
    "Alarm_level", "Year", "Month", "Day", "WDay", "Hour", "Minute", "Second",
    "USER_AUTH_RESPONSE", "Sessionid", "RA_START_RESPONSE", "AUDIO_PARAM", "SampleRate",
    "Channels", "BitsPerSample", "AudioCodec", "TRANS_PARAM", "Port", "Type", "FileLength",
    "POS", "StartPos", "DataLen", "VIDEO_PARAM", "Width", "Height", "Framerate", "Bitrate",
    "MediaStreamConfig", "VideoStream", "StreamID", "RTPOverRTSP", "IPC_SERIALNUMBER",
    "DEVICE_TYPE", "LANConfig", "IPAddress", "Netmask", "Gateway", "MacAddress", "WEBPort",
    "VideoPort", "PTZPort", "AudioPort", "UserDevData", "KeyValue", "ABILITY", "front_replay",
    "FileName", "FilePath", "Config", "Item", "x",
};

const char* const kValues[] = {
    "", "0", "-1", "1", "2147483647", "2147483648", "-2147483648", "4294967296",
    "99999999999999999999999999", "0x7fffffff", "1e308", "NaN", "-0", " 12 ", "abc",
    "&amp;&lt;&gt;&quot;", "&#0;", "&unknown;", "%s%s%s%n", "../../../../etc/passwd",
    "\xff\xfe\xfd", "\xc3\x28", "\xa1\xa1\xa1", "255.255.255.255", "999.1.1.1",
    "00:00:00:00:00:00", "2024-13-45", "-86400",
};

template <size_t N>
const char* Pick(HostileDice* dice, const char* const (&list)[N]) {
  return list[dice->Below(N)];
}

std::string Value(HostileDice* dice) {
  switch (dice->Below(6)) {
    case 0: return std::string(static_cast<size_t>(1 + dice->Below(9000)), 'A');
    case 1: return std::to_string(static_cast<int64_t>(dice->Next()));
    case 2: return dice->Bytes(static_cast<size_t>(dice->Below(64)));
    default: return Pick(dice, kValues);
  }
}

void Element(HostileDice* dice, int depth, size_t budget, std::string* out) {
  std::string name = dice->Percent(10) ? dice->Bytes(1 + dice->Below(8)) : Pick(dice, kNames);
  *out += "<" + name;
  for (uint64_t n = dice->Below(5); n > 0; --n) {
    *out += std::string(" ") + Pick(dice, kNames) + "=\"" + Value(dice) + "\"";
  }
  switch (dice->Below(12)) {
    case 0: return;                          // never closed
    case 1: *out += "/>"; return;
    case 2: *out += ">"; return;             // opened, never closed
    default: *out += ">"; break;
  }
  if (depth < 4) {
    for (uint64_t n = dice->Below(6); n > 0 && out->size() < budget; --n) {
      if (dice->Percent(30)) {
        *out += Value(dice);
      } else {
        Element(dice, depth + 1, budget, out);
      }
    }
  }
  // Closed by its own name, another name, or not at all.
  if (dice->Percent(85)) {
    *out += "</" + name + ">";
  } else if (dice->Percent(50)) {
    *out += std::string("</") + Pick(dice, kNames) + ">";
  }
}

std::string Le32(uint32_t v) {
  std::string s(4, '\0');
  for (int i = 0; i < 4; ++i) s[i] = static_cast<char>(v >> (8 * i));
  return s;
}

std::string Flip(HostileDice* dice, std::string bytes, size_t count) {
  for (size_t i = 0; i < count && !bytes.empty(); ++i) {
    bytes[dice->Below(bytes.size())] ^= static_cast<char>(1 + dice->Below(255));
  }
  return bytes;
}

}  // namespace

uint64_t HostileDice::Next() {
  uint64_t z = (state_ += 0x9e3779b97f4a7c15ULL);
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
  z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
  return z ^ (z >> 31);
}

std::string HostileDice::Bytes(size_t n) {
  std::string s(n, '\0');
  for (size_t i = 0; i < n; ++i) s[i] = static_cast<char>(Next());
  return s;
}

HostileDice DiceFor(uint64_t seed, const char* channel, uint64_t number) {
  uint64_t h = 1469598103934665603ULL;  // FNV-1a over the channel name
  for (const char* c = channel; *c; ++c) h = (h ^ static_cast<unsigned char>(*c)) * 1099511628211ULL;
  HostileDice mix(seed ^ h);
  HostileDice dice(mix.Next() ^ (number * 0x9e3779b97f4a7c15ULL));
  dice.Next();
  return dice;
}

std::string HostileXml(HostileDice* dice, bool large) {
  size_t budget = large ? 300000 : 4000;
  std::string out;
  if (dice->Percent(30)) out += "<?xml version=\"1.0\" encoding=\"GB2312\" ?>\n";
  do {
    Element(dice, 0, budget, &out);
  } while (out.size() < budget && dice->Percent(large ? 97 : 20));
  return out;
}

std::string HostileReply(HostileDice* dice, const std::string& type, const std::string& code,
                         const std::string& flag, const std::string& body, bool* close_after) {
  *close_after = false;
  std::string frame = EncodeFrame(MakeEnvelope(type, code, flag, body));
  if (dice->Percent(50)) return frame;
  std::string payload = frame.substr(8);
  switch (dice->Below(14)) {
    case 0:  // garbage ahead, with a stray flag byte pattern now and then
      return dice->Bytes(static_cast<size_t>(dice->Below(300))) +
             (dice->Percent(50) ? std::string("\x58\x91\x58\x51", 4) : "") + frame;
    case 1:  // the length promises more than comes
      return Le32(kPlainFlag) + Le32(static_cast<uint32_t>(payload.size() + 1 + dice->Below(5000))) +
             payload;
    case 2: {  // the length promises less; the rest follows as stray bytes
      uint32_t n = static_cast<uint32_t>(dice->Below(payload.size()) + 1);
      return Le32(kPlainFlag) + Le32(n) + payload;
    }
    case 3: {  // an unusable length
      const uint32_t lengths[] = {0, 0xffffffffu, 0x80000000u, 0x7fffffffu,
                                  static_cast<uint32_t>(kMaxPayload) + 1};
      return Le32(kPlainFlag) + Le32(lengths[dice->Below(5)]) + frame;
    }
    case 4:  // a hostile body in the right envelope
      return EncodeFrame(MakeEnvelope(type, code, flag, HostileXml(dice)));
    case 5:  // the envelope cut short, the length telling the truth
      return EncodeFrame(payload.substr(0, static_cast<size_t>(dice->Below(payload.size()))));
    case 6: {  // an absurd flag
      const char* flags[] = {"-2147483649", "2147483648", "abc", "", "-9999", "0x0", "1e9"};
      return EncodeFrame(MakeEnvelope(type, code, flags[dice->Below(7)], body));
    }
    case 7:  // binary payload under a good header
      return EncodeFrame(dice->Bytes(1 + dice->Below(2000)));
    case 8:  // random bytes as an encrypted frame
      return EncodeFrame(dice->Bytes(1 + dice->Below(2000)), kEncryptedFlag);
    case 9:  // said twice
      return frame + frame;
    case 10:  // not answered
      return "";
    case 11:  // half a frame, then the link drops
      *close_after = true;
      return frame.substr(0, static_cast<size_t>(dice->Below(frame.size())));
    case 12:  // a very large body
      return EncodeFrame(MakeEnvelope(type, code, flag, HostileXml(dice, true)));
    default:  // flipped bytes inside the payload
      return frame.substr(0, 8) + Flip(dice, payload, 1 + dice->Below(8));
  }
}

std::string HostileUnsolicited(HostileDice* dice) {
  if (!dice->Percent(15)) return "";
  switch (dice->Below(4)) {
    case 0:
      return EncodeFrame(MakeEnvelope("ALARM_REPORT_MESSAGE", "CMD_REPORT_ALARM", "0",
                                      HostileXml(dice)));
    case 1: {
      const char* types[] = {"USER_AUTH_MESSAGE", "SYSTEM_CONTROL_MESSAGE",
                             "REVERSE_AUDIO_MESSAGE", "MEDIA_DATA_MESSAGE",
                             "SYSTEM_CONFIG_GET_MESSAGE", "PTZ_CONTROL_MESSAGE"};
      return EncodeFrame(MakeEnvelope(types[dice->Below(6)], std::to_string(dice->Below(2000)),
                                      std::to_string(static_cast<int>(dice->Below(5)) - 2),
                                      HostileXml(dice)));
    }
    case 2:
      return dice->Bytes(1 + dice->Below(500));
    default:
      return Le32(kPlainFlag) + Le32(static_cast<uint32_t>(dice->Next()));
  }
}

std::string HostileDatagram(HostileDice* dice, const std::string& text) {
  if (dice->Percent(40)) return text;
  switch (dice->Below(6)) {
    case 0: return text.substr(0, static_cast<size_t>(dice->Below(text.size() + 1)));
    case 1: return Flip(dice, text, 1 + dice->Below(16));
    case 2: return HostileXml(dice);
    case 3: return dice->Bytes(static_cast<size_t>(dice->Below(1500)));
    case 4: {  // swollen to the largest datagram
      std::string big = text;
      big.insert(big.size() / 2, std::string(60000, 'Z'));
      return big;
    }
    default: {
      std::string other = text;
      size_t at = other.find('>');
      if (at != std::string::npos) other.insert(at, " IPAddress=\"" + Value(dice) + "\"");
      return other;
    }
  }
}

std::string HostileFile(HostileDice* dice, const std::string& bytes, int* fault_kind,
                        long* fault_value) {
  *fault_kind = DataChannelFault::kNone;
  *fault_value = 0;
  if (dice->Percent(50)) return bytes;
  long size = static_cast<long>(bytes.size());
  switch (dice->Below(5)) {
    case 0:
      *fault_kind = DataChannelFault::kWrongLength;
      *fault_value = dice->Percent(50) ? -static_cast<long>(dice->Below(size + 1))
                                       : static_cast<long>(dice->Below(100000));
      return bytes;
    case 1:
      *fault_kind = DataChannelFault::kCloseEarly;
      *fault_value = static_cast<long>(dice->Below(size + 1));
      return bytes;
    case 2:
      *fault_kind = DataChannelFault::kWrongFlag;
      return bytes;
    case 3:
      *fault_kind = DataChannelFault::kStall;
      *fault_value = static_cast<long>(dice->Below(size + 1));
      return bytes;
    default:
      return Flip(dice, bytes, 1 + dice->Below(32));
  }
}

namespace {

constexpr size_t kMediaHeader = 20;
constexpr int kFirstFragment = 1, kMiddleFragment = 0, kLastFragment = 16;

void PutLe(std::string* bytes, size_t at, uint64_t v, int width) {
  for (int i = 0; i < width && at + i < bytes->size(); ++i) {
    (*bytes)[at + i] = static_cast<char>(v >> (8 * i));
  }
}

uint32_t GetLe(const std::string& bytes, size_t at, int width) {
  uint32_t v = 0;
  for (int i = width - 1; i >= 0; --i) v = (v << 8) | static_cast<unsigned char>(bytes[at + i]);
  return v;
}

// A packet with the given header fields changed from `like`.
std::string MediaPacket(const std::string& like, uint16_t sequence, int type, const std::string& data) {
  std::string packet = like.substr(0, kMediaHeader) + data;
  PutLe(&packet, 8, sequence, 2);
  PutLe(&packet, 10, data.size(), 2);
  packet[12] = static_cast<char>(type);
  return packet;
}

}  // namespace

std::vector<HostileMediaPacket> HostileMedia(HostileDice* dice, const std::string& packet,
                                             uint16_t* sequence) {
  std::vector<HostileMediaPacket> out;
  int size = static_cast<int>(packet.size());
  auto add = [&out](std::string bytes) {  // announced as long as it is
    int n = static_cast<int>(bytes.size());
    out.push_back({std::move(bytes), n});
  };
  if (packet.size() < kMediaHeader || dice->Percent(80)) {
    add(packet);
    return out;
  }
  std::string bad = packet;
  switch (dice->Below(10)) {
    case 0: {  // a data length beyond the bytes that carry it, or none at all
      const uint32_t lengths[] = {0, 65535, static_cast<uint32_t>(packet.size()),
                                  static_cast<uint32_t>(dice->Below(65536))};
      PutLe(&bad, 10, lengths[dice->Below(4)], 2);
      add(bad);
      break;
    }
    case 1:  // the message announces more than it carries, or less than a header
      out.push_back({packet, dice->Percent(50) ? size + 1 + static_cast<int>(dice->Below(100000))
                                               : static_cast<int>(dice->Below(kMediaHeader))});
      break;
    case 2:  // the header cut short
      bad.resize(static_cast<size_t>(dice->Below(kMediaHeader)));
      add(bad);
      break;
    case 3: {  // the sequence jumps, and the camera goes on from there
      uint16_t jumped = static_cast<uint16_t>(*sequence + 1 + dice->Below(65534));
      PutLe(&bad, 8, jumped, 2);
      *sequence = static_cast<uint16_t>(jumped + 1);
      add(bad);
      break;
    }
    case 4:  // the same packet twice (the second one out of sequence)
      add(packet);
      add(packet);
      break;
    case 5: {  // another type, media kind or frame index
      const int at[] = {12, 14, 16};
      size_t field = static_cast<size_t>(at[dice->Below(3)]);
      PutLe(&bad, field, dice->Next(), field == 16 ? 4 : 1);
      add(bad);
      break;
    }
    case 6: {  // data that ends in a false frame trailer
      std::string trailer(32, '\0');
      PutLe(&trailer, 0, 0x1A2B3C4D, 8);
      PutLe(&trailer, 16, dice->Next(), 8);
      PutLe(&trailer, 24, dice->Next(), 8);
      std::string data = packet.substr(kMediaHeader, static_cast<size_t>(dice->Below(64))) + trailer;
      add(MediaPacket(packet, GetLe(packet, 8, 2), packet[12], data));
      break;
    }
    case 7: {  // the frame again, in fragments that add up past 2 MiB
      add(packet);
      std::string data(60000, 'M');
      add(MediaPacket(packet, (*sequence)++, kFirstFragment, data));
      for (int i = 0; i < 40; ++i) {
        add(MediaPacket(packet, (*sequence)++, kMiddleFragment, data));
      }
      add(MediaPacket(packet, (*sequence)++, kLastFragment, data));
      break;
    }
    case 8:  // random bytes behind a good header
      add(packet.substr(0, kMediaHeader) + dice->Bytes(packet.size() - kMediaHeader));
      break;
    default:  // left out
      break;
  }
  return out;
}

std::string HostileReplayStart(HostileDice* dice, const std::string& video_block,
                               const std::string& audio_block, const std::string& file_name) {
  // Block sizes around the ones the host tells apart.
  const size_t sizes[] = {0, 1, 55, 56, 57, 275, 276, 277, 315, 316, 317, 535, 536, 537, 4000};
  auto block = [&](const std::string& good) -> std::string {
    switch (dice->Below(5)) {
      case 0: return Base64Encode(dice->Bytes(sizes[dice->Below(15)]));
      case 1: return Base64Encode(Flip(dice, good, 1 + dice->Below(16)));
      case 2: return Value(dice);
      case 3: return Base64Encode(good.substr(0, static_cast<size_t>(dice->Below(good.size()))));
      default: return Base64Encode(good);
    }
  };
  std::string video = block(video_block), audio = block(audio_block);
  std::string body = "<RESPONSE_PARAM VideoSeconds=\"" + Value(dice) + "\"";
  if (!dice->Percent(10)) body += " VideoParam=\"" + video + "\"";
  if (!dice->Percent(10)) body += " AudioParam=\"" + audio + "\"";
  return body + " FileName=\"" + EscapeAttr(file_name) + "\" />";
}

std::string HostileRtspChunk(HostileDice* dice, const std::string& chunk, bool* close) {
  *close = false;
  if (dice->Percent(97)) return chunk;
  if (dice->Percent(60)) return Flip(dice, chunk, 1 + dice->Below(4));
  *close = true;
  return chunk.substr(0, static_cast<size_t>(dice->Below(chunk.size() + 1)));
}

}  // namespace qvemu

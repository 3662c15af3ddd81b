#include "emu/talk_receiver.h"

#include <tinyxml.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "emu/camera_behaviour.h"
#include "emu/envelope.h"

namespace qvemu {
namespace {

constexpr int kBusy = -1;
constexpr int kParamError = -2;
constexpr int kDisabled = -3;
constexpr size_t kHeaderSize = 20;

bool UsableFormat(const std::string& format, int rate, int channels) {
  if (format == "G711") return true;
  if (format != "PCM" || channels < 1 || channels > 2) return false;
  for (int usable : {8000, 16000, 32000, 44100, 48000}) {
    if (rate == usable) return true;
  }
  return false;
}

uint32_t Le(const unsigned char* p, int bytes) {
  uint32_t v = 0;
  for (int i = bytes - 1; i >= 0; --i) v = (v << 8) | p[i];
  return v;
}

// The audio of a talk message: XML text, 4 zero bytes, the 20-byte header,
// the audio. False when the parts disagree.
bool TalkAudio(const std::string& payload, const std::string& body, std::string* audio) {
  size_t xml_end = payload.find('\0');
  if (xml_end == std::string::npos || payload.size() < xml_end + 4 + kHeaderSize) return false;
  if (payload.compare(xml_end, 4, std::string(4, '\0')) != 0) return false;
  BodyXml xml(body);
  long announced = atol(BodyXml::Attr(xml.Find("POS"), "DataLen").c_str());
  size_t start = xml_end + 4;
  size_t rest = payload.size() - start;
  if (announced < 0 || static_cast<size_t>(announced) != rest) return false;
  const unsigned char* h = reinterpret_cast<const unsigned char*>(payload.data() + start);
  bool marks = h[12] == 0x11 && h[13] == 1 && h[14] == 1 && h[15] == 1;
  bool ticks = Le(h, 4) == Le(h + 4, 4);
  if (!marks || !ticks || Le(h + 10, 2) != ((rest - kHeaderSize) & 0xFFFF)) return false;
  audio->assign(payload, start + kHeaderSize, rest - kHeaderSize);
  return true;
}

}  // namespace

// Held in the talking link's parts: the talk ends with the link.
class TalkReceiver::Talking {
 public:
  Talking(TalkReceiver* owner, int connection) : owner_(owner), connection_(connection) {}
  ~Talking() {
    std::lock_guard<std::mutex> lock(owner_->mu_);
    if (owner_->talking_link_ == connection_) owner_->talking_link_ = 0;
  }

 private:
  TalkReceiver* owner_;
  int connection_;
};

TalkReceiver::TalkReceiver(size_t keep_limit) : keep_limit_(keep_limit) {}

TalkReceiver::~TalkReceiver() {
  if (save_ != nullptr) fclose(save_);
}

void TalkReceiver::Install(CameraBehaviour* behaviour) {
  behaviour->SetTypeHandler("REVERSE_AUDIO_MESSAGE", [this](LinkState* link,
                                                            const ReceivedFrame& f,
                                                            std::vector<Reply>* out) {
    std::lock_guard<std::mutex> lock(mu_);
    if (f.code == "CMD_RA_START") {
      BodyXml body(f.body);
      const TiXmlElement* param = body.Find("RA_START_PARAM");
      std::string format = BodyXml::Attr(param, "AudioForamt");
      int rate = atoi(BodyXml::Attr(param, "SampleRate").c_str());
      int channels = atoi(BodyXml::Attr(param, "Channels").c_str());
      int flag = refusal_;
      if (flag == 0 && !enabled_) flag = kDisabled;
      if (flag == 0 && talking_link_ != 0 && talking_link_ != link->connection) flag = kBusy;
      if (flag == 0 && !UsableFormat(format, rate, channels)) flag = kParamError;
      if (flag != 0) {
        ++stats_.refusals;
        out->push_back(Reply{f.type, f.code, std::to_string(flag), ""});
        return;
      }
      ++stats_.starts;
      talking_link_ = link->connection;
      // The part lives as long as the link; it is never replaced here (its
      // destructor takes the lock held now).
      if (link->parts.count("talk") == 0) {
        link->parts["talk"] = std::make_shared<Talking>(this, link->connection);
      }
      std::string codec = format == "PCM" ? "PCM" : "G711";
      out->push_back(Reply{f.type, f.code, "0",
                           "<RA_START_RESPONSE AudioCodec=\"" + codec + "\" Samplerate=\"" +
                               std::to_string(format == "PCM" ? rate : 8000) +
                               "\" BitsPerSample=\"16\" Channels=\"" +
                               std::to_string(format == "PCM" ? channels : 1) +
                               "\" RTPRecvPort=\"0\" ConnectionType=\"1\" />"});
    } else if (f.code == "CMD_RA_STOP") {
      bool talking = talking_link_ == link->connection;
      if (talking) {
        talking_link_ = 0;
        ++stats_.stops;
      }
      out->push_back(Reply{f.type, f.code, talking ? "0" : "-1", ""});
    }
  });
  behaviour->SetMediaHandler(3, [this](LinkState* link, const ReceivedFrame& f,
                                       std::vector<Reply>*) {
    std::string audio;
    std::lock_guard<std::mutex> lock(mu_);
    if (talking_link_ != link->connection || !TalkAudio(f.payload, f.body, &audio)) {
      ++stats_.bad_packets;
      return;
    }
    ++stats_.packets;
    stats_.bytes += audio.size();
    size_t room = keep_limit_ > stats_.audio.size() ? keep_limit_ - stats_.audio.size() : 0;
    stats_.audio.append(audio, 0, std::min(room, audio.size()));
    if (save_ != nullptr) {
      fwrite(audio.data(), 1, audio.size(), save_);
      fflush(save_);
    }
  });
}

void TalkReceiver::SetEnabled(bool on) {
  std::lock_guard<std::mutex> lock(mu_);
  enabled_ = on;
}

void TalkReceiver::SetRefusal(int flag) {
  std::lock_guard<std::mutex> lock(mu_);
  refusal_ = flag;
}

bool TalkReceiver::SetSaveFile(const std::string& path) {
  std::lock_guard<std::mutex> lock(mu_);
  if (save_ != nullptr) fclose(save_);
  save_ = path.empty() ? nullptr : fopen(path.c_str(), "wb");
  return path.empty() || save_ != nullptr;
}

TalkStats TalkReceiver::Stats() const {
  std::lock_guard<std::mutex> lock(mu_);
  return stats_;
}

void TalkReceiver::Clear() {
  std::lock_guard<std::mutex> lock(mu_);
  stats_ = TalkStats();
}

}  // namespace qvemu

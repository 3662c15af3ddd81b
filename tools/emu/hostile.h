// Hostile mode of the emulated camera: instead of its well-formed answers it
// sends, now and then, what a broken or malicious camera might: garbage
// before frames, headers whose length lies, truncated or binary payloads,
// XML that does not parse or carries absurd values, duplicated or missing
// replies, unsolicited frames, and links that drop halfway through a frame.
// The data channel, the discovery answers and the RTSP stream (through
// HostileRtspProxy, hostile_rtsp.h) get the same treatment.
//
// Everything is driven by one seed. Each channel of the camera (a control
// link by its connection number, a data connection, a discovery answer)
// draws from a generator of its own derived from the seed and the channel's
// name and number, so a run that fails replays the same sequence of faults
// for the same traffic.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qvemu {

// A small, fast generator (splitmix64); not thread-safe, one per channel.
class HostileDice {
 public:
  explicit HostileDice(uint64_t state) : state_(state) {}
  uint64_t Next();
  // Uniform in [0, n); 0 when n is 0.
  uint64_t Below(uint64_t n) { return n == 0 ? 0 : Next() % n; }
  // True with the given chance in percent.
  bool Percent(unsigned p) { return Below(100) < p; }
  std::string Bytes(size_t n);  // n random bytes

 private:
  uint64_t state_;
};

// The generator of one channel ("link", "data", "discovery", "rtsp") and
// its number, for a seed.
HostileDice DiceFor(uint64_t seed, const char* channel, uint64_t number);

// An XML-like body: random elements and attributes with adversarial values
// (huge, negative and non-numeric numbers, long texts, entities, unclosed
// or mismatched tags, binary bytes). Bounded to a few kilobytes unless
// `large` asks for one of a few hundred kilobytes.
std::string HostileXml(HostileDice* dice, bool large = false);

// What goes on the wire in place of one well-formed reply (its envelope
// fields given): usually the reply itself, otherwise one of the faults
// above. *close_after: the link should be dropped once the bytes are out.
std::string HostileReply(HostileDice* dice, const std::string& type, const std::string& code,
                         const std::string& flag, const std::string& body, bool* close_after);

// A frame the camera pushes unasked between replies (a random alarm list, a
// reply to nothing, raw garbage), or "" when it pushes nothing this time.
std::string HostileUnsolicited(HostileDice* dice);

// A discovery answer turned hostile: cut, flipped, swollen, another root or
// no XML at all; sometimes unchanged.
std::string HostileDatagram(HostileDice* dice, const std::string& text);

// The bytes of a file served over a data channel or the link: usually
// unchanged, else some bytes flipped. *fault_kind and *fault_value receive
// a data-channel fault to apply (a DataChannelFault::Kind, 0 for none).
std::string HostileFile(HostileDice* dice, const std::string& bytes, int* fault_kind,
                        long* fault_value);

// One replay media packet (its 20-byte header and data) as it goes out, with
// the data length its message announces for it.
struct HostileMediaPacket {
  std::string packet;
  int announced;
};

// What goes out in place of one well-formed replay media packet: usually the
// packet itself, otherwise a length that lies (beyond the data, 0, 65535), an
// announced length beyond the message, a header cut short, a sequence that
// jumps back or ahead (*sequence, the next one to use, follows the jump),
// another packet type, media kind or frame index, data that ends in a false
// frame trailer, or a run of middle fragments larger than any frame.
std::vector<HostileMediaPacket> HostileMedia(HostileDice* dice, const std::string& packet,
                                             uint16_t* sequence);

// The body of a replay start answer with hostile values: parameter blocks of
// odd sizes, random bytes or text that is not Base64, one of them missing,
// an absurd VideoSeconds; sometimes the body as given.
std::string HostileReplayStart(HostileDice* dice, const std::string& video_block,
                               const std::string& audio_block, const std::string& file_name);

// RTSP bytes on their way to the client: flipped bytes inside, or cut at a
// random point. *close: the proxy should close both sides after sending.
std::string HostileRtspChunk(HostileDice* dice, const std::string& chunk, bool* close);

}  // namespace qvemu

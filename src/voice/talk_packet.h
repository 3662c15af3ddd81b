// One talk packet: a frame of host audio on its way to the camera, and the
// control-link message that carries it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

struct TalkPacket {
  int length = 0;               // bytes of audio
  unsigned long tick = 0;       // GetTickCount() when the packet was made
  uint32_t sequence = 0;        // the audio thread's first packet counter
  uint32_t index = 0;           // its second packet counter
  std::unique_ptr<char[]> data; // the audio, length bytes (+4 spare)
};

// Size of the binary header ahead of the audio.
const int kTalkHeaderSize = 20;

// The talk message payload: the MEDIA_DATA_MESSAGE text announcing
// length + 20 bytes, 4 zero bytes, the 20-byte header (tick twice, sequence
// and length in 16 bits, 0x11 1 1 1, index; little-endian) and the audio.
std::string MakeTalkMessage(const TalkPacket& packet);

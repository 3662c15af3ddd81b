// Replay media packets as a camera streams them: each a 20-byte header and
// its data, put back together into whole frames. The input is a run of
// packets, each preceded by its length (16 bits, little-endian).
#include <cstdlib>

#include "fuzz_target.h"
#include "link/replay_assembler.h"

QV_FUZZ_TARGET(replay_packets) {
  CReplayAssembler assembler;
  assembler.Allocate();
  size_t at = 0;
  while (at + 2 <= size) {
    size_t length = data[at] | (data[at + 1] << 8);
    at += 2;
    if (length > size - at) length = size - at;
    CReplayAssembler::Frame frame;
    if (assembler.Add(data + at, static_cast<int>(length), &frame)) {
      if (frame.length < CReplayAssembler::kTrailerSize ||
          frame.length > static_cast<unsigned long>(CReplayAssembler::kBufferSize))
        abort();
      volatile char last = frame.data[frame.length - 1];
      (void)last;
    }
    at += length;
  }
  return 0;
}

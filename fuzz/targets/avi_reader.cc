// A recording file read back: header, chunk scan (with or without the
// index) and every chunk's bytes.
#include <cstdlib>
#include <vector>

#include "fuzz_target.h"
#include "stream/avi_reader.h"

QV_FUZZ_TARGET(avi_reader) {
  std::string path = qvfuzz::WriteScratchFile("in.avi", data, size);
  if (path.empty()) return 0;
  CAviReader reader;
  if (reader.Open(path) != 0) return 0;
  std::vector<uint8_t> bytes;
  for (size_t i = 0; i < reader.Chunks().size(); ++i) {
    const AviChunk& chunk = reader.Chunks()[i];
    if (chunk.size == 0 || chunk.size > kAviMaxChunkBytes || chunk.offset + chunk.size > size)
      abort();
    if (reader.ReadChunk(i, &bytes) != 0) abort();
  }
  return 0;
}

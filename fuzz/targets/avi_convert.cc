// A recording handed to the converter: read, remuxed through libavformat
// (video copied, G.711 to AAC for MP4) into a container picked by the
// input's first byte. A conversion that fails leaves no output behind.
#include <unistd.h>

#include <cstdlib>

#include "fuzz_target.h"
#include "stream/avi_converter.h"

QV_FUZZ_TARGET(avi_convert) {
  if (size == 0) return 0;
  static const char* const kOutputs[] = {"out.mkv", "out.mp4", "out.avi", "out.mov"};
  std::string in = qvfuzz::WriteScratchFile("in.avi", data, size);
  if (in.empty()) return 0;
  std::string out = qvfuzz::ScratchDir() + "/" + kOutputs[data[size - 1] % 4];
  CAviConverter converter;
  if (converter.Convert(in, out) != 0 && access(out.c_str(), F_OK) == 0) abort();
  unlink(out.c_str());
  return 0;
}
